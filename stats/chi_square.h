// The gamma law of shape a and scale 1, and the chi-square law of nu degrees of freedom, which is
// twice the gamma law of shape nu/2.
#pragma once

namespace kef::stats {

// The probabilities below and above a point.
struct Tails {
    double lower, upper;
};

// Regularised incomplete gamma functions P(a, x) and Q(a, x), a >= 1/2: relative error below 1e-13
// where x < 700 + a (above that Q underflows for small a) and a < 1e4.
Tails gamma_tails(double a, double x);

// x^a e^-x / Gamma(a + 1), a >= 1/2, x > 0: the density is this times a/x.
double gamma_weight(double a, double x);

// e^x, 0 below e^-700.
double exponential(double x);

// The point with the probability q in (0, 1) above it: relative error below 1e-13.
double upper_gamma_quantile(double a, double q);

inline Tails chi_square_tails(double nu, double x) { return gamma_tails(nu / 2, x / 2); }
inline double upper_chi_square_quantile(double nu, double q) {
    return 2 * upper_gamma_quantile(nu / 2, q);
}

}  // namespace kef::stats
