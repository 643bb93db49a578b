// MCG59: x <- 13^13 x mod 2^59. The first number is the seed itself.
// Map: u = x 2^-59, x rounded to double but never up to 2^59.
#include "rng/brng_frame.h"
#include "rng/powmod.h"

namespace kef::rng {

namespace {

using vm::doubles;
using vm::ulongs;
constexpr std::int32_t lanes = vm::lanes<std::uint64_t>;

struct Mcg59 {
    static constexpr std::uint64_t multiplier = 302875106592253;  // 13^13
    static constexpr double unit = 0x1p-59;

    struct State {
        std::uint64_t x, a;  // leapfrog replaces a
    };
    using Word = std::uint64_t;

    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* key, std::int32_t) {
        s.x = key[0];
        if (n >= 2) s.x |= static_cast<std::uint64_t>(key[1]) << 32 & mask59;
        if (s.x == 0) s.x = 1;
        s.a = multiplier;
        return VTS_STATUS_OK;
    }

    static std::int32_t leapfrog(kef_stream*, State& s, std::uint32_t k, std::int32_t count) {
        s.x = multiply59(s.x, __vtsiPowMod2P59(s.a, k));
        s.a = __vtsiPowMod2P59(s.a, static_cast<std::uint64_t>(std::int64_t{count}));
        return VTS_STATUS_OK;
    }

    static constexpr std::uint64_t few = 7;
    static void step_over(State& s, std::int32_t k) {
        for (; k > 0; --k) s.x = multiply59(s.x, s.a);
    }
    static std::int32_t skip(kef_stream*, State& s, std::uint64_t k) {
        s.x = multiply59(s.x, __vtsiPowMod2P59(s.a, k));
        return VTS_STATUS_OK;
    }

    // x y mod 2^64; y_high = y >> 32.
    static ulongs multiply(ulongs x, ulongs y, ulongs y_high) {
        const ulongs cross = vm::low_products(x >> 32, y) + vm::low_products(x, y_high);
        return vm::low_products(x, y) + (cross << 32);
    }

    // Four vectors of numbers a pass, which are reduced to 59 bits on the way out only.
    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t) {
        constexpr std::int32_t vectors = 4, pass = vectors * lanes;
        std::uint64_t x = s.x;
        const std::uint64_t a = s.a;
        if (n >= pass) {
            std::uint64_t start[pass];
            start[0] = x;
            for (int i = 1; i < pass; ++i) start[i] = multiply59(start[i - 1], a);
            ulongs v[vectors];
            for (int j = 0; j < vectors; ++j) v[j] = vm::load(start + j * lanes);
            const ulongs y = vm::filled<ulongs>(__vtsiPowMod2P59(a, pass)), y_high = y >> 32;
            for (; n >= pass; n -= pass, r += pass)
#pragma GCC unroll 4
                for (int j = 0; j < vectors; ++j) {
                    vm::store(r + j * lanes, v[j] & mask59);
                    v[j] = multiply(v[j], y, y_high);
                }
            x = v[0][0] & mask59;
        }
        for (; n > 0; --n) {
            *r++ = x;
            x = multiply59(x, a);
        }
        s.x = x;
        return VTS_STATUS_OK;
    }

    // Rounded to double once: high and low half carry the exponents of 2^84 and 2^52.
    static doubles as_doubles(ulongs x) {
        const doubles low = (doubles)((x & 0xFFFFFFFF) | UINT64_C(0x4330000000000000));
        const doubles high = (doubles)(x >> 32 | UINT64_C(0x4530000000000000));
        return vm::minimum((high - (0x1p84 + 0x1p52)) + low, vm::all(0x1p59 - 0x1p6));
    }

    template <class Real> class Map {
    public:
        using Arithmetic = double;
        Map(std::int32_t, double a, double b) : s_((b - a) * unit), a_(a) {}
        void operator()(const Word* x, std::int32_t n, Real* r) const {
            constexpr std::int32_t width = vm::lanes<Real>;
            std::int32_t i = 0;
            for (; i + width <= n; i += width) {
                if constexpr (std::is_same_v<Real, double>) {
                    vm::store(r + i, scale(vm::load(x + i)));
                } else {
                    vm::store(r + i,
                              vm::narrow(scale(vm::load(x + i)), scale(vm::load(x + i + lanes))));
                }
            }
            for (; i < n; ++i) r[i] = static_cast<Real>(scale(vm::filled<ulongs>(x[i]))[0]);
        }

    private:
        doubles scale(ulongs x) const { return as_doubles(x) * s_ + a_; }
        double s_, a_;
    };

    // The powers of the multiplier are the residues that are 1 modulo 4.
    static bool valid(const State& s, std::int32_t) {
        return s.x != 0 && s.x <= mask59 && s.a <= mask59 && s.a % 4 == 1;
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(MCG59, kef::rng::Mcg59)
