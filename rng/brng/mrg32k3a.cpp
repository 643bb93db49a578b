// MRG32k3a: P. L'Ecuyer, Good parameters and implementations for combined multiple recursive
// random number generators, Oper. Res. 47 (1999) 159-164.
//   x1[n] = (1403580 x1[n-2] - 810728 x1[n-3]) mod m1,   m1 = 2^32 - 209
//   x2[n] = (527612 x2[n-1] - 1370589 x2[n-3]) mod m2,   m2 = 2^32 - 22853
//   z = (x1 - x2) mod m1 in [0, m1).
// Map: u = z c, c = 1/m1 rounded to double. Eight vectors of numbers a pass: number k = 0, 1, ...
// is row 0 of A^(k+1) times the state, so that they do not wait for each other.
#include <array>

#include "rng/brng_frame.h"

namespace kef::rng {

namespace {

using vm::ulongs;

constexpr std::uint32_t m[2] = {4294967087, 4294944443};
constexpr std::uint32_t complement[2] = {209, 22853};  // 2^32 - m
// x[n] = factor[0] x[n-2] or x[n-1] - factor[1] x[n-3].
constexpr std::uint32_t factor[2][2] = {{1403580, 810728}, {527612, 1370589}};
constexpr std::uint32_t row[2][3] = {{0, factor[0][0], m[0] - factor[0][1]},
                                     {factor[1][0], 0, m[1] - factor[1][1]}};
constexpr double unit = 0x1.000000d10000bp-32;  // 0x3DF000000D10000B
constexpr std::int32_t lanes = vm::lanes<std::uint64_t>, pass = 8 * lanes;

// coefficient[c][i][k]: what x[c][i] counts in number k of a pass; each word stands in the
// low half of 64 bits.
struct Coefficients {
    alignas(vm::vector_bytes) std::uint64_t of[2][3][pass];
};
constexpr Coefficients make_coefficients() {
    Coefficients table{};
    for (int c = 0; c < 2; ++c) {
        // The state as combinations of itself, newest first.
        std::uint64_t x[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        for (int k = 0; k < pass; ++k)
            for (int i = 0; i < 3; ++i) {
                const std::uint64_t next =
                    (row[c][0] * x[0][i] % m[c] + row[c][1] * x[1][i] % m[c] +
                     row[c][2] * x[2][i] % m[c]) %
                    m[c];
                x[2][i] = x[1][i];
                x[1][i] = x[0][i];
                x[0][i] = next;
                table.of[c][i][k] = next;
            }
    }
    return table;
}
constexpr Coefficients coefficients = make_coefficients();

struct Mrg32k3a {
    struct State {
        std::uint32_t x[2][3];  // newest value first, as the companion matrix takes them
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* key, std::int32_t) {
        for (int c = 0; c < 2; ++c) {
            for (int i = 0; i < 3; ++i) {
                const std::uint32_t word = 3 * c + i < n ? key[3 * c + i] : 1;
                s.x[c][i] = word >= m[c] ? word - m[c] : word;
            }
            if ((s.x[c][0] | s.x[c][1] | s.x[c][2]) == 0) s.x[c][0] = 1;
        }
        return VTS_STATUS_OK;
    }

    static constexpr std::int32_t newest = std::max(lanes, 4);  // whole vectors with the last three
    static constexpr std::uint64_t few = newest - 1;
    static void step_over(State& s, std::int32_t k) {
        for (; k > 0; --k)
            for (int c = 0; c < 2; ++c) {
                std::uint32_t* x = s.x[c];
                // Factors below 2^21: with a multiple of m for the difference the sum is below
                // 2^54.
                const std::uint64_t sum = std::uint64_t{factor[c][0]} * x[1 - c] +
                                          std::uint64_t{factor[c][1]} * (m[c] - x[2]);
                const auto fold = [&](std::uint64_t p) {
                    return (p >> 32) * complement[c] + static_cast<std::uint32_t>(p);
                };
                const std::uint64_t next = fold(fold(sum));  // below 2^32 + 2^20 < 2 m
                x[2] = x[1];
                x[1] = x[0];
                x[0] = static_cast<std::uint32_t>(next >= m[c] ? next - m[c] : next);
            }
    }
    // newest <= k <= pass: the state is the last three numbers.
    static void pass_over(State& s, std::int32_t k) {
        for (int c = 0; c < 2; ++c) {
            ulongs old[3];
            for (int i = 0; i < 3; ++i) old[i] = vm::filled<ulongs>(s.x[c][i]);
            std::uint64_t y[newest];
            for (std::int32_t j = 0; j < newest; j += lanes)
                vm::store(y + j, component(old, c, k - newest + j));
            for (int i = 0; i < 3; ++i) s.x[c][i] = static_cast<std::uint32_t>(y[newest - 1 - i]);
        }
    }
    static std::int32_t skip(kef_stream*, State& s, std::uint64_t k) {
        if (k <= 4000) {  // faster by passes
            for (auto left = static_cast<std::int32_t>(k); left > 0;) {
                const std::int32_t taken = left > pass ? std::min(pass, left - newest) : left;
                pass_over(s, taken);
                left -= taken;
            }
            return VTS_STATUS_OK;
        }
        for (int c = 0; c < 2; ++c)
            __vtsiVect3PowMod(s.x[c], row[c], m[c], static_cast<std::uint32_t>(k),
                              static_cast<std::uint32_t>(k >> 32));
        return VTS_STATUS_OK;
    }

    // Congruent to p and below 2^32 (complement + 1): high half times 2^32 - m, plus low half.
    static ulongs fold(ulongs p, int c) {
        return vm::low_products(p >> 32, vm::filled<ulongs>(complement[c])) + (p & 0xFFFFFFFF);
    }
    // (x - y) mod m for x - y in [-m, m).
    static ulongs subtract(ulongs x, ulongs y, int c) {
        const ulongs d = x - y;
        return d + ((ulongs)vm::sign_mask((vm::longs)d) & std::uint64_t{m[c]});
    }

    // A vector of numbers of component c of a pass from the state, from number k on.
    static ulongs component(const ulongs* x, int c, std::int32_t k) {
        ulongs sum = {};
        for (int i = 0; i < 3; ++i)
            sum += fold(vm::low_products(vm::load(coefficients.of[c][i] + k), x[i]), c);
        // The sum is below 3 * 2^32 (d + 1) < 2^49; folded again it is below 2^32 + 2^31 < 2 m.
        return subtract(fold(sum, c), vm::filled<ulongs>(m[c]), c);
    }

    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t) {
        while (n > 0) {
            ulongs x[2][3];
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < 3; ++i) x[c][i] = vm::filled<ulongs>(s.x[c][i]);
            // The old state stands before the numbers of the pass.
            alignas(16) std::uint64_t sequence[2][4 + pass];
            alignas(16) std::uint64_t z[pass];
            for (std::int32_t k = 0; k < pass; k += lanes) {
                ulongs y[2];
                for (int c = 0; c < 2; ++c) {
                    y[c] = component(x[c], c, k);
                    vm::store(sequence[c] + 4 + k, y[c]);
                }
                vm::store(z + k, subtract(y[0], y[1], 0));
            }
            const std::int32_t taken = std::min(n, pass);
            for (std::int32_t k = 0; k < taken; ++k) r[k] = static_cast<Word>(z[k]);
            for (int c = 0; c < 2; ++c) {
                for (int i = 0; i < 3; ++i) sequence[c][3 - i] = s.x[c][i];
                for (int i = 0; i < 3; ++i)
                    s.x[c][i] = static_cast<std::uint32_t>(sequence[c][3 + taken - i]);
            }
            r += taken;
            n -= taken;
        }
        return VTS_STATUS_OK;
    }

    template <class Real> class Map : public DoubleScale {
    public:
        Map(std::int32_t, double a, double b) : DoubleScale(unit, a, b) {}
    };

    static bool valid(const State& s, std::int32_t) {
        for (int c = 0; c < 2; ++c)
            if (std::max({s.x[c][0], s.x[c][1], s.x[c][2]}) >= m[c] ||
                (s.x[c][0] | s.x[c][1] | s.x[c][2]) == 0)
                return false;
        return true;
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(MRG32K3A, kef::rng::Mrg32k3a)
