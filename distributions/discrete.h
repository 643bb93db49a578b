// Numbers of a law with constant parameters, by the table or the strips, whichever is faster.
#pragma once

#include "distributions/guide_table.h"
#include "distributions/strips.h"

namespace kef::dist {

// Each apart, so that the stack holds one of them.
template <class Law>
[[gnu::noinline]] bool by_table(Uniforms& uniforms, std::int32_t n, std::int32_t* r,
                                const Law& law) {
    GuideTable table;
    if (!table.build(law)) return false;
    table.fill(uniforms, n, r);
    return true;
}
template <class Law>
[[gnu::noinline]] void by_strips(Uniforms& uniforms, std::int32_t n, std::int32_t* r,
                                 const Law& law) {
    // More of them cost set-up, fewer trials; narrow ones waste much of their hats.
    const double widest = std::clamp(law.deviation * 0.25, 8.0, 128.0);
    const double wanted = std::clamp(__builtin_sqrt(2.0 * n), 8.0, widest);
    const Strips<Law> strips(law, static_cast<std::int32_t>(wanted));
    strips.fill(uniforms, n, r);
}

// Whether n numbers pay for a table of this standard deviation, which may still be too long.
inline bool table_pays(std::int32_t n, double deviation) {
    return deviation <= 8 || (deviation < 116 && n > 3 * deviation);
}

// A log-concave law.
template <class Law>
void sample(Uniforms& uniforms, std::int32_t n, std::int32_t* r, const Law& law) {
    if (n <= 0 || (table_pays(n, law.deviation) && by_table(uniforms, n, r, law))) return;
    by_strips(uniforms, n, r, law);
}

}  // namespace kef::dist
