// Integrals of the spline, in double precision for both types.
//
// Inside one cell, from a to b (distances from its left end), without cancellation
// for close limits: (b - a) sum_k c_k/(k+1) sum_{j=0..k} a^j b^(k-j). Over several
// cells: the rest of the first one, the whole ones between, the start of the last
// one, the whole ones summed as an unevaluated pair of doubles.
#include <algorithm>
#include <cmath>

#include "fit/evaluate.h"
#include "service/alloc.h"
#include "vm/core/scaling.h"

namespace kef::fit {

namespace {

// A sum carried as high + low.
struct Sum {
    double high = 0, low = 0;

    void add(double v) {  // Knuth's two-sum
        const double sum = high + v, part = sum - high;
        low += (high - (sum - part)) + (v - part);
        high = sum;
    }
    double minus(const Sum& other) const { return (high - other.high) + (low - other.low); }
    double value() const { return high + low; }
};

template <class T> class Integrator {
public:
    Integrator(const Task& task, const CellMap<T>& map)
        : map_(map), order_(static_cast<std::size_t>(task.order)) {}

    void select(const Coefficients<T>& c) { c_ = c.first, stride_ = c.stride; }

    // Running sums before each cell, into an array of cells + 1.
    void make_running_sums(Sum* sums) {
        Sum sum;
        for (std::size_t cell = 0; cell < map_.cells(); ++cell) {
            sums[cell] = sum;
            sum.add(whole<0>(cell));
        }
        sums[map_.cells()] = sum;
        sums_ = sums;
    }

    // From `left`, in cell i, to `right` > left, in cell j >= i. Where a length, a power of it or a
    // part of the sum overflows, once more in a large unit.
    double between(std::size_t i, T left, std::size_t j, T right) const {
        const double integral = between<0>(i, left, j, right, sums_);
        if (integral - integral == 0) [[likely]]
            return integral;
        return vm::scaled(between<large_unit>(i, left, j, right, nullptr), large_unit);
    }

private:
    // Units of length by their binary logarithm.
    static constexpr int large_unit = 60;

    // In this unit of length, from running sums if there are any.
    template <int unit>
    double between(std::size_t i, T left, std::size_t j, T right, const Sum* sums) const {
        const double a = distance<unit>(map_.left(i), left),
                     b = distance<unit>(map_.left(j), right);
        // Lengths from the limits themselves: distances between close ones are exact.
        if (i == j) return in_cell<unit>(i, a, b, distance<unit>(left, right));
        const double rest = in_cell<unit>(i, a, distance<unit>(map_.left(i), map_.right(i)),
                                          distance<unit>(left, map_.right(i)));
        const double start = in_cell<unit>(j, 0, b, b);
        if (sums != nullptr) return (rest + start) + sums[j].minus(sums[i + 1]);
        Sum sum;
        sum.add(rest);
        for (std::size_t cell = i + 1; cell < j; ++cell) sum.add(whole<unit>(cell));
        sum.add(start);
        return sum.value();
    }
    template <int unit> static double distance(T from, T to) {
        constexpr double scale = 1.0 / double(UINT64_C(1) << unit);
        return double(to) * scale - double(from) * scale;
    }
    template <int unit> double whole(std::size_t cell) const {
        const double h = distance<unit>(map_.left(cell), map_.right(cell));
        return in_cell<unit>(cell, 0, h, h);
    }
    template <int unit> double in_cell(std::size_t cell, double a, double b, double length) const {
        const T* c = c_ + cell * stride_;
        if constexpr (unit == 0)
            return length * average(a, b, [&](std::size_t k) { return double(c[k]); });
        // By distances of at most 1: powers of the others could overflow.
        const double size = std::max(std::fabs(a), std::fabs(b));
        const int e = size - size == 0 && size > 0 ? vm::exponent_of(size) + 1 : 0;
        return length * average(vm::scaled(a, -e), vm::scaled(b, -e), [&](std::size_t k) {
                   const std::int64_t exponent = std::int64_t(k) * (e + unit);
                   return vm::scaled(double(c[k]),
                                     int(std::clamp<std::int64_t>(exponent, -9999, 9999)));
               });
    }
    // Of the polynomial of the coefficients c(k), from a to b.
    template <class C> double average(double a, double b, C c) const {
        double sum = c(0), mixed = 1, power = 1;
        for (std::size_t k = 1; k < order_; ++k) {
            power *= a;
            mixed = mixed * b + power;  // sum of a^j b^(k-j)
            sum += c(k) * mixed / double(k + 1);
        }
        return sum;
    }

    const CellMap<T>& map_;
    std::size_t order_;
    const T* c_ = nullptr;
    std::size_t stride_ = 0;
    const Sum* sums_ = nullptr;
};

// The left and the right limits of a block of intervals, located.
template <class T, class Search> class Intervals {
public:
    Intervals(const CellMap<T>& map, const Search& search, const Sites<T>& left,
              const Sites<T>& right)
        : map_(map), left_(map.partition(), search, left), right_(map.partition(), search, right) {}

    bool next() { return left_.next() && right_.next(); }
    std::uint32_t size() const { return left_.n; }
    std::size_t from() const { return static_cast<std::size_t>(left_.from); }
    T left(std::uint32_t j) const { return left_.site[j]; }
    T right(std::uint32_t j) const { return right_.site[j]; }

    // Hands the limits of interval j in ascending order, each behind its cell, to `use`.
    template <class Use> auto ordered(std::uint32_t j, Use use) const {
        const T a = left(j), b = right(j);
        const std::size_t i = map_.cell(left_.cell[j], a), k = map_.cell(right_.cell[j], b);
        return a <= b ? use(i, a, k, b) : use(k, b, i, a);
    }

private:
    const CellMap<T>& map_;
    Located<T, Search> left_, right_;
};

// Calls use(intervals) once.
template <class T, class Use>
void with_intervals(const Task& task, const CellMap<T>& map, const Sites<T>& left,
                    const Sites<T>& right, Use use) {
    with_search(task, map.partition(), SearchMethod::automatic,
                left.ascending() && right.ascending(), left.size(),
                [&]<class Search>(const Search& search) {
                    Intervals<T, Search> intervals(map, search, left, right);
                    use(intervals);
                });
}

// True if the intervals together span more cells than there are.
template <class T>
bool span_many_cells(const Task& task, const CellMap<T>& map, const Sites<T>& left,
                     const Sites<T>& right) {
    std::size_t cells = 0;
    with_intervals(task, map, left, right, [&](auto& b) {
        while (cells <= map.cells() && b.next())
            for (std::uint32_t j = 0; j < b.size(); ++j)
                cells += b.ordered(
                    j, [](std::size_t i, T, std::size_t k, T) { return k > i ? k - i : 0; });
    });
    return cells > map.cells();
}

template <class T>
std::int32_t integrate(const Task* task, std::int64_t method, std::int64_t nlimit, const T* left,
                       std::int64_t left_hint, const T* right, std::int64_t right_hint, T* result,
                       std::int64_t result_hint) {
    if (const std::int32_t status = check_precision<T>(task)) return status;
    if (method != 0) return DF_STATUS_METHOD;
    if (const std::int32_t status = check_sites(nlimit, {left_hint, right_hint}, {left, right}))
        return status;
    if (nlimit > 0 && result == nullptr) return DF_STATUS_RESULTS;
    if (!is_result_hint(result_hint)) return DF_STATUS_RESULT_HINT;
    if (const std::int32_t status = check_spline<T>(*task)) return status;
    if (nlimit == 0) return DF_STATUS_OK;

    const Sites<T> lefts(left, nlimit, left_hint), rights(right, nlimit, right_hint);
    const CellMap<T> map(*task);
    Sum* sums = nullptr;  // without memory for them, cell by cell
    if (span_many_cells(*task, map, lefts, rights))
        sums = static_cast<Sum*>(allocate_aligned((map.cells() + 1) * sizeof(Sum)));
    const auto ny = static_cast<std::size_t>(task->ny), n = static_cast<std::size_t>(nlimit);
    const bool columns = result_hint == DF_BY_COLUMNS;
    for (std::size_t f = 0; f < ny; ++f) {
        Integrator<T> integrator(*task, map);
        integrator.select(Coefficients<T>(*task, f, static_cast<std::size_t>(task->order)));
        if (sums != nullptr) integrator.make_running_sums(sums);
        with_intervals(*task, map, lefts, rights, [&](auto& b) {
            while (b.next()) {
                for (std::uint32_t j = 0; j < b.size(); ++j) {
                    const T a = b.left(j), z = b.right(j);
                    double integral = a == z ? 0 : b.ordered(j, [&](auto... limits) {
                        return integrator.between(limits...);
                    });
                    if (a > z) integral = -integral;
                    const std::size_t at = b.from() + j;
                    result[columns ? at * ny + f : f * n + at] = static_cast<T>(integral);
                }
            }
        });
    }
    free_aligned(sums);
    return DF_STATUS_OK;
}

}  // namespace

}  // namespace kef::fit

using namespace kef::fit;

#define KEF_DF_INTEGRATE(letter, T)                                                                \
    int32_t kef_df_kernel_##letter##DFIntegrate1D(                                                 \
        const kef_df_task* task, int64_t method, int64_t nlimit, const T* left, int64_t left_hint, \
        const T* right, int64_t right_hint, T* result, int64_t result_hint) {                      \
        return integrate(task, method, nlimit, left, left_hint, right, right_hint, result,         \
                         result_hint);                                                             \
    }
KEF_DF_INTEGRATE(d, double)
KEF_DF_INTEGRATE(s, float)
