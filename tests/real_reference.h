// The real functions that references consist of, in __float128 and in 80-bit extended precision.
#pragma once

#include <cmath>

#include <quadmath.h>

namespace kef::reference {

using quad = __float128;
using wide = long double;

// One name for the C library's function of either type. The names hide those of
// the global namespace, which a reference must never fall back to.
#define KEF_OF_ONE(name)                              \
    inline quad name(quad x) { return ::name##q(x); } \
    inline wide name(wide x) { return ::name##l(x); }
#define KEF_OF_TWO(name)                                         \
    inline quad name(quad x, quad y) { return ::name##q(x, y); } \
    inline wide name(wide x, wide y) { return ::name##l(x, y); }
// clang-format off
KEF_OF_ONE(acos) KEF_OF_ONE(acosh) KEF_OF_ONE(asin) KEF_OF_ONE(asinh) KEF_OF_ONE(atan)
KEF_OF_ONE(atanh) KEF_OF_ONE(cbrt) KEF_OF_ONE(ceil) KEF_OF_ONE(cos) KEF_OF_ONE(cosh)
KEF_OF_ONE(erf) KEF_OF_ONE(erfc) KEF_OF_ONE(exp) KEF_OF_ONE(expm1) KEF_OF_ONE(fabs)
KEF_OF_ONE(floor) KEF_OF_ONE(lgamma) KEF_OF_ONE(log) KEF_OF_ONE(log10) KEF_OF_ONE(log1p)
KEF_OF_ONE(nearbyint) KEF_OF_ONE(rint) KEF_OF_ONE(round) KEF_OF_ONE(sin) KEF_OF_ONE(sinh)
KEF_OF_ONE(sqrt) KEF_OF_ONE(tan) KEF_OF_ONE(tanh) KEF_OF_ONE(tgamma) KEF_OF_ONE(trunc)
KEF_OF_TWO(atan2) KEF_OF_TWO(hypot) KEF_OF_TWO(pow)
// clang-format on
#undef KEF_OF_ONE
#undef KEF_OF_TWO

    // Unevaluated sums.
    struct WideParts {
    wide high, low;
};
inline WideParts exact_product(wide a, wide b) {
    const auto upper_half = [](wide x) {  // Veltkamp's splitting
        const wide t = x * (0x1p32L + 1);
        return t - (t - x);
    };
    const wide a1 = upper_half(a), a2 = a - a1, b1 = upper_half(b), b2 = b - b1, p = a * b;
    return {p, ((a1 * b1 - p) + a1 * b2 + a2 * b1) + a2 * b2};  // Dekker's product
}
inline WideParts exact_sum(wide a, wide b) {
    const wide s = a + b, part = s - a;
    return {s, (a - (s - part)) + (b - part)};  // Knuth's sum
}

// a b + c, and a b + c d, for factors of 53 bits, with one rounding error whatever cancels.
inline quad multiply_add(quad a, quad b, quad c) { return a * b + c; }
inline wide multiply_add(wide a, wide b, wide c) {
    const WideParts p = exact_product(a, b), s = exact_sum(p.high, c);
    return fabs(s.high) < wide(INFINITY) ? s.high + (s.low + p.low) : s.high;
}
inline quad sum_of_products(quad a, quad b, quad c, quad d) { return a * b + c * d; }
inline wide sum_of_products(wide a, wide b, wide c, wide d) {
    const WideParts p = exact_product(a, b), q = exact_product(c, d), s = exact_sum(p.high, q.high);
    return fabs(s.high) < wide(INFINITY) ? s.high + (s.low + (p.low + q.low)) : s.high;
}

// (1/2) erfc(-x/sqrt2). The product t = -x/sqrt2 is taken with its rounding error
// d, and erfc(t + d) = erfc(t) - 2/sqrt(pi) exp(-t^2) d; without d the result
// loses 2 log2|x| + 1 bits in the tail. x has 53 bits at most.
template <class R> R cdf_norm(R x) {
    if (!(fabs(x) < R(1e4))) return x != x ? x : x > 0 ? R(1) : R(0);
    const R high = -x * R(0x5A8p-11), low = -x * R(M_SQRT1_2q - 0x5A8p-11Q);
    const R t = high + low, d = low - (t - high);
    return (erfc(t) - R(M_2_SQRTPIq) * exp(-t * t) * d) / 2;
}

// The root x of erf(x) = y for |y| <= 1/2, or of erfc(x) = q for 0 < q <= 1/2, by
// Halley's iteration: with u = residual / derivative, x -= u / (1 + x u). The
// error is cubed at every step.
inline wide erf_root(wide y) {
    const wide y2 = y * y;  // Taylor series: relative error 0.1 y^6
    wide x = y * (1 + y2 * (0.2617993878L + y2 * 0.1439317309L)) * 0.886226925452758L;
    for (int i = 0; i < 2; ++i) {
        const wide u = (erf(x) - y) / (wide(M_2_SQRTPIq) * exp(-x * x));
        x -= u / (1 + x * u);
    }
    return x;
}
inline wide erfc_root(wide q) {
    // Abramowitz and Stegun 26.2.23: error below 4.5e-4 for every q.
    const wide t = sqrt(-2 * log(q / 2));
    wide x = t - (2.515517L + t * (0.802853L + t * 0.010328L)) /
                     (1 + t * (1.432788L + t * (0.189269L + t * 0.001308L)));
    x *= wide(M_SQRT1_2q);
    for (int i = 0; i < 3; ++i) {
        const wide u = (q - erfc(x)) / (wide(M_2_SQRTPIq) * exp(-x * x));
        x -= u / (1 + x * u);
    }
    return x;
}
inline quad erf_root(quad y) {
    const quad x = erf_root(wide(y));
    const quad u = (erf(x) - y) / (M_2_SQRTPIq * exp(-x * x));
    return x - u / (1 + x * u);
}
inline quad erfc_root(quad q) {
    const quad x = erfc_root(wide(q));
    const quad u = (q - erfc(x)) / (M_2_SQRTPIq * exp(-x * x));
    return x - u / (1 + x * u);
}

// 1 - |y|, 2 - q and 1 - q below are exact for the arguments of both types.
template <class R> R erf_inv(R y) {
    const R size = fabs(y);
    if (!(size < 1)) return size == 1 ? y * R(INFINITY) : R(NAN);
    if (size <= R(0.5)) return y == 0 ? y : erf_root(y);
    const R x = erfc_root(1 - size);
    return y > 0 ? x : -x;
}
template <class R> R erfc_inv(R q) {
    if (!(q > 0 && q < 2)) return q == 0 ? R(INFINITY) : q == 2 ? -R(INFINITY) : R(NAN);
    if (q < R(0.5)) return erfc_root(q);
    if (q > R(1.5)) return -erfc_root(2 - q);
    return erf_inv(1 - q);
}
template <class R> R cdf_norm_inv(R p) { return -R(M_SQRT2q) * erfc_inv(2 * p); }

}  // namespace kef::reference
