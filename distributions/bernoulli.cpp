// 1 with probability p, or 0.
#include <bit>
#include <cstring>

#include "distributions/frame.h"

using namespace kef::dist;

// The uniforms are made where the results go. Bit patterns of floats that are not negative are
// ordered as the floats are: 1 where u < p. A p of 1, or what rounds to it, is above every u, those
// that round to 1 included; a p of 0 above none.
std::int32_t _vtsiRngBernoulli(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                               double p) {
    const std::int32_t status = draw(stream, n, reinterpret_cast<float*>(r), 0, 1);
    if (status < 0) return status;
    const auto single = static_cast<float>(p);
    const std::int32_t bits = single >= 1  ? INT32_MAX
                              : single > 0 ? std::bit_cast<std::int32_t>(single)
                                           : INT32_MIN;
    const __m128i limit = _mm_set1_epi32(bits);
    std::int32_t i = 0;
#pragma GCC unroll 4
    for (; i < (n & -4); i += 4) {
        auto* four = reinterpret_cast<__m128i*>(r + i);
        const __m128i below = _mm_cmpgt_epi32(limit, _mm_loadu_si128(four));
        _mm_storeu_si128(four, _mm_srli_epi32(below, 31));
    }
    for (; i < n; ++i) {
        std::int32_t u;
        std::memcpy(&u, r + i, sizeof u);
        r[i] = bits > u;
    }
    return status;
}
