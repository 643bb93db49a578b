#include "stats/chi_square.h"

#include <cmath>

#include "distributions/log_poisson.h"

namespace kef::stats {

using dist::exp_of;
using dist::log_of;
using vm::both;

double exponential(double x) { return exp_of(x); }

double gamma_weight(double a, double x) {
    using namespace dist::detail;
    constexpr double two_pi = 0x1.921fb54442d18p2;
    if (a >= stirling_from) {
        const double exponent = (-deviance(both(a), both(x)) - stirling_error(both(a)))[0];
        return exp_of(exponent) / std::sqrt(two_pi * a);
    }
    double log_gamma;
    log_gamma_small(a, log_gamma);
    return exp_of(-x) * exp_of(a * log_of(x) - log_gamma);
}

namespace {

// P / weight = 1 + x/(a+1) + x^2/((a+1)(a+2)) + ...; for x < a + 1.
double lower_series(double a, double x) {
    double term = 1, sum = 1;
    for (double k = a + 1; term > sum * 0x1p-56; ++k) sum += term *= x / k;
    return sum;
}

// Q / (a weight), a continued fraction by Lentz's method: for x >= a + 1.
//   1 / (x + 1 - a - 1 (1 - a) / (x + 3 - a - 2 (2 - a) / (x + 5 - a - ...)))
double upper_fraction(double a, double x) {
    double b = x + 1 - a, c = 0x1p500, d = 1 / b, value = d;
    for (double k = 1, factor = 0; std::fabs(factor - 1) > 0x1p-53 && k < 1e5; ++k) {
        const double numerator = k * (a - k);
        b += 2;
        d = 1 / (b + numerator * d);
        c = b + numerator / c;
        factor = c * d;
        value *= factor;
    }
    return value;
}

}  // namespace

Tails gamma_tails(double a, double x) {
    if (!(x > 0)) return {0, 1};
    const double weight = gamma_weight(a, x);
    if (x < a + 1) {
        const double lower = weight * lower_series(a, x);
        return {lower, 1 - lower};
    }
    const double upper = weight * a * upper_fraction(a, x);
    return {1 - upper, upper};
}

// Newton's method for the logarithm of the smaller tail as a function of x or, below a, of ln x:
// almost a straight line far out. Between the bounds found so far.
double upper_gamma_quantile(double a, double q) {
    const bool above = q < gamma_tails(a, a).upper;
    const double wanted = log_of(above ? q : 1 - q);
    double x = a, low = above ? a : 0, high = above ? HUGE_VAL : a;
    for (int k = 0; k < 200; ++k) {
        const Tails tails = gamma_tails(a, x);
        const double tail = above ? tails.upper : tails.lower;
        double next = 0;
        if (tail > 0) {
            const double excess = log_of(tail) - wanted;
            const double step = excess * tail / (gamma_weight(a, x) * a);  // of ln x
            ((excess > 0) == above ? low : high) = x;
            next = above ? x + x * step : x * exp_of(-step);
        } else {
            (above ? high : low) = x;
        }
        if (!(next > low && next < high)) next = high < HUGE_VAL ? (low + high) / 2 : 2 * x;
        const bool done = std::fabs(next - x) <= x * 0x1p-50;
        x = next;
        if (done) break;
    }
    return x;
}

}  // namespace kef::stats
