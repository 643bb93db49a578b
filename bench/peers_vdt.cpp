// VDT: scalar functions written for the compiler to vectorize, so this file is
// compiled with -O3 and without trapping comparisons. Errors: measured for 0.4.
#include <vdt/vdtMath.h>

#include "bench/peers.h"

namespace kef {

namespace {

#define LOOP(T, function, ulps, everywhere, expression)             \
    {#function, "VDT", ulps, everywhere, [](Batch<T>& batch) {      \
         const int n = batch.size();                                \
         const T* __restrict a = batch.a.data();                    \
         [[maybe_unused]] const T* __restrict b = batch.b.data();   \
         T* __restrict r = batch.result[0].data();                  \
         [[maybe_unused]] T* __restrict s = batch.result[1].data(); \
         for (int i = 0; i < n; ++i) {                              \
             const T x = a[i];                                      \
             expression;                                            \
         }                                                          \
     }},

// clang-format off
const AddPeers<double> d_rows = {
    LOOP(double, Exp, 1.5, false, r[i] = vdt::fast_exp(x))
    LOOP(double, Ln, .8, false, r[i] = vdt::fast_log(x))
    LOOP(double, InvSqrt, 1.8, false, r[i] = vdt::fast_isqrt(x))
    LOOP(double, Sin, 1.5, false, r[i] = vdt::fast_sin(x))
    LOOP(double, Cos, 1.5, false, r[i] = vdt::fast_cos(x))
    LOOP(double, SinCos, 1.5, false, vdt::fast_sincos(x, r[i], s[i]))
    LOOP(double, Tan, 5, false, r[i] = vdt::fast_tan(x))
    LOOP(double, Asin, 1.2, true, r[i] = vdt::fast_asin(x))
    LOOP(double, Acos, 4100, true, r[i] = vdt::fast_acos(x))
    LOOP(double, Atan, 1.1, true, r[i] = vdt::fast_atan(x))
    LOOP(double, Atan2, 2, false, r[i] = vdt::fast_atan2(x, b[i]))
    LOOP(double, Tanh, 5.2, true, r[i] = vdt::fast_tanh(x))
};
// clang-format on
// clang-format off
const AddPeers<float> s_rows = {
    LOOP(float, Exp, 1.1, false, r[i] = vdt::fast_expf(x))
    LOOP(float, Ln, 1, false, r[i] = vdt::fast_logf(x))
    LOOP(float, InvSqrt, 5, false, r[i] = vdt::fast_isqrtf(x))
    LOOP(float, Sin, 2, false, r[i] = vdt::fast_sinf(x))
    LOOP(float, Cos, 2, false, r[i] = vdt::fast_cosf(x))
    LOOP(float, SinCos, 2, false, vdt::fast_sincosf(x, r[i], s[i]))
    LOOP(float, Tan, 5, false, r[i] = vdt::fast_tanf(x))
    LOOP(float, Asin, 2.3, true, r[i] = vdt::fast_asinf(x))
    LOOP(float, Acos, 1300, true, r[i] = vdt::fast_acosf(x))
    LOOP(float, Atan, 2.8, true, r[i] = vdt::fast_atanf(x))
    LOOP(float, Atan2, 4, false, r[i] = vdt::fast_atan2f(x, b[i]))
    LOOP(float, Tanh, 4.4, true, r[i] = vdt::fast_tanhf(x))
};
// clang-format on

}  // namespace

}  // namespace kef
