// _vtsdSSBasic, _vtssSSBasic: validation, and the way through a block.
#include <cstring>

#include "stats/checks.h"
#include "stats/results.h"

namespace kef::stats {

namespace {

constexpr int data_methods = VTS_SS_METHOD_RAW | VTS_SS_METHOD_RECURRENCE | VTS_SS_METHOD_TILED;
constexpr int sums_methods = VTS_SS_METHOD_SUMS | VTS_SS_METHOD_CROSS_PRODUCT;

// The layouts of the matrices asked for.
std::int32_t check_layouts(const Task& task, FieldSet requested, bool reads_cross_product) {
    using namespace field;
    if ((requested & covariance) && !is_layout(task, task.covariance_storage))
        return VTS_SS_STATUS_NULL_STORAGE;
    if ((requested & correlation) && !is_layout(task, task.correlation_storage))
        return VTS_SS_STATUS_NULL_STORAGE;
    if (((requested & cross_product) || reads_cross_product) &&
        !is_layout(task, task.cross_product_storage))
        return VTS_SS_STATUS_NULL_STORAGE;
    return VTS_SS_STATUS_OK;
}

// The fields that a call over x writes, see the header.
FieldSet written_fields(FieldSet requested, FieldSet required, int method) {
    if (method & VTS_SS_METHOD_RAW) return required;
    return required & ~(field::raw_moments & ~requested);
}

Plan plan_for(FieldSet written, int method) {
    using namespace field;
    Plan plan;
    const auto highest = [&](FieldSet second, FieldSet third, FieldSet fourth) {
        return written & fourth ? 4 : written & third ? 3 : written & second ? 2 : 0;
    };
    const int raw =
        highest(raw_moment_2 | raw_sum_2, raw_moment_3 | raw_sum_3, raw_moment_4 | raw_sum_4);
    const int central = highest(central_moment_2 | central_sum_2, central_moment_3 | central_sum_3,
                                central_moment_4 | central_sum_4);
    const bool from_raw = method & VTS_SS_METHOD_RAW;
    plan.raw = raw > 0 ? raw : (written & sum) || (from_raw && (written & mean)) ? 1 : 0;
    plan.products = written & matrices;
    plan.central = !from_raw && central > 0                           ? central
                   : plan.products || (!from_raw && (written & mean)) ? 1
                                                                      : 0;
    plan.recurrence = method & VTS_SS_METHOD_RECURRENCE;
    return plan;
}

// Lays out the kept block: the state, and the arrays of its accumulators for all p
// variables. Null when there is no memory.
BasicState* state_of(Task& task, std::ptrdiff_t p, bool products) {
    std::uint64_t size = 0;
    const auto reserve = [&](std::uint64_t count, std::size_t element) {
        const std::uint64_t offset = size;
        size = (size + count * element + 127) / 128 * 128;
        return offset;
    };
    const std::uint64_t pairs = (static_cast<std::uint64_t>(p) + 1) / 2;
    reserve(1, sizeof(BasicState));
    const auto coefficients = reserve(1, sizeof(Coefficients));
    const auto variable = reserve(p, sizeof(std::ptrdiff_t));
    const auto pair = reserve(pairs, sizeof(Pair));
    const auto sums = reserve(pairs, sizeof(PairSums));
    const std::uint64_t columns = products ? pairs : 0;
    if (columns > UINT32_MAX) return nullptr;
    const auto tile_sum = reserve(columns, sizeof(d2));
    const auto tile_distance = reserve(columns, sizeof(d2));
    const auto deviation = reserve(columns * column, sizeof(d2));
    const auto scaled = reserve(columns * column, sizeof(d2));
    const auto blocks = reserve(columns * (columns + 1) / 2, sizeof(ProductBlock));

    auto* start = static_cast<char*>(keep(task, Kept::basic, size));
    if (start == nullptr) return nullptr;
    auto* state = reinterpret_cast<BasicState*>(start);
    // A block laid out for other sizes is of no use.
    if (state->p != p || (products && state->sums.products == nullptr)) state->valid = false;
    if (state->valid && !products && state->sums.products != nullptr) return state;
    state->p = p;
    state->variable = reinterpret_cast<std::ptrdiff_t*>(start + variable);
    Accumulators& A = state->sums;
    A.coefficients = reinterpret_cast<Coefficients*>(start + coefficients);
    A.pair = reinterpret_cast<Pair*>(start + pair);
    A.sums = reinterpret_cast<PairSums*>(start + sums);
    A.tile_sum = reinterpret_cast<d2*>(start + tile_sum);
    A.tile_distance = reinterpret_cast<d2*>(start + tile_distance);
    A.deviation = reinterpret_cast<d2*>(start + deviation);
    A.scaled = reinterpret_cast<d2*>(start + scaled);
    A.products = products ? reinterpret_cast<ProductBlock*>(start + blocks) : nullptr;
    return state;
}

// Puts the list of processed variables into the state; false when it is another one
// than at the last call.
bool select_variables(const Task& task, BasicState& state) {
    bool same = true;
    std::ptrdiff_t count = 0;
    for (std::ptrdiff_t i = 0; i < state.p; ++i) {
        if (!is_selected(task, i)) continue;
        same = same && count < state.count && state.variable[count] == i;
        state.variable[count++] = i;
    }
    same = same && count == state.count;
    state.count = count;
    Accumulators& A = state.sums;
    A.pairs = (count + 1) / 2;
    auto* pair = const_cast<Pair*>(A.pair);
    for (std::ptrdiff_t k = 0; k < A.pairs; ++k)
        pair[k] = {state.variable[2 * k], state.variable[2 * k + (2 * k + 1 < count)]};
    return same;
}

void clear(Accumulators& A) {
    std::memset(static_cast<void*>(A.sums), 0, A.pairs * sizeof *A.sums);
    if (A.plan.products)
        std::memset(static_cast<void*>(A.products), 0,
                    block_index(A.pairs, 0) * sizeof *A.products);
    A.W = A.W2 = 0;
    A.started = false;
}

// Brings the accumulators to the state before this block.
template <class T>
std::int32_t resume(const Task& task, BasicState& state, const Plan& plan, FieldSet written,
                    bool from_raw, bool same_variables) {
    const auto* accumulated = static_cast<const T*>(task.accumulated_weights);
    const bool fresh = accumulated == nullptr || accumulated[0] == 0;
    constexpr bool single = sizeof(T) == sizeof(float);
    Accumulators& A = state.sums;
    // Arrays that this call does not write may be gone: they are not looked at.
    const bool kept = !fresh && state.valid && same_variables && A.plan.covers(plan) &&
                      state.from_raw == from_raw && state.single == single &&
                      visit_results<T, true>(task, state, state.written & written);
    A.plan = plan;
    state.valid = false;
    state.written = written;
    state.from_raw = from_raw;
    state.single = single;
    if (kept) return VTS_SS_STATUS_OK;
    clear(A);
    if (fresh) return VTS_SS_STATUS_OK;
    A.started = true;
    A.W = accumulated[0];
    A.W2 = accumulated[1];
    return take_up<T>(task, state);
}

// The weights of n observations in double precision, padded with zeros.
template <class T> TileWeights read_weights(const T* weights, int n, double* w) {
    d2 sum{}, squares{};
    l2 unusual{};
    int j = 0;
    for (; j < n; ++j) w[j] = weights[j];
    for (; j < (n + 3) / 2 * 2 + 1; ++j) w[j] = 0;
    for (j = 0; j < n; j += 2) {
        const d2 two = vm::load(w + j);
        sum += two;
        squares += two * two;
        unusual |= ~(l2)(two >= 0.0);
    }
    const double total = sum[0] + sum[1];
    return {w, total, squares[0] + squares[1], _mm_movemask_pd((__m128d)unusual) == 0 && total > 0};
}

template <class T> std::int32_t from_observations(Task& task, FieldSet written, int method) {
    if (written == 0) return VTS_SS_STATUS_OK;
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto* weights = static_cast<const T*>(task.weights);
    std::ptrdiff_t first = 0;
    if (weights != nullptr) {
        while (first < n && weights[first] == 0) ++first;
        if (first == n) return VTS_SS_STATUS_OK;
    }

    const Plan plan = plan_for(written, method);
    BasicState* state = state_of(task, p, plan.products);
    if (state == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    const bool same_variables = select_variables(task, *state);
    if (state->count == 0) return VTS_SS_STATUS_OK;
    const std::int32_t status =
        resume<T>(task, *state, plan, written, method & VTS_SS_METHOD_RAW, same_variables);
    if (status != VTS_SS_STATUS_OK) return status;

    const auto x = observations_of<T>(task);
    const int size = plan.tile_size(x.stride);
    alignas(16) double w[tile + 4];
    for (; first < n; first += size) {
        const int m = static_cast<int>(n - first < size ? n - first : size);
        const TileWeights t = weights != nullptr ? read_weights(weights + first, m, w)
                                                 : TileWeights{nullptr, static_cast<double>(m),
                                                               static_cast<double>(m), true};
        add_observations(state->sums, x, first, m, t);
    }
    visit_results<T, false>(task, *state, written);
    state->valid = task.accumulated_weights != nullptr;
    return VTS_SS_STATUS_OK;
}

// From the sums and the cross-product that are in the task.
template <class T> std::int32_t from_sums(Task& task, FieldSet requested) {
    using namespace field;
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const auto* accumulated = static_cast<const T*>(task.accumulated_weights);
    const double n =
        static_cast<double>(accumulated == nullptr ? positive_at(task, task.count) : 0);
    const double W = accumulated != nullptr ? accumulated[0] : n;
    const double W2 = accumulated != nullptr ? accumulated[1] : n;
    Results<T, false> results(task, p, requested, W, W2);
    const double N = results.normaliser_used();
    const auto at = [](const void* array, std::ptrdiff_t i) -> double {
        return array != nullptr ? static_cast<const T*>(array)[i] : 0;
    };

    SymmetricMatrix<T> C{};
    if (requested & matrices)
        C = matrix_at<T>(task, p, task.cross_product, task.cross_product_storage);
    for (std::ptrdiff_t i = 0; i < p; ++i) {
        if (!is_selected(task, i)) continue;
        Moments m = {at(task.sum, i) / W,
                     {0, 0, at(task.raw_sum_2, i), at(task.raw_sum_3, i), at(task.raw_sum_4, i)},
                     {0, 0, at(task.central_sum_2, i), at(task.central_sum_3, i),
                      at(task.central_sum_4, i)}};
        results.moments(i, m);
        // The mean and the central moments may be older than this call.
        m.mean = at(task.mean, i);
        m.central[2] = at(task.central_moment_2, i) * N;
        m.central[3] = at(task.central_moment_3, i) * N;
        m.central[4] = at(task.central_moment_4, i) * N;
        results.shape(i, m);
        if (!(requested & matrices)) continue;
        for (std::ptrdiff_t j = 0; j <= i; ++j)
            if (is_selected(task, j)) results.element(i, j, C.get(i, j), C.get(i, i), C.get(j, j));
    }
    return VTS_SS_STATUS_OK;
}

template <class T> std::int32_t basic(Task* task, std::uint64_t estimates, std::int32_t method) {
    if (task == nullptr) return VTS_SS_STATUS_NULL_TASK;
    const int data_method = method & data_methods;
    const bool one_data_method = data_method != 0 && (data_method & (data_method - 1)) == 0;
    if (!one_data_method && (data_method != 0 || (method & sums_methods) == 0))
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
    const bool matrix_from_sums = data_method == 0 && (requested & field::matrices);
    status = check_layouts(*task, requested, matrix_from_sums);
    if (status != VTS_SS_STATUS_OK) return status;

    return data_method == 0
               ? from_sums<T>(*task, requested)
               : from_observations<T>(*task, written_fields(requested, required, data_method),
                                      data_method);
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
