// SLEEF, its functions for vectors of this build's width by name; u10 is its error bound of 1.0
// ulp. "by" rows compose a function that it lacks.
#include "bench/native.h"

#include <sleef.h>

namespace kef {

namespace {

#define ONE(function, name, variant, ulps, everywhere) \
    {#function, "SLEEF " #variant, ulps, everywhere,   \
     one<V, [](V x) { return CALL(name, variant)(x); }>},
#define TWO(function, name, variant, ulps, everywhere) \
    {#function, "SLEEF " #variant, ulps, everywhere,   \
     two<V, [](V x, V y) { return CALL(name, variant)(x, y); }>},
#define PAIR(function, name, variant, ulps, everywhere)               \
    {#function, "SLEEF " #variant, ulps, everywhere, one<V, [](V x) { \
         const auto r = CALL(name, variant)(x);                       \
         return Pair<V>{FIRST(r), SECOND(r)};                         \
     }>},
#define BY(function, variant, ulps, everywhere, expression)      \
    {#function, "SLEEF " #variant " composed", ulps, everywhere, \
     one<V, [](V x) { return expression; }>},

// clang-format off
#define ROWS                                                          \
    ONE(Exp, exp, u10, 1, true)                                       \
    ONE(Expm1, expm1, u10, 1, true)                                   \
    ONE(Ln, log, u10, 1, true) ONE(Ln, log, u35, 3.5, true)           \
    ONE(Log10, log10, u10, 1, true)                                   \
    ONE(Log1p, log1p, u10, 1, true)                                   \
    TWO(Pow, pow, u10, 1, true) TWO(Powx, pow, u10, 1, true)          \
    ONE(Sqrt, sqrt, u05, .5, true)                                    \
    ONE(Cbrt, cbrt, u10, 1, true) ONE(Cbrt, cbrt, u35, 3.5, true)     \
    BY(InvCbrt, u10, 1.5, true, ALL(1) / CALL(cbrt, u10)(x))          \
    BY(Pow2o3, u10, 2, true, square(CALL(cbrt, u10)(x)))              \
    TWO(Hypot, hypot, u05, .5, true) TWO(Hypot, hypot, u35, 3.5, true) \
    ONE(Sin, sin, u10, 1, true) ONE(Sin, sin, u35, 3.5, true)         \
    ONE(Cos, cos, u10, 1, true) ONE(Cos, cos, u35, 3.5, true)         \
    ONE(Tan, tan, u10, 1, true) ONE(Tan, tan, u35, 3.5, true)         \
    PAIR(SinCos, sincos, u10, 1, true) PAIR(SinCos, sincos, u35, 3.5, true) \
    ONE(Asin, asin, u10, 1, true) ONE(Asin, asin, u35, 3.5, true)     \
    ONE(Acos, acos, u10, 1, true) ONE(Acos, acos, u35, 3.5, true)     \
    ONE(Atan, atan, u10, 1, true) ONE(Atan, atan, u35, 3.5, true)     \
    TWO(Atan2, atan2, u10, 1, true) TWO(Atan2, atan2, u35, 3.5, true) \
    ONE(Sinh, sinh, u10, 1, false) ONE(Sinh, sinh, u35, 3.5, false)   \
    ONE(Cosh, cosh, u10, 1, false) ONE(Cosh, cosh, u35, 3.5, false)   \
    ONE(Tanh, tanh, u10, 1, true) ONE(Tanh, tanh, u35, 3.5, true)     \
    ONE(Asinh, asinh, u10, 1, INVERSE_EVERYWHERE)                     \
    ONE(Acosh, acosh, u10, 1, INVERSE_EVERYWHERE)                     \
    ONE(Atanh, atanh, u10, 1, true)                                   \
    ONE(Erf, erf, u10, 1, true)                                       \
    ONE(Erfc, erfc, u15, 1.5, true)                                   \
    BY(CdfNorm, u15, 30, true, ALL(.5) * CALL(erfc, u15)(ALL(-0x1.6a09e667f3bcdp-1) * x)) \
    ONE(TGamma, tgamma, u10, 1, true)                                 \
    ONE(LGamma, lgamma, u10, 1, false)                                \
    ONE(Ceil, ceil, , 0, true) ONE(Floor, floor, , 0, true)           \
    ONE(Trunc, trunc, , 0, true) ONE(Round, round, , 0, true)         \
    ONE(Rint, rint, , 0, true) ONE(NearbyInt, rint, , 0, true)
// clang-format on

template <class V> V square(V x) { return x * x; }

#define ALL(c) (V{} + static_cast<Lanes<V>::Element>(c))
#define CALL(name, variant)                                                          \
    KEF_BY_WIDTH(Sleef_##name##d2_##variant##sse2, Sleef_##name##d4_##variant##avx2, \
                 Sleef_##name##d8_##variant##avx512f)
#define FIRST(r) r.x
#define SECOND(r) r.y
#define INVERSE_EVERYWHERE false
#define V NativeDoubles
// clang-format off
const AddPeers<double> d_rows = {
    ROWS
    {"Modf", "SLEEF", 0, true, one<V, [](V x) {
         const auto r = CALL(modf, )(x);
         return Pair<V>{r.y, r.x};
                                            // clang-format on
                                        }>}};
#undef CALL
#undef V
#undef INVERSE_EVERYWHERE

#define CALL(name, variant)                                                          \
    KEF_BY_WIDTH(Sleef_##name##f4_##variant##sse2, Sleef_##name##f8_##variant##avx2, \
                 Sleef_##name##f16_##variant##avx512f)
#define INVERSE_EVERYWHERE true
#define V NativeFloats
// clang-format off
const AddPeers<float> s_rows = {
    ROWS
    TWO(Pow, fastpow, u3500, 3500, true) TWO(Powx, fastpow, u3500, 3500, true)
    ONE(Sin, fastsin, u3500, 3500, false) ONE(Cos, fastcos, u3500, 3500, false)
    {"Modf", "SLEEF", 0, true, one<V, [](V x) {
         const auto r = CALL(modf, )(x);
         return Pair<V>{r.y, r.x};
                                                       // clang-format on
                                                   }>}};

}  // namespace

}  // namespace kef
