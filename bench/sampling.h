// Arguments of an interval: edges first, then random ones.
#pragma once

#include "bench/meter.h"

namespace kef {

// Draws batches of one interval for Meter; the same ones for the same seed.
template <class T> class Sampling {
public:
    static constexpr std::uint64_t size = 1024;

    Sampling(const kef_test::Row& row, const reference::Interval& interval, const std::string& seed)
        : batch(size),
          interval_(interval),
          two_(row.arguments == 2),
          scalar_(row.scalars == 1),
          edges_a_(reference::edges<T>(interval.a)),
          edges_b_(two_ || scalar_ ? reference::edges<T>(interval.b) : std::vector<T>(1)),
          random_(seed) {
        for (std::size_t i = 0; i < 4; ++i) batch.scalars[i] = static_cast<T>(interval.scalars[i]);
    }

    // So many arguments hold all edges, and as many random ones at least.
    std::uint64_t rounded_count(std::uint64_t count) const {
        return (std::max(count, 2 * edge_count()) + size - 1) / size * size;
    }

    // Fills the batch that begins with argument number `first`.
    void draw(std::uint64_t first) {
        const std::uint64_t round = first / size;
        const bool a_by_value = round % 2 == 0, b_by_value = round / 2 % 2 == 0;
        if (scalar_)
            batch.scalars[0] = round < edges_b_.size()
                                   ? edges_b_[round]
                                   : random_.template draw<T>(interval_.b, b_by_value);
        for (std::uint64_t i = 0; i < size; ++i) {
            const std::uint64_t n = scalar_ ? i : first + i;
            const bool edge =
                first < edge_count() && n < edges_a_.size() * (scalar_ ? 1 : edges_b_.size());
            batch.a[i] = edge ? edges_a_[n % edges_a_.size()]
                              : random_.template draw<T>(interval_.a, a_by_value);
            if (scalar_) batch.b[i] = batch.scalars[0];
            if (two_)
                batch.b[i] = edge ? edges_b_[n / edges_a_.size()]
                                  : random_.template draw<T>(interval_.b, b_by_value);
        }
        const bool bounded = std::isfinite(interval_.a.high - interval_.a.low);
        for_mean = first >= edge_count() &&
                   (!bounded || (a_by_value && (b_by_value || !(two_ || scalar_))));
    }

    Batch<T> batch;
    bool for_mean = false;  // whether the batch counts for the mean error

private:
    std::uint64_t edge_count() const {
        return (scalar_ ? size : edges_a_.size()) * edges_b_.size();
    }

    const reference::Interval interval_;
    const bool two_, scalar_;
    const std::vector<T> edges_a_, edges_b_;
    reference::Random random_;
};

// The intervals of a function that are measured, the whole range last.
template <class T>
std::vector<reference::Interval> intervals_of(const reference::Reference& reference) {
    std::vector<reference::Interval> intervals = {reference.main};
    for (const auto* more :
         {&reference.both, std::is_same_v<T, float> ? &reference.s : &reference.d})
        intervals.insert(intervals.end(), more->begin(), more->end());
    intervals.push_back({reference::everything, reference::everything, reference.main.scalars});
    return intervals;
}

}  // namespace kef
