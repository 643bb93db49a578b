// R250: x[n] = x[n-103] ^ x[n-250]; S. Kirkpatrick, E. Stoll, A very fast shift-register sequence
// random number generator, J. Comput. Phys. 40 (1981) 517-526.
//
// Seeds: 250 words or more are the state itself (an all-zero one gets a single bit). Fewer are
// spread over it as a key array, and words 7 i + 3 get zeros above bit 31 - i and a one in it, so
// that the 32 bit columns are linearly independent. Map: 32 bits of a word in a double, the top 24
// in a float.
#include <cstring>

#include "rng/brng_frame.h"
#include "rng/key_array.h"

namespace kef::rng {

namespace {

struct R250 {
    static constexpr std::int32_t n = 250, lag = 103;

    struct State {
        std::uint32_t x[n];
        std::int32_t position;  // of the next word to use
        std::uint32_t spare;
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t words, const std::uint32_t* key, std::int32_t) {
        s.position = n;
        if (words >= n) {
            std::memcpy(s.x, key, sizeof s.x);
            if (std::all_of(s.x, s.x + n, [](std::uint32_t w) { return w == 0; })) s.x[0] = 1;
            return VTS_STATUS_OK;
        }
        fill_by_key_array(s.x, key, words);
        for (std::int32_t i = 0; i < 32; ++i) {
            const std::uint32_t bit = 0x80000000u >> i;
            s.x[7 * i + 3] = (s.x[7 * i + 3] & (bit - 1)) | bit;
        }
        return VTS_STATUS_OK;
    }

    static void regenerate(std::uint32_t* x) {
        run(x, 0, lag, n - lag);
        run(x, lag, n, -lag);
    }
    static void run(std::uint32_t* x, std::int32_t first, std::int32_t last,
                    std::int32_t distance) {
        constexpr std::int32_t width = vm::lanes<std::uint32_t>;
        std::int32_t k = first;
        for (; k + width <= last; k += width)
            vm::store(x + k, vm::load(x + k) ^ vm::load(x + k + distance));
        for (; k < last; ++k) x[k] ^= x[k + distance];
    }

    static std::int32_t words(State& s, Word* r, std::int32_t count, std::int32_t) {
        draw_from_block(
            s.x, s.position, r, count, [&s] { regenerate(s.x); },
            [](const std::uint32_t* x, std::int32_t taken, Word* out) {
                std::copy_n(x, taken, out);
            });
        return VTS_STATUS_OK;
    }

    template <class Real> using Map = FullWordMap<Real>;

    static bool valid(const State& s, std::int32_t) { return valid_block(s.x, s.position); }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(R250, kef::rng::R250)
