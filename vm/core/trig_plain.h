// Sine, cosine and tangent without a table, for a relative error of some units in the
// last place:
//
//   sine, cosine  x = k pi + r, k an integer or, for cosine, a half of an odd one;
//                 +-sin r from one polynomial, |r| <= pi/2
//   tangent       x = k pi/2 + r; tan r or -1/tan r from one quotient of polynomials,
//                 |r| <= pi/4
//
// Constants: tools/trig_tables.py --constants; polynomials: tools/trig.sollya and
// tools/tangent.py.
#pragma once

#include "vm/core/trig_reduction.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

// Which sine: a quarter turn is added for cosine. Tangent goes by quarter turns.
enum class Phase { sine, cosine, tangent };

// Single HA: the double formula that is rounded once.
struct SingleHA;

// k = x inverse rounded to an integer; for cosine to a half of an odd one, for tangent to
// any half. `parity`, at the sign's place: of k, k - 1/2 and 2 k.
template <class V> struct WholeTurns {
    V k, sum;  // the last bits of sum count k
    decltype(sign_bit(V())) parity;
};
template <class V, Phase phase> inline WholeTurns<V> whole_turns(V x, auto inverse) {
    constexpr bool is_double = std::is_same_v<V, d2>;
    using T = std::conditional_t<is_double, double, float>;
    // One more for cosine: cos(pi/2 + r) = -sin r.
    constexpr T shifter =
        (is_double ? T(0x1.8p52) : T(0x1.8p23)) * (phase == Phase::tangent ? T(0.5) : T(1)) +
        T(phase == Phase::cosine);
    V sum = x * inverse;
    if constexpr (phase == Phase::cosine) sum = sum - T(0.5);
    sum = sum + shifter;
    V k = sum - shifter;
    if constexpr (phase == Phase::cosine) k = k + T(0.5);
    if constexpr (is_double) return {k, sum, (l2)sum << 63};
    else return {k, sum, (i4)sum << 31};
}

inline constexpr double inverse_pi = from_bits(UINT64_C(0x3FD45F306DC9C883));

// r = x - k pi, all products but the last exact.
template <class Accuracy> struct PiParts;
// |x| < 2^18: k has 18 bits with the half.
template <> struct PiParts<LA> {
    static constexpr double P1 = from_bits(UINT64_C(0x400921FB54440000));
    static constexpr double P2 = from_bits(UINT64_C(0x3D968C234C4C0000));
    static constexpr double P3 = from_bits(UINT64_C(0x3B398A2E03707345));
    static d2 rest(d2 x, d2 k) { return ((x - k * P1) - k * P2) - k * P3; }
};
// |x| < 2^18 from single precision.
template <> struct PiParts<SingleHA> {
    static constexpr double P1 = from_bits(UINT64_C(0x400921FB54440000));
    static constexpr double P2 = from_bits(UINT64_C(0x3D968C234C4C6629));
    static d2 rest(d2 x, d2 k) { return (x - k * P1) - k * P2; }
};
// |x| < 2^13: k has 13 bits with the half.
template <> struct PiParts<EP> {
    static constexpr double P1 = from_bits(UINT64_C(0x400921FB54442000));
    static constexpr double P2 = from_bits(UINT64_C(0x3D7A308D313198A3));
    static d2 rest(d2 x, d2 k) { return (x - k * P1) - k * P2; }
};

// sin r, |r| <= pi/2; for cosine too.
template <Phase phase, class Accuracy> inline d2 sine_polynomial(d2 r) {
    const d2 y = r * r;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // relative error 2^-27.1; 1 at pi/2, nowhere above
        constexpr double s3 = from_bits(UINT64_C(0xBFC55554ACC9DBD5));
        constexpr double s5 = from_bits(UINT64_C(0x3F8110EA82A8D6F9));
        constexpr double s7 = from_bits(UINT64_C(0xBF29F679C69FC97F));
        constexpr double s9 = from_bits(UINT64_C(0x3EC5D41EE99C7ADA));
        return r * (1.0 + y * (s3 + y * (s5 + y * (s7 + y * s9))));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        // relative error 2^-52.4; 1 at pi/2
        constexpr double s3 = from_bits(UINT64_C(0xBFC555555555549B));
        constexpr double s5 = from_bits(UINT64_C(0x3F81111111109E82));
        constexpr double s7 = from_bits(UINT64_C(0xBF2A01A019A183E5));
        constexpr double s9 = from_bits(UINT64_C(0x3EC71DE37EDF0144));
        constexpr double s11 = from_bits(UINT64_C(0xBE5AE634DB0007D1));
        constexpr double s13 = from_bits(UINT64_C(0x3DE60E57BB7C22D0));
        constexpr double s15 = from_bits(UINT64_C(0xBD69EED38C9FAF1F));
        return r +
               r * (y * (s3 + y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * (s13 + y * s15)))))));
    } else {
        // relative error 2^-61.6; for sine s3 and s5 are moved by some units: the sine of
        // 0x46199998 is 2^-54 from a midpoint of floats
        constexpr bool sine = phase == Phase::sine;
        constexpr double s3 = from_bits(UINT64_C(0xBFC5555555555555) + (sine ? 7 : 0));
        constexpr double s5 = from_bits(UINT64_C(0x3F811111111110C9) - (sine ? 46 : 0));
        constexpr double s7 = from_bits(UINT64_C(0xBF2A01A01A014EB7));
        constexpr double s9 = from_bits(UINT64_C(0x3EC71DE3A52AAC68));
        constexpr double s11 = from_bits(UINT64_C(0xBE5AE6454D968E1A));
        constexpr double s13 = from_bits(UINT64_C(0x3DE6123CE53B2D5E));
        constexpr double s15 = from_bits(UINT64_C(0xBD6AE43DD53D1001));
        constexpr double s17 = from_bits(UINT64_C(0x3CE883C312E8FD16));
        return r +
               r * (y *
                    (s3 +
                     y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * (s13 + y * (s15 + y * s17))))))));
    }
}

template <Phase phase, class Accuracy> inline d2 sine_plain(d2 x) {
    const auto turns = whole_turns<d2, phase>(x, inverse_pi);
    const d2 s = sine_polynomial<phase, Accuracy>(PiParts<Accuracy>::rest(x, turns.k));
    return (d2)((l2)s ^ turns.parity);
}

// Sine and cosine of x = k pi/2 + r from those of r.
template <class V> inline Two<V> turned(const WholeTurns<V>& turns, V sine, V cosine) {
    using Bits = decltype(turns.parity);
    const Bits swap = ((Bits)sine ^ (Bits)cosine) & sign_mask(turns.parity);
    const Bits sine_sign = sign_bit((V)((Bits)turns.sum << (std::is_same_v<V, d2> ? 62 : 30)));
    const Bits cosine_sign = sine_sign ^ turns.parity;
    return {(V)((Bits)sine ^ swap ^ sine_sign), (V)((Bits)cosine ^ swap ^ cosine_sign)};
}

// Double LA and single HA, both at once: x = k pi/2 + r, |r| <= pi/4. |x| < 2^17.
template <class Accuracy> inline Two<d2> sine_cosine_plain(d2 x) {
    // sine: relative error 2^-57.9; cosine: absolute 2^-54.1
    constexpr double s3 = from_bits(UINT64_C(0xBFC555555555554E));
    constexpr double s5 = from_bits(UINT64_C(0x3F8111111110F760));
    constexpr double s7 = from_bits(UINT64_C(0xBF2A01A019BF2B7E));
    constexpr double s9 = from_bits(UINT64_C(0x3EC71DE355FA4E3D));
    constexpr double s11 = from_bits(UINT64_C(0xBE5AE5E55005A3C8));
    constexpr double s13 = from_bits(UINT64_C(0x3DE5D8E625BC8FD2));
    constexpr double c2 = from_bits(UINT64_C(0xBFDFFFFFFFFFFFA3));
    constexpr double c4 = from_bits(UINT64_C(0x3FA555555554F98A));
    constexpr double c6 = from_bits(UINT64_C(0xBF56C16C1648D6B2));
    constexpr double c8 = from_bits(UINT64_C(0x3EFA019F8862B75B));
    constexpr double c10 = from_bits(UINT64_C(0xBE927DF6CBB42E2C));
    constexpr double c12 = from_bits(UINT64_C(0x3E21B962D41EE4A1));
    const auto turns = whole_turns<d2, Phase::tangent>(x, inverse_pi);
    const d2 r = PiParts<Accuracy>::rest(x, turns.k), y = r * r;
    const d2 s = r + r * (y * (s3 + y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * s13))))));
    const d2 c = 1.0 + y * (c2 + y * (c4 + y * (c6 + y * (c8 + y * (c10 + y * c12)))));
    return turned(turns, s, c);
}

// k pi/2 + r = x in single precision; |x| < 252, k has 8 bits.
inline WholeTurns<f4> quarter_turns(f4 x) {
    return whole_turns<f4, Phase::sine>(x, from_bits(0x3F22F983u));  // 2/pi
}
inline f4 quarter_rest(f4 x, f4 k) {
    constexpr float P1 = 0x1.921ep+0f, P2 = 0x1.b544p-16f, P3 = 0x1.0b4612p-34f;  // 16 bits
    return ((x - k * P1) - k * P2) - k * P3;
}

// Single LA, both at once.
inline Two<f4> sine_cosine_plain(f4 x) {
    // sine: relative error 2^-27.9; cosine: absolute 2^-24.9
    constexpr float s3 = from_bits(0xBE2AAAA3u), s5 = from_bits(0x3C0883BDu),
                    s7 = from_bits(0xB94CAA74u);
    constexpr float c2 = from_bits(0xBEFFFFDDu), c4 = from_bits(0x3D2A9FD6u),
                    c6 = from_bits(0xBAB23C4Fu);
    const WholeTurns<f4> turns = quarter_turns(x);
    const f4 r = quarter_rest(x, turns.k), y = r * r;
    return turned(turns, r + (r * y) * (s3 + y * (s5 + y * s7)),
                  1.0f + y * (c2 + y * (c4 + y * c6)));
}

// x = k pi + r for sine, |x| = k pi - r for cosine, with k as above; for cosine it comes from
// truncation.
template <Phase phase> inline WholeTurns<f4> half_turns(f4 x) {
    constexpr auto inverse = static_cast<float>(inverse_pi);
    if constexpr (phase == Phase::sine) return whole_turns<f4, phase>(x, inverse);
    const i4 k = (i4)_mm_cvttps_epi32((__m128)(absolute(x) * inverse));
    return {(f4)_mm_cvtepi32_ps((__m128i)k) + 0.5f, (f4)k, k << 31};
}
template <Phase phase> inline f4 sine_rest(f4 x, f4 k, auto first, auto... others) {
    if constexpr (phase == Phase::sine) return ((x - k * first) - ... - (k * others));
    else return ((k * first - absolute(x)) + ... + (k * others));
}

// pi in parts. LA: |x| < 252, k has 8 bits with the half; EP: |x| < 124, k has 7 bits. The sums'
// coefficients are neighbours of the best ones for which no rounded result is above 1
// (tools/sines_within_one.c).
template <Phase phase, class Accuracy> inline f4 sine_plain(f4 x) {
    const WholeTurns<f4> turns = half_turns<phase>(x);
    f4 s;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        constexpr float P1 = 0x1.921fp+1f, P2 = 0x1.6a8886p-16f;  // 17 bits and the rest
        const f4 r = sine_rest<phase>(x, turns.k, P1, P2);
        // relative error 2^-12.5. For sine a product, which keeps the sign of -0; 1 - 2^-19.6 at
        // pi/2. For cosine a sum that gives 1 for cos 0.
        constexpr bool sine = phase == Phase::sine;
        constexpr float s3 = from_bits(sine ? 0xBE2A09D5u : 0xBE2A0A0Au),
                        s5 = from_bits(sine ? 0x3BF968F8u : 0x3BF96CBEu);
        const f4 y = r * r;
        if constexpr (sine) s = r * (1.0f + y * (s3 + y * s5));
        else s = r + (r * y) * (s3 + y * s5);
    } else {
        constexpr float P1 = 0x1.921ep+1f, P2 = 0x1.b544p-15f, P3 = 0x1.0b4612p-33f;  // 16 bits
        const f4 r = sine_rest<phase>(x, turns.k, P1, P2, P3);
        // relative error 2^-27.0
        constexpr float s3 = from_bits(0xBE2AAAA6u), s5 = from_bits(0x3C08876Eu),
                        s7 = from_bits(0xB94FB87Fu), s9 = from_bits(0x362EE227u);
        const f4 y = r * r;
        s = r + (r * y) * ((s3 + y * s5) + (y * y) * (s7 + y * s9));
    }
    return (f4)((i4)s ^ turns.parity);
}

// numerator / denominator for even k, -denominator / numerator for odd k.
template <class V, class Bits>
inline V quotient_by_parity(V numerator, V denominator, Bits odd, Bits parity) {
    const Bits swap = ((Bits)numerator ^ (Bits)denominator) & odd;
    return (V)((Bits)((V)((Bits)numerator ^ swap) / (V)((Bits)denominator ^ swap)) ^ parity);
}

// tan r = first / second, |r| <= pi/4; relative error 2^-55.4.
inline Two<d2> tangent_fraction(d2 r) {
    constexpr double p1 = from_bits(UINT64_C(0xBFC06B8F64B39920));
    constexpr double p2 = from_bits(UINT64_C(0x3F66FC3450F68FBF));
    constexpr double p3 = from_bits(UINT64_C(0xBEDF62564DD9437B));
    constexpr double q1 = from_bits(UINT64_C(0xBFDD8B1D07AF21C2));
    constexpr double q2 = from_bits(UINT64_C(0x3F97E798D53C10C4));
    constexpr double q3 = from_bits(UINT64_C(0xBF2B51D233284546));
    const d2 y = r * r;
    return {r + r * (y * (p1 + y * (p2 + y * p3))), 1.0 + y * (q1 + y * (q2 + y * q3))};
}
// The same with 2^-35.2.
inline Two<d2> tangent_short_fraction(d2 r) {
    constexpr double p1 = from_bits(UINT64_C(0xBFBC81C663DF9444));
    constexpr double p2 = from_bits(UINT64_C(0x3F519BB67896CEAD));
    constexpr double q1 = from_bits(UINT64_C(0xBFDC75C6ED05C432));
    constexpr double q2 = from_bits(UINT64_C(0x3F905AABF9BEDED4));
    const d2 y = r * r;
    return {r * (1.0 + y * (p1 + y * p2)), 1.0 + y * (q1 + y * q2)};
}

// LA, single HA: |x| < 2^17.
template <class Accuracy> inline d2 tangent_plain(d2 x) {
    const auto turns = whole_turns<d2, Phase::tangent>(x, inverse_pi);
    const Two<d2> f = tangent_fraction(PiParts<Accuracy>::rest(x, turns.k));
    return quotient_by_parity(f.first, f.second, sign_mask(turns.parity), turns.parity);
}

// |x| < 252.
inline f4 tangent_plain(f4 x) {
    // relative error 2^-25.8
    constexpr float p1 = from_bits(0xBDC42863u), q1 = from_bits(0xBEDBB4D4u),
                    q2 = from_bits(0x3C1F12DCu);
    const WholeTurns<f4> turns = quarter_turns(x);
    const f4 r = quarter_rest(x, turns.k), y = r * r;
    return quotient_by_parity(r + r * (y * p1), 1.0f + y * (q1 + y * q2), sign_mask(turns.parity),
                              turns.parity);
}

}  // namespace kef::vm
