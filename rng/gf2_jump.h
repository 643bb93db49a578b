// Jumps of generators whose state is a window over a linear sequence over GF(2).
#pragma once

#include <emmintrin.h>

#include <cstring>

#include "rng/registry.h"

namespace kef::rng {

// What __vts_SkipAheadSWin is told of a generator.
struct Jump {
    kef_jump_load load;
    kef_jump_store store;
    kef_jump_clear clear;
    kef_jump_copy copy;
    kef_jump_step step;
    kef_jump_add add;
    std::int32_t words, stride, degree, count;
    const std::uint16_t* exponents;
};

// For a window of `words` words, a multiple of 4, at the start of the state, that moves by `stride`
// words a step: advance(x, count) writes the words of `count` steps behind the window x.
template <std::int32_t words, std::int32_t stride, void (*advance)(std::uint32_t*, std::int32_t)>
struct Window {
    static constexpr std::size_t bytes = words * sizeof(std::uint32_t);

    template <std::size_t count>
    static constexpr Jump jump(std::int32_t degree, const std::uint16_t (&exponents)[count]) {
        return {load,     store, clear,  copy,   advance,
                add,      words, stride, degree, static_cast<std::int32_t>(count),
                exponents};
    }

    static void load(const kef_stream* stream, std::uint32_t* w) {
        std::memcpy(w, stream + 1, bytes);
    }
    static void store(kef_stream* stream, const std::uint32_t* w) {
        std::memcpy(static_cast<void*>(stream + 1), w, bytes);
    }
    static void clear(std::uint32_t* w) { std::memset(w, 0, bytes); }
    static void copy(std::uint32_t* to, const std::uint32_t* from) { std::memcpy(to, from, bytes); }
    // Two windows at a time: half as many loads and stores of the sum.
    static void add(std::uint32_t* to, const std::uint32_t* from, const std::uint32_t* places,
                    std::int32_t count) {
        std::int32_t i = 0;
        for (; i + 2 <= count; i += 2) add(to, from + places[i], from + places[i + 1]);
        if (i < count)
            for (std::int32_t j = 0; j < words; j += 4)
                put4(to + j, _mm_xor_si128(get4(to + j), get4(from + places[i] + j)));
    }

private:
    static void add(std::uint32_t* to, const std::uint32_t* x, const std::uint32_t* y) {
        for (std::int32_t j = 0; j < words; j += 4)
            put4(to + j, _mm_xor_si128(get4(to + j), _mm_xor_si128(get4(x + j), get4(y + j))));
    }
    static __m128i get4(const std::uint32_t* x) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(x));
    }
    static void put4(std::uint32_t* x, __m128i v) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(x), v);
    }
};

// By k steps: t^k by squaring.
std::int32_t jump_by_squaring(kef_stream* stream, const Jump& g, std::uint64_t k);

// By k steps with powers of t modulo the characteristic polynomial from a table: row b has
// t^(2^b), in rows of `power_words` words whose last one is 0.
std::int32_t jump_by_powers(kef_stream* stream, const Jump& g, std::uint64_t k,
                            const std::uint64_t* powers, std::size_t power_words);

}  // namespace kef::rng
