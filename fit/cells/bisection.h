// Bisection without branches on the data, so that the searches of neighbouring sites
// overlap in the processor.
#pragma once

#include <bit>
#include <cstddef>

#include "fit/cells/partition.h"

namespace kef::fit {

// `next` if it does not exceed q, else `p`: a conditional move. Compilers make a
// jump of it, which half of the time is mispredicted.
inline const double* advance(const double* p, const double* next, double q) {
    asm("comisd %[value], %[q]\n\tcmovae %[next], %[p]"
        : [p] "+r"(p)
        : [next] "r"(next), [q] "x"(q), [value] "m"(*next)
        : "cc");
    return p;
}
inline const float* advance(const float* p, const float* next, float q) {
    asm("comiss %[value], %[q]\n\tcmovae %[next], %[p]"
        : [p] "+r"(p)
        : [next] "r"(next), [q] "x"(q), [value] "m"(*next)
        : "cc");
    return p;
}

// The last of the 2^steps breakpoints from p on that does not exceed q, where the first
// does not.
template <class T> inline const T* last_in_window(const T* p, int steps, T q) {
    for (std::size_t step = std::size_t(1) << steps >> 1; step != 0; step >>= 1)
        p = advance(p, p + step, q);
    return p;
}

// All breakpoints: a first step to one of two windows of 2^steps, which overlap.
template <class T> struct Bisection {
    static constexpr bool proposes = false;
    const T* x;
    std::uint32_t upper;  // start of the window that ends the partition
    int steps;

    explicit Bisection(const Partition<T>& p)
        : x(p.x),
          upper(p.n - std::bit_floor(p.n)),
          steps(static_cast<int>(std::bit_width(p.n)) - 1) {}

    std::uint32_t one(T q) const {
        const T* p = x[upper] <= q ? x + upper : x;
        return static_cast<std::uint32_t>(last_in_window(p, steps, q) - x);
    }
    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        for (std::uint32_t j = 0; j < n; ++j) at[j] = one(q[j]);
    }
};

}  // namespace kef::fit
