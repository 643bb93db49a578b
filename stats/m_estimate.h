// Huber's M-estimate of location and covariance (Maronna, Ann. Stat. 4:51, 1976): with weights
// w = min(1, k/d), d the distances by m and C,
//   m = sum w x / sum w,   C = sum w^2 (x - m)(x - m)^T / (n beta),
// k^2 the quantile of d^2 of normal data with 0.1 above it, beta what makes C their covariance.
#pragma once

#include "stats/chi_square.h"
#include "stats/scatter.h"

namespace kef::stats {

// 20 steps from medians and median deviations. False where something is singular.
template <class T> bool m_estimate(Scatter<T>& s, const Moments& to, const Moments& work) {
    const auto n = static_cast<double>(s.n), p = static_cast<double>(s.p);
    const double k2 = upper_chi_square_quantile(p, 0.1);
    const double beta = chi_square_tails(p + 2, k2).lower + k2 * chi_square_tails(p, k2).upper / p;
    if (!s.medians(to)) return false;
    for (int step = 0; step < 20; ++step) {
        if (!s.measure(to)) return false;
        for (std::ptrdiff_t j = 0; j < s.n; ++j)
            s.weight[j] = s.square[j] > k2 ? std::sqrt(k2 / s.square[j]) : 1;
        s.weigh(work, n);
        for (std::ptrdiff_t j = 0; j < s.n; ++j) s.weight[j] *= s.weight[j];
        s.weigh(to, n * beta);
        // Around the other mean.
        const double share = s.total_weight() / (n * beta);
        for (std::ptrdiff_t a = 0; a < s.p; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b)
                to.at(a, b) += share * (to.mean[a] - work.mean[a]) * (to.mean[b] - work.mean[b]);
        std::copy_n(work.mean, s.p, to.mean);
    }
    return true;
}

}  // namespace kef::stats
