// Basic against two passes in 113-bit arithmetic, and the properties of its kernels.
#include <quadmath.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "stats/task.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

// All results by definition. Matrices full.
template <class T> struct Reference {
    using Q = __float128;
    int p, n;
    Q W = 0, W2 = 0, N;
    std::vector<Q> m, C;
    std::vector<Q> R[5], M[5];

    Reference(int p, int n, const std::vector<T>& x, const std::vector<T>& w)
        : p(p), n(n), m(p), C(p * p) {
        for (int k = 2; k <= 4; ++k) R[k].assign(p, 0), M[k].assign(p, 0);
        const auto weight = [&](int j) { return w.empty() ? Q(1) : Q(w[j]); };
        for (int j = 0; j < n; ++j) W += weight(j), W2 += weight(j) * weight(j);
        N = W - W2 / W > 0 ? W - W2 / W : W;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < p; ++i) {
                const Q v = x[j * p + i];
                m[i] += weight(j) * v / W;
                R[2][i] += weight(j) * v * v, R[3][i] += weight(j) * v * v * v;
                R[4][i] += weight(j) * v * v * v * v;
            }
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < p; ++i) {
                const Q d = Q(x[j * p + i]) - m[i];
                M[2][i] += weight(j) * d * d, M[3][i] += weight(j) * d * d * d;
                M[4][i] += weight(j) * d * d * d * d;
                for (int k = 0; k < p; ++k)
                    C[i * p + k] += weight(j) * d * (Q(x[j * p + k]) - m[k]);
            }
    }

    // Compares with a bound on the error in units of the result's natural scale: odd
    // moments are compared with the spread, not with themselves. Central values that
    // come from raw moments have lost what cancelled.
    void expect_near(const Problem<T>& r, double bound, bool from_raw) const {
        const auto near = [&](const char* name, int i, T value, Q expected, Q scale) {
            const double error = double(fabsq(Q(value) - expected) / scale);
            EXPECT_LE(error, bound)
                << name << " of variable " << i << ": " << value << " for " << double(expected);
        };
        for (int i = 0; i < p; ++i) {
            const Q s = sqrtq(M[2][i] / W), c2 = M[2][i] / N;
            const Q loss2 = from_raw ? R[2][i] / M[2][i] : 1,
                    loss4 = from_raw ? R[4][i] / M[4][i] : 1;
            near("mean", i, r.mean[i], m[i], fabsq(m[i]) + s);
            near("raw2", i, r.raw2[i], R[2][i] / W, R[2][i] / W);
            near("raw3", i, r.raw3[i], R[3][i] / W, powq(R[2][i] / W, 1.5));
            near("raw4", i, r.raw4[i], R[4][i] / W, R[4][i] / W);
            near("sum", i, r.sum[i], m[i] * W, (fabsq(m[i]) + s) * W);
            near("raw_sum2", i, r.raw_sum2[i], R[2][i], R[2][i]);
            near("raw_sum3", i, r.raw_sum3[i], R[3][i], powq(R[2][i] / W, 1.5) * W);
            near("raw_sum4", i, r.raw_sum4[i], R[4][i], R[4][i]);
            near("central2", i, r.central2[i], c2, c2 * loss2);
            near("central3", i, r.central3[i], M[3][i] / N, M[4][i] / N / s * loss4);
            near("central4", i, r.central4[i], M[4][i] / N, M[4][i] / N * loss4);
            near("central_sum2", i, r.central_sum2[i], M[2][i], M[2][i] * loss2);
            near("central_sum3", i, r.central_sum3[i], M[3][i], M[4][i] / s * loss4);
            near("central_sum4", i, r.central_sum4[i], M[4][i], M[4][i] * loss4);
            const Q g1 = M[3][i] / W / (s * s * s), k = M[4][i] / W / (s * s * s * s);
            near("skewness", i, r.skewness[i], g1, k * loss4);
            near("kurtosis", i, r.kurtosis[i], k - 3, 2 * k * loss4);
            near("variation", i, r.variation[i], sqrtq(c2) / m[i], fabsq(sqrtq(c2) / m[i]) * loss2);
            for (int j = 0; j < p; ++j) {
                const Q scale = sqrtq(C[i * p + i]) * sqrtq(C[j * p + j]);
                near("cross_product", i, r.cross_product[i * p + j], C[i * p + j], scale);
                near("covariance", i, r.covariance[i * p + j], C[i * p + j] / N, scale / N);
                near("correlation", i, r.correlation[i * p + j], C[i * p + j] / scale, 1);
            }
        }
    }
};

template <class T> void check_against_reference(double bound) {
    for (int p : {1, 2, 3, 10})
        for (int n : {2, 3, 10, 255, 257, 1000})
            for (bool weighted : {false, true}) {
                const auto data = normal_data<T>(p, n, 1.5);
                const auto w = weighted ? weights_for<T>(n) : std::vector<T>();
                const Reference<T> reference(p, n, data, w);
                for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
                    for (int method : data_methods) {
                        SCOPED_TRACE(testing::Message()
                                     << "p " << p << " n " << n << " weighted " << weighted
                                     << " storage " << storage << " method " << method);
                        Problem<T> problem(p, n, data, w, storage);
                        ASSERT_EQ(VTS_SS_STATUS_OK, problem.basic(everything, method));
                        reference.expect_near(problem, bound, method == VTS_SS_METHOD_RAW);
                    }
            }
}

TEST(StatsBasic, EqualsTheDefinitions) {
    check_against_reference<double>(3e-14);
    check_against_reference<float>(2e-7);
}

// All results of two problems, the difference at most `bound` on the result's scale (0:
// bit for bit). Third moments vanish for symmetric data; their scale is the fourth's,
// since the deviations are of the order of 1.
template <class T> void expect_same(Problem<T>& a, Problem<T>& b, double bound) {
    const auto ra = a.results(), rb = b.results();
    for (std::size_t k = 0; k < ra.size(); ++k) {
        const std::vector<T>&u = *ra[k].second, &v = *rb[k].second;
        if (bound == 0) {
            EXPECT_EQ(0, std::memcmp(u.data(), v.data(), u.size() * sizeof(T))) << ra[k].first;
            continue;
        }
        const bool third = ra[k].first == "central3" || ra[k].first == "central_sum3";
        for (std::size_t i = 0; i < u.size(); ++i) {
            const double scale = third                       ? double((*ra[k + 1].second)[i])
                                 : ra[k].first == "kurtosis" ? 3.0 + u[i]
                                                             : 1.0;
            EXPECT_NEAR(u[i], v[i], bound * (std::fabs(u[i]) + std::fabs(scale)))
                << ra[k].first << " " << i;
        }
    }
}

TEST(StatsBasic, ManyVariables) {
    const int p = 51, n = 300;
    const auto data = normal_data<double>(p, n, 0.25);
    const Reference<double> reference(p, n, data, {});
    for (int method : {VTS_SS_METHOD_RECURRENCE, VTS_SS_METHOD_TILED}) {
        Problem<double> problem(p, n, data, {}, VTS_SS_STORAGE_ROWS);
        ASSERT_EQ(VTS_SS_STATUS_OK, problem.basic(everything, method));
        reference.expect_near(problem, 3e-14, false);
    }
}

// x at every alignment, in both storages: the same bits.
TEST(StatsBasic, AlignmentDoesNotShow) {
    const int n = 600;
    for (int p : {1, 2, 3, 8})
        for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
            for (int method : data_methods) {
                Problem<double> first(p, n, normal_data<double>(p, n, 3), weights_for<double>(n),
                                      storage);
                ASSERT_EQ(VTS_SS_STATUS_OK, first.basic(everything, method));
                for (int shift : {1, 2, 3}) {
                    Problem<double> second(p, n, normal_data<double>(p, n, 3),
                                           weights_for<double>(n), storage);
                    std::vector<double> moved(second.x.size() + 16);
                    double* start = moved.data();
                    while (reinterpret_cast<std::uintptr_t>(start) % 64 != 0) ++start;
                    std::copy(second.x.begin(), second.x.end(), start + shift);
                    Api<double>::edit(second.task, VTS_SS_ID_X, start + shift);
                    ASSERT_EQ(VTS_SS_STATUS_OK, second.basic(everything, method));
                    expect_same(first, second, 0);
                }
            }
}

TEST(StatsBasic, BlocksEqualOneBlock) {
    const int n = 1000000;
    const auto data = normal_data<double>(1, n, 1);
    for (int method : data_methods) {
        Problem<double> one(1, n, data);
        ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(moments | sums, method));
        EXPECT_EQ(n, one.accumulated[0]);
        EXPECT_EQ(n, one.accumulated[1]);
        for (int block : {1000, 1}) {
            Problem<double> many(1, n, data);
            many.basic_in_blocks(moments | sums, method, block);
            SCOPED_TRACE(testing::Message() << "method " << method << " block " << block);
            expect_same(one, many, 1e-13);
            EXPECT_EQ(n, many.accumulated[0]);
        }
    }
    // Several variables, unequal weights and means, uneven blocks.
    for (int p : {2, 5})
        for (int method : data_methods) {
            std::vector<double> drift = normal_data<double>(p, 1500, 1);
            for (std::size_t k = 0; k < drift.size(); ++k) drift[k] += k / 500.0;
            const auto w = weights_for<double>(1500);
            Problem<double> one(p, 1500, drift, w), many(p, 1500, drift, w);
            ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(everything, method));
            many.basic_in_blocks(everything, method, 271);
            expect_same(one, many, method == VTS_SS_METHOD_RAW ? 1e-12 : 2e-14);
        }
}

// What a caller does who keeps the arrays and brings them back: other task, same state.
TEST(StatsBasic, TakesUpTheStateInTheArrays) {
    const int p = 3, n = 800;
    const auto data = normal_data<double>(p, n, 1);
    const auto w = weights_for<double>(n);
    const std::uint64_t sets[] = {everything, moments | VTS_SS_ESTIMATE_COVARIANCE,
                                  moments | VTS_SS_ESTIMATE_CORRELATION, sums | mean_and_variance};
    for (std::uint64_t estimates : sets)
        for (int method : data_methods) {
            Problem<double> whole(p, n, data, w);
            ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(estimates, method));
            Problem<double> first(p, n, data, w), second(p, n, data, w);
            first.n = 300;
            ASSERT_EQ(VTS_SS_STATUS_OK, first.basic(estimates, method));
            const auto from = first.results(), to = second.results();
            for (std::size_t k = 0; k < from.size(); ++k) *to[k].second = *from[k].second;
            second.accumulated = first.accumulated;
            second.n = n - 300;
            Api<double>::edit(second.task, VTS_SS_ID_X, second.x.data() + 300 * p);
            Api<double>::edit(second.task, VTS_SS_ID_WEIGHTS, second.weights.data() + 300);
            Api<double>::edit(second.task, VTS_SS_ID_ACCUMULATED_WEIGHTS,
                              second.accumulated.data());
            ASSERT_EQ(VTS_SS_STATUS_OK, second.basic(estimates, method));
            SCOPED_TRACE(testing::Message() << estimates << " method " << method);
            expect_same(whole, second, method == VTS_SS_METHOD_RAW ? 1e-12 : 1e-14);
        }
    // The lower central sums are gone: a status, and nothing is written.
    for (const auto& [estimate, status] :
         {std::pair<std::uint64_t, int>{VTS_SS_ESTIMATE_CENTRAL_SUM_4,
                                        VTS_SS_STATUS_NULL_CENTRAL_MOMENT_2},
          {VTS_SS_ESTIMATE_CORRELATION, VTS_SS_STATUS_NULL_COVARIANCE}}) {
        Problem<double> lost(p, n, data);
        lost.accumulated = {100, 100};
        Problem<double> untouched_copy(p, n, data);
        EXPECT_EQ(status, lost.basic(estimate, VTS_SS_METHOD_TILED));
        expect_same(lost, untouched_copy, 0);
        EXPECT_EQ(100, lost.accumulated[0]);
    }
    // In one task they are kept, however little is asked for.
    for (int method : {VTS_SS_METHOD_RECURRENCE, VTS_SS_METHOD_TILED})
        for (std::uint64_t estimate :
             {VTS_SS_ESTIMATE_CENTRAL_SUM_4, VTS_SS_ESTIMATE_CENTRAL_MOMENT_3,
              VTS_SS_ESTIMATE_CORRELATION, VTS_SS_ESTIMATE_KURTOSIS}) {
            Problem<double> one(p, n, data), many(p, n, data);
            ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(estimate, method));
            many.basic_in_blocks(estimate, method, 100);
            expect_same(one, many, 1e-13);
        }
}

// Each block in a task of its own, with the arrays and the weights brought over.
template <class T> void check_state_carried_by_arrays(double bound) {
    std::mt19937 random(7);
    const std::uint64_t sets[] = {everything,
                                  moments,
                                  sums | VTS_SS_ESTIMATE_MEAN,
                                  mean_and_variance,
                                  moments | matrices,
                                  mean_and_variance | VTS_SS_ESTIMATE_COVARIANCE};
    for (int p = 1; p <= 5; ++p)
        for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
            for (int method : data_methods)
                for (int blocks : {1, 2, 7, 30}) {
                    const int n = 90 + int(random() % 600);
                    const std::uint64_t estimates = sets[random() % std::size(sets)];
                    SCOPED_TRACE(testing::Message()
                                 << "p " << p << " n " << n << " storage " << storage << " method "
                                 << method << " blocks " << blocks << " estimates " << estimates);
                    const auto data = normal_data<T>(p, n, 3, random());
                    const auto w = random() % 2 ? weights_for<T>(n) : std::vector<T>();
                    Problem<T> whole(p, n, data, w, storage), carried(p, n, data, w, storage);
                    ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(estimates, method));
                    std::set<int> cuts = {0, n};
                    while (int(cuts.size()) <= blocks) cuts.insert(random() % n);
                    for (auto end = std::next(cuts.begin()); end != cuts.end(); ++end) {
                        const int first = *std::prev(end), count = *end - first;
                        Problem<T> block(
                            p, count, {data.begin() + first * p, data.begin() + *end * p},
                            w.empty() ? w : std::vector<T>(w.begin() + first, w.begin() + *end),
                            storage);
                        const auto from = carried.results(), to = block.results();
                        for (std::size_t k = 0; k < from.size(); ++k)
                            *to[k].second = *from[k].second;
                        block.accumulated = carried.accumulated;
                        block.set(VTS_SS_ID_ACCUMULATED_WEIGHTS, block.accumulated);
                        ASSERT_EQ(VTS_SS_STATUS_OK, block.basic(estimates, method));
                        for (std::size_t k = 0; k < from.size(); ++k)
                            *from[k].second = *to[k].second;
                        carried.accumulated = block.accumulated;
                    }
                    expect_same(whole, carried, bound);
                }
}

TEST(StatsBasic, StateGoesFromTaskToTask) {
    check_state_carried_by_arrays<double>(1e-11);
    check_state_carried_by_arrays<float>(1e-3);
}

// W = 0 starts anew whatever the arrays hold, and no array of totals means the same.
TEST(StatsBasic, StartsAnew) {
    const auto data = normal_data<double>(2, 50, 1);
    for (int method : data_methods) {
        Problem<double> clean(2, 50, data), dirty(2, 50, data), without(2, 50, data);
        for (auto& [name, array] : dirty.results()) array->assign(array->size(), nan);
        without.task->accumulated_weights = nullptr;
        ASSERT_EQ(VTS_SS_STATUS_OK, clean.basic(everything, method));
        ASSERT_EQ(VTS_SS_STATUS_OK, dirty.basic(everything, method));
        for (int call = 0; call < 2; ++call)
            ASSERT_EQ(VTS_SS_STATUS_OK, without.basic(everything, method));
        expect_same(clean, dirty, 0);
        expect_same(clean, without, 0);
        dirty.accumulated = {0, 0};
        ASSERT_EQ(VTS_SS_STATUS_OK, dirty.basic(everything, method));
        expect_same(clean, dirty, 0);
    }
}

TEST(StatsBasic, Weights) {
    const int p = 3, n = 700;
    const auto data = normal_data<double>(p, n, 1);
    for (int method : data_methods) {
        SCOPED_TRACE(method);
        // Equal weights of 1 are no weights; the totals count.
        Problem<double> plain(p, n, data), ones(p, n, data, std::vector<double>(n, 1.0));
        ASSERT_EQ(VTS_SS_STATUS_OK, plain.basic(everything, method));
        ASSERT_EQ(VTS_SS_STATUS_OK, ones.basic(everything, method));
        expect_same(plain, ones, 1e-13);
        EXPECT_EQ(plain.accumulated, ones.accumulated);

        // A block of zero weights changes nothing, not even where x is NaN.
        Problem<double> zeros(p, n, std::vector<double>(p * n, nan), std::vector<double>(n, 0.0));
        Problem<double> untouched_copy(p, n, data);
        ASSERT_EQ(VTS_SS_STATUS_OK, zeros.basic(everything, method));
        expect_same(zeros, untouched_copy, 0);
        EXPECT_EQ((std::vector<double>{0, 0}), zeros.accumulated);

        // Leading zero weights are skipped, with what they weigh; later ones count.
        std::vector<double> w = weights_for<double>(n), poisoned = data;
        for (int j = 0; j < 300; ++j) w[j] = 0;
        std::vector<double> tail(data.begin() + 300 * p, data.end());
        Problem<double> expected(p, n - 300, tail, {w.begin() + 300, w.end()});
        for (int j = 0; j < 300; ++j) poisoned[j * p + 1] = infinity;
        Problem<double> leading(p, n, poisoned, w);
        ASSERT_EQ(VTS_SS_STATUS_OK, expected.basic(everything, method));
        ASSERT_EQ(VTS_SS_STATUS_OK, leading.basic(everything, method));
        expect_same(expected, leading, 1e-13);
        w[400] = 0;
        poisoned[400 * p + 2] = nan;
        Problem<double> later(p, n, poisoned, w);
        ASSERT_EQ(VTS_SS_STATUS_OK, later.basic(mean_and_variance, method));
        EXPECT_TRUE(std::isnan(later.mean[2]));
        EXPECT_FALSE(std::isnan(later.mean[0]));
        // A whole tile of zero weights in the middle.
        for (int j = 0; j < 300; ++j) poisoned[j * p + 1] = data[j * p + 1];
        poisoned[400 * p + 2] = data[400 * p + 2];
        std::vector<double> gap(n, 1.0);
        for (int j = 100; j < n; ++j) gap[j] = 0;
        Problem<double> front(p, 100, {data.begin(), data.begin() + 100 * p}),
            gapped(p, n, data, gap);
        ASSERT_EQ(VTS_SS_STATUS_OK, front.basic(everything, method));
        ASSERT_EQ(VTS_SS_STATUS_OK, gapped.basic(everything, method));
        expect_same(front, gapped, 1e-13);
    }
    // Negative weights: removing observations that are in. Both methods agree.
    std::vector<double> both = data, w(n, 2.0);
    for (int j = 400; j < n; ++j) w[j] = -1;
    Problem<double> a(p, n, both, w), b(p, n, both, w);
    ASSERT_EQ(VTS_SS_STATUS_OK, a.basic(moments | sums, VTS_SS_METHOD_TILED));
    ASSERT_EQ(VTS_SS_STATUS_OK, b.basic(moments | sums, VTS_SS_METHOD_RECURRENCE));
    expect_same(a, b, 1e-10);
}

TEST(StatsBasic, IndicesAndLayouts) {
    const int p = 7, n = 200;
    const auto data = normal_data<double>(p, n, 1);
    const std::int32_t indices[p] = {0, 1, 1, 0, 5, -1, 0};
    for (int method : data_methods)
        for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
            Problem<double> all(p, n, data, {}, storage), some(p, n, data, {}, storage);
            ASSERT_EQ(VTS_SS_STATUS_OK, all.basic(everything, method));
            __vtsiSSEditTask(some.task, VTS_SS_ID_INDICES, indices);
            ASSERT_EQ(VTS_SS_STATUS_OK, some.basic(everything, method));
            for (int i = 0; i < p; ++i) {
                EXPECT_NEAR(indices[i] ? all.central4[i] : untouched, some.central4[i], 1e-11);
                for (int j = 0; j < p; ++j)
                    EXPECT_NEAR(indices[i] && indices[j] ? all.covariance[i * p + j] : untouched,
                                some.covariance[i * p + j], 1e-12);
            }
        }
    // The same with 64-bit integers.
    const std::int64_t wide_p = p, wide_n = n, wide_storage = VTS_SS_STORAGE_COLUMNS;
    const std::int64_t wide_indices[p] = {0, std::int64_t(1) << 32, 1, 0, 1, 1, 0};
    std::vector<double> mean(p, untouched);
    kef_ss_task* task;
    ASSERT_EQ(VTS_SS_STATUS_OK, __vtsdSSNewTask(&task, &wide_p, &wide_n, &wide_storage, data.data(),
                                                nullptr, wide_indices, 1));
    __vtsdSSEditTask(task, VTS_SS_ID_MEAN, mean.data());
    ASSERT_EQ(VTS_SS_STATUS_OK, _vtsdSSBasic(task, VTS_SS_ESTIMATE_MEAN, VTS_SS_METHOD_TILED));
    for (int i = 0; i < p; ++i) EXPECT_EQ(wide_indices[i] != 0, mean[i] != untouched) << i;
    __vtsSSDeleteTask(&task);

    Problem<double> full(p, n, data), lower(p, n, data), upper(p, n, data);
    lower.layout = VTS_SS_LAYOUT_LOWER, upper.layout = VTS_SS_LAYOUT_UPPER;
    for (auto* problem : {&full, &lower, &upper})
        problem->basic_in_blocks(matrices, VTS_SS_METHOD_TILED, 64);
    for (int i = 0; i < p; ++i)
        for (int j = 0; j <= i; ++j) {
            const double c = full.correlation[i * p + j];
            EXPECT_EQ(c, full.correlation[j * p + i]);
            EXPECT_EQ(c, lower.correlation[i * (i + 1) / 2 + j]);
            EXPECT_EQ(c, upper.correlation[j * p - j * (j - 1) / 2 + i - j]);
            EXPECT_TRUE(i == j ? c == 1 : std::fabs(c) < 1);
        }
    for (auto* problem : {&lower, &upper})  // and nothing behind the triangle
        for (int k = p * (p + 1) / 2; k < p * p; ++k) EXPECT_EQ(untouched, problem->covariance[k]);
}

TEST(StatsBasic, SpecialData) {
    for (int method : data_methods) {
        SCOPED_TRACE(method);
        // One observation: variance 0, not NaN.
        for (int p : {1, 2, 3, 10, 51})
            for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
                const auto data = normal_data<double>(p, 1, 1);
                Problem<double> one(p, 1, data, {0.5}, storage);
                ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(everything, method));
                for (int i = 0; i < p; ++i) {
                    EXPECT_EQ(data[i], one.mean[i]);
                    EXPECT_NEAR(0, one.central2[i], method == VTS_SS_METHOD_RAW ? 1e-12 : 0);
                    for (int j = 0; j < p; ++j) EXPECT_EQ(0, one.covariance[i * p + j]);
                }
            }
        // Constant data give 0 and NaN, not noise.
        for (bool weighted : {false, true}) {
            Problem<double> constant(2, 500, std::vector<double>(1000, 0.1),
                                     weighted ? weights_for<double>(500) : std::vector<double>());
            ASSERT_EQ(VTS_SS_STATUS_OK, constant.basic(everything, method));
            EXPECT_GE(constant.central2[0], 0);
            EXPECT_EQ(0, constant.covariance[1]);
            EXPECT_TRUE(std::isnan(constant.correlation[1]));
            EXPECT_EQ(1, constant.correlation[0]);
            if (method == VTS_SS_METHOD_RAW) continue;
            EXPECT_EQ(0.1, constant.mean[0]);
            EXPECT_EQ(0, constant.central2[0]);
            EXPECT_EQ(0, constant.central_sum4[1]);
            EXPECT_TRUE(std::isnan(constant.kurtosis[0]) && std::isnan(constant.skewness[0]));
        }
        // NaN and infinity stay in their variable, at every place of a pair.
        for (int bad : {0, 1, 2})
            for (double value : {nan, infinity, -infinity}) {
                auto data = normal_data<double>(3, 2500, 1);
                data[1500 * 3 + bad] = value;
                Problem<double> problem(3, 2500, data);
                problem.basic_in_blocks(everything, method, 600);
                for (int i = 0; i < 3; ++i) {
                    EXPECT_EQ(i == bad, !std::isfinite(problem.mean[i])) << i << " " << value;
                    EXPECT_EQ(i == bad, !std::isfinite(problem.central2[i]));
                    EXPECT_EQ(i == bad, !std::isfinite(problem.raw4[i]));
                }
                if (std::isinf(value)) EXPECT_EQ(value, problem.mean[bad]);
                EXPECT_TRUE(std::isnan(problem.covariance[bad * 3 + (bad + 1) % 3]));
                EXPECT_TRUE(std::isfinite(problem.covariance[(bad + 1) % 3 * 3 + (bad + 2) % 3]));
            }
    }
    // Far beyond where squares are finite the mean still is.
    Problem<double> huge(1, 3, {1e300, 1.5e300, 2e300});
    ASSERT_EQ(VTS_SS_STATUS_OK, huge.basic(VTS_SS_ESTIMATE_MEAN, VTS_SS_METHOD_TILED));
    EXPECT_EQ(1.5e300, huge.mean[0]);
}

// Every estimate alone: it is written, and besides only what the header tells.
TEST(StatsBasic, WritesNothingElse) {
    const int p = 3, n = 40;
    const auto data = normal_data<double>(p, n, 2);
    struct One {
        const char* name;
        std::uint64_t estimate;
    };
    const One ones[] = {
#define KEF_NAMED(name, NAME) {#name, VTS_SS_ESTIMATE_##NAME},
        KEF_VECTOR_RESULTS(KEF_NAMED) KEF_MATRIX_RESULTS(KEF_NAMED)
#undef KEF_NAMED
    };
    for (int method : data_methods) {
        Problem<double> all(p, n, data);
        ASSERT_EQ(VTS_SS_STATUS_OK, all.basic(everything, method));
        for (const One& one : ones) {
            Problem<double> single(p, n, data);
            ASSERT_EQ(VTS_SS_STATUS_OK, single.basic(one.estimate, method));
            std::set<std::string> allowed = {one.name};
            const std::string name = one.name;
            if (name.find("raw") != 0 && name != "sum") allowed.insert("mean");
            if (name == "kurtosis") allowed.insert({"central2", "central4"});
            if (name == "skewness") allowed.insert({"central2", "central3"});
            if (name == "variation") allowed.insert("central2");
            if (method == VTS_SS_METHOD_RAW && allowed.count("mean") && name != "mean" &&
                !(one.estimate & matrices))
                allowed.insert({"raw2", "raw3", "raw4"});
            const auto got = single.results(), full = all.results();
            for (std::size_t k = 0; k < got.size(); ++k) {
                const bool written = (*got[k].second)[0] != untouched;
                if (got[k].first == name)
                    for (std::size_t i = 0; i < got[k].second->size(); ++i)
                        EXPECT_NEAR((*full[k].second)[i], (*got[k].second)[i], 1e-11) << name;
                EXPECT_TRUE(!written || allowed.count(got[k].first))
                    << name << " wrote " << got[k].first << ", method " << method;
            }
        }
    }
}

// From the sums that a data-based call left, the same estimates.
TEST(StatsBasic, FromSums) {
    const int p = 4, n = 60;
    const auto data = normal_data<double>(p, n, 2);
    constexpr std::uint64_t derived =
        moments | VTS_SS_ESTIMATE_COVARIANCE | VTS_SS_ESTIMATE_CORRELATION;
    for (bool weighted : {false, true})
        for (int method : {0x200, 0x400, 0x600}) {
            const auto w = weighted ? weights_for<double>(n) : std::vector<double>();
            Problem<double> direct(p, n, data, w), derive(p, n, data, w);
            direct.layout = derive.layout = VTS_SS_LAYOUT_UPPER;
            ASSERT_EQ(VTS_SS_STATUS_OK, direct.basic(everything, VTS_SS_METHOD_TILED));
            ASSERT_EQ(VTS_SS_STATUS_OK,
                      derive.basic(sums | VTS_SS_ESTIMATE_CROSS_PRODUCT, VTS_SS_METHOD_TILED));
            const std::int32_t* const p_only = &derive.p;
            kef_ss_task* without_x;
            ASSERT_EQ(0, __vtsdSSNewTask(&without_x, p_only, &derive.n, nullptr, nullptr, nullptr,
                                         nullptr, 0));
            std::swap(derive.task, without_x);
            if (weighted) derive.set(VTS_SS_ID_ACCUMULATED_WEIGHTS, derive.accumulated);
#define KEF_REGISTER(name, NAME) derive.set(VTS_SS_ID_##NAME, derive.name);
            KEF_VECTOR_RESULTS(KEF_REGISTER)
            KEF_MATRIX_RESULTS(KEF_REGISTER)
#undef KEF_REGISTER
            __vtsiSSEditTask(derive.task, VTS_SS_ID_COVARIANCE_STORAGE, &derive.layout);
            __vtsiSSEditTask(derive.task, VTS_SS_ID_CORRELATION_STORAGE, &derive.layout);
            EXPECT_EQ(VTS_SS_STATUS_NULL_STORAGE, derive.basic(derived, method));
            __vtsiSSEditTask(derive.task, VTS_SS_ID_CROSS_PRODUCT_STORAGE, &derive.layout);
            ASSERT_EQ(VTS_SS_STATUS_OK, derive.basic(derived, method));
            expect_same(direct, derive, 1e-14);
            __vtsSSDeleteTask(&without_x);
        }
}

}  // namespace
}  // namespace stats_tests
