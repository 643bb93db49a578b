// Quantiles by definition 7 of Hyndman & Fan (Am. Stat. 50:361, 1996), of one variable at a time.
#pragma once

#include <limits>
#include <utility>

#include "stats/checks.h"
#include "stats/select.h"

namespace kef::stats {

// Where the quantile of an order in [0,1] stands among n sorted numbers: h = (n - 1) order,
// between the ranks floor h and ceil h.
struct QuantilePlace {
    std::ptrdiff_t below, above;
    double fraction;
    QuantilePlace(double order, std::ptrdiff_t n) {
        const double h = static_cast<double>(n - 1) * order;
        below = static_cast<std::ptrdiff_t>(h);
        fraction = h - static_cast<double>(below);
        above = below + (fraction > 0);
    }
};

// Half-way between a and b, rounded once.
inline double middle(double a, double b) {
    const double sum = a + b;
    return sum - sum == 0 ? sum / 2 : a / 2 + b / 2;
}

// From a to b >= a: monotone in the fraction, exact at its ends and in the middle.
inline double between(double a, double b, double fraction) {
    if (a == b || fraction == 0) return a;
    const double width = b - a, half = middle(a, b);
    if (width - width != 0 && half - half == 0)  // only the difference overflows
        return 2 * between(a / 2, b / 2, fraction);
    if (fraction < 0.5) return std::min(a + width * fraction, half);
    if (fraction > 0.5) return std::max(b - width * (1 - fraction), half);
    return half;
}

// Room for the selection among n numbers, in a scratch block.
template <class T> struct SelectionRoom {
    T *out, *spare;
    // The offset of its place.
    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t n) {
        return layout.reserve(n, sizeof(T), 2);
    }
    SelectionRoom(char* start, std::ptrdiff_t n)
        : out(reinterpret_cast<T*>(start)), spare(out + n) {}
};

// The observations of variable i one after the other: where they stand, or copied to `room`.
template <class T>
const T* contiguous(const Observations<T>& x, std::ptrdiff_t i, std::ptrdiff_t n, T* room) {
    const T* from = x.at(i, 0);
    if (x.stride == 1) return from;
    for (std::ptrdiff_t j = 0; j < n; ++j) room[j] = from[j * x.stride];
    return room;
}

// How many observations of variable i have a sign: those below zero, and -0.
template <class T>
std::ptrdiff_t count_signs(const Observations<T>& x, std::ptrdiff_t i, std::ptrdiff_t n) {
    const T* from = x.at(i, 0);
    std::ptrdiff_t signs = 0;
    for (std::ptrdiff_t j = 0; j < n; ++j) signs += std::signbit(from[j * x.stride]);
    return signs;
}

// The order statistics of the wanted ranks of variable i, which holds no NaN, to out[rank]: -0
// before +0.
template <class T>
void order_statistics(const Observations<T>& x, std::ptrdiff_t i, std::ptrdiff_t n, const T* data,
                      const Range<T>& range, Ranks ranks, T* out, T* spare) {
    select(data, n, range, ranks, out, spare);
    if (!(range.least <= 0 && range.greatest >= 0)) return;
    std::ptrdiff_t signs = -1;
    const auto set = [&](std::ptrdiff_t rank) {
        if (out[rank] != 0) return;
        if (signs < 0) signs = count_signs(x, i, n);
        out[rank] = rank < signs ? T(-0.0) : T(0);
    };
    if (!ranks.every())
        for (const std::ptrdiff_t rank : ranks) set(rank);
    else
        for (std::ptrdiff_t rank = std::lower_bound(out, out + n, T(0)) - out;
             rank < n && out[rank] == 0; ++rank)
            set(rank);
}

// The two order statistics in the middle of n numbers, see select().
template <class Source, class T>
std::pair<T, T> middle_pair(const Source& data, std::ptrdiff_t n, const Range<T>& range,
                            const SelectionRoom<T>& room) {
    const std::ptrdiff_t ranks[] = {(n - 1) / 2, n / 2};
    select(data, n, range, Ranks(ranks, ranks + 2), room.out, room.spare);
    return {room.out[ranks[0]], room.out[ranks[1]]};
}

}  // namespace kef::stats
