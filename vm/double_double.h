// Unevaluated sums of two doubles, for vectors and scalars alike; no FMA.
// T. J. Dekker, A floating-point technique for extending the available precision,
// Numerische Mathematik 18 (1971); D. E. Knuth, TAOCP vol. 2, 4.2.2.
#pragma once

namespace kef::vm {

// high + low; normalised where |low| <= ulp(high)/2.
template <class V>
struct DoubleDouble {
    V high, low;
};

// a + b exactly, for |a| >= |b| or a = 0.
template <class V>
inline DoubleDouble<V> fast_two_sum(V a, V b) {
    const V sum = a + b;
    return {sum, b - (sum - a)};
}

// a + b exactly.
template <class V>
inline DoubleDouble<V> two_sum(V a, V b) {
    const V sum = a + b, b_part = sum - a;
    return {sum, (a - (sum - b_part)) + (b - b_part)};
}

// a as two halves of at most 26 bits; |a| < 2^996.
template <class V>
inline DoubleDouble<V> split(V a) {
    const V t = a * 134217729.0;  // 2^27 + 1
    const V high = t - (t - a);
    return {high, a - high};
}

// a b exactly, halves given; no underflow where |a b| > 2^-968.
template <class V>
inline DoubleDouble<V> two_product(V a, DoubleDouble<V> a_halves, V b, DoubleDouble<V> b_halves) {
    const V product = a * b;
    const V low = ((a_halves.high * b_halves.high - product) + a_halves.high * b_halves.low +
                   a_halves.low * b_halves.high) +
                  a_halves.low * b_halves.low;
    return {product, low};
}

template <class V>
inline DoubleDouble<V> two_product(V a, V b) {
    return two_product(a, split(a), b, split(b));
}

// a^2 exactly, as two_product.
template <class V>
inline DoubleDouble<V> two_square(V a) {
    const DoubleDouble<V> halves = split(a);
    const V square = a * a;
    const V cross = halves.high * halves.low;
    return {square, ((halves.high * halves.high - square) + (cross + cross)) + halves.low * halves.low};
}

}  // namespace kef::vm
