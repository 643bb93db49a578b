// One update per observation of mean, central sums and deviations (Welford,
// Technometrics 4:419, 1962; West, CACM 22:532, 1979; Terriberry 2007). With W the
// weight before observation (x, w), q = w/(W+w), a = W/(W+w), d = x - m:
//
//   M4 += d^4 W w (W^2 - W w + w^2)/(W+w)^3 + 6 q^2 d^2 M2 - 4 q d M3
//   M3 += d^3 W w (W - w)/(W+w)^2 - 3 q d M2
//   M2 += d^2 W w/(W+w)
//   m   = a m + q x
//
// each from the lower sums as they stood before. The mean is carried as the sum T =
// W m, which takes the multiplication out of the chain from one observation to the
// next: W' m' = W m + w x.
#pragma once

#include "stats/observations.h"

namespace kef::stats {

// What an observation contributes, the same for all variables; index = observation.
struct Coefficients {
    double inverse[short_tile + 4];  // 1/W before it, 0 for W = 0
    double c2[short_tile + 4];       // W w/(W+w)
    double c3[short_tile + 4];       // W w (W-w)/(W+w)^2
    double c4[short_tile + 4];       // W w (W^2 - W w + w^2)/(W+w)^3
    double q3[short_tile + 4];       // 3 q
    double q4[short_tile + 4];       // 4 q
    double q6[short_tile + 4];       // 6 q^2
};

// Puts down what two observations from j on contribute, of weights w after the weights
// `before`, r = 1/(before + w). Written with a and q, nothing overflows.
template <bool higher>
inline void put_coefficients(Coefficients& c, int j, d2 before, d2 r, d2 q, d2 c2) {
    vm::store(c.inverse + j + 1, r);
    vm::store(c.c2 + j, c2);
    if constexpr (higher) {
        const d2 a = before * r;
        vm::store(c.c3 + j, c2 * (a - q));
        vm::store(c.c4 + j, c2 * (a * a - a * q + q * q));
        vm::store(c.q3 + j, 3.0 * q);
        vm::store(c.q4 + j, 4.0 * q);
        vm::store(c.q6 + j, 6.0 * (q * q));
    }
}

// Fills the table for the n observations after weight W; `higher`: c3 and further
// on, too. Returns the weight after them.
template <bool higher>
inline double fill_weighted(Coefficients& c, double W, const double* w, int n) {
    d2 before = {W, W + w[0]};
    for (int j = 0; j < n; j += 2) {
        const d2 weight = vm::load_as<d2>(w + j), after = before + weight, r = 1.0 / after;
        put_coefficients<higher>(c, j, before, r, weight * r, before * r * weight);
        before = d2{after[1], after[1] + w[j + 2]};
    }
    for (int j = 0; j < n; ++j) W += w[j];
    return W;
}

// All weights are 1. One division serves four observations: 1/u = v/(u v).
template <bool higher> inline double fill_unweighted(Coefficients& c, double W, int n) {
    d2 before = {W, W + 1};
    for (int j = 0; j < n; j += 4) {
        const d2 u = before + 1.0, between = before + 2.0, v = before + 3.0;
        const d2 inverse = 1.0 / (u * v), r = v * inverse, s = u * inverse;
        put_coefficients<higher>(c, j, before, r, r, before * r);
        put_coefficients<higher>(c, j + 2, between, s, s, between * s);
        before += 4.0;
    }
    return W + n;
}

inline double fill_coefficients(Coefficients& c, double W, const double* w, int n, bool higher) {
    c.inverse[0] = W != 0 ? 1 / W : 0;
    if (w != nullptr)
        return higher ? fill_weighted<true>(c, W, w, n) : fill_weighted<false>(c, W, w, n);
    return higher ? fill_unweighted<true>(c, W, n) : fill_unweighted<false>(c, W, n);
}

// The accumulators that one pair of variables carries through a tile.
struct CentralSums {
    d2 m2{}, m3{}, m4{};
};

namespace detail {

template <bool higher, bool weighted, bool products, class Source>
inline d2 recurrence(const Source& x, const Coefficients& c, const double* w, int n, d2 r, d2 T,
                     CentralSums& sums, d2* deviation, d2* scaled) {
    CentralSums s = sums;
    for (int j = 0; j < n; ++j) {
        const d2 y = x.one(j) - r;
        const d2 d = y - T * duplicate(c.inverse + j);
        if constexpr (weighted) T += y * duplicate(w + j);
        else T += y;
        const d2 c2 = duplicate(c.c2 + j);
        const d2 dd = d * d;
        if constexpr (higher) {
            s.m4 += dd * (dd * duplicate(c.c4 + j) + duplicate(c.q6 + j) * s.m2) -
                    d * duplicate(c.q4 + j) * s.m3;
            s.m3 += d * (dd * duplicate(c.c3 + j) - duplicate(c.q3 + j) * s.m2);
        }
        s.m2 += dd * c2;
        if constexpr (products) deviation[j] = d, scaled[j] = d * c2;
    }
    sums = s;
    return T;
}

// A variable alone, up to the second central sum: two observations at a time. In the
// second lane the mean takes in the first lane's observation.
template <bool weighted, class T, bool aligned>
inline d2 recurrence(const LoneRow<T, aligned>& x, const Coefficients& c, const double* w, int n,
                     d2 r, d2 total, CentralSums& sums) {
    d2 m2{};
    int j = 0;
    for (; j <= n - 2; j += 2) {
        const d2 y = x.neighbours(j) - r, wy = weighted ? y * vm::load_as<d2>(w + j) : y;
        const d2 before = total + __builtin_shufflevector(d2{}, wy, 0, 2);
        const d2 d = y - before * vm::load_as<d2>(c.inverse + j);
        m2 += d * d * vm::load_as<d2>(c.c2 + j);
        total += wy + swapped(wy);
    }
    sums.m2 += m2 + swapped(m2);
    for (; j < n; ++j) {
        const d2 y = x.one(j) - r, d = y - total * duplicate(c.inverse + j);
        sums.m2 += d * d * duplicate(c.c2 + j);
        total += weighted ? y * duplicate(w + j) : y;
    }
    return total;
}

}  // namespace detail

// Updates the central sums (third and fourth when `higher`) and returns T, both
// relative to r. `w` is null for data without weights. With `deviation` not null the
// d and d W w/(W+w) of every observation are left in the two arrays.
template <class Source>
[[gnu::noinline]] d2 recurrence(bool higher, const Source& x, const Coefficients& c,
                                const double* w, int n, d2 r, d2 T, CentralSums& sums,
                                d2* deviation, d2* scaled) {
    const auto run = [&](auto high, auto weights) {
        return deviation != nullptr ? detail::recurrence<high, weights, true>(
                                          x, c, w, n, r, T, sums, deviation, scaled)
                                    : detail::recurrence<high, weights, false>(
                                          x, c, w, n, r, T, sums, deviation, scaled);
    };
    constexpr std::true_type yes;
    constexpr std::false_type no;
    if (higher) return w != nullptr ? run(yes, yes) : run(yes, no);
    return w != nullptr ? run(no, yes) : run(no, no);
}

template <class T, bool aligned>
[[gnu::noinline]] d2 recurrence(const LoneRow<T, aligned>& x, const Coefficients& c,
                                const double* w, int n, d2 r, d2 total, CentralSums& sums) {
    return w != nullptr ? detail::recurrence<true>(x, c, w, n, r, total, sums)
                        : detail::recurrence<false>(x, c, w, n, r, total, sums);
}

}  // namespace kef::stats
