// The gamma function and its logarithm for -44 <= x < 0, from those of y = |x|:
//
//   Gamma(x) = -pi/(sin(pi y) Gamma(1 + y))
//
// Abramowitz and Stegun 6.1.17.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/core/gamma_table.h"
#include "vm/core/rounding.h"
#include "vm/core/trig_core.h"

namespace KEF_VM {

// Constants in two parts.
inline constexpr Parts in_parts(double high, double low) { return {all(high), all(low)}; }
inline constexpr Parts parts_of_pi = in_parts(pi, pi_low);
inline constexpr double half_ln_2pi_rounded = 0x1.d67f1c864beb5p-1;
inline constexpr Parts ln_pi = in_parts(0x1.250d048e7a1bdp+0, 0x1.7abf2ad8d5088p-57);

// sin(pi y) for 0 <= y < 2^52, normalised, and its sign apart; relative error 2^-57.
struct SinePi {
    Parts magnitude;
    longs sign;
};
inline SinePi sine_pi(doubles y) {
    constexpr double shifter = shifter52 + row_steps / 2;
    // y = n + k/256 + f, exactly
    const doubles whole = y + 0x1p52, part = y - (whole - 0x1p52);
    const doubles sum = part * 256.0 + shifter, f = part - (sum - shifter) * 0x1p-8;
    const Parts r = multiply({f, all(0.0)}, parts_of_pi);
    const Parts parts =
        sine_parts((longs)sum, trig_powers(TrigReduced<>{(longs)sum, r.high, r.low}));
    const Parts sine = fast_two_sum(parts.high, parts.low);
    const longs negative = sign_bit(sine.high);
    const longs sign = ((longs)whole << 63) ^ sine_sign((longs)sum) ^ negative;
    return {flipped(sine, negative), sign};
}

// sin(pi y)/pi for 0 <= y < 2^52 with its sign: y = n + f, u = f^2, +-(f + f u q(u)). Relative
// error of the polynomials 2^-56.2 (LA) and 2^-33.1 (EP).
inline constexpr auto sine_pi_33_bits =
    coefficients(0xBFFA51A66240238A, 0x3FE9F9CB22A548D1, 0xBFC86A7F7F317689, 0x3F9AC1505939280B,
                 0xBF627935A1917E8C);
template <class Accuracy> inline doubles sine_pi_short(doubles y) {
    constexpr double shifter = 0x1p52;
    const doubles sum = y + shifter, f = y - (sum - shifter), u = f * f, square = u * u;
    constexpr auto c = [] {
        if constexpr (std::is_same_v<Accuracy, LA>)
            return coefficients(0xBFFA51A6625307D3, 0x3FE9F9CB402BC45D, 0xBFC86A8E4720C749,
                                0x3F9AC6805CDF308A, 0xBF633816A0620AC5, 0x3F23746C57917CA7,
                                0xBEDD3F28CD7ED530, 0x3E9080D6F89E0A7B);
        else return sine_pi_33_bits;
    }();
    doubles q;
    if constexpr (std::is_same_v<Accuracy, LA>)
        q = polynomial_by_fours(u, c, square, square * square);
    else q = polynomial_by_pairs(u, square, c);
    return flipped(multiply_add(f * u, q, f), (longs)sum << 63);
}

// Gamma(x) for -44 <= x < 0. HA: 2^-57; LA: relative error below 2^-50.5; EP: 2^-29.
inline Parts tgamma_mirrored_parts(doubles x) {
    const doubles y = absolute(x);
    const SinePi sine = sine_pi(y);
    const Parts parts = gamma_parts(gamma_reduce(gamma_table, y));
    const Parts product = multiply(sine.magnitude, fast_two_sum(parts.high, parts.low));
    const Parts quotient = divide(parts_of_pi, product);
    return flipped(quotient, sine.sign ^ INT64_MIN);
}
// And, but for HA, of x > 0 beside, with the bits of `tgamma_near`.
template <class Accuracy> inline doubles tgamma_mirrored(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(tgamma_mirrored_parts(x));
    } else {
        const longs negative = sign_mask((longs)x);
        const doubles y = absolute(x), sine = sine_pi_short<Accuracy>(y);
        const doubles value = gamma_value<Accuracy>(gamma_reduce(gamma_table, y));
        return select(negative, all(-1.0), value) / select(negative, sine * value, x);
    }
}

// ln|Gamma(x)| of x < 0 from `plain` - ln(sin(pi |x|) factor).
inline Parts lgamma_reflected(doubles y, Parts plain, doubles factor) {
    const Parts sine = multiply(sine_pi(y).magnitude, {factor, all(0.0)});
    const Parts log = log_parts(sine.high);
    const Parts sum = two_sum(plain.high, -log.high);
    return {sum.high, sum.low + ((plain.low - log.low) - sine.low / sine.high)};
}

// ln|Gamma(x)| for -44 <= x < 0; infinite or not a number at the poles. HA, LA: the absolute error
// is below 2^-57 + 2^-60 ln Gamma(|x|); EP: absolute 2^-50 and relative 2^-26.
inline Parts lgamma_mirrored_parts(doubles x) {
    const doubles y = absolute(x);
    const GammaReduced reduced = gamma_reduce(lgamma_table, y);
    const Parts parts = gamma_parts(reduced);
    const Parts less = two_sum(ln_pi.high, -parts.high);
    // From c = 1 on the table has ln Gamma(y), not of 1 + y.
    return lgamma_reflected(y, {less.high, less.low + (ln_pi.low - parts.low)},
                            select((longs)(reduced.c >= 1.0), y, all(1.0)));
}
// In one part, absolute error below 2^-49 + 2^-51 |result| (LA), 2^-29 + 2^-27 |result| (EP). Table
// and sine may be of another accuracy than the logarithm.
template <class Accuracy, class Log = Accuracy> inline doubles lgamma_mirrored_plain(doubles x) {
    const doubles y = absolute(x), value = gamma_value<Accuracy>(gamma_reduce(gamma_table, y));
    const doubles inverse = absolute(sine_pi_short<Accuracy>(y) * value);
    return where(inverse == 0, all(Format<double>::infinity)) - log_core<Log>(inverse);
}
template <class Accuracy> inline doubles lgamma_mirrored(doubles x) {
    if constexpr (std::is_same_v<Accuracy, EP>) return lgamma_mirrored_plain<LA, EP>(x);
    else return rounded(lgamma_mirrored_parts(x));
}

}  // namespace KEF_VM
