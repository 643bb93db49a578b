// The sketch of a stream of observations that StreamQuantiles keeps for each variable.
//
// A run of 8k observations is condensed to k of them, each standing for 8; two such summaries of
// one weight are merged, and every second value is one of twice the weight (Munro & Paterson, TCS
// 12:315, 1980; Manku, Rajagopalan & Lindsay, SIGMOD 1998). So there is at most one summary of
// each weight 8 * 2^l, beside the run that is not full.
//
// Error of the rank of a value, in units of N/(2k): a run is condensed within 28 of its 8k ranks,
// see condense(): 7. Merging two summaries of weight w leaves out every second value, w ranks at
// most: 1 for each level. With k = ceil(16/epsilon) that is epsilon N at 25 levels, N = 8k 2^25.
#pragma once

#include <bit>
#include <cstring>
#include <limits>

#include "service/alloc.h"
#include "stats/select.h"
#include "stats/task.h"

namespace kef::stats {

inline constexpr std::ptrdiff_t condensed = 8;    // observations to a value
inline constexpr std::ptrdiff_t raw_chunk = 256;  // observations of a variable side by side
inline constexpr std::ptrdiff_t most_values = std::ptrdiff_t(1) << 24;

// k for an epsilon, 0 when there is none.
inline std::ptrdiff_t summary_size(double epsilon) {
    if (!(epsilon > 0 && epsilon <= 0.5)) return 0;
    const double k = std::ceil(16 / epsilon);
    return k <= most_values ? static_cast<std::ptrdiff_t>(k) : 0;
}

// What is known of one variable besides its arrays.
struct StreamVariable {
    std::uint64_t count;     // observations
    std::uint64_t odd;       // levels whose next merge keeps the values at odd places
    double least, greatest;  // where count > 0
    bool nan;                // one of them was NaN
};

// The state's block, with the variables behind it.
struct StreamState {
    std::ptrdiff_t k;  // 0: nothing seen yet
    std::ptrdiff_t p;
    StreamVariable* variable;
};

// Room for work on one run.
template <class T> struct RunRoom {
    // Levels of condense(), and the tables of buckets of the first and of the others.
    static constexpr int levels = 4;
    int first_buckets, more_buckets;
    T *run, *out, *spare;  // 8k
    T *summary, *merged;   // k + 1
    T* representative;     // one of each bucket
    std::uint32_t* place;
    std::ptrdiff_t* rank;  // k

    int buckets(int level) const { return level == 0 ? first_buckets : more_buckets; }
    int offset(int level) const {
        return level == 0 ? 0 : first_buckets + (level - 1) * more_buckets;
    }
    std::uint32_t* place_of(int level) const { return place + offset(level); }
    T* representative_of(int level) const { return representative + offset(level); }

    RunRoom() = default;
    // For `numbers` observations of an open run, or a whole one.
    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t k, std::ptrdiff_t numbers) {
        const std::uint64_t place = layout.reserve(numbers, 3 * sizeof(T));
        layout.reserve(k + 1, 2 * sizeof(T));
        const RunRoom tables(k);
        layout.reserve(tables.offset(levels), sizeof(T));
        layout.reserve(tables.offset(levels), sizeof(std::uint32_t));
        layout.reserve(k, sizeof(std::ptrdiff_t));
        return place;
    }
    RunRoom(char* start, std::ptrdiff_t k, std::ptrdiff_t numbers) : RunRoom(k) {
        KeptLayout layout;
        const auto at = [&](std::ptrdiff_t count, std::size_t size) {
            return start + layout.reserve(count, size);
        };
        run = reinterpret_cast<T*>(at(numbers, 3 * sizeof(T)));
        out = run + numbers;
        spare = out + numbers;
        summary = reinterpret_cast<T*>(at(k + 1, 2 * sizeof(T)));
        merged = summary + k + 1;
        representative = reinterpret_cast<T*>(at(offset(levels), sizeof(T)));
        place = reinterpret_cast<std::uint32_t*>(at(offset(levels), sizeof(std::uint32_t)));
        rank = reinterpret_cast<std::ptrdiff_t*>(at(k, sizeof(std::ptrdiff_t)));
    }

private:
    explicit RunRoom(std::ptrdiff_t k) : first_buckets(64) {
        while (first_buckets < 32768 && first_buckets < 2 * k) first_buckets *= 2;
        more_buckets = std::min(first_buckets, 8192);
    }
};

namespace detail {

// A bucket of a run stands for itself as a whole up to so many numbers.
inline constexpr std::uint32_t small_bucket = 3 * condensed;

// Values for the ranks 8i + 4 among those of a part, to `result`, whose end is returned: for each,
// a number of that rank or of the same small bucket. x are the part's numbers, those of larger
// buckets go to `to`, at their ranks, and `from` takes them back at the next level.
template <class T>
T* condense_part(const T* x, T* from, T* to, Part part, int level, const RunRoom<T>& room,
                 T* result) {
    constexpr std::uint32_t small = 0x80000000;
    const std::ptrdiff_t end_of_part = part.first + part.n;
    std::ptrdiff_t rank = (part.first + condensed / 2 - 1) / condensed * condensed + condensed / 2;
    const Range<T> range = range_of(x, part.n);
    if (range.least == range.greatest) {
        for (; rank < end_of_part; rank += condensed) *result++ = range.least;
        return result;
    }
    if (level > 0 && (part.n <= 2 * few || level == room.levels)) {
        std::ptrdiff_t* last = room.rank;
        for (std::ptrdiff_t r = rank; r < end_of_part; r += condensed) *last++ = r;
        arrange(from, to, part, Ranks(room.rank, last));
        for (; rank < end_of_part; rank += condensed) *result++ = from[rank];
        return result;
    }
    std::uint32_t* const place = room.place_of(level);
    T* const representative = room.representative_of(level);
    int buckets = 32;
    while (buckets < room.buckets(level) && buckets < part.n / 4) buckets *= 2;
    with_map(range, part.by_pattern, buckets, [&](const auto& map) {
        // The place of the next number of a bucket; of a small one its end, and a mark.
        std::memset(place, 0, buckets * sizeof *place);
        for_each_bucket(x, part.n, map, [&](std::ptrdiff_t, unsigned b, int) { ++place[b]; });
        auto sum = static_cast<std::uint32_t>(part.first);
        for (int b = 0; b < buckets; ++b) {
            const std::uint32_t c = place[b];
            place[b] = c <= small_bucket ? small | (sum + c) : sum;
            sum += c;
        }
        for_each_bucket(x, part.n, map, [&](std::ptrdiff_t j, unsigned b, int) {
            if (place[b] & small) representative[b] = x[j];
            else to[place[b]++] = x[j];
        });
    });
    std::ptrdiff_t first = part.first;
    for (int b = 0; b < buckets; ++b) {
        const auto end = static_cast<std::ptrdiff_t>(place[b] & ~small);
        if (place[b] & small) {
            for (; rank < end; rank += condensed) *result++ = representative[b];
        } else {
            const Part inner = {first, end - first, end - first > part.n / 2};
            result = condense_part(to + first, to, from, inner, level + 1, room, result);
            while (rank < end) rank += condensed;
        }
        first = end;
    }
    return result;
}

}  // namespace detail

// k of the 8k observations x, in ascending order: the count of the observations up to any v is 8
// times the count of values up to v, within 4 + 23.
template <class T> void condense(const T* x, std::ptrdiff_t k, const RunRoom<T>& room, T* result) {
    detail::condense_part(x, room.spare, room.out, {0, condensed * k, false}, 0, room, result);
}

// Of the 2k numbers of two ascending arrays, merged, those at even or at odd places; `result` has
// room for k + 1.
template <class T>
void merge_halved(const T* a, const T* b, std::ptrdiff_t k, bool odd, T* result) {
    const T *const a_end = a + k, *const b_end = b + k;
    std::ptrdiff_t t =
        !odd;  // the next place goes to t / 2, and the one after it there, too, or not
    while (a != a_end && b != b_end) {
        const T x = *a, y = *b;
        const bool second = y < x;
        result[t++ / 2] = second ? y : x;
        a += !second;
        b += second;
    }
    while (a != a_end) result[t++ / 2] = *a++;
    while (b != b_end) result[t++ / 2] = *b++;
}

// The least number of [low, high] of which `reached`, monotone and true for the last, is true.
template <class T, class Reached> T bisect(T low, T high, Reached reached) {
    using Key = std::conditional_t<sizeof(T) == 8, std::int64_t, std::int32_t>;
    using Distance = std::make_unsigned_t<Key>;
    const auto key = [](T x) {
        return static_cast<Key>(detail::ordered(vm::filled<vm::Block<T>>(x))[0]);
    };
    const auto number = [](Key k) {
        return std::bit_cast<T>(k < 0 ? k ^ std::numeric_limits<Key>::max() : k);
    };
    Key first = key(low), last = key(high);
    while (first < last) {
        const auto half = (static_cast<Distance>(last) - static_cast<Distance>(first)) / 2;
        const auto middle = static_cast<Key>(static_cast<Distance>(first) + half);
        if (reached(number(middle))) last = middle;
        else first = middle + 1;
    }
    return number(first) + T(0);  // no -0
}

// The sketches of all variables of a task.
template <class T> class Stream {
public:
    Stream() = default;
    // The task's, or one without a variable where it has none.
    explicit Stream(const Task& task)
        : state_(static_cast<StreamState*>(task.kept[static_cast<int>(Kept::stream)])),
          raw_(static_cast<T*>(task.kept[static_cast<int>(Kept::stream_raw)])),
          levels_(static_cast<T*>(task.kept[static_cast<int>(Kept::stream_levels)])) {}

    bool started() const { return state_ != nullptr && state_->k > 0; }
    std::ptrdiff_t k() const { return state_->k; }
    std::ptrdiff_t p() const { return state_->p; }
    StreamVariable& variable(std::ptrdiff_t i) const { return state_->variable[i]; }
    std::ptrdiff_t run() const { return condensed * state_->k; }
    // Observations of the run that is not full, and full runs.
    std::ptrdiff_t open(std::ptrdiff_t i) const {
        return static_cast<std::ptrdiff_t>(variable(i).count % run());
    }
    std::uint64_t runs(std::ptrdiff_t i) const { return variable(i).count / run(); }
    std::uint64_t most_observations() const {
        std::uint64_t most = 0;
        for (std::ptrdiff_t i = 0; i < p(); ++i) most = std::max(most, variable(i).count);
        return most;
    }

    // The room of p variables with up to `count` observations each; false when there is no memory,
    // and then what the sketches hold is as it was. A state that has not started is begun.
    static bool make_room(Task& task, std::ptrdiff_t k, std::ptrdiff_t p, std::uint64_t count) {
        const auto run = static_cast<std::uint64_t>(condensed * k);
        // A stream whose first observation was NaN counts none.
        const std::uint64_t most = std::clamp<std::uint64_t>(count, 1, run);
        std::uint64_t chunks = (most + raw_chunk - 1) / raw_chunk;
        int levels = 0;
        while (count / run >> levels != 0) ++levels;
        KeptLayout own, raw, values;
        own.reserve(1, sizeof(StreamState));
        const auto variables = own.reserve(p, sizeof(StreamVariable));
        raw.reserve(chunks * raw_chunk, sizeof(T), p);
        values.reserve(static_cast<std::uint64_t>(levels) * k, sizeof(T), p);
        const void* held = task.kept[static_cast<int>(Kept::stream_raw)];
        if (held != nullptr && block_size(held) < raw.size()) {
            // Twice what is needed: many small blocks do not move it every time.
            raw = KeptLayout();
            raw.reserve(std::min(2 * chunks, (run + raw_chunk - 1) / raw_chunk) * raw_chunk,
                        sizeof(T), p);
        }
        char* start = keep(task, Kept::stream, own);
        if (start == nullptr || keep(task, Kept::stream_raw, raw) == nullptr ||
            (levels > 0 && keep(task, Kept::stream_levels, values) == nullptr))
            return false;
        auto* state = reinterpret_cast<StreamState*>(start);
        state->variable = reinterpret_cast<StreamVariable*>(start + variables);
        state->k = k;
        state->p = p;
        return true;
    }

    T* raw(std::ptrdiff_t i, std::ptrdiff_t j) const {
        return raw_ + (j / raw_chunk * p() + i) * raw_chunk + j % raw_chunk;
    }
    T* level(std::ptrdiff_t i, int l) const { return levels_ + (l * p() + i) * k(); }

    // Calls f(values, count) for the parts of the first n observations of the open run.
    template <class F> void for_each_raw(std::ptrdiff_t i, std::ptrdiff_t n, F f) const {
        for (std::ptrdiff_t j = 0; j < n; j += raw_chunk)
            f(raw(i, j), n - j < raw_chunk ? n - j : raw_chunk);
    }
    // Copies them, and gives the end of the copy.
    T* copy_raw(std::ptrdiff_t i, std::ptrdiff_t n, T* to) const {
        for_each_raw(i, n, [&](const T* part, std::ptrdiff_t c) { to = std::copy_n(part, c, to); });
        return to;
    }

    // Adds n observations of variable i. There is room.
    void add(std::ptrdiff_t i, const T* x, std::ptrdiff_t stride, std::ptrdiff_t n,
             const RunRoom<T>& room) const {
        while (n > 0 && !variable(i).nan) {
            const std::ptrdiff_t at = open(i);
            if (at == 0 && stride == 1 && n >= run()) {
                add_run(i, x, room);
                x += run();
                n -= run();
                continue;
            }
            const std::ptrdiff_t m = std::min({n, run() - at, raw_chunk - at % raw_chunk});
            T* const to = raw(i, at);
            for (std::ptrdiff_t j = 0; j < m; ++j) to[j] = x[j * stride];
            if (!extend(variable(i), range_of(to, m))) return;
            x += m * stride;
            n -= m;
            if (at + m < run()) {
                variable(i).count += m;
            } else {
                copy_raw(i, run(), room.run);
                variable(i).count -= at;
                add_run(i, room.run, room);
            }
        }
    }

    // Adds the summary of 2^l runs that is in the room: to level l, or with what is there to the
    // next.
    void add_summary(std::ptrdiff_t i, int l, const RunRoom<T>& room) const {
        StreamVariable& v = variable(i);
        T *carried = room.summary, *merged = room.merged;
        const std::uint64_t before = runs(i);
        v.count += static_cast<std::uint64_t>(run()) << l;
        for (; before >> l & 1; ++l) {
            merge_halved(level(i, l), carried, k(), v.odd >> l & 1, merged);
            v.odd ^= std::uint64_t(1) << l;
            std::swap(carried, merged);
        }
        std::copy_n(carried, k(), level(i, l));
    }

    // Adds the sketch of variable i of another stream of the same k. There is room.
    void add_sketch(std::ptrdiff_t i, const Stream& other, const RunRoom<T>& room) const {
        StreamVariable& v = variable(i);
        const StreamVariable& from = other.variable(i);
        v.nan |= from.nan;
        if (v.nan || from.count == 0) return;
        const bool first = v.count == 0;
        const double least = first ? from.least : std::min(v.least, from.least);
        const double greatest = first ? from.greatest : std::max(v.greatest, from.greatest);
        other.for_each_raw(i, other.open(i),
                           [&](const T* part, std::ptrdiff_t n) { add(i, part, 1, n, room); });
        for (int l = 0; other.runs(i) >> l != 0; ++l)
            if (other.runs(i) >> l & 1) {
                std::copy_n(other.level(i, l), k(), room.summary);
                add_summary(i, l, room);
            }
        v.least = least;
        v.greatest = greatest;
    }

    // Observations up to v, the open run being sorted.
    std::uint64_t count_up_to(std::ptrdiff_t i, const T* sorted_run, T v) const {
        const auto up_to = [&](const T* x, std::ptrdiff_t n) {
            return static_cast<std::uint64_t>(std::upper_bound(x, x + n, v) - x);
        };
        std::uint64_t count = up_to(sorted_run, open(i));
        for (int l = 0; runs(i) >> l != 0; ++l)
            if (runs(i) >> l & 1) count += up_to(level(i, l), k()) * condensed << l;
        return count;
    }

    // The least value whose count reaches order * count, for each order.
    void quantiles(std::ptrdiff_t i, const T* orders, std::ptrdiff_t m, const RunRoom<T>& room,
                   T* result) const {
        const StreamVariable& v = variable(i);
        if (v.nan) {
            std::fill_n(result, m, std::numeric_limits<T>::quiet_NaN());
            return;
        }
        copy_raw(i, open(i), room.run);
        if (open(i) > 0)
            select(static_cast<const T*>(room.run), open(i), range_of(room.run, open(i)),
                   Ranks::all(), room.out, room.spare);
        for (std::ptrdiff_t a = 0; a < m; ++a) {
            const double wanted = orders[a] * static_cast<double>(v.count);
            // Of the greatest observation no summary need know.
            const T least = static_cast<T>(orders[a] < 1 ? v.least : v.greatest);
            result[a] = bisect(least, static_cast<T>(v.greatest), [&](T value) {
                return static_cast<double>(count_up_to(i, room.out, value)) >= wanted;
            });
        }
    }

    // Widens the range of a variable; false for NaN, which it keeps in mind.
    static bool extend(StreamVariable& v, const Range<T>& range) {
        v.nan |= range.nan;
        if (v.nan) return false;
        if (v.count == 0 || range.least < v.least) v.least = range.least;
        if (v.count == 0 || range.greatest > v.greatest) v.greatest = range.greatest;
        return true;
    }

private:
    // A whole run; the open one is empty.
    void add_run(std::ptrdiff_t i, const T* x, const RunRoom<T>& room) const {
        const Range<T> range = range_of(x, run());
        if (!extend(variable(i), range)) return;
        condense(x, k(), room, room.summary);
        add_summary(i, 0, room);
    }

    StreamState* state_;
    T *raw_, *levels_;
};

}  // namespace kef::stats
