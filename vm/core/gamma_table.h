// The gamma function and its logarithm for 0 < x <= 44 by a table:
//
//   x = c + t, c = j/8, |t| <= 1/16; row j has the polynomial in t
//   Gamma(x) = Gamma(1 + c + t)/x
//   ln Gamma(x) = ln Gamma(1 + c + t) - ln x       c < 1
//                 ln Gamma(c + t)                  c >= 1
//
// At c = 1 and c = 2 the second one begins with t, so that it is relative to its zeros, and the
// pole costs no cancellation. The sum that rounds x to c has j in the last bits of its lane, which
// number the row. Tables: tools/gamma_tables.py.
#pragma once

#include "vm/core/log_single.h"
#include "vm/simd/double_double.h"
#include "vm/simd/rows.h"

namespace kef::vm {

inline constexpr int gamma_rows = 353;
inline constexpr double gamma_last = 44, gamma_table_last = 44.0625;

// Relative error below 2^-58.1 for Gamma, 2^-57.9 for ln Gamma; up to a[7] 2^-30.1.
struct alignas(64) GammaRow {
    double a[13];   // of t^0 to t^12
    double low[2];  // what is left of a[0] and a[1]
};
extern const GammaRow gamma_table[gamma_rows], lgamma_table[gamma_rows];

}  // namespace kef::vm

namespace KEF_VM {

// x = c + t, exactly, and the rows of c; beyond the table's ends x counts as 44 1/16 or as 2^-100,
// which drowns beside a(0) and leaves no subnormal products.
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

// Gamma(x) for 0 < x <= 44. HA: 0.52 ulp; LA: relative error below 2^-51; EP: 2^-30.
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

// ln Gamma(x) for 0 < x <= 44. HA: 0.63 ulp; LA: relative error below 2^-50; EP: 2^-26.
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

}  // namespace KEF_VM
