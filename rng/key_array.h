// Initialisation of a block of words by a key array: M. Matsumoto, T. Nishimura, Mersenne twister
// (revision of 2002/1/26).
#pragma once

#include <algorithm>
#include <cstdint>

namespace kef::rng {

template <std::int32_t n>
void fill_by_key_array(std::uint32_t (&x)[n], const std::uint32_t* key, std::int32_t length) {
    constexpr std::uint32_t first = 19650218, spread = 1812433253, mix1 = 1664525,
                            mix2 = 1566083941;
    const auto previous = [&x](std::int32_t i) { return x[i - 1] ^ x[i - 1] >> 30; };
    x[0] = first;
    for (std::int32_t i = 1; i < n; ++i) x[i] = spread * previous(i) + i;
    std::int32_t i = 1, j = 0;
    const auto next = [&x, &i] {
        if (++i == n) {
            x[0] = x[n - 1];
            i = 1;
        }
    };
    for (std::int32_t k = std::max(n, length); k > 0; --k) {
        x[i] = (x[i] ^ previous(i) * mix1) + key[j] + j;
        next();
        if (++j == length) j = 0;
    }
    for (std::int32_t k = n - 1; k > 0; --k) {
        x[i] = (x[i] ^ previous(i) * mix2) - i;
        next();
    }
    x[0] = 0x80000000;
}

}  // namespace kef::rng
