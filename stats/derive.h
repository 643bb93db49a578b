// The reported estimates, from W, W2, the central sums M_k = sum w (x-m)^k and the
// cross-products; include/kef_stats.h has the formulas and their sources.
#pragma once

#include <cmath>

namespace kef::stats {

// The normaliser of central moments and covariance: n - 1 without weights, the
// unbiased one for reliability weights; W where that would not be positive.
inline double normaliser(double W, double W2) {
    const double B = W - W2 / W;
    return B > 0 ? B : W;
}

inline double skewness_of(double W, double M2, double M3) {
    const double v = M2 / W;
    return M3 / W / (v * std::sqrt(v));
}

inline double kurtosis_of(double W, double M2, double M4) {
    const double v = M2 / W;
    return M4 / W / (v * v) - 3;
}

inline double variation_of(double c2, double mean) { return std::sqrt(c2) / mean; }

// Divided twice: the product of the two variances could overflow.
inline double correlation_of(double c_ij, double root_ii, double root_jj) {
    const double r = c_ij / root_ii / root_jj;
    return r > 1 ? 1 : r < -1 ? -1 : r;
}

}  // namespace kef::stats
