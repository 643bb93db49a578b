// Searches for breakpoints at equal or nearly equal distances: arithmetic first.
#pragma once

#include <algorithm>

#include "fit/cells/table.h"

namespace kef::fit {

// The cell that equal distances would give.
template <class T> struct EqualDistances {
    const T* x;
    double first, inverse;
    std::int32_t last_cell;

    explicit EqualDistances(const Partition<T>& p)
        : x(p.x),
          first(p.first),
          inverse(inverse_bin_width(p.x, p.n, p.n - 1)),
          last_cell(static_cast<std::int32_t>(p.n) - 2) {}

    std::int32_t guess(T q) const { return std::clamp(bin_of(q, first, inverse), 0, last_cell); }
};

// Equal but for rounding: at most one step from the guess.
template <class T> struct UniformSearch : EqualDistances<T> {
    static constexpr bool proposes = true;
    using EqualDistances<T>::EqualDistances;

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        const EqualDistances<T> e = *this;
        for (std::uint32_t j = 0; j < n; ++j) {
            const std::int32_t i = e.guess(q[j]);
            at[j] = static_cast<std::uint32_t>(i + (q[j] >= e.x[i + 1]) - (q[j] < e.x[i]));
        }
    }
};

// Varying little: a short walk from the guess.
template <class T> struct QuasiUniformSearch : EqualDistances<T> {
    static constexpr bool proposes = true;
    using EqualDistances<T>::EqualDistances;

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        constexpr int longest_walk = 4;
        const EqualDistances<T> e = *this;
        for (std::uint32_t j = 0; j < n; ++j) {
            std::int32_t i = e.guess(q[j]);
            for (int step = 0; step < longest_walk && q[j] >= e.x[i + 1]; ++step) ++i;
            for (int step = 0; step < longest_walk && q[j] < e.x[i]; ++step) --i;
            at[j] = static_cast<std::uint32_t>(i);
        }
    }
};

}  // namespace kef::fit
