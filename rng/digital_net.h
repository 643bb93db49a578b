// Digital sequences in base 2 (Sobol, Niederreiter): point i of coordinate c is the exclusive or of
// the direction numbers v[j][c] over the set bits j of the Gray code i ^ i >> 1. I. A. Antonov,
// V. M. Saleev, USSR Comput. Math. Math. Phys. 19 (1980) 252-256.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "rng/brng_frame.h"

namespace kef::rng {

// State of `capacity` words behind the four counters: x[dimension] of the current point, then the
// direction numbers v[32][dimension], the lowest bit of the index first, and, where there is room,
// the points of indices 0 to 31, so that 32 points at a time need one exclusive or a coordinate.
template <std::int32_t capacity> struct DigitalNet {
    struct State {
        std::uint32_t dimension;
        std::uint32_t index;      // of the current point, modulo 2^32
        std::uint32_t component;  // the next coordinate; the same one for ever after a leapfrog
        std::uint32_t leap;       // 1 after a leapfrog
        std::uint32_t body[capacity];

        std::uint32_t* x() { return body; }
        std::uint32_t* v(std::int32_t bit) { return body + dimension * (1 + bit); }
        std::uint32_t* prefix(std::uint32_t i) { return body + dimension * (33 + i); }
        const std::uint32_t* x() const { return body; }
        const std::uint32_t* v(std::int32_t bit) const { return body + dimension * (1 + bit); }
        const std::uint32_t* prefix(std::uint32_t i) const { return body + dimension * (33 + i); }
    };
    static constexpr std::uint32_t group = 32, width = vm::lanes<std::uint32_t>;
    static bool has_prefixes(const State& s) { return s.dimension * (33 + group) <= capacity; }
    using Word = std::uint32_t;
    static constexpr std::uint32_t max_dimension = capacity / 33;

    // The current point from its index.
    static void locate(State& s) {
        std::fill_n(s.x(), s.dimension, 0u);
        for (std::uint32_t gray = s.index ^ s.index >> 1; gray != 0; gray &= gray - 1)
            add(s, std::countr_zero(gray));
    }

    static void add(State& s, std::int32_t bit) { add_rows(s.x(), s.v(bit), s.dimension, s.x()); }

    static void next_point(State& s) {
        ++s.index;
        if (s.index != 0) add(s, std::countr_zero(s.index));
        else std::fill_n(s.x(), s.dimension, 0u);
    }

    // Starts at `index`; the caller's direction numbers stand dimension by dimension, 32 each,
    // that of the lowest index bit first.
    template <class Fill>
    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* words,
                             std::uint32_t default_dimensions, std::uint32_t index, Fill fill) {
        std::memset(&s, 0, sizeof s);
        const std::uint32_t wanted = words[0];
        if (n > 1) {
            if (wanted == 0 || wanted > max_dimension ||
                static_cast<std::uint32_t>(n) != 1 + 32 * wanted)
                return VTS_STATUS_BAD_ARGUMENT;
            s.dimension = wanted;
            for (std::uint32_t c = 0; c < wanted; ++c)
                for (std::int32_t bit = 0; bit < 32; ++bit) s.v(bit)[c] = words[1 + 32 * c + bit];
        } else {
            s.dimension = wanted == 0 || wanted > default_dimensions ? 1 : wanted;
            fill(s);
        }
        if (has_prefixes(s))
            for (std::uint32_t i = 1; i < group; ++i) {
                const std::uint32_t *before = s.prefix(i - 1), *v = s.v(std::countr_zero(i));
                for (std::uint32_t c = 0; c < s.dimension; ++c) s.prefix(i)[c] = before[c] ^ v[c];
            }
        s.index = index;
        locate(s);
        return VTS_STATUS_OK;
    }

    // One coordinate remains: number k from here, and the same one of the points that follow.
    static std::int32_t leapfrog(kef_stream*, State& s, std::uint32_t k, std::int32_t count) {
        const std::uint32_t width = s.leap != 0 ? 1 : s.dimension;
        if (static_cast<std::uint32_t>(count) != width) return VTS_STATUS_NO_LEAPFROG;
        skip(nullptr, s, k);
        s.leap = 1;
        return VTS_STATUS_OK;
    }

    // Few points are made one after the other: finding one anew costs up to 32 sums of its width.
    static std::int32_t skip(kef_stream*, State& s, std::uint64_t k) {
        std::uint64_t points = k;
        if (s.leap == 0 && k >> 31 == 0) {
            const std::uint32_t rest = static_cast<std::uint32_t>(k) + s.component;
            points = rest / s.dimension;
            s.component = rest % s.dimension;
        } else if (s.leap == 0) {
            // component < dimension < 2^31: the sum may wrap at 2^64, its parts may not.
            const std::uint64_t rest = k % s.dimension + s.component;
            points = k / s.dimension + rest / s.dimension;
            s.component = static_cast<std::uint32_t>(rest % s.dimension);
        }
        if (points <= 8) {
            for (; points > 0; --points) next_point(s);
            return VTS_STATUS_OK;
        }
        s.index += static_cast<std::uint32_t>(points);
        locate(s);
        return VTS_STATUS_OK;
    }

    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t) {
        if (s.leap != 0) {
            std::uint32_t& x = s.x()[s.component];
            for (; n > 0; --n) {
                *r++ = x;
                x = ++s.index == 0 ? 0 : x ^ s.v(std::countr_zero(s.index))[s.component];
            }
            return VTS_STATUS_OK;
        }
        const auto dimension = static_cast<std::int32_t>(s.dimension);
        while (n > 0) {
            if (s.component == 0 && n >= dimension) {
                const std::int32_t taken = points(s, n / dimension, r) * dimension;
                r += taken;
                n -= taken;
                continue;
            }
            const std::int32_t taken =
                std::min(n, dimension - static_cast<std::int32_t>(s.component));
            std::copy_n(s.x() + s.component, taken, r);
            r += taken;
            n -= taken;
            s.component += static_cast<std::uint32_t>(taken);
            if (s.component == s.dimension) {
                s.component = 0;
                next_point(s);
            }
        }
        return VTS_STATUS_OK;
    }

    // Some of the next `count` points, at least one; returns how many.
    static std::int32_t points(State& s, std::int32_t count, Word* r) {
        if (!has_prefixes(s)) {
            std::copy_n(s.x(), s.dimension, r);
            next_point(s);
            return 1;
        }
        // Index 32 B + i: the point of 32 B and the prefix of i.
        const std::uint32_t first = s.index % group;
        count = std::min(count, static_cast<std::int32_t>(group - first));
        const std::uint32_t* prefix = s.prefix(first);
        std::uint32_t base[max_dimension];
        std::uint32_t* x = s.x();
        add_rows(x, prefix, s.dimension, base);
        emit(base, prefix, count, s.dimension, r);
        s.index += static_cast<std::uint32_t>(count);
        if (s.index % group != 0) {
            prefix = s.prefix(s.index % group);
            add_rows(base, prefix, s.dimension, x);
        } else if (s.index != 0) {
            // gray(32 B + 32) and gray(32 B) differ in bit 4 and in the lowest set bit of the
            // index.
            add_rows(base, s.v(4), s.dimension, x);
            add(s, std::countr_zero(s.index));
        } else {
            std::fill_n(x, s.dimension, 0u);
        }
        return count;
    }

    // r[p][c] = base[c] ^ prefix[p][c].
    static void emit(const std::uint32_t* base, const std::uint32_t* prefix, std::int32_t count,
                     std::uint32_t dimension, Word* r) {
        if (dimension < 4) {  // twelve words are whole points of 1, 2 or 3 coordinates
            std::uint32_t pattern[12];
            for (std::uint32_t i = 0; i < dimension; ++i) pattern[i] = base[i];
            for (std::uint32_t i = dimension; i < 12; ++i) pattern[i] = pattern[i - dimension];
            const std::uint32_t total = dimension * static_cast<std::uint32_t>(count);
            std::uint32_t i = 0, j = 0;
            for (; i + 4 <= total; i += 4, j = j == 8 ? 0 : j + 4)
                add4(pattern + j, prefix + i, r + i);
            for (; i < total; ++i, ++j) r[i] = pattern[j] ^ prefix[i];
            return;
        }
        for (; count > 0; --count, prefix += dimension, r += dimension)
            if (add_blocks(base, prefix, dimension, r) < dimension)
                add4(base + dimension - 4, prefix + dimension - 4, r + dimension - 4);
    }
    // r = x ^ y.
    static void add_rows(const std::uint32_t* x, const std::uint32_t* y, std::uint32_t dimension,
                         std::uint32_t* r) {
        for (std::uint32_t c = add_blocks(x, y, dimension, r); c < dimension; ++c)
            r[c] = x[c] ^ y[c];
    }
    // The same for as many coordinates as fill vectors and fours; returns how many.
    static std::uint32_t add_blocks(const std::uint32_t* x, const std::uint32_t* y,
                                    std::uint32_t dimension, std::uint32_t* r) {
        std::uint32_t c = 0;
        for (; c + width <= dimension; c += width)
            vm::store(r + c, vm::load(x + c) ^ vm::load(y + c));
        if constexpr (width > 4)
            for (; c + 4 <= dimension; c += 4) add4(x + c, y + c, r + c);
        return c;
    }
    static void add4(const std::uint32_t* x, const std::uint32_t* y, std::uint32_t* r) {
        const __m128i sum = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x)),
                                          _mm_loadu_si128(reinterpret_cast<const __m128i*>(y)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r), sum);
    }

    template <class Real> using Map = FullWordMap<Real>;

    // The counters in their ranges, and the point and the prefixes those of the direction numbers.
    // After a leapfrog one coordinate of the point goes on alone.
    static bool valid(const State& s, std::int32_t) {
        if (s.dimension == 0 || s.dimension > max_dimension || s.component >= s.dimension ||
            s.leap > 1)
            return false;
        for (std::uint32_t c = 0; c < s.dimension; ++c) {
            if (s.leap != 0 && c != s.component) continue;
            std::uint32_t x = 0;
            for (std::uint32_t gray = s.index ^ s.index >> 1; gray != 0; gray &= gray - 1)
                x ^= s.v(std::countr_zero(gray))[c];
            if (s.x()[c] != x) return false;
        }
        for (std::uint32_t i = 0; i < group && has_prefixes(s); ++i)
            for (std::uint32_t c = 0; c < s.dimension; ++c)
                if (s.prefix(i)[c] !=
                    (i == 0 ? 0 : s.prefix(i - 1)[c] ^ s.v(std::countr_zero(i))[c]))
                    return false;
        return true;
    }
};

}  // namespace kef::rng
