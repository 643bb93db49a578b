#include "rng/gf2_polynomial.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "service/alloc.h"

namespace kef::rng {

namespace {

constexpr std::int32_t block_bytes = Modulus::block / 8, vectors = 4;

inline __m128i load(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store(std::uint8_t* p, __m128i x) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), x);
}

// r = x t^s for a block x, 0 <= s < 8; the 8 bytes below x are zeros.
void shift_up(const std::uint8_t* x, std::int32_t s, std::uint8_t* r) {
    const __m128i up = _mm_cvtsi32_si128(s), down = _mm_cvtsi32_si128(64 - s);
    for (std::int32_t i = 0; i < 16 * vectors; i += 16)
        store(r + i,
              _mm_or_si128(_mm_sll_epi64(load(x + i), up), _mm_srl_epi64(load(x + i - 8), down)));
}
// r = x t^-s for a block and its last bits in the 8 bytes above.
void shift_down(const std::uint8_t* x, std::int32_t s, std::uint8_t* r) {
    const __m128i down = _mm_cvtsi32_si128(s), up = _mm_cvtsi32_si128(64 - s);
    for (std::int32_t i = 0; i < 16 * vectors; i += 16)
        store(r + i,
              _mm_or_si128(_mm_srl_epi64(load(x + i), down), _mm_sll_epi64(load(x + i + 8), up)));
}

// The square of a byte: its bits apart.
constexpr std::array<std::uint16_t, 256> squares = [] {
    std::array<std::uint16_t, 256> table{};
    for (int i = 0; i < 256; ++i)
        for (int bit = 0; bit < 8; ++bit) table[i] |= (i >> bit & 1) << 2 * bit;
    return table;
}();

void square(const std::uint8_t* x, std::int32_t bytes, std::uint8_t* r) {
    for (std::int32_t i = 0; i < bytes; ++i) std::memcpy(r + 2 * i, &squares[x[i]], 2);
}

}  // namespace

// The lower terms by residue modulo 8: those of one residue stand far enough apart for the sums
// not to wait for each other.
Modulus::Modulus(std::int32_t degree, std::int32_t count, const std::uint16_t* exponents)
    : degree_(degree), count_(count), exponents_(exponents) {
    terms_ = static_cast<Term*>(allocate_aligned(static_cast<std::size_t>(count) * sizeof(Term)));
    if (terms_ == nullptr) return;
    Term* term = terms_;
    for (std::int32_t bit = 0; bit < 8; ++bit)
        for (std::int32_t i = 1; i < count; ++i)
            if (exponents[i] % 8 == bit)
                *term++ = {static_cast<std::uint16_t>(exponents[i] / 8),
                           static_cast<std::uint16_t>(bit)};
}

Modulus::~Modulus() { free_aligned(terms_); }

// p += quotient times the lower terms.
void Modulus::add_product(const std::uint8_t* quotient, std::uint8_t* p) const {
    std::uint8_t shifted[8][16 * vectors];
    for (std::int32_t s = 0; s < 8; ++s) shift_up(quotient, s, shifted[s]);
    for (const Term* term = terms_; term != terms_ + (count_ - 1); ++term) {
        std::uint8_t* const at = p + term->byte;
        const std::uint8_t* const x = shifted[term->bit];
        for (std::int32_t i = 0; i < 16 * vectors; i += 16)
            store(at + i, _mm_xor_si128(load(at + i), load(x + i)));
    }
}

// A block at t^(degree + i) is replaced by its product with the lower terms at t^i, from the top.
// The terms are a block and more below the degree, so a block never changes itself.
void Modulus::reduce(std::uint8_t* p, std::int32_t blocks) const {
    const std::int32_t inside = degree_ % 8;  // bits of the block's first byte that stay
    std::uint8_t padded[8 + 16 * vectors] = {};
    std::uint8_t* const quotient = padded + 8;
    for (std::int32_t b = blocks - 1; b >= 0; --b) {
        std::uint8_t* const target = p + b * block_bytes;
        std::uint8_t* const source = target + degree_ / 8;
        shift_down(source, inside, quotient);
        quotient[block_bytes] = 0;
        source[0] &= static_cast<std::uint8_t>((1u << inside) - 1);
        std::memset(source + 1, 0, block_bytes);
        add_product(quotient, target);
    }
}

void Modulus::times_t(std::uint8_t* p) const {
    std::uint64_t carry = 0;
    for (std::int32_t i = 0; i <= degree_ / 8; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, p + i, sizeof word);
        const std::uint64_t shifted = word << 1 | carry;
        std::memcpy(p + i, &shifted, sizeof shifted);
        carry = word >> 63;
    }
    if ((p[degree_ / 8] >> degree_ % 8 & 1) == 0) return;
    for (std::int32_t i = 0; i < count_; ++i)
        p[exponents_[i] / 8] ^= static_cast<std::uint8_t>(1u << exponents_[i] % 8);
}

std::size_t Modulus::power_bytes() const {
    return static_cast<std::size_t>(degree_ / 8 + block_bytes * squared_blocks() + 80);
}

// t^(top bits of k) as long as they are below the degree, then by squaring.
std::uint8_t* Modulus::power_of_t(std::uint64_t k, std::uint8_t* p, std::uint8_t* scratch) const {
    std::int32_t squarings = 0;
    while (k >> squarings >= static_cast<std::uint64_t>(degree_)) ++squarings;
    const auto top = static_cast<std::int32_t>(k >> squarings);
    std::memset(p, 0, power_bytes());
    p[top / 8] = static_cast<std::uint8_t>(1u << top % 8);
    for (std::int32_t bit = squarings - 1; bit >= 0; --bit) {
        std::memset(scratch, 0, power_bytes());
        square(p, degree_ / 8 + 1, scratch);
        reduce(scratch, squared_blocks());
        std::swap(p, scratch);
        if ((k >> bit & 1) != 0) times_t(p);
    }
    return p;
}

}  // namespace kef::rng
