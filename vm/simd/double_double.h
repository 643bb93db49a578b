// Unevaluated sums of two doubles, for vectors and scalars alike. What depends on the rounding of a
// product stands here, with a body for processors that multiply and add in one operation and one
// for the others, under one promise.
// T. J. Dekker, A floating-point technique for extending the available precision,
// Numerische Mathematik 18 (1971); D. E. Knuth, TAOCP vol. 2, 4.2.2.
#pragma once

#include "vm/simd/products.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// high + low; normalised where |low| <= ulp(high)/2.
template <class V> struct DoubleDouble { V high, low; };
using Parts = DoubleDouble<doubles>;

template <class V> inline V rounded(DoubleDouble<V> x) { return x.high + x.low; }
inline doubles rounded(doubles x) { return x; }
inline floats rounded(floats x) { return x; }

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

// The leading 26 bits of a: the product of two such numbers is exact, and a minus
// them has 27 bits. Or what is left of a where the last `cleared` bits are 0.
template <int cleared = 27> inline doubles leading(doubles a) {
    return (doubles)((longs)a & -(INT64_C(1) << cleared));
}

// a as two halves of at most 26 bits; |a| < 2^996.
template <class V> inline DoubleDouble<V> split(V a) {
    const V t = a * 134217729.0;  // 2^27 + 1
    const V high = t - (t - a);
    return {high, a - high};
}

// a b exactly, halves given; no underflow where |a b| > 2^-968.
template <class V>
inline DoubleDouble<V> two_product(V a, DoubleDouble<V> a_halves, V b, DoubleDouble<V> b_halves) {
    const V product = a * b;
    if constexpr (is_fused) return {product, multiply_subtract(a, b, product)};
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
    const V square = a * a;
    if constexpr (is_fused) return {square, multiply_subtract(a, a, square)};
    const DoubleDouble<V> halves = split(a);
    const V cross = halves.high * halves.low;
    return {square,
            ((halves.high * halves.high - square) + (cross + cross)) + halves.low * halves.low};
}

// a b for normalised a and b, relative error below 2^-77; and normalised.
inline Parts product(Parts a, Parts b) {
    if constexpr (is_fused) {
        const Parts high = two_product(a.high, b.high);
        return {high.high, multiply_add(a.high, b.low, multiply_add(a.low, b.high, high.low))};
    }
    const doubles a_high = leading(a.high), b_high = leading(b.high);
    return {a_high * b_high,
            a_high * ((b.high - b_high) + b.low) + ((a.high - a_high) + a.low) * b.high};
}
inline Parts multiply(Parts a, Parts b) {
    const Parts p = product(a, b);
    return fast_two_sum(p.high, p.low);
}

// a / b for normalised a and b, relative error below 2^-74, from a quotient and its remainder,
// which is exact but for b.low: without fused operations a quotient of 26 bits. The low part is
// below 2^-25 of the high one. `inverse`: 1 / b.high.
inline Parts divide(Parts a, Parts b, doubles inverse) {
    if constexpr (is_fused) {
        const doubles q = a.high * inverse;
        const doubles rest = negative_multiply_add(q, b.high, a.high);
        return {q, (negative_multiply_add(q, b.low, rest) + a.low) * inverse};
    }
    const doubles q = leading(a.high * inverse), b_high = leading(b.high);
    const doubles rest = ((a.high - q * b_high) - q * ((b.high - b_high) + b.low)) + a.low;
    return {q, rest * inverse};
}

inline Parts divide(Parts a, Parts b) { return divide(a, b, 1.0 / b.high); }

// The root of a normalised sum, relative error about 2^-100; a = 0 gives 0. `half_inverse`: half of
// its inverse.
struct RootAndInverse {
    Parts root;
    doubles half_inverse;
};
inline RootAndInverse root_and_inverse(Parts a) {
    const doubles s = square_root(a.high);
    const Parts back = two_square(s);
    const doubles rest = ((a.high - back.high) - back.low) + a.low;
    const doubles half_inverse = 0.5 / maximum(s, all(0x1p-500));
    return {{s, rest * half_inverse}, half_inverse};
}
inline Parts root(Parts a) { return root_and_inverse(a).root; }

inline Parts select(longs mask, Parts x, Parts y) {
    return {select(mask, x.high, y.high), select(mask, x.low, y.low)};
}
inline Parts flipped(Parts x, longs sign) { return {flipped(x.high, sign), flipped(x.low, sign)}; }

// high + low of the first lane in single precision, rounded once.
inline float rounded_once(Parts x) {
    const Parts sum = fast_two_sum(x.high, x.low);
    return narrow(sum.high[0], sum.low[0]);
}

}  // namespace KEF_VM
