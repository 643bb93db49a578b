// The error function, its complement and the normal distribution, of two doubles at a
// time. With c the multiple of 1/16 (EP: 1/32) next to u >= 0, and d = u - c,
//
//   W(u) = erf u for c < 1/2, erfc u from there on
//        = a0 + a1 d + a2 d^2 + ...
//
// from a table, and every result is B + W or B - W with B = 0, 1 or 2. Beyond the table
//
//   erfc u = exp(-u^2) / (u sqrt(pi)) (1 + s p(s)),  s = 1/u^2.
//
// Table: tools/erf_tables.py; polynomials: tools/erf.sollya.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
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
extern const ErfEntry erf_table[97];
extern const ErfShortEntry erf_short_table[193];

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

// u reduced: d, the lanes of c < 1/2, and the entries of the two lanes.
template <class Entry> struct ErfReduced {
    d2 d;
    l2 near;
    const Entry *entry0, *entry1;
    d2 field(double Entry::*member) const {
        return (d2)_mm_loadh_pd(_mm_load_sd(&(entry0->*member)), &(entry1->*member));
    }
    d2 a(int i) const { return (d2)_mm_loadh_pd(_mm_load_sd(&entry0->a[i]), &entry1->a[i]); }
    // a_i and a_(i+1) for even i; their line
    Two<d2> pair(int i) const {
        const d2 p0 = (d2)_mm_load_pd(&entry0->a[i]), p1 = (d2)_mm_load_pd(&entry1->a[i]);
        return {__builtin_shufflevector(p0, p1, 0, 2), __builtin_shufflevector(p0, p1, 1, 3)};
    }
    d2 line(int i, d2 d) const {
        const Two<d2> p = pair(i);
        return p.first + d * p.second;
    }
};

// Keeps x where it stands: else the compiler loads all coefficients before it uses one, and
// has no room for them.
inline d2 settled(d2 x) {
    asm("" : "+x"(x));
    return x;
}

// 0 <= u < 6 + 1/64. d is exact.
template <class Entry> inline ErfReduced<Entry> erf_reduce(d2 u, const Entry* table) {
    // leaves 16 c or 32 c in the low bits of the sum
    constexpr double shifter = std::is_same_v<Entry, ErfShortEntry> ? 0x1.8p47 : 0x1.8p48;
    const d2 sum = u + shifter, c = sum - shifter;
    return {u - c, c < 0.5, &table[_mm_extract_epi16((__m128i)sum, 0)],
            &table[_mm_extract_epi16((__m128i)sum, 4)]};
}

// a2 + a3 d + ... + a_degree d^(degree - 2), in powers of d^2.
template <int degree> inline d2 erf_curvature(const auto& x, d2 d) {
    const d2 square = settled(d * d);
    constexpr int top = degree / 2 * 2;
    d2 sum = degree > top ? x.line(top, d) : x.a(top);
#pragma GCC unroll 8
    for (int i = top - 2; i >= 2; i -= 2) sum = settled(x.line(i, d) + square * sum);
    return sum;
}

// W for d = x.d + low, or x.d where low is not given; with a low part below 0.07 |W| (HA),
// or rounded.
template <class Accuracy, int degree> inline auto erf_polynomial(const auto& x, auto... low) {
    const d2 d = (x.d + ... + low), q = erf_curvature<degree>(x, d);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const d2 d_high = leading(x.d), d_low = ((x.d - d_high) + ... + low);
        const d2 slope = x.field(&ErfEntry::slope), a0 = x.a(0);
        const d2 linear = d_high * slope;  // exact
        const d2 high = a0 + linear;       // |a0| > |linear| or a0 = 0
        const d2 rest = d_low * slope + d * (x.field(&ErfEntry::slope_low) + d * q);
        return DoubleDouble<d2>{high, ((a0 - high) + linear) + (x.field(&ErfEntry::low) + rest)};
    } else {
        const Two<d2> first = x.pair(0);
        return first.first + d * (first.second + d * q);
    }
}

// B + W, or B - W in lanes where `minus` has the sign bit; |B| >= |W| or B = 0.
inline d2 erf_sum(d2 base, l2 minus, d2 w) { return base + (d2)((l2)w ^ minus); }
inline DoubleDouble<d2> erf_sum(d2 base, l2 minus, DoubleDouble<d2> w) {
    const DoubleDouble<d2> sum = fast_two_sum(base, (d2)((l2)w.high ^ minus));
    return {sum.high, sum.low + (d2)((l2)w.low ^ minus)};
}

inline d2 rounded(d2 x) { return x; }
inline d2 rounded(DoubleDouble<d2> x) { return x.high + x.low; }

// erf u, 0 <= u <= 6.
template <class Accuracy> inline auto erf_table_sum(d2 u) {
    const auto x = erf_reduce(u, ErfTable<Accuracy>::table);
    return erf_sum((d2)(~x.near & (l2)all(1.0)), ~x.near & INT64_MIN,
                   erf_polynomial<Accuracy, ErfTable<Accuracy>::erf>(x));
}

// erfc u, or erfc -u in lanes where `sign` has the sign bit; 0 <= u <= 6. For c < 1/2 the base
// is 1, from there on 1 - 1 or 1 + 1.
template <class Accuracy> inline auto erfc_table_sum(l2 sign, d2 u, auto... low) {
    const auto x = erf_reduce(u, ErfTable<Accuracy>::table);
    const d2 one = (d2)(~x.near & ((l2)all(-1.0) ^ sign));
    return erf_sum(1.0 + one, (x.near & INT64_MIN) ^ sign,
                   erf_polynomial<Accuracy, ErfTable<Accuracy>::erfc>(x, low...));
}

// 2^shift erfc(u + u_low) for 5.87 <= u <= 28, |u_low| < 2^-25 u, as an unevaluated sum,
// |low| < 0.03 high; relative error below 2^-58.
template <int shift> inline DoubleDouble<d2> erfc_tail(d2 u, d2 u_low) {
    // p(s), relative error of 1 + s p(s) 2^-59.5
    constexpr double p[] = {
        from_bits(UINT64_C(0xBFDFFFFFFFFFFFD5)), from_bits(UINT64_C(0x3FE7FFFFFFFF65B1)),
        from_bits(UINT64_C(0xBFFDFFFFFF28A50E)), from_bits(UINT64_C(0x401A3FFFB1932D73)),
        from_bits(UINT64_C(0xC03D87EF13FA0EF5)), from_bits(UINT64_C(0x40644C56E242280D)),
        from_bits(UINT64_C(0xC0907178B75F0AF0)), from_bits(UINT64_C(0x40BE198AB09A857B)),
        from_bits(UINT64_C(0xC0EC67500DFBC370)), from_bits(UINT64_C(0x4116B30BF10C88BB)),
        from_bits(UINT64_C(0xC134BAADEFC0434F))};
    // 1/sqrt(pi) = C + C_low, C of 26 bits.
    constexpr double C = from_bits(UINT64_C(0x3FE20DD750000000));
    constexpr double C_low = from_bits(UINT64_C(0x3E00A6DB446B8EA4));
    const d2 u1 = leading(u), u2 = (u - u1) + u_low;
    const ExpParts e = exp_parts(exp_reduce<HA, shift>(-(u1 * u1), -(u2 * (u1 + u1 + u2))));

    const d2 inverse = 1.0 / u, q = leading(inverse), s = inverse * inverse;
    const d2 q_low = ((1.0 - q * u1) - q * u2) * inverse;  // 1/u = q + q_low
    d2 sum = all(p[10]);
    for (int i = 9; i >= 0; --i) sum = p[i] + s * sum;
    const d2 g = q * C;  // exact; g + rest = 1/(u sqrt(pi)), g + g_low all but the exponential
    const d2 rest = q * C_low + q_low * (C + C_low);
    const d2 g_low = rest + (g + rest) * (s * sum);

    const DoubleDouble<d2> product = two_product(e.high, g);
    const d2 low = product.low + (e.high * g_low + e.low * (g + g_low));
    return {product.high * e.power, low * e.power};
}

}  // namespace kef::vm
