// Splines of the C++ interface: polynomials come back, results agree with one another, and what is
// refused.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/cxx_support.h"

namespace {

using cxx_test::refused;
using kef::End;
using kef::Search;
using kef::Spline;
using kef::SplineKind;
using Vector = std::vector<double>;

static_assert(std::is_same_v<decltype(Spline(SplineKind::akima, std::vector<float>(),
                                             std::vector<float>()))::value_type,
                             float>);
template <class X, class Y> constexpr bool is_spline = requires(X x, Y y) {
    Spline<double>(SplineKind::linear, x, y);
};
static_assert(is_spline<const Vector&, std::span<const double>>);
static_assert(!is_spline<Vector, std::vector<float>> && !is_spline<std::vector<int>, Vector>);
template <class R> constexpr bool is_evaluated = requires(const Spline<> s, Vector x, R r) {
    s.evaluate(x, r);
};
static_assert(is_evaluated<Vector&> && !is_evaluated<const Vector&> &&
              !is_evaluated<std::vector<float>&>);
template <class C> constexpr bool is_searched = requires(const Spline<> s, Vector x, C c) {
    s.search(x, c);
};
static_assert(is_searched<std::vector<std::int32_t>&> && !is_searched<std::vector<short>&>);

constexpr SplineKind all_kinds[] = {
    SplineKind::linear, SplineKind::quadratic, SplineKind::subbotin, SplineKind::natural,
    SplineKind::akima,  SplineKind::bessel,    SplineKind::hermite,  SplineKind::curvatures};

// f(x) = 2x^2 - x + 1, which every kind gives back but the linear one and, for breakpoints at
// unequal distances, Akima's; and its double.
double f(double x) { return (2 * x - 1) * x + 1; }
double slope(double x) { return 4 * x - 1; }
double integral(double x) { return ((2 * x / 3 - 0.5) * x + 1) * x; }
const Vector f6{1, 1, 2, 7, 22, 29}, x6{0, 0.5, 1, 2, 3.5, 4}, inner{1, 3, 7, 13}, flat(4, 4.0);
const kef::EndCondition<> f_slopes{.end = End::slopes, .left = slope(0), .right = slope(4)};
Vector values() {
    Vector y(f6);
    for (const double v : f6) y.push_back(2 * v);
    return y;
}
Spline<> make(SplineKind kind) {
    switch (kind) {
        case SplineKind::subbotin: return Spline(kind, x6, f6, f_slopes);
        case SplineKind::hermite: return Spline(kind, x6, f6, f_slopes, inner);
        case SplineKind::curvatures: return Spline(kind, x6, f6, f_slopes, flat);
        default: return Spline(kind, x6, values());
    }
}

TEST(CxxSpline, ParabolasComeBack) {
    for (const SplineKind kind : all_kinds) {
        const Spline<> s = make(kind);
        EXPECT_EQ(s.kind(), kind);
        EXPECT_EQ(s.coefficients().size(), s.functions() * s.cells() * s.order());
        const bool exact = kind != SplineKind::linear && kind != SplineKind::akima;
        const double bound = exact ? 1e-12 : 1.2;
        for (const double x : {0.25, 0.75, 1.5, 3.0, 3.75}) {
            EXPECT_NEAR(s(x), f(x), bound) << int(kind);
            if (exact) EXPECT_NEAR(s(x, 1), slope(x), 1e-11) << int(kind);
            EXPECT_EQ(s(x, 4), 0);
            EXPECT_EQ(s(x, 1000), 0);
            if (s.functions() == 2) EXPECT_NEAR(s(x, 0, 1), 2 * f(x), 2 * bound) << int(kind);
        }
        EXPECT_NEAR(s.integrate(0.25, 3.75), integral(3.75) - integral(0.25), 10 * bound);
        EXPECT_EQ(s.integrate(3.75, 0.25), -s.integrate(0.25, 3.75));
    }
    const Spline<float> single(SplineKind::natural, std::vector<float>{0, 1, 2, 3},
                               std::vector<float>{0, 1, 4, 9});
    EXPECT_NEAR(single(1.5f), 2.25f, 1e-6f);
}

TEST(CxxSpline, ConditionsHold) {
    const Vector x{0, 1, 2, 4}, y{0, 1, 0, 2};
    const Spline free(SplineKind::natural, x, y, {.end = End::free});
    EXPECT_NEAR(free(0, 2), 0, 1e-14);
    EXPECT_NEAR(free(4, 2), 0, 1e-14);
    const Spline slopes(SplineKind::natural, x, y, {.end = End::slopes, .left = 3, .right = -2});
    EXPECT_NEAR(slopes(0, 1), 3, 1e-14);
    EXPECT_NEAR(slopes(4, 1), -2, 1e-13);
    const Spline mixed(SplineKind::bessel, x, y,
                       {.end = End::curvature_slope, .left = 5, .right = -1});
    EXPECT_NEAR(mixed(0, 2), 5, 1e-13);
    EXPECT_NEAR(mixed(4, 1), -1, 1e-13);
    const Spline right(SplineKind::quadratic, x, y, {.end = End::right_slope, .right = 7});
    EXPECT_NEAR(right(4, 1), 7, 1e-13);
    const Spline left(SplineKind::quadratic, x, y, {.end = End::left_slope, .left = 7});
    EXPECT_NEAR(left(0, 1), 7, 1e-13);
    const Spline periodic(SplineKind::natural, x, Vector{1, 2, 0, 1}, {.end = End::periodic});
    EXPECT_NEAR(periodic(0, 1), periodic(4, 1), 1e-13);
    EXPECT_NEAR(periodic(0, 2), periodic(4, 2), 1e-13);
    // Two breakpoints have no inner one.
    const Spline two(SplineKind::hermite, Vector{0, 1}, Vector{0, 1},
                     {.end = End::slopes, .left = 0, .right = 0});
    EXPECT_NEAR(two(0.5), 0.5, 1e-15);
}

TEST(CxxSpline, RangesCopiesAndMoves) {
    Spline s(SplineKind::akima, x6, values());
    const Vector sites{3, -1, 0.5, 10};
    Vector result(8), slopes(8), integrals(8);
    s.evaluate(sites, result);
    s.evaluate(sites, slopes, 1);
    s.integrate(Vector(4, 0.0), sites, integrals);
    for (std::size_t k = 0; k < 2; ++k) {
        for (std::size_t j = 0; j < 4; ++j) {
            EXPECT_EQ(result[4 * k + j], s(sites[j], 0, k));
            EXPECT_EQ(slopes[4 * k + j], s(sites[j], 1, k));
            EXPECT_EQ(integrals[4 * k + j], s.integrate(0, sites[j], k));
        }
    }
    const Spline copy = s;
    Spline moved = std::move(s);
    EXPECT_EQ(copy(3), moved(3));
    EXPECT_NE(copy.coefficients().data(), moved.coefficients().data());
    EXPECT_EQ(refused([&] { s(1); }), "kef::Spline::operator(): spline");
    EXPECT_EQ(refused([&] { Spline again = s; }), "kef::Spline: spline");
    auto& same = moved;
    moved = std::move(same);
    s = moved;
    moved = s;
    EXPECT_EQ(s.integrate(0, 4), copy.integrate(0, 4));
    // More functions than fit beside the call.
    Vector many;
    for (int k = 0; k < 20; ++k)
        for (const double x : x6) many.push_back(k * x);
    EXPECT_EQ(Spline(SplineKind::linear, x6, many)(1, 0, 19), 19);
    // In place, where there is one function.
    Spline one(SplineKind::natural, x6, Vector(f6));
    Vector in_place = sites;
    one.evaluate(in_place, in_place);
    EXPECT_EQ(in_place[3], one(10));
    EXPECT_EQ(refused([&] { s.evaluate(std::span(result).first(4), result); }),
              "kef::Spline::evaluate: result");
    one.evaluate(std::span<const double>(), std::span<double>());
}

TEST(CxxSpline, SearchesAgree) {
    const Spline s(SplineKind::linear, x6, values());
    const Vector sites{-1, 0, 0.5, 0.75, 3, 4, 5, std::numeric_limits<double>::quiet_NaN()};
    const std::vector<std::int32_t> expected{0, 1, 2, 2, 4, 5, 6, 0};
    for (const Search how : {Search::automatic, Search::uniform, Search::quasi_uniform,
                             Search::hybrid, Search::peak}) {
        std::vector<std::int32_t> cell(8, -1);
        std::vector<std::int64_t> wide(8, -1);
        s.search(sites, cell, how);
        s.search(sites, wide, how);
        EXPECT_EQ(cell, expected);
        EXPECT_TRUE(std::equal(wide.begin(), wide.end(), expected.begin()));
    }
    std::vector<std::int32_t> cell(7);
    s.search(std::span(sites).first(7), cell, Search::sorted, kef::Sites::sorted);
    EXPECT_EQ(cell[6], 6);

    // Proposals are mended; what the proposer throws comes out.
    Vector many(600, 0.75);
    std::vector<std::int64_t> cells(600, -1);
    std::size_t calls = 0;
    s.search(many, cells, [&](std::span<const double> some, std::span<std::int64_t> proposal) {
        EXPECT_LE(some.size(), 256u);
        std::fill(proposal.begin(), proposal.end(), ++calls == 2 ? 5 : 2);
    });
    EXPECT_EQ(calls, 3u);
    EXPECT_EQ(cells, std::vector<std::int64_t>(600, 2));
    cells.assign(600, -1);
    try {
        s.search(many, cells, [](auto, auto) { throw 42; });
        FAIL();
    } catch (int value) { EXPECT_EQ(value, 42); }
    EXPECT_EQ(cells[599], -1);
    EXPECT_EQ(refused([&] { s.search(sites, cells); }), "kef::Spline::search: cell");
    EXPECT_EQ(refused([&] { s.search(many, cells, Search(9)); }), "kef::Spline::search: how");
}

TEST(CxxSpline, RefusesWhatIsWrong) {
    const Vector y6(6, 1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::span<const double> null(static_cast<const double*>(nullptr), 6);
    const auto natural = [](const auto& x, const auto& y, kef::EndCondition<> ends = {}) {
        return refused([&] { Spline(SplineKind::natural, x, y, ends); });
    };
    EXPECT_EQ(natural(Vector{0, 1, 1}, Vector(3)), "kef::Spline: x");
    EXPECT_EQ(natural(Vector{0, 1, nan}, Vector(3)), "kef::Spline: x");
    EXPECT_EQ(natural(Vector{0, 1, HUGE_VAL}, Vector(3)), "kef::Spline: x");
    EXPECT_EQ(natural(Vector{0, 1}, Vector(2)), "kef::Spline: x");
    EXPECT_EQ(natural(Vector{}, Vector{}), "kef::Spline: x");
    EXPECT_EQ(natural(null, y6), "kef::Spline: x");
    EXPECT_EQ(natural(x6, null), "kef::Spline: y");
    EXPECT_EQ(natural(x6, Vector(7)), "kef::Spline: y");
    EXPECT_EQ(natural(x6, Vector{}), "kef::Spline: y");
    EXPECT_EQ(natural(x6, y6, {.end = End::left_slope}), "kef::Spline: ends");
    EXPECT_EQ(natural(x6, y6, {.end = End(3)}), "kef::Spline: ends");
    EXPECT_EQ(natural(x6, y6, {.end = End::slopes, .left = nan}), "kef::Spline: ends");
    EXPECT_EQ(natural(x6, y6, {.end = End::slopes, .right = nan}), "kef::Spline: ends");
    EXPECT_EQ(refused([&] { Spline(SplineKind(99), x6, y6); }), "kef::Spline: kind");
    EXPECT_EQ(refused([&] { Spline(SplineKind::linear, x6, y6, {.end = End::free}); }),
              "kef::Spline: ends");
    EXPECT_EQ(refused([&] { Spline(SplineKind::hermite, x6, y6); }), "kef::Spline: inner");
    EXPECT_EQ(refused([&] { Spline(SplineKind::natural, x6, y6, {}, Vector(4)); }),
              "kef::Spline: inner");
    const Spline s(SplineKind::natural, x6, y6);
    Vector r(3);
    EXPECT_EQ(refused([&] { s(1, -1); }), "kef::Spline::operator(): derivative");
    EXPECT_EQ(refused([&] { s(1, 0, 1); }), "kef::Spline::operator(): function");
    EXPECT_EQ(refused([&] { s.integrate(0, 1, 1); }), "kef::Spline::integrate: function");
    EXPECT_EQ(refused([&] { s.evaluate(x6, r); }), "kef::Spline::evaluate: result");
    EXPECT_EQ(refused([&] { s.evaluate(r, r, 0, kef::Sites(3)); }), "kef::Spline::evaluate: known");
    EXPECT_EQ(refused([&] { s.integrate(r, y6, r); }), "kef::Spline::integrate: right");
}

}  // namespace
