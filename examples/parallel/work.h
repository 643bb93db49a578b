// The work that threads.cpp and mpi.cpp share out: numbered blocks of a Monte Carlo valuation, and
// blocks of one data set whose statistics are merged. docs/parallel.md tells why it is cut so.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "kef_dist.h"
#include "kef_rng.h"
#include "kef_stats.h"
#include "kef_vm.h"

namespace parallel {

inline void check(std::int32_t status, const char* meaning) {
    if (status < 0) throw std::runtime_error(meaning);
}

// A stream of its own for a block: the seeded stream without the numbers of the blocks before.
class BlockStream {
public:
    BlockStream(std::uint32_t seed, std::uint64_t numbers_before) {
        check(__vtsNewStreamEx(&stream_, VTS_BRNG_MRG32K3A, 1, &seed), "no stream");
        check(__vtsSkipAheadStream(stream_, numbers_before), "no skip");
    }
    ~BlockStream() { __vtsDeleteStream(&stream_); }
    BlockStream(const BlockStream&) = delete;
    operator kef_stream*() const { return stream_; }

private:
    kef_stream* stream_ = nullptr;
};

// ---- valuation

// The right to pay a strike for the geometric mean of prices at some dates.
struct Option {
    static constexpr int dates = 12, paths = 1 << 13;  // of a block
    double price = 100, strike = 105, volatility = 0.3, rate = 0.03, years = 1;

    // Mean and deviation of the logarithm of the geometric mean.
    double mean() const {
        return std::log(price) +
               (rate - volatility * volatility / 2) * years * (dates + 1) / (2.0 * dates);
    }
    double deviation() const {
        return volatility *
               std::sqrt(years * (dates + 1) * (2 * dates + 1) / (6.0 * dates * dates));
    }

    // The value in closed form (Kemna & Vorst, J. Banking Finance 14 (1990) 113-129).
    double exact() const {
        const double s = deviation(), d = (mean() - std::log(strike)) / s + s;
        const auto below = [](double x) { return std::erfc(-x / std::sqrt(2.0)) / 2; };
        return std::exp(-rate * years) *
               (std::exp(mean() + s * s / 2) * below(d) - strike * below(d - s));
    }

    // Sum of the discounted payoffs of a block's paths. A normal number by inversion takes one
    // number of the stream, so that the place of every block in it is known.
    double block(std::uint32_t seed, std::uint64_t number) const {
        const BlockStream stream(seed, number * paths * dates);
        std::vector<double> z((std::size_t)paths * dates), mean_price(paths);
        check(
            _vtsdRngGaussian(VTS_METHOD_GAUSSIAN_INVERSION, stream, paths * dates, z.data(), 0, 1),
            "no numbers");
        const double step = volatility * std::sqrt(years / dates);
        for (int path = 0; path < paths; ++path) {
            double sum = 0;  // of the logarithms at the dates: increment j is in all from j on
            for (int j = 0; j < dates; ++j) sum += (dates - j) * z[(std::size_t)(path * dates + j)];
            mean_price[(std::size_t)path] = mean() + step * sum / dates;
        }
        _vtmdExp_HA(paths, mean_price.data(), mean_price.data());
        double sum = 0;
        for (const double m : mean_price) sum += std::fmax(m - strike, 0);
        return std::exp(-rate * years) * sum;
    }

    // The value from the sums of all blocks, added in the order of their numbers.
    static double value(const std::vector<double>& sums) {
        double sum = 0;
        for (const double s : sums) sum += s;
        return sum / ((double)sums.size() * paths);
    }
};

// ---- statistics

// Mean, variances, covariances, extremes and quantiles of the observations that were added.
class Summary {
public:
    static constexpr int p = 3, matrix = p * (p + 1) / 2;

    Summary() {
        check(__vtsdSSNewTask(&task_, &p_, &n_, &storage_, nullptr, nullptr, nullptr, 0),
              "no task");
        __vtsdSSEditTask(task_, VTS_SS_ID_ACCUMULATED_WEIGHTS, state_.weights);
        __vtsdSSEditCovCor(task_, state_.mean, state_.covariance, &layout_, nullptr, nullptr);
        __vtsdSSEditTask(task_, VTS_SS_ID_MINIMUM, state_.least);
        __vtsdSSEditTask(task_, VTS_SS_ID_MAXIMUM, state_.greatest);
        __vtsdSSEditStreamQuantiles(task_, &orders_, order_, quantiles, &one_, &epsilon_);
    }
    ~Summary() { __vtsSSDeleteTask(&task_); }
    Summary(const Summary&) = delete;

    // n observations of p numbers, one after another.
    void add(std::int32_t n, const double* x) {
        n_ = n;
        __vtsdSSEditTask(task_, VTS_SS_ID_X, x);
        check(_vtsdSSBasic(task_, basic, VTS_SS_METHOD_TILED), "no covariance");
        check(_vtsdSSMinmax(task_, extremes, VTS_SS_METHOD_MINMAX), "no extremes");
        check(_vtsdSSStreamQuantiles(task_, 0, 0), "no quantiles");
    }

    void merge(Summary& other) {
        orders_ = other.orders_ = 3;  // the results are written
        const std::uint64_t quantiles_too =
            other.state_.weights[0] > 0 ? VTS_SS_ESTIMATE_STREAM_QUANTILES : 0;
        check(
            _vtsdSSMerge(task_, other.task_, basic | extremes | quantiles_too, VTS_SS_METHOD_TILED),
            "no merge");
    }

    // What another process needs to merge this: result arrays and the image of the quantiles.
    std::vector<char> image() const {
        const std::int64_t size = state_.weights[0] > 0 ? __vtsSSGetStreamQuantilesSize(task_) : 0;
        check((std::int32_t)std::min<std::int64_t>(size, 0), "no image");
        std::vector<char> bytes(sizeof state_ + (std::size_t)size);
        std::memcpy(bytes.data(), &state_, sizeof state_);
        if (size > 0)
            check(__vtsSSSaveStreamQuantiles(task_, bytes.data() + sizeof state_), "no image");
        return bytes;
    }
    void load(const char* bytes, std::size_t size) {
        if (size < sizeof state_) throw std::runtime_error("an image that is cut off");
        std::memcpy(&state_, bytes, sizeof state_);
        if (size > sizeof state_)
            check(__vtsSSLoadStreamQuantiles(task_, bytes + sizeof state_, size - sizeof state_),
                  "a wrong image");
    }

    // Twelve digits of what is rounded and all of what is not.
    void print() const {
        std::printf("observations %.0f\n", state_.weights[0]);
        for (int i = 0; i < p; ++i)
            std::printf(
                "variable %d: mean %.12g minimum %.17g maximum %.17g quartiles %.4g %.4g %.4g\n",
                i + 1, state_.mean[i], state_.least[i], state_.greatest[i], quantiles[3 * i],
                quantiles[3 * i + 1], quantiles[3 * i + 2]);
        for (int k = 0; k < matrix; ++k)
            std::printf("%s%.12g", k == 0 ? "covariance " : " ", state_.covariance[k]);
        std::printf("\n");
    }

private:
    static constexpr std::uint64_t basic = VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE,
                                   extremes = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;
    kef_ss_task* task_ = nullptr;
    const std::int32_t p_ = p, storage_ = VTS_SS_STORAGE_COLUMNS, layout_ = VTS_SS_LAYOUT_LOWER,
                       one_ = 1;
    std::int32_t n_ = 0, orders_ = 0;
    const double order_[3] = {0.25, 0.5, 0.75}, epsilon_ = 0.001;
    struct {
        double weights[2] = {0, 0}, mean[p], covariance[matrix], least[p] = {NAN, NAN, NAN},
               greatest[p] = {NAN, NAN, NAN};
    } state_;
    double quantiles[3 * p];
};

// The data set: correlated normal vectors far from zero, block by block.
struct Data {
    static constexpr int observations = 5000;  // of a block
    static std::vector<double> block(std::uint32_t seed, std::uint64_t number) {
        const BlockStream stream(seed, number * observations * Summary::p);
        const double mean[] = {1000, -50, 0}, factor[] = {1, 0.5, -0.2, 2, 0.3, 0.1};  // by columns
        std::vector<double> x((std::size_t)observations * Summary::p);
        check(_vtsdRngGaussianMV(VTS_METHOD_GAUSSIAN_INVERSION, stream, observations, x.data(),
                                 Summary::p, VTS_MATRIX_PACKED, mean, factor),
              "no numbers");
        return x;
    }
};

// Blocks of the part `worker` of `workers`: first to last - 1.
struct Part {
    std::uint64_t first, last;
    Part(std::uint64_t blocks, std::uint64_t worker, std::uint64_t workers)
        : first(blocks * worker / workers), last(blocks * (worker + 1) / workers) {}
};

inline std::uint64_t count_of(const char* word) {
    char* end;
    const unsigned long long count = std::strtoull(word, &end, 10);
    if (*end != 0 || end == word || count < 1 || count > 1000000)
        throw std::runtime_error(std::string("not a count: ") + word);
    return count;
}

inline void print_value(const std::vector<double>& sums) {
    const double value = Option::value(sums), exact = Option().exact();
    std::printf("value %.17g, %+.1e beside the closed form\n", value, value / exact - 1);
}

}  // namespace parallel
