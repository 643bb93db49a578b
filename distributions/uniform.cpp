// Continuous and integer uniform numbers.
#include "distributions/frame.h"
#include "vm/simd/simd.h"

namespace kef::dist {

namespace {

const kef_brng& brng_of(const kef_stream* stream) {
    return rng::resolve(stream->header.brng).brng();
}

std::int32_t generate(kef_stream* stream, std::int32_t n, double* r, double a, double b) {
    return brng_of(stream).generate_double(stream, n, r, a, b);
}
std::int32_t generate(kef_stream* stream, std::int32_t n, float* r, float a, float b) {
    return brng_of(stream).generate_float(stream, n, r, a, b);
}

// r = min(b, max(a, r)), eight doubles or sixteen floats a pass.
template <class Real> void clamp(Real* r, std::int32_t n, Real a, Real b) {
    constexpr std::int32_t lanes = 16 / sizeof(Real);
    const auto low = vm::all(a), high = vm::all(b);
    std::int32_t i = 0;
#pragma GCC unroll 4
    for (; n - i >= lanes; i += lanes)
        vm::store(r + i, vm::minimum(vm::maximum(vm::load(r + i), low), high));
    for (; i < n; ++i) {
        const Real raised = r[i] > a ? r[i] : a;  // maxpd and minpd
        r[i] = raised < b ? raised : b;
    }
}

template <class Real>
std::int32_t uniform(std::int32_t method, kef_stream* stream, std::int32_t n, Real* r, Real a,
                     Real b) {
    const std::int32_t status = generate(stream, n, r, a, b);
    if (status >= 0 && (method & VTS_METHOD_ACCURATE) != 0) clamp(r, n, a, b);
    return status;
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsdRngUniform(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                             double a, double b) {
    return uniform(method, stream, n, r, a, b);
}

std::int32_t _vtssRngUniform(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                             float a, float b) {
    return uniform(method, stream, n, r, a, b);
}

std::int32_t _vtsiRngUniform(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                             std::int32_t a, std::int32_t b) {
    double scratch[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const std::int32_t status = draw(stream, m, scratch, a, b);
        if (status < 0) return status;
        for (std::int32_t i = 0; i < m; ++i) {
            const auto truncated = static_cast<std::int32_t>(scratch[i]);
            out[i] = truncated - (truncated > scratch[i]);
        }
        return status;
    });
}
