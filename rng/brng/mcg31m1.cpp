// MCG31M1: x <- a x mod 2^31 - 1, a = 1132489760.
// P. L'Ecuyer, Tables of linear congruential generators of different sizes and good lattice
// structure, Math. Comp. 68 (1999) 249-260. The first number is the seed itself.
// Map: u = x c, c = 1/(2^31 - 1) rounded to double.
#include "rng/brng_frame.h"
#include "rng/powmod.h"

namespace kef::rng {

namespace {

struct Mcg31m1 {
    static constexpr std::uint32_t multiplier = 1132489760;
    static constexpr double unit = 0x1.00000002p-31;  // 0x3E00000000200000

    struct State {
        std::uint32_t x, a;  // leapfrog replaces a
    };
    using Word = std::uint32_t;

    static std::int32_t seed(State& s, std::int32_t, const std::uint32_t* key, std::int32_t) {
        s.x = key[0] % m31;
        if (s.x == 0) s.x = 1;
        s.a = multiplier;
        return VTS_STATUS_OK;
    }

    static std::int32_t leapfrog(kef_stream*, State& s, std::uint32_t k, std::int32_t count) {
        s.x = multiply31(s.x, __vtsiPowMod2P31M1(s.a, k));
        s.a = __vtsiPowMod2P31M1(s.a, static_cast<std::uint64_t>(count));
        return VTS_STATUS_OK;
    }

    static constexpr std::uint64_t few = 4;
    static void step_over(State& s, std::int32_t k) {
        for (; k > 0; --k) s.x = multiply31(s.x, s.a);
    }
    static std::int32_t skip(kef_stream*, State& s, std::uint64_t k) {
        s.x = multiply31(s.x, __vtsiPowMod2P31M1(s.a, k));
        return VTS_STATUS_OK;
    }

    // x y mod 2^31 - 1 in the low half of both 64-bit lanes.
    static __m128i multiply(__m128i x, __m128i y) {
        const __m128i m = _mm_set_epi32(0, m31, 0, m31), p = _mm_mul_epu32(x, y);
        const __m128i t =
            _mm_sub_epi32(_mm_add_epi32(_mm_and_si128(p, m), _mm_srli_epi64(p, 31)), m);
        return _mm_add_epi32(t, _mm_and_si128(_mm_srai_epi32(t, 31), m));
    }

    // Eight numbers a pass; lanes hold x_i and x_(i+2), and x_(i+1) and x_(i+3).
    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t) {
        std::uint32_t x = s.x;
        const std::uint32_t a = s.a;
        if (n >= 8) {
            std::uint32_t start[8];
            start[0] = x;
            for (int i = 1; i < 8; ++i) start[i] = multiply31(start[i - 1], a);
            const std::uint32_t a2 = multiply31(a, a), a4 = multiply31(a2, a2);
            const __m128i a8 = _mm_set1_epi32(static_cast<int>(multiply31(a4, a4)));
            const auto pair = [&start](int i) {
                return _mm_set_epi32(0, static_cast<int>(start[i + 2]), 0,
                                     static_cast<int>(start[i]));
            };
            __m128i x0 = pair(0), x1 = pair(1), x4 = pair(4), x5 = pair(5);
            for (; n >= 8; n -= 8, r += 8) {
                auto* out = reinterpret_cast<__m128i*>(r);
                _mm_storeu_si128(out, _mm_or_si128(x0, _mm_slli_epi64(x1, 32)));
                _mm_storeu_si128(out + 1, _mm_or_si128(x4, _mm_slli_epi64(x5, 32)));
                x0 = multiply(x0, a8);
                x1 = multiply(x1, a8);
                x4 = multiply(x4, a8);
                x5 = multiply(x5, a8);
            }
            x = static_cast<std::uint32_t>(_mm_cvtsi128_si32(x0));
        }
        for (; n > 0; --n) {
            *r++ = x;
            x = multiply31(x, a);
        }
        s.x = x;
        return VTS_STATUS_OK;
    }

    template <class Real> class Map : public DoubleScale {
    public:
        Map(std::int32_t, double a, double b) : DoubleScale(unit, a, b) {}
    };

    static bool valid(const State& s, std::int32_t) {
        return s.x - 1 < m31 - 1 && s.a - 1 < m31 - 1;
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(MCG31M1, kef::rng::Mcg31m1)
