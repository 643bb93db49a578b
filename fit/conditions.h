// Boundary conditions: which condition a boundary type sets at each end, and what
// it makes of the end slope of a spline whose inner slopes are known.
#pragma once

#include <cstdint>
#include <iterator>

#include "kef_fit.h"

namespace kef::fit {

enum class End { own, not_a_knot, first, second, periodic };

struct BoundaryType {
    std::int64_t value;
    End left, right;
    int values;  // how many the caller gives
};

// The first seven in the order of the variants of the twice differentiable cubic.
inline constexpr BoundaryType boundary_types[] = {
    {DF_NOT_A_KNOT, End::not_a_knot, End::not_a_knot, 0},
    {DF_FREE_END, End::second, End::second, 0},
    {DF_FIRST_FIRST, End::first, End::first, 2},
    {DF_FIRST_SECOND, End::first, End::second, 2},
    {DF_SECOND_FIRST, End::second, End::first, 2},
    {DF_SECOND_SECOND, End::second, End::second, 2},
    {DF_PERIODIC, End::periodic, End::periodic, 0},
    {DF_NO_CONDITIONS, End::own, End::own, 0},
    {DF_LEFT_FIRST, End::first, End::own, 1},
    {DF_RIGHT_FIRST, End::own, End::first, 1},
    {DF_LEFT_SECOND, End::second, End::own, 1},
    {DF_RIGHT_SECOND, End::own, End::second, 1},
};

// Sets of boundary types, a bit for each row of the table.
using BoundarySet = std::uint32_t;
inline constexpr int two_sided_types = 7;
inline constexpr BoundarySet two_sided = (1u << two_sided_types) - 1;
inline constexpr BoundarySet no_conditions = 1u << two_sided_types;
inline constexpr BoundarySet one_sided = 0xFu << (two_sided_types + 1);

// The row of a boundary type if it is in the set, else -1.
inline int find_boundary(std::int64_t value, BoundarySet set) {
    for (int i = 0; i < static_cast<int>(std::size(boundary_types)); ++i)
        if (boundary_types[i].value == value && (set >> i & 1)) return i;
    return -1;
}

// The conditions of a task.
struct Boundary {
    End left, right;
    double left_value = 0, right_value = 0;

    // `value(i)` reads the caller's boundary value i.
    template <class Value>
    Boundary(const BoundaryType& type, Value value) : left(type.left), right(type.right) {
        if (type.values == 2) left_value = value(0), right_value = value(1);
        if (type.values == 1) (left == End::own ? right_value : left_value) = value(0);
    }
};

// One end of a partition as seen from it: distance and divided difference of the
// first cell and of the second, and the slopes behind them.
struct EndView {
    double h0 = 0, d0 = 0, h1 = 0, d1 = 0, s1 = 0, s2 = 0;
    double side = 0;  // -1 on the left, +1 on the right
};

// End slopes by condition; s1 and s2 are the neighbouring slopes.
inline double slope_of_second(const EndView& e, double second) {
    return (3 * e.d0 - e.s1) / 2 + e.side * second * e.h0 / 4;
}
// Equal third derivatives in the two end cells.
inline double slope_of_not_a_knot(const EndView& e) {
    const double ratio = e.h0 / e.h1;
    return 2 * e.d0 - e.s1 + ratio * ratio * ((e.s1 - e.d1) + (e.s2 - e.d1));
}
// The parabola through three points.
inline double slope_of_parabola(const EndView& e) { return 2 * e.d0 - e.s1; }

}  // namespace kef::fit
