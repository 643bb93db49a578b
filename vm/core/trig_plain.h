// Sine, cosine and tangent without a table, for a relative error of some units in the
// last place:
//
//   sine, cosine  x = k pi + r, k an integer or, for cosine, a half of an odd one;
//                 +-sin r from one polynomial, |r| <= pi/2
//   tangent       x = k pi + r, k an integer or a half; tan r or -1/tan r from one quotient of
//                 polynomials, |r| <= pi/4
//
// The sum that rounds x/pi to k holds k as an integer in its lowest bits: the one that counts odd
// half turns moves to the sign's place of its lane and flips the result's sign there.
//
// Constants: tools/trig_tables.py --constants; polynomials: tools/trig.sollya and
// tools/tangent.py.
#pragma once

#include "vm/core/trig_reduction.h"
#include "vm/simd/frame.h"
#include "vm/simd/products.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// Which function: cosine is a sine with a quarter turn added; tangent goes by quarter turns.
enum class Phase { sine, cosine, tangent };

// Single HA: the double formula that is rounded once; beyond the reductions of single LA and EP:
// its reduction and the polynomials of EP.
struct SingleHA;
struct SingleFar;

// pi in parts whose products with k, but for the last, are exact, for |x| < 2^18 (double LA, single
// HA), 2^13 (double EP), 252 and 124 (single LA and EP).
template <class T, class Accuracy> inline constexpr auto pi_parts_of = pi_parts;
template <>
inline constexpr auto pi_parts_of<double, SingleHA> = coefficients(0x400921FB54440000,
                                                                   0x3D968C234C4C6629);
template <> inline constexpr auto pi_parts_of<double, SingleFar> = pi_parts_of<double, SingleHA>;
template <>
inline constexpr auto pi_parts_of<double, EP> = coefficients(0x400921FB54442000,
                                                             0x3D7A308D313198A3);
template <> inline constexpr auto pi_parts_of<float, LA> = pi_parts_single;
template <>
inline constexpr auto pi_parts_of<float, EP> = std::array{0x1.921fp+1f, 0x1.6a8886p-16f};

// x = k pi + r; `sum` holds k, k - 1/2 (cosine) or 2 k (tangent) in its lowest bits, `parity` the
// lowest of them at the sign's place.
template <class V> struct HalfTurns {
    V r, sum;
    BitsOf<V> parity;
};
template <Phase phase, class Accuracy, class V> inline HalfTurns<V> half_turns(V x) {
    using T = Element<V>;
    constexpr T whole = std::is_same_v<T, double> ? T(0x1.8p52) : T(0x1.8p23);
    constexpr T shifter = phase == Phase::tangent  ? whole / 2
                          : phase == Phase::cosine ? whole + 1  // cos(pi/2 + r) = -sin r
                                                   : whole;
    constexpr auto inverse = static_cast<T>(inverse_pi);
    V sum;
    if constexpr (phase == Phase::cosine) sum = multiply_subtract(x, inverse, T(0.5)) + shifter;
    else sum = multiply_add(x, inverse, shifter);
    V k = sum - shifter;
    if constexpr (phase == Phase::cosine) k = k + T(0.5);
    return {minus_products(x, k, pi_parts_of<T, Accuracy>), sum,
            (BitsOf<V>)sum << (8 * sizeof(T) - 1)};
}

// sin r, |r| <= pi/2; for cosine too.
template <Phase phase, class Accuracy> inline doubles sine_polynomial(doubles r) {
    const doubles y = r * r;
    if constexpr (std::is_same_v<Accuracy, EP> || std::is_same_v<Accuracy, SingleFar>) {
        // relative error 2^-27.1; 1 at pi/2, nowhere above
        constexpr auto s = coefficients(0x3FF0000000000000, 0xBFC55554ACC9DBD5, 0x3F8110EA82A8D6F9,
                                        0xBF29F679C69FC97F, 0x3EC5D41EE99C7ADA);
        return r * polynomial(y, s);
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        // relative error 2^-52.4; 1 at pi/2
        constexpr auto s = coefficients(0xBFC555555555549B, 0x3F81111111109E82, 0xBF2A01A019A183E5,
                                        0x3EC71DE37EDF0144, 0xBE5AE634DB0007D1, 0x3DE60E57BB7C22D0,
                                        0xBD69EED38C9FAF1F);
        return multiply_add(r, y * polynomial(y, s), r);
    } else {
        // relative error 2^-61.6; for sine 2^-49.2, with s3 and s5 moved by some units: the sine
        // of 0x46199998 is 2^-54 from a midpoint of floats
        constexpr bool sine = phase == Phase::sine;
        constexpr auto s =
            coefficients(0xBFC5555555555555 + (sine ? 7 : 0), 0x3F811111111110C9 - (sine ? 46 : 0),
                         0xBF2A01A01A014EB7, 0x3EC71DE3A52AAC68, 0xBE5AE6454D968E1A,
                         0x3DE6123CE53B2D5E, 0xBD6AE43DD53D1001, 0x3CE883C312E8FD16);
        return multiply_add(r, y * polynomial(y, s), r);
    }
}

// Fused operations round otherwise than those that the coefficients were chosen for, which leave no
// result above 1.
template <class V> inline V at_most_one(V sine) {
    if constexpr (is_fused) return within(sine, Element<V>(1));
    else return sine;
}

template <Phase phase, class Accuracy> inline doubles sine_plain(doubles x) {
    const auto turns = half_turns<phase, Accuracy>(x);
    return flipped(at_most_one(sine_polynomial<phase, Accuracy>(turns.r)), turns.parity);
}

// Sine and cosine of x = k pi + r, 2 k an integer, from those of r: they change places where it is
// odd, and the second lowest bit of `sum` counts half turns.
template <class V> inline Two<V> turned(const HalfTurns<V>& turns, V sine, V cosine) {
    using Bits = BitsOf<V>;
    const Bits swap = ((Bits)sine ^ (Bits)cosine) & sign_mask(turns.parity);
    const Bits sine_sign = sign_bit((V)((Bits)turns.sum << (8 * sizeof(Element<V>) - 2)));
    const Bits cosine_sign = sine_sign ^ turns.parity;
    return {(V)((Bits)sine ^ swap ^ sine_sign), (V)((Bits)cosine ^ swap ^ cosine_sign)};
}

// Double LA and single HA, both at once, |r| <= pi/4, |x| < 2^17. Sine: relative error 2^-57.8
// (single HA 2^-53.0); cosine: absolute 2^-54.1, or, for quotients of products, 2^-58.8 by Taylor's
// series, with r in two parts and few roundings.
template <class Accuracy, bool precise = false> inline Two<doubles> sine_cosine_plain(doubles x) {
    // s3 of single HA is moved by some units, which a sine next to a midpoint needs (above).
    constexpr bool is_rounded = std::is_same_v<Accuracy, SingleHA>;
    constexpr auto s = coefficients(0xBFC5555555555548 + (is_rounded ? 6 : 0), 0x3F8111111110F760,
                                    0xBF2A01A019BF2B7E, 0x3EC71DE355FA4E3D, 0xBE5AE5E55005A3C8,
                                    0x3DE5D8E625BC8FD2);
    const auto turns = half_turns<Phase::tangent, Accuracy>(x);
    if constexpr (precise) {
        // r = high + low; both products but the last are exact.
        const doubles k = turns.sum - 0x1.8p51;
        const doubles r1 = negative_multiply_add(k, pi_parts[0], x), w = k * pi_parts[1];
        const doubles r = r1 - w, low = negative_multiply_add(k, pi_parts[2], (r1 - r) - w);
        constexpr auto c =
            std::array{-1.0 / 2,       1.0 / 24,        -1.0 / 720,         1.0 / 40320,
                       -1.0 / 3628800, 1.0 / 479001600, -1.0 / 87178291200, 1.0 / 20922789888000};
        doubles y, cosine;
        if constexpr (is_fused) {
            y = multiply_add(r, r, (r + r) * low);
            cosine = multiply_add(y, polynomial(y, c), 1.0);
        } else {
            y = r * r;
            const doubles half = 0.5 * y, rest = 1.0 - half;
            const doubles tail = negative_multiply_add(r, low, y * (y * polynomial<1>(y, c)));
            cosine = rest + (((1.0 - rest) - half) + tail);
        }
        return turned(turns, r + multiply_add(r, y * polynomial(y, s), low), cosine);
    }
    constexpr auto c =
        coefficients(0x3FF0000000000000, 0xBFDFFFFFFFFFFFA3, 0x3FA555555554F98A, 0xBF56C16C1648D6B2,
                     0x3EFA019F8862B75B, 0xBE927DF6CBB42E2C, 0x3E21B962D41EE4A1);
    const doubles r = turns.r, y = r * r;
    return turned(turns, multiply_add(r, y * polynomial(y, s), r), polynomial(y, c));
}

// Single LA, both at once. Sine: relative error 2^-27.9; cosine: absolute 2^-24.9.
inline Two<floats> sine_cosine_plain(floats x) {
    constexpr auto s = coefficients(0xBE2AAAA3u, 0x3C0883BDu, 0xB94CAA74u);
    constexpr auto c = coefficients(0x3F800000u, 0xBEFFFFDDu, 0x3D2A9FD6u, 0xBAB23C4Fu);
    const auto turns = half_turns<Phase::tangent, LA>(x);
    const floats r = turns.r, y = r * r;
    return turned(turns, multiply_add(r * y, polynomial(y, s), r), polynomial(y, c));
}

// Single LA and EP. The coefficients of sums are neighbours of the best ones for which no rounded
// result is above 1 (tools/sines_within_one.c).
template <Phase phase, class Accuracy> inline floats sine_plain(floats x) {
    floats r;
    ints sign;
    if constexpr (phase == Phase::sine) {
        const auto turns = half_turns<phase, Accuracy>(x);
        r = turns.r, sign = turns.parity;
    } else {  // k - 1/2 by truncation of |x|/pi; r of -|x|
        const ints k = truncated_to_ints(absolute(x) * static_cast<float>(inverse_pi));
        r = minus_products((floats)((ints)x | INT32_MIN), -0.5f - to_floats(k),
                           pi_parts_of<float, Accuracy>);
        sign = k << 31;
    }
    const floats y = r * r;
    floats s;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // relative error 2^-12.5. For sine a product, which keeps the sign of -0; 1 - 2^-19.6 at
        // pi/2. For cosine a sum that gives 1 for cos 0.
        if constexpr (phase == Phase::sine)
            s = r * polynomial(y, coefficients(0x3F800000u, 0xBE2A09D5u, 0x3BF968F8u));
        else s = r + (r * y) * polynomial(y, coefficients(0xBE2A0A0Au, 0x3BF96CBEu));
    } else {
        // relative error 2^-27.0
        constexpr auto c = coefficients(0xBE2AAAA6u, 0x3C08876Eu, 0xB94FB87Fu, 0x362EE227u);
        s = r + (r * y) * polynomial_by_pairs(y, y * y, c);
    }
    return flipped(at_most_one(s), sign);
}

// numerator / denominator for even 2 k, -denominator / numerator for odd ones.
template <class V> inline V quotient_by_parity(Two<V> f, BitsOf<V> odd, BitsOf<V> parity) {
    using Bits = BitsOf<V>;
    const Bits swap = ((Bits)f.first ^ (Bits)f.second) & odd;
    return flipped((V)((Bits)f.first ^ swap) / (V)((Bits)f.second ^ swap), parity);
}

// tan r = first / second, |r| <= pi/4; relative error 2^-55.2.
inline Two<doubles> tangent_fraction(doubles r) {
    constexpr auto p = coefficients(0xBFC06B8F64B39920, 0x3F66FC3450F68FBF, 0xBEDF62564DD9437B);
    constexpr auto q = coefficients(0x3FF0000000000000, 0xBFDD8B1D07AF21C2, 0x3F97E798D53C10C4,
                                    0xBF2B51D233284546);
    const doubles y = r * r;
    return {multiply_add(r, y * polynomial(y, p), r), polynomial(y, q)};
}
// The same with 2^-35.2.
inline Two<doubles> tangent_short_fraction(doubles r) {
    constexpr auto p = coefficients(0x3FF0000000000000, 0xBFBC81C663DF9444, 0x3F519BB67896CEAD);
    constexpr auto q = coefficients(0x3FF0000000000000, 0xBFDC75C6ED05C432, 0x3F905AABF9BEDED4);
    const doubles y = r * r;
    return {r * polynomial(y, p), polynomial(y, q)};
}
// The same in single precision, 2^-25.8.
inline Two<floats> tangent_fraction(floats r) {
    constexpr auto q = coefficients(0x3F800000u, 0xBEDBB4D4u, 0x3C1F12DCu);
    const floats y = r * r;
    return {multiply_add(r, y * from_bits(0xBDC42863u), r), polynomial(y, q)};
}

// Double LA and single HA: |x| < 2^17; single LA: |x| < 252.
template <class Accuracy, class V> inline V tangent_plain(V x) {
    const auto turns = half_turns<Phase::tangent, Accuracy>(x);
    return quotient_by_parity(tangent_fraction(turns.r), sign_mask(turns.parity), turns.parity);
}

}  // namespace KEF_VM
