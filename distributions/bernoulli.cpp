// 1 with probability p, or 0.
#include <bit>
#include <cstring>

#include "distributions/frame.h"

using namespace kef::dist;

// The uniforms are made where the results go. Bit patterns of floats that are not negative are
// ordered as the floats are: 1 where u < p.
std::int32_t _vtsiRngBernoulli(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                               double p) {
    const std::int32_t status = draw(stream, n, reinterpret_cast<float*>(r), 0, 1);
    if (status < 0) return status;
    const auto bits = std::bit_cast<std::int32_t>(static_cast<float>(p));
    const __m128i limit = _mm_set1_epi32(bits);
    std::int32_t i = 0;
    for (; i + 4 <= n; i += 4) {
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
