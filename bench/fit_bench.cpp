// Data fitting beside what a user would take instead: the standard library's
// upper_bound, GSL and Boost.Math. All of a line is measured in one run, by turns,
// each right behind a run of its own that is not measured. The figures are
// nanoseconds per site, breakpoint or interval (best of many), and the ratio says how
// many times as fast this library is.
#include <gsl/gsl_spline.h>

#include <algorithm>
#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#include <boost/math/interpolators/makima.hpp>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kef_fit.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Contender {
    const char* name;
    std::function<void()> run;
};

std::string wanted;  // lines whose name holds this text
bool found = false;  // there are some

// The first contender is this library.
void measure(const std::string& what, std::size_t n, std::size_t items,
             std::vector<Contender> all) {
    if (what.find(wanted) == std::string::npos) return;
    found = true;
    std::vector<double> best(all.size(), 1e300);
    const auto end = Clock::now() + std::chrono::milliseconds(1200);
    for (int round = 0; round < 5 || Clock::now() < end; ++round) {
        for (std::size_t k = 0; k < all.size(); ++k) {
            all[k].run();  // brings its own data back into the caches
            const auto start = Clock::now();
            all[k].run();
            const std::chrono::duration<double, std::nano> time = Clock::now() - start;
            best[k] = std::min(best[k], time.count() / items);
        }
    }
    std::printf("%-34s %7zu  %8.2f", what.c_str(), n, best[0]);
    for (std::size_t k = 1; k < all.size(); ++k)
        std::printf("   %s %.2f (%.1f x)", all[k].name, best[k], best[k] / best[0]);
    std::printf("\n");
}

void require(bool fine) {
    if (!fine) std::abort();
}

struct Bench {
    static constexpr std::size_t m = 20000;
    std::size_t n;
    std::vector<double> x, y, uniform, random, sorted, right, result, c;
    std::vector<int32_t> cell;
    gsl_interp_accel* accel = gsl_interp_accel_alloc();

    explicit Bench(std::size_t n) : n(n), x(n), y(n), uniform(n), result(m), c(4 * n), cell(m) {
        std::mt19937_64 engine(1);
        std::uniform_real_distribution<double> part(0, 1);
        for (double& v : x) v = part(engine);
        std::sort(x.begin(), x.end());
        require(std::adjacent_find(x.begin(), x.end()) == x.end());
        for (double& v : y) v = part(engine);
        for (std::size_t i = 0; i < n; ++i) uniform[i] = double(i) / (n - 1);
        for (std::size_t i = 0; i < m; ++i)
            random.push_back(x[0] + (x[n - 1] - x[0]) * part(engine));
        right = random;
        std::reverse(right.begin(), right.end());
        sorted = random;
        std::sort(sorted.begin(), sorted.end());
    }
    ~Bench() { gsl_interp_accel_free(accel); }

    kef_df_task* task(const std::vector<double>& at, int64_t hint, int64_t type, int64_t boundary) {
        kef_df_task* task = nullptr;
        require(kef_df_kernel_dNewTask1D(&task, n, at.data(), hint, 1, y.data(), 0, 0) == 0);
        require(kef_df_kernel_dEditPPSpline1D(task, 4, type, boundary, nullptr, 0, nullptr,
                                              c.data(), 0) == 0);
        return task;
    }

    void search() {
        kef_df_task* t = task(x, DF_NON_UNIFORM, DF_TYPE_NATURAL, DF_FREE_END);
        kef_df_task* u = task(uniform, DF_UNIFORM, DF_TYPE_NATURAL, DF_FREE_END);
        for (bool ascending : {false, true}) {
            const std::vector<double>& q = ascending ? sorted : random;
            const int64_t hint = ascending ? DF_SORTED : DF_ANY_ORDER;
            const auto others = [&](const std::vector<double>& at) {
                return std::vector<Contender>{
                    {"upper_bound",
                     [&] {
                         for (std::size_t j = 0; j < m; ++j)
                             cell[j] = std::upper_bound(at.begin(), at.end(), q[j]) - at.begin();
                     }},
                    {"GSL", [&] {
                         for (std::size_t j = 0; j < m; ++j)
                             cell[j] = gsl_interp_accel_find(accel, at.data(), n, q[j]);
                     }}};
            };
            const auto entry =
                ascending ? kef_df_kernel_dDFSortedSearch1D32 : kef_df_kernel_dDFSearch1D32;
            const std::string order = ascending ? ", sorted sites" : ", random sites";
            std::vector<Contender> all = others(x);
            all.insert(all.begin(), {"", [&] { entry(t, m, q.data(), hint, cell.data()); }});
            measure("search" + order, n, m, all);
            all = others(uniform);
            all.insert(all.begin(), {"", [&] { entry(u, m, q.data(), hint, cell.data()); }});
            measure("search, uniform" + order, n, m, all);
        }
        kef_df_kernel_DeleteTask(&t);
        kef_df_kernel_DeleteTask(&u);
    }

    void construction() {
        kef_df_task* natural = task(x, DF_NON_UNIFORM, DF_TYPE_NATURAL, DF_FREE_END);
        kef_df_task* regular = task(uniform, DF_UNIFORM, DF_TYPE_NATURAL, DF_FREE_END);
        kef_df_task* akima = task(x, DF_NON_UNIFORM, DF_TYPE_AKIMA, 0);
        gsl_spline* cspline = gsl_spline_alloc(gsl_interp_cspline, n);
        gsl_spline* gsl_akima = gsl_spline_alloc(gsl_interp_akima, n);
        measure("natural cubic", n, n,
                {{"", [&] { kef_df_kernel_dDFNaturalCubicSpline1D(natural, 0); }},
                 {"GSL", [&] { gsl_spline_init(cspline, x.data(), y.data(), n); }}});
        measure("natural cubic, uniform", n, n,
                {{"", [&] { kef_df_kernel_dDFNaturalCubicSpline1D(regular, 0); }},
                 {"GSL", [&] { gsl_spline_init(cspline, uniform.data(), y.data(), n); }},
                 {"Boost B-spline", [&] {
                      boost::math::interpolators::cardinal_cubic_b_spline<double> s(
                          y.data(), n, 0.0, 1.0 / (n - 1), 0.0, 0.0);
                      result[0] = s(0.5);
                  }}});
        measure("Akima", n, n,
                {{"", [&] { kef_df_kernel_dDFAkimaCubicSpline1D(akima, 0); }},
                 {"GSL", [&] { gsl_spline_init(gsl_akima, x.data(), y.data(), n); }},
                 {"Boost (modified Akima)", [&] {
                      std::vector<double> a = x, b = y;  // it keeps them
                      boost::math::interpolators::makima<std::vector<double>> s(std::move(a),
                                                                                std::move(b));
                      result[0] = s(x[n / 2]);
                  }}});
        gsl_spline_free(gsl_akima);
        gsl_spline_free(cspline);
        kef_df_kernel_DeleteTask(&akima);
        kef_df_kernel_DeleteTask(&regular);
        kef_df_kernel_DeleteTask(&natural);
    }

    void values() {
        kef_df_task* t = task(x, DF_NON_UNIFORM, DF_TYPE_NATURAL, DF_FREE_END);
        require(kef_df_kernel_dDFNaturalCubicSpline1D(t, 0) == 0);
        gsl_spline* cspline = gsl_spline_alloc(gsl_interp_cspline, n);
        gsl_spline_init(cspline, x.data(), y.data(), n);
        std::vector<double> a = x, b = y;
        boost::math::interpolators::makima<std::vector<double>> makima(std::move(a), std::move(b));
        const int32_t value = 1;
        for (bool ascending : {false, true}) {
            const std::vector<double>& q = ascending ? sorted : random;
            const int64_t hint = ascending ? DF_SORTED : DF_ANY_ORDER;
            measure(std::string("values, ") + (ascending ? "sorted sites" : "random sites"), n, m,
                    {{"",
                      [&] {
                          kef_df_kernel_dDFInterpolate1D(t, DF_SPLINE, m, q.data(), hint, 1, &value,
                                                         result.data(), 0, nullptr);
                      }},
                     {"GSL",
                      [&] {
                          for (std::size_t j = 0; j < m; ++j)
                              result[j] = gsl_spline_eval(cspline, q[j], accel);
                      }},
                     {"Boost", [&] {
                          for (std::size_t j = 0; j < m; ++j) result[j] = makima(q[j]);
                      }}});
        }
        const std::size_t intervals = std::min<std::size_t>(m, 20000000 / n);
        measure("integrals, " + std::to_string(intervals) + " intervals", n, intervals,
                {{"",
                  [&] {
                      kef_df_kernel_dDFIntegrate1D(t, 0, intervals, random.data(), 0, right.data(),
                                                   0, result.data(), 0);
                  }},
                 {"GSL", [&] {
                      for (std::size_t j = 0; j < intervals; ++j)
                          result[j] = gsl_spline_eval_integ(cspline, std::min(random[j], right[j]),
                                                            std::max(random[j], right[j]), accel);
                  }}});
        gsl_spline_free(cspline);
        kef_df_kernel_DeleteTask(&t);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) wanted = argv[1];
    std::printf("%-34s %7s  %8s   others (ratio)\n", "ns per item", "nx", "here");
    for (std::size_t n : {1000, 100000}) {
        Bench bench(n);
        bench.search();
        bench.construction();
        bench.values();
    }
    if (!found) std::fprintf(stderr, "%s: no such line\n", wanted.c_str());
    return found ? 0 : 2;
}
