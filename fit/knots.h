// The knots of a spline: the left ends of its cells.
#pragma once

#include "fit/task.h"

namespace kef::fit {

// Cells begin at the breakpoints; with knots between them (`between`) cell 0 begins
// at x_0 and cell i at the knot of gap i-1: given by the caller, or the midpoint.
template <class T> struct Knots {
    const T* x;
    const T* given;
    bool between;

    explicit Knots(const Task& task)
        : x(static_cast<const T*>(task.x)),
          given(task.ic_type & DF_INTERNAL_KNOTS ? static_cast<const T*>(task.ic) : nullptr),
          between(task.type == DF_TYPE_SUBBOTIN) {}

    T gap(std::size_t i) const {
        return given != nullptr ? given[i] : T(0.5) * x[i] + T(0.5) * x[i + 1];
    }
    T left(std::size_t cell) const { return between && cell > 0 ? gap(cell - 1) : x[cell]; }
};

}  // namespace kef::fit
