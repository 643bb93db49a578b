// x^y = e^(y ln x), in extended precision:
//
//   HA   ln x = high + low to 2^-68, y high exact by halves, so that y ln x has an
//        absolute error of 2^-58 up to 745
//   LA   ln x = high + low to 2^-62.5, so that y ln x has one of 2^-53
//   EP   ln x to 2^-36 and y ln x in one part
//
// and the special cases of C99 Annex F for any x and y.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/core/log_single.h"
#include "vm/core/rounding.h"
#include "vm/core/tiny.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"

namespace KEF_VM {

// y in halves, as every power needs it.
inline Parts exponent_halves(doubles y) {
    const doubles high = leading(y);
    return {high, y - high};
}

// k ln2 + ln c + ln(1 + r) = high + low, |low| < 2^-16 |high|, relative error below 2^-67 (HA): the
// square of a normalised r is taken exactly; or below 2^-62.5 (LA). Polynomial: 2^-73.4.
template <class Accuracy = HA>
inline Parts log_extended_sum(const LogReduced& reduced, doubles k, Parts r) {
    const doubles w = k * ln2_high + reduced.row.field(&LogEntry::high);  // exact
    const Parts first = fast_two_sum(w, r.high);
    // HA: -r^2/2 = -r_high^2/2 - tail (r_high + r)/2
    constexpr bool is_exact = std::is_same_v<Accuracy, HA>;
    const doubles r_high = is_exact ? leading(r.high) : r.high, half = r_high * -0.5;
    const Parts high = fast_two_sum(first.high, r_high * half);
    const doubles cross = r.high * r.low, tail = ((r.high - r_high) * (r_high + r.high)) * -0.5,
                  square_rest = is_exact ? tail - cross : -cross;
    constexpr auto c = coefficients(0x3FD5555555555557, 0xBFD0000000000002, 0x3FC999999987AC93,
                                    0xBFC555555542605F, 0x3FC249414CD28D96, 0xBFC0001BB8A85021);
    const doubles t = r.high, t2 = t * t, cubic = (t * t2) * polynomial_by_pairs(t, t2, c);
    const doubles small = (reduced.row.field(&LogEntry::low) + k * ln2_low) + r.low;
    return {high.high, cubic + (square_rest + (small + (first.low + high.low)))};
}

// ln x by it.
template <class Accuracy> inline Parts log_extended(doubles x, double shift = 0) {
    const LogReduced reduced = log_reduce(x);
    return log_extended_sum<Accuracy>(reduced, reduced.k + shift, log_argument(reduced));
}

// y ln x = high + low, |low| < 2^-7; for positive normal x.
template <class Accuracy>
inline Parts pow_exponent(doubles x, doubles y, Parts y_halves, double shift = 0) {
    const Parts log = log_extended<Accuracy>(x, shift);
    const doubles high = leading(log.high), low = (log.high - high) + log.low;
    return {y_halves.high * high, y_halves.low * high + y * low};
}

// e = y ln x and what its exponential is made of.
struct PowReduced {
    Parts e;
    ExpReduced exp;
};
template <class Accuracy> inline PowReduced pow_reduce(doubles x, doubles y) {
    if constexpr (std::is_same_v<Accuracy, EP>) {
        const LogReduced reduced = log_reduce(x);
        constexpr auto c = coefficients(0xBFDFFFFFFFFE37EE, 0x3FD5555FFAD18845, 0xBFD0000B61A5B9C6);
        const doubles inverse = reduced.row.field(&LogEntry::inverse);
        const doubles r = multiply_subtract(reduced.z, inverse, 1.0);
        const doubles log = log_sum(reduced, multiply_add(r * r, polynomial(r, c), r));
        const doubles e = y * log;
        return {{e, doubles{}}, exp_reduce<EP>(e)};
    } else {
        const Parts e = pow_exponent<Accuracy>(x, y, exponent_halves(y));
        return {e, exp_reduce<Accuracy>(e.high, e.low)};
    }
}

// x^y of one element, x > 0 finite, not 1, and y finite; whether the exact power lies
// below 2^-1022.
struct Power {
    double value;
    bool subnormal;
};
inline Power pow_positive(double x, double y) {
    // |ln x| >= 2^-53: beyond |y| = 2^64 there is no finite result, below 2^-64 it is 1.
    constexpr Power infinite = {Format<double>::infinity, false}, zero = {0.0, true};
    const double magnitude = y < 0 ? -y : y;
    if (magnitude < 0x1p-64) return {1.0, false};
    if (magnitude >= 0x1p64) return (x > 1) == (y > 0) ? infinite : zero;
    const bool scale = x < Format<double>::smallest_normal;
    const Parts e = pow_exponent<HA>(all(scale ? x * 0x1p54 : x), all(y), exponent_halves(all(y)),
                                     scale ? -54 : 0);
    if (e.high[0] > 710.0) return infinite;
    if (e.high[0] < -746.0) return zero;
    if (e.high[0] > -700.0) {
        const auto p = exp_parts(exp_reduce<HA, -1>(e.high, e.low));
        return {((p.high + p.low) * p.power)[0] * 2.0, false};
    }
    const auto p = exp_parts(exp_reduce<HA, 1022>(e.high, e.low));
    const double scaled = ((p.high + p.low) * p.power)[0];
    if (scaled >= 1.0) return {scaled * 0x1p-1022, false};
    return {round_to_subnormal((p.high * p.power)[0], (p.low * p.power)[0]), true};
}

// x^y of one element, any x and y; `power` gives |x|^y where neither is special.
template <class T, class Magnitude = Power (*)(double, double)>
inline int pow_edge(T x, T y, T& r, Magnitude magnitude = pow_positive) {
    if (y == 0 || x == 1) return r = 1, VTM_STATUS_OK;
    if (is_nan(x) || is_nan(y)) return r = quiet(x, y), VTM_STATUS_OK;
    const double a = x < 0 ? -double(x) : double(x);
    if (is_infinite(y)) {
        if (a == 1) r = 1;
        else r = (a > 1) == (y > 0) ? Format<T>::infinity : 0;
        return VTM_STATUS_OK;
    }
    const double whole = nearest<double>(all(double(y)))[0];
    const bool integer = whole == y;
    const double half = whole * 0.5;  // exact where whole is odd
    const bool negative =
        to_bits(double(x)) >> 63 && integer && nearest<double>(all(half))[0] != half;
    const T sign = negative ? -1 : 1;
    if (x == 0) {
        r = y < 0 ? sign * Format<T>::infinity : sign * T(0);
        return y < 0 ? VTM_STATUS_SING : VTM_STATUS_OK;
    }
    if (is_infinite(x)) return r = y < 0 ? sign * T(0) : sign * Format<T>::infinity, VTM_STATUS_OK;
    if (x < 0 && !integer) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
    if (a == 1) return r = sign, VTM_STATUS_OK;
    const Power power = magnitude(a, y);
    r = sign * static_cast<T>(power.value);
    if (is_infinite(r)) return VTM_STATUS_OVERFLOW;
    return power.subnormal || power.value < Format<T>::smallest_normal ? VTM_STATUS_UNDERFLOW
                                                                       : VTM_STATUS_OK;
}

// ln x of a float, relative error of the polynomial 2^-46.6 (looked up 2^-50.5), and e^x to 2^-41.2
// (2^-47.3), |x| <= 200.
inline doubles log_of_float(const LogOfFloat& x) {
    constexpr auto c = rows_or_lookup(
        coefficients(0xBFDFFFFFFFFCA436, 0x3FD5555555512415, 0xBFD0000D62906F9F,
                     0x3FC999B3A40E4F00),
        coefficients(0xBFDFFFFFFFFFFFEA, 0x3FD555555559316D, 0xBFD000000006F76D, 0x3FC99998CA526BB2,
                     0xBFC55554597731E7, 0x3FC24F527A5B24A6, 0xBFC00639DEA94B27));
    const doubles r = multiply_subtract(x.z, inverse_of(x), 1.0), r2 = r * r;
    return log_sum(x, multiply_add(r2, polynomial_by_pairs(r, r2, c), r));
}
inline doubles exp_for_float(doubles x) {
    constexpr auto b = rows_or_lookup(coefficients(0x3FE0000087E9F9B9, 0x3FC5555567D63763),
                                      coefficients(0x3FDFFFFFFFDBFFE4, 0x3FC555555576AC55,
                                                   0x3FA55573B7E4F003, 0x3F811108D295DE6F));
    const ExpReduced reduced = exp_reduce<EP>(x);
    const doubles scale = exp_scale(reduced);
    return multiply_add(scale, exp_tail(reduced.r, b), scale);
}

// Single precision in double: the exponential gives the right overflow and underflow
// of all results that pass through it, and refuse() finds these.
inline doubles pow_of_float(const LogOfFloat& x, doubles y) {
    return exp_for_float(within(y * log_of_float(x), 200.0));
}
inline floats pow_in_double(floats x, floats y) {
    const LogInDouble logs = log_in_double(log_single_reduce_for_double(x));
    const DoublesPair wide = widen(y);
    return narrow(pow_of_float(logs.low, wide.low), pow_of_float(logs.high, wide.high));
}

// Single EP: the logarithm has 2^-20, the product at most 2^6.5 and 2^-13; and
// y ln x for the gate.
inline Two<floats> pow_single(floats x, floats y) {
    const floats e = y * log_single<LA>(x);
    return {exp_single<EP>(e), e};
}

// What Pow and Powx have in common: all but the frame.
template <class T> struct PowRange;
template <> struct PowRange<double> {
    static constexpr double y_tiny = 0x1p-64;
    static constexpr std::int32_t y_large = 0x43F00000;   // 2^64
    static constexpr std::int32_t y_parity = 0x43200000;  // 2^51
    // |y ln x| for fast; LA: so that the terms of the power are normal numbers
    template <class Accuracy>
    static constexpr double large_exponent = std::is_same_v<Accuracy, LA> ? 690 : 707;
    // y ln x for far: ln 2^-1022 and more than its error; m = 1024 in exp_reduce
    static constexpr double least_exponent = -708.39641,
                            greatest_exponent = rows_or_lookup(709.777, 709.76);
};
template <> struct PowRange<float> {
    static constexpr float y_tiny = 0x1p-40f;
    static constexpr std::int32_t y_large = 0x5F800000;  // 2^64
    template <class Accuracy> static constexpr float large_exponent = 87;
    static constexpr float least_exponent = -87.336f, greatest_exponent = 88.722f;
};

// Sign bits: where y is odd, and where it is no integer. Double: for |y| < 2^51; single: from
// 2^31 on all count as fractions.
template <class V> struct Parity { V odd, fraction; };
inline Parity<doubles> parity(doubles y) {
    constexpr double shifter = 0x1.8p52;
    const doubles sum = y + shifter;
    return {(doubles)((longs)sum << 63), 0.0 - absolute(y - (sum - shifter))};
}
inline Parity<floats> parity(floats y) {
    const ints whole = truncated_to_ints(y);
    const floats fraction = y - to_floats(whole);
    return {(floats)(whole << 31), 0.0f - absolute(fraction)};
}

// fast is for positive x; far for x of either sign, and for integers y where one is negative.
template <class T, class Accuracy> struct PowFormula {
    using V = Vector<T>;
    using Range = PowRange<T>;
    static constexpr bool in_double = std::is_same_v<T, float> && !std::is_same_v<Accuracy, EP>;
    static constexpr bool far_everywhere = true;
    static constexpr T large_exponent = Range::template large_exponent<Accuracy>;

    static ints x_outside(ints x) {
        return not_between(x, Format<T>::normal_head, Format<T>::infinity_head);
    }
    static ints x_beyond(ints x) { return x_outside(magnitude(x)); }
    // Single: where y is too large, so is y ln x, or NaN.
    static ints y_beyond(ints y) {
        if constexpr (std::is_same_v<T, float>) return y & 0;
        else return above(magnitude(y), Range::y_parity - 1);
    }
    // The power is 1 for tiny y.
    static ints y_outside(ints y) {
        return not_between(magnitude(y), head_of(Range::y_tiny), Range::y_large);
    }

    static auto fast(V x, V y) {
        if constexpr (in_double) return pow_in_double(x, y);
        else if constexpr (std::is_same_v<T, float>) return pow_single(x, y);
        else {
            const PowReduced reduced = pow_reduce<Accuracy>(x, y);
            return Two<V>{exp_of<Accuracy>(reduced.exp), reduced.e.high};
        }
    }
    // `odd`: sign bits where y is odd.
    static auto far(V x, V y, V odd) {
        using Bits = decltype(sign_bit(x));
        const auto with_sign = [&](V power) { return (V)((Bits)power | ((Bits)odd & (Bits)x)); };
        const V a = absolute(x), b = unless_tiny(y, Range::y_tiny);
        if constexpr (in_double) {
            const V power = fast(a, b);
            return Two<V>{with_sign(power), power};
        } else if constexpr (std::is_same_v<T, float>) {
            const auto [power, e] = fast(a, b);
            return Two<V>{with_sign(power), far_guard(e)};
        } else {
            const PowReduced reduced = pow_reduce<Accuracy>(a, b);
            return Two<V>{with_sign(exp_of_normal<Accuracy>(reduced.exp)),
                          far_guard(reduced.e.high + reduced.e.low)};
        }
    }

    static ints refuse(ints r) {
        return not_between(r, Format<T>::normal_head, Format<T>::infinity_head);
    }
    // The second vector is y ln x, or far_guard of it, or the power of |x|.
    static ints refuse(ints, ints guard) {
        if constexpr (in_double) return refuse(guard);
        else return magnitude(guard) >= static_cast<std::int32_t>(head_of(large_exponent));
    }

private:
    // Of y ln x: its magnitude is below the gate's bound where far holds.
    static V far_guard(V e) {
        constexpr T middle = (Range::least_exponent + Range::greatest_exponent) / 2;
        return (e - middle) * (large_exponent / (Range::greatest_exponent - middle));
    }
};

}  // namespace KEF_VM
