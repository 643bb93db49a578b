// Ranges for a map x (b - a) c + a, c down to 2^-59. Where b - a overflows, or its product with c
// would be subnormal, the map gets the bounds times a power of two, and its numbers are brought
// back and held in [a, b].
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kef::rng {

template <class Real> struct RangeLimits {
    static constexpr bool wide = sizeof(Real) == sizeof(double);
    using Bits = std::conditional_t<wide, std::uint64_t, std::uint32_t>;
    static constexpr Real most = std::numeric_limits<Real>::max();
    static constexpr Real least = std::numeric_limits<Real>::min() * Real(wide ? 0x1p60 : 0x1p24);
    static constexpr Real up = wide ? Real(0x1p128) : Real(0x1p64);
};

template <class Real> [[gnu::noinline, gnu::cold]] Real unusual_range_factor(Real a, Real b) {
    using Limits = RangeLimits<Real>;
    const Real larger = std::max(std::fabs(a), std::fabs(b));
    if (!(larger <= Limits::most)) return 1;
    if (larger > Limits::most / 2) return Real(0.5);
    const Real width = std::fabs(b - a);
    return width != 0 && width < Limits::least ? Limits::up : 1;
}

// The power of two; 1 for nearly all ranges, by one comparison of half their width.
template <class Real> Real range_factor(Real a, Real b) {
    using Limits = RangeLimits<Real>;
    using Bits = typename Limits::Bits;
    constexpr int sign = 8 * sizeof(Real) - 1, head = sign - 31;
    constexpr auto top = [](Bits x) { return static_cast<std::uint32_t>(x << 1 >> 1 >> head); };
    const auto bits = [](Real x) { return std::bit_cast<Bits>(x); };
    constexpr std::uint32_t low = top(std::bit_cast<Bits>(Limits::least)),
                            high = top(std::bit_cast<Bits>(Limits::most / 2));
    const std::uint32_t half = top(bits(b * Real(0.5) - a * Real(0.5)));
    return half - low < high - low ? 1 : unusual_range_factor(a, b);
}

template <class Real> void bring_back(std::int32_t n, Real* r, Real factor, Real a, Real b) {
    const auto [low, high] = std::minmax(a, b);
    for (std::int32_t i = 0; i < n; ++i) r[i] = std::min(high, std::max(low, r[i] * (1 / factor)));
}

}  // namespace kef::rng
