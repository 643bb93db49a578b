// e^x - 1, and with it the hyperbolic functions: with x reduced as for the
// exponential,
//
//   e^x - 1 = (2^(k/N) - 1) + 2^(k/N) (e^r - 1)
//
// so that the result is a sum of the first term and a correction, and r plus a
// correction where k = 0. Polynomials: tools/expm1.sollya.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/simd/double_double.h"

namespace KEF_VM {

// e^r - 1 = r + r^2 q(r), |r| <= ln2/128, relative error 2^-62.1; gives r^2 q(r).
inline constexpr auto expm1_coefficients =
    coefficients(0x3FE0000000000000, 0x3FC5555555554AFB, 0x3FA55555555553AF, 0x3F81111227862109,
                 0x3F56C16CF488501F);
inline doubles expm1_tail(doubles r, const auto& c) {
    const doubles r2 = r * r;
    return r2 * polynomial_by_pairs(r, r2, c);
}

// e^x - 1 = high + low for -40 <= x <= 709, relative error below 2^-59.
inline Parts expm1_parts(doubles x) {
    const ExpReduced x_reduced = exp_reduce<ExpByRows>(x);
    const doubles r = x_reduced.r, r_high = leading(r), r_low = (r - r_high) + x_reduced.r_low;
    const auto [T, t] = exp_table(x_reduced);
    const doubles T_high = leading(T), power = (doubles)x_reduced.power;
    const doubles S = T_high * power, s = ((T - T_high) + t) * power;  // 2^(k/64)
    const doubles tail = expm1_tail(r, expm1_coefficients);
    const Parts first = two_sum(S, all(-1.0));
    const Parts high = fast_two_sum(first.high, S * r_high);  // the product is exact
    const doubles rest = multiply_add(S, r_low + tail, multiply_add(s, r + tail, s));
    return {high.high, (high.low + first.low) + rest};
}

// In fewer steps: high = 2^(k/N) - 1, which is 0 or larger than low; low has few units. `precise`,
// for what is squared, where looked up, with r as large as the result: high = 2^(k/N) (1 + r) - 1.
template <bool precise = false> inline Parts expm1_sum(doubles x) {
    constexpr auto c = rows_or_lookup(expm1_coefficients, ExpConstants<ExpLookedUp>::c);
    const ExpReduced reduced = exp_reduce<std::conditional_t<has_lookup, LA, HA>>(x);
    const auto [S, s] = exp_scale_parts(reduced);
    const doubles r = reduced.r, less = S - 1.0, tail = expm1_tail(r, c);
    if constexpr (precise && has_lookup) {
        const doubles high = multiply_add(S, r, less), left = multiply_add(S, r, less - high);
        return {high, left + multiply_add(S, reduced.r_low + tail, multiply_add(s, r, s))};
    }
    return {less, multiply_add(S + s, r + tail, s)};
}

// e^x - 1, -40 <= x <= 709: HA within 0.52 ulp; LA below 2^-51.8; EP below 2^-29.
template <class Accuracy> inline doubles expm1_core(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(expm1_parts(x));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        return rounded(expm1_sum(x));
    } else {
        constexpr auto c = rows_or_lookup(
            coefficients(0x3FE000007B10F266, 0x3FC5555586889473),
            coefficients(0x3FE000000022D163, 0x3FC5557081DE482A, 0x3FA5554DD46B5032));
        const ExpReduced reduced = exp_reduce<EP>(x);
        const doubles scale = exp_scale(reduced);
        return multiply_add(scale, exp_tail(reduced.r, c), scale - 1.0);
    }
}

// The same in single precision: e^x - 1 = (2^k - 1) + 2^k p(r), |r| <= ln2/2,
// -87 <= x <= 88; relative error of p 2^-26.1 (LA) and 2^-15.6 (EP).
template <class Accuracy> inline floats expm1_single(floats x) {
    constexpr float shifter = 0x1.8p23f + 127;
    const floats sum = multiply_add(x, static_cast<float>(inverse_ln2), shifter);
    const floats k = sum - shifter;
    const floats power = (floats)((ints)sum << 23);
    floats p;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr auto c =
            coefficients(0x3EFFFFFFu, 0x3E2AAA58u, 0x3D2AAB8Bu, 0x3C0913C8u, 0x3AB5B9A0u);
        const floats r = minus_products(x, k, ln2_parts_single), r2 = r * r;
        p = multiply_add(r2, polynomial_by_pairs(r, r2, c), r);
    } else {
        constexpr auto c = coefficients(0x3F800000u, 0x3F000115u, 0x3E2B842Au, 0x3D2A6F76u);
        const floats r = negative_multiply_add(k, static_cast<float>(ln2), x);
        p = r * polynomial_by_pairs(r, r * r, c);
    }
    return multiply_subtract(power, p, 1.0f - power);
}

}  // namespace KEF_VM
