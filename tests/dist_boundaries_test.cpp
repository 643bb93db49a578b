// Where one method of a distribution ends and the next one begins: which of them has the boundary
// itself.
#include <cfloat>

#include "tests/dist_support.h"

namespace {

// Numbers of one seed for neighbouring parameters: those of one method differ in the last bits
// only.
template <class T, class Draw> std::vector<T> numbers(Draw draw) {
    constexpr int n = 1000;
    std::vector<T> r(n);
    const Stream stream = make_stream(VTS_BRNG_MT19937, {31});
    EXPECT_EQ(draw(stream.get(), n, r.data()), VTS_STATUS_OK);
    return r;
}
template <class T> int alike(const std::vector<T>& x, const std::vector<T>& y) {
    int count = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        count += std::fabs(static_cast<double>(x[i]) - static_cast<double>(y[i])) <=
                 1e-4 * std::fabs(static_cast<double>(x[i]));
    return count;
}

// 0.6 belongs to the method of the shapes above it, and 1 to the exponential numbers.
template <class T, class Gamma, class Exponential>
void expect_gamma_methods(Gamma gamma, Exponential exponential) {
    const auto drawn = [gamma](T alpha) {
        return numbers<T>([=](kef_stream* stream, std::int32_t n, T* r) {
            return gamma(0, stream, n, r, alpha, T(0), T(1));
        });
    };
    const T boundary = T(0.6);
    const std::vector<T> at = drawn(boundary);
    EXPECT_GT(alike(at, drawn(std::nextafter(boundary, T(1)))), 900);
    EXPECT_LT(alike(at, drawn(std::nextafter(boundary, T(0)))), 100);
    EXPECT_EQ(drawn(T(1)), numbers<T>([=](kef_stream* stream, std::int32_t n, T* r) {
                  return exponential(0, stream, n, r, T(0), T(1));
              }));
}

TEST(DistBoundaries, Gamma) {
    expect_gamma_methods<double>(_vtsdRngGamma, _vtsdRngExponential);
    expect_gamma_methods<float>(_vtssRngGamma, _vtssRngExponential);
}

TEST(DistBoundaries, PoissonOfNormalNumbers) {
    const auto drawn = [](double lambda) {
        return numbers<std::int32_t>([=](kef_stream* stream, std::int32_t n, std::int32_t* r) {
            return _vtsiRngPoisson(1, stream, n, r, lambda);
        });
    };
    const auto at = drawn(100);
    EXPECT_GT(alike(at, drawn(std::nextafter(100.0, 101.0))), 900);
    EXPECT_LT(alike(at, drawn(std::nextafter(100.0, 99.0))), 200);
}

// Smaller probabilities than 1e-300 count as that one.
TEST(DistBoundaries, NegbinomialOfTinyProbabilities) {
    const auto drawn = [](double a, double p) {
        return numbers<std::int32_t>([=](kef_stream* stream, std::int32_t n, std::int32_t* r) {
            return _vtsiRngNegbinomial(0, stream, n, r, a, p);
        });
    };
    for (const double a : {1e-302, 1e-3, 0.5, 1.0, 7.0})
        for (const double p : {0.0, DBL_TRUE_MIN, 1e-310, 9e-301})
            EXPECT_EQ(drawn(a, p), drawn(a, 1e-300)) << a << ", " << p;
}

}  // namespace
