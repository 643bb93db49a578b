// Places in a block of at most 256 elements, which a byte holds, collected by the set bits of
// masks.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "vm/simd/simd.h"

namespace KEF_VM {

// Of four bits: the numbers of those that are set, one a byte, and how many they are.
struct SetBits {
    std::uint32_t numbers, count;
};
inline constexpr auto set_bits_of = [] {
    std::array<SetBits, 16> of{};
    for (unsigned mask = 0; mask < 16; ++mask)
        for (unsigned bit = 0; bit < 4; ++bit)
            if (mask >> bit & 1) of[mask].numbers |= bit << 8 * of[mask].count++;
    return of;
}();

template <int most> struct PlaceList {
    std::uint8_t at[most + 4];  // four are written at a time
};

// The set bits of `mask`, counted from `first`, behind the first `count`.
template <int most>
inline void add_places(PlaceList<most>& list, int& count, unsigned mask, int first) {
#pragma GCC unroll 4
    for (int i = 0; i < lanes<float>; i += 4) {
        const SetBits set = set_bits_of[mask >> i & 15];
        const std::uint32_t four = set.numbers + 0x01010101u * unsigned(first + i);
        std::memcpy(list.at + count, &four, sizeof four);
        count += static_cast<int>(set.count);
    }
}

}  // namespace KEF_VM
