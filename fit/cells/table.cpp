// Making of the search table.
#include "fit/cells/table.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kef::fit {

namespace {

constexpr std::uint32_t empty = 0xFFFFFFFFu;

template <class T> void build(Task& task) {
    const T* x = static_cast<const T*>(task.x);
    const auto n = static_cast<std::uint32_t>(task.nx);
    const auto count = static_cast<std::uint32_t>(bin_count_for(task.nx));
    const double inverse = inverse_bin_width(x, n, count);
    task.bin_count = static_cast<std::int32_t>(count);
    task.bin_count_high = 0;
    task.inverse_bin_width = inverse;

    Bin* bins = task.bins;
    std::memset(bins, 0xFF, count * sizeof(Bin));
    for (std::uint32_t i = 0; i < n; ++i) {
        // A bin outside the table (NaN and overflow included) wraps around to a
        // large number; so do its neighbours outside.
        const auto bin = static_cast<std::uint32_t>(bin_of(x[i], x[0], inverse));
        const std::uint32_t after = bin + 1, before = bin - 1;
        if (after < count) bins[after].low = i;
        if (before < count && bins[before].high == empty) bins[before].high = i;
    }
    bins[0].low = 0;
    bins[count - 1].high = n - 1;
    for (std::uint32_t k = 1; k < count; ++k) {
        const std::uint32_t j = count - 1 - k;
        if (bins[k].low == empty) bins[k].low = bins[k - 1].low;
        if (bins[j].high == empty) bins[j].high = bins[j + 1].high;
    }

    // A window of 2^bin_steps breakpoints from `low` on holds the cell of every
    // point of a bin; in the last bin the last breakpoint too.
    std::uint32_t widest = n - bins[count - 1].low;
    for (std::uint32_t k = 0; k < count - 1; ++k)
        if (bins[k].high > bins[k].low && bins[k].high - bins[k].low > widest)
            widest = bins[k].high - bins[k].low;
    task.bin_steps = std::max(1, static_cast<int>(std::bit_width(widest - 1)));
}

}  // namespace

void build_search_table(Task& task) {
    if (task.x_hint == DF_UNIFORM) return;
    if (task.element_size == sizeof(double)) build<double>(task);
    else build<float>(task);
}

}  // namespace kef::fit
