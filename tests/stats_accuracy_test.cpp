// Basic against exact rational arithmetic (tests/data/stats_reference.txt).
#include <algorithm>
#include <fstream>
#include <memory>
#include <sstream>

#include "places.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

struct Exact {
    double mean, W, W2, central[3], product;
};

struct DataSet {
    std::string name;
    std::vector<double> x;
    Exact exact[2];  // weights 1, weights (j mod 5) + 0.5
};

std::vector<DataSet> read_data_sets() {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/stats_reference.txt");
    std::vector<DataSet> sets;
    std::string text;
    while (std::getline(file, text)) {
        if (text.empty() || text[0] == '#') continue;
        std::istringstream line(text);
        std::string word;
        int n;
        DataSet set;
        line >> word >> set.name >> n;
        set.x.resize(n);
        for (double& x : set.x) line >> x;
        EXPECT_TRUE(line) << set.name;
        for (Exact& e : set.exact) {
            std::getline(file, text);
            std::istringstream results(text);
            results >> e.mean >> e.W >> e.W2 >> e.central[0] >> e.central[1] >> e.central[2] >>
                e.product;
            EXPECT_TRUE(results) << set.name;
        }
        sets.push_back(set);
    }
    return sets;
}

// Both variables of the file: the data, and the data in the order 17j mod n.
std::vector<double> two_variables(const std::vector<double>& x) {
    std::vector<double> data;
    for (std::size_t j = 0; j < x.size(); ++j) {
        data.push_back(x[j]);
        data.push_back(x[17 * j % x.size()]);
    }
    return data;
}

double relative(double value, double exact) { return std::fabs(value - exact) / std::fabs(exact); }

// The worst relative errors over all sets; odd moments relative to the spread.
struct Worst {
    double mean = 0, variance = 0, third = 0, fourth = 0, product = 0;
    void add(const Problem<double>& r, const Exact& e) {
        const double sigma = std::sqrt(e.central[0] / e.W);
        const auto update = [](double& worst, double error) { worst = std::max(worst, error); };
        update(mean, relative(r.mean[0], e.mean));
        update(variance, relative(r.central_sum_2[0], e.central[0]));
        update(variance, relative(r.central_moment_2[0], e.central[0] / (e.W - e.W2 / e.W)));
        update(third, std::fabs(r.central_sum_3[0] - e.central[1]) / (e.central[2] / sigma));
        update(fourth, relative(r.central_sum_4[0], e.central[2]));
        update(product, std::fabs(r.cross_product[1] - e.product) / e.central[0]);
    }
};

// The data in parts, each in a task of its own, merged two by two until one is left.
void merge_parts(Problem<double>& result, const std::vector<double>& data,
                 const std::vector<double>& weights, int method, int size) {
    std::vector<std::unique_ptr<Problem<double>>> parts;
    const int n = result.n;
    for (int first = 0; first < n; first += size) {
        const int count = std::min(size, n - first);
        const auto part = [&](const std::vector<double>& all, int p) {
            return all.empty() ? all
                               : std::vector<double>(all.begin() + first * p,
                                                     all.begin() + (first + count) * p);
        };
        parts.push_back(
            std::make_unique<Problem<double>>(2, count, part(data, 2), part(weights, 1)));
        parts.back()->basic(everything, method);
    }
    const auto merge = [&](Problem<double>& to, Problem<double>& from) {
        EXPECT_EQ(VTS_SS_STATUS_OK, _vtsdSSMerge(to.task, from.task, everything, method));
    };
    for (std::size_t step = 1; step < parts.size(); step *= 2)
        for (std::size_t i = 0; i + step < parts.size(); i += 2 * step)
            merge(*parts[i], *parts[i + step]);
    merge(result, *parts[0]);
}

Worst worst_of(int method, int block, bool merged = false) {
    Worst worst;
    for (const DataSet& set : read_data_sets()) {
        const int n = static_cast<int>(set.x.size());
        const auto data = two_variables(set.x);
        std::vector<double> weights(n);
        for (int j = 0; j < n; ++j) weights[j] = j % 5 + 0.5;
        for (bool weighted : {false, true}) {
            Problem<double> problem(2, n, data, weighted ? weights : std::vector<double>());
            if (merged) merge_parts(problem, data, problem.weights, method, block);
            else problem.basic_in_blocks(everything, method, block);
            worst.add(problem, set.exact[weighted]);
        }
    }
    return worst;
}

// Within a few units of 2.2e-16 of the exact results whatever the data (10^9 + small,
// a trend, a wild first value, the published sets that are hard on other formulas), in
// one block, in blocks of 37 and of 1.
TEST(StatsAccuracy, OnePassMethodsKeepTheDigitsOfShiftedData) {
    ASSERT_EQ(12u, read_data_sets().size());
    for (int block : {1 << 20, 37, 1, -300, -37, -1})  // negative: merged
        for (int method : {VTS_SS_METHOD_TILED, VTS_SS_METHOD_RECURRENCE}) {
            SCOPED_TRACE(testing::Message() << "method " << method << " block " << block);
            const Worst worst = worst_of(method, std::abs(block), block < 0);
            EXPECT_LT(worst.mean, 8e-16);
            EXPECT_LT(worst.variance, 4e-15);
            EXPECT_LT(worst.third, 4e-15);
            EXPECT_LT(worst.fourth, 4e-15);
            EXPECT_LT(worst.product, 4e-15);
        }
}

// Nearly all the weight on one observation, and the spread on the other: sums around a
// point far from the mean would cancel. M2 = w0 w1 / (w0 + w1).
TEST(StatsAccuracy, WeightsOfVeryDifferentSize) {
    for (int method : {VTS_SS_METHOD_TILED, VTS_SS_METHOD_RECURRENCE})
        for (double light : {1e-3, 1e-8, 1e-12, 1e-15}) {
            Problem<double> problem(1, 2, {1, 0}, {1, light});
            ASSERT_EQ(VTS_SS_STATUS_OK,
                      problem.basic(VTS_SS_ESTIMATE_CENTRAL_SUM_2 | VTS_SS_ESTIMATE_CROSS_PRODUCT,
                                    method));
            const double exact = light / (1 + light);
            EXPECT_LT(relative(problem.central_sum_2[0], exact), 1e-15) << method << " " << light;
            EXPECT_LT(relative(problem.cross_product[0], exact), 1e-15) << method << " " << light;
        }
}

// Single precision accumulates in double precision: only the results are rounded.
TEST(StatsAccuracy, SinglePrecisionLosesNothingOnTheWay) {
    const int n = 1000000;
    std::vector<float> data = normal_data<float>(1, n, 1000);
    const std::vector<double> wide(data.begin(), data.end());
    Problem<double> reference(1, n, wide);
    ASSERT_EQ(VTS_SS_STATUS_OK, reference.basic(moments, VTS_SS_METHOD_TILED));
    for (int method : {VTS_SS_METHOD_TILED, VTS_SS_METHOD_RECURRENCE})
        for (int block : {n, 1000, 1}) {
            Problem<float> problem(1, n, data);
            problem.basic_in_blocks(moments, method, block);
            EXPECT_EQ(float(reference.mean[0]), problem.mean[0]) << method << " " << block;
            EXPECT_EQ(float(reference.central_moment_2[0]), problem.central_moment_2[0])
                << method << " " << block;
            EXPECT_EQ(float(reference.central_moment_4[0]), problem.central_moment_4[0])
                << method << " " << block;
            EXPECT_EQ(float(reference.raw_moment_4[0]), problem.raw_moment_4[0])
                << method << " " << block;
        }
}

}  // namespace
}  // namespace stats_tests
