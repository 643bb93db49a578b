// Four floats of any size as fractions of a turn, and sine, cosine and tangent of them,
// for a relative error of 2^-27: x = m 2^e with an integer m; the bits of 1/(2 pi) above
// 2^-e give whole turns, and of those behind 96 are enough: what is cut off is below 2^-64
// of a turn, and no float from 2^17 on comes nearer to a multiple of pi/2 than 2^-31.9 of a
// turn (Payne and Hanek, see trig_reduction.h).
#pragma once

#include <array>
#include <cstdint>

#include "vm/core/trig_plain.h"

namespace kef::vm {

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

// Turns of the elements 0, 1 and 2, 3, in units of 2^-64.
struct Turns {
    u2 low, high;
};

// For 2^16 <= |x| < infinity.
inline Turns turns_of(f4 x) {
    const i4 bits = (i4)x;
    // The window of 12 bytes begins at or up to 7 bits before the bit of weight 2^-e.
    const i4 first = (i4)_mm_max_epi16((__m128i)(((bits >> 23) & 255) - 142), __m128i{});
    const i4 m = (bits & 0x7FFFFF) | 0x800000;
    const f4 power = (f4)(((first & 7) + 127) << 23);
    const i4 shifted = (i4)_mm_cvttps_epi32((__m128)((f4)_mm_cvtepi32_ps((__m128i)m) * power));
    const i4 byte = first >> 3;
    const auto window = [](int start) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(&inverse_2pi_bytes[16 - start]));
    };
    // The product's bits 32 to 95: turns modulo 1.
    const auto product = [](__m128i a, __m128i b, i4 factor) {
        const __m128i rest = _mm_unpacklo_epi64(a, b), top = _mm_unpackhi_epi64(a, b);
        const __m128i w = (__m128i)factor;
        return (u2)_mm_slli_epi64(_mm_mul_epu32(top, w), 32) +
               (u2)_mm_mul_epu32(_mm_srli_epi64(rest, 32), w) +
               (u2)_mm_srli_epi64(_mm_mul_epu32(rest, w), 32);
    };
    const auto with_sign_of = [](u2 turns, i4 sign) { return (turns ^ (u2)sign) - (u2)sign; };
    const i4 sign = bits >> 31;
    const __m128i b = (__m128i)byte;
    return {with_sign_of(product(window(_mm_extract_epi16(b, 0)), window(_mm_extract_epi16(b, 2)),
                                 __builtin_shufflevector(shifted, shifted, 0, 0, 1, 1)),
                         __builtin_shufflevector(sign, sign, 0, 0, 1, 1)),
            with_sign_of(product(window(_mm_extract_epi16(b, 4)), window(_mm_extract_epi16(b, 6)),
                                 __builtin_shufflevector(shifted, shifted, 2, 2, 3, 3)),
                         __builtin_shufflevector(sign, sign, 2, 2, 3, 3))};
}

// The signed turns as an angle.
inline d2 angle_of(l2 turns) {
    constexpr double unit = pi * 0x1p-63;  // of an angle
    const d2 high =
        (d2)_mm_cvtepi32_pd((__m128i)__builtin_shufflevector((i4)turns, (i4)turns, 1, 3, 1, 3));
    const d2 low = (d2)((turns & INT64_C(0xFFFFFFFF)) | INT64_C(0x4330000000000000)) - 0x1p52;
    return (high * 0x1p32 + low) * unit;
}

// x = k pi + r, |r| <= pi/2.
template <Phase phase> inline d2 sine_of_turns(u2 turns) {
    constexpr std::int64_t quarter = INT64_C(1) << 62;
    constexpr int quarters = phase == Phase::cosine ? 2 : 1;
    const l2 t = (l2)(turns + quarters * static_cast<std::uint64_t>(quarter));
    const d2 s = sine_polynomial<phase, EP>(angle_of((t & INT64_MAX) - quarter));
    return (d2)((l2)s ^ (t & INT64_MIN));
}

// x = k pi/2 + r, |r| <= pi/4.
inline d2 tangent_of_turns(u2 turns) {
    constexpr std::int64_t eighth = INT64_C(1) << 61;
    const u2 sum = turns + static_cast<std::uint64_t>(eighth);
    const l2 t = (l2)sum, odd = sign_mask((l2)(sum << 1));
    return quotient_by_parity(tangent_short_fraction(angle_of((t & (2 * eighth - 1)) - eighth)),
                              odd, odd & INT64_MIN);
}

// Results for |x| >= 2^17 from the turns, others from `plain`.
template <class Formula> inline f4 with_huge(f4 x, f4 plain, Formula formula) {
    const i4 huge = magnitude((i4)x) >= static_cast<std::int32_t>(to_bits(0x1p17f));
    if (!any_lane(huge)) [[likely]]
        return plain;
    const Turns turns = turns_of(x);
    return select(huge, narrow(formula(turns.low), formula(turns.high)), plain);
}

}  // namespace kef::vm
