// The block is carved from a larger one of the C library; the words before its
// start keep the address to free and the size.
#include "service/alloc.h"

#include <cstdint>
#include <cstdlib>

#include "service/platform.h"

namespace kef {

namespace {
constexpr std::size_t alignment = 128;
}

void* allocate_aligned(std::size_t size) {
    constexpr std::size_t slack = alignment + 2 * sizeof(void*);
    if (size > PTRDIFF_MAX - slack) return nullptr;  // no object is larger, whatever malloc thinks
    const platform::ErrorsKept kept;
    void* raw = std::malloc(size + slack);
    if (raw == nullptr) return nullptr;
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(raw) + 2 * sizeof(void*);
    const std::uintptr_t start = (first + alignment - 1) & ~(alignment - 1);
    void** block = reinterpret_cast<void**>(start);
    block[-1] = raw;
    reinterpret_cast<std::size_t*>(block)[-2] = size;
    return block;
}

std::size_t block_size(const void* block) { return static_cast<const std::size_t*>(block)[-2]; }

void free_aligned(void* block) {
    if (block == nullptr) return;
    const platform::ErrorsKept kept;
    std::free(static_cast<void**>(block)[-1]);
}

}  // namespace kef
