// The process-wide table of shared read-only data.
#pragma once

#include <cstdint>

#include "kef_rng.h"

namespace kef::rng {

inline bool is_null_id(const std::uint32_t* id) {
    return id == nullptr || (id[0] | id[1] | id[2] | id[3]) == 0;
}

// A chunk in a stream's list. What it refers to is told by id and data; null data alone tell
// nothing.
struct ListedChunk : kef_chunk {
    bool refers;  // to an entry, since it was attached
};

// Takes a reference to the entry of the chunk's id and sets the chunk's data pointer; false when
// the id is null or absent, or when the entry has no room for the chunk's size.
bool refer(ListedChunk& chunk);

// Takes one more reference to the data that `source` refers to, for its copy; false when that has
// data of its own.
bool refer_alike(ListedChunk& copy, const ListedChunk& source);

// Gives back the data of a chunk: a reference where it refers, else the block.
void release(const ListedChunk& chunk);

}  // namespace kef::rng
