// ln of Poisson weights, which the weights of all the discrete laws are made of:
//
//   ln(e^-m m^x / Gamma(x + 1)) = -D(x, m) - S(x) - ln(2 pi x)/2,
//
// D the deviance x ln(x/m) + m - x, S the error of Stirling's formula (C. Loader, Fast and accurate
// computation of binomial probabilities, 2000). Nothing cancels at huge parameters: absolute error
// below 2^-48 (1 + |result|), and 2^-42 more where x < 16. x need not be an integer.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/core/log_core.h"
#include "vm/simd/blocks.h"

namespace kef::dist {

using vm::all;
using vm::both;
using vm::d2;
using vm::l2;

inline d2 logs_of(d2 x) { return vm::block<0>(vm::log_core<vm::LA>(vm::in_all_blocks(x))); }
inline double log_of(double x) { return vm::log_core<vm::LA>(all(x))[0]; }
inline double exp_of(double x) { return x < -700 ? 0 : vm::exp_core<vm::LA>(all(x))[0]; }

namespace detail {

inline constexpr double half_log_2pi = 0x1.d67f1c864beb5p-1;
inline constexpr double stirling_from = 16;

// ln Gamma(x + 1) - ((x + 1/2) ln x - x + ln(2 pi)/2), x >= stirling_from: the asymptotic series;
// the next term is below 2^-52.
inline d2 stirling_error(d2 x) {
    const d2 y = 1.0 / x, z = y * y;
    constexpr double c1 = 1.0 / 12, c3 = -1.0 / 360, c5 = 1.0 / 1260, c7 = -1.0 / 1680,
                     c9 = 1.0 / 1188, c11 = -691.0 / 360360;
    return y * (c1 + z * (c3 + z * (c5 + z * (c7 + z * (c9 + z * c11)))));
}

// D(x, m) for x, m > 0. With v = (x - m)/(x + m):
// D = (x - m) v + 2 x (v^3/3 + v^5/5 + ...) where |v| < 0.1; the series stops below 2^-55.
inline d2 deviance(d2 x, d2 m) {
    const d2 difference = x - m, v = difference / (x + m), w = v * v;
    constexpr double c[] = {1.0 / 3,  1.0 / 5,  1.0 / 7,  1.0 / 9,
                            1.0 / 11, 1.0 / 13, 1.0 / 15, 1.0 / 17};
    const d2 series =
        c[0] +
        w * (c[1] + w * (c[2] + w * (c[3] + w * (c[4] + w * (c[5] + w * (c[6] + w * c[7]))))));
    const d2 near = v * (difference + 2.0 * x * w * series);
    const l2 is_near = w < 0.01;
    if (_mm_movemask_pd((__m128d)is_near) == 3) return near;
    const d2 far = x * logs_of(x / m) - difference;
    return (d2)((is_near & (l2)near) | (~is_near & (l2)far));
}

inline d2 log_poisson_large(d2 x, d2 m) {
    const d2 log_x = logs_of(x);
    return -deviance(x, m) - stirling_error(x) - (half_log_2pi + 0.5 * log_x);
}

// ln Gamma(x + 1), 0 <= x < stirling_from, from Gamma(y + 1), y = x + an integer.
inline void log_gamma_small(double x, double& result) {
    double y = x, product = 1;
    while (y < stirling_from) product *= y += 1;
    const d2 logs = logs_of(d2{y, product});
    result = (y + 0.5) * logs[0] - y + half_log_2pi + stirling_error(both(y))[0] - logs[1];
}

[[gnu::noinline]] inline void log_poisson_small(double x, double m, double& result) {
    double log_gamma;
    log_gamma_small(x, log_gamma);
    result = x * log_of(m) - m - log_gamma;
}

}  // namespace detail

// Two at a time; x >= 0, m > 0.
inline d2 log_poisson(d2 x, d2 m) {
    if (_mm_movemask_pd((__m128d)(x < detail::stirling_from)) == 0)
        return detail::log_poisson_large(x, m);
    d2 result;
    for (int i = 0; i < 2; ++i) {
        double one;
        if (x[i] < detail::stirling_from) detail::log_poisson_small(x[i], m[i], one);
        else one = detail::log_poisson_large(both(x[i]), both(m[i]))[0];
        result[i] = one;
    }
    return result;
}

}  // namespace kef::dist
