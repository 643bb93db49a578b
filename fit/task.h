// The data-fitting task.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kef_fit.h"

namespace kef::fit {

// 64-bit fields follow one another without padding on every 32-bit system.
using Word64 = std::int64_t __attribute__((aligned(4)));
using Real64 = double __attribute__((aligned(4)));

// One bin of the search table: breakpoint indices that bracket the cells of its points.
struct Bin {
    std::uint32_t low, high;
};

inline constexpr int min_bins = 16, max_bins = 1024, breakpoints_per_bin = 16;
inline constexpr std::int64_t max_breakpoints = INT32_MAX;

inline bool is_breakpoint_count(std::int64_t n) { return n >= 2 && n <= max_breakpoints; }
inline bool is_partition_hint(std::int64_t h) {
    return h == DF_DEFAULT_HINT || h == DF_NON_UNIFORM || h == DF_QUASI_UNIFORM || h == DF_UNIFORM;
}
inline bool is_storage_hint(std::int64_t h) {
    return h == DF_DEFAULT_HINT || h == DF_BY_ROWS || h == DF_BY_COLUMNS || h == DF_SEPARATE_ROWS;
}
inline bool is_internal_type(std::int64_t t) {
    return t == 0 || t == DF_INTERNAL_FIRST || t == DF_INTERNAL_SECOND || (t & DF_INTERNAL_KNOTS);
}

}  // namespace kef::fit

struct kef_df_task {
#define KEF_DF_INTEGER(id, field, accepted, status) kef::fit::Word64 field;
#define KEF_DF_FLAG(id, field, accepted, status) std::int32_t field;
#define KEF_DF_ARRAY(id, field, status) const void* field;
#define KEF_DF_ROWS(id, field, status) const void** field;
#define KEF_DF_PRIVATE(type, field) type field;
#include "fit/params.def"
};

namespace kef::fit {

using Task = kef_df_task;

#if UINTPTR_MAX == UINT32_MAX
static_assert(offsetof(Task, dimension) == 12 && offsetof(Task, nx) == 16 &&
              offsetof(Task, x) == 24 && offsetof(Task, y_rows) == 44 && offsetof(Task, bc) == 92 &&
              offsetof(Task, coefficient_rows) == 96 && offsetof(Task, check_flag) == 108 &&
              offsetof(Task, bins) == 120 && offsetof(Task, inverse_bin_width) == 124);
#endif

// The check of the task of a compute entry: it is there, and of the entry's precision.
template <class T> inline std::int32_t check_precision(const Task* task) {
    if (task == nullptr) return DF_STATUS_NULL_TASK;
    return task->element_size == sizeof(T) ? DF_STATUS_OK : DF_STATUS_PRECISION;
}

// An editor or a query: f(*task), but for tasks of another dimension, which are left alone.
// T is its precision, if it has one.
template <class T = void, class MaybeConstTask, class F>
inline std::int32_t with_task(MaybeConstTask* task, F f) {
    if (task == nullptr) return DF_STATUS_NULL_TASK;
    if (task->dimension != 1) return DF_STATUS_OK;
    if constexpr (!std::is_void_v<T>)
        if (const std::int32_t status = check_precision<T>(task)) return status;
    return f(*task);
}

// How many rows ny functions have under a storage hint.
inline std::int64_t row_count(std::int64_t hint, std::int64_t ny) {
    return hint == DF_BY_COLUMNS ? 1 : ny;
}

inline std::size_t cell_count(const Task& task) {
    return static_cast<std::size_t>(task.type == DF_TYPE_SUBBOTIN ? task.nx : task.nx - 1);
}

inline int bin_count_for(std::int64_t nx) {
    const std::int64_t bins = nx / breakpoints_per_bin;
    return static_cast<int>(bins < min_bins ? min_bins : bins > max_bins ? max_bins : bins);
}

// Makes the search table of the task's breakpoints, unless they are uniform.
void build_search_table(Task& task);

// An owned array of row pointers: a new one (null where there is no memory, or more rows
// than memory has), and the exchange of the old one for it. In this order a call that
// finds no memory leaves the task as it was.
const void** allocate_rows(std::int64_t count);
void replace_rows(const void**& rows, std::uint32_t& slots, const void** made, std::int64_t count);

// Lay out the rows of y or of the coefficients from their first element; the old
// array is given back.
std::int32_t set_y(Task& task, const void* y);
std::int32_t set_coefficients(Task& task, const void* first);

}  // namespace kef::fit
