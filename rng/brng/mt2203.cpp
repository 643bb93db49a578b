// MT2203: 6024 Mersenne twisters of period 2^2203 - 1 (n = 69, m = 34, r = 5), each with a twist
// matrix and tempering masks of its own: M. Matsumoto, T. Nishimura, Dynamic creation of
// pseudorandom number generators, Monte Carlo and Quasi-Monte Carlo Methods 1998, Springer 2000,
// 56-69. tools/mt2203_search.cpp tells how the sets were found. Map as in MT19937.
#include "rng/brng_frame.h"
#include "rng/key_array.h"
#include "rng/twister.h"

namespace kef::rng {

namespace {

struct Mt2203 {
    static constexpr std::int32_t n = 69, sets = 6024;
    using Recurrence = Twister<n, 34, 0x1F>;

    struct Parameters {
        std::uint32_t matrix, b, c;
        bool operator==(const Parameters&) const = default;
    };
    static constexpr Parameters parameters[sets] = {
#include "rng/brng/tables/mt2203.inc"
    };

    struct State {
        std::uint32_t x[n];
        std::int32_t position;  // of the next word to use
        Parameters set;
        std::uint32_t spare;
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t words, const std::uint32_t* key,
                             std::int32_t sub) {
        fill_by_key_array(s.x, key, words);
        s.position = n;
        s.set = parameters[sub];
        return VTS_STATUS_OK;
    }

    static std::int32_t words(State& s, Word* r, std::int32_t count, std::int32_t) {
        const Tempering<12> temper = {s.set.b, s.set.c};
        draw_from_block(
            s.x, s.position, r, count, [&s] { Recurrence::regenerate(s.x, s.set.matrix); }, temper);
        return VTS_STATUS_OK;
    }

    template <class Real> using Map = FullWordMap<Real>;

    static bool valid(const State& s, std::int32_t sub) {
        return s.set == parameters[sub] && valid_block(s.x, s.position, Recurrence::upper_mask);
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(MT2203, kef::rng::Mt2203)
