// Merging tasks: what one task would hold that had seen everything.
#include <cstring>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

constexpr std::uint64_t extremes = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;

// A part of the data in a task of its own, with extremes.
template <class T> struct Part : Problem<T> {
    std::vector<T> low, high;
    Part(int p, int n, const std::vector<T>& data, const std::vector<T>& w = {},
         int layout = VTS_SS_LAYOUT_FULL)
        : Problem<T>(p, n, data, w), low(p, T(nan)), high(p, T(nan)) {
        this->layout = layout;
        this->set(VTS_SS_ID_MINIMUM, low);
        this->set(VTS_SS_ID_MAXIMUM, high);
    }
    void see(int first, int count, int method) {
        ASSERT_EQ(VTS_SS_STATUS_OK, this->block(first, count, everything, method));
        const std::int32_t n = this->n;
        this->n = count;
        ASSERT_EQ(VTS_SS_STATUS_OK, Api<T>::minmax(this->task, extremes, VTS_SS_METHOD_MINMAX));
        this->n = n;
    }
    std::int32_t merge(Part& other, int method, std::uint64_t estimates = everything | extremes) {
        return Api<T>::merge(this->task, other.task, estimates, method);
    }
};

// Results agree within `bound` of their size.
template <class T> void expect_near(Part<T>& a, Part<T>& b, double bound) {
    const auto x = a.results(), y = b.results();
    for (std::size_t k = 0; k < x.size(); ++k)
        for (std::size_t i = 0; i < x[k].second->size(); ++i) {
            const double u = (*x[k].second)[i], v = (*y[k].second)[i];
            if (u != u && v != v) continue;
            EXPECT_LE(std::fabs(u - v), bound * std::max({std::fabs(u), std::fabs(v), 0.1}))
                << x[k].first << " " << i << ": " << u << ", " << v;
        }
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(a.accumulated[k] / b.accumulated[k], 1, bound);
    for (std::size_t i = 0; i < a.low.size(); ++i) {
        EXPECT_TRUE(a.low[i] == b.low[i] || (std::isnan(a.low[i]) && std::isnan(b.low[i])));
        EXPECT_TRUE(a.high[i] == b.high[i] || (std::isnan(a.high[i]) && std::isnan(b.high[i])));
    }
}

// Any split, either order, unequal means and weights, all methods and an odd number of variables;
// the merged task takes further blocks, and so does the other.
template <class T> void check_splits(double bound) {
    const int p = 3, n = 900;
    auto data = normal_data<T>(p, n, 3);
    for (int j = 0; j < 300 * p; ++j) data[j] += T(20);
    const auto weights = weights_for<T>(n);
    for (const int method : data_methods)
        for (const bool weighted : {false, true})
            for (const int split : {1, 2, 299, 450, 899}) {
                SCOPED_TRACE(testing::Message() << "method " << method << ", weights " << weighted
                                                << ", split " << split);
                const auto w = weighted ? weights : std::vector<T>();
                Part<T> all(p, n, data, w), a(p, n, data, w), b(p, n, data, w);
                Part<T> c(p, n, data, w), d(p, n, data, w);
                all.see(0, n, method);
                for (Part<T>* part : {&a, &c}) part->see(0, split, method);
                for (Part<T>* part : {&b, &d}) part->see(split, n - split, method);
                ASSERT_EQ(VTS_SS_STATUS_OK, a.merge(b, method));
                ASSERT_EQ(VTS_SS_STATUS_OK, d.merge(c, method));
                expect_near(a, all, bound);
                expect_near(d, all, bound);
                // Both go on: with what they have seen, and nothing of the merge in the other.
                Part<T> twice(p, n, data, w), rest(p, n, data, w);
                for (int k = 0; k < 2; ++k) twice.see(0, n, method);
                a.see(0, n, method);
                expect_near(a, twice, bound);
                for (int k = 0; k < 2; ++k) rest.see(split, n - split, method);
                b.see(split, n - split, method);
                expect_near(b, rest, bound);
            }
}

TEST(StatsMerge, AnySplit) {
    check_splits<double>(2e-12);
    check_splits<float>(1e-6);
}

// Data far from zero keep their digits by the states in the tasks, and lose those of the mean when
// the results alone are brought back.
TEST(StatsMerge, StatesAndResults) {
    const int p = 2, n = 1000, method = VTS_SS_METHOD_TILED;
    const auto data = normal_data<double>(p, n, 1e8);
    Part<double> all(p, n, data), a(p, n, data), b(p, n, data);
    all.see(0, n, method), a.see(0, 400, method), b.see(400, 600, method);
    Part<double> copy_a(p, n, data), copy_b(p, n, data);
    copy_a.take_over(a), copy_b.take_over(b);
    ASSERT_EQ(VTS_SS_STATUS_OK, a.merge(b, method));
    EXPECT_NEAR(all.central_sum_2[0], a.central_sum_2[0], 1e-14 * n);
    EXPECT_NEAR(all.central_sum_4[1], a.central_sum_4[1], 1e-12 * n);
    ASSERT_EQ(VTS_SS_STATUS_OK, copy_a.merge(copy_b, method, everything));
    EXPECT_NEAR(all.central_sum_2[0], copy_a.central_sum_2[0], 1e-7 * n);
    EXPECT_NEAR(all.mean[0], copy_a.mean[0], 3e-8);
}

// A task without observations: the other's results on one side, nothing on the other.
TEST(StatsMerge, EmptyTasks) {
    const int p = 3, n = 50, method = VTS_SS_METHOD_TILED;
    const auto data = normal_data<double>(p, n, 1e9);
    Part<double> full(p, n, data), empty(p, n, data), other(p, n, data);
    full.see(0, n, method);
    ASSERT_EQ(VTS_SS_STATUS_OK, empty.merge(other, method));
    EXPECT_EQ(untouched, empty.mean[0]);
    ASSERT_EQ(VTS_SS_STATUS_OK, full.merge(empty, method));
    ASSERT_EQ(VTS_SS_STATUS_OK, empty.merge(full, method));
    expect_near(full, empty, 0);
    empty.see(0, n, method), full.see(0, n, method);  // the low part of the mean went along
    expect_near(full, empty, 0);
}

// Two layouts; a variable that both leave out keeps its results.
TEST(StatsMerge, LayoutsAndIndices) {
    const int p = 3, n = 100, method = VTS_SS_METHOD_RECURRENCE;
    const std::int32_t indices[3] = {1, 0, 1}, others[3] = {1, 1, 0};
    const auto data = normal_data<double>(p, n, 1);
    Part<double> all(p, n, data, {}, VTS_SS_LAYOUT_UPPER), a(p, n, data, {}, VTS_SS_LAYOUT_UPPER);
    Part<double> b(p, n, data, {}, VTS_SS_LAYOUT_LOWER);
    for (Part<double>* part : {&all, &a, &b})
        __vtsiSSEditTask(part->task, VTS_SS_ID_INDICES, indices);
    all.see(0, n, method), a.see(0, 70, method), b.see(70, 30, method);
    ASSERT_EQ(VTS_SS_STATUS_OK, a.merge(b, method));
    expect_near(a, all, 1e-13);
    EXPECT_EQ(untouched, a.mean[1]);
    __vtsiSSEditTask(b.task, VTS_SS_ID_INDICES, others);
    EXPECT_EQ(VTS_SS_STATUS_BAD_DIMENSION, a.merge(b, method));
}

TEST(StatsMerge, Refused) {
    const int p = 2, n = 10, method = VTS_SS_METHOD_TILED;
    const auto data = normal_data<double>(3, n, 1);
    Part<double> a(p, n, data), b(p, n, data), wide(3, n, data);
    Part<float> single(p, n, normal_data<float>(p, n, 1));
    for (Part<double>* part : {&a, &b, &wide}) part->see(0, n, method);
    const auto before = a.mean;
    const auto refused = [&](std::int32_t status, kef_ss_task* task, kef_ss_task* other,
                             std::uint64_t estimates, int by) {
        EXPECT_EQ(status, _vtsdSSMerge(task, other, estimates, by));
    };
    refused(VTS_SS_STATUS_NULL_TASK, nullptr, b.task, everything, method);
    refused(VTS_SS_STATUS_NULL_TASK, a.task, nullptr, everything, method);
    refused(VTS_SS_STATUS_BAD_PARAMETERS, a.task, a.task, everything, method);
    for (const int by : {0, 3, int(VTS_SS_METHOD_SUMS), VTS_SS_METHOD_SUMS + method})
        refused(VTS_SS_STATUS_BAD_METHOD, a.task, b.task, everything, by);
    refused(VTS_SS_STATUS_BAD_PRECISION, a.task, single.task, everything, method);
    refused(VTS_SS_STATUS_BAD_DIMENSION, a.task, wide.task, everything, method);
    const auto without = [&](void* kef_ss_task::*field, std::int32_t status,
                             std::uint64_t estimates) {
        for (Part<double>* part : {&a, &b}) {
            void* const held = part->task->*field;
            part->task->*field = nullptr;
            refused(status, a.task, b.task, estimates, method);
            part->task->*field = held;
        }
    };
    without(&kef_ss_task::mean, VTS_SS_STATUS_NULL_MEAN, VTS_SS_ESTIMATE_MEAN);
    without(&kef_ss_task::accumulated_weights, VTS_SS_STATUS_NULL_ACCUMULATED_WEIGHTS,
            VTS_SS_ESTIMATE_MEAN);
    without(&kef_ss_task::minimum, VTS_SS_STATUS_NULL_MINIMUM, extremes);
    without(&kef_ss_task::maximum, VTS_SS_STATUS_NULL_MAXIMUM, extremes);
    b.layout = 3;
    refused(VTS_SS_STATUS_NULL_STORAGE, a.task, b.task, everything, method);
    b.layout = VTS_SS_LAYOUT_FULL;
    EXPECT_EQ(before, a.mean);
    EXPECT_EQ(VTS_SS_STATUS_OK, a.merge(b, method));
    EXPECT_EQ(2.0 * n, a.accumulated[0]);
}

}  // namespace
}  // namespace stats_tests
