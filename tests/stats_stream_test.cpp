// Streaming quantiles: the bound of the rank error, images, merging.
#include <bit>
#include <cstring>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

template <class T> struct StreamTask {
    std::int32_t p, n = 1, storage, count, one = 1;
    T epsilon;
    std::vector<T> orders, quantiles;
    kef_ss_task* task = nullptr;
    StreamTask(double epsilon, int p = 1, int storage = VTS_SS_STORAGE_ROWS)
        : p(p), storage(storage), epsilon(T(epsilon)) {
        for (int a = 0; a <= 64; ++a) orders.push_back(T(a / 64.0));
        count = static_cast<int>(orders.size());
        quantiles.assign(p * orders.size(), T(untouched));
        EXPECT_EQ(VTS_SS_STATUS_OK, Api<T>::new_task(&task, &this->p, nullptr, nullptr, nullptr,
                                                     nullptr, nullptr, 0));
        __vtsiSSEditTask(task, VTS_SS_ID_COUNT, &n);
        __vtsiSSEditTask(task, VTS_SS_ID_X_STORAGE, &this->storage);
        __vtsiSSEditTask(task, VTS_SS_ID_STREAM_QUANTILE_ORDER_COUNT, &count);
        __vtsiSSEditTask(task, VTS_SS_ID_STREAM_QUANTILE_PARAMETER_COUNT, &one);
        Api<T>::edit(task, VTS_SS_ID_STREAM_QUANTILE_ORDERS, orders.data());
        Api<T>::edit(task, VTS_SS_ID_STREAM_QUANTILES, quantiles.data());
        Api<T>::edit(task, VTS_SS_ID_STREAM_QUANTILE_PARAMETERS, &this->epsilon);
    }
    ~StreamTask() { __vtsSSDeleteTask(&task); }
    StreamTask(const StreamTask&) = delete;

    std::int32_t add(const T* x, int size) {
        n = size;
        Api<T>::edit(task, VTS_SS_ID_X, x);
        return Api<T>::stream_quantiles(task, 0, 0);
    }
    // Blocks of [j*p + i] in columns, or whole variables in rows; the last one asks.
    void feed(const std::vector<T>& x, int size) {
        const int all = static_cast<int>(x.size()) / p, asked = count;
        for (int first = 0; first < all; first += size) {
            const int part = std::min(size, all - first);
            count = first + part == all ? asked : 0;
            ASSERT_EQ(VTS_SS_STATUS_OK, add(x.data() + first * p, part));
        }
    }
    std::int32_t merge(StreamTask& other) {
        return Api<T>::merge(task, other.task, VTS_SS_ESTIMATE_STREAM_QUANTILES, 0);
    }
    std::vector<char> image() const {
        std::vector<char> bytes(__vtsSSGetStreamQuantilesSize(task));
        EXPECT_EQ(VTS_SS_STATUS_OK, __vtsSSSaveStreamQuantiles(task, bytes.data()));
        return bytes;
    }
    std::int32_t load(const std::vector<char>& bytes) {
        return __vtsSSLoadStreamQuantiles(task, bytes.data(), bytes.size());
    }
};

// Each quantile is an observation, and its rank is right: exactly while nothing has been condensed,
// else within what the levels in use allow, which is less than epsilon N.
template <class T>
void expect_ranks(const StreamTask<T>& stream, std::vector<T> x, int i = 0, double share = 1) {
    std::sort(x.begin(), x.end());
    const double N = double(x.size()), k = std::ceil(16 / double(stream.epsilon));
    const double levels = std::max(0.0, std::floor(std::log2(N / (8 * k))));
    const double bound =
        N < 8 * k ? 0 : std::min(N / (2 * k) * (7 + levels) + 1, share * stream.epsilon * N);
    for (std::size_t a = 0; a < stream.orders.size(); ++a) {
        const T value = stream.quantiles[i * stream.orders.size() + a];
        const auto [low, high] = std::equal_range(x.begin(), x.end(), value);
        const double first = double(low - x.begin() + 1), last = double(high - x.begin());
        double wanted = stream.orders[a] * N;
        if (bound == 0) wanted = std::max(1.0, std::ceil(wanted));
        ASSERT_LT(low, high) << "order " << stream.orders[a] << ": " << value;
        EXPECT_LE(first - wanted, bound) << "order " << stream.orders[a];
        EXPECT_LE(wanted - last, bound) << "order " << stream.orders[a];
        if (stream.orders[a] == 0) EXPECT_EQ(x.front(), value);
        if (stream.orders[a] == 1) EXPECT_EQ(x.back(), value);
    }
}

template <class T> std::vector<std::pair<std::string, std::vector<T>>> streams(int n) {
    std::mt19937 generator(n);
    std::normal_distribution<double> normal;
    const auto make = [&](auto value) {
        std::vector<T> x(n);
        for (int j = 0; j < n; ++j) x[j] = T(value(j));
        return x;
    };
    return {
        {"normal", make([&](int) { return normal(generator); })},
        {"ascending", make([](int j) { return j; })},
        {"descending", make([](int j) { return -j; })},
        {"saw-tooth", make([](int j) { return j % 977; })},
        {"organ-pipe", make([&](int j) { return std::min(j, n - j); })},
        {"constant", make([](int) { return 3; })},
        {"zoom", make([](int j) { return j % 2 == 0 ? 1.0 / (j + 1) : -1.0 / (j + 1); })},
        {"heavy tails", make([&](int) { return normal(generator) / normal(generator); })},
        {"many scales", make([&](int) { return std::exp(20 * normal(generator)); })},
        {"infinities", make([&](int j) {
             return j % 3 == 0 ? infinity : j % 3 == 1 ? -infinity : j;
         })},
    };
}

template <class T> void check_bound() {
    // Runs of 256, 1280 and 12800 observations.
    for (const double epsilon : {0.5, 0.1, 0.01})
        for (const int n : {1, 255, 256, 257, 1281, 20000, 100000})
            for (const auto& [name, x] : streams<T>(n)) {
                SCOPED_TRACE(testing::Message()
                             << name << ", n = " << n << ", epsilon " << epsilon);
                for (const int block : {n, 1000}) {
                    StreamTask<T> stream(epsilon);
                    stream.feed(x, block);
                    // Errors to either side cancel, where the data do not work against it.
                    const bool cancel = name == "normal" && n == 100000;
                    expect_ranks(stream, x, 0, cancel ? 0.1 : 1);
                }
            }
}

TEST(StatsStream, RankErrorIsBounded) {
    check_bound<double>();
    check_bound<float>();
}

// Whatever the blocks and the storage are, the sketch is the same; variables do not mix.
TEST(StatsStream, BlocksStoragesAndIndices) {
    const int p = 3, n = 5000;
    const std::int32_t indices[p] = {1, 0, 1};
    const auto data = normal_data<double>(p, n, 0);
    std::vector<double> rows(data.size());
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < p; ++i) rows[i * n + j] = data[j * p + i];
    StreamTask<double> whole(0.1, p);
    whole.feed(rows, n);
    for (int i = 0; i < p; ++i)
        expect_ranks(whole, {rows.begin() + i * n, rows.begin() + (i + 1) * n}, i);
    for (const int block : {1, 7, 1280, 4999}) {
        StreamTask<double> columns(0.1, p, VTS_SS_STORAGE_COLUMNS);
        columns.feed(data, block);
        EXPECT_EQ(whole.quantiles, columns.quantiles) << block;
    }
    StreamTask<double> some(0.1, p);
    __vtsiSSEditTask(some.task, VTS_SS_ID_INDICES, indices);
    some.feed(rows, n);
    const std::size_t m = some.orders.size();
    EXPECT_EQ(untouched, some.quantiles[m]);
    EXPECT_EQ(whole.quantiles[2 * m + 5], some.quantiles[2 * m + 5]);
}

TEST(StatsStream, NanStays) {
    for (const int at : {0, 100, 255}) {
        auto x = normal_data<double>(1, 256, 0);
        x[at] = nan;
        StreamTask<double> stream(0.5);
        stream.feed(x, 256);
        EXPECT_TRUE(std::isnan(stream.quantiles[0]));
        StreamTask<double> clean(0.5), late(0.5);
        x[at] = 0;
        clean.feed(x, 100);
        clean.feed({nan}, 1);
        clean.feed(x, 100);
        EXPECT_TRUE(std::isnan(clean.quantiles[64]));
        late.feed(x, 256);
        ASSERT_EQ(VTS_SS_STATUS_OK, late.merge(stream));
        EXPECT_TRUE(std::isnan(late.quantiles[64]));
    }
}

// A refused call adds nothing: the state is that of the calls before.
TEST(StatsStream, Refused) {
    const auto x = normal_data<double>(2, 3000, 0);
    StreamTask<double> stream(0.1, 2), calm(0.1, 2);
    stream.feed(x, 700), calm.feed(x, 700);
    const auto refused = [&](std::int32_t status) {
        stream.quantiles[3] = untouched;
        EXPECT_EQ(status, stream.add(x.data(), 10));
        EXPECT_EQ(untouched, stream.quantiles[3]);
        EXPECT_EQ(calm.image(), stream.image());
    };
    const auto changed = [&](auto& place, auto value, std::int32_t status) {
        const auto held = place;
        place = value;
        refused(status);
        place = held;
    };
    for (const double epsilon : {0.0, -0.1, 0.6, nan, 0x1p-21, 0.05})
        changed(stream.epsilon, epsilon, VTS_SS_STATUS_BAD_PARAMETERS);
    for (const double order : {-0.1, 1.1, nan})
        changed(stream.orders[5], order, VTS_SS_STATUS_BAD_PARAMETERS);
    for (const int one : {0, 2, -1}) changed(stream.one, one, VTS_SS_STATUS_BAD_PARAMETERS);
    changed(stream.count, -1, VTS_SS_STATUS_BAD_PARAMETERS);
    changed(stream.p, 1, VTS_SS_STATUS_BAD_DIMENSION);
    changed(stream.p, 3, VTS_SS_STATUS_BAD_DIMENSION);
    StreamTask<double> other(0.05, 2), wide(0.1, 3);
    other.feed(x, 100), wide.feed(x, 100);
    EXPECT_EQ(VTS_SS_STATUS_BAD_PARAMETERS, stream.merge(other));
    EXPECT_EQ(VTS_SS_STATUS_BAD_DIMENSION, stream.merge(wide));
    EXPECT_EQ(calm.image(), stream.image());
}

// --- merging ----------------------------------------------------------------------

TEST(StatsStream, MergedSketchesKeepTheBound) {
    for (const int n : {300, 5000, 100000})
        for (const auto& [name, x] : streams<double>(n))
            for (const int parts : {2, 7}) {
                SCOPED_TRACE(testing::Message() << name << ", n = " << n << ", parts " << parts);
                StreamTask<double> merged(0.1);
                for (int part = 0; part < parts; ++part) {
                    const auto at = [&](int k) {
                        return x.begin() + std::int64_t(n) * k * k / (parts * parts);
                    };
                    StreamTask<double> own(0.1);
                    own.feed({at(part), at(part + 1)}, 997);
                    const auto before = own.image();
                    ASSERT_EQ(VTS_SS_STATUS_OK, merged.merge(own));
                    EXPECT_EQ(before, own.image());
                }
                expect_ranks(merged, x);
            }
    // A task without a sketch takes sketches of its own epsilon, or of any where it has none.
    StreamTask<double> coarse(0.25), fresh(0.1), any(0.1);
    coarse.feed({1, 2, 3}, 3);
    EXPECT_EQ(VTS_SS_STATUS_BAD_PARAMETERS, fresh.merge(coarse));
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, __vtsSSGetStreamQuantilesSize(fresh.task));
    fresh.feed({5}, 1);
    EXPECT_EQ(5, fresh.quantiles[32]);
    any.task->stream_quantile_parameters = nullptr;
    EXPECT_EQ(VTS_SS_STATUS_OK, any.merge(coarse));
    EXPECT_EQ(coarse.image(), any.image());
    // One without a sketch adds nothing.
    StreamTask<double> empty(0.1), some(0.1);
    some.feed({1, 2}, 2);
    const auto before = some.image();
    EXPECT_EQ(VTS_SS_STATUS_OK, some.merge(empty));
    EXPECT_EQ(before, some.image());
}

// --- images -----------------------------------------------------------------------

template <class T> void check_images() {
    const auto x = normal_data<T>(2, 4000, 0);
    StreamTask<T> stream(0.25, 2, VTS_SS_STORAGE_COLUMNS), back(0.25, 2, VTS_SS_STORAGE_COLUMNS);
    EXPECT_EQ(VTS_SS_STATUS_TOO_FEW_OBSERVATIONS, __vtsSSGetStreamQuantilesSize(stream.task));
    stream.feed(x, 300);
    const auto image = stream.image();
    back.feed(normal_data<T>(2, 9000, 5), 9000);  // goes away
    ASSERT_EQ(VTS_SS_STATUS_OK, back.load(image));
    EXPECT_EQ(image, back.image());
    stream.feed(x, 171), back.feed(x, 1000);
    EXPECT_EQ(stream.quantiles, back.quantiles);

    StreamTask<T> wide(0.25, 3);
    EXPECT_EQ(VTS_SS_STATUS_BAD_DIMENSION, wide.load(image));
    EXPECT_EQ(VTS_SS_STATUS_NULL_TASK,
              __vtsSSLoadStreamQuantiles(nullptr, image.data(), image.size()));
    EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, __vtsSSLoadStreamQuantiles(wide.task, nullptr, 100));
}

TEST(StatsStream, Images) {
    check_images<double>();
    check_images<float>();
    StreamTask<float> single(0.25, 2);
    StreamTask<double> twice(0.25, 2);
    single.feed({1, 2, 3, 4}, 2);
    EXPECT_EQ(VTS_SS_STATUS_BAD_PRECISION, twice.load(single.image()));
}

// Every byte that is changed and every length that is wrong shows, and the task stays as it was.
TEST(StatsStream, DamagedImages) {
    StreamTask<double> stream(0.5), task(0.5);
    stream.feed(normal_data<double>(1, 700, 0), 700);
    task.feed({1, 2, 3}, 3);
    const auto image = stream.image(), before = task.image();
    for (std::size_t at = 0; at < image.size(); ++at) {
        auto damaged = image;
        damaged[at] ^= 1 << at % 8;
        EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, task.load(damaged)) << at;
        damaged = image;
        damaged.resize(at);
        EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, task.load(damaged)) << at;
    }
    auto longer = image;
    longer.resize(image.size() + 4);
    EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, task.load(longer));
    EXPECT_EQ(before, task.image());
}

// Images that somebody has made up, with a checksum that fits.
TEST(StatsStream, ForgedImages) {
    StreamTask<double> stream(0.5), task(0.5);
    stream.feed(normal_data<double>(1, 700, 0), 700);  // two runs of 256 and 188 open
    task.feed({1, 2, 3}, 3);
    const auto image = stream.image(), before = task.image();
    const auto forged = [&](std::size_t at, auto value) {
        auto bytes = image;
        std::memcpy(bytes.data() + at, &value, sizeof value);
        std::uint64_t sum = 0xCBF29CE484222325u;
        for (std::size_t k = 0; k + 8 < bytes.size(); k += 4) {
            std::uint32_t word;
            std::memcpy(&word, bytes.data() + k, 4);
            sum = (sum ^ word) * 0x100000001B3u;
        }
        std::memcpy(bytes.data() + bytes.size() - 8, &sum, 8);
        return task.load(bytes);
    };
    enum : std::size_t {
        p = 8,
        k = 16,
        count = 24,
        least = 40,
        greatest = 48,
        is_nan = 56,
        open = 64
    };
    const std::size_t level = open + 188 * 8;
    for (const std::uint64_t value : {0u, 31u, 33u, 1u << 24, 1u << 30})
        EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(k, value)) << value;
    EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(k, std::int64_t(-32)));
    for (const std::int64_t value : {std::int64_t(2), INT64_MAX, std::int64_t(-1)})
        EXPECT_EQ(VTS_SS_STATUS_BAD_DIMENSION, forged(p, value));
    for (const std::uint64_t value : {std::uint64_t(0), std::uint64_t(699), std::uint64_t(701),
                                      UINT64_MAX, (std::uint64_t(1) << 61) + 700})
        EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(count, value)) << value;
    for (const double value : {nan, 1e9}) EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(least, value));
    for (const double value : {nan, -1e9})
        EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(greatest, value));
    EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(is_nan, std::uint64_t(2)));
    for (const std::size_t at : {std::size_t(open), level, level + 31 * 8})
        for (const double value : {nan, infinity, -infinity})
            EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(at, value)) << at << " " << value;
    double high;
    std::memcpy(&high, image.data() + greatest, 8);
    EXPECT_EQ(VTS_SS_STATUS_BAD_IMAGE, forged(level, high));  // in range, out of order
    EXPECT_EQ(before, task.image());
    EXPECT_EQ(VTS_SS_STATUS_OK, forged(open, high));  // what a stream may hold
}

}  // namespace
}  // namespace stats_tests
