// ln(1 + x): ln of the rounded sum s = 1 + x, with its error carried into z/c - 1. Near
// x = 0 that is ln(1 + r) with r = x exactly.
#pragma once

#include "vm/core/log_single.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// s + rest = 1 + x exactly.
struct OnePlus {
    doubles s, rest;
};
inline OnePlus one_plus(doubles x) {
    const doubles larger = maximum(x, all(1.0)), smaller = minimum(x, all(1.0)),
                  s = larger + smaller;
    return {s, smaller - (s - larger)};
}

// 2^-k/c for the reduced s: what a rest is worth in z/c - 1. (A structure around the
// reduced s would be copied through memory, where its loads stall.)
inline doubles log_rest_factor(doubles s, doubles z, doubles inverse) {
    return (doubles)((longs)all(1.0) - ((longs)s - (longs)z)) * inverse;
}

// ln(s + rest), a small rest.
template <class Accuracy> inline doubles log_sum_with_rest(doubles s, doubles rest) {
    const LogShort reduced = log_reduce_short(s);
    const doubles factor = log_rest_factor(s, reduced.z, reduced.inverse);
    return log_sum_of<Accuracy>(reduced,
                                multiply_add(rest, factor, log_argument_rounded<LA>(reduced)));
}

// ln(1 + x + x_low) as an unevaluated sum, |x_low| <= ulp(x)/2; relative error below
// 0.01 ulp. Without x_low: ln(1 + x).
template <class... Low> inline Parts log1p_parts(doubles x, Low... x_low) {
    const OnePlus sum = one_plus(x);
    const auto reduced = log_reduce_long(sum.s);
    const doubles factor = log_rest_factor(sum.s, reduced.z, inverse_of(reduced));
    const Parts v = log_argument(reduced);
    const Parts r = fast_two_sum(v.high, sum.rest * factor);
    return log_sum(reduced, {r.high, ((r.low + v.low) + ... + (x_low * factor))});
}

// ln(1 + x), x > -1. HA: 0.51 ulp; LA: relative error below 2^-50.7; EP: below 2^-27. For LA and EP
// the error of 1 + x counts near 0 alone, above 1 it is left out, and its factor is 1/c or 1.
template <class Accuracy> inline doubles log1p_core(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(log1p_parts(x));
    } else {
        const LogShort reduced = log_reduce_short(x + 1.0);
        const doubles small = minimum(x, all(1.0)), rest = small - ((small + 1.0) - 1.0);
        const doubles r = log_argument_rounded<Accuracy>(reduced);
        if constexpr (std::is_same_v<Accuracy, EP>) return log_sum_of<EP>(reduced, r + rest);
        else return log_sum_of<LA>(reduced, multiply_add(rest, reduced.inverse, r));
    }
}

// z/c - 1 = (m - 1) + m x with m = 2^-k/c of 24 bits: both terms are exact. Of 53 bits, looked up:
// m - 1 is where k = 0, and elsewhere the result is above 0.3.
inline DoublesPair log1p_in_double(floats x) {
    const LogSingleReduced s = log_single_reduce_for_double(x + 1.0f);
    const DoublesPair wide = widen(x), power = widen((floats)(0x3F800000 - (s.exponent << 23)));
    const LogInDouble both = log_in_double(s);
    const auto log = [](const LogOfFloat& reduced, doubles x, doubles power) {
        const doubles m = inverse_of(reduced) * power;
        return log_sum_of<ForFloats>(reduced, (m - 1.0) + x * m);
    };
    return {log(both.low, wide.low, power.low), log(both.high, wide.high, power.high)};
}

template <class Accuracy> inline floats log1p_single(floats x) {
    const LogSingleReduced s = log_single_reduce(x + 1.0f);
    return log_single<Accuracy>(s.exponent, select(s.exponent == 0, x, s.z - 1.0f));
}

}  // namespace KEF_VM
