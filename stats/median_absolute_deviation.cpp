// _vtsdSSMAD, _vtssSSMAD: the median of |x - m|, m the median of x (Hampel, JASA 69:383, 1974).
#include "stats/computation.h"
#include "stats/quantile.h"

namespace kef::stats {

namespace {

// |x - high - low| for a low part that is below the last place of `high`: rounded once, but for the
// rounding of error - low.
double distance(double x, double high, double low) {
    const double d = x - high;
    if (low == 0 || d - d != 0) return std::fabs(d);
    const double shadow = d - x, error = (x - (d - shadow)) - (high + shadow);  // Knuth
    return std::fabs(d + (error - low));
}

}  // namespace

template <class T> std::int32_t median_absolute_deviation(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto x = observations_of<T>(task);
    KeptLayout layout;
    const auto numbers = SelectionRoom<T>::reserve(layout, n);
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    const SelectionRoom<T> room(start + numbers, n);
    for (std::ptrdiff_t i = 0; i < p; ++i) {
        if (!is_selected(task, i)) continue;
        const auto [a, b] = middle_pair(contiguous(x, i, n, room.spare), n, room);
        const double m = middle(a, b);
        // What the rounding of m has lost: a + b = 2 m + 2 low exactly (|a|, |b| <= 2^1022).
        const double sum = m * 2, shadow = sum - a;
        const double lost = ((a - (sum - shadow)) + (b - shadow)) / 2;
        const double low = lost - lost == 0 ? lost : 0;
        const T* from = x.at(i, 0);
        for (std::ptrdiff_t j = 0; j < n; ++j)
            room.spare[j] = static_cast<T>(distance(from[j * x.stride], m, low));
        const auto [c, d] = middle_pair<T>(room.spare, n, room);
        static_cast<T*>(task.median_absolute_deviation)[i] = static_cast<T>(middle(c, d));
    }
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(median_absolute_deviation);

}  // namespace kef::stats
