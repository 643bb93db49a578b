// Summary statistics beside what a user would take instead: nanoseconds per element
// (one value of one variable), the best of many runs, everything in one process and
// on the same data.
//
//   bench_stats [n [p]]    n observations, default 100000; one p, or 1, 4, 10 and 50, and after
//                          these the order statistics of a million numbers (stats_order_bench.cpp),
//                          distances and pooled covariance (stats_matrices_bench.cpp)
//
// Peers: Boost.Accumulators and GSL take one variable at a time, Eigen whole
// matrices, in the storage that the data have.
#include <gsl/gsl_statistics_double.h>

#include <Eigen/Dense>
#include <algorithm>
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics.hpp>
#include <random>
#include <vector>

#include "stats_bench.h"

namespace {

using namespace kef::bench;

struct Data {
    int p, n;
    bool rows;  // every variable contiguous
    double *x, *w = nullptr;
    Data(int p, int n, bool rows) : p(p), n(n), rows(rows) {
        x = static_cast<double*>(std::aligned_alloc(64, (sizeof(double) * p * n + 63) / 64 * 64));
        std::mt19937 generator(1);
        std::normal_distribution<double> normal(5);
        for (int k = 0; k < p * n; ++k) x[k] = normal(generator);
    }
    ~Data() { std::free(x); }
    const double* variable(int i) const { return x + (rows ? static_cast<long>(i) * n : i); }
    int stride() const { return rows ? 1 : p; }
};

double own(const Data& data, std::uint64_t estimates, int method) {
    const std::int32_t p = data.p, n = data.n, layout = VTS_SS_LAYOUT_FULL;
    const std::int32_t storage = data.rows ? VTS_SS_STORAGE_ROWS : VTS_SS_STORAGE_COLUMNS;
    kef_ss_task* task;
    __vtsdSSNewTask(&task, &p, &n, &storage, data.x, nullptr, nullptr, 0);
    std::vector<double> results(20 * p), matrix(p * p);
    const auto at = [&](int k) { return results.data() + k * p; };
    __vtsdSSEditMoments(task, at(0), at(1), at(2), at(3), at(4), at(5), at(6));
    __vtsdSSEditTask(task, VTS_SS_ID_MINIMUM, at(7));
    __vtsdSSEditTask(task, VTS_SS_ID_MAXIMUM, at(8));
    __vtsdSSEditSums(task, at(9), at(10), at(11), at(12), nullptr, nullptr, nullptr);
    __vtsdSSEditCovCor(task, nullptr, matrix.data(), &layout, nullptr, nullptr);
    std::int32_t status = 0;
    const double time = best_time([&] {
        status |= estimates & VTS_SS_ESTIMATE_MINIMUM
                      ? _vtsdSSMinmax(task, estimates, VTS_SS_METHOD_MINMAX)
                      : _vtsdSSBasic(task, estimates, method);
    });
    if (status != VTS_SS_STATUS_OK) std::printf("status %d\n", status), std::exit(1);
    sink += results[0] + matrix[0];
    __vtsSSDeleteTask(&task);
    return time;
}

template <class... Features> double boost_time(const Data& data, auto use) {
    namespace acc = boost::accumulators;
    return best_time([&] {
        for (int i = 0; i < data.p; ++i) {
            acc::accumulator_set<double, acc::features<Features...>> a;
            const double* x = data.variable(i);
            const long stride = data.stride();
            for (long j = 0; j < data.n; ++j) a(x[j * stride]);
            sink += use(a);
        }
    });
}

double gsl_time(const Data& data) {
    return best_time([&] {
        for (int i = 0; i < data.p; ++i) {
            const double mean = gsl_stats_mean(data.variable(i), data.stride(), data.n);
            sink += mean + gsl_stats_variance_m(data.variable(i), data.stride(), data.n, mean);
        }
    });
}

template <int order>
using EigenData = Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, order>,
                             Eigen::Aligned16>;

// The faster of Eigen's ways: whole-matrix expressions, or a loop over its columns
// (rows) with vector expressions.
template <int order> double eigen_variance(const Data& data) {
    const EigenData<order> X(data.x, data.n, data.p);
    const double whole = best_time([&] {
        const Eigen::RowVectorXd mean = X.colwise().mean();
        const Eigen::RowVectorXd variance =
            (X.rowwise() - mean).colwise().squaredNorm() / (data.n - 1);
        sink += mean[0] + variance[0];
    });
    const double loop = best_time([&] {
        if constexpr (order == Eigen::ColMajor) {
            for (int i = 0; i < data.p; ++i) {
                const double mean = X.col(i).mean();
                sink += mean + (X.col(i).array() - mean).square().sum() / (data.n - 1);
            }
        } else {
            Eigen::RowVectorXd mean = X.row(0), variance = Eigen::RowVectorXd::Zero(data.p);
            for (int j = 1; j < data.n; ++j) mean += X.row(j);
            mean /= data.n;
            for (int j = 0; j < data.n; ++j) variance.array() += (X.row(j) - mean).array().square();
            variance /= data.n - 1;
            sink += mean[0] + variance[0];
        }
    });
    return std::min(whole, loop);
}

template <int order> double eigen_covariance(const Data& data) {
    const EigenData<order> X(data.x, data.n, data.p);
    return best_time([&] {
        const Eigen::RowVectorXd mean = X.colwise().mean();
        const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, order> Y = X.rowwise() - mean;
        const Eigen::MatrixXd C = Y.transpose() * Y / (data.n - 1);
        sink += C(0, 0);
    });
}

// The product alone, of data that are centred already.
template <int order> double eigen_product(const Data& data) {
    const EigenData<order> X(data.x, data.n, data.p);
    return best_time([&] {
        const Eigen::MatrixXd C = X.transpose() * X;
        sink += C(0, 0);
    });
}

void line(const char* what, int p, bool rows, double elements, double own, double peer,
          const char* peer_name) {
    std::printf("%-34s %3d %-8s %8.3f %9.3f %6.2f  %s\n", what, p, rows ? "rows" : "columns",
                own / elements, peer / elements, peer / own, peer_name);
}

}  // namespace

int main(int argc, char** argv) {
    namespace tag = boost::accumulators::tag;
    for (int i = 1; i < argc; ++i)
        if (i > 2 || std::atoi(argv[i]) <= 0) {
            std::fprintf(stderr, "%s: no number of observations or variables\n", argv[i]);
            return 2;
        }
    const int n = argc > 1 ? std::atoi(argv[1]) : 100000;
    constexpr std::uint64_t variance = VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2;
    constexpr std::uint64_t four =
        variance | VTS_SS_ESTIMATE_CENTRAL_MOMENT_3 | VTS_SS_ESTIMATE_CENTRAL_MOMENT_4;
    constexpr std::uint64_t extremes = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;
    const auto use_variance = [](const auto& a) {
        return boost::accumulators::mean(a) + boost::accumulators::variance(a);
    };
    const auto use_moments = [](const auto& a) {
        return boost::accumulators::mean(a) + boost::accumulators::variance(a) +
               boost::accumulators::skewness(a) + boost::accumulators::kurtosis(a);
    };
    std::printf("%-34s %3s %-8s %8s %9s %6s\n", "n = 100000, ns per element", "p", "storage", "own",
                "peer", "ratio");
    for (int p : {1, 4, 10, 50})
        for (bool rows : {true, false}) {
            if (argc > 2 && p != std::atoi(argv[2])) continue;
            const Data data(p, n, rows);
            const double elements = static_cast<double>(p) * n;
            const double recurrence = own(data, variance, VTS_SS_METHOD_RECURRENCE);
            const double boost = boost_time<tag::mean, tag::variance>(data, use_variance);
            const double lazy = boost_time<tag::mean, tag::lazy_variance>(data, use_variance);
            const double gsl = gsl_time(data);
            line("mean, variance, recurrence", p, rows, elements, recurrence, boost, "Boost");
            line("", p, rows, elements, recurrence, gsl, "GSL");
            const double tiled = own(data, variance, VTS_SS_METHOD_TILED);
            const double eigen = rows ? eigen_variance<Eigen::ColMajor>(data)
                                      : eigen_variance<Eigen::RowMajor>(data);
            line("mean, variance, tiled", p, rows, elements, tiled, eigen, "Eigen");
            line("", p, rows, elements, tiled, lazy, "Boost, sums of squares");
            line("mean, variance, raw", p, rows, elements, own(data, variance, VTS_SS_METHOD_RAW),
                 eigen, "Eigen");
            const double moments =
                boost_time<tag::mean, tag::variance, tag::skewness, tag::kurtosis>(data,
                                                                                   use_moments);
            const double powers =
                boost_time<tag::mean, tag::lazy_variance, tag::skewness, tag::kurtosis>(
                    data, use_moments);
            const double four_recurrence = own(data, four, VTS_SS_METHOD_RECURRENCE);
            const double four_tiled = own(data, four, VTS_SS_METHOD_TILED);
            line("four central moments, recurrence", p, rows, elements, four_recurrence, moments,
                 "Boost");
            line("four central moments, tiled", p, rows, elements, four_tiled, moments, "Boost");
            line("", p, rows, elements, four_tiled, powers, "Boost, sums of powers");
            line("minimum, maximum", p, rows, elements, own(data, extremes, 0),
                 boost_time<tag::min, tag::max>(data,
                                                [](const auto& a) {
                                                    return boost::accumulators::min(a) +
                                                           boost::accumulators::max(a);
                                                }),
                 "Boost");
            if (p == 1) continue;
            const double covariance =
                own(data, VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE, VTS_SS_METHOD_TILED);
            const double by_recurrence = own(
                data, VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE, VTS_SS_METHOD_RECURRENCE);
            const double eigen_cov = rows ? eigen_covariance<Eigen::ColMajor>(data)
                                          : eigen_covariance<Eigen::RowMajor>(data);
            const double product =
                rows ? eigen_product<Eigen::ColMajor>(data) : eigen_product<Eigen::RowMajor>(data);
            line("covariance, tiled", p, rows, elements, covariance, eigen_cov, "Eigen");
            line("", p, rows, elements, covariance, product, "Eigen, the product alone");
            line("covariance, recurrence", p, rows, elements, by_recurrence, eigen_cov, "Eigen");
        }
    if (argc <= 2) {
        order_statistics();
        matrices();
    }
    if (sink == 1) std::puts("");
}
