// Locating a block of sites by one of the searches.
//
// The result is the number of breakpoints that do not exceed the site, except that a
// site at the last breakpoint counts as inside: 0 left of the partition and for NaN,
// cell number + 1 inside, nx right of it. Inside the library it is the cell number
// 0 .. nx-2, the end cells standing for what is outside.
//
// A search is an object s with s(q, n, at): for n sites inside the partition, the
// breakpoint before each, at most nx-2. It is handed whole groups of sites, and writes as
// many. A search that `proposes` relies on what it does not know (breakpoints are
// uniform, the table is up to date, a caller's function is right); locate() checks its
// answers, which have to lie in 0 .. nx-2 all the same.
#pragma once

#include <algorithm>

#include "fit/cells/bisection.h"
#include "vm/simd/simd.h"

namespace kef::fit {

// Sites are located, and then evaluated, in blocks of this size. Arrays of a block are
// read and written in whole groups, which are whole vectors of both types.
inline constexpr std::uint32_t block_size = 256;
inline constexpr std::uint32_t group = 4;
template <class T> inline constexpr std::uint32_t lanes = sizeof(vm::Vector<T>) / sizeof(T);
static_assert(block_size % group == 0 && group % lanes<double> == 0 && group % lanes<float> == 0);

inline std::uint32_t whole_groups(std::uint32_t n) { return (n + group - 1) / group * group; }

inline vm::d2 select(vm::i4 mask, vm::d2 a, vm::d2 b) { return vm::select((vm::l2)mask, a, b); }
inline vm::f4 select(vm::i4 mask, vm::f4 a, vm::f4 b) { return vm::select(mask, a, b); }

// Copies a block of sites, with a harmless one in place of each that is not inside
// and behind the last; true if all are inside.
template <class T>
[[gnu::always_inline]] inline bool copy_inside(const Partition<T>& p, const T* q, std::uint32_t n,
                                               T* to) {
    using V = vm::Vector<T>;
    const V first = vm::all(p.first), last = vm::all(p.last);
    vm::i4 all = vm::all(-1);
    std::uint32_t j = 0;
    for (; j + lanes<T> <= n; j += lanes<T>) {
        const V v = vm::load(q + j);
        const vm::i4 inside = (vm::i4)(v >= first) & (vm::i4)(v < last);
        all &= inside;
        vm::store(to + j, select(inside, v, first));
    }
    bool rest = true;
    for (; j < whole_groups(n); ++j) {
        const bool inside = j < n && p.inside(q[j]);
        rest &= inside || j >= n;
        to[j] = inside ? q[j] : p.first;
    }
    return rest && !vm::any_lane(~all);
}

// For the sites of one vector: does the breakpoint found and the next bracket it?
// A pair of breakpoints a site is loaded, then the lower and the upper ones are gathered.
inline vm::i4 brackets(const double* x, const std::uint32_t* at, vm::d2 q) {
    const vm::d2 a = vm::load(x + at[0]), b = vm::load(x + at[1]);
    return (vm::i4)(__builtin_shufflevector(a, b, 0, 2) <= q) &
           (vm::i4)(q < __builtin_shufflevector(a, b, 1, 3));
}
inline vm::i4 brackets(const float* x, const std::uint32_t* at, vm::f4 q) {
    const auto pairs = [&](int k) {
        const __m128 low = _mm_loadl_pi(_mm_setzero_ps(), (const __m64*)(x + at[k]));
        return (vm::f4)_mm_loadh_pi(low, (const __m64*)(x + at[k + 1]));
    };
    const vm::f4 a = pairs(0), b = pairs(2);
    return (__builtin_shufflevector(a, b, 0, 2, 4, 6) <= q) &
           (q < __builtin_shufflevector(a, b, 1, 3, 5, 7));
}

// Bisects where a proposed breakpoint and the next one do not bracket the site; s and
// cell are whole groups.
template <class T>
[[gnu::always_inline]] inline void correct(const Partition<T>& p, const T* s, std::uint32_t padded,
                                           std::uint32_t* cell) {
    vm::i4 all = vm::all(-1);
    for (std::uint32_t j = 0; j < padded; j += lanes<T>)
        all &= brackets(p.x, cell + j, vm::load(s + j));
    if (vm::any_lane(~all)) [[unlikely]] {
        const Bisection<T> bisection(p);
        for (std::uint32_t j = 0; j < padded; ++j)
            if (!p.holds(cell[j], s[j])) cell[j] = bisection.one(s[j]);
    }
}

// The cells 0 .. nx-2 of n <= block_size sites; `cell` has room for a block. True if all
// sites are inside.
template <class T, class Search>
bool locate(const Partition<T>& p, Search& search, const T* q, std::uint32_t n,
            std::uint32_t* cell) {
    alignas(16) T s[block_size];
    const std::uint32_t padded = whole_groups(n);
    bool all_inside = false;
    if (p.first < p.last) {
        all_inside = copy_inside(p, q, n, s);
        search(s, padded, cell);
        if constexpr (Search::proposes) correct(p, s, padded, cell);
    } else {  // not ascending: no site is inside
        std::fill_n(cell, padded, 0);
    }
    if (!all_inside) [[unlikely]]
        for (std::uint32_t j = 0; j < n; ++j)
            if (!p.inside(q[j])) cell[j] = q[j] >= p.last ? p.n - 2 : 0;
    return all_inside;
}

// Cells as the search entries give them.
template <class T, class Int>
void store_counts(const Partition<T>& p, const T* q, const std::uint32_t* cell, std::uint32_t n,
                  bool all_inside, Int* count) {
    for (std::uint32_t j = 0; j < n; ++j) count[j] = static_cast<Int>(cell[j] + 1);
    if (!all_inside) [[unlikely]]
        for (std::uint32_t j = 0; j < n; ++j)
            if (!p.inside(q[j])) count[j] = static_cast<Int>(p.outside(q[j]));
}

}  // namespace kef::fit
