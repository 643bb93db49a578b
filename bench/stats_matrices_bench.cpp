// Mahalanobis distances beside Eigen's Cholesky solver, and the pooled covariance of ten groups
// beside the library's own covariance, the groups in random order and one after the other:
// nanoseconds per element, as stats_bench.cpp. At the end EM
// alone, whose peer tools/missing_speed.R times.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "stats_bench.h"

namespace kef::bench {

namespace {

constexpr std::int32_t groups = 10;

// A task over normal data with all that the computations below want, and its covariance.
struct Task {
    const std::int32_t p, n, storage, layout = VTS_SS_LAYOUT_FULL;
    std::vector<double> x, mean, covariance, pooled, distance;
    std::vector<std::int32_t> group, wanted = std::vector<std::int32_t>(groups, 1);
    std::vector<double> means, covariances;
    kef_ss_task* task = nullptr;
    Task(int p, int n, int storage)
        : p(p),
          n(n),
          storage(storage),
          x(static_cast<std::size_t>(p) * n),
          mean(p),
          covariance(p * p),
          pooled(p * p),
          distance(n),
          group(n),
          means(groups * p),
          covariances(groups * p * p) {
        std::mt19937 generator(1);
        std::normal_distribution<double> normal(5);
        for (double& v : x) v = normal(generator);
        for (std::int32_t& g : group) g = generator() % groups;
        __vtsdSSNewTask(&task, &this->p, &this->n, &this->storage, x.data(), nullptr, nullptr, 0);
        __vtsdSSEditCovCor(task, mean.data(), covariance.data(), &layout, nullptr, nullptr);
        __vtsdSSEditTask(task, VTS_SS_ID_MAHALANOBIS_DISTANCE, distance.data());
        __vtsdSSEditPooledCovariance(task, group.data(), mean.data(), pooled.data(), nullptr,
                                     nullptr, nullptr);
        __vtsiSSEditTask(task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &layout);
        __vtsiSSEditTask(task, VTS_SS_ID_GROUP_COVARIANCE_STORAGE, &layout);
        basic();
    }
    ~Task() { __vtsSSDeleteTask(&task); }
    void basic() {
        check(_vtsdSSBasic(task, VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE,
                           VTS_SS_METHOD_TILED));
    }
    void operator()(std::int32_t (*compute)(kef_ss_task*, std::uint64_t, std::int32_t)) {
        check(compute(task, 0, 0));
        sink += distance[0] + pooled[0];
    }
    void want_groups() {
        __vtsdSSEditPooledCovariance(task, nullptr, nullptr, nullptr, wanted.data(), means.data(),
                                     covariances.data());
    }
    static void check(std::int32_t status, std::int32_t expected = VTS_SS_STATUS_OK) {
        if (status != expected) std::puts("refused"), std::exit(1);
    }
};

// All observations at once, and a thousand at a time, whichever is faster.
template <int order> double eigen_distances(Task& t) {
    using Data = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, order>;
    const Eigen::Map<const Data> X(t.x.data(), t.p, t.n);
    const Eigen::Map<const Eigen::VectorXd> mean(t.mean.data(), t.p);
    const Eigen::Map<const Eigen::MatrixXd> S(t.covariance.data(), t.p, t.p);
    double best = 1e30;
    for (const int block : {t.n, 1000, 64}) {
        Eigen::VectorXd d(t.n);
        best = std::min(best, best_time([&] {
                            const Eigen::LLT<Eigen::MatrixXd> llt(S);
                            for (int first = 0; first < t.n; first += block) {
                                const int count = std::min(block, t.n - first);
                                Eigen::MatrixXd Y = X.middleCols(first, count).colwise() - mean;
                                llt.matrixL().solveInPlace(Y);
                                d.segment(first, count) = Y.colwise().norm();
                            }
                            sink += d[0];
                        }));
        if (std::abs(d[1] - t.distance[1]) > 1e-9) std::puts("other distances"), std::exit(1);
    }
    return best;
}

void row(const char* what, const Task& t, double own, double peer, const char* name) {
    const double elements = static_cast<double>(t.p) * t.n;
    std::printf("%-34s %3d %-8s %8.3f %9.3f %6.2f  %s\n", what, t.p,
                t.storage == VTS_SS_STORAGE_ROWS ? "rows" : "columns", own / elements,
                peer / elements, own / peer, name);
}

// Twenty steps of EM for n = 10000, 5 % missing.
void expectations() {
    constexpr int p = 10, n = 10000, steps = 20, elements = p + p * (p + 1) / 2;
    Task t(p, n, VTS_SS_STORAGE_COLUMNS);
    std::mt19937 generator(2);
    for (double& v : t.x)
        if (generator() % 20 == 0) v = NAN;
    const std::int32_t five = 5, none = 0, count = elements;
    const double method[] = {steps, 1, 0, 0, 0};
    double law[elements];
    __vtsdSSEditMissingVals(t.task, &five, method, &none, nullptr, &none, nullptr, &none, nullptr,
                            &count, law);
    const double time = best_time([&] {
        Task::check(_vtsdSSMissingValues(t.task, 0, 0), VTS_SS_STATUS_ITERATION_LIMIT);
        sink += law[0];
    });
    std::printf("EM, p = %d, n = %d, 5 %% missing, %d steps: %.2f ms\n", p, n, steps, time / 1e6);
}

}  // namespace

void matrices() {
    std::printf("%-34s %3s %-8s %8s %9s %6s\n", "n = 100000, ns per element", "p", "storage", "own",
                "peer", "own/peer");
    for (const int p : {4, 10, 50})
        for (const int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
            Task t(p, 100000, storage);
            const double distances = best_time([&] { t(_vtsdSSMahDistance); });
            row("Mahalanobis distance", t, distances,
                storage == VTS_SS_STORAGE_ROWS ? eigen_distances<Eigen::RowMajor>(t)
                                               : eigen_distances<Eigen::ColMajor>(t),
                "Eigen, LLT solve");
            const auto pooled = [&](const char* what) {
                const auto [own, covariance] =
                    best_times({[&] { t(_vtsdSSPooledCovariance); }, [&] { t.basic(); }});
                row(what, t, own, covariance, "covariance, own");
            };
            pooled("pooled covariance, 10 groups");
            const auto random = t.group;
            std::sort(t.group.begin(), t.group.end());
            pooled("the same, group after group");
            t.group = random;
            t.want_groups();
            pooled("and all groups' own");
        }
    expectations();
}

}  // namespace kef::bench
