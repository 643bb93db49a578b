// Values, derivatives and integrals against the coefficients in quadruple precision.
#include <limits>

#include "tests/fit_data.h"

namespace {

using namespace fit_test;

Quad magnitude(Quad v) { return v < 0 ? -v : v; }

// The cell of a site by a plain search of the left ends.
template <class T> std::size_t cell_of(const Spline<T>& s, T q) {
    std::size_t i = 0;
    while (i + 1 < s.cells() && q >= s.left(i + 1)) ++i;
    return i;
}

// Derivative r at q, and the sum of its terms' magnitudes.
template <class T>
std::pair<Quad, Quad> exact_derivative(const Spline<T>& s, std::size_t function, T q, int r) {
    const std::size_t i = cell_of(s, q);
    const Quad t = Quad(q) - s.left(i);
    Quad sum = 0, terms = 0, power = 1;
    for (int k = r; k < s.order; ++k, power *= t) {
        Quad term = s.cell(i, function)[k] * power;
        for (int j = 0; j < r; ++j) term *= k - j;
        sum += term, terms += magnitude(term);
    }
    return {sum, terms};
}

template <class T> std::vector<T> some_sites(const Spline<T>& s, int count) {
    std::mt19937 random(5);
    const T first = s.x.front(), last = s.x.back(), inf = std::numeric_limits<T>::infinity();
    std::vector<T> q = {first,     last,    std::nextafter(first, -inf), std::nextafter(last, inf),
                        first - 2, last + 2};
    for (std::size_t i = 0; i < s.cells(); ++i)
        q.insert(q.end(),
                 {s.left(i), std::nextafter(s.left(i), -inf), std::nextafter(s.left(i), inf)});
    while (static_cast<int>(q.size()) < count)
        q.push_back(first - 1 + (last - first + 2) * T(random() % 65536) / 65536);
    std::shuffle(q.begin(), q.end(), random);
    return q;
}

template <class T> void fit_some(Spline<T>& s, const Kind& kind, std::size_t n, int64_t x_hint) {
    s.ny = 2;
    s.x_hint = x_hint;
    s.x = uneven<T>(n, 8), s.y = noise<T>(2 * n, 8);
    if (x_hint == DF_UNIFORM)
        for (std::size_t i = 0; i < n; ++i) s.x[i] = T(0.25) * i - 3;
    s.set_conditions(kind.boundaries.back(), kind.internals.back());
    s.fit(kind);
}

template <class T> void expect_derivatives() {
    const T epsilon = std::numeric_limits<T>::epsilon();
    for (const Kind& kind : kinds()) {
        for (int64_t x_hint : {DF_NON_UNIFORM, DF_QUASI_UNIFORM, DF_UNIFORM}) {
            Spline<T> s;
            fit_some(s, kind, 20, x_hint);
            for (int count : {1, 3, 7, 300}) {
                std::vector<T> q = some_sites(s, count);
                if (count < 10) q.resize(count);
                for (int64_t hint : {DF_ANY_ORDER, DF_SORTED}) {
                    if (hint == DF_SORTED) std::sort(q.begin(), q.end());
                    for (const std::vector<int32_t>& orders :
                         {std::vector<int32_t>{1}, {1, 1}, {0, 0, 5}, {1, 0, 1, 1, 0, 1}}) {
                        const std::vector<T> r = s.values(q, hint, orders);
                        std::size_t at = 0;
                        for (std::size_t f = 0; f < 2; ++f)
                            for (T site : q)
                                for (std::size_t d = 0; d < orders.size(); ++d) {
                                    if (orders[d] == 0) continue;
                                    const auto [value, terms] = exact_derivative(s, f, site, d);
                                    ASSERT_LE(double(magnitude(r[at] - value)),
                                              double(3 * epsilon * terms))
                                        << kind.name << " derivative " << d << " at " << site;
                                    ++at;
                                }
                    }
                }
            }
        }
    }
}

TEST(FitEvaluate, ValuesAndDerivativesDouble) { expect_derivatives<double>(); }
TEST(FitEvaluate, ValuesAndDerivativesSingle) { expect_derivatives<float>(); }

// The same results in every storage, with the cells beside them, in both widths of
// integers, from an array and from a grid; data come back at the breakpoints.
TEST(FitEvaluate, StorageWidthsAndGrids) {
    Spline<double> s;
    fit_some(s, kinds()[3], 12, DF_NON_UNIFORM);
    const std::size_t n = 301;
    const double ends[] = {s.x.front() - 1, s.x.back() + 1};
    std::vector<double> site(n);
    for (std::size_t j = 0; j < n; ++j)
        site[j] = j + 1 < n ? ends[0] + j * ((ends[1] - ends[0]) / (n - 1)) : ends[1];
    const std::vector<double> rows = s.values(site, DF_ANY_ORDER, {1, 0, 1});
    const std::vector<double> back = s.values(s.x, DF_SORTED);
    for (std::size_t i = 0; i + 1 < s.x.size(); ++i) EXPECT_EQ(s.y[i], back[i]);
    std::vector<int64_t> cells(n);
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFSearch1D(s.task, n, site.data(), 0, cells.data()));

    for (int wide : {0, 1}) {
        kef_df_kernel_DeleteTask(&s.task);
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dNewTask1D(&s.task, s.x.size(), s.x.data(), 0, 2,
                                                         s.y.data(), 0, wide));
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dEditPPSpline1D(s.task, 4, 2, 1, nullptr, 0, nullptr,
                                                              s.c.data(), 16));
        const int64_t wide_orders[] = {INT64_C(1) << 32, 0, 1};
        const int32_t narrow_orders[] = {1, 0, 1};
        const void* orders = wide ? static_cast<const void*>(wide_orders) : narrow_orders;
        for (int64_t hint : {0, DF_BY_ROWS + 0, DF_BY_COLUMNS + 0}) {
            std::vector<double> r(2 * 2 * n + 1, -7);
            std::vector<int64_t> found(n + 1, -7);
            ASSERT_EQ(DF_STATUS_OK,
                      kef_df_kernel_dDFInterpolate1D(s.task, DF_SPLINE, n, ends, DF_UNIFORM, 3,
                                                     orders, r.data(), hint, found.data()));
            for (std::size_t j = 0; j < n; ++j) {
                EXPECT_EQ(cells[j], wide ? found[j] : reinterpret_cast<int32_t*>(found.data())[j]);
                for (std::size_t f = 0; f < 2; ++f)
                    for (std::size_t k = 0; k < 2; ++k)
                        EXPECT_EQ(
                            rows[(f * n + j) * 2 + k],
                            r[hint == DF_BY_COLUMNS ? (j * 2 + f) * 2 + k : (f * n + j) * 2 + k]);
            }
            EXPECT_EQ(-7, r.back());
            EXPECT_EQ(-7, found.back());
        }
    }
}

// Orders without kernels of their own, with coefficients from elsewhere; step
// functions; NaN and infinite sites.
TEST(FitEvaluate, OtherOrdersAndSpecialSites) {
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = 1 / 0.0;
    for (int64_t order : {1, 5, 7}) {
        Spline<double> s;
        s.x = {0, 1, 3, 4}, s.y = {1, 2, 3, 4}, s.order = order;
        s.set_up();
        s.c = noise<double>(s.c.size(), 3);
        kef_df_kernel_dEditPtr(s.task, DF_COEFFICIENTS, s.c.data());
        const std::vector<double> q = {-1, 0, 0.5, 1, 2.75, 3, 4, 5};
        for (int r = 0; r < 8; ++r) {
            std::vector<int32_t> orders(8);
            orders[r] = 1;
            const std::vector<double> v = s.values(q, DF_ANY_ORDER, orders);
            for (std::size_t j = 0; j < q.size(); ++j) {
                const auto [value, terms] = exact_derivative(s, 0, q[j], r);
                EXPECT_LE(double(magnitude(v[j] - value)), 1e-15 * double(terms))
                    << order << ' ' << r;
            }
        }
    }
    Spline<double> step;
    step.x = {0, 1, 3}, step.y = {5, 6, 7}, step.order = DF_STEP;
    step.set_up();
    kef_df_kernel_dEditPtr(step.task, DF_COEFFICIENTS, step.y.data());
    EXPECT_EQ((std::vector<double>{5, 5, 6, 6, 7, 7}), step.values({-1, 0.5, 1, 2.5, 3, 9}, 0));
    double left = 0.5, right = 5, integral = 0;
    ASSERT_EQ(DF_STATUS_OK,
              kef_df_kernel_dDFIntegrate1D(step.task, 0, 1, &left, 0, &right, 0, &integral, 0));
    EXPECT_EQ(0.5 * 5 + 2 * 6 + 2 * 7, integral);

    for (const Kind& kind : kinds()) {
        Spline<double> s;
        fit_some(s, kind, 9, DF_NON_UNIFORM);
        const std::vector<double> v = s.values({nan, 0, inf, nan, -inf}, 0, {1, 1, 1, 1, 1});
        for (int k = 0; k < 5; ++k) {
            EXPECT_TRUE(std::isnan(v[k])) << kind.name << ' ' << k;
            EXPECT_TRUE(std::isfinite(v[5 + k]));
            EXPECT_TRUE(std::isnan(v[15 + k]));
        }
        EXPECT_FALSE(std::isfinite(v[10]) || std::isfinite(v[20]));
    }
}

TEST(FitEvaluate, LookUp) {
    Spline<double> s;
    fit_some(s, kinds()[0], 9, DF_NON_UNIFORM);
    std::vector<double> q = s.x;
    for (double v : s.x) q.insert(q.end(), {std::nextafter(v, -9.0), std::nextafter(v, 99.0)});
    q.insert(q.end(), {-1 / 0.0, 1 / 0.0, NAN});
    std::vector<double> r(2 * q.size());
    const int32_t one = 1;
    ASSERT_EQ(DF_STATUS_OK,
              kef_df_kernel_dDFInterpolate1D(s.task, DF_LOOKUP, q.size(), q.data(), 0, 1, &one,
                                             r.data(), DF_BY_COLUMNS, nullptr));
    for (std::size_t j = 0; j < q.size(); ++j)
        for (int f = 0; f < 2; ++f) {
            if (j < s.x.size()) EXPECT_EQ(s.y[f * s.x.size() + j], r[2 * j + f]);
            else EXPECT_TRUE(std::isnan(r[2 * j + f]));
        }
}

// The integral of all cells between two limits in quadruple precision, and the sum
// of its terms' magnitudes.
template <class T>
std::pair<Quad, Quad> exact_integral(const Spline<T>& s, std::size_t function, T left, T right) {
    if (left > right) {
        const auto [sum, terms] = exact_integral(s, function, right, left);
        return {-sum, terms};
    }
    Quad sum = 0, terms = 0;
    const std::size_t last = s.cells() - 1;
    for (std::size_t i = cell_of(s, left); i <= cell_of(s, right); ++i) {
        const Quad from = std::max(Quad(left), i == 0 ? Quad(left) : Quad(s.left(i)));
        const Quad to = std::min(Quad(right), i == last ? Quad(right) : Quad(s.left(i + 1)));
        const Quad a = from - s.left(i), b = to - s.left(i);
        Quad pa = a, pb = b;
        for (int k = 0; k < s.order; ++k, pa *= a, pb *= b) {
            const Quad term = s.cell(i, function)[k] * (pb - pa) / (k + 1);
            sum += term, terms += magnitude(term);
        }
    }
    return {sum, terms};
}

template <class T> void expect_integrals() {
    const T epsilon = std::numeric_limits<T>::epsilon();
    for (const Kind& kind : kinds()) {
        for (int64_t x_hint : {DF_NON_UNIFORM, DF_UNIFORM}) {
            Spline<T> s;
            fit_some(s, kind, 30, x_hint);
            const std::vector<T> limits = some_sites(s, 360);
            const auto check = [&](std::vector<T> left, std::vector<T> right, int64_t hint) {
                std::vector<T> r(2 * left.size());
                const int64_t n = left.size();
                ASSERT_EQ(DF_STATUS_OK,
                          Api<T>::integrate(s.task, 0, n, left.data(), hint, right.data(), hint,
                                            r.data(), DF_BY_ROWS));
                std::vector<T> columns(r.size());
                ASSERT_EQ(DF_STATUS_OK,
                          Api<T>::integrate(s.task, 0, n, left.data(), hint, right.data(), hint,
                                            columns.data(), DF_BY_COLUMNS));
                for (std::size_t f = 0; f < 2; ++f)
                    for (int64_t j = 0; j < n; ++j) {
                        const auto [sum, terms] = exact_integral(s, f, left[j], right[j]);
                        ASSERT_LE(double(magnitude(r[f * n + j] - sum)),
                                  double(2 * epsilon * terms))
                            << kind.name << " from " << left[j] << " to " << right[j];
                        ASSERT_EQ(r[f * n + j], columns[j * 2 + f]);
                    }
            };
            std::vector<T> half(limits.begin(), limits.begin() + 180),
                other(limits.begin() + 180, limits.begin() + 360);
            check(half, other, DF_ANY_ORDER);  // running sums
            check(half, half, DF_ANY_ORDER);
            for (int k = 0; k < 6; ++k) check({half[k]}, {other[k]}, DF_ANY_ORDER);  // cell by cell
            std::sort(half.begin(), half.end()), std::sort(other.begin(), other.end());
            check(half, other, DF_SORTED);
            // Close limits inside one cell: no cancellation.
            for (T& v : other) v += T(0.001);
            check(
                other,
                [&] {
                    auto right = other;
                    for (T& v : right) v = std::nextafter(v, T(99));
                    return right;
                }(),
                DF_SORTED);
        }
    }
}

TEST(FitEvaluate, IntegralsDouble) { expect_integrals<double>(); }
TEST(FitEvaluate, IntegralsSingle) { expect_integrals<float>(); }

// Many cells with a mean far above an interval's own integral: the running sums keep it.
TEST(FitEvaluate, RunningSumsAreStable) {
    const int n = 20000;
    Spline<double> s;
    for (int i = 0; i < n; ++i)
        s.x.push_back(i + 0.3 * std::sin(i)), s.y.push_back(i < n / 2 ? 1e9 : 1e-3 * std::cos(i));
    s.fit(kinds()[0]);
    std::vector<double> left, right;
    for (int i = n / 2 + 5; i + 50 < n; i += 37)
        left.push_back(s.x[i] + 0.25), right.push_back(s.x[i + 9] + 0.125);
    std::vector<double> r(left.size());
    ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFIntegrate1D(s.task, 0, r.size(), left.data(), 0,
                                                         right.data(), 0, r.data(), 0));
    for (std::size_t j = 0; j < r.size(); j += 100) {
        const auto [sum, terms] = exact_integral(s, 0, left[j], right[j]);
        EXPECT_LE(double(magnitude(r[j] - sum)), 4e-16 * double(terms));
    }
}

// Where a length or a power of it overflows, the integral does not.
void expect_integral_of_wide(const Spline<double>& s, const std::vector<double>& left,
                             const std::vector<double>& right) {
    for (std::size_t copies : {1, 20}) {  // cell by cell, and from running sums
        std::vector<double> from, to;
        for (std::size_t k = 0; k < copies; ++k)
            from.insert(from.end(), left.begin(), left.end()),
                to.insert(to.end(), right.begin(), right.end());
        std::vector<double> r(from.size());
        ASSERT_EQ(DF_STATUS_OK, kef_df_kernel_dDFIntegrate1D(s.task, 0, r.size(), from.data(), 0,
                                                             to.data(), 0, r.data(), 0));
        for (std::size_t j = 0; j < r.size(); ++j) {
            const auto [sum, terms] = exact_integral(s, 0, from[j], to[j]);
            EXPECT_LE(double(magnitude(r[j] - sum) / terms), 5e-16) << from[j] << ' ' << to[j];
        }
    }
}

TEST(FitEvaluate, IntegralsOverWideRanges) {
    Spline<double> line;
    line.x = {-1.5e308, 0, 1.5e308}, line.y = {-1, 0.5, 1};
    line.fit(kinds()[0]);
    expect_integral_of_wide(line, {-1.5e308, -1.5e308, 1.5e308, -1e308, -1.7e308, 5},
                            {1.5e308, -1.4e308, 0.3e308, 1.6e308, 1.7e308, 5.5});
    for (const Kind& kind : kinds()) {
        if (kind.order < 3) continue;
        SCOPED_TRACE(kind.name);
        const double scale = kind.order == 3 ? 0x1p511 : 0x1p341;
        Spline<double> s;
        for (double x : uneven<double>(9, 4)) s.x.push_back(x * scale);
        s.y = noise<double>(9, 4);
        s.set_conditions(kind.boundaries[0], kind.internals[0]);
        s.fit(kind);
        ASSERT_TRUE(std::all_of(s.c.begin(), s.c.end(), [](double c) { return std::isfinite(c); }));
        expect_integral_of_wide(s, {-2 * scale, 3 * scale, 1.25 * scale},
                                {3 * scale, -1.5 * scale, 9 * scale});
    }
}

// Results may take the place of the sites, or of either limit, from arrays and grids.
template <class T> void expect_in_place() {
    Spline<T> s;
    s.x = uneven<T>(40, 8), s.y = noise<T>(40, 8);
    s.set_conditions(DF_FREE_END, 0);
    s.fit(kinds()[3]);
    const std::vector<T> sites = some_sites(s, 700);
    const auto n = static_cast<int64_t>(sites.size());
    const int32_t value = 1;
    for (int64_t hint : {DF_ANY_ORDER, DF_UNIFORM}) {
        std::vector<T> expected(n), r = sites;
        for (T* to : {expected.data(), r.data()})
            ASSERT_EQ(DF_STATUS_OK,
                      Api<T>::interpolate(s.task, DF_SPLINE, n, to == r.data() ? to : sites.data(),
                                          hint, 1, &value, to, DF_BY_ROWS, nullptr));
        EXPECT_EQ(expected, r);
        const std::vector<T> ends(sites.rbegin(), sites.rend());
        for (bool over_left : {true, false}) {
            std::vector<T> left = sites, right = ends;
            const auto integrate = [&](T* to) {
                return Api<T>::integrate(s.task, 0, n, left.data(), hint, right.data(), hint, to,
                                         DF_BY_ROWS);
            };
            ASSERT_EQ(DF_STATUS_OK, integrate(expected.data()));
            std::vector<T>& over = over_left ? left : right;
            ASSERT_EQ(DF_STATUS_OK, integrate(over.data()));
            EXPECT_EQ(expected, over);
        }
    }
}

TEST(FitEvaluate, InPlace) {
    expect_in_place<double>();
    expect_in_place<float>();
}

TEST(FitEvaluate, BadInput) {
    Spline<double> s;
    s.x = {0, 1, 3}, s.y = {5, 6, 7};
    s.fit(kinds()[0]);
    const double q = 0.5;
    double r[3];
    const int32_t one[] = {1}, none[] = {0};
    const auto interpolate = kef_df_kernel_dDFInterpolate1D;
    EXPECT_EQ(DF_STATUS_NULL_TASK, interpolate(nullptr, 0, 1, &q, 0, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_METHOD, interpolate(s.task, 2, 1, &q, 0, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_SITE_COUNT, interpolate(s.task, 0, -1, &q, 0, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_SITE_HINT, interpolate(s.task, 0, 1, &q, 128, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_SITES, interpolate(s.task, 0, 1, nullptr, 0, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_DERIVATIVES, interpolate(s.task, 0, 1, &q, 0, 0, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_DERIVATIVES, interpolate(s.task, 0, 1, &q, 0, 1, none, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_DERIVATIVES, interpolate(s.task, 0, 1, &q, 0, 1, nullptr, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_RESULTS, interpolate(s.task, 0, 1, &q, 0, 1, one, nullptr, 16, nullptr));
    EXPECT_EQ(DF_STATUS_RESULT_HINT, interpolate(s.task, 0, 1, &q, 0, 1, one, r, 128, nullptr));
    EXPECT_EQ(DF_STATUS_OK, interpolate(s.task, 0, 0, nullptr, 0, 1, one, nullptr, 16, nullptr));
    const auto integrate = kef_df_kernel_dDFIntegrate1D;
    EXPECT_EQ(DF_STATUS_NULL_TASK, integrate(nullptr, 0, 1, &q, 0, &q, 0, r, 16));
    EXPECT_EQ(DF_STATUS_METHOD, integrate(s.task, 1, 1, &q, 0, &q, 0, r, 16));
    EXPECT_EQ(DF_STATUS_SITE_COUNT, integrate(s.task, 0, -1, &q, 0, &q, 0, r, 16));
    EXPECT_EQ(DF_STATUS_SITE_HINT, integrate(s.task, 0, 1, &q, 0, &q, 3, r, 16));
    EXPECT_EQ(DF_STATUS_SITES, integrate(s.task, 0, 1, &q, 0, nullptr, 0, r, 16));
    EXPECT_EQ(DF_STATUS_RESULTS, integrate(s.task, 0, 1, &q, 0, &q, 0, nullptr, 16));
    EXPECT_EQ(DF_STATUS_RESULT_HINT, integrate(s.task, 0, 1, &q, 0, &q, 0, r, 1));
    EXPECT_EQ(DF_STATUS_OK, integrate(s.task, 0, 0, nullptr, 0, nullptr, 0, nullptr, 16));
    const double nan = NAN;
    EXPECT_EQ(DF_STATUS_OK, integrate(s.task, 0, 1, &nan, 0, &q, 0, r, 16));
    EXPECT_TRUE(std::isnan(r[0]));

    kef_df_kernel_iEditVal(s.task, DF_ORDER, 0);
    EXPECT_EQ(DF_STATUS_ORDER, interpolate(s.task, 0, 1, &q, 0, 1, one, r, 16, nullptr));
    EXPECT_EQ(DF_STATUS_ORDER, integrate(s.task, 0, 1, &q, 0, &q, 0, r, 16));
    EXPECT_EQ(DF_STATUS_OK, interpolate(s.task, DF_LOOKUP, 1, &q, 0, 1, one, r, 16, nullptr));
    kef_df_kernel_iEditVal(s.task, DF_NY, 2);
    EXPECT_EQ(DF_STATUS_Y, interpolate(s.task, DF_LOOKUP, 1, &q, 0, 1, one, r, 16, nullptr));

    // Breakpoints that do not ascend give some numbers.
    for (const std::vector<double>& x :
         {std::vector<double>{0, 2, 1, 3}, {3, 2, 1, 0}, {1, 1, 1, 1}, {0, NAN, NAN, 3}}) {
        Spline<double> bad;
        bad.x = x, bad.y = {1, 2, 3, 4};
        bad.fit(kinds()[6]);
        const std::vector<double> sites = {-1, 0, 0.5, 1, 1.5, 2, 2.5, 3, 4, NAN},
                                  ends(sites.rbegin(), sites.rend());
        bad.values(sites, DF_SORTED);
        std::vector<double> integrals(sites.size());
        EXPECT_EQ(DF_STATUS_OK, integrate(bad.task, 0, sites.size(), sites.data(), 0, ends.data(),
                                          0, integrals.data(), 16));
        kef_df_kernel_iEditVal(bad.task, DF_CHECK_FLAG, 1);
        EXPECT_EQ(DF_STATUS_X, interpolate(bad.task, 0, 1, &q, 0, 1, one, r, 16, nullptr));
    }
}

}  // namespace
