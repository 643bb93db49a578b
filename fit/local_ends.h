// End slopes of the cubics whose inner slopes come from their neighbourhood.
#pragma once

#include "fit/hermite.h"

namespace kef::fit {

// One end: `own` is the method's own slope there.
inline double end_slope(End condition, double value, const EndView& end, double own,
                        bool three_points) {
    switch (condition) {
        case End::first: return value;
        case End::second: return slope_of_second(end, value);
        case End::not_a_knot:
            return three_points ? slope_of_parabola(end) : slope_of_not_a_knot(end);
        case End::own:
        case End::periodic: break;
    }
    return own;
}

// Two points have one cell: the slopes that the conditions leave open are those of
// the chord; second derivatives at both ends are met together.
inline void two_point_slopes(const Boundary& boundary, const Mesh& mesh, const double* d,
                             double* s) {
    const double h = mesh.h[0], chord = d[0];
    const double v0 = boundary.left_value, v1 = boundary.right_value;
    const bool second0 = boundary.left == End::second, second1 = boundary.right == End::second;
    s[0] = boundary.left == End::first ? v0 : chord;
    s[1] = boundary.right == End::first ? v1 : chord;
    if (second0 && second1) {
        s[0] = chord - h * (2 * v0 + v1) / 6;
        s[1] = chord + h * (v0 + 2 * v1) / 6;
    } else if (second0) {
        s[0] = slope_of_second(left_end(mesh, d, s), v0);
    } else if (second1) {
        s[1] = slope_of_second(right_end(mesh, d, s), v1);
    }
}

// Sets s[0] and s[n-1], which hold the method's own slopes, by the conditions.
inline void set_end_slopes(const Boundary& boundary, const Mesh& mesh, const double* d, double* s) {
    const EndView left = left_end(mesh, d, s), right = right_end(mesh, d, s);
    double &first = s[0], &last = s[mesh.n - 1];
    first = end_slope(boundary.left, boundary.left_value, left, first, mesh.n == 3);
    last = end_slope(boundary.right, boundary.right_value, right, last, mesh.n == 3);
}

// The frame of such a method: inner(mesh, d, s) sets s[1 .. n-2] and its own ends.
template <class Inner> struct LocalSlopes {
    Inner inner;
    Boundary boundary;

    ArrayCount arrays() const { return {}; }
    void prepare(const Mesh&, Scratch&) {}
    void find(const Mesh& mesh, double* d, double* s) const {
        if (mesh.n == 2) return two_point_slopes(boundary, mesh, d, s);
        inner(mesh, d, s, boundary.left == End::periodic);
        set_end_slopes(boundary, mesh, d, s);
    }
};

}  // namespace kef::fit
