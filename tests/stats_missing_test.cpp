// Missing values: maximum likelihood against closed forms and R, laws of the data augmentation.
#include <functional>

#include "tests/robust_reference.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

template <class T> struct Missing {
    std::int32_t p, n, storage = VTS_SS_STORAGE_COLUMNS;
    std::int32_t a_count = 5, b_count = 0, c_count = 0, d_count = 0, e_count = 0;
    std::vector<T> x, a = {1000, 1, T(1e-12), 0, 0}, b, c, d, e;
    std::vector<std::int32_t> indices;
    kef_ss_task* task = nullptr;

    Missing(int p, const std::vector<double>& rows)
        : p(p), n(int(rows.size()) / p), x(rows.begin(), rows.end()) {
        if (sizeof(T) == 4) a[2] = T(1e-7);
        Api<T>::new_task(&task, &this->p, &n, &storage, x.data(), nullptr, nullptr, 0);
        set(0, 0);
    }
    ~Missing() { __vtsSSDeleteTask(&task); }
    Missing(const Missing&) = delete;

    int law() const { return p + p * (p + 1) / 2; }
    int missing() const {
        int count = 0;
        for (T value : x) count += value != value;
        return count;
    }
    void set(int imputations, int draws) {
        a[1] = T(draws), a[3] = T(imputations);
        d.assign(std::max(1, imputations * missing()), T(untouched));
        e.assign((1 + imputations) * law(), T(untouched));
        connect();
    }
    void connect() {
        b_count = int(b.size()), c_count = int(c.size());
        d_count = int(d.size()), e_count = int(e.size());
        const auto address = [](std::vector<T>& array) {
            return array.empty() ? nullptr : array.data();
        };
        if constexpr (sizeof(T) == 8)
            __vtsdSSEditMissingVals(task, &a_count, a.data(), &b_count, address(b), &c_count,
                                    address(c), &d_count, d.data(), &e_count, e.data());
        else
            __vtssSSEditMissingVals(task, &a_count, a.data(), &b_count, address(b), &c_count,
                                    address(c), &d_count, d.data(), &e_count, e.data());
    }
    std::int32_t operator()() { return Api<T>::missing_values(task, 0, 0); }
    double mean(int i, int record = 0) const { return e[record * law() + i]; }
    double covariance(int i, int j, int record = 0) const {
        if (i < j) std::swap(i, j);
        return e[record * law() + p + j * p - j * (j - 1) / 2 + i - j];
    }
    bool is_clear() const {
        for (auto* results : {&d, &e})
            for (T value : *results)
                if (value != T(untouched)) return false;
        return true;
    }
};

// Correlated normal data, a share of them missing.
std::vector<double> holed(int p, int n, double share, unsigned seed = 11) {
    auto rows = normal_data<double>(p, n, 3, seed);
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(0, 1);
    for (int j = 0; j < n; ++j)
        for (int i = p; i-- > 0;) {
            if (i > 0) rows[j * p + i] += rows[j * p + i - 1] * 0.7;
            if (uniform(generator) < share) rows[j * p + i] = nan;
        }
    return rows;
}

// A normal law, and the law of the rest where some variables are known, one after the other.
struct Law {
    int p;
    std::vector<long double> mean, covariance;
    explicit Law(int p) : p(p), mean(p), covariance(p * p) {}
    long double& at(int i, int j) { return covariance[i * p + j]; }

    template <class T> Law given(const T* y) const {
        Law law = *this;
        for (int k = 0; k < p; ++k) {
            if (y[k] != y[k]) continue;
            const long double variance = law.at(k, k), shift = (y[k] - law.mean[k]) / variance;
            std::vector<long double> row(p);
            for (int i = 0; i < p; ++i) row[i] = law.at(i, k);
            for (int i = 0; i < p; ++i) {
                law.mean[i] += row[i] * shift;
                for (int j = 0; j < p; ++j) law.at(i, j) -= row[i] * row[j] / variance;
            }
        }
        return law;
    }
    // As arrays B, C and E have it, the matrix times a number.
    template <class T> void write(std::vector<T>& to, double times = 1) {
        for (int i = 0; i < p; ++i) to.push_back(T(mean[i]));
        for (int j = 0; j < p; ++j)
            for (int i = j; i < p; ++i) to.push_back(T(at(i, j) * times));
    }
    // Equal correlations, unequal deviations: so are those of the rest.
    static Law correlated(int p, double correlation) {
        Law law(p);
        for (int i = 0; i < p; ++i) {
            law.mean[i] = 2 - i % 3;
            for (int j = 0; j < p; ++j)
                law.at(i, j) = (1 + i % 4) * (1 + j % 4) * (i == j ? 1 : correlation);
        }
        return law;
    }
};

template <class T> class StatsMissing : public testing::Test {};
using Precisions = testing::Types<double, float>;
TYPED_TEST_SUITE(StatsMissing, Precisions);

TYPED_TEST(StatsMissing, MaximumLikelihoodOfR) {
    const auto estimates = RobustReference::get().of("mle");
    ASSERT_EQ(1u, estimates.size());
    const auto& e = estimates[0];
    Missing<TypeParam> task(4, RobustReference::get().sets.at(e.set).rows);
    task.a[4] = 44;
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    const double bound = sizeof(TypeParam) == 8 ? 1e-9 : 1e-5;
    for (int i = 0; i < 4; ++i) {
        const double s = std::sqrt(e.covariance[i * 5]);
        EXPECT_NEAR(e.mean[i], task.mean(i), bound * s);
        for (int j = 0; j <= i; ++j)
            EXPECT_NEAR(e.covariance[i * 4 + j], task.covariance(i, j),
                        bound * s * std::sqrt(e.covariance[j * 5]));
    }
}

// Steps of EM from a given law, as sums over the observations: of expected values and of expected
// products.
TYPED_TEST(StatsMissing, StepsOfEM) {
    for (const int p : {1, 5, 66}) {
        SCOPED_TRACE(p);
        const int n = p + 30;
        Missing<TypeParam> task(p, holed(p, n, p < 10 ? 0.25 : 0.03));
        Law law = Law::correlated(p, 0.375);
        law.write(task.b);
        task.connect();
        task.a[0] = 2, task.a[2] = 0;
        ASSERT_EQ(VTS_SS_STATUS_ITERATION_LIMIT, task());
        for (int step = 0; step < 2; ++step) {
            Law next(p);
            std::vector<long double> d(p);
            for (int j = 0; j < n; ++j) {
                Law one = law.given(&task.x[j * p]);
                for (int i = 0; i < p; ++i) {
                    next.mean[i] += one.mean[i] / n;
                    d[i] = one.mean[i] - law.mean[i];
                }
                for (int i = 0; i < p; ++i)
                    for (int k = 0; k < p; ++k) next.at(i, k) += (d[i] * d[k] + one.at(i, k)) / n;
            }
            for (int i = 0; i < p; ++i)
                for (int k = 0; k < p; ++k)
                    next.at(i, k) -= (next.mean[i] - law.mean[i]) * (next.mean[k] - law.mean[k]);
            law = next;
        }
        const double bound = sizeof(TypeParam) == 8 ? 1e-12 : 1e-6;
        for (int i = 0; i < p; ++i) {
            const double s = std::sqrt(law.at(i, i));
            EXPECT_NEAR(law.mean[i], task.mean(i), bound * (s + std::abs(law.mean[i]))) << i;
            for (int k = 0; k <= i; ++k)
                EXPECT_NEAR(law.at(i, k), task.covariance(i, k),
                            bound * s * std::sqrt(law.at(k, k)))
                    << i << ' ' << k;
        }
    }
}

// One variable complete, the other not: the likelihood factors (Anderson, JASA 52:200, 1957), the
// regression of the second on the first comes from the complete observations, the first's moments
// from all. Then in the other order, in the other storage, and with a third variable left out.
TYPED_TEST(StatsMissing, MonotonePattern) {
    const int n = 61;
    auto rows = holed(2, n, 0);
    for (int j = 0; j < n; ++j)
        if (j % 3 == 1 || j > 50) rows[2 * j + 1] = nan;
    double m[2] = {}, sxx = 0, sxy = 0, syy = 0, all = 0, all2 = 0, k = 0;
    const auto each = [&](auto f) {
        for (int j = 0; j < n; ++j)
            if (rows[2 * j + 1] == rows[2 * j + 1]) f(rows[2 * j], rows[2 * j + 1]);
    };
    each([&](double x, double y) { m[0] += x, m[1] += y, ++k; });
    m[0] /= k, m[1] /= k;
    each([&](double x, double y) {
        sxx += (x - m[0]) * (x - m[0]) / k;
        sxy += (x - m[0]) * (y - m[1]) / k;
        syy += (y - m[1]) * (y - m[1]) / k;
    });
    for (int j = 0; j < n; ++j) all += rows[2 * j] / n;
    for (int j = 0; j < n; ++j) all2 += (rows[2 * j] - all) * (rows[2 * j] - all) / n;
    const double slope = sxy / sxx;
    const double expected[] = {all, m[1] + slope * (all - m[0]), all2, slope * all2,
                               syy + slope * slope * (all2 - sxx)};
    const double bound = sizeof(TypeParam) == 8 ? 1e-10 : 3e-6;
    for (const int form : {0, 1, 2}) {
        const int p = form == 2 ? 3 : 2, first = form == 1 ? 1 : 0,
                  second = form == 0 ? 1 : p - 1 - first;
        std::vector<double> data(n * p, nan);
        for (int j = 0; j < n; ++j) {
            data[j * p + first] = rows[2 * j];
            data[j * p + second] = rows[2 * j + 1];
        }
        Missing<TypeParam> task(p, data);
        if (form > 0) {
            const auto columns = task.x;
            for (int i = 0; i < p; ++i)
                for (int j = 0; j < n; ++j) task.x[i * n + j] = columns[j * p + i];
            task.storage = VTS_SS_STORAGE_ROWS;
        }
        if (form == 2) {
            task.indices = {1, 0, 1};
            __vtsiSSEditTask(task.task, VTS_SS_ID_INDICES, task.indices.data());
        }
        ASSERT_EQ(VTS_SS_STATUS_OK, task());
        EXPECT_NEAR(expected[0], task.mean(first), bound * 10);
        EXPECT_NEAR(expected[1], task.mean(second), bound * 10);
        EXPECT_NEAR(expected[2], task.covariance(first, first), bound * 10);
        EXPECT_NEAR(expected[3], task.covariance(first, second), bound * 10);
        EXPECT_NEAR(expected[4], task.covariance(second, second), bound * 10);
        if (form != 2) continue;
        EXPECT_EQ(TypeParam(untouched), task.mean(1));
        for (int i = 0; i < 3; ++i) EXPECT_EQ(TypeParam(untouched), task.covariance(1, i));
    }
}

// Where many patterns occur, more than a word of them holds: no start changes where EM ends, nor
// does the order of the observations, and the expected log-likelihood has no slope there: another
// step stays.
TEST(StatsMissingData, FixedPoint) {
    for (const int p : {3, 9, 70}) {
        SCOPED_TRACE(p);
        const int n = p == 70 ? 400 : 300;
        const auto rows = holed(p, n, p == 70 ? 0.02 : 0.2);
        Missing<double> task(p, rows);
        task.a[2] = 1e-11;
        ASSERT_EQ(VTS_SS_STATUS_OK, task());
        Missing<double> reversed(p, rows);
        for (int j = 0; j < n; ++j) std::copy_n(&rows[j * p], p, &reversed.x[(n - 1 - j) * p]);
        reversed.a[2] = 1e-11;
        reversed.b.assign(reversed.law(), 0);
        for (int i = 0; i < p; ++i) {
            reversed.b[i] = i;
            reversed.b[p + i * p - i * (i - 1) / 2] = 5;
        }
        reversed.connect();
        ASSERT_EQ(VTS_SS_STATUS_OK, reversed());
        for (int k = 0; k < task.law(); ++k)
            EXPECT_NEAR(task.e[k], reversed.e[k], 1e-8 * (1 + std::abs(task.e[k]))) << k;
        const auto before = task.e;
        task.b = before;
        task.connect();
        task.a[0] = 1, task.a[2] = 1e-9;
        ASSERT_EQ(VTS_SS_STATUS_OK, task());
    }
}

TYPED_TEST(StatsMissing, NothingMissing) {
    const auto rows = normal_data<double>(3, 600, 1e3, 4);
    Missing<TypeParam> task(3, rows);
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    Problem<double> plain(3, 600, rows);
    ASSERT_EQ(VTS_SS_STATUS_OK, plain.basic(everything, VTS_SS_METHOD_TILED));
    const double bound = sizeof(TypeParam) == 8 ? 1e-12 : 1e-4;
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(plain.mean[i], task.mean(i), bound * 1e3);
        for (int j = 0; j <= i; ++j)
            EXPECT_NEAR(plain.cross_product[i * 3 + j] / 600, task.covariance(i, j), bound * 10);
    }
}

// Of complete data the posterior is known: the mean of the covariance is V'/(nu' - p - 1), that of
// the means (n m + tau mu0)/(tau + n), with the covariance E Sigma/tau'. Deviations of averages
// over the draws stay within 5 of their own standard deviations.
TEST(StatsMissingData, PosteriorOfCompleteData) {
    const int p = 3, n = 12, draws = 4000;
    for (const bool informed : {false, true}) {
        Missing<double> task(p, holed(p, n, 0));
        task.set(draws, 1);
        double tau = 0, nu = -1, mu0[p] = {}, V[p][p] = {};
        if (informed) {
            tau = 6, nu = 9;
            task.c = {tau, nu};
            for (int i = 0; i < p; ++i) task.c.push_back(mu0[i] = 2 - i);
            for (int j = 0; j < p; ++j)
                for (int i = j; i < p; ++i) task.c.push_back(V[i][j] = V[j][i] = i == j ? 8 : 2);
            task.connect();
        }
        ASSERT_EQ(VTS_SS_STATUS_OK, task());
        double m[p], sum[p] = {}, Sigma[p][p] = {}, spread[p] = {};
        const double share = tau * n / (tau + n), freedom = nu + n - p - 1;
        for (int i = 0; i < p; ++i) m[i] = (n * task.mean(i) + tau * mu0[i]) / (tau + n);
        for (int k = 1; k <= draws; ++k)
            for (int i = 0; i < p; ++i) {
                sum[i] += task.mean(i, k) / draws;
                spread[i] += (task.mean(i, k) - m[i]) * (task.mean(i, k) - m[i]) / draws;
                for (int j = 0; j < p; ++j) Sigma[i][j] += task.covariance(i, j, k) / draws;
            }
        for (int i = 0; i < p; ++i) {
            const auto expected = [&](int j) {
                return (V[i][j] + n * task.covariance(i, j) +
                        share * (task.mean(i) - mu0[i]) * (task.mean(j) - mu0[j])) /
                       freedom;
            };
            const double variance = expected(i), sigma = std::sqrt(variance / (tau + n));
            EXPECT_NEAR(m[i], sum[i], 5 * sigma / std::sqrt(draws));
            EXPECT_NEAR(1, spread[i] / (sigma * sigma), 0.2);
            for (int j = 0; j < p; ++j) {
                const double scale = std::sqrt(variance * Sigma[j][j]);
                EXPECT_NEAR(expected(j) / scale, Sigma[i][j] / scale, 0.06) << i << ' ' << j;
            }
        }
    }
}

// Where the prior leaves no doubt about the law, what is imputed has the law of what is missing
// given the rest of its observation, and nothing to do with others: means and covariances of all
// values within 5 of their deviations. D is in the order of x.
TYPED_TEST(StatsMissing, ImputedValues) {
    const int p = 5, n = 40, imputations = 20000;
    const double certain = 1e9;
    auto rows = holed(p, n, 0);
    const std::vector<int> gaps[] = {{0, 2, 4}, {0, 2, 4}, {1, 3}, {4}, {0, 1, 2, 3, 4}};
    for (int j = 0; j < 5; ++j)
        for (const int i : gaps[j]) rows[(7 + 3 * j) * p + i] = nan;
    Missing<TypeParam> task(p, rows);
    task.set(imputations, 2);
    task.a[4] = 14;
    Law law = Law::correlated(p, 0.7);
    task.c = {TypeParam(certain), TypeParam(certain)};
    law.write(task.c, certain);
    task.connect();
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    const auto value = [&](int k, int v) { return double(task.d[k * 14 + v]); };
    double mean[14] = {};
    for (int v = 0; v < 14; ++v)
        for (int k = 0; k < imputations; ++k) mean[v] += value(k, v) / imputations;
    for (int j = 0, v = 0; j < 5; ++j) {
        Law rest = law.given(&task.x[(7 + 3 * j) * p]);
        for (const int i : gaps[j]) {
            EXPECT_NEAR(rest.mean[i], mean[v], 5 * std::sqrt(rest.at(i, i) / imputations)) << v;
            for (int k = 0, w = 0; k < 5; ++k)
                for (const int l : gaps[k]) {
                    double product = 0;
                    for (int m = 0; m < imputations; ++m)
                        product += (value(m, v) - mean[v]) * (value(m, w) - mean[w]) / imputations;
                    Law other = law.given(&task.x[(7 + 3 * k) * p]);
                    const double expected = j == k ? rest.at(i, l) : 0;
                    EXPECT_NEAR(
                        expected, product,
                        5 * std::sqrt((rest.at(i, i) * other.at(l, l) + expected * expected) /
                                      imputations))
                        << v << ' ' << w;
                    ++w;
                }
            ++v;
        }
    }

    // The same again, by the fixed seed; and the first of them does not depend on how many follow.
    const auto values = task.d, laws = task.e;
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    EXPECT_EQ(values, task.d);
    EXPECT_EQ(laws, task.e);
    task.set(1, 2);
    task.e_count = 0;
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    EXPECT_TRUE(std::equal(task.d.begin(), task.d.end(), values.begin()));
    for (TypeParam value : task.e) EXPECT_EQ(TypeParam(untouched), value);
}

TYPED_TEST(StatsMissing, BadInput) {
    using Task = Missing<TypeParam>;
    const TypeParam huge = std::numeric_limits<TypeParam>::max(),
                    not_a_number = std::numeric_limits<TypeParam>::quiet_NaN();
    constexpr int parameters = VTS_SS_STATUS_BAD_PARAMETERS,
                  few = VTS_SS_STATUS_TOO_FEW_OBSERVATIONS,
                  singular = VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    const struct {
        std::function<void(Task&)> spoil;
        std::int32_t status;
    } cases[] = {
        {[](Task& t) { t.a_count = 4; }, parameters},
        {[](Task& t) { t.a[0] = 0; }, parameters},
        {[](Task& t) { t.a[0] = TypeParam(1.5); }, parameters},
        {[](Task& t) { t.a[0] = TypeParam(1e30); }, parameters},
        {[](Task& t) { t.a[1] = 0; }, parameters},
        {[](Task& t) { t.a[2] = -1; }, parameters},
        {[=](Task& t) { t.a[2] = not_a_number; }, parameters},
        {[](Task& t) { t.a[3] = -1; }, parameters},
        {[](Task& t) { t.a[4] = 1; }, parameters},
        {[](Task& t) { t.a[4] = -3; }, parameters},
        {[](Task& t) { t.b_count = 8; }, parameters},
        {[](Task& t) { t.b_count = -1; }, parameters},
        {[](Task& t) { t.b_count = 9; }, VTS_SS_STATUS_NULL_MISSING_B},
        {[](Task& t) { t.c_count = 9; }, parameters},
        {[](Task& t) { t.c_count = 11; }, VTS_SS_STATUS_NULL_MISSING_C},
        {[](Task& t) { --t.d_count; }, parameters},
        {[](Task& t) { ++t.e_count; }, parameters},
        {[](Task& t) { t.n = 3; }, few},
        {[=](Task& t) {
             for (int j = 1; j < t.n; ++j) t.x[j * 3 + 1] = not_a_number;
             t.d.assign(1000, TypeParam(untouched)), t.connect();
         },
         few},
        {[](Task& t) {
             for (int j = 0; j < t.n; ++j)
                 if (t.x[j * 3] == t.x[j * 3]) t.x[j * 3] = 5;
         },
         singular},
        {[=](Task& t) { t.x[1] = huge * 2; }, singular},
        {[](Task& t) {  // singular after the only step
             t.set(0, 1), t.a[0] = 1;
             for (int j = 0; j < t.n; ++j) t.x[j * 3] = t.x[j * 3 + 1] = TypeParam(j % 7);
         },
         singular},
        {[](Task& t) { t.b.assign(9, 1), t.connect(); }, singular},
        {[=](Task& t) { t.b.assign(9, not_a_number), t.connect(); }, singular},
        {[](Task& t) { t.c.assign(11, 0), t.c[0] = -1, t.connect(); }, parameters},
        {[](Task& t) { t.c.assign(11, 0), t.c[1] = TypeParam(2.5 - t.n), t.connect(); },
         parameters},
        {[=](Task& t) { t.c.assign(11, 0), t.c[1] = not_a_number, t.connect(); }, parameters},
        // tau, nu, mu0, the matrix by rows of its upper triangle
        {[](Task& t) { t.c = {1, 5, 0, 0, 0, 1, 2, 0, 1, 0, 1}, t.connect(); }, singular},
        {[](Task& t) { t.c = {1, 5, 0, 0, 0, 1, 0, TypeParam(0.5), 1, 0, 0}, t.connect(); },
         singular},
        {[](Task& t) { t.c = {1, 5, 0, 0, 0, -1, 0, 0, 1, 0, 1}, t.connect(); }, singular},
        {[=](Task& t) { t.c = {1, 5, 0, 0, 0, 1, 0, 0, not_a_number, 0, 1}, t.connect(); },
         singular},
        {[=](Task& t) { t.c = {1, 5, 0, huge * 2, 0, 1, 0, 0, 1, 0, 1}, t.connect(); }, singular},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Task task(3, holed(3, 60, 0.1));
        task.set(2, 1);
        c.spoil(task);
        EXPECT_EQ(c.status, task());
        EXPECT_TRUE(task.is_clear());
    }
    // A matrix of the prior may be singular.
    Task informed(3, holed(3, 60, 0.1));
    informed.set(2, 1);
    informed.c = {1, 5, 0, 0, 0, 1, 3, 0, 9, 0, 0};
    informed.connect();
    EXPECT_EQ(VTS_SS_STATUS_OK, informed());

    Task task(3, holed(3, 60, 0.1));
    task.set(1, 1);
    task.task->missing_d = nullptr;
    EXPECT_EQ(VTS_SS_STATUS_NULL_MISSING_D, task());
    EXPECT_TRUE(task.is_clear());
    task.connect();
    EXPECT_EQ(VTS_SS_STATUS_OK, task());
}

// A limit ends EM; what it has come to is written, with imputations. All values of an observation
// may be missing.
TEST(StatsMissingData, IterationLimit) {
    auto rows = holed(3, 60, 0.3);
    rows[30] = rows[31] = rows[32] = nan;
    Missing<double> task(3, rows);
    ASSERT_EQ(VTS_SS_STATUS_OK, task());
    const auto law = task.e;
    task.set(1, 1);
    task.a[0] = 20;
    task.a[2] = 0;
    EXPECT_EQ(VTS_SS_STATUS_ITERATION_LIMIT, task());
    for (int k = 0; k < task.law(); ++k)
        EXPECT_NEAR(law[k], task.e[k], 0.01 * (1 + std::abs(law[k])));
    for (double value : task.d) EXPECT_NE(untouched, value);
}

}  // namespace
}  // namespace stats_tests
