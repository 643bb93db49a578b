// Editors and queries by identifier.
#include <algorithm>
#include <cstring>

#include "fit/task.h"

namespace kef::fit {

namespace {

std::int32_t edit_pointer(Task& task, std::int64_t id, const void* array) {
    switch (id) {
#define KEF_DF_ARRAY(id, field, status)      \
    case id:                                 \
        if (array == nullptr) return status; \
        task.field = array;                  \
        return DF_STATUS_OK;
#define KEF_DF_ROWS(id, field, status)       \
    case id:                                 \
        if (array == nullptr) return status; \
        break;
#include "fit/params.def"
        default: return DF_STATUS_PARAMETER;
    }
    return id == DF_Y ? set_y(task, array) : set_coefficients(task, array);
}

template <class T> std::int32_t query_pointer(const Task& task, std::int64_t id, T** array) {
    if (array == nullptr) return DF_STATUS_NULL_OUTPUT;
    const void* found = nullptr;
    switch (id) {
#define KEF_DF_ARRAY(id, field, status) \
    case id:                            \
        found = task.field;             \
        break;
#define KEF_DF_ROWS(id, field, status)                           \
    case id:                                                     \
        found = task.field == nullptr ? nullptr : task.field[0]; \
        break;
#include "fit/params.def"
        default: return DF_STATUS_PARAMETER;
    }
    *array = static_cast<T*>(const_cast<void*>(found));
    return DF_STATUS_OK;
}

// The row array of an identifier; null rows for another identifier.
struct Rows {
    const void*** rows;
    std::uint32_t* slots;
    std::int64_t count;  // rows by the number of functions and the hint
    std::int32_t null_status;
};

Rows rows_of(Task& task, std::int64_t id) {
    if (id == DF_Y)
        return {&task.y_rows, &task.y_slots, row_count(task.y_hint, task.ny), DF_STATUS_Y};
    if (id == DF_COEFFICIENTS)
        return {&task.coefficient_rows, &task.coefficient_slots,
                row_count(task.coefficient_hint, task.ny), DF_STATUS_COEFFICIENTS};
    return {nullptr, nullptr, 0, 0};
}

// Appends null slots up to the count.
std::int32_t grow(Rows& rows) {
    const void** grown = allocate_rows(rows.count);
    if (grown == nullptr) return DF_STATUS_NO_MEMORY;
    std::fill(std::copy_n(*rows.rows, *rows.slots, grown), grown + rows.count, nullptr);
    replace_rows(*rows.rows, *rows.slots, grown, rows.count);
    return DF_STATUS_OK;
}

std::int32_t edit_row(Task& task, std::int64_t id, std::int64_t index, const void* array) {
    Rows rows = rows_of(task, id);
    if (rows.rows == nullptr) return DF_STATUS_PARAMETER;
    if (array == nullptr) return rows.null_status;
    if (index < 0 || index >= rows.count) return DF_STATUS_PARAMETER;
    if (index >= *rows.slots)
        if (const std::int32_t status = grow(rows)) return status;
    (*rows.rows)[index] = array;
    return DF_STATUS_OK;
}

template <class T>
std::int32_t query_row(const Task& task, std::int64_t id, std::int64_t index, T** array) {
    if (array == nullptr) return DF_STATUS_NULL_OUTPUT;
    const Rows rows = rows_of(const_cast<Task&>(task), id);
    if (rows.rows == nullptr || index < 0 || index >= rows.count) return DF_STATUS_PARAMETER;
    const void* row = index < *rows.slots ? (*rows.rows)[index] : nullptr;
    *array = static_cast<T*>(const_cast<void*>(row));
    return DF_STATUS_OK;
}

std::int32_t edit_integer(Task& task, std::int64_t id, std::int64_t value) {
    switch (id) {
#define KEF_DF_INTEGER(id, field, accepted, status) \
    case id:                                        \
        if (!(accepted)) return status;             \
        task.field = value;                         \
        break;
#define KEF_DF_FLAG(id, field, accepted, status)       \
    case id:                                           \
        if (!(accepted)) return status;                \
        task.field = static_cast<std::int32_t>(value); \
        break;
#include "fit/params.def"
        default: return DF_STATUS_PARAMETER;
    }
    if (id == DF_X_HINT) build_search_table(task);
    return DF_STATUS_OK;
}

std::int32_t query_integer(const Task& task, std::int64_t id, void* value) {
    if (value == nullptr) return DF_STATUS_NULL_OUTPUT;
    std::int64_t found;
    switch (id) {
#define KEF_DF_INTEGER(id, field, accepted, status) \
    case id:                                        \
        found = task.field;                         \
        break;
#define KEF_DF_FLAG(id, field, accepted, status) \
    case id:                                     \
        found = task.field;                      \
        break;
#include "fit/params.def"
        default: return DF_STATUS_PARAMETER;
    }
    // Little-endian: the low word alone, or both.
    std::memcpy(value, &found, task.int64_flag != 0 ? sizeof found : sizeof(std::int32_t));
    return DF_STATUS_OK;
}

}  // namespace

}  // namespace kef::fit

using namespace kef::fit;

#define KEF_DF_EDITORS(letter, T)                                                                 \
    int32_t kef_df_kernel_##letter##EditPtr(kef_df_task* task, int64_t id, const T* array) {      \
        return with_task<T>(task, [&](Task& t) { return edit_pointer(t, id, array); });           \
    }                                                                                             \
    int32_t kef_df_kernel_##letter##QueryPtr(const kef_df_task* task, int64_t id, T** array) {    \
        return with_task<T>(task, [&](const Task& t) { return query_pointer(t, id, array); });    \
    }                                                                                             \
    int32_t kef_df_kernel_##letter##EditIdxPtr(kef_df_task* task, int64_t id, int64_t index,      \
                                               const T* array) {                                  \
        return with_task<T>(task, [&](Task& t) { return edit_row(t, id, index, array); });        \
    }                                                                                             \
    int32_t kef_df_kernel_##letter##QueryIdxPtr(const kef_df_task* task, int64_t id,              \
                                                int64_t index, T** array) {                       \
        return with_task<T>(task, [&](const Task& t) { return query_row(t, id, index, array); }); \
    }
KEF_DF_EDITORS(d, double)
KEF_DF_EDITORS(s, float)

int32_t kef_df_kernel_iEditVal(kef_df_task* task, int64_t id, int64_t value) {
    return with_task(task, [&](Task& t) { return edit_integer(t, id, value); });
}

int32_t kef_df_kernel_iQueryVal(const kef_df_task* task, int64_t id, void* value) {
    return with_task(task, [&](const Task& t) { return query_integer(t, id, value); });
}
