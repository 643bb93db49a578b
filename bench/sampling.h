// Arguments of an interval: edges first, then random ones.
#pragma once

#include <fstream>

#include "bench/meter.h"

namespace kef {

// Draws batches of one interval for Meter; the same ones for the same seed.
template <class T> class Sampling {
public:
    static constexpr std::uint64_t size = 1024;

    Sampling(const kef_test::Row& row, const reference::Interval& interval, const std::string& seed)
        : batch(size, row),
          scalar_(row.scalars == 1),
          complex_(row.argument_parts == 2),
          varying_(row.argument_parts * row.arguments),
          random_(seed) {
        ranges_ = interval.ranges(complex_);
        ranges_.resize(argument_components(row));
        for (const reference::Range& range : ranges_) edges_.push_back(edges_of(range));
        for (std::size_t i = 0; i < 4; ++i) batch.scalars[i] = static_cast<T>(interval.scalars[i]);
        bounded_ = std::isfinite(interval.a.high - interval.a.low);
        edge_count_ = scalar_ ? size * edges_[varying_].size() : product_of_edges();
    }

    // So many arguments hold all edges, and as many random ones at least. Of complex numbers edges
    // are half of the arguments: all pairs where these are as many, else some at random.
    std::uint64_t rounded_count(std::uint64_t count) {
        if (complex_) {
            random_edges_ = ranges_.size() > 2 || edge_count_ > count / 2;
            if (random_edges_) edge_count_ = (count / 2 + size - 1) / size * size;
        }
        return (std::max(count, 2 * edge_count_) + size - 1) / size * size;
    }

    // Fills the batch that begins with argument number `first`.
    void draw(std::uint64_t first) {
        const bool with_edges = first < edge_count_;
        const std::uint64_t round =
            first / size - (complex_ && !with_edges ? (edge_count_ + size - 1) / size : 0);
        // Components of a scalar: an edge a batch, while there are some.
        for (std::size_t c = varying_; c < ranges_.size(); ++c) {
            const bool edge = complex_ ? with_edges : round < edges_[c].size();
            T& x = batch.scalars[c - varying_];
            x = !edge ? drawn(c, round, {}) : complex_ ? some_edge(c) : edges_[c][round];
        }
        for (std::uint64_t i = 0; i < size; ++i) {
            Components before = {};
            const std::uint64_t n = scalar_ ? i : first + i;
            const bool edge = with_edges && (random_edges_ || n < product_of_edges());
            std::uint64_t rest = n;
            for (std::size_t c = 0; c < varying_; ++c) {
                T& x = batch.at(i, c);
                if (edge && !random_edges_) x = edges_[c][rest % edges_[c].size()];
                else if (edge && random_.bits() % 2) x = some_edge(c);
                else x = drawn(c, round, before);
                rest /= edges_[c].size();
                before[c] = x;
            }
            for (std::size_t c = varying_; c < ranges_.size(); ++c)
                batch.at(i, c) = batch.scalars[c - varying_];
        }
        for_mean = !with_edges;
        for (std::size_t c = 0; bounded_ && c < ranges_.size(); ++c) for_mean &= by_value(c, round);
    }

    Batch<T> batch;
    bool for_mean = false;  // whether the batch counts for the mean error

private:
    using Components = std::array<double, 4>;

    // Of complex numbers the finite ones: what others give is not a matter of accuracy.
    std::vector<T> edges_of(const reference::Range& range) const {
        std::vector<T> edges = range.by ? std::vector<T>() : reference::edges<T>(range);
        if (complex_) std::erase_if(edges, [](T x) { return !std::isfinite(x); });
        if (edges.empty()) edges.push_back(0);
        return edges;
    }
    T some_edge(std::size_t c) { return edges_[c][random_.bits() % edges_[c].size()]; }
    static bool by_value(std::size_t c, std::uint64_t round) { return (round >> c) % 2 == 0; }
    T drawn(std::size_t c, std::uint64_t round, const Components& before) {
        for (;;) {
            const T x = random_.template draw<T>(ranges_[c], by_value(c, round), before.data());
            if (!complex_ || std::isfinite(x)) return x;
        }
    }

    std::uint64_t product_of_edges() const {
        std::uint64_t product = 1;
        for (std::size_t c = 0; c < varying_; ++c) product *= edges_[c].size();
        return product;
    }

    const bool scalar_, complex_;
    const std::size_t varying_;  // components that are drawn for every element
    std::vector<reference::Range> ranges_;
    std::vector<std::vector<T>> edges_;
    bool bounded_, random_edges_ = false;
    std::uint64_t edge_count_;
    reference::Random random_;
};

// Numbers next to a multiple of pi/2, of either sign.
template <class T> std::vector<T> near_multiples() {
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/near_multiples.txt");
    if (!file) std::fprintf(stderr, "tests/data/near_multiples.txt is missing\n");
    char type;
    std::uint64_t bits;
    std::vector<T> numbers;
    while (file >> type >> std::hex >> bits) {
        if (type != (std::is_same_v<T, float> ? 's' : 'd')) continue;
        const T x = reference::from_ordinal<T>(static_cast<reference::Ordinal<T>>(bits));
        numbers.insert(numbers.end(), {x, -x});
    }
    return numbers;
}

// Complex arguments whose parts are numbers where functions tend to go wrong: every tuple of them,
// or as many at random.
template <class T> class Grid {
public:
    static constexpr std::uint64_t size = Sampling<T>::size;

    Grid(const kef_test::Row& row, std::uint64_t count)
        : batch(size, row), numbers_(near_multiples<T>()), random_(row.name() + " grid") {
        for (const T x : reference::edges<T>(reference::everything))
            if (std::isfinite(x)) numbers_.push_back(x);
        components_ = argument_components(row);
        all_ = std::pow(numbers_.size(), components_) <= static_cast<double>(count);
        for (std::size_t c = 0; all_ && c < components_; ++c) count_ *= numbers_.size();
        if (!all_) count_ = count;
        scalar_ = row.scalars == 1;
    }
    std::uint64_t count() const { return (count_ + size - 1) / size * size; }

    void draw(std::uint64_t first) {
        for (std::uint64_t i = 0; i < size; ++i) {
            std::uint64_t n = first + i;
            for (std::size_t c = 0; c < components_; ++c) {
                T& x = batch.at(i, c);
                x = numbers_[(all_ ? n : random_.bits()) % numbers_.size()];
                n /= numbers_.size();
                if (!scalar_ || c < batch.argument_parts) continue;
                if (i == 0) batch.scalars[c - batch.argument_parts] = x;
                x = batch.scalars[c - batch.argument_parts];
            }
        }
    }

    Batch<T> batch;

private:
    std::vector<T> numbers_;
    reference::Random random_;
    std::size_t components_;
    std::uint64_t count_ = 1;
    bool all_, scalar_;
};

// Complex numbers along an axis, evenly over the bit patterns of one part; the other is a zero of
// either sign.
template <class T> class Axis {
public:
    static constexpr std::uint64_t size = Sampling<T>::size;

    Axis(const kef_test::Row& row, std::uint64_t count, std::size_t part)
        : batch(size, row), part_(part), count_(std::max(count / size * size, size)) {}
    std::uint64_t count() const { return count_; }

    void draw(std::uint64_t first) {
        const auto last = reference::ordinal(std::numeric_limits<T>::max());
        for (std::uint64_t i = 0; i < size; ++i) {
            const wide share = static_cast<wide>(first + i) / static_cast<wide>(count_ - 1);
            const wide n = (2 * share - 1) * static_cast<wide>(last);
            batch.at(i, part_) = reference::from_ordinal<T>(static_cast<reference::Ordinal<T>>(n));
            batch.at(i, 1 - part_) = (first + i) / 2 % 2 ? T(0) : -T(0);
        }
    }

    Batch<T> batch;

private:
    using wide = long double;
    const std::size_t part_;
    const std::uint64_t count_;
};

// The intervals of a function that are measured, the whole range last.
template <class T>
std::vector<reference::Interval> intervals_of(const reference::Reference& reference) {
    std::vector<reference::Interval> intervals = {reference.main};
    for (const auto* more :
         {&reference.both, std::is_same_v<T, float> ? &reference.s : &reference.d})
        intervals.insert(intervals.end(), more->begin(), more->end());
    if (reference.complex()) {
        constexpr reference::Range size = reference::any_size;
        intervals.push_back({size, size, {}, size, size, "parts of any size"});
    }
    reference::Interval whole = reference.whole;
    whole.scalars = reference.main.scalars;
    intervals.push_back(whole);
    return intervals;
}

}  // namespace kef
