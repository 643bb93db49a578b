// What the compiler makes of a plain loop (-O3 vectorizes it).
#include <cmath>

#include "bench/peers.h"

namespace kef {

namespace {

#define LOOP(function, ulps, everywhere, expression)                  \
    {#function, "plain loop", ulps, everywhere, [](Batch<T>& batch) { \
         const int n = batch.size();                                  \
         const T* __restrict a = batch.a.data();                      \
         [[maybe_unused]] const T* __restrict b = batch.b.data();     \
         [[maybe_unused]] const std::array<T, 4> c = batch.scalars;   \
         T* __restrict r = batch.result[0].data();                    \
         for (int i = 0; i < n; ++i) {                                \
             const T x = a[i];                                        \
             [[maybe_unused]] const T y = b[i];                       \
             r[i] = expression;                                       \
         }                                                            \
     }},

template <class T> struct Loop {
    // clang-format off
    AddPeers<T> rows = {
        LOOP(Abs, 0, true, std::fabs(x))
        LOOP(Add, .5, true, x + y)
        LOOP(Sub, .5, true, x - y)
        LOOP(Mul, .5, true, x * y)
        LOOP(Div, .5, true, x / y)
        LOOP(Sqr, .5, true, x * x)
        LOOP(Inv, .5, true, 1 / x)
        LOOP(Sqrt, .5, true, std::sqrt(x))
        LOOP(InvSqrt, 1.4, true, 1 / std::sqrt(x))
        LOOP(Pow3o2, 1.3, true, x * std::sqrt(x))
        // Under cancellation it has no right digit.
        LOOP(LinearFrac, 2.3, false, (x * c[0] + c[1]) / (y * c[2] + c[3]))
    };
    // clang-format on
};
const Loop<double> d_rows;
const Loop<float> s_rows;

}  // namespace

}  // namespace kef
