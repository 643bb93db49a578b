// The data-fitting task: creation, editors, queries, rows, search table.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "fit/cells/table.h"
#include "fit/task.h"
#include "kef_fit.h"
#include "tests/fit_data.h"

namespace {

using kef::fit::Bin;

std::vector<double> ramp(int n) {
    std::vector<double> x(n);
    for (int i = 0; i < n; ++i) x[i] = i + 0.25 * std::sin(i);
    return x;
}

struct FitTask : testing::Test {
    std::vector<double> x = ramp(8), y = std::vector<double>(24), c = std::vector<double>(400);
    kef_df_task* task = nullptr;

    int create(int64_t nx, int64_t hint = 0, int64_t ny = 0, int64_t y_hint = 0, int flag = 0) {
        return kef_df_kernel_dNewTask1D(&task, nx, x.data(), hint, ny, ny ? y.data() : nullptr,
                                        y_hint, flag);
    }
    double* row(int64_t id, int64_t index) {
        double* p = nullptr;
        EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dQueryIdxPtr(task, id, index, &p));
        return p;
    }
    void TearDown() override {
        if (task != nullptr) {
            EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_DeleteTask(&task));
            EXPECT_EQ(nullptr, task);
        }
    }
};

TEST_F(FitTask, CreationChecksInOrder) {
    const double *px = x.data(), *py = y.data();
    const auto create = [&](int64_t nx, const double* x, int64_t hint, int64_t ny, const double* y,
                            int64_t y_hint) {
        return kef_df_kernel_dNewTask1D(&task, nx, x, hint, ny, y, y_hint, 0);
    };
    // Each call is wrong in all that is checked later too.
    EXPECT_EQ(DF_STATUS_NX, create(1, nullptr, 3, 1, nullptr, 1));
    EXPECT_EQ(DF_STATUS_NX, create(-5, px, 0, 0, nullptr, 0));
    EXPECT_EQ(DF_STATUS_X, create(2, nullptr, 3, 1, nullptr, 1));
    for (int64_t hint : {-1, 3, 5, 8, 16}) {
        EXPECT_EQ(DF_STATUS_X_HINT, create(2, px, hint, 1, nullptr, 1));
    }
    EXPECT_EQ(DF_STATUS_X_HINT, create(2, px, INT64_C(0x100000001), 1, nullptr, 1));
    EXPECT_EQ(DF_STATUS_Y, create(2, px, 4, 1, nullptr, 1));
    EXPECT_EQ(DF_STATUS_Y, create(2, px, 4, -1, nullptr, 1));
    EXPECT_EQ(DF_STATUS_NY, create(2, px, 4, 0, py, 1));
    EXPECT_EQ(DF_STATUS_Y_HINT, create(2, px, 4, 1, py, 1));
    EXPECT_EQ(DF_STATUS_Y_HINT, create(2, px, 4, 1, py, 64));
    EXPECT_EQ(DF_STATUS_NO_MEMORY, create(2, px, 4, INT64_C(1) << 40, py, 16));
    EXPECT_EQ(DF_STATUS_NY, create(2, px, 4, -1, py, 16));
    EXPECT_EQ(nullptr, task);
    EXPECT_EQ(DF_STATUS_NULL_TASK, kef_df_kernel_DeleteTask(&task));
    EXPECT_EQ(DF_STATUS_OK, create(2, px, 0, 0, nullptr, 0));
    EXPECT_EQ(4, task->internal_byte);
    EXPECT_EQ(1, task->internal_word);
    EXPECT_EQ(1, task->dimension);
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(task) % 128);
}

TEST_F(FitTask, IntegersRoundTripAndRefuse) {
    ASSERT_EQ(DF_STATUS_OK, create(8, 1, 3, 16, 1));
    struct Case {
        int64_t id, status;
        std::vector<int64_t> good, bad;
    };
    const int64_t big = INT64_C(1) << 32;
    const std::vector<Case> cases = {
        {DF_NX, DF_STATUS_NX, {2, 8}, {1, 0, -1, big}},
        {DF_X_HINT, DF_STATUS_X_HINT, {0, 1, 2, 4}, {3, 8, -1, big}},
        {DF_NY, DF_STATUS_NY, {3, big + 1, 3}, {0, -1}},
        {DF_Y_HINT, DF_STATUS_Y_HINT, {0, 16, 32, 128}, {1, 64, 144, -1, big}},
        {DF_ORDER, DF_STATUS_ORDER, {0, 4, big}, {-1}},
        {DF_TYPE, DF_STATUS_TYPE, {0, 1, 2, 3, 4, 5}, {6, -1, big}},
        {DF_INTERNAL_TYPE, DF_STATUS_INTERNAL_TYPE, {0, 1, 2, 8, 9, 12, big + 8}, {3, 4, 16, big}},
        {DF_BOUNDARY_TYPE, DF_STATUS_BOUNDARY_TYPE, {0, 3, 64, big}, {-1, -big}},
        {DF_COEFFICIENT_HINT, DF_STATUS_COEFFICIENT_HINT, {0, 16, 32, 128}, {1, 64, -1, big}},
        {DF_CHECK_FLAG, DF_STATUS_CHECK_FLAG, {1, 0}, {2, -1, big}},
    };
    int64_t value = 0;
    for (const Case& c : cases) {
        for (int64_t v : c.good) {
            EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, c.id, v)) << c.id << ' ' << v;
            EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iQueryVal(task, c.id, &value));
            EXPECT_EQ(v, value);
        }
        for (int64_t v : c.bad) {
            EXPECT_EQ(c.status, kef_df_kernel_iEditVal(task, c.id, v)) << c.id << ' ' << v;
            EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iQueryVal(task, c.id, &value));
            EXPECT_EQ(c.good.back(), value);
        }
    }
    for (int64_t id : {INT64_C(0), INT64_C(5), INT64_C(13), INT64_C(24), big + DF_NX}) {
        EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_iEditVal(task, id, 1));
        EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_iQueryVal(task, id, &value));
    }
    EXPECT_EQ(DF_STATUS_NULL_TASK, kef_df_kernel_iEditVal(nullptr, DF_NX, 8));
    EXPECT_EQ(DF_STATUS_NULL_TASK, kef_df_kernel_iQueryVal(nullptr, DF_NX, &value));
    EXPECT_EQ(DF_STATUS_NULL_OUTPUT, kef_df_kernel_iQueryVal(task, DF_NX, nullptr));
}

TEST_F(FitTask, IntegerWidthOfQueries) {
    for (int flag : {0, 1}) {
        ASSERT_EQ(DF_STATUS_OK, create(8, 1, 1, 16, flag));
        const int64_t order = INT64_C(0x500000004);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_ORDER, order));
        int64_t value = -1;
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iQueryVal(task, DF_ORDER, &value));
        EXPECT_EQ(flag ? order : INT64_C(-0x100000000) + 4, value);
        task->check_flag = -1;  // sign-extended where two words are written
        value = 0;
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iQueryVal(task, DF_CHECK_FLAG, &value));
        EXPECT_EQ(flag ? -1 : INT64_C(0xFFFFFFFF), value);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_DeleteTask(&task));
    }
}

TEST_F(FitTask, PointersRoundTripAndRefuse) {
    ASSERT_EQ(DF_STATUS_OK, create(8, 0, 3, 16));
    const int nulls[] = {DF_STATUS_X, DF_STATUS_Y, DF_STATUS_INTERNAL_CONDITIONS,
                         DF_STATUS_BOUNDARY_CONDITIONS, DF_STATUS_COEFFICIENTS};
    for (int64_t id = DF_X; id <= DF_COEFFICIENTS; ++id) {
        double value = 0, *found = nullptr;
        EXPECT_EQ(nulls[id - DF_X], kef_df_kernel_dEditPtr(task, id, nullptr));
        EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPtr(task, id, &value));
        EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dQueryPtr(task, id, &found));
        EXPECT_EQ(&value, found);
    }
    double* found = nullptr;
    for (int64_t id : {INT64_C(0), INT64_C(6), INT64_C(0x100000001)}) {
        EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dEditPtr(task, id, nullptr));
        EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dQueryPtr(task, id, &found));
    }
    EXPECT_EQ(DF_STATUS_NULL_TASK, kef_df_kernel_dEditPtr(nullptr, DF_X, x.data()));
    EXPECT_EQ(DF_STATUS_NULL_TASK, kef_df_kernel_dQueryPtr(nullptr, DF_X, &found));
    EXPECT_EQ(DF_STATUS_NULL_OUTPUT, kef_df_kernel_dQueryPtr(task, DF_X, nullptr));
}

TEST_F(FitTask, RowsByHint) {
    ASSERT_EQ(DF_STATUS_OK, create(8, 0, 3, DF_BY_ROWS));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(y.data() + 8 * i, row(DF_Y, i));
    kef_df_kernel_iEditVal(task, DF_Y_HINT, DF_BY_COLUMNS);
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPtr(task, DF_Y, y.data() + 1));
    EXPECT_EQ(y.data() + 1, row(DF_Y, 0));
    double* found;
    EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dQueryIdxPtr(task, DF_Y, 1, &found));
    kef_df_kernel_iEditVal(task, DF_Y_HINT, DF_SEPARATE_ROWS);
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPtr(task, DF_Y, y.data()));
    EXPECT_EQ(nullptr, row(DF_Y, 2));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditIdxPtr(task, DF_Y, 2, y.data() + 5));
    EXPECT_EQ(y.data() + 5, row(DF_Y, 2));
    // The first row behind the slots that the array had when it was made, and one beyond it.
    kef_df_kernel_iEditVal(task, DF_NY, 4);
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditIdxPtr(task, DF_Y, 3, y.data() + 7));
    EXPECT_EQ(y.data() + 7, row(DF_Y, 3));
    kef_df_kernel_iEditVal(task, DF_NY, 6);
    EXPECT_EQ(nullptr, row(DF_Y, 5));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditIdxPtr(task, DF_Y, 5, y.data()));
    EXPECT_EQ(y.data() + 5, row(DF_Y, 2));
    EXPECT_EQ(y.data(), row(DF_Y, 5));
    EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dEditIdxPtr(task, DF_Y, 6, y.data()));
    EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dEditIdxPtr(task, DF_Y, -1, y.data()));
    EXPECT_EQ(DF_STATUS_PARAMETER, kef_df_kernel_dEditIdxPtr(task, DF_X, 0, x.data()));
    EXPECT_EQ(DF_STATUS_Y, kef_df_kernel_dEditIdxPtr(task, DF_Y, 0, nullptr));

    for (int64_t type : {2, 1}) {
        const int64_t stride = 3 * (type == DF_TYPE_SUBBOTIN ? 8 : 7);
        for (int64_t hint : {0, 16, 32, 128}) {
            ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPPSpline1D(task, 3, type, 0, nullptr, 0,
                                                                  nullptr, c.data(), hint));
            const void* const* rows = task->coefficient_rows;
            EXPECT_EQ(c.data(), rows[0]);
            EXPECT_EQ(hint == DF_SEPARATE_ROWS ? nullptr : c.data() + 2 * stride, rows[2]);
        }
    }
}

TEST_F(FitTask, SplineEditorStoresUpToTheFault) {
    ASSERT_EQ(DF_STATUS_OK, create(8));
    const double* v = y.data();
    const auto edit = [&](int64_t order, int64_t type, int64_t bc_type, const double* bc,
                          int64_t ic_type, const double* ic, double* coefficients) {
        return kef_df_kernel_dEditPPSpline1D(task, order, type, bc_type, bc, ic_type, ic,
                                             coefficients, 16);
    };
    EXPECT_EQ(DF_STATUS_NULL_TASK,
              kef_df_kernel_dEditPPSpline1D(nullptr, 4, 2, 0, nullptr, 0, nullptr, nullptr, 0));
    EXPECT_EQ(DF_STATUS_ORDER, edit(-1, -1, 12, nullptr, 1, nullptr, nullptr));
    EXPECT_EQ(DF_STATUS_TYPE, edit(4, -1, 12, nullptr, 1, nullptr, nullptr));
    EXPECT_EQ(0, task->order);
    EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, edit(4, 2, 12, nullptr, 1, nullptr, nullptr));
    EXPECT_EQ(4, task->order);
    EXPECT_EQ(2, task->type);
    EXPECT_EQ(0, task->bc_type);
    for (int64_t type : {3, 24, 36, 48, -1}) {
        EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, edit(4, 2, type, nullptr, 0, nullptr, nullptr));
    }
    EXPECT_EQ(DF_STATUS_INTERNAL_CONDITIONS, edit(4, 2, 12, v, 1, nullptr, nullptr));
    EXPECT_EQ(12, task->bc_type);
    EXPECT_EQ(v, task->bc);
    EXPECT_EQ(DF_STATUS_INTERNAL_TYPE, edit(4, 2, 64, nullptr, 0, v, nullptr));
    EXPECT_EQ(nullptr, task->ic);
    EXPECT_EQ(DF_STATUS_NY, edit(4, 2, 2, nullptr, 1, v, c.data()));
    EXPECT_EQ(v, task->ic);
    EXPECT_EQ(0, task->coefficient_hint);
    EXPECT_EQ(DF_STATUS_OK, edit(4, 2, 1, nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(16, task->coefficient_hint);
    EXPECT_EQ(DF_STATUS_NY, kef_df_kernel_dEditPtr(task, DF_COEFFICIENTS, c.data()));
}

TEST_F(FitTask, OtherDimensionsAreLeftAlone) {
    ASSERT_EQ(DF_STATUS_OK, create(8, 0, 1, 16));
    task->dimension = 2;
    int64_t value = -7;
    double* found = c.data();
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iQueryVal(task, DF_NX, &value));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dQueryPtr(task, DF_X, &found));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dQueryIdxPtr(task, DF_Y, 0, &found));
    EXPECT_EQ(-7, value);
    EXPECT_EQ(c.data(), found);
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_NX, 5));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPtr(task, DF_X, c.data()));
    EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_dEditIdxPtr(task, DF_Y, 0, c.data()));
    EXPECT_EQ(DF_STATUS_OK,
              kef_df_kernel_dEditPPSpline1D(task, 4, 2, 0, nullptr, 0, nullptr, nullptr, 0));
    EXPECT_EQ(8, task->nx);
    EXPECT_EQ(x.data(), task->x);
    EXPECT_EQ(0, task->order);
}

// A call of one precision on a task of the other does nothing.
template <class T, class Other> void expect_precision() {
    using A = fit_test::Api<T>;
    const std::vector<Other> x = {0, 1, 2, 3, 4}, y = {1, 2, 3, 4, 5};
    std::vector<Other> c(16, -77);
    kef_df_task* task = nullptr;
    ASSERT_EQ(DF_STATUS_OK,
              fit_test::Api<Other>::new_task(&task, 5, x.data(), 0, 1, y.data(), 0, 0));
    ASSERT_EQ(DF_STATUS_OK,
              fit_test::Api<Other>::edit_spline(task, 4, DF_TYPE_NATURAL, DF_FREE_END, nullptr, 0,
                                                nullptr, c.data(), DF_BY_ROWS));
    T values[8] = {}, *found = values;
    int64_t wide = -7;
    int32_t narrow = -7;
    const int32_t one = 1;
    const auto refused = [](int status) { EXPECT_EQ(DF_STATUS_PRECISION, status); };
    refused(A::edit_spline(task, 2, 0, 0, nullptr, 0, nullptr, values, DF_BY_COLUMNS));
    for (int64_t id : {DF_X, DF_Y, DF_BOUNDARY_CONDITIONS, DF_COEFFICIENTS}) {
        refused(A::edit_pointer(task, id, values));
        refused(A::query_pointer(task, id, &found));
    }
    refused(A::edit_row(task, DF_Y, 0, values));
    refused(A::query_row(task, DF_Y, 0, &found));
    EXPECT_EQ(values, found);
    for (const fit_test::Kind& kind : fit_test::kinds())
        refused((sizeof(T) == 8 ? kind.in_double : kind.in_single)(task, 0));
    for (auto search : fit_test::Searches<T>::wide) refused(search(task, 1, values, 0, &wide));
    for (auto search : fit_test::Searches<T>::narrow) refused(search(task, 1, values, 0, &narrow));
    refused(fit_test::Searches<T>::user(task, 1, values, 0, &wide, nullptr, nullptr));
    for (int64_t method : {DF_SPLINE, DF_LOOKUP})
        refused(A::interpolate(task, method, 1, values, 0, 1, &one, values, 0, nullptr));
    refused(A::integrate(task, 0, 1, values, 0, values, 0, values, 0));
    EXPECT_EQ(-7, wide);
    EXPECT_EQ(-7, narrow);
    EXPECT_EQ(4, task->order);
    EXPECT_EQ(x.data(), task->x);
    EXPECT_EQ(c, std::vector<Other>(16, -77));
    kef_df_kernel_DeleteTask(&task);
}

TEST_F(FitTask, OtherPrecisionIsRefused) {
    expect_precision<float, double>();
    expect_precision<double, float>();
}

// The pairs as they are defined, by a search over all breakpoints for each bin.
template <class T> void expect_table(const kef_df_task& task, const std::vector<T>& x, int bins) {
    const int n = static_cast<int>(x.size());
    ASSERT_EQ(bins, task.bin_count);
    EXPECT_EQ(0, task.bin_count_high);
    const double h = (double(x[n - 1]) - x[0]) / bins;
    EXPECT_EQ(1 / h, task.inverse_bin_width);
    std::vector<int> bin(n);
    for (int i = 0; i < n; ++i)
        bin[i] = static_cast<int>(std::trunc((double(x[i]) - x[0]) * (1 / h)));
    for (int k = 0; k < bins; ++k) {
        uint32_t low = 0, high = n - 1;
        for (int i = 0; i < n && bin[i] <= k - 1; ++i) low = i;
        for (int i = n - 1; k < bins - 1 && i >= 0 && bin[i] >= k + 1; --i) high = i;
        ASSERT_EQ(low, task.bins[k].low) << "bin " << k << " of " << bins;
        ASSERT_EQ(high, task.bins[k].high) << "bin " << k << " of " << bins;
    }
}

TEST_F(FitTask, SearchTable) {
    for (const auto& [n, bins] : {std::pair{2, 16},
                                  {3, 16},
                                  {100, 16},
                                  {272, 17},
                                  {5000, 312},
                                  {16400, 1024},
                                  {40000, 1024}}) {
        x = ramp(n);
        ASSERT_EQ(DF_STATUS_OK, create(n));
        expect_table(*task, x, bins);
        // Crowded on the left: most bins are empty.
        for (double& v : x) v = v * v * v;
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_X_HINT, DF_QUASI_UNIFORM));
        expect_table(*task, x, bins);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_DeleteTask(&task));

        const std::vector<float> xs(x.begin(), x.end());
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_sNewTask1D(&task, n, xs.data(), 1, 0, nullptr, 0, 0));
        expect_table(*task, xs, bins);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_DeleteTask(&task));
    }
    // Not for uniform breakpoints, until the hint changes.
    x = ramp(100);
    ASSERT_EQ(DF_STATUS_OK, create(100, DF_UNIFORM));
    EXPECT_EQ(0, task->bin_count);
    EXPECT_NE(nullptr, task->bins);
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_X_HINT, DF_DEFAULT_HINT));
    expect_table(*task, x, 16);
    // Breakpoints that break the contract stay inside the table.
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = 1 / 0.0;
    for (const std::vector<double>& bad : {std::vector<double>{3, 2, 1},
                                           {1, 1, 1},
                                           {0, nan, 2},
                                           {nan, 0, nan},
                                           {-inf, 0, inf},
                                           {0, 9, -9, 1}}) {
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPtr(task, DF_X, bad.data()));
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_NX, bad.size()));
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, DF_X_HINT, DF_NON_UNIFORM));
        for (int k = 0; k < task->bin_count; ++k) {
            EXPECT_LT(task->bins[k].low, bad.size());
            EXPECT_LT(task->bins[k].high, bad.size());
        }
    }
}

}  // namespace
