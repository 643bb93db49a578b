// MT19937: M. Matsumoto, T. Nishimura, Mersenne twister: a 623-dimensionally equidistributed
// uniform pseudorandom number generator, ACM Trans. Model. Comput. Simul. 8 (1998) 3-30; every seed
// is a key array. Map: 32 bits of a word in a double, the top 24 in a float.
#include "rng/brng_frame.h"
#include "rng/gf2_jump.h"
#include "rng/key_array.h"
#include "rng/twister.h"

namespace kef::rng {

namespace {

constexpr std::uint16_t polynomial[] = {
#include "rng/brng/tables/mt19937_jump.inc"
};

struct Mt19937 {
    static constexpr std::int32_t n = 624, degree = 19937;
    static constexpr std::uint32_t matrix = 0x9908B0DF;
    // Where the jump takes the time of regenerating that many numbers.
    static constexpr std::uint64_t jump_from = 1200000;
    static constexpr Tempering<11> temper = {0x9D2C5680, 0xEFC60000};
    using Recurrence = Twister<n, 397, 0x7FFFFFFF>;

    struct State {
        std::uint32_t x[n];
        std::int32_t position;  // of the next word to use
        std::uint32_t spare;
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t words, const std::uint32_t* key, std::int32_t) {
        fill_by_key_array(s.x, key, words);
        s.position = n;
        return VTS_STATUS_OK;
    }

    static std::int32_t words(State& s, Word* r, std::int32_t count, std::int32_t) {
        draw_from_block(
            s.x, s.position, r, count, [&s] { regenerate(s.x); }, temper);
        return VTS_STATUS_OK;
    }
    static void regenerate(std::uint32_t* x) { Recurrence::regenerate(x, matrix); }
    static void extend(std::uint32_t* x, std::int32_t count) {
        Recurrence::extend(x, count, matrix);
    }

    // The block is a window over the sequence of words; the jump moves it and leaves the
    // position. At position 0 all bits of x[0] are still to come, but the recurrence holds only for
    // its top bit: that number is passed first.
    static std::int32_t skip(kef_stream* stream, State& s, std::uint64_t k) {
        if (k < jump_from) {
            pass_in_blocks<n>(s.position, k, [&s] { regenerate(s.x); });
            return VTS_STATUS_OK;
        }
        const std::int32_t position = std::max(s.position, 1);
        const std::uint64_t steps = k - static_cast<std::uint64_t>(position - s.position);
        constexpr Jump jump = Window<n, 1, extend>::jump(degree, polynomial);
        const std::int32_t status = jump_by_squaring(stream, jump, steps);
        if (status == VTS_STATUS_OK) s.position = position;
        return status;
    }

    template <class Real> using Map = FullWordMap<Real>;

    static bool valid(const State& s, std::int32_t) {
        return valid_block(s.x, s.position, Recurrence::upper_mask);
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(MT19937, kef::rng::Mt19937)
