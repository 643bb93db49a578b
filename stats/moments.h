// Means and a covariance matrix in double precision, and when an iteration has settled them.
#pragma once

#include <cmath>

#include "stats/task.h"

namespace kef::stats {

struct Moments {
    std::ptrdiff_t p;
    double* mean;
    double* products;  // the packed lower triangle by rows

    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t p) {
        const std::uint64_t size = p;
        return layout.reserve(size, size + 3, sizeof(double));
    }
    Moments(char* room, std::ptrdiff_t p)
        : p(p), mean(reinterpret_cast<double*>(room)), products(mean + p) {}

    // The element of i >= j.
    double& at(std::ptrdiff_t i, std::ptrdiff_t j) const { return products[i * (i + 1) / 2 + j]; }

    // Sets mean(i), and the elements of i >= j to product(i, j).
    template <class Mean, class Product> void set(Mean m, Product product) const {
        for (std::ptrdiff_t i = 0; i < p; ++i) {
            mean[i] = m(i);
            for (std::ptrdiff_t j = 0; j <= i; ++j) at(i, j) = product(i, j);
        }
    }
};

// Whether b is where a was, measured by the deviations of the variables: |m_i - m'_i| <= tolerance
// s_i, |C_ij - C'_ij| <= tolerance s_i s_j, s_i^2 = C_ii. No unit of measurement plays a part.
inline bool settled(const Moments& a, const Moments& b, double tolerance) {
    for (std::ptrdiff_t i = 0; i < b.p; ++i) {
        const double s = std::sqrt(b.at(i, i));
        if (!(std::fabs(b.mean[i] - a.mean[i]) <= tolerance * s)) return false;
        for (std::ptrdiff_t j = 0; j <= i; ++j)
            if (!(std::fabs(b.at(i, j) - a.at(i, j)) <= tolerance * s * std::sqrt(b.at(j, j))))
                return false;
    }
    return true;
}

}  // namespace kef::stats
