// Rows of the normal, lognormal and multivariate normal laws.
#include <gsl/gsl_linalg.h>

#include "bench/dist_bench.h"

namespace kef::bench {

namespace {

template <class T> Call kef_normal(int method) {
    return kef([method](kef_stream* s) {
        if constexpr (sizeof(T) == 8) _vtsdRngGaussian(method, s, numbers, doubles, 0, 1);
        else _vtssRngGaussian(method, s, numbers, singles, 0, 1);
    });
}
template <class T> Call kef_lognormal(int method) {
    return kef([method](kef_stream* s) {
        if constexpr (sizeof(T) == 8) _vtsdRngLognormal(method, s, numbers, doubles, 0, 1, 0, 1);
        else _vtssRngLognormal(method, s, numbers, singles, 0, 1, 0, 1);
    });
}

// 10 * numbers / d vectors of dimension d, the factor T(i, j) = 1 / (1 + i + j) with a one on the
// diagonal.
struct Vectors {
    int d, n;
    std::vector<double> mean, factor, r;
    explicit Vectors(int d)
        : d(d), n(10 * numbers / d), mean(d, 1), factor(d * d, 0), r(10 * numbers) {
        for (int i = 0; i < d; ++i)
            for (int j = 0; j <= i; ++j) factor[i * d + j] = i == j ? 1 : 1.0 / (1 + i + j);
    }
};

Row vectors(int d) {
    const auto v = std::make_shared<Vectors>(d);
    const std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
    return {"normal vectors of " + std::to_string(d),
            kef([=](kef_stream* s) {
                _vtsdRngGaussianMV(VTS_METHOD_GAUSSIAN_INVERSION, s, v->n, v->r.data(), d,
                                   VTS_MATRIX_FULL, v->mean.data(), v->factor.data());
            }),
            {},
            {},
            [=] {
                const gsl_vector_view mean = gsl_vector_view_array(v->mean.data(), d);
                const gsl_matrix_view factor = gsl_matrix_view_array(v->factor.data(), d, d);
                for (int i = 0; i < v->n; ++i) {
                    gsl_vector_view r = gsl_vector_view_array(&v->r[i * d], d);
                    gsl_ran_multivariate_gaussian(rng.get(), &mean.vector, &factor.matrix,
                                                  &r.vector);
                }
            },
            10};
}

}  // namespace

Section gaussian_laws() {
    Section rows;
    for (int method = 0; method < 3; ++method) {
        const std::string name = "method " + std::to_string(method);
        rows.push_back({"normal, " + name, kef_normal<double>(method),
                        standard(std::normal_distribution<double>()),
                        boosted(boost::random::normal_distribution<double>()),
                        gsl([](gsl_rng* r) { return gsl_ran_gaussian_ziggurat(r, 1); })});
        rows.push_back({"normal single, " + name,
                        kef_normal<float>(method),
                        standard(std::normal_distribution<float>()),
                        boosted(boost::random::normal_distribution<float>()),
                        {}});
    }
    for (int method = 0; method < 2; ++method) {
        const std::string name = "method " + std::to_string(method);
        rows.push_back({"lognormal, " + name, kef_lognormal<double>(method),
                        standard(std::lognormal_distribution<double>()),
                        boosted(boost::random::lognormal_distribution<double>()),
                        gsl([](gsl_rng* r) { return gsl_ran_lognormal(r, 0, 1); })});
        rows.push_back({"lognormal single, " + name,
                        kef_lognormal<float>(method),
                        standard(std::lognormal_distribution<float>()),
                        boosted(boost::random::lognormal_distribution<float>()),
                        {}});
    }
    for (const int d : {2, 10, 100}) rows.push_back(vectors(d));
    return rows;
}

}  // namespace kef::bench
