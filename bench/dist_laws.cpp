// Rows of the other continuous laws.
#include <cmath>

#include "bench/dist_bench.h"

namespace kef::bench {

namespace {

// Both precisions of a law at displacement 0 and scale 1, beside the same peers.
template <class Double, class Single>
void add(Section& section, const std::string& law, Double in_double, Single in_single,
         const Call& standard, const Call& boost, const Call& gsl) {
    section.push_back({law, kef(in_double), standard, boost, gsl});
    section.push_back({law + ", single", kef(in_single), standard, boost, gsl});
}

#define KEF_LAW(name, ...)                                                            \
    [=](kef_stream* s) { _vtsdRng##name(0, s, numbers, doubles, __VA_ARGS__ 0, 1); }, \
        [=](kef_stream* s) { _vtssRng##name(0, s, numbers, singles, __VA_ARGS__ 0, 1); }
#define KEF_GSL(name, ...) gsl([=](gsl_rng* r) { return gsl_ran_##name(r, __VA_ARGS__); })

}  // namespace

Section continuous_laws() {
    Section all;
    namespace br = boost::random;
    add(all, "exponential", KEF_LAW(Exponential), standard(std::exponential_distribution<>()),
        boosted(br::exponential_distribution<>()), KEF_GSL(exponential, 1));
    add(all, "laplace", KEF_LAW(Laplace), {}, boosted(br::laplace_distribution<>()),
        KEF_GSL(laplace, 1));
    for (const double alpha : {1.0, 2.5})
        add(all, alpha == 1 ? "weibull 1" : "weibull 2.5", KEF_LAW(Weibull, alpha, ),
            standard(std::weibull_distribution<>(alpha)),
            boosted(br::weibull_distribution<>(alpha)), KEF_GSL(weibull, 1, alpha));
    add(all, "cauchy", KEF_LAW(Cauchy), standard(std::cauchy_distribution<>()),
        boosted(br::cauchy_distribution<>()), KEF_GSL(cauchy, 1));
    add(all, "rayleigh", KEF_LAW(Rayleigh), {}, {}, KEF_GSL(rayleigh, 1 / std::sqrt(2)));
    add(all, "gumbel", KEF_LAW(Gumbel), standard(std::extreme_value_distribution<>()),
        boosted(br::extreme_value_distribution<>()), KEF_GSL(gumbel1, 1, 1));
    for (const char* shape : {"0.01", "0.3", "0.6", "0.8", "1", "1.5", "2.5", "100"}) {
        const double alpha = std::stod(shape);
        add(all, std::string("gamma ") + shape, KEF_LAW(Gamma, alpha, ),
            standard(std::gamma_distribution<>(alpha)), boosted(br::gamma_distribution<>(alpha)),
            KEF_GSL(gamma, alpha, 1));
    }
    const struct {
        const char* name;
        double p, q;
    } shapes[] = {{"0.3, 0.5", 0.3, 0.5}, {"0.01, 0.02", 0.01, 0.02},
                  {"0.9, 0.9", 0.9, 0.9}, {"0.5, 2", 0.5, 2},
                  {"0.01, 2", 0.01, 2},   {"0.9, 30", 0.9, 30},
                  {"1, 3", 1, 3},         {"2, 3", 2, 3},
                  {"1.1, 50", 1.1, 50},   {"300, 200", 300, 200},
                  {"5e4, 1e5", 5e4, 1e5}};
    for (const auto& s : shapes) {
        const double p = s.p, q = s.q;
        add(all, std::string("beta ") + s.name, KEF_LAW(Beta, p, q, ), {},
            boosted(br::beta_distribution<>(p, q)), KEF_GSL(beta, p, q));
    }
    return all;
}

}  // namespace kef::bench
