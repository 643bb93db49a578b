// A statistics task with all its arrays, for tests.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kef_stats.h"

namespace stats_tests {

// The functions of one precision.
template <class T> struct Api;
#define KEF_STATS_API(type, T)                                   \
    template <> struct Api<T> {                                  \
        static constexpr auto new_task = __vts##type##SSNewTask; \
        static constexpr auto edit = __vts##type##SSEditTask;    \
        static constexpr auto basic = _vts##type##SSBasic;       \
        static constexpr auto minmax = _vts##type##SSMinmax;     \
    }
KEF_STATS_API(d, double);
KEF_STATS_API(s, float);
#undef KEF_STATS_API

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

// The results that have p values: a member of Problem, its identifier, its estimate.
// clang-format off
#define KEF_VECTOR_RESULTS(X)                                                                \
    X(mean, MEAN)                                                                            \
    X(raw2, RAW_MOMENT_2)                                                                    \
    X(raw3, RAW_MOMENT_3) X(raw4, RAW_MOMENT_4) X(central2, CENTRAL_MOMENT_2)                \
        X(central3, CENTRAL_MOMENT_3) X(central4, CENTRAL_MOMENT_4) X(kurtosis, KURTOSIS)    \
            X(skewness, SKEWNESS) X(variation, VARIATION) X(sum, SUM) X(raw_sum2, RAW_SUM_2) \
                X(raw_sum3, RAW_SUM_3) X(raw_sum4, RAW_SUM_4) X(central_sum2, CENTRAL_SUM_2) \
                    X(central_sum3, CENTRAL_SUM_3) X(central_sum4, CENTRAL_SUM_4)
// clang-format on
#define KEF_MATRIX_RESULTS(X) \
    X(covariance, COVARIANCE) X(correlation, CORRELATION) X(cross_product, CROSS_PRODUCT)

// A task over data of its own; every result array is registered and holds `untouched`.
template <class T> struct Problem {
    std::int32_t p, n, storage, layout = VTS_SS_LAYOUT_FULL;
    std::vector<T> x, weights;
    std::vector<T> accumulated = {0, 0};
#define KEF_MEMBER(name, NAME) std::vector<T> name;
    KEF_VECTOR_RESULTS(KEF_MEMBER)
    KEF_MATRIX_RESULTS(KEF_MEMBER)
#undef KEF_MEMBER
    kef_ss_task* task = nullptr;

    // data[j*p + i] is variable i of observation j.
    Problem(int p, int n, const std::vector<T>& data, const std::vector<T>& w = {},
            int storage = VTS_SS_STORAGE_COLUMNS)
        : p(p), n(n), storage(storage), x(data), weights(w) {
        if (storage == VTS_SS_STORAGE_ROWS)
            for (int i = 0; i < p; ++i)
                for (int j = 0; j < n; ++j) x[i * n + j] = data[j * p + i];
        EXPECT_EQ(VTS_SS_STATUS_OK,
                  Api<T>::new_task(&task, &this->p, &this->n, &this->storage, x.data(),
                                   weights.empty() ? nullptr : weights.data(), nullptr, 0));
        set(VTS_SS_ID_ACCUMULATED_WEIGHTS, accumulated);
#define KEF_REGISTER(name, NAME)  \
    name.assign(p, T(untouched)); \
    set(VTS_SS_ID_##NAME, name);
        KEF_VECTOR_RESULTS(KEF_REGISTER)
#undef KEF_REGISTER
#define KEF_REGISTER(name, NAME)     \
    name.assign(p* p, T(untouched)); \
    set(VTS_SS_ID_##NAME, name);     \
    EXPECT_EQ(0, __vtsiSSEditTask(task, VTS_SS_ID_##NAME##_STORAGE, &layout));
        KEF_MATRIX_RESULTS(KEF_REGISTER)
#undef KEF_REGISTER
    }
    ~Problem() { __vtsSSDeleteTask(&task); }
    Problem(const Problem&) = delete;

    void set(std::int64_t id, const std::vector<T>& array) {
        EXPECT_EQ(VTS_SS_STATUS_OK, Api<T>::edit(task, id, array.data()));
    }

    std::int32_t basic(std::uint64_t estimates, int method) {
        return Api<T>::basic(task, estimates, method);
    }

    // The data block by block; data in columns.
    void basic_in_blocks(std::uint64_t estimates, int method, int block) {
        const std::int32_t total = n;
        for (int first = 0; first < total; first += block) {
            n = std::min(block, total - first);
            Api<T>::edit(task, VTS_SS_ID_X, x.data() + first * p);
            if (!weights.empty()) Api<T>::edit(task, VTS_SS_ID_WEIGHTS, weights.data() + first);
            ASSERT_EQ(VTS_SS_STATUS_OK, basic(estimates, method));
        }
        n = total;
    }

    // All results by name, for comparisons.
    std::vector<std::pair<std::string, std::vector<T>*>> results() {
        return {
#define KEF_NAMED(name, NAME) {#name, &name},
            KEF_VECTOR_RESULTS(KEF_NAMED) KEF_MATRIX_RESULTS(KEF_NAMED)
#undef KEF_NAMED
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
