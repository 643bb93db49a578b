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

namespace kef::vm {

// e^r - 1 = r + r^2 q(r), |r| <= ln2/128, relative error 2^-62.1; gives r^2 q(r).
inline d2 expm1_tail(d2 r) {
    constexpr double c2 = 0.5;
    constexpr double c3 = from_bits(UINT64_C(0x3FC5555555554AFB));
    constexpr double c4 = from_bits(UINT64_C(0x3FA55555555553AF));
    constexpr double c5 = from_bits(UINT64_C(0x3F81111227862109));
    constexpr double c6 = from_bits(UINT64_C(0x3F56C16CF488501F));
    const d2 r2 = r * r;
    return r2 * ((c2 + r * c3) + r2 * ((c4 + r * c5) + r2 * c6));
}

// e^x - 1 = high + low for -40 <= x <= 709, relative error below 2^-59.
inline DoubleDouble<d2> expm1_parts(d2 x) {
    using C = ExpConstants<HA>;
    constexpr double shifter = shifter52 + 1023 * 64;
    const d2 sum = x * C::inverse + shifter;
    const d2 k = sum - shifter;
    // r + r_rest: what the reduction leaves.
    const d2 reduced = x - k * C::L1, k_low = k * C::L2;
    const d2 r = reduced - k_low;
    const d2 r_high = leading(r);
    const d2 r_low = (r - r_high) + ((reduced - r) - k_low);
    const ExpReduced parts = {r, _mm_extract_epi16((__m128i)sum, 0) & 63,
                              _mm_extract_epi16((__m128i)sum, 4) & 63,
                              ((l2)sum << 46) & INT64_C(0x7FF0000000000000)};
    const auto [T, t] = exp_table(parts);
    const d2 T_high = leading(T), power = (d2)parts.power;
    const d2 S = T_high * power, s = ((T - T_high) + t) * power;  // 2^(k/64)
    const d2 tail = expm1_tail(r);
    const DoubleDouble<d2> first = two_sum(S, all(-1.0));
    const DoubleDouble<d2> high = fast_two_sum(first.high, S * r_high);  // the product is exact
    return {high.high, (high.low + first.low) + (S * (r_low + tail) + (s + s * (r + tail)))};
}

// e^x - 1, -40 <= x <= 709: HA within 0.52 ulp; LA below 2^-51.8; EP below 2^-29.
template <class Accuracy> inline d2 expm1_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const auto e = expm1_parts(x);
        return e.high + e.low;
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        const ExpReduced reduced = exp_reduce<HA>(x);
        const auto [T, t] = exp_table(reduced);
        const d2 S = T * (d2)reduced.power, s = t * (d2)reduced.power;
        return (S - 1.0) + (s + (S + s) * (reduced.r + expm1_tail(reduced.r)));
    } else {
        constexpr double c2 = from_bits(UINT64_C(0x3FE000007B10F266));
        constexpr double c3 = from_bits(UINT64_C(0x3FC5555586889473));
        const ExpReduced reduced = exp_reduce<EP>(x);
        const d2 r = reduced.r, scale = exp_scale(reduced);
        return (scale - 1.0) + scale * (r + r * r * (c2 + r * c3));
    }
}

// The same in single precision: e^x - 1 = (2^k - 1) + 2^k p(r), |r| <= ln2/2,
// -87 <= x <= 88; relative error of p 2^-26.1 (LA) and 2^-15.6 (EP).
template <class Accuracy> inline f4 expm1_single(f4 x) {
    constexpr float shifter = 0x1.8p23f + 127;
    const f4 sum = x * static_cast<float>(inverse_ln2) + shifter;
    const f4 k = sum - shifter;
    const f4 power = (f4)((i4)sum << 23);
    f4 p;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        const f4 r = minus_products(x, k, ln2_parts_single);
        constexpr float c2 = from_bits(0x3EFFFFFFu), c3 = from_bits(0x3E2AAA58u),
                        c4 = from_bits(0x3D2AAB8Bu), c5 = from_bits(0x3C0913C8u),
                        c6 = from_bits(0x3AB5B9A0u);
        const f4 r2 = r * r;
        p = r + r2 * ((c2 + r * c3) + r2 * ((c4 + r * c5) + r2 * c6));
    } else {
        const f4 r = x - k * static_cast<float>(ln2);
        constexpr float c2 = from_bits(0x3F000115u), c3 = from_bits(0x3E2B842Au),
                        c4 = from_bits(0x3D2A6F76u);
        p = r * ((1.0f + r * c2) + r * r * (c3 + r * c4));
    }
    return power * p - (1.0f - power);
}

}  // namespace kef::vm
