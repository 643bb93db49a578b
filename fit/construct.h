// The frame of all constructors: checks, the mesh, one function after another in
// double precision.
#pragma once

#include "fit/arrays.h"
#include "fit/mesh.h"
#include "fit/scratch.h"

namespace kef::fit {

// What a constructor asks of its task.
struct Requirements {
    std::int64_t min_nx;
    std::int64_t order;   // 0: the caller knows
    std::uint32_t types;  // bit set of spline types; not looked at with order 0
    BoundarySet boundaries;
};

// The checks that come first in every constructor.
template <class T>
std::int32_t check_task(const Task* task, std::int64_t method, const Requirements& need) {
    if (const std::int32_t status = check_precision<T>(task)) return status;
    if (method != 0) return DF_STATUS_METHOD;
    if (task->nx < need.min_nx) return DF_STATUS_NX;
    if (!is_storage_hint(task->y_hint)) return DF_STATUS_Y_HINT;
    if (need.order != 0) {
        if (task->order != need.order) return DF_STATUS_ORDER;
        if (task->type > DF_TYPE_AKIMA || !(need.types >> task->type & 1)) return DF_STATUS_TYPE;
    }
    const int row = find_boundary(task->bc_type, need.boundaries);
    if (row < 0) return DF_STATUS_BOUNDARY_TYPE;
    const bool common_value = task->bc_type == DF_PERIODIC &&
                              (task->type == DF_TYPE_DEFAULT || task->type == DF_TYPE_HERMITE);
    if ((boundary_types[row].values > 0 || common_value) && task->bc == nullptr)
        return DF_STATUS_BOUNDARY_CONDITIONS;
    return DF_STATUS_OK;
}

// The conditions of a task that has been checked.
template <class T> Boundary boundary_of(const Task& task, BoundarySet set) {
    const auto* bc = static_cast<const T*>(task.bc);
    return {boundary_types[find_boundary(task.bc_type, set)], [&](int i) { return double(bc[i]); }};
}

// Room on both sides of the divided differences, for methods that extend them.
inline constexpr std::size_t padding = 2;

// The checks that come last, then the construction: the mesh is prepared once, then each
// function's values and divided differences.
//   method.arrays()          how many arrays of n (and the padding) it takes
//   method.prepare(mesh, scratch)
//   method.fit(mesh, y, d, coefficients)   d may be written, with its padding
template <class T, class Method>
std::int32_t construct(const Task& task, std::size_t order, Method method) {
    if (!is_storage_hint(task.coefficient_hint)) return DF_STATUS_COEFFICIENT_HINT;
    if (task.ny <= 0) return DF_STATUS_NY;
    if (!has_values(task)) return DF_STATUS_Y;
    if (!has_coefficients(task)) return DF_STATUS_COEFFICIENTS;
    if (const auto status = check_room<T>(task, static_cast<std::int64_t>(order))) return status;
    if (!partition_is_accepted<T>(task)) return DF_STATUS_X;

    const auto n = static_cast<std::size_t>(task.nx), ny = static_cast<std::size_t>(task.ny);
    constexpr bool is_double = std::is_same_v<T, double>;
    // Values that are doubles in a row are read in place.
    const bool copies = !is_double || task.y_hint == DF_BY_COLUMNS;
    double* lent = nullptr;
    std::size_t lent_size = 0;
    if constexpr (is_double) {
        lent = Coefficients<T>(task, 0, order).first;
        lent_size = ny == 1 ? order * (n - 1) : 0;
    }
    const ArrayCount arrays = ArrayCount{.lasting = copies ? 3u : 2u} + method.arrays();
    Scratch scratch(arrays, n, 2 * padding, lent, lent_size);
    if (scratch.failed()) return DF_STATUS_NO_MEMORY;
    const Mesh mesh = make_mesh(static_cast<const T*>(task.x), n, (task.x_hint & DF_UNIFORM) != 0,
                                scratch.take());
    double* d = scratch.take() + padding;
    double* buffer = copies ? scratch.take() : nullptr;
    method.prepare(mesh, scratch);
    for (std::size_t i = 0; i < ny; ++i) {
        const Values<T> values(task, i);
        const double* y = buffer;
        if (copies)
            for (std::size_t j = 0; j < n; ++j) buffer[j] = values.first[j * values.stride];
        else if constexpr (is_double) y = values.first;
        divide_differences(mesh, y, d);
        method.fit(mesh, y, d, Coefficients<T>(task, i, order));
    }
    return DF_STATUS_OK;
}

// The two exported functions of a constructor.
#define KEF_DF_CONSTRUCTOR(name)                                             \
    int32_t kef_df_kernel_d##name(const kef_df_task* task, int64_t method) { \
        return kef::fit::construct_entry<double>(task, method);              \
    }                                                                        \
    int32_t kef_df_kernel_s##name(const kef_df_task* task, int64_t method) { \
        return kef::fit::construct_entry<float>(task, method);               \
    }

}  // namespace kef::fit
