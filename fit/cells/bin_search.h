// The search table, then bisection of one bin's breakpoints.
#pragma once

#include <algorithm>

#include "fit/cells/bisection.h"
#include "fit/cells/table.h"

namespace kef::fit {

template <class T> struct BinSearch {
    static constexpr bool proposes = true;
    const T* x;
    Table<T> table;
    // Every bin is searched in a window of 2^steps breakpoints from its low one on, which
    // begins at last_base at the latest.
    std::uint32_t last_base;
    int steps;

    // False also where the bins are so unequal that bisection of all breakpoints is
    // as short.
    static bool applies(const Task& task, const Partition<T>& p) {
        return Table<T>::is_current(task, p) && task.bin_steps < Bisection<T>(p).steps;
    }
    BinSearch(const Task& task, const Partition<T>& p)
        : x(p.x), table(task, p), last_base(p.n - (1u << task.bin_steps)), steps(task.bin_steps) {}

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
            const T* p = b.x + std::min(b.table.bin(site).low, b.last_base);
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

// For breakpoints that crowd in few bins: there the distribution of the bin's
// breakpoints first tells which 64 of them to bisect.
template <class T> struct PeakSearch {
    static constexpr bool proposes = true;
    const T* x;
    std::uint32_t n;
    Table<T> table;
    Bisection<T> bisection;

    static bool applies(const Task& task, const Partition<T>& p) {
        return Table<T>::is_current(task, p);
    }
    PeakSearch(const Task& task, const Partition<T>& p)
        : x(p.x), n(p.n), table(task, p), bisection(p) {}

    void operator()(const T* q, std::uint32_t count, std::uint32_t* at) const {
        for (std::uint32_t j = 0; j < count; ++j) at[j] = one(q[j]);
    }

private:
    std::uint32_t one(T q) const {
        constexpr std::uint32_t narrow = 64;
        auto [low, high] = table.bin(q);
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

}  // namespace kef::fit
