// References of the complex vector functions, made of the real ones of either reference type by
// formulas in which nothing cancels that is not exact. Parts have 53 bits. Zeros keep their signs:
// these functions are computed from |x| and |y| where a cut or a zero asks for it.
//
// Kahan, Branch cuts for complex elementary functions, or much ado about nothing's sign bit (1987).
#pragma once

#include "tests/real_reference.h"

namespace kef::reference {

template <class R> struct Complex { R re, im; };

template <class R> R with_sign(R magnitude, R sign) {
    return __builtin_signbit(sign) ? -magnitude : magnitude;
}
// Large arguments of e^x, sinh and cosh: beyond every range of doubles, their squares within that
// of R.
template <class R> R within(R x, int limit) {
    return x > R(limit) ? R(limit) : x < R(-limit) ? R(-limit) : x;
}
template <class R> Complex<R> exchanged(Complex<R> z) { return {z.im, z.re}; }
template <class R> Complex<R> conj(Complex<R> z) { return {z.re, -z.im}; }
template <class R> R norm(Complex<R> z) { return sum_of_products(z.re, z.re, z.im, z.im); }
template <class R> R abs(Complex<R> z) { return sqrt(norm(z)); }
template <class R> R arg(Complex<R> z) { return atan2(z.im, z.re); }

template <class R> Complex<R> operator+(Complex<R> z, Complex<R> w) {
    return {z.re + w.re, z.im + w.im};
}
template <class R> Complex<R> operator-(Complex<R> z, Complex<R> w) {
    return {z.re - w.re, z.im - w.im};
}
template <class R> Complex<R> operator*(Complex<R> z, Complex<R> w) {
    return {sum_of_products(z.re, w.re, -z.im, w.im), sum_of_products(z.re, w.im, z.im, w.re)};
}
template <class R> Complex<R> operator/(Complex<R> z, Complex<R> w) {
    if (w.re == 0 && w.im == 0) {  // C99 G.5.1
        const R infinity = with_sign(R(INFINITY), w.re);
        return {infinity * z.re, infinity * z.im};
    }
    const Complex<R> product = z * conj(w);
    return {product.re / norm(w), product.im / norm(w)};
}

template <class R> Complex<R> cis(R y) { return {cos(y), sin(y)}; }
template <class R> Complex<R> exp(Complex<R> z) {
    const R e = exp(within(z.re, 5000));
    return {e * cos(z.im), e * sin(z.im)};
}
// log|z| = log1p(|z|^2 - 1) / 2, where |z|^2 - 1 = (s - 1) (s + 1) + t^2, s the larger part.
template <class R> Complex<R> log(Complex<R> z) {
    const R x = fabs(z.re), y = fabs(z.im), s = x > y ? x : y, t = x > y ? y : x;
    const bool near = s > R(0.5) && s < 2;
    return {(near ? log1p(sum_of_products(s - 1, s + 1, t, t)) : log(norm(z))) / 2, arg(z)};
}
template <class R> Complex<R> log10(Complex<R> z) {
    const Complex<R> l = log(z);
    return {l.re * R(M_LOG10Eq), l.im * R(M_LOG10Eq)};
}
template <class R> Complex<R> sqrt(Complex<R> z) {
    const R t = sqrt((abs(z) + fabs(z.re)) / 2);
    if (t == 0) return {t, z.im};
    const R s = fabs(z.im) / (2 * t);
    return __builtin_signbit(z.re) ? Complex<R>{s, with_sign(t, z.im)}
                                   : Complex<R>{t, with_sign(s, z.im)};
}

template <class R> Complex<R> sin(Complex<R> z) {
    const R y = within(z.im, 5000);
    return {sin(z.re) * cosh(y), cos(z.re) * sinh(y)};
}
template <class R> Complex<R> cos(Complex<R> z) {
    const R y = within(z.im, 5000);
    return {cos(z.re) * cosh(y), -(sin(z.re) * sinh(y))};
}
template <class R> Complex<R> tan(Complex<R> z) {
    const R y = within(z.im, 2500), sine = sin(z.re), cosine = cos(z.re);
    const R below = cosine * cosine + sinh(y) * sinh(y);
    return {sine * cosine / below, sinh(y) * cosh(y) / below};
}
template <class R> Complex<R> sinh(Complex<R> z) { return exchanged(sin(exchanged(z))); }
template <class R> Complex<R> cosh(Complex<R> z) { return conj(cos(exchanged(z))); }
template <class R> Complex<R> tanh(Complex<R> z) { return exchanged(tan(exchanged(z))); }

// sqrt(1 - z) = p - iu, sqrt(1 + z) = q + iv for Re z, Im z >= 0: all four are not negative.
template <class R> struct Roots {
    R p, u, q, v;
    explicit Roots(Complex<R> z) {
        const R x = fabs(z.re), y = fabs(z.im);
        const Complex<R> below = sqrt(Complex<R>{1 - x, -y}), above = sqrt(Complex<R>{1 + x, y});
        p = below.re, u = -below.im, q = above.re, v = above.im;
    }
    R imaginary() const { return asinh(p * v + u * q); }
};
template <class R> Complex<R> asin(Complex<R> z) {
    const Roots<R> r(z);
    return {with_sign(atan(fabs(z.re) / (r.p * r.q + r.u * r.v)), z.re),
            with_sign(r.imaginary(), z.im)};
}
template <class R> Complex<R> acos(Complex<R> z) {
    const Roots<R> r(z);
    return {2 * (__builtin_signbit(z.re) ? atan(r.q / r.p) : atan(r.p / r.q)),
            -with_sign(r.imaginary(), z.im)};
}
template <class R> Complex<R> atan(Complex<R> z) {
    const R x = fabs(z.re), y = fabs(z.im);
    const R re = atan2(2 * x, sum_of_products(1 - y, 1 + y, -x, x)) / 2;
    const R im = log1p(4 * y / sum_of_products(x, x, 1 - y, 1 - y)) / 4;
    return {with_sign(re, z.re), with_sign(im, z.im)};
}
template <class R> Complex<R> asinh(Complex<R> z) { return exchanged(asin(exchanged(z))); }
template <class R> Complex<R> atanh(Complex<R> z) { return exchanged(atan(exchanged(z))); }
template <class R> Complex<R> acosh(Complex<R> z) {
    const Complex<R> w = acos(z);
    return {fabs(w.im), with_sign(w.re, z.im)};
}

// e^(b ln a) for |b ln a| below 2^40; b = 0 gives 1, a = 0 gives 0 for Re b > 0 and +inf for Re b <
// 0.
template <class R> Complex<R> pow(Complex<R> a, Complex<R> b) {
    if (b.re == 0 && b.im == 0) return {1, 0};
    if (a.re == 0 && a.im == 0) {
        if (b.re > 0) return {0, 0};
        return b.re < 0 ? Complex<R>{R(INFINITY), 0} : Complex<R>{R(NAN), R(NAN)};
    }
    const Complex<R> l = log(a);
    return exp(Complex<R>{b.re * l.re - b.im * l.im, b.re * l.im + b.im * l.re});
}
// By what a relative error of ln a is larger in a^b.
inline double power_condition(const double* x) {
    const double l = std::log(std::hypot(x[0], x[1])), angle = std::atan2(x[1], x[0]);
    const double size = std::hypot(x[2], x[3]) * std::hypot(l, angle);
    return size > 1 ? size : 1;
}

// The results of an expression, as components.
template <class R> using Values = std::array<R, 2>;
inline Values<quad> values(quad r) { return {r, 0}; }
inline Values<wide> values(wide r) { return {r, 0}; }
template <class R> Values<R> values(Complex<R> r) { return {r.re, r.im}; }

}  // namespace kef::reference
