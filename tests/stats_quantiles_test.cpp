// Quantiles and sorted observations, beside sorting by the standard library.
#include <bit>
#include <cstring>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

template <class T> bool same(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

// Ascending, -0 before +0.
template <class T> std::vector<T> sorted(std::vector<T> x) {
    std::sort(x.begin(), x.end(),
              [](T a, T b) { return a < b || (a == b && std::signbit(a) && !std::signbit(b)); });
    return x;
}

// Data that trouble a distribution into buckets, by name.
template <class T> std::vector<std::pair<std::string, std::vector<T>>> data_sets(int n) {
    std::mt19937 generator(n);
    std::uniform_real_distribution<double> uniform;
    std::normal_distribution<double> normal;
    const double huge = std::numeric_limits<T>::max(), tiny = std::numeric_limits<T>::denorm_min();
    const auto make = [&](auto value) {
        std::vector<T> x(n);
        for (int j = 0; j < n; ++j) x[j] = static_cast<T>(value(j));
        return x;
    };
    auto outliers = make([&](int) { return normal(generator); });
    if (n > 3) outliers[n / 3] = T(huge), outliers[n / 2] = T(-huge);
    auto infinite = outliers;
    infinite[0] = T(infinity);
    if (n > 1) infinite[n - 1] = T(-infinity);
    return {
        {"normal", make([&](int) { return normal(generator); })},
        {"far from zero", make([&](int) { return 1e6 + uniform(generator); })},
        {"ascending", make([](int j) { return j; })},
        {"descending", make([](int j) { return -j; })},
        {"constant", make([](int) { return 7; })},
        {"five values", make([&](int) { return std::floor(5 * uniform(generator)) - 2; })},
        {"zeros of both signs", make([&](int) { return uniform(generator) < 0.5 ? -0.0 : 0.0; })},
        {"many scales", make([&](int) { return std::exp(40 * normal(generator)); })},
        {"zeros and many scales", make([&](int j) {
             return j % 3 == 2 ? std::exp(40 * normal(generator)) : j % 3 == 0 ? -0.0 : 0.0;
         })},
        {"subnormal", make([&](int) { return std::floor(2000 * normal(generator)) * tiny; })},
        {"full range", make([&](int) { return (2 * uniform(generator) - 1) * huge; })},
        {"one step apart, then huge",
         make([&](int j) { return j == 0 ? huge : 1 + (j & 1) * 0x1p-23; })},
        {"outliers", outliers},
        {"infinities", infinite},
    };
}

// A call on the given data, one of several variables.
template <class T> struct Call {
    static constexpr int p = 3;
    std::int32_t count, sorted_storage;
    std::vector<T> orders, quantiles, statistics;
    Problem<T> problem;

    // The variables are x, x reversed and -x; [j*p + i].
    static std::vector<T> variables(const std::vector<T>& x) {
        const std::size_t n = x.size();
        std::vector<T> data(p * n);
        for (std::size_t j = 0; j < n; ++j)
            data[j * p] = x[j], data[j * p + 1] = x[n - 1 - j], data[j * p + 2] = -x[j];
        return data;
    }
    Call(const std::vector<T>& x, const std::vector<T>& orders, int storage, int sorted_storage = 0)
        : count(static_cast<int>(orders.size())),
          sorted_storage(sorted_storage),
          orders(orders),
          quantiles(p * orders.size(), T(untouched)),
          statistics(p * x.size(), T(untouched)),
          problem(p, static_cast<int>(x.size()), variables(x), {}, storage, 0) {
        if (!orders.empty()) {
            problem.set(VTS_SS_ID_QUANTILES, quantiles);
            problem.set(VTS_SS_ID_QUANTILE_ORDERS, this->orders);
            __vtsiSSEditTask(problem.task, VTS_SS_ID_QUANTILE_ORDER_COUNT, &count);
        }
        if (sorted_storage != 0) {
            problem.set(VTS_SS_ID_ORDER_STATISTICS, statistics);
            __vtsiSSEditTask(problem.task, VTS_SS_ID_ORDER_STATISTICS_STORAGE,
                             &this->sorted_storage);
        }
    }
    std::int32_t run() { return Api<T>::quantiles(problem.task, 0, 0); }
    T statistic(int i, int j) const {
        return statistics[sorted_storage == VTS_SS_STORAGE_ROWS ? i * problem.n + j : j * p + i];
    }
};

// The orders of all ranks, so that the quantiles are the sorted numbers: j / (n - 1) times n - 1 is
// j again, but for a rounding that the fraction shows.
template <class T> std::vector<T> orders_of_ranks(int n, int step) {
    std::vector<T> orders;
    for (int j = n - 1; j >= 0; j -= step)
        if (n == 1 || static_cast<double>(T(double(j) / (n - 1))) * (n - 1) == j)
            orders.push_back(n == 1 ? T(0.3) : T(double(j) / (n - 1)));
    orders.push_back(1);
    orders.push_back(0);
    return orders;
}

template <class T> void check_against_sorting() {
    for (const int n : {1, 2, 3, 24, 25, 100, 513, 5000, 40000})
        for (const auto& [name, x] : data_sets<T>(n))
            for (const int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
                SCOPED_TRACE(testing::Message() << name << ", n = " << n << ", " << storage);
                const auto orders = orders_of_ranks<T>(n, std::max(1, n / 9));
                const int other = VTS_SS_STORAGE_ROWS + VTS_SS_STORAGE_COLUMNS - storage;
                Call<T> some(x, orders, storage), all(x, orders, storage, other);
                const auto before = some.problem.x;
                ASSERT_EQ(VTS_SS_STATUS_OK, some.run());
                ASSERT_EQ(VTS_SS_STATUS_OK, all.run());
                EXPECT_TRUE(std::memcmp(before.data(), some.problem.x.data(),
                                        before.size() * sizeof(T)) == 0);
                const auto up = sorted(x);
                const auto data = Call<T>::variables(x);
                auto negative = x;
                for (T& v : negative) v = -v;
                const auto down = sorted(negative);
                int wrong = 0;
                for (int i = 0; i < 3; ++i) {
                    const auto& expected = i == 2 ? down : up;
                    for (int j = 0; j < n; ++j) wrong += !same(expected[j], all.statistic(i, j));
                    for (int k = 0; k < some.count; ++k) {
                        const auto rank = static_cast<std::size_t>((n - 1) * double(orders[k]));
                        wrong += !same(expected[rank], some.quantiles[i * some.count + k]);
                        wrong += !same(expected[rank], all.quantiles[i * some.count + k]);
                    }
                }
                EXPECT_EQ(0, wrong);
            }
}

TEST(StatsQuantiles, EqualSorting) {
    check_against_sorting<double>();
    check_against_sorting<float>();
}

// Definition 7: values that R and NumPy print, ties, infinities, the sum or difference that
// overflows.
TEST(StatsQuantiles, Interpolation) {
    const double big = std::numeric_limits<double>::max();
    const struct {
        std::vector<double> x;
        double order, expected;
    } cases[] = {
        {{4, 1, 3, 2}, 0.25, 1.75},
        {{4, 1, 3, 2}, 0.5, 2.5},
        {{4, 1, 3, 2}, 0.9, 4 - (1 - (3 * 0.9 - 2))},
        {{15, 20, 35, 40, 50}, 0.4, 29},
        {{5}, 0.7, 5},
        {{2, 2, 2, 9}, 0.5, 2},
        {{1, infinity}, 0, 1},
        {{1, infinity}, 0.5, infinity},
        {{-infinity, 1, 2}, 0.5, 1},
        {{-infinity, infinity, 3}, 0.5, 3},
        {{-infinity, -infinity, 3}, 0.25, -infinity},
        {{big, big, 1, 2}, 1, big},
        {{big, -big}, 0.5, 0},
        {{big, -big}, 0.25, -big / 2},
        {{big, big / 2}, 0.5, big * 0.75},
        {{1, 1 + 0x1p-52}, 0.5, 1},  // half-way, rounded to even
    };
    for (const auto& c : cases) {
        Call<double> call(c.x, {c.order}, VTS_SS_STORAGE_ROWS);
        ASSERT_EQ(VTS_SS_STATUS_OK, call.run());
        EXPECT_EQ(c.expected, call.quantiles[0]) << "order " << c.order << ", case " << &c - cases;
    }
    // A middle of infinities of both signs has no value.
    Call<double> both({-infinity, infinity}, {0.5}, VTS_SS_STORAGE_ROWS);
    ASSERT_EQ(VTS_SS_STATUS_OK, both.run());
    EXPECT_TRUE(std::isnan(both.quantiles[0]));
}

// Monotone in the order, also across the middle of a gap.
TEST(StatsQuantiles, Monotone) {
    std::mt19937 generator(3);
    std::uniform_real_distribution<double> uniform;
    std::vector<double> orders;
    for (int k = 0; k <= 4000; ++k) orders.push_back(k / 4000.0);
    for (int k = -200; k <= 200; ++k) orders.push_back(0.5 + k * 0x1p-53);
    std::sort(orders.begin(), orders.end());
    for (int round = 0; round < 50; ++round) {
        Call<double> call({uniform(generator), uniform(generator)}, orders, VTS_SS_STORAGE_COLUMNS);
        ASSERT_EQ(VTS_SS_STATUS_OK, call.run());
        EXPECT_TRUE(std::is_sorted(call.quantiles.begin(), call.quantiles.begin() + call.count));
    }
}

// NaN spoils its own variable; a variable that is left out keeps its results.
TEST(StatsQuantiles, NanAndIndices) {
    const std::int32_t indices[3] = {1, 0, 1};
    for (const int n : {3, 2000}) {
        std::vector<double> x(n);
        for (int j = 0; j < n; ++j) x[j] = j;
        Call<double> call(x, {0.5, 1}, VTS_SS_STORAGE_COLUMNS, VTS_SS_STORAGE_ROWS);
        call.problem.x[3 * (n / 2)] = nan;
        __vtsiSSEditTask(call.problem.task, VTS_SS_ID_INDICES, indices);
        ASSERT_EQ(VTS_SS_STATUS_OK, call.run());
        EXPECT_TRUE(std::isnan(call.quantiles[0]) && std::isnan(call.quantiles[1]));
        EXPECT_TRUE(std::isnan(call.statistic(0, 0)) && std::isnan(call.statistic(0, n - 1)));
        EXPECT_EQ(untouched, call.quantiles[2]);
        EXPECT_EQ(untouched, call.statistic(1, 0));
        EXPECT_EQ(0, call.quantiles[5]);
        EXPECT_EQ(1 - n, call.statistic(2, 0));
    }
}

TEST(StatsQuantiles, RefusedOrders) {
    for (const double order : {-1e-300, 1 + 0x1p-52, nan, infinity}) {
        Call<double> call({1, 2, 3}, {0.5, order}, VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_ROWS);
        EXPECT_EQ(VTS_SS_STATUS_BAD_PARAMETERS, call.run());
        EXPECT_EQ(untouched, call.quantiles[0]);
        EXPECT_EQ(untouched, call.statistics[0]);
        call.count = 1;
        EXPECT_EQ(VTS_SS_STATUS_OK, call.run());
        EXPECT_EQ(2, call.quantiles[0]);
        for (call.count = 0; call.count > -2; --call.count)
            EXPECT_EQ(VTS_SS_STATUS_BAD_PARAMETERS, call.run());
    }
}

}  // namespace
}  // namespace stats_tests
