// _vtsdSSBasic, _vtssSSBasic: validation, and the way through a block.
#include "stats/accumulate.h"
#include "stats/checks.h"
#include "stats/resume.h"

namespace kef::stats {

namespace {

constexpr int sums_methods = VTS_SS_METHOD_SUMS | VTS_SS_METHOD_CROSS_PRODUCT;

template <class T> std::int32_t from_observations(Task& task, const Call& call) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto* weights = static_cast<const T*>(task.weights);
    std::ptrdiff_t start = 0, selected = 0;
    while (weights != nullptr && start < n && weights[start] == 0) ++start;
    while (selected < p && !is_selected(task, selected)) ++selected;
    if (call.required == 0 || start == n || selected == p) return VTS_SS_STATUS_OK;

    BasicState* state = state_of(task, p, call.plan.products);
    if (state == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    // From here on nothing can fail.
    resume<T>(task, *state, call);

    const auto x = observations_of<T>(task);
    alignas(vm::vector_bytes) double w[weight_room(tile)];
    for_each_tile(start, n, call.plan.tile_size(x.stride), [&](std::ptrdiff_t first, int m) {
        add_observations(
            state->sums, x, first, m,
            weights != nullptr ? read_weights(weights + first, m, w) : TileWeights::ones(m));
    });
    visit_results<T>(task, *state, call.required, Write());
    state->valid = task.accumulated_weights != nullptr;
    return VTS_SS_STATUS_OK;
}

// From the sums and the cross-product that are in the task.
template <class T> std::int32_t from_sums(Task& task, FieldSet requested, FieldSet required) {
    using namespace field;
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const auto* accumulated = static_cast<const T*>(task.accumulated_weights);
    const double n =
        static_cast<double>(accumulated == nullptr ? positive_at(task, task.count) : 0);
    const double W = accumulated != nullptr ? accumulated[0] : n;
    const double W2 = accumulated != nullptr ? accumulated[1] : n;
    const Scales scales(W, W2);
    for (std::ptrdiff_t i = 0; i < p; ++i) {
        if (!is_selected(task, i)) continue;
        Quantities q;
        const auto read = [&](FieldSet fields) {
            for_each_field(fields, [&](const ResultField& f) {
                q[f.quantity] = static_cast<const T*>(task.*f.array)[i] * scales[f.scale];
            });
        };
        read(required & (raw_sums | central_sums));
        q[quantity::mean] = q[quantity::raw_1] / W;
        visit_vectors<T>(task, requested & ~shapes, i, q, scales, Write());
        if (requested & shapes) {
            // The mean and the central moments may be older than this call.
            read(required & (mean | central_moments));
            shapes_from_central(W, scales, q);
            visit_vectors<T>(task, requested & shapes, i, q, scales, Write());
        }
    }
    if (requested & matrices) {
        const auto C = matrix_at<T>(task, p, task.cross_product, task.cross_product_storage);
        visit_matrices<T>(
            task, p, requested, p, [&](std::ptrdiff_t i) { return is_selected(task, i) ? i : -1; },
            [&](std::ptrdiff_t i, std::ptrdiff_t j) { return C.get(i, j); }, scales, Write());
    }
    return VTS_SS_STATUS_OK;
}

template <class T> std::int32_t basic(Task* task, std::uint64_t estimates, std::int32_t method) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    const int data_method = method & data_methods;
    if (!is_one_method(data_method) && (data_method != 0 || (method & sums_methods) == 0))
        return VTS_SS_STATUS_BAD_METHOD;

    const FieldSet requested = requested_fields(estimates);
    const FieldSet required =
        required_fields(requested, data_method == VTS_SS_METHOD_RAW ? Requirements::raw
                                   : data_method != 0               ? Requirements::observed
                                                                    : Requirements::derived);
    std::int32_t status = check_present(*task, required);
    if (status != VTS_SS_STATUS_OK) return status;

    if (data_method == 0) {
        if (task->accumulated_weights == nullptr) {
            if (task->count == nullptr || task->weights != nullptr)
                return VTS_SS_STATUS_NULL_ACCUMULATED_WEIGHTS;
            if (positive_at(*task, task->count) == 0) return VTS_SS_STATUS_BAD_COUNT;
        }
        if (positive_at(*task, task->dimension) == 0) return VTS_SS_STATUS_BAD_DIMENSION;
    } else {
        status = check_observations(*task);
        if (status != VTS_SS_STATUS_OK) return status;
    }
    status = check_layouts(*task, required);
    if (status == VTS_SS_STATUS_OK) status = check_precision<T>(*task);
    if (status != VTS_SS_STATUS_OK) return status;
    return data_method == 0 ? from_sums<T>(*task, requested, required)
                            : from_observations<T>(*task, Call(requested, required, data_method));
}

}  // namespace

}  // namespace kef::stats

extern "C" {

std::int32_t _vtsdSSBasic(kef_ss_task* task, std::uint64_t estimates, std::int32_t method) {
    return kef::stats::basic<double>(task, estimates, method);
}

std::int32_t _vtssSSBasic(kef_ss_task* task, std::uint64_t estimates, std::int32_t method) {
    return kef::stats::basic<float>(task, estimates, method);
}

}  // extern "C"
