// The computations of computation.def: what they check, and in which order.
#include <array>
#include <functional>

#include "stats/each.h"
#include "stats/task.h"
#include "tests/stats_support.h"

namespace stats_tests {
namespace {

// A task in which every parameter is registered.
struct FullTask {
    std::int32_t p = 2, n = 3, storage = VTS_SS_STORAGE_ROWS, zero = 0;
    std::array<double, 64> array{};
    kef_ss_task* task = nullptr;
    explicit FullTask(bool single) {
        if (single) __vtssSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
        else __vtsdSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0);
        array.fill(untouched);
        // Layouts are 0, the two storages what they must be.
        const void* const integer = &zero;
        void *const input = array.data(), *const output = array.data();
#define KEF_PARAMETER(kind, id, name, status) task->name = kind;
#include "stats/task.def"
        task->dimension = &p;
        task->count = &n;
        task->x_storage = task->order_statistics_storage = &storage;
    }
    ~FullTask() { __vtsSSDeleteTask(&task); }
};

// A check: what breaks it, and the status that follows.
struct Check {
    std::function<void(FullTask&)> spoil;
    std::int32_t status;
};

namespace status_of {
enum {
#define KEF_PARAMETER(kind, id, name, status) name = VTS_SS_STATUS_##status,
#include "stats/task.def"
};
}  // namespace status_of

#define KEF_SPOILED(check) KEF_SPOILED_##check,
#define KEF_SPOILED_needs(field)                                       \
    Check {                                                            \
        [](FullTask& t) { t.task->field = nullptr; }, status_of::field \
    }
#define KEF_SPOILED_any(field, other)                                                           \
    Check {                                                                                     \
        [](FullTask& t) { t.task->field = nullptr, t.task->other = nullptr; }, status_of::field \
    }
#define KEF_SPOILED_any4(field, b, c, d)                                                  \
    Check {                                                                               \
        [](FullTask& t) { t.task->field = t.task->b = t.task->c = t.task->d = nullptr; }, \
            status_of::field                                                              \
    }
#define KEF_SPOILED_with(field, other)                                    \
    Check {                                                               \
        [](FullTask& t) {                                                 \
            if (t.task->field == nullptr) t.task->field = t.array.data(); \
            t.task->other = nullptr;                                      \
        },                                                                \
            status_of::other                                              \
    }
#define KEF_SPOILED_observations                              \
    Check {                                                   \
        [](FullTask& t) { t.n = 0; }, VTS_SS_STATUS_BAD_COUNT \
    }
#define KEF_SPOILED_dimension                                     \
    Check {                                                       \
        [](FullTask& t) { t.p = 0; }, VTS_SS_STATUS_BAD_DIMENSION \
    }
#define KEF_SPOILED_layout(matrix)                                                             \
    Check {                                                                                    \
        [](FullTask& t) { t.task->matrix##_storage = &t.storage; }, VTS_SS_STATUS_NULL_STORAGE \
    }
#define KEF_SPOILED_either_layout(matrix, other) KEF_SPOILED_layout(matrix)
#define KEF_SPOILED_storage(array)                                                         \
    Check {                                                                                \
        [](FullTask& t) { t.task->array##_storage = &t.zero; }, VTS_SS_STATUS_NULL_STORAGE \
    }

struct Computation {
    const char* name;
    std::int32_t (*call[2])(kef_ss_task*, std::uint64_t, std::int32_t);  // double, single
    std::vector<Check> checks;
};

std::vector<Computation> computations() {
    return {
#define KEF_COMPUTATION(Name, function, ...) \
    {#Name, {_vtsdSS##Name, _vtssSS##Name}, {KEF_EACH(KEF_SPOILED, __VA_ARGS__)}},
#include "stats/computation.def"
    };
}

// From the last check to the first each is broken, on top of those behind it.
TEST(StatsComputations, ChecksInOrder) {
    for (const Computation& c : computations())
        for (const bool single : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.name << (single ? " single" : " double"));
            EXPECT_EQ(VTS_SS_STATUS_NULL_TASK, c.call[single](nullptr, 0, 0));
            FullTask full(single);
            EXPECT_EQ(VTS_SS_STATUS_BAD_PRECISION, c.call[!single](full.task, 0, 0));
            for (std::size_t k = c.checks.size(); k-- > 0;) {
                SCOPED_TRACE(testing::Message() << "check " << k);
                c.checks[k].spoil(full);
                for (const bool other : {false, true})
                    EXPECT_EQ(c.checks[k].status, c.call[other](full.task, 0, 0));
            }
            for (double x : full.array) EXPECT_EQ(untouched, x);
        }
}

}  // namespace
}  // namespace stats_tests
