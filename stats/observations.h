// How the kernels read x: always a pair of variables at a time, as vectors of two
// doubles, whatever the storage, the precision and the alignment are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "vm/simd/blocks.h"

namespace kef::stats {

using vm::all;
using vm::blocks;
using vm::both;
using vm::d2;
using vm::doubles;
using vm::l2;

// The most observations that one pass over a pair of variables covers.
inline constexpr int tile = 4096;
// The same where coefficients or deviations of the observations are kept: what a
// pass reads stays in the first-level cache.
inline constexpr int short_tile = 256;
// From one pair's deviations to the next one's; not a power of two, for the cache.
inline constexpr std::ptrdiff_t column = short_tile + 4;

// Observations that far apart share no cache line with the next ones (64 bytes of doubles).
constexpr bool is_far(std::ptrdiff_t stride) { return stride > 8; }
// The size of a tile where sums alone are kept.
constexpr int sums_tile(std::ptrdiff_t stride) { return is_far(stride) ? short_tile : tile; }

// Calls f(first, count) for one tile after the other of the observations [first, end).
template <class F>
inline void for_each_tile(std::ptrdiff_t first, std::ptrdiff_t end, int size, F f) {
    for (; first < end; first += size)
        f(first, static_cast<int>(end - first < size ? end - first : size));
}

// The same number in both lanes, from memory; the lanes exchanged, in every block.
inline d2 duplicate(const double* x) { return (d2)_mm_loaddup_pd(x); }
template <class V> inline V swapped(V x) { return vm::in_blocks<1, 0>(x, x); }
// Each of the numbers from x on in both lanes of a block.
inline doubles duplicates(const double* x) {
    return vm::of_blocks([&](int k) { return (__m128d)duplicate(x + k); });
}

// Two neighbours in memory.
template <bool aligned> inline d2 two(const double* x) {
    if constexpr (aligned) return (d2)_mm_load_pd(x);
    else return (d2)_mm_loadu_pd(x);
}
template <bool aligned> inline d2 two(const float* x) {
    return (d2)_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(x))));
}
// As many as fill a vector; `aligned` to 16 bytes, which says nothing of a wider one.
template <bool aligned> inline doubles several(const double* x) {
    if constexpr (aligned && blocks == 1) return (doubles)two<true>(x);
    else return vm::load(x);
}
template <bool aligned> inline doubles several(const float* x) { return vm::load_widened(x); }

// x as p variables by n observations.
template <class T> struct Observations {
    const T* x;
    std::ptrdiff_t variable_step, stride;  // to the next variable, to the next observation

    const T* at(std::ptrdiff_t variable, std::ptrdiff_t observation) const {
        return x + variable * variable_step + observation * stride;
    }
};

// Two adjacent members of the list of processed variables; an odd last one comes as
// a pair with itself, and the second lane is not used.
struct Pair {
    std::ptrdiff_t first, second;
    bool alone() const { return first == second; }
};

// A source gives, besides one(j), the observation j of the pair,
//   u(j), v(j)      what the next `width` observations hold, in two vectors
//   fold(u, v, op)  an operation, all over the lanes of those vectors that belong to
//                   the same variable, as a vector of the pair
//   shift_u, shift_v(r), weight_u, weight_v(w, j)   values that fit the lanes of u, v
// so that sums run over whole vectors in every storage. `half` tells whether u alone
// is a step, too, of width/2 observations.

// Blocks are observations, their lanes the pair's variables; a lone variable stands in both lanes.
template <class Source> struct BlocksAreObservations {
    static constexpr int width = 2 * blocks;
    static constexpr bool half = true;
    d2 one(int j) const { return own().at(j * own().stride); }
    doubles u(int j) const {
        return vm::of_blocks([&](int k) { return (__m128d)one(j + k); });
    }
    doubles v(int j) const { return u(j + blocks); }
    template <class Op> static d2 fold(doubles u, doubles v, Op op) {
        return vm::over_blocks(op(u, v), op);
    }
    static doubles shift_u(d2 r) { return vm::in_all_blocks(r); }
    static doubles shift_v(d2 r) { return vm::in_all_blocks(r); }
    static doubles weight_u(const double* w, int j) { return duplicates(w + j); }
    static doubles weight_v(const double* w, int j) { return duplicates(w + j + blocks); }

private:
    const Source& own() const { return static_cast<const Source&>(*this); }
};

template <class T, bool aligned> struct ColumnPair : BlocksAreObservations<ColumnPair<T, aligned>> {
    const T* x;
    std::ptrdiff_t stride;
    ColumnPair(const T* x, std::ptrdiff_t stride) : x(x), stride(stride) {}
    d2 at(std::ptrdiff_t offset) const { return two<aligned>(x + offset); }
};

template <class T> struct SplitPair : BlocksAreObservations<SplitPair<T>> {
    const T *x, *y;
    std::ptrdiff_t stride;
    SplitPair(const T* x, const T* y, std::ptrdiff_t stride) : x(x), y(y), stride(stride) {}
    d2 at(std::ptrdiff_t offset) const {
        return d2{static_cast<double>(x[offset]), static_cast<double>(y[offset])};
    }
};

// Lanes are consecutive observations: u of the first variable, v of the second.
template <class T, bool aligned> struct RowPair {
    static constexpr int width = vm::lanes<double>;
    static constexpr bool half = false;
    const T *x, *y;
    d2 one(int j) const { return d2{static_cast<double>(x[j]), static_cast<double>(y[j])}; }
    doubles u(int j) const { return several<aligned>(x + j); }
    doubles v(int j) const { return several<aligned>(y + j); }
    template <class Op> static d2 fold(doubles u, doubles v, Op op) {
        return vm::over_blocks(op(vm::in_blocks<0, 2>(u, v), vm::in_blocks<1, 3>(u, v)), op);
    }
    static doubles shift_u(d2 r) { return all(r[0]); }
    static doubles shift_v(d2 r) { return all(r[1]); }
    static doubles weight_u(const double* w, int j) { return vm::load(w + j); }
    static doubles weight_v(const double* w, int j) { return vm::load(w + j); }
};

// Lanes are consecutive observations of one contiguous variable: whatever a kernel takes of it
// (r, T) stands in both lanes.
template <class T, bool aligned> struct LoneRow {
    static constexpr int lanes = vm::lanes<double>, width = 2 * lanes;
    static constexpr bool half = true;
    const T* x;
    d2 one(int j) const { return both(static_cast<double>(x[j])); }
    d2 neighbours(int j) const { return two<aligned>(x + j); }
    doubles u(int j) const { return several<aligned>(x + j); }
    doubles v(int j) const { return several<aligned>(x + j + lanes); }
    template <class Op> static d2 fold(doubles u, doubles v, Op op) {
        const d2 two = vm::over_blocks(op(u, v), op);
        return op(two, swapped(two));
    }
    static doubles shift_u(d2 r) { return vm::in_all_blocks(r); }
    static doubles shift_v(d2 r) { return vm::in_all_blocks(r); }
    static doubles weight_u(const double* w, int j) { return vm::load(w + j); }
    static doubles weight_v(const double* w, int j) { return vm::load(w + j + lanes); }
};

// Kernels exist in two copies, by whether all the vectors that they load from the
// caller's arrays are aligned; what they write is private and always is. Loads of
// two floats need no alignment, nor do those of processors with wider vectors: one copy.
template <class T, class F> inline void by_alignment(std::uintptr_t addresses, F f) {
    if constexpr (std::is_same_v<T, double> && blocks == 1)
        if (addresses % 16 == 0) return f(std::true_type());
    f(std::false_type());
}

// Calls f with the source of the pair from observation j on, observation after
// observation.
template <class T, class F>
inline void with_pair(const Observations<T>& o, Pair pair, std::ptrdiff_t j, F f) {
    const T *x = o.at(pair.first, j), *y = o.at(pair.second, j);
    if (y != x + 1 || o.stride == 1) return f(SplitPair<T>(x, y, o.stride));
    by_alignment<T>(reinterpret_cast<std::uintptr_t>(x) | o.stride * sizeof(T),
                    [&](auto aligned) { f(ColumnPair<T, aligned>(x, o.stride)); });
}

// The same of a lone contiguous variable.
template <class T, class F>
inline void with_lone_row(const Observations<T>& o, Pair pair, std::ptrdiff_t j, F f) {
    const T* x = o.at(pair.first, j);
    by_alignment<T>(reinterpret_cast<std::uintptr_t>(x),
                    [&](auto aligned) { f(LoneRow<T, aligned>{x}); });
}

// The same for sums, where the order of the observations is free.
template <class T, class F>
inline void with_vectors(const Observations<T>& o, Pair pair, std::ptrdiff_t j, F f) {
    if (o.stride != 1) return with_pair(o, pair, j, f);
    if (pair.alone()) return with_lone_row(o, pair, j, f);
    const T *x = o.at(pair.first, j), *y = o.at(pair.second, j);
    by_alignment<T>(reinterpret_cast<std::uintptr_t>(x) | reinterpret_cast<std::uintptr_t>(y),
                    [&](auto aligned) {
                        f(RowPair<T, aligned>{x, y});
                    });
}

}  // namespace kef::stats
