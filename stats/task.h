// The statistics task: what task.def lists, words of its own, and the blocks that
// computations keep in it from call to call.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kef_stats.h"

// The address of an integer, of data that is read, and of data that is written.
using kef_ss_integer = const void*;
using kef_ss_input = const void*;
using kef_ss_output = void*;

// Every field is one machine word.
struct kef_ss_task {
    std::uintptr_t wide_integers;  // integers behind pointers have 64 bits
    std::uintptr_t version;
    std::uintptr_t revision;
#define KEF_PARAMETER(kind, id, name, status) kef_ss_##kind name;
#include "stats/task.def"
    void* kept[8];  // blocks of keep(), by kef::stats::Kept
    std::uintptr_t release_count;
    void (*release[1])(kef_ss_task*);
};
static_assert(sizeof(kef_ss_task) == 90 * sizeof(void*));
static_assert(offsetof(kef_ss_task, mean) == 12 * sizeof(void*));
static_assert(offsetof(kef_ss_task, kept) == 80 * sizeof(void*));

namespace kef::stats {

using Task = kef_ss_task;

// A task as NewTask makes it: what it knows besides its words stands behind them.
struct OwnedTask {
    Task words;
    bool single;  // of the two precisions
};

// What each of the kept words is for.
enum class Kept { basic, basic_products, scratch, stream, stream_raw, stream_levels, groups };

// The arrays of a kept block, one after the other, each aligned to 128 bytes.
class KeptLayout {
public:
    // The offset of an array of count * element * times bytes.
    std::uint64_t reserve(std::uint64_t count, std::uint64_t element, std::uint64_t times = 1) {
        const std::uint64_t offset = size_;
        std::uint64_t bytes;
        if (__builtin_mul_overflow(count, element, &bytes) ||
            __builtin_mul_overflow(bytes, times, &bytes) ||
            __builtin_add_overflow(bytes, 127, &bytes) ||
            __builtin_add_overflow(bytes & -128, offset, &size_))
            size_ = UINT64_MAX;
        return offset;
    }
    std::uint64_t size() const { return size_; }

private:
    std::uint64_t size_ = 0;
};

// The kept block with room for a layout: the one that is there, or a larger one that begins
// with its contents, the rest zero. Null when there is no memory, and then the old block stays.
// DeleteTask frees it.
char* keep(Task& task, Kept which, const KeptLayout& layout);

// Room for a layout that nothing needs after the call; its contents are anything. Null when there
// is no memory. The room stays in the task, for the next call.
char* scratch(Task& task, const KeptLayout& layout);

// An integer behind a pointer that is not null, 64 bits wide or 32.
inline std::int64_t integer_at(bool wide, const void* address, std::ptrdiff_t index = 0) {
    return wide ? static_cast<const std::int64_t*>(address)[index]
                : static_cast<const std::int32_t*>(address)[index];
}
inline std::int64_t integer_at(const Task& task, const void* address, std::ptrdiff_t index = 0) {
    return integer_at(task.wide_integers != 0, address, index);
}

// p or n as a positive number that an array can have elements; 0 for anything else.
inline std::ptrdiff_t positive_at(const Task& task, const void* address) {
    if (address == nullptr) return 0;
    const std::int64_t value = integer_at(task, address);
    return value > 0 && value <= PTRDIFF_MAX / 4 ? static_cast<std::ptrdiff_t>(value) : 0;
}

}  // namespace kef::stats
