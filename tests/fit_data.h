// A fitting task with its arrays, and the entries of both precisions under one name.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "kef_fit.h"

namespace fit_test {

using Quad = __float128;

template <class T> struct Api;
#define KEF_FIT_API(T, letter)                                                           \
    template <> struct Api<T> {                                                          \
        static constexpr auto new_task = kef_df_kernel_##letter##NewTask1D;              \
        static constexpr auto edit_spline = kef_df_kernel_##letter##EditPPSpline1D;      \
        static constexpr auto edit_pointer = kef_df_kernel_##letter##EditPtr;            \
        static constexpr auto query_pointer = kef_df_kernel_##letter##QueryPtr;          \
        static constexpr auto edit_row = kef_df_kernel_##letter##EditIdxPtr;             \
        static constexpr auto query_row = kef_df_kernel_##letter##QueryIdxPtr;           \
        static constexpr auto interpolate = kef_df_kernel_##letter##DFInterpolate1D;     \
        static constexpr auto integrate = kef_df_kernel_##letter##DFIntegrate1D;         \
        static constexpr auto linear = kef_df_kernel_##letter##DFLinearSpline1D;         \
        static constexpr auto quadratic = kef_df_kernel_##letter##DFQuadraticSpline1D;   \
        static constexpr auto natural = kef_df_kernel_##letter##DFNaturalCubicSpline1D;  \
        static constexpr auto hermite = kef_df_kernel_##letter##DFHermiteCubicSpline1D;  \
        static constexpr auto bessel = kef_df_kernel_##letter##DFBesselCubicSpline1D;    \
        static constexpr auto akima = kef_df_kernel_##letter##DFAkimaCubicSpline1D;      \
        static constexpr auto standard = kef_df_kernel_##letter##DFDefaultCubicSpline1D; \
    };
KEF_FIT_API(double, d)
KEF_FIT_API(float, s)
#undef KEF_FIT_API

// The cell searches of a precision, in both widths of cells.
template <class T, class Int>
using Search = int32_t (*)(const kef_df_task*, int64_t, const T*, int64_t, Int*);
template <class T> struct Searches;
#define KEF_FIT_SEARCHES(T, letter)                                                            \
    template <> struct Searches<T> {                                                           \
        static constexpr Search<T, int64_t> wide[] = {                                         \
            kef_df_kernel_##letter##DFSearch1D,                                                \
            kef_df_kernel_##letter##DFSortedSearch1D,                                          \
            kef_df_kernel_##letter##DFUniformSearch1D,                                         \
            kef_df_kernel_##letter##DFQuasiUniformSearch1D,                                    \
            kef_df_kernel_##letter##DFHybridSearch1D,                                          \
            kef_df_kernel_##letter##DFPeakSearch1D};                                           \
        static constexpr Search<T, int32_t> narrow[] = {                                       \
            kef_df_kernel_##letter##DFSearch1D32,                                              \
            kef_df_kernel_##letter##DFSortedSearch1D32,                                        \
            kef_df_kernel_##letter##DFUniformSearch1D32,                                       \
            kef_df_kernel_##letter##DFQuasiUniformSearch1D32,                                  \
            kef_df_kernel_##letter##DFHybridSearch1D32,                                        \
            kef_df_kernel_##letter##DFPeakSearch1D32};                                         \
        static constexpr auto user = kef_df_kernel_##letter##DFUserDefSearch1D;                \
        static constexpr auto user_uniform = kef_df_kernel_##letter##DFUniUserDefSearch1D;     \
        static constexpr auto user32 = kef_df_kernel_##letter##DFUserDefSearch1D32;            \
        static constexpr auto user_uniform32 = kef_df_kernel_##letter##DFUniUserDefSearch1D32; \
    };
KEF_FIT_SEARCHES(double, d)
KEF_FIT_SEARCHES(float, s)
#undef KEF_FIT_SEARCHES

using Constructor = int32_t (*)(const kef_df_task*, int64_t);

// A kind of spline: the constructor of its precision and what it takes.
struct Kind {
    const char* name;
    Constructor in_double, in_single;
    int order;
    int64_t type;
    std::vector<int64_t> boundaries;
    std::vector<int64_t> internals;
    int min_nx;
};

inline const std::vector<Kind>& kinds() {
    using D = Api<double>;
    using S = Api<float>;
    const std::vector<int64_t> two_sided = {1, 2, 12, 24, 36, 48, 64};
    const std::vector<int64_t> local = {0, 1, 2, 12, 24, 36, 48, 64};
    static const std::vector<Kind> all = {
        {"linear", D::linear, S::linear, 2, DF_TYPE_DEFAULT, {0}, {0}, 2},
        {"quadratic", D::quadratic, S::quadratic, 3, DF_TYPE_DEFAULT, {0, 1, 4, 8, 16, 32}, {0}, 2},
        {"Subbotin", D::quadratic, S::quadratic, 3, DF_TYPE_SUBBOTIN, two_sided, {0, 8}, 3},
        {"natural", D::natural, S::natural, 4, DF_TYPE_NATURAL, two_sided, {0}, 3},
        {"Hermite", D::hermite, S::hermite, 4, DF_TYPE_HERMITE, two_sided, {1}, 2},
        {"Bessel", D::bessel, S::bessel, 4, DF_TYPE_BESSEL, local, {0}, 2},
        {"Akima", D::akima, S::akima, 4, DF_TYPE_AKIMA, local, {0}, 2},
        {"default", D::standard, S::standard, 4, DF_TYPE_DEFAULT, two_sided, {1, 2}, 2},
    };
    return all;
}

// Breakpoints, functions, conditions and coefficients of a spline, all by rows.
template <class T> struct Spline {
    std::vector<T> x, y, bc, ic, c;
    int64_t ny = 1, order = 4, type = 0, bc_type = 0, ic_type = 0;
    int64_t x_hint = 0, y_hint = DF_BY_ROWS, c_hint = DF_BY_ROWS;
    kef_df_task* task = nullptr;

    Spline() = default;
    Spline(const Spline&) = delete;
    ~Spline() { release(); }
    void release() {
        if (task != nullptr) kef_df_kernel_DeleteTask(&task);
    }

    std::size_t cells() const { return type == DF_TYPE_SUBBOTIN ? x.size() : x.size() - 1; }
    const T* cell(std::size_t i, std::size_t function = 0) const {
        return &c[(function * cells() + i) * order];
    }
    // The left end of a cell, and the knot in gap i, in the arithmetic of T.
    T knot(std::size_t gap) const {
        return ic_type & DF_INTERNAL_KNOTS ? ic[gap] : T(0.5) * x[gap] + T(0.5) * x[gap + 1];
    }
    T left(std::size_t i) const { return type == DF_TYPE_SUBBOTIN && i > 0 ? knot(i - 1) : x[i]; }

    void set_up() {
        release();
        c.assign(ny * cells() * order, T(-77));
        ASSERT_EQ(DF_STATUS_OK,
                  Api<T>::new_task(&task, x.size(), x.data(), x_hint, ny, y.data(), y_hint, 0));
        ASSERT_EQ(DF_STATUS_OK,
                  Api<T>::edit_spline(task, order, type, bc_type, bc.empty() ? nullptr : bc.data(),
                                      ic_type, ic.empty() ? nullptr : ic.data(), c.data(), c_hint));
    }
    void fit(const Kind& kind) {
        order = kind.order;
        type = kind.type;
        set_up();
        const Constructor constructor = sizeof(T) == 8 ? kind.in_double : kind.in_single;
        ASSERT_EQ(DF_STATUS_OK, constructor(task, 0)) << kind.name << " boundary " << bc_type;
    }
    // Conditions with values that are not special.
    void set_conditions(int64_t boundary, int64_t internal) {
        bc_type = boundary;
        ic_type = internal;
        bc = {T(0.75), T(-1.5)};
        ic.clear();
        if (internal == DF_INTERNAL_KNOTS) {
            for (std::size_t i = 0; i + 1 < x.size(); ++i)
                ic.push_back(x[i] + (x[i + 1] - x[i]) * T(0.3 + 0.1 * (i % 5)));
        } else if (internal != 0) {
            for (std::size_t i = 0; i < x.size(); ++i) ic.push_back(T(std::sin(1.0 + i)));
        }
    }
    std::vector<T> values(const std::vector<T>& site, int64_t hint,
                          std::vector<int32_t> orders = {1}) {
        std::size_t m = 0;
        for (int32_t flag : orders) m += flag != 0;
        const std::size_t n = hint == DF_UNIFORM ? 0 : site.size();
        std::vector<T> r(ny * n * m);
        EXPECT_EQ(DF_STATUS_OK,
                  Api<T>::interpolate(task, DF_SPLINE, n, site.data(), hint, orders.size(),
                                      orders.data(), r.data(), DF_BY_ROWS, nullptr));
        return r;
    }
};

// Breakpoints with unequal distances between 0.3 and 1.3.
template <class T> std::vector<T> uneven(std::size_t n, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<T> x(n);
    double at = -2;
    for (T& v : x) {
        v = static_cast<T>(at);
        at += 0.3 + (random() % 1024) / 1024.0;
    }
    return x;
}

template <class T> std::vector<T> noise(std::size_t n, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<T> y(n);
    for (T& v : y) v = static_cast<T>(static_cast<int>(random() % 20001) - 10000) / T(1000);
    return y;
}

}  // namespace fit_test
