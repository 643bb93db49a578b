// clang-format off
/// The functions of vector math. Made from vm/surface/surface.def by tools/make_cxx.py; do not edit.
///
/// x, y, z, a, b are contiguous ranges of the types that stand behind each call; an accuracy may
/// follow. Functions of one argument take it in place as well where the result is of its type.
/// Bounds, special results and conditions: docs/functions.md, docs/errors.md.
#ifndef KEF_VM_FUNCTIONS_HPP
#define KEF_VM_FUNCTIONS_HPP

#ifndef KEF_VM_HPP
#error "include kef/vm.hpp"
#endif

namespace kef {

namespace detail::functions {
struct Abs {
    static constexpr const char* name = "kef::abs";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAbs_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAbs_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAbs_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAbs_ttab; }
};
}  // namespace detail::functions
/// abs(x, y): |x|. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Abs> abs{};

namespace detail::functions {
struct Acos {
    static constexpr const char* name = "kef::acos";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAcos_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAcos_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAcos_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAcos_ttab; }
};
}  // namespace detail::functions
/// acos(x, y): arc cosine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Acos> acos{};

namespace detail::functions {
struct Asin {
    static constexpr const char* name = "kef::asin";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAsin_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAsin_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAsin_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAsin_ttab; }
};
}  // namespace detail::functions
/// asin(x, y): arc sine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Asin> asin{};

namespace detail::functions {
struct Atan {
    static constexpr const char* name = "kef::atan";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAtan_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAtan_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAtan_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAtan_ttab; }
};
}  // namespace detail::functions
/// atan(x, y): arc tangent. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Atan> atan{};

namespace detail::functions {
struct Acosh {
    static constexpr const char* name = "kef::acosh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAcosh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAcosh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAcosh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAcosh_ttab; }
};
}  // namespace detail::functions
/// acosh(x, y): inverse hyperbolic cosine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Acosh> acosh{};

namespace detail::functions {
struct Asinh {
    static constexpr const char* name = "kef::asinh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAsinh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAsinh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAsinh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAsinh_ttab; }
};
}  // namespace detail::functions
/// asinh(x, y): inverse hyperbolic sine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Asinh> asinh{};

namespace detail::functions {
struct Atanh {
    static constexpr const char* name = "kef::atanh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAtanh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAtanh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAtanh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAtanh_ttab; }
};
}  // namespace detail::functions
/// atanh(x, y): inverse hyperbolic tangent. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Atanh> atanh{};

namespace detail::functions {
struct Add {
    static constexpr const char* name = "kef::add";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sAdd_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAdd_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cAdd_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zAdd_ttab; }
};
}  // namespace detail::functions
/// add(a, b, y): a + b. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map2<detail::functions::Add> add{};

namespace detail::functions {
struct Sub {
    static constexpr const char* name = "kef::sub";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sSub_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSub_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cSub_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zSub_ttab; }
};
}  // namespace detail::functions
/// sub(a, b, y): a - b. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map2<detail::functions::Sub> sub{};

namespace detail::functions {
struct Mul {
    static constexpr const char* name = "kef::mul";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sMul_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dMul_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cMul_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zMul_ttab; }
};
}  // namespace detail::functions
/// mul(a, b, y): a b. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map2<detail::functions::Mul> mul{};

namespace detail::functions {
struct Div {
    static constexpr const char* name = "kef::div";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sDiv_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dDiv_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cDiv_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zDiv_ttab; }
};
}  // namespace detail::functions
/// div(a, b, y): a / b. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map2<detail::functions::Div> div{};

namespace detail::functions {
struct Arg {
    static constexpr const char* name = "kef::arg";
    static constexpr bool reports = true;
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cArg_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zArg_ttab; }
};
}  // namespace detail::functions
/// arg(x, y): the angle of x. Of std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Arg> arg{};

namespace detail::functions {
struct Atan2 {
    static constexpr const char* name = "kef::atan2";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sAtan2_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dAtan2_ttab; }
};
}  // namespace detail::functions
/// atan2(a, b, y): the angle of the point (b, a). Of float, double.
inline constexpr detail::Map2<detail::functions::Atan2> atan2{};

namespace detail::functions {
struct CIS {
    static constexpr const char* name = "kef::cis";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_cCIS_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_zCIS_ttab; }
};
}  // namespace detail::functions
/// cis(x, y): cos x + i sin x; x real. Of float, double.
inline constexpr detail::Map1<detail::functions::CIS> cis{};

namespace detail::functions {
struct Cbrt {
    static constexpr const char* name = "kef::cbrt";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sCbrt_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCbrt_ttab; }
};
}  // namespace detail::functions
/// cbrt(x, y): cube root. Of float, double.
inline constexpr detail::Map1<detail::functions::Cbrt> cbrt{};

namespace detail::functions {
struct InvCbrt {
    static constexpr const char* name = "kef::inv_cbrt";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sInvCbrt_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dInvCbrt_ttab; }
};
}  // namespace detail::functions
/// inv_cbrt(x, y): 1 / cube root. Of float, double.
inline constexpr detail::Map1<detail::functions::InvCbrt> inv_cbrt{};

namespace detail::functions {
struct CdfNorm {
    static constexpr const char* name = "kef::cdf_norm";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sCdfNorm_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCdfNorm_ttab; }
};
}  // namespace detail::functions
/// cdf_norm(x, y): distribution function of the standard normal law. Of float, double.
inline constexpr detail::Map1<detail::functions::CdfNorm> cdf_norm{};

namespace detail::functions {
struct CdfNormInv {
    static constexpr const char* name = "kef::cdf_norm_inv";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sCdfNormInv_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCdfNormInv_ttab; }
};
}  // namespace detail::functions
/// cdf_norm_inv(x, y): quantile of the standard normal law. Of float, double.
inline constexpr detail::Map1<detail::functions::CdfNormInv> cdf_norm_inv{};

namespace detail::functions {
struct Ceil {
    static constexpr const char* name = "kef::ceil";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sCeil_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCeil_ttab; }
};
}  // namespace detail::functions
/// ceil(x, y): the next integer upwards. Of float, double.
inline constexpr detail::Map1<detail::functions::Ceil> ceil{};

namespace detail::functions {
struct Floor {
    static constexpr const char* name = "kef::floor";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sFloor_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dFloor_ttab; }
};
}  // namespace detail::functions
/// floor(x, y): the next integer downwards. Of float, double.
inline constexpr detail::Map1<detail::functions::Floor> floor{};

namespace detail::functions {
struct Round {
    static constexpr const char* name = "kef::round";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sRound_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dRound_ttab; }
};
}  // namespace detail::functions
/// round(x, y): the nearest integer, halves away from zero. Of float, double.
inline constexpr detail::Map1<detail::functions::Round> round{};

namespace detail::functions {
struct Trunc {
    static constexpr const char* name = "kef::trunc";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sTrunc_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dTrunc_ttab; }
};
}  // namespace detail::functions
/// trunc(x, y): the next integer towards zero. Of float, double.
inline constexpr detail::Map1<detail::functions::Trunc> trunc{};

namespace detail::functions {
struct Rint {
    static constexpr const char* name = "kef::rint";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sRint_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dRint_ttab; }
};
}  // namespace detail::functions
/// rint(x, y): the nearest integer, halves to even; raises inexact. Of float, double.
inline constexpr detail::Map1<detail::functions::Rint> rint{};

namespace detail::functions {
struct NearbyInt {
    static constexpr const char* name = "kef::nearbyint";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sNearbyInt_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dNearbyInt_ttab; }
};
}  // namespace detail::functions
/// nearbyint(x, y): the nearest integer, halves to even; raises nothing. Of float, double.
inline constexpr detail::Map1<detail::functions::NearbyInt> nearbyint{};

namespace detail::functions {
struct Conj {
    static constexpr const char* name = "kef::conj";
    static constexpr bool reports = false;
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cConj_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zConj_ttab; }
};
}  // namespace detail::functions
/// conj(x, y): conjugate. Of std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Conj> conj{};

namespace detail::functions {
struct Cos {
    static constexpr const char* name = "kef::cos";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sCos_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCos_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cCos_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zCos_ttab; }
};
}  // namespace detail::functions
/// cos(x, y): cosine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Cos> cos{};

namespace detail::functions {
struct Sin {
    static constexpr const char* name = "kef::sin";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sSin_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSin_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cSin_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zSin_ttab; }
};
}  // namespace detail::functions
/// sin(x, y): sine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Sin> sin{};

namespace detail::functions {
struct Tan {
    static constexpr const char* name = "kef::tan";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sTan_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dTan_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cTan_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zTan_ttab; }
};
}  // namespace detail::functions
/// tan(x, y): tangent. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Tan> tan{};

namespace detail::functions {
struct Cosh {
    static constexpr const char* name = "kef::cosh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sCosh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dCosh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cCosh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zCosh_ttab; }
};
}  // namespace detail::functions
/// cosh(x, y): hyperbolic cosine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Cosh> cosh{};

namespace detail::functions {
struct Sinh {
    static constexpr const char* name = "kef::sinh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sSinh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSinh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cSinh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zSinh_ttab; }
};
}  // namespace detail::functions
/// sinh(x, y): hyperbolic sine. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Sinh> sinh{};

namespace detail::functions {
struct Tanh {
    static constexpr const char* name = "kef::tanh";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sTanh_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dTanh_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cTanh_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zTanh_ttab; }
};
}  // namespace detail::functions
/// tanh(x, y): hyperbolic tangent. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Tanh> tanh{};

namespace detail::functions {
struct Erf {
    static constexpr const char* name = "kef::erf";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sErf_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dErf_ttab; }
};
}  // namespace detail::functions
/// erf(x, y): error function. Of float, double.
inline constexpr detail::Map1<detail::functions::Erf> erf{};

namespace detail::functions {
struct Erfc {
    static constexpr const char* name = "kef::erfc";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sErfc_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dErfc_ttab; }
};
}  // namespace detail::functions
/// erfc(x, y): 1 - erf x. Of float, double.
inline constexpr detail::Map1<detail::functions::Erfc> erfc{};

namespace detail::functions {
struct ErfInv {
    static constexpr const char* name = "kef::erf_inv";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sErfInv_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dErfInv_ttab; }
};
}  // namespace detail::functions
/// erf_inv(x, y): inverse of erf. Of float, double.
inline constexpr detail::Map1<detail::functions::ErfInv> erf_inv{};

namespace detail::functions {
struct ErfcInv {
    static constexpr const char* name = "kef::erfc_inv";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sErfcInv_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dErfcInv_ttab; }
};
}  // namespace detail::functions
/// erfc_inv(x, y): inverse of erfc. Of float, double.
inline constexpr detail::Map1<detail::functions::ErfcInv> erfc_inv{};

namespace detail::functions {
struct Exp {
    static constexpr const char* name = "kef::exp";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sExp_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dExp_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cExp_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zExp_ttab; }
};
}  // namespace detail::functions
/// exp(x, y): e^x. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Exp> exp{};

namespace detail::functions {
struct Ln {
    static constexpr const char* name = "kef::log";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sLn_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dLn_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cLn_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zLn_ttab; }
};
}  // namespace detail::functions
/// log(x, y): natural logarithm. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Ln> log{};

namespace detail::functions {
struct Log10 {
    static constexpr const char* name = "kef::log10";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sLog10_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dLog10_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cLog10_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zLog10_ttab; }
};
}  // namespace detail::functions
/// log10(x, y): decimal logarithm. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Log10> log10{};

namespace detail::functions {
struct Expm1 {
    static constexpr const char* name = "kef::expm1";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sExpm1_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dExpm1_ttab; }
};
}  // namespace detail::functions
/// expm1(x, y): e^x - 1. Of float, double.
inline constexpr detail::Map1<detail::functions::Expm1> expm1{};

namespace detail::functions {
struct Log1p {
    static constexpr const char* name = "kef::log1p";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sLog1p_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dLog1p_ttab; }
};
}  // namespace detail::functions
/// log1p(x, y): log(1 + x). Of float, double.
inline constexpr detail::Map1<detail::functions::Log1p> log1p{};

namespace detail::functions {
struct Hypot {
    static constexpr const char* name = "kef::hypot";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sHypot_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dHypot_ttab; }
};
}  // namespace detail::functions
/// hypot(a, b, y): sqrt(a^2 + b^2). Of float, double.
inline constexpr detail::Map2<detail::functions::Hypot> hypot{};

namespace detail::functions {
struct Inv {
    static constexpr const char* name = "kef::inv";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sInv_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dInv_ttab; }
};
}  // namespace detail::functions
/// inv(x, y): 1 / x. Of float, double.
inline constexpr detail::Map1<detail::functions::Inv> inv{};

namespace detail::functions {
struct InvSqrt {
    static constexpr const char* name = "kef::inv_sqrt";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sInvSqrt_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dInvSqrt_ttab; }
};
}  // namespace detail::functions
/// inv_sqrt(x, y): 1 / sqrt x. Of float, double.
inline constexpr detail::Map1<detail::functions::InvSqrt> inv_sqrt{};

namespace detail::functions {
struct Sqr {
    static constexpr const char* name = "kef::sqr";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sSqr_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSqr_ttab; }
};
}  // namespace detail::functions
/// sqr(x, y): x^2. Of float, double.
inline constexpr detail::Map1<detail::functions::Sqr> sqr{};

namespace detail::functions {
struct LGamma {
    static constexpr const char* name = "kef::lgamma";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sLGamma_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dLGamma_ttab; }
};
}  // namespace detail::functions
/// lgamma(x, y): log |Gamma(x)|. Of float, double.
inline constexpr detail::Map1<detail::functions::LGamma> lgamma{};

namespace detail::functions {
struct TGamma {
    static constexpr const char* name = "kef::tgamma";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sTGamma_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dTGamma_ttab; }
};
}  // namespace detail::functions
/// tgamma(x, y): Gamma(x). Of float, double.
inline constexpr detail::Map1<detail::functions::TGamma> tgamma{};

namespace detail::functions {
struct LinearFrac {
    static constexpr const char* name = "kef::linear_frac";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sLinearFrac_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dLinearFrac_ttab; }
};
}  // namespace detail::functions
/// linear_frac(a, b, scale_a, shift_a, scale_b, shift_b, y): (a scale_a + shift_a) / (b scale_b + shift_b), numbers in scale and shift. Of float, double.
inline constexpr detail::MapLinearFraction<detail::functions::LinearFrac> linear_frac{};

namespace detail::functions {
struct Modf {
    static constexpr const char* name = "kef::modf";
    static constexpr bool reports = false;
    static auto* table(const float*) { return kef_vtm_kernel_sModf_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dModf_ttab; }
};
}  // namespace detail::functions
/// modf(x, y, z): y the integer part of x, z the rest. Of float, double.
inline constexpr detail::Map1x2<detail::functions::Modf> modf{};

namespace detail::functions {
struct MulByConj {
    static constexpr const char* name = "kef::mul_by_conj";
    static constexpr bool reports = false;
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cMulByConj_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zMulByConj_ttab; }
};
}  // namespace detail::functions
/// mul_by_conj(a, b, y): a conj b. Of std::complex<float>, std::complex<double>.
inline constexpr detail::Map2<detail::functions::MulByConj> mul_by_conj{};

namespace detail::functions {
struct Pow {
    static constexpr const char* name = "kef::pow";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sPow_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPow_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cPow_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zPow_ttab; }
    static auto* scalar_table(const float*) { return kef_vtm_kernel_sPowx_ttab; }
    static auto* scalar_table(const double*) { return kef_vtm_kernel_dPowx_ttab; }
    static auto* scalar_table(const std::complex<float>*) { return kef_vtm_kernel_cPowx_ttab; }
    static auto* scalar_table(const std::complex<double>*) { return kef_vtm_kernel_zPowx_ttab; }
};
}  // namespace detail::functions
/// pow(a, b, y): a^b; b a range, or one number. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::MapPower<detail::functions::Pow> pow{};

namespace detail::functions {
struct Pow2o3 {
    static constexpr const char* name = "kef::pow2o3";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sPow2o3_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPow2o3_ttab; }
};
}  // namespace detail::functions
/// pow2o3(x, y): x^(2/3). Of float, double.
inline constexpr detail::Map1<detail::functions::Pow2o3> pow2o3{};

namespace detail::functions {
struct Pow3o2 {
    static constexpr const char* name = "kef::pow3o2";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sPow3o2_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPow3o2_ttab; }
};
}  // namespace detail::functions
/// pow3o2(x, y): x^(3/2). Of float, double.
inline constexpr detail::Map1<detail::functions::Pow3o2> pow3o2{};

namespace detail::functions {
struct SinCos {
    static constexpr const char* name = "kef::sincos";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sSinCos_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSinCos_ttab; }
};
}  // namespace detail::functions
/// sincos(x, y, z): y sine, z cosine of x. Of float, double.
inline constexpr detail::Map1x2<detail::functions::SinCos> sincos{};

namespace detail::functions {
struct Sqrt {
    static constexpr const char* name = "kef::sqrt";
    static constexpr bool reports = true;
    static auto* table(const float*) { return kef_vtm_kernel_sSqrt_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dSqrt_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cSqrt_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zSqrt_ttab; }
};
}  // namespace detail::functions
/// sqrt(x, y): square root. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::Map1<detail::functions::Sqrt> sqrt{};

namespace detail::functions {
struct PackI {
    static constexpr const char* name = "kef::pack_stride";
    static auto* table(const float*) { return kef_vtm_kernel_sPackI_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPackI_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cPackI_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zPackI_ttab; }
};
}  // namespace detail::functions
/// pack_stride(x, stride, y): y[i] = x[i stride]. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::PackStride<detail::functions::PackI> pack_stride{};

namespace detail::functions {
struct PackV {
    static constexpr const char* name = "kef::pack_index";
    static auto* table(const float*) { return kef_vtm_kernel_sPackV_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPackV_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cPackV_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zPackV_ttab; }
};
}  // namespace detail::functions
/// pack_index(x, index, y): y[i] = x[index[i]]; int32_t or int64_t. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::PackIndex<detail::functions::PackV> pack_index{};

namespace detail::functions {
struct PackM {
    static constexpr const char* name = "kef::pack_mask";
    static auto* table(const float*) { return kef_vtm_kernel_sPackM_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dPackM_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cPackM_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zPackM_ttab; }
};
}  // namespace detail::functions
/// pack_mask(x, mask, y): the x[i] with mask[i] != 0 in order; gives their number. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::PackMask<detail::functions::PackM> pack_mask{};

namespace detail::functions {
struct UnpackI {
    static constexpr const char* name = "kef::unpack_stride";
    static auto* table(const float*) { return kef_vtm_kernel_sUnpackI_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dUnpackI_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cUnpackI_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zUnpackI_ttab; }
};
}  // namespace detail::functions
/// unpack_stride(x, y, stride): y[i stride] = x[i]. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::UnpackStride<detail::functions::UnpackI> unpack_stride{};

namespace detail::functions {
struct UnpackV {
    static constexpr const char* name = "kef::unpack_index";
    static auto* table(const float*) { return kef_vtm_kernel_sUnpackV_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dUnpackV_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cUnpackV_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zUnpackV_ttab; }
};
}  // namespace detail::functions
/// unpack_index(x, y, index): y[index[i]] = x[i]. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::UnpackIndex<detail::functions::UnpackV> unpack_index{};

namespace detail::functions {
struct UnpackM {
    static constexpr const char* name = "kef::unpack_mask";
    static auto* table(const float*) { return kef_vtm_kernel_sUnpackM_ttab; }
    static auto* table(const double*) { return kef_vtm_kernel_dUnpackM_ttab; }
    static auto* table(const std::complex<float>*) { return kef_vtm_kernel_cUnpackM_ttab; }
    static auto* table(const std::complex<double>*) { return kef_vtm_kernel_zUnpackM_ttab; }
};
}  // namespace detail::functions
/// unpack_mask(x, y, mask): the y[i] with mask[i] != 0 get x in order; gives their number. Of float, double, std::complex<float>, std::complex<double>.
inline constexpr detail::UnpackMask<detail::functions::UnpackM> unpack_mask{};

}  // namespace kef

#endif
