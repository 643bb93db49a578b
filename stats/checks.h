// Checks that the computations over x share.
#pragma once

#include "stats/observations.h"
#include "stats/task.h"

namespace kef::stats {

inline bool is_storage(std::int64_t code) {
    return code == VTS_SS_STORAGE_ROWS || code == VTS_SS_STORAGE_COLUMNS;
}

// n, x and its storage, in this order; then p.
inline std::int32_t check_observations(const Task& task) {
    if (positive_at(task, task.count) == 0) return VTS_SS_STATUS_BAD_COUNT;
    if (task.x == nullptr) return VTS_SS_STATUS_NULL_X;
    if (task.x_storage == nullptr) return VTS_SS_STATUS_NULL_STORAGE;
    constexpr int either = VTS_SS_STORAGE_ROWS | VTS_SS_STORAGE_COLUMNS;
    if ((integer_at(task, task.x_storage) & either) == 0) return VTS_SS_STATUS_BAD_X_STORAGE;
    if (positive_at(task, task.dimension) == 0) return VTS_SS_STATUS_BAD_DIMENSION;
    return VTS_SS_STATUS_OK;
}

// The last check of a computation: whether the task was created for data of type T.
template <class T> inline std::int32_t check_precision(const Task& task) {
    const bool single = reinterpret_cast<const OwnedTask&>(task).single;
    return single == (sizeof(T) == sizeof(float)) ? VTS_SS_STATUS_OK : VTS_SS_STATUS_BAD_PRECISION;
}

// x of a task that has passed; with both storage bits, rows.
template <class T> Observations<T> observations_of(const Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto* x = static_cast<const T*>(task.x);
    if (integer_at(task, task.x_storage) & VTS_SS_STORAGE_ROWS) return {x, n, 1};
    return {x, 1, p};
}

// Whether the indices leave variable i in.
inline bool is_selected(const Task& task, std::ptrdiff_t i) {
    return task.indices == nullptr || integer_at(task, task.indices, i) != 0;
}

// The number of these variables among the first p, and their list.
inline std::ptrdiff_t count_selected(const Task& task, std::ptrdiff_t p) {
    std::ptrdiff_t count = 0;
    for (std::ptrdiff_t i = 0; i < p; ++i) count += is_selected(task, i);
    return count;
}
inline void list_selected(const Task& task, std::ptrdiff_t p, std::ptrdiff_t* list) {
    for (std::ptrdiff_t i = 0; i < p; ++i)
        if (is_selected(task, i)) *list++ = i;
}

}  // namespace kef::stats
