// Cubics whose inner derivatives the caller gives, the same for all functions.
#pragma once

#include "fit/local_ends.h"

namespace kef::fit {

// The checks of the internal conditions: their type is in the bit set `types`, and
// values are there where there are inner breakpoints.
inline std::int32_t check_internal(const Task& task, std::uint32_t types) {
    if (task.ic_type < 0 || task.ic_type > DF_INTERNAL_SECOND || !(types >> task.ic_type & 1))
        return DF_STATUS_INTERNAL_TYPE;
    return task.nx > 2 && task.ic == nullptr ? DF_STATUS_INTERNAL_CONDITIONS : DF_STATUS_OK;
}

// A periodic spline takes its derivative at both ends from the caller.
template <class T> Boundary boundary_with_common_value(const Task& task, End derivative) {
    Boundary boundary = boundary_of<T>(task, two_sided);
    if (boundary.left == End::periodic) {
        boundary.left = boundary.right = derivative;
        boundary.left_value = boundary.right_value = *static_cast<const T*>(task.bc);
    }
    return boundary;
}

template <class T> struct GivenSlopes {
    const T* ic;

    void operator()(const Mesh& mesh, double*, double* s, bool) const {
        for (std::size_t i = 1; i + 1 < mesh.n; ++i) s[i] = ic[i - 1];
    }
};

template <class T> std::int32_t construct_hermite(const Task& task) {
    using Slopes = LocalSlopes<GivenSlopes<T>>;
    const Slopes slopes = {{static_cast<const T*>(task.ic)},
                           boundary_with_common_value<T>(task, End::first)};
    return construct<T>(task, DF_CUBIC, HermiteMethod<Slopes>{slopes});
}

}  // namespace kef::fit
