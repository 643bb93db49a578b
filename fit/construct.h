// The frame of all constructors: checks, the mesh, one function after another in
// double precision, and the cells of a Hermite spline.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fit/conditions.h"
#include "fit/partition_check.h"
#include "fit/task.h"
#include "service/alloc.h"
#include "vm/simd/simd.h"

namespace kef::fit {

using vm::d2;

// Applies f(i, V) to i = 0 .. n-1, V = d2 for two indices at once or double for the
// last; the formula is written once over V, with load_as<V>.
template <class F> inline void each(std::size_t n, F f) {
    std::size_t i = 0;
    for (; i + 2 <= n; i += 2) f(i, d2{});
    if (i < n) f(i, 0.0);
}
template <class V> inline V load_as(const double* p);
template <> inline d2 load_as<d2>(const double* p) { return vm::load(p); }
template <> inline double load_as<double>(const double* p) { return *p; }
inline void store_as(double* p, d2 v) { vm::store(p, v); }
inline void store_as(double* p, double v) { *p = v; }

// What a constructor asks of its task.
struct Requirements {
    std::int64_t min_nx;
    std::int64_t order;   // 0: the caller knows
    std::uint32_t types;  // bit set of spline types; not looked at with order 0
    BoundarySet boundaries;
};

// The checks of every constructor, in their order.
template <class T>
std::int32_t check_task(const Task* task, std::int64_t method, const Requirements& need) {
    if (task == nullptr) return DF_STATUS_NULL_TASK;
    if (method != 0) return DF_STATUS_METHOD;
    if (task->nx < need.min_nx) return DF_STATUS_NX;
    if (!is_storage_hint(task->y_hint)) return DF_STATUS_Y_HINT;
    if (need.order != 0) {
        if (task->order != need.order) return DF_STATUS_ORDER;
        if (task->type > DF_TYPE_AKIMA || !(need.types >> task->type & 1)) return DF_STATUS_TYPE;
    }
    const int row = find_boundary(task->bc_type, need.boundaries);
    if (row < 0) return DF_STATUS_BOUNDARY_TYPE;
    const bool common_value = task->bc_type == DF_PERIODIC &&
                              (task->type == DF_TYPE_DEFAULT || task->type == DF_TYPE_HERMITE);
    if ((boundary_types[row].values > 0 || common_value) && task->bc == nullptr)
        return DF_STATUS_BOUNDARY_CONDITIONS;
    return DF_STATUS_OK;
}

inline bool has_rows(const void* const* rows, std::uint32_t slots, std::int64_t count) {
    return rows != nullptr && slots >= count &&
           std::find(rows, rows + count, nullptr) == rows + count;
}

// Where values and coefficients are: of every constructor after its own checks, and
// with `values` false of interpolation and integration.
template <class T> std::int32_t check_arrays(const Task& task, bool values) {
    if (!is_storage_hint(task.coefficient_hint)) return DF_STATUS_COEFFICIENT_HINT;
    if (task.ny <= 0) return DF_STATUS_NY;
    if (values && !has_rows(task.y_rows, task.y_slots, task.y_hint == DF_BY_COLUMNS ? 1 : +task.ny))
        return DF_STATUS_Y;
    if (!has_rows(task.coefficient_rows, task.coefficient_slots,
                  task.coefficient_hint == DF_BY_COLUMNS ? 1 : +task.ny))
        return DF_STATUS_COEFFICIENTS;
    return partition_is_accepted<T>(task) ? DF_STATUS_OK : DF_STATUS_X;
}

// The coefficients of one function: cell i at first + i * stride.
template <class T> struct Coefficients {
    T* first;
    std::size_t stride;

    Coefficients(const Task& task, std::size_t function, std::size_t order) {
        const bool columns = task.coefficient_hint == DF_BY_COLUMNS;
        const void* row = task.coefficient_rows[columns ? 0 : function];
        first = static_cast<T*>(const_cast<void*>(row)) + (columns ? function * order : 0);
        stride = columns ? static_cast<std::size_t>(task.ny) * order : order;
    }
};

// How many arrays a method takes: lasting ones, which are read while cells are
// written; transient ones, which are not; and `nodal` (at most one), n numbers that are
// read at i and i + 1 when cell i is written, in ascending order.
struct ArrayCount {
    std::size_t lasting = 0, transient = 0, nodal = 0;
    ArrayCount operator+(ArrayCount other) const {
        return {lasting + other.lasting, transient + other.transient, nodal + other.nodal};
    }
};

// The arrays of a construction: one allocation, and where it can be the room where the
// coefficients will stand: its end for the nodal array, of which a cubic's cells
// overwrite only what has been read, and what fits before that for transient ones.
// Fresh memory costs more than the arithmetic on it when the arrays are long.
class Scratch {
public:
    // For n breakpoints and the padding; `lent` are lent_size >= 4(n - 1) numbers, or 0.
    Scratch(ArrayCount arrays, std::size_t n, std::size_t padding, double* lent,
            std::size_t lent_size)
        : length_((n + padding + 3) & ~std::size_t(1)), lent_(lent) {
        std::size_t own = arrays.lasting;
        if (arrays.nodal != 0 && lent_size >= n) {
            lent_size -= n;
            nodal_ = lent + lent_size;
        } else {
            own += arrays.nodal;
        }
        lent_left_ = lent_size / length_;
        own += arrays.transient - std::min(arrays.transient, lent_left_);
        block_ = static_cast<double*>(allocate_aligned(own * length_ * sizeof(double)));
        next_ = block_;
    }
    ~Scratch() { free_aligned(block_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool failed() const { return block_ == nullptr; }
    double* take() { return step(next_); }
    double* take_nodal() { return nodal_ != nullptr ? nodal_ : take(); }
    double* take_transient() {
        if (lent_left_ == 0) return take();
        --lent_left_;
        return step(lent_);
    }

private:
    double* step(double*& next) const {
        double* array = next;
        next += length_;
        return array;
    }
    std::size_t length_;
    double* block_;
    double* next_;
    double* lent_;
    double* nodal_ = nullptr;
    std::size_t lent_left_;
};

// Distances of the breakpoints, h[0 .. n-2].
struct Mesh {
    std::size_t n;
    const double* h;
    bool uniform;
};

template <bool uniform, class T> Mesh make_mesh(const T* x, std::size_t n, double* h) {
    if constexpr (uniform) {
        std::fill_n(h, n - 1, (double(x[n - 1]) - double(x[0])) / double(n - 1));
    } else if constexpr (std::is_same_v<T, double>) {
        each(n - 1, [&]<class V>(std::size_t i, V) {
            store_as(h + i, load_as<V>(x + i + 1) - load_as<V>(x + i));
        });
    } else {
        for (std::size_t i = 0; i + 1 < n; ++i) h[i] = double(x[i + 1]) - double(x[i]);
    }
    return {n, h, uniform};
}

// The values of a function as doubles in a row: the caller's own where they are
// that already.
template <bool columns, class T>
const double* values_of(const Task& task, std::size_t function, double* buffer) {
    const std::size_t n = static_cast<std::size_t>(task.nx);
    const T* y =
        static_cast<const T*>(task.y_rows[columns ? 0 : function]) + (columns ? function : 0);
    const std::size_t stride = columns ? static_cast<std::size_t>(task.ny) : 1;
    if constexpr (std::is_same_v<T, double> && !columns) return y;
    for (std::size_t j = 0; j < n; ++j) buffer[j] = y[j * stride];
    return buffer;
}

// Divided differences d[0 .. n-2].
inline void divide_differences(const Mesh& mesh, const double* y, double* d) {
    each(mesh.n - 1, [&]<class V>(std::size_t i, V) {
        store_as(d + i, (load_as<V>(y + i + 1) - load_as<V>(y + i)) / load_as<V>(mesh.h + i));
    });
}

// Room on both sides of the divided differences, for methods that extend them.
inline constexpr std::size_t padding = 2;

// Prepares the mesh once, then each function's values and divided differences.
//   method.arrays()          how many arrays of n (and the padding) it takes
//   method.prepare(mesh, scratch)
//   method.fit(mesh, y, d, coefficients)   d may be written, with its padding
template <class T, bool uniform, bool columns, class Method>
std::int32_t construct(const Task& task, std::size_t order, Method method) {
    const auto n = static_cast<std::size_t>(task.nx);
    constexpr bool copies = columns || !std::is_same_v<T, double>;
    double* lent = nullptr;
    std::size_t lent_size = 0;
    if constexpr (std::is_same_v<T, double>) {
        lent = Coefficients<T>(task, 0, order).first;
        lent_size = task.ny == 1 ? order * (n - 1) : 0;
    }
    const ArrayCount arrays = ArrayCount{.lasting = copies ? 3 : 2} + method.arrays();
    Scratch scratch(arrays, n, 2 * padding, lent, lent_size);
    if (scratch.failed()) return DF_STATUS_NO_MEMORY;
    const Mesh mesh = make_mesh<uniform>(static_cast<const T*>(task.x), n, scratch.take());
    double* d = scratch.take() + padding;
    double* buffer = copies ? scratch.take() : nullptr;
    method.prepare(mesh, scratch);
    for (std::size_t i = 0; i < static_cast<std::size_t>(task.ny); ++i) {
        const double* y = values_of<columns, T>(task, i, buffer);
        divide_differences(mesh, y, d);
        method.fit(mesh, y, d, Coefficients<T>(task, i, order));
    }
    return DF_STATUS_OK;
}

// The variant for the task's hints.
template <class T, class Method>
std::int32_t construct(const Task& task, std::size_t order, const Method& method) {
    const bool uniform = (task.x_hint & DF_UNIFORM) != 0, columns = task.y_hint == DF_BY_COLUMNS;
    if (uniform)
        return columns ? construct<T, true, true>(task, order, method)
                       : construct<T, true, false>(task, order, method);
    return columns ? construct<T, false, true>(task, order, method)
                   : construct<T, false, false>(task, order, method);
}

template <class T> Boundary boundary_of(const Task& task, BoundarySet set) {
    const auto* bc = static_cast<const T*>(task.bc);
    return {boundary_types[find_boundary(task.bc_type, set)], [&](int i) { return double(bc[i]); }};
}

// Writes the four coefficients of one cell or of two neighbouring ones.
inline void store_cells(double* c, std::size_t stride, d2 c0, d2 c1, d2 c2, d2 c3) {
    vm::store(c, __builtin_shufflevector(c0, c1, 0, 2));
    vm::store(c + 2, __builtin_shufflevector(c2, c3, 0, 2));
    vm::store(c + stride, __builtin_shufflevector(c0, c1, 1, 3));
    vm::store(c + stride + 2, __builtin_shufflevector(c2, c3, 1, 3));
}
inline void store_cells(float* c, std::size_t stride, d2 c0, d2 c1, d2 c2, d2 c3) {
    vm::store(c, vm::narrow(__builtin_shufflevector(c0, c1, 0, 2),
                            __builtin_shufflevector(c2, c3, 0, 2)));
    vm::store(c + stride, vm::narrow(__builtin_shufflevector(c0, c1, 1, 3),
                                     __builtin_shufflevector(c2, c3, 1, 3)));
}
template <class T>
inline void store_cells(T* c, std::size_t, double c0, double c1, double c2, double c3) {
    c[0] = static_cast<T>(c0), c[1] = static_cast<T>(c1);
    c[2] = static_cast<T>(c2), c[3] = static_cast<T>(c3);
}

// Cells of the Hermite cubic with the slopes s: with a = s_i - d_i, b = s_{i+1} - d_i
//   c0 = y_i, c1 = s_i, c2 = -(2a + b)/h, c3 = (a + b)/h^2.
template <class T>
void store_hermite(const Mesh& mesh, const double* y, const double* d, const double* s,
                   const Coefficients<T>& c) {
    each(mesh.n - 1, [&]<class V>(std::size_t i, V) {
        const V h = load_as<V>(mesh.h + i), di = load_as<V>(d + i), si = load_as<V>(s + i);
        const V a = si - di, b = load_as<V>(s + i + 1) - di;
        store_cells(c.first + i * c.stride, c.stride, load_as<V>(y + i), si, -(2.0 * a + b) / h,
                    (a + b) / h / h);
    });
}

// A method that gives slopes, s = slopes(mesh, d), as a method of the frame.
template <class Slopes> struct HermiteMethod {
    Slopes slopes;
    double* s = nullptr;

    ArrayCount arrays() const { return ArrayCount{.nodal = 1} + slopes.arrays(); }
    void prepare(const Mesh& mesh, Scratch& scratch) {
        s = scratch.take_nodal();
        slopes.prepare(mesh, scratch);
    }
    template <class T>
    void fit(const Mesh& mesh, const double* y, double* d, const Coefficients<T>& c) {
        slopes.find(mesh, d, s);
        store_hermite(mesh, y, d, s, c);
    }
};

// The two exported functions of a constructor.
#define KEF_DF_CONSTRUCTOR(name)                                             \
    int32_t kef_df_kernel_d##name(const kef_df_task* task, int64_t method) { \
        return kef::fit::construct_entry<double>(task, method);              \
    }                                                                        \
    int32_t kef_df_kernel_s##name(const kef_df_task* task, int64_t method) { \
        return kef::fit::construct_entry<float>(task, method);               \
    }

}  // namespace kef::fit
