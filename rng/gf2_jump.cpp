// p(T) times the state for p = t^k modulo the characteristic polynomial: H. Haramoto, M. Matsumoto,
// T. Nishimura, F. Panneton, P. L'Ecuyer, Efficient jump ahead for F2-linear random number
// generators, INFORMS J. Comput. 20 (2008) 385-390; sliding window: Haramoto, Matsumoto,
// L'Ecuyer, A fast jump ahead algorithm for linear recurrences in a polynomial space, SETA 2008.
#include "rng/gf2_jump.h"

#include <algorithm>
#include <bit>

#include "service/alloc.h"

namespace kef::rng {

namespace {

// Coefficients are taken 120 at a time: shifted by less than a byte they still fit a vector.
constexpr std::int32_t chunk = 120, chunk_bytes = chunk / 8, slack_bytes = 16;

// x times t^s, 0 <= s < 8.
inline __m128i shift(__m128i x, std::int32_t s) {
    const __m128i left = _mm_cvtsi32_si128(s), right = _mm_cvtsi32_si128(64 - s);
    return _mm_or_si128(_mm_sll_epi64(x, left), _mm_slli_si128(_mm_srl_epi64(x, right), 8));
}

inline __m128i load(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store(std::uint8_t* p, __m128i x) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), x);
}

bool coefficient(const std::uint8_t* p, std::int32_t i) { return (p[i / 8] >> (i % 8) & 1) != 0; }

// r = x^2 for x of `bytes` bytes: the bits move apart.
void square(const std::uint8_t* x, std::int32_t bytes, std::uint8_t* r) {
    constexpr std::uint8_t spread[16] = {0x00, 0x01, 0x04, 0x05, 0x10, 0x11, 0x14, 0x15,
                                         0x40, 0x41, 0x44, 0x45, 0x50, 0x51, 0x54, 0x55};
    for (std::int32_t i = 0; i < bytes; ++i) {
        r[2 * i] = spread[x[i] & 15];
        r[2 * i + 1] = spread[x[i] >> 4];
    }
}

// x t modulo the polynomial of the exponents.
void times_t(std::uint8_t* x, std::int32_t bytes, std::int32_t degree, std::int32_t count,
             const std::uint16_t* exponents) {
    unsigned carry = 0;
    for (std::int32_t i = 0; i < bytes; ++i) {
        const unsigned wide = static_cast<unsigned>(x[i]) << 1 | carry;
        x[i] = static_cast<std::uint8_t>(wide);
        carry = wide >> 8;
    }
    if (!coefficient(x, degree)) return;
    for (std::int32_t i = 0; i < count; ++i)
        x[exponents[i] / 8] ^= static_cast<std::uint8_t>(1u << exponents[i] % 8);
}

struct Routines {
    kef_jump_load load;
    kef_jump_store store;
    kef_jump_one clear;
    kef_jump_two copy;
    kef_jump_one step;
    kef_jump_two add;
};

// Evaluation of p(T) with coefficients in groups of up to `group`: each group starts and ends
// with a one, and v(T) state for the odd v below 2^group is made first. group = 1 is Horner's rule.
template <std::int32_t group>
std::int32_t skip(kef_stream* stream, const Routines& g, std::uint64_t k, std::int32_t words,
                  std::int32_t degree, std::int32_t count, const std::uint16_t* exponents) {
    constexpr std::int32_t odd = 1 << (group - 1);
    const std::int32_t bytes = degree / 8 + 1;
    // Up to 2 degree + 8 coefficients when squared.
    const std::int32_t blocks = (degree + 8 + chunk - 1) / chunk;
    const std::size_t product_bytes = 2 * bytes + 2 * chunk_bytes + slack_bytes;
    const std::size_t window_bytes = 2 * words * sizeof(std::uint32_t);
    const std::size_t polynomial_bytes = (product_bytes + 63) / 64 * 64;
    auto* memory = static_cast<std::uint8_t*>(
        allocate_aligned(2 * polynomial_bytes + (odd + 2) * window_bytes));
    if (memory == nullptr) return VTS_STATUS_NO_MEMORY;
    std::uint8_t *p = memory, *product = memory + polynomial_bytes;
    kef_jump_window table[odd], sum, power;
    auto* buffer = reinterpret_cast<std::uint32_t*>(memory + 2 * polynomial_bytes);
    for (kef_jump_window& w : table) {
        w = {0, buffer};
        buffer += 2 * words;
    }
    sum = {0, buffer};
    power = {0, buffer + 2 * words};

    // p = t^k, by squaring from the top bit of k.
    std::memset(p, 0, polynomial_bytes);
    p[0] = 1;
    std::int32_t top = 0;  // degree of p, or above
    for (std::int32_t bit = 63 - std::countl_zero(k | 1); bit >= 0; --bit) {
        std::memset(product, 0, polynomial_bytes);
        square(p, bytes, product);
        if (top >= degree / 2) __vtsPolyRem(product, blocks, degree, count, exponents);
        std::swap(p, product);
        if ((k >> bit & 1) != 0) times_t(p, bytes, degree, count, exponents);
        top = top >= degree / 2 ? degree : 2 * top + 1;
    }

    // table[i] = v(T) state for v = 2 i + 1 with bits as coefficients.
    g.load(stream, &table[0]);
    if constexpr (group > 1) {
        g.copy(&power, &table[0]);
        for (std::int32_t bit = 1; bit < group; ++bit) {
            g.step(&power);
            const std::int32_t half = 1 << (bit - 1);
            for (std::int32_t i = 0; i < half; ++i) {
                g.copy(&table[half + i], &table[i]);
                g.add(&table[half + i], &power);
            }
        }
    }

    g.clear(&sum);
    std::int32_t i = degree - 1;
    while (i >= 0 && !coefficient(p, i)) --i;
    while (i >= 0) {
        if (!coefficient(p, i)) {
            g.step(&sum);
            --i;
            continue;
        }
        std::int32_t last = std::max(i - group + 1, 0);
        while (!coefficient(p, last)) ++last;
        std::int32_t value = 0;
        for (; i >= last; --i) {
            value = 2 * value + coefficient(p, i);
            g.step(&sum);
        }
        g.add(&sum, &table[value / 2]);
    }
    g.store(stream, &sum);
    free_aligned(memory);
    return VTS_STATUS_OK;
}

}  // namespace

}  // namespace kef::rng

using namespace kef::rng;

// A chunk at t^(degree + i) is replaced by the lower terms at t^i, from the top; the terms are
// more than a chunk below the degree, so a chunk never changes itself. The lower terms are taken by
// bytes: chunk times byte comes from a table of the 256 products, and the bytes of one residue
// modulo 16 follow each other, so that no load overlaps a store that is still on its way.
void __vtsPolyRem(std::uint8_t* polynomial, std::int32_t blocks, std::int32_t degree,
                  std::int32_t count, const std::uint16_t* exponents) {
    struct Term {
        std::uint16_t place, byte;
    };
    constexpr std::int32_t most_bytes = VTS_MAX_JUMP_DEGREE / 8;
    std::uint8_t lower[most_bytes] = {};
    for (std::int32_t i = 1; i < count; ++i)
        lower[exponents[i] / 8] |= static_cast<std::uint8_t>(1u << exponents[i] % 8);
    Term terms[most_bytes];
    std::int32_t used = 0;
    for (std::int32_t residue = 0; residue < 16; ++residue)
        for (std::int32_t j = residue; j <= degree / 8 && j < most_bytes; j += 16)
            if (lower[j] != 0) terms[used++] = {static_cast<std::uint16_t>(j), lower[j]};

    // Where the degree is no multiple of 8 a chunk begins inside a byte.
    const std::int32_t odd = degree % 8;
    const __m128i ones = _mm_srli_si128(_mm_set1_epi32(-1), 1), place = shift(ones, odd);
    const __m128i right = _mm_cvtsi32_si128(odd), left = _mm_cvtsi32_si128(64 - odd);
    for (std::int32_t block = blocks - 1; block >= 0; --block) {
        std::uint8_t* const target = polynomial + block * chunk_bytes;
        std::uint8_t* const source = target + degree / 8;
        const __m128i whole = load(source);
        const __m128i chunk_bits =
            _mm_and_si128(ones, _mm_or_si128(_mm_srl_epi64(whole, right),
                                             _mm_sll_epi64(_mm_srli_si128(whole, 8), left)));
        store(source, _mm_andnot_si128(place, whole));
        __m128i products[256];
        products[0] = _mm_setzero_si128();
        for (std::int32_t bit = 0; bit < 8; ++bit) {
            const __m128i shifted = shift(chunk_bits, bit);
            for (std::int32_t i = 0; i < 1 << bit; ++i)
                products[(1 << bit) + i] = _mm_xor_si128(products[i], shifted);
        }
        for (std::int32_t i = 0; i < used; ++i) {
            std::uint8_t* const at = target + terms[i].place;
            store(at, _mm_xor_si128(load(at), products[terms[i].byte]));
        }
    }
}

#define KEF_SKIP(name, group)                                                                      \
    std::int32_t name(kef_stream* stream, kef_jump_load load, kef_jump_store store,                \
                      kef_jump_one clear, kef_jump_two copy, kef_jump_one step, kef_jump_two add,  \
                      std::uint64_t k, std::int32_t words, std::int32_t degree, std::int32_t,      \
                      std::int32_t count, const std::uint16_t* exponents) {                        \
        return skip<group>(stream, {load, store, clear, copy, step, add}, k, words, degree, count, \
                           exponents);                                                             \
    }
KEF_SKIP(__vts_SkipAheadHorner, 1)
KEF_SKIP(__vts_SkipAheadSWin, 5)
