// The exponential of two doubles at a time:
//
//   x = k ln2/N + r,  exp(x) = 2^(k/N) p(r),  N = 64 or 128
//
// The table gives 2^(j/N) with j = k mod N, the exponent field m = floor(k/N).
// Tables: tools/exp_tables.py.
#pragma once

#include "vm/frame.h"
#include "vm/simd.h"

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
    static constexpr double inverse = from_bits(UINT64_C(0x40571547652B82FE));  // 64/ln2
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
    static constexpr double inverse = from_bits(UINT64_C(0x40671547652B82FE));  // 128/ln2
    static constexpr double L1 = from_bits(UINT64_C(0x3F762E42FEE00000));
    static constexpr double L2 = from_bits(UINT64_C(0x3D7A39EF35793C76));
    static constexpr double c2 = from_bits(UINT64_C(0x3FDFFFFFFFFFFEB0));
    static constexpr double c3 = from_bits(UINT64_C(0x3FC55555B7BAE976));
    static constexpr double c4 = from_bits(UINT64_C(0x3FA55555C2A9C0FA));
};

// EP: 1 + r + r^2/2, error below 2^-28.1; one constant for the reduction.
template <> struct ExpConstants<EP> {
    static constexpr int log2_size = 7;
    static constexpr double inverse = from_bits(UINT64_C(0x40671547652B82FE));
    static constexpr double L = from_bits(UINT64_C(0x3F762E42FEFA39EF));
};

// exp(x) 2^-shift without overflow or underflow in between, for |x| < 746 and
// shifts that bring the result into the normal range.
template <class Accuracy, int shift = 0>
inline d2 exp_core(d2 x) {
    using C = ExpConstants<Accuracy>;
    constexpr int size = 1 << C::log2_size;
    const d2 sum = x * C::inverse + shifter52;
    const d2 kd = sum - shifter52;
    const l2 k = (l2)sum;
    // 2^(m - shift) in the exponent field; bits above it fall off the top.
    const l2 biased = ((k + std::int64_t{(1023 - shift) * size}) << (52 - C::log2_size)) &
                      INT64_C(0x7FF0000000000000);
    const int j0 = _mm_extract_epi16((__m128i)k, 0) & (size - 1);
    const int j1 = _mm_extract_epi16((__m128i)k, 4) & (size - 1);

    if constexpr (std::is_same_v<Accuracy, HA>) {
        const d2 r = (x - kd * C::L1) - kd * C::L2;
        const d2 p = r + r * r * (C::c2 + r * (C::c3 + r * (C::c4 + r * C::c5)));
        const d2 e0 = (d2)_mm_load_pd(&exp64_table[j0].high);
        const d2 e1 = (d2)_mm_load_pd(&exp64_table[j1].high);
        const d2 T = __builtin_shufflevector(e0, e1, 0, 2);
        const d2 t = __builtin_shufflevector(e0, e1, 1, 3);
        return (T + (t + (T + t) * p)) * (d2)biased;
    } else {
        const __m128i f0 = _mm_loadl_epi64((const __m128i*)&exp128_table[j0]);
        const __m128i f1 = _mm_loadl_epi64((const __m128i*)&exp128_table[j1]);
        const d2 scale = (d2)((l2)_mm_unpacklo_epi64(f0, f1) | biased);
        if constexpr (std::is_same_v<Accuracy, LA>) {
            const d2 r = (x - kd * C::L1) - kd * C::L2;
            const d2 p = r + r * r * (C::c2 + r * (C::c3 + r * C::c4));
            return scale + scale * p;
        } else {
            const d2 r = x - kd * C::L;
            return scale * (1.0 + (r + r * r * 0.5));
        }
    }
}

}  // namespace kef::vm
