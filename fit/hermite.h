// Cells of cubics, and methods that decide on the slopes at the breakpoints alone.
#pragma once

#include "fit/construct.h"

namespace kef::fit {

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

// A method that gives slopes, slopes.find(mesh, d, s), as a method of the frame.
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

}  // namespace kef::fit
