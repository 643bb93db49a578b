// Powers of two for single elements, beyond the range of one factor.
#pragma once

#include <cstdint>

#include "vm/simd/simd.h"

namespace KEF_VM {

// 2^e, -1022 <= e <= 1023.
KEF_INLINE double power_of_two(int e) {
    return from_bits(static_cast<std::uint64_t>(1023 + e) << 52);
}

// floor(log2 |x|) for finite x other than 0.
inline int exponent_of(double x) {
    const auto field = [](double y) { return static_cast<int>(to_bits(y) >> 52 & 0x7FF); };
    return field(x) != 0 ? field(x) - 1023 : field(x * 0x1p54) - (1023 + 54);
}

// x 2^e in steps that do not overflow; exact unless the result is subnormal.
KEF_INLINE double scaled(double x, int e) {
    for (; e > 1000; e -= 1000) x *= 0x1p1000;
    for (; e < -1000; e += 1000) x *= 0x1p-1000;
    return x * power_of_two(e);
}

// (high + low) 2^-1022 for |high| < 1, rounded once: adding 1 brings the sum to the
// spacing of subnormal numbers, with the error of that addition taken along. A zero has the sign of
// `high`.
KEF_INLINE double round_to_subnormal(double high, double low) {
    const double one = high < 0 ? -1.0 : 1.0;
    const double sum = one + high;
    const double rounded = sum + (((one - sum) + high) + low);
    const double result = (rounded - one) * 0x1p-1022;
    return from_bits(to_bits(result) | (to_bits(high) & to_bits(-0.0)));
}

// (high + low) 2^e rounded once, for 0.25 <= |high| < 8 and any e.
KEF_INLINE double round_scaled(double high, double low, int e) {
    if (e > -1000) return scaled(high + low, e);
    // 2^1022 times the result; the sum may reach 1 where high does not.
    const double reduced = scaled(high + low, e + 1022);
    if (reduced >= 1.0 || reduced <= -1.0) return scaled(high + low, e);
    return round_to_subnormal(scaled(high, e + 1022), scaled(low, e + 1022));
}

}  // namespace KEF_VM
