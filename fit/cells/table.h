// The search table: the range of the breakpoints is cut into bins of equal width; each
// bin names the last breakpoint before it and the first one after it. The bin of a
// point is a monotone function of the point, so rounding cannot lose a cell.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cmath>

#include "fit/cells/partition.h"

namespace kef::fit {

// The bin of a point, truncated; INT32_MIN where that has no 32-bit value.
inline std::int32_t bin_of(double point, double first, double inverse_width) {
    return _mm_cvttsd_si32(_mm_set_sd((point - first) * inverse_width));
}

template <class T>
inline double inverse_bin_width(const T* x, std::uint32_t n, std::uint32_t bins) {
    return 1 / ((double(x[n - 1]) - double(x[0])) / bins);
}

// The table of a task, for sites inside the partition.
template <class T> struct Table {
    const Bin* bins;
    double first, inverse;
    std::int32_t last_bin;

    Table(const Task& task, const Partition<T>& p)
        : bins(task.bins),
          first(p.first),
          inverse(task.inverse_bin_width),
          last_bin(task.bin_count - 1) {}

    // The last breakpoint rounds into a bin of its own.
    const Bin& bin(T q) const { return bins[std::min(bin_of(q, first, inverse), last_bin)]; }

    // False where the table was made for other breakpoints or for none. Other breakpoints
    // between the same ends go unnoticed: so what is found by the table is checked.
    static bool is_current(const Task& task, const Partition<T>& p) {
        const auto count = static_cast<std::uint32_t>(bin_count_for(p.n));
        return task.bin_count == static_cast<std::int32_t>(count) &&
               task.bins[count - 1].high == p.n - 1 &&
               task.inverse_bin_width == inverse_bin_width(p.x, p.n, count) &&
               task.inverse_bin_width > 0 && task.inverse_bin_width < HUGE_VAL;
    }
};

}  // namespace kef::fit
