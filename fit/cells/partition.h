// The breakpoints of a task, as the searches see them.
#pragma once

#include <cstdint>

#include "fit/task.h"

namespace kef::fit {

template <class T> struct Partition {
    const T* x;
    std::uint32_t n;
    T first, last;

    explicit Partition(const Task& task)
        : x(static_cast<const T*>(task.x)),
          n(static_cast<std::uint32_t>(task.nx)),
          first(x[0]),
          last(x[n - 1]) {}

    // False for NaN and for the last breakpoint.
    bool inside(T q) const { return q >= first && q < last; }
    // The count for a site that is not inside.
    std::uint32_t outside(T q) const { return q > last ? n : q == last ? n - 1 : 0; }
    // True if breakpoint i and the next one bracket the site.
    bool holds(std::uint32_t i, T q) const { return x[i] <= q && q < x[i + 1]; }
};

}  // namespace kef::fit
