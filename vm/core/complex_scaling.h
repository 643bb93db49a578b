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

// 2^e as bits.
inline constexpr std::int64_t exponent_field(int e) {
    return static_cast<std::int64_t>(1023 + e) << 52;
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
// Tiny parts, below 2^-280 but not 0, scaled to numbers from 2^exponent on, whose squares are
// normal, for formulas whose results are linear in a part so small; and the power of two that takes
// it back.
struct EnlargedParts {
    doubles x, factor;
};
template <int exponent = -200> inline EnlargedParts enlarged(doubles x) {
    const longs tiny = sign_mask(is_tiny(x, 0x1p-280));
    if (!any_lane(tiny)) [[likely]]
        return {x, all(1.0)};
    const doubles normal = x * 0x1p300;
    const longs field = larger_exponent(normal, normal);
    constexpr std::int64_t one = exponent_field(0), target = exponent_field(exponent),
                           back = exponent_field(exponent + 300) - one;
    return {select(tiny, normal * (doubles)(target + one - field), x),
            select(tiny, (doubles)(field - back), all(1.0))};
}
// Parts of which one is tiny and the larger one below 2^-180, scaled by an even power of two that
// brings that next to 1; then a tiny one beside a larger one as above, to 2^-360: there it does not
// count, as before.
struct EnlargedPair {
    EnlargedParts x, y;
    longs tiny, field;  // the lanes that are scaled, and the exponent + 300 of what was taken out
    doubles exponent() const {
        const doubles sum = (doubles)((longs)((ulongs)field >> 52) | INT64_C(0x4330000000000000));
        return sum - (0x1p52 + (1023 + 300));
    }
    // Half of it as a power of two.
    doubles root() const {
        const ulongs sum = (ulongs)field + (UINT64_C(723) << 52);
        return select(tiny, (doubles)(sum >> 1), all(1.0));
    }
};
inline EnlargedPair enlarged(doubles x, doubles y) {
    const longs tiny = sign_mask(is_tiny(x, 0x1p-280) | is_tiny(y, 0x1p-280)) &
                       (longs)(maximum(absolute(x), absolute(y)) < 0x1p-180);
    longs field = all(exponent_field(0));
    if (any_lane(tiny)) [[unlikely]] {
        const doubles u = x * 0x1p300, v = y * 0x1p300;
        field = larger_exponent(u, v) | INT64_C(1) << 52;
        const doubles factor = (doubles)(2 * exponent_field(0) - field);
        x = select(tiny, u * factor, x), y = select(tiny, v * factor, y);
    }
    return {enlarged<-360>(x), enlarged<-360>(y), tiny, field};
}
// Signs of results that had been rounded to more bits before they became subnormal, or rose to the
// smallest normal number, where that counts.
inline longs rounded_twice(doubles r) {
    const longs size = (longs)absolute(r);
    return (size - std::bit_cast<std::int64_t>(0x1p-1022) - 1) &
           ~(size - std::bit_cast<std::int64_t>(0x1p-1030));
}
// 2^e.
inline doubles power_of_two(longs exponent) {
    return (doubles)(exponent + INT64_C(0x3FF0000000000000));
}

// r times two powers of two, by factors of about half the exponent each: what the first one rounds
// is 0 in the end.
inline Two<doubles> scaled_back(Two<doubles> r, longs first, longs second) {
    constexpr std::int64_t bias = exponent_field(0);
    const auto halved = [](longs field) {
        return (longs)((ulongs)(field & ~(INT64_C(1) << 52)) >> 1);
    };
    const longs u = first + bias, v = second + bias, half = halved(u) + halved(v);
    const doubles p = (doubles)half, q = (doubles)((u - half) + v);
    return {r.first * p * q, r.second * p * q};
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
