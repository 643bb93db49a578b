// Creation and deletion of a task, and the memory that it owns.
#include "stats/task.h"

#include <cstring>

#include "service/alloc.h"
#include "stats/checks.h"

namespace kef::stats {

namespace {

std::int32_t new_task(Task** task_out, const void* p, const void* n, const void* x_storage,
                      const void* x, const void* weights, const void* indices, std::int32_t wide,
                      bool single) {
    const auto positive = [&](const void* integer) {
        return integer != nullptr && integer_at(wide != 0, integer) > 0;
    };
    if (!positive(p)) return VTS_SS_STATUS_BAD_DIMENSION;
    if (x != nullptr) {
        if (x_storage == nullptr) return VTS_SS_STATUS_NULL_STORAGE;
        if (!is_storage(integer_at(wide != 0, x_storage))) return VTS_SS_STATUS_BAD_X_STORAGE;
        if (!positive(n)) return VTS_SS_STATUS_BAD_COUNT;
    }
    if (task_out == nullptr) return VTS_SS_STATUS_NULL_TASK;

    auto* owned = static_cast<OwnedTask*>(allocate_aligned(sizeof(OwnedTask)));
    if (owned == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    std::memset(static_cast<void*>(owned), 0, sizeof *owned);
    owned->single = single;
    Task* task = &owned->words;
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

void free_kept(Task* task) {
    for (void*& block : task->kept) {
        free_aligned(block);
        block = nullptr;
    }
}

}  // namespace

// A block with room for a layout in place of the one that is there, or null; that block stays as it
// is and is the caller's to free.
static char* replace(Task& task, void*& block, const KeptLayout& layout) {
    if (layout.size() > PTRDIFF_MAX) return nullptr;
    auto* larger = static_cast<char*>(allocate_aligned(static_cast<std::size_t>(layout.size())));
    if (larger == nullptr) return nullptr;
    block = larger;
    task.release[0] = free_kept;
    task.release_count = 1;
    return larger;
}

char* keep(Task& task, Kept which, const KeptLayout& layout) {
    void*& block = task.kept[static_cast<int>(which)];
    void* const old = block;
    const std::size_t held = old != nullptr ? block_size(old) : 0;
    if (held < layout.size()) {
        char* grown = replace(task, block, layout);
        if (grown == nullptr) return nullptr;
        if (held > 0) std::memcpy(grown, old, held);
        std::memset(grown + held, 0, block_size(grown) - held);
        free_aligned(old);
    }
    return static_cast<char*>(block);
}

char* scratch(Task& task, const KeptLayout& layout) {
    void*& block = task.kept[static_cast<int>(Kept::scratch)];
    if (block != nullptr && block_size(block) >= layout.size()) return static_cast<char*>(block);
    void* const old = block;
    char* larger = replace(task, block, layout);
    if (larger != nullptr) free_aligned(old);
    return larger;
}

}  // namespace kef::stats

using namespace kef::stats;

extern "C" {

std::int32_t __vtsdSSNewTask(Task** task_out, const void* p, const void* n, const void* x_storage,
                             const double* x, const double* weights, const void* indices,
                             std::int32_t int64_flag) {
    return new_task(task_out, p, n, x_storage, x, weights, indices, int64_flag, false);
}

std::int32_t __vtssSSNewTask(Task** task_out, const void* p, const void* n, const void* x_storage,
                             const float* x, const float* weights, const void* indices,
                             std::int32_t int64_flag) {
    return new_task(task_out, p, n, x_storage, x, weights, indices, int64_flag, true);
}

std::int32_t __vtsSSDeleteTask(Task** task) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    for (std::uintptr_t i = 0; i < (*task)->release_count; ++i) (*task)->release[i](*task);
    kef::free_aligned(*task);
    *task = nullptr;
    return VTS_SS_STATUS_OK;
}

}  // extern "C"
