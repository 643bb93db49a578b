// Raw words and random bits of fixed width.
#include "distributions/frame.h"

namespace kef::dist {

namespace {

using Bits = std::int32_t (*)(std::int32_t, kef_stream*, std::int32_t, std::uint32_t*);

std::int32_t refuse(std::int32_t, kef_stream*, std::int32_t, std::uint32_t*) {
    return VTS_STATUS_NO_BITS;
}

std::int32_t whole_words(std::int32_t method, kef_stream* stream, std::int32_t n,
                         std::uint32_t* r) {
    return _vtsiRngUniformBits(method, stream, n, r);
}

// Bits 27 to 58 of MCG59's words. What remains after the full buffers is asked for even when it
// is nothing.
std::int32_t top_of_59(std::int32_t method, kef_stream* stream, std::int32_t n, std::uint32_t* r) {
    constexpr std::int32_t buffer = 2048;
    std::uint64_t words[buffer];
    for (;;) {
        const std::int32_t m = std::min(n, buffer);
        const std::int32_t status = _vtsiRngUniformBits(method, stream, m, words);
        if (status < 0) return status;
        for (std::int32_t i = 0; i < m; ++i) r[i] = static_cast<std::uint32_t>(words[i] >> 27);
        if (m < buffer) return status;
        r += m;
        n -= m;
    }
}

// How each generator makes 32 bits, in the order of the rows; 64 are twice as many.
constexpr Bits bits32[rng::built_in_rows] = {
    refuse,       // MCG31M1
    refuse,       // R250
    refuse,       // MRG32K3A
    top_of_59,    // MCG59
    refuse,       // WH
    refuse,       // SOBOL
    refuse,       // NIEDERR
    whole_words,  // MT19937
    whole_words,  // MT2203
    refuse,       // integer abstract
    refuse,       // double abstract
    refuse,       // single abstract
    whole_words,  // SFMT19937
    whole_words,  // TRNG
};

// A user's generator has no entry.
Bits bits_of(const kef_stream* stream) {
    const std::int32_t row = rng::family_row(rng::resolve(stream->header.brng));
    return row < rng::built_in_rows ? bits32[row] : refuse;
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngUniformBits(std::int32_t, kef_stream* stream, std::int32_t n, void* r) {
    return kef::rng::resolve(stream->header.brng).brng().generate_bits(stream, n, r);
}

std::int32_t _vtsiRngUniformBits32(std::int32_t method, kef_stream* stream, std::int32_t n,
                                   std::uint32_t* r) {
    return bits_of(stream)(method, stream, n, r);
}

std::int32_t _vtsiRngUniformBits64(std::int32_t method, kef_stream* stream, std::int32_t n,
                                   std::uint64_t* r) {
    const Bits bits = bits_of(stream);
    constexpr std::int32_t most = 1 << 29;  // twice this is still a count
    for (; n > most; n -= most, r += most) {
        const std::int32_t status =
            bits(method, stream, 2 * most, reinterpret_cast<std::uint32_t*>(r));
        if (status < 0) return status;
    }
    return bits(method, stream, 2 * std::max(n, 0), reinterpret_cast<std::uint32_t*>(r));
}
