// Sine and cosine of doubles, from a table:
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
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct SineEntry {
    double sine, cosine;           // of (j - 128) pi/256
    double sine_low, cosine_less;  // sin a - sine, cos a - 1
};
extern const SineEntry sine256_table[256];

}  // namespace kef::vm

namespace KEF_VM {

// What sine and cosine share of r.
struct TrigPowers {
    doubles r, sine, cosine;  // sin r - r, cos r - 1
};
// sin: relative error 2^-61.1; cos: absolute 2^-58.3, or 2^-74 by Taylor's series, for quotients of
// products.
struct ShortCosine {
    static constexpr auto c = coefficients(0xBFDFFFFFFFFFC416, 0x3FA55552E2B72FB5);
};
struct LongCosine {
    static constexpr auto c =
        coefficients(0xBFE0000000000000, 0x3FA5555555555555, 0xBF56C16C16C16C17);
};
template <class Cosine = ShortCosine> inline TrigPowers trig_powers(const TrigReduced& x) {
    constexpr auto s = coefficients(0xBFC5555555554437, 0x3F81110FAAFF7A50);
    constexpr auto& c = Cosine::c;
    const doubles r = x.high, r2 = r * r;
    return {r, multiply_add(r * r2, polynomial(r2, s), x.low), r2 * polynomial(r2, c)};
}

// k counts from the table's first entry: 128 for sine, a quarter turn more for cosine.
inline constexpr int sine_bias = 128, cosine_bias = 256;

// The sign of the half turn.
inline longs sine_sign(longs k) { return (k << 55) & INT64_MIN; }

// |low| < 0.007; without the sign.
inline Parts sine_parts(longs k, const TrigPowers& p) {
    const Rows row(sine256_table, row_numbers(k, 255));
    const auto [S, C] = row.pair(&SineEntry::sine);
    const doubles high = S + p.r;  // |S| > |r| or S = 0
    const doubles rest = (S - high) + p.r;
    const auto [s, c] = row.pair(&SineEntry::sine_low);
    const doubles small = multiply_add(C, p.sine, S * p.cosine);
    return {high, rest + (s + multiply_add(c, p.r, small))};
}

inline doubles sine_of(longs k, const TrigPowers& p) {
    return flipped(rounded(sine_parts(k, p)), sine_sign(k));
}

// Sine (bias 128) or cosine (bias 256).
template <int bias, TrigReach reach> inline doubles sine_core(doubles x) {
    const TrigReduced reduced = trig_reduce<bias, reach>(x);
    return sine_of(reduced.k, trig_powers(reduced));
}

// One element of any size, normalised.
template <class Cosine = ShortCosine>
inline DoubleDouble<double> sine_one(const TrigReduced& x, int bias) {
    const longs k = x.k + static_cast<std::int64_t>(bias);
    const Parts parts = sine_parts(k, trig_powers<Cosine>(x));
    const Parts sum = fast_two_sum(parts.high, parts.low);
    const Parts r = flipped(sum, sine_sign(k));
    return {r.high[0], r.low[0]};
}

// Tangent as quotient of the two: 0.54 ulp.
inline Parts tangent_parts(const TrigReduced& x) {
    const TrigPowers p = trig_powers(x);
    const longs k = x.k, kc = k + INT64_C(128);
    const Parts s_parts = sine_parts(k, p), c_parts = sine_parts(kc, p);
    const Parts s = fast_two_sum(s_parts.high, s_parts.low);
    const Parts c = fast_two_sum(c_parts.high, c_parts.low);
    return flipped(divide(s, c), (k ^ kc) << 55 & INT64_MIN);
}

template <TrigReach reach> inline doubles tangent_core(doubles x) {
    return rounded(tangent_parts(trig_reduce<sine_bias, reach>(x)));
}

// One element of any size, normalised.
inline DoubleDouble<double> tangent_one(TrigReduced x) {
    x.k = x.k + INT64_C(128);
    const Parts parts = tangent_parts(x);
    const Parts sum = fast_two_sum(parts.high, parts.low);
    return {sum.high[0], sum.low[0]};
}

}  // namespace KEF_VM
