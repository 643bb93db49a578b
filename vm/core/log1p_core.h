// ln(1 + x): ln of the rounded sum s = 1 + x, with its error carried into z/c - 1. Near
// x = 0 that is ln(1 + r) with r = x exactly.
#pragma once

#include "vm/core/log_single.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"

namespace kef::vm {

// s + rest = 1 + x exactly.
struct OnePlus {
    d2 s, rest;
};
inline OnePlus one_plus(d2 x) {
    const d2 larger = maximum(x, all(1.0)), smaller = minimum(x, all(1.0)), s = larger + smaller;
    return {s, smaller - (s - larger)};
}

// 2^-k/c for the reduced s: what a rest is worth in z/c - 1. (A structure around the
// reduced s would be copied through memory, where its loads stall.)
inline d2 log_rest_factor(d2 s, const LogReduced& reduced, d2 inverse) {
    return (d2)((l2)all(1.0) - ((l2)s - (l2)reduced.z)) * inverse;
}

// ln(1 + x + x_low) as an unevaluated sum, |x_low| <= ulp(x)/2; relative error below
// 0.01 ulp. Without x_low: ln(1 + x).
template <class... Low> inline DoubleDouble<d2> log1p_parts(d2 x, Low... x_low) {
    const OnePlus sum = one_plus(x);
    const LogReduced reduced = log_reduce(sum.s);
    const d2 inverse = log_field(reduced, &LogEntry::inverse);
    const d2 factor = log_rest_factor(sum.s, reduced, inverse);
    const DoubleDouble<d2> u = log_argument(reduced.z, inverse);
    const DoubleDouble<d2> v = fast_two_sum(u.high, u.low);
    const DoubleDouble<d2> r = fast_two_sum(v.high, sum.rest * factor);
    return log_sum(reduced, {r.high, ((r.low + v.low) + ... + (x_low * factor))});
}

// ln(1 + x), x > -1. HA: 0.51 ulp; LA: relative error below 2^-51; EP: below 2^-27.
template <class Accuracy> inline d2 log1p_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // The error counts near 0 alone, and is harmless elsewhere.
        const LogReduced reduced = log_reduce(x + 1.0);
        const d2 small = minimum(x, all(1.0)), rest = small - ((small + 1.0) - 1.0);
        return log_sum<EP>(reduced,
                           (reduced.z * log_field(reduced, &LogEntry::inverse) - 1.0) + rest);
    }
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> sum = log1p_parts(x);
        return sum.high + sum.low;
    } else {
        const OnePlus sum = one_plus(x);
        const LogReduced reduced = log_reduce(sum.s);
        const d2 inverse = log_field(reduced, &LogEntry::inverse);
        const DoubleDouble<d2> u = log_argument(reduced.z, inverse);
        const d2 rest = sum.rest * log_rest_factor(sum.s, reduced, inverse);
        return log_sum<LA>(reduced, (u.high + u.low) + rest);
    }
}

// z/c - 1 = (m - 1) + m x with m = 2^-k/c of 24 bits: both terms are exact.
inline d2x2 log1p_in_double(f4 x) {
    const LogSingleReduced s = log_single_reduce(x + 1.0f);
    const d2x2 wide = widen(x), power = widen((f4)(0x3F800000 - (s.exponent << 23)));
    const LogInDouble x4 = log_in_double(wide, s.exponent, s.interval);
    const auto log = [](const LogReduced& x, d2 power) {
        const d2 m = log_field(x, &LogEntry::inverse) * power;
        return log_sum<LA>(x, (m - 1.0) + x.z * m);
    };
    return {log(x4.low, power.low), log(x4.high, power.high)};
}

template <class Accuracy> inline f4 log1p_single(f4 x) {
    const LogSingleReduced s = log_single_reduce(x + 1.0f);
    return log_single<Accuracy>(s.exponent, select(s.exponent == 0, x, s.z - 1.0f));
}

}  // namespace kef::vm
