// Creation and deletion of a task, and the memory that it owns.
#include "stats/task.h"

#include <cstring>

#include "service/alloc.h"

namespace kef::stats {

namespace {

// Whether an integer argument is positive, or is one of the storages of x.
bool positive(const void* value, std::int32_t wide) {
    return (wide ? *static_cast<const std::int64_t*>(value)
                 : *static_cast<const std::int32_t*>(value)) > 0;
}
bool is_storage(const void* value, std::int32_t wide) {
    const std::int64_t code =
        wide ? *static_cast<const std::int64_t*>(value) : *static_cast<const std::int32_t*>(value);
    return code == VTS_SS_STORAGE_ROWS || code == VTS_SS_STORAGE_COLUMNS;
}

std::int32_t new_task(Task** task_out, const void* p, const void* n, const void* x_storage,
                      const void* x, const void* weights, const void* indices, std::int32_t wide) {
    if (p == nullptr || !positive(p, wide)) return VTS_SS_STATUS_BAD_DIMENSION;
    if (x != nullptr) {
        if (x_storage == nullptr) return VTS_SS_STATUS_NULL_STORAGE;
        if (!is_storage(x_storage, wide)) return VTS_SS_STATUS_BAD_X_STORAGE;
        if (n == nullptr || !positive(n, wide)) return VTS_SS_STATUS_BAD_COUNT;
    }
    if (task_out == nullptr) return VTS_SS_STATUS_NULL_TASK;

    auto* task = static_cast<Task*>(allocate_aligned(sizeof(Task)));
    if (task == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    std::memset(task, 0, sizeof *task);
    task->wide_integers = static_cast<std::uint32_t>(wide);
    task->version = 2;
    task->revision = 1;
    task->dimension = p;
    task->count = n;
    task->indices = indices;
    task->x = x;
    task->weights = weights;
    task->x_storage = x_storage;
    *task_out = task;
    return VTS_SS_STATUS_OK;
}

// A kept block begins with its size; the rest starts at the next aligned address.
constexpr std::size_t header = 128;

void free_kept(Task* task) {
    for (void*& block : task->kept) {
        if (block != nullptr) free_aligned(static_cast<char*>(block) - header);
        block = nullptr;
    }
}

}  // namespace

void* keep(Task& task, Kept which, std::uint64_t size) {
    void*& block = task.kept[static_cast<int>(which)];
    if (block != nullptr) {
        char* start = static_cast<char*>(block) - header;
        std::uint64_t old_size;
        std::memcpy(&old_size, start, sizeof old_size);
        if (old_size >= size) return block;
        free_aligned(start);
        block = nullptr;
    }
    if (size > PTRDIFF_MAX - header) return nullptr;
    auto* start = static_cast<char*>(allocate_aligned(static_cast<std::size_t>(size) + header));
    if (start == nullptr) return nullptr;
    std::memset(start, 0, static_cast<std::size_t>(size) + header);
    std::memcpy(start, &size, sizeof size);
    task.release[0] = free_kept;
    task.release_count = 1;
    return block = start + header;
}

}  // namespace kef::stats

using namespace kef::stats;

extern "C" {

std::int32_t __vtsdSSNewTask(Task** task_out, const void* p, const void* n, const void* x_storage,
                             const double* x, const double* weights, const void* indices,
                             std::int32_t int64_flag) {
    return new_task(task_out, p, n, x_storage, x, weights, indices, int64_flag);
}

std::int32_t __vtssSSNewTask(Task** task_out, const void* p, const void* n, const void* x_storage,
                             const float* x, const float* weights, const void* indices,
                             std::int32_t int64_flag) {
    return new_task(task_out, p, n, x_storage, x, weights, indices, int64_flag);
}

std::int32_t __vtsSSDeleteTask(Task** task) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    for (std::uintptr_t i = 0; i < (*task)->release_count; ++i) (*task)->release[i](*task);
    kef::free_aligned(*task);
    *task = nullptr;
    return VTS_SS_STATUS_OK;
}

}  // extern "C"
