// Rows of the other continuous laws, at displacement 0 and scale 1.
#include <cmath>

#include "bench/dist_bench.h"

namespace kef::bench {

namespace {

// Peers of both result types; GSL has doubles alone.
struct Peers {
    Call standard[2], boost[2], gsl;
};
template <template <class> class D, class... P> void add_standard(Peers& peers, P... p) {
    peers.standard[0] = standard(D<double>(p...));
    peers.standard[1] = standard(D<float>(static_cast<float>(p)...));
}
template <template <class> class D, class... P> void add_boost(Peers& peers, P... p) {
    peers.boost[0] = boosted(D<double>(p...));
    peers.boost[1] = boosted(D<float>(static_cast<float>(p)...));
}

template <class Double, class Single>
void add(Section& section, const std::string& law, Double in_double, Single in_single,
         const Peers& peers) {
    section.push_back({law, kef(in_double), peers.standard[0], peers.boost[0], peers.gsl});
    section.push_back(
        {law + ", single", kef(in_single), peers.standard[1], peers.boost[1], peers.gsl});
}

#define KEF_LAW(name, ...)                                                            \
    [=](kef_stream* s) { _vtsdRng##name(0, s, numbers, doubles, __VA_ARGS__ 0, 1); }, \
        [=](kef_stream* s) { _vtssRng##name(0, s, numbers, singles, __VA_ARGS__ 0, 1); }
#define KEF_GSL(name, ...) gsl([=](gsl_rng* r) { return gsl_ran_##name(r, __VA_ARGS__); })

}  // namespace

Section continuous_laws() {
    Section all;
    namespace br = boost::random;
    Peers exponential{{}, {}, KEF_GSL(exponential, 1)};
    add_standard<std::exponential_distribution>(exponential);
    add_boost<br::exponential_distribution>(exponential);
    add(all, "exponential", KEF_LAW(Exponential), exponential);

    Peers laplace{{}, {}, KEF_GSL(laplace, 1)};
    add_boost<br::laplace_distribution>(laplace);
    add(all, "laplace", KEF_LAW(Laplace), laplace);

    for (const double alpha : {1.0, 2.5}) {
        Peers weibull{{}, {}, KEF_GSL(weibull, 1, alpha)};
        add_standard<std::weibull_distribution>(weibull, alpha);
        add_boost<br::weibull_distribution>(weibull, alpha);
        add(all, alpha == 1 ? "weibull 1" : "weibull 2.5", KEF_LAW(Weibull, alpha, ), weibull);
    }

    Peers cauchy{{}, {}, KEF_GSL(cauchy, 1)};
    add_standard<std::cauchy_distribution>(cauchy);
    add_boost<br::cauchy_distribution>(cauchy);
    add(all, "cauchy", KEF_LAW(Cauchy), cauchy);

    add(all, "rayleigh", KEF_LAW(Rayleigh), {{}, {}, KEF_GSL(rayleigh, 1 / std::sqrt(2))});

    Peers gumbel{{}, {}, KEF_GSL(gumbel1, 1, 1)};
    add_standard<std::extreme_value_distribution>(gumbel);
    add_boost<br::extreme_value_distribution>(gumbel);
    add(all, "gumbel", KEF_LAW(Gumbel), gumbel);

    for (const char* shape : {"0.01", "0.3", "0.6", "0.8", "1", "1.5", "2.5", "100"}) {
        const double alpha = std::stod(shape);
        Peers gamma{{}, {}, KEF_GSL(gamma, alpha, 1)};
        add_standard<std::gamma_distribution>(gamma, alpha);
        add_boost<br::gamma_distribution>(gamma, alpha);
        add(all, std::string("gamma ") + shape, KEF_LAW(Gamma, alpha, ), gamma);
    }

    const std::pair<const char*, const char*> shapes[] = {
        {"0.3", "0.5"}, {"0.01", "0.02"}, {"0.9", "0.9"}, {"0.5", "2"},
        {"0.01", "2"},  {"0.9", "30"},    {"1", "3"},     {"2", "3"},
        {"1.1", "50"},  {"300", "200"},   {"5e4", "1e5"}};
    for (const auto& [p, q] : shapes) {
        const double first = std::stod(p), second = std::stod(q);
        Peers beta{{}, {}, KEF_GSL(beta, first, second)};
        add_boost<br::beta_distribution>(beta, first, second);
        add(all, std::string("beta ") + p + ", " + q, KEF_LAW(Beta, first, second, ), beta);
    }
    return all;
}

}  // namespace kef::bench
