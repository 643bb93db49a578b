// Hyperbolic functions of x >= 0, from E = e^x - 1:
//
//   sinh x = (E + E/(E + 1))/2 = E - E^2/(2(E + 1))
//   cosh x = (e^x + 1/e^x)/2
//   tanh(x/2) = E/(E + 2)
//
// HA carries high and low parts throughout; all terms are positive, so that nothing
// cancels. The second form of sinh, for LA, has the smaller error where E is small; EP
// takes the first. Valid where E + 2 and its inverse are ordinary numbers: x < 650 in
// double, x < 86 in single precision.
#pragma once

#include "vm/core/expm1_core.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"

namespace kef::vm {

// The gates: |x| < large_value, whose leading bits are `large`.
template <class T> struct HyperbolicRange;
template <> struct HyperbolicRange<double> {
    static constexpr std::uint32_t large = 0x40845000;
    static constexpr double large_value = 650;
    static constexpr double half_infinite_above = 711;  // beyond ln 2^1025
    static constexpr double one_from = 22;              // tanh x rounds to 1
};
template <> struct HyperbolicRange<float> {
    static constexpr std::uint32_t large = 0x42AC0000;
    static constexpr float large_value = 86;
    static constexpr float half_infinite_above = 90;
    static constexpr float one_from = 10;
};

// e^x/2 for x >= large: sinh x and cosh x, with the status.
template <class T> inline int half_exp(T x, T& r) {
    if (!(x < HyperbolicRange<T>::half_infinite_above)) r = Format<T>::infinity;
    else r = static_cast<T>(exp_half(x));
    return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
}

// 2 sinh x = high + low; not halved, so that subnormal numbers stay exact.
inline DoubleDouble<d2> twice_sinh_parts(d2 x) {
    const auto parts = expm1_parts(x);
    const DoubleDouble<d2> e = fast_two_sum(parts.high, parts.low);
    const DoubleDouble<d2> sum = two_sum(e.high, all(1.0));
    const DoubleDouble<d2> q = divide(e, {sum.high, sum.low + e.low});
    const DoubleDouble<d2> high = fast_two_sum(e.high, q.high);
    return {high.high, high.low + (e.low + q.low)};
}

// HA within 0.53 ulp, LA below 2^-50.6, EP below 2^-28.
template <class Accuracy> inline d2 sinh_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> twice = twice_sinh_parts(x);
        return 0.5 * (twice.high + twice.low);
    } else {
        const d2 e = expm1_core<Accuracy>(x);
        if constexpr (std::is_same_v<Accuracy, EP>) return 0.5 * (e + e / (e + 1.0));
        return e - e * (e * (0.5 / (e + 1.0)));
    }
}

template <class Accuracy> inline d2 cosh_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto parts = exp_parts(x);
        const DoubleDouble<d2> e = fast_two_sum(parts.high * parts.power, parts.low * parts.power);
        const DoubleDouble<d2> q = divide({all(1.0), all(0.0)}, e);
        const DoubleDouble<d2> high = fast_two_sum(e.high, q.high);
        return 0.5 * (high.high + (high.low + (e.low + q.low)));
    } else {
        const d2 half = exp_core<Accuracy, -1>(x);
        return half + 0.25 / half;
    }
}

// tanh(x/2).
template <class Accuracy> inline d2 half_tanh_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto parts = expm1_parts(x);
        const DoubleDouble<d2> e = fast_two_sum(parts.high, parts.low);
        const DoubleDouble<d2> sum = two_sum(e.high, all(2.0));
        const DoubleDouble<d2> q = divide(e, {sum.high, sum.low + e.low});
        return q.high + q.low;
    } else {
        const d2 e = expm1_core<Accuracy>(x);
        return e / (e + 2.0);
    }
}

template <class Accuracy> inline f4 sinh_single(f4 x) {
    const f4 e = expm1_single<Accuracy>(x);
    if constexpr (std::is_same_v<Accuracy, EP>) return 0.5f * (e + e / (e + 1.0f));
    return e - e * (e * (0.5f / (e + 1.0f)));
}
template <class Accuracy> inline f4 cosh_single(f4 x) {
    const f4 half = exp_single<Accuracy, -1>(x);
    return half + 0.25f / half;
}
template <class Accuracy> inline f4 half_tanh_single(f4 x) {
    const f4 e = expm1_single<Accuracy>(x);
    return e / (e + 2.0f);
}

}  // namespace kef::vm
