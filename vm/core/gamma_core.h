// The gamma function and its logarithm, of doubles and floats.
//
//   0 < x <= 20   x = c + t, c = j/8, |t| <= 1/16; a polynomial in t for each c:
//                   Gamma(x) = Gamma(1 + c + t)/x
//                   ln Gamma(x) = ln Gamma(1 + c + t) - ln x       c < 1
//                                 ln Gamma(c + t)                  c >= 1
//                 At c = 1 and c = 2 the second one begins with t, so that it is relative
//                 to its zeros, and the pole costs no cancellation.
//   |x| > 20      Stirling's series:
//                   e(x) = (x - 1/2) ln|x| - x +- (ln(2 pi)/2 + s(|x|)), + for x > 0,
//                   + ln pi for x < 0
//                   ln Gamma(x) = e(x)                             x > 0
//                   Gamma(x) = -exp(e(x))/sin(pi |x|)              x < 0
//   -20 <= x < 0  Gamma(x) = -pi/(sin(pi |x|) Gamma(1 + |x|))
//
// Abramowitz and Stegun 6.1.17, 6.1.40. Tables and constants: tools/gamma_tables.py.
#pragma once

#include "vm/core/pow_core.h"
#include "vm/core/trig_core.h"
#include "vm/simd/rows.h"

namespace kef::vm {

inline constexpr int gamma_rows = 161;
inline constexpr double gamma_last = 20, gamma_table_last = 20.0625;

// Constants in two parts; those of Stirling's series for x > 0 and, less ln pi, for x < 0.
inline constexpr Parts in_parts(double high, double low) { return {all(high), all(low)}; }
inline constexpr Parts parts_of_pi = in_parts(pi, pi_low);
inline constexpr Parts ln_pi = in_parts(0x1.250d048e7a1bdp+0, 0x1.7abf2ad8d5088p-57);
inline constexpr Parts half_ln_2pi = in_parts(0x1.d67f1c864beb5p-1, -0x1.65b5a1b7ff5dfp-55);
inline constexpr Parts half_ln_half_pi = in_parts(0x1.ce6bb25aa1316p-3, -0x1.dcd49c8e5aff6p-58);

// Relative error below 2^-58.8 for Gamma, 2^-57.9 for ln Gamma.
struct alignas(64) GammaRow {
    double a[13];   // of t^0 to t^12
    double low[2];  // what is left of a[0] and a[1]
};
// a[0] to a[7] alone: 2^-30.1; to a[3]: 2^-13.0.
struct alignas(16) GammaRowSingle {
    float a[8];
};
extern const GammaRow gamma_table[gamma_rows], lgamma_table[gamma_rows];
extern const GammaRowSingle gamma_table_single[gamma_rows], lgamma_table_single[gamma_rows];

// x = c + t, exactly, and the rows of c; beyond the table's ends x counts as 20 1/16 or as 2^-100
// (single precision: 2^-40), which drowns beside a(0) and leaves no subnormal products.
struct GammaReduced {
    doubles c, t;
    Rows<GammaRow> row;
    doubles a(int i) const { return row.field(&GammaRow::a, i); }
    doubles low(int i) const { return row.field(&GammaRow::low, i); }
};
inline GammaReduced gamma_reduce(const GammaRow* table, doubles x) {
    constexpr double shifter = 0x1.8p49;  // leaves multiples of 1/8
    x = minimum(maximum(x, all(0x1p-100)), all(gamma_table_last));
    const doubles sum = x + shifter, c = sum - shifter;
    return {c, x - c, {table, row_numbers((longs)sum)}};
}

// a[first] + a[first + 1] t + ... up to `last`; from t^4 on in powers of t^2, which is
// shorter to wait for.
template <int first, int last> inline doubles gamma_polynomial(const GammaReduced& x) {
    const doubles a = x.a(first);
    if constexpr (first == last) return a;
    else if constexpr (first < 4) return multiply_add(x.t, gamma_polynomial<first + 1, last>(x), a);
    else {
        const doubles line = multiply_add(x.t, x.a(first + 1), a);
        if constexpr (first + 1 == last) return line;
        else return multiply_add(x.t * x.t, gamma_polynomial<first + 2, last>(x), line);
    }
}

// The polynomial as an unevaluated sum: a0 + t s, s = a1 + t (a2 + ...) in two parts, so
// that rounding errors count from the term in t^2, which is below a tenth of the sum.
inline Parts gamma_parts(const GammaReduced& x) {
    const doubles a0 = x.a(0), a1 = x.a(1), low0 = x.low(0), low1 = x.low(1);
    const Parts s = fast_two_sum(a1, x.t * gamma_polynomial<2, 12>(x));
    const doubles t_high = leading(x.t), s_high = leading(s.high);
    const Parts sum = fast_two_sum(a0, t_high * s_high);  // a0 = 0 or larger
    const doubles rest = (x.t - t_high) * s_high + x.t * ((s.high - s_high) + (s.low + low1));
    return {sum.high, sum.low + (low0 + rest)};
}

template <class Accuracy> inline doubles gamma_value(const GammaReduced& x) {
    constexpr int last = std::is_same_v<Accuracy, EP> ? 7 : 12;
    return gamma_polynomial<0, last>(x);
}

// Gamma(x) for 0 < x <= 20. HA: 0.52 ulp; LA: relative error below 2^-51; EP: 2^-30.
inline Parts tgamma_near_parts(doubles x) {
    return divide(gamma_parts(gamma_reduce(gamma_table, x)), {x, all(0.0)});
}
template <class Accuracy> inline doubles tgamma_near(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(tgamma_near_parts(x));
    } else {
        return gamma_value<Accuracy>(gamma_reduce(gamma_table, x)) / x;
    }
}

// The argument of the logarithm, for c < 1 only; no negative number, from whatever lane.
template <class V> inline V lgamma_factor(V x, V c) {
    return select(c < 1, maximum(x, V{}), V{} + 1);
}

// ln Gamma(x) for 0 < x <= 20. HA: 0.63 ulp; LA: relative error below 2^-50; EP: 2^-26.
inline Parts lgamma_near_parts(doubles x) {
    const GammaReduced reduced = gamma_reduce(lgamma_table, x);
    const Parts log = log_parts(lgamma_factor(x, reduced.c));
    const Parts parts = gamma_parts(reduced), sum = two_sum(parts.high, -log.high);
    return {sum.high, sum.low + (parts.low - log.low)};
}
template <class Accuracy> inline doubles lgamma_near(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(lgamma_near_parts(x));
    } else {
        const GammaReduced reduced = gamma_reduce(lgamma_table, x);
        return gamma_value<Accuracy>(reduced) - log_core<Accuracy>(lgamma_factor(x, reduced.c));
    }
}

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

// sin(pi y) for 0 <= y < 2^52, normalised, and its sign apart; relative error 2^-57.
struct SinePi {
    Parts magnitude;
    longs sign;
};
inline SinePi sine_pi(doubles y) {
    constexpr double shifter = shifter52 + sine_bias;
    // y = n + k/256 + f, exactly
    const doubles whole = y + 0x1p52, part = y - (whole - 0x1p52);
    const doubles sum = part * 256.0 + shifter, f = part - (sum - shifter) * 0x1p-8;
    const Parts r = multiply({f, all(0.0)}, parts_of_pi);
    const Parts parts = sine_parts((longs)sum, trig_powers({(longs)sum, r.high, r.low}));
    const Parts sine = fast_two_sum(parts.high, parts.low);
    const longs negative = sign_bit(sine.high);
    const longs sign = ((longs)whole << 63) ^ sine_sign((longs)sum) ^ negative;
    return {flipped(sine, negative), sign};
}

inline bool any_negative(doubles x) { return any_lane((longs)x); }

// sin(pi y)/pi for 0 <= y <= 20 with its sign: y = n + f, u = f^2, +-(f + f u q(u)). Relative error
// of the polynomials 2^-59.4 (LA), 2^-33.1 (EP) and 2^-25.1 (single precision).
template <class Accuracy> inline doubles sine_pi_short(doubles y) {
    constexpr double shifter = 0x1.8p52;
    const doubles sum = y + shifter, f = y - (sum - shifter), u = f * f, square = u * u;
    constexpr auto c = [] {
        if constexpr (std::is_same_v<Accuracy, LA>)
            return coefficients(0xBFFA51A6625307D3, 0x3FE9F9CB402BC45D, 0xBFC86A8E4720C749,
                                0x3F9AC6805CDF308A, 0xBF633816A0620AC5, 0x3F23746C57917CA7,
                                0xBEDD3F28CD7ED530, 0x3E9080D6F89E0A7B);
        else
            return coefficients(0xBFFA51A66240238A, 0x3FE9F9CB22A548D1, 0xBFC86A7F7F317689,
                                0x3F9AC1505939280B, 0xBF627935A1917E8C);
    }();
    doubles q;
    if constexpr (std::is_same_v<Accuracy, LA>)
        q = polynomial_by_fours(u, c, square, square * square);
    else q = polynomial_by_pairs(u, square, c);
    return flipped(multiply_add(f * u, q, f), (longs)sum << 63);
}
inline floats sine_pi_short(floats y) {
    constexpr float shifter = 0x1.8p23f;
    const floats sum = y + shifter, f = y - (sum - shifter), u = f * f;
    constexpr auto c = coefficients(0xBFD28D32u, 0x3F4FCDC5u, 0xBE4325BFu, 0x3CCCCCBBu);
    return flipped(multiply_add(f * u, polynomial_by_pairs(u, u * u, c), f), (ints)sum << 31);
}

// Gamma(x) = (high + low) power; not a number at the poles.
struct GammaScaled {
    Parts value;
    doubles power;
};

// For -20 <= x < 0. HA: 2^-57; LA: relative error below 2^-50.5; EP: 2^-29.
inline Parts tgamma_mirrored_parts(doubles x) {
    const doubles y = absolute(x);
    const SinePi sine = sine_pi(y);
    const Parts parts = gamma_parts(gamma_reduce(gamma_table, y));
    const Parts product = multiply(sine.magnitude, fast_two_sum(parts.high, parts.low));
    const Parts quotient = divide(parts_of_pi, product);
    return flipped(quotient, sine.sign ^ INT64_MIN);
}
template <class Accuracy> inline doubles tgamma_mirrored(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(tgamma_mirrored_parts(x));
    } else {
        const doubles y = absolute(x);
        return -1.0 /
               (sine_pi_short<Accuracy>(y) * gamma_value<Accuracy>(gamma_reduce(gamma_table, y)));
    }
}

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

// ln|Gamma(x)| of x < 0 from `plain` - ln(sin(pi |x|) factor).
inline Parts lgamma_reflected(doubles y, Parts plain, doubles factor) {
    const Parts sine = multiply(sine_pi(y).magnitude, {factor, all(0.0)});
    const Parts log = log_parts(sine.high);
    const Parts sum = two_sum(plain.high, -log.high);
    return {sum.high, sum.low + ((plain.low - log.low) - sine.low / sine.high)};
}

// ln|Gamma(x)| for -20 <= x < 0; infinite or not a number at the poles. HA, LA: the absolute error
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
template <class Accuracy> inline doubles lgamma_mirrored(doubles x) {
    if constexpr (std::is_same_v<Accuracy, EP>) {
        const doubles y = absolute(x), value = gamma_value<LA>(gamma_reduce(gamma_table, y));
        const doubles inverse = absolute(sine_pi_short<LA>(y) * value);
        return where(inverse == 0, all(Format<double>::infinity)) - log_core<EP>(inverse);
    } else {
        return rounded(lgamma_mirrored_parts(x));
    }
}

// The same for x > 20 and -2^52 < x < -20; not a number where it overflows.
inline Parts lgamma_stirling_parts(doubles x) {
    const Parts exponent = stirling_exponent<LA>(x);
    if (!any_negative(x)) return exponent;
    return select(sign_mask((longs)x), lgamma_reflected(absolute(x), exponent, all(1.0)), exponent);
}
template <class Accuracy> inline doubles lgamma_stirling(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(lgamma_stirling_parts(x));
    } else {
        const doubles positive = lgamma_stirling_rounded<Accuracy>(absolute(x));
        if (!any_negative(x)) return positive;
        return select(sign_mask((longs)x), rounded(lgamma_stirling_parts(x)), positive);
    }
}

// Single precision: the polynomials up to t^6 (LA) and t^3 (EP).
template <class Accuracy>
inline floats gamma_value(const GammaRowSingle* table, floats x, floats& c) {
    constexpr float shifter = 0x1.8p20f;  // leaves multiples of 1/8
    x = minimum(maximum(x, all(0x1p-40f)), all(static_cast<float>(gamma_table_last)));
    const floats sum = x + shifter;
    c = sum - shifter;
    const floats t = x - c;
    const Rows<GammaRowSingle, float> row(table, row_numbers((ints)sum));
    const auto a = row.quad(&GammaRowSingle::a, 0);
    if constexpr (std::is_same_v<Accuracy, EP>) return polynomial(t, a);
    const auto b = row.quad(&GammaRowSingle::a, 4);
    return polynomial(t, std::array{a[0], a[1], a[2], a[3], b[0], b[1], b[2]});
}
template <class Accuracy> inline floats tgamma_single(floats x) {
    floats c;
    return gamma_value<Accuracy>(gamma_table_single, x, c) / x;
}
template <class Accuracy> inline floats lgamma_single(floats x) {
    using Log = std::conditional_t<std::is_same_v<Accuracy, LA>, LA, EPTerm>;
    floats c;
    const floats value = gamma_value<Accuracy>(lgamma_table_single, x, c);
    return value - log_single<Log>(lgamma_factor(x, c));
}

// EP for -20 <= x < 0, as above; ln|Gamma(x)|: absolute 2^-20 and relative 2^-11.
inline floats tgamma_mirrored(floats x) {
    const floats y = absolute(x);
    floats c;
    return -1.0f / (sine_pi_short(y) * gamma_value<EP>(gamma_table_single, y, c));
}
inline floats lgamma_mirrored(floats x) {
    const floats y = absolute(x);
    floats c;
    const floats value = gamma_value<LA>(gamma_table_single, y, c);
    const floats inverse = absolute(sine_pi_short(y) * value);
    return where(inverse == 0, all(Format<float>::infinity)) - log_single<EPTerm>(inverse);
}

}  // namespace kef::vm
