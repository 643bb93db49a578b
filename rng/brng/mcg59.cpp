// MCG59: x <- 13^13 x mod 2^59. The first number is the seed itself.
// Map: u = x 2^-59, x rounded to double but never up to 2^59.
#include "rng/brng_frame.h"
#include "rng/powmod.h"

namespace kef::rng {

namespace {

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

    static std::int32_t skip(kef_stream*, State& s, std::uint64_t k) {
        s.x = multiply59(s.x, __vtsiPowMod2P59(s.a, k));
        return VTS_STATUS_OK;
    }

    // x y mod 2^64 in both lanes; y_high = y >> 32.
    static __m128i multiply(__m128i x, __m128i y, __m128i y_high) {
        const __m128i cross =
            _mm_add_epi64(_mm_mul_epu32(_mm_srli_epi64(x, 32), y), _mm_mul_epu32(x, y_high));
        return _mm_add_epi64(_mm_mul_epu32(x, y), _mm_slli_epi64(cross, 32));
    }

    // Eight numbers a pass in four vectors, which are reduced to 59 bits on the way out only.
    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t) {
        std::uint64_t x = s.x;
        const std::uint64_t a = s.a;
        if (n >= 8) {
            std::uint64_t start[8];
            start[0] = x;
            for (int i = 1; i < 8; ++i) start[i] = multiply59(start[i - 1], a);
            const auto* from = reinterpret_cast<const __m128i*>(start);
            __m128i v0 = _mm_loadu_si128(from), v1 = _mm_loadu_si128(from + 1),
                    v2 = _mm_loadu_si128(from + 2), v3 = _mm_loadu_si128(from + 3);
            const __m128i mask = _mm_set_epi32(0x07FFFFFF, -1, 0x07FFFFFF, -1);
            const std::uint64_t a8 = __vtsiPowMod2P59(a, 8);
            const __m128i y = _mm_set1_epi64x(static_cast<long long>(a8));
            const __m128i y_high = _mm_srli_epi64(y, 32);
            for (; n >= 8; n -= 8, r += 8) {
                auto* out = reinterpret_cast<__m128i*>(r);
                _mm_storeu_si128(out, _mm_and_si128(v0, mask));
                v0 = multiply(v0, y, y_high);
                _mm_storeu_si128(out + 1, _mm_and_si128(v1, mask));
                v1 = multiply(v1, y, y_high);
                _mm_storeu_si128(out + 2, _mm_and_si128(v2, mask));
                v2 = multiply(v2, y, y_high);
                _mm_storeu_si128(out + 3, _mm_and_si128(v3, mask));
                v3 = multiply(v3, y, y_high);
            }
            _mm_storel_epi64(reinterpret_cast<__m128i*>(&x), _mm_and_si128(v0, mask));
        }
        for (; n > 0; --n) {
            *r++ = x;
            x = multiply59(x, a);
        }
        s.x = x;
        return VTS_STATUS_OK;
    }

    // Rounded to double once: high and low half carry the exponents of 2^84 and 2^52.
    static __m128d as_doubles(__m128i x) {
        const __m128i low = _mm_or_si128(_mm_and_si128(x, _mm_set_epi32(0, -1, 0, -1)),
                                         _mm_set_epi32(0x43300000, 0, 0x43300000, 0));
        const __m128i high =
            _mm_or_si128(_mm_srli_epi64(x, 32), _mm_set_epi32(0x45300000, 0, 0x45300000, 0));
        const __m128d sum =
            _mm_add_pd(_mm_sub_pd(_mm_castsi128_pd(high), _mm_set1_pd(0x1p84 + 0x1p52)),
                       _mm_castsi128_pd(low));
        return _mm_min_pd(sum, _mm_set1_pd(0x1p59 - 0x1p6));
    }

    template <class Real> class Map {
    public:
        using Arithmetic = double;
        Map(std::int32_t, double a, double b) : s_((b - a) * unit), a_(a) {}
        void operator()(const Word* x, std::int32_t n, Real* r) const {
            std::int32_t i = 0;
            for (; i + 2 <= n; i += 2)
                store(r + i, scale(_mm_loadu_si128(reinterpret_cast<const __m128i*>(x + i))));
            if (i < n) {
                const __m128d last =
                    scale(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x + i)));
                r[i] = static_cast<Real>(_mm_cvtsd_f64(last));
            }
        }

    private:
        __m128d scale(__m128i x) const {
            return _mm_add_pd(_mm_mul_pd(as_doubles(x), _mm_set1_pd(s_)), _mm_set1_pd(a_));
        }
        static void store(double* r, __m128d x) { _mm_storeu_pd(r, x); }
        static void store(float* r, __m128d x) {
            _mm_storel_pi(reinterpret_cast<__m64*>(r), _mm_cvtpd_ps(x));
        }
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
