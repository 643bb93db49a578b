// Complex numbers of any size for formulas that square their parts: scaled by the power of two
// that brings the larger part to [1, 2), and the result scaled back.
#pragma once

#include "vm/core/rounding.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// The leading 16 bits of the larger of two magnitudes, with the others of either.
inline ints larger_head(ints x, ints y) {
    typedef std::int16_t Halves __attribute__((vector_size(sizeof(ints))));
    const Halves a = (Halves)x, b = (Halves)y;
    return (ints)(a > b ? a : b);
}

// A gate: the larger of the parts with these heads is not in [2^first, 2^end).
template <class T, int first, int end> inline ints larger_outside(ints x, ints y) {
    constexpr auto head = [](int e) {
        return Format<T>::one_head + e * static_cast<std::int32_t>(Format<T>::normal_head);
    };
    const ints larger = larger_head(magnitude(x), magnitude(y));
    return (larger - head(first)) | (head(end) - 1 - larger);
}

// The same of two lanes that are positive or NaN, as a mask: larger and smaller ones at once.
template <class T, int first, int end> inline ints one_outside(ints x, ints y) {
    constexpr auto heads = [](int count) {
        return count * static_cast<std::uint32_t>(Format<T>::normal_head);
    };
    // The first of them becomes the least integer.
    const uints to_least = filled<uints>(Format<T>::one_head + heads(first) + (1u << 31));
    constexpr auto last = static_cast<std::int32_t>((1u << 31) + heads(end - first) - 1);
    return greater(larger_head((ints)((uints)x - to_least), (ints)((uints)y - to_least)),
                   all(last));
}

// A comparison as a mask of its own: of several at once GCC 12 makes element by element what SSE2
// has no mask instructions for.
template <class M> inline M mask(M comparison) {
    asm("" : "+v"(comparison));
    return comparison;
}

// Masks where a part is +-0, and where both are, by the bits of floats and of doubles. Compared as
// numbers: where subnormal ones count as zeros they are.
inline ints is_zero(ints x) { return (ints)((floats)magnitude(x) == 0.0f); }
inline longs is_zero(doubles x) { return mask(x == 0.0); }
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

// The exponent of the larger part, in its field.
inline longs larger_exponent(doubles x, doubles y) {
    return (longs)maximum(absolute(x), absolute(y)) & INT64_C(0x7FF0000000000000);
}

// x 2^1074 of subnormal numbers x, which is an integer, of any x, and back: (high + low) 2^-1074,
// rounded once. By bits, since products that meet such numbers wait for them; where the mode word
// says that they are zeros they are.
inline doubles integer_of(doubles x) {
    const doubles size = (doubles)((longs)absolute(x) | INT64_C(0x4330000000000000)) - 0x1p52;
    return with_sign(where(~is_zero(x), size), x);
}
inline doubles times_2_1074(doubles x) {
    const longs tiny = mask(absolute(x) < Format<double>::smallest_normal);
    return select(tiny, integer_of(x), where(~tiny, x) * 0x1p537 * 0x1p537);
}
inline doubles subnormal_of(doubles high, doubles low) {
    const doubles size = absolute(high), sum = size + 0x1p52;
    const doubles rest = (size - (sum - 0x1p52)) + flipped(low, sign_bit(high));
    const doubles r = (doubles)((longs)(sum + rest) - INT64_C(0x4330000000000000));
    return with_sign(where(~is_zero(r), r), high);
}

// x 2^-1074, rounded once.
inline doubles times_2_minus_1074(Parts x) {
    const doubles normal = maximum(absolute(rounded(x)), all(0x1p52));
    const doubles r = select(normal > 0x1p52, normal * 0x1p-537 * 0x1p-537,
                             absolute(subnormal_of(x.high, x.low)));
    return with_sign(r, x.high);
}

// Two parts times 2^-e, e in the exponent field: the larger one, of any size, comes to [1, 2). What
// the smaller one loses where it becomes subnormal does not count.
struct ScaledPair {
    doubles x, y;
    longs exponent;
};
inline ScaledPair scale_to_one(doubles x, doubles y) {
    constexpr std::int64_t one = INT64_C(0x3FF0000000000000), unit = INT64_C(1) << 52;
    longs larger = larger_exponent(x, y), taken = larger - one;
    const longs small = larger - unit, large = 2045 * unit - larger;
    if (any_lane(small | large)) [[unlikely]] {
        const longs up = sign_mask(small), down = sign_mask(large);
        const doubles factor = select(down, all(0x1p-2), all(1.0));
        x = select(up, integer_of(x), x * factor), y = select(up, integer_of(y), y * factor);
        larger = larger_exponent(x, y);
        const ulongs apart = (ulongs)(up & (1074 * unit)) - (ulongs)(down & (2 * unit));
        taken = (longs)((ulongs)(larger - one) - apart);
    }
    const doubles factor = (doubles)(2 * one - larger);
    return {x * factor, y * factor, taken};
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
// Parts of which one is large, from 2^280 on: both divided by an even power of two, which leaves
// the larger one next to 2^target; what the smaller one loses where it becomes subnormal does not
// count.
struct ReducedPair {
    doubles x, y;
    longs large, field;  // the lanes that are scaled, and the power of two as bits
    doubles inverse_power() const { return (doubles)(2 * exponent_field(0) - field); }
};
// e of numbers 2^e, from 0 to 4095 with `bias` added, as bits.
inline doubles exponent_of(longs field, int bias = 1023) {
    const doubles sum = (doubles)((longs)((ulongs)field >> 52) | INT64_C(0x4330000000000000));
    return sum - (0x1p52 + bias);
}
template <int target> inline ReducedPair reduced(doubles x, doubles y) {
    const longs large = (longs)(maximum(absolute(x), absolute(y)) >= 0x1p280);
    if (!any_lane(large)) [[likely]]
        return {x, y, large, all(exponent_field(0))};
    const longs larger = larger_exponent(x, y) | INT64_C(1) << 52,
                field = larger - (std::int64_t{target} << 52);
    const doubles factor = (doubles)(UINT64_C(2046) * (UINT64_C(1) << 52) - (ulongs)field);
    return {select(large, x * factor, x), select(large, y * factor, y), large,
            (field & large) | (exponent_field(0) & ~large)};
}
// Parts of any size for formulas of logarithms and roots. Where one is tiny and the larger one
// below 2^-180 both are scaled by an even power of two that brings that next to 1, large ones to
// 2^60; then a tiny one beside a larger one as above, to 2^-360: there it does not count, as
// before.
struct ScaledToAny {
    EnlargedParts x, y;
    longs scaled, field;  // the lanes that are scaled, and the exponent + 300 of what was taken out
    doubles exponent() const { return exponent_of(field, 1023 + 300); }
    // Half of it as a power of two.
    doubles root() const {
        const ulongs sum = (ulongs)field + (UINT64_C(723) << 52);
        return select(scaled, (doubles)(sum >> 1), all(1.0));
    }
};
inline ScaledToAny of_any_size(doubles x, doubles y) {
    const auto [u, v, large, taken] = reduced<60>(x, y);
    const longs tiny = sign_mask(is_tiny(x, 0x1p-280) | is_tiny(y, 0x1p-280)) &
                       (longs)(maximum(absolute(x), absolute(y)) < 0x1p-180);
    longs field = (longs)((ulongs)taken + (UINT64_C(300) << 52));
    x = u, y = v;
    if (any_lane(tiny)) [[unlikely]] {
        const doubles p = x * 0x1p300, q = y * 0x1p300;
        const longs larger = larger_exponent(p, q) | INT64_C(1) << 52;
        const doubles factor = (doubles)(2 * exponent_field(0) - larger);
        field = (larger & tiny) | (field & ~tiny);
        x = select(tiny, p * factor, x), y = select(tiny, q * factor, y);
    }
    return {enlarged<-360>(x), enlarged<-360>(y), tiny | large, field};
}
// Signs of results that had been rounded to more bits before they became subnormal, or rose to the
// smallest normal number, where that counts.
inline longs rounded_twice(doubles r) {
    const longs size = (longs)absolute(r);
    return (size - std::bit_cast<std::int64_t>(0x1p-1022) - 1) &
           ~(size - std::bit_cast<std::int64_t>(0x1p-1030));
}
// Likewise of r = x f, f a power of two: where f is not 1 and that was exact, nothing counts.
inline longs rounded_twice(doubles r, doubles x, doubles f) {
    const longs marks = rounded_twice(r);
    if (!any_lane(sign_mask(marks))) [[likely]]
        return marks;
    const doubles back = (doubles)(2 * exponent_field(0) - (longs)f);
    return marks & ~(mask(r * back == x) & mask(f < 1.0));
}
// Two powers of two together, from 2^-2148 to 2^2097, as factors of about half the exponent each,
// and what is beyond 2^2046: a part far below the norm may be finite all the same. What the first
// one rounds is 0 in the end, and it is 0 where the result is in any case.
struct PowersBack {
    doubles first, second, beyond;
    PowersBack(longs e, longs f) {
        // Unsigned: in lanes of NaN they may wrap.
        constexpr std::uint64_t unit = UINT64_C(1) << 52;
        const ulongs x = (ulongs)e, y = (ulongs)f;
        const auto halved = [](ulongs e) {
            return ((e + (UINT64_C(1) << 63)) >> 1 & -unit) - 1024 * unit;
        };
        const ulongs half = halved(x) + halved(y), rest = (x - half) + y;
        const longs none = sign_mask((longs)(half + 600 * unit)),
                    endless = sign_mask((longs)(1023 * unit - half)) |
                              sign_mask((longs)(1023 * unit - rest));
        const auto power = [](ulongs e) { return (doubles)(e + 1023 * unit); };
        const doubles most = all(0x1p1023);
        first = where(~none, select(endless, most, power(half)));
        second = select(none | endless, most, power(rest));
        beyond = select(endless, power((half - 1023 * unit) + (rest - 1023 * unit)), all(1.0));
    }
    doubles times(doubles x) const { return x * first * second * beyond; }
    // The same times 2^1074 where that is the integer of a subnormal result: all on the way is
    // normal. (The power of two by itself may be above the range: of a part far below the norm.)
    doubles as_integer(doubles x) const { return times(x * 0x1p537) * 0x1p537; }
    // Of a sum and what it is rounded to: rounded once.
    doubles times(doubles rounded, Parts x) const {
        const doubles r = times(rounded);
        const longs marks = rounded_twice(r);
        if (!any_lane(marks)) [[likely]]
            return r;
        const doubles low = (x.high - rounded) + x.low;
        return select(sign_mask(marks), subnormal_of(as_integer(rounded), as_integer(low)), r);
    }
};

// A power of two up to 2^+-2200, in three: half^2 rest. x is a number next to 1, or from 2^-200 on
// with a factor that takes back what enlarged it: where an intermediate result leaves the range the
// product does.
struct OuterPower {
    doubles half, rest;
    doubles times(doubles x, doubles factor) const { return x * half * factor * rest * half; }
    // Of a sum, rounded once.
    doubles times(Parts x, doubles factor) const {
        const doubles whole = rounded(x), r = times(whole, factor);
        const longs marks = rounded_twice(r);
        if (!any_lane(marks)) [[likely]]
            return r;
        const doubles up = half * 0x1p537;
        const auto scaled = [&](doubles z) { return z * up * factor * rest * up; };
        return select(sign_mask(marks),
                      subnormal_of(scaled(whole), scaled((x.high - whole) + x.low)), r);
    }
};

// A number with the sign of x. In vector registers: of halves in others a 32-bit processor would
// make a double by way of memory, and wait.
KEF_INLINE double signed_like(double magnitude, double x) {
    return __builtin_copysign(magnitude, x);
}

// An argument of one element: a zero where subnormal numbers count as zeros.
KEF_INLINE double as_number(double x) { return x == 0 ? signed_like(0, x) : x; }

}  // namespace KEF_VM
