// The exponential of doubles:
//
//   x = k ln2/N + r,  exp(x) = 2^(k/N) p(r),  N = 64 (HA) or 128
//
// The table gives 2^(j/N) with j = k mod N, the exponent field m = floor(k/N). Where one operation
// finds each lane its own of 16 numbers in two vectors, N = 16: a longer polynomial is less than
// the loads of rows.
// Tables: tools/exp_tables.py; polynomials: tools/exp.sollya.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct ExpHighLow {
    double high, low;
};
extern const ExpHighLow exp64_table[64];
struct Exp128 {
    std::uint64_t fraction;  // the bits of 2^(j/128) without the exponent
};
extern const Exp128 exp128_table[128];
struct alignas(64) Exp16 {
    double fraction[16], low[16];  // of 2^(j/16) likewise, and what their rounding left
};
extern const Exp16 exp16_table;

}  // namespace kef::vm

namespace KEF_VM {

// Adding 1.5 2^52 leaves the nearest integer in the low bits of the sum.
inline constexpr double shifter52 = from_bits(UINT64_C(0x4338000000000000));

// x = k ln2/N + r; the constants of an accuracy: N = 2^log2_size, ln2/N in parts, the polynomial.
template <class Accuracy> struct ExpConstants;

// HA by rows of a table of high and low parts, and e^x - 1. The first part has 21 trailing zeros,
// so that its product with k is exact. |p/exp - 1| < 2^-59.2 on |r| <= ln2/128.
struct ExpByRows;
template <> struct ExpConstants<ExpByRows> {
    static constexpr int log2_size = 6;
    static constexpr auto ln2_parts = coefficients(0x3F862E42FEF00000, 0x3D7473DE6AF278ED);
    static constexpr auto c = coefficients(0x3FDFFFFFFFFFD97C, 0x3FC55555555542A1,
                                           0x3FA555574BC3A1BE, 0x3F81111276409C2C);
};
// Looked up, |r| <= ln2/32: relative error of e^r - 1 2^-59.6, also for LA of e^x - 1;
// tools/expm1.sollya.
struct ExpLookedUp;
template <> struct ExpConstants<ExpLookedUp> {
    static constexpr int log2_size = 4;
    static constexpr auto ln2_parts = coefficients(0x3FA62E42FEF00000, 0x3D9473DE6AF278ED);
    static constexpr auto c =
        coefficients(0x3FE0000000000003, 0x3FC5555555555551, 0x3FA55555554A08A6, 0x3F81111111152445,
                     0x3F56C1828BB37B17, 0x3F2A01A6D18AE360);
};
template <>
struct ExpConstants<HA> : ExpConstants<std::conditional_t<has_lookup, ExpLookedUp, ExpByRows>> {};

// |r| <= ln2/256, looked up ln2/32.
inline constexpr int exp_log2_size = rows_or_lookup(7, 4);

// From there on k may be rounded to 1024 N, whose power is no number: ln2 (1024 - 1/2N), of HA too.
inline constexpr double exp_end = rows_or_lookup(from_bits(UINT64_C(0x40862E37E7D8BA72)), 709.761);

// LA: |p/exp - 1| < 2^-51.5, looked up 2^-56.2.
template <> struct ExpConstants<LA> {
    static constexpr int log2_size = exp_log2_size;
    static constexpr auto ln2_parts =
        rows_or_lookup(coefficients(0x3F762E42FEE00000, 0x3D7A39EF35793C76),
                       coefficients(0x3FA62E42FEE00000, 0x3DAA39EF35793C76));
    static constexpr auto c =
        rows_or_lookup(coefficients(0x3FDFFFFFFFFFFEB0, 0x3FC55555B7BAE976, 0x3FA55555C2A9C0FA),
                       coefficients(0x3FDFFFFFFFFFFFBC, 0x3FC555555548F803, 0x3FA55555558D5382,
                                    0x3F811123AB512F52, 0x3F56C14E28CBE84D));
};

// EP: 1 + r + r^2/2, error below 2^-28.1, looked up 2^-29.2; one constant for the reduction.
template <> struct ExpConstants<EP> {
    static constexpr int log2_size = exp_log2_size;
    static constexpr std::array ln2_parts = {ln2 / (1 << log2_size)};
    static constexpr auto c =
        rows_or_lookup(std::array{0.5}, coefficients(0x3FE00021E3361103, 0x3FC55559ADB27A3E));
};

// x reduced: r and its rounding error, the rounded k, whose low bits are the table index, and
// 2^(m + shift) as bits.
struct ExpReduced {
    doubles r, r_low, k;
    longs index, power;
};

// For |x| < 746 and shifts that keep m + shift an exponent of normal numbers. The
// exponent's bias is part of the shifter: k + (1023 + shift) N lies in the low bits
// of the sum, and what is above the exponent field falls off the top. `low` is a small
// correction of x, or nothing.
template <class Accuracy, int shift = 0> inline ExpReduced exp_reduce(doubles x, auto... low) {
    using C = ExpConstants<Accuracy>;
    constexpr int size = 1 << C::log2_size;
    constexpr double shifter = shifter52 + (1023 + shift) * size;
    const doubles sum = multiply_add((x + ... + low), size * inverse_ln2, shifter);
    const doubles k = sum - shifter, reduced = minus_products(x, k, C::ln2_parts);
    const doubles r = (reduced + ... + low);
    doubles r_low{};
    if constexpr (C::ln2_parts.size() > 1) {  // the first product is exact
        const doubles first = negative_multiply_add(k, C::ln2_parts[0], x);
        r_low = negative_multiply_add(k, C::ln2_parts[1], first - reduced);
        if constexpr (sizeof...(low) > 0) r_low += ((reduced - r) + ... + low);
    }
    return {r, r_low, k, (longs)sum,
            ((longs)sum << (52 - C::log2_size)) & INT64_C(0x7FF0000000000000)};
}

// The entries in the table of 64: 2^(j/64) = high + low.
inline Parts exp_table(const ExpReduced& x) {
    const auto [high, low] = Rows(exp64_table, row_numbers(x.index, 63)).pair(&ExpHighLow::high);
    return {high, low};
}

// exp(x) = (high + low) 2^m: high from the table, |low| < 0.011 or, looked up, 0.044: there the
// roundings of r and p count.
struct ExpParts {
    doubles high, low, power;
};
inline ExpParts exp_parts(const ExpReduced& x) {
    constexpr auto& c = ExpConstants<HA>::c;
    const doubles r = x.r, square = r * r, power = (doubles)x.power;
    if constexpr (has_lookup) {
        const doubles T =
            (doubles)((longs)looked_up(exp16_table.fraction, x.index) | (longs)all(1.0));
        const doubles t = looked_up(exp16_table.low, x.index);
        const doubles tail = multiply_add(square, polynomial_by_pairs(r, square, c), x.r_low);
        return {T, multiply_add(T, r, multiply_add(T, tail, multiply_add(t, r, t))), power};
    }
    const doubles p = multiply_add(square, polynomial(r, c), r);
    const auto [T, t] = exp_table(x);
    return {T, multiply_add(T + t, p, t), power};
}
template <int shift = 0> inline ExpParts exp_parts(doubles x) {
    return exp_parts(exp_reduce<HA, shift>(x));
}

// 2^(k/N), for LA and EP.
inline doubles exp_scale(const ExpReduced& x) {
    const doubles fraction = [&] {
        if constexpr (has_lookup) return looked_up(exp16_table.fraction, x.index);
        else return Rows(exp128_table, row_numbers(x.index, 127)).field(&Exp128::fraction);
    }();
    return (doubles)((longs)fraction | x.power);
}
// The same and what is left: HA's 2^(k/64) or, looked up, 2^(k/16).
inline Parts exp_scale_parts(const ExpReduced& x) {
    const doubles power = (doubles)x.power;
    if constexpr (has_lookup) {
        return {exp_scale(x), looked_up(exp16_table.low, x.index) * power};
    } else {
        const auto [T, t] = exp_table(x);
        return {T * power, t * power};
    }
}
// r + r^2 (c[0] + c[1] r + ...).
inline doubles exp_tail(doubles r, const auto& c) {
    return multiply_add(r * r, polynomial(r, c), r);
}

// exp(x) of x reduced.
template <class Accuracy> inline doubles exp_of(const ExpReduced& reduced) {
    const doubles r = reduced.r;
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto e = exp_parts(reduced);
        return (e.high + e.low) * e.power;
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        const doubles scale = exp_scale(reduced);
        return multiply_add(scale, exp_tail(r, ExpConstants<LA>::c), scale);
    } else {
        return exp_scale(reduced) * (1.0 + exp_tail(r, ExpConstants<EP>::c));
    }
}

// The same wherever it is a normal number, with the same bits: below 2^-992 LA's terms, of which
// the smaller ones need not be normal numbers, are 2^512 times as large at first.
template <class Accuracy> inline doubles exp_of_normal(ExpReduced reduced) {
    if constexpr (!std::is_same_v<Accuracy, LA>) return exp_of<Accuracy>(reduced);
    const longs small = reduced.k < -992.0 * (1 << exp_log2_size);
    if (!any_lane(small)) return exp_of<Accuracy>(reduced);
    const longs up = small & (INT64_C(512) << 52);
    reduced.power = (longs)((ulongs)reduced.power + (ulongs)up);  // wraps in lanes of no result
    return exp_of<Accuracy>(reduced) * (doubles)((longs)all(1.0) - up);
}

// 2^shift exp(x) where it and its power of two are normal numbers.
template <class Accuracy, int shift = 0> inline doubles exp_core(doubles x) {
    return exp_of<Accuracy>(exp_reduce<Accuracy, shift>(x));
}

// exp(x) for -746 < x < -708, subnormal: in two scalings, 2^1022 exp(x) < 1 first.
KEF_INLINE double exp_subnormal(double x) {
    const auto e = exp_parts<1022>(all(x));
    return round_to_subnormal((e.high * e.power)[0], (e.low * e.power)[0]);
}

// exp(x)/2 for 0 < x < 711, where m may be 1025.
KEF_INLINE double exp_half(double x) {
    const auto e = exp_parts<-2>(all(x));
    return ((e.high + e.low) * e.power)[0] * 2.0;
}

// exp(x) for 709 < x < ln 2^1024, where m may be 1024.
KEF_INLINE double exp_large(double x) { return exp_half(x) * 2.0; }

// 2^shift exp(x) = 2^(k + shift) p(r) in single precision, k = round(x / ln2), |r| <= ln2/2:
// relative error of p below 2^-23.1 (LA) and 2^-12.9 (EP), and 2^-28.1 (HA: for functions
// that are built on it, of x + low); tools/exp.sollya.
template <class Accuracy, int shift = 0> inline floats exp_single(floats x, auto... low) {
    constexpr float shifter = 0x1.8p23f + shift;
    const floats sum = multiply_add(x, static_cast<float>(inverse_ln2), shifter);
    const floats k = sum - shifter;
    floats p;
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // With the product rounded, so that r = 0 where x is such a product: powers of two are
        // exact.
        const floats r = x - k * static_cast<float>(ln2);
        p = polynomial(r, coefficients(0x3F800000u, 0x3F800000u, 0x3F01024Du, 0x3E2AA08Eu));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr auto c = coefficients(0x3EFFFEFEu, 0x3E2AABD6u, 0x3D2B950Bu, 0x3C0831F7u);
        const floats r = minus_products(x, k, ln2_parts_single);
        p = 1.0f + multiply_add(r * r, polynomial(r, c), r);
    } else {
        constexpr auto c =
            coefficients(0x3EFFFFFDu, 0x3E2AAA49u, 0x3D2AAD13u, 0x3C091CBFu, 0x3AB4A64Cu);
        const floats r = negative_multiply_add(k, ln2_parts_single[0], x) +  // exact
                         negative_multiply_add(k, ln2_parts_single[1], low...);
        const floats r2 = r * r;
        p = 1.0f + multiply_add(r2, polynomial_by_pairs(r, r2, c), r);
    }
    return (floats)((uints)p + ((uints)sum << 23));  // wraps
}

}  // namespace KEF_VM
