// Creation of streams inside the library.
#pragma once

#include "rng/registry.h"

namespace kef::rng {

// A block for a valid place with its header filled in and its state zero; null when there is no
// memory.
kef_stream* allocate_stream(const Place& place, std::int32_t brng);

}  // namespace kef::rng
