// Laplace: a - beta ln u or a + beta ln u, from pairs (u, w) with equal chances by w.
#include "distributions/closed_form.h"

using namespace kef::dist;

template <class T> static std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T a, T beta) {
    const Bracket bracket(replace_any);
    T pairs[2 * block];
    return in_blocks(n, r, [&](T* x, std::int32_t m) {
        const std::int32_t status = draw(stream, 2 * m, pairs, T(0), T(1));
        if (status < 0) return status;
        T* const scale = pairs;  // of each number: beta where w > 0.5, else -beta
        split_pairs(m, pairs, x, scale, [beta](auto w) {
            const auto plus = decltype(w){} + beta;
            return w > T(0.5) ? plus : -plus;
        });
        ln(m, x);
        transform(
            m, x, [a](auto v, auto s) { return a + s * v; }, x, scale);
        return status;
    });
}

std::int32_t _vtsdRngLaplace(std::int32_t, kef_stream* stream, std::int32_t n, double* r, double a,
                             double beta) {
    return law(stream, n, r, a, beta);
}
std::int32_t _vtssRngLaplace(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float a,
                             float beta) {
    return law(stream, n, r, a, beta);
}
