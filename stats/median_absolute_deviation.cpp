// _vtsdSSMAD, _vtssSSMAD: the median of |x - m|, m the median of x.
#include "stats/computation.h"
#include "stats/median_deviation.h"

namespace kef::stats {

template <class T> std::int32_t median_absolute_deviation(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto x = observations_of<T>(task);
    KeptLayout layout;
    const auto numbers = SelectionRoom<T>::reserve(layout, n);
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    const SelectionRoom<T> room(start + numbers, n);
    for (std::ptrdiff_t i = 0; i < p; ++i)
        if (is_selected(task, i))
            static_cast<T*>(task.median_absolute_deviation)[i] =
                median_deviation(x, i, n, room).deviation;
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(median_absolute_deviation);

}  // namespace kef::stats
