// Median m and median absolute deviation, the median of |x - m| (Hampel, JASA 69:383, 1974), of one
// variable.
#pragma once

#include "stats/quantile.h"

namespace kef::stats {

namespace detail {

// |x - m - low| of numbers that are not copied, low being below the last place of m, or 0: rounded
// once, but for the rounding of error - low.
template <bool exact_median, class T> struct Deviations {
    const T* x;
    T m, low;

    T operator[](std::ptrdiff_t j) const { return of(vm::filled<Block<T>>(x[j]))[0]; }
    friend Block<T> load_at(const Deviations& d, std::ptrdiff_t j) {
        return d.of(vm::load_as<Block<T>>(d.x + j));
    }

private:
    Block<T> of(Block<T> v) const {
        const Block<T> c = vm::filled<Block<T>>(m), d = v - c;
        if constexpr (exact_median) return vm::absolute(d);
        const Block<T> shadow = d - v;
        const Block<T> error = (v - (d - shadow)) - (c + shadow);  // Knuth
        const Block<T> sum = d + (error - vm::filled<Block<T>>(low));
        return vm::absolute(vm::select(sum - sum == 0, sum, d));  // d, where it is infinite
    }
};

template <class T> T median_of(const std::pair<T, T>& pair) {
    return static_cast<T>(middle(pair.first, pair.second));
}

}  // namespace detail

template <class T> struct MedianDeviation {
    double median;
    T deviation;  // NaN where the median is not finite
    bool finite;  // all observations are
};

// Of variable i, n observations; both NaN where one of them is.
template <class T>
MedianDeviation<T> median_deviation(const Observations<T>& x, std::ptrdiff_t i, std::ptrdiff_t n,
                                    const SelectionRoom<T>& room) {
    using namespace detail;
    const T* data = contiguous(x, i, n, room.spare);
    const Range<T> range = range_of(data, n);
    const auto [a, b] =
        range.nan ? std::pair(range.least, range.least) : middle_pair(data, n, range, room);
    const double m = range.nan ? NAN : middle(a, b);
    if (m - m != 0) return {m, std::numeric_limits<T>::quiet_NaN(), false};
    const bool finite = range.least - range.least == 0 && range.greatest - range.greatest == 0;
    // What the rounding of m has lost: a + b = 2 m + 2 low exactly, in halves where sums overflow.
    const double scale = std::fabs(m) > 0x1p1020 ? 0.25 : 1, a_scaled = a * scale,
                 b_scaled = b * scale;
    const double sum = m * (2 * scale), shadow = sum - a_scaled;
    const double low = ((a_scaled - (sum - shadow)) + (b_scaled - shadow)) / (2 * scale);
    const auto centre = static_cast<T>(m), rest = static_cast<T>((m - centre) + low);
    const T ends[] = {range.least, range.greatest};
    const Deviations<false, T> extreme = {ends, centre, rest};
    const Range<T> distances = {0, std::max(extreme[0], extreme[1]), false};
    if (rest == 0 && x.stride == 1) {
        const Deviations<true, T> simple = {x.at(i, 0), centre, 0};
        return {m, median_of(middle_pair(simple, n, distances, room)), finite};
    }
    // The first selection has taken a copy apart.
    const Deviations<false, T> again = {contiguous(x, i, n, room.spare), centre, rest};
    constexpr std::ptrdiff_t lanes = 16 / sizeof(T);
    std::ptrdiff_t j = 0;
    for (; j + lanes <= n; j += lanes) vm::store(room.spare + j, load_at(again, j));
    for (; j < n; ++j) room.spare[j] = again[j];
    const T* deviations = room.spare;
    return {m, median_of(middle_pair(deviations, n, distances, room)), finite};
}

}  // namespace kef::stats
