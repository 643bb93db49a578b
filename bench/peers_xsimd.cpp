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

}  // namespace

}  // namespace kef
