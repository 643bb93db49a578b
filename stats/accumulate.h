// How a tile of observations goes into the accumulators: plain sums, one update per
// observation, or sums around a point near the mean, merged.
#pragma once

#include "stats/accumulators.h"
#include "stats/merge.h"
#include "stats/power_sums.h"

namespace kef::stats {

// The weights of a tile.
struct TileWeights {
    const double* w;  // null: no weights; else as many as weight_room
    double sum;
    SumOfSquares sum_of_squares;
    bool positive;  // none is negative or NaN

    static TileWeights ones(int n) {
        const double sum = n;
        return {nullptr, sum, sum, true};
    }
};

// Weights of n observations are read up to three beyond them, and in whole vectors.
constexpr int weight_room(int n) {
    constexpr int lanes = vm::lanes<double>;
    return (n + lanes - 1) / lanes * lanes + 3;
}

// The weights of n observations in double precision, put to w, padded with zeros.
template <class T> TileWeights read_weights(const T* weights, int n, double* w) {
    constexpr int lanes = vm::lanes<double>;
    doubles sums{}, square_sums{};
    vm::longs unusual{};
    int j = 0;
    for (; j <= n - lanes; j += lanes) {
        const doubles some = several<false>(weights + j);
        vm::store(w + j, some);
        sums += some;
        square_sums += some * some;
        unusual |= ~(vm::longs)(some >= 0.0);
    }
    const auto of_first_lane = [](doubles x, double& rest) {
        const d2 total = vm::over_blocks(x, [](d2 a, d2 b) { return a + b; });
        rest = total[1];
        return total[0];
    };
    double others, other_squares, sum = of_first_lane(sums, others),
                                  squares = of_first_lane(square_sums, other_squares);
    bool positive = !vm::any_lane(unusual);
    for (; j < n; ++j) {
        const double one = weights[j];
        w[j] = one;
        sum += one;
        squares += one * one;
        positive &= one >= 0;
    }
    std::fill(w + n, w + weight_room(n), 0.0);
    sum += others;
    squares += other_squares;
    return {w, sum, {w, n, squares}, positive};
}

namespace detail {

// The point that deviations are taken from: the running mean, before the first tile
// a middling observation of it, so that constant data have deviations of exactly 0.
template <class Source> inline d2 centre(const Source& x, int n, const PairSums& s, bool started) {
    d2 r = s.mean_high;
    if (!started) {
        using vm::maximum;
        using vm::minimum;
        const d2 a = x.one(0), b = x.one(n / 2), c = x.one(n - 1);
        r = maximum(minimum(a, b), minimum(maximum(a, b), c));
    }
    return vm::select(finite(r), r, d2{});
}

// Calls f with the number of each pair and the pair. Observations that do not follow
// each other closely are fetched ahead: while a pair is summed, its share of the next
// tile, in the order of memory.
template <class T, class F>
void for_each_pair(const Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                   F f) {
    constexpr std::ptrdiff_t line = 64;
    const std::ptrdiff_t lines = is_far(x.stride) ? n * x.stride * sizeof(T) / line : 0;
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

// n <= short_tile observations.
template <class T>
void add_by_recurrence(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                       const double* w) {
    const bool higher = A.plan.central >= 3, products = A.plan.products;
    const double W = fill_coefficients(*A.coefficients, A.W, w, n, higher);
    for_each_pair(A, x, first, n, [&](std::ptrdiff_t i, Pair pair) {
        PairSums& s = A.sums[i];
        // run(r, T) gives the T after the tile, both relative to r.
        const auto update = [&](const auto& source, auto run) {
            const d2 r = centre(source, n, s, A.started);
            if (!A.started) s.mean_high = r;
            const d2 total = run(r, A.W * ((s.mean_high - r) + s.mean_low));
            two_sum(r, total / W, s.mean_high, s.mean_low);
        };
        if (pair.alone() && x.stride == 1 && !higher && !products)
            with_lone_row(x, pair, first, [&](const auto& row) {
                update(row, [&](d2 r, d2 total) {
                    return recurrence(row, *A.coefficients, w, n, r, total, s.central);
                });
            });
        else
            with_pair(x, pair, first, [&](const auto& source) {
                update(source, [&](d2 r, d2 total) {
                    return recurrence(higher, source, *A.coefficients, w, n, r, total, s.central,
                                      products ? A.deviation + i * column : nullptr,
                                      A.scaled + i * column);
                });
            });
    });
    if (products)
        cross_products(A.deviation, A.scaled, A.pairs, n,
                       [&](std::ptrdiff_t a, std::ptrdiff_t b, const ProductBlock& sum) {
                           ProductBlock& C = A.products[block_index(a, b)];
                           C.straight += sum.straight;
                           C.crossed += sum.crossed;
                       });
    A.W = W;
    A.started = true;
}

// The central sums of a tile whose power sums around r are `sum`, mu = its mean - r.
inline CentralSums central_sums(int order, const d2 (&sum)[4], d2 mu) {
    CentralSums B;
    if (order >= 2) B.m2 = vm::maximum(d2{}, sum[1] - mu * sum[0]);  // keeps NaN
    if (order >= 3) {
        B.m3 = sum[2] - 3.0 * mu * sum[1] + 2.0 * mu * mu * sum[0];
        B.m4 = sum[3] - 4.0 * mu * sum[2] + 6.0 * mu * mu * sum[1] - 3.0 * mu * mu * mu * sum[0];
    }
    return B;
}

// The deviations from r to y and, with the weights as factors, to z.
template <class Source>
[[gnu::always_inline]] inline void put_deviations(const Source& x, const double* w, int n, d2 r,
                                                  d2* y, d2* z) {
    const auto put = [](d2* to, doubles d) { vm::store(reinterpret_cast<double*>(to), d); };
    const doubles shift = vm::in_all_blocks(r);
    int j = 0;
    if (w == nullptr) {
        for (; j <= n - blocks; j += blocks) put(y + j, x.u(j) - shift);
        for (; j < n; ++j) y[j] = x.one(j) - r;
    } else {
        for (; j <= n - blocks; j += blocks) {
            const doubles d = x.u(j) - shift;
            put(y + j, d), put(z + j, d * duplicates(w + j));
        }
        for (; j < n; ++j) y[j] = x.one(j) - r, z[j] = y[j] * duplicate(w + j);
    }
}

// A tile of positive total weight.
template <class T>
void add_tile(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
              const TileWeights& t) {
    const bool products = A.plan.products;
    const int order = A.plan.central;
    const int summed = products && order < 2 ? 2 : order;  // what tells whether r is good
    const MergeFactors factors(A.W, t.sum);
    const double inverse = 1 / t.sum;
    const double near = order >= 3 ? 0.125 : 0.75;  // the higher sums cancel more
    for_each_pair(A, x, first, n, [&](std::ptrdiff_t i, Pair pair) {
        PairSums& s = A.sums[i];
        d2 r, sum[4];
        with_vectors(x, pair, first, [&](const auto& source) {
            r = centre(source, n, s, A.started);
            power_sums(summed, source, t.w, n, r, sum);
            // Where the mean of the tile is far from r, on the scale of its spread, the
            // central sums would lose digits: once more around that mean.
            if (summed < 2) return;
            const d2 mu = sum[0] * inverse;
            const l2 far = (l2)(mu * sum[0] > sum[1] * near);
            if (vm::bits(far) == 0) [[likely]]
                return;
            r = vm::select(far & finite(r + mu), r + mu, r);
            power_sums(summed, source, t.w, n, r, sum);
        });
        if (!A.started) s.mean_high = r;
        const d2 mu = sum[0] * inverse;
        const d2 distance = merge(s, order, r, mu, central_sums(order, sum, mu), factors);
        if (!products) return;
        A.tile_sum[i] = sum[0], A.tile_distance[i] = distance;
        with_pair(x, pair, first, [&](const auto& source) {
            put_deviations(source, t.w, n, r, A.deviation + i * column, A.scaled + i * column);
        });
    });
    if (!products) return;
    cross_products(A.deviation, t.w != nullptr ? A.scaled : A.deviation, A.pairs, n,
                   [&](std::ptrdiff_t a, std::ptrdiff_t b, ProductBlock sum) {
                       const d2 mu = A.tile_sum[a] * inverse, other_sum = A.tile_sum[b];
                       sum.straight -= mu * other_sum;
                       sum.crossed -= mu * swapped(other_sum);
                       merge(A.products[block_index(a, b)], sum, A.tile_distance[a],
                             A.tile_distance[b], factors.c2);
                   });
}

}  // namespace detail

// Adds n <= tile_size observations from the given one on.
template <class T>
void add_observations(Accumulators& A, const Observations<T>& x, std::ptrdiff_t first, int n,
                      const TileWeights& t) {
    if (A.plan.raw > 0) detail::add_raw(A, x, first, n, t);
    const double W = A.W + t.sum;
    if (A.plan.central > 0) {
        if (t.positive && t.sum > 0 && !A.plan.recurrence) detail::add_tile(A, x, first, n, t);
        else  // also where the tile has no positive weight that a mean could have
            for_each_tile(0, n, short_tile, [&](std::ptrdiff_t j, int m) {
                detail::add_by_recurrence(A, x, first + j, m, t.w != nullptr ? t.w + j : nullptr);
            });
    }
    A.W = W;
    A.W2 += t.sum_of_squares;
    A.positive_weights &= t.positive;
    A.started = true;
}

}  // namespace kef::stats
