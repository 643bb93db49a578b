// The caller's arrays: the checks that they are there, and where the values and the
// coefficients of a function stand in them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fit/task.h"

namespace kef::fit {

// The breakpoints are finite and ascend; true where the task trusts its caller.
template <class T> inline bool partition_is_accepted(const Task& task) {
    if (task.check_flag == 0) return true;
    const T* x = static_cast<const T*>(task.x);
    const auto n = static_cast<std::size_t>(task.nx);
    // The ends are finite, and so is what stands in ascending order between them.
    if (x[0] - x[0] != 0 || x[n - 1] - x[n - 1] != 0) return false;
    for (std::size_t i = 1; i < n; ++i)
        if (!(x[i - 1] < x[i])) return false;
    return true;
}

// Every row that the storage hint asks for is set.
inline bool has_rows(const void* const* rows, std::uint32_t slots, std::int64_t hint,
                     std::int64_t ny) {
    const std::int64_t count = row_count(hint, ny);
    return rows != nullptr && slots >= count &&
           std::find(rows, rows + count, nullptr) == rows + count;
}
inline bool has_values(const Task& task) {
    return has_rows(task.y_rows, task.y_slots, task.y_hint, task.ny);
}
inline bool has_coefficients(const Task& task) {
    return has_rows(task.coefficient_rows, task.coefficient_slots, task.coefficient_hint, task.ny);
}

// Room for `order` coefficients a cell: as many as the task has by its own order (0: not
// set), and no row that reaches into the next one.
template <class T> std::int32_t check_room(const Task& task, std::int64_t order) {
    if (task.order > 0 && task.order < order) return DF_STATUS_ORDER;
    const std::size_t length = static_cast<std::size_t>(order) * cell_count(task) * sizeof(T);
    const auto address = [&](std::int64_t i) {
        return reinterpret_cast<std::uintptr_t>(task.coefficient_rows[i]);
    };
    for (std::int64_t i = 1; i < row_count(task.coefficient_hint, task.ny); ++i) {
        const std::uintptr_t a = address(i - 1), b = address(i);
        if ((a < b ? b - a : a - b) < length)
            return task.order < order ? DF_STATUS_ORDER : DF_STATUS_COEFFICIENTS;
    }
    return DF_STATUS_OK;
}

// Places of `width` elements, `stride` elements apart.
template <class T> struct Strided {
    T* first;
    std::size_t stride;

    Strided(const void* const* rows, std::int64_t hint, std::int64_t ny, std::size_t function,
            std::size_t width) {
        const bool columns = hint == DF_BY_COLUMNS;
        const void* row = rows[columns ? 0 : function];
        first = static_cast<T*>(const_cast<void*>(row)) + (columns ? function * width : 0);
        stride = columns ? static_cast<std::size_t>(ny) * width : width;
    }
};

// The values of a function: value i at first[i * stride].
template <class T> struct Values : Strided<const T> {
    Values(const Task& task, std::size_t function)
        : Strided<const T>(task.y_rows, task.y_hint, task.ny, function, 1) {}
};

// The coefficients of a function: cell i at first + i * stride.
template <class T> struct Coefficients : Strided<T> {
    Coefficients(const Task& task, std::size_t function, std::size_t order)
        : Strided<T>(task.coefficient_rows, task.coefficient_hint, task.ny, function, order) {}
};

}  // namespace kef::fit
