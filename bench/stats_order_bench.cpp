// Order statistics beside the standard library's algorithms and the P^2 algorithm of
// Boost.Accumulators: nanoseconds per number, n = 1000000, one variable.
#include <malloc.h>

#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics.hpp>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "stats_bench.h"

namespace kef::bench {

namespace {

constexpr std::int32_t n = 1000000, one = 1, five = 5;
const double orders[five] = {0.05, 0.25, 0.5, 0.75, 0.95};

// A task over x with all that the computations below want.
struct Task {
    const std::int32_t storage = VTS_SS_STORAGE_ROWS;
    const double epsilon = 1e-3;
    std::vector<double> quantiles = std::vector<double>(five), sorted;
    kef_ss_task* task = nullptr;
    Task(const std::vector<double>& x, const std::vector<double>& w, bool sort = false) {
        __vtsdSSNewTask(&task, &one, &n, &storage, x.data(), w.data(), nullptr, 0);
        if (sort) sorted.resize(n);
        __vtsdSSEditQuantiles(task, &five, orders, quantiles.data(), sort ? sorted.data() : nullptr,
                              &storage);
        __vtsdSSEditStreamQuantiles(task, &five, orders, quantiles.data(), &one, &epsilon);
        __vtsdSSEditTask(task, VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, quantiles.data());
    }
    ~Task() { __vtsSSDeleteTask(&task); }
    void operator()(std::int32_t (*compute)(kef_ss_task*, std::uint64_t, std::int32_t)) {
        if (compute(task, 0, 0) != VTS_SS_STATUS_OK) std::puts("refused"), std::exit(1);
        sink += quantiles[0];
    }
    void one_quantile() { __vtsiSSEditTask(task, VTS_SS_ID_QUANTILE_ORDER_COUNT, &one); }
};

// The least time of an algorithm that changes its data, without that of the copy.
double best_on_copy(const std::vector<double>& x,
                    const std::function<void(std::vector<double>&)>& f) {
    std::vector<double> copy;
    double best = 1e30;
    for (int run = 0; run < 7; ++run) {
        copy = x;
        const double start = now();
        f(copy);
        best = std::min(best, now() - start);
        sink += copy[n / 2];
    }
    return best;
}

void row(const char* what, const std::string& data, double own, double peer, const char* name) {
    std::printf("%-24s %-12s %8.2f %9.2f %6.2f  %s\n", what, data.c_str(), own / n, peer / n,
                own / peer, name);
}

double p_square(const std::vector<double>& x) {
    namespace acc = boost::accumulators;
    using Quantiles = acc::accumulator_set<double, acc::stats<acc::tag::extended_p_square>>;
    return best_time([&] {
        Quantiles a(acc::tag::extended_p_square::probabilities =
                        std::vector<double>(orders, orders + five));
        for (const double v : x) a(v);
        sink += acc::extended_p_square(a)[2];
    });
}

// A stream of 0 .. 2^32 - 1 in blocks, asked at its end; the memory that the task has taken by
// then.
void memory_of_streams() {
    std::printf("%-24s %9s %12s %12s\n", "streaming, memory", "N", "task, bytes", "image");
    for (const double epsilon : {0.1, 0.01, 0.001})
        for (const int count : {10000, 1000000, 100000000}) {
            const std::int32_t block = 10000, storage = VTS_SS_STORAGE_ROWS;
            std::int32_t asked = 0;
            double x[block], median;
            const double half = 0.5;
            kef_ss_task* task;
            __vtsdSSNewTask(&task, &one, &block, &storage, x, nullptr, nullptr, 0);
            __vtsdSSEditStreamQuantiles(task, &asked, &half, &median, &one, &epsilon);
            const auto used = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
            const std::size_t before = used();
            std::mt19937 generator(1);
            for (int first = 0; first < count; first += block) {
                for (double& v : x) v = generator();
                asked = first + block == count;
                _vtsdSSStreamQuantiles(task, 0, 0);
            }
            std::printf("epsilon %-16g %9d %12zu %12lld\n", epsilon, count, used() - before,
                        static_cast<long long>(__vtsSSGetStreamQuantilesSize(task)));
            __vtsSSDeleteTask(&task);
        }
}

// The worst rank error of five orders over data, in units of epsilon n.
double worst_rank(const std::vector<double>& data, const std::vector<double>& sorted,
                  const std::vector<double>& quantiles, double epsilon) {
    double worst = 0;
    for (int k = 0; k < five; ++k) {
        const auto [low, high] = std::equal_range(sorted.begin(), sorted.end(), quantiles[k]);
        const double wanted = orders[k] * n;
        worst =
            std::max({worst, low - sorted.begin() + 1 - wanted, wanted - (high - sorted.begin())});
    }
    return worst / (epsilon * static_cast<double>(data.size()));
}

// The worst rank error over streams of 10^8 numbers whose ranks are known: of five orders, in units
// of epsilon n.
void ranks_of_long_streams() {
    constexpr std::int32_t block = 10000, length = 100000000, teeth = 977;
    constexpr std::uint32_t mask = (1u << 27) - 1;
    using Value = double (*)(std::int32_t);
    // How many of the numbers are below v.
    using Below = double (*)(double);
    const struct {
        const char* name;
        Value value;
        Below below;
    } streams[] = {
        {"ascending", [](std::int32_t j) { return double(j); }, [](double v) { return v; }},
        {"descending", [](std::int32_t j) { return double(length - 1 - j); },
         [](double v) { return v; }},
        {"saw-tooth", [](std::int32_t j) { return double(j % teeth); },
         [](double v) { return v * (length / teeth) + std::min<double>(v, length % teeth); }},
        {"organ-pipe", [](std::int32_t j) { return double(std::min(j, length - 1 - j)); },
         [](double v) { return 2 * v; }},
        {"constant", [](std::int32_t) { return 3.0; },
         [](double v) { return v > 3 ? double(length) : 0.0; }},
        {"random", [](std::int32_t j) { return double(j * 0x9E3779B1u & mask); }, nullptr},
    };
    for (const double epsilon : {0.1, 0.001})
        for (const auto& stream : streams) {
            const std::int32_t storage = VTS_SS_STORAGE_ROWS;
            std::int32_t asked = 0;
            std::vector<double> x(block), quantiles(five);
            kef_ss_task* task;
            __vtsdSSNewTask(&task, &one, &block, &storage, x.data(), nullptr, nullptr, 0);
            __vtsdSSEditStreamQuantiles(task, &asked, orders, quantiles.data(), &one, &epsilon);
            for (std::int32_t first = 0; first < length; first += block) {
                for (std::int32_t j = 0; j < block; ++j) x[j] = stream.value(first + j);
                if (first + block == length) asked = five;
                if (_vtsdSSStreamQuantiles(task, 0, 0) != VTS_SS_STATUS_OK)
                    std::puts("refused"), std::exit(1);
            }
            __vtsSSDeleteTask(&task);
            double worst = 0;
            for (int k = 0; k < five; ++k) {
                double low = 0, high = 0;
                if (stream.below != nullptr) {
                    low = stream.below(quantiles[k]);
                    high = stream.below(quantiles[k] + 1);
                } else {
                    for (std::int32_t j = 0; j < length; ++j) {
                        low += stream.value(j) < quantiles[k];
                        high += stream.value(j) <= quantiles[k];
                    }
                }
                const double wanted = orders[k] * length;
                worst = std::max({worst, low + 1 - wanted, wanted - high});
            }
            std::printf("rank error, n = 10^8 %-12s epsilon %-6g %8.3f  of epsilon n\n",
                        stream.name, epsilon, worst / (epsilon * length));
        }
}

}  // namespace

void order_statistics() {
    std::mt19937 generator(1);
    std::normal_distribution<double> normal;
    std::vector<double> x(n), w(n);
    for (double& v : x) v = normal(generator);
    for (double& v : w) v = 1 + std::fabs(normal(generator));
    auto ascending = x;
    std::sort(ascending.begin(), ascending.end());
    auto heavy = x;
    for (int j = 0; j + 1 < n; ++j) heavy[j] /= x[j + 1];
    const std::pair<const char*, std::vector<double>> sets[] = {
        {"normal", x},
        {"ascending", ascending},
        {"descending", {ascending.rbegin(), ascending.rend()}},
        {"constant", std::vector<double>(n, 3.0)},
        {"heavy tails", heavy},
    };
    std::printf("%-24s %-12s %8s %9s %6s\n", "n = 1000000, ns a number", "data", "own", "peer",
                "own/peer");
    for (const auto& [name, data] : sets) {
        const double sort = best_on_copy(data, [](auto& v) { std::sort(v.begin(), v.end()); });
        const double nth = best_on_copy(data, [](auto& v) {
            auto rest = v.begin();
            for (const double q : orders) {
                const auto at = v.begin() + static_cast<long>((n - 1) * q);
                std::nth_element(rest, at, v.end());
                rest = at;
            }
        });
        Task some(data, w), all(data, w, true), stream(data, w);
        const double quantiles = best_time([&] { some(_vtsdSSQuantiles); });
        row("five quantiles", name, quantiles, nth, "five std::nth_element");
        row("", name, quantiles, sort, "std::sort");
        row("order statistics", name, best_time([&] { all(_vtsdSSQuantiles); }), sort, "std::sort");
        some.one_quantile();
        const auto [selection, deviation, weighted] =
            best_times({[&] { some(_vtsdSSQuantiles); }, [&] { some(_vtsdSSMAD); },
                        [&] { some(_vtsdSSWMedian); }});
        row("MAD", name, deviation, selection, "one quantile, own");
        row("weighted median", name, weighted, selection, "one quantile, own");
        row("streaming, 1e-3", name, best_time([&] { stream(_vtsdSSStreamQuantiles); }),
            p_square(data), "Boost, P^2 of five orders");
        Task once(data, w);
        once(_vtsdSSStreamQuantiles);
        auto ordered = data;
        std::sort(ordered.begin(), ordered.end());
        std::printf("%-24s %-12s %8.3f  of epsilon n\n", "streaming, rank error", name,
                    worst_rank(data, ordered, once.quantiles, once.epsilon));
    }
    memory_of_streams();
    ranks_of_long_streams();
}

}  // namespace kef::bench
