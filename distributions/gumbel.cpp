// Gumbel of minima: a + beta ln E, E standard exponential.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T> static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T a, T beta) {
    const Bracket bracket(replace_any);
    const std::int32_t status = exponential(stream, n, r);
    if (status < 0) return status;
    by_blocks(n, r, [=](std::int32_t m, T* x) {
        ln(m, x);
        affine(m, x, a, beta);
    });
    return status;
}

std::int32_t _vtsdRngGumbel(std::int32_t, kef_stream* stream, std::int32_t n, double* r, double a,
                            double beta) {
    return law(stream, n, r, a, beta);
}
std::int32_t _vtssRngGumbel(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float a,
                            float beta) {
    return law(stream, n, r, a, beta);
}
