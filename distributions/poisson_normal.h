// Poisson numbers of means from 10 out of normal ones: J. H. Ahrens, U. Dieter, Computer generation
// of Poisson deviates from modified normal distributions, ACM Trans. Math. Software 8 (1982)
// 163-179, algorithm PD; the letters are the paper's. The whole part K of a normal number of the
// Poisson law's mean and variance has the probability f(K); where f exceeds the Poisson weight p it
// is sometimes given up for a number of the density max(p - f, 0).
//
// Normal numbers out of 24-bit uniforms are coarse in the tails and, times a large deviation, finer
// steps of K: both are refined here. The p of the paper, good to 10^-7, is replaced.
#pragma once

#include "distributions/log_poisson.h"
#include "distributions/uniforms.h"

namespace kef::dist {

// Beyond this mean no number fits 32 bits.
inline constexpr double huge_mean = 0x1p32;

class PoissonFromNormal {
public:
    static constexpr double least_mean = 10;

    explicit PoissonFromNormal(double mean)
        : mu_(mean), s_(__builtin_sqrt(mean)), d_(6 * mean * mean), L_(mean - 1.1484) {}

    // Whether the steps of normal numbers show among the whole ones.
    bool coarse() const { return s_ > 256; }

    // A number, out of a standard normal one, a uniform U, another if coarse(), and more if need
    // be.
    double operator()(Uniforms& uniforms, float normal, float u, float finer) const {
        double T = normal;
        if (!(T > -tail_from && T < tail_from)) [[unlikely]]
            T = tail(uniforms, T);
        else if (coarse()) T += (finer - 0.5) * spacing(normal);
        const double G = mu_ + s_ * T, K = whole(G), U = u, below = mu_ - K;
        // Accepted at once from L upwards, and mostly below: one test, which seldom fails.
        if (((K + 1 > L_) | (d_ * U >= below * below * below)) & (G >= 0)) [[likely]]
            return K;
        return G >= 0 && quotient(K, U) ? K : from_difference(uniforms);
    }

    // m numbers, two at a time where both are accepted at once. The arrays are readable to an even
    // count; `finer` is read if coarse().
    void fill(Uniforms& uniforms, std::int32_t m, std::int32_t* r, const float* normal,
              const float* u, const float* finer) const {
        for (std::int32_t i = 0; i < m; i += 2) {
            const __m128 t = two(normal + i);
            const d2 size = (d2)_mm_cvtps_pd((__m128)((vm::i4)t & 0x7FFFFFFF));
            d2 T = (d2)_mm_cvtps_pd(t);
            if (coarse()) {
                const d2 step = (d2)_mm_cvtps_pd((__m128)((vm::i4)t & 0x7F800000)) * 0x1p-23;
                T += ((d2)_mm_cvtps_pd(two(finer + i)) - 0.5) * step;
            }
            const d2 G = mu_ + s_ * T, near = (G + 0x1p52) - 0x1p52;
            const d2 K = near - (d2)((l2)(near > G) & (l2)all(1.0)), below = mu_ - K;
            const d2 U = (d2)_mm_cvtps_pd(two(u + i));
            const l2 fine = ((K + 1.0 > L_) | (d_ * U >= below * below * below)) & (G >= 0.0) &
                            (size < tail_from);
            if (_mm_movemask_pd((__m128d)fine) == 3 && i + 1 < m) [[likely]] {
                const __m128i counts =
                    _mm_cvttpd_epi32(_mm_min_pd((__m128d)K, _mm_set1_pd(2147483647.0)));
                _mm_storel_epi64(reinterpret_cast<__m128i*>(r + i), counts);
            } else {
                for (std::int32_t j = i; j < std::min(i + 2, m); ++j)
                    r[j] = as_count((*this)(uniforms, normal[j], u[j], finer[j]));
            }
        }
    }

    // ln f(K): the normal density in the middle of [K, K + 1), corrected; error below 10^-9 up to 4
    // deviations.
    double log_f(double K) const {
        const double b1 = 1 / (24 * mu_), b2 = 0.3 * b1 * b1, c3 = b1 * b2 / 7, c2 = b2 - 15 * c3,
                     c1 = b1 - 6 * b2 + 45 * c3, c0 = 1 - b1 + 3 * b2 - 15 * c3;
        const double X = (0.5 - (mu_ - K)) / s_, X2 = X * X;
        const double omega = 0x1.9884533d43651p-2 / s_;  // 1/sqrt(2 pi)
        return log_of(omega * (((c3 * X2 + c2) * X2 + c1) * X2 + c0)) - 0.5 * X2;
    }

private:
    static constexpr double tail_from = 4;
    static constexpr int patience = 200;  // a trial is accepted half the time

    static __m128 two(const float* x) {
        return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x)));
    }

    static double spacing(float x) {
        return std::bit_cast<float>(std::bit_cast<std::uint32_t>(x) & 0x7F800000u) * 0x1p-23;
    }

    // The tail beyond tail_from, exactly (G. Marsaglia, Technometrics 6 (1964) 101-102).
    [[gnu::noinline]] static double tail(Uniforms& uniforms, double T) {
        for (int i = 0; i < patience; ++i) {
            const double u = std::max(uniforms.next48(), 0x1p-50);
            const double x = __builtin_sqrt(tail_from * tail_from - 2 * log_of(u));
            if (uniforms.fraction() * x < tail_from) return T < 0 ? -x : x;
        }
        return T < 0 ? -tail_from : tail_from;
    }

    double log_p(double K) const { return log_poisson(all(K), all(mu_))[0]; }

    [[gnu::noinline]] bool quotient(double K, double U) const {
        return (1 - U) <= exp_of(log_p(K) - log_f(K));
    }

    // From p - f by rejection from the Laplace density around 1.8 deviations.
    [[gnu::noinline]] double from_difference(Uniforms& uniforms) const {
        const double c = 0.1069 / mu_;
        for (int i = 0; i < patience; ++i) {
            const double E = -log_of(std::max(uniforms.next48(), 0x1p-50));
            const double U = 2 * uniforms.fraction() - 1;
            const double T = 1.8 + (U < 0 ? -E : E);
            if (T <= -0.6744) continue;
            const double K = whole(mu_ + s_ * T);
            if (c * __builtin_fabs(U) <= exp_of(log_p(K) + E) - exp_of(log_f(K) + E)) return K;
        }
        return whole(mu_);
    }

    double mu_, s_, d_, L_;
};

}  // namespace kef::dist
