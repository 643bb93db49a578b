// Data fitting without memory: each allocation of each call fails once in turn. The call
// says so, leaves the task and the arrays as they were, and goes well when it is repeated.
#include <functional>
#include <memory>

#include "failing_allocator.h"
#include "tests/fit_data.h"

namespace kef::test {
namespace {

using namespace fit_test;
using State = std::unique_ptr<Spline<double>>;

constexpr int n = 9, ny = 3;

State make(const Kind& kind, int64_t boundary, int64_t y_hint = DF_BY_ROWS) {
    auto s = std::make_unique<Spline<double>>();
    s->x = uneven<double>(n, 1), s->y = noise<double>(n * ny, 2);
    s->ny = ny, s->y_hint = y_hint, s->order = kind.order, s->type = kind.type;
    s->set_conditions(boundary, kind.internals[0]);
    s->set_up();
    return s;
}

const Kind& natural() { return kinds()[3]; }

double* row(const Spline<double>& s, int64_t id, int64_t index) {
    double* p = nullptr;
    EXPECT_EQ(kef_df_kernel_dQueryIdxPtr(s.task, id, index, &p), DF_STATUS_OK);
    return p;
}

TEST(FitMemory, Creation) {
    struct Holder {
        kef_df_task* task = nullptr;
        ~Holder() {
            if (task != nullptr) kef_df_kernel_DeleteTask(&task);
        }
    };
    const std::vector<double> x = uneven<double>(n, 1), y = noise<double>(n, 1);
    const auto allocations = for_each_failed_allocation(
        [] { return Holder{}; },
        [&](Holder& h) {
            return kef_df_kernel_dNewTask1D(&h.task, n, x.data(), 0, 1, y.data(), 0, 0);
        },
        [](Holder& h, int status, bool failed) {
            EXPECT_EQ(status, failed ? DF_STATUS_NO_MEMORY : DF_STATUS_OK);
            EXPECT_EQ(h.task == nullptr, failed);
        });
    EXPECT_EQ(allocations, 3);  // the task, the rows of y, the search table
}

TEST(FitMemory, Editors) {
    const std::vector<double> other(4 * n * ny);
    struct Call {
        const char* name;
        int64_t id;
        std::function<int(kef_df_task*)> run;
    };
    const Call calls[] = {
        {"values", DF_Y,
         [&](kef_df_task* t) { return kef_df_kernel_dEditPtr(t, DF_Y, other.data()); }},
        {"coefficients", DF_COEFFICIENTS,
         [&](kef_df_task* t) { return kef_df_kernel_dEditPtr(t, DF_COEFFICIENTS, other.data()); }},
        {"spline", DF_COEFFICIENTS,
         [&](kef_df_task* t) {
             return kef_df_kernel_dEditPPSpline1D(t, 4, DF_TYPE_NATURAL, DF_FREE_END, nullptr, 0,
                                                  nullptr, const_cast<double*>(other.data()),
                                                  DF_BY_COLUMNS);
         }},
        {"a row beyond the array", DF_Y,
         [&](kef_df_task* t) {
             kef_df_kernel_iEditVal(t, DF_NY, ny + 4);
             return kef_df_kernel_dEditIdxPtr(t, DF_Y, ny + 3, other.data());
         }},
    };
    for (const Call& call : calls) {
        SCOPED_TRACE(call.name);
        const auto allocations = for_each_failed_allocation(
            [] { return make(natural(), DF_FREE_END); },
            [&](State& s) {
                double* before[ny];
                for (int i = 0; i < ny; ++i) before[i] = row(*s, call.id, i);
                const int status = call.run(s->task);
                if (status == DF_STATUS_NO_MEMORY) {
                    for (int i = 0; i < ny; ++i) EXPECT_EQ(row(*s, call.id, i), before[i]);
                    int32_t hint = 0;
                    kef_df_kernel_iQueryVal(s->task, DF_COEFFICIENT_HINT, &hint);
                    EXPECT_EQ(hint, DF_BY_ROWS);
                }
                return status;
            },
            [&](State& s, int status, bool failed) {
                EXPECT_EQ(status, failed ? DF_STATUS_NO_MEMORY : DF_STATUS_OK);
                if (failed) EXPECT_EQ(call.run(s->task), DF_STATUS_OK);
            });
        EXPECT_EQ(allocations, 1);
    }
}

TEST(FitMemory, Constructors) {
    for (const Kind& kind : kinds()) {
        for (int64_t boundary : kind.boundaries) {
            for (int64_t y_hint : {DF_BY_ROWS, DF_BY_COLUMNS}) {
                State fine = make(kind, boundary, y_hint);
                ASSERT_EQ(kind.in_double(fine->task, 0), DF_STATUS_OK);
                const auto allocations = for_each_failed_allocation(
                    [&] { return make(kind, boundary, y_hint); },
                    [&](State& s) { return kind.in_double(s->task, 0); },
                    [&](State& s, int status, bool failed) {
                        EXPECT_EQ(status, failed ? DF_STATUS_NO_MEMORY : DF_STATUS_OK);
                        if (failed) {
                            EXPECT_EQ(s->c, std::vector<double>(s->c.size(), -77));
                            EXPECT_EQ(kind.in_double(s->task, 0), DF_STATUS_OK);
                        }
                        EXPECT_EQ(s->c, fine->c) << kind.name;
                    });
                EXPECT_EQ(allocations, 1);
            }
        }
    }
}

// Interpolation and search need none; integration goes on without its running sums.
TEST(FitMemory, Evaluation) {
    const State s = make(natural(), DF_FREE_END);
    ASSERT_EQ(natural().in_double(s->task, 0), DF_STATUS_OK);
    std::vector<double> left, right;
    for (int j = 0; j < 40; ++j)
        left.push_back(s->x[0] + 0.01 * j), right.push_back(s->x[n - 1] - 0.01 * j);
    const auto size = static_cast<int64_t>(left.size());
    std::vector<double> reference(ny * left.size()), result(reference.size());
    const auto integrate = [&](std::vector<double>& to) {
        return kef_df_kernel_dDFIntegrate1D(s->task, 0, size, left.data(), 0, right.data(), 0,
                                            to.data(), 0);
    };
    ASSERT_EQ(integrate(reference), DF_STATUS_OK);
    const auto sums =
        for_each_failed_allocation([] { return 0; }, [&](int) { return integrate(result); },
                                   [&](int, int status, bool) {
                                       EXPECT_EQ(status, DF_STATUS_OK);
                                       for (std::size_t j = 0; j < result.size(); ++j)
                                           EXPECT_NEAR(result[j], reference[j], 1e-13);
                                   });
    EXPECT_EQ(sums, 1);
    std::vector<int32_t> cell(left.size());
    const int32_t value = 1;
    const auto none = for_each_failed_allocation(
        [] { return 0; },
        [&](int) {
            return kef_df_kernel_dDFInterpolate1D(s->task, DF_SPLINE, size, left.data(), 0, 1,
                                                  &value, result.data(), 0, cell.data());
        },
        [](int, int status, bool) { EXPECT_EQ(status, DF_STATUS_OK); });
    EXPECT_EQ(none, 0);
}

}  // namespace
}  // namespace kef::test
