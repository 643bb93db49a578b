#include "laws.h"

#include <cmath>

namespace command {

namespace {

constexpr int normal_methods[] = {VTS_METHOD_GAUSSIAN_INVERSION, VTS_METHOD_GAUSSIAN_BOX_MULLER,
                                  VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS};
const std::vector<const char*> normal_names = {"inversion", "box-muller", "pairs"};
const std::vector<int> normal_codes(std::begin(normal_methods), std::end(normal_methods));

constexpr Parameter displacement = {"a", Domain::any, 0}, size = {"beta", Domain::above_zero, 1};

const char* ascending(const double* p) { return p[0] < p[1] ? nullptr : "a is not below b"; }

// The functions of one element type and 0 to 4 parameters, as draw of a row.
#define REAL(function, ...)                                               \
    Element::real, [](const Drawing& d, std::int32_t n, void* to) {       \
        [[maybe_unused]] const double* p = d.p;                           \
        return function(d.method, d.stream, n, (double*)to, __VA_ARGS__); \
    }
#define INTEGER(function, ...)                                                  \
    Element::integer, [](const Drawing& d, std::int32_t n, void* to) {          \
        [[maybe_unused]] const double* p = d.p;                                 \
        return function(d.method, d.stream, n, (std::int32_t*)to, __VA_ARGS__); \
    }

}  // namespace

// clang-format off
const std::vector<Law> laws = {
    {"uniform", "on [a, b)", {{"a", Domain::any, 0}, {"b", Domain::any, 1}},
     {"standard", "accurate"}, {VTS_METHOD_STANDARD, VTS_METHOD_ACCURATE}, REAL(_vtsdRngUniform, p[0], p[1]), ascending},
    {"gaussian", "normal", {{"mean", Domain::any, 0}, {"sigma", Domain::above_zero, 1}},
     normal_names, normal_codes, REAL(_vtsdRngGaussian, p[0], p[1])},
    {"vectors", "normal vectors mean + T z, covariance T T^t; T by rows, the lower triangle",
     {{"mean", Domain::list}, {"factor", Domain::list}}, normal_names, normal_codes,
     Element::real, [](const Drawing& d, std::int32_t n, void* to) {
         return _vtsdRngGaussianMV(d.method, d.stream, n, (double*)to, (std::int32_t)d.list.size(),
                                   VTS_MATRIX_FULL, d.list.data(), d.factor.data());
     }},
    {"lognormal", "b + beta exp(x), x normal", {{"mean", Domain::any, 0}, {"sigma", Domain::above_zero, 1}, {"b", Domain::any, 0}, size},
     {"inversion", "pairs"}, {VTS_METHOD_LOGNORMAL_INVERSION, VTS_METHOD_LOGNORMAL_BOX_MULLER_PAIRS},
     REAL(_vtsdRngLognormal, p[0], p[1], p[2], p[3])},
    {"exponential", "a + beta X, density e^-x", {displacement, size}, {}, {}, REAL(_vtsdRngExponential, p[0], p[1])},
    {"laplace", "a + beta X, density e^-|x| / 2", {displacement, size}, {}, {}, REAL(_vtsdRngLaplace, p[0], p[1])},
    {"weibull", "a + beta X, P(X > x) = e^-(x^alpha)", {{"alpha", Domain::above_zero}, displacement, size}, {}, {},
     REAL(_vtsdRngWeibull, p[0], p[1], p[2])},
    {"cauchy", "a + beta X, density 1 / (pi (1 + x^2))", {displacement, size}, {}, {}, REAL(_vtsdRngCauchy, p[0], p[1])},
    {"rayleigh", "a + beta X, P(X > x) = e^-(x^2)", {displacement, size}, {}, {}, REAL(_vtsdRngRayleigh, p[0], p[1])},
    {"gumbel", "a + beta X, of minima, P(X > x) = e^-(e^x)", {displacement, size}, {}, {}, REAL(_vtsdRngGumbel, p[0], p[1])},
    {"gamma", "a + beta X of shape alpha", {{"alpha", Domain::above_zero}, displacement, size}, {}, {},
     REAL(_vtsdRngGamma, p[0], p[1], p[2])},
    {"beta", "a + beta X of shapes p and q", {{"p", Domain::above_zero}, {"q", Domain::above_zero}, displacement, size}, {}, {},
     REAL(_vtsdRngBeta, p[0], p[1], p[2], p[3])},
    {"integer", "uniform on a, ..., b - 1", {{"a", Domain::whole}, {"b", Domain::whole}}, {}, {},
     INTEGER(_vtsiRngUniform, (std::int32_t)p[0], (std::int32_t)p[1]), ascending},
    {"bernoulli", "1 with probability p, else 0", {{"p", Domain::probability}}, {}, {}, INTEGER(_vtsiRngBernoulli, p[0])},
    {"geometric", "failures before the first success", {{"p", Domain::chance}}, {}, {}, INTEGER(_vtsiRngGeometric, p[0])},
    {"binomial", "successes in so many trials", {{"trials", Domain::count}, {"p", Domain::probability}}, {}, {},
     INTEGER(_vtsiRngBinomial, (std::int32_t)p[0], p[1])},
    {"hypergeometric", "marked ones in a sample without replacement",
     {{"population", Domain::count}, {"sample", Domain::count}, {"marked", Domain::count}}, {}, {},
     INTEGER(_vtsiRngHypergeometric, (std::int32_t)p[0], (std::int32_t)p[1], (std::int32_t)p[2]),
     [](const double* p) -> const char* {
         return p[1] > p[0] ? "sample is above population" : p[2] > p[0] ? "marked is above population" : nullptr;
     }},
    {"poisson", "of mean lambda", {{"lambda", Domain::not_negative}}, {"uniform", "normal"},
     {VTS_METHOD_POISSON_UNIFORM, VTS_METHOD_POISSON_NORMAL}, INTEGER(_vtsiRngPoisson, p[0])},
    {"poisson-means", "Poisson, the means in turn", {{"lambdas", Domain::means}}, {}, {},
     Element::integer, [](const Drawing& d, std::int32_t n, void* to) {
         return _vtsiRngPoissonV(d.method, d.stream, n, (std::int32_t*)to, d.list.data());
     }},
    {"negbinomial", "failures before the a-th success", {{"a", Domain::above_zero}, {"p", Domain::chance}}, {}, {},
     INTEGER(_vtsiRngNegbinomial, p[0], p[1])},
    {"words", "the generator's own words", {}, {}, {}, Element::word32,
     [](const Drawing& d, std::int32_t n, void* to) { return _vtsiRngUniformBits(0, d.stream, n, to); }},
    {"bits32", "32 random bits", {}, {}, {}, Element::word32,
     [](const Drawing& d, std::int32_t n, void* to) { return _vtsiRngUniformBits32(0, d.stream, n, (std::uint32_t*)to); }},
    {"bits64", "64 random bits", {}, {}, {}, Element::word64,
     [](const Drawing& d, std::int32_t n, void* to) { return _vtsiRngUniformBits64(0, d.stream, n, (std::uint64_t*)to); }}};

const std::vector<Generator> generators = {
    {"mt19937", VTS_BRNG_MT19937, 1, "Mersenne twister"},
    {"sfmt19937", VTS_BRNG_SFMT19937, 1, "twister for vectors"},
    {"mt2203", VTS_BRNG_MT2203, 6024, "family of small twisters, mt2203:0 to mt2203:6023; cannot skip"},
    {"mcg31m1", VTS_BRNG_MCG31M1, 1, "congruential, modulo 2^31 - 1"},
    {"mcg59", VTS_BRNG_MCG59, 1, "congruential, modulo 2^59"},
    {"mrg32k3a", VTS_BRNG_MRG32K3A, 1, "two recurrences of order 3"},
    {"wh", VTS_BRNG_WH, 273, "family of four congruential ones, wh:0 to wh:272"},
    {"r250", VTS_BRNG_R250, 1, "shift register; cannot skip"},
    {"sobol", VTS_BRNG_SOBOL, 1, "quasi-random; the seed is the dimension, 1 to 40", 40},
    {"niederr", VTS_BRNG_NIEDERR, 1, "quasi-random; the seed is the dimension, 1 to 318", 318},
    {"trng", VTS_BRNG_TRNG, 1, "of the processor, never the same; cannot skip"}};
// clang-format on

const char* words_of(Domain domain) {
    switch (domain) {
        case Domain::any: return "a finite number";
        case Domain::above_zero: return "a finite number above 0";
        case Domain::not_negative: return "a finite number from 0 up";
        case Domain::probability: return "a number from 0 to 1";
        case Domain::chance: return "a number above 0, up to 1";
        case Domain::whole: return "a whole number of 32 bits";
        case Domain::count: return "a whole number from 0 up, of 32 bits";
        case Domain::list: return "a list of finite numbers";
        case Domain::means: return "a list of finite numbers from 0 up";
    }
    return "";
}

bool holds(Domain domain, double x) {
    const bool whole = x == std::floor(x) && x < 0x1p31;
    switch (domain) {
        case Domain::above_zero: return x > 0 && std::isfinite(x);
        case Domain::not_negative:
        case Domain::means: return x >= 0 && std::isfinite(x);
        case Domain::probability: return x >= 0 && x <= 1;
        case Domain::chance: return x > 0 && x <= 1;
        case Domain::whole: return whole && x >= -0x1p31;
        case Domain::count: return whole && x >= 0;
        case Domain::any:
        case Domain::list: break;
    }
    return std::isfinite(x);
}

}  // namespace command
