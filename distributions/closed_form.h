// Laws that are a closed form of uniform numbers: kernels, and the draw with a formula behind it.
#pragma once

#include "distributions/frame.h"

namespace kef::dist {

KEF_IN_PLACE(ln, Ln)
KEF_IN_PLACE(exp, Exp)
KEF_IN_PLACE(expm1, Expm1)
KEF_IN_PLACE(log1p, Log1p)
KEF_IN_PLACE(square_root, Sqrt)
KEF_IN_PLACE(tangent, Tan)
inline void power(std::int32_t n, double* x, double exponent) {
    evaluate(kef_vtm_kernel_dPowx_ttab[2], n, x, exponent, x);
}
inline void power(std::int32_t n, float* x, float exponent) {
    evaluate(kef_vtm_kernel_sPowx_ttab[2], n, x, exponent, x);
}

// x = beta x + a, and the same not below a.
template <class T> void affine(std::int32_t n, T* x, T a, T beta) {
    transform(
        n, x, [=](auto v) { return v * beta + a; }, x);
}
template <class T> void affine_from(std::int32_t n, T* x, T a, T beta) {
    transform(
        n, x, [=](auto v) { return at_least(a, v * beta + a); }, x);
}

// Calls formula(m, x) for the blocks of r, each while it is in the cache.
template <class T, class Formula> void by_blocks(std::int32_t n, T* r, Formula formula) {
    in_blocks(n, r, [&](T* x, std::int32_t m) {
        formula(m, x);
        return std::int32_t{VTS_STATUS_OK};
    });
}

// n uniforms on [a, b) in one draw, and `formula` of them.
template <class T, class Formula>
std::int32_t from_uniforms(kef_stream* stream, std::int32_t n, T* r, T a, T b, Formula formula) {
    const std::int32_t status = draw(stream, n, r, a, b);
    if (status >= 0) by_blocks(n, r, formula);
    return status;
}

// n logarithms of uniforms on [0, 1), and `formula` of them.
template <class T, class Formula>
std::int32_t from_logarithms(kef_vtm_error_callback callback, kef_stream* stream, std::int32_t n,
                             T* r, Formula formula) {
    const Bracket bracket(callback);
    return from_uniforms(stream, n, r, T(0), T(1), [&](std::int32_t m, T* x) {
        ln(m, x);
        formula(m, x);
    });
}

// Standard exponential numbers.
inline std::int32_t exponential(kef_stream* stream, std::int32_t n, double* r) {
    return _vtsdRngExponential(VTS_METHOD_STANDARD, stream, n, r, 0, 1);
}
inline std::int32_t exponential(kef_stream* stream, std::int32_t n, float* r) {
    return _vtssRngExponential(VTS_METHOD_STANDARD, stream, n, r, 0, 1);
}

}  // namespace kef::dist
