// Cell search: every entry against the definition.
#include <algorithm>
#include <limits>
#include <string>

#include "tests/fit_data.h"

namespace {

using namespace fit_test;

// Cells that mean nothing, right cells and wrong ones by turns.
template <class T>
int32_t propose(const kef_df_task*, int64_t n, const T* site, int64_t* cell, void* user) {
    const auto& x = *static_cast<const std::vector<T>*>(user);
    for (int64_t j = 0; j < n; ++j) {
        const auto right = std::upper_bound(x.begin(), x.end(), site[j]) - x.begin();
        cell[j] = j % 3 == 0 ? right : j % 3 == 1 ? INT64_MIN + j : (right + j) % (x.size() + 1);
    }
    return 0;
}

template <class T> int64_t defined_cell(const std::vector<T>& x, T q) {
    if (!(q >= x.front())) return 0;
    if (q == x.back()) return x.size() - 1;
    return std::upper_bound(x.begin(), x.end(), q) - x.begin();
}

template <class T> std::vector<T> probes(const std::vector<T>& x, int random_count) {
    const T inf = std::numeric_limits<T>::infinity(), huge = std::numeric_limits<T>::max();
    std::vector<T> q = {-inf, inf, -huge, huge, std::numeric_limits<T>::quiet_NaN()};
    const std::size_t stride = std::max<std::size_t>(1, x.size() / 700);
    for (std::size_t i = 0; i < x.size(); i += i + stride < x.size() ? stride : 1)
        q.insert(q.end(), {std::nextafter(x[i], -inf), x[i], std::nextafter(x[i], inf)});
    std::mt19937 random(7);
    std::uniform_real_distribution<double> part(-0.02, 1.02);
    for (int i = 0; i < random_count; ++i)
        q.push_back(static_cast<T>(x.front() + part(random) * (double(x.back()) - x.front())));
    std::shuffle(q.begin(), q.end(), random);
    return q;
}

template <class T>
void expect_all_right(const std::string& name, kef_df_task* task, std::vector<T> x) {
    using E = Searches<T>;
    for (bool sorted : {false, true}) {
        std::vector<T> q = probes(x, 600);
        if (sorted)
            std::sort(q.begin(), q.end(), [](T a, T b) { return a < b || (a == a && b != b); });
        const std::size_t n = q.size();
        std::vector<int64_t> expected(n), wide(n);
        std::vector<int32_t> narrow(n);
        for (std::size_t j = 0; j < n; ++j) expected[j] = defined_cell(x, q[j]);
        const int64_t hint = sorted ? DF_SORTED : DF_ANY_ORDER;
        const auto check = [&](const char* entry, int which, const auto& cell) {
            for (std::size_t j = 0; j < n; ++j) {
                ASSERT_EQ(expected[j], cell[j]) << name << ", " << entry << ' ' << which << ", n "
                                                << x.size() << ", site " << q[j];
            }
        };
        for (int k = 0; k < 6; ++k) {
            ASSERT_EQ(DF_STATUS_OK, E::wide[k](task, n, q.data(), hint, wide.data()));
            check("entry", k, wide);
            ASSERT_EQ(DF_STATUS_OK, E::narrow[k](task, n, q.data(), hint, narrow.data()));
            check("entry 32", k, narrow);
        }
        ASSERT_EQ(DF_STATUS_OK, E::user(task, n, q.data(), hint, wide.data(), propose<T>, &x));
        check("user", 0, wide);
        ASSERT_EQ(DF_STATUS_OK,
                  E::user_uniform(task, n, q.data(), hint, wide.data(), propose<T>, &x));
        check("uniform user", 0, wide);
        ASSERT_EQ(DF_STATUS_OK, E::user32(task, n, q.data(), hint, narrow.data(), propose<T>, &x));
        check("user 32", 0, narrow);
        ASSERT_EQ(DF_STATUS_OK,
                  E::user_uniform32(task, n, q.data(), hint, narrow.data(), propose<T>, &x));
        check("uniform user 32", 0, narrow);
    }
}

// Shapes of partitions; each ascends strictly in both precisions for its sizes.
struct Shape {
    const char* name;
    double (*place)(double part);
};
const Shape shapes[] = {
    {"equal", [](double t) { return 3 + t; }},
    {"nearly equal", [](double t) { return t + 0.2 * std::sin(40 * t) / 40; }},
    {"crowded left", [](double t) { return t * t * t * t; }},
    {"two crowds", [](double t) { return t < 0.5 ? std::pow(t, 3) : 100 + std::pow(t - 0.5, 3); }},
    {"one far point", [](double t) { return t < 1 ? t : 1e6; }},
};

template <class T> std::vector<T> partition(const Shape& shape, int n) {
    std::vector<T> x(n);
    for (int i = 0; i < n; ++i) x[i] = static_cast<T>(shape.place(double(i) / (n - 1)));
    x.erase(std::unique(x.begin(), x.end()), x.end());
    return x;
}

template <class T> void all_shapes(std::initializer_list<int> sizes) {
    for (const Shape& shape : shapes) {
        for (int n : sizes) {
            std::vector<T> x = partition<T>(shape, n);
            for (int64_t hint : {DF_NON_UNIFORM, DF_QUASI_UNIFORM, DF_UNIFORM}) {
                kef_df_task* task = nullptr;
                ASSERT_EQ(DF_STATUS_OK,
                          Api<T>::new_task(&task, x.size(), x.data(), hint, 0, nullptr, 0, 0));
                expect_all_right(shape.name, task, x);
                // The table of other breakpoints between the same ends, and of ends
                // elsewhere: slower, not wrong.
                if (hint == DF_NON_UNIFORM && x.size() > 2) {
                    std::vector<T> other = x;
                    for (std::size_t i = 1; i + 1 < x.size(); ++i)
                        other[i] = x[i] + (x[i + 1] - x[i]) / 2;
                    Api<T>::edit_pointer(task, DF_X, other.data());
                    expect_all_right("changed inside", task, other);
                    for (T& v : other) v = 2 * v - 1;
                    expect_all_right("changed ends", task, other);
                    kef_df_kernel_iEditVal(task, DF_NX, 2);
                    expect_all_right("fewer", task,
                                     std::vector<T>(other.begin(), other.begin() + 2));
                }
                kef_df_kernel_DeleteTask(&task);
            }
        }
    }
}

TEST(FitSearch, Double) { all_shapes<double>({2, 3, 4, 5, 17, 300, 4097}); }
TEST(FitSearch, Single) { all_shapes<float>({2, 3, 17, 300, 4097}); }
TEST(FitSearch, ManyBreakpoints) { all_shapes<double>({100000}); }

TEST(FitSearch, MillionBreakpoints) {
    std::vector<double> x(1000000);
    std::mt19937_64 random(3);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = i + double(random() % 1000) / 1001;
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK,
              kef_df_kernel_dNewTask1D(&task, x.size(), x.data(), 0, 0, nullptr, 0, 0));
    expect_all_right("random", task, x);
    kef_df_kernel_DeleteTask(&task);
}

// One wrong proposal among right ones, in the place of each lane: nearby, far and no cell at all.
template <class T> void one_wrong_proposal() {
    const int n = 20, count = 8;
    std::vector<T> x(n), q(count);
    for (int i = 0; i < n; ++i) x[i] = static_cast<T>(i + 0.3 * std::sin(i));
    for (int j = 0; j < count; ++j) q[j] = x[(5 * j + 3) % 17] + T(0.1);
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK, Api<T>::new_task(&task, n, x.data(), 0, 0, nullptr, 0, 0));
    std::vector<int64_t> right(count), got(count);
    for (int j = 0; j < count; ++j) right[j] = defined_cell(x, q[j]);
    const auto hand_over = [](const kef_df_task*, int64_t m, const T*, int64_t* cell, void* user) {
        std::copy_n(static_cast<int64_t*>(user), m, cell);
        return int32_t{0};
    };
    for (int bad = 0; bad < count; ++bad)
        for (const int64_t wrong : {right[bad] - 1, right[bad] + 1, INT64_C(1), INT64_C(19),
                                    INT64_C(20), INT64_MAX, INT64_MIN}) {
            std::vector<int64_t> proposed = right;
            proposed[bad] = wrong;
            for (const auto search : {Searches<T>::user, Searches<T>::user_uniform}) {
                ASSERT_EQ(DF_STATUS_OK, search(task, count, q.data(), DF_ANY_ORDER, got.data(),
                                               hand_over, proposed.data()));
                EXPECT_EQ(got, right) << "place " << bad << ", proposed " << wrong;
            }
        }
    kef_df_kernel_DeleteTask(&task);
}
TEST(FitSearch, OneWrongProposal) {
    one_wrong_proposal<double>();
    one_wrong_proposal<float>();
}

// Many ascending sites to a cell, and a uniform grid of sites in both directions.
TEST(FitSearch, DenseSitesAndGrids) {
    const std::vector<double> x = {0, 1, 1.5, 4, 4.25, 9};
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dNewTask1D(&task, 6, x.data(), 0, 0, nullptr, 0, 0));
    for (const auto& [left, right] : {std::pair{-1.0, 10.0}, {10.0, -1.0}, {4.25, 4.25}}) {
        const int n = 1009;
        const double ends[] = {left, right};
        std::vector<int64_t> cell(n);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFSearch1D(task, n, ends, DF_UNIFORM, cell.data()));
        for (int j = 0; j < n; ++j) {
            const double q = j == n - 1 ? right : left + j * ((right - left) / (n - 1));
            ASSERT_EQ(defined_cell(x, q), cell[j]) << j;
        }
    }
    int64_t one = -1;
    const double site = 4.25;
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFSearch1D(task, 1, &site, DF_UNIFORM, &one));
    EXPECT_EQ(5, one);
    kef_df_kernel_DeleteTask(&task);
}

TEST(FitSearch, BadInput) {
    const double x[] = {0, 1, 2}, q = 0.5;
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dNewTask1D(&task, 3, x, 0, 0, nullptr, 0, 0));
    int64_t cell = -7;
    const auto search = kef_df_kernel_dDFSearch1D;
    EXPECT_EQ(DF_STATUS_NULL_TASK, search(nullptr, 1, &q, 0, &cell));
    EXPECT_EQ(DF_STATUS_SITE_COUNT, search(task, -1, &q, 0, &cell));
    EXPECT_EQ(DF_STATUS_SITE_HINT, search(task, 1, &q, 3, &cell));
    EXPECT_EQ(DF_STATUS_SITES, search(task, 1, nullptr, 0, &cell));
    EXPECT_EQ(DF_STATUS_RESULTS, search(task, 1, &q, 0, nullptr));
    EXPECT_EQ(DF_STATUS_OK, search(task, 0, nullptr, 0, nullptr));
    EXPECT_EQ(DF_STATUS_SEARCH_FUNCTION,
              kef_df_kernel_dDFUserDefSearch1D(task, 1, &q, 0, &cell, nullptr, nullptr));
    EXPECT_EQ(-99,
              kef_df_kernel_dDFUserDefSearch1D(
                  task, 1, &q, 0, &cell,
                  [](const kef_df_task*, int64_t, const double*, int64_t*, void*) { return -99; },
                  nullptr));
    EXPECT_EQ(-7, cell);
    kef_df_kernel_DeleteTask(&task);

    // Breakpoints that do not ascend: refused on request, else some cell, and an end.
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = 1 / 0.0;
    std::vector<std::vector<double>> bad = {{0, 0, 0, 0},     {3, 2, 1, 0},      {0, nan, nan, 5},
                                            {nan, 1, 2, nan}, {-inf, 0, 1, inf}, {0, 1, 1, 2},
                                            {0, 9, -9, 3},    {0, 3, nan, 4}};
    std::vector<double> shuffled(500);
    std::mt19937 random(1);
    for (double& v : shuffled) v = random() % 1000;
    shuffled.front() = 0, shuffled.back() = 1000;
    bad.push_back(shuffled);
    for (const auto& x : bad) {
        for (int64_t hint : {DF_NON_UNIFORM, DF_QUASI_UNIFORM, DF_UNIFORM}) {
            ASSERT_EQ(DF_STATUS_OK,
                      kef_df_kernel_dNewTask1D(&task, x.size(), x.data(), hint, 0, nullptr, 0, 0));
            const double n = x.size();
            const std::vector<double> sites = {-1, 0,  0.5, 1,   1.5, 2,    2.5, 3,
                                               4,  10, 999, nan, inf, -inf, 2,   1};
            for (auto entry : Searches<double>::wide) {
                for (int repeat : {1, 300}) {
                    std::vector<double> q;
                    for (int r = 0; r < repeat; ++r) q.insert(q.end(), sites.begin(), sites.end());
                    std::vector<int64_t> cells(q.size(), -1);
                    ASSERT_EQ(DF_STATUS_OK,
                              entry(task, q.size(), q.data(), DF_SORTED, cells.data()));
                    for (int64_t c : cells) EXPECT_TRUE(c >= 0 && c <= n);
                }
                kef_df_kernel_iEditVal(task, DF_CHECK_FLAG, 1);
                EXPECT_EQ(DF_STATUS_X, entry(task, 1, &q, 0, &cell));
                kef_df_kernel_iEditVal(task, DF_CHECK_FLAG, 0);
            }
            kef_df_kernel_DeleteTask(&task);
        }
    }
}

}  // namespace
