// xsimd, for the SSE3 architecture. Errors: measured for 8.1.
#include <xsimd/xsimd.hpp>

#include "bench/peers.h"

namespace kef {

template <class T> using X = xsimd::batch<T, xsimd::sse3>;

template <class T> struct Lanes<xsimd::batch<T, xsimd::sse3>> {
    using Element = T;
    static constexpr int count = X<T>::size;
    static X<T> load(const T* p) { return X<T>::load_unaligned(p); }
    static void store(T* p, const X<T>& x) { x.store_unaligned(p); }
};

template <class T> using XZ = xsimd::batch<std::complex<T>, xsimd::sse3>;

template <class T>
inline constexpr std::size_t parts<xsimd::batch<std::complex<T>, xsimd::sse3>> = 2;
template <class T> struct Lanes<xsimd::batch<std::complex<T>, xsimd::sse3>> {
    using Element = T;
    static constexpr int count = XZ<T>::size;
    static XZ<T> load(const T* p) {
        return XZ<T>::load_unaligned(reinterpret_cast<const std::complex<T>*>(p));
    }
    static void store(T* p, const XZ<T>& x) {
        x.store_unaligned(reinterpret_cast<std::complex<T>*>(p));
    }
};

namespace {

#define ONE(function, d, s, everywhere, expression)  \
    {#function, "xsimd", single ? s : d, everywhere, \
     one<X<T>, [](const X<T>& x) { return expression; }>},
#define TWO(function, d, s, everywhere, expression)  \
    {#function, "xsimd", single ? s : d, everywhere, \
     two<X<T>, [](const X<T>& x, const X<T>& y) { return expression; }>},

template <class T> struct Xsimd {
    static constexpr bool single = sizeof(T) == sizeof(float);
    // clang-format off
    AddPeers<T> rows = {
        ONE(Exp, .83, 1.5, false, xsimd::exp(x))
        ONE(Expm1, 1.2, 1.3, false, xsimd::expm1(x))
        ONE(Ln, 1, .8, single, xsimd::log(x))
        ONE(Log10, .63, .8, single, xsimd::log10(x))
        ONE(Log1p, .76, .8, true, xsimd::log1p(x))
        TWO(Pow, 55, 56, false, xsimd::pow(x, y))
        TWO(Powx, 72, 64, false, xsimd::pow(x, y))
        ONE(Sqrt, .5, .5, true, xsimd::sqrt(x))
        ONE(Cbrt, .8, .72, single, xsimd::cbrt(x))
        TWO(Hypot, 1.1, 1.1, false, xsimd::hypot(x, y))
        ONE(Sin, 8.6, 1.5, single, xsimd::sin(x))
        ONE(Cos, 15, 1.5, single, xsimd::cos(x))
        ONE(SinCos, 57, 1.5, single, sin_cos(x))
        ONE(Tan, 13, 2.5, single, xsimd::tan(x))
        ONE(Asin, 1.2, 2.4, true, xsimd::asin(x))
        ONE(Acos, 1.2, 1.2, true, xsimd::acos(x))
        ONE(Atan, 1.4, 2, true, xsimd::atan(x))
        TWO(Atan2, 2.5, 2.4, true, xsimd::atan2(x, y))
        ONE(Sinh, 2.5, 2.8, true, xsimd::sinh(x))
        ONE(Cosh, 2.6, 2.8, true, xsimd::cosh(x))
        ONE(Tanh, 1.3, 1.4, true, xsimd::tanh(x))
        ONE(Asinh, 1.6, 2, true, xsimd::asinh(x))
        ONE(Acosh, 1.8, 2, true, xsimd::acosh(x))
        ONE(Atanh, 1.5, 2, true, xsimd::atanh(x))
        ONE(Erf, 68, 2.3, true, xsimd::erf(x))
        ONE(Erfc, 100, 100, false, xsimd::erfc(x))
        ONE(TGamma, 6.9, 6.3, true, xsimd::tgamma(x))
        ONE(LGamma, 100, 100, false, xsimd::lgamma(x))
        ONE(Ceil, 0, 0, true, xsimd::ceil(x))
        ONE(Floor, 0, 0, true, xsimd::floor(x))
        ONE(Trunc, 0, 0, true, xsimd::trunc(x))
        ONE(Round, 0, 0, true, xsimd::round(x))
        ONE(Rint, 0, 0, true, xsimd::rint(x))
        ONE(NearbyInt, 0, 0, true, xsimd::nearbyint(x))
    };
    // clang-format on
    static Pair<X<T>> sin_cos(const X<T>& x) {
        const auto r = xsimd::sincos(x);
        return {r.first, r.second};
    }
};
const Xsimd<double> d_rows;
const Xsimd<float> s_rows;

// Complex functions: right to some digits on ordinary arguments, and far from it on others.
#define Z_ONE(function, z_ulps, c_ulps, everywhere, expression) \
    {#function,                                                 \
     "xsimd",                                                   \
     single ? c_ulps : z_ulps,                                  \
     everywhere,                                                \
     one<Z, [](const Z& z) -> Z { return expression; }>,        \
     true},
#define Z_TWO(function, z_ulps, c_ulps, everywhere, expression)      \
    {#function,                                                      \
     "xsimd",                                                        \
     single ? c_ulps : z_ulps,                                       \
     everywhere,                                                     \
     two<Z, [](const Z& z, const Z& w) -> Z { return expression; }>, \
     true},
#define Z_REAL(function, z_ulps, c_ulps, everywhere, expression)  \
    {#function,                                                   \
     "xsimd",                                                     \
     single ? c_ulps : z_ulps,                                    \
     everywhere,                                                  \
     one<Z, [](const Z& z) -> X<T> { return expression; }, X<T>>, \
     true},

template <class T> struct ComplexXsimd {
    static constexpr bool single = sizeof(T) == sizeof(float);
    using Z = XZ<T>;
    // clang-format off
    AddPeers<T> rows = {
        Z_REAL(Abs, 1.1, 1.1, false, xsimd::abs(z))
        Z_REAL(Arg, 2.3, 2.4, false, xsimd::arg(z))
        {"CIS", "xsimd", single ? 1.5 : 12, single, one<X<T>, [](const X<T>& x) { return cis(x); }, Z>, true},
        Z_TWO(Add, .5, .5, true, z + w)
        Z_TWO(Sub, .5, .5, true, z - w)
        Z_ONE(Conj, 0, 0, true, xsimd::conj(z))
        Z_TWO(Mul, 1.7, 1.7, false, z * w)
        Z_TWO(MulByConj, 1.7, 1.7, false, z * xsimd::conj(w))
        Z_TWO(Div, 3.5, 3.3, false, z / w)
        Z_ONE(Exp, 2.4, 2.8, false, xsimd::exp(z))
        Z_ONE(Ln, 51, 60, false, xsimd::log(z))
        Z_ONE(Log10, 565, 220, false, xsimd::log10(z))
        Z_ONE(Sqrt, 1.8, 2, false, xsimd::sqrt(z))
        Z_ONE(Sin, 2.9, 3, false, xsimd::sin(z))
        Z_ONE(Cos, 2.9, 3, false, xsimd::cos(z))
        Z_ONE(Tan, 53, 291, false, xsimd::tan(z))
        Z_ONE(Sinh, 2.9, 3, false, xsimd::sinh(z))
        Z_ONE(Cosh, 2.9, 3, false, xsimd::cosh(z))
        Z_ONE(Tanh, 53, 291, false, xsimd::tanh(z))
        Z_ONE(Asin, 246, 267, false, xsimd::asin(z))
        Z_ONE(Acos, 1e16, 3e7, false, xsimd::acos(z))
        Z_ONE(Atan, 4e4, 2e4, false, xsimd::atan(z))
        Z_ONE(Asinh, 246, 267, false, xsimd::asinh(z))
        Z_ONE(Acosh, 1e16, 3e7, false, xsimd::acosh(z))
        Z_ONE(Atanh, 4e4, 2e4, false, xsimd::atanh(z))
        Z_TWO(Pow, 23, 23, false, xsimd::pow(z, w))
        Z_TWO(Powx, 14, 14, false, xsimd::pow(z, w))
    };
    // clang-format on
    static Z cis(const X<T>& x) {
        const auto r = xsimd::sincos(x);
        return Z(r.second, r.first);
    }
};
const ComplexXsimd<double> z_rows;
const ComplexXsimd<float> c_rows;

}  // namespace

}  // namespace kef
