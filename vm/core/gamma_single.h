// The gamma function and its logarithm of floats, LA and EP: for |x| <= 44 by a table with rows as
// in gamma_table.h, one formula for both signs,
//
//   y = |x|, s = sin(pi y)/pi
//   Gamma(x) = Gamma(1 + y)/x                 x > 0
//              -1/(s Gamma(1 + y))            x < 0
//   ln|Gamma(x)| as in gamma_table.h          x > 0
//                  -ln|s Gamma(1 + y)|        x < 0
//
// and the logarithm beyond by Stirling's series.
#pragma once

#include "vm/core/gamma_mirrored.h"

namespace kef::vm {

// Rows of Gamma, those behind c = 20 times 2^-96; behind them those of ln Gamma. Relative error up
// to a[6] 2^-25.9, up to a[3] 2^-12.6.
inline constexpr int gamma_row_scaling = 96;
inline constexpr float gamma_scaled_from = 20.125f, gamma_last_single = gamma_last;
struct alignas(16) GammaRowSingle {
    float a[7];  // of t^0 to t^6
    float low;   // what is left of a[0]
};
extern const GammaRowSingle gamma_table_single[2 * gamma_rows];

}  // namespace kef::vm

namespace KEF_VM {

// x = c + t, exactly, and the rows of c; beyond the table's ends x counts as 44 or as 2^-28, which
// drowns beside a(0) and leaves no subnormal products. `first` is the number of the row of c = 0.
struct GammaReducedSingle {
    floats c, t;
    Rows<GammaRowSingle, float> row;
    auto quad(int i) const { return row.quad(&GammaRowSingle::a, i); }
};
inline GammaReducedSingle gamma_reduce(const GammaRowSingle* table, floats x, ints first = ints{}) {
    constexpr float shifter = 0x1.8p20f;  // leaves multiples of 1/8
    x = minimum(maximum(x, all(0x1p-28f)), all(gamma_last_single));
    const floats sum = x + shifter, c = sum - shifter;
    return {c, x - c, {table, row_numbers((ints)sum + first)}};
}

// The polynomials up to t^6 (LA), a[0] + t `behind`, and up to t^3 (EP).
using FourFloats = std::array<floats, 4>;
inline floats gamma_behind(floats t, const FourFloats& a, const FourFloats& b) {
    return polynomial(t, std::array{a[1], a[2], a[3], b[0], b[1], b[2]});
}
template <class Accuracy> inline floats gamma_value(const GammaReducedSingle& x) {
    const FourFloats a = x.quad(0);
    if constexpr (std::is_same_v<Accuracy, EP>) return polynomial(x.t, a);
    else return multiply_add(x.t, gamma_behind(x.t, a, x.quad(4)), a[0]);
}

// For 0 < x <= 20.
template <class Accuracy> inline floats tgamma_near_single(floats x) {
    return gamma_value<Accuracy>(gamma_reduce(gamma_table_single, x)) / x;
}
template <class Accuracy>
using LGammaLog = std::conditional_t<std::is_same_v<Accuracy, LA>, LA, EPTerm>;
template <class Accuracy> inline floats lgamma_near_single(floats x) {
    const GammaReducedSingle reduced = gamma_reduce(gamma_table_single + gamma_rows, x);
    return gamma_value<Accuracy>(reduced) -
           log_single<LGammaLog<Accuracy>>(lgamma_factor(x, reduced.c));
}

// |f| <= 1/2 and the sign in (-1)^n sin(pi f) = sin(pi y), y = n + f, 0 <= y < 2^23.
struct SinePiReduced {
    floats f;
    ints sign;
    floats square() const {  // no subnormal one
        const floats g = maximum(absolute(f), all(0x1p-30f));
        return g * g;
    }
};
inline SinePiReduced sine_pi_reduce(floats y) {
    constexpr float shifter = 0x1p23f;
    const floats sum = y + shifter;
    return {y - (sum - shifter), (ints)sum << 31};
}
// sin(pi y)/pi with its sign, f (1 + u q(u)), u = f^2. Relative error of the polynomial 2^-25.1.
inline floats sine_pi_single(floats y) {
    constexpr auto c = coefficients(0xBFD28D32u, 0x3F4FCDC5u, 0xBE4325BFu, 0x3CCCCCBBu);
    const SinePiReduced reduced = sine_pi_reduce(y);
    const floats u = reduced.square();
    return flipped(reduced.f * multiply_add(u, polynomial_by_pairs(u, u * u, c), all(1.0f)),
                   reduced.sign);
}

// Gamma(x), |x| <= 44, relative error 2^-21 (LA), 2^-11 (EP); for 0 < x <= 20 the same bits as
// above.
template <class Accuracy> inline floats tgamma_of_both_signs(floats x) {
    const floats y = absolute(x), sine = sine_pi_single(y);
    const GammaReducedSingle reduced = gamma_reduce(gamma_table_single, y);
    const floats value = gamma_value<Accuracy>(reduced);
    const floats factor = select(reduced.c >= gamma_scaled_from, all(0x1p-96f), all(1.0f));
    const ints negative = sign_mask((ints)x);
    return select(negative, -factor, value) /
           (select(negative, sine, x) * select(negative, value, factor));
}

// s Gamma(1 + y) of absolute s, the leading terms of both factors in double: next to 1 it tells the
// zeros of ln|Gamma(x)|. Relative error 2^-25; Gamma(1 + y) = a0 + `rest`; 0 where x > 0.
inline DoublesPair mirrored_product(floats x, floats a0, floats rest) {
    const SinePiReduced reduced = sine_pi_reduce(absolute(x));
    constexpr auto& c = sine_pi_33_bits;
    const floats q = polynomial(reduced.square(),
                                std::array{static_cast<float>(c[1]), static_cast<float>(c[2]),
                                           static_cast<float>(c[3]), static_cast<float>(c[4])});
    const auto product = [](doubles f, doubles q, doubles a0, doubles rest) {
        const doubles u = f * f;
        return (f + f * u * multiply_add(u, q, all(c[0]))) * (a0 + rest);
    };
    const floats f = where(sign_mask((ints)x), absolute(reduced.f));
    const DoublesPair wide_f = widen(f), wide_q = widen(q);
    const DoublesPair wide_a = widen(a0), wide_rest = widen(rest);
    return {product(wide_f.low, wide_q.low, wide_a.low, wide_rest.low),
            product(wide_f.high, wide_q.high, wide_a.high, wide_rest.high)};
}

// ln Gamma(y), y > 44, by Stirling's series: relative error 2^-22 (LA), 2^-13.5 (EP).
template <class Accuracy> inline floats lgamma_stirling_single(floats y) {
    constexpr float constant = static_cast<float>(half_ln_2pi_rounded - 0.5);
    return (y - 0.5f) * (log_single<LGammaLog<Accuracy>>(y) - 1.0f) +
           (constant + static_cast<float>(1.0 / 12) / y);
}

// ln|Gamma(x)|, relative error 2^-21 (LA), 2^-11 (EP), for x < 0 of max(|result|, 1/8);
// infinite at the poles. For 0 < x <= 44 the same bits as above.
//
//   x > 0, by the table                   value - ln(argument)
//   x < 0                                 -ln(argument), argument = 2^exponent (1 + r)
//   y > 44 by ln Gamma(y), x > 0          ln Gamma(y) - ln(argument), argument = 1
//                          x < 0          -ln Gamma(y) - ln(argument), argument = s y
template <class Accuracy> inline floats lgamma_of_both_signs(floats x) {
    const floats y = absolute(x);
    const ints negative = sign_mask((ints)x);
    const GammaReducedSingle reduced = gamma_reduce(gamma_table_single, y, ~negative & gamma_rows);
    const floats t = reduced.t, factor = lgamma_factor(x, reduced.c);
    ints scaling = (ints)(reduced.c >= gamma_scaled_from) & negative & gamma_row_scaling;
    const auto result = [&](floats plain, floats argument, ints exponent, floats r) {
        const floats pole = where(argument == 0, all(Format<float>::infinity));
        return (plain + pole) - log_single<LGammaLog<Accuracy>>(exponent + scaling, r);
    };
    // Gamma(1 + y) = size + rest.
    floats value, size, rest{};
    if constexpr (std::is_same_v<Accuracy, EP>) {
        value = size = gamma_value<EP>(reduced);
    } else {
        const FourFloats a = reduced.quad(0), b = reduced.quad(4);
        size = a[0];
        value = multiply_add(t, gamma_behind(t, a, b), size);
        // The same polynomial, shorter to wait for.
        const floats behind =
            polynomial_by_pairs(t, t * t, std::array{a[1], a[2], a[3], b[0], b[1], b[2]});
        rest = multiply_add(t, behind, b[3]);
    }
    floats plain = where(~negative, value);
    if (const ints wide = y > gamma_last_single; any_lane(wide)) {
        const floats stirling = lgamma_stirling_single<Accuracy>(y);
        if (all_lanes(wide) && !any_lane((ints)x)) return stirling;
        plain = select(wide, flipped(stirling, sign_bit(x)), plain);
        size = select(wide, y, size);
        rest = where(~wide, rest);
        scaling &= ~wide;
    }
    if constexpr (std::is_same_v<Accuracy, EP>) {
        const floats product = absolute(sine_pi_single(y) * where(negative, size));
        const floats argument = select(negative, product, factor);
        const LogSingleReduced log = log_single_reduce(argument);
        return result(plain, argument, log.exponent, log.z - 1.0f);
    } else {
        const DoublesPair product = mirrored_product(x, size, rest);
        const floats argument = select(negative, narrow(product), factor);
        const LogSingleReduced log = log_single_reduce(argument);
        const DoublesPair scale = widen((floats)((127 - log.exponent) << 23));
        const floats r = narrow(product.low * scale.low - 1.0, product.high * scale.high - 1.0);
        return result(plain, argument, log.exponent, select(negative, r, log.z - 1.0f));
    }
}

}  // namespace KEF_VM
