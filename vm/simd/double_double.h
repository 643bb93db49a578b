// Unevaluated sums of two doubles, for vectors and scalars alike; no FMA.
// T. J. Dekker, A floating-point technique for extending the available precision,
// Numerische Mathematik 18 (1971); D. E. Knuth, TAOCP vol. 2, 4.2.2.
#pragma once

#include "vm/simd/simd.h"

namespace kef::vm {

// high + low; normalised where |low| <= ulp(high)/2.
template <class V> struct DoubleDouble { V high, low; };

// a + b exactly, for |a| >= |b| or a = 0.
template <class V> inline DoubleDouble<V> fast_two_sum(V a, V b) {
    const V sum = a + b;
    return {sum, b - (sum - a)};
}

// a + b exactly.
template <class V> inline DoubleDouble<V> two_sum(V a, V b) {
    const V sum = a + b, b_part = sum - a;
    return {sum, (a - (sum - b_part)) + (b - b_part)};
}

// a as two halves of at most 26 bits; |a| < 2^996.
template <class V> inline DoubleDouble<V> split(V a) {
    const V t = a * 134217729.0;  // 2^27 + 1
    const V high = t - (t - a);
    return {high, a - high};
}

// The leading 26 bits of a: the product of two such numbers is exact, and a minus
// them has 27 bits.
inline d2 leading(d2 a) { return (d2)((l2)a & INT64_C(-0x8000000)); }

// a b exactly, halves given; no underflow where |a b| > 2^-968.
template <class V>
inline DoubleDouble<V> two_product(V a, DoubleDouble<V> a_halves, V b, DoubleDouble<V> b_halves) {
    const V product = a * b;
    const V low = ((a_halves.high * b_halves.high - product) + a_halves.high * b_halves.low +
                   a_halves.low * b_halves.high) +
                  a_halves.low * b_halves.low;
    return {product, low};
}

template <class V> inline DoubleDouble<V> two_product(V a, V b) {
    return two_product(a, split(a), b, split(b));
}

// a^2 exactly, as two_product.
template <class V> inline DoubleDouble<V> two_square(V a) {
    const DoubleDouble<V> halves = split(a);
    const V square = a * a;
    const V cross = halves.high * halves.low;
    return {square,
            ((halves.high * halves.high - square) + (cross + cross)) + halves.low * halves.low};
}

// a b for normalised a and b, normalised; relative error below 2^-77.
inline DoubleDouble<d2> multiply(DoubleDouble<d2> a, DoubleDouble<d2> b) {
    const d2 a_high = leading(a.high), b_high = leading(b.high);
    return fast_two_sum(a_high * b_high, a_high * ((b.high - b_high) + b.low) +
                                             ((a.high - a_high) + a.low) * b.high);
}

// a / b for normalised a and b, relative error below 2^-74: a quotient of 26 bits and
// its exact remainder. The low part is below 2^-25 of the high one.
inline DoubleDouble<d2> divide(DoubleDouble<d2> a, DoubleDouble<d2> b) {
    const d2 inverse = 1.0 / b.high;
    const d2 q = leading(a.high * inverse), b_high = leading(b.high);
    const d2 rest = ((a.high - q * b_high) - q * ((b.high - b_high) + b.low)) + a.low;
    return {q, rest * inverse};
}

// high + low of the first lane in single precision, rounded once.
inline float rounded_once(DoubleDouble<d2> x) {
    const DoubleDouble<d2> sum = fast_two_sum(x.high, x.low);
    return narrow(sum.high[0], sum.low[0]);
}

}  // namespace kef::vm
