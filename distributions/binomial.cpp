// Successes in `trials` trials of probability p: distributions/discrete.h.
#include "distributions/discrete.h"

namespace kef::dist {

namespace {

struct BinomialLaw {
    static constexpr double low = 0;
    double high, mode, deviation, p, q;

    BinomialLaw(double trials, double p) : high(trials), p(p), q(1 - p) {
        mode = std::min(whole((trials + 1) * p), trials);
        deviation = __builtin_sqrt(trials * p * q);
    }
    Ratio ratio(double k) const { return {(high - k) * p, (k + 1) * q}; }
    double log_weight(double k) const {
        const d2 logs = log_poisson(d2{k, high - k}, d2{high * p, high * q});
        return logs[0] + logs[1];
    }
};

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngBinomial(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                              std::int32_t trials, double p) {
    Uniforms uniforms(stream);
    if (trials <= 0 || !(p > 0 && p < 1))
        std::fill(r, r + std::max(n, 0), p >= 1 ? std::max(trials, 0) : 0);
    else sample(uniforms, n, r, BinomialLaw(trials, p));
    return uniforms.status();
}
