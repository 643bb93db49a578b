// What robust estimates are made of: the nearest observations, and the M-estimate by its equations.
#include "stats/m_estimate.h"
#include "tests/stats_support.h"

namespace kef::stats {
namespace {

struct Data {
    std::int32_t p, n, storage = VTS_SS_STORAGE_COLUMNS;
    std::vector<double> x;
    kef_ss_task* task = nullptr;
    Data(int p, const std::vector<double>& rows) : p(p), n(int(rows.size()) / p), x(rows) {
        __vtsdSSNewTask(&task, &this->p, &n, &storage, x.data(), nullptr, nullptr, 0);
    }
    ~Data() { __vtsSSDeleteTask(&task); }
};

// The nearest of many ties, of equally far ones the first.
TEST(StatsScatter, Nearest) {
    Data data(1, std::vector<double>(53, 0));
    const ScatterPlaces places(*data.task, 1);
    Scatter<double> s(*data.task, places, scratch(*data.task, places.layout));
    std::vector<int> order(data.n);
    for (int j = 0; j < data.n; ++j) {
        order[j] = j;
        s.square[j] = j * j % 11;
    }
    std::stable_sort(order.begin(), order.end(),
                     [&](int i, int j) { return s.square[i] < s.square[j]; });
    std::vector<double> expected(data.n);
    for (int r = 1; r <= data.n; ++r) {
        expected[order[r - 1]] = 1;
        ASSERT_TRUE(s.take_nearest(r));
        EXPECT_EQ(expected, std::vector<double>(s.weight, s.weight + data.n)) << r;
    }
    s.square[7] = NAN;
    EXPECT_FALSE(s.take_nearest(3));
}

TEST(StatsScatter, MEstimate) {
    auto rows = stats_tests::normal_data<double>(2, 400, 1);
    for (double& x : rows) x *= x;  // mean, median and weighted means are apart
    Data data(2, rows);
    const ScatterPlaces places(*data.task, 2);
    Scatter<double> s(*data.task, places, scratch(*data.task, places.layout));
    const Moments C = s.moments(0);
    ASSERT_TRUE(m_estimate(s, C, s.moments(1)));
    const double a = C.at(0, 0), b = C.at(1, 0), c = C.at(1, 1);
    const double k2 = upper_chi_square_quantile(2, 0.1);
    double W = 0, sum[2] = {}, products[3] = {};
    for (int j = 0; j < data.n; ++j) {
        const double x = rows[2 * j] - C.mean[0], y = rows[2 * j + 1] - C.mean[1];
        const double d2 = (c * x * x - 2 * b * x * y + a * y * y) / (a * c - b * b);
        const double w = std::min(1.0, std::sqrt(k2 / d2));
        W += w, sum[0] += w * x, sum[1] += w * y;
        products[0] += w * w * x * x, products[1] += w * w * x * y, products[2] += w * w * y * y;
    }
    // beta = E min(d^2, k^2) / p, in two dimensions 1 - exp(-k^2/2); 20 steps leave 1e-6.
    const double n_beta = data.n * (1 - std::exp(-k2 / 2));
    EXPECT_NEAR(0, sum[0] / W, 1e-5 * std::sqrt(a));
    EXPECT_NEAR(0, sum[1] / W, 1e-5 * std::sqrt(c));
    EXPECT_NEAR(a, products[0] / n_beta, 1e-5 * a);
    EXPECT_NEAR(b, products[1] / n_beta, 1e-5 * std::sqrt(a * c));
    EXPECT_NEAR(c, products[2] / n_beta, 1e-5 * c);
}

}  // namespace
}  // namespace kef::stats
