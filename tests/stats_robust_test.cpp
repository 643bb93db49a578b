// Outliers and robust covariances: published data sets, contaminated data, invariances, bad input.
#include <functional>

#include "tests/robust_reference.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

// A task for both computations.
template <class T> struct Robust {
    std::int32_t p, n, storage = VTS_SS_STORAGE_COLUMNS, layout = VTS_SS_LAYOUT_FULL;
    std::int32_t outlier_count = 3, robust_count = 4;
    std::vector<T> x, outlier = {2, T(0.05), 0}, robust = {T(0.375), T(0.01), T(1e-12), 200};
    std::vector<T> weights, mean, covariance;
    std::vector<std::int32_t> indices;
    kef_ss_task* task = nullptr;

    Robust(int p, const std::vector<T>& rows)
        : p(p), n(int(rows.size()) / p), x(rows), weights(n), mean(p), covariance(p * p) {
        clear();
        Api<T>::new_task(&task, &this->p, &n, &storage, x.data(), nullptr, nullptr, 0);
        __vtsiSSEditTask(task, VTS_SS_ID_OUTLIER_PARAMETER_COUNT, &outlier_count);
        __vtsiSSEditTask(task, VTS_SS_ID_ROBUST_PARAMETER_COUNT, &robust_count);
        __vtsiSSEditTask(task, VTS_SS_ID_ROBUST_COVARIANCE_STORAGE, &layout);
        Api<T>::edit(task, VTS_SS_ID_OUTLIER_PARAMETERS, outlier.data());
        Api<T>::edit(task, VTS_SS_ID_OUTLIER_WEIGHTS, weights.data());
        Api<T>::edit(task, VTS_SS_ID_ROBUST_PARAMETERS, robust.data());
        Api<T>::edit(task, VTS_SS_ID_ROBUST_MEAN, mean.data());
        Api<T>::edit(task, VTS_SS_ID_ROBUST_COVARIANCE, covariance.data());
    }
    explicit Robust(const ReferenceSet& set)
        : Robust(set.p, std::vector<T>(set.rows.begin(), set.rows.end())) {}
    ~Robust() { __vtsSSDeleteTask(&task); }
    Robust(const Robust&) = delete;

    void clear() {
        for (auto* results : {&weights, &mean, &covariance})
            std::fill(results->begin(), results->end(), T(untouched));
    }
    bool is_clear() const {
        for (auto* results : {&weights, &mean, &covariance})
            for (T value : *results)
                if (value != T(untouched)) return false;
        return true;
    }
    void by_rows() {
        const auto columns = x;
        for (int i = 0; i < p; ++i)
            for (int j = 0; j < n; ++j) x[i * n + j] = columns[j * p + i];
        storage = VTS_SS_STORAGE_ROWS;
    }
    void select(const std::vector<std::int32_t>& flags) {
        indices = flags;
        __vtsiSSEditTask(task, VTS_SS_ID_INDICES, indices.data());
    }
    std::int32_t detect() { return Api<T>::outliers_detection(task, 0, 0); }
    std::int32_t estimate() { return Api<T>::robust_covariance(task, 0, 0); }
    std::vector<int> outliers() const {  // from 1
        std::vector<int> found;
        for (int j = 0; j < n; ++j) {
            EXPECT_TRUE(weights[j] == 0 || weights[j] == 1);
            if (weights[j] == 0) found.push_back(j + 1);
        }
        return found;
    }
};

template <class T> void near(const Robust<T>& a, const Robust<T>& b, double bound) {
    ASSERT_EQ(a.p, b.p);
    for (int i = 0; i < a.p; ++i) {
        const double s = std::sqrt(double(b.covariance[i * a.p + i]));
        EXPECT_NEAR(a.mean[i], b.mean[i], bound * s) << i;
        for (int j = 0; j < a.p; ++j)
            EXPECT_NEAR(a.covariance[i * a.p + j], b.covariance[i * a.p + j],
                        bound * s * std::sqrt(double(b.covariance[j * a.p + j])))
                << i << ' ' << j;
    }
}

// The published ones: hbk 1 to 14, wood 4, 6, 8, 19.
template <class T> class StatsRobust : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(StatsRobust, Precisions);

TYPED_TEST(StatsRobust, PublishedOutliers) {
    for (const TypeParam start : {1, 2}) {
        Robust<TypeParam> hbk(RobustReference::get().sets.at("hbk"));
        hbk.outlier[0] = start;
        ASSERT_EQ(VTS_SS_STATUS_OK, hbk.detect());
        EXPECT_EQ((std::vector{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}), hbk.outliers());
    }
    Robust<TypeParam> wood(RobustReference::get().sets.at("wood"));
    ASSERT_EQ(VTS_SS_STATUS_OK, wood.detect());
    EXPECT_EQ((std::vector{4, 6, 8, 19}), wood.outliers());
}

TYPED_TEST(StatsRobust, PublishedEstimates) {
    const auto estimates = RobustReference::get().of("robust");
    EXPECT_EQ(9u, estimates.size());
    for (const ReferenceEstimate& e : estimates) {
        SCOPED_TRACE(testing::Message() << e.set << ' ' << e.breakdown << ' ' << e.rejection);
        Robust<TypeParam> expected(RobustReference::get().sets.at(e.set)),
            task(RobustReference::get().sets.at(e.set));
        expected.mean.assign(e.mean.begin(), e.mean.end());
        expected.covariance.assign(e.covariance.begin(), e.covariance.end());
        task.robust[0] = TypeParam(e.breakdown), task.robust[1] = TypeParam(e.rejection);
        ASSERT_EQ(VTS_SS_STATUS_OK, task.estimate());
        // The package solves for c to 1e-8; tools/robust_reference.R to the end.
        near(task, expected, sizeof(TypeParam) == 4 ? 1e-5 : e.rejection < 1e-9 ? 1e-8 : 1e-10);
    }
}

// Normal data, a share of it in a tight cluster.
template <class T> std::vector<T> contaminated(int p, int n, double share, double distance) {
    auto rows = normal_data<double>(p, n, 0, 7);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < p; ++i) {
            double& x = rows[j * p + i];
            x = (x - i) / (1 + i % 3);
            if (j < share * n) x = distance + x / 10;
        }
    return std::vector<T>(rows.begin(), rows.end());
}

TYPED_TEST(StatsRobust, Contamination) {
    const struct {
        int p, n;
        double share;
    } cases[] = {{5, 500, 0.25}, {10, 1000, 0.30}, {1, 200, 0.4}, {2, 151, 0.35}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.p);
        Robust<TypeParam> task(c.p, contaminated<TypeParam>(c.p, c.n, c.share, 8));
        task.robust = {TypeParam(0.5), TypeParam(0.05), TypeParam(1e-6), 200};
        ASSERT_EQ(VTS_SS_STATUS_OK, task.estimate());
        double square = 0;
        for (const double m : task.mean) square += m * m;
        EXPECT_LT(std::sqrt(square), 0.2);
        for (int i = 1; i < c.p; ++i)  // of the same size, if larger than without outliers
            EXPECT_NEAR(1, task.covariance[i * c.p + i] / task.covariance[0], 0.4);
        ASSERT_EQ(VTS_SS_STATUS_OK, task.detect());
        int found = 0;
        for (int j = 0; j < c.share * c.n; ++j) found += task.weights[j] == 0;
        EXPECT_EQ(int(std::ceil(c.share * c.n)), found);
        EXPECT_LE(int(task.outliers().size()), found + 3);
    }
}

// Layouts, storages and indices change what is read and where it is written, not the results.
TYPED_TEST(StatsRobust, LayoutsStoragesIndices) {
    const auto rows = contaminated<TypeParam>(4, 101, 0.2, 9);
    std::vector<TypeParam> kept;
    for (std::size_t k = 0; k < rows.size(); ++k)
        if (k % 4 != 1) kept.push_back(rows[k]);
    Robust<TypeParam> three(3, kept);
    ASSERT_EQ(VTS_SS_STATUS_OK, three.detect());
    ASSERT_EQ(VTS_SS_STATUS_OK, three.estimate());
    const int place[] = {0, -1, 1, 2};
    for (const bool by_rows : {false, true})
        for (const int layout : {VTS_SS_LAYOUT_FULL, VTS_SS_LAYOUT_LOWER, VTS_SS_LAYOUT_UPPER}) {
            Robust<TypeParam> four(4, rows);
            if (by_rows) four.by_rows();
            four.select({1, 0, 7, -1});
            four.layout = layout;
            ASSERT_EQ(VTS_SS_STATUS_OK, four.detect());
            ASSERT_EQ(VTS_SS_STATUS_OK, four.estimate());
            EXPECT_EQ(three.weights, four.weights);
            EXPECT_EQ(TypeParam(untouched), four.mean[1]);
            const double bound = sizeof(TypeParam) == 8 ? 1e-11 : 1e-6;
            int written = 0;
            for (TypeParam c : four.covariance) written += c != TypeParam(untouched);
            EXPECT_EQ(layout == VTS_SS_LAYOUT_FULL ? 9 : 6, written);
            for (int i = 0; i < 4; ++i) {
                if (i == 1) continue;
                EXPECT_NEAR(three.mean[place[i]], four.mean[i], bound);
                for (int j = 0; j <= i; ++j) {
                    if (j == 1) continue;
                    const int index = layout == VTS_SS_LAYOUT_FULL ? i * 4 + j
                                      : layout == VTS_SS_LAYOUT_LOWER
                                          ? i * (i + 1) / 2 + j
                                          : j * 4 - j * (j - 1) / 2 + i - j;
                    EXPECT_NEAR(three.covariance[place[i] * 3 + place[j]], four.covariance[index],
                                bound * 3);
                    if (layout == VTS_SS_LAYOUT_FULL)
                        EXPECT_EQ(four.covariance[index], four.covariance[j * 4 + i]);
                }
            }
        }
    Robust<TypeParam> none(4, rows);
    none.select({0, 0, 0, 0});
    EXPECT_EQ(VTS_SS_STATUS_OK, none.detect());
    EXPECT_EQ(VTS_SS_STATUS_OK, none.estimate());
    EXPECT_TRUE(none.is_clear());
}

// Another unit and origin for each variable, and an outlier as far as doubles go, change nothing.
TEST(StatsRobustData, UnitsOriginsAndFarOutliers) {
    const int p = 3, n = 200;
    auto rows = contaminated<double>(p, n, 0.1, 50);
    Robust<double> plain(p, rows);
    plain.outlier[0] = 1;
    ASSERT_EQ(VTS_SS_STATUS_OK, plain.detect());
    ASSERT_EQ(VTS_SS_STATUS_OK, plain.estimate());
    // The squares of the second variable's values overflow, not those of its deviations.
    const double unit[] = {0x1p100, 0x1p490, 1}, origin[] = {0, 0x1p525, 0x1p30};
    for (std::size_t k = 0; k < rows.size(); ++k) rows[k] = rows[k] * unit[k % 3] + origin[k % 3];
    Robust<double> other(p, rows);
    other.outlier[0] = 1;
    ASSERT_EQ(VTS_SS_STATUS_OK, other.detect());
    EXPECT_EQ(plain.weights, other.weights);
    other.robust[2] = 1e-8;
    ASSERT_EQ(VTS_SS_STATUS_OK, other.estimate());
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j)
            EXPECT_NEAR(plain.covariance[i * p + j] /
                            std::sqrt(plain.covariance[i * 4] * plain.covariance[j * 4]),
                        other.covariance[i * p + j] / unit[i] / unit[j] /
                            std::sqrt(plain.covariance[i * 4] * plain.covariance[j * 4]),
                        1e-4);

    rows = contaminated<double>(p, n, 0.1, 50);
    Robust<double> near_one(p, rows);
    near_one.x[0] = 1e4;
    ASSERT_EQ(VTS_SS_STATUS_OK, near_one.estimate());
    Robust<double> far(p, rows);
    far.x[0] = 1e130;
    ASSERT_EQ(VTS_SS_STATUS_OK, far.detect());
    EXPECT_EQ(0, far.weights[0]);
    ASSERT_EQ(VTS_SS_STATUS_OK, far.estimate());
    near(far, near_one, 1e-10);
}

// The first subset grows until its covariance is regular: what is near the medians has one value of
// a variable. Where a later subset loses its last other value, there is no answer.
TEST(StatsRobustData, FirstSubsetGrows) {
    auto rows = normal_data<double>(3, 400, 0, 3);
    for (int j = 0; j < 400; ++j) {
        double* x = &rows[j * 3];
        if (std::hypot(x[0], x[1] - 1, x[2] - 2) < 1.5) x[2] = 2;
    }
    Robust<double> flat(3, rows);
    ASSERT_EQ(VTS_SS_STATUS_OK, flat.detect());
    EXPECT_LT(flat.outliers().size(), 4u);
    for (int j = 0; j < 300; ++j) flat.x[j * 3 + 2] = 2;
    EXPECT_EQ(VTS_SS_STATUS_NOT_POSITIVE_DEFINITE, flat.detect());
}

// Fewer observations than BACON wants: from the M-estimate, to the same place.
TEST(StatsRobustData, FewObservations) {
    const auto rows = normal_data<double>(5, 16, 0, 5);
    Robust<double> few(5, rows);
    few.robust[0] = 0.2;
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, few.detect());
    ASSERT_EQ(VTS_SS_STATUS_OK, few.estimate());
    const auto again = few.mean;
    few.robust[3] = 1e9;
    few.robust[2] = 1e-14;
    ASSERT_EQ(VTS_SS_STATUS_OK, few.estimate());
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(again[i], few.mean[i], 1e-9);
}

TYPED_TEST(StatsRobust, BadInput) {
    using Task = Robust<TypeParam>;
    const TypeParam nan_value = std::numeric_limits<TypeParam>::quiet_NaN();
    const TypeParam huge = std::numeric_limits<TypeParam>::max();
    constexpr int parameters = VTS_SS_STATUS_BAD_PARAMETERS,
                  few = VTS_SS_STATUS_TOO_FEW_OBSERVATIONS,
                  singular = VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    const struct {
        std::function<void(Task&)> spoil;
        std::int32_t detect, estimate;  // 0: not looked at
    } cases[] = {
        {[](Task& t) { t.outlier_count = 2, t.robust_count = 5; }, parameters, parameters},
        {[](Task& t) { t.outlier[0] = 0, t.robust[0] = 0; }, parameters, parameters},
        {[](Task& t) { t.outlier[0] = 3, t.robust[0] = TypeParam(0.51); }, parameters, parameters},
        {[](Task& t) { t.outlier[0] = TypeParam(1.5), t.robust[1] = 0; }, parameters, parameters},
        {[](Task& t) { t.outlier[1] = TypeParam(1e-31), t.robust[0] = TypeParam(1e-10); },
         parameters, parameters},
        {[](Task& t) { t.outlier[2] = 1, t.robust[1] = TypeParam(1e-31); }, parameters, parameters},
        {[](Task& t) { t.outlier[1] = 0, t.robust[1] = 1; }, parameters, parameters},
        {[](Task& t) { t.outlier[1] = 1, t.robust[2] = -1; }, parameters, parameters},
        {[](Task& t) { t.outlier[2] = -1, t.robust[3] = 0; }, parameters, parameters},
        {[=](Task& t) { t.outlier[1] = nan_value, t.robust[3] = nan_value; }, parameters,
         parameters},
        {[=](Task& t) { t.outlier[2] = nan_value, t.robust[2] = nan_value; }, parameters,
         parameters},
        {[](Task& t) { t.n = 10; }, few, 0},
        {[](Task& t) { t.n = 3; }, few, few},
        {[=](Task& t) { t.x[200] = nan_value; }, singular, singular},
        {[=](Task& t) { t.x[200] = huge * 2; }, singular, singular},
        {[](Task& t) {
             for (int j = 0; j < t.n; ++j) t.x[j * 3 + 1] = 5;
         },
         singular, singular},
        {[](Task& t) {
             for (auto& x : t.x) x = 5;
         },
         singular, singular},
        {[](Task& t) {
             for (int j = 0; j < t.n; ++j)
                 t.x[j * 3 + 2] = t.x[j * 3] = std::round(t.x[j * 3] * 8) / 8;
         },
         singular, singular},
    };
    for (const auto& c : cases)
        for (const TypeParam start : {2, 1}) {
            SCOPED_TRACE(testing::Message() << "case " << &c - cases << " start " << start);
            Task task(3, contaminated<TypeParam>(3, 150, 0.2, 20));
            task.outlier[0] = start;
            const auto x = task.x;
            const auto outlier = task.outlier, robust = task.robust;
            const auto n = task.n;
            c.spoil(task);
            EXPECT_EQ(c.detect, task.detect());
            if (c.estimate != 0) EXPECT_EQ(c.estimate, task.estimate());
            EXPECT_TRUE(task.is_clear());
            // The task goes on as if the call had not been.
            std::copy(x.begin(), x.end(), task.x.begin());
            std::copy(outlier.begin(), outlier.end(), task.outlier.begin());
            std::copy(robust.begin(), robust.end(), task.robust.begin());
            task.n = n, task.outlier_count = 3, task.robust_count = 4;
            EXPECT_EQ(VTS_SS_STATUS_OK, task.detect());
            EXPECT_EQ(VTS_SS_STATUS_OK, task.estimate());
        }
}

// What overflows has no estimate, nor have infinities, however many there are.
TYPED_TEST(StatsRobust, Overflow) {
    const auto rows = normal_data<TypeParam>(1, 1024, 0);
    const TypeParam far = std::sqrt(std::numeric_limits<TypeParam>::max()) * 4;
    Robust<TypeParam> task(1, rows);
    std::fill_n(task.x.begin(), 400, far);
    EXPECT_EQ(VTS_SS_STATUS_NOT_POSITIVE_DEFINITE, task.estimate());
    std::fill_n(task.x.begin(), 256, TypeParam(infinity));
    std::copy(rows.begin() + 256, rows.end(), task.x.begin() + 256);
    EXPECT_EQ(VTS_SS_STATUS_NOT_POSITIVE_DEFINITE, task.detect());
    EXPECT_EQ(VTS_SS_STATUS_NOT_POSITIVE_DEFINITE, task.estimate());
    EXPECT_TRUE(task.is_clear());
    std::fill_n(task.x.begin(), 256, far);
    EXPECT_EQ(VTS_SS_STATUS_OK, task.detect());
    EXPECT_EQ(VTS_SS_STATUS_OK, task.estimate());
    EXPECT_GT(20, task.covariance[0]);
}

// The ends of the ranges of the parameters.
TYPED_TEST(StatsRobust, Extremes) {
    Robust<TypeParam> task(3, contaminated<TypeParam>(3, 150, 0.2, 20));
    for (const double alpha : {1.1e-30, 0.999}) {
        task.outlier[1] = TypeParam(alpha);
        EXPECT_EQ(VTS_SS_STATUS_OK, task.detect());
        EXPECT_LE(30u, task.outliers().size());
    }
    // Without outliers all of these estimate the same.
    Robust<TypeParam> clean(3, normal_data<TypeParam>(3, 2000, 0));
    clean.robust[2] = TypeParam(1e-6);
    for (const double breakdown : {1.1e-9, 0.01, 0.5})
        for (const double rejection : {1.1e-30, 1e-5, 0.999}) {
            SCOPED_TRACE(testing::Message() << breakdown << ' ' << rejection);
            clean.robust[0] = TypeParam(breakdown);
            clean.robust[1] = TypeParam(rejection);
            ASSERT_EQ(VTS_SS_STATUS_OK, clean.estimate());
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(i, clean.mean[i], 0.3);
                EXPECT_NEAR(1, clean.covariance[i * 4] / ((1 + i) * (1 + i)), 0.2);
            }
        }
}

// Limits end the iterations, and what they have come to is written.
TYPED_TEST(StatsRobust, IterationLimit) {
    Robust<TypeParam> task(3, contaminated<TypeParam>(3, 150, 0.2, 4));
    ASSERT_EQ(VTS_SS_STATUS_OK, task.estimate());
    const auto mean = task.mean;
    task.clear();
    task.robust[2] = 0;
    task.robust[3] = 40;
    const std::int32_t status = task.estimate();
    EXPECT_TRUE(status == VTS_SS_STATUS_ITERATION_LIMIT || status == VTS_SS_STATUS_OK);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(mean[i], task.mean[i], 1e-4);
    task.robust[3] = 1;
    EXPECT_EQ(VTS_SS_STATUS_ITERATION_LIMIT, task.estimate());
    for (TypeParam m : task.mean) EXPECT_LT(std::abs(m), 1);
}

}  // namespace
}  // namespace stats_tests
