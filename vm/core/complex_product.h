// Products and quotients of complex numbers.
//
// Double: four products with their errors, added with the error of the sum: 0.5 ulp for each part
// while it is above 2^-53 of the norm. Brent, Percival, Zimmermann, Error bounds on complex
// floating-point multiplication, Math. Comp. 76 (2007), tells what less would give.
#pragma once

#include "vm/core/complex_scaling.h"
#include "vm/core/rounding.h"
#include "vm/simd/double_double.h"

namespace KEF_VM {

// Two vectors, or two lone numbers, of one kind of part.
template <class P> struct PartsOf { P re, im; };

// x + y of products with their errors.
template <class V> inline DoubleDouble<V> add(DoubleDouble<V> x, DoubleDouble<V> y) {
    const DoubleDouble<V> sum = two_sum(x.high, y.high);
    return {sum.high, sum.low + (x.low + y.low)};
}
template <class V> inline DoubleDouble<V> negative(DoubleDouble<V> x) { return {-x.high, -x.low}; }

// Halves of at most 26 bits by the bits of a: fewer operations than `split`.
inline Parts split_by_bits(doubles a) {
    const doubles high = (doubles)(((ulongs)a + (UINT64_C(1) << 26)) & -(UINT64_C(1) << 27));
    return {high, a - high};
}
// a b rounded, and what that exceeds a b by, exactly, as two_product.
inline Parts rounded_product(doubles a, Parts a_halves, doubles b, Parts b_halves) {
    const doubles product = a * b;
    if constexpr (is_fused) return {product, negative_multiply_add(a, b, product)};
    const doubles excess = ((product - a_halves.high * b_halves.high) -
                            a_halves.high * b_halves.low - a_halves.low * b_halves.high) -
                           a_halves.low * b_halves.low;
    return {product, excess};
}

// (a + ib) (c + id) and (a + ib) (c - id), as unevaluated sums.
template <class V> inline PartsOf<DoubleDouble<V>> product_parts(V a, V b, V c, V d) {
    const DoubleDouble<V> as = split(a), bs = split(b), cs = split(c), ds = split(d);
    return {add(two_product(a, as, c, cs), negative(two_product(b, bs, d, ds))),
            add(two_product(a, as, d, ds), two_product(b, bs, c, cs))};
}

// The sum rounded; a zero keeps the sign that plain arithmetic gives it.
inline doubles rounded_with_zero(Parts x) {
    const doubles sum = x.high + x.low;
    return select(sum == 0.0, x.high, sum);
}

inline Two<doubles> rounded_with_zero(const PartsOf<Parts>& x) {
    return {rounded_with_zero(x.re), rounded_with_zero(x.im)};
}
inline Two<doubles> times(const PartsOf<Parts>& x, const PowersBack& back) {
    return {back.times(rounded_with_zero(x.re), x.re), back.times(rounded_with_zero(x.im), x.im)};
}

// x + y and x - y of products, rounded, and what these and the rounded terms exceed the exact sum
// by: +0 where it is 0, so that a zero less that keeps the sign that plain arithmetic gives it.
inline Parts rounded_sum(Parts x, Parts y) {
    const doubles sum = x.high + y.high, part = sum - x.high;
    const doubles excess = ((sum - part) - x.high) + (part - y.high);
    return Parts{sum, excess + (x.low + y.low)};
}
inline Parts rounded_difference(Parts x, Parts y) {
    const doubles sum = x.high - y.high, part = sum - x.high;
    const doubles excess = ((sum - part) - x.high) + (y.high + part);
    return Parts{sum, excess + (x.low - y.low)};
}

// The product, or that with the conjugate.
template <bool conjugate>
inline Two<doubles> complex_product(doubles a, doubles b, doubles c, doubles d) {
    const Parts as = split_by_bits(a), bs = split_by_bits(b), cs = split_by_bits(c),
                ds = split_by_bits(d);
    const Parts ac = rounded_product(a, as, c, cs), bd = rounded_product(b, bs, d, ds);
    const Parts re = conjugate ? rounded_sum(ac, bd) : rounded_difference(ac, bd);
    const Parts ad = rounded_product(a, as, d, ds), bc = rounded_product(b, bs, c, cs);
    const Parts im = conjugate ? rounded_difference(bc, ad) : rounded_sum(ad, bc);
    return {re.high - re.low, im.high - im.low};
}

// (a + ib) / (c + id) as unevaluated sums, from the product with the conjugate.
inline PartsOf<Parts> quotient_parts(doubles a, doubles b, doubles c, doubles d) {
    const auto normalised = [](Parts x) {
        const Parts sum = two_sum(x.high, x.low);
        return Parts{select(sum.high == 0.0, x.high, sum.high), sum.low};
    };
    const PartsOf<Parts> product = product_parts(a, b, c, -d);
    const Parts norm = normalised(add(two_square(c), two_square(d)));
    return {divide(normalised(product.re), norm), divide(normalised(product.im), norm)};
}
inline Two<doubles> complex_quotient(doubles a, doubles b, doubles c, doubles d) {
    return rounded_with_zero(quotient_parts(a, b, c, d));
}
// The same in plain arithmetic: 5 units of the norm.
template <class V> inline Two<V> complex_quotient_plain(V a, V b, V c, V d) {
    const V inverse = all(Element<V>(1)) / (c * c + d * d);
    return {(a * c + b * d) * inverse, (b * c - a * d) * inverse};
}

// A gate: infinities, of doubles some NaN too.
template <class T> inline ints is_infinity(ints h) {
    return ((magnitude(h) ^ static_cast<std::int32_t>(Format<T>::infinity_head)) - 1);
}

// Masks of finite numbers, and of those with an infinite part.
template <class V> inline BitsOf<V> both_finite(V re, V im) {
    const V infinity = all(Format<Element<V>>::infinity);
    return mask(absolute(re) < infinity) & mask(absolute(im) < infinity);
}
template <class V> inline BitsOf<V> one_infinite(V re, V im) {
    const V infinity = all(Format<Element<V>>::infinity);
    return mask(absolute(re) == infinity) | mask(absolute(im) == infinity);
}

// Masks where none of them is NaN.
template <class... V> inline auto no_nan(V... x) { return (... & mask(x == x)); }

// Results of arguments of which one is NaN, the first one of these: it is no matter of the order of
// operations which.
template <class V> inline Two<V> with_nan(const Two<V>& r, V a, V b, V c, V d) {
    if (all_lanes(no_nan(a, b, c, d))) return r;
    const auto or_else = [&](V x, V other) { return select(no_nan(x), other, x + x); };
    const auto all_of = [&](V x) { return or_else(a, or_else(b, or_else(c, or_else(d, x)))); };
    return {all_of(r.first), all_of(r.second)};
}

// An infinite number as a direction: its infinite parts are +-1, the others zeros.
struct Direction {
    double re, im;
};
inline bool has_infinity(double re, double im) { return is_infinite(re) || is_infinite(im); }
inline Direction direction(double re, double im) {
    const auto of = [](double x) { return signed_like(is_infinite(x) ? 1.0 : 0.0, x); };
    return {of(re), of(im)};
}
// A finite number beside an infinite one: NaN counts as zero.
inline Direction without_nan(double re, double im) {
    const auto of = [](double x) { return is_nan(x) ? signed_like(0.0, x) : x; };
    return {of(re), of(im)};
}

}  // namespace KEF_VM
