// The process-wide table of shared read-only data.
#pragma once

#include <cstdint>

#include "kef_rng.h"

namespace kef::rng {

inline bool is_null_id(const std::uint32_t* id) {
    return id == nullptr || (id[0] | id[1] | id[2] | id[3]) == 0;
}

// Takes a reference for a chunk and sets its data pointer; false when the id is null or absent,
// or, where `check_size` asks for it, when the entry's block holds less than the chunk's size.
bool refer(kef_chunk& chunk, bool check_size);

// Gives back the data of a chunk: a reference where it has the entry's data, else the block.
void release(const kef_chunk& chunk);

}  // namespace kef::rng
