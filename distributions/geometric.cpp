// Failures before the first success: floor(ln u / ln(1 - p)), in single precision.
#include "distributions/frame.h"
#include "vm/core/log_core.h"

namespace kef::dist {

namespace {

// 1/ln(1 - p). Where 1 - p rounds to 1, minus infinity: all numbers but 0 are beyond 32 bits.
float inverse_log(double p) {
    const double q = 1.0 - p;
    if (!(q < 1)) return -__builtin_inff();
    return q > 0 ? static_cast<float>(1.0 / vm::log_core<vm::HA>(vm::all(q))[0]) : -0.0f;
}

// The floor of x >= 0 in 32 bits. NaN, which is ln 1 / ln 1, is 0.
std::int32_t floor_count(float x) {
    if (!(x > 0)) return 0;
    return x < 0x1p31f ? static_cast<std::int32_t>(x) : INT32_MAX;
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngGeometric(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                               double p) {
    const float c = inverse_log(p);
    const Bracket bracket(replace_any);
    alignas(16) float scratch[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const std::int32_t status = draw(stream, m, scratch, 0, 1);
        if (status < 0) return status;
        evaluate(kef_vtm_kernel_sLn_ttab[0], m, scratch, scratch);
        for (std::int32_t i = 0; i < m; ++i) out[i] = floor_count(scratch[i] * c);
        return status;
    });
}
