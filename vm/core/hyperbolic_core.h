// Hyperbolic functions of x >= 0, from E = e^x - 1:
//
//   sinh x = (E + E/(E + 1))/2       HA; LA and EP: sinh_direct
//   cosh x = (e^x + 1/e^x)/2
//   tanh(x/2) = E/(E + 2)
//
// HA carries high and low parts throughout; all terms are positive, so that nothing
// cancels. Valid where E + 2 and its inverse are ordinary numbers: x < 650 in double,
// x < 86 in single precision.
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

// 2 sinh x = high + low; not halved, so that subnormal numbers stay exact.
inline Parts twice_sinh_parts(doubles x) {
    const auto parts = expm1_parts(x);
    const Parts e = fast_two_sum(parts.high, parts.low);
    const Parts q = fraction(e, 1);
    const Parts high = fast_two_sum(e.high, q.high);
    return {high.high, high.low + (e.low + q.low)};
}

// Within 0.53 ulp.
inline doubles sinh_core(doubles x) { return 0.5 * rounded(twice_sinh_parts(x)); }

// LA and EP, of both signs: x = k ln2 + r,
//
//   sinh x = (2^k - 2^-k)/2 cosh r + (2^k + 2^-k)/2 sinh r
//
// where the first term is 0 if k is. sinh r = r + r^3 s(r^2), cosh r - 1 = r^2 c(r^2), relative
// errors: double 2^-61.6, 2^-52.0 (LA), 2^-37.4, 2^-28.4 (EP); single 2^-34.1, 2^-28.1 (LA),
// 2^-15.5, 2^-17.6 (EP). tools/sinh.sollya
template <class T, class Accuracy> struct SinhConstants;
template <> struct SinhConstants<double, LA> {
    static constexpr auto s =
        coefficients(0x3FC5555555555559, 0x3F8111111110F657, 0x3F2A01A01B001C59, 0x3EC71DDF815E04E9,
                     0x3E5AF5F1D83488B3);
    static constexpr auto c =
        coefficients(0x3FE0000000000001, 0x3FA5555555553CE2, 0x3F56C16C178A7F91, 0x3EFA019B8C385091,
                     0x3E92891C62C4314F);
};
template <> struct SinhConstants<double, EP> {
    static constexpr auto s =
        coefficients(0x3FC555555735B811, 0x3F81110B20ED9AEF, 0x3F2A16F7F9D422BF);
    static constexpr auto c =
        coefficients(0x3FE0000000B835C6, 0x3FA5554E941D136F, 0x3F56D42E4349624C);
};
template <> struct SinhConstants<float, LA> {
    static constexpr auto s = coefficients(0x3E2AAAABu, 0x3C0887F1u, 0x395147A5u);
    static constexpr auto c = coefficients(0x3F000000u, 0x3D2AAA81u, 0x3AB69701u);
};
template <> struct SinhConstants<float, EP> {
    static constexpr auto s = coefficients(0x3E2B8441u);
    static constexpr auto c = coefficients(0x3EFFFFACu, 0x3D2B59CCu);
};
template <class Accuracy, class V> inline V sinh_direct(V x) {
    using T = Element<V>;
    using C = SinhConstants<T, Accuracy>;
    constexpr bool single = sizeof(T) == 4;
    constexpr T shifter = single ? T(0x1.8p23f + 126) : T(0x1.8p52 + 1022);
    constexpr auto parts = [] {
        if constexpr (single) return ln2_parts_single;
        else return std::array{ln2_high, ln2_low};
    }();
    const V sum = multiply_add(x, T(inverse_ln2), all(shifter)), k = sum - shifter;
    const V r = minus_products(x, k, parts), z = r * r;
    // 2^(k-1) and 2^-(k+1): the sum of the bit patterns is that of a number.
    const auto bits = (BitsOf<V>)sum << (single ? 23 : 52);
    const V up = (V)bits, down = (V)((BitsOf<V>)all(single ? T(0x1p125f) : T(0x1p1021)) - bits);
    const V first = up - down;
    const V s = multiply_add(r * z, polynomial(z, C::s), r), c = z * polynomial(z, C::c);
    return first + multiply_add(first, c, (up + down) * s);
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

template <class Accuracy> inline floats cosh_single(floats x) {
    const floats half = exp_single<Accuracy, -1>(x);
    return half + 0.25f / half;
}
template <class Accuracy> inline floats half_tanh_single(floats x) {
    const floats e = expm1_single<Accuracy>(x);
    return e / (e + 2.0f);
}

}  // namespace KEF_VM
