// Observations with weights, their mean and covariance, and how far each is from the mean: what
// robust estimates alternate between.
#pragma once

#include "stats/distance.h"
#include "stats/median_deviation.h"
#include "stats/moments.h"
#include "stats/weighted_moments.h"

namespace kef::stats {

// 1 - R^2 of a variable and those before it, over their number, down to which a covariance is
// taken for singular: what is left of 0 by the rounding of the sums behind it.
inline constexpr double singular = 0x1p-45;

// Where its arrays stand in the task's scratch block, with `more` moments for the caller.
struct ScatterPlaces {
    ScatterPlaces(const Task& task, int more)
        : n(positive_at(task, task.count)),
          p(count_selected(task, positive_at(task, task.dimension))),
          numbers(layout.reserve(n, 2 * sizeof(double))),
          variable(layout.reserve(p, sizeof(std::ptrdiff_t))),
          centre(layout.reserve(p, sizeof(double))),
          selection(SelectionRoom<double>::reserve(layout, n)),
          sums(layout, p),
          factor(Cholesky::reserve(layout, p)),
          tiles(Distances::reserve(layout, p)),
          moments(layout.size()) {
        for (int k = 0; k < more; ++k) Moments::reserve(layout, p);
        step = (layout.size() - moments) / more;
    }
    KeptLayout layout;
    std::ptrdiff_t n, p;  // p: the variables that the indices leave in
    std::uint64_t numbers, variable, centre, selection;
    WeightedMoments::Room sums;
    std::uint64_t factor, tiles, moments, step;
};

template <class T> class Scatter {
public:
    const Observations<T> x;
    const std::ptrdiff_t n, p;
    std::ptrdiff_t* const variable;
    double* const weight;  // n, for the next mean and covariance
    double* const square;  // n squared distances

    // In the scratch block.
    Scatter(const Task& task, const ScatterPlaces& places, char* block)
        : x(observations_of<T>(task)),
          n(places.n),
          p(places.p),
          variable(reinterpret_cast<std::ptrdiff_t*>(block + places.variable)),
          weight(reinterpret_cast<double*>(block + places.numbers)),
          square(weight + n),
          places_(places),
          block_(block),
          centre_(reinterpret_cast<double*>(block + places.centre)),
          sums_(places.sums, block, listed(task, variable), p),
          factor_(block + places.factor, p) {}

    // Moments number k of the caller's.
    Moments moments(int k) const { return Moments(block_ + places_.moments + k * places_.step, p); }
    const Cholesky& factor() const { return factor_; }

    // The medians and, beside the diagonal of 0, (1.4826 MAD)^2. False where x is not finite.
    bool medians(const Moments& to) const {
        const SelectionRoom<T> room(block_ + places_.selection, n);
        constexpr double normal = 1.482602218505602;  // 1/Phi^-1(3/4)
        for (std::ptrdiff_t a = 0; a < p; ++a) {
            const auto [median, deviation, finite] = median_deviation(x, variable[a], n, room);
            if (!finite) return false;
            const double s = normal * deviation;
            to.mean[a] = centre_[a] = median;
            for (std::ptrdiff_t b = 0; b <= a; ++b) to.at(a, b) = b < a ? 0 : s * s;
        }
        return true;
    }

    // Mean and covariance under the weights, products over `divisor`. `centre_` is the last mean.
    void weigh(const Moments& to, double divisor) {
        sums_(x, n, weight, centre_);
        to.set([&](std::ptrdiff_t a) { return centre_[a] = sums_.mean(a); },
               [&](std::ptrdiff_t a, std::ptrdiff_t b) { return sums_.product(a, b) / divisor; });
    }
    double total_weight() const { return sums_.weight(); }

    // Squared distances from a mean by a covariance. False where that is singular.
    bool measure(const Moments& from) {
        if (!factorise(from)) return false;
        measure_by_factor(from.mean);
        return true;
    }
    bool factorise(const Moments& from) {
        return factor_.factor([&](std::ptrdiff_t i, std::ptrdiff_t j) { return from.at(i, j); },
                              singular);
    }
    // Squares of Euclidean distances.
    void measure_plainly(const Moments& from) {
        factor_.factor([](std::ptrdiff_t i, std::ptrdiff_t j) { return double(i == j); }, 0);
        measure_by_factor(from.mean);
    }

    // Weight 1 for the r nearest observations, 0 for the others; of equal ones the first. False
    // where a distance is NaN.
    bool take_nearest(std::ptrdiff_t r) {
        const Range<double> range = range_of(square, n);
        if (range.nan) return false;
        const SelectionRoom<double> room(block_ + places_.selection, n);
        const std::ptrdiff_t rank = r - 1;
        select(square, n, range, Ranks(&rank, &rank + 1), room.out, room.spare);
        const double last = room.out[rank];
        std::ptrdiff_t left = r;
        for (std::ptrdiff_t j = 0; j < n; ++j) {
            weight[j] = square[j] < last;
            left -= square[j] < last;
        }
        for (std::ptrdiff_t j = 0; j < n; ++j)
            if (square[j] == last && left > 0) weight[j] = 1, --left;
        return true;
    }

private:
    static std::ptrdiff_t* listed(const Task& task, std::ptrdiff_t* variable) {
        list_selected(task, positive_at(task, task.dimension), variable);
        return variable;
    }

    void measure_by_factor(const double* mean) {
        Distances(block_ + places_.tiles, factor_, variable, mean)(
            x, 0, n, [&](std::ptrdiff_t first, int m, const double* squares) {
                std::copy_n(squares, m, square + first);
            });
    }

    const ScatterPlaces& places_;
    char* block_;
    double* centre_;
    WeightedMoments sums_;
    Cholesky factor_;
};

}  // namespace kef::stats
