// kef bench: the functions beside those of the C library. kef info: what runs here.
#include <cpuid.h>
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

#include "command.h"
#include "kef_rng.h"
#include "kef_version.h"
#include "kef_vm.h"
#include "numbers.h"
#include "output.h"

extern "C" {
#include "../examples/functions.h"
}

namespace command {

namespace {

// Nanoseconds an element, the best of several runs of about a millisecond.
template <class Work> double measure(Work work, std::size_t elements) {
    using clock = std::chrono::steady_clock;
    double best = INFINITY;
    for (int trial = 0; trial < 15 && !interrupted(); ++trial) {
        std::size_t calls = 0;
        const auto start = clock::now();
        double spent;
        do {
            work();
            ++calls;
            spent = std::chrono::duration<double, std::nano>(clock::now() - start).count();
        } while (spent < 1e6);
        best = std::min(best, spent / (double)(calls * elements));
    }
    return best;
}

std::vector<std::string> bench_names() {
    std::vector<std::string> known;
    for (int i = 0; i < function_count; ++i)
        if (functions[i].name[0] == 'd') known.emplace_back(functions[i].name + 1);
    return known;
}

int run_bench(const Arguments& arguments) {
    std::vector<std::string> names = arguments.words;
    if (names.empty())
        names = {"Exp",  "Ln",   "Pow", "Sin",    "SinCos", "Tan",
                 "Atan", "Tanh", "Erf", "TGamma", "Sqrt"};
    const auto n = arguments.count("--elements", 1000);
    if (n < 1 || n > 10000000) wrong("--elements: 1 to 10000000");
    std::vector<const function*> rows;
    for (const auto& name : names) {
        const function* found =
            find_function(((arguments.has("--single") ? "s" : "d") + name).c_str());
        if (found == nullptr) {
            wrong("no function " + name + "; there are: " + joined(bench_names(), " "));
        }
        rows.push_back(found);
    }
    Output output;
    output.write("nanoseconds an element, n = " + std::to_string(n) +
                 (arguments.has("--single") ? ", single" : ", double") + " precision, member " +
                 kef_member() + "\n");
    char line[120];
    std::snprintf(line, sizeof line, "%-12s %8s %8s %8s %10s %14s\n", "function", "HA", "LA", "EP",
                  "C library", "C library / HA");
    output.write(line);
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    std::vector<char> a(n * 8), b(n * 8), y(n * 8), z(n * 8);
    for (const function* f : rows) {
        for (std::size_t i = 0; i < n; ++i) {
            const double share = ((double)i + 0.5) / (double)n, other = std::fmod(share * 7.3, 1);
            const double u = f->low + (f->high - f->low) * share,
                         v = f->low + (f->high - f->low) * other;
            const float uf = (float)u, vf = (float)v;
            std::memcpy(a.data() + i * f->size, f->size == 8 ? (const void*)&u : &uf, f->size);
            std::memcpy(b.data() + i * f->size, f->size == 8 ? (const void*)&v : &vf, f->size);
        }
        double times[4];
        for (const int slot : {VTM_SLOT_HA, VTM_SLOT_LA, VTM_SLOT_EP})
            times[slot] = measure(
                [&] { f->call(slot, (std::int32_t)n, a.data(), b.data(), y.data(), z.data()); }, n);
        times[3] =
            measure([&] { f->loop((std::int32_t)n, a.data(), b.data(), y.data(), z.data()); }, n);
        if (interrupted()) throw Interrupted();
        const bool has_peer =
            !std::isnan((double)f->reference(0, (f->low + f->high) / 2, (f->low + f->high) / 2));
        std::string peer = "-", ratio = "-";
        if (has_peer)
            peer = rounded(times[3], 3), ratio = rounded(times[3] / times[VTM_SLOT_HA], 3);
        std::snprintf(line, sizeof line, "%-12s %8.3g %8.3g %8.3g %10s %14s\n", f->name + 1,
                      times[VTM_SLOT_HA], times[VTM_SLOT_LA], times[VTM_SLOT_EP], peer.c_str(),
                      ratio.c_str());
        output.write(line);
    }
    output.close();
    return succeeded;
}

const Option bench_options[] = {{"--elements", "N", "the length of the vectors (1000)"},
                                {"--single", "", "single precision instead of double"}};

// ---- info

std::string processor() {
    char name[49] = {};
    unsigned words[4];
    for (unsigned leaf = 0; leaf < 3; ++leaf) {
        if (!__get_cpuid(0x80000002 + leaf, words, words + 1, words + 2, words + 3))
            return "not known";
        std::memcpy(name + 16 * leaf, words, 16);
    }
    return name + std::strspn(name, " ");
}

std::string instructions() {
    std::string all;
    const std::pair<bool, const char*> sets[] = {{__builtin_cpu_supports("sse2"), "SSE2"},
                                                 {__builtin_cpu_supports("sse3"), "SSE3"},
                                                 {__builtin_cpu_supports("avx"), "AVX"},
                                                 {__builtin_cpu_supports("avx2"), "AVX2"},
                                                 {__builtin_cpu_supports("fma"), "FMA"},
                                                 {__builtin_cpu_supports("avx512f"), "AVX-512F"},
                                                 {__builtin_cpu_supports("avx512dq"), "AVX-512DQ"}};
    for (const auto& [has, name] : sets)
        if (has) all += (all.empty() ? "" : " ") + std::string(name);
    return all;
}

int run_info(const Arguments& arguments) {
    if (!arguments.words.empty()) wrong("no words are wanted: " + arguments.words[0]);
    const int version = kef_version();
    Dl_info where = {};
    dladdr((void*)kef_version, &where);
    std::string text;
    const auto line = [&](const char* what, const std::string& value) {
        std::string name = what;
        name.resize(14, ' ');
        text += name + value + "\n";
    };
    line("version", std::to_string(version / 10000) + "." + std::to_string(version / 100 % 100) +
                        "." + std::to_string(version % 100));
    line("member", kef_member());
    line("library", where.dli_fname != nullptr ? where.dli_fname : "linked in");
    line("pointers", std::to_string(8 * sizeof(void*)) + " bits");
    line("processor", processor());
    line("instructions", instructions());
    line("accuracy", kef_vtm_kernel_GetTTableIndex() == VTM_SLOT_LA   ? "LA"
                     : kef_vtm_kernel_GetTTableIndex() == VTM_SLOT_EP ? "EP"
                                                                      : "HA");
    line("generators", std::to_string(__vtsGetNumRegBrngs()) + " families");
    Output output;
    output.write(text);
    output.close();
    return succeeded;
}

}  // namespace

const Command bench = {"bench",         "time functions beside the C library",
                       "[FUNCTION...]", bench_options,
                       run_bench,       bench_names};
const Command info = {"info", "version, member and processor", "", {}, run_info, nullptr};

}  // namespace command
