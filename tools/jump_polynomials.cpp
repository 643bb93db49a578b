// The characteristic polynomials behind the jumps of MT19937 and SFMT19937.
//
//   g++ -std=c++20 -O2 -o build/jump_polynomials tools/jump_polynomials.cpp
//   build/jump_polynomials mt19937   > rng/brng/tables/mt19937_jump.inc
//   build/jump_polynomials sfmt19937 > rng/brng/tables/sfmt19937_jump.inc
//   build/jump_polynomials powers    > rng/brng/tables/sfmt19937_powers.inc
//
// Minimal polynomial of one state bit by the Berlekamp-Massey algorithm over GF(2) (Massey, IEEE
// Trans. Inf. Theory 15 (1969) 122-127), from random states. MT19937: steps of one word; degree
// 19937, the whole period. SFMT19937: steps of one 128-bit word, from states that are
// anything, so that the polynomial annihilates every state: degree 19968. Powers: t^(2^b) modulo
// that of SFMT19937 for the steps of 2^19 numbers and more, b = 17 to 61.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

using u32 = std::uint32_t;
using u64 = std::uint64_t;

// Connection polynomial of the bits, as exponents of the characteristic polynomial t^L c(1/t).
static std::vector<int> berlekamp_massey(const std::vector<int>& bits) {
    const int n = static_cast<int>(bits.size()), w = n / 64 + 2;
    std::vector<u64> c(w), b(w), s(w), t;  // s: reversed window of the sequence
    c[0] = b[0] = 1;
    int L = 0, m = 1;
    for (int i = 0; i < n; ++i) {
        for (int j = w - 1; j > 0; --j) s[j] = s[j] << 1 | s[j - 1] >> 63;
        s[0] = s[0] << 1 | static_cast<u64>(bits[i]);
        u64 d = 0;
        for (int j = 0; j <= L / 64; ++j) d ^= c[j] & s[j];
        if (!(std::popcount(d) & 1)) {
            ++m;
            continue;
        }
        t = c;
        for (int j = m / 64; j < w; ++j) {
            const int k = j - m / 64;
            c[j] ^= b[k] << (m % 64);
            if (m % 64 && k > 0) c[j] ^= b[k - 1] >> (64 - m % 64);
        }
        if (2 * L <= i) {
            L = i + 1 - L;
            b = t;
            m = 1;
        } else {
            ++m;
        }
    }
    std::vector<int> exponents;
    for (int j = L; j >= 0; --j)
        if (c[(L - j) / 64] >> ((L - j) % 64) & 1) exponents.push_back(j);
    std::fprintf(stderr, "degree %d weight %zu\n", L, exponents.size());
    return exponents;
}

// Rows of 64-bit words, the lowest coefficient in the lowest bit.
static void print_powers(const std::vector<int>& exponents, int first, int last) {
    const int degree = exponents[0], words = degree / 64;
    std::vector<u64> lower(words + 1), p(words);
    for (std::size_t i = 1; i < exponents.size(); ++i)
        lower[exponents[i] / 64] |= u64{1} << exponents[i] % 64;
    p[0] = 2;
    for (int b = 0; b <= last; ++b) {
        if (b >= first) {
            std::printf("{");
            for (int i = 0; i < words; ++i)
                std::printf("0x%llX,%c", static_cast<unsigned long long>(p[i]),
                            i % 5 == 4 || i + 1 == words ? '\n' : ' ');
            std::printf("},\n");
        }
        std::vector<u64> s(2 * words + 2);
        for (int i = 0; i < degree; ++i) s[2 * i / 64] |= (p[i / 64] >> i % 64 & 1) << 2 * i % 64;
        for (int i = 2 * degree - 2; i >= degree; --i) {
            if (!(s[i / 64] >> i % 64 & 1)) continue;
            const int shift = i - degree, at = shift / 64, up = shift % 64;
            for (int j = 0; j <= words; ++j) {
                s[at + j] ^= lower[j] << up;
                if (up && j > 0) s[at + j] ^= lower[j - 1] >> (64 - up);
            }
        }
        std::copy_n(s.begin(), words, p.begin());
    }
}

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const bool powers = !std::strcmp(argv[1], "powers");
    std::mt19937 random(2203);
    std::vector<int> bits;
    constexpr int count = 2 * 19968 + 64;
    if (!std::strcmp(argv[1], "mt19937")) {
        std::vector<u32> x(624);
        for (u32& w : x) w = random();
        for (int i = 0; i < count; ++i) {
            const u32 y = (x[i] & 0x80000000) | (x[i + 1] & 0x7FFFFFFF);
            x.push_back(x[i + 397] ^ y >> 1 ^ (y & 1 ? 0x9908B0DF : 0));
            bits.push_back(x.back() & 1);
        }
    } else {
        using u128 = unsigned __int128;
        std::vector<u128> x(156);
        for (u128& w : x)
            for (int i = 0; i < 4; ++i) w = w << 32 | random();
        auto each = [](u128 v, auto f) {
            u128 r = 0;
            for (int i = 0; i < 4; ++i)
                r |= static_cast<u128>(f(static_cast<u32>(v >> 32 * i))) << 32 * i;
            return r;
        };
        const u128 mask = static_cast<u128>(0xBFFFFFF6BFFAFFFFull) << 64 | 0xDDFECB7FDFFFFFEFull;
        for (int i = 0; i < count; ++i) {
            const u128 a = x[i], b = x[i + 122], c = x[i + 154], d = x[i + 155];
            x.push_back(a ^ a << 8 ^ (each(b, [](u32 v) { return v >> 11; }) & mask) ^ c >> 8 ^
                        each(d, [](u32 v) { return v << 18; }));
            u64 parity = static_cast<u64>(x.back()) & 0x9E3779B97F4A7C15ull;
            parity ^= static_cast<u64>(x.back() >> 64) & 0xD1B54A32D192ED03ull;
            bits.push_back(std::popcount(parity) & 1);
        }
    }
    const std::vector<int> exponents = berlekamp_massey(bits);
    std::printf("// Made by tools/jump_polynomials.cpp %s: %s.\n", argv[1],
                powers ? "t^(2^b), b = 17 to 61" : "exponents of the polynomial, falling");
    if (powers) return print_powers(exponents, 17, 61), 0;
    for (std::size_t i = 0; i < exponents.size(); ++i)
        std::printf("%d,%c", exponents[i], i % 16 == 15 || i + 1 == exponents.size() ? '\n' : ' ');
}
