// Rows of the distribution bench: a law, KEF's call and what users take instead, all over MT19937.
#pragma once

#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <boost/random.hpp>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kef_dist.h"

namespace kef::bench {

inline constexpr int numbers = 1000;  // of one call
alignas(64) inline double doubles[numbers];
alignas(64) inline float singles[numbers];
alignas(64) inline std::int32_t integers[numbers];

// Makes `numbers` numbers; empty where there is no such thing.
using Call = std::function<void()>;

struct Row {
    std::string law;
    Call kef, standard, boost, gsl;
    int each = 1;  // a call makes so many times `numbers`
};
using Section = std::vector<Row>;
Section gaussian_laws(), continuous_laws(), discrete_laws();

// KEF: call(stream).
template <class F> Call kef(F call) {
    const std::uint32_t seed = 777;
    kef_stream* stream = nullptr;
    __vtsNewStreamEx(&stream, VTS_BRNG_MT19937, 1, &seed);
    const std::shared_ptr<kef_stream> owner(stream, [](kef_stream* s) { __vtsDeleteStream(&s); });
    return [=] { call(owner.get()); };
}

// Where the numbers of a type go.
inline double* place(double) { return doubles; }
inline float* place(float) { return singles; }
inline std::int32_t* place(int) { return integers; }
inline std::int32_t* place(unsigned) { return integers; }

template <class Engine, class Distribution> Call filled(Distribution distribution) {
    return [engine = Engine(), distribution]() mutable {
        auto* const r = place(typename Distribution::result_type());
        for (int i = 0; i < numbers; ++i) r[i] = distribution(engine);
    };
}
// A distribution object of the C++ standard library; of Boost.
template <class Distribution> Call standard(Distribution distribution) {
    return filled<std::mt19937>(distribution);
}
template <class Distribution> Call boosted(Distribution distribution) {
    return filled<boost::random::mt19937>(distribution);
}

// GSL: one number from each sample(rng).
template <class F> Call gsl(F sample) {
    const std::shared_ptr<gsl_rng> rng(gsl_rng_alloc(gsl_rng_mt19937), gsl_rng_free);
    return [=] {
        auto* const r = place(decltype(sample(rng.get()) + 0)());
        for (int i = 0; i < numbers; ++i) r[i] = sample(rng.get());
    };
}

}  // namespace kef::bench
