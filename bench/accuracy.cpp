// Worst and mean error of every function, by slot and interval; of complex functions that of each
// component and that of the norm.
//
//   accuracy [function...] [--quick | --count N] [--peers] [--summary | --means] [--markdown]
//   accuracy [function...] --search | --exhaustive | --rounding [--state DIR] [--markdown]
//   accuracy [function...] --exhaustive --beside LIBRARY... [--state DIR] [--markdown]
//
// A function is named with or without its type: Exp, dExp; --real, --complex, --single and --double
// leave out the others. --summary takes all intervals together, with the mean of the first; --means
// leaves out the worst errors, which a sample does not tell. --search looks for the worst errors:
// over every float where that is all, else by bench/search.h. --rounding tells for real functions
// of one float whether HA is correctly rounded everywhere, and measures HA of complex functions
// along both axes and on a grid of hard points. --beside measures the members in those files as
// well, and whether their HA kernels give the same bits. Ends with status 1 where a kernel misses
// its bound, bits differ, or the 80-bit screen is worse than its row says.
#include <cstdlib>

#include "bench/exhaustive.h"
#include "bench/peers.h"
#include "bench/search.h"
#include "bench/select.h"
#include "bench/table.h"
#include "include/kef_vm.h"

namespace kef {

namespace {

struct Options {
    Selection selection;
    bool exhaustive = false, rounding = false, markdown = false, peers = false, summary = false;
    bool search = false, means = false;
    std::uint64_t count = 1 << 22;  // arguments of an interval
    std::string state = ".";
    std::vector<OtherMember> others;
};

// Bounds of a slot: the error in ulp, relative, and misrounded results.
struct Bound {
    double ulps = INFINITY, relative = INFINITY;
    bool correctly_rounded = false;
    const char* unit = "ulp";

    template <class T> bool holds(const Tally<T>& tally) const {
        return tally.ulps.error <= ulps && tally.relative.error <= relative &&
               !(correctly_rounded && tally.misrounded > 0);
    }
    std::string text() const {
        if (correctly_rounded) return "rounded";
        if (ulps < INFINITY) return format("%g %s", ulps, unit);
        return relative < INFINITY ? format("%g bits", -std::log2(relative)) : "";
    }
};

// Of a component, or of the norm.
template <class T>
Bound bound_of(const reference::Reference& row, int slot, bool one_argument, bool norm) {
    constexpr bool single = std::is_same_v<T, float>;
    if (slot < 0) return {};  // a peer
    if (slot == 0) return {.relative = single ? 0x1p-21 : 0x1p-50};
    if (slot == 2) return {.relative = single ? 0x1p-11 : 0x1p-26};
    const double bound = single && !(one_argument && !row.complex()) ? 0.501 : row.bound;
    if (row.norm_wise != norm) return {};
    if (norm) return {.ulps = 2 * bound, .unit = "units"};
    if (row.bound <= 0.5 || (single && one_argument && !row.complex()))
        return {.correctly_rounded = true};
    return {.ulps = bound};
}

std::string number(double x) {
    return std::fabs(x) == M_PI_2 ? x < 0 ? "-pi/2" : "pi/2" : format("%.10g", x);
}

std::string text(const reference::Range& range) {
    if (std::isinf(range.high - range.low)) return "all";
    std::string result = "[" + number(range.low) + ", " + number(range.high) + "]";
    if (range.near != 0) result += " near n " + number(static_cast<double>(range.near));
    return result;
}

std::string text(const reference::Range& re, const reference::Range& im, int parts) {
    if (parts == 1) return text(re);
    const std::string x = text(re), y = text(im);
    return x == "all" && y == "all" ? x : x + " + i " + y;
}
std::string text(const reference::Interval& interval, const kef_test::Row& row) {
    if (!interval.words.empty()) return std::string(interval.words);
    const int parts = row.argument_parts;
    std::string result = text(interval.a, interval.a_im, parts);
    if (row.arguments == 2 || row.scalars == 1)
        result += " x " + text(interval.b, interval.b_im, parts);
    if (row.scalars == 4)
        for (const double c : interval.scalars) result += " " + number(c);
    return result;
}

std::string hex(float x) { return format("%08X", std::bit_cast<std::uint32_t>(x)); }
std::string hex(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    return format("%08X%08X", static_cast<unsigned>(bits >> 32), static_cast<unsigned>(bits));
}
template <class T> std::string argument(T x) {
    return format("%.*g (%s)", std::numeric_limits<T>::max_digits10, static_cast<double>(x),
                  hex(x).c_str());
}

template <class T> std::string argument(const reference::Point<T>& x, std::size_t components) {
    std::string result = argument(x[0]);
    for (std::size_t c = 1; c < components; ++c) result += ", " + argument(x[c]);
    return result;
}

// A figure that the measured error does not exceed.
std::string rounded_up(double x) {
    if (!(x < 1000)) return format("%.0f", std::ceil(x));
    return format("%.4f", std::ceil(x * 1e4) / 1e4);
}

class Run {
public:
    explicit Run(const Options& options) : options_(options) {}

    void row(const kef_test::Row& row) {
        if (const reference::Reference* reference = find_reference(row))
            return row.single() ? measure<float>(row, *reference)
                                : measure<double>(row, *reference);
        std::fprintf(stderr, "%s has no reference: add a row to tests/reference.def\n",
                     row.name().c_str());
        failed_ = true;
    }

    bool failed() const { return failed_; }

private:
    template <class T>
    void measure(const kef_test::Row& row, const reference::Reference& reference) {
        Table table(columns({"function", "kernel", "arguments", "worst ulp", "at", "mean ulp",
                             "bits", "misrounded", "bound"}));
        const bool every_one = row.type == 's' && row.arguments == 1 && row.scalars == 0;
        if (every_one && (options_.exhaustive || options_.search)) exhaust(table, row, reference);
        else if (options_.search) search<T>(table, row, reference);
        else if (options_.rounding && (row.argument_parts == 2 || row.result_parts == 2))
            places<T>(table, row, reference);
        else if (!options_.exhaustive) sample<T>(table, row, reference);
    }

    template <class T>
    void sample(Table& table, const kef_test::Row& row, const reference::Reference& reference) {
        std::vector<Kernel<T>> all = kernels<T>(row);
        if (options_.peers)
            for (const Peer<T>& peer : peers_of<T>(reference)) all.push_back({peer.name, peer.run});
        Meter<T> meter(reference, row);
        typename Meter<T>::Tallies total(all.size());
        bool with_mean = true;
        for (const reference::Interval& interval : intervals_of<T>(reference)) {
            typename Meter<T>::Tallies tallies(all.size());
            Sampling<T> sampling(row, interval, row.name() + text(interval, row));
            const std::uint64_t count = sampling.rounded_count(options_.count);
            for (std::uint64_t first = 0; first < count; first += sampling.size) {
                sampling.draw(first);
                meter.take(all, sampling.batch, sampling.for_mean, tallies);
            }
            if (!options_.summary)
                report<T>(table, row, reference, text(interval, row), all, tallies);
            for (std::size_t k = 0; k < all.size(); ++k)
                for (int j = 0; j < meter.measures(); ++j)
                    total[k][j].merge(tallies[k][j], with_mean);
            with_mean = false;
        }
        if (options_.summary) report<T>(table, row, reference, "all intervals", all, total);
        if (options_.markdown && !options_.summary) std::printf("## %s\n\n", row.name().c_str());
        print(table);
        check_screen(row, reference, meter.screen_error());
    }

    // HA of a complex function along both axes, where it has one argument, and on a grid.
    template <class T>
    void places(Table& table, const kef_test::Row& row, const reference::Reference& reference) {
        std::vector<Kernel<T>> all = kernels<T>(row);
        all.resize(1);
        Meter<T> meter(reference, row);
        const auto take = [&](auto&& source, const char* words) {
            typename Meter<T>::Tallies tallies(all.size());
            for (std::uint64_t first = 0; first < source.count(); first += source.size) {
                source.draw(first);
                meter.take(all, source.batch, true, tallies);
            }
            report<T>(table, row, reference, words, all, tallies);
        };
        const bool plane = argument_components(row) == 2;
        if (argument_components(row) <= 2) take(Axis<T>(row, options_.count, 0), "real axis");
        if (plane) take(Axis<T>(row, options_.count, 1), "imaginary axis");
        take(Grid<T>(row, options_.count), "grid");
        print(table);
        check_screen(row, reference, meter.screen_error());
    }

    template <class T>
    void search(Table& table, const kef_test::Row& row, const reference::Reference& reference) {
        const auto run = std::make_unique<Search<T>>(reference, row, options_.state);
        const SearchState<T>& state = run->run();
        const double count = static_cast<double>(state.tallies[0][0].count);
        report<T>(table, row, reference, format("%.0f million", count * 1e-6), kernels<T>(row),
                  state.tallies, true);
        print(table);
        check_screen(row, reference, state.screen_error);
    }

    void exhaust(Table& table, const kef_test::Row& row, const reference::Reference& reference) {
        const auto total =
            every_float(reference, row, options_.state, options_.rounding, options_.others);
        const std::string screen =
            (options_.rounding ? screening_peer(reference) : own_screen(reference)).name;
        const Measured what = measured(row, options_.others);
        if (!options_.rounding) {
            report<float>(table, row, reference, "every float", what.kernels, total->tallies);
            print(table);
        }
        for (std::size_t k = 0; k < what.twins.size(); ++k) {
            if (total->differing[k] == 0 && options_.markdown) continue;
            std::printf("%s, %s: %llu floats with other bits\n", row.name().c_str(),
                        what.twins[k].name.c_str(),
                        static_cast<unsigned long long>(total->differing[k]));
            failed_ |= total->differing[k] > 0;
        }
        if (!total->screen_holds) {
            std::fprintf(stderr, "%s: %s misses the error that its row states\n",
                         row.name().c_str(), screen.c_str());
            failed_ = true;
        }
        check_screen(row, reference, total->screen_error);
        if (options_.markdown || options_.search || !options_.others.empty()) return;
        for (int j = 0; j < row.results; ++j) {
            const Tally<float>& tally = total->tallies[0][j];
            std::printf("%s HA, result %d: %llu of %llu misrounded", row.name().c_str(), j + 1,
                        static_cast<unsigned long long>(tally.misrounded),
                        static_cast<unsigned long long>(tally.count));
            std::vector<reference::Point<float>> failing(
                tally.failing.begin(),
                tally.failing.begin() +
                    std::min<std::uint64_t>(tally.misrounded, tally.max_failing));
            std::sort(failing.begin(), failing.end());
            for (const auto& x : failing) std::printf(" %s", hex(x[0]).c_str());
            std::puts(("; screened by " + screen).c_str());
            if (options_.rounding) failed_ |= tally.misrounded > 0;
        }
        if (!options_.rounding) std::puts("");
    }

    template <class T>
    void report(Table& table, const kef_test::Row& row, const reference::Reference& reference,
                const std::string& arguments, const std::vector<Kernel<T>>& kernels,
                const auto& tallies, bool searched = false) {
        const bool two = row.arguments == 2 || row.scalars == 1, pairs = row.result_parts == 2;
        const auto ulps = [](double x) { return format("%.*f", x < 1000 ? 4 : 0, x); };
        for (std::size_t k = 0; k < kernels.size(); ++k)
            for (int j = 0; j < result_components(row) + pairs; ++j) {
                const Tally<T>& tally = tallies[k][j];
                const bool norm = j == result_components(row);
                const Bound bound = bound_of<T>(reference, kernels[k].slot, !two, norm);
                const bool holds = bound.holds(tally);
                failed_ |= !holds;
                std::string name = row.name();
                if (pairs) name += norm ? " norm" : j == 0 ? " re" : " im";
                else if (row.results > 1) name += format(" %d", j + 1);
                table.add(columns(
                    {name, kernels[k].name, arguments, rounded_up(tally.ulps.error),
                     argument(tally.ulps.at, argument_components(row)), ulps(tally.mean()),
                     tally.relative.error == 0
                         ? "exact"
                         : format("%.2f", std::floor(-std::log2(tally.relative.error) * 100) / 100),
                     searched || norm ? ""
                                      : format("%.3g %%", 100.0 * tally.misrounded / tally.count),
                     bound.text() + (holds ? "" : "  MISSED")}));
            }
    }

    Table::Row columns(Table::Row row) const {
        if (options_.means) row = {row[0], row[1], row[2], row[5], row[7]};
        return row;
    }

    // Tables of one line a kernel go on under one head.
    void print(const Table& table) {
        const bool one = options_.summary || options_.exhaustive || options_.search;
        table.print(options_.markdown, head_);
        if (!one) std::puts("");
        head_ = !one;
    }

    void check_screen(const kef_test::Row& row, const reference::Reference& reference,
                      double error) {
        if (error <= reference.screen_error) return;
        std::fprintf(stderr,
                     "%s: the 80-bit reference is off by %.3g units of 2^-63, its row says %g\n",
                     row.name().c_str(), error, reference.screen_error);
        failed_ = true;
    }

    const Options& options_;
    bool head_ = true, failed_ = false;
};

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--exhaustive") options.exhaustive = true;
        else if (word == "--rounding") options.exhaustive = options.rounding = true;
        else if (word == "--search") options.search = true;
        else if (word == "--markdown") options.markdown = true;
        else if (word == "--means") options.means = true;
        else if (word == "--summary") options.summary = true;
        else if (word == "--peers") options.peers = true;
        else if (word == "--quick") options.count = 1 << 16;
        else if (word == "--count" && i + 1 < argc)
            options.count = std::strtoull(argv[++i], nullptr, 0);
        else if (word == "--state" && i + 1 < argc) options.state = argv[++i];
        else if (word == "--beside" && i + 1 < argc &&
                 options.others.size() + 1 < Exhaustive::max_members)
            options.others.emplace_back(argv[++i]);
        else if (!options.selection.add(word)) return 2;
    }
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    Run run(options);
    for (const kef_test::Row* row : options.selection.rows()) run.row(*row);
    return run.failed() ? 1 : 0;
}

}  // namespace

}  // namespace kef

int main(int argc, char** argv) { return kef::main(argc, argv); }
