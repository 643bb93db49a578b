// The continuous laws other than the normal ones.
#include <stdexcept>

#include "tests/dist_support.h"

namespace {

using namespace dist_tests;

// Both precisions of _vtXRngNAME with its parameters.
struct Draws {
    Draw<double> d;
    Draw<float> s;
};
#define DRAWS(name, ...)                                                                          \
    Draws {                                                                                       \
        [=](kef_stream* t, int n, double* r) { return _vtsdRng##name(0, t, n, r, __VA_ARGS__); }, \
            [=](kef_stream* t, int n, float* r) {                                                 \
                return _vtssRng##name(0, t, n, r, __VA_ARGS__);                                   \
            }                                                                                     \
    }

// Regularised incomplete beta function: continued fraction, Lentz's evaluation.
TwoTails incomplete_beta(double a, double b, double x) {
    if (!(x > 0)) return {0, 1};
    if (!(x < 1)) return {1, 0};
    if (x > (a + 1) / (a + b + 2)) {
        const TwoTails mirrored = incomplete_beta(b, a, 1 - x);
        return {mirrored.q, mirrored.p};
    }
    double c = 1, d = 1 / (1 - (a + b) * x / (a + 1)), fraction = d;
    for (double m = 1; m < 1e6; ++m) {
        const double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
        d = 1 / (1 + even * d), c = 1 + even / c, fraction *= c * d;
        const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
        d = 1 / (1 + odd * d), c = 1 + odd / c, fraction *= c * d;
        if (std::fabs(c * d - 1) < 1e-15) break;
    }
    const double log_beta = std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b);
    const double p = std::exp(a * std::log(x) + b * std::log1p(-x) - log_beta) / a * fraction;
    return {p, 1 - p};
}

Law weibull(double k) {
    const double mean = std::tgamma(1 + 1 / k), square = std::tgamma(1 + 2 / k);
    const auto power = [k](double x) { return std::pow(std::fmax(x, 0), k); };
    const bool light = k >= 1;  // a lighter shape has moments that converge too slowly
    return {[=](double x) { return -std::expm1(-power(x)); },
            [=](double x) { return std::exp(-power(x)); }, light ? mean : NAN,
            light ? square - mean * mean : NAN,
            light ? (std::tgamma(1 + 4 / k) - 4 * mean * std::tgamma(1 + 3 / k) +
                     6 * mean * mean * square - 3 * std::pow(mean, 4)) /
                        std::pow(square - mean * mean, 2)
                  : NAN};
}
Law laplace() {
    const auto below = [](double x) { return x < 0 ? std::exp(x) / 2 : 1 - std::exp(-x) / 2; };
    return {below, [=](double x) { return below(-x); }, 0, 2, 6};
}
Law cauchy() {
    const auto below = [](double x) {
        return x < 0 ? std::atan(-1 / x) / M_PI : 0.5 + std::atan(x) / M_PI;
    };
    return {below, [=](double x) { return below(-x); }};
}
Law gumbel() {
    return {[](double x) { return -std::expm1(-std::exp(x)); },
            [](double x) { return std::exp(-std::exp(x)); }, -0.57721566490153286, M_PI * M_PI / 6,
            5.4};
}
Law gamma_law(double a) {
    return {[=](double x) { return incomplete_gamma(a, x).p; },
            [=](double x) { return incomplete_gamma(a, x).q; }, a, a, 3 + 6 / a};
}
Law beta_law(double p, double q) {
    const double s = p + q, excess = 6 * ((p - q) * (p - q) * (s + 1) - p * q * (s + 2)) /
                                     (p * q * (s + 2) * (s + 3));
    return {[=](double x) { return incomplete_beta(p, q, x).p; },
            [=](double x) { return incomplete_beta(p, q, x).q; }, p / s, p * q / (s * s * (s + 1)),
            3 + excess};
}
Law normal(double mean, double variance) {
    const auto below = [](double x) { return std::erfc(-x * M_SQRT1_2) / 2; };
    return affine({below, [=](double x) { return below(-x); }, 0, 1, 3}, mean, std::sqrt(variance));
}

struct Case {
    std::string name;
    Law law;
    Draws draws;
};

std::vector<Case> closed_forms() {
    return {{"exponential", affine(weibull(1), -1, 0.5), DRAWS(Exponential, -1, 0.5)},
            {"laplace", affine(laplace(), 3, 2), DRAWS(Laplace, 3, 2)},
            {"weibull 0.2", weibull(0.2), DRAWS(Weibull, 0.2, 0, 1)},
            {"weibull 3.5", affine(weibull(3.5), 2, 7), DRAWS(Weibull, 3.5, 2, 7)},
            {"weibull 50", weibull(50), DRAWS(Weibull, 50, 0, 1)},
            {"cauchy", affine(cauchy(), -1, 3), DRAWS(Cauchy, -1, 3)},
            {"rayleigh", affine(weibull(2), 1, 0.25), DRAWS(Rayleigh, 1, 0.25)},
            {"gumbel", affine(gumbel(), 5, 2), DRAWS(Gumbel, 5, 2)}};
}
// Small shapes crowd at 0, where only a displacement of 0 leaves floats enough.
std::vector<Case> gammas() {
    std::vector<Case> cases;
    for (const double a : {0.1, 0.3, 0.59, 0.6, 0.97, 1.0, 1.02, 2.5, 40.0, 5000.0}) {
        const double shift = a < 0.6 ? 0 : 2;
        cases.push_back({"gamma " + std::to_string(a), affine(gamma_law(a), shift, 3),
                         DRAWS(Gamma, a, shift, 3)});
    }
    return cases;
}
std::vector<Case> betas() {
    std::vector<Case> cases;
    const std::pair<double, double> shapes[] = {
        {0.3, 0.5},   {0.95, 0.9}, {0.5, 2},
        {3, 0.4},     {0.1, 30},   {1, 1},
        {1, 3},       {2.5, 1},    {1 + 0x1p-52, 1 + 0x1p-51},
        {1.01, 1.02}, {2, 3},      {50, 1.1},
        {300, 200},   {4, 20000},  {0.7, 5e4},
        {9e3, 16e3},  {17e3, 90e3}};
    for (const auto& [p, q] : shapes)
        cases.push_back({"beta " + std::to_string(p) + ", " + std::to_string(q),
                         affine(beta_law(p, q), 0, 4), DRAWS(Beta, p, q, 0, 4)});
    return cases;
}
std::vector<Case> all_cases() {
    std::vector<Case> all = closed_forms();
    for (const auto& more : {gammas(), betas()}) all.insert(all.end(), more.begin(), more.end());
    return all;
}

TEST(DistLaws, ExactLaw) {
    for (const Case& c : all_cases()) {
        SCOPED_TRACE(c.name);
        expect_law(c.law, c.draws.d, 1 << 17);
        expect_law(c.law, c.draws.s, 1 << 17);
    }
}

TEST(DistLaws, Tails) {
    const Case cases[] = {{"exponential", weibull(1), DRAWS(Exponential, 0, 1)},
                          {"gamma 0.4", gamma_law(0.4), DRAWS(Gamma, 0.4, 0, 1)},
                          {"gamma 0.7", gamma_law(0.7), DRAWS(Gamma, 0.7, 0, 1)},
                          {"gamma 3", gamma_law(3), DRAWS(Gamma, 3, 0, 1)},
                          {"beta 0.5, 0.95", beta_law(0.5, 0.95), DRAWS(Beta, 0.5, 0.95, 0, 1)},
                          {"beta 0.5, 4", beta_law(0.5, 4), DRAWS(Beta, 0.5, 4, 0, 1)},
                          {"beta 2, 5", beta_law(2, 5), DRAWS(Beta, 2, 5, 0, 1)}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expect_tails(c.law, c.draws.d);
        expect_tails(c.law, c.draws.s);
    }
    for (const Case& c : closed_forms()) {
        SCOPED_TRACE(c.name);
        expect_tails(c.law, c.draws.d);
    }
}

TEST(DistLaws, Contract) {
    std::vector<Case> cases = all_cases();
    // Exponentials that underflow.
    for (const auto& [p, q] : {std::pair(0.01, 2.0), {0.01, 0.02}, {1e5, 1e-5}})
        cases.push_back({"small shapes", beta_law(p, q), DRAWS(Beta, p, q, 0, 1)});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        expect_contract(c.draws.d, 2500);
        expect_contract(c.draws.s, 2500);
    }
}

TEST(DistLaws, ConsumptionAndParts) {
    for (const Case& c : closed_forms()) {
        SCOPED_TRACE(c.name);
        const int each = c.name == "laplace" ? 2 : 1;
        EXPECT_EQ(consumption(c.draws.d, 2500), 2500 * each);
        EXPECT_EQ(consumption(c.draws.s, 2500), 2500 * each);
        expect_split(c.draws.d, {1, 1023, 1030, 5, 2000, 0, 3});
        expect_split(c.draws.s, {1, 1023, 1030, 5, 2000, 0, 3});
    }
    const Draws ones[] = {DRAWS(Exponential, 3, 2), DRAWS(Weibull, 1, 3, 2), DRAWS(Gamma, 1, 3, 2)};
    for (const Draws& other : ones) {
        EXPECT_EQ(from_listed(other.d, 3001, {}), from_listed(ones[0].d, 3001, {}));
        EXPECT_EQ(from_listed(other.s, 3001, {}), from_listed(ones[0].s, 3001, {}));
    }
}

// The logarithm of a uniform of 0 is -744.44; Gumbel's second logarithm meets the 0 that a uniform
// rounded up to 1 makes.
TEST(DistLaws, EndsOfTheUniform) {
    constexpr double least = 744.4400719213812;
    const auto expect = [](const Draws& draws, std::vector<double> uniforms,
                           const std::vector<double>& numbers) {
        const int n = static_cast<int>(numbers.size());
        const auto d = from_listed(draws.d, n, uniforms);
        const auto s = from_listed(draws.s, n, uniforms);
        for (int i = 0; i < n; ++i) {
            EXPECT_NEAR(d[i], numbers[i], std::fabs(numbers[i]) * 1e-7) << i;
            EXPECT_NEAR(s[i], numbers[i], std::fabs(numbers[i]) * 1e-3) << i;
        }
    };
    expect(DRAWS(Exponential, 1, 2), {0, 0.5, 0}, {1 + 2 * least, 1 + 2 * M_LN2, 1 + 2 * least});
    expect(DRAWS(Laplace, 1, 2), {0, 0.5, 0, 0.51, 0.5, 0},
           {1 + 2 * least, 1 - 2 * least, 1 + 2 * M_LN2});
    expect(DRAWS(Weibull, 0.5, 1, 2), {0, 0.5}, {1 + 2 * least * least, 1 + 2 * M_LN2 * M_LN2});
    expect(DRAWS(Rayleigh, 1, 2), {0, 0.5}, {1 + 2 * std::sqrt(least), 1 + 2 * std::sqrt(M_LN2)});
    expect(DRAWS(Gumbel, 1, 2), {0, 1}, {1 + 2 * std::log(least), 1 - 2 * least});
    expect(DRAWS(Cauchy, 1, 2), {0.25, 0.5, 0.75}, {-1, 1, 3});
    expect(DRAWS(Gamma, 1, 1, 2), {0}, {1 + 2 * least});
    expect(DRAWS(Beta, 3, 1, 1, 2), {0.125}, {2});
    expect(DRAWS(Beta, 1, 3, 1, 2), {0.125}, {2});
}

// Gamma and beta numbers take a uniform of 0, and the 1 that single precision may round to, as a
// number of its cell: none of them lies where the law has nothing to speak of.
TEST(DistLaws, EndsOfTheUniformInRejection) {
    std::vector<Case> cases = gammas();
    std::erase_if(cases, [](const Case& c) { return c.name == "gamma 1.000000"; });
    for (const Case& c : betas()) cases.push_back(c);
    for (const double a : {0.9999, 1e6})
        cases.push_back({"gamma " + std::to_string(a), gamma_law(a), DRAWS(Gamma, a, 0, 1)});
    for (const double q : {1e-3, 1000.0, 1e5})
        for (const bool swap : {false, true})
            cases.push_back({"beta with 1 and " + std::to_string(q),
                             swap ? beta_law(1, q) : beta_law(q, 1),
                             swap ? DRAWS(Beta, 1, q, 0, 1) : DRAWS(Beta, q, 1, 0, 1)});
    const auto check = [](const Case& c, const auto& draw, double end) {
        for (int position = 0; position < 8; ++position) {
            std::vector<double> listed(position, 0.3 + 0.1 * (position % 3));
            listed.push_back(end);
            for (const auto x : from_listed(draw, 4, listed)) {
                const auto huge = std::numeric_limits<decltype(+x)>::max();
                EXPECT_GT(c.law.cdf(std::nextafter(x, huge)), 1e-20) << c.name << ' ' << x;
                EXPECT_GT(c.law.ccdf(std::nextafter(x, -huge)), 1e-20) << c.name << ' ' << x;
            }
        }
    };
    for (const Case& c : cases) {
        check(c, c.draws.d, 0);
        check(c, c.draws.s, 0);
        check(c, c.draws.s, 1);
    }
}

// What a generator of the caller's finds while a law draws, and what becomes of one that throws.
std::uint32_t found_mode;
kef_vtm_error_callback found_callback;
std::int32_t look_around(kef_stream*, std::int32_t n, double* r, double, double) {
    found_mode = kef_vtm_kernel_GetMode();
    found_callback = kef_vtm_kernel_GetErrorCallBack();
    std::fill_n(r, n, 0.5);
    return VTS_STATUS_OK;
}
std::int32_t throw_out(kef_stream*, std::int32_t, double*, double, double) {
    throw std::runtime_error("thrown by a generator");
}
Stream stream_of(decltype(&look_around) generate) {
    kef_brng brng;
    EXPECT_EQ(__vtsGetBrngProperties(__vtsGetStreamStateBrng(probe_stream().get()), &brng), 0);
    brng.generate_double = generate;
    return make_stream(__vtsRegisterBrng(&brng));
}

TEST(DistLaws, CallbacksFindTheLawsMode) {
    const Stream stream = stream_of(look_around);
    double r[3];
    for (const bool bracket : {false, true}) {
        if (bracket) ASSERT_EQ(_vtsdRngRayleigh(0, stream.get(), 3, r, 0, 1), VTS_STATUS_OK);
        else ASSERT_EQ(_vtsdRngCauchy(0, stream.get(), 3, r, 0, 1), VTS_STATUS_OK);
        EXPECT_EQ((found_mode & VTM_ERRMODE_MASK) == VTM_ERRMODE_CALLBACK, bracket);
        EXPECT_EQ(found_callback != nullptr, bracket);
    }
}

#if !defined(_WIN32)  // where it passes
TEST(DistLawsDeathTest, ExceptionEndsTheProcess) {
    const Stream stream = stream_of(throw_out);
    double r[3];
    const auto draw = [&] {
        try {
            _vtsdRngUniform(0, stream.get(), 3, r, 0, 1);
        } catch (...) {}
    };
    EXPECT_DEATH(draw(), "thrown by a generator");
}
#endif

struct Share {
    double place, probability;  // P(X <= place)
};
template <class T> void expect_shares(const Draw<T>& draw, const std::vector<Share>& shares) {
    constexpr int n = 200'000;
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    std::vector<T> x(n);
    ASSERT_EQ(draw(stream.get(), n, x.data()), VTS_STATUS_OK);
    for (const auto& [place, p] : shares) {
        const auto count = std::count_if(x.begin(), x.end(), [&](T v) { return v <= place; });
        EXPECT_NEAR(static_cast<double>(count), n * p, deviations * std::sqrt(n * p * (1 - p)))
            << place;
    }
}

// Numbers that underflow to 0 or round to 1 keep their share. P(X < t) is t^a / (a B) where t is
// small; log2 t is -1075 at 0 and -53 at 1 in double precision, -150 at 0 in single.
TEST(DistLaws, TinyShapes) {
    const auto below = [](double a, double log2_t, double b) {
        return std::exp2(a * log2_t) / (a * b);
    };
    for (const double a : {1e-4, 1e-3, 0.02}) {
        const double g = std::tgamma(a);
        const Draws draws = DRAWS(Gamma, a, 0, 1);
        expect_shares(draws.d, {{0, below(a, -1075, g)},
                                {0x1p-1000, below(a, -1000, g)},
                                {0.01, incomplete_gamma(a, 0.01).p},
                                {1, incomplete_gamma(a, 1).p}});
        expect_shares(draws.s, {{0, below(a, -150, g)}, {1, incomplete_gamma(a, 1).p}});
    }
    for (const auto& [p, q] : {std::pair(0.001, 0.002), {0.0005, 7.0}, {0.003, 1.0}}) {
        const double b = std::exp(std::lgamma(p) + std::lgamma(q) - std::lgamma(p + q));
        const Draws draws = DRAWS(Beta, p, q, 0, 1), mirrored = DRAWS(Beta, q, p, 0, 1);
        const double middle = incomplete_beta(p, q, 0.3).p;
        expect_shares(draws.d, {{0, below(p, -1075, b)}, {0.3, middle}});
        expect_shares(draws.s, {{0, below(p, -150, b)}, {0.3, middle}});
        expect_shares(mirrored.d, {{0.7, 1 - middle}, {1 - 0x1p-52, 1 - below(p, -53, b)}});
    }
    expect_shares(DRAWS(Beta, 1e-300, 3e-300, 0, 1).d, {{0, 0.75}, {0.999, 0.75}, {1, 1}});
    expect_shares(DRAWS(Beta, 1e-30f, 3e-30f, 0, 1).s, {{0, 0.75}, {0.999, 0.75}, {1, 1}});
    expect_shares(DRAWS(Beta, 1e-300, 1e200, 0, 1).d, {{0, 1}});
    expect_shares(DRAWS(Gamma, 1e-320, 0, 1).d, {{0, 1}});
}

// Normal laws, to the root of the shape.
TEST(DistLaws, HugeShapes) {
    for (const double a : {1e9, 1e14}) {
        expect_law(normal(a, a), DRAWS(Gamma, a, 0, 1).d, 1 << 17);
        const double p = a, q = 3 * a, s = p + q;
        expect_law(normal(p / s, p * q / (s * s * s)), DRAWS(Beta, p, q, 0, 1).d, 1 << 17);
    }
    EXPECT_EQ(from_listed(DRAWS(Gamma, 1e300, 0, 1).d, 9, {}), std::vector(9, 1e300));
    EXPECT_EQ(from_listed(DRAWS(Beta, 1e300, 3e300, 0, 1).d, 9, {}), std::vector(9, 0.25));
}

// A stream that repeats one number: the call ends, with numbers of the support. At most (the ratio
// of gamma numbers) three blocks draw twice a hundred rounds of 1024 uniforms.
TEST(DistLaws, RepeatedNumberEnds) {
    int exhausted = 0;
    const auto check = [&exhausted](const std::string& name, const auto& draw, double most) {
        for (const double u : {0.0, 1e-7, 0.25, 0.5, 0.75, 0.999, 1 - 0x1p-24, 1.0})
            for (const int n : {1, 5, 3000}) {
                for (const auto x : from_listed(draw, n, std::vector(650'000, u)))
                    EXPECT_TRUE(x >= 0 && x <= most) << name << ' ' << u << ' ' << x;
                EXPECT_LT(probe.consumed, 650'000);
                exhausted += probe.consumed > 100 * n;
            }
    };
    for (const double a : {1e-5, 0.3, 0.7, 1.5, 1e6}) {
        const Draws draws = DRAWS(Gamma, a, 0, 1);
        check("gamma", draws.d, 1e8);
        check("gamma", draws.s, 1e8);
    }
    for (const auto& [p, q] :
         {std::pair(0.5, 0.9), {1e-5, 0.5}, {0.5, 3.0}, {30.0, 1e-5}, {2.0, 3.0}, {1e5, 1e5}}) {
        const Draws draws = DRAWS(Beta, p, q, 0, 1);
        check("beta", draws.d, 1);
        check("beta", draws.s, 1);
    }
    EXPECT_GT(exhausted, 10);
}

}  // namespace
