// Rows of the registry and how an id finds its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kef_rng.h"

struct kef_stream {
    kef_stream_header header;
};

namespace kef::rng {

using Header = kef_stream_header;
static_assert(sizeof(void*) != 4 || (sizeof(Header) == 16 && offsetof(Header, first) == 8));

// Row numbers of the built-in generators in __RegBrngsNew.
enum Row {
#define KEF_BRNG(name, ...) row_##name,
#include "rng/registry.def"
#undef KEF_BRNG
    built_in_rows
};

// Bytes of each generator's own state: what the block holds behind the header, and what an
// image holds.
#define KEF_BRNG(name, size, wide, ...) \
    inline constexpr std::size_t state_bytes_##name = size - 16 + (sizeof(void*) == 4 ? 0 : wide);
#include "rng/registry.def"
#undef KEF_BRNG

inline constexpr std::int32_t family_shift = 20, first_family = 1 << family_shift;
inline constexpr std::int32_t first_small_wh = 4, last_small_wh = 276;

struct Place {
    const kef_brng* table;
    std::int32_t row, sub;
    const kef_brng& brng() const { return table[row]; }
};

inline Place resolve(std::int32_t brng) {
    if (brng >= first_family)
        return {__RegBrngsNew, (brng >> family_shift) - 1, brng & (first_family - 1)};
    if (brng >= first_small_wh && brng <= last_small_wh)
        return {__RegBrngs, first_small_wh, brng - first_small_wh};
    return {__RegBrngs, brng, 0};
}

bool valid(const Place& place);

// Bytes of state behind the header of a stream block; a user's generator may count too few.
inline std::size_t state_bytes(const Place& place) {
    const std::int32_t size = place.brng().stream_state_size - std::int32_t{sizeof(Header)};
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

// The row in __RegBrngsNew of the same generator; for valid places.
std::int32_t family_row(const Place& place);

// False for a state that no stream of the generator can have. A user's generator is trusted.
bool valid_state(const Place& place, const kef_stream* stream);

#define KEF_BRNG(name, ...) bool valid_state_##name(const kef_stream* stream);
#include "rng/registry.def"
#undef KEF_BRNG

template <class State> State& state_of(kef_stream* stream) {
    return *reinterpret_cast<State*>(stream + 1);
}
template <class State> const State& state_of(const kef_stream* stream) {
    return *reinterpret_cast<const State*>(stream + 1);
}

}  // namespace kef::rng
