// Quadratic splines.
//
// Knots at the breakpoints (type DEFAULT): c0 = y_i, c1 = s_i, c2 = (d_i - s_i)/h_i with
// s_{i+1} = 2d_i - s_i. One slope is free; a boundary condition sets it, or it makes
// the sum of the squared jumps of c2 least. An error in it goes through all cells
// with alternating sign.
//
// Knots between the breakpoints (type SUBBOTIN; Subbotin 1967; Marsden 1974, Bull. AMS 80,
// p. 903): a cell around each breakpoint, the knot of gap i at z_i. With
// p_i = (z_i - x_i)^2/h_i and r_i = (x_{i+1} - z_i)^2/h_i (at midpoints both h_i/4) the
// leading coefficients q_i satisfy
//
//   p_{i-1} q_{i-1} + ((h_{i-1} - p_{i-1}) + (h_i - r_i)) q_i + r_i q_{i+1} = d_i - d_{i-1}
//
// and the slopes at the breakpoints are g_i = d_i - (h_i - r_i) q_i - r_i q_{i+1}. The
// matrix is totally positive, so elimination needs no pivoting. It is solved for the
// deviation from second divided differences: data of a parabola come back exactly
// wherever those are exact.
#include "fit/construct.h"
#include "fit/knots.h"
#include "fit/tridiagonal.h"

namespace kef::fit {

namespace {

template <class T> void store_cell(T* cell, double c0, double c1, double c2) {
    cell[0] = static_cast<T>(c0), cell[1] = static_cast<T>(c1), cell[2] = static_cast<T>(c2);
}

struct AtBreakpoints {
    std::int64_t type;
    Boundary boundary;
    double* s = nullptr;

    ArrayCount arrays() const { return {.lasting = 1}; }
    void prepare(const Mesh&, Scratch& scratch) { s = scratch.take(); }

    template <class T>
    void fit(const Mesh& mesh, const double* y, const double* d, const Coefficients<T>& c) {
        find_slopes(mesh, d);
        T* cell = c.first;
        for (std::size_t i = 0; i + 1 < mesh.n; ++i, cell += c.stride)
            store_cell(cell, y[i], s[i], (d[i] - s[i]) / mesh.h[i]);
    }

private:
    void run_from_left(const Mesh& mesh, const double* d, double first) {
        s[0] = first;
        for (std::size_t i = 0; i + 1 < mesh.n; ++i) s[i + 1] = 2 * d[i] - s[i];
    }

    // s_i = s_i(0) + (-1)^i sigma: the sigma of least jumps, from a start with equal
    // curvature in the first two cells. Distances in units of the first one keep the
    // squares finite.
    double least_jumps(const Mesh& mesh, const double* d) const {
        double above = 0, below = 0, sign = 1;
        for (std::size_t i = 0; i + 2 < mesh.n; ++i, sign = -sign) {
            const double weight = mesh.h[0] / mesh.h[i] + mesh.h[0] / mesh.h[i + 1];
            const double jump = (d[i + 1] - s[i + 1]) / mesh.h[i + 1] - (d[i] - s[i]) / mesh.h[i];
            above -= sign * jump * weight;
            below += weight * weight;
        }
        return mesh.h[0] * (above / below);
    }

    void find_slopes(const Mesh& mesh, const double* d) {
        const std::size_t n = mesh.n;
        const double* h = mesh.h;
        const double value = boundary.left == End::own ? boundary.right_value : boundary.left_value;
        switch (type) {
            case DF_LEFT_FIRST: return run_from_left(mesh, d, value);
            case DF_LEFT_SECOND: return run_from_left(mesh, d, d[0] - value * h[0] / 2);
            case DF_RIGHT_FIRST:
            case DF_RIGHT_SECOND:
                s[n - 1] = type == DF_RIGHT_FIRST ? value : d[n - 2] + value * h[n - 2] / 2;
                for (std::size_t i = n - 1; i > 0; --i) s[i - 1] = 2 * d[i - 1] - s[i];
                return;
            default:
                if (n == 2) return run_from_left(mesh, d, d[0]);
                run_from_left(mesh, d, d[0] - h[0] * (d[1] - d[0]) / (h[0] + h[1]));
                if (type == DF_NO_CONDITIONS) run_from_left(mesh, d, s[0] + least_jumps(mesh, d));
        }
    }
};

struct KnotRows {
    const double *h, *p, *r;
    std::size_t n;

    Row<d2> pair(std::size_t i) const {
        const std::size_t j = n - 1 - i;
        const d2 outer = {p[i - 1], r[j]}, inner = {r[i], p[j - 1]};
        return {outer, (both_ends(h, i - 1, j) - outer) + (both_ends(h, i, j - 1) - inner), inner};
    }
    Row<double> single(std::size_t i) const {
        return {p[i - 1], (h[i - 1] - p[i - 1]) + (h[i] - r[i]), r[i]};
    }
};

template <class T> struct BetweenBreakpoints {
    Boundary boundary;
    Knots<T> knots;
    TwoEnded<KnotRows> system{};
    Period period{};
    double *p = nullptr, *r = nullptr, *q = nullptr, *v = nullptr;

    ArrayCount arrays() const {
        const ArrayCount always =
            ArrayCount{.lasting = 3, .transient = 1} + TwoEnded<KnotRows>::arrays;
        return periodic() ? always + Period::arrays : always;
    }
    void prepare(const Mesh& mesh, Scratch& scratch) {
        const std::size_t n = mesh.n;
        const double* h = mesh.h;
        p = scratch.take(), r = scratch.take(), q = scratch.take();
        v = scratch.take_transient();
        // A midpoint is where it was rounded to; in double precision that is near enough.
        const bool midpoints =
            knots.given == nullptr && (mesh.uniform || sizeof(T) == sizeof(double));
        for (std::size_t i = 0; i + 1 < n; ++i) {
            const double z = knots.gap(i), before = z - knots.x[i], after = knots.x[i + 1] - z;
            p[i] = midpoints ? h[i] / 4 : before * before / h[i];
            r[i] = midpoints ? h[i] / 4 : after * after / h[i];
        }
        const d2 g0 = {end_factor(boundary.left, h[0], r[0]),
                       end_factor(boundary.right, h[n - 2], p[n - 2])};
        system.factor({h, p, r, n}, n, g0, midpoints && mesh.uniform, scratch);
        if (!periodic()) return;
        // Row 0, with x_{-1} one period before x_{n-2}.
        const double before = p[n - 2], after = r[0];
        period.prepare(system, {before, (h[n - 2] - before) + (h[0] - after), after}, n, scratch);
    }

    void fit(const Mesh& mesh, const double* y, const double* d, const Coefficients<T>& c) {
        find_curvatures(mesh, d);
        const std::size_t n = mesh.n;
        T* cell = c.first;
        for (std::size_t i = 0; i < n; ++i, cell += c.stride) {
            const double g =
                i + 1 < n ? d[i] - ((mesh.h[i] - r[i]) * q[i] + r[i] * q[i + 1])
                          : d[i - 1] + (p[i - 1] * q[i - 1] + (mesh.h[i - 1] - p[i - 1]) * q[i]);
            const double t = i == 0 ? 0 : double(knots.left(i)) - double(knots.x[i]);
            store_cell(cell, y[i] + t * (g + t * q[i]), g + 2 * t * q[i], q[i]);
        }
    }

private:
    bool periodic() const { return boundary.left == End::periodic; }

    // End rows: (h - w) q_0 + w q_1 = known for a slope, q_0 = q_1 for not-a-knot.
    static double end_factor(End condition, double h, double w) {
        switch (condition) {
            case End::first: return w / (h - w);
            case End::not_a_knot: return -1;
            default: return 0;
        }
    }
    // The constant of the deviation at an end whose guess is q0; the view holds the q.
    static double end_constant(End condition, double value, const EndView& e, double w, double q0) {
        switch (condition) {
            case End::first:
                return (e.side * (value - e.d0) - e.h0 * q0 - w * (e.s1 - q0)) / (e.h0 - w);
            case End::second: return value / 2 - q0;
            default: return 0;
        }
    }

    void find_curvatures(const Mesh& mesh, const double* d) {
        const std::size_t n = mesh.n;
        divide_second_differences(mesh, d, q);
        q[0] = q[1], q[n - 1] = q[n - 2];
        if (periodic()) q[0] = q[n - 1] = (d[0] - d[n - 2]) / (mesh.h[n - 2] + mesh.h[0]);
        // A row's coefficients sum up to h_{i-1} + h_i.
        each(n - 2, [&]<class V>(std::size_t i, V) {
            const V qi = load_as<V>(q + i + 1);
            store_as(v + i + 1, load_as<V>(p + i) * (qi - load_as<V>(q + i)) +
                                    load_as<V>(r + i + 1) * (qi - load_as<V>(q + i + 2)));
        });
        const EndView left = left_end(mesh, d, q), right = right_end(mesh, d, q);
        system.solve(
            d2{end_constant(boundary.left, boundary.left_value, left, r[0], q[0]),
               end_constant(boundary.right, boundary.right_value, right, p[n - 2], q[n - 1])},
            v);
        if (periodic()) period.close(p[n - 2] * (q[0] - q[n - 2]) + r[0] * (q[0] - q[1]), v);
        each(n, [&]<class V>(std::size_t i, V) {
            store_as(q + i, load_as<V>(q + i) + load_as<V>(v + i));
        });
    }
};

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr BoundarySet at = 1u << 0 | no_conditions | one_sided;  // bit 0: not-a-knot
    const bool between = task != nullptr && task->type == DF_TYPE_SUBBOTIN;
    const Requirements need = {between ? 3 : 2, DF_QUADRATIC,
                               1u << DF_TYPE_DEFAULT | 1u << DF_TYPE_SUBBOTIN,
                               between ? two_sided : at};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    if (between && task->ic_type != 0) {
        if (!(task->ic_type & DF_INTERNAL_KNOTS)) return DF_STATUS_INTERNAL_TYPE;
        if (task->ic == nullptr) return DF_STATUS_INTERNAL_CONDITIONS;
    }
    if (!between)
        return construct<T>(*task, DF_QUADRATIC,
                            AtBreakpoints{task->bc_type, boundary_of<T>(*task, at)});
    return construct<T>(*task, DF_QUADRATIC,
                        BetweenBreakpoints<T>{boundary_of<T>(*task, two_sided), Knots<T>(*task)});
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFQuadraticSpline1D)
