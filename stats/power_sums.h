// Sums of w y^k, k = 1..K, of a pair of variables over a tile, y = x - r. No weights:
// w = 1 everywhere, in kernels of their own.
#pragma once

#include "stats/observations.h"

namespace kef::stats {

namespace detail {

template <int K> struct Powers {
    d2 s1{}, s2{}, s3{}, s4{};

    void add(d2 y) {
        s1 += y;
        if constexpr (K >= 2) {
            const d2 y2 = y * y;
            s2 += y2;
            if constexpr (K >= 3) s3 += y2 * y, s4 += y2 * y2;
        }
    }
    void add(d2 y, d2 w) {
        d2 term = w * y;
        s1 += term;
        if constexpr (K >= 2) s2 += (term *= y);
        if constexpr (K >= 3) s3 += (term *= y), s4 += (term *= y);
    }
};

// Two sets of sums for K <= 2, to hide the latency of the additions; more would not
// fit the registers.
template <int K, bool weighted, class Source>
inline void power_sums(const Source& x, const double* w, int n, d2 r, d2 (&sum)[4]) {
    constexpr bool both = K <= 2;
    static_assert(both || Source::half);
    constexpr int width = both ? Source::width : Source::width / 2;
    Powers<K> first, second;
    const d2 ru = Source::shift_u(r), rv = Source::shift_v(r);
    int j = 0;
    for (; j <= n - width; j += width) {
        if constexpr (weighted) {
            first.add(x.u(j) - ru, Source::weight_u(w, j));
            if constexpr (both) second.add(x.v(j) - rv, Source::weight_v(w, j));
        } else {
            first.add(x.u(j) - ru);
            if constexpr (both) second.add(x.v(j) - rv);
        }
    }
    Powers<K> rest;
    for (; j < n; ++j) {
        if constexpr (weighted) rest.add(x.one(j) - r, all(w[j]));
        else rest.add(x.one(j) - r);
    }
    const auto plus = [](d2 a, d2 b) { return a + b; };
    sum[0] = Source::fold(first.s1, second.s1, plus) + rest.s1;
    sum[1] = Source::fold(first.s2, second.s2, plus) + rest.s2;
    sum[2] = Source::fold(first.s3, second.s3, plus) + rest.s3;
    sum[3] = Source::fold(first.s4, second.s4, plus) + rest.s4;
}

// Two variables in rows do not share sums; with four powers they go one by one.
template <int K, bool weighted, class T, bool aligned>
inline void power_sums(const RowPair<T, aligned>& x, const double* w, int n, d2 r,
                       d2 (&sum)[4]) requires(K > 2) {
    d2 second[4];
    power_sums<K, weighted>(LoneRow<T, aligned>{x.x}, w, n, all(r[0]), sum);
    power_sums<K, weighted>(LoneRow<T, aligned>{x.y}, w, n, all(r[1]), second);
    for (int k = 0; k < 4; ++k) sum[k][1] = second[k][1];
}

}  // namespace detail

// The sums up to the given order; those above it are not defined. `w` is null for
// data without weights.
template <class Source>
[[gnu::noinline]] void power_sums(int order, const Source& x, const double* w, int n, d2 r,
                                  d2 (&sum)[4]) {
    using namespace detail;
    if (order <= 1)
        w ? power_sums<1, true>(x, w, n, r, sum) : power_sums<1, false>(x, w, n, r, sum);
    else if (order == 2)
        w ? power_sums<2, true>(x, w, n, r, sum) : power_sums<2, false>(x, w, n, r, sum);
    else w ? power_sums<4, true>(x, w, n, r, sum) : power_sums<4, false>(x, w, n, r, sum);
}

}  // namespace kef::stats
