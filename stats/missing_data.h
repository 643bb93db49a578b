// Observations with missing values, NaN: those that lack some, sorted by what they lack, and the
// moments of the complete ones.
#pragma once

#include <algorithm>

#include "stats/checks.h"
#include "stats/moments.h"
#include "stats/weighted_moments.h"

namespace kef::stats {

// What has to be known before there is memory.
struct MissingCounts {
    std::ptrdiff_t n, p;      // observations; variables that the indices leave in
    std::ptrdiff_t rows = 0;  // observations with missing values
    std::int64_t values = 0;  // missing values
    template <class T> static MissingCounts of(const Task& task) {
        const std::ptrdiff_t all = positive_at(task, task.dimension);
        MissingCounts c = {positive_at(task, task.count), count_selected(task, all)};
        const auto x = observations_of<T>(task);
        for (std::ptrdiff_t j = 0; j < c.n; ++j) {
            std::int64_t missing = 0;
            for (std::ptrdiff_t i = 0; i < all; ++i)
                if (const T value = *x.at(i, j); value != value) missing += is_selected(task, i);
            c.rows += missing > 0;
            c.values += missing;
        }
        return c;
    }
};

template <class T> class MissingData {
    using Word = std::uint64_t;
    static constexpr std::ptrdiff_t bits = 64;

public:
    class Room {
    public:
        Room(KeptLayout& layout, const MissingCounts& c)
            : variable_(layout.reserve(c.p, sizeof(std::ptrdiff_t), 2)),
              centre_(layout.reserve(c.p, sizeof(double))),
              rows_(layout.reserve(c.rows, stride_of(c.p) * sizeof(double))),
              observation_(layout.reserve(c.rows, sizeof(std::ptrdiff_t), 3)),
              mask_(layout.reserve(c.rows, words_of(c.p) * sizeof(Word))),
              tile_(layout.reserve(short_tile, stride_of(c.p) * sizeof(double))),
              sums_(layout, c.p) {}

    private:
        friend MissingData;
        std::uint64_t variable_, centre_, rows_, observation_, mask_, tile_;
        WeightedMoments::Room sums_;
    };

    const MissingCounts counts;
    std::ptrdiff_t* const variable;
    // What has been taken off all data: the means of the values that there are.
    double* const centre;

    MissingData(const Task& task, const MissingCounts& counts, const Room& room, char* block)
        : counts(counts),
          variable(reinterpret_cast<std::ptrdiff_t*>(block + room.variable_)),
          centre(reinterpret_cast<double*>(block + room.centre_)),
          x_(observations_of<T>(task)),
          rows_(reinterpret_cast<double*>(block + room.rows_)),
          observation_(reinterpret_cast<std::ptrdiff_t*>(block + room.observation_)),
          before_(observation_ + counts.rows),
          order_(before_ + counts.rows),
          mask_(reinterpret_cast<Word*>(block + room.mask_)),
          tile_(reinterpret_cast<double*>(block + room.tile_)),
          sums_(room.sums_, block, identity(variable + counts.p), counts.p) {
        list_selected(task, positive_at(task, task.dimension), variable);
    }

    // Mean and variance of the values of each variable that there are: the mean becomes the centre.
    // False where there are fewer than 2.
    bool available(double* variance) {
        for (std::ptrdiff_t a = 0; a < counts.p; ++a) {
            double sum = 0, square = 0, n = 0;
            for_each_value(a, [&](double x) { sum += x, ++n; });
            if (n < 2) return false;
            centre[a] = sum / n;
            sum = 0;
            for_each_value(a, [&](double x) { sum += x - centre[a]; });
            centre[a] += sum / n;
            for_each_value(a, [&](double x) { square += (x - centre[a]) * (x - centre[a]); });
            variance[a] = square / n;
        }
        return true;
    }

    // Reads x: the moments of the complete observations around the centre, and the others sorted.
    void read(const Moments& complete) {
        std::fill_n(tile_, stride(), 0);
        sums_.start(tile_);
        std::ptrdiff_t row = 0, missing = 0;
        int filled = 0;
        const auto flush = [&] {
            sums_.add(Observations<double>{tile_, 1, stride()}, filled);
            filled = 0;
        };
        for (std::ptrdiff_t j = 0; j < counts.n; ++j) {
            double* const y = tile_ + filled * stride();
            Word* const mask = mask_ + row * words();
            const std::ptrdiff_t before = missing;
            for (std::ptrdiff_t a = 0; a < counts.p; ++a) {
                const double value = *x_.at(variable[a], j);
                y[a] = value - centre[a];
                if (value == value) continue;
                if (missing++ == before) std::fill_n(mask, words(), Word(0));
                mask[a / bits] |= Word(1) << a % bits;
            }
            if (missing == before) {
                if (++filled == short_tile) flush();
            } else {
                observation_[row] = j;
                before_[row] = before;
                order_[row] = row;
                ++row;
            }
        }
        flush();
        take(complete);
        std::sort(order_, order_ + row, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
            const Word *u = mask_ + i * words(), *v = mask_ + k * words();
            const int d = std::memcmp(u, v, words() * sizeof(Word));
            return d != 0 ? d < 0 : i < k;
        });
        for (std::ptrdiff_t k = 0; k < row; ++k)
            for (std::ptrdiff_t a = 0; a < stride(); ++a) {
                const double value =
                    a < counts.p ? *x_.at(variable[a], observation_[order_[k]]) - centre[a] : 0;
                rows_[k * stride() + a] = value == value ? value : 0;
            }
    }

    // Calls f(missing, m, rows, count) for one pattern after the other: which m members of the list
    // of variables its `count` rows lack. False as soon as f says so.
    template <class F> bool for_each_pattern(std::ptrdiff_t* missing, F f) const {
        for (std::ptrdiff_t first = 0, end; first < counts.rows; first = end) {
            const Word* const mask = mask_ + order_[first] * words();
            end = first + 1;
            while (end < counts.rows &&
                   std::memcmp(mask, mask_ + order_[end] * words(), words() * sizeof(Word)) == 0)
                ++end;
            std::ptrdiff_t m = 0;
            for (std::ptrdiff_t a = 0; a < counts.p; ++a)
                if (mask[a / bits] >> a % bits & 1) missing[m++] = a;
            if (!f(m, rows_ + first * stride(), end - first)) return false;
        }
        return true;
    }

    // The moments of the rows as they have been filled.
    void weigh(const Moments& to) {
        sums_.start(to.mean);
        sums_.add(Observations<double>{rows_, 1, stride()}, counts.rows);
        take(to);
    }

    // Calls f(k, value) for all missing values as they have been filled; k is the number of the
    // value, observation by observation.
    template <class F> void for_each_filled(F f) const {
        for (std::ptrdiff_t r = 0; r < counts.rows; ++r) {
            const Word* const mask = mask_ + order_[r] * words();
            std::ptrdiff_t k = before_[order_[r]];
            for (std::ptrdiff_t a = 0; a < counts.p; ++a)
                if (mask[a / bits] >> a % bits & 1) f(k++, rows_[r * stride() + a] + centre[a]);
        }
    }

    static std::ptrdiff_t stride_of(std::ptrdiff_t p) { return p + (p & 1); }
    std::ptrdiff_t stride() const { return stride_of(counts.p); }

private:
    static std::ptrdiff_t words_of(std::ptrdiff_t p) { return (p + bits - 1) / bits; }
    std::ptrdiff_t words() const { return words_of(counts.p); }

    const std::ptrdiff_t* identity(std::ptrdiff_t* list) const {
        for (std::ptrdiff_t a = 0; a < counts.p; ++a) list[a] = a;
        return list;
    }

    template <class F> void for_each_value(std::ptrdiff_t a, F f) const {
        const T* x = x_.at(variable[a], 0);
        for (std::ptrdiff_t j = 0; j < counts.n; ++j, x += x_.stride)
            if (*x == *x) f(double(*x));
    }

    void take(const Moments& to) const {
        to.set([&](std::ptrdiff_t a) { return sums_.mean(a); },
               [&](std::ptrdiff_t a, std::ptrdiff_t b) { return sums_.product(a, b); });
    }

    Observations<T> x_;
    double* rows_;
    std::ptrdiff_t *observation_, *before_, *order_;
    Word* mask_;
    double* tile_;
    WeightedMoments sums_;
};

}  // namespace kef::stats
