// Vectors of 32- and 64-bit words, which generators compute with.
#pragma once

#include "vm/simd/simd.h"

namespace KEF_VM {

// Unaligned.
using UintsAnywhere = uints __attribute__((aligned(4), may_alias));
using UlongsAnywhere = ulongs __attribute__((aligned(8), may_alias));
inline uints load(const std::uint32_t* p) { return *reinterpret_cast<const UintsAnywhere*>(p); }
inline ulongs load(const std::uint64_t* p) { return *reinterpret_cast<const UlongsAnywhere*>(p); }
inline void store(std::uint32_t* p, uints x) { *reinterpret_cast<UintsAnywhere*>(p) = x; }
inline void store(std::uint64_t* p, ulongs x) { *reinterpret_cast<UlongsAnywhere*>(p) = x; }

// Words as doubles, exactly: as low half of a double with the exponent of 2^52, less 2^52.
inline DoublesPair widen(uints x) {
    constexpr int count = lanes<float>, half = count / 2;
    const uints exponent = filled<uints>(0x43300000u);
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return DoublesPair{
            (doubles)__builtin_shufflevector(x, exponent, (i / 2 + i % 2 * count)...) - 0x1p52,
            (doubles)__builtin_shufflevector(x, exponent, (half + i / 2 + i % 2 * count)...) -
                0x1p52};
    }
    (std::make_integer_sequence<int, count>());
}

}  // namespace KEF_VM
