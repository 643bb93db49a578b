// The recurrence of the Mersenne twister of word length 32:
//   x[k+n] = x[k+m] ^ ((upper bits of x[k], lower bits of x[k+1]) A)
// with y A = y >> 1, ^ a where y is odd. Four words a step; m and n - m are at least 4.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace kef::rng {

template <std::int32_t n, std::int32_t m, std::uint32_t lower_mask> struct Twister {
    static constexpr std::uint32_t upper_mask = ~lower_mask;
    static std::uint32_t step(std::uint32_t x0, std::uint32_t x1, std::uint32_t xm,
                              std::uint32_t a) {
        const std::uint32_t y = (x0 & upper_mask) | (x1 & lower_mask);
        return xm ^ y >> 1 ^ (-(y & 1) & a);
    }

    // The next n words in place.
    static void regenerate(std::uint32_t* x, std::uint32_t a) {
        run(x, x, 0, n - m, m, a);
        run(x, x, n - m, n - 1, m - n, a);
        x[n - 1] = step(x[n - 1], x[0], x[m - 1], a);
    }
    // The next `count` words behind the n.
    static void extend(std::uint32_t* x, std::int32_t count, std::uint32_t a) {
        run(x + n, x, 0, count, m, a);
    }

private:
    // r[k] for first <= k < last from x[k], x[k+1] and x[k+distance].
    static void run(std::uint32_t* r, const std::uint32_t* x, std::int32_t first, std::int32_t last,
                    std::int32_t distance, std::uint32_t a) {
        const __m128i matrix = _mm_set1_epi32(static_cast<int>(a)), one = _mm_set1_epi32(1),
                      lower = _mm_set1_epi32(lower_mask);
        const std::int32_t whole = first + (last - first) / 4 * 4;
#pragma GCC unroll 2
        for (std::int32_t k = first; k < whole; k += 4) {
            const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + k));
            const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + k + 1));
            const __m128i xm = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + k + distance));
            const __m128i y = _mm_or_si128(_mm_andnot_si128(lower, x0), _mm_and_si128(lower, x1));
            // The lowest bit of y is that of x1.
            const __m128i odd = _mm_cmpeq_epi32(_mm_and_si128(x1, one), one);
            _mm_storeu_si128(
                reinterpret_cast<__m128i*>(r + k),
                _mm_xor_si128(_mm_xor_si128(xm, _mm_srli_epi32(y, 1)), _mm_and_si128(odd, matrix)));
        }
        for (std::int32_t k = whole; k < last; ++k) r[k] = step(x[k], x[k + 1], x[k + distance], a);
    }
};

// y ^= y >> u; y ^= y << 7 & b; y ^= y << 15 & c; y ^= y >> 18.
template <int u> struct Tempering {
    std::uint32_t b, c;

    std::uint32_t operator()(std::uint32_t y) const {
        y ^= y >> u;
        y ^= y << 7 & b;
        y ^= y << 15 & c;
        return y ^ y >> 18;
    }
    __m128i operator()(__m128i y) const {
        y = _mm_xor_si128(y, _mm_srli_epi32(y, u));
        y = _mm_xor_si128(y,
                          _mm_and_si128(_mm_slli_epi32(y, 7), _mm_set1_epi32(static_cast<int>(b))));
        y = _mm_xor_si128(
            y, _mm_and_si128(_mm_slli_epi32(y, 15), _mm_set1_epi32(static_cast<int>(c))));
        return _mm_xor_si128(y, _mm_srli_epi32(y, 18));
    }
    void operator()(const std::uint32_t* x, std::int32_t n, std::uint32_t* r) const {
        std::int32_t i = 0;
#pragma GCC unroll 2
        for (; i + 4 <= n; i += 4)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(r + i),
                             (*this)(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i))));
        for (; i < n; ++i) r[i] = (*this)(x[i]);
    }
};

}  // namespace kef::rng
