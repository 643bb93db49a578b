// Statistics without memory: every allocation of every call fails once.
#include "failing_allocator.h"

#include <bit>
#include <functional>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

using kef::test::for_each_failed_allocation;

struct NewTask {
    kef_ss_task* task = nullptr;
    ~NewTask() {
        if (task != nullptr) __vtsSSDeleteTask(&task);
    }
};

TEST(StatsMemory, NewTask) {
    const std::int32_t p = 2;
    const auto create = [&](NewTask& state) {
        return __vtsdSSNewTask(&state.task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
    };
    const auto check = [](NewTask& state, std::int32_t status, bool failed) {
        EXPECT_EQ(failed ? VTS_SS_STATUS_NO_MEMORY : VTS_SS_STATUS_OK, status);
        EXPECT_EQ(failed, state.task == nullptr);
    };
    EXPECT_EQ(1, for_each_failed_allocation([] { return NewTask{}; }, create, check));
}

constexpr int most = 9, part = 100;

// A task in the middle of its blocks: the first has been added, of `p` variables for
// `estimates`, or none.
struct Half : Problem<double> {
    Half(int method, int p, std::uint64_t estimates)
        : Problem(most, 3 * part, normal_data<double>(most, 3 * part, 1e6)), method(method) {
        this->p = p;
        if (estimates != 0) EXPECT_EQ(VTS_SS_STATUS_OK, block(0, part, estimates, method));
    }
    std::int32_t next(std::uint64_t estimates) { return block(part, part, estimates, method); }
    std::int32_t last(std::uint64_t estimates) { return block(2 * part, part, estimates, method); }
    // The bits of all arrays.
    std::vector<std::uint64_t> contents() {
        std::vector<std::uint64_t> bits;
        const auto add = [&](const std::vector<double>& array) {
            for (double value : array) bits.push_back(std::bit_cast<std::uint64_t>(value));
        };
        add(accumulated);
        for (const auto& result : results()) add(*result.second);
        return bits;
    }
    int method;
};

// The first call, one that begins with matrices, and one with more variables: a failed call
// leaves arrays and state, and the same call afterwards does what it would have done.
TEST(StatsMemory, BasicKeepsItsState) {
    const struct {
        int first_p, p;
        std::uint64_t first, next;
        long allocations;
    } cases[] = {
        {3, 3, 0, moments, 1},
        {3, 3, 0, everything, 2},
        {3, 3, moments, everything, 1},
        {3, most, everything, everything, 2},
        {3, most, moments, everything, 2},
        {most, 3, everything, everything, 0},
    };
    for (const auto& c : cases)
        for (int method : data_methods) {
            SCOPED_TRACE(testing::Message() << &c - cases << ", method " << method);
            const auto make = [&] { return Half(method, c.first_p, c.first); };
            const auto call = [&](Half& half) {
                half.p = c.p;
                return half.next(c.next);
            };
            const auto check = [&](Half& half, std::int32_t status, bool failed) {
                Half calm = make();
                if (failed) {
                    EXPECT_EQ(VTS_SS_STATUS_NO_MEMORY, status);
                    EXPECT_TRUE(calm.contents() == half.contents());
                    half.p = c.first_p;  // the smaller task goes on, too
                    if (c.first != 0) {
                        EXPECT_EQ(VTS_SS_STATUS_OK, half.next(c.first));
                        EXPECT_EQ(VTS_SS_STATUS_OK, calm.next(c.first));
                    }
                    EXPECT_EQ(VTS_SS_STATUS_OK, half.last(c.next));
                    EXPECT_EQ(VTS_SS_STATUS_OK, calm.last(c.next));
                } else {
                    EXPECT_EQ(VTS_SS_STATUS_OK, status);
                    EXPECT_EQ(VTS_SS_STATUS_OK, call(calm));
                }
                EXPECT_TRUE(calm.contents() == half.contents());
            };
            EXPECT_EQ(c.allocations, for_each_failed_allocation(make, call, check));
        }
}

TEST(StatsMemory, MinmaxNeedsNone) {
    const auto make = [] { return Half(VTS_SS_METHOD_TILED, most, 0); };
    const auto call = [](Half& half) {
        half.set(VTS_SS_ID_MINIMUM, half.mean);
        return _vtsdSSMinmax(half.task, VTS_SS_ESTIMATE_MINIMUM, VTS_SS_METHOD_MINMAX);
    };
    const auto check = [](Half&, std::int32_t status, bool) { EXPECT_EQ(0, status); };
    EXPECT_EQ(0, for_each_failed_allocation(make, call, check));
}

// Every computation of computation.def, on a task with all parameters that it may want: a failed
// call leaves all arrays as they were, and the next one goes well.
struct Order : Half {
    std::int32_t count = 2, rows = VTS_SS_STORAGE_ROWS;
    std::vector<double> orders = {0.25, 0.5}, quantiles, statistics, deviations, distances, other;
    std::vector<std::int32_t> marks, groups;
    std::int32_t three = 3, four = 4;
    std::vector<double> outlier = {2, 0.05, 0}, robust = {0.5, 0.05, 1e-8, 200}, kept, robust_mean,
                        robust_covariance;
    std::int32_t five = 5, none = 0, laws = 2 * (most + most * (most + 1) / 2), many = most;
    std::vector<double> missing = {100, 1, 1e-6, 1, 0}, imputed, law;
    Order()
        : Half(VTS_SS_METHOD_TILED, most, 0),
          quantiles(2 * most),
          statistics(most * n),
          deviations(most),
          distances(n),
          other(2 * most * most),
          marks(most, -1),
          groups(n, 2) {
        basic(VTS_SS_ESTIMATE_COVARIANCE | VTS_SS_ESTIMATE_CORRELATION, VTS_SS_METHOD_TILED);
        marks[3] = marks[5] = 1;
        for (std::size_t j = 0; j < groups.size(); j += 3) groups[j] = 7;
        __vtsdSSEditPartialCovCor(task, marks.data(), nullptr, nullptr, nullptr, nullptr,
                                  other.data(), &layout, nullptr, nullptr);
        __vtsdSSEditMtxParametrz(task, nullptr, nullptr, other.data(), &layout);
        __vtsdSSEditPooledCovariance(task, groups.data(), other.data() + most * most, other.data(),
                                     nullptr, nullptr, nullptr);
        __vtsiSSEditTask(task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &layout);
        set(VTS_SS_ID_MAHALANOBIS_DISTANCE, distances);
        weights = weights_for<double>(n);
        set(VTS_SS_ID_WEIGHTS, weights);
        set(VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, deviations);
        set(VTS_SS_ID_QUANTILE_ORDERS, orders);
        set(VTS_SS_ID_QUANTILES, quantiles);
        set(VTS_SS_ID_ORDER_STATISTICS, statistics);
        __vtsiSSEditTask(task, VTS_SS_ID_QUANTILE_ORDER_COUNT, &count);
        __vtsiSSEditTask(task, VTS_SS_ID_ORDER_STATISTICS_STORAGE, &rows);
        kept.assign(n, untouched);
        __vtsdSSEditOutDetect(task, &three, outlier.data(), kept.data());
        robust_mean.assign(most, untouched);
        robust_covariance.assign(most * most, untouched);
        __vtsdSSEditRCov(task, &layout, &four, robust.data(), robust_mean.data(),
                         robust_covariance.data());
        imputed.assign(many, untouched);
        law.assign(laws, untouched);
        __vtsdSSEditMissingVals(task, &five, missing.data(), &none, nullptr, &none, nullptr, &many,
                                imputed.data(), &laws, law.data());
    }
    std::vector<double> all() const {
        auto result = quantiles;
        for (const auto* more : {&statistics, &deviations, &distances, &other, &kept, &robust_mean,
                                 &robust_covariance, &imputed, &law})
            result.insert(result.end(), more->begin(), more->end());
        return result;
    }
};

TEST(StatsMemory, Computations) {
    const auto calls = {_vtsdSSQuantiles,         _vtsdSSMAD,
                        _vtsdSSWMedian,           _vtsdSSMahDistance,
                        _vtsdSSPartialCovariance, _vtsdSSCorParametrization,
                        _vtsdSSPooledCovariance,  _vtsdSSOutliersDetection,
                        _vtsdSSRobustCovariance,  _vtsdSSMissingValues};
    for (const auto compute : calls) {
        Order calm;
        const auto before = calm.all();
        ASSERT_EQ(VTS_SS_STATUS_OK, compute(calm.task, 0, 0));
        const auto call = [&](Order& order) { return compute(order.task, 0, 0); };
        const auto check = [&](Order& order, std::int32_t status, bool failed) {
            EXPECT_EQ(failed ? VTS_SS_STATUS_NO_MEMORY : VTS_SS_STATUS_OK, status);
            EXPECT_TRUE(order.all() == (failed ? before : calm.all()));
            EXPECT_EQ(VTS_SS_STATUS_OK, call(order));
            EXPECT_TRUE(order.all() == calm.all());
        };
        EXPECT_LT(0, for_each_failed_allocation([] { return Order(); }, call, check));
    }
}

// A stream in the middle: what the next call of each kind needs is more than there is.
struct Sketch {
    std::int32_t p = 2, n = 0, storage = VTS_SS_STORAGE_ROWS, count = 1, one = 1;
    double epsilon = 0.5, order = 0.5, median[2] = {untouched, untouched};
    std::vector<double> x = normal_data<double>(2, 3000, 0);
    kef_ss_task* task = nullptr;
    explicit Sketch(int seen) {
        __vtsdSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
        __vtsiSSEditTask(task, VTS_SS_ID_COUNT, &n);
        __vtsiSSEditTask(task, VTS_SS_ID_X_STORAGE, &storage);
        __vtsdSSEditTask(task, VTS_SS_ID_X, x.data());
        __vtsdSSEditStreamQuantiles(task, &count, &order, median, &one, &epsilon);
        if (seen > 0) EXPECT_EQ(VTS_SS_STATUS_OK, add(seen));
    }
    Sketch(Sketch&&) = delete;
    ~Sketch() { __vtsSSDeleteTask(&task); }
    std::int32_t add(int more) {
        n = more;
        return _vtsdSSStreamQuantiles(task, 0, 0);
    }
    std::vector<char> image() const {
        std::vector<char> bytes(std::max<std::int64_t>(0, __vtsSSGetStreamQuantilesSize(task)));
        if (!bytes.empty()) __vtsSSSaveStreamQuantiles(task, bytes.data());
        return bytes;
    }
};

TEST(StatsMemory, Sketches) {
    Sketch large(1500);
    const auto image = large.image();
    const std::function<std::int32_t(Sketch&)> calls[] = {
        [](Sketch& s) { return s.add(1400); },
        [&](Sketch& s) { return __vtsSSLoadStreamQuantiles(s.task, image.data(), image.size()); },
        [&](Sketch& s) {
            return _vtsdSSMerge(s.task, large.task, VTS_SS_ESTIMATE_STREAM_QUANTILES, 0);
        },
    };
    for (const int seen : {0, 10, 600})
        for (const auto& call : calls) {
            SCOPED_TRACE(testing::Message() << "call " << &call - calls << " after " << seen);
            Sketch calm(seen);
            const auto before = calm.image();
            ASSERT_EQ(VTS_SS_STATUS_OK, call(calm));
            const auto make = [&] { return Sketch(seen); };
            const auto check = [&](Sketch& s, std::int32_t status, bool failed) {
                EXPECT_EQ(failed ? VTS_SS_STATUS_NO_MEMORY : VTS_SS_STATUS_OK, status);
                EXPECT_TRUE(s.image() == (failed ? before : calm.image()));
                if (!failed) return;
                EXPECT_EQ(VTS_SS_STATUS_OK, call(s));
                EXPECT_TRUE(s.image() == calm.image());
            };
            EXPECT_LT(0, for_each_failed_allocation(make, call, check));
        }
}

TEST(StatsMemory, MergedResults) {
    const auto make = [] { return Half(VTS_SS_METHOD_TILED, 3, moments); };
    Half calm = make(), other(VTS_SS_METHOD_TILED, 3, everything);
    const auto before = calm.contents();
    const auto call = [&](Half& half) {
        return _vtsdSSMerge(half.task, other.task, everything, VTS_SS_METHOD_TILED);
    };
    ASSERT_EQ(VTS_SS_STATUS_OK, call(calm));
    const auto check = [&](Half& half, std::int32_t status, bool failed) {
        EXPECT_EQ(failed ? VTS_SS_STATUS_NO_MEMORY : VTS_SS_STATUS_OK, status);
        EXPECT_TRUE(half.contents() == (failed ? before : calm.contents()));
        if (failed) EXPECT_EQ(VTS_SS_STATUS_OK, call(half));
        EXPECT_TRUE(half.contents() == calm.contents());
    };
    EXPECT_LT(0, for_each_failed_allocation(make, call, check));
}

}  // namespace
}  // namespace stats_tests
