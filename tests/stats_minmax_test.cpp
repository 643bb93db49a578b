// Minmax: merged over blocks, deaf to NaN.
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

constexpr std::uint64_t both = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;

template <class T> void check_blocks() {
    for (int p : {1, 2, 3, 10})
        for (int n : {1, 2, 3, 5, 257, 1030})
            for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
                std::vector<T> data = normal_data<T>(p, n, -2, p * n);
                for (std::size_t k = 0; k < data.size(); k += 7) data[k] = T(nan);
                Problem<T> problem(p, n, data, {}, storage);
                std::vector<T> low(p, T(nan)), high(p, T(nan)), least = low, greatest = high;
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < p; ++i) {
                        const T x = data[j * p + i];
                        if (!(x >= least[i])) least[i] = std::isnan(x) ? least[i] : x;
                        if (!(x <= greatest[i])) greatest[i] = std::isnan(x) ? greatest[i] : x;
                    }
                problem.set(VTS_SS_ID_MINIMUM, low);
                problem.set(VTS_SS_ID_MAXIMUM, high);
                const int block = storage == VTS_SS_STORAGE_ROWS ? n : 100;
                for (int first = 0; first < n; first += block) {
                    problem.n = std::min(block, n - first);
                    Api<T>::edit(problem.task, VTS_SS_ID_X, problem.x.data() + first * p);
                    ASSERT_EQ(VTS_SS_STATUS_OK,
                              Api<T>::minmax(problem.task, both, VTS_SS_METHOD_MINMAX));
                }
                for (int i = 0; i < p; ++i) {
                    EXPECT_TRUE(low[i] == least[i] || (std::isnan(low[i]) && std::isnan(least[i])));
                    EXPECT_TRUE(high[i] == greatest[i] ||
                                (std::isnan(high[i]) && std::isnan(greatest[i])));
                }
            }
}

TEST(StatsMinmax, BlocksAndStorages) {
    check_blocks<double>();
    check_blocks<float>();
}

TEST(StatsMinmax, SeedsInfinitiesAndSelection) {
    const std::int32_t indices[4] = {1, 0, 1, 1};
    Problem<double> problem(4, 2, {infinity, 1, 5, nan, infinity, 2, 6, nan});
    __vtsiSSEditTask(problem.task, VTS_SS_ID_INDICES, indices);
    std::vector<double> low = {nan, nan, 5.5, nan}, high = {nan, nan, 5.5, 3};
    problem.set(VTS_SS_ID_MINIMUM, low);
    problem.set(VTS_SS_ID_MAXIMUM, high);
    ASSERT_EQ(VTS_SS_STATUS_OK, _vtsdSSMinmax(problem.task, VTS_SS_ESTIMATE_MINIMUM, 1));
    EXPECT_EQ(5.5, high[2]);  // was not asked for
    ASSERT_EQ(VTS_SS_STATUS_OK, _vtsdSSMinmax(problem.task, both, 1));
    EXPECT_EQ(infinity, low[0]);  // seen, not a seed
    EXPECT_TRUE(std::isnan(low[1]) && std::isnan(high[1]));
    EXPECT_EQ(5, low[2]);
    EXPECT_EQ(6, high[2]);
    EXPECT_TRUE(std::isnan(low[3]));
    EXPECT_EQ(3, high[3]);
}

}  // namespace
}  // namespace stats_tests
