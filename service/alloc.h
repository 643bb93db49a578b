// Blocks aligned to 128 bytes, shared by streams, chunks and tasks.
#pragma once

#include <cstddef>

namespace kef {

// A block of at least `size` bytes whose address is a multiple of 128, or null
// when there is no memory. The contents are not initialised.
void* allocate_aligned(std::size_t size);

// The size that a block was asked for.
std::size_t block_size(const void* block);

// Gives back a block of allocate_aligned; null is allowed.
void free_aligned(void* block);

}  // namespace kef
