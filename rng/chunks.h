// The chunk list of a stream.
#pragma once

#include <cstdint>

#include "kef_rng.h"

namespace kef::rng {

// Appends a chunk that owns `data`, or that refers to the shared entry of the id where there is
// one with room for `size` bytes; then the data is freed. When it fails the data is the caller's
// still.
std::int32_t attach(kef_stream* stream, std::int32_t key, const std::uint32_t* shared_id,
                    void* data, std::int32_t size);

}  // namespace kef::rng
