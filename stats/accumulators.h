// What Basic accumulates, and how a tile of observations goes into it.
#pragma once

#include "stats/cross_product.h"
#include "stats/observations.h"
#include "stats/power_sums.h"
#include "stats/recurrence.h"

namespace kef::stats {

// The accumulators of one pair of variables.
struct PairSums {
    d2 mean_high{}, mean_low{};      // the mean is their sum, to about twice the precision
    CentralSums central;             // sums of w (x - mean)^k
    d2 raw_high[4]{}, raw_low[4]{};  // sums of w x^k, k = 1 .. 4, likewise
};

// Which accumulators a computation keeps up to date.
struct Plan {
    int raw = 0;            // highest power of the raw sums
    int central = 0;        // highest power of the central sums; 1: the mean alone
    bool products = false;  // sums of products of deviations
    bool recurrence = false;

    // Observations of one pass; `stride` is that of x.
    int tile_size(std::ptrdiff_t stride) const {
        return recurrence || products || stride > 8 ? short_tile : tile;
    }
    bool covers(const Plan& other) const {
        return raw >= other.raw && central >= other.central && products >= other.products;
    }
};

// The weights of a tile.
struct TileWeights {
    const double* w;  // null: no weights; else readable up to three beyond the tile
    double sum, sum_of_squares;
    bool ordinary;  // none is negative, not all are zero
};

// Accumulators of a whole computation. The arrays belong to whoever owns this.
struct Accumulators {
    Plan plan;
    bool started = false;  // holds observations
    double W = 0, W2 = 0;
    std::ptrdiff_t pairs = 0;
    const Pair* pair = nullptr;
    PairSums* sums = nullptr;
    ProductBlock* products = nullptr;  // packed triangle of blocks
    // scratch, n vectors of each pair: deviations, weighted deviations
    d2 *deviation = nullptr, *scaled = nullptr;
    // scratch, one vector each: of a tile, the sum and the distance of the mean
    d2 *tile_sum = nullptr, *tile_distance = nullptr;
    Coefficients* coefficients = nullptr;
};

namespace detail {

// Lanes that hold finite numbers.
inline l2 finite(d2 x) { return (l2)(x - x == 0.0); }

// high + low = a + b exactly (Knuth); an infinite sum has no low part.
inline void two_sum(d2 a, d2 b, d2& high, d2& low) {
    const d2 sum = a + b, shadow = sum - a;
    high = sum;
    low = vm::select(finite(sum), (a - (sum - shadow)) + (b - shadow), d2{});
}

// The point that deviations are taken from: the running mean, before the first tile
// a middling observation of it, so that constant data have deviations of exactly 0.
template <class Source> inline d2 centre(const Source& x, int n, const PairSums& s, bool started) {
    d2 r = s.mean_high;
    if (!started) {
        const auto low = [](d2 a, d2 b) { return (d2)_mm_min_pd((__m128d)a, (__m128d)b); };
        const auto high = [](d2 a, d2 b) { return (d2)_mm_max_pd((__m128d)a, (__m128d)b); };
        const d2 a = x.one(0), b = x.one(n / 2), c = x.one(n - 1);
        r = high(low(a, b), low(high(a, b), c));
    }
    return vm::select(finite(r), r, d2{});
}

// The factors of a merge of weights Wa and Wb, the same for all variables.
struct MergeFactors {
    double inverse;     // 1/Wb
    double a, q;        // Wa/W, Wb/W
    double c2, c3, c4;  // of the powers of the distance of the means
    MergeFactors(double Wa, double Wb) : inverse(1 / Wb), a(Wa / (Wa + Wb)), q(Wb / (Wa + Wb)) {
        c2 = Wb * a;
        c3 = c2 * (a - q);
        c4 = c2 * (a * a - a * q + q * q);
    }
};

// Joins the sums of a tile around r to the accumulators: a pairwise merge (Chan,
// Golub & LeVeque 1983; Pebay 2008). Returns the distance of the two means.
inline d2 merge(PairSums& s, int order, const d2 (&sum)[4], d2 r, const MergeFactors& f) {
    const double a = f.a, q = f.q;
    const d2 mu = sum[0] * f.inverse;
    const d2 delta = (r - s.mean_high) + (mu - s.mean_low), square = delta * delta;
    CentralSums& M = s.central;
    if (order >= 2) {
        const d2 m2 = (d2)_mm_max_pd(__m128d{}, (__m128d)(sum[1] - mu * sum[0]));  // keeps NaN
        if (order >= 3) {
            const d2 m3 = sum[2] - 3.0 * mu * sum[1] + 2.0 * mu * mu * sum[0];
            const d2 m4 =
                sum[3] - 4.0 * mu * sum[2] + 6.0 * mu * mu * sum[1] - 3.0 * mu * mu * mu * sum[0];
            M.m4 += m4 + square * square * f.c4 + 6.0 * square * (a * a * m2 + q * q * M.m2) +
                    4.0 * delta * (a * m3 - q * M.m3);
            M.m3 += m3 + square * delta * f.c3 + 3.0 * delta * (a * m2 - q * M.m2);
        }
        M.m2 += m2 + square * f.c2;
    }
    // From an infinite mean, delta would lead to NaN.
    const d2 step = vm::select(finite(s.mean_high), delta, r + mu);
    two_sum(s.mean_high, s.mean_low + step * q, s.mean_high, s.mean_low);
    return delta;
}

// Calls f with the number of each pair and the pair. Observations that do not follow
// each other closely are fetched ahead: while a pair is summed, its share of the next
// tile, in the order of memory.
template <class T, class F>
void for_each_pair(const Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                   F f) {
    constexpr std::ptrdiff_t line = 64;
    const std::ptrdiff_t lines = x.stride > 8 ? n * x.stride * sizeof(T) / line : 0;
    const char* next = reinterpret_cast<const char*>(x.x + (first + n) * x.stride);
    for (std::ptrdiff_t i = 0, fetched = 0; i < A.pairs; ++i) {
        for (const std::ptrdiff_t end = lines * (i + 1) / A.pairs; fetched < end; ++fetched)
            _mm_prefetch(next + fetched * line, _MM_HINT_T1);
        f(i, A.pair[i]);
    }
}

template <class T>
void add_raw(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
             const TileWeights& t) {
    for_each_pair(A, x, first, n, [&](std::ptrdiff_t i, Pair pair) {
        d2 sum[4];
        with_vectors(x, pair, first, [&](const auto& source) {
            power_sums(A.plan.raw, source, t.w, n, d2{}, sum);
        });
        PairSums& s = A.sums[i];
        for (int k = 0; k < A.plan.raw; ++k)
            two_sum(s.raw_high[k], sum[k] + s.raw_low[k], s.raw_high[k], s.raw_low[k]);
    });
}

template <class T>
void add_by_recurrence(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                       const double* w) {
    const bool higher = A.plan.central >= 3;
    const double W = fill_coefficients(*A.coefficients, A.W, w, n, higher);
    for_each_pair(A, x, first, n, [&](std::ptrdiff_t i, Pair pair) {
        PairSums& s = A.sums[i];
        const auto update = [&](const auto& source, auto run) {
            const d2 r = centre(source, n, s, A.started);
            if (!A.started) s.mean_high = r;
            const d2 total = run(r, A.W * ((s.mean_high - r) + s.mean_low));
            two_sum(r, total / W, s.mean_high, s.mean_low);
        };
        if (pair.alone() && x.stride == 1 && !higher && !A.plan.products)
            with_vectors(x, pair, first, [&](const auto& source) {
                if constexpr (requires {
                                  recurrence(source, *A.coefficients, w, n, d2{}, d2{}, s.central);
                              })
                    update(source, [&](d2 r, d2 total) {
                        return recurrence(source, *A.coefficients, w, n, r, total, s.central);
                    });
            });
        else
            with_pair(x, pair, first, [&](const auto& source) {
                update(source, [&](d2 r, d2 total) {
                    return recurrence(higher, source, *A.coefficients, w, n, r, total, s.central,
                                      A.plan.products ? A.deviation + i * column : nullptr,
                                      A.scaled + i * column);
                });
            });
    });
    if (A.plan.products)
        cross_products(A.deviation, A.scaled, A.pairs, n,
                       [&](std::ptrdiff_t a, std::ptrdiff_t b, const ProductBlock& sum) {
                           ProductBlock& C = A.products[block_index(a, b)];
                           C.straight += sum.straight;
                           C.crossed += sum.crossed;
                       });
    A.W = W;
    A.started = true;
}

template <class T>
void add_tile(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
              const TileWeights& t) {
    const int order = A.plan.central;
    const MergeFactors factors(A.W, t.sum);
    for_each_pair(A, x, first, n, [&](std::ptrdiff_t i, Pair pair) {
        PairSums& s = A.sums[i];
        d2 r, sum[4];
        with_vectors(x, pair, first, [&](const auto& source) {
            r = centre(source, n, s, A.started);
            power_sums(A.plan.products && order < 2 ? 2 : order, source, t.w, n, r, sum);
            // Where the mean of the tile is far from r, on the scale of its spread, the
            // central sums would lose digits: once more around that mean.
            if (order < 2 && !A.plan.products) return;
            const d2 mu = sum[0] * factors.inverse;
            const l2 far = (l2)(4.0 * (mu * sum[0]) > 3.0 * sum[1]);
            if (_mm_movemask_pd((__m128d)far) == 0) [[likely]]
                return;
            r = vm::select(far & finite(r + mu), r + mu, r);
            power_sums(order < 2 ? 2 : order, source, t.w, n, r, sum);
        });
        if (!A.started) s.mean_high = r;
        const d2 distance = merge(s, order, sum, r, factors);
        if (A.plan.products) {
            A.tile_sum[i] = sum[0], A.tile_distance[i] = distance;
            with_pair(x, pair, first, [&](const auto& source) {
                d2 *y = A.deviation + i * column, *z = A.scaled + i * column;
                if (t.w == nullptr)
                    for (int j = 0; j < n; ++j) y[j] = source.one(j) - r;
                else
                    for (int j = 0; j < n; ++j)
                        y[j] = source.one(j) - r, z[j] = y[j] * duplicate(t.w + j);
            });
        }
    });
    if (A.plan.products) {
        cross_products(A.deviation, t.w != nullptr ? A.scaled : A.deviation, A.pairs, n,
                       [&](std::ptrdiff_t a, std::ptrdiff_t b, const ProductBlock& sum) {
                           const d2 mu = A.tile_sum[a] * factors.inverse,
                                    distance = A.tile_distance[a] * factors.c2;
                           const d2 other_sum = A.tile_sum[b], other = A.tile_distance[b];
                           ProductBlock& C = A.products[block_index(a, b)];
                           C.straight += (sum.straight - mu * other_sum) + distance * other;
                           C.crossed +=
                               (sum.crossed - mu * swapped(other_sum)) + distance * swapped(other);
                       });
    }
}

}  // namespace detail

// Adds n <= tile_size observations from the given one on.
template <class T>
void add_observations(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                      const TileWeights& t) {
    if (A.plan.raw > 0) detail::add_raw(A, x, first, n, t);
    const double W = A.W + t.sum;
    if (A.plan.central > 0) {
        if (t.ordinary && !A.plan.recurrence) {
            detail::add_tile(A, x, first, n, t);
        } else {  // also where the tile has no positive weight that a mean could have
            for (int j = 0; j < n; j += short_tile)
                detail::add_by_recurrence(A, x, first + j, n - j < short_tile ? n - j : short_tile,
                                          t.w != nullptr ? t.w + j : nullptr);
        }
    }
    A.W = W;
    A.W2 += t.sum_of_squares;
    A.started = true;
}

}  // namespace kef::stats
