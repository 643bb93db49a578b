// Beta: a + beta B, with B standard beta of shapes p and q.
#include "distributions/gamma.h"
#include "distributions/rejection.h"

namespace kef::dist {

namespace {

using vm::d2;
using vm::store;

// x = ln(u / (1 - u)); the bound is beyond any uniform below 1.
void logits(std::int32_t n, double* x) {
    transform(
        n, x, [](auto u) { return at_most(0x1p60, u / (1 - u)); }, x);
    ln(n, x);
}

constexpr double ln4 = 1.3862943611198906;

// Both of R. C. H. Cheng, Comm. ACM 21 (1978) 317-322, accept a candidate w = a e^v,
// v = beta ln(u / (1 - u)), as w / (b + w) for the shapes a, b, by z = u^2 u'. With
// A = a / (a + b), B = b / (a + b):

// Both shapes above 1: BB, a the smaller one, beta^-2 = (2 a b - (a + b)) / (a + b - 2), written
// without differences of near numbers. Accepted where
//   ln z <= v / beta - ln 4 + a v - (a + b) ln(1 + A (e^v - 1));
// quick, by tangents of the logarithms at 1 and 1/5:
//   5 z - 1 - ln 5 <= v / beta - ln 4 + a (v - (e^v - 1)).
// A relative error e of e^v moves the logarithm of the probability by about a e: 2^-14 at most.
template <class T> struct BothLarge {
    static constexpr double most = 16384;  // of a

    kef_stream* stream;
    bool swapped;  // the number is b / (b + w)
    double a, sum, A, B, beta;

    BothLarge(kef_stream* stream, double p, double q)
        : stream(stream),
          swapped(p > q),
          a(std::min(p, q)),
          sum(p + q),
          A(a / sum),
          B(std::max(p, q) / sum),
          beta(1 / __builtin_sqrt(1 + 2 * (a - 1) / (1 + (a - 1) / (std::max(p, q) - 1)))) {}
    double center() const { return swapped ? B : A; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Pairs u;
        const std::int32_t status = u.draw<T>(stream, n);
        if (status < 0) return status;
        double *const logit = u.first, *const z = u.second;
        transform(
            n, z, [](auto u, auto v) { return u * u * v; }, u.first, u.second);
        logits(n, logit);
        Candidates growth;  // e^v, then e^v - 1
        transform(
            n, growth, [this](auto l) { return beta * l; }, logit);
        exp(n, growth);

        Undecided undecided;
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 e = two(growth + i), l = two(logit + i), w = A * e;
            const d2 quick = l - ln4 + a * (beta * l - (e - 1));
            undecided.add(i, less(quick, 5 * two(z + i) - 2.6094379124341003));
            store(growth + i, e - 1);
            store(x + i, (swapped ? both(B) : w) / (B + w));
        }
        undecided.gather(growth, growth);
        undecided.gather(logit, logit);
        undecided.gather(z, z);
        const std::int32_t m = undecided.count();
        transform(
            m, growth, [this](auto e) { return A * e; }, growth);
        log1p(m, growth);
        ln(m, z);
        undecided.settle(x, [&](std::int32_t j) {
            return logit[j] * (1 + a * beta) - ln4 - sum * growth[j] - z[j];
        });
        return status;
    }
};

// One shape below 1: BC, b that one; v may leave the range of e^v. With y = u u', candidates of
// u < 1/2 have 0.25 u' + z - y < kappa1, the others z < kappa2, and are accepted where
//   ln z <= -(a + b) ln(1 + B (e^-v - 1)) - ln 4,
// at once where u >= 1/2 and z <= 1/4.
template <class T> struct OneLarge {
    kef_stream* stream;
    bool swapped;  // the number is b / (b + w)
    double sum, A, B, beta, kappa1, kappa2;

    OneLarge(kef_stream* stream, double p, double q) : stream(stream), swapped(p < q), sum(p + q) {
        const double a = std::max(p, q), b = std::min(p, q), delta = 1 + a - b;
        A = a / sum;
        B = b / sum;
        beta = finite_inverse(b);
        kappa1 = delta * (0.0138889 + 0.0416667 * b) / (a * beta - 0.777778);
        kappa2 = 0.25 + (0.5 + 0.25 / delta) * b;
    }
    double center() const { return swapped ? B : A; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Pairs u;
        const std::int32_t status = u.draw<T>(stream, n);
        if (status < 0) return status;

        // What u and u' alone reject is dropped before the kernels.
        double* const z = u.second;
        std::int32_t kept = 0;
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 first = two(u.first + i), second = two(u.second + i), y = first * second,
                     product = first * y;
            const Lanes low = less(first, both(0.5)),
                        keep = (low & less(0.25 * second + product - y, both(kappa1))) |
                               but_not(less(product, both(kappa2)), low);
            u.first[kept] = first[0];
            z[kept] = product[0];
            kept += keep.mask() & 1;
            u.first[kept] = first[1];
            z[kept] = product[1];
            kept += keep.mask() >> 1;
        }
        std::fill(x + kept, x + n, Undecided::rejected);
        const std::int32_t even = kept + kept % 2;  // the last one may be no candidate
        if (kept != even) u.first[kept] = z[kept] = 0.5;

        double* const logit = u.first;
        logits(even, logit);
        Candidates decay, rise;  // e^-|v|, B (e^-v - 1)
        for (std::int32_t i = 0; i < even; i += 2) store(decay + i, -vm::absolute(two(logit + i)));
        exp_of_negative(even, decay, decay, beta);
        Undecided undecided;
        for (std::int32_t i = 0; i < even; i += 2) {
            const d2 e = two(decay + i), l = two(logit + i);
            const Lanes low = less(l, d2{});
            // a and b e^-v, or a e^v and b
            const d2 wa = low.choose(A * e, both(A)), wb = low.choose(both(B), B * e);
            store(x + i, (swapped ? wb : wa) / (wa + wb));
            store(rise + i, B * (low.choose(1 / at_least(0x1p-1022, e), e) - 1));
            undecided.add(i, low | less(both(0.25), two(z + i)));
        }
        if (kept != even) x[kept] = Undecided::rejected;
        undecided.gather(rise, rise);
        undecided.gather(z, z);
        log1p(undecided.count(), rise);
        ln(undecided.count(), z);
        undecided.settle(x, [&](std::int32_t j) { return -sum * rise[j] - ln4 - z[j]; });
        return status;
    }
};

// Both shapes below 1: M. D. Johnk, Metrika 8 (1964) 5-15, in logarithms. x = ln(u) / p and
// y = ln(u') / q are accepted where e^x + e^y <= 1, as e^x / (e^x + e^y).
template <class T> struct BothSmall {
    kef_stream* stream;
    double mean, inverse_p, inverse_q;

    BothSmall(kef_stream* stream, double p, double q)
        : stream(stream),
          mean(p / (p + q)),
          inverse_p(finite_inverse(p)),
          inverse_q(finite_inverse(q)) {}
    double center() const { return mean; }

    std::int32_t propose(std::int32_t n, double* x) const {
        Pairs u;
        const std::int32_t status = u.draw<T>(stream, n);
        if (status < 0) return status;
        ln(2 * n, u.first);
        Candidates larger, ratio;  // of e^x and e^y: the larger one; the smaller to it
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 log_x = inverse_p * at_least(log_least, two(u.first + i)),
                     log_y = inverse_q * at_least(log_least, two(u.second + i));
            store(u.first + i, log_x - log_y);
            store(larger + i, vm::maximum(log_x, log_y));
            store(ratio + i, -vm::absolute(log_x - log_y));
        }
        exp_of_negative(n, larger, larger, 1);
        exp_of_negative(n, ratio, ratio, 1);
        for (std::int32_t i = 0; i < n; i += 2) {
            const d2 e = two(ratio + i), total = 1 + e;
            const d2 number = less(two(u.first + i), d2{}).choose(e, both(1.0)) / total;
            store(x + i, less_equal(two(larger + i) * total, both(1.0))
                             .choose(number, both(Undecided::rejected)));
        }
        return status;
    }
};

// A shape of 1: 1 - u^(1/q) or u^(1/p).
template <class T>
std::int32_t by_inversion(kef_stream* stream, std::int32_t n, T* r, double p, double q) {
    alignas(16) double x[block];
    return in_blocks(n, r, [&](T* out, std::int32_t m) {
        const std::int32_t status = uniforms<T>(stream, m, x);
        if (status < 0) return status;
        ln(m, x);
        if (p == 1) {
            const double factor = finite_inverse(q), least = std::max(-700.0, factor * log_least);
            transform(
                m, x, [=](auto v) { return at_least(least, factor * v); }, x);
            expm1(m, x);
            transform(
                m, x, [](auto v) { return 0 - v; }, x);
        } else {
            exp_of_negative(m, x, x, finite_inverse(p), log_least);
        }
        convert(m, x, out);
        return status;
    });
}

// Both shapes huge: 1 / (1 + H / G), G and H gamma of shapes p and q.
template <class T> std::int32_t by_ratio(kef_stream* stream, std::int32_t n, T* r, T p, T q) {
    alignas(16) T other[block];
    return in_blocks(n, r, [&](T* x, std::int32_t m) {
        const std::int32_t status = standard_gamma(stream, m, other, q);
        if (status < 0) return status;
        const std::int32_t last = standard_gamma(stream, m, x, p);
        if (last >= 0)
            transform(
                m, x, [](auto g, auto h) { return 1 / (1 + h / g); }, x, other);
        return last;
    });
}

template <class T> std::int32_t standard_beta(kef_stream* stream, std::int32_t n, T* r, T p, T q) {
    const auto [low, high] = std::minmax(p, q);
    if (p == 1 || q == 1) return by_inversion(stream, n, r, p, q);
    if (low > T(BothLarge<T>::most)) return by_ratio(stream, n, r, p, q);
    if (low > 1) return by_rejection(n, r, BothLarge<T>(stream, p, q));
    if (high > 1) return by_rejection(n, r, OneLarge<T>(stream, p, q));
    return by_rejection(n, r, BothSmall<T>(stream, p, q));
}

template <class T>
std::int32_t law(kef_stream* stream, std::int32_t n, T* r, T p, T q, T a, T beta) {
    const Bracket bracket(replace_singular);
    const std::int32_t status = standard_beta(stream, n, r, p, q);
    if (status >= 0) affine_from(n, r, a, beta);
    return status;
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsdRngBeta(std::int32_t, kef_stream* stream, std::int32_t n, double* r, double p,
                          double q, double a, double beta) {
    return law(stream, n, r, p, q, a, beta);
}
std::int32_t _vtssRngBeta(std::int32_t, kef_stream* stream, std::int32_t n, float* r, float p,
                          float q, float a, float beta) {
    return law(stream, n, r, p, q, a, beta);
}
