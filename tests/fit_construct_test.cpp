// Construction: each spline against its definition, solved in quadruple precision;
// data that come back exactly; storage; bad input.
#include "tests/fit_data.h"

namespace {

using namespace fit_test;

Quad magnitude(Quad v) { return v < 0 ? -v : v; }

// Solves a dense system by elimination with row pivoting.
std::vector<Quad> solve(std::vector<std::vector<Quad>> a) {
    const std::size_t n = a.size();
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t best = k;
        for (std::size_t i = k; i < n; ++i)
            if (magnitude(a[i][k]) > magnitude(a[best][k])) best = i;
        std::swap(a[k], a[best]);
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k || a[i][k] == 0) continue;
            const Quad f = a[i][k] / a[k][k];
            for (std::size_t j = k; j <= n; ++j) a[i][j] -= f * a[k][j];
        }
    }
    std::vector<Quad> v(n);
    for (std::size_t i = 0; i < n; ++i) v[i] = a[i][n] / a[i][i];
    return v;
}

// The coefficients of a smooth spline (natural, Subbotin) as the unknowns of its
// conditions: interpolation, continuity of derivatives up to order-2, both ends.
template <class T> class Definition {
public:
    explicit Definition(const Spline<T>& s) : s_(s), m_(s.order) {
        const std::size_t n = s.x.size(), cells = s.cells();
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t cell = std::min(i, cells - 1);
            equation(), add(cell, at(i) - left(cell), 0, 1), rows_.back().back() = s.y[i];
        }
        for (std::size_t i = 0; i + 1 < cells; ++i) {
            for (int r = 0; r <= m_ - 2; ++r) {
                if (r == 0 && cells < n) {  // a breakpoint: the value is known
                    equation(), add(i, left(i + 1) - left(i), 0, 1);
                    rows_.back().back() = s.y[i + 1];
                } else {
                    equation(), add(i, left(i + 1) - left(i), r, 1), add(i + 1, 0, r, -1);
                }
            }
        }
        const Quad end = at(n - 1) - left(cells - 1);
        const auto left_end = [&](int r, Quad v) {
            equation(), add(0, 0, r, 1), rows_.back().back() = v;
        };
        const auto right_end = [&](int r, Quad v) {
            equation(), add(cells - 1, end, r, 1), rows_.back().back() = v;
        };
        const Quad b0 = s.bc[0], b1 = s.bc[1];
        switch (s.bc_type) {
            case DF_NOT_A_KNOT:
                equation(), add(0, 0, m_ - 1, 1), add(1, 0, m_ - 1, -1);
                equation(), add(cells - 2, 0, m_ - 1, 1), add(cells - 1, 0, m_ - 1, -1);
                break;
            case DF_FREE_END: left_end(2, 0), right_end(2, 0); break;
            case DF_FIRST_FIRST: left_end(1, b0), right_end(1, b1); break;
            case DF_FIRST_SECOND: left_end(1, b0), right_end(2, b1); break;
            case DF_SECOND_FIRST: left_end(2, b0), right_end(1, b1); break;
            case DF_SECOND_SECOND: left_end(2, b0), right_end(2, b1); break;
            case DF_PERIODIC:
                for (int r : {1, 2}) equation(), add(0, 0, r, 1), add(cells - 1, end, r, -1);
                break;
        }
    }
    std::vector<Quad> coefficients() const { return solve(rows_); }

private:
    Quad at(std::size_t i) const { return s_.x[i]; }
    Quad left(std::size_t cell) const { return s_.left(cell); }
    void equation() { rows_.emplace_back(s_.cells() * m_ + 1, Quad(0)); }
    // factor times the derivative r of a cell's polynomial at distance t.
    void add(std::size_t cell, Quad t, int r, int factor) {
        Quad power = factor;
        for (int k = r; k < m_; ++k, power *= t) {
            int falling = 1;
            for (int i = 0; i < r; ++i) falling *= k - i;
            rows_.back()[cell * m_ + k] += falling * power;
        }
    }
    const Spline<T>& s_;
    int m_;
    std::vector<std::vector<Quad>> rows_;
};

// The largest error of the coefficients, each as its effect c_k width^k on the values,
// in units of the last place of the largest of these effects.
template <class T> double error_in_ulp(const Spline<T>& s, const std::vector<Quad>& expected) {
    const Quad ulp = std::numeric_limits<T>::epsilon();
    Quad scale = 0, worst = 0;
    for (std::size_t i = 0; i < s.cells(); ++i) {
        const Quad width = (i + 1 < s.cells() ? Quad(s.left(i + 1)) : Quad(s.x.back())) - s.left(i);
        Quad power = 1;
        for (int k = 0; k < s.order; ++k, power *= width) {
            const Quad right = expected[i * s.order + k];
            scale = std::max(scale, magnitude(right) * power);
            worst = std::max(worst, magnitude(s.cell(i)[k] - right) * power);
        }
    }
    return static_cast<double>(worst / (ulp * scale));
}

template <class T> void expect_definition(double bound) {
    double worst = 0;
    for (const Kind& kind : kinds()) {
        if (kind.type != DF_TYPE_NATURAL && kind.type != DF_TYPE_SUBBOTIN) continue;
        for (int64_t boundary : kind.boundaries) {
            for (int64_t internal : kind.internals) {
                for (std::size_t n = 3; n <= 13; ++n) {
                    // Three points leave no inner condition to not-a-knot: a parabola.
                    if (n == 3 && boundary == DF_NOT_A_KNOT) continue;
                    Spline<T> s;
                    s.x = uneven<T>(n, n), s.y = noise<T>(n, 3 * n + 1);
                    s.set_conditions(boundary, internal);
                    s.fit(kind);
                    const double error = error_in_ulp(s, Definition<T>(s).coefficients());
                    EXPECT_LT(error, bound)
                        << kind.name << ' ' << boundary << ' ' << internal << ' ' << n;
                    worst = std::max(worst, error);
                }
            }
        }
    }
    testing::Test::RecordProperty("worst_ulp", std::to_string(worst));
    std::printf("worst error of a coefficient's effect: %.2f ulp of the largest one\n", worst);
}

TEST(FitConstruct, SmoothSplinesMeetTheirDefinitionDouble) { expect_definition<double>(5); }
TEST(FitConstruct, SmoothSplinesMeetTheirDefinitionSingle) { expect_definition<float>(1); }

// Uniform breakpoints: the variants of their own, long enough for settled factors.
TEST(FitConstruct, UniformBreakpoints) {
    for (const Kind& kind : kinds()) {
        for (int64_t boundary : kind.boundaries) {
            Spline<double> general, uniform;
            for (Spline<double>* s : {&general, &uniform}) {
                s->x_hint = s == &uniform ? DF_UNIFORM : DF_NON_UNIFORM;
                for (int i = 0; i < 150; ++i) s->x.push_back(0.5 * i - 3);
                s->y = noise<double>(150, 9);
                s->set_conditions(boundary, kind.internals[0]);
                s->fit(kind);
            }
            for (std::size_t i = 0; i < general.c.size(); ++i) {
                ASSERT_NEAR(general.c[i], uniform.c[i], 2e-13)
                    << kind.name << ' ' << boundary << ' ' << i;
            }
        }
    }
}

double polynomial(const std::vector<double>& a, double x, int r = 0) {
    double sum = 0;
    for (int k = static_cast<int>(a.size()) - 1; k >= r; --k) {
        double falling = 1;
        for (int i = 0; i < r; ++i) falling *= k - i;
        sum = sum * x + a[k] * falling;
    }
    return sum;
}

// Polynomials that a spline holds come back in every bit: whole breakpoints with
// unequal distances, coefficients for which all quotients are exact.
template <class T> void expect_exact(const std::vector<T>& x) {
    const std::vector<std::vector<double>> data = {{3}, {1, -2}, {5, 1, 2}, {2, -1, 1, 3}};
    struct Case {
        const char* kind;
        int64_t boundary;
        int degree;
    };
    // The highest degree that kind and boundary conditions hold.
    const std::vector<Case> cases = {
        {"linear", 0, 1},    {"quadratic", 0, 2},  {"quadratic", 1, 2},  {"quadratic", 4, 2},
        {"quadratic", 8, 2}, {"quadratic", 16, 2}, {"quadratic", 32, 2}, {"Subbotin", 1, 2},
        {"Subbotin", 12, 2}, {"Subbotin", 24, 2},  {"Subbotin", 36, 2},  {"Subbotin", 48, 2},
        {"Subbotin", 2, 1},  {"natural", 1, 3},    {"natural", 12, 3},   {"natural", 24, 3},
        {"natural", 36, 3},  {"natural", 48, 3},   {"natural", 2, 1},    {"natural", 64, 0},
        {"Hermite", 12, 3},  {"Hermite", 1, 3},    {"Hermite", 48, 3},   {"Bessel", 0, 2},
        {"Bessel", 1, 2},    {"Bessel", 12, 2},    {"Bessel", 48, 2},    {"Bessel", 2, 1},
        {"Akima", 0, 1},     {"Akima", 1, 1},      {"Akima", 12, 1},     {"Akima", 48, 1},
        {"Akima", 64, 0},    {"default", 12, 3},   {"default", 48, 3},   {"default", 1, 3},
    };
    for (const Case& c : cases) {
        const Kind& kind = *std::find_if(kinds().begin(), kinds().end(),
                                         [&](const Kind& k) { return !strcmp(k.name, c.kind); });
        for (int64_t internal : kind.internals) {
            for (int degree = 0; degree <= c.degree; ++degree) {
                const std::vector<double>& a = data[degree];
                Spline<T> s;
                s.x = x;
                s.set_conditions(c.boundary, internal);
                for (T v : x) s.y.push_back(T(polynomial(a, v)));
                const auto end = [&](int64_t first, T v) {
                    return T(polynomial(a, v, c.boundary & first ? 1 : 2));
                };
                s.bc = {end(DF_LEFT_FIRST, x.front()), end(DF_RIGHT_FIRST, x.back())};
                if (c.boundary == DF_RIGHT_FIRST || c.boundary == DF_RIGHT_SECOND)
                    s.bc[0] = s.bc[1];
                if (internal == 1 || internal == 2)
                    for (std::size_t i = 1; i + 1 < x.size(); ++i)
                        s.ic[i - 1] = T(polynomial(a, x[i], internal));
                if (internal == DF_INTERNAL_KNOTS)
                    for (std::size_t i = 0; i + 1 < x.size(); ++i)
                        s.ic[i] = x[i] + (x[i + 1] - x[i]) / 4;
                s.fit(kind);
                for (std::size_t i = 0; i < s.cells(); ++i) {
                    double factorial = 1;
                    for (int k = 0; k < kind.order; ++k) {
                        const T expected = T(polynomial(a, s.left(i), k) / factorial);
                        ASSERT_EQ(expected, s.cell(i)[k])
                            << kind.name << " boundary " << c.boundary << " degree " << degree
                            << " cell " << i << " k " << k;
                        factorial *= k + 1;
                    }
                }
            }
        }
    }
}

TEST(FitConstruct, PolynomialsComeBackExactly) {
    expect_exact<double>({-4, -3, -1, 0, 4, 5, 7, 10, 11});
    expect_exact<double>({-2, 0, 4, 5});
    expect_exact<float>({-4, -3, -1, 0, 4, 5, 7, 10, 11});
}

// Akima 1970, first example. Differences 0 0 0 0 0 .5 4.5 35 10 25 and, going on
// linearly, 40 55: the slopes by hand.
TEST(FitConstruct, AkimaExample) {
    const std::vector<double> slope = {0,         0,          0,          0,          0,   0,
                                       17.5 / 31, 252.5 / 29, 830 / 45.5, 775.0 / 40, 32.5};
    Spline<double> s;
    for (int i = 0; i <= 10; ++i) s.x.push_back(i);
    s.y = {10, 10, 10, 10, 10, 10, 10.5, 15, 50, 60, 85};
    s.fit(kinds()[6]);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(s.y[i], s.cell(i)[0]);
        EXPECT_NEAR(slope[i], s.cell(i)[1], 1e-14 * 32);
        const double d = s.y[i + 1] - s.y[i];
        EXPECT_NEAR(3 * d - 2 * slope[i] - slope[i + 1], s.cell(i)[2], 1e-13);
        EXPECT_NEAR(slope[i] + slope[i + 1] - 2 * d, s.cell(i)[3], 1e-13);
    }
    // A corner between straight lines, inside and where the period closes: the middle slope.
    Spline<double> tent;
    tent.x = {0, 1, 2, 3, 4}, tent.y = {0, 1, 2, 1, 0};
    tent.bc_type = DF_PERIODIC;
    tent.fit(kinds()[6]);
    for (const auto& [cell, c2, c3] : {std::tuple(0, 2, -1), {1, 1, -1}, {2, -2, 1}, {3, -1, 1}}) {
        EXPECT_EQ(c2, tent.cell(cell)[2]) << cell;
        EXPECT_EQ(c3, tent.cell(cell)[3]) << cell;
    }
}

// Without conditions the slopes of a quadratic spline are free in one number, an alternating sum:
// that with the least sum of the squared jumps of c2.
TEST(FitConstruct, QuadraticOfLeastJumps) {
    for (std::size_t n : {3, 4, 9}) {
        Spline<double> s;
        s.x = uneven<double>(n, n), s.y = noise<double>(n, n);
        s.bc_type = DF_NO_CONDITIONS;
        s.fit(kinds()[1]);
        const auto jumps = [&](double sigma) {
            double sum = 0, before = 0, sign = 1;
            for (std::size_t i = 0; i + 1 < n; ++i, sign = -sign) {
                const double c2 = s.cell(i)[2] - sign * sigma / (s.x[i + 1] - s.x[i]);
                if (i > 0) sum += (c2 - before) * (c2 - before);
                before = c2;
            }
            return sum;
        };
        for (const double sigma : {-1e-3, 1e-3}) EXPECT_GT(jumps(sigma), jumps(0)) << n;
    }
}

// The slopes of the local cubics by their formulas in quadruple precision, and what
// each boundary type asks of the ends, for every kind of cubic.
TEST(FitConstruct, LocalSlopesAndEnds) {
    for (const Kind& kind : kinds()) {
        if (kind.order != 4 || kind.type == DF_TYPE_NATURAL) continue;
        for (int64_t boundary : kind.boundaries) {
            for (int64_t internal : kind.internals) {
                for (std::size_t n : {2, 3, 4, 9, 10}) {
                    // The two kinds of conditions are one where none stands inside.
                    if (internal == 2 && n == 2 && boundary != DF_PERIODIC) continue;
                    Spline<double> s;
                    s.x = uneven<double>(n, n), s.y = noise<double>(n, n + 5);
                    s.set_conditions(boundary, internal);
                    s.fit(kind);
                    const auto where = ::testing::Message() << kind.name << ' ' << boundary << ' '
                                                            << internal << ' ' << n;
                    const auto h = [&](std::size_t i) { return Quad(s.x[i + 1]) - s.x[i]; };
                    const auto d = [&](std::size_t i) {
                        return (Quad(s.y[i + 1]) - s.y[i]) / h(i);
                    };
                    const auto derivative = [&](std::size_t cell, Quad t, int r) {
                        const double* c = s.cell(cell);
                        return r == 1 ? c[1] + t * (2 * Quad(c[2]) + t * 3 * Quad(c[3]))
                                      : 2 * Quad(c[2]) + t * 6 * Quad(c[3]);
                    };
                    const auto expect = [&](Quad expected, Quad got, double bound = 4e-13) {
                        EXPECT_LT(double(magnitude(expected - got)), bound) << where;
                    };
                    for (std::size_t i = 0; i + 1 < n; ++i) {
                        const double* c = s.cell(i);
                        EXPECT_EQ(s.y[i], c[0]);
                        expect(s.y[i + 1],
                               c[0] + h(i) * (c[1] + h(i) * (c[2] + h(i) * Quad(c[3]))));
                    }
                    for (std::size_t i = 1; i + 1 < n; ++i) {
                        if (internal == 2) {
                            expect(s.ic[i - 1], 2 * Quad(s.cell(i)[2]));
                            expect(s.ic[i - 1], derivative(i - 1, h(i - 1), 2));
                            continue;
                        }
                        expect(s.cell(i)[1], derivative(i - 1, h(i - 1), 1));
                        if (kind.type == DF_TYPE_BESSEL)
                            expect((h(i) * d(i - 1) + h(i - 1) * d(i)) / (h(i - 1) + h(i)),
                                   s.cell(i)[1]);
                        if (internal == 1) expect(s.ic[i - 1], s.cell(i)[1], 1e-300);
                        if (kind.type == DF_TYPE_AKIMA && i >= 2 && i + 2 < n) {
                            const Quad w1 = magnitude(d(i + 1) - d(i)),
                                       w2 = magnitude(d(i - 1) - d(i - 2));
                            expect((w1 * d(i - 1) + w2 * d(i)) / (w1 + w2), s.cell(i)[1]);
                        }
                    }
                    const Quad end = h(n - 2);
                    const int last = static_cast<int>(n) - 2;
                    if (boundary == DF_FREE_END)
                        expect(0, derivative(0, 0, 2)), expect(0, derivative(last, end, 2));
                    if (boundary & (DF_LEFT_FIRST | DF_LEFT_SECOND))
                        expect(s.bc[0], derivative(0, 0, boundary & DF_LEFT_FIRST ? 1 : 2));
                    if (boundary & (DF_RIGHT_FIRST | DF_RIGHT_SECOND))
                        expect(s.bc[1], derivative(last, end, boundary & DF_RIGHT_FIRST ? 1 : 2));
                    if (boundary == DF_NOT_A_KNOT && n > 3)
                        expect(s.cell(0)[3], s.cell(1)[3]),
                            expect(s.cell(n - 2)[3], s.cell(n - 3)[3]);
                    if (boundary == DF_PERIODIC && internal != 2)
                        expect(derivative(0, 0, 1), derivative(last, end, 1));
                    if (boundary == DF_PERIODIC && internal == 1)
                        expect(s.bc[0], derivative(0, 0, 1));
                    if (boundary == DF_PERIODIC && internal == 2)
                        expect(s.bc[0], derivative(0, 0, 2)),
                            expect(s.bc[0], derivative(last, end, 2));
                }
            }
        }
    }
}

// Periodic Bessel and Akima splines do not know where the period starts.
TEST(FitConstruct, PeriodicSplinesRotate) {
    for (int k : {3, 5, 6}) {
        const Kind& kind = kinds()[k];
        const std::vector<double> x = uneven<double>(8, 4), y = noise<double>(7, 4);
        Spline<double> a, b;
        for (int shift : {0, 3}) {
            Spline<double>& s = shift == 0 ? a : b;
            for (int i = 0; i < 8; ++i) {
                const int j = i + shift;
                s.x.push_back(x[j % 7] + (j >= 7 ? x[7] - x[0] : 0));
                s.y.push_back(y[j % 7]);
            }
            s.bc_type = DF_PERIODIC;
            s.fit(kind);
        }
        for (int i = 0; i < 7; ++i)
            for (int c = 0; c < 4; ++c)
                EXPECT_NEAR(a.cell((i + 3) % 7)[c], b.cell(i)[c], 1e-12) << kind.name;
    }
}

// Every storage of values and coefficients holds the same bits as rows do.
template <class T> void expect_same_bits_in_all_storage() {
    const std::size_t n = 11, ny = 3;
    for (const Kind& kind : kinds()) {
        for (int64_t x_hint : {DF_NON_UNIFORM, DF_UNIFORM}) {
            Spline<T> rows;
            rows.ny = ny;
            rows.x_hint = x_hint;
            rows.x = uneven<T>(n, 2), rows.y = noise<T>(n * ny, 3);
            rows.set_conditions(kind.boundaries.back(), kind.internals.back());
            rows.fit(kind);
            for (int64_t y_hint : {0, DF_BY_COLUMNS + 0, DF_SEPARATE_ROWS + 0}) {
                for (int64_t c_hint : {0, DF_BY_COLUMNS + 0, DF_SEPARATE_ROWS + 0}) {
                    Spline<T> s;
                    s.ny = ny, s.x = rows.x, s.ic = rows.ic, s.bc = rows.bc;
                    s.ic_type = rows.ic_type, s.bc_type = rows.bc_type, s.x_hint = x_hint;
                    s.y_hint = y_hint, s.c_hint = c_hint;
                    s.order = kind.order, s.type = kind.type;
                    s.y.resize(n * ny);
                    for (std::size_t i = 0; i < ny; ++i)
                        for (std::size_t j = 0; j < n; ++j)
                            s.y[y_hint == DF_BY_COLUMNS ? j * ny + i : i * n + j] =
                                rows.y[i * n + j];
                    s.set_up();
                    const std::size_t row = s.cells() * s.order;
                    for (std::size_t i = 1; i < ny; ++i) {
                        if (y_hint == DF_SEPARATE_ROWS)
                            Api<T>::edit_row(s.task, DF_Y, i, s.y.data() + i * n);
                        if (c_hint == DF_SEPARATE_ROWS)
                            Api<T>::edit_row(s.task, DF_COEFFICIENTS, i, s.c.data() + i * row);
                    }
                    ASSERT_EQ(DF_STATUS_OK,
                              (sizeof(T) == 8 ? kind.in_double : kind.in_single)(s.task, 0));
                    for (std::size_t i = 0; i < ny; ++i)
                        for (std::size_t j = 0; j < s.cells(); ++j)
                            for (int k = 0; k < s.order; ++k) {
                                const std::size_t at = c_hint == DF_BY_COLUMNS
                                                           ? (j * ny + i) * s.order + k
                                                           : i * row + j * s.order + k;
                                ASSERT_EQ(rows.cell(j, i)[k], s.c[at])
                                    << kind.name << ' ' << y_hint << ' ' << c_hint;
                            }
                }
            }
        }
    }
}

TEST(FitConstruct, StorageDouble) { expect_same_bits_in_all_storage<double>(); }
TEST(FitConstruct, StorageSingle) { expect_same_bits_in_all_storage<float>(); }

// A straight line over a range that is infinite, though distances are not; and over ones
// whose squares overflow or vanish. The breakpoints by equal distances or one by one, the
// sites likewise.
TEST(FitConstruct, RangesThatOverflow) {
    const int n = 9;
    for (const double end : {1.5e308, 1e160, 0x1p-530}) {
        const double h = end / 4;
        for (const Kind& kind : kinds()) {
            for (int64_t boundary : kind.boundaries) {
                if (boundary == DF_PERIODIC) continue;  // no line
                for (int64_t x_hint : {DF_NON_UNIFORM, DF_QUASI_UNIFORM, DF_UNIFORM}) {
                    Spline<double> s;
                    s.x_hint = x_hint;
                    for (int i = 0; i < n; ++i) s.x.push_back(h * (i - 4)), s.y.push_back(i);
                    s.set_conditions(boundary, kind.internals[0]);
                    const auto derivative = [&](int64_t first) {
                        return boundary & first ? 1 / h : 0;
                    };
                    s.bc = {derivative(DF_LEFT_FIRST), derivative(DF_RIGHT_FIRST)};
                    if (boundary == DF_RIGHT_FIRST) s.bc[0] = s.bc[1];
                    for (double& v : s.ic) v = 1 / h;
                    s.fit(kind);
                    const double ends[] = {-end, end};
                    std::vector<double> at_grid(61);
                    const int32_t value = 1;
                    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFInterpolate1D(
                                                s.task, DF_SPLINE, 61, ends, DF_UNIFORM, 1, &value,
                                                at_grid.data(), DF_BY_ROWS, nullptr));
                    for (int j = 0; j < 61; ++j)
                        ASSERT_NEAR(8.0 * j / 60, at_grid[j], 1e-14)
                            << kind.name << " boundary " << boundary << " hint " << x_hint
                            << " end " << end;
                }
            }
        }
    }
}

// A constructor writes `order` coefficients a cell: rows that were laid out for fewer, or
// for fewer cells, are refused, and nothing is written.
TEST(FitConstruct, RowsHaveRoomForTheOrder) {
    const auto natural = kef_df_kernel_dDFNaturalCubicSpline1D;
    for (int64_t hint : {DF_BY_ROWS, DF_BY_COLUMNS}) {
        for (int64_t order : {3, 4}) {
            Spline<double> s;
            s.x = uneven<double>(6, 1), s.y = noise<double>(12, 1);
            s.ny = 2, s.bc_type = DF_FREE_END, s.c_hint = hint, s.type = DF_TYPE_NATURAL;
            s.order = order;
            s.set_up();
            const std::vector<double> before = s.c;
            EXPECT_EQ(order == 3 ? DF_STATUS_ORDER : DF_STATUS_OK, natural(s.task, 0));
            EXPECT_EQ(order == 3, s.c == before);
        }
    }
    Spline<double> s;
    s.x = uneven<double>(6, 1), s.y = noise<double>(12, 1);
    s.ny = 2, s.bc_type = DF_FREE_END, s.type = DF_TYPE_NATURAL;
    s.order = 3;
    s.set_up();
    s.c.assign(64, -77);
    kef_df_kernel_dEditPtr(s.task, DF_COEFFICIENTS, s.c.data());
    kef_df_kernel_iEditVal(s.task, DF_ORDER, 4);  // does not lay out the rows anew
    EXPECT_EQ(DF_STATUS_COEFFICIENTS, natural(s.task, 0));
    for (std::ptrdiff_t distance : {19, -19, 0}) {
        kef_df_kernel_dEditIdxPtr(s.task, DF_COEFFICIENTS, 0, &s.c[20]);
        kef_df_kernel_dEditIdxPtr(s.task, DF_COEFFICIENTS, 1, &s.c[20 + distance]);
        EXPECT_EQ(DF_STATUS_COEFFICIENTS, natural(s.task, 0)) << distance;
    }
    EXPECT_EQ(s.c, std::vector<double>(64, -77));
    for (std::ptrdiff_t distance : {20, -20}) {
        kef_df_kernel_dEditIdxPtr(s.task, DF_COEFFICIENTS, 1, &s.c[20 + distance]);
        EXPECT_EQ(DF_STATUS_OK, natural(s.task, 0)) << distance;
    }
    // An order that was never set says nothing about one function's room.
    kef_df_task* bare = nullptr;
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dNewTask1D(&bare, 6, s.x.data(), 0, 1, s.y.data(), 0, 0));
    kef_df_kernel_iEditVal(bare, DF_BOUNDARY_TYPE, DF_FREE_END);
    kef_df_kernel_dEditPtr(bare, DF_COEFFICIENTS, s.c.data());
    EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, [&] {
        kef_df_kernel_iEditVal(bare, DF_BOUNDARY_TYPE, DF_PERIODIC);  // type DEFAULT
        return natural(bare, 0);
    }());
    kef_df_kernel_iEditVal(bare, DF_BOUNDARY_TYPE, DF_FREE_END);
    EXPECT_EQ(DF_STATUS_OK, natural(bare, 0));
    kef_df_kernel_DeleteTask(&bare);
}

// A value that is not finite changes a local spline in the cells nearby alone.
TEST(FitConstruct, LocalSplinesKeepBadValuesNearby) {
    const int n = 20, at = 9;
    for (const Kind& kind : kinds()) {
        const bool local = kind.order != 3 && kind.type != DF_TYPE_NATURAL;
        for (int64_t boundary : kind.boundaries) {
            for (double bad : {double(INFINITY), double(NAN)}) {
                Spline<double> clean, s;
                for (Spline<double>* p : {&clean, &s}) {
                    p->x = uneven<double>(n, 1), p->y = noise<double>(n, 1);
                    if (p == &s) p->y[at] = bad;
                    p->set_conditions(boundary, kind.internals[0]);
                    p->fit(kind);
                }
                for (int i = 0; i < static_cast<int>(s.cells()); ++i)
                    for (int k = 0; k < kind.order; ++k) {
                        const double right = clean.cell(i)[k], got = s.cell(i)[k];
                        if (i < at - 3 || i > at + 2)
                            EXPECT_TRUE(!local || got == right) << kind.name << ' ' << i;
                        if (i == at && k + 1 == kind.order)
                            EXPECT_FALSE(std::isfinite(got)) << kind.name;
                    }
            }
        }
    }
}

TEST(FitConstruct, BadInput) {
    Spline<double> s;
    s.x = {0, 1, 2, 4}, s.y = {1, 2, 0, 3};
    s.type = DF_TYPE_NATURAL, s.bc_type = DF_FREE_END;
    s.set_up();
    kef_df_task* task = s.task;
    const auto natural = kef_df_kernel_dDFNaturalCubicSpline1D;
    const auto with = [&](int64_t id, int64_t value, auto constructor) {
        int64_t before = 0;
        kef_df_kernel_iQueryVal(task, id, &before);
        EXPECT_EQ(DF_STATUS_OK, kef_df_kernel_iEditVal(task, id, value));
        const int status = constructor(task, 0);
        kef_df_kernel_iEditVal(task, id, before);
        return status;
    };
    EXPECT_EQ(DF_STATUS_NULL_TASK, natural(nullptr, 1));
    EXPECT_EQ(DF_STATUS_METHOD, natural(task, 1));
    EXPECT_EQ(DF_STATUS_METHOD, natural(task, INT64_C(1) << 32));
    EXPECT_EQ(DF_STATUS_NX, with(DF_NX, 2, natural));
    for (int64_t type : {0, 3, 4, 8, 16, 32, 65})
        EXPECT_EQ(DF_STATUS_BOUNDARY_TYPE, with(DF_BOUNDARY_TYPE, type, natural)) << type;
    for (int64_t type : {12, 24, 36, 48})
        EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, with(DF_BOUNDARY_TYPE, type, natural)) << type;
    // Periodic: values only for types DEFAULT and HERMITE.
    kef_df_kernel_iEditVal(task, DF_BOUNDARY_TYPE, DF_PERIODIC);
    EXPECT_EQ(DF_STATUS_OK, natural(task, 0));
    EXPECT_EQ(DF_STATUS_OK, with(DF_TYPE, DF_TYPE_SUBBOTIN, natural));
    EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, with(DF_TYPE, DF_TYPE_DEFAULT, natural));
    EXPECT_EQ(DF_STATUS_BOUNDARY_CONDITIONS, with(DF_TYPE, DF_TYPE_HERMITE, natural));
    kef_df_kernel_iEditVal(task, DF_BOUNDARY_TYPE, DF_FREE_END);

    for (const Kind& kind : kinds()) {
        if (kind.type == DF_TYPE_NATURAL) continue;
        EXPECT_EQ(DF_STATUS_TYPE,
                  with(DF_ORDER, kind.order,
                       [&](const kef_df_task* t, int64_t m) { return kind.in_double(t, m); }))
            << kind.name;
        EXPECT_EQ(DF_STATUS_ORDER, with(DF_ORDER, 5, kind.in_double)) << kind.name;
    }
    // Values and coefficients.
    EXPECT_EQ(DF_STATUS_Y, with(DF_NY, 2, natural));  // rows were laid out for one
    kef_df_task* bare = nullptr;
    kef_df_kernel_dNewTask1D(&bare, 4, s.x.data(), 0, 0, nullptr, 0, 0);
    kef_df_kernel_iEditVal(bare, DF_BOUNDARY_TYPE, DF_FREE_END);
    EXPECT_EQ(DF_STATUS_NY, natural(bare, 0));
    kef_df_kernel_DeleteTask(&bare);
    kef_df_kernel_dNewTask1D(&bare, 4, s.x.data(), 0, 1, s.y.data(), 0, 0);
    kef_df_kernel_iEditVal(bare, DF_BOUNDARY_TYPE, DF_FREE_END);
    EXPECT_EQ(DF_STATUS_COEFFICIENTS, natural(bare, 0));
    kef_df_kernel_DeleteTask(&bare);

    // Internal conditions.
    const auto standard = kef_df_kernel_dDFDefaultCubicSpline1D;
    kef_df_kernel_iEditVal(task, DF_TYPE, DF_TYPE_DEFAULT);
    EXPECT_EQ(DF_STATUS_INTERNAL_TYPE, standard(task, 0));
    kef_df_kernel_iEditVal(task, DF_INTERNAL_TYPE, DF_INTERNAL_SECOND);
    EXPECT_EQ(DF_STATUS_INTERNAL_CONDITIONS, standard(task, 0));

    // Breakpoints that do not ascend: refused on request, else some numbers.
    for (const Kind& kind : kinds()) {
        for (const std::vector<double>& x : {std::vector<double>{0, 1, 1, 2, 3},
                                             {4, 3, 2, 1, 0},
                                             {0, 0, 0, 0, 0},
                                             {0, 1, NAN, 3, 4},
                                             {0, 1, 2, 3, INFINITY}}) {
            for (int64_t boundary : kind.boundaries) {
                Spline<double> bad;
                bad.x = x, bad.y = {1, 2, 3, 4, 5};
                bad.set_conditions(boundary, kind.internals[0]);
                bad.fit(kind);
                kef_df_kernel_iEditVal(bad.task, DF_CHECK_FLAG, 1);
                EXPECT_EQ(DF_STATUS_X, kind.in_double(bad.task, 0));
            }
        }
    }
}

}  // namespace
