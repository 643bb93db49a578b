// Worst and mean error of every real function, by slot and interval.
//
//   accuracy [function...] [--quick] [--count N] [--markdown]
//   accuracy [function...] --exhaustive [--state DIR]
//
// A function is named with or without its type: Exp, dExp. Ends with status 1
// where a kernel misses its bound or the 80-bit screen is worse than its row says.
#include <cstdlib>
#include <cstring>
#include <set>

#include "bench/exhaustive.h"
#include "bench/meter.h"
#include "bench/table.h"
#include "include/kef_vm.h"

namespace kef {

namespace {

struct Options {
    std::set<std::string> functions;
    bool exhaustive = false, markdown = false;
    std::uint64_t count = 1 << 22;  // arguments of an interval
    std::string state = ".";
};

// Bounds of a slot: the error in ulp, relative, and misrounded results.
struct Bound {
    double ulps = INFINITY, relative = INFINITY;
    bool correctly_rounded = false;

    template <class T>
    bool holds(const Tally<T>& tally) const {
        return tally.ulps.error <= ulps && tally.relative.error <= relative &&
               !(correctly_rounded && tally.misrounded > 0);
    }
    std::string text() const {
        if (correctly_rounded) return "rounded";
        if (ulps < INFINITY) return format("%g ulp", ulps);
        return format("%g bits", -std::log2(relative));
    }
};

template <class T>
Bound bound_of(const reference::Reference& row, int slot, bool one_argument) {
    constexpr bool single = std::is_same_v<T, float>;
    if (slot == 0) return {.relative = single ? 0x1p-21 : 0x1p-50};
    if (slot == 2) return {.relative = single ? 0x1p-11 : 0x1p-26};
    if (row.bound <= 0.5 || (single && one_argument && row.least == 0))
        return {.correctly_rounded = true};
    return {.ulps = single && !one_argument ? 0.501 : row.bound};
}

std::string number(double x) {
    static constexpr std::pair<double, const char*> names[] = {
        {1e-12, "1e-12"}, {M_PI_2, "pi/2"}, {M_PI, "pi"}};
    for (const auto& [value, name] : names)
        if (std::fabs(x) == value) return (x < 0 ? "-" : "") + std::string(name);
    return format("%.10g", x);
}

std::string text(const reference::Range& range) {
    if (std::isinf(range.high - range.low)) return "all";
    std::string result = "[" + number(range.low) + ", " + number(range.high) + "]";
    if (range.near != 0) result += " near n " + number(static_cast<double>(range.near));
    return result;
}

std::string text(const reference::Interval& interval, bool two, bool scalars) {
    std::string result = text(interval.a);
    if (two) result += " x " + text(interval.b);
    if (scalars)
        for (const double c : interval.scalars) result += " " + number(c);
    return result;
}

std::string hex(float x) { return format("%08X", std::bit_cast<std::uint32_t>(x)); }
std::string hex(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    return format("%08X%08X", static_cast<unsigned>(bits >> 32), static_cast<unsigned>(bits));
}
template <class T>
std::string argument(T x) {
    return format("%.*g (%s)", std::numeric_limits<T>::max_digits10, static_cast<double>(x), hex(x).c_str());
}

// Measures `count` arguments of an interval, edges first.
template <class T, class Function>
void measure(Meter<T>& meter, const std::string& name, const std::vector<Function*>& kernels,
             const reference::Interval& interval, std::uint64_t count,
             typename Meter<T>::Tallies& tallies) {
    constexpr bool two = has_second_argument<Function>, scalar = has_scalar_argument<Function>;
    constexpr std::uint64_t size = 1024;
    Batch<T> batch(size);
    reference::Scalars scalars;
    for (std::size_t i = 0; i < scalars.size(); ++i)
        scalars[i] = batch.scalars[i] = static_cast<T>(interval.scalars[i]);
    reference::Random random(name);
    const auto edges_a = reference::edges<T>(interval.a);
    const auto edges_b = two || scalar ? reference::edges<T>(interval.b) : std::vector<T>(1);
    const std::uint64_t edge_count = scalar ? edges_b.size() * size : edges_a.size() * edges_b.size();
    const bool bounded = std::isfinite(interval.a.high - interval.a.low);
    std::vector<std::array<std::vector<T>, 2>> results(kernels.size());

    count = (std::max(count, 2 * edge_count) + size - 1) / size * size;
    for (std::uint64_t first = 0; first < count; first += size) {
        const std::uint64_t number = first / size;
        const bool a_by_value = number % 2 == 0, b_by_value = number / 2 % 2 == 0;
        const bool at_edges = first < edge_count;
        if (scalar)
            batch.scalar = at_edges ? edges_b[number] : random.draw<T>(interval.b, b_by_value);
        for (std::uint64_t i = 0; i < size; ++i) {
            const std::uint64_t n = scalar ? i : first + i;
            const bool edge = at_edges && n < edges_a.size() * (scalar ? 1 : edges_b.size());
            batch.a[i] = edge ? edges_a[n % edges_a.size()] : random.draw<T>(interval.a, a_by_value);
            if (two) batch.b[i] = edge ? edges_b[n / edges_a.size()] : random.draw<T>(interval.b, b_by_value);
            if (scalar) batch.b[i] = batch.scalar;  // for the reference
        }
        std::vector<const std::array<std::vector<T>, 2>*> views;
        for (std::size_t k = 0; k < kernels.size(); ++k) {
            call(kernels[k], batch);
            results[k] = batch.result;
            views.push_back(&results[k]);
        }
        const bool for_mean = !bounded || (a_by_value && (b_by_value || !(two || scalar)));
        meter.take(batch, scalars, views, for_mean && !at_edges, tallies);
    }
}

class Run {
public:
    explicit Run(const Options& options) : options_(options) {}

    template <class T, class Function>
    void function(const char* name, const char* shape, char type, Function* const* slots) {
        if (moves_data(shape) || !wanted(name, type)) return;
        const std::string full_name = type + std::string(name);
        if constexpr (requires(Function* f, Batch<T>& x) { call(f, x); }) {
            if (const reference::Reference* row = reference::find(name))
                return options_.exhaustive ? exhaust(*row, full_name, slots)
                                           : sample<T>(*row, full_name, slots);
        }
        std::fprintf(stderr, "%s has no reference: add a row to tests/reference.def\n", full_name.c_str());
        failed_ = true;
    }

    int status() const {
        for (const std::string& name : options_.functions)
            if (!seen_.count(name)) {
                std::fprintf(stderr, "%s: no such function is switched on\n", name.c_str());
                return 2;
            }
        return failed_ ? 1 : 0;
    }

private:
    bool wanted(const char* name, char type) {
        bool found = options_.functions.empty();
        for (const std::string& key : {std::string(name), type + std::string(name)})
            if (options_.functions.count(key)) {
                seen_.insert(key);
                found = true;
            }
        return found;
    }

    // The different kernels of the slots, and the slots of each.
    template <class Function>
    static auto distinct(Function* const* slots) {
        std::vector<Function*> kernels;
        std::vector<std::vector<int>> users;
        for (const int slot : {1, 0, 2}) {
            const auto at = std::find(kernels.begin(), kernels.end(), slots[slot]) - kernels.begin();
            if (at == static_cast<std::ptrdiff_t>(kernels.size())) {
                kernels.push_back(slots[slot]);
                users.emplace_back();
            }
            users[at].push_back(slot);
        }
        return std::pair(kernels, users);
    }
    static std::string names(const std::vector<int>& users) {
        static constexpr const char* keyword[] = {"LA", "HA", "EP"};
        std::string result;
        for (const int slot : users) result += (result.empty() ? "" : " ") + std::string(keyword[slot]);
        return result;
    }

    template <class T>
    void report(Table& table, const std::string& name, const std::string& interval, int results,
                const reference::Reference& row, bool one_argument,
                const std::vector<std::vector<int>>& users, const typename Meter<T>::Tallies& tallies) {
        for (std::size_t k = 0; k < users.size(); ++k)
            for (int j = 0; j < results; ++j) {
                const Tally<T>& tally = tallies[k][j];
                const Bound bound = bound_of<T>(row, users[k][0], one_argument);
                const bool holds = bound.holds(tally);
                failed_ |= !holds;
                std::string at = argument(tally.ulps.a);
                if (!one_argument) at += ", " + argument(tally.ulps.b);
                table.add({results > 1 ? format("%s.%d", name.c_str(), j + 1) : name, names(users[k]),
                           interval, format("%.*f", tally.ulps.error < 1000 ? 4 : 0, tally.ulps.error), at,
                           format("%.*f", tally.mean() < 1000 ? 4 : 0, tally.mean()),
                           tally.relative.error == 0 ? "exact" : format("%.2f", -std::log2(tally.relative.error)),
                           format("%.3g %%", 100.0 * tally.misrounded / tally.count),
                           bound.text() + (holds ? "" : "  MISSED")});
            }
    }

    template <class T, class Function>
    void sample(const reference::Reference& row, const std::string& name, Function* const* slots) {
        constexpr bool two = has_second_argument<Function> || has_scalar_argument<Function>;
        constexpr bool scalars = requires(Batch<T>& x, Function* f) {
            f(1, x.a.data(), x.b.data(), T(), T(), T(), T(), x.a.data());
        };
        const auto [kernels, users] = distinct(slots);
        std::vector<reference::Interval> intervals = {row.main};
        for (const auto* more : {&row.both, std::is_same_v<T, float> ? &row.s : &row.d})
            intervals.insert(intervals.end(), more->begin(), more->end());
        intervals.push_back({reference::everything, reference::everything, row.main.scalars});

        Table table({"function", "slot", "arguments", "worst ulp", "at", "mean ulp", "bits",
                     "misrounded", "bound"});
        Meter<T> meter(row);
        for (const reference::Interval& interval : intervals) {
            auto tallies = std::make_unique<typename Meter<T>::Tallies>();
            const std::string arguments = text(interval, two, scalars);
            measure(meter, name + arguments, kernels, interval, options_.count, *tallies);
            report<T>(table, name, arguments, meter.results(), row, !two, users, *tallies);
        }
        table.print(options_.markdown);
        std::puts("");
        check_screen(name, row, meter.screen_error());
    }

    template <class T>
    void exhaust(const reference::Reference& row, const std::string& name,
                 vm::shape::map1<T>* const* slots) {
        exhaust_any<T>(row, name, slots);
    }
    template <class T>
    void exhaust(const reference::Reference& row, const std::string& name,
                 vm::shape::map1x2<T>* const* slots) {
        exhaust_any<T>(row, name, slots);
    }
    template <class Function>
    void exhaust(const reference::Reference&, const std::string&, Function* const*) {}

    template <class T, class Function>
    void exhaust_any(const reference::Reference& row, const std::string& name, Function* const* slots) {
        if constexpr (std::is_same_v<T, float>) {
            const auto [kernels, users] = distinct(slots);
            const auto result = every_float<Function>(row, name, kernels, options_.state);
            Table table({"function", "slot", "arguments", "worst ulp", "at", "mean ulp", "bits",
                         "misrounded", "bound"});
            report<T>(table, name, "every float", row.exact2 ? 2 : 1, row, true, users, result->tallies);
            table.print(options_.markdown);
            for (std::size_t k = 0; k < users.size(); ++k)
                for (int j = 0; j < (row.exact2 ? 2 : 1); ++j) {
                    const Tally<float>& tally = result->tallies[k][j];
                    std::printf("%s %s result %d: %llu misrounded of %llu", name.c_str(),
                                names(users[k]).c_str(), j + 1, (unsigned long long)tally.misrounded,
                                (unsigned long long)tally.count);
                    if (users[k][0] == 1) {
                        std::vector<float> failing(tally.failing.begin(), tally.failing.begin() +
                            std::min<std::uint64_t>(tally.misrounded, tally.max_failing));
                        std::sort(failing.begin(), failing.end());
                        for (const float x : failing) std::printf(" %s", hex(x).c_str());
                    }
                    std::puts("");
                }
            std::puts("");
            check_screen(name, row, result->screen_error);
        }
    }

    void check_screen(const std::string& name, const reference::Reference& row, double error) {
        if (error <= row.screen_error) return;
        std::fprintf(stderr, "%s: the 80-bit reference is off by %.3g units of 2^-63, its row says %g\n",
                     name.c_str(), error, row.screen_error);
        failed_ = true;
    }

    const Options& options_;
    std::set<std::string> seen_;
    bool failed_ = false;
};

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--exhaustive") options.exhaustive = true;
        else if (word == "--markdown") options.markdown = true;
        else if (word == "--quick") options.count = 1 << 16;
        else if (word == "--count" && i + 1 < argc) options.count = std::strtoull(argv[++i], nullptr, 0);
        else if (word == "--state" && i + 1 < argc) options.state = argv[++i];
        else if (word.starts_with("-")) return std::fprintf(stderr, "unknown option %s\n", argv[i]), 2;
        else options.functions.emplace(word);
    }
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);

    Run run(options);
    using namespace vm;
#define KEF_OFF(type, function, form)
#define KEF_ROW(type, name, form, k0, k1, k2, c0, c1, c2)                                    \
    run.function<element_##type, shape::form<element_##type>>(                               \
        #name, #form, #type[0],                                                              \
        reinterpret_cast<shape::form<element_##type>* const*>(kef_vtm_kernel_##type##name##_ttab));
#include "vm/surface.def"
#undef KEF_ROW
#undef KEF_OFF
    return run.status();
}

}  // namespace

}  // namespace kef

int main(int argc, char** argv) { return kef::main(argc, argv); }
