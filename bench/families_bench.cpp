// Statistics, splines and distributions of members of the library beside each other: time-stamp
// ticks a value (of a variable, at a site, of a law) of the first one, and how many times as fast
// the others are. All are called in one process by turns, on the same arguments.
//
//   families_bench FILE... [statistics | fitting | distributions [TEXT]]
//
// FILE, with a slash in it: a member. TEXT: calls whose names hold it, alone.
#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kef_dist.h"
#include "kef_fit.h"
#include "kef_stats.h"
#include "kef_version.h"

namespace {

struct Library {
    void* handle;
    explicit Library(const char* file) : handle(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
        if (handle == nullptr) std::fprintf(stderr, "%s\n", dlerror()), std::exit(2);
    }
    template <class F> F* symbol(const char* name) const {
        return reinterpret_cast<F*>(dlsym(handle, name));
    }
};

// The entries of a precision, of one library.
template <class T> struct Entries;
#define KEF_ENTRY(member, name) decltype(name)* member = library.symbol<decltype(name)>(#name);
#define KEF_ENTRIES(T, letter)                                             \
    template <> struct Entries<T> {                                        \
        const Library& library;                                            \
        KEF_ENTRY(new_task, __vts##letter##SSNewTask)                      \
        KEF_ENTRY(edit_moments, __vts##letter##SSEditMoments)              \
        KEF_ENTRY(edit_covariance, __vts##letter##SSEditCovCor)            \
        KEF_ENTRY(edit_pooled, __vts##letter##SSEditPooledCovariance)      \
        KEF_ENTRY(edit_int, __vtsiSSEditTask)                              \
        KEF_ENTRY(edit, __vts##letter##SSEditTask)                         \
        KEF_ENTRY(basic, _vts##letter##SSBasic)                            \
        KEF_ENTRY(minmax, _vts##letter##SSMinmax)                          \
        KEF_ENTRY(pooled, _vts##letter##SSPooledCovariance)                \
        KEF_ENTRY(new_spline, kef_df_kernel_##letter##NewTask1D)           \
        KEF_ENTRY(edit_spline, kef_df_kernel_##letter##EditPPSpline1D)     \
        KEF_ENTRY(natural, kef_df_kernel_##letter##DFNaturalCubicSpline1D) \
        KEF_ENTRY(akima, kef_df_kernel_##letter##DFAkimaCubicSpline1D)     \
        KEF_ENTRY(search, kef_df_kernel_##letter##DFSearch1D32)            \
        KEF_ENTRY(interpolate, kef_df_kernel_##letter##DFInterpolate1D)    \
        KEF_ENTRY(integrate, kef_df_kernel_##letter##DFIntegrate1D)        \
        KEF_ENTRY(uniform, _vts##letter##RngUniform)                       \
        KEF_ENTRY(gaussian, _vts##letter##RngGaussian)                     \
        KEF_ENTRY(lognormal, _vts##letter##RngLognormal)                   \
        KEF_ENTRY(exponential, _vts##letter##RngExponential)               \
        KEF_ENTRY(laplace, _vts##letter##RngLaplace)                       \
        KEF_ENTRY(weibull, _vts##letter##RngWeibull)                       \
        KEF_ENTRY(cauchy, _vts##letter##RngCauchy)                         \
        KEF_ENTRY(rayleigh, _vts##letter##RngRayleigh)                     \
        KEF_ENTRY(gumbel, _vts##letter##RngGumbel)                         \
        KEF_ENTRY(gamma, _vts##letter##RngGamma)                           \
        KEF_ENTRY(beta, _vts##letter##RngBeta)                             \
    };
KEF_ENTRIES(double, d)
KEF_ENTRIES(float, s)

// A call of each library, under one name.
struct Call {
    std::string name;
    double values;
    std::vector<std::function<std::int32_t()>> runs;
};
class Calls {
public:
    void add(const std::string& name, double values, std::function<std::int32_t()> run) {
        auto at = std::find_if(all.begin(), all.end(), [&](auto& c) { return c.name == name; });
        if (at == all.end()) at = all.insert(at, {name, values, {}});
        at->runs.push_back(std::move(run));
    }
    std::vector<Call> all;
};

template <class T> std::vector<T> normal_numbers(std::size_t n) {
    std::mt19937 generator(1);
    std::normal_distribution<double> normal(5);
    std::vector<T> x(n);
    for (T& v : x) v = static_cast<T>(normal(generator));
    return x;
}

template <class T> struct Problem {
    std::int32_t p, n, storage, full = VTS_SS_LAYOUT_FULL;
    std::vector<T> x, weights, results, matrix;
    std::vector<std::int32_t> groups;
    kef_ss_task* task = nullptr;  // to the end of the process
    Problem(const Entries<T>& e, std::int32_t p, std::int32_t n, bool rows, bool weighted)
        : p(p),
          n(n),
          storage(rows ? VTS_SS_STORAGE_ROWS : VTS_SS_STORAGE_COLUMNS),
          x(normal_numbers<T>(p * n)),
          weights(n, T(0.75)),
          results(9 * p + n),
          matrix(p * p),
          groups(n) {
        for (std::int32_t j = 0; j < n; ++j) groups[j] = j * 7 % 5 % 3;
        T* r = results.data();
        e.new_task(&task, &this->p, &this->n, &storage, x.data(),
                   weighted ? weights.data() : nullptr, nullptr, 0);
        e.edit_moments(task, r, r + p, r + 2 * p, r + 3 * p, r + 4 * p, r + 5 * p, r + 6 * p);
        e.edit_covariance(task, r, matrix.data(), &full, nullptr, nullptr);
        e.edit(task, VTS_SS_ID_MINIMUM, r + 7 * p);
        e.edit(task, VTS_SS_ID_MAXIMUM, r + 8 * p);
        e.edit_int(task, VTS_SS_ID_POOLED_COVARIANCE_STORAGE, &full);
        e.edit_pooled(task, groups.data(), r, matrix.data(), nullptr, nullptr, nullptr);
    }
};

template <class T> void statistics(const Library& library, std::int32_t n, Calls& calls) {
    const Entries<T> e{library};
    constexpr std::uint64_t variance = VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2,
                            four = variance | VTS_SS_ESTIMATE_CENTRAL_MOMENT_3 |
                                   VTS_SS_ESTIMATE_CENTRAL_MOMENT_4,
                            covariance = VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE,
                            extremes = VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM;
    for (const bool weighted : {false, true})
        for (const bool rows : {true, false})
            for (const std::int32_t p : {1, 3, 4, 10, 50}) {
                const auto d = std::make_shared<Problem<T>>(e, p, n, rows, weighted);
                const std::string which = std::string(sizeof(T) == 8 ? "d " : "s ") +
                                          (rows ? "rows" : "columns") + " p=" + std::to_string(p) +
                                          (weighted ? " weights " : " ");
                const auto add = [&](const std::string& what, auto run) {
                    calls.add(which + what, double(p) * n, run);
                };
                const auto basic = [&](const std::string& what, std::uint64_t estimates,
                                       std::int32_t method) {
                    add(what, [=] { return e.basic(d->task, estimates, method); });
                };
                basic("variance", variance, VTS_SS_METHOD_TILED);
                basic("four moments", four, VTS_SS_METHOD_TILED);
                if (!weighted) basic("variance, raw", variance, VTS_SS_METHOD_RAW);
                if (!weighted && p < 50) {
                    basic("variance, recurrence", variance, VTS_SS_METHOD_RECURRENCE);
                    add("extremes",
                        [=] { return e.minmax(d->task, extremes, VTS_SS_METHOD_MINMAX); });
                }
                if (p == 1) continue;
                basic("covariance", covariance, VTS_SS_METHOD_TILED);
                if (n <= 2 * p) continue;
                add("pooled covariance", [=] { return e.pooled(d->task, 0, 0); });
            }
}

template <class T> void splines(const Library& library, std::int32_t n, Calls& calls) {
    const Entries<T> e{library};
    constexpr std::int32_t nx = 1000;
    struct Data {
        std::vector<T> x, equal, y, c, site, right, sorted, result;
        std::vector<std::int32_t> cell;
        kef_df_task *irregular = nullptr, *uniform = nullptr;
    };
    const auto d = std::make_shared<Data>();
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> part(0, 1);
    for (std::int32_t i = 0; i < nx; ++i) {
        d->x.push_back(static_cast<T>((i + part(generator) * 0.9) / nx));
        d->equal.push_back(static_cast<T>(i / (nx - 1.0)));
    }
    d->y = normal_numbers<T>(nx), d->c.resize(8 * nx), d->result.resize(3 * n);
    for (std::int32_t j = 0; j < n; ++j) {
        d->site.push_back(static_cast<T>(part(generator)));
        d->right.push_back(static_cast<T>(part(generator)));
    }
    d->sorted = d->site;
    std::sort(d->sorted.begin(), d->sorted.end());
    e.new_spline(&d->irregular, nx, d->x.data(), DF_NON_UNIFORM, 1, d->y.data(), 0, 0);
    e.new_spline(&d->uniform, nx, d->equal.data(), DF_UNIFORM, 1, d->y.data(), 0, 0);
    T* c = d->c.data();
    for (kef_df_task* task : {d->irregular, d->uniform}) {
        e.edit_spline(task, DF_CUBIC, DF_TYPE_NATURAL, DF_FREE_END, nullptr, 0, nullptr, c, 0);
        e.natural(task, 0);
        c += 4 * nx;
    }
    const std::string type = sizeof(T) == 8 ? "d " : "s ";
    static const std::int32_t flags[] = {1, 1, 1};
    const auto values = [&](const std::string& what, kef_df_task* task, const std::vector<T>& site,
                            std::int64_t hint, std::int64_t orders) {
        calls.add(type + what, n, [=, x = site.data()] {
            return e.interpolate(task, DF_SPLINE, n, x, hint, orders, flags, d->result.data(), 0,
                                 nullptr);
        });
    };
    d->cell.resize(n);
    for (kef_df_task* task : {d->irregular, d->uniform})
        calls.add(type + (task == d->uniform ? "search, uniform" : "search"), n,
                  [=] { return e.search(task, n, d->site.data(), 0, d->cell.data()); });
    values("values", d->irregular, d->site, 0, 1);
    values("values, sorted sites", d->irregular, d->sorted, DF_SORTED, 1);
    values("values, uniform", d->uniform, d->site, 0, 1);
    values("three derivatives", d->irregular, d->site, 0, 3);
    values("three derivatives, uniform", d->uniform, d->site, 0, 3);
    for (kef_df_task* task : {d->irregular, d->uniform})
        calls.add(type + (task == d->uniform ? "integrals, uniform" : "integrals"), n, [=] {
            return e.integrate(task, 0, n, d->site.data(), 0, d->right.data(), 0, d->result.data(),
                               0);
        });
    calls.add(type + "natural cubic", nx, [=] { return e.natural(d->irregular, 0); });
}

template <class T> void laws(const Library& library, std::int32_t n, Calls& calls) {
    const Entries<T> e{library};
    struct Data {
        kef_stream* stream;
        std::vector<T> r;
    };
    const auto d = std::make_shared<Data>();
    library.symbol<decltype(__vtsNewStreamEx)>("__vtsNewStreamEx")(&d->stream, VTS_BRNG_SFMT19937,
                                                                   0, nullptr);
    d->r.resize(n);
    const auto add = [&](const std::string& what, auto draw) {
        calls.add((sizeof(T) == 8 ? "d " : "s ") + what, n,
                  [=] { return draw(d->stream, d->r.data()); });
    };
    add("uniform", [=](auto s, T* r) { return e.uniform(0, s, n, r, 1, 3); });
    add("uniform, accurate",
        [=](auto s, T* r) { return e.uniform(VTS_METHOD_ACCURATE, s, n, r, 1, 3); });
    add("gaussian, Box-Muller", [=](auto s, T* r) { return e.gaussian(0, s, n, r, 1, 3); });
    add("gaussian, pairs", [=](auto s, T* r) { return e.gaussian(1, s, n, r, 1, 3); });
    add("gaussian, inversion", [=](auto s, T* r) { return e.gaussian(2, s, n, r, 1, 3); });
    add("lognormal", [=](auto s, T* r) { return e.lognormal(0, s, n, r, 0, 1, 0, 1); });
    add("lognormal, inversion", [=](auto s, T* r) { return e.lognormal(1, s, n, r, 0, 1, 0, 1); });
    add("exponential", [=](auto s, T* r) { return e.exponential(0, s, n, r, 1, 3); });
    add("Laplace", [=](auto s, T* r) { return e.laplace(0, s, n, r, 1, 3); });
    add("Weibull", [=](auto s, T* r) { return e.weibull(0, s, n, r, T(1.5), 1, 3); });
    add("Cauchy", [=](auto s, T* r) { return e.cauchy(0, s, n, r, 1, 3); });
    add("Rayleigh", [=](auto s, T* r) { return e.rayleigh(0, s, n, r, 1, 3); });
    add("Gumbel", [=](auto s, T* r) { return e.gumbel(0, s, n, r, 1, 3); });
    for (const double alpha : {0.5, 0.8, 3.0})
        add("gamma " + std::to_string(alpha).substr(0, 3),
            [=](auto s, T* r) { return e.gamma(0, s, n, r, T(alpha), 0, 1); });
    add("beta 0.4, 0.3", [=](auto s, T* r) { return e.beta(0, s, n, r, T(.4), T(.3), 0, 1); });
    add("beta 3, 2", [=](auto s, T* r) { return e.beta(0, s, n, r, 3, 2, 0, 1); });
}

using Family = void (*)(const Library&, std::int32_t, Calls&);
constexpr struct {
    const char* name;
    Family of[2];
} families[] = {{"statistics", {statistics<double>, statistics<float>}},
                {"fitting", {splines<double>, splines<float>}},
                {"distributions", {laws<double>, laws<float>}}};

void print(const std::vector<Library>& libraries, Family family, const std::string& wanted) {
    for (const std::int32_t n : {10, 1000}) {
        Calls calls;
        for (const Library& library : libraries) family(library, n, calls);
        for (const Call& call : calls.all) {
            if (call.name.find(wanted) == std::string::npos) continue;
            std::vector<std::uint64_t> best(call.runs.size(), UINT64_MAX);
            const int times = std::max(1, int(3000 / call.values));
            for (int round = 0; round < 200; ++round)
                for (std::size_t k = 0; k < best.size(); ++k) {
                    const std::uint64_t start = __builtin_ia32_rdtsc();
                    for (int i = 0; i < times; ++i)
                        if (const std::int32_t status = call.runs[k](); status < 0)
                            std::printf("%s: status %d\n", call.name.c_str(), status), std::exit(1);
                    best[k] = std::min<std::uint64_t>(best[k], __builtin_ia32_rdtsc() - start);
                }
            const double first = static_cast<double>(best[0]);
            std::printf("%-40s %5d %8.2f", call.name.c_str(), n, first / times / call.values);
            for (std::size_t k = 1; k < best.size(); ++k)
                std::printf(" %6.2f", first / static_cast<double>(best[k]));
            std::printf("\n");
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<Library> libraries;
    int i = 1;
    for (; i < argc && std::string(argv[i]).find('/') != std::string::npos; ++i)
        libraries.emplace_back(argv[i]);
    const std::string family = i < argc ? argv[i++] : "", text = i < argc ? argv[i] : "";
    if (libraries.empty()) {
        std::fputs("families_bench FILE... [statistics | fitting | distributions [TEXT]]\n",
                   stderr);
        return 2;
    }
    std::printf("%-40s %5s", "ticks a value, times as fast", "n");
    for (const Library& library : libraries)
        std::printf(" %s", library.symbol<decltype(kef_member)>("kef_member")());
    std::printf("\n");
    for (const auto& f : families)
        if (family.empty() || family == f.name)
            for (const Family of : f.of) print(libraries, of, text);
}
