// The 273 parameter sets of WH.
//
//   g++ -std=c++20 -O2 -o build/wh_search tools/wh_search.cpp
//   build/wh_search > rng/brng/tables/wh.inc
//
// Moduli: the 1092 largest safe primes below 2^24 (m and (m-1)/2 prime); set i takes numbers i,
// i + 273, i + 546 and i + 819 of the falling list. Multipliers: four different primitive roots
// in 112..127, chosen so that the smallest normalised spectral value (Fincke and Pohst; D. E.
// Knuth, TAOCP 2, 3.3.4) over dimensions 2 to 8 of the equivalent generator modulo the product is
// largest; normalised by the largest possible, sqrt(Hermite constant) M^(1/t).
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

using u64 = std::uint64_t;
using i128 = __int128;
using real = long double;

constexpr int dims = 8, sets = 273;

static u64 power(u64 x, u64 k, u64 m) {
    u64 r = 1;
    for (; k; k >>= 1, x = x * x % m)
        if (k & 1) r = r * x % m;
    return r;
}
static bool prime(u64 n) {
    if (n % 2 == 0) return n == 2;
    for (u64 d = 3; d * d <= n; d += 2)
        if (n % d == 0) return false;
    return n > 1;
}

struct Lattice {  // a basis of n vectors in n dimensions, LLL-reduced step by step
    int n = 0;
    i128 b[dims][dims] = {};
    real mu[dims][dims], norm[dims];

    static real to_real(i128 x) { return static_cast<real>(x); }
    real dot(int i, int j) const {
        real s = 0;
        for (int c = 0; c < n; ++c) s += to_real(b[i][c]) * to_real(b[j][c]);
        return s;
    }
    void gso(int i) {
        real r[dims];
        for (int j = 0; j <= i; ++j) {
            r[j] = dot(i, j);
            for (int k = 0; k < j; ++k) r[j] -= mu[j][k] * r[k];
            if (j < i) mu[i][j] = r[j] / norm[j];
        }
        norm[i] = r[i];
    }
    void size_reduce(int i) {
        for (int pass = 0; pass < 20; ++pass) {
            gso(i);
            bool changed = false;
            for (int j = i - 1; j >= 0; --j) {
                const real q = std::roundl(mu[i][j]);
                if (q == 0) continue;
                changed = true;
                const i128 k = static_cast<i128>(q);
                for (int c = 0; c < n; ++c) b[i][c] -= k * b[j][c];
                for (int c = 0; c < j; ++c) mu[i][c] -= q * mu[j][c];
                mu[i][j] -= q;
            }
            if (!changed) break;
        }
        gso(i);
    }
    void lll() {
        gso(0);
        int i = 1;
        while (i < n) {
            size_reduce(i);
            if (norm[i] >= (0.99L - mu[i][i - 1] * mu[i][i - 1]) * norm[i - 1]) {
                ++i;
            } else {
                for (int c = 0; c < n; ++c) std::swap(b[i][c], b[i - 1][c]);
                gso(i - 1);
                i = i > 1 ? i - 1 : 1;
                if (i == 1) gso(0);
            }
        }
    }
    // Squared length of the shortest vector.
    real shortest() {
        for (int i = 0; i < n; ++i) gso(i);
        real best = dot(0, 0);
        for (int i = 1; i < n; ++i) best = std::min(best, dot(i, i));
        real x[dims] = {};
        enumerate(n - 1, 0, x, best);
        return best;
    }
    void enumerate(int i, real sum, real* x, real& best) {
        if (i < 0) {
            if (sum > 0.5L) best = std::min(best, sum);
            return;
        }
        real centre = 0;
        for (int j = i + 1; j < n; ++j) centre -= x[j] * mu[j][i];
        const real radius = std::sqrt(std::max<real>(0, (best * (1 - 1e-12L) - sum) / norm[i]));
        for (real v = std::ceil(centre - radius); v <= centre + radius; v += 1) {
            x[i] = v;
            const real d = v - centre;
            if (sum + d * d * norm[i] < best) enumerate(i - 1, sum + d * d * norm[i], x, best);
        }
        x[i] = 0;
    }
};

// Smallest normalised spectral value, given up as soon as it is not above `floor`.
static real spectral(i128 A, i128 M, real floor) {
    const real hermite[dims + 1] = {0,
                                    0,
                                    std::sqrt(4.0L / 3),
                                    std::cbrt(2.0L),
                                    std::sqrt(2.0L),
                                    std::pow(8.0L, 0.2L),
                                    std::pow(64.0L / 3, 1.0L / 6),
                                    std::pow(64.0L, 1.0L / 7),
                                    2};
    const real m = static_cast<real>(M);
    Lattice l;
    l.n = 1;
    l.b[0][0] = M;
    real worst = 1;
    i128 power = 1;
    for (int t = 2; t <= dims; ++t) {
        // power <- power A mod M by doubling: the product has 192 bits.
        i128 p = 0;
        for (int bit = 95; bit >= 0; --bit) {
            p = p * 2 % M;
            if (power >> bit & 1) p = (p + A) % M;
        }
        power = p;
        l.n = t;
        l.b[t - 1][0] = -power;
        l.b[t - 1][t - 1] = 1;
        l.lll();
        const real value = std::sqrt(l.shortest() / hermite[t]) / std::pow(m, 1.0L / t);
        worst = std::min(worst, value);
        if (worst <= floor) return worst;
    }
    return worst;
}

int main() {
    std::vector<u64> primes;
    for (u64 m = (1 << 24) - 1; primes.size() < 4 * sets; m -= 2)
        if (prime(m) && prime(m / 2)) primes.push_back(m);
    std::fprintf(stderr, "moduli %llu to %llu\n", (unsigned long long)primes.front(),
                 (unsigned long long)primes.back());
    std::vector<real> values;
    std::printf("// Made by tools/wh_search.cpp: moduli, multipliers.\n");
    for (int i = 0; i < sets; ++i) {
        u64 m[4];
        std::vector<u64> roots[4];
        i128 M = 1;
        for (int j = 0; j < 4; ++j) {
            m[j] = primes[i + sets * j];
            M *= m[j];
            for (u64 a = 112; a < 128; ++a)
                if (power(a, 2, m[j]) != 1 && power(a, (m[j] - 1) / 2, m[j]) != 1)
                    roots[j].push_back(a);
        }
        i128 unit[4];  // 1 modulo m[j], 0 modulo the others
        for (int j = 0; j < 4; ++j) {
            const i128 rest = M / m[j];
            unit[j] =
                rest * static_cast<i128>(power(static_cast<u64>(rest % m[j]), m[j] - 2, m[j])) % M;
        }
        real best = 0;
        u64 chosen[4] = {};
        for (u64 a : roots[0])
            for (u64 b : roots[1])
                for (u64 c : roots[2])
                    for (u64 d : roots[3]) {
                        if (a == b || a == c || a == d || b == c || b == d || c == d) continue;
                        const i128 A = (a * unit[0] + b * unit[1] + c * unit[2] + d * unit[3]) % M;
                        const real value = spectral(A, M, best);
                        if (value > best) {
                            best = value;
                            chosen[0] = a, chosen[1] = b, chosen[2] = c, chosen[3] = d;
                        }
                    }
        values.push_back(best);
        std::printf("{{%llu, %llu, %llu, %llu}, {%llu, %llu, %llu, %llu}},\n",
                    (unsigned long long)m[0], (unsigned long long)m[1], (unsigned long long)m[2],
                    (unsigned long long)m[3], (unsigned long long)chosen[0],
                    (unsigned long long)chosen[1], (unsigned long long)chosen[2],
                    (unsigned long long)chosen[3]);
        std::fflush(stdout);
    }
    std::sort(values.begin(), values.end());
    std::fprintf(stderr, "smallest spectral value %.4Lf, median %.4Lf\n", values.front(),
                 values[sets / 2]);
}
