// Time-stamp cycles per element of every function, beside what a user would
// take instead, all in one run.
//
//   bench [function...] [--markdown]     n = 10, 100, 1000, 1000000, ordinary arguments
//   bench [function...] --costs          values for the cost tables
//   bench [function...] --special        special and extreme arguments against ordinary ones
//   bench [function...] --mixed          real arguments of both signs, or of many sizes, mixed
//   bench [function...] --beside FILE    n = 10 and 1000 beside the library's member in a file
//   bench --powers                       Pow and Powx by exponent and by the sign of the base
//   bench --processor                    the processor, in a line
//
// --real and --complex leave out the others. A cell is the least of many repetitions; the
// contenders take turns, so that noise meets all of them alike. In brackets: the ratio to the
// fastest peer of the slot's class at that n. Only ratios carry over from one machine to another.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <optional>

#include <x86intrin.h>

#include "bench/costs.h"
#include "bench/other_member.h"
#include "bench/peers.h"
#include "bench/processor.h"
#include "bench/select.h"
#include "bench/table.h"
#include "include/kef_version.h"
#include "include/kef_vm.h"
#include "tests/reference.h"

namespace kef {

namespace {

constexpr std::array sizes = {10, 100, 1000, 1000000};
constexpr std::size_t main_size = 2;  // 1000: what ratios are stated for
constexpr int cost_passes = 15;

// Time-stamp cycles. Long calls are timed by the thread's own clock, which stands
// still while others have the processor.
double now(bool long_call) {
    const auto clock = [](clockid_t id) {
        timespec t;
        clock_gettime(id, &t);
        return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
    };
    if (!long_call) {
        _mm_lfence();
        const std::uint64_t t = __rdtsc();
        _mm_lfence();
        return static_cast<double>(t);
    }
    static const double per_nanosecond = [&] {
        const double start = clock(CLOCK_MONOTONIC);
        const std::uint64_t t = __rdtsc();
        while (clock(CLOCK_MONOTONIC) < start + 5e7) {}
        return static_cast<double>(__rdtsc() - t) / (clock(CLOCK_MONOTONIC) - start);
    }();
    return per_nanosecond * clock(CLOCK_THREAD_CPUTIME_ID);
}

// Cycles of one call per element, of each kernel.
template <class T>
std::vector<double> cycles(const std::vector<Kernel<T>>& kernels, Batch<T>& batch) {
    // Short calls are repeated, so that the clock's own time (about 30) and its step are small.
    const int n = batch.size(), repeat = std::max(1, 8000 / n);
    const bool long_call = n > 10000;
    const double budget = long_call ? 2e8 : 3e7;  // per kernel
    std::vector<double> best(kernels.size(), INFINITY);
    double spent = 0;
    for (int round = 0; round < 400 && (round < 5 || spent < budget * kernels.size()); ++round)
        for (std::size_t k = 0; k < kernels.size(); ++k) {
            const double start = now(long_call);
            for (int i = 0; i < repeat; ++i) kernels[k].run(batch);
            const double time = now(long_call) - start;
            spent += time;
            best[k] = std::min(best[k], time / repeat / n);
        }
    return best;
}

template <class T>
Batch<T> ordinary(const kef_test::Row& row, const reference::Reference& reference, int n) {
    Batch<T> batch(n, row);
    reference::Random random(row.name());
    for (std::size_t i = 0; i < 4; ++i)
        batch.scalars[i] = static_cast<T>(reference.main.scalars[i]);
    if (row.scalars == 1) batch.scalars = {T(2.7), reference.complex() ? T(0.4) : T(0)};
    const std::vector<reference::Range> ranges = reference.main.ranges(row.argument_parts == 2);
    for (int i = 0; i < n; ++i)
        for (std::size_t c = 0; c < ranges.size(); ++c) {
            const bool scalar = row.scalars == 1 && c >= batch.argument_parts;
            batch.at(i, c) =
                scalar ? batch.scalars[c - batch.argument_parts] : random.draw<T>(ranges[c], true);
        }
    return batch;
}

// The largest error that keeps a slot's class. No library has a complex function within 1 ulp.
template <class T> double class_bound(int slot, bool complex) {
    constexpr double ep = std::is_same_v<T, float> ? 0x1p12 : 0x1p26;  // 11 and 26 bits
    return slot == 2 ? ep : slot == 1 && !complex ? 1 : 4;
}

// Mean of ratios, by slot.
class Geometric {
public:
    explicit Geometric(int n) : n_(n) {}
    void add(int slot, double ratio) {
        sum_[slot] += std::log(ratio);
        ++count_[slot];
    }
    void print(const char* words) const {
        double sum = 0;
        int count = 0;
        for (int slot = 0; slot < 3; ++slot) {
            sum += sum_[slot];
            count += count_[slot];
            if (count_[slot]) print(words, slot_names[slot], sum_[slot], count_[slot]);
        }
        if (count) print(words, "all", sum, count);
    }

    int n() const { return n_; }

private:
    void print(const char* words, const char* name, double sum, int count) const {
        std::printf("geometric mean of the ratios%s at n = %d, %s: %.3f (%d kernels)\n", words, n_,
                    name, std::exp(sum / count), count);
    }
    int n_;
    double sum_[3] = {};
    int count_[3] = {};
};

struct Options {
    Selection selection;
    bool markdown = false, costs = false, special = false, mixed = false, powers = false;
    std::optional<OtherMember> beside;
};

class Run {
public:
    explicit Run(const Options& options)
        : options_(options),
          specials_({"function", "slot", "ordinary", "1 NaN in 4", "1 infinity in 4", "1 zero in 4",
                     "NaN", "infinity", "subnormal", "huge", "negative", "2^e", "2^e for b"}),
          complex_specials_({"function", "slot", "ordinary", "1 NaN in 4", "1 infinity in 4",
                             "1 zero in 4", "NaN", "infinity", "subnormal", "huge", "x < 0, y = 0",
                             "unit circle", "x = 2^e", "y = 2^e", "Re b = 2^e", "Im b = 2^e"}),
          mixed_({"function", "slot", "ordinary", "both signs", "small and ordinary"}),
          powers_({"function", "slot", "exponent", "a > 0", "a < 0", "both"}) {}

    void row(const kef_test::Row& row) {
        const reference::Reference* reference = find_reference(row);
        if (!reference) {
            std::fprintf(stderr, "%s has no reference: add a row to tests/reference.def\n",
                         row.name().c_str());
            failed_ = true;
        } else if (row.single()) {
            measure<float>(row, *reference);
        } else {
            measure<double>(row, *reference);
        }
    }

    int finish() const {
        if (options_.costs) costs_.print(options_.selection.rows(), options_.markdown);
        else if (options_.special) print_specials();
        else if (options_.mixed) mixed_.print(options_.markdown);
        else if (options_.powers) powers_.print(options_.markdown);
        else if (options_.beside) finish_beside();
        else geometric_.print("");
        return failed_ ? 1 : 0;
    }

private:
    void print_specials() const {
        for (const Table* table : {&specials_, &complex_specials_})
            if (!table->empty()) table->print(options_.markdown);
    }

    template <class T>
    void measure(const kef_test::Row& row, const reference::Reference& reference) {
        if (options_.costs) costs<T>(row, reference);
        else if (options_.special) special<T>(row, reference);
        else if (options_.mixed) mixed<T>(row, reference);
        else if (options_.powers) powers<T>(row);
        else if (options_.beside) beside<T>(row, reference);
        else compare<T>(row, reference);
    }

    template <class T>
    void compare(const kef_test::Row& row, const reference::Reference& reference) {
        std::vector<Kernel<T>> all = kernels<T>(row);
        const std::size_t ours = all.size();
        const std::vector<Peer<T>> others = peers_of<T>(reference);
        for (const Peer<T>& peer : others) all.push_back({peer.name, peer.run});
        std::array<std::vector<double>, sizes.size()> time;
        for (std::size_t s = 0; s < sizes.size(); ++s) {
            Batch<T> batch = ordinary<T>(row, reference, sizes[s]);
            time[s] = cycles(all, batch);
        }

        // The fastest peer, of a class or at all; 0 for none.
        const auto fastest = [&](std::size_t s, int slot, bool in_class) {
            std::size_t best = 0;
            for (std::size_t p = 0; p < others.size(); ++p)
                if (!in_class || (others[p].everywhere &&
                                  others[p].ulps <= class_bound<T>(slot, reference.complex())))
                    if (best == 0 || time[s][ours + p] < time[s][best]) best = ours + p;
            return best;
        };
        // The fastest peer of a class; where there is none, the fastest at all, marked.
        const auto rival = [&](std::size_t s, int slot) {
            const std::size_t best = fastest(s, slot, true);
            return best ? std::pair(best, true) : std::pair(fastest(s, slot, false), false);
        };
        Table table({"function", "kernel", "ulp", "n = 10", "100", "1000", "1000000", "against"});
        for (std::size_t k = 0; k < ours; ++k) {
            Table::Row cells = {row.name(), all[k].name, ""};
            for (std::size_t s = 0; s < sizes.size(); ++s) {
                const auto [best, in_class] = rival(s, all[k].slot);
                cells.push_back(format("%.2f", time[s][k]));
                if (best) cells.back() += format(" (%.2f)", time[s][k] / time[s][best]);
            }
            const auto [best, in_class] = rival(main_size, all[k].slot);
            if (best) {
                cells.push_back(format("%s %.2f%s", all[best].name.c_str(), time[main_size][best],
                                       in_class ? "" : ", not of the class"));
                const std::size_t any = fastest(main_size, all[k].slot, false);
                if (reference.complex() && any != best)
                    cells.back() += format("; %s %.2f, not of the class", all[any].name.c_str(),
                                           time[main_size][any]);
                if (in_class)
                    geometric_.add(all[k].slot, time[main_size][k] / time[main_size][best]);
            } else {
                cells.push_back("");
            }
            table.add(cells);
        }
        if (!options_.markdown)
            for (std::size_t p = 0; p < others.size(); ++p) {
                Table::Row cells = {
                    row.name(), others[p].name,
                    format("%g%s", others[p].ulps, others[p].everywhere ? "" : " partly")};
                for (const auto& t : time) cells.push_back(format("%.2f", t[ours + p]));
                table.add(cells);
            }
        table.print(options_.markdown, head_);
        if (!options_.markdown) std::puts("");
        head_ = !options_.markdown;
    }

    // This member, the other one and their ratio.
    template <class T>
    void beside(const kef_test::Row& row, const reference::Reference& reference) {
        std::vector<Kernel<T>> all = kernels<T>(row);
        const std::size_t ours = all.size();
        const kef_test::Code* const others = options_.beside->slots(row);
        for (std::size_t k = 0; k < ours; ++k)
            all.push_back({all[k].name, caller<T>(row, others[all[k].slot])});
        std::vector<Table::Row> lines(ours);
        for (Geometric* geometric : {&beside_short_, &beside_}) {
            Batch<T> batch = ordinary<T>(row, reference, geometric->n());
            const std::vector<double> time = cycles(all, batch);
            for (std::size_t k = 0; k < ours; ++k) {
                const double ratio = time[k] / time[ours + k];
                lines[k].push_back(format("%.2f", time[k]));
                lines[k].push_back(format("%.2f (%.2f)", time[ours + k], ratio));
                geometric->add(all[k].slot, ratio);
            }
        }
        const auto column = [&](int n, const std::string& member) {
            return format("n = %d: %s", n, member.c_str());
        };
        const int n = beside_short_.n(), m = beside_.n();
        Table table({"function", "kernel", column(n, kef_member()), column(n, other()),
                     column(m, kef_member()), column(m, other())});
        for (std::size_t k = 0; k < ours; ++k) {
            lines[k].insert(lines[k].begin(), {row.name(), all[k].name});
            table.add(lines[k]);
        }
        table.print(options_.markdown, head_);
        head_ = !options_.markdown;
    }
    std::string other() const { return options_.beside->name(); }
    void finish_beside() const {
        const std::string words = format(" of %s to %s", kef_member(), other().c_str());
        std::puts("");
        for (const Geometric* geometric : {&beside_short_, &beside_})
            geometric->print(words.c_str());
    }

    template <class T> void costs(const kef_test::Row& row, const reference::Reference& reference) {
        const std::vector<Kernel<T>> all = kernels<T>(row);
        Batch<T> batch = ordinary<T>(row, reference, sizes[main_size]);
        const std::vector<double> time = cycles(all, batch);
        std::array<double, 3> slots;
        for (int slot = 0; slot < 3; ++slot) {
            std::size_t k = 0;
            while (all[k].name.find(slot_names[slot]) == std::string::npos) ++k;
            slots[slot] = time[k];
        }
        costs_.add(row, slots);
    }

    // Arguments that are to cost no more than ordinary ones. In a complex number one part after the
    // other is special, or both.
    template <class T>
    void special(const kef_test::Row& row, const reference::Reference& reference) {
        using Limits = std::numeric_limits<T>;
        const std::vector<Kernel<T>> all = kernels<T>(row);
        const Batch<T> plain = ordinary<T>(row, reference, sizes[main_size]);
        const std::size_t parts = plain.argument_parts;
        std::vector<Batch<T>> batches(parts == 2 ? 10 : 9, plain);
        reference::Random random(row.name());
        for (int i = 0; i < plain.size(); ++i) {
            const std::size_t one = parts * i + i / 4 % parts;
            if (i % 4 == 0) {
                batches[1].a[one] = Limits::quiet_NaN();
                batches[2].a[one] = Limits::infinity();
                batches[3].a[one] = 0;
            }
            batches[4].a[one] = Limits::quiet_NaN();
            batches[5].a[one] = Limits::infinity();
            for (std::size_t c = 0; c < parts; ++c) {
                batches[6].at(i, c) = random.draw<T>({0, Limits::min()}, true);
                batches[7].at(i, c) =
                    random.draw<T>({std::sqrt(Limits::max()), Limits::max()}, false);
            }
            batches[8].at(i, 0) = -std::fabs(plain.a[parts * i]);
            if (parts == 1) continue;
            batches[8].at(i, 1) = 0;
            const T size = std::hypot(plain.a[2 * i], plain.a[2 * i + 1]);
            batches[9].at(i, 0) = plain.a[2 * i] / size;
            batches[9].at(i, 1) = plain.a[2 * i + 1] / size;
        }
        std::vector<std::vector<double>> time;
        for (Batch<T>& batch : batches) time.push_back(cycles(all, batch));
        for (std::size_t k = 0; k < all.size(); ++k) {
            Table::Row cells = {row.name(), all[k].name, format("%.2f", time[0][k])};
            for (std::size_t b = 1; b < batches.size(); ++b)
                cells.push_back(format("%.1f", time[b][k] / time[0][k]));
            for (std::size_t c = 0; c < 2 * parts; ++c)
                cells.push_back(c < parts * row.arguments ? worst_power(all[k], row, plain, c)
                                                          : "");
            (parts == 2 ? complex_specials_ : specials_).add(cells);
        }
    }

    // Real arguments of several formulas side by side: of one and a half times the ordinary size
    // with either sign; and, every second one, times some power of 1/2, down to the smallest normal
    // number.
    template <class T> void mixed(const kef_test::Row& row, const reference::Reference& reference) {
        if (row.argument_parts == 2) return;
        const std::vector<Kernel<T>> all = kernels<T>(row);
        const Batch<T> plain = ordinary<T>(row, reference, sizes[main_size]);
        std::vector<Batch<T>> batches(3, plain);
        reference::Random random(row.name());
        const auto any_size = [&](T x) {
            const int places = std::ilogb(x) - std::numeric_limits<T>::min_exponent;
            const bool smaller = random.bits() % 2 == 0 && x != 0 && places > 1;
            return smaller ? std::ldexp(x, -static_cast<int>(random.bits() % (places / 2))) : x;
        };
        for (int i = 0; i < plain.size(); ++i) {
            const T longer = T(1.5) * std::fabs(plain.a[i]);
            batches[1].a[i] = random.bits() % 2 ? longer : -longer;
            batches[2].a[i] = any_size(plain.a[i]);
            batches[2].b[i] = any_size(plain.b[i]);
        }
        std::vector<std::vector<double>> time;
        for (Batch<T>& batch : batches) time.push_back(cycles(all, batch));
        for (std::size_t k = 0; k < all.size(); ++k) {
            Table::Row cells = {row.name(), all[k].name, format("%.2f", time[0][k])};
            for (std::size_t b = 1; b < batches.size(); ++b)
                cells.push_back(is_ordinary(all[k], row, batches[b])
                                    ? format("%.1f", time[b][k] / time[0][k])
                                    : "");
            mixed_.add(cells);
        }
    }

    // Whether a call raises no error and gives no subnormal result.
    template <class T>
    static bool is_ordinary(const Kernel<T>& kernel, const kef_test::Row& row, Batch<T>& batch) {
        kef_vtm_kernel_ClearErrStatus();
        kernel.run(batch);
        bool ordinary = kef_vtm_kernel_GetErrStatus() == VTM_STATUS_OK;
        for (int j = 0; j < row.results; ++j)
            for (const T r : batch.result[j])
                ordinary &= r == 0 || std::fabs(r) >= std::numeric_limits<T>::min();
        return ordinary;
    }

    // The most that one component costs as a power of two from the smallest normal number to 1, of
    // either sign, in multiples of the ordinary cost, and where; among those without errors and
    // subnormal results.
    template <class T>
    static std::string worst_power(const Kernel<T>& kernel, const kef_test::Row& row,
                                   const Batch<T>& plain, std::size_t component) {
        constexpr T smallest = std::numeric_limits<T>::min();
        using Found = std::pair<double, T>;  // cycles, argument
        std::vector<Found> found;
        const auto fill = [&](Batch<T>& batch, T power) {
            for (int i = 0; i < batch.size(); ++i) batch.at(i, component) = power;
        };
        Batch<T> batch = plain;
        for (T size = smallest; size <= 1; size *= 2)
            for (const T power : {size, -size}) {
                fill(batch, power);
                if (!is_ordinary(kernel, row, batch)) continue;
                double least = INFINITY;
                for (int round = 0; round < 4; ++round) {
                    const double start = now(false);
                    kernel.run(batch);
                    least = std::min(least, now(false) - start);
                }
                found.push_back({least, power});
            }
        if (found.empty()) return "";
        // The worst ones again, at length.
        std::sort(found.rbegin(), found.rend());
        found.resize(std::min<std::size_t>(found.size(), 3));
        std::vector<Batch<T>> batches(1 + found.size(), plain);
        std::vector<Kernel<T>> all;
        for (std::size_t i = 0; i < batches.size(); ++i) {
            Batch<T>& of_this = batches[i];
            if (i > 0) fill(of_this, found[i - 1].second);
            all.push_back({kernel.name, [&](Batch<T>&) { kernel.run(of_this); }});
        }
        const std::vector<double> time = cycles(all, batch);
        const auto worst = std::max_element(time.begin() + 1, time.end()) - time.begin();
        const T power = found[worst - 1].second;
        return format("%.1f (%s2^%d)", time[worst] / time[0], power < 0 ? "-" : "",
                      std::ilogb(power));
    }

    // Bases in [1/2, 2] and their negatives. Not an integer: a base below zero is an error.
    template <class T> void powers(const kef_test::Row& row) {
        const std::string_view function = row.function;
        if ((function != "Pow" && function != "Powx") || row.argument_parts == 2) return;
        constexpr double integers = INFINITY;  // from -20 to 20, one a base
        const std::vector<Kernel<T>> ours = kernels<T>(row);
        for (const double exponent :
             {2.0, 3.0, 7.0, 20.0, 100.0, -1.0, -12.0, 0.5, 1.5, -0.5, 1.0 / 3, 2.7, integers}) {
            if (exponent == integers && function == "Powx") continue;
            // Every kernel with bases of every sign, in turns.
            std::vector<Batch<T>> batches(3, Batch<T>(sizes[main_size]));
            std::vector<Kernel<T>> all;
            for (std::size_t signs = 0; signs < batches.size(); ++signs) {
                Batch<T>& batch = batches[signs];
                reference::Random random(row.name());
                for (int i = 0; i < batch.size(); ++i) {
                    const T a = random.draw<T>({0.5, 2}, true);
                    const bool negative = signs == 1 || (signs == 2 && random.bits() % 2);
                    batch.a[i] = negative ? -a : a;
                    batch.b[i] = static_cast<T>(exponent == integers
                                                    ? static_cast<double>(random.bits() % 41) - 20
                                                    : exponent);
                }
                batch.scalars[0] = static_cast<T>(exponent);
                for (const Kernel<T>& kernel : ours)
                    all.push_back({kernel.name, [&](Batch<T>&) { kernel.run(batch); }});
            }
            const std::vector<double> time = cycles(all, batches[0]);
            for (std::size_t k = 0; k < ours.size(); ++k) {
                Table::Row cells = {row.name(), ours[k].name,
                                    exponent == integers ? "integers" : format("%.4g", exponent),
                                    format("%.2f", time[k])};
                for (const double t : {time[ours.size() + k], time[2 * ours.size() + k]})
                    cells.push_back(format("%.2f (%.2f)", t, t / time[k]));
                powers_.add(cells);
            }
        }
    }

    const Options& options_;
    bool head_ = true, failed_ = false;
    Geometric geometric_{sizes[main_size]}, beside_short_{10}, beside_{1000};
    Table specials_, complex_specials_, mixed_, powers_;
    Costs costs_;
};

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--markdown") options.markdown = true;
        else if (word == "--costs") options.costs = true;
        else if (word == "--special") options.special = true;
        else if (word == "--mixed") options.mixed = true;
        else if (word == "--powers") options.powers = true;
        else if (word == "--beside" && i + 1 < argc) options.beside.emplace(argv[++i]);
        else if (word == "--processor") return std::puts(processor().c_str()), 0;
        else if (!options.selection.add(word)) return 2;
    }
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    if (!options.markdown) std::printf("%s; %s member\n\n", processor().c_str(), kef_member());
    Run run(options);
    // Costs are medians over passes, so that a slow minute of the machine meets all functions
    // alike.
    const Selection everything;
    for (int pass = options.costs ? cost_passes : 1; pass > 0; --pass)
        for (const kef_test::Row* row : (options.costs ? everything : options.selection).rows())
            run.row(*row);
    return run.finish();
}

}  // namespace

}  // namespace kef

int main(int argc, char** argv) { return kef::main(argc, argv); }
