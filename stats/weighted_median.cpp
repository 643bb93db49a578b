// _vtsdSSWMedian, _vtssSSWMedian: the least x with at least half of the weight at or below it.
//
// Selection as in select.h, with sums of weights in place of counts. Sums in double precision leave
// open where near a half of the weight they are; there the sign of an exact sum decides.
#include "stats/computation.h"
#include "stats/quantile.h"

namespace kef::stats {

namespace {

// Observations of one variable and their weights, all positive.
template <class T> struct Weighted {
    const T *x, *w;
    std::ptrdiff_t n;
};

// The sign of the sum of w over x <= v less that over x > v, exactly. Each level splits the
// weights, as they are left by those before, into multiples of an eps sigma, of which n have an
// exact sum, and a rest (Rump, Ogita & Oishi, SIAM J. Sci. Comput. 31:189, 2008).
template <class T> int side(const Weighted<T>& data, T v, double greatest, double scale) {
    double count = 4;
    while (count < 2.0 * static_cast<double>(data.n)) count *= 2;
    // The power of two above all weights.
    const double power =
        2 * std::max(vm::from_bits(vm::to_bits(greatest * scale) & UINT64_C(0x7FF0000000000000)),
                     std::numeric_limits<double>::min());
    constexpr int most = 128;  // from 2^1024 to 2^-1074 in steps of 2^-53 count
    double sigma[most];
    sigma[0] = power * count;
    double total = 0;
    for (int level = 0; level < most; ++level) {
        bool rest = false;
        for (std::ptrdiff_t j = 0; j < data.n; ++j) {
            double left = data.w[j] * scale, part = 0;
            for (int k = 0; k <= level; ++k) {
                part = (sigma[k] + left) - sigma[k];
                left -= part;
            }
            rest |= left != 0;
            total += data.x[j] <= v ? part : -part;
        }
        const double unit = sigma[level] * 0x1p-53;  // no rest is larger
        if (!rest || std::fabs(total) > static_cast<double>(data.n) * unit) break;
        if (level + 1 < most) sigma[level + 1] = unit * count;
    }
    return (total > 0) - (total < 0);
}

template <class T> class Search {
public:
    // Room for the candidates: x and w, and x sorted.
    struct Room {
        T *x, *w, *sorted, *spare;
    };
    Search(const Weighted<T>& data, const Range<T>& range, double greatest_weight, const Room& room)
        : all_(data), range_(range), greatest_(greatest_weight), room_(room) {
        if (greatest_ > std::numeric_limits<double>::max() / 16 / static_cast<double>(data.n))
            scale_ = 0x1p-64;
    }

    double run() {
        if (range_.least == range_.greatest) return range_.least;
        narrow();
        // The least candidate that reaches a half.
        const std::ptrdiff_t m = part_.n;
        std::memcpy(room_.spare, part_.x, m * sizeof(T));
        select(static_cast<const T*>(room_.spare), m, range_of(part_.x, m), Ranks::all(),
               room_.sorted, room_.spare);
        const T *first = room_.sorted, *const end = first + m;
        int reached = 1;
        for (std::ptrdiff_t count = m; count > 0;) {
            const std::ptrdiff_t half = count / 2;
            const int sign = compare(first[half]);
            if (sign < 0) {
                first += half + 1;
                count -= half + 1;
            } else {
                count = half;
                reached = sign;
            }
        }
        const T* next = std::upper_bound(first, end, *first);
        return reached == 0 && next != end ? middle(*first, *next) : *first;
    }

private:
    // With the bound of the error of a sum, which has n + buckets terms at most, and of a half.
    void set_total(double total) {
        half_ = total / 2;
        error_ = (static_cast<double>(all_.n) + 4096) * 0x1p-52 * total;
    }

    // The sign of the weight at or below v less a half.
    int compare(T v) const {
        double sum = below_;
        for (std::ptrdiff_t j = 0; j < part_.n; ++j)
            if (part_.x[j] <= v) sum += part_.w[j] * scale_;
        if (std::fabs(sum - half_) > error_) return sum > half_ ? 1 : -1;
        return side(all_, v, greatest_, scale_);
    }

    // Reduces the candidates, with the weight below them, until they are few or do not get fewer.
    void narrow() {
        part_ = all_;
        if (part_.n <= few) {
            double total = 0;
            for (std::ptrdiff_t j = 0; j < part_.n; ++j) total += part_.w[j] * scale_;
            set_total(total);
        }
        bool by_pattern = false;
        while (part_.n > few) {
            const Range<T> range = part_.n == all_.n ? range_ : range_of(part_.x, part_.n);
            if (range.least == range.greatest) return;
            const std::ptrdiff_t before = part_.n;
            detail::with_map_of(
                range, before, by_pattern,
                [&](const auto& map, auto most, int buckets) { level<most>(map, buckets); });
            const bool helped = part_.n <= before / 2;
            if (!helped && by_pattern) return;
            by_pattern = !helped;
        }
    }

    template <int most, class Map> void level(const Map& map, int buckets) {
        double sum[2][most];
        std::fill_n(sum[0], buckets, 0.0);
        std::fill_n(sum[1], buckets, 0.0);
        detail::for_each_bucket(part_.x, part_.n, map, [&](std::ptrdiff_t j, unsigned b, int odd) {
            sum[odd][b] += part_.w[j] * scale_;
        });
        if (part_.n == all_.n) {
            double total = 0;
            for (int b = 0; b < buckets; ++b) total += sum[0][b] + sum[1][b];
            set_total(total);
        }
        // Those buckets behind which the weight may be half of all, and the next one that is
        // beyond.
        unsigned first = 0, last = 0;
        double next = below_;
        for (; last < static_cast<unsigned>(buckets) - 1; ++last) {
            const double here = sum[0][last] + sum[1][last];
            next += here;
            if (next > half_ + error_) break;
            if (next < half_ - error_) {
                first = last + 1;
                below_ = next;
            }
        }
        std::ptrdiff_t kept = 0;
        detail::for_each_bucket(part_.x, part_.n, map, [&](std::ptrdiff_t j, unsigned b, int) {
            if (b - first > last - first) return;
            room_.x[kept] = part_.x[j];
            room_.w[kept] = part_.w[j];
            ++kept;
        });
        part_ = {room_.x, room_.w, kept};
    }

    const Weighted<T> all_;
    const Range<T> range_;
    const double greatest_;
    const Room room_;
    double scale_ = 1;             // keeps sums from overflow
    Weighted<T> part_;             // the candidates
    double below_ = 0;             // the weight of what is below them
    double half_ = 0, error_ = 0;  // of all weight, and the bound of a sum's error
};

}  // namespace

// The observations of weight 0 take no part.
template <class T> std::int32_t weighted_median(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const auto x = observations_of<T>(task);
    const auto* weights = static_cast<const T*>(task.weights);
    const Range<T> extent = range_of(weights, n);
    if (!are_weights(extent)) return VTS_SS_STATUS_NULL_WEIGHTS;
    const bool zeros = extent.least == 0, copied = zeros || x.stride != 1;

    KeptLayout layout;
    for (int k = 0; k < 4; ++k) layout.reserve(n, sizeof(T));
    const auto own_x = layout.reserve(copied ? n : 0, sizeof(T));
    const auto own_w = layout.reserve(zeros ? n : 0, sizeof(T));
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    const auto at = [&](std::uint64_t offset) { return reinterpret_cast<T*>(start + offset); };
    const std::uint64_t quarter = own_x / 4;

    Weighted<T> data = {nullptr, weights, n};
    if (zeros) {
        data.w = at(own_w);
        data.n =
            std::copy_if(weights, weights + n, at(own_w), [](T w) { return w != 0; }) - at(own_w);
    }
    for (std::ptrdiff_t i = 0; i < p; ++i) {
        if (!is_selected(task, i)) continue;
        const T* from = x.at(i, 0);
        data.x = copied ? at(own_x) : from;
        if (copied)
            for (std::ptrdiff_t j = 0, k = 0; j < n; ++j)
                if (weights[j] != 0) at(own_x)[k++] = from[j * x.stride];
        const Range<T> range = range_of(data.x, data.n);
        T& result = static_cast<T*>(task.quantiles)[i];
        if (range.nan) {
            result = std::numeric_limits<T>::quiet_NaN();
            continue;
        }
        Search<T> search(data, range, extent.greatest,
                         {at(0), at(quarter), at(2 * quarter), at(3 * quarter)});
        result = static_cast<T>(search.run() + 0.0);  // no -0
    }
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(weighted_median);

}  // namespace kef::stats
