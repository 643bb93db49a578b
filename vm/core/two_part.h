// Formulas that are written once for two kinds of numbers: Parts, for results within little more
// than half an ulp, and doubles, for those of a few ulp.
#pragma once

#include "vm/core/hypot_core.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

template <class Accuracy>
using Number = std::conditional_t<std::is_same_v<Accuracy, HA>, Parts, doubles>;

// Normalised numbers in, normalised ones out; relative errors below 2^-74, of a sum relative to the
// larger term.
inline Parts normalised(Parts x) { return fast_two_sum(x.high, x.low); }
inline Parts operator-(Parts x) { return {-x.high, -x.low}; }
inline Parts operator+(Parts x, Parts y) {
    const Parts sum = two_sum(x.high, y.high);
    return fast_two_sum(sum.high, sum.low + (x.low + y.low));
}
inline Parts operator+(Parts x, double y) {
    const Parts sum = two_sum(x.high, all(y));
    return fast_two_sum(sum.high, sum.low + x.low);
}
inline Parts operator-(Parts x, Parts y) { return x + -y; }
inline Parts operator*(Parts x, Parts y) { return multiply(x, y); }
inline Parts operator/(Parts x, Parts y) { return normalised(divide(x, y)); }

// By a power of two.
inline Parts times_power(Parts x, double power) { return {x.high * power, x.low * power}; }
inline doubles times_power(doubles x, double power) { return x * power; }
inline Parts times_power(Parts x, doubles power) { return {x.high * power, x.low * power}; }
inline doubles times_power(doubles x, doubles power) { return x * power; }

// The leading part.
inline doubles leading_part(Parts x) { return x.high; }
inline doubles leading_part(doubles x) { return x; }

// Doubles, normalised parts, sums and squares of doubles as numbers.
template <class N> inline N number(doubles x) {
    if constexpr (std::is_same_v<N, Parts>) return {x, doubles{}};
    else return x;
}
template <class N> inline N number(Parts x) {
    if constexpr (std::is_same_v<N, Parts>) return x;
    else return x.high;
}
template <class N> inline N sum_of(doubles x, doubles y) {
    if constexpr (std::is_same_v<N, Parts>) return two_sum(x, y);
    else return x + y;
}
template <class N> inline N square_of(doubles x) {
    if constexpr (std::is_same_v<N, Parts>) return two_square(x);
    else return x * x;
}

// x, or a tiny number in place of 0: for divisors that are 0 where the dividend is.
inline Parts not_zero(Parts x) { return {maximum(x.high, all(0x1p-600)), x.low}; }
inline doubles not_zero(doubles x) { return maximum(x, all(0x1p-600)); }

inline doubles absolute_part(doubles x) { return absolute(x); }
inline Parts absolute_part(Parts x) { return flipped(x, sign_bit(x.high)); }

}  // namespace KEF_VM
