// The mesh of a construction: distances of the breakpoints, divided differences of a
// function's values, and the ends as the boundary conditions see them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "fit/conditions.h"
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

// Distances h[0 .. n-2].
struct Mesh {
    std::size_t n;
    const double* h;
    bool uniform;
};

// The distance of n points at equal distances; the range may be infinite.
inline double equal_distance(double first, double last, std::size_t n) {
    const double range = last - first, cells = static_cast<double>(n - 1);
    return std::isfinite(range) ? range / cells : last / cells - first / cells;
}

template <class T> Mesh make_mesh(const T* x, std::size_t n, bool uniform, double* h) {
    if (uniform) {
        std::fill_n(h, n - 1, equal_distance(x[0], x[n - 1], n));
    } else if constexpr (std::is_same_v<T, double>) {
        each(n - 1, [&]<class V>(std::size_t i, V) {
            store_as(h + i, load_as<V>(x + i + 1) - load_as<V>(x + i));
        });
    } else {
        for (std::size_t i = 0; i + 1 < n; ++i) h[i] = double(x[i + 1]) - double(x[i]);
    }
    return {n, h, uniform};
}

// Divided differences d[0 .. n-2].
inline void divide_differences(const Mesh& mesh, const double* y, double* d) {
    each(mesh.n - 1, [&]<class V>(std::size_t i, V) {
        store_as(d + i, (load_as<V>(y + i + 1) - load_as<V>(y + i)) / load_as<V>(mesh.h + i));
    });
}

// Second divided differences q[1 .. n-2], q[i] of x_{i-1}, x_i, x_{i+1}.
inline void divide_second_differences(const Mesh& mesh, const double* d, double* q) {
    each(mesh.n - 2, [&]<class V>(std::size_t i, V) {
        store_as(q + i + 1, (load_as<V>(d + i + 1) - load_as<V>(d + i)) /
                                (load_as<V>(mesh.h + i) + load_as<V>(mesh.h + i + 1)));
    });
}

// The ends, with numbers s at the breakpoints; 0 stands for what two points do not have.
inline EndView left_end(const Mesh& mesh, const double* d, const double* s) {
    EndView end = {.h0 = mesh.h[0], .d0 = d[0], .s1 = s[1], .side = -1};
    if (mesh.n > 2) end.h1 = mesh.h[1], end.d1 = d[1], end.s2 = s[2];
    return end;
}
inline EndView right_end(const Mesh& mesh, const double* d, const double* s) {
    const std::size_t n = mesh.n;
    EndView end = {.h0 = mesh.h[n - 2], .d0 = d[n - 2], .s1 = s[n - 2], .side = +1};
    if (n > 2) end.h1 = mesh.h[n - 3], end.d1 = d[n - 3], end.s2 = s[n - 3];
    return end;
}

}  // namespace kef::fit
