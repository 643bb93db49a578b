// The statistics task: creation, editors, deletion, validation of Basic and Minmax.
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "places.h"
#include "stats/task.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

#define S(name) VTS_SS_STATUS_##name

// The parameters as tests/data/stats_parameters.txt has them, written down apart from
// task.def.
struct Expected {
    int word = 0;
    char editor = 0;
    int status = 0;
};

std::map<int, Expected> read_parameters() {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/stats_parameters.txt");
    std::map<int, Expected> parameters;
    std::string text;
    while (std::getline(file, text)) {
        if (text[0] == '#') continue;
        int id;
        Expected e;
        e.word = 3 + static_cast<int>(parameters.size());
        std::istringstream(text) >> id >> e.editor >> e.status;
        parameters[id] = e;
    }
    return parameters;
}

class StatsTask : public testing::Test {
protected:
    static constexpr int word_count = sizeof(kef_ss_task) / sizeof(void*);
    const std::int32_t p = 2, n = 3, storage = VTS_SS_STORAGE_COLUMNS;
    double x[6] = {};
    kef_ss_task* task = nullptr;

    StatsTask() { __vtsdSSNewTask(&task, &p, &n, &storage, x, nullptr, nullptr, 0); }
    ~StatsTask() { __vtsSSDeleteTask(&task); }

    std::vector<const void*> words() const {
        const auto* first = reinterpret_cast<const void* const*>(task);
        return std::vector<const void*>(first, first + word_count);
    }
    const std::map<int, Expected> expected = read_parameters();
    int word_of(int id) const { return expected.at(id).word; }
    std::int32_t edit(char editor, std::int64_t id, const void* address) {
        if (editor == 'i') return __vtsiSSEditTask(task, id, address);
        if (editor == 'd') return __vtsdSSEditTask(task, id, static_cast<const double*>(address));
        return __vtssSSEditTask(task, id, static_cast<const float*>(address));
    }
};

TEST_F(StatsTask, HoldsTheWordsInTheirOrder) {
    ASSERT_EQ(77u, expected.size());
    const auto w = words();
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(task) % 128);
    EXPECT_EQ(nullptr, w[0]);
    EXPECT_EQ(2u, reinterpret_cast<std::uintptr_t>(w[1]));
    EXPECT_EQ(1u, reinterpret_cast<std::uintptr_t>(w[2]));
    const std::set<const void*> given = {&p, &n, &storage, x};
    for (int k = 3; k < word_count; ++k)
        EXPECT_TRUE(w[k] == nullptr || given.count(w[k]) == 1) << k;
    EXPECT_EQ(&p, w[word_of(1)]);
    EXPECT_EQ(&n, w[word_of(2)]);
    EXPECT_EQ(&storage, w[word_of(4)]);
    EXPECT_EQ(x, w[word_of(3)]);
}

TEST_F(StatsTask, EditorsTakeTheirOwnIdentifiers) {
    double value = 0;
    for (char editor : {'i', 'd', 's'})
        for (int id = -2; id <= 80; ++id) {
            const bool known =
                expected.count(id) && expected.at(id).editor == (editor == 'i' ? 'i' : 'd');
            const auto before = words();
            EXPECT_EQ(known ? expected.at(id).status : VTS_SS_STATUS_BAD_ID,
                      edit(editor, id, nullptr))
                << editor << id;
            EXPECT_EQ(before, words()) << editor << id;
            EXPECT_EQ(known ? VTS_SS_STATUS_OK : VTS_SS_STATUS_BAD_ID, edit(editor, id, &value));
            auto after = before;
            if (known) after[word_of(id)] = &value;
            EXPECT_EQ(after, words()) << editor << id;
            edit(editor, id, &p);
        }
    EXPECT_EQ(VTS_SS_STATUS_BAD_ID, edit('d', (std::int64_t(1) << 32) + 7, &value));
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, __vtsiSSEditTask(nullptr, 99, nullptr));
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, __vtsdSSEditTask(nullptr, 99, nullptr));
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, __vtssSSEditTask(nullptr, 99, nullptr));
}

// Called with more addresses than a group has: those beyond are not looked at.
using AnyEditor = std::int32_t (*)(kef_ss_task*, const void*, const void*, const void*, const void*,
                                   const void*, const void*, const void*, const void*, const void*,
                                   const void*);

TEST_F(StatsTask, GroupedEditorsStoreWhatIsNotNull) {
#define KEF_ANY(editor) reinterpret_cast<AnyEditor>(reinterpret_cast<void (*)()>(editor))
#define KEF_GROUP(name, ...)                                                                \
    {                                                                                       \
#name, {KEF_ANY(__vtsdSSEdit##name), KEF_ANY(__vtssSSEdit##name) }, { __VA_ARGS__ } \
    }
    const struct {
        const char* name;
        AnyEditor editors[2];
        std::vector<int> ids;
    } groups[] = {
        KEF_GROUP(Moments, 7, 8, 9, 10, 11, 12, 13),
        KEF_GROUP(Sums, 67, 68, 69, 70, 71, 72, 73),
        KEF_GROUP(CovCor, 7, 19, 20, 21, 22),
        KEF_GROUP(CP, 7, 67, 74, 75),
        KEF_GROUP(PartialCovCor, 45, 19, 20, 21, 22, 46, 47, 48, 49),
        KEF_GROUP(Quantiles, 24, 25, 26, 27, 44),
        KEF_GROUP(StreamQuantiles, 64, 65, 66, 62, 63),
        KEF_GROUP(PooledCovariance, 28, 30, 31, 32, 33, 35),
        KEF_GROUP(RCov, 36, 37, 38, 39, 40),
        KEF_GROUP(OutDetect, 41, 42, 43),
        KEF_GROUP(MissingVals, 50, 51, 52, 53, 58, 59, 54, 55, 56, 57),
        KEF_GROUP(MtxParametrz, 21, 22, 60, 61),
    };
    double a[10], b[10];
    for (const auto& group : groups)
        for (AnyEditor editor : group.editors)
            for (int null_parity : {0, 1}) {
                const auto at = [&](double* array, int k, bool all) -> const void* {
                    return all || k % 2 == null_parity ? &array[k] : nullptr;
                };
                const auto call = [&](kef_ss_task* t, double* array, bool all) {
                    return editor(t, at(array, 0, all), at(array, 1, all), at(array, 2, all),
                                  at(array, 3, all), at(array, 4, all), at(array, 5, all),
                                  at(array, 6, all), at(array, 7, all), at(array, 8, all),
                                  at(array, 9, all));
                };
                auto expected_words = words();
                EXPECT_EQ(VTS_SS_STATUS_OK, call(task, a, true)) << group.name;
                EXPECT_EQ(VTS_SS_STATUS_OK, call(task, b, false)) << group.name;
                for (int k = 0; k < int(group.ids.size()); ++k)
                    expected_words[word_of(group.ids[k])] = k % 2 == null_parity ? &b[k] : &a[k];
                EXPECT_EQ(expected_words, words()) << group.name;
                EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, call(nullptr, a, true)) << group.name;
            }
}

TEST(StatsNewTask, ChecksInOrderAndInTheGivenWidth) {
    struct Case {
        std::int64_t p, n, storage;
        bool has_p, has_n, has_storage, has_x;
        int narrow, wide;
    };
    const std::int64_t high = std::int64_t(1) << 32;  // 0 in 32 bits
    const Case cases[] = {
        {2, 3, 0x10000, true, true, true, true, 0, 0},
        {2, 3, 0x20000, true, true, true, true, 0, 0},
        {0, 0, 7, false, false, false, true, S(BAD_DIMENSION), S(BAD_DIMENSION)},
        {0, 0, 7, true, true, true, true, S(BAD_DIMENSION), S(BAD_DIMENSION)},
        {-1, 0, 7, true, true, true, true, S(BAD_DIMENSION), S(BAD_DIMENSION)},
        {high, 3, 0x10000, true, true, true, true, S(BAD_DIMENSION), 0},
        {2, 0, 7, true, true, false, true, S(NULL_STORAGE), S(NULL_STORAGE)},
        {2, 0, 7, true, true, true, true, S(BAD_X_STORAGE), S(BAD_X_STORAGE)},
        {2, 0, 0x30000, true, true, true, true, S(BAD_X_STORAGE), S(BAD_X_STORAGE)},
        {2, 3, high + 0x10000, true, true, true, true, 0, S(BAD_X_STORAGE)},
        {2, 0, 0x10000, true, false, true, true, S(BAD_COUNT), S(BAD_COUNT)},
        {2, -5, 0x10000, true, true, true, true, S(BAD_COUNT), S(BAD_COUNT)},
        {2, high, 0x20000, true, true, true, true, S(BAD_COUNT), 0},
        {2, 0, 7, true, false, false, false, 0, 0},
    };
    const double x[6] = {};
    for (const Case& c : cases)
        for (bool wide : {false, true}) {
            kef_ss_task* const none = nullptr;
            kef_ss_task* task = none;
            const int status =
                __vtsdSSNewTask(&task, c.has_p ? &c.p : nullptr, c.has_n ? &c.n : nullptr,
                                c.has_storage ? &c.storage : nullptr, c.has_x ? x : nullptr,
                                nullptr, nullptr, wide);
            EXPECT_EQ(wide ? c.wide : c.narrow, status) << &c - cases << " wide " << wide;
            EXPECT_EQ(status == 0, task != none);
            if (task == nullptr) continue;
            EXPECT_EQ(0, __vtsSSDeleteTask(&task));
            EXPECT_EQ(nullptr, task);
        }
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, __vtsSSDeleteTask(nullptr));
}

kef_ss_task* released;

TEST_F(StatsTask, DeletionCallsTheReleaseCallbackOnce) {
    task->release_count = 1;
    task->release[0] = [](kef_ss_task* t) { released = t; };
    kef_ss_task* const old = task;
    EXPECT_EQ(VTS_SS_STATUS_OK, __vtsSSDeleteTask(&task));
    EXPECT_EQ(old, released);
    __vtsdSSNewTask(&task, &p, &n, &storage, x, nullptr, nullptr, 0);
}

TEST(StatsValidation, Methods) {
    Problem<double> problem(1, 3, {1, 2, 4});
    for (int method = 0; method < 0x800; ++method) {
        const int data = __builtin_popcount(method & 0x103);
        const bool good = data == 1 || (data == 0 && (method & 0x600));
        EXPECT_EQ(good ? VTS_SS_STATUS_OK : VTS_SS_STATUS_BAD_METHOD, problem.basic(0, method))
            << method;
    }
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, _vtsdSSBasic(nullptr, 0, 0));
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, _vtssSSBasic(nullptr, 0, 0));
}

// The statuses of missing fields, in the order in which they are looked for.
TEST(StatsValidation, RequiredFields) {
    const std::int32_t p = 1, n = 2, storage = VTS_SS_STORAGE_ROWS, layout = 0;
    double x[2] = {1, 3}, out[24] = {};
    struct Case {
        std::uint64_t estimates;
        int method;
        std::vector<int> fields;  // that are registered
        int status;
    };
    constexpr int raw = VTS_SS_METHOD_RAW, rec = VTS_SS_METHOD_RECURRENCE, sum = VTS_SS_METHOD_SUMS;
    const Case cases[] = {
        {VTS_SS_ESTIMATE_KURTOSIS, raw, {7, 11, 13}, S(NULL_RAW_MOMENT_2)},
        {VTS_SS_ESTIMATE_KURTOSIS, rec, {7, 8, 9, 10, 13}, S(NULL_CENTRAL_MOMENT_2)},
        {VTS_SS_ESTIMATE_KURTOSIS, rec, {7, 8, 9, 10, 11, 13}, S(NULL_KURTOSIS)},
        {VTS_SS_ESTIMATE_KURTOSIS, rec, {7, 8, 9, 10, 11, 13, 14}, 0},
        {VTS_SS_ESTIMATE_KURTOSIS, sum, {7, 11, 13}, S(NULL_KURTOSIS)},
        {VTS_SS_ESTIMATE_KURTOSIS, sum, {7, 11, 13, 14}, 0},
        {VTS_SS_ESTIMATE_SKEWNESS, raw, {7, 8, 9, 11, 12}, S(NULL_SKEWNESS)},
        {VTS_SS_ESTIMATE_SKEWNESS, rec, {7, 8, 9, 11, 15}, S(NULL_CENTRAL_MOMENT_3)},
        {VTS_SS_ESTIMATE_VARIATION, rec, {7, 8, 11}, S(NULL_VARIATION)},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, raw, {7, 73}, S(NULL_RAW_MOMENT_2)},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, rec, {7, 73}, 0},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, rec, {7}, S(NULL_CENTRAL_SUM_4)},
        {VTS_SS_ESTIMATE_CENTRAL_SUM_4, sum, {7, 73}, S(BAD_METHOD)},
        {VTS_SS_ESTIMATE_SUM, rec, {}, S(NULL_SUM)},
        {VTS_SS_ESTIMATE_SUM, sum, {67}, S(BAD_METHOD)},
        {VTS_SS_ESTIMATE_SUM | VTS_SS_ESTIMATE_MEAN, sum, {67}, S(NULL_MEAN)},
        {VTS_SS_ESTIMATE_MEAN, sum, {7}, S(NULL_SUM)},
        {VTS_SS_ESTIMATE_RAW_MOMENT_3, raw, {}, S(NULL_RAW_MOMENT_3)},
        {VTS_SS_ESTIMATE_RAW_MOMENT_3, sum, {9}, S(NULL_RAW_SUM_3)},
        {VTS_SS_ESTIMATE_RAW_SUM_2, rec, {}, S(NULL_RAW_SUM_2)},
        {VTS_SS_ESTIMATE_COVARIANCE, raw, {7}, S(NULL_COVARIANCE)},
        {VTS_SS_ESTIMATE_CORRELATION, rec, {21}, S(NULL_MEAN)},
        {VTS_SS_ESTIMATE_CORRELATION, sum, {21}, S(NULL_CROSS_PRODUCT)},
        {VTS_SS_ESTIMATE_CROSS_PRODUCT, rec, {7}, S(NULL_CROSS_PRODUCT)},
        {VTS_SS_ESTIMATE_CROSS_PRODUCT, rec, {7, 74}, 0},
        {VTS_SS_ESTIMATE_CROSS_PRODUCT, sum, {7, 74}, S(BAD_METHOD)},
        {VTS_SS_ESTIMATE_COVARIANCE, sum, {19, 74}, 0},
        {VTS_SS_ESTIMATE_MINIMUM, rec, {}, 0},
    };
    for (const Case& c : cases) {
        kef_ss_task* task;
        __vtsdSSNewTask(&task, &p, &n, &storage, x, nullptr, nullptr, 0);
        for (int id : {20, 22, 75}) __vtsiSSEditTask(task, id, &layout);
        for (int id : c.fields) __vtsdSSEditTask(task, id, out + id % 24);
        EXPECT_EQ(c.status, _vtsdSSBasic(task, c.estimates, c.method)) << &c - cases;
        __vtsSSDeleteTask(&task);
    }
}

// The last check: whatever else is wrong comes first. Editors cannot tell.
TEST(StatsValidation, Precision) {
    const auto check = [](auto own, auto other) {
        using Own = decltype(own);
        using Other = decltype(other);
        Problem<Own> r(2, 3, {1, 2, 4, 3, 5, 9});
        Problem<Own> clean(2, 3, {1, 2, 4, 3, 5, 9});
        std::vector<Own> low(2, 0);
        r.set(VTS_SS_ID_MINIMUM, low);
        for (int method : {VTS_SS_METHOD_TILED, VTS_SS_METHOD_RAW, VTS_SS_METHOD_SUMS})
            EXPECT_EQ(S(BAD_PRECISION), Api<Other>::basic(r.task, VTS_SS_ESTIMATE_MEAN, method));
        EXPECT_EQ(S(BAD_PRECISION), Api<Other>::minmax(r.task, VTS_SS_ESTIMATE_MINIMUM, 1));
        EXPECT_EQ(clean.mean, r.mean);
        EXPECT_EQ(std::vector<Own>(2, 0), low);
        EXPECT_EQ(S(BAD_METHOD), Api<Other>::basic(r.task, VTS_SS_ESTIMATE_MEAN, 3));
        r.layout = 7;
        EXPECT_EQ(S(NULL_STORAGE), Api<Other>::basic(r.task, everything, VTS_SS_METHOD_TILED));
        const std::vector<Other> foreign(2);
        EXPECT_EQ(S(OK), Api<Other>::edit(r.task, VTS_SS_ID_MINIMUM, foreign.data()));
    };
    check(1.0, 1.0f);
    check(1.0f, 1.0);
}

// Bits that are another computation's, or nobody's.
TEST(StatsValidation, EstimatesThatAreIgnored) {
    constexpr std::uint64_t extremes = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;
    Problem<double> r(1, 3, {1, 2, 4});
    std::vector<double> low = {nan}, high = {nan};
    EXPECT_EQ(S(OK), r.basic(extremes | std::uint64_t(1) << 63, VTS_SS_METHOD_TILED));
    EXPECT_EQ(0, r.accumulated[0]);
    r.set(VTS_SS_ID_MINIMUM, low);
    r.set(VTS_SS_ID_MAXIMUM, high);
    EXPECT_EQ(S(OK), _vtsdSSMinmax(r.task, ~extremes, VTS_SS_METHOD_MINMAX));
    EXPECT_TRUE(std::isnan(low[0]) && std::isnan(high[0]));
    EXPECT_EQ(S(OK), _vtsdSSMinmax(r.task, ~std::uint64_t(0), VTS_SS_METHOD_MINMAX));
    EXPECT_EQ(1, low[0]);
    EXPECT_EQ(4, high[0]);
    EXPECT_EQ(untouched, r.mean[0]);
}

TEST(StatsValidation, DataAndLayouts) {
    Problem<double> r(2, 3, {1, 2, 4, 3, 5, 9});
    const auto basic = [&](int method = VTS_SS_METHOD_TILED) {
        return r.basic(VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE, method);
    };
    const auto with = [&](std::int32_t& place, std::int32_t value,
                          int method = VTS_SS_METHOD_TILED) {
        const std::int32_t old = place;
        place = value;
        const std::int32_t status = basic(method);
        place = old;
        return status;
    };
    EXPECT_EQ(S(BAD_COUNT), with(r.n, 0));
    EXPECT_EQ(S(BAD_COUNT), with(r.n, -3));
    EXPECT_EQ(S(BAD_X_STORAGE), with(r.storage, 0x40001));
    EXPECT_EQ(S(OK), with(r.storage, 0x60001));  // one of the two bits is enough
    EXPECT_EQ(S(BAD_DIMENSION), with(r.p, 0));
    EXPECT_EQ(S(BAD_DIMENSION), with(r.p, 0, VTS_SS_METHOD_SUMS));
    EXPECT_EQ(S(NULL_STORAGE), with(r.layout, -1));
    EXPECT_EQ(S(NULL_STORAGE), with(r.layout, 3));
    EXPECT_EQ(S(OK), basic());
    EXPECT_EQ(S(BAD_METHOD), _vtsdSSMinmax(r.task, 0, 2));
    EXPECT_EQ(S(NULL_MINIMUM), _vtsdSSMinmax(r.task, 0xC00, 1));
    EXPECT_EQ(S(NULL_MAXIMUM), _vtsdSSMinmax(r.task, 0x800, 1));
    EXPECT_EQ(S(NULL_TASK), _vtsdSSMinmax(nullptr, 0x800, 1));

    // What is missing, in its order.
    kef_ss_task* task;
    const std::int32_t p = 1, n = 1, storage = VTS_SS_STORAGE_ROWS;
    const double w = 1;
    double out[2];
    __vtsdSSNewTask(&task, &p, nullptr, nullptr, nullptr, &w, nullptr, 0);
    __vtsdSSEditMoments(task, out, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    __vtsdSSEditTask(task, VTS_SS_ID_SUM, out + 1);
    const auto mean = [&](int method) { return _vtsdSSBasic(task, VTS_SS_ESTIMATE_MEAN, method); };
    EXPECT_EQ(S(NULL_ACCUMULATED_WEIGHTS), mean(VTS_SS_METHOD_SUMS));
    EXPECT_EQ(S(BAD_COUNT), mean(VTS_SS_METHOD_RAW));
    __vtsiSSEditTask(task, VTS_SS_ID_COUNT, &n);
    EXPECT_EQ(S(NULL_ACCUMULATED_WEIGHTS),
              mean(VTS_SS_METHOD_SUMS));  // the weights' total is not known
    EXPECT_EQ(S(NULL_X), mean(VTS_SS_METHOD_RAW));
    __vtsdSSEditTask(task, VTS_SS_ID_X, out);
    EXPECT_EQ(S(NULL_STORAGE), mean(VTS_SS_METHOD_RAW));
    __vtsiSSEditTask(task, VTS_SS_ID_X_STORAGE, &storage);
    EXPECT_EQ(S(OK), mean(VTS_SS_METHOD_RAW));
    __vtsSSDeleteTask(&task);
}

}  // namespace
}  // namespace stats_tests
