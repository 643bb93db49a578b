// What a call that adds to the sketches of a task needs, and what it writes.
#pragma once

#include "stats/checks.h"
#include "stats/stream.h"

namespace kef::stats {

// Whether the registered orders are in [0,1].
template <class T> bool has_orders(const Task& task) {
    const auto* orders = static_cast<const T*>(task.stream_quantile_orders);
    const std::int64_t m = integer_at(task, task.stream_quantile_order_count);
    if (m < 0 || m > PTRDIFF_MAX / 4) return false;
    return std::all_of(orders, orders + m, [](T q) { return q >= 0 && q <= 1; });
}

inline bool has_epsilon(const Task& task) {
    return task.stream_quantile_parameter_count != nullptr &&
           task.stream_quantile_parameters != nullptr;
}
// k for the registered epsilon, 0 where that is none.
template <class T> std::ptrdiff_t registered_size(const Task& task) {
    return integer_at(task, task.stream_quantile_parameter_count) == 1
               ? summary_size(static_cast<const T*>(task.stream_quantile_parameters)[0])
               : 0;
}

template <class T> struct StreamCall {
    Task* task;
    std::ptrdiff_t p;
    Stream<T> stream;
    RunRoom<T> room;

    // For sketches of k values that take n more observations of each variable. Any status but OK
    // leaves them as they were; after that nothing can fail.
    std::int32_t prepare(Task& with, std::ptrdiff_t k, std::uint64_t n) {
        task = &with;
        p = positive_at(with, with.dimension);
        if (k == 0) return VTS_SS_STATUS_BAD_PARAMETERS;
        const Stream<T> before(with);
        if (before.started()) {
            if (before.p() != p) return VTS_SS_STATUS_BAD_DIMENSION;
            if (before.k() != k) return VTS_SS_STATUS_BAD_PARAMETERS;
            n += before.most_observations();
        }
        // Steps of two, so that many small blocks do not ask for new room every time.
        const auto run = static_cast<std::uint64_t>(condensed * k);
        std::uint64_t numbers = 1024;
        while (numbers < n && numbers < run) numbers *= 2;
        numbers = std::min(numbers, run);
        KeptLayout layout;
        const auto place = RunRoom<T>::reserve(layout, k, numbers);
        char* start = scratch(with, layout);
        if (start == nullptr || !Stream<T>::make_room(with, k, p, n))
            return VTS_SS_STATUS_NO_MEMORY;
        room = RunRoom<T>(start + place, k, numbers);
        stream = Stream<T>(with);
        return VTS_SS_STATUS_OK;
    }

    template <class F> void for_each_variable(F f) const {
        for (std::ptrdiff_t i = 0; i < p; ++i)
            if (is_selected(*task, i)) f(i);
    }

    // The quantiles that the task registers.
    void write_quantiles() const {
        const std::int64_t m = integer_at(*task, task->stream_quantile_order_count);
        if (m == 0) return;
        for_each_variable([&](std::ptrdiff_t i) {
            stream.quantiles(i, static_cast<const T*>(task->stream_quantile_orders), m, room,
                             static_cast<T*>(task->stream_quantiles) + i * m);
        });
    }
};

}  // namespace kef::stats
