// _vtsdSSQuantiles, _vtssSSQuantiles: quantiles of any orders, and the sorted observations.
#include <limits>

#include "stats/computation.h"
#include "stats/quantile.h"

namespace kef::stats {

namespace {

// The result p by n array of sorted observations.
template <class T> struct SortedObservations {
    T* array;
    std::ptrdiff_t variable_step, stride;
    SortedObservations(const Task& task, std::ptrdiff_t p, std::ptrdiff_t n)
        : array(static_cast<T*>(task.order_statistics)), variable_step(n), stride(1) {
        if (array != nullptr &&
            integer_at(task, task.order_statistics_storage) == VTS_SS_STORAGE_COLUMNS)
            variable_step = 1, stride = p;
    }
    T* of(std::ptrdiff_t i) const { return array + i * variable_step; }
};

}  // namespace

template <class T> std::int32_t quantiles(Task& task) {
    constexpr T nan = std::numeric_limits<T>::quiet_NaN();
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto x = observations_of<T>(task);
    auto* results = static_cast<T*>(task.quantiles);
    const auto* orders = static_cast<const T*>(task.quantile_orders);
    const std::ptrdiff_t count =
        results != nullptr ? positive_at(task, task.quantile_order_count) : 0;
    if (results != nullptr && count == 0) return VTS_SS_STATUS_BAD_PARAMETERS;
    for (std::ptrdiff_t k = 0; k < count; ++k)
        if (!(orders[k] >= 0 && orders[k] <= 1)) return VTS_SS_STATUS_BAD_PARAMETERS;
    const SortedObservations<T> sorted(task, p, n);

    KeptLayout layout;
    const auto numbers = SelectionRoom<T>::reserve(layout, n);
    const auto listed =
        layout.reserve(sorted.array == nullptr ? count : 0, 2 * sizeof(std::ptrdiff_t));
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    const SelectionRoom<T> room(start + numbers, n);

    Ranks ranks = Ranks::all();
    if (sorted.array == nullptr) {
        auto* list = reinterpret_cast<std::ptrdiff_t*>(start + listed);
        for (std::ptrdiff_t k = 0; k < count; ++k) {
            const QuantilePlace place(orders[k], n);
            list[2 * k] = place.below;
            list[2 * k + 1] = place.above;
        }
        std::sort(list, list + 2 * count);
        ranks = Ranks(list, list + 2 * count);
    }

    for (std::ptrdiff_t i = 0; i < p; ++i) {
        if (!is_selected(task, i)) continue;
        const T* data = contiguous(x, i, n, room.spare);
        const Range<T> range = range_of(data, n);
        T* const out = sorted.array != nullptr && sorted.stride == 1 ? sorted.of(i) : room.out;
        if (range.nan) {
            if (sorted.array != nullptr) std::fill_n(out, n, nan);
        } else {
            order_statistics(x, i, n, data, range, ranks, out, room.spare);
        }
        for (std::ptrdiff_t k = 0; k < count; ++k) {
            const QuantilePlace place(orders[k], n);
            results[i * count + k] =
                range.nan
                    ? nan
                    : static_cast<T>(between(out[place.below], out[place.above], place.fraction));
        }
        if (sorted.array != nullptr && out == room.out)
            for (std::ptrdiff_t j = 0; j < n; ++j) sorted.of(i)[j * sorted.stride] = out[j];
    }
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(quantiles);

}  // namespace kef::stats
