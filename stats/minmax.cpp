// _vtsdSSMinmax, _vtssSSMinmax: running minimum and maximum.
#include <limits>

#include "stats/checks.h"

namespace kef::stats {

namespace {

// x where it is beyond the extreme so far; a NaN never is.
struct Least {
    static constexpr double start = std::numeric_limits<double>::infinity();
    template <class V> static V pick(V x, V so_far) { return vm::minimum(x, so_far); }
};
struct Greatest {
    static constexpr double start = -std::numeric_limits<double>::infinity();
    template <class V> static V pick(V x, V so_far) { return vm::maximum(x, so_far); }
};

// Merges what was found in n observations of a variable, Extreme::start when all of
// them are NaN or equal to that.
template <class Extreme, class T>
void merge(T& place, double found, const T* x, std::ptrdiff_t stride, int n) {
    const double old = place;
    if (old == old) {
        place = static_cast<T>(Extreme::pick(all(found), all(old))[0]);
        return;
    }
    bool seen = found != Extreme::start;
    for (int j = 0; j < n && !seen; ++j) seen = x[j * stride] == Extreme::start;
    if (seen) place = static_cast<T>(found);
}

// The extreme over a source.
template <class Extreme, class Source> d2 extreme(const Source& x, int n) {
    doubles u = all(Extreme::start), v = u;
    d2 rest = both(Extreme::start);
    int j = 0;
    for (; j <= n - Source::width; j += Source::width) {
        u = Extreme::pick(x.u(j), u);
        v = Extreme::pick(x.v(j), v);
    }
    if constexpr (blocks > 1 && Source::half)
        if (j <= n - Source::width / 2) u = Extreme::pick(x.u(j), u), j += Source::width / 2;
    for (; j < n; ++j) rest = Extreme::pick(x.one(j), rest);
    const auto pick = [](auto x, auto so_far) { return Extreme::pick(x, so_far); };
    return pick(Source::fold(u, v, pick), rest);
}

// One tile of a pair of variables; null arrays are left out.
template <class T>
void extremes(const Observations<T>& x, Pair pair, std::ptrdiff_t first, int n, T* minimum,
              T* maximum) {
    d2 least, greatest;
    with_vectors(x, pair, first, [&](const auto& source) {
        if (minimum != nullptr) least = extreme<Least>(source, n);
        if (maximum != nullptr) greatest = extreme<Greatest>(source, n);
    });
    for (int lane = 0; lane < 2 - pair.alone(); ++lane) {
        const std::ptrdiff_t i = lane == 0 ? pair.first : pair.second;
        const T* start = x.at(i, first);
        if (minimum != nullptr) merge<Least>(minimum[i], least[lane], start, x.stride, n);
        if (maximum != nullptr) merge<Greatest>(maximum[i], greatest[lane], start, x.stride, n);
    }
}

template <class T> std::int32_t minmax(Task* task, std::uint64_t estimates, std::int32_t method) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    if (method != VTS_SS_METHOD_MINMAX) return VTS_SS_STATUS_BAD_METHOD;
    const bool lowest = estimates & VTS_SS_ESTIMATE_MINIMUM;
    const bool highest = estimates & VTS_SS_ESTIMATE_MAXIMUM;
    if (lowest && task->minimum == nullptr) return VTS_SS_STATUS_NULL_MINIMUM;
    if (highest && task->maximum == nullptr) return VTS_SS_STATUS_NULL_MAXIMUM;
    std::int32_t status = check_observations(*task);
    if (status == VTS_SS_STATUS_OK) status = check_precision<T>(*task);
    if (status != VTS_SS_STATUS_OK || !(lowest || highest)) return status;

    const auto x = observations_of<T>(*task);
    const std::ptrdiff_t p = positive_at(*task, task->dimension);
    const std::ptrdiff_t n = positive_at(*task, task->count);
    auto* minimum = lowest ? static_cast<T*>(task->minimum) : nullptr;
    auto* maximum = highest ? static_cast<T*>(task->maximum) : nullptr;
    const auto next = [&](std::ptrdiff_t i) {
        while (i < p && !is_selected(*task, i)) ++i;
        return i;
    };
    for_each_tile(0, n, sums_tile(x.stride), [&](std::ptrdiff_t first, int m) {
        for (std::ptrdiff_t i = next(0); i < p;) {
            const std::ptrdiff_t second = next(i + 1);
            extremes(x, {i, second < p ? second : i}, first, m, minimum, maximum);
            i = next(second + 1);
        }
    });
    return VTS_SS_STATUS_OK;
}

}  // namespace

}  // namespace kef::stats

extern "C" {

std::int32_t _vtsdSSMinmax(kef_ss_task* task, std::uint64_t estimates, std::int32_t method) {
    return kef::stats::minmax<double>(task, estimates, method);
}

std::int32_t _vtssSSMinmax(kef_ss_task* task, std::uint64_t estimates, std::int32_t method) {
    return kef::stats::minmax<float>(task, estimates, method);
}

}  // extern "C"
