// Rows of the discrete laws. Peers keep their set-up from call to call.
#include "bench/dist_bench.h"
#include "bench/table.h"

namespace kef::bench {

namespace {

std::string name(const char* law, std::initializer_list<double> parameters) {
    std::string text = law;
    const char* separator = " ";
    for (const double x : parameters) {
        text += separator + format("%g", x);
        separator = ", ";
    }
    return text;
}

Row poisson(int method, double mean) {
    return {name("poisson", {mean}) + (method == 0 ? "" : ", method 1"),
            kef([=](kef_stream* s) { _vtsiRngPoisson(method, s, numbers, integers, mean); }),
            standard(std::poisson_distribution<int>(mean)),
            boosted(boost::random::poisson_distribution<int>(mean)),
            gsl([=](gsl_rng* g) { return gsl_ran_poisson(g, mean); })};
}

// Means between low and 2 low, each number of another.
Row poisson_v(double low) {
    std::vector<double> means(numbers);
    for (int i = 0; i < numbers; ++i) means[i] = low * (1 + i / double(numbers));
    const auto each = [=](auto draw) {
        return [=]() mutable {
            for (int i = 0; i < numbers; ++i) integers[i] = draw(means[i]);
        };
    };
    const std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
    return {name("poisson_v", {low}) + format(" to %g", 2 * low),
            kef([=](kef_stream* s) { _vtsiRngPoissonV(0, s, numbers, integers, means.data()); }),
            each([e = std::mt19937()](double mean) mutable {
                return std::poisson_distribution<int>(mean)(e);
            }),
            each([e = boost::random::mt19937()](double mean) mutable {
                return boost::random::poisson_distribution<int>(mean)(e);
            }),
            each([=](double mean) { return gsl_ran_poisson(rng.get(), mean); })};
}

Row binomial(int trials, double p) {
    return {name("binomial", {double(trials), p}),
            kef([=](kef_stream* s) { _vtsiRngBinomial(0, s, numbers, integers, trials, p); }),
            standard(std::binomial_distribution<int>(trials, p)),
            boosted(boost::random::binomial_distribution<int>(trials, p)),
            gsl([=](gsl_rng* g) { return gsl_ran_binomial(g, p, trials); })};
}

Row hypergeometric(int population, int sample, int marked) {
    return {name("hypergeometric", {double(population), double(sample), double(marked)}),
            kef([=](kef_stream* s) {
                _vtsiRngHypergeometric(0, s, numbers, integers, population, sample, marked);
            }),
            nullptr, nullptr, gsl([=](gsl_rng* g) {
                return gsl_ran_hypergeometric(g, marked, population - marked, sample);
            })};
}

Row negbinomial(double a, double p) {
    const int whole = static_cast<int>(a);
    const bool is_whole = whole == a;
    return {
        name("negbinomial", {a, p}),
        kef([=](kef_stream* s) { _vtsiRngNegbinomial(0, s, numbers, integers, a, p); }),
        is_whole ? standard(std::negative_binomial_distribution<int>(whole, p)) : nullptr,
        is_whole ? boosted(boost::random::negative_binomial_distribution<int>(whole, p)) : nullptr,
        gsl([=](gsl_rng* g) { return gsl_ran_negative_binomial(g, p, a); })};
}

}  // namespace

Section discrete_laws() {
    return {
        {"bernoulli 0.3",
         kef([](kef_stream* s) { _vtsiRngBernoulli(0, s, numbers, integers, 0.3); }),
         filled<std::mt19937>(std::bernoulli_distribution(0.3)),
         filled<boost::random::mt19937>(boost::random::bernoulli_distribution<>(0.3)),
         gsl([](gsl_rng* g) { return gsl_ran_bernoulli(g, 0.3); })},
        {"geometric 0.3",
         kef([](kef_stream* s) { _vtsiRngGeometric(0, s, numbers, integers, 0.3); }),
         standard(std::geometric_distribution<int>(0.3)),
         boosted(boost::random::geometric_distribution<int>(0.3)),
         gsl([](gsl_rng* g) { return gsl_ran_geometric(g, 0.3); })},
        poisson(0, 3),
        poisson(0, 20),
        poisson(0, 1000),
        poisson(0, 1e5),
        poisson(0, 1e8),
        poisson(1, 20),
        poisson(1, 1e5),
        poisson_v(0.5),
        poisson_v(4),
        poisson_v(20),
        poisson_v(1e5),
        binomial(100, 0.4),
        binomial(10000, 0.4),
        binomial(1000000000, 0.4),
        hypergeometric(1000, 500, 500),
        hypergeometric(1000000, 1000, 300000),
        negbinomial(10, 0.5),
        negbinomial(10, 0.001),
        negbinomial(0.3, 0.01),
    };
}

}  // namespace kef::bench
