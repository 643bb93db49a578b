// Twice differentiable cubic. The slopes s_i satisfy, for i = 1 .. n-2,
//
//   h_i s_{i-1} + 2(h_{i-1} + h_i) s_i + h_{i-1} s_{i+1} = 3(h_i d_{i-1} + h_{i-1} d_i)
//
// and at the ends: a given slope; a given second derivative v,
// 2s_0 + s_1 = 3d_0 - v h_0/2; not-a-knot, whose row together with row 1 gives
// h_1 s_0 + (h_0 + h_1) s_1 = known; or the row at i = 0 around the period.
//
// The system is solved for the deviation from the slopes p_i of local cubics through
// four points each. So data of a cubic come back exactly wherever their divided
// differences are exact, and in general the elimination works on small numbers: its
// rounding errors are relative to how far the data are from a cubic.
//
// Elimination needs no pivoting: inner rows are strictly dominant, and after the
// not-a-knot row the pivot of row 1 is h_0 + h_1 > 0. The factors depend on x alone.
#include "fit/hermite.h"
#include "fit/tridiagonal.h"

namespace kef::fit {

namespace {

struct SlopeRows {
    const double* h;
    std::size_t n;

    Row<d2> pair(std::size_t i) const {
        const d2 outer = both_ends(h, i, n - 2 - i), inner = both_ends(h, i - 1, n - 1 - i);
        return {outer, 2.0 * (inner + outer), inner};
    }
    Row<double> single(std::size_t i) const { return {h[i], 2 * (h[i - 1] + h[i]), h[i - 1]}; }
};

struct SmoothSlopes {
    Boundary boundary;
    TwoEnded<SlopeRows> system{};
    Period period{};
    double* r = nullptr;
    bool parabola = false;  // three points and not-a-knot: the rows coincide

    bool periodic() const { return boundary.left == End::periodic; }
    ArrayCount arrays() const {
        const ArrayCount always = ArrayCount{.transient = 1} + TwoEnded<SlopeRows>::arrays;
        return periodic() ? always + Period::arrays : always;
    }
    void prepare(const Mesh& mesh, Scratch& scratch) {
        parabola = boundary.left == End::not_a_knot && mesh.n == 3;
        if (!parabola) factor(mesh, scratch);
        r = scratch.take_transient();
        if (periodic()) period.prepare(system, around(mesh), mesh.n, scratch);
    }

    void find(const Mesh& mesh, double* d, double* s) const {
        local_slopes(mesh, d, s);
        if (parabola) return;
        const std::size_t n = mesh.n;
        const double* h = mesh.h;
        // Right-hand sides for the deviation; a difference of a slope and a divided
        // difference is exact where the data are smooth.
        each(n - 2, [&]<class V>(std::size_t i, V) {
            const V d0 = load_as<V>(d + i), d1 = load_as<V>(d + i + 1), si = load_as<V>(s + i + 1);
            const V left = (d0 - load_as<V>(s + i)) + 2.0 * (d0 - si);
            const V right = 2.0 * (d1 - si) + (d1 - load_as<V>(s + i + 2));
            store_as(r + i + 1, load_as<V>(h + i + 1) * left + load_as<V>(h + i) * right);
        });
        const EndView left = left_end(mesh, d, s), right = right_end(mesh, d, s);
        const d2 z0 = {end_constant(boundary.left, boundary.left_value, left, s[0]),
                       end_constant(boundary.right, boundary.right_value, right, s[n - 1])};
        system.solve(z0, r);
        if (periodic()) period.close(known_around(mesh, d, s), r);
        each(n, [&]<class V>(std::size_t i, V) {
            store_as(s + i, load_as<V>(s + i) + load_as<V>(r + i));
        });
    }

private:
    void factor(const Mesh& mesh, Scratch& scratch) {
        const double* h = mesh.h;
        const std::size_t n = mesh.n;
        const d2 g0 = {end_factor(boundary.left, h[0], h[1]),
                       end_factor(boundary.right, h[n - 2], h[n - 3])};
        system.factor({h, n}, n, g0, mesh.uniform, scratch);
    }

    // The end row as deviation_0 = z - g deviation_1.
    static double end_factor(End condition, double h0, double h1) {
        switch (condition) {
            case End::second: return 0.5;
            case End::not_a_knot: return (h0 + h1) / h1;
            default: return 0;
        }
    }
    // The local cubic at the end satisfies the not-a-knot row.
    static double end_constant(End condition, double value, const EndView& e, double s0) {
        switch (condition) {
            case End::second: return slope_of_second(e, value) - s0;
            default: return 0;
        }
    }

    // Slopes of the cubics through x_{i-1} .. x_{i+2}, at the ends through the first
    // and the last four points: with q_i the second and t_i the third divided
    // difference from x_{i-1} on, p_i = d_{i-1} + h_{i-1}(q_i - h_i t_i).
    void local_slopes(const Mesh& mesh, const double* d, double* s) const {
        const std::size_t n = mesh.n;
        const double* h = mesh.h;
        double* q = r;  // q[i] belongs to x_i
        divide_second_differences(mesh, d, q);
        const auto third = [&](std::size_t i) {
            return n == 3 ? 0.0 : (q[i + 1] - q[i]) / (h[i - 1] + h[i] + h[i + 1]);
        };
        each(n - 3, [&]<class V>(std::size_t i, V) {
            const V h0 = load_as<V>(h + i), h1 = load_as<V>(h + i + 1), q0 = load_as<V>(q + i + 1);
            const V t = (load_as<V>(q + i + 2) - q0) / (h0 + h1 + load_as<V>(h + i + 2));
            store_as(s + i + 1, load_as<V>(d + i) + h0 * (q0 - h1 * t));
        });
        const double t_left = third(1), t_right = third(n - 3);
        s[n - 2] = d[n - 3] + h[n - 3] * (q[n - 2] - h[n - 2] * t_right);
        s[0] = d[0] - h[0] * (q[1] - (h[0] + h[1]) * t_left);
        s[n - 1] = d[n - 2] + h[n - 2] * (q[n - 2] + (h[n - 3] + h[n - 2]) * t_right);
        if (boundary.left == End::first) s[0] = boundary.left_value;
        if (boundary.right == End::first) s[n - 1] = boundary.right_value;
        if (periodic()) s[0] = s[n - 1] = (h[0] * d[n - 2] + h[n - 2] * d[0]) / (h[n - 2] + h[0]);
    }

    // Row 0, with x_{-1} one period before x_{n-2}; and its right-hand side.
    static Row<double> around(const Mesh& mesh) {
        const double before = mesh.h[mesh.n - 2], after = mesh.h[0];
        return {after, 2 * (before + after), before};
    }
    static double known_around(const Mesh& mesh, const double* d, const double* s) {
        const std::size_t n = mesh.n;
        const double before = mesh.h[n - 2], after = mesh.h[0], d0 = d[n - 2], d1 = d[0];
        return after * ((d0 - s[n - 2]) + 2 * (d0 - s[0])) +
               before * (2 * (d1 - s[0]) + (d1 - s[1]));
    }
};

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {3, 0, 0, two_sided};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    return construct<T>(*task, DF_CUBIC,
                        HermiteMethod<SmoothSlopes>{{boundary_of<T>(*task, two_sided)}});
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFNaturalCubicSpline1D)
