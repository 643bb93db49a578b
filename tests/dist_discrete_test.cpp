// Bernoulli, geometric, binomial, hypergeometric, Poisson and negative binomial numbers.
#include "tests/dist_support.h"

namespace {

using namespace dist_tests;
using Integers = Draw<std::int32_t>;

struct Case {
    std::string name;
    Law law;
    Integers draw;
};

Case poisson(int method, double mean) {
    return {"Poisson " + std::to_string(method) + ' ' + std::to_string(mean),
            tabulated([=](double k) { return k * std::log(mean) - mean - std::lgamma(k + 1); }, 0,
                      INT32_MAX, std::floor(mean)),
            [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                return _vtsiRngPoisson(method, s, n, r, mean);
            }};
}

// Every second number is of the mean `other`, and left out.
Case poisson_v(double mean, double other) {
    Case c = poisson(0, mean);
    c.name = "PoissonV " + std::to_string(mean);
    c.draw = [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
        n = std::max(n, 0);
        std::vector<double> means(2 * n, other);
        std::vector<std::int32_t> both(2 * n);
        for (int i = 0; i < n; ++i) means[2 * i] = mean;
        const std::int32_t status = _vtsiRngPoissonV(0, s, 2 * n, both.data(), means.data());
        for (int i = 0; i < n; ++i) r[i] = both[2 * i];
        return status;
    };
    return c;
}

Case binomial(int trials, double p) {
    const double t = trials;
    return {"Binomial " + std::to_string(trials) + ' ' + std::to_string(p),
            tabulated(
                [=](double k) {
                    return k * std::log(p) + (t - k) * std::log1p(-p) - std::lgamma(k + 1) -
                           std::lgamma(t - k + 1);
                },
                0, t, std::min(t, std::floor((t + 1) * p))),
            [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                return _vtsiRngBinomial(0, s, n, r, trials, p);
            }};
}

Case hypergeometric(int population, int sample, int marked) {
    const double rest = double(population) - marked, l = population, s = sample, m = marked;
    return {"Hypergeometric " + std::to_string(population) + ' ' + std::to_string(sample) + ' ' +
                std::to_string(marked),
            tabulated(
                [=](double k) {
                    return -std::lgamma(k + 1) - std::lgamma(m - k + 1) - std::lgamma(s - k + 1) -
                           std::lgamma(rest - s + k + 1);
                },
                std::max(0.0, s - rest), std::min(s, m),
                std::clamp(std::floor((s + 1) * (m + 1) / (l + 2)), std::max(0.0, s - rest),
                           std::min(s, m))),
            [=](kef_stream* stream, std::int32_t n, std::int32_t* r) {
                return _vtsiRngHypergeometric(0, stream, n, r, population, sample, marked);
            }};
}

Case negbinomial(double a, double p) {
    return {
        "Negbinomial " + std::to_string(a) + ' ' + std::to_string(p),
        tabulated(
            [=](double k) { return std::lgamma(k + a) - std::lgamma(k + 1) + k * std::log1p(-p); },
            0, INT32_MAX, a > 1 ? std::floor((a - 1) * (1 - p) / p) : 0),
        [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
            return _vtsiRngNegbinomial(0, s, n, r, a, p);
        }};
}

Case geometric(double p) {
    return {
        "Geometric " + std::to_string(p),
        {[=](double k) { return k < 0 ? 0 : -std::expm1((std::floor(k) + 1) * std::log1p(-p)); },
         [=](double k) { return k < 0 ? 1 : std::exp((std::floor(k) + 1) * std::log1p(-p)); },
         (1 - p) / p, (1 - p) / (p * p), 9 + p * p / (1 - p), true},
        [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
            return _vtsiRngGeometric(0, s, n, r, p);
        }};
}

// The same in calls for few numbers, where other methods pay.
Case in_short_calls(Case c, int length) {
    c.name += " in short calls";
    c.draw = [draw = c.draw, length](kef_stream* s, std::int32_t n, std::int32_t* r) {
        std::int32_t status = VTS_STATUS_OK;
        for (; n > 0 && status >= 0; n -= length, r += length)
            status = draw(s, std::min(n, length), r);
        return status;
    };
    return c;
}

void expect_laws(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expect_law(c.law, c.draw);
    }
}

// Tables and strips, small and huge parameters, both ends of a probability.
TEST(Discrete, Poisson) {
    for (const int method : {0, 1})
        expect_laws({poisson(method, 1e-3), poisson(method, 0.7), poisson(method, 3),
                     poisson(method, 99.5), poisson(method, 100), poisson(method, 2000.25),
                     poisson(method, 65537), poisson(method, 1e8), poisson(method, 2e9)});
    for (const double mean : {0.3, 20.0, 300.0})
        for (const int length : {1, 40}) expect_laws({in_short_calls(poisson(0, mean), length)});
    expect_laws({poisson_v(1e-3, 1e5), poisson_v(2, 30), poisson_v(9.999, 0), poisson_v(10, 1),
                 poisson_v(12.5, 1e9), poisson_v(70, 70), poisson_v(5000, 3), poisson_v(1e8, 1e8),
                 poisson_v(2e9, 1e-3)});
}

TEST(Discrete, Binomial) {
    expect_laws({binomial(1, 0.3), binomial(20, 0.5), binomial(20, 0.999), binomial(100, 0.4),
                 binomial(100000, 0.7), binomial(1000000000, 1e-9), binomial(1000000000, 3e-6),
                 binomial(1000000000, 0.4), binomial(1000000000, 1 - 2e-9),
                 binomial(INT32_MAX, 0.5), binomial(INT32_MAX, 0.99999)});
    expect_laws({in_short_calls(binomial(20, 0.5), 2), in_short_calls(binomial(200, 0.5), 3),
                 in_short_calls(binomial(50000, 0.01), 50)});
}

TEST(Discrete, Hypergeometric) {
    expect_laws({hypergeometric(10, 4, 3), hypergeometric(10, 8, 7), hypergeometric(1000, 500, 500),
                 hypergeometric(1000, 999, 2), hypergeometric(1000000, 300000, 500000),
                 hypergeometric(INT32_MAX, 1000, 1000000000),
                 hypergeometric(INT32_MAX, INT32_MAX - 5000, 1000000),
                 hypergeometric(INT32_MAX, 1 << 30, 1 << 30),
                 hypergeometric(2000000000, 1999999000, 1999000000)});
    expect_laws({in_short_calls(hypergeometric(1000, 500, 500), 4),
                 in_short_calls(hypergeometric(1000000, 999000, 900000), 30)});
}

// Tables, strips and the mixture.
TEST(Discrete, Negbinomial) {
    expect_laws({negbinomial(10, 0.5), negbinomial(0.3, 0.5), negbinomial(1, 0.2),
                 negbinomial(2.5, 0.9999), negbinomial(1, 1e-3), negbinomial(1.01, 1e-4),
                 negbinomial(10, 1e-3), negbinomial(1e5, 0.3), negbinomial(1e9, 1 - 1e-6),
                 negbinomial(0.3, 0.005), negbinomial(0.9, 1e-4), negbinomial(1e-3, 1e-3)});
    expect_laws({in_short_calls(negbinomial(1, 0.05), 1), in_short_calls(negbinomial(7.7, 0.1), 60),
                 in_short_calls(negbinomial(0.5, 0.01), 3)});
}

TEST(Discrete, Geometric) {
    // Single precision: floor(x) of 24 bits, so no larger numbers than this has.
    expect_laws({geometric(0.001), geometric(0.3), geometric(0.99)});
}

// One law of each method.
TEST(Discrete, Tails) {
    for (const Case& c : {poisson(0, 3), poisson(0, 1e5), poisson(1, 1e5), poisson_v(5, 0),
                          poisson_v(11, 0), hypergeometric(100000000, 30000000, 20000000),
                          negbinomial(3, 1e-3), negbinomial(0.6, 1e-3), geometric(0.4)}) {
        SCOPED_TRACE(c.name);
        expect_tails(c.law, c.draw);
    }
}

TEST(Discrete, Contract) {
    for (const Case& c :
         {poisson(0, 3), poisson(0, 1e5), poisson(1, 3), poisson(1, 1e6), poisson_v(3, 1e6),
          binomial(100, 0.4), binomial(1000000000, 0.4), hypergeometric(1000, 500, 500),
          hypergeometric(1000000, 300000, 500000), negbinomial(10, 0.5), negbinomial(10, 1e-3),
          negbinomial(0.5, 1e-3), geometric(0.3)}) {
        SCOPED_TRACE(c.name);
        expect_contract(c.draw, 2501);
        expect_contract(c.draw, 3);
    }
    expect_contract<std::int32_t>(
        [](kef_stream* s, std::int32_t n, std::int32_t* r) {
            return _vtsiRngBernoulli(0, s, n, r, 0.3);
        },
        11);
}

TEST(Discrete, BernoulliBits) {
    const double below = 0.5 - 0x1p-25;
    const std::vector<double> uniforms = {0, 0x1p-24, below, 0.5, 0.5 + 0x1p-24, 1 - 0x1p-24, 1};
    const auto expect = [&](double p, std::vector<std::int32_t> numbers) {
        const Integers draw = [p](kef_stream* s, std::int32_t n, std::int32_t* r) {
            return _vtsiRngBernoulli(77, s, n, r, p);
        };
        EXPECT_EQ(from_listed(draw, 7, uniforms), numbers) << p;
        EXPECT_EQ(consumption(draw, 1001), 1001);
        expect_split(draw, {1, 2, 3, 0, 1021});
    };
    expect(0.5, {1, 1, 1, 0, 0, 0, 0});
    expect(0.5 + 0x1p-30, {1, 1, 1, 0, 0, 0, 0});  // rounds to 0.5
    expect(1e-50, {0, 0, 0, 0, 0, 0, 0});          // rounds to 0
    expect(0, {0, 0, 0, 0, 0, 0, 0});
    expect(-0.25, {0, 0, 0, 0, 0, 0, 0});
    expect(1 - 0x1p-24, {1, 1, 1, 1, 1, 0, 0});
    expect(1 - 0x1p-30, {1, 1, 1, 1, 1, 1, 1});  // rounds to 1
    expect(1, {1, 1, 1, 1, 1, 1, 1});
    expect(1.5, {1, 1, 1, 1, 1, 1, 1});
}

TEST(Discrete, GeometricBits) {
    const auto numbers = [](double p, std::vector<double> uniforms) {
        return from_listed<std::int32_t>(
            [p](kef_stream* s, std::int32_t n, std::int32_t* r) {
                return _vtsiRngGeometric(0, s, n, r, p);
            },
            static_cast<int>(uniforms.size()), uniforms);
    };
    using Numbers = std::vector<std::int32_t>;
    // ln u / ln(1/2): the floor of -log2 u; ln 0 counts as -744.44.
    EXPECT_EQ(numbers(0.5, {1, 0.75, 0.51, 0.26, 0.2, 0x1p-24 * 1.1, 0}),
              (Numbers{0, 0, 0, 1, 2, 23, 1074}));
    EXPECT_EQ(numbers(1, {0, 0.5, 1}), (Numbers{0, 0, 0}));
    // The largest finite numbers do not fit; 1 - p that rounds to 1 makes all of them infinite.
    EXPECT_EQ(numbers(1e-9, {0, 0.01, 0.5}),
              (Numbers{INT32_MAX, INT32_MAX,
                       static_cast<std::int32_t>(std::log(0.5f) *
                                                 static_cast<float>(1 / std::log(1 - 1e-9)))}));
    EXPECT_EQ(numbers(1e-20, {0, 0.5, 1}), (Numbers{INT32_MAX, INT32_MAX, 0}));
    const Integers draw = geometric(0.2).draw;
    EXPECT_EQ(consumption(draw, 3001), 3001);
    expect_split(draw, {1, 2, 0, 1021, 1500});
}

// P(X > 0) = 0.168 2^-24: the last cell of the first uniform leaves it to the second.
TEST(Discrete, CellsAreDivided) {
    const double mean = 1e-8;
    for (const double second : {0.80, 0.86}) {
        const std::int32_t expected = second > 0.832;
        std::int32_t r = -1;
        Stream stream = probe_stream({1 - 0x1p-24, second});
        EXPECT_EQ(_vtsiRngPoisson(0, stream.get(), 1, &r, mean), VTS_STATUS_OK);
        EXPECT_EQ(r, expected);
        stream = probe_stream({1 - 0x1p-24, second});
        EXPECT_EQ(_vtsiRngPoissonV(0, stream.get(), 1, &r, &mean), VTS_STATUS_OK);
        EXPECT_EQ(r, expected);
    }
}

// A uniform of 0 makes a normal number of 38.6 deviations, which has no place in a tail.
TEST(Discrete, TailOfNormals) {
    std::vector<double> listed;
    for (int i = 0; i < 8; ++i) listed.insert(listed.end(), {0, 0.25});
    for (const Integers& draw : {poisson(1, 1e4).draw, poisson_v(1e4, 1).draw}) {
        const std::int32_t r = from_listed(draw, 4, listed).front();
        EXPECT_GE(r, 1e4 + 4 * 100);
        EXPECT_LE(r, 1e4 + 10 * 100);
    }
    // On the left with a sine below 0, where U is 0.75 and the tail's own uniforms are not listed.
    for (std::size_t i = 1; i < listed.size(); i += 2) listed[i] = 0.75;
    listed.resize(12);
    const std::int32_t left = from_listed(poisson(1, 1e4).draw, 4, listed)[1];
    EXPECT_LE(left, 1e4 - 4 * 100);
    EXPECT_GE(left, 1e4 - 10 * 100);
}

TEST(Discrete, SinglePrecisionIsEnough) {
    for (const Case& c : {poisson(0, 3), poisson(0, 1e5), poisson(1, 1e5), poisson_v(3, 1e5),
                          binomial(100, 0.4), hypergeometric(1000, 500, 500), negbinomial(10, 0.5),
                          negbinomial(10, 1e-3), geometric(0.3)}) {
        const Stream stream = probe_stream();
        probe.double_status = VTS_STATUS_WRONG_ABSTRACT_TYPE;
        std::int32_t r[100];
        EXPECT_EQ(c.draw(stream.get(), 100, r), VTS_STATUS_OK) << c.name;
    }
}

// Extreme parameters, and generators that give no random numbers: every call ends, with numbers of
// the support.
TEST(Discrete, EndsInTheSupport) {
    const auto expect = [](const char* what, const Integers& draw, double low, double high) {
        const auto judge = [&](const Stream& stream) {
            for (const int n : {1, 30, 1100}) {
                std::vector<std::int32_t> r(n);
                ASSERT_EQ(draw(stream.get(), n, r.data()), VTS_STATUS_OK);
                const auto [least, most] = std::minmax_element(r.begin(), r.end());
                EXPECT_GE(*least, low) << what << ' ' << n;
                EXPECT_LE(*most, high) << what << ' ' << n;
            }
        };
        {
            SCOPED_TRACE(what);
            const RaisedFlags flags;
            judge(make_stream(VTS_BRNG_MT19937));
            judge(make_stream(VTS_BRNG_MCG31M1));
        }
        for (const double value : {0.0, 0x1p-24, 0.5, 0.999, 1 - 0x1p-24, 1.0, 2.0, 1e30, -1e30,
                                   -1.0, double{INFINITY}, double{NAN}, -double{NAN}}) {
            SCOPED_TRACE(value);
            for (const auto& numbers : {std::vector{value}, {value, 0.3, 0.8}}) {
                const Stream stream = probe_stream(numbers);
                probe.repeats = true;
                judge(stream);
            }
        }
    };
    for (const int method : {0, 1, VTS_METHOD_ACCURATE + 0, VTS_METHOD_ACCURATE + 1})
        for (const double mean :
             {0.0, 1e-300, 1.0, 30.0, 1e3, 1e6, 2147483647.0, 4294967295.0, 1e300})
            expect(
                "Poisson",
                [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                    return _vtsiRngPoisson(method, s, n, r, mean);
                },
                mean > 2.2e9 ? INT32_MAX : 0, mean == 0 ? 0 : INT32_MAX);
    expect(
        "PoissonV",
        [](kef_stream* s, std::int32_t n, std::int32_t* r) {
            std::vector<double> means(n);
            for (int i = 0; i < n; ++i) means[i] = std::pow(10, i % 600 - 300);
            return _vtsiRngPoissonV(0, s, n, r, means.data());
        },
        0, INT32_MAX);
    for (const int trials : {0, 1, 7, 5000, INT32_MAX})
        for (const double p : {0.0, 1e-300, 1e-9, 0.1, 0.5, 1 - 1e-9, 1 - 0x1p-53, 1.0})
            expect(
                "Binomial",
                [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                    return _vtsiRngBinomial(0, s, n, r, trials, p);
                },
                p == 1 ? trials : 0, p == 0 ? 0 : trials);
    for (const double a : {1e-300, 1e-9, 0.5, 1.0, 40.0, 1e9, 1e300})
        for (const double p : {1e-310, 1e-300, 1e-17, 1e-10, 1e-5, 0.5, 1 - 0x1p-53, 1.0})
            expect(
                "Negbinomial",
                [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                    return _vtsiRngNegbinomial(0, s, n, r, a, p);
                },
                a == 1e300 && p < 1 ? INT32_MAX : 0, p == 1 ? 0 : INT32_MAX);
    const std::pair<int, std::vector<int>> populations[] = {
        {0, {0}},
        {1, {0, 1}},
        {5, {0, 1, 2, 3, 4, 5}},
        {INT32_MAX, {0, 1, 1 << 20, 1 << 30, INT32_MAX - 3}}};
    for (const auto& [population, counts] : populations)
        for (const int sample : counts)
            for (const int marked : counts)
                expect(
                    "Hypergeometric",
                    [=](kef_stream* s, std::int32_t n, std::int32_t* r) {
                        return _vtsiRngHypergeometric(0, s, n, r, population, sample, marked);
                    },
                    std::max(0.0, double(sample) + marked - population), std::min(sample, marked));
}

}  // namespace
