// WH: 273 combined multiplicative generators of Wichmann-Hill type (B. A. Wichmann, I. D. Hill,
// Appl. Stat. 31 (1982) 188-190), four components each:
//   x_j <- a_j x_j mod m_j, u = frac(sum x_j / m_j).
// tools/wh_search.cpp tells how moduli and multipliers were found. Raw word: the four x_j.
// Seeds: x_j = word j mod m_j; 1 where that is 0 or absent. The first number belongs to the state
// after one step. Map: u in double; in float the top 24 bits of u, so never 1.
#include "rng/brng_frame.h"
#include "rng/powmod.h"

namespace kef::rng {

namespace {

struct WichmannHill {
    static constexpr std::int32_t sets = 273;
    struct Set {
        std::uint32_t m[4];
        std::uint8_t a[4];
    };
    static constexpr Set parameters[sets] = {
#include "rng/brng/tables/wh.inc"
    };

    struct State {
        std::uint32_t x[4], a[4];  // leapfrog replaces a
    };
    struct Word {
        std::uint32_t x[4];
    };

    static std::int32_t seed(State& s, std::int32_t n, const std::uint32_t* key, std::int32_t sub) {
        for (int j = 0; j < 4; ++j) {
            const std::uint32_t x = j < n ? key[j] % parameters[sub].m[j] : 1;
            s.x[j] = x == 0 ? 1 : x;
            s.a[j] = parameters[sub].a[j];
        }
        return VTS_STATUS_OK;
    }

    // The first number of the state is a x: the parent goes k - (count - 1) steps on, so that a
    // step of `count` then leads to its number k.
    static std::int32_t leapfrog(kef_stream* stream, State& s, std::uint32_t k,
                                 std::int32_t count) {
        const std::uint32_t* m = moduli(stream);
        for (int j = 0; j < 4; ++j) {
            const std::uint64_t order = m[j] - 1;
            const std::uint64_t back = static_cast<std::uint32_t>(count) % order;
            move(s.x[j], s.a[j], (k % order + 1 + order - back) % order, m[j]);
            s.a[j] = __vtsiPowMod(s.a[j], static_cast<std::uint32_t>(count), m[j]);
        }
        return VTS_STATUS_OK;
    }

    static constexpr std::uint64_t few = 8;
    static void step_over(State& s, std::int32_t k, std::int32_t sub) {
        for (int c = 0; c < 2; ++c) {
            const std::uint32_t *a = s.a + 2 * c, *m = parameters[sub].m + 2 * c;
            std::uint32_t* x = s.x + 2 * c;
            const Component one = Component::of(a, m);
            __m128d r = _mm_set_pd(x[1], x[0]);
            for (std::int32_t i = 0; i < k; ++i) r = one.step(r);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(x), _mm_cvttpd_epi32(r));
        }
    }
    static std::int32_t skip(kef_stream* stream, State& s, std::uint64_t k) {
        const std::uint32_t* m = moduli(stream);
        for (int j = 0; j < 4; ++j) move(s.x[j], s.a[j], k, m[j]);
        return VTS_STATUS_OK;
    }

    static const std::uint32_t* moduli(const kef_stream* stream) {
        return parameters[sub_generator(stream)].m;
    }
    static void move(std::uint32_t& x, std::uint32_t a, std::uint64_t k, std::uint32_t m) {
        x = static_cast<std::uint32_t>(static_cast<std::uint64_t>(__vtsiPowMod(a, k, m)) * x % m);
    }

    // a x mod m in both lanes, exact: a x < 2^48; the quotient is rounded to nearest, which
    // leaves a remainder in (-m, m).
    struct Component {
        __m128d a, m, inverse;
        static Component of(const std::uint32_t* a, const std::uint32_t* m) {
            return {_mm_set_pd(a[1], a[0]), _mm_set_pd(m[1], m[0]),
                    _mm_set_pd(1.0 / m[1], 1.0 / m[0])};
        }
        __m128d step(__m128d x) const {
            const __m128d round = _mm_set1_pd(0x1.8p52), p = _mm_mul_pd(a, x);
            const __m128d q = _mm_sub_pd(_mm_add_pd(_mm_mul_pd(p, inverse), round), round);
            const __m128d r = _mm_sub_pd(p, _mm_mul_pd(q, m));
            return _mm_add_pd(r, _mm_and_pd(_mm_cmplt_pd(r, _mm_setzero_pd()), m));
        }
    };

    // Numbers of odd and of even place, each with the square of the multiplier, so that their
    // steps need not wait for each other.
    static std::int32_t words(State& s, Word* r, std::int32_t n, std::int32_t sub) {
        Component one[2], two[2];
        __m128d x[2], y[2];
        for (int c = 0; c < 2; ++c) {
            const std::uint32_t *a = s.a + 2 * c, *m = parameters[sub].m + 2 * c;
            const auto square = [&](int i) { return __vtsiPowMod(a[i], 2, m[i]); };
            one[c] = Component::of(a, m);
            two[c] = {_mm_set_pd(square(1), square(0)), one[c].m, one[c].inverse};
            x[c] = one[c].step(_mm_set_pd(s.x[2 * c + 1], s.x[2 * c]));
            y[c] = one[c].step(x[c]);
        }
        const auto put = [](const __m128d* from, std::uint32_t* to) {
            _mm_storeu_si128(
                reinterpret_cast<__m128i*>(to),
                _mm_unpacklo_epi64(_mm_cvttpd_epi32(from[0]), _mm_cvttpd_epi32(from[1])));
        };
        std::int32_t i = 0;
        for (; i + 2 <= n; i += 2) {
            put(x, r[i].x);
            put(y, r[i + 1].x);
            for (int c = 0; c < 2; ++c) {
                x[c] = two[c].step(x[c]);
                y[c] = two[c].step(y[c]);
            }
        }
        if (i < n) put(x, r[i].x);
        std::copy_n(r[n - 1].x, 4, s.x);
        return VTS_STATUS_OK;
    }

    template <class Real> class Map {
    public:
        using Arithmetic = Real;
        Map(std::int32_t sub, Real a, Real b) : a_(a), scale_(b - a) {
            const std::uint32_t* m = parameters[sub].m;
            for (int c = 0; c < 2; ++c)
                inverse_[c] = _mm_set_pd(1.0 / m[2 * c + 1], 1.0 / m[2 * c]);
        }
        void operator()(const Word* w, std::int32_t n, Real* r) const {
            for (std::int32_t i = 0; i < n; ++i) {
                const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + i));
                const __m128d t = _mm_add_pd(
                    _mm_mul_pd(_mm_cvtepi32_pd(x), inverse_[0]),
                    _mm_mul_pd(_mm_cvtepi32_pd(_mm_shuffle_epi32(x, _MM_SHUFFLE(3, 2, 3, 2))),
                               inverse_[1]));
                const double sum = _mm_cvtsd_f64(_mm_add_sd(t, _mm_unpackhi_pd(t, t)));
                const double u = sum - static_cast<std::int32_t>(sum);  // sum in [0, 4): exact
                r[i] = unit(u) * scale_ + a_;
            }
        }

    private:
        static Real unit(double u) {
            if constexpr (sizeof(Real) == sizeof(double)) return u;
            return static_cast<Real>(static_cast<std::int32_t>(u * 0x1p24)) * 0x1p-24f;
        }
        __m128d inverse_[2];
        Real a_, scale_;
    };

    static bool valid(const State& s, std::int32_t sub) {
        for (int j = 0; j < 4; ++j) {
            const std::uint32_t largest = parameters[sub].m[j] - 1;
            if (s.x[j] - 1 >= largest || s.a[j] - 1 >= largest) return false;
        }
        return true;
    }
};

}  // namespace

}  // namespace kef::rng

KEF_GENERATOR(WH, kef::rng::WichmannHill)
