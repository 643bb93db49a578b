// Jumps of generators whose state is a window over a linear sequence over GF(2).
#pragma once

#include <emmintrin.h>

#include <cstring>

#include "rng/registry.h"

namespace kef::rng {

// The routines of __vts_SkipAheadHorner for a window of `words` words at the start of the state.
// advance(x) writes x[words] to x[words + stride - 1]. `words` is a multiple of 4.
template <std::int32_t words, std::int32_t stride, void (*advance)(std::uint32_t*)> struct Window {
    static constexpr std::int32_t size = words;

    static void load(const kef_stream* stream, kef_jump_window* w) {
        w->start = 0;
        std::memcpy(w->words, stream + 1, words * sizeof(std::uint32_t));
    }
    static void store(kef_stream* stream, const kef_jump_window* w) {
        std::memcpy(static_cast<void*>(stream + 1), w->words + w->start,
                    words * sizeof(std::uint32_t));
    }
    static void clear(kef_jump_window* w) {
        w->start = 0;
        std::memset(w->words, 0, words * sizeof(std::uint32_t));
    }
    static void copy(kef_jump_window* to, const kef_jump_window* from) {
        to->start = 0;
        std::memcpy(to->words, from->words + from->start, words * sizeof(std::uint32_t));
    }
    static void step(kef_jump_window* w) {
        advance(w->words + w->start);
        w->start += stride;
        if (w->start == words) {
            std::memcpy(w->words, w->words + words, words * sizeof(std::uint32_t));
            w->start = 0;
        }
    }
    static void add(kef_jump_window* to, const kef_jump_window* from) {
        std::uint32_t* x = to->words + to->start;
        const std::uint32_t* y = from->words + from->start;
        for (std::int32_t i = 0; i < words; i += 4)
            _mm_storeu_si128(
                reinterpret_cast<__m128i*>(x + i),
                _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i)),
                              _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + i))));
    }
};

// `steps` steps, for a skip of k numbers: below the degree t^steps is one coefficient, by Horner's
// rule; else by groups of coefficients.
template <class W, std::size_t count>
std::int32_t jump(kef_stream* stream, std::uint64_t k, std::uint64_t steps, std::int32_t degree,
                  std::int32_t state_size, const std::uint16_t (&exponents)[count]) {
    const auto way =
        static_cast<std::int64_t>(k) < degree ? __vts_SkipAheadHorner : __vts_SkipAheadSWin;
    return way(stream, W::load, W::store, W::clear, W::copy, W::step, W::add, steps, W::size,
               degree, state_size, static_cast<std::int32_t>(count), exponents);
}

}  // namespace kef::rng
