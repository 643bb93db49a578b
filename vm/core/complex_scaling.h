// Complex numbers of any size for formulas that square their parts: scaled by the power of two
// that brings the larger part to [1, 2), and the result scaled back.
#pragma once

#include "vm/core/scaling.h"
#include "vm/simd/format.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// A gate: the larger of the parts with these heads is not in [2^first, 2^end).
template <class T, int first, int end> inline ints larger_outside(ints x, ints y) {
    constexpr auto head = [](int e) {
        return Format<T>::one_head + e * static_cast<std::int32_t>(Format<T>::normal_head);
    };
    x = magnitude(x), y = magnitude(y);
    return (head(end) - 1 - x) | (head(end) - 1 - y) | ((x - head(first)) & (y - head(first)));
}

// Masks where a part is +-0, and where both are, by the bits of floats and of doubles. Compared as
// numbers: where subnormal ones count as zeros they are.
inline ints is_zero(ints x) { return (ints)((floats)magnitude(x) == 0.0f); }
inline longs is_zero(doubles x) { return (longs)(x == 0.0); }
inline ints both_zero(ints x, ints y) { return is_zero(x | y); }
inline longs both_zero(doubles x, doubles y) {
    return is_zero(absolute((doubles)((longs)x | (longs)y)));
}
// Signs where x is tiny, below `least`, but not 0.
inline longs is_tiny(doubles x, double least) {
    return ((longs)absolute(x) - std::bit_cast<std::int64_t>(least)) & ~is_zero(x);
}

// The exponent of the larger part, in its field; of doubles by their heads.
inline ints larger_exponent(ints x, ints y) {
    x = magnitude(x), y = magnitude(y);
    const ints mask = greater(x, y);
    return ((x & mask) | (y & ~mask)) & 0x7FF00000;
}
inline longs larger_exponent(doubles x, doubles y) {
    return (longs)maximum(absolute(x), absolute(y)) & INT64_C(0x7FF0000000000000);
}

// Two parts times 2^-e, whose e stands in the exponent field; for larger parts from 2^-1022 to
// 2^1023. What the smaller one loses where it becomes subnormal does not count.
struct ScaledPair {
    doubles x, y;
    longs exponent;
};
inline ScaledPair scale_to_one(doubles x, doubles y) {
    constexpr std::int64_t one = INT64_C(0x3FF0000000000000);
    const longs larger = larger_exponent(x, y);
    const doubles factor = (doubles)(2 * one - larger);
    return {x * factor, y * factor, larger - one};
}
// 2^e.
inline doubles power_of_two(longs exponent) {
    return (doubles)(exponent + INT64_C(0x3FF0000000000000));
}

// A number of no sign with that of x.
KEF_INLINE double signed_like(double magnitude, double x) {
    return from_bits(to_bits(magnitude) | (to_bits(x) & (UINT64_C(1) << 63)));
}

// An argument of one element: a zero where subnormal numbers count as zeros.
KEF_INLINE double as_number(double x) { return x == 0 ? signed_like(0, x) : x; }

// One element likewise, of any size but 0.
struct ScaledOne {
    double x, y;
    int exponent;
};
inline ScaledOne scale_to_one(double x, double y) {
    const double a = x < 0 ? -x : x, b = y < 0 ? -y : y;
    const int e = exponent_of(a > b ? a : b);
    return {scaled(x, -e), scaled(y, -e), e};
}

// (high + low) 2^e rounded once, whatever their size; a sum of 0 keeps the sign of `high`.
KEF_INLINE double scaled_once(double high, double low, int e) {
    const double sum = high + low;
    if (sum == 0) return signed_like(0, high);
    const double rest = (high - sum) + low;
    const int shift = exponent_of(sum);
    return round_scaled(scaled(sum, -shift), scaled(rest, -shift), e + shift);
}

}  // namespace KEF_VM
