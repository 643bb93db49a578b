// What Asinh, Acosh and Atanh share: each is ln(1 + w) of a w that keeps its relative
// accuracy where the result is small.
#pragma once

#include "vm/core/log1p_core.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// w = y + y^2 / (1 + sqrt(1 + y^2)): asinh y = ln(1 + w), 0 <= y < 2^500.
inline Parts asinh_argument(doubles y) {
    const Parts square = two_square(y);
    const Parts sum = two_sum(square.high, all(1.0));
    const Parts h = root({sum.high, sum.low + square.low});
    const Parts divisor = two_sum(h.high, all(1.0));
    const Parts q = divide(square, fast_two_sum(divisor.high, divisor.low + h.low));
    const Parts w = fast_two_sum(y, q.high);
    return fast_two_sum(w.high, w.low + q.low);
}
template <class V> inline V asinh_argument_rounded(V y) {
    using T = Element<V>;
    const V square = y * y;
    return y + square / (T(1) + square_root(T(1) + square));
}

// EP in single precision: where y^2/2 drowns in 1, so it does in y.
inline floats asinh_argument_short(floats y) { return y + (square_root(1.0f + y * y) - 1.0f); }

// w = t + sqrt(2 t + t^2), t = x - 1 exactly: acosh x = ln(1 + w), 1 <= x < 2^500.
inline Parts acosh_argument(doubles x) {
    const Parts t = two_sum(x, all(-1.0));
    const Parts square = two_square(t.high);
    const Parts sum = two_sum(square.high, 2.0 * t.high);
    // d/dt (2 t + t^2) = 2 + 2 t = 2 x for the low part of t, of large x alone.
    const Parts h = root({sum.high, (sum.low + square.low) + 2.0 * (x * t.low)});
    const Parts w = fast_two_sum(h.high, t.high);
    return fast_two_sum(w.high, w.low + (h.low + t.low));
}
template <class V> inline V acosh_argument_rounded(V x) {
    using T = Element<V>;
    const V t = x - T(1);
    return t + square_root(t * (x + T(1)));
}

// w = 2 y / (1 - y): atanh y = ln(1 + w) / 2, 0 <= y < 1.
inline Parts atanh_argument(doubles y) {
    const Parts w = divide({2.0 * y, doubles{}}, fast_two_sum(all(1.0), -y));
    return fast_two_sum(w.high, w.low);
}
template <class V> inline V atanh_argument_rounded(V y) {
    using T = Element<V>;
    return (y + y) / (T(1) - y);
}

// ln(1 + w) of the arguments in two parts.
inline Parts log1p_parts_of(Parts w) { return log1p_parts(w.high, w.low); }
inline doubles log1p_of(Parts w) { return rounded(log1p_parts_of(w)); }

// Asinh and Acosh of one element, rounded once to T: ln 2x from 2^500 (2^60) on, where the
// gates end, and the function's own formula for floats next to whose results there is a
// midpoint.
template <class T, class Argument> inline T log_or_log1p(T x, Argument argument) {
    constexpr T log_twice_from = std::is_same_v<T, double> ? T(0x1p500) : T(0x1p60);
    const doubles y = all(double(x));
    const Parts log = x >= log_twice_from ? log_parts(y, 1) : log1p_parts_of(argument(y));
    if constexpr (std::is_same_v<T, double>) return rounded(log)[0];
    else return rounded_once(log);
}

}  // namespace KEF_VM
