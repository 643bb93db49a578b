// Exponential: a - beta ln u, not below a.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T> static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T a, T beta) {
    return from_logarithms(replace_any, stream, n, r, [=](std::int32_t m, T* x) {
        transform(
            m, x, [=](auto v) { return at_least(a, a - beta * v); }, x);
    });
}

std::int32_t _vtsdRngExponential(std::int32_t, kef_stream* stream, std::int32_t n, double* r,
                                 double a, double beta) {
    return law(stream, n, r, a, beta);
}
std::int32_t _vtssRngExponential(std::int32_t, kef_stream* stream, std::int32_t n, float* r,
                                 float a, float beta) {
    return law(stream, n, r, a, beta);
}
