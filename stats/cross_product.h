// Sums of products of all pairs of variables over a tile: what a triangle of a
// matrix product needs, from columns of two variables each.
#pragma once

#include <algorithm>

#include "stats/observations.h"

namespace kef::stats {

// One 2 by 2 block, for the pairs a >= b of variables: straight = (a0 b0, a1 b1),
// crossed = (a0 b1, a1 b0); in each block of a vector that of other observations.
template <class V> struct Products {
    V straight{}, crossed{};

    void add(V a, V b, V b_swapped) {
        straight = vm::multiply_add(a, b, straight);
        crossed = vm::multiply_add(a, b_swapped, crossed);
    }
};
struct ProductBlock : Products<d2> {
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

// As many accumulators as there are registers for: of 2 by `across` pairs.
inline constexpr int across = blocks > 1 ? 2 : 1;
using ProductBlocks = ProductBlock[2][across];

// The blocks of the pairs y with the pairs z, of n observations; out of line, so that the
// accumulators stay in registers.
[[gnu::noinline]] inline void product_blocks(const d2* const (&y)[2], const d2* const (&z)[across],
                                             int n, ProductBlocks& result) {
    const auto at = [](const d2* x) { return vm::load(reinterpret_cast<const double*>(x)); };
    Products<doubles> sum[2][across];
    for (int j = 0; j < n; j += blocks)
#pragma GCC unroll 2
        for (int b = 0; b < across; ++b) {
            const doubles other = at(z[b] + j), other_swapped = swapped(other);
#pragma GCC unroll 2
            for (int a = 0; a < 2; ++a) sum[a][b].add(at(y[a] + j), other, other_swapped);
        }
    const auto plus = [](auto x, auto y) { return x + y; };
#pragma GCC unroll 2
    for (int a = 0; a < 2; ++a)
#pragma GCC unroll 2
        for (int b = 0; b < across; ++b) {
            result[a][b].straight = vm::over_blocks(sum[a][b].straight, plus);
            result[a][b].crossed = vm::over_blocks(sum[a][b].crossed, plus);
        }
}

// Calls finish(a, b, block) for all a >= b, block = sum over j of y_a[j] z_b[j]. The pair k has its
// n vectors at y + k*column and z + k*column; the rest of a group of `blocks` is overwritten.
template <class Finish>
inline void cross_products(d2* y, d2* z, std::ptrdiff_t pairs, int n, Finish finish) {
    for (std::ptrdiff_t k = 0; k < pairs; ++k)
        for (int j = n; j % blocks != 0; ++j) y[k * column + j] = z[k * column + j] = d2{};
    const auto last = [&](std::ptrdiff_t k) { return std::min(k, pairs - 1) * column; };
    for (std::ptrdiff_t a = 0; a < pairs; a += 2)
        for (std::ptrdiff_t b = 0; b < pairs && b <= a + 1; b += across) {
            const d2* const left[] = {y + last(b <= a ? a : a + 1), y + last(a + 1)};
            const d2* right[across];
            for (int k = 0; k < across; ++k) right[k] = z + last(b + k);
            ProductBlocks sum;
            product_blocks(left, right, n, sum);
            for (int i = 0; i < 2; ++i)
                for (int k = 0; k < across; ++k)
                    if (a + i < pairs && b + k <= a + i) finish(a + i, b + k, sum[i][k]);
        }
}

}  // namespace kef::stats
