// Cell search: which breakpoints a site stands between.
//
// All methods give the number of breakpoints that do not exceed the site, except
// that a site at the last breakpoint counts as inside: 0 left of the partition and
// for NaN, cell number + 1 inside, nx right of it.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "fit/task.h"
#include "vm/simd/simd.h"

namespace kef::fit {

// The bin of a point, truncated; INT32_MIN where that has no 32-bit value.
inline std::int32_t bin_of(double point, double first, double inverse_width) {
    return _mm_cvttsd_si32(_mm_set_sd((point - first) * inverse_width));
}

template <class T>
inline double inverse_bin_width(const T* x, std::uint32_t n, std::uint32_t bins) {
    return 1 / ((double(x[n - 1]) - double(x[0])) / bins);
}

// The breakpoints of a task, with what every search needs of them.
template <class T> struct Partition {
    const T* x;
    std::uint32_t n;
    T first, last;

    explicit Partition(const Task& task)
        : x(static_cast<const T*>(task.x)),
          n(static_cast<std::uint32_t>(task.nx)),
          first(x[0]),
          last(x[n - 1]) {}

    // False for NaN and for the last breakpoint.
    bool inside(T q) const { return q >= first && q < last; }
    // The count for a site that is not inside.
    std::uint32_t outside(T q) const { return q > last ? n : q == last ? n - 1 : 0; }
    // True if breakpoint i and the next one bracket the site.
    bool holds(std::uint32_t i, T q) const { return x[i] <= q && q < x[i + 1]; }
};

// `next` if it does not exceed q, else `p`: a conditional move. Compilers make a
// jump of it, which half of the time is mispredicted.
inline const double* advance(const double* p, const double* next, double q) {
    asm("comisd %[value], %[q]\n\tcmovae %[next], %[p]"
        : [p] "+r"(p)
        : [next] "r"(next), [q] "x"(q), [value] "m"(*next)
        : "cc");
    return p;
}
inline const float* advance(const float* p, const float* next, float q) {
    asm("comiss %[value], %[q]\n\tcmovae %[next], %[p]"
        : [p] "+r"(p)
        : [next] "r"(next), [q] "x"(q), [value] "m"(*next)
        : "cc");
    return p;
}

// The last of the 2^steps breakpoints from `base` on that does not exceed q, where
// the first does not. Free of branches on the data, so that the searches of
// neighbouring sites overlap in the processor.
template <class T> inline const T* last_in_window(const T* p, int steps, T q) {
    for (std::size_t step = std::size_t(1) << steps >> 1; step != 0; step >>= 1) {
        const T* next = p + step;
        p = advance(p, next, q);
    }
    return p;
}

// Sites are located, and then evaluated, in blocks of this size.
inline constexpr std::uint32_t block_size = 256;
inline constexpr std::uint32_t group = 4;

// The searches. Each takes a block of sites inside the partition, padded to whole
// groups, and gives for each the breakpoint before it, at most nx-2. A search with
// `proposes` relies on what it does not know (breakpoints are uniform, the table is
// up to date, a caller's function is right); locate() checks its answers.

// Bisection over all breakpoints.
template <class T> struct Bisection {
    static constexpr bool proposes = false;
    const T* x;
    std::uint32_t upper;  // start of the window of 2^steps that ends the partition
    int steps;

    explicit Bisection(const Partition<T>& p)
        : x(p.x),
          upper(p.n - std::bit_floor(p.n)),
          steps(static_cast<int>(std::bit_width(p.n)) - 1) {}

    std::uint32_t one(T q) const {
        const T* p = x[upper] <= q ? x + upper : x;
        return static_cast<std::uint32_t>(last_in_window(p, steps, q) - x);
    }
    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        for (std::uint32_t j = 0; j < n; ++j) at[j] = one(q[j]);
    }
};

// False where the table was made for other breakpoints or for none. Other
// breakpoints between the same ends are found out by locate().
template <class T> inline bool table_is_current(const Task& task, const Partition<T>& p) {
    const auto count = static_cast<std::uint32_t>(bin_count_for(p.n));
    return task.bin_count == static_cast<std::int32_t>(count) &&
           task.bins[count - 1].high == p.n - 1 &&
           task.inverse_bin_width == inverse_bin_width(p.x, p.n, count) &&
           task.inverse_bin_width > 0 && task.inverse_bin_width < HUGE_VAL;
}

// The search table, then bisection of one bin's breakpoints.
template <class T> struct BinSearch {
    static constexpr bool proposes = true;
    const T* x;
    const Bin* bins;
    double first, inverse;
    std::int32_t last_bin;
    std::uint32_t last_base;
    int steps;

    // False also where the bins are so unequal that bisection of all breakpoints is
    // as short.
    static bool applies(const Task& task, const Partition<T>& p) {
        return table_is_current(task, p) && task.bin_steps < Bisection<T>(p).steps;
    }
    BinSearch(const Task& task, const Partition<T>& p)
        : x(p.x),
          bins(task.bins),
          first(p.first),
          inverse(task.inverse_bin_width),
          last_bin(task.bin_count - 1),
          last_base(p.n - (1u << task.bin_steps)),
          steps(task.bin_steps) {}

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        switch (steps) {  // unrolled for the usual sizes of a bin
            case 4: return search<4>(q, n, at);
            case 5: return search<5>(q, n, at);
            case 6: return search<6>(q, n, at);
            case 7: return search<7>(q, n, at);
            case 8: return search<8>(q, n, at);
            default: return search<0>(q, n, at);
        }
    }

private:
    template <int unrolled>
    [[gnu::noinline]] void search(const T* q, std::uint32_t n, std::uint32_t* at) const {
        const BinSearch b = *this;
        for (std::uint32_t j = 0; j < n; ++j) {
            const T site = q[j];
            const std::int32_t bin = std::min(bin_of(site, b.first, b.inverse), b.last_bin);
            const T* p = b.x + std::min(b.bins[bin].low, b.last_base);
            if constexpr (unrolled == 0) {
                p = last_in_window(p, b.steps, site);
            } else {
#pragma GCC unroll 8
                for (int s = unrolled - 1; s >= 0; --s) p = advance(p, p + (1 << s), site);
            }
            at[j] = static_cast<std::uint32_t>(p - b.x);
        }
    }
};

// The cell that equal distances would give.
template <class T> struct EqualDistances {
    const T* x;
    double first, inverse;
    std::int32_t last_cell;

    explicit EqualDistances(const Partition<T>& p)
        : x(p.x),
          first(p.first),
          inverse(inverse_bin_width(p.x, p.n, p.n - 1)),
          last_cell(static_cast<std::int32_t>(p.n) - 2) {}

    std::int32_t guess(T q) const { return std::clamp(bin_of(q, first, inverse), 0, last_cell); }
};

// Breakpoints at equal distances but for rounding: at most one step from the guess.
template <class T> struct UniformSearch : EqualDistances<T> {
    static constexpr bool proposes = true;
    using EqualDistances<T>::EqualDistances;

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        const EqualDistances<T> e = *this;
        for (std::uint32_t j = 0; j < n; ++j) {
            const std::int32_t i = e.guess(q[j]);
            at[j] = static_cast<std::uint32_t>(i + (q[j] >= e.x[i + 1]) - (q[j] < e.x[i]));
        }
    }
};

// Breakpoints whose distances vary little: a short walk from the guess.
template <class T> struct QuasiUniformSearch : EqualDistances<T> {
    static constexpr bool proposes = true;
    using EqualDistances<T>::EqualDistances;

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        constexpr int longest_walk = 4;
        const EqualDistances<T> e = *this;
        for (std::uint32_t j = 0; j < n; ++j) {
            std::int32_t i = e.guess(q[j]);
            for (int step = 0; step < longest_walk && q[j] >= e.x[i + 1]; ++step) ++i;
            for (int step = 0; step < longest_walk && q[j] < e.x[i]; ++step) --i;
            at[j] = static_cast<std::uint32_t>(i);
        }
    }
};

// Most breakpoints crowded in few bins: there the distribution of the bin's
// breakpoints first tells which 64 of them to bisect.
template <class T> struct PeakSearch {
    static constexpr bool proposes = true;
    const T* x;
    const Bin* bins;
    std::uint32_t n;
    double first, inverse;
    std::int32_t last_bin;
    Bisection<T> bisection;

    static bool applies(const Task& task, const Partition<T>& p) {
        return table_is_current(task, p);
    }
    PeakSearch(const Task& task, const Partition<T>& p)
        : x(p.x),
          bins(task.bins),
          n(p.n),
          first(p.first),
          inverse(task.inverse_bin_width),
          last_bin(task.bin_count - 1),
          bisection(p) {}

    void operator()(const T* q, std::uint32_t count, std::uint32_t* at) const {
        for (std::uint32_t j = 0; j < count; ++j) at[j] = one(q[j]);
    }

private:
    std::uint32_t one(T q) const {
        constexpr std::uint32_t narrow = 64;
        auto [low, high] = bins[std::min(bin_of(q, first, inverse), last_bin)];
        if (high > low + narrow && high < n) {
            const double part = (double(q) - x[low]) / (double(x[high]) - x[low]);
            const auto offset = static_cast<std::uint32_t>(
                std::clamp(_mm_cvttsd_si32(_mm_set_sd(part * (high - low))), 0,
                           static_cast<std::int32_t>(high - low)));
            const std::uint32_t middle =
                std::clamp(low + offset, low + narrow / 2, high - narrow / 2);
            if (q < x[middle - narrow / 2]) high = middle - narrow / 2;
            else if (q >= x[middle + narrow / 2]) low = middle + narrow / 2;
            else low = middle - narrow / 2, high = middle + narrow / 2;
        }
        const int steps =
            static_cast<int>(std::bit_width((high - low) | 1));  // 2^steps > high - low
        if (steps > bisection.steps) return bisection.one(q);
        const T* base = x + std::min(low, n - (1u << steps));
        return static_cast<std::uint32_t>(last_in_window(base, steps, q) - x);
    }
};

// Ascending sites, many to a cell: from cell to cell, in growing steps. Only a new
// site can stand left of the cell, and each gallop goes right: so it ends, whatever
// the breakpoints are.
template <class T> struct Walk {
    static constexpr bool proposes = false;
    const T* x;
    std::uint32_t n, cell = 0;
    Bisection<T> bisection;

    explicit Walk(const Partition<T>& p) : x(p.x), n(p.n), bisection(p) {}

    void operator()(const T* q, std::uint32_t count, std::uint32_t* at) {
        std::uint32_t j = 0;
        do {
            const T left = x[cell], right = x[cell + 1];
            while (j < count && q[j] < right && !(q[j] < left)) at[j++] = cell;
            if (j < count) cell = q[j] < left ? bisection.one(q[j]) : gallop(q[j]);
        } while (j < count);
    }

private:
    // Bentley & Yao 1976: steps 1, 2, 4, .. until the site is passed, then bisection.
    std::uint32_t gallop(T q) const {
        std::uint32_t low = cell + 1, step = 1;
        while (step < n - low && x[low + step] <= q) low += step, step *= 2;
        for (std::uint32_t length = std::min(step, n - low); length > 1;) {
            const std::uint32_t half = length / 2;
            low = x[low + half] <= q ? low + half : low;
            length -= half;
        }
        return low;
    }
};

inline vm::d2 select(vm::i4 mask, vm::d2 a, vm::d2 b) { return vm::select((vm::l2)mask, a, b); }
inline vm::f4 select(vm::i4 mask, vm::f4 a, vm::f4 b) { return vm::select(mask, a, b); }

// Copies a block of sites, with a harmless one in place of each that is not inside
// and behind the last; true if all are inside.
template <class T>
inline bool copy_inside(const Partition<T>& p, const T* q, std::uint32_t n, T* to) {
    using V = vm::Vector<T>;
    constexpr std::uint32_t lanes = sizeof(V) / sizeof(T);
    const V first = vm::all(p.first), last = vm::all(p.last);
    vm::i4 all = vm::all(-1);
    std::uint32_t j = 0;
    for (; j + lanes <= n; j += lanes) {
        const V v = vm::load(q + j);
        const vm::i4 inside = (vm::i4)(v >= first) & (vm::i4)(v < last);
        all &= inside;
        vm::store(to + j, select(inside, v, first));
    }
    bool rest = true;
    for (; j % group != 0 || j < n; ++j) {
        const bool inside = j < n && p.inside(q[j]);
        rest &= inside || j >= n;
        to[j] = inside ? q[j] : p.first;
    }
    return rest && !vm::any_lane(~all);
}

// For the sites of one vector: does the breakpoint found and the next bracket it?
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

// The cells 0 .. nx-2 of n <= block_size sites, the end cells for those outside;
// `cell` has room for a block. True if all sites are inside.
template <class T, class Search>
bool locate(const Partition<T>& p, Search& search, const T* q, std::uint32_t n,
            std::uint32_t* cell) {
    alignas(16) T s[block_size];
    const bool some_inside = p.first < p.last;
    const bool all_inside = some_inside && copy_inside(p, q, n, s);
    const std::uint32_t padded = (n + group - 1) / group * group;
    if (some_inside) search(s, padded, cell);
    else std::fill_n(cell, padded, 0);
    if constexpr (Search::proposes) {
        constexpr std::uint32_t lanes = sizeof(vm::Vector<T>) / sizeof(T);
        vm::i4 all = vm::all(-1);
        for (std::uint32_t j = 0; some_inside && j < padded; j += lanes)
            all &= brackets(p.x, cell + j, vm::load(s + j));
        if (vm::any_lane(~all)) [[unlikely]] {
            const Bisection<T> bisection(p);
            for (std::uint32_t j = 0; j < padded; ++j)
                if (!p.holds(cell[j], s[j])) cell[j] = bisection.one(s[j]);
        }
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

// The sites of a call: an array, or a uniform grid given by its ends.
template <class T> class Sites {
public:
    Sites(const T* site, std::int64_t n, std::int64_t hint) : site_(site), n_(n) {
        grid_ = hint == DF_UNIFORM;
        ascending_ = hint == DF_SORTED || (grid_ && n > 0 && site[n > 1 ? 1 : 0] >= site[0]);
        if (grid_ && n > 1) step_ = (double(site[1]) - double(site[0])) / double(n - 1);
    }
    bool ascending() const { return ascending_; }
    std::int64_t size() const { return n_; }

    // `count` sites from number `from` on; a grid is laid out in `buffer`.
    const T* block(std::int64_t from, std::uint32_t count, T* buffer) const {
        if (!grid_) return site_ + from;
        for (std::uint32_t j = 0; j < count; ++j)
            buffer[j] = static_cast<T>(site_[0] + double(from + j) * step_);
        if (n_ > 1 && from + count == n_) buffer[count - 1] = site_[1];
        return buffer;
    }

private:
    const T* site_;
    std::int64_t n_;
    bool grid_, ascending_;
    double step_ = 0;
};

inline bool is_site_hint(std::int64_t h) { return is_partition_hint(h) || h == DF_SORTED; }

enum class SearchMethod { automatic, sorted, uniform, quasi_uniform, hybrid, peak };

// Calls use(search) with the search of a method, for `sites` sites in a call.
template <class T, class Use>
inline void with_search(const Task& task, const Partition<T>& p, SearchMethod method,
                        bool ascending, std::int64_t sites, Use use) {
    constexpr int crowd = 4;  // so many sites to a cell are found by walking
    if (method == SearchMethod::sorted) ascending = true;
    if (method == SearchMethod::automatic || method == SearchMethod::sorted) {
        if (ascending && sites / crowd >= p.n) return use(Walk<T>(p));
        if (task.x_hint == DF_UNIFORM) method = SearchMethod::uniform;
        else if (task.x_hint == DF_QUASI_UNIFORM) method = SearchMethod::quasi_uniform;
        else if (BinSearch<T>::applies(task, p)) return use(BinSearch<T>(task, p));
        else if (ascending) return use(Walk<T>(p));
    }
    if (method == SearchMethod::uniform) return use(UniformSearch<T>(p));
    if (method == SearchMethod::quasi_uniform) return use(QuasiUniformSearch<T>(p));
    if (method == SearchMethod::peak && PeakSearch<T>::applies(task, p))
        return use(PeakSearch<T>(task, p));
    if (method == SearchMethod::hybrid && BinSearch<T>::applies(task, p))
        return use(BinSearch<T>(task, p));
    use(Bisection<T>(p));
}

}  // namespace kef::fit
