// Distributions when there is no memory: laws that keep a pair in the stream allocate it and its
// chunk, no other law allocates at all.
#include <functional>

#include "kef_dist.h"
#include "tests/internal/failing_allocator.h"
#include "tests/rng_streams.h"

namespace {

constexpr int n = 2001;  // odd: a pair is left; more than a block
double doubles[2 * n];
float singles[2 * n];
std::int32_t integers[n];

struct Call {
    const char* law;
    long allocations;
    std::function<std::int32_t(kef_stream*)> draw;
};
#define KEF_REALS(allocations, law, method, ...)                                             \
    {#law, allocations,                                                                      \
     [](kef_stream* s) { return _vtsdRng##law(method, s, n, doubles, __VA_ARGS__); }},       \
    {                                                                                        \
#law, allocations,                                                                   \
            [](kef_stream * s) { return _vtssRng##law(method, s, n, singles, __VA_ARGS__); } \
    }
#define KEF_INTEGERS(law, ...)                                                                \
    {                                                                                         \
#law, 0, [](kef_stream * s) { return _vtsiRng##law(0, s, n, integers, __VA_ARGS__); } \
    }

constexpr double mean_d[2] = {}, factor_d[4] = {1, 0, 1, 1}, means[n] = {3, 30, 3e9};
constexpr float mean_s[2] = {}, factor_s[4] = {1, 0, 1, 1};
const Call calls[] = {
    KEF_REALS(0, Uniform, 0, 0, 1),
    KEF_REALS(0, Gaussian, 0, 0, 1),
    KEF_REALS(2, Gaussian, 1, 0, 1),
    KEF_REALS(0, Gaussian, 2, 0, 1),
    KEF_REALS(2, Lognormal, 0, 0, 1, 0, 1),
    KEF_REALS(0, Lognormal, 1, 0, 1, 0, 1),
    {"GaussianMV", 2,
     [](kef_stream* s) { return _vtsdRngGaussianMV(1, s, n, doubles, 2, 0, mean_d, factor_d); }},
    {"GaussianMV", 2,
     [](kef_stream* s) { return _vtssRngGaussianMV(1, s, n, singles, 2, 0, mean_s, factor_s); }},
    KEF_REALS(0, Exponential, 0, 0, 1),
    KEF_REALS(0, Laplace, 0, 0, 1),
    KEF_REALS(0, Weibull, 0, 2.5, 0, 1),
    KEF_REALS(0, Cauchy, 0, 0, 1),
    KEF_REALS(0, Rayleigh, 0, 0, 1),
    KEF_REALS(0, Gumbel, 0, 0, 1),
    KEF_REALS(0, Gamma, 0, 0.3, 0, 1),
    KEF_REALS(0, Gamma, 0, 0.8, 0, 1),
    KEF_REALS(0, Gamma, 0, 8, 0, 1),
    KEF_REALS(0, Beta, 0, 0.3, 0.5, 0, 1),
    KEF_REALS(0, Beta, 0, 0.3, 5, 0, 1),
    KEF_REALS(0, Beta, 0, 3, 5, 0, 1),
    KEF_REALS(0, Beta, 0, 3e5, 5e5, 0, 1),
    KEF_INTEGERS(Uniform, 0, 9),
    KEF_INTEGERS(Bernoulli, 0.3),
    KEF_INTEGERS(Geometric, 0.3),
    KEF_INTEGERS(Binomial, 1000, 0.3),
    KEF_INTEGERS(Hypergeometric, 1000000, 1000, 300000),
    KEF_INTEGERS(Poisson, 3),
    KEF_INTEGERS(Poisson, 1e6),
    KEF_INTEGERS(PoissonV, means),
    KEF_INTEGERS(Negbinomial, 0.5, 0.001),
};

TEST(DistMemory, EveryAllocation) {
    for (const Call& call : calls) {
        SCOPED_TRACE(call.law);
        const Bytes fresh = image_of(make_stream(VTS_BRNG_MT19937));
        const Stream other = make_stream(VTS_BRNG_MT19937);
        ASSERT_EQ(call.draw(other.get()), VTS_STATUS_OK);
        const Bytes drawn = image_of(other);
        const long allocations = kef::test::for_each_failed_allocation(
            [] { return make_stream(VTS_BRNG_MT19937); },
            [&](const Stream& stream) { return call.draw(stream.get()); },
            [&](const Stream& stream, std::int32_t status, bool failed) {
                EXPECT_EQ(status, failed ? VTS_STATUS_NO_MEMORY : VTS_STATUS_OK);
                EXPECT_EQ(image_of(stream), failed ? fresh : drawn);
                if (!failed) return;
                EXPECT_EQ(call.draw(stream.get()), VTS_STATUS_OK);
                EXPECT_EQ(image_of(stream), drawn);
            });
        EXPECT_EQ(allocations, call.allocations);
    }
}

}  // namespace
