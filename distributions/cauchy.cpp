// Cauchy: a + beta tan v, v uniform on [-pi/2, pi/2). The tangent has no error to catch.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T> static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T a, T beta) {
    constexpr T half_pi = T(1.5707963267948966);
    return from_uniforms(stream, n, r, -half_pi, half_pi, [=](std::int32_t m, T* x) {
        tangent(m, x);
        affine(m, x, a, beta);
    });
}

std::int32_t _vtsdRngCauchy(std::int32_t, kef_stream* stream, std::int32_t n, double* r, double a,
                            double beta) {
    return law(stream, n, r, a, beta);
}
std::int32_t _vtssRngCauchy(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float a,
                            float beta) {
    return law(stream, n, r, a, beta);
}
