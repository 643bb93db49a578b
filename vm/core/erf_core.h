// The error function, its complement and the normal distribution, of doubles. With c the multiple
// of 1/16 (EP: 1/32) next to u >= 0, and d = u - c,
//
//   W(u) = erf u for c < 1/2, erfc u from there on
//        = a0 + a1 d + a2 d^2 + ...
//
// from a table, and every result is B + W or B - W with B = 0, 1 or 2. Beyond the table
//
//   erfc u = exp(-u^2) / (u sqrt(pi)) (1 + s p(s)),  s = 1/u^2.
//
// Processors that multiply and add in one operation compute sooner than they load: there LA and EP
// take c to 1/128 and no more from tables than W = erf or erfc, and its slope at c,
//
//   W(c + d) = W(c) + W'(c) s(d),  s(d) = integral of exp(-2 c t - t^2) from 0 to d.
//
// Table: tools/erf_tables.py; polynomials: tools/erf.sollya.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

// The coefficients, a0 with its low part; a1 also as slope + slope_low, where slope has
// 26 bits. Relative error below 2^-57.4 for u <= 5, 2^-56.4 beyond.
struct alignas(128) ErfEntry {
    double a[12];
    double low, slope, slope_low;
};
// The same for EP, twice as dense: 2^-27.1.
struct alignas(64) ErfShortEntry {
    double a[6];
};
struct ErfSlopeEntry {
    double value, slope;
};
extern const ErfEntry erf_table[97];
extern const ErfShortEntry erf_short_table[193];
extern const ErfSlopeEntry erf_slope_table[769], erfc_slope_table[769];

}  // namespace kef::vm

namespace KEF_VM {

// The table of an accuracy, and how many coefficients count: for erf, and for erfc, which
// needs more where it is small.
template <class Accuracy> struct ErfTable;
template <> struct ErfTable<HA> {
    static constexpr const ErfEntry* table = erf_table;
    static constexpr int erf = 10, erfc = 11;  // 2^-60.3
};
template <> struct ErfTable<LA> {
    static constexpr const ErfEntry* table = erf_table;
    static constexpr int erf = 9, erfc = 11;  // 2^-56.6
};
template <> struct ErfTable<EP> {
    static constexpr const ErfShortEntry* table = erf_short_table;
    static constexpr int erf = 4, erfc = 5;
};

// u reduced: c and d, the lanes of c < 1/2, and the entries.
template <class E> struct ErfReduced {
    using Entry = E;
    doubles c, d;
    longs near;
    Rows<Entry> row;
    doubles a(int i) const { return row.field(&Entry::a, i); }
    // a_i + a_(i+1) d for even i
    doubles line(int i, doubles d) const {
        const Two<doubles> p = row.pair(&Entry::a, i);
        return multiply_add(d, p.second, p.first);
    }
};

// Keeps x where it stands: else the compiler loads all coefficients before it uses one, and
// has no room for them.
inline doubles settled(doubles x) {
    asm("" : "+x"(x));
    return x;
}

// 0 <= u < 6 + 1/64. d is exact.
template <class Entry> inline ErfReduced<Entry> erf_reduce(doubles u, const Entry* table) {
    // leaves the number of the entry in the low bits of the sum
    constexpr double shifter = std::is_same_v<Entry, ErfEntry>        ? 0x1.8p48
                               : std::is_same_v<Entry, ErfShortEntry> ? 0x1.8p47
                                                                      : 0x1.8p45;
    const doubles sum = u + shifter, c = sum - shifter;
    return {c, u - c, c < 0.5, {table, row_numbers((longs)sum)}};
}

// a2 + a3 d + ... + a_degree d^(degree - 2), in powers of d^2.
template <int degree> inline doubles erf_curvature(const auto& x, doubles d) {
    const doubles square = settled(d * d);
    constexpr int top = degree / 2 * 2;
    doubles sum = degree > top ? x.line(top, d) : x.a(top);
#pragma GCC unroll 8
    for (int i = top - 2; i >= 2; i -= 2) sum = settled(multiply_add(square, sum, x.line(i, d)));
    return sum;
}

// W for d = x.d + low, or x.d where low is not given; with a low part below 0.07 |W| (HA),
// or rounded.
template <class Accuracy, int degree> inline auto erf_polynomial(const auto& x, auto... low) {
    const doubles d = (x.d + ... + low), q = erf_curvature<degree>(x, d);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const doubles d_high = leading(x.d), d_low = ((x.d - d_high) + ... + low);
        const doubles slope = x.row.field(&ErfEntry::slope), a0 = x.a(0);
        const doubles linear = d_high * slope;  // exact
        const doubles high = a0 + linear;       // |a0| > |linear| or a0 = 0
        const doubles curve = multiply_add(d, q, x.row.field(&ErfEntry::slope_low));
        const doubles rest = multiply_add(d_low, slope, d * curve);
        return Parts{high, ((a0 - high) + linear) + (x.row.field(&ErfEntry::low) + rest)};
    } else {
        const Two<doubles> first = x.row.pair(&std::remove_cvref_t<decltype(x)>::Entry::a, 0);
        return multiply_add(d, multiply_add(d, q, first.second), first.first);
    }
}

// The coefficients of the series s(d) = h0 d + h1 d^2/2 + h2 d^3/3 + ...: polynomials in c, all
// even or all odd, of which these are those in c^2. By (k + 1) h_(k+1) = -2 (c h_k + h_(k-1)).
template <int terms> consteval auto erf_series_coefficients() {
    std::array<std::array<double, terms / 2 + 1>, terms> h{};
    h[0][0] = 1;
    if (terms > 1) h[1][0] = -2;
    for (int k = 1; k + 1 < terms; ++k)
        for (int i = 0; i <= (k + 1) / 2; ++i) {
            // c h_k: for odd k the product of c and c is a power of c^2
            const double times_c = k % 2 == 0 ? h[k][i] : i > 0 ? h[k][i - 1] : 0.0;
            h[k + 1][i] = -2 * (times_c + h[k - 1][i]) / (k + 1);
        }
    for (int k = 0; k < terms; ++k)
        for (double& a : h[k]) a /= k + 1;
    return h;
}

// s(d) by so many terms.
template <int terms> inline doubles erf_series(doubles c, doubles d) {
    constexpr auto h = erf_series_coefficients<terms>();
    const doubles c2 = c * c, d2 = d * d;
    const auto coefficient = [&]<int k>(std::integral_constant<int, k>) {
        doubles sum = all(h[k][k / 2]);
#pragma GCC unroll 8
        for (int i = k / 2 - 1; i >= 0; --i) sum = multiply_add(c2, sum, all(h[k][i]));
        return sum;
    };
    // Those of d^first, d^(first + 2), ...
    const auto half = [&]<int first>(std::integral_constant<int, first>) {
        constexpr int last = first + (terms - 1 - first) / 2 * 2;
        doubles sum = coefficient(std::integral_constant<int, last>());
        [&]<int... i>(std::integer_sequence<int, i...>) {
            ((sum = multiply_add(d2, sum,
                                 coefficient(std::integral_constant<int, last - 2 - 2 * i>()))),
             ...);
        }
        (std::make_integer_sequence<int, (last - first) / 2>());
        return sum;
    };
    const doubles even = half(std::integral_constant<int, 0>());
    const doubles odd = half(std::integral_constant<int, 1>());
    return d * multiply_add(c * d, odd, even);
}

// W by the series, for u and a low part of it.
template <int terms>
inline doubles erf_by_slope(const ErfSlopeEntry* table, doubles u, auto... low) {
    const auto x = erf_reduce(u, table);
    const auto [value, slope] = x.row.pair(&ErfSlopeEntry::value);
    return multiply_add(slope, erf_series<terms>(x.c, (x.d + ... + low)), value);
}

// B + W, or B - W in lanes where `minus` has the sign bit; |B| >= |W| or B = 0.
inline doubles erf_sum(doubles base, longs minus, doubles w) { return base + flipped(w, minus); }
inline Parts erf_sum(doubles base, longs minus, Parts w) {
    const Parts sum = fast_two_sum(base, flipped(w.high, minus));
    return {sum.high, sum.low + flipped(w.low, minus)};
}

// erf u, 0 <= u <= 6.
template <class Accuracy> inline auto erf_table_sum(doubles u) {
    const auto x = erf_reduce(u, ErfTable<Accuracy>::table);
    return erf_sum((doubles)(~x.near & (longs)all(1.0)), ~x.near & INT64_MIN,
                   erf_polynomial<Accuracy, ErfTable<Accuracy>::erf>(x));
}

// erfc u, or erfc -u in lanes where `sign` has the sign bit; 0 <= u <= 6. For c < 1/2 the base
// is 1, from there on 1 - 1 or 1 + 1.
template <class Accuracy> inline auto erfc_table_sum(longs sign, doubles u, auto... low) {
    const auto x = erf_reduce(u, ErfTable<Accuracy>::table);
    const doubles one = (doubles)(~x.near & ((longs)all(-1.0) ^ sign));
    return erf_sum(1.0 + one, (x.near & INT64_MIN) ^ sign,
                   erf_polynomial<Accuracy, ErfTable<Accuracy>::erfc>(x, low...));
}

// The same for the double-precision slots. What the series leaves out: erf LA 2^-53.3, EP 2^-32.9;
// erfc LA 2^-58.7, EP 2^-29.
template <class Accuracy>
inline constexpr bool erf_has_series = is_fused && !std::is_same_v<Accuracy, HA>;
template <class Accuracy> inline auto erf_core(doubles u) {
    constexpr int terms = std::is_same_v<Accuracy, LA> ? 6 : 3;
    if constexpr (erf_has_series<Accuracy>) return erf_by_slope<terms>(erf_slope_table, u);
    else return rounded(erf_table_sum<Accuracy>(u));
}
template <class Accuracy> inline auto erfc_core(longs sign, doubles u, auto... low) {
    constexpr int terms = std::is_same_v<Accuracy, LA> ? 8 : 4;
    if constexpr (erf_has_series<Accuracy>)
        return erf_sum((doubles)(sign_mask(sign) & (longs)all(2.0)), sign,
                       erf_by_slope<terms>(erfc_slope_table, u, low...));
    else return erfc_table_sum<Accuracy>(sign, u, low...);
}

// u sqrt(pi) exp(u^2) erfc(u) = 1 + s p(s), s = 1/u^2, with a relative error of 2^-59.5.
inline constexpr auto erfc_tail_p =
    coefficients(0xBFDFFFFFFFFFFFD5, 0x3FE7FFFFFFFF65B1, 0xBFFDFFFFFF28A50E, 0x401A3FFFB1932D73,
                 0xC03D87EF13FA0EF5, 0x40644C56E242280D, 0xC0907178B75F0AF0, 0x40BE198AB09A857B,
                 0xC0EC67500DFBC370, 0x4116B30BF10C88BB, 0xC134BAADEFC0434F);
// 1/sqrt(pi) = C + C_low, C of 26 bits.
inline constexpr double inverse_root_pi = from_bits(UINT64_C(0x3FE20DD750000000));
inline constexpr double inverse_root_pi_low = from_bits(UINT64_C(0x3E00A6DB446B8EA4));

// 2^shift erfc(u + u_low) for 5.87 <= u <= 28, |u_low| < 2^-25 u, as an unevaluated sum,
// |low| < 0.04 high; relative error below 2^-58.
template <int shift> inline Parts erfc_tail(doubles u, doubles u_low) {
    constexpr double C = inverse_root_pi, C_low = inverse_root_pi_low;
    const doubles u1 = leading(u), u_rest = (u - u1) + u_low;
    const ExpParts e = exp_parts(exp_reduce<HA, shift>(-(u1 * u1), -(u_rest * (u1 + u1 + u_rest))));

    const doubles inverse = 1.0 / u, q = leading(inverse), s = inverse * inverse;
    const doubles q_low = ((1.0 - q * u1) - q * u_rest) * inverse;  // 1/u = q + q_low
    const doubles g = q * C;  // exact; g + rest = 1/(u sqrt(pi)), g + g_low all but the exponential
    const doubles rest = multiply_add(q, C_low, q_low * (C + C_low));
    const doubles g_low = multiply_add(g + rest, s * polynomial(s, erfc_tail_p), rest);

    const Parts product = two_product(e.high, g);
    const doubles low = product.low + (e.high * g_low + e.low * (g + g_low));
    return {product.high * e.power, low * e.power};
}

// erfc(u), 5.87 <= u <= 26.4, relative error below 2^-27.
inline doubles erfc_tail_short(doubles u) {
    const doubles inverse = 1.0 / u, s = inverse * inverse;
    return exp_core<EP>(-(u * u)) * (multiply_add(s, polynomial(s, erfc_tail_p), 1.0) *
                                     (inverse * (inverse_root_pi + inverse_root_pi_low)));
}

}  // namespace KEF_VM
