// Rayleigh: a + beta sqrt(-ln u), not below a: beta is sqrt(2) times the mode.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T> static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T a, T beta) {
    return from_logarithms(replace_singular, stream, n, r, [=](std::int32_t m, T* x) {
        transform(
            m, x, [](auto v) { return -v; }, x);
        square_root(m, x);
        affine_from(m, x, a, beta);
    });
}

std::int32_t _vtsdRngRayleigh(std::int32_t, kef_stream* stream, std::int32_t n, double* r, double a,
                              double beta) {
    return law(stream, n, r, a, beta);
}
std::int32_t _vtssRngRayleigh(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float a,
                              float beta) {
    return law(stream, n, r, a, beta);
}
