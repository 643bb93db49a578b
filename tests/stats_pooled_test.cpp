// Pooled covariance, and means and covariances of groups, beside the same in 113 bits.
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

using Quad = __float128;

struct Group {
    Quad W = 0, W2 = 0, divisor = 0;
    std::vector<Quad> mean, product;  // p, p by p
};

// Two passes over the members.
template <class T>
Group exact_group(int p, const std::vector<T>& data, const std::vector<T>& w,
                  const std::vector<int>& members) {
    Group g;
    g.mean.assign(p, 0);
    g.product.assign(p * p, 0);
    const auto weight = [&](int j) { return w.empty() ? Quad(1) : Quad(w[j]); };
    for (const int j : members) {
        g.W += weight(j);
        g.W2 += weight(j) * weight(j);
        for (int i = 0; i < p; ++i) g.mean[i] += weight(j) * data[j * p + i];
    }
    for (Quad& m : g.mean) m /= g.W;
    for (const int j : members)
        for (int i = 0; i < p; ++i)
            for (int k = 0; k < p; ++k)
                g.product[i * p + k] +=
                    weight(j) * (data[j * p + i] - g.mean[i]) * (data[j * p + k] - g.mean[k]);
    return g;
}

// A task with all results of the computation.
template <class T> struct Pooled : Problem<T> {
    int groups;
    std::vector<std::int32_t> group, wanted;
    std::vector<T> pooled_mean, pooled, means, covariances;
    Pooled(int p, int n, int groups, const std::vector<T>& data, const std::vector<T>& w,
           const std::vector<std::int32_t>& group, int storage, int layout)
        : Problem<T>(p, n, data, w, storage, 0),
          groups(groups),
          group(group),
          wanted(groups, 0),
          pooled_mean(p + 1, T(untouched)),
          pooled(p * p + 1, T(untouched)),
          means(groups * p + 1, T(untouched)),
          covariances(groups * p * p + 1, T(untouched)) {
        this->layout = layout;
        for (int g = 0; g < groups; ++g) wanted[g] = g % 3 != 1;
        __vtsiSSEditTask(this->task, VTS_SS_ID_GROUP_INDICES, this->group.data());
        __vtsiSSEditTask(this->task, VTS_SS_ID_REQUESTED_GROUPS, wanted.data());
        __vtsiSSEditTask(this->task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &this->layout);
        __vtsiSSEditTask(this->task, VTS_SS_ID_GROUP_COVARIANCE_STORAGE, &this->layout);
        this->set(VTS_SS_ID_POOLED_MEAN, pooled_mean);
        this->set(VTS_SS_ID_POOLED_COVARIANCE, pooled);
        this->set(VTS_SS_ID_GROUP_MEANS, means);
        this->set(VTS_SS_ID_GROUP_COVARIANCES, covariances);
    }
    std::int32_t call() { return Api<T>::pooled_covariance(this->task, 0, 0); }
    bool is_untouched() const {
        for (const auto* results : {&pooled_mean, &pooled, &means, &covariances})
            for (const T x : *results)
                if (x != T(untouched)) return false;
        return true;
    }
};

int matrix_size(int p, int layout) {
    return layout == VTS_SS_LAYOUT_FULL ? p * p : p * (p + 1) / 2;
}

// Which places of a matrix hold element i, j.
std::vector<int> places(int p, int layout, int i, int j) {
    const int low = std::max(i, j), high = std::min(i, j);
    if (layout == VTS_SS_LAYOUT_FULL) return {i * p + j, j * p + i};
    if (layout == VTS_SS_LAYOUT_LOWER) return {low * (low + 1) / 2 + high};
    return {high * p - high * (high - 1) / 2 + low - high};
}

// Compares a matrix with products / divisor, on the scale of the variances; what the indices leave
// out is untouched.
template <class T>
void expect_matrix(int p, int layout, const T* matrix, const std::vector<Quad>& product,
                   Quad divisor, const std::vector<std::int32_t>& selected, double bound) {
    for (int i = 0; i < p; ++i)
        for (int j = 0; j <= i; ++j)
            for (const int place : places(p, layout, i, j)) {
                if (!selected[i] || !selected[j]) {
                    ASSERT_EQ(T(untouched), matrix[place]);
                    continue;
                }
                const double scale = std::sqrt(double(product[i * p + i] / divisor) *
                                               double(product[j * p + j] / divisor));
                ASSERT_LE(std::fabs(double(matrix[place] - product[i * p + j] / divisor)),
                          bound * scale)
                    << i << ", " << j;
            }
}

void expect_mean(double mean, Quad exact, double epsilon) {
    ASSERT_LE(std::fabs(double(mean - exact)),
              4 * epsilon * std::max(1e3, std::fabs(double(exact))));
}

// Groups at random, in runs, of very different sizes, in turn, with members left out and none.
std::vector<std::int32_t> group_indices(int n, int groups, int pattern) {
    std::vector<std::int32_t> group(n);
    std::mt19937 generator(pattern);
    for (int j = 0; j < n; ++j) switch (pattern) {
            case 0: group[j] = static_cast<int>(generator() % groups); break;
            case 1: group[j] = static_cast<int>(std::int64_t(j) * groups / n); break;
            case 2: group[j] = std::min<int>(groups - 1, j < 2 ? j : 2 + j / 700); break;
            case 3: group[j] = j % groups; break;
            default: group[j] = static_cast<int>(generator() % (groups + 1)) - 1;
        }
    if (groups > 4)
        for (auto& g : group) g = g == 3 ? 4 : g;  // nobody in 3
    return group;
}

// Data in groups far apart, their first value far from its group, and the results as they should
// be.
template <class T> struct Expected {
    int p, n, groups;
    std::vector<std::int32_t> group;
    std::vector<T> data, w;
    std::vector<Group> of;  // without members: W = 0
    std::vector<Quad> mean, product;
    Quad B = 0;
    Expected(int p, int n, int most, int pattern, bool weighted)
        : p(p),
          n(n),
          group(group_indices(n, most, pattern)),
          data(normal_data<T>(p, n, 0)),
          mean(p, 0),
          product(p * p, 0) {
        groups = 1 + std::max(0, *std::max_element(group.begin(), group.end()));
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < p; ++i) data[j * p + i] += T(1000 * group[j]);
        data[0] += T(1e5);
        if (weighted) w = weights_for<T>(n);
        if (weighted && n > 1000 && most < 9)  // that grow and outweigh all before
            for (int j = 0; j < n; ++j) w[j] *= T(1 << j % 16);
        for (std::size_t j = n > 1000 ? 705 : 5; j < w.size(); j += 11) w[j] = 0;
        std::vector<std::vector<int>> members(groups);
        for (int j = 0; j < n; ++j)
            if (group[j] >= 0 && (w.empty() || w[j] != 0)) members[group[j]].push_back(j);
        Quad W = 0;
        for (const auto& list : members) {
            of.push_back(list.empty() ? Group() : exact_group(p, data, w, list));
            Group& g = of.back();
            g.divisor = list.size() > 1 ? g.W - g.W2 / g.W : g.W;
            if (list.size() > 1) B += g.divisor;
            W += g.W;
            for (std::size_t i = 0; i < g.mean.size(); ++i) mean[i] += g.W * g.mean[i];
            for (std::size_t k = 0; k < g.product.size(); ++k) product[k] += g.product[k];
        }
        for (Quad& m : mean) m /= W;
    }
};

template <class T>
void check_pooled(const Expected<T>& exact, int storage, int layout,
                  std::vector<std::int32_t> selected) {
    constexpr double epsilon = sizeof(T) == 8 ? 0x1p-52 : 0x1p-24 * (1 + 1e-6);
    const int p = exact.p, last = p - 1, size = matrix_size(p, layout);
    Pooled<T> problem(p, exact.n, exact.groups, exact.data, exact.w, exact.group, storage, layout);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_INDICES, selected.data());
    if (exact.B == 0) {
        EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, problem.call());
        EXPECT_TRUE(problem.is_untouched());
        return;
    }
    const auto expect_means = [&](const T* means, const std::vector<Quad>& expected) {
        for (int i = 0; i < p; ++i)
            if (selected[i]) expect_mean(means[i], expected[i], epsilon);
            else ASSERT_EQ(T(untouched), means[i]);
    };
    // From a used task the same; at last without covariances of groups.
    for (const bool own : {true, true, false}) {
        if (!own) {
            problem.task->group_covariances = nullptr;
            std::fill(problem.covariances.begin(), problem.covariances.end(), T(untouched));
        }
        ASSERT_EQ(VTS_SS_STATUS_OK, problem.call());
        expect_means(problem.pooled_mean.data(), exact.mean);
        expect_matrix(p, layout, problem.pooled.data(), exact.product, exact.B, selected,
                      32 * epsilon);
        const T *means = problem.means.data(), *matrix = problem.covariances.data();
        for (int g = 0; g < exact.groups; ++g) {
            if (!problem.wanted[g]) continue;
            if (exact.of[g].W != 0) {
                expect_means(means, exact.of[g].mean);
                if (own)
                    expect_matrix(p, layout, matrix, exact.of[g].product, exact.of[g].divisor,
                                  selected, 32 * epsilon);
            } else if (selected[last]) {
                EXPECT_TRUE(std::isnan(means[last]));
                EXPECT_EQ(own, std::isnan(matrix[places(p, layout, last, last)[0]]));
            }
            means += p, matrix += size;
        }
        ASSERT_EQ(T(untouched), *means);
        ASSERT_EQ(T(untouched), *matrix);
        ASSERT_EQ(T(untouched), problem.pooled[size]);
    }
}

template <class T> void check_pooled() {
    const struct {
        int p, n, groups;
    } shapes[] = {{1, 2, 1},    {1, 40, 3},   {2, 1500, 2},  {3, 7, 3},     {5, 1500, 7},
                  {10, 900, 5}, {9, 300, 40}, {4, 3000, 32}, {3, 1500, 300}};
    for (const auto& [p, n, groups] : shapes)
        for (int pattern = 0; pattern < 5; ++pattern)
            for (const bool weighted : {false, true}) {
                SCOPED_TRACE(testing::Message()
                             << p << " by " << n << ", " << groups << " groups, pattern " << pattern
                             << (weighted ? ", weights" : ""));
                const Expected<T> exact(p, n, groups, pattern, weighted);
                for (const int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
                    SCOPED_TRACE(storage);
                    // All variables, the odd ones, all but the third, the last.
                    std::vector<std::int32_t> all(p, 1), odd(p, p == 1), one(p, 0), most = all;
                    for (int i = 1; i < p; i += 2) odd[i] = -1;
                    if (p > 3) most[2] = 0;
                    one[p - 1] = 1;
                    check_pooled(exact, storage, VTS_SS_LAYOUT_FULL, all);
                    check_pooled(exact, storage, VTS_SS_LAYOUT_LOWER, odd);
                    check_pooled(exact, storage, VTS_SS_LAYOUT_UPPER, most);
                    check_pooled(exact, storage, VTS_SS_LAYOUT_UPPER, one);
                }
            }
}

TEST(StatsPooled, AgainstGroupsIn113Bits) {
    check_pooled<double>();
    check_pooled<float>();
}

// By hand: groups {1, 3} and {10, 14, 18} have sums of squares 2 and 32, so that the variance is 34
// / (5 - 2) and the mean 46 / 5; a group may have one member, others nobody.
TEST(StatsPooled, SmallGroups) {
    const std::vector<double> x = {1, 10, 3, 14, 99, 18, 7};
    Pooled<double> problem(1, 7, 1000, x, {}, {5, 900, 5, 900, -1, 900, 17}, VTS_SS_STORAGE_ROWS,
                           0);
    std::fill(problem.wanted.begin(), problem.wanted.end(), 0);
    problem.wanted[900] = problem.wanted[899] = problem.wanted[17] = 1;
    ASSERT_EQ(VTS_SS_STATUS_OK, problem.call());
    EXPECT_EQ(34.0 / 3, problem.pooled[0]);
    EXPECT_DOUBLE_EQ(53.0 / 6, problem.pooled_mean[0]);
    EXPECT_EQ(7, problem.means[0]);
    EXPECT_EQ(0, problem.covariances[0]);
    EXPECT_TRUE(std::isnan(problem.means[1]));
    EXPECT_TRUE(std::isnan(problem.covariances[1]));
    EXPECT_EQ(14, problem.means[2]);
    EXPECT_EQ(16, problem.covariances[2]);
    EXPECT_EQ(untouched, problem.means[3]);

    // Means need no second member.
    std::vector<double> lone = {untouched, untouched};
    Problem<double> singles(1, 2, {3, 4}, {}, VTS_SS_STORAGE_ROWS, 0);
    const std::int32_t two_groups[] = {1, 0};
    __vtsdSSEditPooledCovariance(singles.task, two_groups, lone.data(), nullptr, nullptr, nullptr,
                                 nullptr);
    EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSPooledCovariance(singles.task, 0, 0));
    EXPECT_EQ(3.5, lone[0]);
    const std::int32_t nobody[] = {-1, -2};
    __vtsiSSEditTask(singles.task, VTS_SS_ID_GROUP_INDICES, nobody);
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, _vtsdSSPooledCovariance(singles.task, 0, 0));

    // A group without weight has its place, too, be it the last.
    Pooled<double> weightless(1, 3, 3, {1, 2, 3}, {1, 1, 0}, {0, 0, 2}, VTS_SS_STORAGE_ROWS, 0);
    ASSERT_EQ(VTS_SS_STATUS_OK, weightless.call());
    EXPECT_EQ(1.5, weightless.means[0]);
    EXPECT_TRUE(std::isnan(weightless.means[1]));

    // Wide integers; some results alone.
    const std::int64_t p = 1, n = 7, storage = VTS_SS_STORAGE_COLUMNS, none = 0;
    const std::int64_t group[] = {1, 0, 1, 0, INT64_MIN, 0, -7}, wanted[] = {0, 1};
    double mean = untouched, covariance = untouched;
    kef_ss_task* task;
    __vtsdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
    __vtsdSSEditPooledCovariance(task, group, nullptr, nullptr, wanted, &mean, nullptr);
    EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSPooledCovariance(task, 0, 0));
    EXPECT_EQ(2, mean);
    __vtsdSSEditPooledCovariance(task, nullptr, nullptr, &covariance, nullptr, nullptr, nullptr);
    __vtsiSSEditTask(task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &none);
    EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSPooledCovariance(task, 0, 0));
    EXPECT_EQ(34.0 / 3, covariance);
    // An index that no array could have flags for.
    const std::int64_t far[] = {0, 0, 0, 0, 0, 0, INT64_MAX};
    __vtsdSSEditPooledCovariance(task, far, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(VTS_SS_STATUS_NO_MEMORY, _vtsdSSPooledCovariance(task, 0, 0));
    __vtsdSSEditPooledCovariance(task, group, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSPooledCovariance(task, 0, 0));
    __vtsSSDeleteTask(&task);
}

// One observation takes no part, by its index or its weight, wherever it stands; wide indices give
// the same bits.
TEST(StatsPooled, OneLeftOut) {
    const int p = 3, n = 1203, groups = 6;
    const auto data = normal_data<double>(p, n, 0);
    const auto group = group_indices(n, groups, 0);
    const auto pooled = [&](const std::vector<double>& x, const std::vector<double>& w,
                            const std::vector<std::int32_t>& index) {
        const std::int64_t p64 = p, n64 = index.size(), storage = VTS_SS_STORAGE_COLUMNS;
        const std::int64_t layout = VTS_SS_LAYOUT_FULL;
        const std::vector<std::int64_t> wide(index.begin(), index.end());
        std::vector<double> by_wide(p * p);
        kef_ss_task* task;
        __vtsdSSNewTask(&task, &p64, &n64, &storage, x.data(), w.empty() ? nullptr : w.data(),
                        nullptr, 1);
        __vtsdSSEditPooledCovariance(task, wide.data(), nullptr, by_wide.data(), nullptr, nullptr,
                                     nullptr);
        __vtsiSSEditTask(task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &layout);
        EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSPooledCovariance(task, 0, 0));
        __vtsSSDeleteTask(&task);
        Pooled<double> narrow(p, static_cast<int>(n64), groups, x, w, index, VTS_SS_STORAGE_COLUMNS,
                              VTS_SS_LAYOUT_FULL);
        narrow.task->group_covariances = nullptr;
        EXPECT_EQ(VTS_SS_STATUS_OK, narrow.call());
        narrow.pooled.pop_back();
        EXPECT_EQ(narrow.pooled, by_wide);
        return by_wide;
    };
    for (const int place : {0, 1, 6, 7, 8, 300, n - 1}) {
        SCOPED_TRACE(place);
        auto x = data, rest = data;
        auto index = group, others = group;
        rest.erase(rest.begin() + place * p, rest.begin() + (place + 1) * p);
        others.erase(others.begin() + place);
        const auto expected = pooled(rest, {}, others);
        std::fill_n(x.begin() + place * p, p, nan);
        std::vector<double> w(n, 1);
        w[place] = 0;
        const auto by_weight = pooled(x, w, index);
        index[place] = INT32_MIN + place;
        const auto by_index = pooled(x, {}, index);
        for (int k = 0; k < p * p; ++k) {
            EXPECT_NEAR(expected[k], by_index[k], 1e-14);
            EXPECT_NEAR(expected[k], by_weight[k], 1e-14);
        }
    }
}

TEST(StatsPooled, BadInput) {
    const auto x = normal_data<double>(2, 6, 0);
    const auto status = [&](const std::vector<double>& w, const std::vector<std::int32_t>& group) {
        Pooled<double> problem(2, 6, 6, x, w, group, VTS_SS_STORAGE_COLUMNS, 0);
        const std::int32_t result = problem.call();
        EXPECT_EQ(result != VTS_SS_STATUS_OK, problem.is_untouched());
        return result;
    };
    const std::vector<std::int32_t> two = {0, 1, 0, 1, 0, 1};
    EXPECT_EQ(VTS_SS_STATUS_OK, status({1, 1, 1, 1, 0, 0}, two));
    for (const double bad : {-1.0, nan, infinity})
        EXPECT_EQ(VTS_SS_STATUS_NULL_WEIGHTS, status({1, 1, bad, 1, 1, 1}, two));
    EXPECT_EQ(VTS_SS_STATUS_NULL_WEIGHTS, status(std::vector<double>(6, 0), two));
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, status({}, {0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, status({}, {-1, -1, -5, -1, -1, -1}));
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, status({1, 0, 0, 0, 0, 0}, two));
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, status({1, 0, 0, 0, 0, 0}, {-1, 1, 1, 1, 1, 1}));
    // NaN stays in its variable and, as to means, in its group.
    Pooled<double> problem(2, 6, 2, x, {}, two, VTS_SS_STORAGE_COLUMNS, 0);
    problem.wanted = {1, 1};
    problem.x[3 * 2] = nan;
    ASSERT_EQ(VTS_SS_STATUS_OK, problem.call());
    EXPECT_TRUE(std::isnan(problem.pooled[0]));
    EXPECT_TRUE(std::isfinite(problem.pooled[3]));
    EXPECT_TRUE(std::isfinite(problem.means[0]));
    EXPECT_TRUE(std::isnan(problem.means[2]));
    EXPECT_TRUE(std::isfinite(problem.means[3]));
    // So does what takes no part, and infinity is a mean.
    for (const bool own : {false, true}) {
        const std::vector<double> y = {1, nan, infinity, 5, 3, nan};
        Pooled<double> some(1, 6, 2, y, {1, 0, 1, 1, 1, 1}, {0, 0, 1, 1, 0, -1},
                            VTS_SS_STORAGE_ROWS, 0);
        some.wanted = {1, 1};
        if (!own) some.task->group_covariances = nullptr;
        ASSERT_EQ(VTS_SS_STATUS_OK, some.call());
        EXPECT_EQ(2, some.means[0]);
        EXPECT_EQ(infinity, some.means[1]);
        EXPECT_EQ(infinity, some.pooled_mean[0]);
    }
}

}  // namespace
}  // namespace stats_tests
