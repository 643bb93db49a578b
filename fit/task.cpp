// Life of a task: creation, the rows of y and of the coefficients, deletion.
#include "fit/task.h"

#include <cstring>

#include "service/alloc.h"

namespace kef::fit {

namespace {

constexpr std::size_t table_size = max_bins * sizeof(Bin);

// Replaces an owned array of row pointers by `count` new ones, the first `filled` of
// them `stride` bytes apart from `first` on and the others null.
std::int32_t set_rows(const void**& rows, std::uint32_t& slots, std::int64_t count,
                      std::int64_t filled, const void* first, std::uint64_t stride) {
    const void** made = allocate_rows(count);
    if (made == nullptr) return DF_STATUS_NO_MEMORY;
    auto row = reinterpret_cast<std::uintptr_t>(first);
    for (std::int64_t i = 0; i < count; ++i, row += static_cast<std::uintptr_t>(stride))
        made[i] = i < filled ? reinterpret_cast<const void*>(row) : nullptr;
    replace_rows(rows, slots, made, count);
    return DF_STATUS_OK;
}

void destroy(Task* task) {
    free_aligned(task->y_rows);
    free_aligned(task->coefficient_rows);
    free_aligned(task->bins);
    free_aligned(task);
}

}  // namespace

const void** allocate_rows(std::int64_t count) {
    constexpr std::int64_t most = INT32_MAX / static_cast<std::int64_t>(sizeof(void*));
    if (count > most) return nullptr;
    return static_cast<const void**>(
        allocate_aligned(static_cast<std::size_t>(count) * sizeof(void*)));
}

void replace_rows(const void**& rows, std::uint32_t& slots, const void** made, std::int64_t count) {
    free_aligned(rows);
    rows = made;
    slots = static_cast<std::uint32_t>(count);
}

std::int32_t set_y(Task& task, const void* y) {
    if (task.ny <= 0) return DF_STATUS_NY;
    const std::int64_t slots = row_count(task.y_hint, task.ny);
    const std::int64_t filled = task.y_hint == DF_SEPARATE_ROWS ? 1 : slots;
    return set_rows(task.y_rows, task.y_slots, slots, filled, y,
                    static_cast<std::uint64_t>(task.nx) * task.element_size);
}

std::int32_t set_coefficients(Task& task, const void* first) {
    if (task.ny <= 0) return DF_STATUS_NY;
    const std::int64_t filled = (task.coefficient_hint & DF_SEPARATE_ROWS) ? 1 : task.ny;
    const std::uint64_t stride = static_cast<std::uint64_t>(task.order) * cell_count(task);
    return set_rows(task.coefficient_rows, task.coefficient_slots, task.ny, filled, first,
                    stride * task.element_size);
}

namespace {

template <class T>
std::int32_t new_task(Task** out, std::int64_t nx, const T* x, std::int64_t x_hint, std::int64_t ny,
                      const T* y, std::int64_t y_hint, std::int32_t int64_flag) {
    if (!is_breakpoint_count(nx)) return DF_STATUS_NX;
    if (x == nullptr) return DF_STATUS_X;
    if (!is_partition_hint(x_hint)) return DF_STATUS_X_HINT;
    if (ny != 0 && y == nullptr) return DF_STATUS_Y;
    if (ny == 0 && y != nullptr) return DF_STATUS_NY;
    if (!is_storage_hint(y_hint)) return DF_STATUS_Y_HINT;

    auto* task = static_cast<Task*>(allocate_aligned(sizeof(Task)));
    if (task == nullptr) return DF_STATUS_NO_MEMORY;
    std::memset(task, 0, sizeof(Task));
    task->element_size = sizeof(T);
    task->nx = nx;
    task->x = x;
    task->x_hint = x_hint;
    task->ny = ny;
    task->y_hint = y_hint;
    task->int64_flag = int64_flag;
    task->internal_byte = 4;
    task->internal_word = 1;
    task->dimension = 1;
    std::int32_t status = ny == 0 ? DF_STATUS_OK : set_y(*task, y);
    if (status == DF_STATUS_OK) {
        task->bins = static_cast<Bin*>(allocate_aligned(table_size));
        if (task->bins == nullptr) status = DF_STATUS_NO_MEMORY;
    }
    if (status != DF_STATUS_OK) {
        destroy(task);
        return status;
    }
    build_search_table(*task);
    *out = task;
    return DF_STATUS_OK;
}

template <class T>
std::int32_t edit_spline(Task& task, std::int64_t order, std::int64_t type, std::int64_t bc_type,
                         const T* bc, std::int64_t ic_type, const T* ic, T* coefficients,
                         std::int64_t hint) {
    if (order < 0) return DF_STATUS_ORDER;
    if (type < 0) return DF_STATUS_TYPE;
    task.order = order;
    task.type = type;
    const bool without_values = bc_type == DF_NO_CONDITIONS || bc_type == DF_NOT_A_KNOT ||
                                bc_type == DF_FREE_END || bc_type == DF_PERIODIC;
    if (!without_values && bc == nullptr) return DF_STATUS_BOUNDARY_CONDITIONS;
    task.bc_type = bc_type;
    task.bc = bc;
    if (ic_type != 0 && ic == nullptr) return DF_STATUS_INTERNAL_CONDITIONS;
    if (ic_type == 0 && ic != nullptr) return DF_STATUS_INTERNAL_TYPE;
    task.ic_type = ic_type;
    task.ic = ic;
    if (coefficients != nullptr) {
        const std::int64_t hint_before = task.coefficient_hint;
        task.coefficient_hint = hint;
        if (const std::int32_t status = set_coefficients(task, coefficients)) {
            task.coefficient_hint = hint_before;
            return status;
        }
    }
    task.coefficient_hint = hint;
    return DF_STATUS_OK;
}

}  // namespace

}  // namespace kef::fit

using namespace kef::fit;

#define KEF_DF_TASK_FUNCTIONS(letter, T)                                                  \
    int32_t kef_df_kernel_##letter##NewTask1D(kef_df_task** task, int64_t nx, const T* x, \
                                              int64_t x_hint, int64_t ny, const T* y,     \
                                              int64_t y_hint, int32_t int64_flag) {       \
        return new_task(task, nx, x, x_hint, ny, y, y_hint, int64_flag);                  \
    }                                                                                     \
    int32_t kef_df_kernel_##letter##EditPPSpline1D(                                       \
        kef_df_task* task, int64_t order, int64_t type, int64_t bc_type, const T* bc,     \
        int64_t ic_type, const T* ic, T* coefficients, int64_t coefficient_hint) {        \
        return with_task<T>(task, [&](Task& t) {                                          \
            return edit_spline(t, order, type, bc_type, bc, ic_type, ic, coefficients,    \
                               coefficient_hint);                                         \
        });                                                                               \
    }
KEF_DF_TASK_FUNCTIONS(d, double)
KEF_DF_TASK_FUNCTIONS(s, float)

int32_t kef_df_kernel_DeleteTask(kef_df_task** task) {
    if (*task == nullptr) return DF_STATUS_NULL_TASK;
    destroy(*task);
    *task = nullptr;
    return DF_STATUS_OK;
}
