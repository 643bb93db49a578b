// The gamma function and its logarithm, of doubles and floats:
//
//   0 < x <= 44    by a table (gamma_table.h)
//   -44 <= x < 0   from those of |x| (gamma_mirrored.h)
//   |x| > 44       Stirling's series, here, which holds from 20 on:
//                    e(x) = (x - 1/2) ln|x| - x +- (ln(2 pi)/2 + s(|x|)), + for x > 0,
//                    + ln pi for x < 0
//                    ln Gamma(x) = e(x)                             x > 0
//                    Gamma(x) = -exp(e(x))/sin(pi |x|)              x < 0
//
// Lanes of both signs may stand side by side: each result is computed for all lanes where one wants
// it, and chosen by the sign.
//
// Abramowitz and Stegun 6.1.17, 6.1.40. Constants: tools/gamma_tables.py.
#pragma once

#include "vm/core/gamma_single.h"
#include "vm/core/pow_core.h"

namespace KEF_VM {

// Of the series for x > 0 and, less ln pi, for x < 0.
inline constexpr Parts half_ln_2pi = in_parts(half_ln_2pi_rounded, -0x1.65b5a1b7ff5dfp-55);
inline constexpr Parts half_ln_half_pi = in_parts(0x1.ce6bb25aa1316p-3, -0x1.dcd49c8e5aff6p-58);

// s(y) = ln Gamma(y) - ((y - 1/2) ln y - y + ln(2 pi)/2), y >= 20; absolute error 2^-61.9. It
// drowns long before y = 2^200.
inline doubles stirling_rest(doubles y) {
    constexpr auto s = coefficients(0x3FB5555555555555, 0xBF66C16C16C12B8B, 0x3F4A01A00D638F63,
                                    0xBF438100C4BCABAE, 0x3F4B31EDC2272045);
    const doubles u = 1.0 / minimum(y, all(0x1p200)), v = u * u;
    return u * polynomial(v, s);
}

// e(x), |x| >= 20. HA: absolute error 2^-58 up to |x| = 185; LA: relative error 2^-60.
template <class Accuracy> inline Parts stirling_exponent(doubles x) {
    const doubles y = absolute(x), s = stirling_rest(y);
    const doubles z = x - 0.5, z_high = leading(z), z_rest = (x - z) - 0.5;
    const Parts power = pow_exponent<Accuracy>(y, z, {z_high, (z - z_high) + z_rest});
    const Parts less = fast_two_sum(power.high, -x);
    const longs negative = sign_mask((longs)x);
    const Parts sum =
        fast_two_sum(less.high, select(negative, half_ln_half_pi.high, half_ln_2pi.high));
    const doubles rest = select(negative, half_ln_half_pi.low - s, half_ln_2pi.low + s);
    return {sum.high, (sum.low + less.low) + (power.low + rest)};
}

// ln Gamma(x) for x > 20, relative error below 2^-50 (LA), 2^-26 (EP).
template <class Accuracy> inline doubles lgamma_stirling_rounded(doubles x) {
    return ((x - 0.5) * log_core<Accuracy>(x) - x) + (half_ln_2pi.high + stirling_rest(x));
}

inline bool any_negative(doubles x) { return any_lane((longs)x); }

// Gamma(x) = (high + low) power; not a number at the poles.
struct GammaScaled {
    Parts value;
    doubles power;
};

// For 20 < x < 185 and -185 < x < -20; `power` has the further factor 2^shift.
template <int shift = 0> inline GammaScaled tgamma_stirling_parts(doubles x) {
    const Parts exponent = stirling_exponent<HA>(x);
    const ExpParts e = exp_parts(exp_reduce<HA, shift>(exponent.high, exponent.low));
    const Parts e_parts = {e.high, e.low};
    if (!any_negative(x)) return {e_parts, e.power};
    const SinePi sine = sine_pi(absolute(x));
    const Parts reflected = flipped(divide(e_parts, sine.magnitude), sine.sign ^ INT64_MIN);
    return {select(sign_mask((longs)x), reflected, e_parts), e.power};
}
inline doubles tgamma_stirling(doubles x) {
    const GammaScaled parts = tgamma_stirling_parts(x);
    return rounded(parts.value) * parts.power;
}

// LA: relative error 2^-50.5, |x| <= 170.
inline doubles tgamma_stirling_short(doubles x) {
    const Parts e = stirling_exponent<LA>(x);
    const doubles power = exp_of_normal<LA>(exp_reduce<LA>(e.high, e.low));
    if (!any_negative(x)) return power;
    const doubles reflected = power / (sine_pi_short<LA>(absolute(x)) * -pi);
    return select(sign_mask((longs)x), reflected, power);
}

// EP: relative error 2^-26.6, |x| <= 170; s(y) to 2^-31.9, ln y to 2^-35.1. |x - 1/2| is y + 1/2
// for x < 0, for y Gamma(y).
inline doubles tgamma_stirling_rounded(doubles x) {
    const doubles y = absolute(x), u = 1.0 / y;
    const doubles s = u * multiply_add(u * u, -1.0 / 360, all(1.0 / 12));
    const doubles e =
        multiply_subtract(absolute(x - 0.5), log_core<EP>(y), y) + (half_ln_2pi.high + s);
    const doubles power = exp_core<EP>(e);
    if (!any_negative(x)) return power;
    return select(sign_mask((longs)x), -1.0 / (sine_pi_short<EP>(y) * power), power);
}

// ln|Gamma(x)| for x > 20 and -2^52 < x < -20; not a number where it overflows.
inline Parts lgamma_stirling_parts(doubles x) {
    const Parts exponent = stirling_exponent<LA>(x);
    if (!any_negative(x)) return exponent;
    return select(sign_mask((longs)x), lgamma_reflected(absolute(x), exponent, all(1.0)), exponent);
}
template <class Accuracy> inline doubles lgamma_stirling(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(lgamma_stirling_parts(x));
    } else {
        const doubles y = absolute(x), positive = lgamma_stirling_rounded<Accuracy>(y);
        if (!any_negative(x)) return positive;
        const doubles negative = [&] {
            if constexpr (std::is_same_v<Accuracy, LA>) {
                // The exponent in two parts less ln|sin(pi y)|: the two may differ in sign.
                const Parts exponent = stirling_exponent<LA>(x);
                const doubles sine = absolute(sine_pi_short<LA>(y)) * pi;
                const Parts log = log_parts(sine), sum = two_sum(exponent.high, -log.high);
                return where(sine == 0, all(Format<double>::infinity)) +
                       (sum.high + (sum.low + (exponent.low - log.low)));
            }
            // -ln(y |sin(pi y)|/pi) - ln Gamma(y), likewise.
            const doubles sine = y * absolute(sine_pi_short<LA>(y));
            return where(sine == 0, all(Format<double>::infinity)) -
                   (lgamma_stirling_rounded<LA>(y) + log_core<LA>(sine));
        }();
        return select(sign_mask((longs)x), negative, positive);
    }
}

// -ln(y |sin(pi y)|/pi) - `positive` where x < 0, `positive` = ln Gamma(y) elsewhere, y = |x|: for
// single HA, where the sum is above 100 and so cancels no bits. Relative error below 2^-47.
inline doubles lgamma_stirling_plain(doubles x) {
    const doubles y = absolute(x), positive = lgamma_stirling_rounded<LA>(y);
    if (!any_negative(x)) return positive;
    const doubles sine = y * absolute(sine_pi_short<LA>(y));
    const doubles negative =
        where(sine == 0, all(Format<double>::infinity)) - (positive + log_core<LA>(sine));
    return select(sign_mask((longs)x), negative, positive);
}

}  // namespace KEF_VM
