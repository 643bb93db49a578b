// One element of complex functions, for the edges: numbers of any size in two parts with an
// exponent, and what products of special values are.
#pragma once

#include "vm/core/complex_log.h"
#include "vm/core/complex_scaling.h"
#include "vm/core/complex_trig.h"

namespace KEF_VM {

KEF_INLINE double magnitude_of(double x) { return __builtin_fabs(x); }

// (high + low) 2^exponent, normalised; |high| in [1, 2], or 0.
struct OneNumber {
    double high, low;
    int exponent;
    explicit OneNumber(double h, double l = 0, int e = 0) : high(h), low(l), exponent(e) {
        if (h == 0 || h - h != 0) return;
        const int shift = exponent_of(h);
        const DoubleDouble<double> sum = fast_two_sum(scaled(h, -shift), scaled(l, -shift));
        high = sum.high, low = sum.low, exponent += shift;
    }
    OneNumber(Parts x, int e = 0) : OneNumber(x.high[0], x.low[0], e) {}
    OneNumber(DoubleDouble<double> x) : OneNumber(x.high, x.low) {}
    explicit OneNumber(AngleOne x) : OneNumber(x.high, x.low, x.exponent) {}

    KEF_INLINE double as_double() const { return scaled(high, within_reach()); }
    KEF_INLINE double low_as_double() const { return scaled(low, within_reach()); }
    int within_reach() const {
        return exponent < -1074 ? -1074 : exponent > 1023 ? 1023 : exponent;
    }
    Parts parts() const { return {all(high), all(low)}; }
    KEF_INLINE double rounded() const {
        return high == 0 || high - high != 0 ? high : round_scaled(high, low, exponent);
    }
    KEF_INLINE double with_sign_of(double x) const {
        const double r = rounded();
        return to_bits(x) >> 63 ? -r : r;
    }
    // A number next to 0 beside numbers near 1: 0 where it does not count.
    Parts unscaled() const {
        if (exponent < -400) return {doubles{}, doubles{}};
        return times_power(parts(), power_of_two(exponent));
    }
};
inline OneNumber operator*(const OneNumber& x, const OneNumber& y) {
    return {multiply(x.parts(), y.parts()), x.exponent + y.exponent};
}
inline OneNumber operator/(const OneNumber& x, const OneNumber& y) {
    return {x.parts() / y.parts(), x.exponent - y.exponent};
}
inline OneNumber operator-(const OneNumber& x) { return OneNumber(-x.high, -x.low, x.exponent); }
inline OneNumber operator+(const OneNumber& x, const OneNumber& y) {
    if (y.high == 0) return x;
    if (x.high == 0 || x.exponent < y.exponent - 400) return y;
    if (y.exponent < x.exponent - 400) return x;
    return {x.parts() + times_power(y.parts(), power_of_two(y.exponent - x.exponent)), x.exponent};
}
inline OneNumber halved(OneNumber x) { return x.exponent -= 1, x; }

// Beside 1 such a number does not count, nor does its square beside that of 1; formulas that met it
// would wait for products below the normal numbers.
inline constexpr double drowning = 0x1p-200;
KEF_INLINE double if_it_counts(double x) { return x < drowning ? 0.0 : x; }

// e^x; beyond |x| = 1500, where no product with a sine is finite and not 0, as there. Beyond 700
// with 1200 ln 2 taken off, which leaves its first part exact.
// `low`: a small correction of x.
inline OneNumber exp_one(double x, double low = 0) {
    if (magnitude_of(x) < drowning) return OneNumber(1);
    x = x < -1500 ? -1500 : x > 1500 ? 1500 : x;
    const int m = x < -700 ? -1200 : x > 700 ? 1200 : 0;
    const ExpParts e = exp_parts(exp_reduce<HA>(all(x - m * ln2_high), all(low - m * ln2_low)));
    return OneNumber(normalised({e.high, e.low}), m + exponent_of(e.power[0]));
}

// sin x and cos x of x >= 0, finite.
struct SinesOne {
    OneNumber sine, cosine;
};
inline SinesOne sines_one(double x) {
    if (x < drowning) return {OneNumber(x), OneNumber(1)};
    const TrigReduced<> reduced = trig_reduce_one(x);
    return {sine_one<LongCosine>(reduced, sine_quarters),
            sine_one<LongCosine>(reduced, cosine_quarters)};
}
// sinh y and cosh y, y >= 0, finite.
inline SinesOne hyperbolics_one(double y) {
    if (y < drowning) return {OneNumber(y), OneNumber(1)};
    if (y < 0x1p-30) return {OneNumber(y, y * y * y / 6), OneNumber(1, y * y / 2)};
    if (y > hyperbolic_last) return {halved(exp_one(y)), halved(exp_one(y))};
    const Two<Parts> twice = twice_hyperbolic<HA>(all(y));
    return {halved(OneNumber(twice.first)), halved(OneNumber(twice.second))};
}

// ln |z| of a finite z that is not 0: of the number whose larger part is scaled to [1, 2); next to
// |z| = 1 it is in place, and the square of a smaller part counts alone beside 1.
inline OneNumber log_modulus_one(double x, double y, auto log_of) {
    const double p = magnitude_of(x), q = magnitude_of(y), a = p > q ? p : q, b = p > q ? q : p;
    if (a == 1 && b < 0x1p-100) {
        const OneNumber small(b);
        return halved(small * small);
    }
    const int e = a >= 0.5 && a < 2 ? 0 : exponent_of(a);
    const double rest = if_it_counts(scaled(b, -e));
    const Parts log = log_of_norm(norm_parts(all(scaled(a, -e)), all(rest)), log_of);
    return halved(OneNumber(log + Parts{all(2 * e * ln2_high), all(2 * e * ln2_low)}));
}

// The same for any x, as doubles for the product of special values: NaN for sine and cosine of an
// infinity. NaN has signs as other numbers have: an odd one of the sines, none of the cosines. The
// finite hyperbolic ones stand beside a NaN: 0 or not is what counts.
struct SpecialPair {
    double sine, cosine;
};
inline SpecialPair nan_pair(double nan, double x) {
    return {signed_like(nan, x), magnitude_of(nan)};
}
inline SpecialPair special_sines(double x) {
    if (is_nan(x)) return nan_pair(quiet(x), x);
    if (is_infinite(x)) return nan_pair(-Format<double>::invalid, x);
    // Quarter turns, with an error below 2^-30: where that leaves no doubt they tell the signs.
    if (const double turns = magnitude_of(x) * 0x1.45f306dc9c883p-1; turns < 0x1p20) {
        const int whole = static_cast<int>(turns);
        const double rest = turns - whole;
        if (rest > 0x1p-25 && rest < 1 - 0x1p-25)
            return {signed_like(1, x) * (whole & 2 ? -1 : 1), (whole + 1) & 2 ? -1.0 : 1.0};
    }
    const auto near = sine_cosine_far<EP>(all(magnitude_of(x)));  // their signs are what counts
    if (!any_lane((longs)near.marks))
        return {signed_like(1, x) * near.result.first[0], near.result.second[0]};
    const SinesOne one = sines_one(magnitude_of(x));
    return {one.sine.with_sign_of(x), one.cosine.rounded()};
}
inline SpecialPair special_hyperbolics(double y) {
    if (is_nan(y)) return nan_pair(quiet(y), y);
    if (is_infinite(y)) return {y, Format<double>::infinity};
    return {y, 1};
}

// C99 G.6: a zero keeps anything at zero, and an infinite size meets a cosine of no value as an
// infinity.
KEF_INLINE double special_sine_product(double sine, double size) {
    if (sine == 0 || size == 0) return signed_like(0, sine) * signed_like(1, size);
    if (is_nan(sine) || is_nan(size)) return quiet(size, sine);
    return sine * size;
}
KEF_INLINE double special_cosine_product(double cosine, double size) {
    if (is_nan(cosine) && is_infinite(size)) return size;
    return special_sine_product(cosine, size);
}

// A NaN without a NaN among the arguments.
inline int domain_status(double x, double y, double& re, double& im) {
    if (is_nan(x) || is_nan(y) || !(is_nan(re) || is_nan(im))) return VTM_STATUS_OK;
    for (double* part : {&re, &im})
        if (is_nan(*part)) *part = Format<double>::invalid;
    return VTM_STATUS_ERRDOM;
}

// x times a power of two that makes it 2^-200, for functions that are linear in so small an x.
struct Enlarged {
    double x;
    int exponent;  // of what it was multiplied with
    explicit Enlarged(double value) : x(value), exponent(0) {
        if (value == 0 || value >= 0x1p-280) return;
        exponent = -200 - exponent_of(value);
        x = scaled(value, exponent);
    }
};

}  // namespace KEF_VM
