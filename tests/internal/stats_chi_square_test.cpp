// The gamma law against tests/data/gamma_tails.txt, 60 digits rounded once.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>

#include "places.h"
#include "stats/chi_square.h"

namespace {

using namespace kef::stats;

constexpr double bound = 1e-13;

template <class F> void for_each_row(F f) {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/gamma_tails.txt");
    std::string comment;
    std::getline(file, comment);
    int rows = 0;
    for (double a, x, lower, upper; file >> a >> x >> lower >> upper; ++rows) {
        SCOPED_TRACE(testing::Message() << "shape " << a << " at " << x);
        f(a, x, lower, upper);
    }
    EXPECT_LT(150, rows);
}

TEST(ChiSquare, Tails) {
    for_each_row([](double a, double x, double lower, double upper) {
        const Tails tails = gamma_tails(a, x);
        EXPECT_NEAR(1, tails.lower / lower, bound);
        EXPECT_NEAR(1, tails.upper / upper, bound);
    });
    EXPECT_EQ(0, gamma_tails(2, 0).lower);
    EXPECT_EQ(1, gamma_tails(2, -1).upper);
    EXPECT_EQ(0, gamma_tails(0.5, 1e4).upper);
    EXPECT_EQ(1, gamma_tails(1000, 1e-3).upper);
}

// Back from a probability; what its own rounding may move is left out.
TEST(ChiSquare, Quantiles) {
    for_each_row([](double a, double x, double, double upper) {
        if (!(upper < 1 - 1e-2)) return;
        EXPECT_NEAR(1, upper_chi_square_quantile(2 * a, upper) / (2 * x), bound);
    });
    // 1 - 2^-40 above: x^a / Gamma(a + 1) below, to first order.
    EXPECT_NEAR(1, upper_gamma_quantile(1, 1 - 0x1p-40) / 0x1p-40, 1e-11);
    EXPECT_NEAR(1, upper_chi_square_quantile(1, 0.05) / 3.8414588206941245, bound);
}

}  // namespace
