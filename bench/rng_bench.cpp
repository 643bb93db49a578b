// Time-stamp cycles a number of the random streams beside the C++ standard library, Boost and GSL,
// in one run.
//
//   rng_bench [--markdown]
#include <x86intrin.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "bench/table.h"
#include "kef_dist.h"
#include "kef_rng.h"

#if __has_include(<boost/random.hpp>)
#define KEF_BENCH_BOOST
#include <boost/random.hpp>
#include <boost/random/sobol.hpp>
#endif
#if defined(KEF_BENCH_GSL)
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>
#endif

namespace {

constexpr int n = 1000, dimensions = 40;

// Ticks of one call, the least of many.
double ticks(int repeats, const std::function<void()>& call) {
    double best = 1e300;
    for (int i = 0; i < repeats; ++i) {
        const std::uint64_t start = __rdtsc();
        call();
        best = std::min(best, static_cast<double>(__rdtsc() - start));
    }
    return best;
}
double ticks_each(const std::function<void()>& call, int count = n) {
    return ticks(3000, call) / count;
}

alignas(64) std::uint32_t words[4 * n];
alignas(64) double doubles[n * dimensions];

struct Stream {
    kef_stream* handle = nullptr;
    Stream(std::int32_t brng, std::uint32_t seed) { __vtsNewStreamEx(&handle, brng, 1, &seed); }
    ~Stream() { __vtsDeleteStream(&handle); }
};

double raw(std::int32_t brng) {
    const Stream s(brng, 777);
    return ticks_each([&] { _vtsiRngUniformBits(0, s.handle, n, words); });
}
double uniform(std::int32_t brng) {
    const Stream s(brng, 777);
    return ticks_each([&] { _vtsdRngUniform(0, s.handle, n, doubles, 0, 1); });
}
double single(std::int32_t brng) {
    const Stream s(brng, 777);
    return ticks_each(
        [&] { _vtssRngUniform(0, s.handle, n, reinterpret_cast<float*>(doubles), 0, 1); });
}
double points(std::int32_t brng) {
    const Stream s(brng, dimensions);
    return ticks_each([&] { _vtsdRngUniform(0, s.handle, n * dimensions, doubles, 0, 1); },
                      n * dimensions);
}

// --- skips ---

// Beyond that many numbers nobody draws them.
constexpr std::uint64_t most_drawn = 1000000;
// Of one call; short ones are many in a measurement.
double ticks_of(std::uint64_t count, const std::function<void()>& call) {
    const int calls = count < 1000 ? 100 : 1;
    return ticks(count < 10000 ? 300 : 30,
                 [&] {
                     for (int i = 0; i < calls; ++i) call();
                 }) /
           calls;
}

double skip(std::int32_t brng, std::uint64_t count) {
    const Stream s(brng, 777);
    return ticks_of(count, [&] { __vtsSkipAheadStream(s.handle, count); });
}
double draw_instead(std::int32_t brng, std::uint64_t count) {
    static std::vector<std::uint32_t> thrown_away(4 * most_drawn);  // WH has four words a number
    const Stream s(brng, 777);
    return ticks_of(count, [&] {
        _vtsiRngUniformBits(0, s.handle, static_cast<std::int32_t>(count), thrown_away.data());
    });
}
template <class Engine> double discard(std::uint64_t count) {
    Engine engine;
    const double best = ticks_of(count, [&] { engine.discard(count); });
    words[0] = engine();  // so that the state is used
    return best;
}

template <class Engine> double engine_raw() {
    Engine engine;
    return ticks_each([&] {
        for (int i = 0; i < n; ++i) words[i] = engine();
    });
}
template <class Engine, class Uniform> double engine_uniform() {
    Engine engine;
    Uniform distribution(0, 1);
    return ticks_each([&] {
        for (int i = 0; i < n; ++i) doubles[i] = distribution(engine);
    });
}

struct Peers {
    double standard = 0, boost = 0, gsl = 0;
};

void add(kef::Table& table, const char* what, double ours, const Peers& peers) {
    double best = 0;
    for (const double p : {peers.standard, peers.boost, peers.gsl})
        if (p > 0 && (best == 0 || p < best)) best = p;
    const auto cell = [](double x) {
        return x > 0 ? kef::format(x < 1000 ? "%.2f" : "%.3g", x) : std::string("-");
    };
    table.add({what, cell(ours), cell(peers.standard), cell(peers.boost), cell(peers.gsl),
               best > 0 ? kef::format("%.2f", best / ours) : "-"});
}

void print_skips(bool markdown) {
    kef::Table table({"ticks of a skip by", "1", "10", "100", "625", "10^4", "10^5", "10^6", "2^40",
                      "2^60", "0xFEDCBA9876543210"});
    const auto add = [&table](const char* name, auto cost) {
        kef::Table::Row row = {name};
        for (const std::uint64_t count :
             {UINT64_C(1), UINT64_C(10), UINT64_C(100), UINT64_C(625), UINT64_C(10000),
              UINT64_C(100000), UINT64_C(1000000), UINT64_C(1) << 40, UINT64_C(1) << 60,
              UINT64_C(0xFEDCBA9876543210)}) {
            const double t = cost(count);
            row.push_back(t > 0 ? kef::format("%.3g", t) : "-");
        }
        table.add(row);
    };
    const auto bounded = [](auto cost) {
        return [cost](std::uint64_t count) { return count > most_drawn ? 0 : cost(count); };
    };
    for (const auto& [name, brng] : {std::pair("MCG31M1", VTS_BRNG_MCG31M1),
                                     {"MRG32K3A", VTS_BRNG_MRG32K3A},
                                     {"MCG59", VTS_BRNG_MCG59},
                                     {"WH", VTS_BRNG_WH},
                                     {"SOBOL 1", VTS_BRNG_SOBOL},
                                     {"NIEDERR 1", VTS_BRNG_NIEDERR},
                                     {"MT19937", VTS_BRNG_MT19937},
                                     {"SFMT19937", VTS_BRNG_SFMT19937}}) {
        const std::int32_t id = brng;
        add(name, [id](std::uint64_t count) { return skip(id, count); });
        add((std::string(name) + ", drawn instead").c_str(),
            bounded([id](std::uint64_t count) { return draw_instead(id, count); }));
    }
    add("C++ library, MT19937", bounded(discard<std::mt19937>));
#if defined(KEF_BENCH_BOOST)
    add("Boost, MT19937", discard<boost::random::mt19937>);
#endif
    table.print(markdown);
}

}  // namespace

int main(int argc, char** argv) {
    const bool markdown = argc > 1 && std::strcmp(argv[1], "--markdown") == 0;
    if (argc > 1 + markdown) {
        std::fprintf(stderr, "%s: no such option\n", argv[1 + markdown]);
        return 2;
    }
    kef::Table table({"ticks a number", "kef", "C++ library", "Boost", "GSL", "best / kef"});
    Peers twister_raw, twister_uniform, sobol;
    twister_raw.standard = engine_raw<std::mt19937>();
    twister_uniform.standard =
        engine_uniform<std::mt19937, std::uniform_real_distribution<double>>();
#if defined(KEF_BENCH_BOOST)
    twister_raw.boost = engine_raw<boost::random::mt19937>();
    twister_uniform.boost =
        engine_uniform<boost::random::mt19937, boost::random::uniform_real_distribution<double>>();
    {
        boost::random::sobol engine(dimensions);
        boost::random::uniform_01<double> unit;
        sobol.boost = ticks(300,
                            [&] {
                                for (int i = 0; i < n * dimensions; ++i) doubles[i] = unit(engine);
                            }) /
                      (n * dimensions);
    }
#endif
#if defined(KEF_BENCH_GSL)
    {
        gsl_rng* twister = gsl_rng_alloc(gsl_rng_mt19937);
        twister_raw.gsl = ticks_each([&] {
            for (int i = 0; i < n; ++i) words[i] = gsl_rng_get(twister);
        });
        twister_uniform.gsl = ticks_each([&] {
            for (int i = 0; i < n; ++i) doubles[i] = gsl_rng_uniform(twister);
        });
        gsl_rng_free(twister);
        gsl_qrng* points = gsl_qrng_alloc(gsl_qrng_sobol, dimensions);
        sobol.gsl = ticks(300,
                          [&] {
                              for (int i = 0; i < n; ++i)
                                  gsl_qrng_get(points, doubles + i * dimensions);
                          }) /
                    (n * dimensions);
        gsl_qrng_free(points);
    }
#endif
    const struct {
        const char* name;
        std::int32_t brng;
    } all[] = {{"MCG31M1", VTS_BRNG_MCG31M1},
               {"R250", VTS_BRNG_R250},
               {"MRG32K3A", VTS_BRNG_MRG32K3A},
               {"MCG59", VTS_BRNG_MCG59},
               {"WH", VTS_BRNG_WH},
               {"SOBOL 1", VTS_BRNG_SOBOL},
               {"NIEDERR 1", VTS_BRNG_NIEDERR},
               {"MT19937", VTS_BRNG_MT19937},
               {"MT2203", VTS_BRNG_MT2203},
               {"SFMT19937", VTS_BRNG_SFMT19937},
               {"TRNG", VTS_BRNG_TRNG}};
    for (const auto& g : all) {
        const bool twister = g.brng == VTS_BRNG_MT19937 || g.brng == VTS_BRNG_SFMT19937;
        const std::string name = g.name;
        add(table, (name + " raw").c_str(), raw(g.brng), twister ? twister_raw : Peers());
        add(table, (name + " double").c_str(), uniform(g.brng),
            twister ? twister_uniform : Peers());
        add(table, (name + " single").c_str(), single(g.brng), Peers());
    }
    add(table, "SOBOL 40 double", points(VTS_BRNG_SOBOL), sobol);
    add(table, "NIEDERR 40 double", points(VTS_BRNG_NIEDERR), Peers());
    table.print(markdown);
    std::puts("");
    print_skips(markdown);
    return 0;
}
