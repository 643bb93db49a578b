// Default cubic: the caller gives the inner first derivatives (a Hermite cubic) or
// the inner second derivatives m_i. With these, and the end ones from the boundary
// conditions, cell by cell:
//   c0 = y_i, c1 = d_i - h_i (2m_i + m_{i+1})/6, c2 = m_i/2, c3 = (m_{i+1} - m_i)/(6h_i);
// the slopes of neighbouring cells agree where the data agree with the m_i.
#include "fit/given_derivatives.h"

namespace kef::fit {

namespace {

// The end second derivative; the view holds the second derivatives m.
double end_second(End condition, double value, const EndView& e, bool three) {
    const double m1 = e.s1, m2 = e.s2;
    switch (condition) {
        case End::second: return value;
        case End::first: return (e.side * 6 * (value - e.d0) / e.h0 - m1) / 2;
        default: return three ? m1 : m1 - e.h0 / e.h1 * (m2 - m1);  // equal third derivatives
    }
}

template <class T> struct SecondDerivatives {
    const T* ic;
    Boundary boundary;
    double* m = nullptr;

    ArrayCount arrays() const { return {.nodal = 1}; }
    void prepare(const Mesh& mesh, Scratch& scratch) {
        m = scratch.take_nodal();
        for (std::size_t i = 1; i + 1 < mesh.n; ++i) m[i] = ic[i - 1];
    }
    void fit(const Mesh& mesh, const double* y, const double* d, const Coefficients<T>& c) {
        const std::size_t n = mesh.n;
        const EndView left = left_end(mesh, d, m), right = right_end(mesh, d, m);
        m[0] = end_second(boundary.left, boundary.left_value, left, n == 3);
        m[n - 1] = end_second(boundary.right, boundary.right_value, right, n == 3);
        each(n - 1, [&]<class V>(std::size_t i, V) {
            const V hi = load_as<V>(mesh.h + i), a = load_as<V>(m + i), b = load_as<V>(m + i + 1);
            store_cells(c.first + i * c.stride, c.stride, load_as<V>(y + i),
                        load_as<V>(d + i) - hi * (2.0 * a + b) / 6.0, a * 0.5,
                        (b - a) / (6.0 * hi));
        });
    }
};

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {2, DF_CUBIC, 1u << DF_TYPE_DEFAULT, two_sided};
    constexpr std::uint32_t either = 1u << DF_INTERNAL_FIRST | 1u << DF_INTERNAL_SECOND;
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    if (const std::int32_t status = check_internal(*task, either)) return status;
    // One cell has no inner derivative: the two kinds are one.
    if (task->ic_type == DF_INTERNAL_FIRST || (task->nx == 2 && task->bc_type != DF_PERIODIC))
        return construct_hermite<T>(*task);
    const SecondDerivatives<T> method2 = {static_cast<const T*>(task->ic),
                                          boundary_with_common_value<T>(*task, End::second)};
    return construct<T>(*task, DF_CUBIC, method2);
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFDefaultCubicSpline1D)
