// Mahalanobis distances, partial covariance and parametrized correlation, beside the same in 113
// bits, in every storage and layout and with variables left out.
#include <quadmath.h>

#include "stats/eigen.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

using Quad = __float128;
using Index = std::ptrdiff_t;
using Indices = std::vector<Index>;

constexpr int layouts[] = {VTS_SS_LAYOUT_FULL, VTS_SS_LAYOUT_LOWER, VTS_SS_LAYOUT_UPPER};
constexpr int storages[] = {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS};

// A symmetric matrix, whole.
template <class E> struct Square {
    Index p;
    std::vector<E> element;
    explicit Square(Index p, E value = 0) : p(p), element(p * p, value) {}
    E& operator()(Index i, Index j) { return element[i * p + j]; }
    const E& operator()(Index i, Index j) const { return element[i * p + j]; }
};

// Its elements as the layout has them.
template <class T> std::vector<T> pack(const Square<T>& m, int layout) {
    std::vector<T> packed;
    for (Index i = 0; i < m.p; ++i)
        for (Index j = 0; j < m.p; ++j)
            if (layout == VTS_SS_LAYOUT_FULL || (layout == VTS_SS_LAYOUT_LOWER ? j <= i : i <= j))
                packed.push_back(m(i, j));
    return packed;
}

// The covariance of some mixed normal variables; the last of them nearly a combination of others,
// the more so the less `rest` is. In units of very different size.
template <class T> Square<T> covariance_like(Index p, double rest) {
    const int n = static_cast<int>(p) + 30;
    const auto x = normal_data<double>(n, static_cast<int>(p), 0, 7);
    Square<Quad> data(n);  // the variables, one a row
    for (Index i = 0; i < p; ++i)
        for (Index k = 0; k < n; ++k) data(i, k) = (x[i * n + k] - Quad(k));
    for (Index k = 0; p > 1 && k < n; ++k)
        data(p - 1, k) = data(p - 1, k) * rest + data(0, k) + data(p / 2, k);
    Square<T> s(p);
    for (Index i = 0; i < p; ++i)
        for (Index j = 0; j <= i; ++j) {
            Quad sum = 0;
            for (Index k = 0; k < n; ++k) sum += data(i, k) * data(j, k);
            const auto unit = [](Index k) { return static_cast<int>(5 * k % 9) - 4; };
            s(i, j) = s(j, i) = T(std::ldexp(double(sum / n), unit(i) + unit(j)));
        }
    return s;
}

// The condition number of a matrix scaled to diagonal 1.
template <class T> double condition(const Square<T>& s, const Indices& of) {
    const Index q = static_cast<Index>(of.size());
    kef::stats::KeptLayout layout;
    kef::stats::SymmetricEigen::reserve(layout, q);
    std::vector<double> room(layout.size() / sizeof(double) + 2);
    kef::stats::SymmetricEigen eigen(reinterpret_cast<char*>(room.data()), q);
    EXPECT_TRUE(eigen.solve([&](Index a, Index b) {
        return double(s(of[a], of[b])) / std::sqrt(double(s(of[a], of[a]))) /
               std::sqrt(double(s(of[b], of[b])));
    }));
    double least = infinity, most = 0;
    for (Index r = 0; r < q; ++r) {
        least = std::min(least, eigen.value(r));
        most = std::max(most, eigen.value(r));
    }
    return most / least;
}

// The columns S^-1 b, for the rows and columns `of`, by elimination.
using Columns = std::vector<std::vector<Quad>>;
template <class T> Columns solve(const Square<T>& s, const Indices& of, Columns columns) {
    const Index q = static_cast<Index>(of.size());
    Square<Quad> a(q);
    for (Index i = 0; i < q; ++i)
        for (Index j = 0; j < q; ++j) a(i, j) = s(of[i], of[j]);
    for (Index k = 0; k < q; ++k)
        for (Index i = k + 1; i < q; ++i) {
            const Quad factor = a(i, k) / a(k, k);
            for (Index j = k; j < q; ++j) a(i, j) -= factor * a(k, j);
            for (auto& b : columns) b[i] -= factor * b[k];
        }
    for (auto& b : columns)
        for (Index i = q; i-- > 0;) {
            for (Index j = i + 1; j < q; ++j) b[i] -= a(i, j) * b[j];
            b[i] /= a(i, i);
        }
    return columns;
}

// All, every other one, one alone.
std::vector<std::vector<std::int32_t>> selections(Index p) {
    std::vector<std::vector<std::int32_t>> flags(3, std::vector<std::int32_t>(p, 0));
    for (Index i = 0; i < p; ++i) flags[0][i] = 1, flags[1][i] = i % 2 == 0 ? -1 : 0;
    flags[2][p - 1] = 5;
    return flags;
}
Indices selected(const std::vector<std::int32_t>& flags) {
    Indices list;
    for (Index i = 0; i < static_cast<Index>(flags.size()); ++i)
        if (flags[i] != 0) list.push_back(i);
    return list;
}

// Half a last place of T, and what 32 units of 2^-52 times the condition number are.
template <class T> double bound(double condition) {
    return (sizeof(T) == 4 ? 0x1p-24 : 0) + 32 * 0x1p-52 * condition;
}

// --- Mahalanobis distance -------------------------------------------------------

template <class T> struct Distance : Problem<T> {
    std::vector<T> result;
    Distance(Index p, int n, const std::vector<T>& x, const std::vector<T>& m, const Square<T>& s,
             int storage, int layout)
        : Problem<T>(static_cast<int>(p), n, x, {}, storage, 0), result(n + 1, T(untouched)) {
        this->layout = layout;
        this->mean = m;
        this->covariance = pack(s, layout);
        this->set(VTS_SS_ID_MEAN, this->mean);
        this->set(VTS_SS_ID_COVARIANCE, this->covariance);
        this->set(VTS_SS_ID_MAHALANOBIS_DISTANCE, result);
    }
    std::int32_t call() { return Api<T>::mahalanobis_distance(this->task, 0, 0); }
};

template <class T> void check_distances(double rest) {
    for (const Index p : {1, 2, 3, 4, 9, 10, 33, 50})
        for (const int n : {1, 2, 9, 130}) {
            const auto x = normal_data<T>(static_cast<int>(p), n, 100);
            const Square<T> s = covariance_like<T>(p, rest);
            std::vector<T> m(p);
            for (Index i = 0; i < p; ++i) m[i] = T(100.25 + i);
            for (const auto& flags : selections(p)) {
                const Indices of = selected(flags);
                const double limit = bound<T>(condition(s, of));
                std::vector<double> exact(n);
                Columns d(n);
                for (int j = 0; j < n; ++j)
                    for (const Index i : of) d[j].push_back(Quad(x[j * p + i]) - m[i]);
                const Columns z = solve(s, of, d);
                for (int j = 0; j < n; ++j) {
                    Quad square = 0;
                    for (std::size_t a = 0; a < of.size(); ++a) square += d[j][a] * z[j][a];
                    exact[j] = double(sqrtq(square));
                }
                for (const int storage : storages)
                    for (const int layout : layouts) {
                        SCOPED_TRACE(testing::Message() << "p = " << p << ", n = " << n << " "
                                                        << storage << ", layout " << layout);
                        Distance<T> problem(p, n, x, m, s, storage, layout);
                        __vtsiSSEditTask(problem.task, VTS_SS_ID_INDICES, flags.data());
                        ASSERT_EQ(VTS_SS_STATUS_OK, problem.call());
                        for (int j = 0; j < n; ++j)
                            ASSERT_LE(std::fabs(problem.result[j] - exact[j]), limit * exact[j])
                                << j;
                        EXPECT_EQ(T(untouched), problem.result[n]);
                    }
            }
        }
}

TEST(StatsMatrices, DistancesAgainst113Bits) {
    check_distances<double>(1);
    check_distances<double>(1e-5);
    check_distances<float>(1);
}

// --- partial covariance ---------------------------------------------------------

template <class T> struct Partial {
    std::int32_t p, in, out;
    std::vector<std::int32_t> marks;
    std::vector<T> matrix, covariance, correlation;
    kef_ss_task* task = nullptr;
    Partial(const Square<T>& s, const std::vector<std::int32_t>& marks, int in, int out,
            bool from_correlation = false)
        : p(static_cast<std::int32_t>(s.p)),
          in(in),
          out(out),
          marks(marks),
          matrix(pack(s, in)),
          covariance(p * p + 1, T(untouched)),
          correlation(covariance) {
        Api<T>::new_task(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
        __vtsiSSEditTask(task, VTS_SS_ID_PARTIAL_INDICES, this->marks.data());
        const auto set = [&](int id, int storage_id, std::vector<T>& array, std::int32_t& layout) {
            Api<T>::edit(task, id, array.data());
            __vtsiSSEditTask(task, storage_id, &layout);
        };
        if (from_correlation)
            set(VTS_SS_ID_CORRELATION, VTS_SS_ID_CORRELATION_STORAGE, matrix, this->in);
        else set(VTS_SS_ID_COVARIANCE, VTS_SS_ID_COVARIANCE_STORAGE, matrix, this->in);
        set(VTS_SS_ID_PARTIAL_COVARIANCE, VTS_SS_ID_PARTIAL_COVARIANCE_STORAGE, covariance,
            this->out);
        set(VTS_SS_ID_PARTIAL_CORRELATION, VTS_SS_ID_PARTIAL_CORRELATION_STORAGE, correlation,
            this->out);
    }
    ~Partial() { __vtsSSDeleteTask(&task); }
    std::int32_t call() { return Api<T>::partial_covariance(task, 0, 0); }
};

// C_YY - C_YZ C_ZZ^-1 C_ZY.
template <class T>
Square<Quad> exact_partial(const Square<T>& s, const Indices& y, const Indices& z) {
    Square<Quad> P(static_cast<Index>(y.size()));
    Columns right(y.size());
    for (Index b = 0; b < P.p; ++b)
        for (const Index k : z) right[b].push_back(s(k, y[b]));
    const Columns solution = solve(s, z, right);
    for (Index b = 0; b < P.p; ++b)
        for (Index a = 0; a < P.p; ++a) {
            P(a, b) = s(y[a], y[b]);
            for (std::size_t k = 0; k < z.size(); ++k) P(a, b) -= right[a][k] * solution[b][k];
        }
    return P;
}

template <class T> void check_partial(double rest) {
    for (const Index p : {2, 3, 5, 10, 31, 50}) {
        const Square<T> s = covariance_like<T>(p, rest);
        for (int pattern = 0; pattern < 4; ++pattern) {
            std::vector<std::int32_t> marks(p, 0);
            Indices y, z;
            for (Index i = 0; i < p; ++i) {
                // Y and Z in turn, one of Y in the middle, one of Z at the end, some of neither.
                const int kind = pattern == 0   ? i % 2
                                 : pattern == 1 ? i == p / 2
                                 : pattern == 2 ? i != p - 1
                                                : static_cast<int>(i * 7 % 3) + (p < 5);
                marks[i] = kind == 1 ? 3 : kind == 0 ? -2 : 0;
                if (kind == 1) y.push_back(i);
                if (kind == 0) z.push_back(i);
            }
            if (y.empty() || z.empty()) continue;
            const Square<Quad> exact = exact_partial(s, y, z);
            const double limit = bound<T>(condition(s, selected(marks)));
            for (const int in : layouts)
                for (const int out : layouts) {
                    SCOPED_TRACE(testing::Message() << "p = " << p << ", pattern " << pattern
                                                    << ", layouts " << in << ", " << out);
                    Partial<T> problem(s, marks, in, out);
                    ASSERT_EQ(VTS_SS_STATUS_OK, problem.call());
                    const auto size = pack(exact, out).size();
                    Square<double> covariance(exact.p), correlation(exact.p), scale(exact.p);
                    for (Index a = 0; a < exact.p; ++a)
                        for (Index b = 0; b < exact.p; ++b) {
                            covariance(a, b) = double(exact(a, b));
                            scale(a, b) = double(sqrtq(exact(a, a) * exact(b, b)));
                            correlation(a, b) = double(exact(a, b)) / scale(a, b);
                        }
                    const auto c = pack(covariance, out), r = pack(correlation, out),
                               unit = pack(scale, out);
                    for (std::size_t k = 0; k < size; ++k) {
                        ASSERT_LE(std::fabs(problem.covariance[k] - c[k]), limit * unit[k]) << k;
                        ASSERT_LE(std::fabs(problem.correlation[k] - r[k]), limit) << k;
                    }
                    for (std::size_t k = size; k < problem.covariance.size(); ++k) {
                        ASSERT_EQ(T(untouched), problem.covariance[k]);
                        ASSERT_EQ(T(untouched), problem.correlation[k]);
                    }
                    for (Index a = 0; a < exact.p; ++a)
                        if (out == VTS_SS_LAYOUT_FULL)
                            ASSERT_EQ(1, problem.correlation[a * (exact.p + 1)]);
                }
        }
    }
}

TEST(StatsMatrices, PartialCovarianceAgainst113Bits) {
    check_partial<double>(1);
    check_partial<double>(1e-5);
    check_partial<float>(1);
}

// By hand: with C = (4 2 2; 2 5 1; 2 1 6) and the first held fixed, P = (4 0; 0 5); the correlation
// serves as well; the indices take variables out; a determined variable varies no more.
TEST(StatsMatrices, PartialCovarianceOfSmallMatrices) {
    Square<double> s(3);
    s.element = {4, 2, 2, 2, 5, 1, 2, 1, 6};
    Partial<double> whole(s, {-1, 1, 1}, 0, 0);
    ASSERT_EQ(VTS_SS_STATUS_OK, whole.call());
    EXPECT_EQ((std::vector<double>{4, 0, 0, 5}),
              std::vector<double>(whole.covariance.begin(), whole.covariance.begin() + 4));

    s.element = {1, 0.5, 0.5, 0.5, 1, 0.25, 0.5, 0.25, 1};
    Partial<double> correlation(s, {-1, 1, 1}, 0, 1, true);
    std::int32_t nothing = -1;
    __vtsiSSEditTask(correlation.task, VTS_SS_ID_COVARIANCE_STORAGE, &nothing);  // is not read
    ASSERT_EQ(VTS_SS_STATUS_OK, correlation.call());
    EXPECT_EQ(
        (std::vector<double>{0.75, 0, 0.75}),
        std::vector<double>(correlation.covariance.begin(), correlation.covariance.begin() + 3));

    const std::int32_t without_last[] = {1, 1, 0};
    Partial<double> less(s, {-1, 1, 1}, 0, 0);
    __vtsiSSEditTask(less.task, VTS_SS_ID_INDICES, without_last);
    ASSERT_EQ(VTS_SS_STATUS_OK, less.call());
    EXPECT_EQ(0.75, less.covariance[0]);
    EXPECT_EQ(untouched, less.covariance[1]);

    const double nearly = 0.5 + 0x1p-40;  // what rounding leaves is not kept
    s.element = {1, 1, 0.5, 1, 1, nearly, 0.5, nearly, 1};
    Partial<double> determined(s, {-1, 1, 1}, 0, 0);
    ASSERT_EQ(VTS_SS_STATUS_OK, determined.call());
    EXPECT_EQ(
        (std::vector<double>{0, 0, 0, 0.75}),
        std::vector<double>(determined.covariance.begin(), determined.covariance.begin() + 4));
    EXPECT_EQ(1, determined.correlation[0]);
    EXPECT_TRUE(std::isnan(determined.correlation[1]));
}

// --- parametrized correlation ---------------------------------------------------

template <class T> struct Parametrized {
    std::int32_t p, in, out;
    std::vector<T> matrix, result;
    kef_ss_task* task = nullptr;
    Parametrized(const Square<T>& r, int in, int out)
        : p(static_cast<std::int32_t>(r.p)),
          in(in),
          out(out),
          matrix(pack(r, in)),
          result(p * p + 1, T(untouched)) {
        Api<T>::new_task(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
        Api<T>::edit(task, VTS_SS_ID_CORRELATION, matrix.data());
        Api<T>::edit(task, VTS_SS_ID_PARAMETRIZED_MATRIX, result.data());
        __vtsiSSEditTask(task, VTS_SS_ID_CORRELATION_STORAGE, &this->in);
        __vtsiSSEditTask(task, VTS_SS_ID_PARAMETRIZED_MATRIX_STORAGE, &this->out);
    }
    ~Parametrized() { __vtsSSDeleteTask(&task); }
    std::int32_t call() { return Api<T>::correlation_parametrization(task, 0, 0); }
};

// What is a correlation comes back, singular or not, and what is none becomes one.
template <class T> void check_parametrized() {
    const double epsilon = std::numeric_limits<T>::epsilon();
    for (const Index p : {1, 2, 3, 6, 10, 31, 50})
        for (const int in : layouts)
            for (const int out : layouts) {
                SCOPED_TRACE(testing::Message() << "p = " << p << ", " << in << ", " << out);
                const Square<double> s = covariance_like<double>(p, 0);  // singular
                Square<T> r(p);
                for (Index i = 0; i < p; ++i)
                    for (Index j = 0; j < p; ++j)
                        r(i, j) = i == j ? 1 : T(s(i, j) / std::sqrt(s(i, i)) / std::sqrt(s(j, j)));
                Parametrized<T> same(r, in, out);
                ASSERT_EQ(VTS_SS_STATUS_OK, same.call());
                const auto expected = pack(r, out);
                for (std::size_t k = 0; k < expected.size(); ++k)
                    ASSERT_LE(std::fabs(same.result[k] - expected[k]), 4 * p * epsilon);
                ASSERT_EQ(T(untouched), same.result[expected.size()]);
                if (in != out) continue;

                for (Index i = 1; i < p; ++i) r(i, i - 1) = r(i - 1, i) = T(-0.9);
                Parametrized<T> other(r, in, VTS_SS_LAYOUT_FULL);
                ASSERT_EQ(VTS_SS_STATUS_OK, other.call());
                Square<T> result(p);
                result.element.assign(other.result.begin(), other.result.end() - 1);
                kef::stats::KeptLayout layout;
                kef::stats::SymmetricEigen::reserve(layout, p);
                std::vector<double> room(layout.size() / sizeof(double));
                kef::stats::SymmetricEigen eigen(reinterpret_cast<char*>(room.data()), p);
                ASSERT_TRUE(eigen.solve([&](Index i, Index j) { return double(result(i, j)); }));
                for (Index k = 0; k < p; ++k) EXPECT_GE(eigen.value(k), -4 * p * epsilon);
                for (Index i = 0; i < p; ++i) {
                    EXPECT_EQ(1, result(i, i));
                    for (Index j = 0; j < p; ++j) {
                        EXPECT_EQ(result(j, i), result(i, j));
                        EXPECT_LE(std::fabs(result(i, j)), 1);
                    }
                }
                // In place, and twice: a correlation already.
                Parametrized<T> again(result, 0, 0);
                again.result = other.result;
                Api<T>::edit(again.task, VTS_SS_ID_CORRELATION, again.result.data());
                ASSERT_EQ(VTS_SS_STATUS_OK, again.call());
                for (Index k = 0; k < p * p; ++k)
                    EXPECT_LE(std::fabs(again.result[k] - other.result[k]), 4 * p * epsilon);
            }
}

// Three variables of which each two have the correlation r = -3/4: eigenvalues 1 - r twice and 1 +
// 2r = -1/2, so that all become -1/2.
TEST(StatsMatrices, ParametrizedCorrelation) {
    check_parametrized<double>();
    check_parametrized<float>();
    Square<double> r(3, -0.75);
    for (int i = 0; i < 3; ++i) r(i, i) = 1;
    Parametrized<double> three(r, 0, VTS_SS_LAYOUT_LOWER);
    ASSERT_EQ(VTS_SS_STATUS_OK, three.call());
    for (const int k : {1, 3, 4}) EXPECT_NEAR(-0.5, three.result[k], 1e-15);

    // A variable left out keeps its places; one of which nothing is left has no correlation.
    r(0, 0) = -1;
    r(1, 0) = r(0, 1) = 0;
    const std::int32_t flags[] = {1, 1, 0};
    Parametrized<double> part(r, 0, 0);
    __vtsiSSEditTask(part.task, VTS_SS_ID_INDICES, flags);
    ASSERT_EQ(VTS_SS_STATUS_OK, part.call());
    const double u = untouched;
    EXPECT_EQ((std::vector<double>{1, 0, u, 0, 1, u, u, u, u, u}), part.result);

    // The unit of the matrix plays no part, as far as doubles go.
    Square<double> unit(3, 0.6);
    for (int i = 0; i < 3; ++i) unit(i, i) = 0.9;
    for (const double scale : {1.0, std::numeric_limits<double>::max(), 0x1p-1000}) {
        Square<double> scaled = unit;
        for (double& element : scaled.element) element *= scale;
        Parametrized<double> parametrized(scaled, 0, VTS_SS_LAYOUT_LOWER);
        ASSERT_EQ(VTS_SS_STATUS_OK, parametrized.call());
        for (const int k : {1, 3, 4}) EXPECT_NEAR(2 / 3., parametrized.result[k], 1e-15);
    }
}

// --- bad input ------------------------------------------------------------------

// Refused with a name and nothing written; and the same task goes on with good input.
template <class Problem, class Array>
void expect_refused(int status, Problem& problem, Array& element, double bad,
                    const std::vector<double>& result, Index least = 0) {
    const auto good = element;
    element = bad;
    EXPECT_EQ(status, problem.call());
    for (double value : result) EXPECT_EQ(untouched, value);
    element = good;
    EXPECT_EQ(VTS_SS_STATUS_OK, problem.call());
    EXPECT_NE(untouched, result[least]);
}

TEST(StatsMatrices, BadInput) {
    const Square<double> s = covariance_like<double>(4, 1);
    const auto x = normal_data<double>(4, 5, 0);
    const auto in_new = [&](auto f) {
        Distance<double> distance(4, 5, x, {1, 2, 3, 4}, s, VTS_SS_STORAGE_ROWS, 0);
        Partial<double> partial(s, {-1, 1, -1, 1}, 0, 0);
        Parametrized<double> parametrized(s, 0, 0);
        f(distance, partial, parametrized);
    };
    for (const double bad : {nan, infinity, -1.0, 0.0})
        in_new([&](auto& distance, auto& partial, auto& parametrized) {
            const int status = VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
            expect_refused(status, distance, distance.covariance[5], bad, distance.result);
            expect_refused(status, partial, partial.matrix[10], bad, partial.covariance);
            if (bad - bad != 0)
                expect_refused(status, parametrized, parametrized.matrix[8], bad,
                               parametrized.result);
        });
    // Equal variables are singular, and no refusal for who does not look at both.
    Square<double> equal(4);
    for (Index i = 0; i < 4; ++i)
        for (Index j = 0; j < 4; ++j) equal(i, j) = i == j || i + j == 4 ? 2 : 0;
    Distance<double> twins(4, 5, x, {1, 2, 3, 4}, equal, VTS_SS_STORAGE_ROWS, 0);
    EXPECT_EQ(VTS_SS_STATUS_NOT_POSITIVE_DEFINITE, twins.call());
    const std::int32_t one_twin[] = {1, 1, 0, 0}, none[] = {0, 0, 0, 0};
    __vtsiSSEditTask(twins.task, VTS_SS_ID_INDICES, none);
    EXPECT_EQ(VTS_SS_STATUS_OK, twins.call());
    for (const double d : twins.result) EXPECT_EQ(untouched, d);
    __vtsiSSEditTask(twins.task, VTS_SS_ID_INDICES, one_twin);
    EXPECT_EQ(VTS_SS_STATUS_OK, twins.call());
    EXPECT_NE(untouched, twins.result[0]);
    // A bad observation is its own alone.
    in_new([&](auto& distance, auto&, auto&) {
        distance.x[1] = nan;
        distance.x[2] = infinity;
        ASSERT_EQ(VTS_SS_STATUS_OK, distance.call());
        for (int j = 0; j < 5; ++j)
            EXPECT_EQ(j != 1 && j != 2, std::isfinite(distance.result[j])) << j;
    });
    // The layout of what is read counts.
    Partial<double> from_correlation(s, {-1, 1, -1, 1}, 3, 0, true);
    EXPECT_EQ(VTS_SS_STATUS_NULL_STORAGE, from_correlation.call());
    // No variable of interest, none held fixed.
    for (const std::int32_t mark : {-1, 0, 1}) {
        Partial<double> partial(s, std::vector<std::int32_t>(4, mark), 0, 0);
        EXPECT_EQ(VTS_SS_STATUS_NOTHING_MARKED, partial.call());
        EXPECT_EQ(untouched, partial.covariance[0]);
    }
}

}  // namespace
}  // namespace stats_tests
