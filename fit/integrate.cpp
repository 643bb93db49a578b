// Integrals of the spline, in double precision for both types.
//
// Inside one cell, from a to b (distances from its left end), without cancellation
// for close limits: (b - a) sum_k c_k/(k+1) sum_{j=0..k} a^j b^(k-j). Over several
// cells: the rest of the first one, the whole ones between, the start of the last
// one, the whole ones summed as an unevaluated pair of doubles.
#include "fit/evaluate.h"

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
            sum.add(whole(cell));
        }
        sums[map_.cells()] = sum;
        sums_ = sums;
    }

    // From `left`, in cell i, to `right` > left, in cell j >= i.
    double between(std::size_t i, T left, std::size_t j, T right) const {
        const double a = double(left) - double(map_.left(i));
        const double b = double(right) - double(map_.left(j));
        // Lengths from the limits themselves: distances between close ones are exact.
        if (i == j) return in_cell(i, a, b, double(right) - double(left));
        const double rest = in_cell(i, a, width(i), double(map_.right(i)) - double(left));
        const double start = in_cell(j, 0, b, b);
        if (sums_ != nullptr) return (rest + start) + sums_[j].minus(sums_[i + 1]);
        Sum sum;
        sum.add(rest);
        for (std::size_t cell = i + 1; cell < j; ++cell) sum.add(whole(cell));
        sum.add(start);
        return sum.value();
    }

private:
    double width(std::size_t cell) const {
        return double(map_.right(cell)) - double(map_.left(cell));
    }
    double whole(std::size_t cell) const {
        const double h = width(cell);
        return in_cell(cell, 0, h, h);
    }
    double in_cell(std::size_t cell, double a, double b, double length) const {
        const T* c = c_ + cell * stride_;
        double sum = c[0], mixed = 1, power = 1;
        for (std::size_t k = 1; k < order_; ++k) {
            power *= a;
            mixed = mixed * b + power;  // sum of a^j b^(k-j)
            sum += double(c[k]) * mixed / double(k + 1);
        }
        return length * sum;
    }

    const CellMap<T>& map_;
    std::size_t order_;
    const T* c_ = nullptr;
    std::size_t stride_ = 0;
    const Sum* sums_ = nullptr;
};

// A block of intervals with the cells of their limits.
template <class T> struct Intervals {
    alignas(16) T left_grid[block_size];
    alignas(16) T right_grid[block_size];
    std::uint32_t left_cell[block_size], right_cell[block_size];
    const T *left, *right;
    std::int64_t from;
    std::uint32_t n;

    // The limits of interval j in ascending order with their cells.
    template <class Use> auto ordered(std::uint32_t j, Use use) const {
        return left[j] <= right[j] ? use(left_cell[j], left[j], right_cell[j], right[j])
                                   : use(right_cell[j], right[j], left_cell[j], left[j]);
    }
};

// Locates the limits block by block, as long as use(block) is true.
template <class T, class Use>
void each_block(const Task& task, const CellMap<T>& map, const Sites<T>& left,
                const Sites<T>& right, Use use) {
    const Partition<T>& partition = map.partition();
    const bool ascending = left.ascending() && right.ascending();
    with_search(task, partition, SearchMethod::automatic, ascending, left.size(), [&](auto search) {
        auto search_right = search;
        Intervals<T> b;
        for (b.from = 0; b.from < left.size(); b.from += block_size) {
            b.n = static_cast<std::uint32_t>(
                std::min<std::int64_t>(block_size, left.size() - b.from));
            b.left = left.block(b.from, b.n, b.left_grid);
            b.right = right.block(b.from, b.n, b.right_grid);
            locate(partition, search, b.left, b.n, b.left_cell);
            locate(partition, search_right, b.right, b.n, b.right_cell);
            for (std::uint32_t j = 0; j < b.n; ++j) {
                b.left_cell[j] = map.cell(b.left_cell[j], b.left[j]);
                b.right_cell[j] = map.cell(b.right_cell[j], b.right[j]);
            }
            if (!use(b)) return;
        }
    });
}

// True if the intervals together span more cells than there are.
template <class T>
bool span_many_cells(const Task& task, const CellMap<T>& map, const Sites<T>& left,
                     const Sites<T>& right) {
    std::size_t cells = 0;
    each_block(task, map, left, right, [&](const Intervals<T>& b) {
        for (std::uint32_t j = 0; j < b.n; ++j)
            cells +=
                b.ordered(j, [](std::size_t i, T, std::size_t j, T) { return j > i ? j - i : 0; });
        return cells <= map.cells();
    });
    return cells > map.cells();
}

template <class T>
std::int32_t integrate(const Task* task, std::int64_t method, std::int64_t nlimit, const T* left,
                       std::int64_t left_hint, const T* right, std::int64_t right_hint, T* result,
                       std::int64_t result_hint) {
    if (task == nullptr) return DF_STATUS_NULL_TASK;
    if (method != 0) return DF_STATUS_METHOD;
    if (nlimit < 0) return DF_STATUS_SITE_COUNT;
    if (!is_site_hint(left_hint) || !is_site_hint(right_hint)) return DF_STATUS_SITE_HINT;
    if (nlimit > 0 && (left == nullptr || right == nullptr)) return DF_STATUS_SITES;
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
        each_block(*task, map, lefts, rights, [&](const Intervals<T>& b) {
            for (std::uint32_t j = 0; j < b.n; ++j) {
                double integral = b.left[j] == b.right[j] ? 0 : b.ordered(j, [&](auto... limits) {
                    return integrator.between(limits...);
                });
                if (b.left[j] > b.right[j]) integral = -integral;
                const std::size_t at = static_cast<std::size_t>(b.from) + j;
                result[columns ? at * ny + f : f * n + at] = static_cast<T>(integral);
            }
            return true;
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
