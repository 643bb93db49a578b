// _vtsdSSStreamQuantiles, _vtssSSStreamQuantiles: quantiles of all observations so far, in bounded
// memory.
#include "stats/computation.h"
#include "stats/stream_call.h"

namespace kef::stats {

template <class T> std::int32_t stream_quantiles(Task& task) {
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto x = observations_of<T>(task);
    if (!has_orders<T>(task)) return VTS_SS_STATUS_BAD_PARAMETERS;
    StreamCall<T> call;
    const std::int32_t status = call.prepare(task, registered_size<T>(task), n);
    if (status != VTS_SS_STATUS_OK) return status;
    const std::ptrdiff_t part = x.stride == 1 ? n : tile;
    for (std::ptrdiff_t first = 0; first < n; first += part)
        call.for_each_variable([&](std::ptrdiff_t i) {
            call.stream.add(i, x.at(i, first), x.stride, std::min(part, n - first), call.room);
        });
    call.write_quantiles();
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(stream_quantiles);

}  // namespace kef::stats
