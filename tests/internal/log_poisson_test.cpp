// The weights behind the discrete laws against 113 bits.
#include <gtest/gtest.h>
#include <quadmath.h>

#include <cmath>

#include "distributions/poisson_normal.h"

namespace {

using kef::dist::d2;

TEST(LogPoisson, Error) {
    for (double x : {0.0, 0.25, 1.0, 3.0, 15.5, 16.0, 17.0, 40.0, 1000.3, 1e5, 2147483647.0, 1e12})
        for (const double ratio : {1e-8, 0.1, 0.8, 0.82, 0.95, 0.9999, 1.0, 1.01, 1.2, 1.23, 1e3}) {
            const double m = std::max(x, 0.5) * ratio;
            const __float128 exact = x * logq(m) - m - lgammaq(__float128(x) + 1);
            const d2 got = kef::dist::log_poisson(d2{x, 20}, d2{m, 20});
            const double terms = std::abs(got[0]) + (x < 16 ? 50 : 0);
            EXPECT_NEAR(double(got[0] - exact), 0, 0x1p-48 * (1 + terms)) << x << ' ' << m;
            EXPECT_EQ(got[0], kef::dist::log_poisson(d2{20, x}, d2{20, m})[1]);
        }
}

// The probability of a whole part of a normal number.
TEST(LogPoisson, NormalCells) {
    for (const double mean : {10.0, 11.5, 100.0, 1e6})
        for (const double t : {-3.0, -1.0, 0.0, 1.5, 3.0}) {
            const __float128 s = sqrtq(mean);
            const double k = std::floor(mean + t * std::sqrt(mean));
            const __float128 exact =
                (erfcq((k - mean) / (s * M_SQRT2q)) - erfcq((k + 1 - mean) / (s * M_SQRT2q))) / 2;
            const double log_f = kef::dist::PoissonFromNormal(mean).log_f(k);
            EXPECT_NEAR(double(expq(log_f) / exact - 1), 0, 1e-9) << mean << ' ' << k;
        }
}

}  // namespace
