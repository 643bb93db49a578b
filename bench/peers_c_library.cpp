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

}  // namespace

}  // namespace kef
