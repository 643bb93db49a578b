// Sine and cosine of two doubles at a time, from a table:
//
//   x = k pi/256 + r,  |r| <= pi/512,  a = k pi/256
//   sin x = sin a + cos a sin r + sin a (cos r - 1)
//
// with the table for a in [-pi/2, pi/2), where cos a >= 0, and the sign from the half
// turns. cos a sin r = r + (cos a - 1) r + ..., so that sin a + r, summed exactly,
// leaves a low part whose rounding errors do not count: 0.54 ulp. cos x = sin(x + pi/2).
// Table: tools/trig_tables.py; polynomials: tools/trig.sollya.
#pragma once

#include "vm/core/trig_reduction.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct SineEntry {
    double sine, cosine;           // of (j - 128) pi/256
    double sine_low, cosine_less;  // sin a - sine, cos a - 1
};
extern const SineEntry sine256_table[256];

// What sine and cosine share of r.
struct TrigPowers {
    d2 r, sine, cosine;  // sin r - r, cos r - 1
};
inline TrigPowers trig_powers(const TrigReduced& x) {
    // sin: relative error 2^-61.1; cos: absolute 2^-58.3.
    constexpr double s3 = from_bits(UINT64_C(0xBFC5555555554437));
    constexpr double s5 = from_bits(UINT64_C(0x3F81110FAAFF7A50));
    constexpr double c2 = from_bits(UINT64_C(0xBFDFFFFFFFFFC416));
    constexpr double c4 = from_bits(UINT64_C(0x3FA55552E2B72FB5));
    const d2 r = x.high, r2 = r * r;
    return {r, r * r2 * (s3 + r2 * s5) + x.low, r2 * (c2 + r2 * c4)};
}

// k counts from the table's first entry: 128 for sine, a quarter turn more for cosine.
inline constexpr int sine_bias = 128, cosine_bias = 256;

// The sign of the half turn.
inline l2 sine_sign(l2 k) { return (k << 55) & INT64_MIN; }

// |low| < 0.007; without the sign.
inline DoubleDouble<d2> sine_parts(l2 k, const TrigPowers& p) {
    const SineEntry& entry0 = sine256_table[_mm_extract_epi16((__m128i)k, 0) & 255];
    const SineEntry& entry1 = sine256_table[_mm_extract_epi16((__m128i)k, 4) & 255];
    const d2 a0 = (d2)_mm_load_pd(&entry0.sine), a1 = (d2)_mm_load_pd(&entry1.sine);
    const d2 b0 = (d2)_mm_load_pd(&entry0.sine_low), b1 = (d2)_mm_load_pd(&entry1.sine_low);
    const d2 S = __builtin_shufflevector(a0, a1, 0, 2), C = __builtin_shufflevector(a0, a1, 1, 3);
    const d2 s = __builtin_shufflevector(b0, b1, 0, 2), c = __builtin_shufflevector(b0, b1, 1, 3);
    const d2 high = S + p.r;  // |S| > |r| or S = 0
    const d2 rest = (S - high) + p.r;
    return {high, rest + (s + (c * p.r + (C * p.sine + S * p.cosine)))};
}

inline d2 sine_of(l2 k, const TrigPowers& p) {
    const DoubleDouble<d2> parts = sine_parts(k, p);
    return (d2)((l2)(parts.high + parts.low) ^ sine_sign(k));
}

// Sine (bias 128) or cosine (bias 256).
template <int bias, TrigReach reach> inline d2 sine_core(d2 x) {
    const TrigReduced reduced = trig_reduce<bias, reach>(x);
    return sine_of(reduced.k, trig_powers(reduced));
}

// One element of any size, normalised.
inline DoubleDouble<double> sine_one(const TrigReduced& x, int bias) {
    const l2 k = x.k + static_cast<std::int64_t>(bias);
    const DoubleDouble<d2> parts = sine_parts(k, trig_powers(x));
    const DoubleDouble<d2> sum = fast_two_sum(parts.high, parts.low);
    return {((d2)((l2)sum.high ^ sine_sign(k)))[0], ((d2)((l2)sum.low ^ sine_sign(k)))[0]};
}

// Tangent as quotient of the two; the quotient's first 26 bits leave a remainder that is
// exact but for the low parts: 0.54 ulp.
inline DoubleDouble<d2> tangent_parts(const TrigReduced& x) {
    constexpr std::int64_t leading26 = INT64_C(-0x8000000);
    const TrigPowers p = trig_powers(x);
    const l2 k = x.k, kc = k + INT64_C(128);
    const DoubleDouble<d2> s_parts = sine_parts(k, p), c_parts = sine_parts(kc, p);
    const DoubleDouble<d2> s = fast_two_sum(s_parts.high, s_parts.low);
    const DoubleDouble<d2> c = fast_two_sum(c_parts.high, c_parts.low);
    const d2 inverse = 1.0 / c.high;
    const d2 c_short = (d2)((l2)c.high & leading26);
    const d2 c_rest = (c.high - c_short) + c.low;
    const l2 sign = (k ^ kc) << 55 & INT64_MIN;
    const d2 q = (d2)((l2)(s.high * inverse) & leading26);
    const d2 rest = ((s.high - q * c_short) - q * c_rest) + s.low;
    return {(d2)((l2)q ^ sign), (d2)((l2)(rest * inverse) ^ sign)};
}

template <TrigReach reach> inline d2 tangent_core(d2 x) {
    const DoubleDouble<d2> parts = tangent_parts(trig_reduce<sine_bias, reach>(x));
    return parts.high + parts.low;
}

// One element of any size, normalised.
inline DoubleDouble<double> tangent_one(TrigReduced x) {
    x.k = x.k + INT64_C(128);
    const DoubleDouble<d2> parts = tangent_parts(x);
    const DoubleDouble<d2> sum = fast_two_sum(parts.high, parts.low);
    return {sum.high[0], sum.low[0]};
}

}  // namespace kef::vm
