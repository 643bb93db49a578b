// Joining the accumulators of two sets of observations: a pairwise merge (Chan, Golub &
// LeVeque 1983; Pebay 2008).
#pragma once

#include <algorithm>

#include "stats/accumulators.h"

namespace kef::stats {

// Lanes that hold finite numbers.
inline l2 finite(d2 x) { return (l2)(x - x == 0.0); }

// high + low = a + b exactly (Knuth); an infinite sum has no low part.
inline void two_sum(d2 a, d2 b, d2& high, d2& low) {
    const d2 sum = a + b, shadow = sum - a;
    high = sum;
    low = vm::select(finite(sum), (a - (sum - shadow)) + (b - shadow), d2{});
}

// The factors of a merge of weights Wa and Wb, the same for all variables; W = Wa + Wb.
struct MergeFactors {
    double a, q;        // Wa/W, Wb/W
    double c2, c3, c4;  // of the powers of the distance of the means
    MergeFactors(double Wa, double Wb) : a(Wa / (Wa + Wb)), q(Wb / (Wa + Wb)) {
        c2 = Wb * a;
        c3 = c2 * (a - q);
        c4 = c2 * (a * a - a * q + q * q);
    }
};

// Joins observations with the mean high + low and the central sums B, those up to `order`, to
// the accumulators s. Returns the distance of the two means.
inline d2 merge(PairSums& s, int order, d2 high, d2 low, const CentralSums& B,
                const MergeFactors& f) {
    const double a = f.a, q = f.q;
    const d2 delta = (high - s.mean_high) + (low - s.mean_low), square = delta * delta;
    CentralSums& M = s.central;
    if (order >= 3) {
        M.m4 += B.m4 + square * square * f.c4 + 6.0 * square * (a * a * B.m2 + q * q * M.m2) +
                4.0 * delta * (a * B.m3 - q * M.m3);
        M.m3 += B.m3 + square * delta * f.c3 + 3.0 * delta * (a * B.m2 - q * M.m2);
    }
    if (order >= 2) M.m2 += B.m2 + square * f.c2;
    // From an infinite mean, delta would lead to NaN.
    const d2 step = vm::select(finite(s.mean_high), delta, high + low);
    two_sum(s.mean_high, s.mean_low + step * q, s.mean_high, s.mean_low);
    return delta;
}

// The same for the products of two pairs of variables, from the distances of their means.
inline void merge(ProductBlock& C, const ProductBlock& B, d2 distance, d2 other, double c2) {
    C.straight += B.straight + distance * c2 * other;
    C.crossed += B.crossed + distance * c2 * swapped(other);
}

// Joins what B holds to A, accumulated for the same variables by the same plan.
inline void merge(Accumulators& A, const Accumulators& B) {
    const std::ptrdiff_t blocks = A.plan.products ? block_index(A.pairs, 0) : 0;
    if (!A.started) {
        std::copy_n(B.sums, A.pairs, A.sums);
        std::copy_n(B.products, blocks, A.products);
    } else {
        const MergeFactors factors(A.W, B.W);
        for (std::ptrdiff_t i = 0; i < A.pairs; ++i) {
            PairSums& s = A.sums[i];
            const PairSums& t = B.sums[i];
            for (int k = 0; k < A.plan.raw; ++k) {
                const d2 low = s.raw_low[k] + t.raw_low[k];
                d2 high, rest;
                two_sum(s.raw_high[k], t.raw_high[k], high, rest);
                two_sum(high, low + rest, s.raw_high[k], s.raw_low[k]);
            }
            if (A.plan.central == 0) continue;
            const d2 distance =
                merge(s, A.plan.central, t.mean_high, t.mean_low, t.central, factors);
            if (A.plan.products) A.tile_distance[i] = distance;
        }
        if (A.plan.products)
            for (std::ptrdiff_t a = 0; a < A.pairs; ++a)
                for (std::ptrdiff_t b = 0; b <= a; ++b)
                    merge(A.products[block_index(a, b)], B.products[block_index(a, b)],
                          A.tile_distance[a], A.tile_distance[b], factors.c2);
    }
    A.W += B.W;
    A.W2 += B.W2;
    A.positive_weights &= B.positive_weights;
    A.started = true;
}

}  // namespace kef::stats
