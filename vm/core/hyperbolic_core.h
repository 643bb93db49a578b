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

namespace KEF_VM {

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

// E/(E + n).
inline Parts fraction(Parts e, double n) {
    const Parts sum = two_sum(e.high, all(n));
    return divide(e, {sum.high, sum.low + e.low});
}
template <class V> inline V sinh_of(V e) {
    using T = Element<V>;
    return negative_multiply_add(e, e * (T(0.5) / (e + T(1))), e);
}

// 2 sinh x = high + low; not halved, so that subnormal numbers stay exact.
inline Parts twice_sinh_parts(doubles x) {
    const auto parts = expm1_parts(x);
    const Parts e = fast_two_sum(parts.high, parts.low);
    const Parts q = fraction(e, 1);
    const Parts high = fast_two_sum(e.high, q.high);
    return {high.high, high.low + (e.low + q.low)};
}

// HA within 0.53 ulp, LA below 2^-50.6, EP below 2^-28.
template <class Accuracy> inline doubles sinh_core(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return 0.5 * rounded(twice_sinh_parts(x));
    } else {
        const doubles e = expm1_core<Accuracy>(x);
        if constexpr (std::is_same_v<Accuracy, EP>) return 0.5 * (e + e / (e + 1.0));
        return sinh_of(e);
    }
}

template <class Accuracy> inline doubles cosh_core(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto parts = exp_parts(x);
        const Parts e = fast_two_sum(parts.high * parts.power, parts.low * parts.power);
        const Parts q = divide({all(1.0), all(0.0)}, e);
        const Parts high = fast_two_sum(e.high, q.high);
        return 0.5 * (high.high + (high.low + (e.low + q.low)));
    } else if constexpr (has_lookup && std::is_same_v<Accuracy, LA>) {
        // One rounding less: cosh of the float 0x3D609528 is 2^-53 beside a midpoint of floats.
        const ExpReduced reduced = exp_reduce<LA, -1>(x);
        const doubles scale = exp_scale(reduced), p = exp_tail(reduced.r, ExpConstants<LA>::c);
        return scale + multiply_add(scale, p, 0.25 / multiply_add(scale, p, scale));
    } else {
        const doubles half = exp_core<Accuracy, -1>(x);
        return half + 0.25 / half;
    }
}

// tanh(x/2).
template <class Accuracy> inline doubles half_tanh_core(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const Parts e = expm1_parts(x);
        return rounded(fraction(fast_two_sum(e.high, e.low), 2));
    } else {
        const doubles e = expm1_core<Accuracy>(x);
        return e / (e + 2.0);
    }
}

template <class Accuracy> inline floats sinh_single(floats x) {
    const floats e = expm1_single<Accuracy>(x);
    if constexpr (std::is_same_v<Accuracy, EP>) return 0.5f * (e + e / (e + 1.0f));
    return sinh_of(e);
}
template <class Accuracy> inline floats cosh_single(floats x) {
    const floats half = exp_single<Accuracy, -1>(x);
    return half + 0.25f / half;
}
template <class Accuracy> inline floats half_tanh_single(floats x) {
    const floats e = expm1_single<Accuracy>(x);
    return e / (e + 2.0f);
}

}  // namespace KEF_VM
