// Arguments of any size as fractions of a turn (Payne and Hanek, see trig_reduction.h): x = m 2^e
// with an integer m; the bits of 1/(2 pi) above 2^-e give whole turns, and of those behind
//
//   floats   96 are enough: what is cut off is below 2^-64 of a turn, and no float from 2^17 on
//            comes nearer to a multiple of pi/2 than 2^-31.9 of a turn
//   doubles  160: what is cut off is below 2^-94 of a turn; those within 2^-27 of a multiple of
//            pi/steps, about one in a million, are for the edge
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "vm/core/trig_plain.h"
#include "vm/simd/double_double.h"
#include "vm/simd/rows.h"

namespace KEF_VM {

// 1/(2 pi), least significant byte first, of which the first `count` count; above them zeros, where
// the windows of the smallest arguments begin, and bytes that are read and not used.
template <int count> constexpr auto make_inverse_2pi_bytes() {
    constexpr std::uint32_t words[] = {
#include "vm/tables/inverse_2pi.inc"
    };
    std::array<std::uint8_t, count + 20> bytes{};
    for (int j = 0; j < count; ++j)
        bytes[count - 1 - j] = static_cast<std::uint8_t>(words[j / 4] >> (24 - 8 * (j % 4)));
    return bytes;
}
inline constexpr auto inverse_2pi_of_floats = make_inverse_2pi_bytes<27>();
inline constexpr auto inverse_2pi_of_doubles = make_inverse_2pi_bytes<147>();

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
        const auto [rest, top] = bytes_behind(inverse_2pi_of_floats.data() + 16, byte);
        const ulongs t = (low_products(top, w) << 32) + low_products(rest >> 32, w) +
                         (low_products(rest, w) >> 32);
        return (t ^ sign) - sign;
    };
    return {turns(low, (ulongs)factor.low, (ulongs)sign.low),
            turns(high, (ulongs)factor.high, (ulongs)sign.high)};
}

// x reduced, r with a relative error of 2^-64, for 2^17 <= |x| < infinity. The lanes where r is too
// small for that are marked.
template <int steps = row_steps>
inline MarkedBy<doubles, TrigReduced<steps>> trig_reduce_huge(doubles x) {
    const longs bits = (longs)x;
    // The window of 20 bytes begins at or up to 7 bits before the bit of weight 2^-e.
    const longs first =
        (longs)within_16_bits((ints)(((bits >> 52) & 0x7FF) - (1075 - 40)), 0, 0x7FFF);
    const ulongs power = (ulongs)truncated_to_ints((floats)((((ints)first & 7) + 127) << 23));
    const RowNumbers<double> byte = row_numbers(first >> 3);
    const std::uint8_t* const last = inverse_2pi_of_doubles.data() + (147 + 5);
    const auto [w43, w21] = bytes_behind(last - 20, byte);
    const ulongs w0 = bytes_behind(last - 4, byte).first;
    // m 2^0..7 in two words, the lower one first.
    const ulongs m = (ulongs)((bits & ((INT64_C(1) << 52) - 1)) | INT64_C(1) << 52);
    const ulongs f0 = low_products(m, power);
    const ulongs f1 = low_products(m >> 32, power) + (f0 >> 32);
    // Their product with the window's words, modulo 1: bits 1 to 64, and 65 to 96.
    constexpr std::uint64_t word = 0xFFFFFFFF;
    const ulongs p2 = low_products(f0, w21), q3 = low_products(f1, w43 >> 32);
    const ulongs rest = (p2 & word) + (q3 & word) + (low_products(f0, w43 >> 32) >> 32) +
                        (low_products(f1, w43) >> 32);
    const ulongs turns = low_products(f0, w21 >> 32) + low_products(f1, w21) + (p2 >> 32) +
                         (q3 >> 32) + (rest >> 32) +
                         ((low_products(f0, w0) + low_products(f1, w21 >> 32)) << 32);
    // Steps to nearest, and what is left of one: 47 bits (of 16 steps: 51) and 40.
    constexpr int left = 64 - std::bit_width(2u * steps - 1);
    const ulongs shifted = turns + (UINT64_C(1) << (left - 1));
    const longs sign = sign_mask(bits), k = ((longs)(shifted >> left) ^ sign) - sign;
    const auto number = [](ulongs bits) { return (doubles)(bits | UINT64_C(0x4330000000000000)); };
    const doubles high = number((shifted & ((UINT64_C(1) << left) - 1)) >> 8) -
                         (0x1p52 + (INT64_C(1) << (left - 9)));
    const doubles low = number((shifted & 255) << 32 | (rest & word)) - 0x1p52;
    constexpr double unit = 2 * pi * 0x1p-56;
    const Parts product = two_product(high, all(unit));
    const Parts r = flipped(
        fast_two_sum(product.high,
                     product.low + (high * (2 * pi_low * 0x1p-56) + low * (unit * 0x1p-40))),
        sign & INT64_MIN);
    return {{k, r.high, r.low}, (doubles)(absolute(r.high) < 0x1p-27)};
}

// The signed turns as an angle.
inline doubles angle_of(longs turns) {
    constexpr double unit = pi * 0x1p-63;  // of an angle
    const doubles high = odd_to_doubles((ints)turns);
    const doubles low =
        (doubles)((turns & INT64_C(0xFFFFFFFF)) | INT64_C(0x4330000000000000)) - 0x1p52;
    return (high * 0x1p32 + low) * unit;
}

// Sine, cosine and tangent of floats, with a relative error of 2^-27 (SingleFar) or 2^-52.
// x = k pi + r, |r| <= pi/2.
template <Phase phase, class Accuracy> inline doubles sine_of_turns(ulongs turns) {
    constexpr std::int64_t quarter = INT64_C(1) << 62;
    constexpr int quarters = phase == Phase::cosine ? 2 : 1;
    const longs t = (longs)(turns + quarters * static_cast<std::uint64_t>(quarter));
    // Cosine's: sine's has been moved for one argument below 2^17.
    const doubles s = sine_polynomial<Phase::cosine, Accuracy>(angle_of((t & INT64_MAX) - quarter));
    return flipped(s, t & INT64_MIN);
}

// x = k pi/2 + r, |r| <= pi/4.
template <class Accuracy> inline doubles tangent_of_turns(ulongs turns) {
    constexpr std::int64_t eighth = INT64_C(1) << 61;
    const ulongs sum = turns + static_cast<std::uint64_t>(eighth);
    const longs t = (longs)sum, odd = sign_mask((longs)(sum << 1));
    const doubles r = angle_of((t & (2 * eighth - 1)) - eighth);
    const auto fraction = [r] {
        if constexpr (std::is_same_v<Accuracy, SingleFar>) return tangent_short_fraction(r);
        else return tangent_fraction(r);
    };
    return quotient_by_parity(fraction(), odd, odd & INT64_MIN);
}

// Floats by a formula of turns. Where the result is to be correctly rounded, midpoints are marked,
// for a formula that is off by up to seven places.
template <class Accuracy, class Formula> inline auto of_turns(floats x, Formula formula) {
    const Turns turns = turns_of(x);
    const auto low = formula(turns.low), high = formula(turns.high);
    const auto marks = [](doubles low, doubles high) {
        return std::is_same_v<Accuracy, HA> ? (floats)midpoints<4>({low, high}) : floats{};
    };
    if constexpr (requires { low.first; })
        return MarkedBy<floats, Two<floats>>{
            narrow(low, high),
            (floats)((ints)marks(low.first, high.first) | (ints)marks(low.second, high.second))};
    else return Marked{narrow(low, high), marks(low, high)};
}

}  // namespace KEF_VM
