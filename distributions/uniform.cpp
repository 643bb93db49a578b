// Continuous and integer uniform numbers.
#include "distributions/frame.h"
#include "vm/simd/simd.h"

namespace kef::dist {

namespace {

const kef_brng& brng_of(const kef_stream* stream) {
    return rng::resolve(stream->header.brng).brng();
}

std::int32_t generate(kef_stream* stream, std::int32_t n, double* r, double a, double b) {
    return brng_of(stream).generate_double(stream, n, r, a, b);
}
std::int32_t generate(kef_stream* stream, std::int32_t n, float* r, float a, float b) {
    return brng_of(stream).generate_float(stream, n, r, a, b);
}

template <class Real>
std::int32_t uniform(std::int32_t method, kef_stream* stream, std::int32_t n, Real* r, Real a,
                     Real b) {
    const std::int32_t status = generate(stream, n, r, a, b);
    if (status >= 0 && (method & VTS_METHOD_ACCURATE) != 0)
        transform(
            n, r, [=](auto x) { return at_most(b, at_least(a, x)); }, r);
    return status;
}

// The floors of two numbers, in the low half.
__m128i floors(kef::vm::d2 x) {
    const __m128i truncated = _mm_cvttpd_epi32((__m128d)x);
    const __m128d above = _mm_cmpgt_pd(_mm_cvtepi32_pd(truncated), (__m128d)x);
    const __m128i minus_one = _mm_shuffle_epi32(_mm_castpd_si128(above), _MM_SHUFFLE(2, 0, 2, 0));
    return _mm_add_epi32(truncated, minus_one);
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsdRngUniform(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                             double a, double b) {
    return uniform(method, stream, n, r, a, b);
}

std::int32_t _vtssRngUniform(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                             float a, float b) {
    return uniform(method, stream, n, r, a, b);
}

std::int32_t _vtsiRngUniform(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                             std::int32_t a, std::int32_t b) {
    double scratch[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const std::int32_t status = draw(stream, m, scratch, a, b);
        if (status < 0) return status;
        std::int32_t i = 0;
        for (; m - i >= 2; i += 2)
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i),
                             floors(kef::vm::load_as<kef::vm::d2>(scratch + i)));
        if (i < m) out[i] = _mm_cvtsi128_si32(floors(kef::vm::both(scratch[i])));
        return status;
    });
}
