// The C library's scalar functions in a loop, and plain loops. Errors: measured
// for glibc 2.36.
#include <cmath>

#include "bench/peers.h"

namespace kef {

namespace {

#define ONE(function, ulps, everywhere, expression) \
    {#function, "C library", ulps, everywhere, one<T, [](T x) { return expression; }>},
#define TWO(function, ulps, everywhere, expression) \
    {#function, "C library", ulps, everywhere, two<T, [](T x, T y) { return expression; }>},

template <class T> Pair<T> sin_cos(T x) {
    Pair<T> r;
    if constexpr (sizeof(T) == sizeof(float)) ::sincosf(x, &r.first, &r.second);
    else ::sincos(x, &r.first, &r.second);
    return r;
}

template <class T> Pair<T> mod_f(T x) {
    Pair<T> r;
    r.second = std::modf(x, &r.first);
    return r;
}

constexpr double sqrt_half = 0x1.6a09e667f3bcdp-1;

template <class T> struct CLibrary {
    using D = double;
    static constexpr bool single = sizeof(T) == sizeof(float);
    // clang-format off
    AddPeers<T> rows = {
        ONE(Exp, single ? .51 : .78, true, std::exp(x))
        ONE(Expm1, .85, true, std::expm1(x))
        ONE(Ln, single ? .82 : .52, true, std::log(x))
        ONE(Log10, single ? .9 : .55, true, std::log10(x))
        ONE(Log1p, .85, true, std::log1p(x))
        TWO(Pow, single ? .64 : .95, true, std::pow(x, y))
        TWO(Powx, single ? .77 : 1.1, true, std::pow(x, y))
        ONE(Sqrt, .5, true, std::sqrt(x))
        ONE(InvSqrt, 1.4, true, 1 / std::sqrt(x))
        ONE(Cbrt, 1, true, std::cbrt(x))
        ONE(InvCbrt, 1.7, true, 1 / std::cbrt(x))
        ONE(Pow2o3, 3.1, true, std::cbrt(x) * std::cbrt(x))
        ONE(Pow3o2, 1.3, true, x * std::sqrt(x))
        TWO(Hypot, .51, true, std::hypot(x, y))
        ONE(Sin, .56, true, std::sin(x))
        ONE(Cos, .78, true, std::cos(x))
        ONE(SinCos, .57, true, sin_cos(x))
        ONE(Tan, single ? 1.3 : .91, true, std::tan(x))
        ONE(Asin, .6, true, std::asin(x))
        ONE(Acos, .6, true, std::acos(x))
        ONE(Atan, .6, true, std::atan(x))
        TWO(Atan2, .6, true, std::atan2(x, y))
        ONE(Sinh, 2.2, true, std::sinh(x))
        ONE(Cosh, 2.2, true, std::cosh(x))
        ONE(Tanh, 1, true, std::tanh(x))
        ONE(Asinh, 1, true, std::asinh(x))
        ONE(Acosh, 1, true, std::acosh(x))
        ONE(Atanh, 1, true, std::atanh(x))
        ONE(Erf, .7, true, std::erf(x))
        ONE(Erfc, 1.9, true, std::erfc(x))
        ONE(CdfNorm, 30, false, T(.5) * std::erfc(T(-sqrt_half) * x))
        ONE(TGamma, single ? 3.6 : 4.2, true, std::tgamma(x))
        ONE(LGamma, 2.8, true, std::lgamma(x))
        ONE(Ceil, 0, true, std::ceil(x))
        ONE(Floor, 0, true, std::floor(x))
        ONE(Trunc, 0, true, std::trunc(x))
        ONE(Round, 0, true, std::round(x))
        ONE(Rint, 0, true, std::rint(x))
        ONE(NearbyInt, 0, true, std::nearbyint(x))
        ONE(Modf, 0, true, mod_f(x))
    };
    // clang-format on
};
const CLibrary<double> d_rows;
const CLibrary<float> s_rows;

// Complex functions; std::complex has most of them from the C library, products and quotients by
// its rules for infinities. Errors: the worst component; of products, quotients and powers in units
// of the norm.
extern "C" {
__complex__ double clog10(__complex__ double);
__complex__ float clog10f(__complex__ float);
}
std::complex<double> log_10(std::complex<double> z) { return clog10(z.__rep()); }
std::complex<float> log_10(std::complex<float> z) { return clog10f(z.__rep()); }
template <class T> std::complex<T> cis(T x) {
    const Pair<T> r = sin_cos(x);
    return {r.second, r.first};
}

#define Z_ONE(function, ulps, everywhere, expression) \
    {#function, "C library", ulps, everywhere, one<Z, [](const Z& z) { return expression; }>, true},
#define Z_TWO(function, ulps, everywhere, expression) \
    {#function,                                       \
     "C library",                                     \
     ulps,                                            \
     everywhere,                                      \
     two<Z, [](const Z& z, const Z& w) { return expression; }>,          \
     true},

template <class T> struct ComplexCLibrary {
    static constexpr bool single = sizeof(T) == sizeof(float);
    using Z = std::complex<T>;
    // clang-format off
    AddPeers<T> rows = {
        {"Abs", "C library", .51, true, one<Z, [](const Z& z) { return std::abs(z); }, T>, true},
        {"Arg", "C library", .6, true, one<Z, [](const Z& z) { return std::arg(z); }, T>, true},
        {"CIS", "C library", .57, true, one<T, [](T x) { return cis(x); }, Z>, true},
        Z_TWO(Add, .5, true, z + w)
        Z_TWO(Sub, .5, true, z - w)
        Z_ONE(Conj, 0, true, std::conj(z))
        Z_TWO(Mul, 2.3, false, z * w)
        Z_TWO(MulByConj, 2.3, false, z * std::conj(w))
        Z_TWO(Div, 1, single, z / w)
        Z_ONE(Exp, 2.6, true, std::exp(z))
        Z_ONE(Ln, 2.1, true, std::log(z))
        Z_ONE(Log10, 1.9, true, log_10(z))
        Z_ONE(Sqrt, .93, true, std::sqrt(z))
        Z_ONE(Sin, 2.7, true, std::sin(z))
        Z_ONE(Cos, 2.6, true, std::cos(z))
        Z_ONE(Tan, 3.6, true, std::tan(z))
        Z_ONE(Sinh, 2.6, true, std::sinh(z))
        Z_ONE(Cosh, 2.7, true, std::cosh(z))
        Z_ONE(Tanh, 3.5, true, std::tanh(z))
        Z_ONE(Asin, 3, true, std::asin(z))
        Z_ONE(Acos, 3.2, true, std::acos(z))
        Z_ONE(Atan, 2.4, true, std::atan(z))
        Z_ONE(Asinh, 3.8, true, std::asinh(z))
        Z_ONE(Acosh, 3.1, true, std::acosh(z))
        Z_ONE(Atanh, 2.5, true, std::atanh(z))
        Z_TWO(Pow, single ? 15 : 17, false, std::pow(z, w))
        Z_TWO(Powx, 10, false, std::pow(z, w))
    };
    // clang-format on
};
const ComplexCLibrary<double> z_rows;
const ComplexCLibrary<float> c_rows;

}  // namespace

}  // namespace kef
