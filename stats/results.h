// Between the accumulators and the caller's arrays: writing the results, telling
// whether the arrays still hold what was written, and taking up a state from them.
#pragma once

#include <bit>
#include <type_traits>

#include "stats/accumulators.h"
#include "stats/derive.h"
#include "stats/fields.h"
#include "stats/matrix.h"

namespace kef::stats {

// What a variable's results are made of.
struct Moments {
    double mean;
    double raw[5];      // raw[k]: sum of w x^k
    double central[5];  // central[k]: sum of w (x - mean)^k
};

// Puts results into the fields of `written`; or only compares them, bit for bit.
template <class T, bool compare> class Results {
public:
    Results(const Task& task, std::ptrdiff_t p, FieldSet written, double W, double W2)
        : task_(task), written_(written), W_(W), N_(normaliser(W, W2)) {
        if (written & field::covariance)
            covariance_ = matrix_at<T>(task, p, task.covariance, task.covariance_storage);
        if (written & field::correlation)
            correlation_ = matrix_at<T>(task, p, task.correlation, task.correlation_storage);
        if (written & field::cross_product)
            cross_product_ = matrix_at<T>(task, p, task.cross_product, task.cross_product_storage);
    }

    bool same() const { return same_; }
    double normaliser_used() const { return N_; }

    void put(void* array, std::ptrdiff_t i, double value) { put(static_cast<T*>(array)[i], value); }

    void moments(std::ptrdiff_t i, const Moments& m) {
        using namespace field;
        if (written_ & mean) put(task_.mean, i, m.mean);
        if (written_ & raw_moment_2) put(task_.raw_moment_2, i, m.raw[2] / W_);
        if (written_ & raw_moment_3) put(task_.raw_moment_3, i, m.raw[3] / W_);
        if (written_ & raw_moment_4) put(task_.raw_moment_4, i, m.raw[4] / W_);
        if (written_ & central_moment_2) put(task_.central_moment_2, i, m.central[2] / N_);
        if (written_ & central_moment_3) put(task_.central_moment_3, i, m.central[3] / N_);
        if (written_ & central_moment_4) put(task_.central_moment_4, i, m.central[4] / N_);
        if (written_ & central_sum_2) put(task_.central_sum_2, i, m.central[2]);
        if (written_ & central_sum_3) put(task_.central_sum_3, i, m.central[3]);
        if (written_ & central_sum_4) put(task_.central_sum_4, i, m.central[4]);
    }
    void sums(std::ptrdiff_t i, const Moments& m) {
        using namespace field;
        if (written_ & sum) put(task_.sum, i, m.raw[1]);
        if (written_ & raw_sum_2) put(task_.raw_sum_2, i, m.raw[2]);
        if (written_ & raw_sum_3) put(task_.raw_sum_3, i, m.raw[3]);
        if (written_ & raw_sum_4) put(task_.raw_sum_4, i, m.raw[4]);
    }
    void shape(std::ptrdiff_t i, const Moments& m) {
        using namespace field;
        const double* M = m.central;
        if (written_ & kurtosis) put(task_.kurtosis, i, kurtosis_of(W_, M[2], M[4]));
        if (written_ & skewness) put(task_.skewness, i, skewness_of(W_, M[2], M[3]));
        if (written_ & variation) put(task_.variation, i, variation_of(M[2] / N_, m.mean));
    }

    // The matrix elements of variables i >= j, from the cross-products.
    void element(std::ptrdiff_t i, std::ptrdiff_t j, double c_ij, double c_ii, double c_jj) {
        using namespace field;
        if (written_ & cross_product) put(cross_product_, i, j, c_ij);
        if (written_ & covariance) put(covariance_, i, j, c_ij / N_);
        if (written_ & correlation)
            put(correlation_, i, j,
                i == j ? 1.0 : correlation_of(c_ij, std::sqrt(c_ii), std::sqrt(c_jj)));
    }

private:
    void put(T& place, double value) {
        const T rounded = static_cast<T>(value);
        if constexpr (compare) {
            using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
            same_ = same_ && std::bit_cast<Bits>(place) == std::bit_cast<Bits>(rounded);
        } else {
            place = rounded;
        }
    }

    void put(const SymmetricMatrix<T>& matrix, std::ptrdiff_t i, std::ptrdiff_t j, double value) {
        matrix.places(i, j, [&](T& place) { put(place, value); });
    }

    const Task& task_;
    FieldSet written_;
    double W_, N_;
    SymmetricMatrix<T> covariance_{}, correlation_{}, cross_product_{};
    bool same_ = true;
};

// What Basic keeps in the task from call to call.
struct BasicState {
    bool valid;     // `sums` hold the state behind what was last written
    bool single;    // of a task's two precisions
    bool from_raw;  // mean and central moments come from the raw sums
    FieldSet written;
    std::ptrdiff_t p, count;
    std::ptrdiff_t* variable;  // the `count` variables that are processed
    Accumulators sums;
};

// The results of list member a.
inline Moments moments_of(const BasicState& state, std::ptrdiff_t a) {
    const PairSums& s = state.sums.sums[a / 2];
    const int lane = a & 1;
    Moments m{};
    for (int k = 1; k <= 4; ++k) m.raw[k] = s.raw_high[k - 1][lane] + s.raw_low[k - 1][lane];
    if (!state.from_raw) {
        m.mean = s.mean_high[lane];
        m.central[2] = s.central.m2[lane];
        m.central[3] = s.central.m3[lane];
        m.central[4] = s.central.m4[lane];
        return m;
    }
    const double W = state.sums.W;
    const double mean = m.raw[1] / W, R2 = m.raw[2] / W, R3 = m.raw[3] / W, R4 = m.raw[4] / W;
    const double square = mean * mean, variance = R2 - square;
    m.mean = mean;
    m.central[2] = W * (variance < 0 ? 0 : variance);
    m.central[3] = W * (R3 - 3 * mean * R2 + 2 * mean * square);
    m.central[4] = W * (R4 - 4 * mean * R3 + 6 * square * R2 - 3 * square * square);
    return m;
}

// Writes the results of these fields and the accumulated weights, or compares them.
template <class T, bool compare>
bool visit_results(const Task& task, const BasicState& state, FieldSet fields) {
    const Accumulators& A = state.sums;
    Results<T, compare> results(task, state.p, fields, A.W, A.W2);
    if (task.accumulated_weights != nullptr) {
        results.put(task.accumulated_weights, 0, A.W);
        results.put(task.accumulated_weights, 1, A.W2);
    }
    const bool means = !state.from_raw || A.W > 0;
    for (std::ptrdiff_t a = 0; a < state.count && results.same(); ++a) {
        const Moments m = moments_of(state, a);
        const std::ptrdiff_t i = state.variable[a];
        results.sums(i, m);
        if (means) results.moments(i, m), results.shape(i, m);
    }
    if (!(fields & field::matrices)) return results.same();
    const auto C = [&](std::ptrdiff_t a, std::ptrdiff_t b) {
        return A.products[block_index(a / 2, b / 2)].get(a, b);
    };
    for (std::ptrdiff_t a = 0; a < state.count && results.same(); ++a)
        for (std::ptrdiff_t b = 0; b <= a; ++b)
            results.element(state.variable[a], state.variable[b], C(a, b), C(a, a), C(b, b));
    return results.same();
}

// Fills cleared accumulators from the arrays, where W and W2 are those of the
// observations before. Status of a field that is not there.
template <class T> std::int32_t take_up(const Task& task, BasicState& state) {
    using namespace field;
    Accumulators& A = state.sums;
    const double W = A.W, N = normaliser(W, A.W2);
    const bool single_observation = W * W == A.W2;  // all deviations are 0
    const auto has = [&](FieldSet fields) { return (state.written & fields) == fields; };
    const auto at = [](const void* array, std::ptrdiff_t i) -> double {
        return static_cast<const T*>(array)[i];
    };

    // A lone last variable stands in both lanes, and its kernels read both.
    const auto put = [&](d2& pair, std::ptrdiff_t a, double value) {
        pair[a & 1] = value;
        if (A.pair[a / 2].alone()) pair[1] = value;
    };

    // The k-th central sums: `sum` where it is written, else `moment`.
    const auto central = [&](FieldSet sum_field, const void* sum, FieldSet moment_field,
                             const void* moment, d2 CentralSums::*member) {
        if (single_observation) return true;
        const bool sums = has(sum_field);
        if (!sums && !has(moment_field)) return false;
        for (std::ptrdiff_t a = 0; a < state.count; ++a) {
            const std::ptrdiff_t i = state.variable[a];
            put(A.sums[a / 2].central.*member, a, sums ? at(sum, i) : at(moment, i) * N);
        }
        return true;
    };
    const auto raw = [&](int k, FieldSet sum_field, const void* sum, FieldSet moment_field,
                         const void* moment) {
        for (std::ptrdiff_t a = 0; a < state.count; ++a) {
            const std::ptrdiff_t i = state.variable[a];
            d2& raw_sum = A.sums[a / 2].raw_high[k - 1];
            if (has(sum_field)) put(raw_sum, a, at(sum, i));
            else if (has(moment_field)) put(raw_sum, a, at(moment, i) * W);
        }
    };

    if (has(mean))
        for (std::ptrdiff_t a = 0; a < state.count; ++a)
            put(A.sums[a / 2].mean_high, a, at(task.mean, state.variable[a]));
    raw(1, sum, task.sum, mean, task.mean);
    raw(2, raw_sum_2, task.raw_sum_2, raw_moment_2, task.raw_moment_2);
    raw(3, raw_sum_3, task.raw_sum_3, raw_moment_3, task.raw_moment_3);
    raw(4, raw_sum_4, task.raw_sum_4, raw_moment_4, task.raw_moment_4);
    const int order = A.plan.central;
    const bool second = central(central_sum_2, task.central_sum_2, central_moment_2,
                                task.central_moment_2, &CentralSums::m2);
    if (order >= 2 && !second) return VTS_SS_STATUS_NULL_CENTRAL_MOMENT_2;
    if (order >= 3 && !central(central_sum_3, task.central_sum_3, central_moment_3,
                               task.central_moment_3, &CentralSums::m3))
        return VTS_SS_STATUS_NULL_CENTRAL_MOMENT_3;
    if (order >= 4 && !central(central_sum_4, task.central_sum_4, central_moment_4,
                               task.central_moment_4, &CentralSums::m4))
        return VTS_SS_STATUS_NULL_CENTRAL_MOMENT_4;

    if (!A.plan.products || single_observation) return VTS_SS_STATUS_OK;
    if (!has(cross_product) && !has(covariance) && !second) return VTS_SS_STATUS_NULL_COVARIANCE;
    const auto fill = [&](void* data, const void* layout, auto value) {
        const auto matrix = matrix_at<T>(task, state.p, data, layout);
        for (std::ptrdiff_t a = 0; a < state.count; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b)
                A.products[block_index(a / 2, b / 2)].set(
                    a, b, value(matrix.get(state.variable[a], state.variable[b]), a, b));
    };
    const auto root = [&](std::ptrdiff_t a) { return std::sqrt(A.sums[a / 2].central.m2[a & 1]); };
    if (has(cross_product))
        fill(task.cross_product, task.cross_product_storage,
             [](double c, auto, auto) { return c; });
    else if (has(covariance))
        fill(task.covariance, task.covariance_storage, [&](double c, auto, auto) { return c * N; });
    else
        fill(task.correlation, task.correlation_storage,
             [&](double c, auto a, auto b) { return c * root(a) * root(b); });
    return VTS_SS_STATUS_OK;
}

}  // namespace kef::stats
