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
#include "vm/frame.h"
#include "vm/simd.h"

namespace kef::vm {

// Which sine: a half turn is added for cosine.
enum class Phase { sine, cosine };

// Single HA: the double formula that is rounded once.
struct SingleHA;

// k = x inverse rounded to an integer, or to a half of an odd one, and its parity at
// the sign's place.
template <class V> struct WholeTurns {
    V k;
    decltype(sign_bit(V())) parity;
};
template <class V, Phase phase>
inline WholeTurns<V> whole_turns(V x, auto inverse) {
    constexpr bool is_double = std::is_same_v<V, d2>;
    using T = std::conditional_t<is_double, double, float>;
    // One more for cosine: cos(pi/2 + r) = -sin r.
    constexpr T shifter = (is_double ? T(0x1.8p52) : T(0x1.8p23)) + T(phase == Phase::cosine);
    V sum = x * inverse;
    if constexpr (phase == Phase::cosine) sum = sum - T(0.5);
    sum = sum + shifter;
    V k = sum - shifter;
    if constexpr (phase == Phase::cosine) k = k + T(0.5);
    if constexpr (is_double) return {k, (l2)sum << 63};
    else return {k, (i4)sum << 31};
}

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
template <Phase phase, class Accuracy>
inline d2 sine_polynomial(d2 r) {
    const d2 y = r * r;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // relative error 2^-27.3; 1 at pi/2, nowhere above
        constexpr double s1 = from_bits(UINT64_C(0x3FEFFFFFFCC55EE9));
        constexpr double s3 = from_bits(UINT64_C(0xBFC5555468E20B45));
        constexpr double s5 = from_bits(UINT64_C(0x3F8110E493111EDD));
        constexpr double s7 = from_bits(UINT64_C(0xBF29F5B4D90F16B5));
        constexpr double s9 = from_bits(UINT64_C(0x3EC5CB9795601A65));
        return r * (s1 + y * (s3 + y * (s5 + y * (s7 + y * s9))));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        // relative error 2^-52.4; 1 at pi/2
        constexpr double s3 = from_bits(UINT64_C(0xBFC555555555549B));
        constexpr double s5 = from_bits(UINT64_C(0x3F81111111109E82));
        constexpr double s7 = from_bits(UINT64_C(0xBF2A01A019A183E5));
        constexpr double s9 = from_bits(UINT64_C(0x3EC71DE37EDF0144));
        constexpr double s11 = from_bits(UINT64_C(0xBE5AE634DB0007D1));
        constexpr double s13 = from_bits(UINT64_C(0x3DE60E57BB7C22D0));
        constexpr double s15 = from_bits(UINT64_C(0xBD69EED38C9FAF1F));
        return r + r * (y * (s3 + y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * (s13 + y * s15)))))));
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
        return r + r * (y * (s3 + y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * (s13 + y * (s15 + y * s17))))))));
    }
}

template <Phase phase, class Accuracy>
inline d2 sine_plain(d2 x) {
    constexpr double inverse = from_bits(UINT64_C(0x3FD45F306DC9C883));  // 1/pi
    const auto turns = whole_turns<d2, phase>(x, inverse);
    const d2 s = sine_polynomial<phase, Accuracy>(PiParts<Accuracy>::rest(x, turns.k));
    return (d2)((l2)s ^ turns.parity);
}

// Single HA, both at once: x = k pi/2 + r, |r| <= pi/4. |x| < 2^17.
inline Two<d2> sine_cosine_plain(d2 x) {
    constexpr double inverse = from_bits(UINT64_C(0x3FE45F306DC9C883));  // 2/pi
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
    const d2 sum = x * inverse + 0x1.8p52;
    const d2 r = PiParts<SingleHA>::rest(x, (sum - 0x1.8p52) * 0.5), y = r * r;
    const d2 s = r + r * (y * (s3 + y * (s5 + y * (s7 + y * (s9 + y * (s11 + y * s13))))));
    const d2 c = 1.0 + y * (c2 + y * (c4 + y * (c6 + y * (c8 + y * (c10 + y * c12)))));
    const l2 k = (l2)sum;
    const i4 odd = (i4)(k << 63) >> 31;
    const l2 swap = ((l2)s ^ (l2)c) & (l2)__builtin_shufflevector(odd, odd, 1, 1, 3, 3);
    const l2 sine_sign = (k << 62) & INT64_MIN, cosine_sign = ((k + INT64_C(1)) << 62) & INT64_MIN;
    return {(d2)((l2)s ^ swap ^ sine_sign), (d2)((l2)c ^ swap ^ cosine_sign)};
}

// pi in parts. LA: |x| < 252, k has 8 bits with the half; EP: |x| < 124, k has 7 bits.
template <Phase phase, class Accuracy>
inline f4 sine_plain(f4 x) {
    const auto turns = whole_turns<f4, phase>(x, from_bits(0x3EA2F983u));  // 1/pi
    const f4 k = turns.k;
    f4 s;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        constexpr float P1 = 0x1.921fp+1f, P2 = 0x1.6a8886p-16f;  // 17 bits and the rest
        const f4 r = (x - k * P1) - k * P2;
        // relative error 2^-12.8; 1 at pi/2, nowhere above
        constexpr float s1 = from_bits(0x3F7FF758u), s3 = from_bits(0xBE29D7F7u), s5 = from_bits(0x3BF794B2u);
        const f4 y = r * r;
        s = r * (s1 + y * (s3 + y * s5));
    } else {
        constexpr float P1 = 0x1.921ep+1f, P2 = 0x1.b544p-15f, P3 = 0x1.0b4612p-33f;  // 16 bits
        const f4 r = ((x - k * P1) - k * P2) - k * P3;
        // relative error 2^-27.2
        constexpr float s3 = from_bits(0xBE2AAAA6u), s5 = from_bits(0x3C08876Du),
                        s7 = from_bits(0xB94FB879u), s9 = from_bits(0x362EE4A0u);
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

// tan r = first / second, |r| <= pi/4.
template <class Accuracy>
inline Two<d2> tangent_fraction(d2 r) {
    const d2 y = r * r;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // relative error 2^-35.2
        constexpr double p1 = from_bits(UINT64_C(0xBFBC81C663DF9444));
        constexpr double p2 = from_bits(UINT64_C(0x3F519BB67896CEAD));
        constexpr double q1 = from_bits(UINT64_C(0xBFDC75C6ED05C432));
        constexpr double q2 = from_bits(UINT64_C(0x3F905AABF9BEDED4));
        return {r * (1.0 + y * (p1 + y * p2)), 1.0 + y * (q1 + y * q2)};
    } else {
        // relative error 2^-55.4
        constexpr double p1 = from_bits(UINT64_C(0xBFC06B8F64B39920));
        constexpr double p2 = from_bits(UINT64_C(0x3F66FC3450F68FBF));
        constexpr double p3 = from_bits(UINT64_C(0xBEDF62564DD9437B));
        constexpr double q1 = from_bits(UINT64_C(0xBFDD8B1D07AF21C2));
        constexpr double q2 = from_bits(UINT64_C(0x3F97E798D53C10C4));
        constexpr double q3 = from_bits(UINT64_C(0xBF2B51D233284546));
        return {r + r * (y * (p1 + y * (p2 + y * p3))), 1.0 + y * (q1 + y * (q2 + y * q3))};
    }
}

// LA, single HA: |x| < 2^17; EP: |x| < 2^12.
template <class Accuracy>
inline d2 tangent_plain(d2 x) {
    constexpr double inverse = from_bits(UINT64_C(0x3FE45F306DC9C883));  // 2/pi
    const auto turns = whole_turns<d2, Phase::sine>(x, inverse);
    const Two<d2> f = tangent_fraction<Accuracy>(PiParts<Accuracy>::rest(x, turns.k * 0.5));
    return quotient_by_parity(f.first, f.second, sign_mask(turns.parity), turns.parity);
}

// pi/2 in parts. LA: |x| < 252, k has 8 bits; EP: |x| < 124, k has 7 bits.
template <class Accuracy>
inline f4 tangent_plain(f4 x) {
    const auto turns = whole_turns<f4, Phase::sine>(x, from_bits(0x3F22F983u));  // 2/pi
    const f4 k = turns.k;
    f4 p, q;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        constexpr float P1 = 0x1.921fp+0f, P2 = 0x1.6a8886p-17f;  // 17 bits and the rest
        const f4 r = (x - k * P1) - k * P2, y = r * r;
        // relative error 2^-17
        constexpr float p1 = from_bits(0xBD8C0848u), q1 = from_bits(0xBECD9D84u);
        p = r * (1.0f + y * p1);
        q = 1.0f + y * q1;
    } else {
        constexpr float P1 = 0x1.921ep+0f, P2 = 0x1.b544p-16f, P3 = 0x1.0b4612p-34f;  // 16 bits
        const f4 r = ((x - k * P1) - k * P2) - k * P3, y = r * r;
        // relative error 2^-25.8
        constexpr float p1 = from_bits(0xBDC42863u), q1 = from_bits(0xBEDBB4D4u), q2 = from_bits(0x3C1F12DCu);
        p = r + r * (y * p1);
        q = 1.0f + y * (q1 + y * q2);
    }
    return quotient_by_parity(p, q, turns.parity >> 31, turns.parity);
}

}  // namespace kef::vm
