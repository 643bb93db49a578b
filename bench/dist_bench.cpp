// Time-stamp cycles a number of the distributions beside the C++ standard library, Boost and GSL:
// 1000 numbers a call, MT19937, everything in one run, the least of many calls.
//
//   dist_bench [law...] [--markdown]     laws whose names begin so, or all
#include "bench/dist_bench.h"

#include <x86intrin.h>

#include <cstring>

#include "bench/table.h"

namespace {

using namespace kef::bench;

// The least of the times of each call. The calls take turns, so that what slows the machine down
// meets all of them: 20 rounds at least, and 3000 or those of a quarter of a second at nominal 2
// GHz.
std::vector<double> ticks(const std::vector<const Call*>& calls) {
    std::vector<double> best(calls.size(), 0);
    double spent = 0;
    for (int round = 0; round < 3000 && (round < 20 || spent < 5e8); ++round)
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (!*calls[i]) continue;
            const std::uint64_t start = __rdtsc();
            (*calls[i])();
            const auto time = static_cast<double>(__rdtsc() - start);
            spent += time;
            if (best[i] == 0 || time < best[i]) best[i] = time;
        }
    return best;
}

void measure(const Section& section, const std::vector<std::string>& wanted, bool markdown) {
    kef::Table table({"ticks a number", "kef", "C++ library", "Boost", "GSL", "best / kef"});
    bool any = false;
    for (const Row& row : section) {
        bool take = wanted.empty();
        for (const std::string& name : wanted) take |= row.law.rfind(name, 0) == 0;
        if (!take) continue;
        any = true;
        std::vector<double> time = ticks({&row.kef, &row.standard, &row.boost, &row.gsl});
        double best = 0;
        for (double& t : time) t /= numbers * row.each;
        for (const double t : {time[1], time[2], time[3]})
            if (t > 0 && (best == 0 || t < best)) best = t;
        const auto cell = [](double t) {
            return t > 0 ? kef::format(t < 100 ? "%.2f" : "%.0f", t) : std::string("-");
        };
        table.add({row.law, cell(time[0]), cell(time[1]), cell(time[2]), cell(time[3]),
                   best > 0 ? kef::format("%.2f", best / time[0]) : "-"});
    }
    if (!any) return;
    table.print(markdown);
    std::puts("");
}

}  // namespace

int main(int argc, char** argv) {
    bool markdown = false;
    std::vector<std::string> wanted;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--markdown") == 0) markdown = true;
        else wanted.push_back(argv[i]);
    const std::vector<Section> sections = {gaussian_laws(), continuous_laws(), discrete_laws()};
    for (const std::string& name : wanted) {
        bool known = false;
        for (const Section& section : sections)
            for (const Row& row : section) known |= row.law.rfind(name, 0) == 0;
        if (!known) {
            std::fprintf(stderr, "%s: no such law or option\n", name.c_str());
            return 2;
        }
    }
    for (const Section& section : sections) measure(section, wanted, markdown);
    return 0;
}
