/// Splines of one variable: values, derivatives, integrals and cells of one or several functions
/// over common breakpoints.
///
///   kef::Spline s(kef::SplineKind::natural, x, y);     y: one function after another
///   s(2.5)                                             a value of the first function
///   s.evaluate(sites, values);                         of all functions
///   s.integrate(0.0, 1.0)
///
/// docs/fitting.md has formulas and sources. Status codes of the library are thrown as
/// kef::StatusError, wrong arguments as kef::ArgumentError.
#ifndef KEF_SPLINE_HPP
#define KEF_SPLINE_HPP

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <memory>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kef/error.hpp"
#include "kef/vm.hpp"
#include "kef_fit.h"

namespace kef {

/// Which spline goes through the values.
enum class SplineKind {
    linear,
    quadratic,  ///< knots are the breakpoints; one condition
    subbotin,   ///< quadratic with knots between the breakpoints
    natural,    ///< cubic, twice differentiable
    akima,      ///< cubic, slopes from four neighbouring chords
    bessel,     ///< cubic, slopes of parabolas through three neighbours
    hermite,    ///< cubic of given slopes at the inner breakpoints
    curvatures  ///< cubic of given second derivatives at the inner breakpoints
};

/// What holds at the ends.
enum class End : std::int64_t {
    standard = DF_NO_CONDITIONS,  ///< the kind's own rule; not_a_knot for those that have none
    not_a_knot = DF_NOT_A_KNOT,
    free = DF_FREE_END,          ///< second derivatives 0
    periodic = DF_PERIODIC,      ///< hermite and curvatures: left is the common slope or curvature
    left_slope = DF_LEFT_FIRST,  ///< one value, for the quadratic spline; so the next three
    right_slope = DF_RIGHT_FIRST,
    left_curvature = DF_LEFT_SECOND,
    right_curvature = DF_RIGHT_SECOND,
    slopes = DF_FIRST_FIRST,  ///< two values, left and right; so the next three
    curvatures = DF_SECOND_SECOND,
    slope_curvature = DF_FIRST_SECOND,
    curvature_slope = DF_SECOND_FIRST
};

/// A condition at the ends with its values, the same for all functions.
template <std::floating_point T = double> struct EndCondition {
    End end = End::standard;
    T left = 0, right = 0;  ///< where there is one value it is the one of its side
};

/// What is known about sites. It is about speed: results do not depend on it.
enum class Sites : std::int64_t { any_order = DF_ANY_ORDER, sorted = DF_SORTED };

/// Ways to search a cell; they differ in what they are fast for.
enum class Search { automatic, sorted, uniform, quasi_uniform, hybrid, peak };

namespace detail {

inline Checker spline_argument(const char* function) {
    return {Family::splines, DF_STATUS_PARAMETER, function};
}

}  // namespace detail

/// A spline with breakpoints, values and coefficients of its own. It does not change: threads may
/// share it. An object that was moved from takes assignment and destruction, anything else throws.
template <std::floating_point T = double> class Spline {
public:
    using value_type = T;

    /// Through nx values of each function at nx finite, ascending breakpoints; y holds one function
    /// after another. inner: what the kinds hermite and curvatures are given at x_1 .. x_{nx-2},
    /// for all functions.
    template <detail::vector_of<T> X, detail::vector_of<T> Y>
    Spline(SplineKind kind, X&& x, Y&& y, std::type_identity_t<EndCondition<T>> ends = {},
           std::span<const std::type_identity_t<T>> inner = {})
        : state_(std::make_unique<State>(kind, view(x), view(y), ends, inner)) {}
    Spline(const Spline& other) : state_(std::make_unique<State>(other.state("kef::Spline"))) {}
    Spline(Spline&&) noexcept = default;
    Spline& operator=(const Spline& other) {
        if (this != &other) *this = Spline(other);
        return *this;
    }
    Spline& operator=(Spline&& other) noexcept {
        if (this != &other) state_ = std::move(other.state_);
        return *this;
    }

    SplineKind kind() const { return state("kef::Spline::kind").kind; }
    std::size_t functions() const { return state("kef::Spline::functions").ny; }
    std::span<const T> breakpoints() const { return state("kef::Spline::breakpoints").x; }
    /// Coefficients of a cell: order(), of ascending powers of the distance from its left end.
    std::size_t order() const { return std::size_t(state("kef::Spline::order").order); }
    std::size_t cells() const { return state("kef::Spline::cells").cells(); }
    /// function after function, cell after cell.
    std::span<const T> coefficients() const {
        return state("kef::Spline::coefficients").coefficients;
    }

    /// The value, or a derivative, of one function at one site. Outside the breakpoints the
    /// polynomials of the end cells go on.
    T operator()(T site, int derivative = 0, std::size_t function = 0) const {
        const State& s = state("kef::Spline::operator()");
        const detail::Checker check = detail::spline_argument("kef::Spline::operator()");
        check.require(function < s.ny, "function", "is not below functions()");
        T few[8];
        std::vector<T> many(s.ny > 8 ? s.ny : 0);
        T* const result = s.ny > 8 ? many.data() : few;
        s.interpolate(check, {&site, 1}, Sites::any_order, derivative, result);
        return result[function];
    }
    /// Values, or a derivative, at all sites: result[function * sites + site]. The result of one
    /// function may take the place of the sites.
    template <detail::vector_of<T> S, detail::output_of<T> R>
    void evaluate(S&& sites, R&& result, int derivative = 0, Sites known = Sites::any_order) const {
        const State& s = state("kef::Spline::evaluate");
        const detail::Checker check = detail::spline_argument("kef::Spline::evaluate");
        const std::size_t n = detail::size_of(sites);
        s.check_result(check, detail::place(sites, "sites"), detail::place(result, "result"), n);
        s.interpolate(check, view(sites), known, derivative, std::ranges::data(result));
    }

    /// The integral of one function from a to b; b < a gives minus that from b to a.
    T integrate(T a, T b, std::size_t function = 0) const {
        const State& s = state("kef::Spline::integrate");
        const detail::Checker check = detail::spline_argument("kef::Spline::integrate");
        check.require(function < s.ny, "function", "is not below functions()");
        std::vector<T> result(s.ny);
        s.integrate(check, {&a, 1}, {&b, 1}, result.data());
        return result[function];
    }
    /// Integrals from left[j] to right[j]: result[function * intervals + j].
    template <detail::vector_of<T> L, detail::vector_of<T> U, detail::output_of<T> R>
    void integrate(L&& left, U&& right, R&& result) const {
        const State& s = state("kef::Spline::integrate");
        const detail::Checker check = detail::spline_argument("kef::Spline::integrate");
        const std::size_t n = detail::size_of(left);
        check.require_size(detail::size_of(right), n, "right");
        s.check_result(check, detail::place(left, "left"), detail::place(result, "result"), n);
        s.check_result(check, detail::place(right, "right"), detail::place(result, "result"), n);
        s.integrate(check, view(left), view(right), std::ranges::data(result));
    }

    /// The number of breakpoints that do not exceed each site, one at the last breakpoint counting
    /// as inside: 0 left of them (and for NaN), cell + 1 inside, nx right of them.
    template <detail::vector_of<T> S, detail::output R>
    requires detail::integers<R>
    void search(S&& sites, R&& cell, Search how = Search::automatic,
                Sites known = Sites::any_order) const {
        const State& s = state("kef::Spline::search");
        const detail::Checker check = detail::spline_argument("kef::Spline::search");
        check_cells(check, sites, cell);
        using Cell = detail::element_of<R>;
        s.search(check, view(sites), std::span<Cell>(cell), how, known);
    }
    /// The same by a function of the caller's, propose(sites, cells), which is given at most 256 of
    /// them at a time and proposes their cells; a proposal that does not hold is mended. What it
    /// throws leaves the call, and cells behind are not written.
    template <detail::vector_of<T> S, detail::output R, class Propose>
    requires detail::integers<R> &&
        std::invocable<Propose&, std::span<const T>, std::span<std::int64_t>>
    void search(S&& sites, R&& cell, Propose&& propose, Sites known = Sites::any_order) const {
        const State& s = state("kef::Spline::search");
        const detail::Checker check = detail::spline_argument("kef::Spline::search");
        check_cells(check, sites, cell);
        using Cell = detail::element_of<R>;
        s.search_by(check, view(sites), std::span<Cell>(cell), propose, known);
    }

private:
    template <class R> static std::span<const T> view(const R& range) {
        return {std::ranges::data(range), detail::size_of(range)};
    }
    template <class S, class R>
    static void check_cells(const detail::Checker& check, const S& sites, const R& cell) {
        const detail::Place read = detail::place(sites, "sites"),
                            written = detail::place(cell, "cell");
        check.require_size(written.size, read.size, "cell");
        check.require(!read.null(), "sites", "is null");
        check.require(!written.null(), "cell", "is null");
        check.require(!written.meets(read), "cell", "overlaps sites");
    }

    // A task with what it points to. It stays where it is.
    struct State {
        SplineKind kind;
        std::vector<T> x, y;
        std::size_t ny;
        std::int64_t order;
        std::vector<T> coefficients;
        kef_df_task* task = nullptr;

        State(SplineKind which, std::span<const T> breakpoints, std::span<const T> values,
              const EndCondition<T>& ends, std::span<const T> inner)
            : kind(which) {
            const detail::Checker check = detail::spline_argument("kef::Spline");
            check.require_data(breakpoints, "x");
            check.require_data(values, "y");
            check.require_data(inner, "inner");
            const std::size_t nx = breakpoints.size();
            const bool is_subbotin = kind == SplineKind::subbotin;
            check.require(kind >= SplineKind::linear && kind <= SplineKind::curvatures, "kind",
                          "is not one of SplineKind");
            const bool three = is_subbotin || kind == SplineKind::natural;
            check.require(nx >= (three ? 3 : 2), "x", "has too few breakpoints");
            check.require(nx < std::size_t(1) << 31, "x", "has 2^31 breakpoints or more");
            for (std::size_t i = 0; i < nx; ++i) {
                if (!std::isfinite(breakpoints[i]))
                    check.refuse("x", "is not finite at " + std::to_string(i));
                if (i > 0 && !(breakpoints[i] > breakpoints[i - 1]))
                    check.refuse("x", "does not ascend at " + std::to_string(i));
            }
            if (values.empty() || values.size() % nx != 0)
                check.refuse("y", "has " + std::to_string(values.size()) +
                                      " elements, not a multiple of " + std::to_string(nx) +
                                      " breakpoints");
            check.require_size(inner.size(), inner_type() != 0 ? nx - 2 : 0, "inner");
            check.require(allowed(kind, ends.end), "ends", "is no condition of this kind");
            const auto finite = [&](bool is_read, T value) {
                check.require(!is_read || std::isfinite(value), "ends", "has a value not finite");
            };
            const std::int64_t bits = std::int64_t(ends.end);
            finite((bits & (DF_LEFT_FIRST | DF_LEFT_SECOND)) ||
                       (ends.end == End::periodic && inner_type() != 0),
                   ends.left);
            finite(bits & (DF_RIGHT_FIRST | DF_RIGHT_SECOND), ends.right);

            x.assign(breakpoints.begin(), breakpoints.end());
            y.assign(values.begin(), values.end());
            ny = y.size() / nx;
            order = kind == SplineKind::linear                     ? DF_LINEAR
                    : is_subbotin || kind == SplineKind::quadratic ? DF_QUADRATIC
                                                                   : DF_CUBIC;
            coefficients.resize(ny * cells() * std::size_t(order));
            construct(check, ends, inner);
        }
        State(const State& other)
            : kind(other.kind),
              x(other.x),
              y(other.y),
              ny(other.ny),
              order(other.order),
              coefficients(other.coefficients) {
            make_task(detail::spline_argument("kef::Spline"), 0, nullptr, 0, nullptr);
        }
        State& operator=(const State&) = delete;
        ~State() {
            if (task) kef_df_kernel_DeleteTask(&task);
        }
        std::size_t cells() const { return kind == SplineKind::subbotin ? x.size() : x.size() - 1; }

        // The conditions that the constructors of the C interface take.
        static bool allowed(SplineKind kind, End end) {
            const bool both = end == End::not_a_knot || end == End::free || end == End::slopes ||
                              end == End::curvatures || end == End::slope_curvature ||
                              end == End::curvature_slope;
            switch (kind) {
                case SplineKind::linear: return end == End::standard;
                case SplineKind::quadratic:
                    return end == End::standard || end == End::not_a_knot ||
                           end == End::left_slope || end == End::right_slope ||
                           end == End::left_curvature || end == End::right_curvature;
                default: return end == End::standard || both || end == End::periodic;
            }
        }
        std::int64_t inner_type() const {
            return kind == SplineKind::hermite      ? DF_INTERNAL_FIRST
                   : kind == SplineKind::curvatures ? DF_INTERNAL_SECOND
                                                    : 0;
        }
        static std::int64_t type_of(SplineKind kind) {
            switch (kind) {
                case SplineKind::subbotin: return DF_TYPE_SUBBOTIN;
                case SplineKind::natural: return DF_TYPE_NATURAL;
                case SplineKind::akima: return DF_TYPE_AKIMA;
                case SplineKind::bessel: return DF_TYPE_BESSEL;
                case SplineKind::hermite: return DF_TYPE_HERMITE;
                default: return DF_TYPE_DEFAULT;
            }
        }
        void make_task(const detail::Checker& check, std::int64_t end, const T* end_values,
                       std::int64_t inner, const T* inner_values) {
            check.status(detail::by_type<T>(kef_df_kernel_sNewTask1D, kef_df_kernel_dNewTask1D)(
                &task, std::int64_t(x.size()), x.data(), DF_NON_UNIFORM, std::int64_t(ny), y.data(),
                DF_BY_ROWS, 1));
            const std::int32_t status =
                detail::by_type<T>(kef_df_kernel_sEditPPSpline1D, kef_df_kernel_dEditPPSpline1D)(
                    task, order, type_of(kind), end, end_values, inner, inner_values,
                    coefficients.data(), DF_BY_ROWS);
            settle(check, status);
        }
        // A constructor that throws has no destructor behind it.
        void settle(const detail::Checker& check, std::int32_t status) {
            if (status < 0) kef_df_kernel_DeleteTask(&task);
            check.status(status);
        }
        void construct(const detail::Checker& check, const EndCondition<T>& ends,
                       std::span<const T> inner) {
            const bool own_rule = kind == SplineKind::linear || kind == SplineKind::quadratic ||
                                  kind == SplineKind::akima || kind == SplineKind::bessel;
            const End end = ends.end == End::standard && !own_rule ? End::not_a_knot : ends.end;
            const bool right_alone = end == End::right_slope || end == End::right_curvature;
            const T values[2] = {right_alone ? ends.right : ends.left, ends.right};
            const T none = 0;  // two breakpoints have no inner one
            make_task(check, std::int64_t(end), values, inner_type(),
                      inner_type() == 0 ? nullptr
                      : inner.empty()   ? &none
                                        : inner.data());
            settle(check, constructor()(task, 0));
            // The conditions are the caller's: nobody reads them from here on.
        }
        auto constructor() const {
            using detail::by_type;
            switch (kind) {
                case SplineKind::linear:
                    return by_type<T>(kef_df_kernel_sDFLinearSpline1D,
                                      kef_df_kernel_dDFLinearSpline1D);
                case SplineKind::quadratic:
                case SplineKind::subbotin:
                    return by_type<T>(kef_df_kernel_sDFQuadraticSpline1D,
                                      kef_df_kernel_dDFQuadraticSpline1D);
                case SplineKind::natural:
                    return by_type<T>(kef_df_kernel_sDFNaturalCubicSpline1D,
                                      kef_df_kernel_dDFNaturalCubicSpline1D);
                case SplineKind::akima:
                    return by_type<T>(kef_df_kernel_sDFAkimaCubicSpline1D,
                                      kef_df_kernel_dDFAkimaCubicSpline1D);
                case SplineKind::bessel:
                    return by_type<T>(kef_df_kernel_sDFBesselCubicSpline1D,
                                      kef_df_kernel_dDFBesselCubicSpline1D);
                case SplineKind::hermite:
                    return by_type<T>(kef_df_kernel_sDFHermiteCubicSpline1D,
                                      kef_df_kernel_dDFHermiteCubicSpline1D);
                default:
                    return by_type<T>(kef_df_kernel_sDFDefaultCubicSpline1D,
                                      kef_df_kernel_dDFDefaultCubicSpline1D);
            }
        }

        void check_result(const detail::Checker& check, const detail::Place& read,
                          const detail::Place& result, std::size_t n) const {
            check.require(!read.null(), read.name, "is null");
            check.require_size(result.size, n * ny, "result");
            check.require(!result.null(), "result", "is null");
            check.require(ny == 1 ? !result.overlaps(read) : !result.meets(read), "result",
                          "overlaps what is read");
        }
        void interpolate(const detail::Checker& check, std::span<const T> sites, Sites known,
                         int derivative, T* result) const {
            require_known(check, known);
            check.require(derivative >= 0, "derivative", "is negative");
            // From the order of the spline on they are all 0.
            std::int64_t flags[DF_CUBIC + 1] = {};
            const int last = derivative < DF_CUBIC ? derivative : DF_CUBIC;
            flags[last] = 1;
            if (sites.empty()) return;
            check.status(
                detail::by_type<T>(kef_df_kernel_sDFInterpolate1D, kef_df_kernel_dDFInterpolate1D)(
                    task, DF_SPLINE, std::int64_t(sites.size()), sites.data(), std::int64_t(known),
                    last + 1, flags, result, DF_BY_ROWS, nullptr));
        }
        void integrate(const detail::Checker& check, std::span<const T> left,
                       std::span<const T> right, T* result) const {
            if (left.empty()) return;
            check.status(
                detail::by_type<T>(kef_df_kernel_sDFIntegrate1D, kef_df_kernel_dDFIntegrate1D)(
                    task, 0, std::int64_t(left.size()), left.data(), DF_ANY_ORDER, right.data(),
                    DF_ANY_ORDER, result, DF_BY_ROWS));
        }
        template <class Cell>
        void search(const detail::Checker& check, std::span<const T> sites, std::span<Cell> cell,
                    Search how, Sites known) const {
            require_known(check, known);
            check.require(how >= Search::automatic && how <= Search::peak, "how",
                          "is not one of Search");
            if (sites.empty()) return;
            check.status(searcher<Cell>(how)(task, std::int64_t(sites.size()), sites.data(),
                                             std::int64_t(known), cell.data()));
        }
        template <class Cell> static auto searcher(Search how) {
            const auto of = [](auto s, auto s32, auto d, auto d32) {
                if constexpr (sizeof(Cell) == 4) return detail::by_type<T>(s32, d32);
                else return detail::by_type<T>(s, d);
            };
#define KEF_SEARCH(name)                                                       \
    of(kef_df_kernel_sDF##name##Search1D, kef_df_kernel_sDF##name##Search1D32, \
       kef_df_kernel_dDF##name##Search1D, kef_df_kernel_dDF##name##Search1D32)
            switch (how) {
                case Search::sorted: return KEF_SEARCH(Sorted);
                case Search::uniform: return KEF_SEARCH(Uniform);
                case Search::quasi_uniform: return KEF_SEARCH(QuasiUniform);
                case Search::hybrid: return KEF_SEARCH(Hybrid);
                case Search::peak: return KEF_SEARCH(Peak);
                default: return KEF_SEARCH();
            }
#undef KEF_SEARCH
        }
        template <class Cell, class Propose>
        void search_by(const detail::Checker& check, std::span<const T> sites, std::span<Cell> cell,
                       Propose& propose, Sites known) const {
            require_known(check, known);
            if (sites.empty()) return;
            struct Caller {
                Propose& propose;
                std::exception_ptr failure = nullptr;
                static std::int32_t call(const kef_df_task*, std::int64_t n, const T* site,
                                         std::int64_t* proposal, void* user) noexcept {
                    Caller& caller = *static_cast<Caller*>(user);
                    try {
                        caller.propose(std::span<const T>(site, std::size_t(n)),
                                       std::span<std::int64_t>(proposal, std::size_t(n)));
                        return DF_STATUS_OK;
                    } catch (...) {
                        caller.failure = std::current_exception();
                        return DF_STATUS_SEARCH_FUNCTION;
                    }
                }
            } caller{propose};
            const auto searcher = [] {
                if constexpr (sizeof(Cell) == 4)
                    return detail::by_type<T>(kef_df_kernel_sDFUserDefSearch1D32,
                                              kef_df_kernel_dDFUserDefSearch1D32);
                else
                    return detail::by_type<T>(kef_df_kernel_sDFUserDefSearch1D,
                                              kef_df_kernel_dDFUserDefSearch1D);
            }();
            const std::int32_t status =
                searcher(task, std::int64_t(sites.size()), sites.data(), std::int64_t(known),
                         cell.data(), Caller::call, &caller);
            if (caller.failure) std::rethrow_exception(caller.failure);
            check.status(status);
        }
        static void require_known(const detail::Checker& check, Sites known) {
            check.require(known == Sites::any_order || known == Sites::sorted, "known",
                          "is not one of Sites");
        }
    };
    const State& state(const char* function) const {
        detail::spline_argument(function).require(state_ != nullptr, "spline", "was moved from");
        return *state_;
    }

    std::unique_ptr<State> state_;
};
template <class X, class... More>
Spline(SplineKind, X&&, More&&...) -> Spline<std::ranges::range_value_t<X>>;

}  // namespace kef

#endif
