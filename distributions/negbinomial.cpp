// Failures before the a-th success of probability p, a > 0 not necessarily whole.
#include "distributions/discrete.h"

namespace kef::dist {

namespace {

// P(k) = a/(a + k) B(a; a + k, p), B the binomial law with Gamma functions for factorials.
struct NegbinomialLaw {
    static constexpr double low = 0, high = __builtin_huge_val();
    double mode, deviation, a, p, q;

    NegbinomialLaw(double a, double p) : a(a), p(p), q(1 - p) {
        mode = a > 1 ? whole((a - 1) * q / p) : 0;
        deviation = __builtin_sqrt(a * q) / p;
    }
    Ratio ratio(double k) const { return {(k + a) * q, k + 1}; }
    double log_weight(double k) const {
        const double sum = a + k;
        const d2 logs = log_poisson(d2{a, k}, d2{sum * p, sum * q});
        return (logs[0] + logs[1]) - (log_poisson(both(sum), both(sum))[0] + log_of(sum));
    }
};

// A Poisson number whose mean is gamma of shape a and scale q/p.
std::int32_t mixture(kef_stream* stream, std::int32_t n, std::int32_t* r, double a, double scale) {
    double means[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const std::int32_t status = _vtsdRngGamma(0, stream, m, means, a, 0, 1);
        if (status < 0) return status;
        const double most = 1e300 / std::max(scale, 1.0);
        transform(
            m, means, [=](auto g) { return at_most(most, g) * scale; }, means);
        return _vtsiRngPoissonV(0, stream, m, out, means);
    });
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngNegbinomial(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                                 double a, double p) {
    Uniforms uniforms(stream);
    if (!(p < 1)) {
        std::fill(r, r + std::max(n, 0), 0);
        return uniforms.status();
    }
    p = std::max(p, 1e-300);
    const double q = 1 - p;
    // Beyond a mean of 2^40 doubles count too coarsely; below a = 1 the law is not log-concave.
    if (a * q >= 0x1p40 * p) return mixture(stream, n, r, a, q / p);
    const NegbinomialLaw law(a, p);
    if (a >= 1) sample(uniforms, n, r, law);
    else if (n > 0 && !(table_pays(n, law.deviation) && by_table(uniforms, n, r, law)))
        return mixture(stream, n, r, a, q / p);
    return uniforms.status();
}
