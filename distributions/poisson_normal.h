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

    // A number out of a standard normal one, a uniform U, another if coarse(), and more if need be.
    double operator()(Uniforms& uniforms, float normal, float u, float finer) const {
        double T;
        if (normal > -tail_from && normal < tail_from) [[likely]]
            T = refined(vm::filled<f4>(normal), vm::filled<f4>(finer))[0];
        else T = tail(uniforms, normal);
        const Candidate<double> c = candidate<double>(T, u);
        if (c.at_once) [[likely]]
            return c.K;
        return c.G >= 0 && quotient(c.K, u) ? c.K : from_difference(uniforms);
    }

    // m numbers, two at a time where both are accepted at once. The arrays are readable to an even
    // count; `finer` is of use if coarse().
    void fill(Uniforms& uniforms, std::int32_t m, std::int32_t* r, const float* normal,
              const float* u, const float* finer) const {
        for (std::int32_t i = 0; i < m; i += 2) {
            const f4 t = two(normal + i);
            const Candidate<d2> c = candidate(refined(t, two(finer + i)), low(two(u + i)));
            const l2 good = c.at_once & (vm::absolute(low(t)) < tail_from);
            if (_mm_movemask_pd((__m128d)good) == 3 && i + 1 < m) [[likely]] {
                store_counts(r + i, c.K);
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
    using f4 = vm::f4;
    static constexpr double tail_from = 4;
    static constexpr int patience = 200;  // a trial is accepted half the time

    static f4 two(const float* x) {
        return (f4)_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x));
    }
    static d2 low(f4 x) { return (d2)_mm_cvtps_pd((__m128)x); }

    // Normal numbers of the two low lanes; if coarse(), anywhere in the steps around them.
    [[gnu::always_inline]] d2 refined(f4 normal, f4 finer) const {
        if (!coarse()) return low(normal);
        const d2 step = low((f4)((vm::i4)normal & 0x7F800000)) * 0x1p-23;
        return low(normal) + (low(finer) - 0.5) * step;
    }

    // K = whole(G), G normal of the law's mean and variance, and whether it is accepted at once:
    // from L upwards always, below by a test that seldom fails. One, or one in each lane.
    template <class V> struct Candidate {
        V G, K;
        decltype(V{} < V{}) at_once;
    };
    template <class V> [[gnu::always_inline]] Candidate<V> candidate(V T, V U) const {
        const V G = mu_ + s_ * T, K = whole(G), below = mu_ - K;
        using Truth = decltype(V{} < V{});
        return {G, K, Truth(((K + 1 > L_) | (d_ * U >= below * below * below)) & (G >= 0))};
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

    double log_p(double K) const { return log_poisson(both(K), both(mu_))[0]; }

    // Where f exceeds p: K stays with the probability p/f.
    [[gnu::noinline]] bool quotient(double K, double U) const {
        return (1 - U) <= exp_of(log_p(K) - log_f(K));
    }

    // From max(p - f, 0) by rejection from the Laplace density around 1.8 deviations.
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
