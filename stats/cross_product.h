// Sums of products of all pairs of variables over a tile: what a triangle of a
// matrix product needs, from columns of two variables each.
#pragma once

#include "stats/observations.h"

namespace kef::stats {

// One 2 by 2 block, for the pairs a >= b of variables: straight = (a0 b0, a1 b1),
// crossed = (a0 b1, a1 b0).
struct ProductBlock {
    d2 straight{}, crossed{};

    void add(d2 a, d2 b, d2 b_swapped) {
        straight += a * b;
        crossed += a * b_swapped;
    }
    // The element of variables i = 2a or 2a+1, j = 2b or 2b+1.
    double get(std::ptrdiff_t i, std::ptrdiff_t j) const {
        return ((i ^ j) & 1) ? crossed[i & 1] : straight[i & 1];
    }
    void set(std::ptrdiff_t i, std::ptrdiff_t j, double value) {
        (((i ^ j) & 1) ? crossed : straight)[i & 1] = value;
    }
};

// The place of block (a, b), a >= b, in a packed triangle.
inline std::ptrdiff_t block_index(std::ptrdiff_t a, std::ptrdiff_t b) {
    return a * (a + 1) / 2 + b;
}

// The blocks of the pairs y0 and y1 with the pair z: as many accumulators as there are
// registers for; out of line, so that they stay there.
[[gnu::noinline]] inline void two_blocks(const d2* y0, const d2* y1, const d2* z, int n,
                                         ProductBlock& block0, ProductBlock& block1) {
    ProductBlock sum0, sum1;
    for (int j = 0; j < n; ++j) {
        const d2 b = z[j], b_swapped = swapped(b);
        sum0.add(y0[j], b, b_swapped);
        sum1.add(y1[j], b, b_swapped);
    }
    block0 = sum0;
    block1 = sum1;
}

// Calls finish(a, b, block) for all a >= b, block = sum over j of y_a[j] z_b[j]. The
// pair k has its n vectors at y + k*column and z + k*column.
template <class Finish>
inline void cross_products(const d2* y, const d2* z, std::ptrdiff_t pairs, int n, Finish finish) {
    for (std::ptrdiff_t a = 0; a < pairs; a += 2) {
        const bool last = a + 1 == pairs;
        const d2 *y0 = y + a * column, *y1 = last ? y0 : y0 + column;
        ProductBlock first, second;
        for (std::ptrdiff_t b = 0; b <= a; ++b) {
            two_blocks(y0, y1, z + b * column, n, first, second);
            finish(a, b, first);
            if (!last) finish(a + 1, b, second);
        }
        if (last) break;
        two_blocks(y1, y1, z + (a + 1) * column, n, first, second);
        finish(a + 1, a + 1, first);
    }
}

}  // namespace kef::stats
