// Rows of doubles, for linear algebra.
#pragma once

#include "stats/observations.h"

namespace kef::stats {

// x . y of n numbers.
inline double dot(const double* x, const double* y, std::ptrdiff_t n) {
    d2 first{}, second{};
    std::ptrdiff_t k = 0;
    for (; k + 4 <= n; k += 4) {
        first += vm::load_as<d2>(x + k) * vm::load_as<d2>(y + k);
        second += vm::load_as<d2>(x + k + 2) * vm::load_as<d2>(y + k + 2);
    }
    first += second;
    double sum = first[0] + first[1];
    for (; k < n; ++k) sum += x[k] * y[k];
    return sum;
}

// y += a x.
inline void add_scaled(double* y, double a, const double* x, std::ptrdiff_t n) {
    std::ptrdiff_t k = 0;
    for (; k + 2 <= n; k += 2)
        vm::store(y + k, vm::load_as<d2>(y + k) + both(a) * vm::load_as<d2>(x + k));
    if (k < n) y[k] += a * x[k];
}

}  // namespace kef::stats
