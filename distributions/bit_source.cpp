// Random bits one number at a time, read ahead from a stream.
#include "distributions/frame.h"
#include "kef_bind.h"

namespace kef::dist {

namespace {

constexpr std::int32_t words = KEF_BIT_SOURCE_WORDS;
constexpr double two_16 = 65536.0, two_32 = two_16 * two_16;

// Rounding may give the end of the interval.
std::uint32_t floor_below(double x, double end) {
    return static_cast<std::uint32_t>(std::min(x, end - 1));
}

// Words of a generator without random bits of fixed width, from its doubles.
std::int32_t from_doubles(kef_stream* stream, std::uint32_t* r) {
    double u[words];
    const std::int32_t bits = rng::resolve(stream->header.brng).brng().bit_count;
    if (bits >= 32) {
        const std::int32_t status = draw(stream, words, u, 0.0, two_32);
        if (status >= 0)
            for (std::int32_t i = 0; i < words; ++i) r[i] = floor_below(u[i], two_32);
        return status;
    }
    for (std::int32_t first = 0; first < words; first += words / 2) {
        const std::int32_t status = draw(stream, words, u, 0.0, two_16);
        if (status < 0) return status;
        for (std::int32_t i = 0; i < words / 2; ++i)
            r[first + i] = floor_below(u[2 * i], two_16) << 16 | floor_below(u[2 * i + 1], two_16);
    }
    return VTS_STATUS_OK;
}

std::int32_t refill(kef_stream* stream, std::uint32_t* r) {
    const std::int32_t status = _vtsiRngUniformBits32(VTS_METHOD_STANDARD, stream, words, r);
    return status == VTS_STATUS_NO_BITS ? from_doubles(stream, r) : status;
}

std::uint32_t next(void* place) {
    auto& source = *static_cast<kef_bit_source*>(place);
    if (source.left <= 0) [[unlikely]] {
        source.status = refill(source.stream, source.words);
        if (source.status < 0) std::fill_n(source.words, words, 0u);
        source.left = words;
    }
    return source.words[words - source.left--];
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::uint32_t kef_vts_next_uint32(void* source) { return next(source); }

std::uint64_t kef_vts_next_uint64(void* source) {
    const std::uint64_t high = next(source);
    return high << 32 | next(source);
}

double kef_vts_next_double(void* source) {
    const std::uint32_t high = next(source) >> 5, low = next(source) >> 6;
    return (high * 67108864.0 + low) * 0x1p-53;
}
