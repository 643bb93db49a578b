// Cube roots of positive normal numbers, from an estimate y of x^(-1/3): the bit
// pattern divided by three, then one step of
//
//   x^(-1/3) = y (1 - e)^(-1/3),  e = 1 - x y^3
//
// HA cuts the estimate t to so few bits that t^3 is exact, which gives e without
// error, and adds the correction to t: 0.53 ulp. Polynomials: tools/cbrt.sollya.
#pragma once

#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace kef::vm {

// (1 - e)^(-1/3) - 1 and (1 - e)^(-2/3) - 1 for |e| < 2^-16, error 2^-51.
inline d2 refine(d2 e) {
    constexpr double c1 = from_bits(UINT64_C(0x3FD55555555DA130));
    constexpr double c2 = from_bits(UINT64_C(0x3FCC71C71C825ED1));
    return e * (c1 + e * c2);
}
inline d2 refine_square(d2 e) {
    constexpr double c1 = from_bits(UINT64_C(0x3FE5555555612F69));
    constexpr double c2 = from_bits(UINT64_C(0x3FE1C71C71D2F685));
    return e * (c1 + e * c2);
}
// (1 - e)^(-1/3) - 1 for -2^-15 < e < 2^-13.2, error 2^-60.9.
inline d2 refine_cut(d2 e) {
    constexpr double c1 = from_bits(UINT64_C(0x3FD555555555540C));
    constexpr double c2 = from_bits(UINT64_C(0x3FCC71C71BB1A74B));
    constexpr double c3 = from_bits(UINT64_C(0x3FC6203F5A64CB76));
    return e * (c1 + e * (c2 + e * c3));
}

// x^(-1/3), relative error 2^-18.4: |e| < 0.1025 after the division by three, by
// 0x55555556 2^-32 in the upper halves.
inline d2 inverse_cbrt_estimate(d2 x) {
    const __m128i third =
        _mm_mul_epu32(_mm_srli_epi64((__m128i)x, 32), (__m128i)all(std::int64_t{0x55555556}));
    const d2 y = (d2)(INT64_C(0x553EE90000000000) - (l2)third);
    constexpr double c1 = from_bits(UINT64_C(0x3FD555466C3BF25E));
    constexpr double c2 = from_bits(UINT64_C(0x3FCC9B2688C928D8));
    constexpr double c3 = from_bits(UINT64_C(0x3FC65326D7A3C3CD));
    const d2 e = 1.0 - (x * y) * (y * y);
    return y + (y * e) * (c1 + e * (c2 + e * c3));
}

// The same in single precision, 2^-18.4 (LA, HA) and 2^-14.3 (EP).
template <class Accuracy> inline f4 inverse_cbrt_estimate(f4 x) {
    const f4 third = (f4)_mm_cvtepi32_ps((__m128i)x) * (1.0f / 3.0f);
    const f4 y = (f4)(0x54A1F400 - (i4)_mm_cvttps_epi32((__m128)third));
    const f4 e = 1.0f - (x * y) * (y * y);
    if constexpr (std::is_same_v<Accuracy, EP>) {
        constexpr float c1 = from_bits(0x3EAB5CD5u), c2 = from_bits(0x3E64F4E8u);
        return y + (y * e) * (c1 + e * c2);
    } else {
        constexpr float c1 = from_bits(0x3EAAAA33u), c2 = from_bits(0x3E64D934u),
                        c3 = from_bits(0x3E32998Eu);
        return y + (y * e) * (c1 + e * (c2 + e * c3));
    }
}

// x^(1/3) = high + low: high has 17 bits.
inline DoubleDouble<d2> cbrt_parts(d2 x) {
    const d2 y = inverse_cbrt_estimate(x);
    const d2 t = (d2)((l2)((x * y) * y) & INT64_C(-0x1000000000));
    const d2 e = (x - (t * t) * t) / x;  // the difference is exact
    return {t, t * refine_cut(e)};
}

// x^(-1/3) = high + low: high has 16 bits.
inline DoubleDouble<d2> inverse_cbrt_parts(d2 x) {
    const d2 t = (d2)((l2)inverse_cbrt_estimate(x) & INT64_C(-0x2000000000));
    const d2 t3 = (t * t) * t;                                  // 48 bits
    const d2 x_high = (d2)((l2)x & INT64_C(-0x1000000000000));  // 5 bits
    const d2 e = (1.0 - x_high * t3) - (x - x_high) * t3;
    return {t, t * refine_cut(e)};
}

// In double, relative error below 2^-50.1; y is the estimate.
inline d2 inverse_cbrt_from(d2 x, d2 y) { return y + y * refine(1.0 - (x * y) * (y * y)); }
inline d2 cbrt_from(d2 x, d2 y) {
    const d2 xy = x * y, c = xy * y;
    return c + c * refine_square(1.0 - xy * (y * y));
}

// In single precision, LA below 2^-21.5; EP gives the estimate.
template <class Accuracy> inline f4 inverse_cbrt_single(f4 x) {
    const f4 y = inverse_cbrt_estimate<Accuracy>(x);
    if constexpr (std::is_same_v<Accuracy, EP>) return y;
    const f4 e = 1.0f - (x * y) * (y * y);
    return y + (y * e) * (1.0f / 3.0f);
}
template <class Accuracy> inline f4 cbrt_single(f4 x) {
    const f4 y = inverse_cbrt_estimate<Accuracy>(x), xy = x * y, c = xy * y;
    if constexpr (std::is_same_v<Accuracy, EP>) return c;
    const f4 e = 1.0f - xy * (y * y);
    return c + (c * e) * (2.0f / 3.0f);
}

// formula(x, estimate) in double for four floats.
template <class Formula> inline d2x2 from_single_estimate(f4 x, Formula formula) {
    const d2x2 wide = widen(x), y = widen(inverse_cbrt_estimate<HA>(x));
    return {formula(wide.low, y.low), formula(wide.high, y.high)};
}

// The gates: |x| normal, and in double from 2^-960 to 2^1000, so that no part of x and no power of
// it is subnormal; beyond, formula(x 2^-+300) times 2^+-(300 p) for x^p.
template <class T> inline i4 cbrt_outside(i4 h) {
    if constexpr (std::is_same_v<T, double>)
        return not_between(magnitude(h), head_of(0x1p-960), head_of(0x1p1000));
    return not_between(magnitude(h), Format<T>::normal_head, Format<T>::infinity_head);
}
inline i4 cbrt_beyond(i4 h) {
    return not_between(magnitude(h), Format<double>::normal_head, Format<double>::infinity_head);
}
template <class Formula> inline d2 cbrt_rescaled(d2 x, Formula formula, double up, double down) {
    const l2 small = absolute(x) < 1.0;
    return formula(x * select(small, all(0x1p300), all(0x1p-300))) *
           select(small, all(down), all(up));
}

}  // namespace kef::vm
