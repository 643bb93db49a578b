// Weibull: a + beta (-ln u)^(1 / alpha), not below a.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T>
static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T alpha, T a, T beta) {
    const T exponent = T(1) / alpha;
    return from_logarithms(replace_singular, stream, n, r, [=](std::int32_t m, T* x) {
        transform(
            m, x, [](auto v) { return -v; }, x);
        if (alpha != T(1)) power(m, x, exponent);
        affine_from(m, x, a, beta);
    });
}

std::int32_t _vtsdRngWeibull(std::int32_t, kef_stream* stream, std::int32_t n, double* r,
                             double alpha, double a, double beta) {
    return law(stream, n, r, alpha, a, beta);
}
std::int32_t _vtssRngWeibull(std::int32_t, kef_stream* stream, std::int32_t n, float* r,
                             float alpha, float a, float beta) {
    return law(stream, n, r, alpha, a, beta);
}
