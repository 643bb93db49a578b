// Median absolute deviation and weighted median, beside exact arithmetic.
#include <algorithm>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

using Exact = __float128;  // holds sums and differences of the data below exactly

Exact exact_median(std::vector<Exact> x) {
    std::sort(x.begin(), x.end());
    return (x[(x.size() - 1) / 2] + x[x.size() / 2]) / 2;
}

template <class T> Exact exact_mad(const std::vector<T>& x) {
    std::vector<Exact> d(x.begin(), x.end());
    const Exact m = exact_median(d);
    for (Exact& v : d) v = v < m ? m - v : v - m;
    return exact_median(d);
}

template <class T> T mad(const std::vector<T>& x, int storage = VTS_SS_STORAGE_ROWS) {
    Problem<T> problem(1, static_cast<int>(x.size()), x, {}, storage, 0);
    std::vector<T> result = {T(untouched)};
    problem.set(VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, result);
    EXPECT_EQ(VTS_SS_STATUS_OK, Api<T>::median_absolute_deviation(problem.task, 0, 0));
    return result[0];
}

// Data whose medians are exact, and random ones, near zero and far from it.
template <class T> void check_mad() {
    std::mt19937 generator(5);
    std::uniform_int_distribution<int> integer(-1000, 1000);
    std::normal_distribution<double> normal;
    for (const int n : {1, 2, 3, 4, 33, 34, 999, 1000, 6000, 6001})
        for (int round = 0; round < 3; ++round) {
            SCOPED_TRACE(testing::Message() << "n = " << n);
            std::vector<T> whole(n), real(n), far(n);
            const double offset = sizeof(T) == 8 ? 1e12 : 1e4;
            for (int j = 0; j < n; ++j) {
                whole[j] = T(integer(generator)) / 4;
                real[j] = T(normal(generator));
                far[j] = T(offset + normal(generator));
            }
            EXPECT_EQ(T(exact_mad(whole)), mad(whole));
            for (const auto& x : {real, far}) {
                const Exact expected = exact_mad(x);
                if (n % 2 == 1) EXPECT_EQ(T(expected), mad(x));
                const Exact error = (mad(x) - expected) / (expected == 0 ? 1 : expected);
                EXPECT_LE(std::fabs(double(error)),
                          1.5 * double(std::numeric_limits<T>::epsilon()));
            }
        }
}

TEST(StatsMedians, DeviationAgainstExactArithmetic) {
    check_mad<double>();
    check_mad<float>();
}

// Next to overflow, where the sum of the two numbers in the middle is infinite.
template <class T> void check_large_mad() {
    std::mt19937 generator(7);
    std::uniform_real_distribution<double> uniform(0.5, 1);
    constexpr T scale = std::numeric_limits<T>::max() / 2 + std::numeric_limits<T>::max() / 4;
    for (const int n : {2, 3, 4, 10, 1000})
        for (int round = 0; round < 20; ++round) {
            std::vector<T> x(n);
            for (T& v : x) v = T(uniform(generator)) * scale;
            const Exact expected = exact_mad(x);
            EXPECT_LE(std::fabs(double((mad(x) - expected) / expected)),
                      1.5 * double(std::numeric_limits<T>::epsilon()))
                << n;
        }
}

TEST(StatsMedians, DeviationOfLargeNumbers) {
    check_large_mad<double>();
    check_large_mad<float>();
}

TEST(StatsMedians, DeviationOfSpecialData) {
    EXPECT_EQ(0, mad<double>({3}));
    EXPECT_EQ(0, mad<double>(std::vector<double>(100, 1e300)));
    EXPECT_EQ(1, mad<double>({1, 2, 3, infinity, 1, 2, 3, -infinity, 2}));
    EXPECT_EQ(infinity, mad<double>({infinity, -infinity, 0, infinity, -infinity}));
    EXPECT_TRUE(std::isnan(mad<double>({1, nan, 3})));
    EXPECT_TRUE(std::isnan(mad<double>({1, infinity, infinity})));
    // The median of the last pair has one bit more than a double.
    EXPECT_EQ(0x1p-53, mad<double>({1, 1 + 0x1p-52}));
    const double next = 1 + 0x1p-52;
    EXPECT_EQ(0x1p-53, mad<double>({1, next, infinity, 1, -infinity, next}));
}

// Sorts, and compares sums of weights with a half, all without rounding.
template <class T> Exact exact_weighted_median(const std::vector<T>& x, const std::vector<T>& w) {
    std::vector<std::pair<T, T>> data;
    Exact total = 0, sum = 0;
    for (std::size_t j = 0; j < x.size(); ++j)
        if (w[j] != 0) data.push_back({x[j], w[j]}), total += w[j];
    std::sort(data.begin(), data.end());
    for (std::size_t k = 0; k < data.size(); ++k) {
        sum += data[k].second;
        if (k + 1 < data.size() && data[k + 1].first == data[k].first) continue;
        if (2 * sum == total) return (Exact(data[k].first) + data[k + 1].first) / 2;
        if (2 * sum > total) return data[k].first;
    }
    return 0;
}

template <class T>
T weighted_median(const std::vector<T>& x, const std::vector<T>& w,
                  int storage = VTS_SS_STORAGE_ROWS) {
    const int n = static_cast<int>(x.size());
    std::vector<T> twice(2 * n);  // and a second variable, reversed
    for (int j = 0; j < n; ++j) twice[2 * j] = x[j], twice[2 * j + 1] = -x[j];
    Problem<T> problem(2, n, twice, w, storage, 0);
    std::vector<T> result(2, T(untouched));
    problem.set(VTS_SS_ID_QUANTILES, result);
    EXPECT_EQ(VTS_SS_STATUS_OK, Api<T>::weighted_median(problem.task, 0, 0));
    if (storage == VTS_SS_STORAGE_COLUMNS || n < 100) {
        std::vector<T> negative(n);
        for (int j = 0; j < n; ++j) negative[j] = -x[j];
        EXPECT_EQ(T(exact_weighted_median(negative, w)), result[1]);
    }
    return result[0];
}

template <class T> void check_weighted() {
    std::mt19937 generator(6);
    std::uniform_int_distribution<int> small(0, 5);
    std::uniform_real_distribution<double> uniform;
    std::normal_distribution<double> normal;
    for (const int n : {1, 2, 3, 8, 32, 33, 500, 6000})
        for (int round = 0; round < 6; ++round) {
            SCOPED_TRACE(testing::Message() << "n = " << n << ", " << round);
            std::vector<T> x(n), ones(n, 1), counts(n), real(n), tiny(n, T(0x1p-100));
            for (int j = 0; j < n; ++j) {
                x[j] =
                    round % 3 == 0 ? T(small(generator)) : T(normal(generator) + (round > 3) * 1e6);
                counts[j] = T(small(generator));
                real[j] = T(uniform(generator));
            }
            counts[n / 2] = 1;
            // Two halves that agree to a bit far below the sum's last place, or entirely.
            tiny[0] = tiny[n - 1] = 1;
            auto uneven = tiny;
            uneven[n - 1] = 1 + std::numeric_limits<T>::epsilon();
            for (const auto& w : {ones, counts, real, tiny, uneven})
                for (const int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
                    EXPECT_EQ(T(exact_weighted_median(x, w)), weighted_median(x, w, storage))
                        << "weights " << w[0] << ", " << w[n - 1];
            // Equal halves whose sums are rounded differently.
            std::sort(x.begin(), x.end());
            for (int j = 0; j < n / 2; ++j) real[n - 1 - j] = real[j];
            EXPECT_EQ(T(exact_weighted_median(x, real)), weighted_median(x, real));
        }
}

TEST(StatsMedians, WeightedAgainstExactArithmetic) {
    check_weighted<double>();
    check_weighted<float>();
}

TEST(StatsMedians, WeightedSpecialData) {
    const double big = std::numeric_limits<double>::max();
    EXPECT_EQ(2, weighted_median<double>({1, nan, 2, 3}, {1, 0, 1, 1}));
    EXPECT_EQ(3, weighted_median<double>({1, 2, 3}, {big, big, big}) + 1);
    EXPECT_EQ(-infinity, weighted_median<double>({-infinity, 2, 3}, {2, 1, 1e-300}));
    EXPECT_EQ(2, weighted_median<double>({1, 3}, {0x1p-1074, 0x1p-1074}));
    EXPECT_EQ(big, weighted_median<double>({big, big, -big}, {1, 1, 1}));
    Problem<double> nans(1, 3, {1, nan, 2}, {1, 1, 1}, VTS_SS_STORAGE_ROWS, 0);
    std::vector<double> result = {untouched};
    nans.set(VTS_SS_ID_QUANTILES, result);
    EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSWMedian(nans.task, 0, 0));
    EXPECT_TRUE(std::isnan(result[0]));
    for (const auto& w : std::vector<std::vector<double>>{
             {1, -1, 3}, {1, nan, 1}, {1, infinity, 1}, {0, 0, 0}, {-0.0, 0, 0}}) {
        nans.weights = w;
        nans.set(VTS_SS_ID_WEIGHTS, nans.weights);
        result[0] = untouched;
        EXPECT_EQ(VTS_SS_STATUS_NULL_WEIGHTS, _vtsdSSWMedian(nans.task, 0, 0));
        EXPECT_EQ(untouched, result[0]);
    }
}

}  // namespace
}  // namespace stats_tests
