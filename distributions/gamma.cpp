// Gamma: a + beta G, not below a, with G standard gamma of shape alpha.
#include "distributions/gamma.h"

#include "distributions/rejection.h"

namespace kef::dist {

namespace {

using vm::d2;
using vm::store;

// n <= most_candidates normal numbers: by the fastest method without memory, in single precision by
// the fastest whose numbers are better than 11 bits: Box and Muller's product of two, where
// inversion leaves ripples of 1 % in the density. A radius from a uniform of 0 (38.59) becomes no
// candidate: those from other uniforms end at 6.6.
std::int32_t normals(kef_stream* stream, std::int32_t n, double* z, double) {
    return normal(VTS_METHOD_GAUSSIAN_INVERSION, stream, n, z, 0, 1);
}
std::int32_t normals(kef_stream* stream, std::int32_t n, double* z, float) {
    alignas(16) float r[most_candidates];
    const std::int32_t status = normal(VTS_METHOD_GAUSSIAN_BOX_MULLER, stream, n, r, 0, 1);
    if (status < 0) return status;
    constexpr auto seven = std::bit_cast<std::int32_t>(7.0f);
    if (convert(n, r, z, [](vm::ints x) { return vm::magnitude(x) > seven; }))
        std::replace_if(
            z, z + n, [](double x) { return !(__builtin_fabs(x) < 7); }, -1e30);
    return status;
}

// alpha > 1: G. Marsaglia, W. W. Tsang, ACM Trans. Math. Softw. 26 (2000) 363-372. With z normal,
// d = alpha - 1/3, y = z / (3 sqrt d), d (1 + y)^3 is accepted where ln u <= h,
//   h = z^2 / 2 + d - d v + d ln v = 3 d (ln(1 + y) - y + y^2 / 2 - y^3 / 3),  v = (1 + y)^3.
// Quick: u < 1 - s z^4 with s = 0.0331 (2/3) / d. The paper has 0.0331, sharp at d = 2/3; where d
// grows and s z^4 is held, |y| falls, and with it -h.
template <class T> struct LargeShape {
    kef_stream* stream;
    double d, c, s;

    LargeShape(kef_stream* stream, double alpha)
        : stream(stream),
          d(alpha - 1 / 3.0),
          c(1 / (3 * __builtin_sqrt(d))),
          s(0.0331 * (2 / 3.0) / d) {}
    double center() const { return d; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Candidates z, u;
        std::int32_t status = normals(stream, n, z, T());
        if (status < 0) return status;
        status = uniforms<T>(stream, n, u);
        if (status < 0) return status;

        Undecided undecided;
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 normal = two(z + i), root = 1 + c * normal, square = normal * normal;
            const Lanes valid = less(d2{}, root);
            const Lanes sure = less(two(u + i), 1 - s * (square * square));
            store(x + i, valid.choose(d * (root * root * root), both(Undecided::rejected)));
            undecided.add(i, but_not(valid, sure));
        }

        const std::int32_t m = undecided.count();
        Candidates logarithms;
        undecided.gather(z, z);
        undecided.gather(u, u);
        transform(
            m, z, [this](auto v) { return c * v; }, z);
        std::copy_n(z, m, logarithms);
        log1p(m, logarithms);
        ln(m, u);
        undecided.settle(x, [&](std::int32_t j) {
            const double y = z[j], cubic = y - y * y * (0.5 - y * (1 / 3.0));
            return 3 * d * (logarithms[j] - cubic) - u[j];
        });
        return status;
    }
};

// Quick tests for u <= e^-t, t >= 0, by Taylor polynomials on either side.
Lanes surely_below(d2 u, d2 t) { return less_equal(u, below_exp(t)); }
Lanes surely_above(d2 u, d2 t) { return less(both(1.0), u * (1 + t * (1 + 0.5 * t))); }

// 0.6 <= alpha < 1: I. Vaduva, Math. Operationsforsch. Statist. Ser. Statist. 8 (1977) 545-576.
// With e exponential, w = e^(1/alpha) is accepted where ln u <= e - w - d,
// d = (1 - alpha) alpha^(alpha / (1 - alpha)), the largest e - w.
template <class T> struct MediumShape {
    kef_stream* stream;
    double alpha, d;

    MediumShape(kef_stream* stream, double alpha) : stream(stream), alpha(alpha), d(alpha) {
        ln(1, &d);
        d *= alpha / (1 - alpha);
        exp(1, &d);
        d *= 1 - alpha;
    }
    double center() const { return alpha; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Pairs u;
        const std::int32_t status = u.draw<T>(stream, n);
        if (status < 0) return status;
        double* const e = u.first;
        ln(n, e);
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 v = -at_least(log_least, two(e + i));
            store(e + i, v);
            store(x + i, v);
        }
        ln(n, x);
        const double inverse = 1 / alpha;
        transform(
            n, x, [inverse](auto v) { return inverse * v; }, x);
        exp(n, x);

        Undecided undecided;
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 w = two(x + i), t = w + d - two(e + i), v = two(u.second + i);
            const Lanes above = surely_above(v, t);
            store(e + i, t);
            store(x + i, above.choose(both(Undecided::rejected), w));
            undecided.add(i, neither(surely_below(v, t), above));
        }
        undecided.gather(e, e);
        undecided.gather(u.second, u.second);
        ln(undecided.count(), u.second);
        undecided.settle(x, [&](std::int32_t j) { return -e[j] - u.second[j]; });
        return status;
    }
};

// alpha < 0.6: algorithm GS of J. H. Ahrens, U. Dieter, Computing 12 (1974) 223-246, in logarithms:
// a small shape may underflow to 0 but is neither drawn again nor loses its law. With
// b = 1 + alpha / e and p = b u,
//   p <= 1:  x = p^(1/alpha),            accepted where ln u' <= -x,
//   p > 1:   x = -ln((b - p) / alpha),   accepted where ln u' <= (alpha - 1) ln x.
// Quick for the second: ln x <= x - 1.
template <class T> struct SmallShape {
    kef_stream* stream;
    double alpha, inverse, b;

    SmallShape(kef_stream* stream, double alpha)
        : stream(stream),
          alpha(alpha),
          inverse(finite_inverse(alpha)),
          b(1 + alpha * 0.36787944117144233) {}
    double center() const { return alpha; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Pairs u;
        const std::int32_t status = u.draw<T>(stream, n);
        if (status < 0) return status;
        Candidates logarithms;
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 p = b * at_least(0x1p-64, two(u.first + i));
            store(u.first + i, p);
            store(logarithms + i, less_equal(p, both(1.0)).choose(p, (b - p) * inverse));
        }
        ln(n, logarithms);
        exp_of_negative(n, logarithms, x, inverse);

        Undecided undecided;
        const double slope = 1 - alpha;
        for (std::int32_t i = 0; i < n; i += 2) {
            const Lanes low = less_equal(two(u.first + i), both(1.0));
            const d2 w = low.choose(two(x + i), -two(logarithms + i)), v = two(u.second + i);
            const Lanes above = low & surely_above(v, w);
            const d2 t = low.choose(w, slope * (w - 1));
            store(x + i, above.choose(both(Undecided::rejected), w));
            undecided.add(i, neither(surely_below(v, t), above));
        }
        undecided.gather(u.first, u.first);
        undecided.gather(u.second, u.second);
        undecided.gather(x, logarithms);
        Candidates candidates;
        undecided.gather(x, candidates);
        ln(undecided.count(), logarithms);
        ln(undecided.count(), u.second);
        undecided.settle(x, [&](std::int32_t j) {
            return (u.first[j] <= 1 ? -candidates[j] : -slope * logarithms[j]) - u.second[j];
        });
        return status;
    }
};

template <class T>
std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T alpha, T a, T beta) {
    const Bracket bracket(replace_singular);
    const std::int32_t status = standard_gamma(stream, n, r, alpha);
    if (status >= 0) affine_from(n, r, a, beta);
    return status;
}

}  // namespace

template <class T> std::int32_t standard_gamma(kef_stream* stream, std::int32_t n, T* r, T alpha) {
    if (alpha > T(1)) return by_rejection(n, r, LargeShape<T>(stream, alpha));
    if (alpha == T(1)) return exponential(stream, n, r);
    if (alpha >= T(0.6)) return by_rejection(n, r, MediumShape<T>(stream, alpha));
    return by_rejection(n, r, SmallShape<T>(stream, alpha));
}

template std::int32_t standard_gamma(kef_stream*, std::int32_t, double*, double);
template std::int32_t standard_gamma(kef_stream*, std::int32_t, float*, float);

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsdRngGamma(std::int32_t, kef_stream* stream, std::int32_t n, double* r,
                           double alpha, double a, double beta) {
    return law(stream, n, r, alpha, a, beta);
}
std::int32_t _vtssRngGamma(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float alpha,
                           float a, float beta) {
    return law(stream, n, r, alpha, a, beta);
}
