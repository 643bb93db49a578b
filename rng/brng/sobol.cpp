// SOBOL: I. M. Sobol, USSR Comput. Math. Math. Phys. 7 (1967) 86-112; up to 40 coordinates with the
// direction numbers of Joe and Kuo (tools/sobol_numbers.py), up to 88 with the caller's.
//
// Parameters: dimension (absent or out of range: 1), then nothing or 32 direction numbers for each
// coordinate. Numbers come out point by point from index 1: (0.5, ..., 0.5) is the first one.
// Leapfrog by the dimension keeps one coordinate. Map: 32 bits of a word in a double, the top 24 in
// a float.
#include "rng/digital_net.h"

namespace kef::rng {

namespace {

constexpr std::int32_t dimensions = 40;
constexpr std::uint32_t directions[dimensions][32] = {
#include "rng/brng/tables/sobol.inc"
};

struct Sobol : DigitalNet<state_bytes_Sobol / 4 - 4> {
    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* words, std::int32_t) {
        return DigitalNet::seed(s, n, words, dimensions, 1, [](State& state) {
            for (std::uint32_t c = 0; c < state.dimension; ++c)
                for (std::int32_t bit = 0; bit < 32; ++bit) state.v(bit)[c] = directions[c][bit];
        });
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(Sobol, kef::rng::Sobol)
