// Order statistics: selection of some ranks, or sorting, by distribution.
//
// The numbers go into buckets by a monotone map, and buckets that hold a wanted rank are treated
// alike, down to a few numbers, which are sorted by insertion. The map is linear in the value;
// where that does not spread the numbers, or may overflow, it is linear in the bit pattern, and
// each such level shortens the patterns by `buckets`. So the time is O(n) for any numbers, and no
// order of them costs more than a random one.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>

#include "stats/observations.h"

namespace kef::stats {

using vm::Block;
using vm::f4;
using vm::i4;

// Up to so many numbers are sorted by insertion.
inline constexpr std::ptrdiff_t few = 32;
// Numbers to a bucket, if they spread evenly.
inline constexpr std::ptrdiff_t load_factor = 8;

// The least and the greatest of some numbers; not known where one is NaN.
template <class T> struct Range {
    T least, greatest;
    bool nan;
};

// Whether numbers in this range serve as weights: none negative or not finite, not all 0.
template <class T> bool are_weights(const Range<T>& range) {
    return !range.nan && range.least >= 0 && range.greatest > 0 &&
           range.greatest <= std::numeric_limits<T>::max();
}

template <class T> Range<T> range_of(const T* x, std::ptrdiff_t n) {
    constexpr std::ptrdiff_t lanes = 16 / sizeof(T);
    Block<T> low[2] = {vm::filled<Block<T>>(x[0]), vm::filled<Block<T>>(x[0])},
             high[2] = {low[0], low[0]};
    auto ordinary = low[0] == low[0];
    std::ptrdiff_t j = 0;
    for (; j + 2 * lanes <= n; j += 2 * lanes)
        for (int k = 0; k < 2; ++k) {
            const Block<T> v = vm::load_as<Block<T>>(x + j + k * lanes);
            low[k] = vm::minimum(low[k], v);
            high[k] = vm::maximum(high[k], v);
            ordinary &= v == v;
        }
    low[0] = vm::minimum(low[0], low[1]);
    high[0] = vm::maximum(high[0], high[1]);
    Range<T> range = {low[0][0], high[0][0], vm::bits((i4)ordinary) != 15};
    const auto take = [&](T least, T greatest) {
        range.least = least < range.least ? least : range.least;
        range.greatest = greatest > range.greatest ? greatest : range.greatest;
    };
    for (int lane = 1; lane < lanes; ++lane) take(low[0][lane], high[0][lane]);
    for (; j < n; ++j) {
        take(x[j], x[j]);
        range.nan |= x[j] != x[j];
    }
    return range;
}

namespace detail {

// The maps give the bucket of each number of a vector in the first lanes of the result.

// trunc((x - least) * scale).
template <class T> class ByValue {
public:
    // scale * width stays below `buckets` with all its roundings.
    ByValue(const Range<T>& range, int buckets)
        : least_(vm::filled<Block<T>>(range.least)),
          scale_(vm::filled<Block<T>>(static_cast<T>(buckets * (1 - 0x1p-20)) /
                                      (range.greatest - range.least))) {}
    bool usable(const Range<T>& range) const {
        const T width = range.greatest - range.least;
        return width - width == 0 && scale_[0] - scale_[0] == 0 &&
               range.greatest - range.greatest == 0;
    }
    i4 operator()(Block<T> x) const { return truncated((x - least_) * scale_); }

private:
    static i4 truncated(vm::d2 x) { return (i4)_mm_cvttpd_epi32((__m128d)x); }
    static i4 truncated(f4 x) { return (i4)_mm_cvttps_epi32((__m128)x); }
    Block<T> least_, scale_;
};

// The bit pattern as an integer of the same order.
inline l2 ordered(vm::d2 x) { return (l2)x ^ (vm::sign_mask((l2)x) & INT64_MAX); }
inline i4 ordered(f4 x) { return (i4)x ^ (vm::sign_mask((i4)x) & INT32_MAX); }

// (ordered(x) - ordered(least)) >> shift. The two zeros are neighbours, and a range that ends with
// either of them is taken to hold both.
template <class T> class ByPattern {
    using Key = decltype(ordered(Block<T>{}));
    using Wrapping = std::conditional_t<sizeof(T) == 8, vm::u2, vm::u4>;

public:
    ByPattern(const Range<T>& range, int buckets) {
        least_ = ordered(vm::filled<Block<T>>(range.least == 0 ? T(-0.0) : range.least));
        const Key greatest =
            ordered(vm::filled<Block<T>>(range.greatest == 0 ? T(0.0) : range.greatest));
        using Word = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
        const Word width = static_cast<Word>(greatest[0]) - static_cast<Word>(least_[0]);
        int shift = 0;
        while (width >> shift >= static_cast<Word>(buckets)) ++shift;
        shift_ = _mm_cvtsi32_si128(shift);
    }
    i4 operator()(Block<T> x) const { return shifted((Wrapping)ordered(x) - (Wrapping)least_); }

private:
    i4 shifted(vm::u2 key) const {
        const i4 bucket = (i4)_mm_srl_epi64((__m128i)key, shift_);
        return __builtin_shufflevector(bucket, bucket, 0, 2, 0, 2);
    }
    i4 shifted(vm::u4 key) const { return (i4)_mm_srl_epi32((__m128i)key, shift_); }
    Key least_;
    __m128i shift_;
};

// A source of numbers: a pointer to them, or what has [] and load_at().
template <class T> inline Block<T> load_at(const T* x, std::ptrdiff_t j) {
    return vm::load_as<Block<T>>(x + j);
}

// Calls f(j, bucket, parity) for all numbers, j = 0 .. n - 1; neighbours differ in parity.
template <class Source, class Map, class F>
inline void for_each_bucket(const Source& x, std::ptrdiff_t n, const Map& map, F f) {
    constexpr std::ptrdiff_t lanes = 16 / sizeof(x[0]);
    std::ptrdiff_t j = 0;
    for (; j + lanes <= n; j += lanes) {
        const __m128i b = (__m128i)map(load_at(x, j));
        f(j, _mm_extract_epi16(b, 0), 0);
        f(j + 1, _mm_extract_epi16(b, 2), 1);
        if constexpr (lanes == 4) {
            f(j + 2, _mm_extract_epi16(b, 4), 0);
            f(j + 3, _mm_extract_epi16(b, 6), 1);
        }
    }
    for (; j < n; ++j)
        f(j,
          _mm_extract_epi16(
              (__m128i)map(vm::filled<Block<std::remove_cvref_t<decltype(x[j])>>>(x[j])), 0),
          0);
}

// f(map): the map of a range to so many buckets. `by_pattern`: values are no good.
template <class T, class F>
auto with_map(const Range<T>& range, bool by_pattern, int buckets, F f) {
    const ByValue<T> by_value(range, buckets);
    if (!by_pattern && by_value.usable(range)) return f(by_value);
    return f(ByPattern<T>(range, buckets));
}

// f(map, most, buckets): the map of n numbers, the number of its buckets and a bound on that.
template <class T, class F>
auto with_map_of(const Range<T>& range, std::ptrdiff_t n, bool by_pattern, F f) {
    const auto up_to = [&](auto most) {
        int buckets = 16;
        while (buckets < most && buckets < n / load_factor) buckets *= 2;
        return with_map(range, by_pattern, buckets,
                        [&](const auto& map) { return f(map, most, buckets); });
    };
    if (n <= 256 * load_factor) return up_to(std::integral_constant<int, 256>());
    return up_to(std::integral_constant<int, 2048>());
}

template <class T> void sort_by_insertion(T* x, std::ptrdiff_t n) {
    for (std::ptrdiff_t i = 1; i < n; ++i) {
        const T value = x[i];
        std::ptrdiff_t j = i;
        for (; j > 0 && value < x[j - 1]; --j) x[j] = x[j - 1];
        x[j] = value;
    }
}

}  // namespace detail

// The wanted ranks: an ascending list, or all.
class Ranks {
public:
    static Ranks all() { return {nullptr, nullptr}; }
    Ranks(const std::ptrdiff_t* begin, const std::ptrdiff_t* end) : begin_(begin), end_(end) {}
    bool every() const { return begin_ == nullptr; }
    const std::ptrdiff_t* begin() const { return begin_; }
    const std::ptrdiff_t* end() const { return end_; }

    // Drops those below `first`, and tells whether there is one below `last`.
    bool reach(std::ptrdiff_t first, std::ptrdiff_t last) {
        if (every()) return true;
        while (begin_ != end_ && *begin_ < first) ++begin_;
        return begin_ != end_ && *begin_ < last;
    }

private:
    const std::ptrdiff_t *begin_, *end_;
};

namespace detail {

// Numbers that belong to the ranks from `first` on.
struct Part {
    std::ptrdiff_t first, n;
    bool by_pattern;  // the map to take, where values are no good
};

template <class T> void arrange(T* out, T* spare, Part part, Ranks ranks);

// Puts the buckets with a wanted rank to their places in `out` and arranges them, but for the
// largest, which is returned. Numbers that stand there already, `in_place`, go by way of `spare`.
template <int most, class Source, class T, class Map>
Part distribute(const Source& x, bool in_place, T* out, T* spare, Part part, const Map& map,
                int buckets, Ranks ranks) {
    std::size_t place[most], size[most];
    std::memset(place, 0, buckets * sizeof *place);
    std::memset(size, 0, buckets * sizeof *size);
    // Two counters of each bucket: numbers in order do not wait for each other.
    for_each_bucket(x, part.n, map,
                    [&](std::ptrdiff_t, unsigned b, int odd) { ++(odd ? place : size)[b]; });

    T* const target = in_place ? spare : out;
    std::size_t next = part.first;
    Ranks wanted = ranks;
    for (int b = 0; b < buckets; ++b) {
        const std::size_t c = place[b] + size[b];
        place[b] = next;
        size[b] = c != 0 && wanted.reach(next, next + c) ? c : 0;
        next += c;
    }
    if (ranks.every())
        for_each_bucket(x, part.n, map,
                        [&](std::ptrdiff_t j, unsigned b, int) { target[place[b]++] = x[j]; });
    else
        for_each_bucket(x, part.n, map, [&](std::ptrdiff_t j, unsigned b, int) {
            if (size[b] != 0) target[place[b]++] = x[j];
        });

    int largest = 0;
    for (int b = 1; b < buckets; ++b)
        if (size[b] > size[largest]) largest = b;
    const auto part_of = [&](int b) {
        const std::size_t c = size[b];
        const bool spread = c <= static_cast<std::size_t>(part.n) / 2;
        return Part{static_cast<std::ptrdiff_t>(place[b] - c), static_cast<std::ptrdiff_t>(c),
                    !spread};
    };
    for (int b = 0; b < buckets; ++b) {
        if (size[b] == 0) continue;
        const Part inner = part_of(b);
        if (in_place) std::memcpy(out + inner.first, spare + inner.first, inner.n * sizeof(T));
        ranks.reach(inner.first, inner.first + inner.n);
        if (b != largest) arrange(out, spare, inner, ranks);
    }
    return part_of(largest);
}

template <class Source, class T>
Part distribute(const Source& x, bool in_place, T* out, T* spare, Part part, const Range<T>& range,
                Ranks ranks) {
    return with_map_of(
        range, part.n, part.by_pattern, [&](const auto& map, auto most, int buckets) {
            return distribute<most>(x, in_place, out, spare, part, map, buckets, ranks);
        });
}

template <class T> void arrange(T* out, T* spare, Part part, Ranks ranks) {
    while (part.n > few) {
        const T* x = out + part.first;
        const Range<T> range = range_of(x, part.n);
        if (range.least == range.greatest) return;
        part = distribute(x, true, out, spare, part, range, ranks);
    }
    sort_by_insertion(out + part.first, part.n);
}

}  // namespace detail

// Puts to out[r] what sorting n numbers would put there, for the wanted ranks r; the other elements
// of `out` and `spare`, n numbers each, become anything. No number is NaN or outside the range. x
// may be `spare`. Equal numbers are not told apart, nor are the two zeros.
template <class Source, class T>
void select(const Source& x, std::ptrdiff_t n, const Range<T>& range, Ranks ranks, T* out,
            T* spare) {
    if (n > few && range.least < range.greatest) {
        const auto part = detail::distribute(x, false, out, spare, {0, n, false}, range, ranks);
        detail::arrange(out, spare, part, ranks);
    } else {
        for (std::ptrdiff_t j = 0; j < n; ++j) out[j] = x[j];
        detail::sort_by_insertion(out, n);
    }
}

}  // namespace kef::stats
