// _vtsdSSMerge, _vtssSSMerge: what one task would hold that had seen the observations of two.
#include "stats/merge.h"

#include "stats/resume.h"
#include "stats/stream_call.h"

namespace kef::stats {

namespace {

// The same p and the same processed variables.
bool same_shape(const Task& a, const Task& b) {
    const std::ptrdiff_t p = positive_at(a, a.dimension);
    if (p == 0 || positive_at(b, b.dimension) != p) return false;
    for (std::ptrdiff_t i = 0; i < p; ++i)
        if (is_selected(a, i) != is_selected(b, i)) return false;
    return true;
}

// The result arrays that the estimates need in a task, and how they are laid out.
std::int32_t check_arrays(const Task& task, FieldSet required, std::uint64_t estimates) {
    std::int32_t status = check_present(task, required);
    if (status != VTS_SS_STATUS_OK) return status;
    if (required != 0 && task.accumulated_weights == nullptr)
        return VTS_SS_STATUS_NULL_ACCUMULATED_WEIGHTS;
    if ((estimates & VTS_SS_ESTIMATE_MINIMUM) && task.minimum == nullptr)
        return VTS_SS_STATUS_NULL_MINIMUM;
    if ((estimates & VTS_SS_ESTIMATE_MAXIMUM) && task.maximum == nullptr)
        return VTS_SS_STATUS_NULL_MAXIMUM;
    return check_layouts(task, required);
}

template <class T> bool is_fresh(const Task& task) {
    return static_cast<const T*>(task.accumulated_weights)[0] == 0;
}

// What Basic accumulates. Both states have their memory.
template <class T>
void merge_sums(Task& task, BasicState& state, const Task& other, BasicState& added,
                const Call& call) {
    resume<T>(task, state, call);
    const BasicState before = added;
    const bool kept = resume<T>(other, added, call);
    merge(state.sums, added.sums);
    visit_results<T>(task, state, call.required, Write());
    state.valid = true;
    if (!kept) return;
    // The other task's arrays still show its state.
    added.written = before.written;
    added.derived = before.derived;
    added.from_raw = before.from_raw;
    added.held |= before.held;
}

// Extremes that are NaN have not seen anything.
template <class T>
void merge_extremes(const Task& task, kef_ss_output Task::*array, const Task& other,
                    bool greatest) {
    auto* to = static_cast<T*>(task.*array);
    const auto* from = static_cast<const T*>(other.*array);
    for (std::ptrdiff_t i = 0; i < positive_at(task, task.dimension); ++i)
        if (is_selected(task, i) && !(greatest ? to[i] >= from[i] : to[i] <= from[i]) &&
            from[i] == from[i])
            to[i] = from[i];
}

template <class T>
std::int32_t merge_tasks(Task* task, Task* other, std::uint64_t estimates, std::int32_t method) {
    if (task == nullptr || other == nullptr) return VTS_SS_STATUS_NULL_TASK;
    if (task == other) return VTS_SS_STATUS_BAD_PARAMETERS;
    const FieldSet requested = requested_fields(estimates);
    if (requested != 0 && (!is_one_method(method) || (method & ~data_methods) != 0))
        return VTS_SS_STATUS_BAD_METHOD;
    const FieldSet required = required_fields(
        requested, method == VTS_SS_METHOD_RAW ? Requirements::raw : Requirements::observed);
    for (const Task* each : {task, other}) {
        std::int32_t status = check_arrays(*each, required, estimates);
        if (status == VTS_SS_STATUS_OK) status = check_precision<T>(*each);
        if (status != VTS_SS_STATUS_OK) return status;
    }
    if (!same_shape(*task, *other)) return VTS_SS_STATUS_BAD_DIMENSION;

    const std::ptrdiff_t p = positive_at(*task, task->dimension);
    const Stream<T> sketches(*other);
    const bool streams = (estimates & VTS_SS_ESTIMATE_STREAM_QUANTILES) && sketches.started();
    const bool results = streams && task->stream_quantiles != nullptr;
    if (streams && sketches.p() != p) return VTS_SS_STATUS_BAD_DIMENSION;
    if (results && task->stream_quantile_orders == nullptr)
        return VTS_SS_STATUS_NULL_STREAM_QUANTILE_ORDERS;
    if (results && task->stream_quantile_order_count == nullptr)
        return VTS_SS_STATUS_NULL_STREAM_QUANTILE_ORDER_COUNT;
    if (results && !has_orders<T>(*task)) return VTS_SS_STATUS_BAD_PARAMETERS;
    if (streams && !Stream<T>(*task).started() && has_epsilon(*task) &&
        registered_size<T>(*task) != sketches.k())
        return VTS_SS_STATUS_BAD_PARAMETERS;

    // Memory first.
    bool selected = false;
    for (std::ptrdiff_t i = 0; i < p; ++i) selected = selected || is_selected(*task, i);
    const Call sums(requested, required, method);
    BasicState *state = nullptr, *added = nullptr;
    if (required != 0 && selected && !is_fresh<T>(*other)) {
        state = state_of(*task, p, sums.plan.products);
        added = state_of(*other, p, sums.plan.products);
        if (state == nullptr || added == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    }
    StreamCall<T> call;
    if (streams) {
        const std::int32_t status = call.prepare(*task, sketches.k(), sketches.most_observations());
        if (status != VTS_SS_STATUS_OK) return status;
    }
    if (state != nullptr) merge_sums<T>(*task, *state, *other, *added, sums);
    if (estimates & VTS_SS_ESTIMATE_MINIMUM)
        merge_extremes<T>(*task, &Task::minimum, *other, false);
    if (estimates & VTS_SS_ESTIMATE_MAXIMUM) merge_extremes<T>(*task, &Task::maximum, *other, true);
    if (streams) {
        call.for_each_variable(
            [&](std::ptrdiff_t i) { call.stream.add_sketch(i, sketches, call.room); });
        if (results) call.write_quantiles();
    }
    return VTS_SS_STATUS_OK;
}

}  // namespace

}  // namespace kef::stats

extern "C" {

std::int32_t _vtsdSSMerge(kef_ss_task* task, kef_ss_task* other, std::uint64_t estimates,
                          std::int32_t method) {
    return kef::stats::merge_tasks<double>(task, other, estimates, method);
}

std::int32_t _vtssSSMerge(kef_ss_task* task, kef_ss_task* other, std::uint64_t estimates,
                          std::int32_t method) {
    return kef::stats::merge_tasks<float>(task, other, estimates, method);
}

}  // extern "C"
