// Sums of w y^k, k = 1..K, of a pair of variables over a tile, y = x - r. No weights:
// w = 1 everywhere, in kernels of their own.
#pragma once

#include "stats/observations.h"

namespace kef::stats {

namespace detail {

using vm::multiply_add;

template <int K, class V> struct Powers {
    V s1{}, s2{}, s3{}, s4{};

    void add(V y) {
        s1 += y;
        if constexpr (K == 2) s2 = multiply_add(y, y, s2);
        if constexpr (K >= 3) {
            const V y2 = y * y;
            s2 += y2;
            s3 = multiply_add(y2, y, s3), s4 = multiply_add(y2, y2, s4);
        }
    }
    void add(V y, V w) {
        V term = w * y;
        s1 += term;
        if constexpr (K == 2) s2 = multiply_add(term, y, s2);
        if constexpr (K >= 3) {
            s2 += (term *= y);
            s3 += (term *= y);
            s4 = multiply_add(term, y, s4);
        }
    }
};

// Where the processor has wider vectors it has as many registers as two sets of four sums take.
inline constexpr int most_in_two_sets = blocks > 1 ? 4 : 2;

// Two sets of sums for K <= most_in_two_sets, to hide the latency of the additions; more would not
// fit the registers.
template <int K, bool weighted, class Source>
inline void power_sums(const Source& x, const double* w, int n, d2 r, d2 (&sum)[4]) {
    constexpr bool both_sets = K <= most_in_two_sets;
    static_assert(both_sets || Source::half);
    constexpr int half_width = Source::width / 2, width = both_sets ? Source::width : half_width;
    Powers<K, doubles> first, second;
    const doubles ru = Source::shift_u(r), rv = Source::shift_v(r);
    const auto add_u = [&](int j) __attribute__((always_inline)) {
        if constexpr (weighted) first.add(x.u(j) - ru, Source::weight_u(w, j));
        else first.add(x.u(j) - ru);
    };
    int j = 0;
    for (; j <= n - width; j += width) {
        add_u(j);
        if constexpr (both_sets) {
            if constexpr (weighted) second.add(x.v(j) - rv, Source::weight_v(w, j));
            else second.add(x.v(j) - rv);
        }
    }
    if constexpr (blocks > 1 && Source::half)
        if (j <= n - half_width) add_u(j), j += half_width;
    Powers<K, d2> rest;
    for (; j < n; ++j) {
        if constexpr (weighted) rest.add(x.one(j) - r, both(w[j]));
        else rest.add(x.one(j) - r);
    }
    const auto plus = [](auto a, auto b) { return a + b; };
    sum[0] = Source::fold(first.s1, second.s1, plus) + rest.s1;
    sum[1] = Source::fold(first.s2, second.s2, plus) + rest.s2;
    sum[2] = Source::fold(first.s3, second.s3, plus) + rest.s3;
    sum[3] = Source::fold(first.s4, second.s4, plus) + rest.s4;
}

// Two variables in rows do not share sums; where one set fits the registers they go one by one.
template <int K, bool weighted, class T, bool aligned>
inline void power_sums(const RowPair<T, aligned>& x, const double* w, int n, d2 r,
                       d2 (&sum)[4]) requires(K > most_in_two_sets) {
    d2 second[4];
    power_sums<K, weighted>(LoneRow<T, aligned>{x.x}, w, n, both(r[0]), sum);
    power_sums<K, weighted>(LoneRow<T, aligned>{x.y}, w, n, both(r[1]), second);
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
