// SFMT19937: M. Saito, M. Matsumoto, SIMD-oriented fast Mersenne twister: a 128-bit pseudorandom
// number generator, Monte Carlo and Quasi-Monte Carlo Methods 2006, Springer 2008, 607-622; every
// seed is a key array. Map: 32 bits of a word in a double, the top 24 in a float.
#include <bit>
#include <cstring>

#include "rng/brng_frame.h"
#include "rng/gf2_jump.h"
#include "rng/key_array.h"

namespace kef::rng {

namespace {

constexpr std::uint16_t polynomial[] = {
#include "rng/brng/tables/sfmt19937_jump.inc"
};
// t^(2^b) for the steps of 2^19 numbers, 2^20, ...; a zero behind each.
constexpr std::size_t power_words = 19968 / 64 + 1;
constexpr std::uint64_t powers[][power_words] = {
#include "rng/brng/tables/sfmt19937_powers.inc"
};

struct Sfmt19937 {
    static constexpr std::int32_t n = 156;  // 128-bit words
    static constexpr std::int32_t n32 = 4 * n, m = 122, degree = 19968;
    static constexpr std::uint32_t masks[4] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
    static constexpr std::uint32_t parity[4] = {0x00000001, 0, 0, 0x13C9E684};

    struct State {
        std::uint32_t x[n32];
        std::int32_t left;  // words of the block that are still to come
        std::uint32_t spare[5];
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t words, const std::uint32_t* key, std::int32_t) {
        fill(s.x, key, words);
        certify_period(s.x);
        s.left = 0;
        s.spare[0] = 0;
        return VTS_STATUS_OK;
    }

    // The key-array initialisation of the published generator.
    static void fill(std::uint32_t* x, const std::uint32_t* key, std::int32_t length) {
        constexpr std::int32_t lag = 11, middle = (n32 - lag) / 2;
        const auto at = [](std::int32_t i) { return i < n32 ? i : i - n32; };
        const auto mix = [](std::uint32_t w, std::uint32_t factor) {
            return (w ^ w >> 27) * factor;
        };
        std::memset(x, 0x8B, n32 * sizeof *x);
        // Step j adds `extra`: the length first, then key words and index, then the index alone.
        std::int32_t i = 0;
        const auto add = [&](std::uint32_t extra) {
            std::uint32_t r = mix(x[i] ^ x[at(i + middle)] ^ x[at(i + n32 - 1)], 1664525);
            x[at(i + middle)] += r;
            r += extra;
            x[at(i + middle + lag)] += r;
            x[i] = r;
            i = at(i + 1);
        };
        add(static_cast<std::uint32_t>(length));
        const std::int32_t steps = std::max(length + 1, n32) - 1;
        for (std::int32_t j = 0; j < steps; ++j)
            add((j < length ? key[j] : 0) + static_cast<std::uint32_t>(i));
        for (std::int32_t j = 0; j < n32; ++j) {
            std::uint32_t r = mix(x[i] + x[at(i + middle)] + x[at(i + n32 - 1)], 1566083941);
            x[at(i + middle)] ^= r;
            r -= static_cast<std::uint32_t>(i);
            x[at(i + middle + lag)] ^= r;
            x[i] = r;
            i = at(i + 1);
        }
    }

    // Puts the state on an orbit of period a multiple of 2^19937 - 1; the lowest bit of the
    // parity vector is bit 0.
    static void certify_period(std::uint32_t* x) {
        std::uint32_t inner = 0;
        for (int i = 0; i < 4; ++i) inner ^= x[i] & parity[i];
        if ((std::popcount(inner) & 1) == 0) x[0] ^= 1;
    }

    // a ^ a << 8 ^ (b >> 11 & masks) ^ c >> 8 ^ d << 18; shifts of a and c by whole 128 bits.
    static __m128i recur(__m128i a, __m128i b, __m128i c, __m128i d) {
        const __m128i mask = _mm_set_epi32(static_cast<int>(masks[3]), static_cast<int>(masks[2]),
                                           static_cast<int>(masks[1]), static_cast<int>(masks[0]));
        const __m128i ab = _mm_xor_si128(_mm_xor_si128(a, _mm_slli_si128(a, 1)),
                                         _mm_and_si128(_mm_srli_epi32(b, 11), mask));
        return _mm_xor_si128(_mm_xor_si128(ab, _mm_srli_si128(c, 1)), _mm_slli_epi32(d, 18));
    }
    static __m128i load(const std::uint32_t* x) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(x));
    }
    static void store(std::uint32_t* x, __m128i v) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(x), v);
    }

    // `count` 128-bit words, x[i + n] from x[i], x[i + m] (at `distance` words), into r.
    static void run(std::uint32_t* r, const std::uint32_t* x, std::int32_t distance,
                    std::int32_t count, __m128i& c, __m128i& d) {
        for (std::int32_t i = 0; i < 4 * count; i += 4) {
            const __m128i next = recur(load(x + i), load(x + i + distance), c, d);
            store(r + i, next);
            c = d;
            d = next;
        }
    }
    static void regenerate(std::uint32_t* x) {
        __m128i c = load(x + n32 - 8), d = load(x + n32 - 4);
        run(x, x, 4 * m, n - m, c, d);
        run(x + 4 * (n - m), x + 4 * (n - m), -4 * (n - m), m, c, d);
    }

    static void extend(std::uint32_t* x, std::int32_t count) {
        __m128i c = load(x + n32 - 8), d = load(x + n32 - 4);
        run(x + n32, x, 4 * m, count, c, d);
    }

    static std::int32_t words(State& s, Word* r, std::int32_t count, std::int32_t) {
        std::int32_t position = n32 - s.left;
        draw_from_block(
            s.x, position, r, count, [&s] { regenerate(s.x); },
            [](const std::uint32_t* x, std::int32_t taken, Word* out) {
                std::memcpy(out, x, static_cast<std::size_t>(taken) * sizeof *out);
            });
        s.left = n32 - position;
        return VTS_STATUS_OK;
    }

    // Multiples of 2^19 numbers by the jump, at an unchanged position; a lower bit of k takes less
    // time than a power of t when its numbers are regenerated.
    static std::int32_t skip(kef_stream* stream, State& s, std::uint64_t k) {
        constexpr std::int32_t low_bits = 19;
        constexpr Jump jump = Window<n32, 4, extend>::jump(degree, polynomial);
        if (k >> low_bits != 0) {
            const std::int32_t status =
                jump_by_powers(stream, jump, k >> low_bits, powers[0], power_words);
            if (status < 0) return status;
        }
        std::int32_t position = n32 - s.left;
        pass_in_blocks<n32>(position, k % (1 << low_bits), [&s] { regenerate(s.x); });
        s.left = n32 - position;
        return VTS_STATUS_OK;
    }

    template <class Real> using Map = FullWordMap<Real>;

    static bool valid(const State& s, std::int32_t) { return valid_block(s.x, s.left); }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(SFMT19937, kef::rng::Sfmt19937)
