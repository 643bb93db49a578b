// r <- T r in place for many vectors r of one dimension d, one after another; T is lower
// triangular, its entries come from entry(i, j), j <= i. A vector's result does not depend on how
// many others there are.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "vm/simd/blocks.h"

namespace kef::dist::triangular {

using vm::lanes;
using vm::multiply_add;

// --- small: the matrix in one array, the result of a vector in registers
// --------------------------

inline constexpr int small = 10;
inline constexpr int small_stride = vm::blocks == 1 ? 12 : 16;  // rows of a column, whole vectors

template <class T, int d> void multiply_small(std::ptrdiff_t n, T* r, const T* columns) {
    using V = vm::Vector<T>;
    constexpr int groups = (d + lanes<T> - 1) / lanes<T>, rest = d - (groups - 1) * lanes<T>;
    for (; n > 0; --n, r += d) {
        V y[groups] = {};
#pragma GCC unroll 10
        for (int j = 0; j < d; ++j) {
            const V z = vm::all(r[j]);
#pragma GCC unroll 5
            for (int g = j / lanes<T>; g < groups; ++g)
                y[g] = multiply_add(vm::load(columns + j * small_stride + g * lanes<T>), z, y[g]);
        }
#pragma GCC unroll 5
        for (int g = 0; g < groups - 1; ++g) vm::store(r + g * lanes<T>, y[g]);
        std::memcpy(r + (groups - 1) * lanes<T>, &y[groups - 1], rest * sizeof(T));
    }
}

template <class T, class Entry>
void multiply_small(std::int32_t d, std::ptrdiff_t n, T* r, Entry entry) {
    alignas(16) T columns[small * small_stride] = {};
    for (int j = 0; j < d; ++j)
        for (int i = j; i < d; ++i) columns[j * small_stride + i] = entry(i, j);
    constexpr auto of_dimension = []<std::size_t... D>(std::index_sequence<D...>) {
        return std::array<void (*)(std::ptrdiff_t, T*, const T*), small>{
            multiply_small<T, D + 1>...};
    }
    (std::make_index_sequence<small>());
    of_dimension[d - 1](n, r, columns);
}

// --- general: tiles of the matrix over two vectors at a time
// ---------------------------------------

inline constexpr int tile = 32;
template <class T> inline constexpr int strip = 2 * lanes<T>;  // rows of a strip

// A tile as strips of rows, each by columns; what is outside the triangle is zero.
template <class T, class Entry>
void pack(T* packed, std::int32_t row, std::int32_t rows, std::int32_t column, std::int32_t columns,
          Entry entry) {
    for (std::int32_t s = 0; s < rows; s += strip<T>)
        for (std::int32_t j = column; j < column + columns; ++j)
            for (std::int32_t i = row + s; i < row + s + strip<T>; ++i)
                *packed++ = i < row + rows && j <= i ? entry(i, j) : T(0);
}

// r_v += (or =) strip z_v over `columns` columns, for vectors v a distance apart.
template <class T, int vectors, bool add>
void multiply_strip(const T* packed, std::int32_t columns, const T* z, T* r,
                    std::ptrdiff_t distance) {
    using V = vm::Vector<T>;
    V low[vectors], high[vectors];
    for (int v = 0; v < vectors; ++v) {
        low[v] = add ? vm::load(r + v * distance) : V{};
        high[v] = add ? vm::load(r + v * distance + lanes<T>) : V{};
    }
    for (std::int32_t j = 0; j < columns; ++j, packed += strip<T>) {
        const V t = vm::load(packed), u = vm::load(packed + lanes<T>);
        for (int v = 0; v < vectors; ++v) {
            const V factor = vm::all(z[v * distance + j]);
            low[v] = multiply_add(t, factor, low[v]);
            high[v] = multiply_add(u, factor, high[v]);
        }
    }
    for (int v = 0; v < vectors; ++v) {
        vm::store(r + v * distance, low[v]);
        vm::store(r + v * distance + lanes<T>, high[v]);
    }
}

// The last strip of the matrix may have fewer rows than the formula.
template <class T, int vectors, bool add>
void multiply_strip(std::int32_t rows, const T* packed, std::int32_t columns, const T* z, T* r,
                    std::ptrdiff_t distance) {
    if (rows >= strip<T>) {
        multiply_strip<T, vectors, add>(packed, columns, z, r, distance);
        return;
    }
    for (int v = 0; v < vectors; ++v) {
        T part[strip<T>] = {};
        std::copy_n(r + v * distance, rows, part);
        multiply_strip<T, 1, add>(packed, columns, z + v * distance, part, 0);
        std::copy_n(part, rows, r + v * distance);
    }
}

// One tile over all vectors. On the diagonal (add = false, z = r) a strip reads what it and the
// strips above it hold, so the last one goes first.
template <class T, bool add>
void multiply_tile(const T* packed, std::int32_t rows, std::int32_t columns, std::ptrdiff_t n,
                   const T* z, T* r, std::ptrdiff_t d) {
    const std::int32_t last = (rows - 1) / strip<T> * strip<T>;
    for (; n > 0; n -= 2, z += 2 * d, r += 2 * d)
        for (std::int32_t s = last; s >= 0; s -= strip<T>) {
            const std::int32_t used = add ? columns : std::min(s + strip<T>, columns);
            const T* const p = packed + s * columns;
            if (n > 1) multiply_strip<T, 2, add>(rows - s, p, used, z, r + s, d);
            else multiply_strip<T, 1, add>(rows - s, p, used, z, r + s, d);
        }
}

template <class T, class Entry>
void multiply_general(std::int32_t d, std::ptrdiff_t n, T* r, Entry entry) {
    alignas(16) T packed[tile * tile];
    for (std::int32_t i = (d - 1) / tile * tile; i >= 0; i -= tile) {
        const std::int32_t rows = std::min(tile, d - i);
        pack(packed, i, rows, i, rows, entry);
        multiply_tile<T, false>(packed, rows, rows, n, r + i, r + i, d);
        for (std::int32_t j = 0; j < i; j += tile) {
            pack(packed, i, rows, j, tile, entry);
            multiply_tile<T, true>(packed, rows, tile, n, r + j, r + i, d);
        }
    }
}

template <class T, class Entry> void multiply(std::int32_t d, std::ptrdiff_t n, T* r, Entry entry) {
    if (d <= small) multiply_small(d, n, r, entry);
    else multiply_general(d, n, r, entry);
}

}  // namespace kef::dist::triangular
