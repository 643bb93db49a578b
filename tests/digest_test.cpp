// One digest of the bits that each kernel, generator, law, estimate and spline gives for a fixed
// list of arguments, in tests/data/digests.txt: the same on every system with the
// generic member. A change of bits shows as a changed line there; KEF_WRITE_DIGESTS=file writes
// the list (./run digests).
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "kef_dist.h"
#include "places.h"
#include "tests/fit_data.h"
#include "tests/reference.h"
#include "tests/rng_streams.h"
#include "tests/rows.h"
#include "tests/stats_support.h"
#include "tests/worst_arguments.h"

namespace {

using kef::reference::edges;
using kef::reference::everything;

// FNV-1a over the bits of numbers; which NaN a sum of two of them gives depends on the order of
// the operands, so that all NaN are one.
class Digest {
public:
    template <class T> void add(const std::vector<T>& numbers) {
        for (T x : numbers) {
            if constexpr (std::is_floating_point_v<T>)
                if (x != x) x = std::numeric_limits<T>::quiet_NaN();
            unsigned char bytes[sizeof(T)];
            std::memcpy(bytes, &x, sizeof(T));
            for (const unsigned char byte : bytes) hash_ = (hash_ ^ byte) * 0x100000001B3u;
        }
    }
    std::string text() const {
        char buffer[24];
        std::snprintf(buffer, sizeof buffer, "%08X%08X", static_cast<unsigned>(hash_ >> 32),
                      static_cast<unsigned>(hash_));
        return buffer;
    }

private:
    std::uint64_t hash_ = 0xCBF29CE484222325u;
};

using Lines = std::vector<std::pair<std::string, std::string>>;

// --- vector math --------------------------------------------------------------

// Edges, random bit patterns and random values of the usual scales, in an order that is the
// same for both arguments but for a shift, and the worst finds of the accuracy search.
template <class T> std::vector<T> arguments(const std::string& seed, bool second) {
    kef::reference::Random random(seed + (second ? " b" : " a"));
    std::vector<T> x = edges<T>(everything);
    if (second) std::rotate(x.begin(), x.begin() + x.size() / 3, x.end());
    for (int i = 0; i < 2048; ++i) x.push_back(random.draw<T>(everything, false));
    for (const double scale : {1e-3, 1.0, 10.0, 1000.0})
        for (int i = 0; i < 512; ++i) x.push_back(random.draw<T>({-scale, scale}, true));
    return x;
}

template <class T> void vector_math(const kef_test::Row& row, Lines& lines) {
    std::vector<T> a = arguments<T>(row.name(), false), b = arguments<T>(row.name(), true);
    // Complex elements take their parts from a run of numbers.
    const int parts = row.argument_parts;
    while (a.size() % parts != 0) a.push_back(1), b.push_back(1);
    const auto [first, last] = kef_test::worst_arguments().equal_range(row.name());
    for (auto i = first; i != last; ++i)
        for (int part = 0; part < parts; ++part) {
            const auto number = [&](int component) {
                return kef_test::from_argument_bits<T>(i->second[component]);
            };
            a.push_back(number(part));
            b.push_back(number(parts + part));
        }
    const auto n = static_cast<std::int32_t>(a.size() / parts);
    const std::vector<std::vector<T>> scalars =
        row.scalars == 1 ? std::vector<std::vector<T>>{{T(2.5), T(0.5)}, {3, 0}, {T(-0.5), -1}}
                         : std::vector<std::vector<T>>{{2, 3, T(0.5), 20, 1, 1, 1, 1}};
    for (int slot = 0; slot < 3; ++slot) {
        Digest digest;
        for (const std::vector<T>& s : scalars) {
            std::vector<T> r(n * row.result_parts), z(n);
            row.invoke(row.slots[slot], {n, a.data(), b.data(), s.data(), r.data(), z.data()});
            digest.add(r);
            if (row.results > 1) digest.add(z);
        }
        static const char* const slots[] = {"LA", "HA", "EP"};
        lines.push_back({"math " + row.name() + " " + slots[slot], digest.text()});
    }
}

Lines vector_math() {
    const std::uint32_t mode = kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    Lines lines;
    for (const kef_test::Row& row : kef_test::rows())
        if (row.element_wise()) {
            if (row.single()) vector_math<float>(row, lines);
            else vector_math<double>(row, lines);
        }
    kef_vtm_kernel_SetMode(mode);
    return lines;
}

// --- random streams -----------------------------------------------------------

Lines streams() {
    Lines lines;
    const struct {
        const char* name;
        std::int32_t brng;
        bool splits, skips;
    } generators[] = {{"MCG31M1", VTS_BRNG_MCG31M1, true, true},
                      {"R250", VTS_BRNG_R250, false, false},
                      {"MRG32K3A", VTS_BRNG_MRG32K3A, false, true},
                      {"MCG59", VTS_BRNG_MCG59, true, true},
                      {"WH 0", VTS_BRNG_WH, true, true},
                      {"WH 272", VTS_BRNG_WH + 272, true, true},
                      {"SOBOL", VTS_BRNG_SOBOL, false, true},
                      {"NIEDERR", VTS_BRNG_NIEDERR, false, true},
                      {"MT19937", VTS_BRNG_MT19937, false, true},
                      {"MT2203 0", VTS_BRNG_MT2203, false, false},
                      {"MT2203 6023", VTS_BRNG_MT2203 + 6023, false, false},
                      {"SFMT19937", VTS_BRNG_SFMT19937, false, true}};
    for (const auto& g : generators) {
        Digest digest;
        const auto draw = [&](const Stream& stream) {
            digest.add(draw_raw(stream, 1500));
            digest.add(draw_doubles(stream, 700, -1, 2));
            std::vector<float> f(700);
            EXPECT_EQ(VTS_STATUS_OK, _vtssRngUniform(0, stream.get(), 700, f.data(), -1, 2));
            digest.add(f);
        };
        draw(make_stream(g.brng, {5}));
        if (g.skips) {
            const Stream stream = make_stream(g.brng, {5});
            EXPECT_EQ(VTS_STATUS_OK, __vtsSkipAheadStream(stream.get(), 123456789)) << g.name;
            draw(stream);
        }
        if (g.splits) {
            const Stream stream = make_stream(g.brng, {5});
            EXPECT_EQ(VTS_STATUS_OK, __vtsLeapfrogStream(stream.get(), 3, 7)) << g.name;
            draw(stream);
        }
        lines.push_back({"stream " + std::string(g.name), digest.text()});
    }
    return lines;
}

template <class T> struct Laws;
#define KEF_LAWS(T, letter)                                               \
    template <> struct Laws<T> {                                          \
        static constexpr auto gaussian = _vts##letter##RngGaussian;       \
        static constexpr auto lognormal = _vts##letter##RngLognormal;     \
        static constexpr auto exponential = _vts##letter##RngExponential; \
        static constexpr auto laplace = _vts##letter##RngLaplace;         \
        static constexpr auto weibull = _vts##letter##RngWeibull;         \
        static constexpr auto cauchy = _vts##letter##RngCauchy;           \
        static constexpr auto rayleigh = _vts##letter##RngRayleigh;       \
        static constexpr auto gumbel = _vts##letter##RngGumbel;           \
        static constexpr auto gamma = _vts##letter##RngGamma;             \
        static constexpr auto beta = _vts##letter##RngBeta;               \
    };
KEF_LAWS(double, d)
KEF_LAWS(float, s)
#undef KEF_LAWS

// 3000 numbers in calls of uneven lengths.
template <class T, class Draw> void law(Lines& lines, const std::string& name, Draw draw) {
    const Stream stream = make_stream(VTS_BRNG_MT19937, {11});
    std::vector<T> r(3000);
    for (const auto& [first, count] : {std::pair(0, 1), std::pair(1, 998), std::pair(999, 2001)})
        EXPECT_EQ(VTS_STATUS_OK, draw(stream.get(), count, r.data() + first)) << name;
    Digest digest;
    digest.add(r);
    lines.push_back({"law " + name, digest.text()});
}

template <class T> void continuous_laws(Lines& lines) {
    using L = Laws<T>;
    const std::string type = sizeof(T) == 8 ? "d" : "s";
    const auto add = [&](const std::string& name, auto draw) { law<T>(lines, type + name, draw); };
    for (int method = 0; method < 3; ++method)
        add("Gaussian " + std::to_string(method), [&](kef_stream* s, int n, T* r) {
            return L::gaussian(method, s, n, r, T(0.25), T(1.5));
        });
    for (int method = 0; method < 2; ++method)
        add("Lognormal " + std::to_string(method), [&](kef_stream* s, int n, T* r) {
            return L::lognormal(method, s, n, r, T(0.25), T(0.5), T(1), T(2));
        });
    add("Exponential", [](auto* s, int n, T* r) { return L::exponential(0, s, n, r, T(1), T(2)); });
    add("Laplace", [](auto* s, int n, T* r) { return L::laplace(0, s, n, r, T(1), T(2)); });
    add("Weibull", [](auto* s, int n, T* r) { return L::weibull(0, s, n, r, T(1.5), T(1), T(2)); });
    add("Cauchy", [](auto* s, int n, T* r) { return L::cauchy(0, s, n, r, T(1), T(2)); });
    add("Rayleigh", [](auto* s, int n, T* r) { return L::rayleigh(0, s, n, r, T(1), T(2)); });
    add("Gumbel", [](auto* s, int n, T* r) { return L::gumbel(0, s, n, r, T(1), T(2)); });
    for (const double alpha : {0.3, 0.7, 1.0, 2.5, 40.0})
        add("Gamma " + std::to_string(alpha).substr(0, 4),
            [&](auto* s, int n, T* r) { return L::gamma(0, s, n, r, T(alpha), T(1), T(2)); });
    for (const auto& [p, q] :
         {std::pair(0.4, 0.7), std::pair(0.4, 2.0), std::pair(1.0, 1.0), std::pair(2.5, 3.5)})
        add("Beta " + std::to_string(p).substr(0, 3) + " " + std::to_string(q).substr(0, 3),
            [p = p, q = q](auto* s, int n, T* r) {
                return L::beta(0, s, n, r, T(p), T(q), T(1), T(2));
            });
}

Lines laws() {
    Lines lines;
    continuous_laws<double>(lines);
    continuous_laws<float>(lines);
    const auto add = [&](const std::string& name, auto draw) {
        law<std::int32_t>(lines, "i" + name, draw);
    };
    add("Uniform", [](auto* s, int n, auto* r) { return _vtsiRngUniform(0, s, n, r, -100, 1000); });
    add("Bernoulli", [](auto* s, int n, auto* r) { return _vtsiRngBernoulli(0, s, n, r, 0.3); });
    add("Geometric", [](auto* s, int n, auto* r) { return _vtsiRngGeometric(0, s, n, r, 0.1); });
    for (const int trials : {10, 1000})
        add("Binomial " + std::to_string(trials),
            [&](auto* s, int n, auto* r) { return _vtsiRngBinomial(0, s, n, r, trials, 0.3); });
    add("Hypergeometric",
        [](auto* s, int n, auto* r) { return _vtsiRngHypergeometric(0, s, n, r, 1000, 100, 300); });
    for (int method = 0; method < 2; ++method)
        for (const double mean : {0.7, 20.0, 400.0})
            add("Poisson " + std::to_string(method) + " " + std::to_string(mean).substr(0, 3),
                [&](auto* s, int n, auto* r) { return _vtsiRngPoisson(method, s, n, r, mean); });
    add("Negbinomial",
        [](auto* s, int n, auto* r) { return _vtsiRngNegbinomial(0, s, n, r, 2.5, 0.2); });
    return lines;
}

// --- statistics and fitting ---------------------------------------------------

template <class T> void estimates(Lines& lines) {
    using namespace stats_tests;
    constexpr int p = 5, n = 1237;
    const std::pair<const char*, int> methods[] = {{"raw", VTS_SS_METHOD_RAW},
                                                   {"recurrence", VTS_SS_METHOD_RECURRENCE},
                                                   {"tiled", VTS_SS_METHOD_TILED}};
    std::vector<T> data(p * n), weights(n);
    kef::reference::Random random("statistics");
    for (T& x : data) x = random.draw<T>({-3, 5}, true);
    for (T& w : weights) w = random.draw<T>({0.1, 3}, true);
    for (const auto& [name, method] : methods) {
        Digest digest;
        for (const int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS}) {
            Problem<T> problem(p, n, data, weights, storage);
            EXPECT_EQ(VTS_SS_STATUS_OK, problem.basic(stats_tests::everything, method)) << name;
            for (const auto& result : problem.results()) digest.add(*result.second);
        }
        lines.push_back(
            {"statistics " + std::string(sizeof(T) == 8 ? "d" : "s") + " " + name, digest.text()});
    }
    Problem<T> problem(p, n, data, weights);
    const std::int32_t count = 4, one = 1;
    const std::vector<T> orders = {0, T(0.1), T(0.37), 1}, epsilon = {0.5};
    std::vector<T> result(p * count), other(p * count);
    problem.set(VTS_SS_ID_QUANTILES, result);
    problem.set(VTS_SS_ID_QUANTILE_ORDERS, orders);
    problem.set(VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, result);
    problem.set(VTS_SS_ID_STREAM_QUANTILES, other);
    problem.set(VTS_SS_ID_STREAM_QUANTILE_ORDERS, orders);
    problem.set(VTS_SS_ID_STREAM_QUANTILE_PARAMETERS, epsilon);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_QUANTILE_ORDER_COUNT, &count);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_STREAM_QUANTILE_ORDER_COUNT, &count);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_STREAM_QUANTILE_PARAMETER_COUNT, &one);
    Digest digest;
    for (const auto compute : {Api<T>::quantiles, Api<T>::median_absolute_deviation,
                               Api<T>::weighted_median, Api<T>::stream_quantiles}) {
        EXPECT_EQ(VTS_SS_STATUS_OK, compute(problem.task, 0, 0));
        digest.add(result);
    }
    digest.add(other);
    lines.push_back(
        {"statistics " + std::string(sizeof(T) == 8 ? "d" : "s") + " order", digest.text()});

    const std::int32_t marks[] = {1, -1, 1, -1, 1};
    std::vector<std::int32_t> groups(n), wanted(7, 1);
    for (int j = 0; j < n; ++j) groups[j] = j * j % 11 - 1;
    wanted.resize(10);
    std::vector<T> distances(n), squares[4], means(7 * p), covariances(7 * p * p);
    for (auto& square : squares) square.resize(p * p);
    problem.set(VTS_SS_ID_MAHALANOBIS_DISTANCE, distances);
    problem.set(VTS_SS_ID_PARTIAL_COVARIANCE, squares[0]);
    problem.set(VTS_SS_ID_PARTIAL_CORRELATION, squares[1]);
    problem.set(VTS_SS_ID_PARAMETRIZED_MATRIX, squares[2]);
    problem.set(VTS_SS_ID_POOLED_COVARIANCE, squares[3]);
    problem.set(VTS_SS_ID_POOLED_MEAN, result);
    problem.set(VTS_SS_ID_GROUP_MEANS, means);
    problem.set(VTS_SS_ID_GROUP_COVARIANCES, covariances);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_PARTIAL_INDICES, marks);
    __vtsiSSEditTask(problem.task, VTS_SS_ID_GROUP_INDICES, groups.data());
    __vtsiSSEditTask(problem.task, VTS_SS_ID_REQUESTED_GROUPS, wanted.data());
    for (const int id :
         {VTS_SS_ID_PARTIAL_COVARIANCE_STORAGE, VTS_SS_ID_PARTIAL_CORRELATION_STORAGE,
          VTS_SS_ID_PARAMETRIZED_MATRIX_STORAGE, VTS_SS_ID_POOLED_COVARIANCE_STORAGE,
          VTS_SS_ID_GROUP_COVARIANCE_STORAGE})
        __vtsiSSEditTask(problem.task, id, &problem.layout);
    EXPECT_EQ(VTS_SS_STATUS_OK, problem.basic(stats_tests::matrices, VTS_SS_METHOD_TILED));
    Digest matrices;
    for (const auto compute : {Api<T>::mahalanobis_distance, Api<T>::partial_covariance,
                               Api<T>::correlation_parametrization, Api<T>::pooled_covariance})
        EXPECT_EQ(VTS_SS_STATUS_OK, compute(problem.task, 0, 0));
    for (const auto* array : {&distances, &result, &means, &covariances}) matrices.add(*array);
    for (const auto& square : squares) matrices.add(square);
    lines.push_back(
        {"statistics " + std::string(sizeof(T) == 8 ? "d" : "s") + " matrices", matrices.text()});
}

template <class T> void splines(Lines& lines) {
    using namespace fit_test;
    for (const Kind& kind : kinds()) {
        Digest digest;
        for (const int64_t boundary : kind.boundaries)
            for (const int64_t internal : kind.internals) {
                Spline<T> s;
                s.x.resize(41);
                s.y.resize(s.x.size());
                kef::reference::Random random("splines");
                for (std::size_t i = 0; i < s.x.size(); ++i)
                    s.x[i] = T(i) + random.draw<T>({0, 0.5}, true);
                for (T& y : s.y) y = random.draw<T>({-2, 2}, true);
                if (boundary == DF_PERIODIC) s.y.back() = s.y.front();
                s.set_conditions(boundary, internal);
                s.fit(kind);
                digest.add(s.c);
                std::vector<T> sites(200);
                for (T& x : sites) x = random.draw<T>({0, 40}, true);
                digest.add(s.values(sites, DF_ANY_ORDER, {1, 1, 1}));
            }
        lines.push_back(
            {"spline " + std::string(sizeof(T) == 8 ? "d" : "s") + " " + kind.name, digest.text()});
    }
}

Lines all_lines() {
    Lines lines = vector_math();
    for (const Lines& more : {streams(), laws()})
        lines.insert(lines.end(), more.begin(), more.end());
    estimates<double>(lines);
    estimates<float>(lines);
    splines<double>(lines);
    splines<float>(lines);
    return lines;
}

// The members for wider vectors multiply and add in one operation: the same bits where results are
// exact or correctly rounded, and where no kernel is below; other last bits elsewhere, in all but
// sums of complex numbers.
bool is_same_in_all_members(const std::string& line) {
    std::istringstream words(line);
    std::string kind, name, slot;
    words >> kind >> name >> slot;
    if (kind == "stream") return true;
    if (kind != "math") return false;
    const auto is_one_of = [&](std::initializer_list<const char*> functions) {
        return std::find(functions.begin(), functions.end(), name.substr(1)) != functions.end();
    };
    if (name[0] == 'c' || name[0] == 'z') return is_one_of({"Add", "Sub", "Conj"});
    if (is_one_of({"Abs", "Add", "Sub", "Mul", "Div", "Inv", "Sqr", "Sqrt", "Ceil", "Floor",
                   "Round", "Trunc", "Rint", "NearbyInt", "Modf"}))
        return true;
    return name[0] == 's' && slot == "HA" &&
           !is_one_of({"Pow", "Powx", "Atan2", "Hypot", "LinearFrac"});
}

TEST(Digests, AreThoseOnRecord) {
    const Lines lines = all_lines();
    if (const char* path = std::getenv("KEF_WRITE_DIGESTS")) {
        std::ofstream file(path);
        for (const auto& [name, digest] : lines) file << digest << ' ' << name << '\n';
        return;
    }
    std::map<std::string, std::string> recorded;
    std::ifstream file(KEF_SOURCE_DIR "/tests/data/digests.txt");
    for (std::string line; std::getline(file, line);)
        recorded[line.substr(17)] = line.substr(0, 16);
    for (const auto& [name, digest] : lines)
        if (dll_cpu_version() == 0 || is_same_in_all_members(name))
            EXPECT_EQ(digest, recorded[name]) << name;
    EXPECT_EQ(lines.size(), recorded.size());
}

}  // namespace
