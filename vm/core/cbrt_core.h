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

namespace KEF_VM {

// (1 - e)^(-1/3) - 1 and (1 - e)^(-2/3) - 1 for |e| < 2^-16, error 2^-51.
inline doubles refine(doubles e) {
    return e * polynomial(e, coefficients(0x3FD55555555DA130, 0x3FCC71C71C825ED1));
}
inline doubles refine_square(doubles e) {
    return e * polynomial(e, coefficients(0x3FE5555555612F69, 0x3FE1C71C71D2F685));
}
// (1 - e)^(-1/3) - 1 for -2^-15 < e < 2^-13.2, error 2^-60.9.
inline doubles refine_cut(doubles e) {
    return e *
           polynomial(e, coefficients(0x3FD555555555540C, 0x3FCC71C71BB1A74B, 0x3FC6203F5A64CB76));
}

// x^(-1/3), relative error 2^-18.4: |e| < 0.1025 after the division by three, by
// 0x55555556 2^-32 in the upper halves.
inline doubles inverse_cbrt_estimate(doubles x) {
    const ulongs third = low_products((ulongs)x >> 32, (ulongs)all(std::int64_t{0x55555556}));
    const doubles y = (doubles)(INT64_C(0x553EE90000000000) - (longs)third);
    const doubles e = negative_multiply_add(x * y, y * y, 1.0);
    constexpr auto c = coefficients(0x3FD555466C3BF25E, 0x3FCC9B2688C928D8, 0x3FC65326D7A3C3CD);
    return multiply_add(y * e, polynomial(e, c), y);
}

// The same in single precision, 2^-18.4 (LA, HA) and 2^-14.3 (EP).
template <class Accuracy> inline floats inverse_cbrt_estimate(floats x) {
    const floats third = to_floats((ints)x) * (1.0f / 3.0f);
    const floats y = (floats)(0x54A1F400 - truncated_to_ints(third));
    const floats e = negative_multiply_add(x * y, y * y, 1.0f);
    if constexpr (std::is_same_v<Accuracy, EP>)
        return multiply_add(y * e, polynomial(e, coefficients(0x3EAB5CD5u, 0x3E64F4E8u)), y);
    else
        return multiply_add(y * e,
                            polynomial(e, coefficients(0x3EAAAA33u, 0x3E64D934u, 0x3E32998Eu)), y);
}

// x^(1/3) = high + low: high has 17 bits.
inline Parts cbrt_parts(doubles x) {
    const doubles y = inverse_cbrt_estimate(x);
    const doubles t = leading<36>((x * y) * y);
    const doubles e = (x - (t * t) * t) / x;  // the difference is exact
    return {t, t * refine_cut(e)};
}

// x^(-1/3) = high + low: high has 16 bits.
inline Parts inverse_cbrt_parts(doubles x) {
    const doubles t = leading<37>(inverse_cbrt_estimate(x));
    const doubles t3 = (t * t) * t;         // 48 bits
    const doubles x_high = leading<48>(x);  // 5 bits
    const doubles e = (1.0 - x_high * t3) - (x - x_high) * t3;
    return {t, t * refine_cut(e)};
}

// In double, relative error below 2^-50.1; y is the estimate.
inline doubles inverse_cbrt_from(doubles x, doubles y) {
    return multiply_add(y, refine(negative_multiply_add(x * y, y * y, 1.0)), y);
}
inline doubles cbrt_from(doubles x, doubles y) {
    const doubles xy = x * y, c = xy * y;
    return multiply_add(c, refine_square(negative_multiply_add(xy, y * y, 1.0)), c);
}

// In single precision, LA below 2^-21.5; EP gives the estimate.
template <class Accuracy> inline floats inverse_cbrt_single(floats x) {
    const floats y = inverse_cbrt_estimate<Accuracy>(x);
    if constexpr (std::is_same_v<Accuracy, EP>) return y;
    return multiply_add(y * negative_multiply_add(x * y, y * y, 1.0f), 1.0f / 3.0f, y);
}
template <class Accuracy> inline floats cbrt_single(floats x) {
    const floats y = inverse_cbrt_estimate<Accuracy>(x), xy = x * y, c = xy * y;
    if constexpr (std::is_same_v<Accuracy, EP>) return c;
    return multiply_add(c * negative_multiply_add(xy, y * y, 1.0f), 2.0f / 3.0f, c);
}

// formula(x, estimate) in double for floats.
template <class Formula> inline DoublesPair from_single_estimate(floats x, Formula formula) {
    const DoublesPair wide = widen(x), y = widen(inverse_cbrt_estimate<HA>(x));
    return {formula(wide.low, y.low), formula(wide.high, y.high)};
}

// The gates: |x| normal, and in double from 2^-960 to 2^1000, so that no part of x and no power of
// it is subnormal; beyond, formula(x 2^-+300) times 2^+-(300 p) for x^p.
template <class T> inline ints cbrt_outside(ints h) {
    if constexpr (std::is_same_v<T, double>)
        return not_between(magnitude(h), head_of(0x1p-960), head_of(0x1p1000));
    return not_between(magnitude(h), Format<T>::normal_head, Format<T>::infinity_head);
}
inline ints cbrt_beyond(ints h) {
    return not_between(magnitude(h), Format<double>::normal_head, Format<double>::infinity_head);
}
template <class Formula>
inline doubles cbrt_rescaled(doubles x, Formula formula, double up, double down) {
    const longs small = absolute(x) < 1.0;
    return formula(x * select(small, all(0x1p300), all(0x1p-300))) *
           select(small, all(down), all(up));
}

}  // namespace KEF_VM
