// Ascending sites: from cell to cell, in growing steps. Only a new site can stand left
// of the cell, and each gallop goes right: so it ends, whatever the breakpoints are.
#pragma once

#include <algorithm>

#include "fit/cells/bisection.h"

namespace kef::fit {

template <class T> struct Walk {
    static constexpr bool proposes = false;
    const T* x;
    std::uint32_t n, cell = 0;
    Bisection<T> bisection;

    explicit Walk(const Partition<T>& p) : x(p.x), n(p.n), bisection(p) {}

    void operator()(const T* q, std::uint32_t count, std::uint32_t* at) {
        std::uint32_t j = 0;
        do {
            const T left = x[cell], right = x[cell + 1];
            while (j < count && q[j] < right && !(q[j] < left)) at[j++] = cell;
            if (j < count) cell = q[j] < left ? bisection.one(q[j]) : gallop(q[j]);
        } while (j < count);
    }

private:
    // Bentley & Yao 1976: steps 1, 2, 4, .. until the site is passed, then bisection.
    std::uint32_t gallop(T q) const {
        std::uint32_t low = cell + 1, step = 1;
        while (step < n - low && x[low + step] <= q) low += step, step *= 2;
        for (std::uint32_t length = std::min(step, n - low); length > 1;) {
            const std::uint32_t half = length / 2;
            low = x[low + half] <= q ? low + half : low;
            length -= half;
        }
        return low;
    }
};

}  // namespace kef::fit
