// Marked elements in a sample without replacement: distributions/discrete.h.
#include "distributions/discrete.h"

namespace kef::dist {

namespace {

// P(k) = B(k; marked, f) B(sample - k; rest, f) / B(sample; population, f), f = sample/population,
// B the binomial law; rest = population - marked.
struct HypergeometricLaw {
    double low, high, mode, deviation, sample, marked, rest, f;

    HypergeometricLaw(double population, double sample, double marked)
        : sample(sample),
          marked(marked),
          rest(population - marked),
          f(sample / std::max(population, 1.0)) {
        low = std::max(0.0, sample - rest);
        high = std::min(sample, marked);
        mode = whole((sample + 1) * (marked + 1) / (population + 2));
        mode = std::clamp(mode, low, high);
        deviation = __builtin_sqrt(marked * f * (1 - f) * (rest / std::max(population - 1, 1.0)));
    }
    Ratio ratio(double k) const {
        return {(marked - k) * (sample - k), (k + 1) * (rest - sample + k + 1)};
    }
    double log_weight(double k) const {
        const d2 in = log_poisson(d2{k, sample - k}, d2{marked * f, rest * f});
        const d2 out =
            log_poisson(d2{marked - k, rest - sample + k}, d2{marked * (1 - f), rest * (1 - f)});
        return (in[0] + in[1]) + (out[0] + out[1]);
    }
};

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngHypergeometric(std::int32_t, kef_stream* stream, std::int32_t n,
                                    std::int32_t* r, std::int32_t population, std::int32_t sample,
                                    std::int32_t marked) {
    Uniforms uniforms(stream);
    const HypergeometricLaw law(population, sample, marked);
    if (law.low >= law.high) std::fill(r, r + std::max(n, 0), as_count(law.high));
    else kef::dist::sample(uniforms, n, r, law);
    return uniforms.status();
}
