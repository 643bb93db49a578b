// A statistics task with all its arrays, for tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "stats/fields.h"

namespace stats_tests {

// The functions of one precision.
template <class T> struct Api;
template <> struct Api<double> {
    static constexpr auto new_task = __vtsdSSNewTask;
    static constexpr auto edit = __vtsdSSEditTask;
    static constexpr auto basic = _vtsdSSBasic;
    static constexpr auto minmax = _vtsdSSMinmax;
    static constexpr auto merge = _vtsdSSMerge;
#define KEF_COMPUTATION(Name, function, ...) static constexpr auto function = _vtsdSS##Name;
#include "stats/computation.def"
};
template <> struct Api<float> {
    static constexpr auto new_task = __vtssSSNewTask;
    static constexpr auto edit = __vtssSSEditTask;
    static constexpr auto basic = _vtssSSBasic;
    static constexpr auto minmax = _vtssSSMinmax;
    static constexpr auto merge = _vtssSSMerge;
#define KEF_COMPUTATION(Name, function, ...) static constexpr auto function = _vtssSS##Name;
#include "stats/computation.def"
};

inline constexpr double nan = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double untouched = -12345;  // what results hold before a call

inline constexpr std::uint64_t mean_and_variance =
    VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2;
inline constexpr std::uint64_t moments =
    VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_RAW_MOMENT_2 | VTS_SS_ESTIMATE_RAW_MOMENT_3 |
    VTS_SS_ESTIMATE_RAW_MOMENT_4 | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2 |
    VTS_SS_ESTIMATE_CENTRAL_MOMENT_3 | VTS_SS_ESTIMATE_CENTRAL_MOMENT_4 | VTS_SS_ESTIMATE_KURTOSIS |
    VTS_SS_ESTIMATE_SKEWNESS | VTS_SS_ESTIMATE_VARIATION;
inline constexpr std::uint64_t sums = VTS_SS_ESTIMATE_SUM | VTS_SS_ESTIMATE_RAW_SUM_2 |
                                      VTS_SS_ESTIMATE_RAW_SUM_3 | VTS_SS_ESTIMATE_RAW_SUM_4 |
                                      VTS_SS_ESTIMATE_CENTRAL_SUM_2 |
                                      VTS_SS_ESTIMATE_CENTRAL_SUM_3 | VTS_SS_ESTIMATE_CENTRAL_SUM_4;
inline constexpr std::uint64_t matrices =
    VTS_SS_ESTIMATE_COVARIANCE | VTS_SS_ESTIMATE_CORRELATION | VTS_SS_ESTIMATE_CROSS_PRODUCT;
inline constexpr std::uint64_t everything = moments | sums | matrices;
inline constexpr int data_methods[] = {VTS_SS_METHOD_RAW, VTS_SS_METHOD_RECURRENCE,
                                       VTS_SS_METHOD_TILED};

using kef::stats::FieldSet;
using kef::stats::Requirements;

// The fields that estimates require for a method over x.
inline FieldSet required_for(std::uint64_t estimates, int method) {
    return kef::stats::required_fields(
        kef::stats::requested_fields(estimates),
        method == VTS_SS_METHOD_RAW ? Requirements::raw : Requirements::observed);
}

// A task over data of its own; every result array holds `untouched`, and those among `fields` are
// registered.
template <class T> struct Problem {
    std::int32_t p, n, storage, layout = VTS_SS_LAYOUT_FULL;
    std::vector<T> x, weights;
    std::vector<T> accumulated = {0, 0};
#define KEF_ESTIMATE(NAME, result, ...) std::vector<T> result;
#include "stats/estimate.def"
    kef_ss_task* task = nullptr;

    // data[j*p + i] is variable i of observation j.
    Problem(int p, int n, const std::vector<T>& data, const std::vector<T>& w = {},
            int storage = VTS_SS_STORAGE_COLUMNS, FieldSet fields = ~FieldSet(0))
        : p(p), n(n), storage(storage), x(data), weights(w) {
        if (storage == VTS_SS_STORAGE_ROWS)
            for (int i = 0; i < p; ++i)
                for (int j = 0; j < n; ++j) x[i * n + j] = data[j * p + i];
        EXPECT_EQ(VTS_SS_STATUS_OK,
                  Api<T>::new_task(&task, &this->p, &this->n, &this->storage, x.data(),
                                   weights.empty() ? nullptr : weights.data(), nullptr, 0));
        set(VTS_SS_ID_ACCUMULATED_WEIGHTS, accumulated);
#define KEF_ELEMENTS_vector p
#define KEF_ELEMENTS_matrix p* p
#define KEF_LAYOUT_vector(NAME)
#define KEF_LAYOUT_matrix(NAME) \
    EXPECT_EQ(0, __vtsiSSEditTask(task, VTS_SS_ID_##NAME##_STORAGE, &layout));
#define KEF_ESTIMATE(NAME, result, status, shape, ...)                     \
    result.assign(KEF_ELEMENTS_##shape, T(untouched));                     \
    if (fields & kef::stats::field::result) set(VTS_SS_ID_##NAME, result); \
    KEF_LAYOUT_##shape(NAME)
#include "stats/estimate.def"
    }
    ~Problem() { __vtsSSDeleteTask(&task); }
    Problem(const Problem&) = delete;

    void set(std::int64_t id, const std::vector<T>& array) {
        EXPECT_EQ(VTS_SS_STATUS_OK, Api<T>::edit(task, id, array.data()));
    }

    std::int32_t basic(std::uint64_t estimates, int method) {
        return Api<T>::basic(task, estimates, method);
    }

    // A block of the data, which are in columns.
    std::int32_t block(int first, int count, std::uint64_t estimates, int method) {
        const std::int32_t total = n;
        n = count;
        Api<T>::edit(task, VTS_SS_ID_X, x.data() + first * p);
        if (!weights.empty()) Api<T>::edit(task, VTS_SS_ID_WEIGHTS, weights.data() + first);
        const std::int32_t status = basic(estimates, method);
        n = total;
        return status;
    }

    void basic_in_blocks(std::uint64_t estimates, int method, int size) {
        for (int first = 0; first < n; first += size)
            ASSERT_EQ(VTS_SS_STATUS_OK, block(first, std::min(size, n - first), estimates, method));
    }

    // The contents of all arrays, as a caller saves them and brings them back.
    void take_over(Problem& other) {
        const auto from = other.results(), to = results();
        for (std::size_t k = 0; k < from.size(); ++k)
            std::copy(from[k].second->begin(), from[k].second->end(), to[k].second->begin());
        std::copy(other.accumulated.begin(), other.accumulated.end(), accumulated.begin());
    }

    // All results by name, for comparisons.
    std::vector<std::pair<std::string, std::vector<T>*>> results() {
        return {
#define KEF_ESTIMATE(NAME, result, ...) {#result, &result},
#include "stats/estimate.def"
        };
    }
};

// Normal numbers around `offset` + the variable's number.
template <class T> std::vector<T> normal_data(int p, int n, double offset, unsigned seed = 1) {
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    std::vector<T> data(static_cast<std::size_t>(p) * n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < p; ++i)
            data[j * p + i] = static_cast<T>(offset + i + normal(generator) * (1 + i % 3));
    return data;
}

template <class T> std::vector<T> weights_for(int n, unsigned seed = 2) {
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(0.1, 3);
    std::vector<T> w(n);
    for (T& weight : w) weight = static_cast<T>(uniform(generator));
    return w;
}

}  // namespace stats_tests
