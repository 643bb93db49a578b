// The exponential of two doubles at a time:
//
//   x = k ln2/N + r,  exp(x) = 2^(k/N) p(r),  N = 64 or 128
//
// The table gives 2^(j/N) with j = k mod N, the exponent field m = floor(k/N).
// Tables: tools/exp_tables.py.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/scaling.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct ExpHighLow {
    double high, low;
};
extern const ExpHighLow exp64_table[64];
extern const std::uint64_t exp128_table[128];

// Adding 1.5 2^52 leaves the nearest integer in the low bits of the sum.
inline constexpr double shifter52 = from_bits(UINT64_C(0x4338000000000000));

// x = k ln2/N + r; the constants of an accuracy.
template <class Accuracy> struct ExpConstants;

// HA: table of high and low parts. ln2/64 = L1 + L2, L1 with 21 trailing zeros so
// that k L1 is exact. |p/exp - 1| < 2^-59.2 on |r| <= ln2/128.
template <> struct ExpConstants<HA> {
    static constexpr int log2_size = 6;
    static constexpr double inverse = 64 * inverse_ln2;
    static constexpr double L1 = from_bits(UINT64_C(0x3F862E42FEF00000));
    static constexpr double L2 = from_bits(UINT64_C(0x3D7473DE6AF278ED));
    static constexpr double c2 = from_bits(UINT64_C(0x3FDFFFFFFFFFD97C));
    static constexpr double c3 = from_bits(UINT64_C(0x3FC55555555542A1));
    static constexpr double c4 = from_bits(UINT64_C(0x3FA555574BC3A1BE));
    static constexpr double c5 = from_bits(UINT64_C(0x3F81111276409C2C));
};

// LA: |p/exp - 1| < 2^-51.5 on |r| <= ln2/256.
template <> struct ExpConstants<LA> {
    static constexpr int log2_size = 7;
    static constexpr double inverse = 128 * inverse_ln2;
    static constexpr double L1 = from_bits(UINT64_C(0x3F762E42FEE00000));
    static constexpr double L2 = from_bits(UINT64_C(0x3D7A39EF35793C76));
    static constexpr double c2 = from_bits(UINT64_C(0x3FDFFFFFFFFFFEB0));
    static constexpr double c3 = from_bits(UINT64_C(0x3FC55555B7BAE976));
    static constexpr double c4 = from_bits(UINT64_C(0x3FA55555C2A9C0FA));
};

// EP: 1 + r + r^2/2, error below 2^-28.1; one constant for the reduction.
template <> struct ExpConstants<EP> {
    static constexpr int log2_size = 7;
    static constexpr double inverse = 128 * inverse_ln2;
    static constexpr double L = ln2 / 128;
};

// x reduced: r, the table index of each lane, and 2^(m + shift) as bits.
struct ExpReduced {
    d2 r;
    int j0, j1;
    l2 power;
};

// For |x| < 746 and shifts that keep m + shift an exponent of normal numbers. The
// exponent's bias is part of the shifter: k + (1023 + shift) N lies in the low bits
// of the sum, and what is above the exponent field falls off the top. `low` is a small
// correction of x, or nothing.
template <class Accuracy, int shift = 0> inline ExpReduced exp_reduce(d2 x, auto... low) {
    using C = ExpConstants<Accuracy>;
    constexpr int size = 1 << C::log2_size;
    constexpr double shifter = shifter52 + (1023 + shift) * size;
    const d2 sum = (x + ... + low) * C::inverse + shifter;
    const d2 k = sum - shifter;
    d2 r;
    if constexpr (std::is_same_v<Accuracy, EP>) r = x - k * C::L;
    else r = (x - k * C::L1) - k * C::L2;
    return {(r + ... + low), _mm_extract_epi16((__m128i)sum, 0) & (size - 1),
            _mm_extract_epi16((__m128i)sum, 4) & (size - 1),
            ((l2)sum << (52 - C::log2_size)) & INT64_C(0x7FF0000000000000)};
}

// The entries of two lanes in the table of 64: 2^(j/64) = high + low.
struct ExpTable {
    d2 high, low;
};
inline ExpTable exp_table(const ExpReduced& x) {
    const d2 e0 = (d2)_mm_load_pd(&exp64_table[x.j0].high);
    const d2 e1 = (d2)_mm_load_pd(&exp64_table[x.j1].high);
    return {__builtin_shufflevector(e0, e1, 0, 2), __builtin_shufflevector(e0, e1, 1, 3)};
}

// exp(x) = (high + low) 2^m: high from the table, |low| < 0.011.
struct ExpParts {
    d2 high, low, power;
};
inline ExpParts exp_parts(const ExpReduced& x) {
    using C = ExpConstants<HA>;
    const d2 r = x.r;
    const d2 p = r + r * r * (C::c2 + r * (C::c3 + r * (C::c4 + r * C::c5)));
    const auto [T, t] = exp_table(x);
    return {T, t + (T + t) * p, (d2)x.power};
}
template <int shift = 0> inline ExpParts exp_parts(d2 x) {
    return exp_parts(exp_reduce<HA, shift>(x));
}

// 2^(k/128), for LA and EP.
inline d2 exp_scale(const ExpReduced& x) {
    const __m128d fraction = _mm_load_sd((const double*)&exp128_table[x.j0]);
    const __m128d fractions = _mm_loadh_pd(fraction, (const double*)&exp128_table[x.j1]);
    return (d2)((l2)fractions | x.power);
}

// exp(x) of x reduced.
template <class Accuracy> inline d2 exp_of(const ExpReduced& reduced) {
    using C = ExpConstants<Accuracy>;
    const d2 r = reduced.r;
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto e = exp_parts(reduced);
        return (e.high + e.low) * e.power;
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        const d2 scale = exp_scale(reduced);
        return scale + scale * (r + r * r * (C::c2 + r * (C::c3 + r * C::c4)));
    } else {
        return exp_scale(reduced) * (1.0 + (r + r * r * 0.5));
    }
}

// 2^shift exp(x) where it and its power of two are normal numbers.
template <class Accuracy, int shift = 0> inline d2 exp_core(d2 x) {
    return exp_of<Accuracy>(exp_reduce<Accuracy, shift>(x));
}

// exp(x) for -746 < x < -708, subnormal: in two scalings, 2^1022 exp(x) < 1 first.
inline double exp_subnormal(double x) {
    const auto e = exp_parts<1022>(all(x));
    return round_to_subnormal((e.high * e.power)[0], (e.low * e.power)[0]);
}

// exp(x)/2 for 0 < x < 711, where m may be 1025.
inline double exp_half(double x) {
    const auto e = exp_parts<-2>(all(x));
    return ((e.high + e.low) * e.power)[0] * 2.0;
}

// exp(x) for 709 < x < ln 2^1024, where m may be 1024.
inline double exp_large(double x) { return exp_half(x) * 2.0; }

// 2^shift exp(x) = 2^(k + shift) p(r) in single precision, k = round(x / ln2), |r| <= ln2/2:
// relative error of p below 2^-23.1 (LA) and 2^-12.9 (EP), and 2^-28.1 (HA: for functions
// that are built on it); tools/exp.sollya. `low` is a small correction of x, or nothing.
template <class Accuracy, int shift = 0> inline f4 exp_single(f4 x, auto... low) {
    constexpr float shifter = 0x1.8p23f + shift;
    const f4 sum = (x + ... + low) * static_cast<float>(inverse_ln2) + shifter;
    const f4 k = sum - shifter;
    f4 p;
    if constexpr (!std::is_same_v<Accuracy, EP>) {
        const f4 r = (minus_products(x, k, ln2_parts_single) + ... + low);
        if constexpr (std::is_same_v<Accuracy, LA>) {
            constexpr float c2 = from_bits(0x3EFFFEFEu), c3 = from_bits(0x3E2AABD6u),
                            c4 = from_bits(0x3D2B950Bu), c5 = from_bits(0x3C0831F7u);
            p = 1.0f + (r + r * r * (c2 + r * (c3 + r * (c4 + r * c5))));
        } else {
            constexpr float c2 = from_bits(0x3EFFFFFDu), c3 = from_bits(0x3E2AAA49u),
                            c4 = from_bits(0x3D2AAD13u), c5 = from_bits(0x3C091CBFu),
                            c6 = from_bits(0x3AB4A64Cu);
            p = 1.0f + (r + r * r * (c2 + r * (c3 + r * (c4 + r * (c5 + r * c6)))));
        }
    } else {
        const f4 r = ((x - k * static_cast<float>(ln2)) + ... + low);
        constexpr float c2 = from_bits(0x3F01024Du), c3 = from_bits(0x3E2AA08Eu);
        p = 1.0f + r * (1.0f + r * (c2 + r * c3));
    }
    return (f4)((u4)p + ((u4)sum << 23));  // wraps
}

}  // namespace kef::vm
