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
            near("raw_moment_2", i, r.raw_moment_2[i], R[2][i] / W, R[2][i] / W);
            near("raw_moment_3", i, r.raw_moment_3[i], R[3][i] / W, powq(R[2][i] / W, 1.5));
            near("raw_moment_4", i, r.raw_moment_4[i], R[4][i] / W, R[4][i] / W);
            near("sum", i, r.sum[i], m[i] * W, (fabsq(m[i]) + s) * W);
            near("raw_sum_2", i, r.raw_sum_2[i], R[2][i], R[2][i]);
            near("raw_sum_3", i, r.raw_sum_3[i], R[3][i], powq(R[2][i] / W, 1.5) * W);
            near("raw_sum_4", i, r.raw_sum_4[i], R[4][i], R[4][i]);
            near("central_moment_2", i, r.central_moment_2[i], c2, c2 * loss2);
            near("central_moment_3", i, r.central_moment_3[i], M[3][i] / N,
                 M[4][i] / N / s * loss4);
            near("central_moment_4", i, r.central_moment_4[i], M[4][i] / N, M[4][i] / N * loss4);
            near("central_sum_2", i, r.central_sum_2[i], M[2][i], M[2][i] * loss2);
            near("central_sum_3", i, r.central_sum_3[i], M[3][i], M[4][i] / s * loss4);
            near("central_sum_4", i, r.central_sum_4[i], M[4][i], M[4][i] * loss4);
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
        for (int n : {2, 3, 10, 12, 15, 21, 38, 255, 257, 1000})
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

// These results of two problems, the difference at most `bound` on the result's scale in the
// first one (0: bit for bit), or both NaN. Third moments vanish for symmetric data; their scale is
// the fourth's, since the deviations are of the order of 1.
template <class T>
void expect_same(Problem<T>& a, Problem<T>& b, double bound, FieldSet fields = ~FieldSet(0)) {
    const auto ra = a.results(), rb = b.results();
    for (std::size_t k = 0; k < ra.size(); ++k) {
        if (!(fields >> k & 1)) continue;
        const std::vector<T>&u = *ra[k].second, &v = *rb[k].second;
        if (bound == 0) {
            EXPECT_EQ(0, std::memcmp(u.data(), v.data(), u.size() * sizeof(T))) << ra[k].first;
            continue;
        }
        const bool third = ra[k].first == "central_moment_3" || ra[k].first == "central_sum_3";
        for (std::size_t i = 0; i < u.size(); ++i) {
            if (std::isnan(u[i]) && std::isnan(v[i])) continue;
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
            second.take_over(first);
            second.n = n - 300;
            Api<double>::edit(second.task, VTS_SS_ID_X, second.x.data() + 300 * p);
            Api<double>::edit(second.task, VTS_SS_ID_WEIGHTS, second.weights.data() + 300);
            ASSERT_EQ(VTS_SS_STATUS_OK, second.basic(estimates, method));
            SCOPED_TRACE(testing::Message() << estimates << " method " << method);
            expect_same(whole, second, method == VTS_SS_METHOD_RAW ? 1e-12 : 1e-14);
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

// The lower central sums or the scale of a correlation that a set of estimates leaves out.
std::uint64_t lower(std::uint64_t estimates) {
    std::uint64_t set = 0;
    if (estimates & (VTS_SS_ESTIMATE_CENTRAL_SUM_3 | VTS_SS_ESTIMATE_CENTRAL_SUM_4 |
                     VTS_SS_ESTIMATE_CORRELATION))
        set |= VTS_SS_ESTIMATE_CENTRAL_SUM_2;
    if (estimates & VTS_SS_ESTIMATE_CENTRAL_SUM_4) set |= VTS_SS_ESTIMATE_CENTRAL_SUM_3;
    return set;
}

// Each block in a task of its own that has the arrays which the estimates require, and nothing
// else: they carry the state, with the weights.
template <class T> void check_state_carried_by_arrays(double bound) {
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round)
        for (int p = 1; p <= 5; ++p)
            for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
                for (int method : data_methods) {
                    const int n = 2 + int(random() % 500), blocks = 1 + int(random() % 30);
                    // Sparse sets and dense ones.
                    std::uint64_t estimates =
                        (std::uint64_t(random()) << 32 | random()) & everything;
                    if (round % 2) estimates &= std::uint64_t(random()) << 32 | random();
                    if (round % 4 == 3) estimates &= std::uint64_t(random()) << 32 | random();
                    estimates |= lower(estimates);
                    const FieldSet fields = required_for(estimates, method);
                    SCOPED_TRACE(testing::Message()
                                 << "p " << p << " n " << n << " storage " << storage << " method "
                                 << method << " blocks " << blocks << " fields " << fields);
                    const auto data = normal_data<T>(p, n, 3, random());
                    const auto w = random() % 2 ? weights_for<T>(n) : std::vector<T>();
                    Problem<T> whole(p, n, data, w, storage), carried(p, n, data, w, storage);
                    ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(everything, method));
                    std::set<int> cuts = {0, n};
                    for (int cut = 1; cut < blocks; ++cut) cuts.insert(random() % n);
                    for (auto end = std::next(cuts.begin()); end != cuts.end(); ++end) {
                        const int first = *std::prev(end), count = *end - first;
                        Problem<T> block(
                            p, count, {data.begin() + first * p, data.begin() + *end * p},
                            w.empty() ? w : std::vector<T>(w.begin() + first, w.begin() + *end),
                            storage, fields);
                        block.take_over(carried);
                        ASSERT_EQ(VTS_SS_STATUS_OK, block.basic(estimates, method));
                        carried.take_over(block);
                    }
                    expect_same(whole, carried, bound, fields);
                    Problem<T> clean(p, n, data, w, storage);
                    expect_same(clean, carried, 0, ~fields);
                }
}

TEST(StatsBasic, StateGoesFromTaskToTask) {
    check_state_carried_by_arrays<double>(1e-11);
    check_state_carried_by_arrays<float>(1e-2);
}

// What is registered is enough, asked for or not; what is not is unknown, and is not refused.
TEST(StatsBasic, LowerSumsStandInAnyRegisteredArray) {
    const int p = 3, n = 400, part = 150;
    const auto data = normal_data<double>(p, n, 1);
    const std::vector<double> front(data.begin(), data.begin() + part * p),
        back(data.begin() + part * p, data.end());
    using namespace kef::stats::field;
    const struct {
        std::uint64_t estimate;
        FieldSet besides;  // these are registered
        bool known;
    } cases[] = {
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, central_sum_2 | central_sum_3, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, central_moment_2 | central_moment_3, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, raw_moment_2 | raw_moment_3, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, raw_sum_2 | central_sum_3, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, central_sum_2, false},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_3, covariance, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_3, cross_product, true},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_3, 0, false},
        {VTS_SS_ESTIMATE_CORRELATION, covariance, true},
        {VTS_SS_ESTIMATE_CORRELATION, cross_product, true},
        {VTS_SS_ESTIMATE_CORRELATION, central_moment_2, true},
        {VTS_SS_ESTIMATE_CORRELATION, 0, false},
        {VTS_SS_ESTIMATE_KURTOSIS, 0, true},
    };
    // A matrix of a layout that is none holds nothing.
    Problem<double> matrix(
        p, part, front, {}, VTS_SS_STORAGE_COLUMNS,
        required_for(VTS_SS_ESTIMATE_CENTRAL_SUM_3, VTS_SS_METHOD_TILED) | covariance);
    matrix.layout = 99;
    matrix.accumulated = {4, 4};
    ASSERT_EQ(VTS_SS_STATUS_OK, matrix.basic(VTS_SS_ESTIMATE_CENTRAL_SUM_3, VTS_SS_METHOD_TILED));
    EXPECT_TRUE(std::isnan(matrix.central_sum_3[1]));
    // Of a sum and its moment, the sum.
    Problem<double> both(1, 2, {3, 5});
    both.accumulated = {4, 4}, both.raw_moment_2 = {100}, both.raw_sum_2 = {6};
    ASSERT_EQ(VTS_SS_STATUS_OK, both.basic(VTS_SS_ESTIMATE_RAW_MOMENT_2 | VTS_SS_ESTIMATE_RAW_SUM_2,
                                           VTS_SS_METHOD_RAW));
    EXPECT_EQ(40, both.raw_sum_2[0]);
    EXPECT_NEAR(40 / 6.0, both.raw_moment_2[0], 1e-15);

    for (const auto& c : cases)
        for (int method : {VTS_SS_METHOD_RECURRENCE, VTS_SS_METHOD_TILED}) {
            SCOPED_TRACE(testing::Message() << &c - cases << " method " << method);
            const FieldSet required = required_for(c.estimate, method);
            Problem<double> whole(p, n, data), first(p, part, front),
                second(p, n - part, back, {}, VTS_SS_STORAGE_COLUMNS, required | c.besides);
            ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(everything, method));
            ASSERT_EQ(VTS_SS_STATUS_OK, first.basic(everything, method));
            second.take_over(first);
            ASSERT_EQ(VTS_SS_STATUS_OK, second.basic(c.estimate, method));
            const FieldSet asked = kef::stats::requested_fields(c.estimate);
            if (c.known) expect_same(whole, second, 1e-12, asked);
            else EXPECT_TRUE(std::isnan((*second.results()[__builtin_ctz(asked)].second)[1]));
        }
}

// Estimates, indices and methods that change from call to call, in one task: the results that
// every call asks for cover all blocks.
TEST(StatsBasic, ChangesBetweenCalls) {
    const int n = 700;
    std::mt19937 random(5);
    constexpr std::uint64_t always = mean_and_variance | VTS_SS_ESTIMATE_CENTRAL_SUM_3 |
                                     VTS_SS_ESTIMATE_COVARIANCE | VTS_SS_ESTIMATE_SUM;
    for (int p = 1; p <= 5; ++p)
        for (bool methods : {false, true})
            for (int round = 0; round < 10; ++round) {
                const auto data = normal_data<double>(p, n, 2, random());
                const auto w = round % 2 ? weights_for<double>(n) : std::vector<double>();
                Problem<double> whole(p, n, data, w), changing(p, n, data, w);
                ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(everything, VTS_SS_METHOD_TILED));
                std::vector<std::int32_t> indices(p, 1);
                __vtsiSSEditTask(changing.task, VTS_SS_ID_INDICES, indices.data());
                for (int first = 0; first < n;) {
                    // The first and the third variable are always there.
                    for (int i = 1; i < p; ++i) indices[i] = i == 2 || random() % 2;
                    const std::uint64_t others = std::uint64_t(random()) << 32 | random();
                    const std::uint64_t estimates = always | (others & everything);
                    const int method = methods ? data_methods[random() % 3] : VTS_SS_METHOD_TILED;
                    const int count = std::min<int>(n - first, 1 + random() % 100);
                    ASSERT_EQ(VTS_SS_STATUS_OK, changing.block(first, count, estimates, method));
                    first += count;
                }
                for (int i = 0; i < p; i += 2) {
                    if (i == 4) continue;
                    SCOPED_TRACE(testing::Message() << "p " << p << " variable " << i);
                    const double bound = methods ? 1e-11 : 1e-12;
                    EXPECT_NEAR(whole.mean[i], changing.mean[i], bound);
                    EXPECT_NEAR(whole.sum[i], changing.sum[i], bound * n);
                    EXPECT_NEAR(whole.central_moment_2[i], changing.central_moment_2[i],
                                10 * bound);
                    EXPECT_NEAR(whole.central_sum_3[i], changing.central_sum_3[i], 100 * bound * n);
                    EXPECT_NEAR(whole.covariance[i], changing.covariance[i], 10 * bound);
                }
            }
}

// What a call does not bring on, and what lies elsewhere since the dimension changed, comes from
// the arrays.
TEST(StatsBasic, KeptSumsThatAreOld) {
    const int p = 2, n = 90;
    const auto data = normal_data<double>(p, n, 2);
    Problem<double> kept(p, n, data), fresh(p, n, data);
    const auto third = VTS_SS_ESTIMATE_CENTRAL_MOMENT_3;
    ASSERT_EQ(VTS_SS_STATUS_OK, kept.block(0, 30, third, VTS_SS_METHOD_TILED));
    ASSERT_EQ(VTS_SS_STATUS_OK,
              kept.block(30, 30, VTS_SS_ESTIMATE_CENTRAL_MOMENT_2, VTS_SS_METHOD_TILED));
    fresh.take_over(kept);
    ASSERT_EQ(VTS_SS_STATUS_OK, kept.block(60, 30, third, VTS_SS_METHOD_TILED));
    ASSERT_EQ(VTS_SS_STATUS_OK, fresh.block(60, 30, third, VTS_SS_METHOD_TILED));
    for (int i = 0; i < p; ++i)
        EXPECT_NEAR(fresh.central_moment_3[i], kept.central_moment_3[i], 1e-12);

    const int wide = 200;
    std::vector<double> columns(wide * 4);
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i] = std::sin(1.0 + i);
    Problem<double> growing(wide, 4, columns);
    const std::int32_t indices[wide] = {1, 1};
    __vtsiSSEditTask(growing.task, VTS_SS_ID_INDICES, indices);
    growing.p = 2;
    ASSERT_EQ(VTS_SS_STATUS_OK, growing.basic(VTS_SS_ESTIMATE_SUM, VTS_SS_METHOD_RAW));
    const double before = growing.sum[1];
    for (int i : {0, 1}) growing.mean[i] = growing.sum[i] / 4;
    growing.p = wide;
    ASSERT_EQ(VTS_SS_STATUS_OK, growing.basic(VTS_SS_ESTIMATE_MEAN, VTS_SS_METHOD_RAW));
    double expected = before;
    for (int j = 0; j < 4; ++j) expected += columns[j * wide + 1];
    EXPECT_NEAR(expected / 8, growing.mean[1], 1e-15);
}

// Calls that are refused between two blocks: the second block goes on as if nothing had been.
TEST(StatsBasic, RefusedCallsLeaveTaskAndArrays) {
    const int p = 3, n = 500, part = 200;
    const auto data = normal_data<double>(p, n, 1e6);
    for (int method : data_methods) {
        Problem<double> calm(p, n, data), disturbed(p, n, data);
        const auto first = [&](Problem<double>& r) { return r.block(0, part, everything, method); };
        const auto second = [&](Problem<double>& r) {
            return r.block(part, n - part, everything, method);
        };
        ASSERT_EQ(VTS_SS_STATUS_OK, first(calm));
        ASSERT_EQ(VTS_SS_STATUS_OK, first(disturbed));
        Problem<double> before(p, n, data);
        before.take_over(disturbed);
        const auto refused = [&](std::int32_t status, std::int32_t answer) {
            EXPECT_EQ(status, answer);
            expect_same(before, disturbed, 0);
            EXPECT_EQ(before.accumulated, disturbed.accumulated);
        };
        const auto with = [&](std::int32_t& place, std::int32_t value, std::int32_t status) {
            const std::int32_t old = place;
            place = value;
            refused(status, disturbed.basic(everything, method));
            place = old;
        };
        refused(VTS_SS_STATUS_BAD_METHOD, disturbed.basic(everything, 3));
        refused(VTS_SS_STATUS_BAD_METHOD, disturbed.basic(sums, VTS_SS_METHOD_SUMS));
        with(disturbed.n, 0, VTS_SS_STATUS_BAD_COUNT);
        with(disturbed.p, -1, VTS_SS_STATUS_BAD_DIMENSION);
        with(disturbed.storage, 1, VTS_SS_STATUS_BAD_X_STORAGE);
        with(disturbed.layout, 3, VTS_SS_STATUS_NULL_STORAGE);
        refused(VTS_SS_STATUS_BAD_PRECISION,
                _vtssSSBasic(disturbed.task, VTS_SS_ESTIMATE_MEAN, method));
        void* const registered = disturbed.task->kurtosis;
        disturbed.task->kurtosis = nullptr;
        refused(VTS_SS_STATUS_NULL_KURTOSIS, disturbed.basic(everything, method));
        disturbed.task->kurtosis = registered;
        // A dimension for which there is no memory.
        if (sizeof(void*) == 4) with(disturbed.p, 1 << 20, VTS_SS_STATUS_NO_MEMORY);
        // Neither what selects nothing nor what weighs nothing is a block.
        const std::vector<std::int32_t> none(p, 0);
        __vtsiSSEditTask(disturbed.task, VTS_SS_ID_INDICES, none.data());
        refused(VTS_SS_STATUS_OK, disturbed.basic(everything, method));
        disturbed.task->indices = nullptr;
        const std::vector<double> zeros(n, 0);
        Api<double>::edit(disturbed.task, VTS_SS_ID_WEIGHTS, zeros.data());
        refused(VTS_SS_STATUS_OK, disturbed.basic(everything, method));
        disturbed.task->weights = nullptr;

        ASSERT_EQ(VTS_SS_STATUS_OK, second(calm));
        ASSERT_EQ(VTS_SS_STATUS_OK, second(disturbed));
        expect_same(calm, disturbed, 0);
    }
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

template <class T> void expect_scale_of_weights_to_cancel(const std::vector<int>& exponents) {
    const int p = 3, n = 400;
    const auto data = normal_data<T>(p, n, 1);
    const std::uint64_t estimates = moments | VTS_SS_ESTIMATE_COVARIANCE;
    const FieldSet fields = kef::stats::field::mean | kef::stats::field::raw_moment_2 |
                            kef::stats::field::central_sum_3;
    const std::uint64_t few =
        VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_RAW_MOMENT_2 | VTS_SS_ESTIMATE_CENTRAL_SUM_3;
    for (int method : data_methods) {
        const auto expect_same_results = [&](auto weight, int exponent) {
            SCOPED_TRACE(testing::Message() << method << " 2^" << exponent);
            std::vector<T> w(n), scaled(n);
            for (int j = 0; j < n; ++j) w[j] = weight(j), scaled[j] = std::ldexp(w[j], exponent);
            Problem<T> a(p, n, data, w), b(p, n, data, scaled), c(p, n, data, scaled);
            ASSERT_EQ(VTS_SS_STATUS_OK, a.basic(estimates, method));
            ASSERT_EQ(VTS_SS_STATUS_OK, b.basic(estimates, method));
            expect_same(a, b, 0);
            c.basic_in_blocks(estimates, method, 99);
            expect_same(a, c, 300 * std::numeric_limits<T>::epsilon());
            // A third central sum from one task to another, which works out the second one.
            if (method == VTS_SS_METHOD_RAW) return;
            Problem<T> whole(p, n, data, w, VTS_SS_STORAGE_COLUMNS, fields);
            Problem<T> first(p, n, data, scaled, VTS_SS_STORAGE_COLUMNS, fields);
            Problem<T> second(p, n, data, scaled, VTS_SS_STORAGE_COLUMNS, fields);
            ASSERT_EQ(VTS_SS_STATUS_OK, whole.basic(few, method));
            ASSERT_EQ(VTS_SS_STATUS_OK, first.block(0, 150, few, method));
            second.take_over(first);
            ASSERT_EQ(VTS_SS_STATUS_OK, second.block(150, n - 150, few, method));
            for (int i = 0; i < p; ++i)  // the deviations are of the order of i + 1
                EXPECT_NEAR(whole.central_sum_3[i], std::ldexp(second.central_sum_3[i], -exponent),
                            n * 10 * std::pow(i + 1, 3) * std::numeric_limits<T>::epsilon());
        };
        for (int exponent : exponents) {
            expect_same_results([](int j) { return T(j % 7 + 1); }, exponent);
            expect_same_results([](int j) { return T(j == 5 ? 1.7 : 0); }, exponent);
        }
    }
}

// Also where the squares of the weights overflow or are subnormal, of all or of some blocks.
TEST(StatsBasic, ScaleOfWeightsCancels) {
    expect_scale_of_weights_to_cancel<double>({-600, -549, -515, 490, 512, 600});
    expect_scale_of_weights_to_cancel<float>({-80, -70, 62, 80});
    Problem<double> mixed(1, 4, {1, 5, 2, 3}, {1e-170, 3e-170, 1e-3, 1e-3});
    mixed.basic_in_blocks(mean_and_variance, VTS_SS_METHOD_TILED, 1);
    EXPECT_NEAR(0.5, mixed.central_moment_2[0], 1e-15);
    EXPECT_NEAR(2e-6, mixed.accumulated[1], 1e-20);
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
                EXPECT_NEAR(indices[i] ? all.central_moment_4[i] : untouched,
                            some.central_moment_4[i], 1e-11);
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
                    EXPECT_EQ(0, one.central_moment_2[i]);
                    EXPECT_EQ(0, one.central_sum_4[i]);
                    EXPECT_TRUE(std::isnan(one.kurtosis[i]));
                    for (int j = 0; j < p; ++j) EXPECT_EQ(0, one.covariance[i * p + j]);
                }
            }
        for (double value : {nan, infinity, -infinity}) {
            Problem<double> one(1, 1, {value});
            ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(everything, method));
            EXPECT_TRUE(std::isnan(one.central_moment_2[0])) << value;
            EXPECT_TRUE(std::isnan(one.central_sum_3[0]) && std::isnan(one.central_moment_4[0]));
        }
        // The same where w x / w is not x, and N is rounding noise.
        std::mt19937 random(3);
        std::uniform_real_distribution<double> uniform(0.1, 10);
        for (int k = 0; k < 1000; ++k) {
            Problem<double> one(1, 3, {uniform(random), 5, 7}, {uniform(random), 0, 0});
            ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(everything, method));
            const double noise = method == VTS_SS_METHOD_RAW ? 0 : 1e-30;
            EXPECT_NEAR(0, one.central_moment_2[0], noise);
            EXPECT_NEAR(0, one.central_moment_3[0], noise);
            EXPECT_NEAR(0, one.covariance[0], 1e-30);
        }
        // W W = W2 by negative weights is something else.
        Problem<double> cancelling(1, 3, {0, 2, 1}, {2, 2, -1});
        ASSERT_EQ(VTS_SS_STATUS_OK, cancelling.basic(everything, method));
        EXPECT_NEAR(4, cancelling.central_sum_2[0], 1e-14);
        // A negative weight may make a sum of squares negative, and a weight of 0.
        if (method != VTS_SS_METHOD_RAW) {
            Problem<double> negative(1, 2, {0, 1}, {3, -1});
            ASSERT_EQ(VTS_SS_STATUS_OK, negative.basic(everything, method));
            EXPECT_EQ(-1.5, negative.central_sum_2[0]);
        } else {
            Problem<double> none(1, 2, {3, 5}, {1, -1});
            ASSERT_EQ(VTS_SS_STATUS_OK, none.basic(everything, method));
            EXPECT_EQ(-2, none.sum[0]);
            EXPECT_EQ(untouched, none.mean[0]);
        }
        // Constant data give 0 and NaN, not noise.
        for (bool weighted : {false, true}) {
            Problem<double> constant(2, 500, std::vector<double>(1000, 0.1),
                                     weighted ? weights_for<double>(500) : std::vector<double>());
            ASSERT_EQ(VTS_SS_STATUS_OK, constant.basic(everything, method));
            EXPECT_GE(constant.central_moment_2[0], 0);
            EXPECT_FALSE(std::isinf(constant.kurtosis[0]) || std::isinf(constant.skewness[0]));
            EXPECT_EQ(0, constant.covariance[1]);
            EXPECT_TRUE(std::isnan(constant.correlation[1]));
            EXPECT_EQ(1, constant.correlation[0]);
            if (method == VTS_SS_METHOD_RAW) continue;
            EXPECT_EQ(0.1, constant.mean[0]);
            EXPECT_EQ(0, constant.central_moment_2[0]);
            EXPECT_EQ(0, constant.central_sum_4[1]);
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
                    EXPECT_EQ(i == bad, !std::isfinite(problem.central_moment_2[i]));
                    EXPECT_EQ(i == bad, !std::isfinite(problem.raw_moment_4[i]));
                }
                if (std::isinf(value)) EXPECT_EQ(value, problem.mean[bad]);
                EXPECT_TRUE(std::isnan(problem.covariance[bad * 3 + (bad + 1) % 3]));
                EXPECT_TRUE(std::isfinite(problem.covariance[(bad + 1) % 3 * 3 + (bad + 2) % 3]));
            }
    }
    // Raw sums of constant data: none is noise where the variance is 0 by accident.
    for (int k = 1; k < 100; ++k)
        for (int n : {3, 5, 6, 7}) {
            Problem<double> constant(1, n, std::vector<double>(n, 0.1 * k));
            ASSERT_EQ(VTS_SS_STATUS_OK, constant.basic(everything, VTS_SS_METHOD_RAW));
            if (constant.central_moment_2[0] != 0) continue;
            EXPECT_EQ(0, constant.central_moment_3[0]) << k;
            EXPECT_EQ(0, constant.central_moment_4[0]) << k;
        }
    // Far beyond where squares are finite the mean still is.
    Problem<double> huge(1, 3, {1e300, 1.5e300, 2e300});
    ASSERT_EQ(VTS_SS_STATUS_OK, huge.basic(VTS_SS_ESTIMATE_MEAN, VTS_SS_METHOD_TILED));
    EXPECT_EQ(1.5e300, huge.mean[0]);
}

// Every estimate alone: what it requires is written, and nothing else.
TEST(StatsBasic, WritesWhatItRequires) {
    const int p = 3, n = 40;
    const auto data = normal_data<double>(p, n, 2);
    for (int method : data_methods) {
        Problem<double> all(p, n, data), none(p, n, data);
        ASSERT_EQ(VTS_SS_STATUS_OK, all.basic(everything, method));
#define KEF_ESTIMATE(NAME, ...)                                                    \
    {                                                                              \
        SCOPED_TRACE(testing::Message() << #NAME << ", method " << method);        \
        Problem<double> single(p, n, data);                                        \
        ASSERT_EQ(VTS_SS_STATUS_OK, single.basic(VTS_SS_ESTIMATE_##NAME, method)); \
        const FieldSet required = required_for(VTS_SS_ESTIMATE_##NAME, method);    \
        expect_same(all, single, 1e-13, required);                                 \
        expect_same(none, single, 0, ~required);                                   \
    }
#include "stats/estimate.def"
    }
}

// The results of a block over its observations and weights; from sums, over the sums.
TEST(StatsBasic, OverlaysThatAreAllowed) {
    const int p = 3, n = 600;
    const auto data = normal_data<double>(p, n, 1);
    const auto w = weights_for<double>(n);
    for (int method : data_methods)
        for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
            Problem<double> apart(p, n, data, w, storage), over(p, n, data, w, storage);
            ASSERT_EQ(VTS_SS_STATUS_OK, apart.basic(everything, method));
            double *vectors = over.weights.data(), *matrices = over.x.data();
            for (const auto& field : kef::stats::result_fields) {
                double*& place = field.shape == kef::stats::Shape::vector ? vectors : matrices;
                over.task->*field.array = place;
                place += field.shape == kef::stats::Shape::vector ? p : p * p;
            }
            ASSERT_EQ(VTS_SS_STATUS_OK, over.basic(everything, method));
            const auto results = apart.results();
            for (std::size_t k = 0; k < results.size(); ++k) {
                const auto* place =
                    static_cast<double*>(over.task->*kef::stats::result_fields[k].array);
                EXPECT_EQ(*results[k].second,
                          std::vector<double>(place, place + results[k].second->size()))
                    << results[k].first;
            }
        }

    constexpr std::uint64_t derived = moments | VTS_SS_ESTIMATE_COVARIANCE;
    Problem<double> apart(p, n, data), over(p, n, data);
    for (Problem<double>* r : {&apart, &over})
        ASSERT_EQ(VTS_SS_STATUS_OK, r->basic(everything, VTS_SS_METHOD_TILED));
    over.set(VTS_SS_ID_MEAN, over.sum);
    over.set(VTS_SS_ID_RAW_MOMENT_2, over.raw_sum_2);
    over.set(VTS_SS_ID_RAW_MOMENT_3, over.raw_sum_3);
    over.set(VTS_SS_ID_RAW_MOMENT_4, over.raw_sum_4);
    over.set(VTS_SS_ID_CENTRAL_MOMENT_2, over.central_sum_2);
    over.set(VTS_SS_ID_CENTRAL_MOMENT_3, over.central_sum_3);
    over.set(VTS_SS_ID_CENTRAL_MOMENT_4, over.central_sum_4);
    over.set(VTS_SS_ID_COVARIANCE, over.cross_product);
    for (Problem<double>* r : {&apart, &over})
        ASSERT_EQ(VTS_SS_STATUS_OK, r->basic(derived, VTS_SS_METHOD_SUMS));
    EXPECT_EQ(apart.mean, over.sum);
    EXPECT_EQ(apart.raw_moment_4, over.raw_sum_4);
    EXPECT_EQ(apart.central_moment_2, over.central_sum_2);
    EXPECT_EQ(apart.central_moment_4, over.central_sum_4);
    EXPECT_EQ(apart.kurtosis, over.kurtosis);
    EXPECT_EQ(apart.covariance, over.cross_product);
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
#define KEF_ESTIMATE(NAME, result, ...) derive.set(VTS_SS_ID_##NAME, derive.result);
#include "stats/estimate.def"
            __vtsiSSEditTask(derive.task, VTS_SS_ID_COVARIANCE_STORAGE, &derive.layout);
            __vtsiSSEditTask(derive.task, VTS_SS_ID_CORRELATION_STORAGE, &derive.layout);
            EXPECT_EQ(VTS_SS_STATUS_NULL_STORAGE, derive.basic(derived, method));
            __vtsiSSEditTask(derive.task, VTS_SS_ID_CROSS_PRODUCT_STORAGE, &derive.layout);
            ASSERT_EQ(VTS_SS_STATUS_OK, derive.basic(derived, method));
            expect_same(direct, derive, 1e-14);
            __vtsSSDeleteTask(&without_x);
        }
}

// Shapes alone come from the moments in the arrays; one observation divides by its weight.
TEST(StatsBasic, FromSumsOfEarlierCalls) {
    Problem<double> r(1, 1, {0});
    r.accumulated = {10, 10};
    r.mean = {2}, r.central_moment_2 = {4}, r.central_moment_3 = {3}, r.central_moment_4 = {50};
    ASSERT_EQ(VTS_SS_STATUS_OK, r.basic(VTS_SS_ESTIMATE_KURTOSIS | VTS_SS_ESTIMATE_SKEWNESS |
                                            VTS_SS_ESTIMATE_VARIATION,
                                        VTS_SS_METHOD_SUMS));
    const double v = 4 * 0.9;
    EXPECT_NEAR(50 * 0.9 / (v * v) - 3, r.kurtosis[0], 1e-14);
    EXPECT_NEAR(3 * 0.9 / (v * std::sqrt(v)), r.skewness[0], 1e-15);
    EXPECT_EQ(1, r.variation[0]);

    const double w = 1.816977388820451;
    Problem<double> one(1, 1, {0});
    one.accumulated = {w, w * w};
    one.central_sum_2 = {1e-17};
    ASSERT_EQ(VTS_SS_STATUS_OK, one.basic(VTS_SS_ESTIMATE_CENTRAL_MOMENT_2, VTS_SS_METHOD_SUMS));
    EXPECT_EQ(1e-17 / w, one.central_moment_2[0]);
}

}  // namespace
}  // namespace stats_tests
