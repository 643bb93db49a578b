// The arguments of complex functions that are measured, as sets that several rows of
// reference.def name. Included by reference.h.

// Components x, y of z and u, v of w.
inline Interval plane(Range x, Range y, std::string_view words = {}) {
    return {.a = x, .a_im = y, .words = words};
}
inline Interval square(double low, double high) { return plane({low, high}, {low, high}); }
inline Interval planes(Range x, Range y, Range u, Range v, std::string_view words = {}) {
    return {.a = x, .b = u, .a_im = y, .b_im = v, .words = words};
}
inline Interval squares(double low, double high) {
    const Range side = {low, high};
    return planes(side, side, side, side);
}
inline std::vector<Interval> joined(std::vector<Interval> x, const std::vector<Interval>& y) {
    x.insert(x.end(), y.begin(), y.end());
    return x;
}
// With the parts exchanged; rules are symmetric.
inline std::vector<Interval> exchanged(std::vector<Interval> intervals) {
    for (Interval& z : intervals)
        if (!z.a_im.by) std::swap(z.a, z.a_im);
    return intervals;
}

// The last component next to an expression in those before.
#define KEF_BY(expression)                                              \
    Range {                                                             \
        -INFINITY, INFINITY, 0, [](const double* z) -> double {         \
            [[maybe_unused]] const double x = z[0], y = z[1], u = z[2]; \
            return expression;                                          \
        }                                                               \
    }

// A part of the product or of the quotient nearly cancels.
inline std::vector<Interval> cancelling() {
    const Range side = {-10, 10}, axis = {-1e-10, 1e-10};
    return {planes(side, side, side, KEF_BY(u * x / y), "v near ux/y"),
            planes(side, side, side, KEF_BY(-u * x / y), "v near -ux/y"),
            planes(side, side, side, KEF_BY(u * y / x), "v near uy/x"),
            planes(side, side, side, KEF_BY(-u * y / x), "v near -uy/x"),
            planes(side, axis, side, axis),
            planes(side, axis, axis, side)};
}

// Around the origin, the axes, the circle |z| = 1, the lines |x| = |y| and the points +-1, +-i.
inline std::vector<Interval> special_places() {
    const Range side = {-10, 10}, tiny = {-1e-10, 1e-10}, small = {-1e-3, 1e-3}, far = {1, 1e5};
    const Range circle = KEF_BY(std::sqrt((1 - x) * (1 + x)));
    const Range one = {0.999, 1.001}, minus_one = {-1.001, -0.999};
    return {square(-1e-3, 1e-3),
            plane(side, tiny),
            plane(tiny, side),
            plane({-1, 1}, circle, "|z| near 1"),
            plane({0.99999, 1}, circle, "|z| near 1, z near 1"),
            plane({1 - 1e-10, 1}, circle, "|z| near 1, z very near 1"),
            plane(side, KEF_BY(x), "y near x"),
            plane(one, small),
            plane(minus_one, small),
            plane(small, one),
            plane(small, minus_one),
            plane(one, KEF_BY(x - 1), "y near x - 1"),
            plane(far, tiny),
            plane({-1e5, -1}, tiny),
            plane(tiny, far)};
}
// Parts at the ends of the range, whose squares leave it, and of very different size.
inline std::vector<Interval> borders(double smallest, double largest) {
    const double root = std::sqrt(largest);
    return {square(0, smallest),
            square(largest / 8, largest),
            square(root / 1e3, root * 1e3),
            square(1e-3 / root, 1e6 / root),
            plane({smallest, 1e6 * smallest}, {1, 1e20}),
            plane({1, 1e20}, {smallest, 1e6 * smallest})};
}

// e^z and its like: x is the size of the result, y its angle.
inline constexpr long double right_angle = M_PI_2q;
inline std::vector<Interval> angles() {
    const Range size = {-10, 10}, tiny = {-1e-10, 1e-10}, small = {-1e-3, 1e-3};
    return {square(-1e-3, 1e-3),
            plane({-1, 1}, small),
            plane(small, size),
            plane(tiny, size),
            plane(size, {-1e5, 1e5, right_angle}),
            plane(tiny, {-1e5, 1e5, right_angle}),
            plane({-40, 40}, {-1e5, 1e5}),
            plane(size, {-1e15, 1e15, right_angle}),
            plane({-3, 3}, KEF_BY(x), "y near x")};
}
// Where e^x leaves the range.
inline std::vector<Interval> sizes(double smallest, double underflow, double overflow) {
    const Range angle = {-10, 10};
    return {plane({smallest - 1, overflow + 36}, angle),
            plane({overflow - 1, overflow + 2}, angle),
            plane({-overflow - 2, -overflow + 1}, angle),
            plane({smallest - 1, underflow + 1}, angle),
            plane({overflow - 2, overflow + 36}, {-1e5, 1e5, right_angle}),
            plane({-overflow - 36, -overflow + 2}, {-1e5, 1e5, right_angle}),
            plane(angle, {-1e22, 1e22})};
}

// a^b with |b ln a| up to some hundreds, and where the size of the result leaves the range.
inline std::vector<Interval> powers() {
    const Range side = {-10, 10}, tiny = {-1e-10, 1e-10}, small = {-1e-3, 1e-3}, far = {-100, 100};
    return {planes(side, side, small, small),
            planes(side, tiny, side, side),
            planes(tiny, side, side, tiny),
            planes(side, side, side, tiny),
            planes(side, side, tiny, side),
            planes({0.9, 1.1}, {-0.1, 0.1}, far, far),
            planes({0.999, 1.001}, small, {-1e5, 1e5}, {-1e5, 1e5})};
}
