// NIEDERR: H. Niederreiter, Low-discrepancy and low-dispersion sequences, J. Number Theory 30
// (1988) 51-70, in base 2: coordinate c belongs to the irreducible polynomial number c in numeric
// order (t, t + 1, t^2 + t + 1, ...); the 318th is 0xBE7.
//
// Parameters, order, leapfrog and map as in SOBOL; up to 318 coordinates, up to 327 with the
// caller's direction numbers. The sequence starts at index 1.
#include "rng/digital_net.h"

namespace kef::rng {

namespace {

constexpr std::uint32_t dimensions = 318;

constexpr std::uint32_t remainder(std::uint32_t x, std::uint32_t p) {
    const auto width = std::bit_width(p);
    while (std::bit_width(x) >= width) x ^= p << (std::bit_width(x) - width);
    return x;
}

// The next irreducible polynomial after p.
std::uint32_t next_irreducible(std::uint32_t p) {
    for (;;) {
        ++p;
        bool irreducible = true;
        for (std::uint32_t f = 2; 2 * std::bit_width(f) <= std::bit_width(p) + 1 && irreducible;
             ++f)
            irreducible = remainder(p, f) != 0;
        if (irreducible) return p;
    }
}

struct Niederr : DigitalNet<state_bytes_Niederr / 4 - 4> {
    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* words, std::int32_t) {
        return DigitalNet::seed(s, n, words, dimensions, 1, [](State& state) {
            std::uint32_t p = 1;
            for (std::uint32_t c = 0; c < state.dimension; ++c) {
                p = next_irreducible(p);
                fill_column(state, c, p);
            }
        });
    }

    // Row j = q e + u of matrix C, e the degree of p: the linear sequence of p^(q+1) that starts
    // with e q zeros and then ones, from place u on. Direction number r has C[j][r] in bit 31 - j.
    static void fill_column(State& s, std::uint32_t c, std::uint32_t p) {
        const std::int32_t e = std::bit_width(p) - 1;
        std::uint64_t power = 1;  // p^(q+1), of degree below 32 + 2 e
        for (std::int32_t q = 0; q * e < 32; ++q) {
            std::uint64_t product = 0;
            for (std::int32_t i = 0; i <= e; ++i)
                if ((p >> i & 1) != 0) product ^= power << i;
            power = product;
            const std::int32_t m = e * (q + 1);
            std::uint8_t sequence[32 + 64] = {};
            for (std::int32_t k = e * q; k < m; ++k) sequence[k] = 1;
            for (std::int32_t k = m; k < 32 + e; ++k)
                for (std::int32_t t = 0; t < m; ++t)
                    sequence[k] ^= static_cast<std::uint8_t>(power >> t & 1) & sequence[k - m + t];
            for (std::int32_t u = 0; u < e && q * e + u < 32; ++u)
                for (std::int32_t r = 0; r < 32; ++r)
                    if (sequence[r + u] != 0) s.v(r)[c] |= 0x80000000u >> (q * e + u);
        }
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(Niederr, kef::rng::Niederr)
