// The gamma function and its logarithm, of two doubles or four floats at a time.
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

namespace kef::vm {

inline constexpr int gamma_rows = 161;
inline constexpr double gamma_last = 20, gamma_table_last = 20.0625;

namespace gamma_constants {
inline constexpr DoubleDouble<d2> both(std::uint64_t high, std::uint64_t low) {
    return {all(from_bits(high)), all(from_bits(low))};
}
inline constexpr auto pi = DoubleDouble<d2>{all(kef::vm::pi), all(pi_low)};
inline constexpr auto ln_pi = both(0x3FF250D048E7A1BD, 0x3C67ABF2AD8D5088);
inline constexpr auto plus = both(0x3FED67F1C864BEB5, 0xBC865B5A1B7FF5DF);   // ln(2 pi)/2
inline constexpr auto minus = both(0x3FCCE6BB25AA1316, 0xBC5DCD49C8E5AFF6);  // ln pi - that
}  // namespace gamma_constants

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
    d2 c, t;
    const GammaRow *row0, *row1;
};
inline GammaReduced gamma_reduce(const GammaRow* table, d2 x) {
    constexpr double shifter = 0x1.8p49;  // leaves multiples of 1/8
    x = minimum(maximum(x, all(0x1p-100)), all(gamma_table_last));
    const d2 sum = x + shifter, c = sum - shifter;
    return {c, x - c, &table[_mm_extract_epi16((__m128i)sum, 0)],
            &table[_mm_extract_epi16((__m128i)sum, 4)]};
}

inline d2 gamma_coefficient(const GammaReduced& x, int i) { return d2{x.row0->a[i], x.row1->a[i]}; }

// a[first] + a[first + 1] t + ... up to `last`; from t^4 on in powers of t^2, which is
// shorter to wait for.
template <int first, int last> inline d2 gamma_polynomial(const GammaReduced& x) {
    const d2 a = gamma_coefficient(x, first);
    if constexpr (first == last) return a;
    else if constexpr (first < 4) return a + x.t * gamma_polynomial<first + 1, last>(x);
    else if constexpr (first + 1 == last) return a + x.t * gamma_coefficient(x, last);
    else
        return (a + x.t * gamma_coefficient(x, first + 1)) +
               (x.t * x.t) * gamma_polynomial<first + 2, last>(x);
}

// The polynomial as an unevaluated sum: a0 + t s, s = a1 + t (a2 + ...) in two parts, so
// that rounding errors count from the term in t^2, which is below a tenth of the sum.
inline DoubleDouble<d2> gamma_parts(const GammaReduced& x) {
    const d2 a0 = gamma_coefficient(x, 0), a1 = gamma_coefficient(x, 1);
    const d2 low0 = d2{x.row0->low[0], x.row1->low[0]};
    const d2 low1 = d2{x.row0->low[1], x.row1->low[1]};
    const DoubleDouble<d2> s = fast_two_sum(a1, x.t * gamma_polynomial<2, 12>(x));
    const d2 t_high = leading(x.t), s_high = leading(s.high);
    const DoubleDouble<d2> sum = fast_two_sum(a0, t_high * s_high);  // a0 = 0 or larger
    const d2 rest = (x.t - t_high) * s_high + x.t * ((s.high - s_high) + (s.low + low1));
    return {sum.high, sum.low + (low0 + rest)};
}

template <class Accuracy> inline d2 gamma_value(const GammaReduced& x) {
    constexpr int last = std::is_same_v<Accuracy, EP> ? 7 : 12;
    return gamma_polynomial<0, last>(x);
}

// Gamma(x) for 0 < x <= 20. HA: 0.52 ulp; LA: relative error below 2^-51; EP: 2^-30.
inline DoubleDouble<d2> tgamma_near_parts(d2 x) {
    return divide(gamma_parts(gamma_reduce(gamma_table, x)), {x, all(0.0)});
}
template <class Accuracy> inline d2 tgamma_near(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> parts = tgamma_near_parts(x);
        return parts.high + parts.low;
    } else {
        return gamma_value<Accuracy>(gamma_reduce(gamma_table, x)) / x;
    }
}

// The argument of the logarithm, for c < 1 only; no negative number, from whatever lane.
template <class V> inline V lgamma_factor(V x, V c) {
    return select(c < 1, maximum(x, V{}), V{} + 1);
}

// ln Gamma(x) for 0 < x <= 20. HA: 0.63 ulp; LA: relative error below 2^-50; EP: 2^-26.
inline DoubleDouble<d2> lgamma_near_parts(d2 x) {
    const GammaReduced reduced = gamma_reduce(lgamma_table, x);
    const DoubleDouble<d2> log = log_parts(lgamma_factor(x, reduced.c));
    const DoubleDouble<d2> parts = gamma_parts(reduced), sum = two_sum(parts.high, -log.high);
    return {sum.high, sum.low + (parts.low - log.low)};
}
template <class Accuracy> inline d2 lgamma_near(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> parts = lgamma_near_parts(x);
        return parts.high + parts.low;
    } else {
        const GammaReduced reduced = gamma_reduce(lgamma_table, x);
        return gamma_value<Accuracy>(reduced) - log_core<Accuracy>(lgamma_factor(x, reduced.c));
    }
}

// s(y) = ln Gamma(y) - ((y - 1/2) ln y - y + ln(2 pi)/2), y >= 20; absolute error 2^-61.9. It
// drowns long before y = 2^200.
inline d2 stirling_rest(d2 y) {
    constexpr double s1 = from_bits(UINT64_C(0x3FB5555555555555));
    constexpr double s3 = from_bits(UINT64_C(0xBF66C16C16C12B8B));
    constexpr double s5 = from_bits(UINT64_C(0x3F4A01A00D638F63));
    constexpr double s7 = from_bits(UINT64_C(0xBF438100C4BCABAE));
    constexpr double s9 = from_bits(UINT64_C(0x3F4B31EDC2272045));
    const d2 u = 1.0 / minimum(y, all(0x1p200)), v = u * u;
    return u * (s1 + v * (s3 + v * (s5 + v * (s7 + v * s9))));
}

// e(x), |x| >= 20. HA: absolute error 2^-58 up to |x| = 185; LA: relative error 2^-60.
template <class Accuracy> inline DoubleDouble<d2> stirling_exponent(d2 x) {
    using namespace gamma_constants;
    const d2 y = absolute(x), s = stirling_rest(y);
    const d2 z = x - 0.5, z_high = leading(z), z_rest = (x - z) - 0.5;
    const DoubleDouble<d2> power = pow_exponent<Accuracy>(y, z, {z_high, (z - z_high) + z_rest});
    const DoubleDouble<d2> less = fast_two_sum(power.high, -x);
    const l2 negative = sign_mask((l2)x);
    const DoubleDouble<d2> sum = fast_two_sum(less.high, select(negative, minus.high, plus.high));
    const d2 rest = select(negative, minus.low - s, plus.low + s);
    return {sum.high, (sum.low + less.low) + (power.low + rest)};
}

// ln Gamma(x) for x > 20, relative error below 2^-50 (LA), 2^-26 (EP).
template <class Accuracy> inline d2 lgamma_stirling_rounded(d2 x) {
    return ((x - 0.5) * log_core<Accuracy>(x) - x) +
           (gamma_constants::plus.high + stirling_rest(x));
}

// sin(pi y) for 0 <= y < 2^52, normalised, and its sign apart; relative error 2^-57.
struct SinePi {
    DoubleDouble<d2> magnitude;
    l2 sign;
};
inline SinePi sine_pi(d2 y) {
    constexpr double shifter = shifter52 + sine_bias;
    // y = n + k/256 + f, exactly
    const d2 whole = y + 0x1p52, part = y - (whole - 0x1p52);
    const d2 sum = part * 256.0 + shifter, f = part - (sum - shifter) * 0x1p-8;
    const DoubleDouble<d2> r = multiply({f, all(0.0)}, gamma_constants::pi);
    const DoubleDouble<d2> parts = sine_parts((l2)sum, trig_powers({(l2)sum, r.high, r.low}));
    const DoubleDouble<d2> sine = fast_two_sum(parts.high, parts.low);
    const l2 negative = sign_bit(sine.high);
    const l2 sign = ((l2)whole << 63) ^ sine_sign((l2)sum) ^ negative;
    return {{(d2)((l2)sine.high ^ negative), (d2)((l2)sine.low ^ negative)}, sign};
}

inline DoubleDouble<d2> select(l2 mask, DoubleDouble<d2> x, DoubleDouble<d2> y) {
    return {select(mask, x.high, y.high), select(mask, x.low, y.low)};
}
inline bool any_negative(d2 x) { return _mm_movemask_pd((__m128d)x) != 0; }

// sin(pi y)/pi for 0 <= y <= 20 with its sign: y = n + f, u = f^2, +-(f + f u q(u)). Relative error
// of the polynomials 2^-59.4 (LA), 2^-33.1 (EP) and 2^-25.1 (single precision).
template <class Accuracy> inline d2 sine_pi_short(d2 y) {
    constexpr double shifter = 0x1.8p52;
    const d2 sum = y + shifter, f = y - (sum - shifter), u = f * f, u2 = u * u;
    d2 q;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr double c0 = from_bits(UINT64_C(0xBFFA51A6625307D3));
        constexpr double c1 = from_bits(UINT64_C(0x3FE9F9CB402BC45D));
        constexpr double c2 = from_bits(UINT64_C(0xBFC86A8E4720C749));
        constexpr double c3 = from_bits(UINT64_C(0x3F9AC6805CDF308A));
        constexpr double c4 = from_bits(UINT64_C(0xBF633816A0620AC5));
        constexpr double c5 = from_bits(UINT64_C(0x3F23746C57917CA7));
        constexpr double c6 = from_bits(UINT64_C(0xBEDD3F28CD7ED530));
        constexpr double c7 = from_bits(UINT64_C(0x3E9080D6F89E0A7B));
        q = ((c0 + u * c1) + u2 * (c2 + u * c3)) + (u2 * u2) * ((c4 + u * c5) + u2 * (c6 + u * c7));
    } else {
        constexpr double c0 = from_bits(UINT64_C(0xBFFA51A66240238A));
        constexpr double c1 = from_bits(UINT64_C(0x3FE9F9CB22A548D1));
        constexpr double c2 = from_bits(UINT64_C(0xBFC86A7F7F317689));
        constexpr double c3 = from_bits(UINT64_C(0x3F9AC1505939280B));
        constexpr double c4 = from_bits(UINT64_C(0xBF627935A1917E8C));
        q = (c0 + u * c1) + u2 * ((c2 + u * c3) + u2 * c4);
    }
    return (d2)((l2)(f + (f * u) * q) ^ ((l2)sum << 63));
}
inline f4 sine_pi_short(f4 y) {
    constexpr float shifter = 0x1.8p23f;
    const f4 sum = y + shifter, f = y - (sum - shifter), u = f * f;
    constexpr float c0 = from_bits(0xBFD28D32u), c1 = from_bits(0x3F4FCDC5u),
                    c2 = from_bits(0xBE4325BFu), c3 = from_bits(0x3CCCCCBBu);
    const f4 q = (c0 + u * c1) + (u * u) * (c2 + u * c3);
    return (f4)((i4)(f + (f * u) * q) ^ ((i4)sum << 31));
}

// Gamma(x) = (high + low) power; not a number at the poles.
struct GammaScaled {
    DoubleDouble<d2> value;
    d2 power;
};

// For -20 <= x < 0. HA: 2^-57; LA: relative error below 2^-50.5; EP: 2^-29.
inline DoubleDouble<d2> tgamma_mirrored_parts(d2 x) {
    const d2 y = absolute(x);
    const SinePi sine = sine_pi(y);
    const DoubleDouble<d2> parts = gamma_parts(gamma_reduce(gamma_table, y));
    const DoubleDouble<d2> product = multiply(sine.magnitude, fast_two_sum(parts.high, parts.low));
    const DoubleDouble<d2> quotient = divide(gamma_constants::pi, product);
    const l2 sign = sine.sign ^ INT64_MIN;
    return {(d2)((l2)quotient.high ^ sign), (d2)((l2)quotient.low ^ sign)};
}
template <class Accuracy> inline d2 tgamma_mirrored(d2 x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> parts = tgamma_mirrored_parts(x);
        return parts.high + parts.low;
    } else {
        const d2 y = absolute(x);
        return -1.0 /
               (sine_pi_short<Accuracy>(y) * gamma_value<Accuracy>(gamma_reduce(gamma_table, y)));
    }
}

// For 20 < x < 185 and -185 < x < -20; `power` has the further factor 2^shift.
template <int shift = 0> inline GammaScaled tgamma_stirling_parts(d2 x) {
    const DoubleDouble<d2> exponent = stirling_exponent<HA>(x);
    const ExpParts e = exp_parts(exp_reduce<HA, shift>(exponent.high, exponent.low));
    const DoubleDouble<d2> e_parts = {e.high, e.low};
    if (!any_negative(x)) return {e_parts, e.power};
    const SinePi sine = sine_pi(absolute(x));
    const l2 negative = sign_mask((l2)x), sign = sine.sign ^ INT64_MIN;
    const DoubleDouble<d2> quotient = divide(e_parts, sine.magnitude);
    const DoubleDouble<d2> reflected = {(d2)((l2)quotient.high ^ sign),
                                        (d2)((l2)quotient.low ^ sign)};
    return {select(negative, reflected, e_parts), e.power};
}
inline d2 tgamma_stirling(d2 x) {
    const GammaScaled parts = tgamma_stirling_parts(x);
    return (parts.value.high + parts.value.low) * parts.power;
}

// ln|Gamma(x)| of x < 0 from `plain` - ln(sin(pi |x|) factor).
inline DoubleDouble<d2> lgamma_reflected(d2 y, DoubleDouble<d2> plain, d2 factor) {
    const DoubleDouble<d2> sine = multiply(sine_pi(y).magnitude, {factor, all(0.0)});
    const DoubleDouble<d2> log = log_parts(sine.high);
    const DoubleDouble<d2> sum = two_sum(plain.high, -log.high);
    return {sum.high, sum.low + ((plain.low - log.low) - sine.low / sine.high)};
}

// ln|Gamma(x)| for -20 <= x < 0; infinite or not a number at the poles. HA, LA: the absolute error
// is below 2^-57 + 2^-60 ln Gamma(|x|); EP: absolute 2^-50 and relative 2^-26.
inline DoubleDouble<d2> lgamma_mirrored_parts(d2 x) {
    const d2 y = absolute(x);
    const GammaReduced reduced = gamma_reduce(lgamma_table, y);
    const DoubleDouble<d2> parts = gamma_parts(reduced);
    const DoubleDouble<d2> less = two_sum(gamma_constants::ln_pi.high, -parts.high);
    // From c = 1 on the table has ln Gamma(y), not of 1 + y.
    return lgamma_reflected(y, {less.high, less.low + (gamma_constants::ln_pi.low - parts.low)},
                            select((l2)(reduced.c >= 1.0), y, all(1.0)));
}
template <class Accuracy> inline d2 lgamma_mirrored(d2 x) {
    if constexpr (std::is_same_v<Accuracy, EP>) {
        const d2 y = absolute(x), value = gamma_value<LA>(gamma_reduce(gamma_table, y));
        const d2 inverse = absolute(sine_pi_short<LA>(y) * value);
        return where(inverse == 0, all(Format<double>::infinity)) - log_core<EP>(inverse);
    } else {
        const DoubleDouble<d2> parts = lgamma_mirrored_parts(x);
        return parts.high + parts.low;
    }
}

// The same for x > 20 and -2^52 < x < -20; not a number where it overflows.
inline DoubleDouble<d2> lgamma_stirling_parts(d2 x) {
    const DoubleDouble<d2> exponent = stirling_exponent<LA>(x);
    if (!any_negative(x)) return exponent;
    return select(sign_mask((l2)x), lgamma_reflected(absolute(x), exponent, all(1.0)), exponent);
}
template <class Accuracy> inline d2 lgamma_stirling(d2 x) {
    const auto rounded = [](DoubleDouble<d2> parts) { return parts.high + parts.low; };
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(lgamma_stirling_parts(x));
    } else {
        const d2 positive = lgamma_stirling_rounded<Accuracy>(absolute(x));
        if (!any_negative(x)) return positive;
        return select(sign_mask((l2)x), rounded(lgamma_stirling_parts(x)), positive);
    }
}

// Single precision: the polynomials up to t^6 (LA) and t^3 (EP).
template <class Accuracy> inline f4 gamma_value(const GammaRowSingle* table, f4 x, f4& c) {
    constexpr float shifter = 0x1.8p20f;  // leaves multiples of 1/8
    x = minimum(maximum(x, all(0x1p-40f)), all(static_cast<float>(gamma_table_last)));
    const f4 sum = x + shifter;
    c = sum - shifter;
    const f4 t = x - c;
    const float* const rows[4] = {
        table[_mm_extract_epi16((__m128i)sum, 0)].a, table[_mm_extract_epi16((__m128i)sum, 2)].a,
        table[_mm_extract_epi16((__m128i)sum, 4)].a, table[_mm_extract_epi16((__m128i)sum, 6)].a};
    // Coefficients i to i + 3 of the four lanes, a vector each.
    const auto columns = [&](int i) {
        __m128 a = _mm_load_ps(rows[0] + i), b = _mm_load_ps(rows[1] + i);
        __m128 c = _mm_load_ps(rows[2] + i), d = _mm_load_ps(rows[3] + i);
        _MM_TRANSPOSE4_PS(a, b, c, d);
        return std::array<f4, 4>{(f4)a, (f4)b, (f4)c, (f4)d};
    };
    const auto [a0, a1, a2, a3] = columns(0);
    if constexpr (std::is_same_v<Accuracy, EP>) return a0 + t * (a1 + t * (a2 + t * a3));
    const auto [a4, a5, a6, a7] = columns(4);
    return a0 + t * (a1 + t * (a2 + t * (a3 + t * (a4 + t * (a5 + t * a6)))));
}
template <class Accuracy> inline f4 tgamma_single(f4 x) {
    f4 c;
    return gamma_value<Accuracy>(gamma_table_single, x, c) / x;
}
template <class Accuracy> inline f4 lgamma_single(f4 x) {
    using Log = std::conditional_t<std::is_same_v<Accuracy, LA>, LA, EPTerm>;
    f4 c;
    const f4 value = gamma_value<Accuracy>(lgamma_table_single, x, c);
    return value - log_single<Log>(lgamma_factor(x, c));
}

// EP for -20 <= x < 0, as above; ln|Gamma(x)|: absolute 2^-20 and relative 2^-11.
inline f4 tgamma_mirrored(f4 x) {
    const f4 y = absolute(x);
    f4 c;
    return -1.0f / (sine_pi_short(y) * gamma_value<EP>(gamma_table_single, y, c));
}
inline f4 lgamma_mirrored(f4 x) {
    const f4 y = absolute(x);
    f4 c;
    const f4 value = gamma_value<LA>(gamma_table_single, y, c);
    const f4 inverse = absolute(sine_pi_short(y) * value);
    return where(inverse == 0, all(Format<float>::infinity)) - log_single<EPTerm>(inverse);
}

}  // namespace kef::vm
