// Floats of any size as fractions of a turn, and sine, cosine and tangent of them,
// for a relative error of 2^-27: x = m 2^e with an integer m; the bits of 1/(2 pi) above
// 2^-e give whole turns, and of those behind 96 are enough: what is cut off is below 2^-64
// of a turn, and no float from 2^17 on comes nearer to a multiple of pi/2 than 2^-31.9 of a
// turn (Payne and Hanek, see trig_reduction.h).
#pragma once

#include <array>
#include <cstdint>

#include "vm/core/trig_plain.h"
#include "vm/simd/rows.h"

namespace KEF_VM {

// 1/(2 pi), least significant byte first; above it a byte of zeros, where the windows of
// the smallest arguments begin, and four bytes that are read and not used.
inline constexpr auto inverse_2pi_bytes = [] {
    constexpr std::uint32_t words[] = {
#include "vm/tables/inverse_2pi.inc"
    };
    std::array<std::uint8_t, 32> bytes{};
    for (int j = 0; j < 27; ++j)
        bytes[26 - j] = static_cast<std::uint8_t>(words[j / 4] >> (24 - 8 * (j % 4)));
    return bytes;
}();

// Turns of the elements that widen() gives, in units of 2^-64.
struct Turns {
    ulongs low, high;
};

// For 2^16 <= |x| < infinity.
inline Turns turns_of(floats x) {
    const ints bits = (ints)x;
    // The window of 12 bytes begins at or up to 7 bits before the bit of weight 2^-e.
    const ints first = within_16_bits(((bits >> 23) & 255) - 142, 0, 0x7FFF);
    const ints m = (bits & 0x7FFFFF) | 0x800000;
    const floats power = (floats)(((first & 7) + 127) << 23);
    const LongsPair factor = doubled(truncated_to_ints(to_floats(m) * power));
    const LongsPair sign = doubled(bits >> 31);
    const auto [low, high] = split(row_numbers(first >> 3));
    // The window's three words times the factor: the product's bits 32 to 95, turns modulo 1.
    const auto turns = [](const RowNumbers<double>& byte, ulongs w, ulongs sign) {
        const auto [rest, top] = bytes_behind(inverse_2pi_bytes.data() + 16, byte);
        const ulongs t = (low_products(top, w) << 32) + low_products(rest >> 32, w) +
                         (low_products(rest, w) >> 32);
        return (t ^ sign) - sign;
    };
    return {turns(low, (ulongs)factor.low, (ulongs)sign.low),
            turns(high, (ulongs)factor.high, (ulongs)sign.high)};
}

// The signed turns as an angle.
inline doubles angle_of(longs turns) {
    constexpr double unit = pi * 0x1p-63;  // of an angle
    const doubles high = odd_to_doubles((ints)turns);
    const doubles low =
        (doubles)((turns & INT64_C(0xFFFFFFFF)) | INT64_C(0x4330000000000000)) - 0x1p52;
    return (high * 0x1p32 + low) * unit;
}

// x = k pi + r, |r| <= pi/2.
template <Phase phase> inline doubles sine_of_turns(ulongs turns) {
    constexpr std::int64_t quarter = INT64_C(1) << 62;
    constexpr int quarters = phase == Phase::cosine ? 2 : 1;
    const longs t = (longs)(turns + quarters * static_cast<std::uint64_t>(quarter));
    const doubles s = sine_polynomial<phase, EP>(angle_of((t & INT64_MAX) - quarter));
    return flipped(s, t & INT64_MIN);
}

// x = k pi/2 + r, |r| <= pi/4.
inline doubles tangent_of_turns(ulongs turns) {
    constexpr std::int64_t eighth = INT64_C(1) << 61;
    const ulongs sum = turns + static_cast<std::uint64_t>(eighth);
    const longs t = (longs)sum, odd = sign_mask((longs)(sum << 1));
    return quotient_by_parity(tangent_short_fraction(angle_of((t & (2 * eighth - 1)) - eighth)),
                              odd, odd & INT64_MIN);
}

// Results for |x| >= 2^17 from the turns, others from `plain`.
template <class Formula> inline floats with_huge(floats x, floats plain, Formula formula) {
    const ints huge = magnitude((ints)x) >= static_cast<std::int32_t>(to_bits(0x1p17f));
    if (!any_lane(huge)) [[likely]]
        return plain;
    const Turns turns = turns_of(x);
    return select(huge, narrow(formula(turns.low), formula(turns.high)), plain);
}

}  // namespace KEF_VM
