// Sine and cosine of doubles, from a table:
//
//   x = k pi/256 + r,  |r| <= pi/512,  a = k pi/256
//   sin x = sin a + cos a sin r + sin a (cos r - 1)
//
// with the table for a in [-pi/2, pi/2), where cos a >= 0, and the sign from the half
// turns. cos a sin r = r + (cos a - 1) r + ..., so that sin a + r, summed exactly,
// leaves a low part whose rounding errors do not count: 0.54 ulp. cos x = sin(x + pi/2).
//
// Where numbers are looked up, the steps are pi/16, |r| <= pi/32, and cos a sin r begins with a
// product in two parts; sine and cosine have the same numbers.
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

// The same of (j - 8) pi/16, field by field.
struct alignas(64) Sine16 {
    double sine[16], cosine[16], sine_low[16], cosine_low[16];
};
extern const Sine16 sine16_table;

}  // namespace kef::vm

namespace KEF_VM {

// The steps of a half turn for vectors of real functions. Complex ones go by rows: their small r
// leaves cos r - 1 less of an error.
inline constexpr int steps_of_vectors = rows_or_lookup(row_steps, 16);

// (sin r - r)/r^3 and (cos r - 1)/r^2 in powers of r^2. sin: relative error 2^-61.1, of 16 steps
// 2^-67.2; cos: absolute 2^-58.3, of 16 steps 2^-64.0, or 2^-74 by Taylor's series, for quotients
// of products.
template <int steps> struct SinePolynomials {
    static constexpr auto sine = coefficients(0xBFC5555555554437, 0x3F81110FAAFF7A50),
                          cosine = coefficients(0xBFDFFFFFFFFFC416, 0x3FA55552E2B72FB5);
};
template <> struct SinePolynomials<16> {
    static constexpr auto sine = coefficients(0xBFC5555555555555, 0x3F8111111110F5B9,
                                              0xBF2A01A01099A200, 0x3EC71CAD73A3AA1C),
                          cosine = coefficients(0xBFDFFFFFFFFFFFFD, 0x3FA555555554F6D3,
                                                0xBF56C16C084EEB2A, 0x3EF9FFE2A2371250);
};
struct LongCosine : SinePolynomials<row_steps> {
    static constexpr auto cosine =
        coefficients(0xBFE0000000000000, 0x3FA5555555555555, 0xBF56C16C16C16C17);
};

// What sine and cosine share of r.
template <int steps> struct TrigPowers {
    doubles r, sine, cosine;  // sin r - r, cos r - 1
};
template <class Polynomials, int steps>
inline TrigPowers<steps> trig_powers(const TrigReduced<steps>& x) {
    const doubles r = x.high, r2 = r * r;
    doubles cosine = r2 * polynomial(r2, Polynomials::cosine);
    if constexpr (steps < row_steps) cosine = negative_multiply_add(r, x.low, cosine);
    return {r, multiply_add(r * r2, polynomial(r2, Polynomials::sine), x.low), cosine};
}
template <int steps> inline TrigPowers<steps> trig_powers(const TrigReduced<steps>& x) {
    return trig_powers<SinePolynomials<steps>>(x);
}

// k counts from the table's first entry: a quarter turn for sine, two for cosine.
inline constexpr int sine_quarters = 1, cosine_quarters = 2;
template <int steps> inline TrigReduced<steps> ahead(TrigReduced<steps> x, int quarters) {
    x.k = x.k + std::int64_t{quarters * steps / 2};
    return x;
}

// The sign of the half turn.
template <int steps = row_steps> inline longs sine_sign(longs k) {
    return (k << (64 - std::bit_width(unsigned{steps}))) & INT64_MIN;
}

// |low| < 0.007; without the sign.
inline Parts sine_parts(longs k, const TrigPowers<row_steps>& p) {
    const Rows row(sine256_table, row_numbers(k, 255));
    const auto [S, C] = row.pair(&SineEntry::sine);
    const doubles high = S + p.r;  // |S| > |r| or S = 0
    const doubles rest = (S - high) + p.r;
    const auto [s, c] = row.pair(&SineEntry::sine_low);
    const doubles small = multiply_add(C, p.sine, S * p.cosine);
    return {high, rest + (s + multiply_add(c, p.r, small))};
}

// Sine and cosine, their signs apart.
struct SineCosine {
    Parts sine, cosine;
    longs sine_sign, cosine_sign;
};
inline SineCosine sine_cosine_parts(longs k, const TrigPowers<row_steps>& p) {
    const longs kc = k + INT64_C(128);
    return {sine_parts(k, p), sine_parts(kc, p), sine_sign(k), sine_sign(kc)};
}

// A + B r and what is left of sin(a + r) or cos(a + r) = A cos r + B sin r, all in two parts;
// |A| > |B r| or A = 0.
inline Parts turned_by(const TrigPowers<16>& p, Parts a, Parts b) {
    const Parts product = two_product(b.high, p.r), sum = fast_two_sum(a.high, product.high);
    const doubles small = multiply_add(a.high, p.cosine, b.high * p.sine);
    return {sum.high, sum.low + (product.low + (a.low + multiply_add(b.low, p.r, small)))};
}
inline SineCosine sine_cosine_parts(longs k, const TrigPowers<16>& p) {
    const auto of = [&](const double(&field)[16]) { return looked_up(field, k); };
    const Parts S{of(sine16_table.sine), of(sine16_table.sine_low)},
        C{of(sine16_table.cosine), of(sine16_table.cosine_low)};
    const longs sign = sine_sign<16>(k);
    return {turned_by(p, S, C), turned_by(p, C, {-S.high, -S.low}), sign, sign};
}
inline Parts sine_parts(longs k, const TrigPowers<16>& p) { return sine_cosine_parts(k, p).sine; }

template <int steps> inline doubles sine_of(longs k, const TrigPowers<steps>& p) {
    return flipped(rounded(sine_parts(k, p)), sine_sign<steps>(k));
}

// Sine (one quarter turn) or cosine (two).
template <int quarters, TrigReach reach> inline doubles sine_core(doubles x) {
    const auto reduced = trig_reduce<quarters, reach, steps_of_vectors>(x);
    return sine_of(reduced.k, trig_powers(reduced));
}

// One element of any size, normalised.
template <class Polynomials = SinePolynomials<row_steps>>
inline DoubleDouble<double> sine_one(const TrigReduced<>& x, int quarters) {
    const longs k = ahead(x, quarters).k;
    const Parts parts = sine_parts(k, trig_powers<Polynomials>(x));
    const Parts sum = fast_two_sum(parts.high, parts.low);
    const Parts r = flipped(sum, sine_sign(k));
    return {r.high[0], r.low[0]};
}

// Tangent as quotient of the two: 0.54 ulp.
template <int steps> inline Parts tangent_parts(const TrigReduced<steps>& x) {
    const SineCosine both = sine_cosine_parts(x.k, trig_powers(x));
    const Parts s = fast_two_sum(both.sine.high, both.sine.low);
    const Parts c = fast_two_sum(both.cosine.high, both.cosine.low);
    return flipped(divide(s, c), both.sine_sign ^ both.cosine_sign);
}

template <TrigReach reach> inline doubles tangent_core(doubles x) {
    return rounded(tangent_parts(trig_reduce<sine_quarters, reach, steps_of_vectors>(x)));
}

// One element of any size, normalised.
inline DoubleDouble<double> tangent_one(const TrigReduced<>& x) {
    const Parts parts = tangent_parts(ahead(x, sine_quarters));
    const Parts sum = fast_two_sum(parts.high, parts.low);
    return {sum.high[0], sum.low[0]};
}

}  // namespace KEF_VM
