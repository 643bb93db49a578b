// A one-argument single function over every float, on all processors, with a
// progress line and a state file from which a run that was stopped goes on. Other members
// of the library can be measured with it, by one screen.
#pragma once

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/meter.h"
#include "bench/other_member.h"
#include "bench/peers.h"
#include "bench/saved_state.h"
#include "bench/table.h"
#include "include/kef_vm.h"

namespace kef {

// A double-precision function that keeps `ulps` on every float.
struct Screen {
    std::string name;
    double ulps;
    std::function<void(Batch<double>&)> run;
};

// The function of another library that is to decide: of those within 4 ulp everywhere the
// least accurate, as the fastest. Without one our own LA kernel, within its bound: that of the
// last of the other members, which has the widest vectors.
inline Screen own_screen(const reference::Reference& reference,
                         const std::vector<OtherMember>& others = {}) {
    const kef_test::Row& row = *kef_test::find_row("d" + std::string(reference.name));
    const kef_test::Code* slots = others.empty() ? row.slots : others.back().slots(row);
    return {"double LA", 4, caller<double>(row, slots[0])};  // 2^-50
}
inline Screen screening_peer(const reference::Reference& reference) {
    const Peer<double>* best = nullptr;
    const std::vector<Peer<double>> all = peers_of<double>(reference);
    for (const Peer<double>& peer : all)
        if (peer.everywhere && peer.ulps <= 4 && (!best || peer.ulps > best->ulps)) best = &peer;
    return best ? Screen{best->name, best->ulps, best->run} : own_screen(reference);
}

// What a run measures: the kernels of this member and, behind them, those of the others. Of the
// others' HA kernels, the twins, it tells whether they give the bits of ours.
struct Measured {
    std::vector<Kernel<float>> kernels, twins;
};
inline Measured measured(const kef_test::Row& row, const std::vector<OtherMember>& others) {
    Measured result{kernels<float>(row), {}};
    for (const OtherMember& other : others)
        for (Kernel<float>& kernel : kernels<float>(row, other.slots(row))) {
            kernel.name += " of " + other.name();
            (kernel.slot == 1 ? result.twins : result.kernels).push_back(std::move(kernel));
        }
    return result;
}

// Judges most floats by a double-precision function. The interval of its value and its
// error decides on the rounding where it rounds to one float, and on the error
// where that is no new worst one. The other elements are left open. The error of the screen is
// checked in 113 bits on every `check_every`-th element that it decides.
class Sieve {
public:
    Sieve(const reference::Reference& reference, Screen screen, bool rounding_only)
        : reference_(reference),
          screen_(std::move(screen)),
          rounding_only_(rounding_only),
          margin_((screen_.ulps + 0.5) * 0x1p-51),
          wide_(size) {}
    static constexpr int size = 1024;
    static constexpr unsigned check_every = 1 << 12;

    // Whether the screen kept within the error that it states.
    bool screen_holds() const { return screen_holds_; }

    // Judges one batch of `size` elements; appends the arguments left open, which are not counted.
    void take(const Measured& measured, Batch<float>& x, Meter<float>::Tallies& tallies,
              std::uint64_t* differing, std::vector<float>& open) {
        const std::vector<Kernel<float>>& kernels = measured.kernels;
        got_.resize(kernels.size());
        verdicts_.resize(kernels.size());
        glances_.resize(kernels.size());
        for (std::size_t k = 0; k < kernels.size(); ++k) {
            kernels[k].run(x);
            got_[k] = x.result;
        }
        for (std::size_t k = 0; k < measured.twins.size(); ++k) {
            measured.twins[k].run(x);
            differing[k] += differences(x.result, got_[0]);
        }
        std::copy(x.a.begin(), x.a.end(), wide_.a.begin());
        screen_.run(wide_);
        const int results = reference_.exact2 ? 2 : 1;
        std::fill(std::begin(clear_), std::end(clear_), 1.0);
        for (int j = 0; j < results; ++j)
            for (std::size_t k = 0; k < kernels.size(); ++k)
                glance(x.a.data(), wide_.result[j].data(), got_[k][j].data(), tallies[k][j],
                       glances_[k][j]);
        const auto clear = static_cast<int>(sum([&](int i) { return clear_[i]; }));
        for (int j = 0; j < results; ++j)
            for (std::size_t k = 0; k < kernels.size(); ++k)
                enter(x.a.data(), clear, tallies[k][j], glances_[k][j]);
        for (int i = 0; clear < size && i < size; ++i) {
            if (clear_[i] != 0) continue;
            bool decided = true;
            for (int j = 0; j < results; ++j)
                for (std::size_t k = 0; k < kernels.size(); ++k)
                    decided &= judge(i, j, x.a[i], got_[k][j][i], tallies[k][j], verdicts_[k][j]);
            for (int j = 0; decided && j < results; ++j)
                for (std::size_t k = 0; k < kernels.size(); ++k)
                    enter(x.a[i], tallies[k][j], verdicts_[k][j]);
            if (decided) clear_[i] = 1;
            else open.push_back(x.a[i]);
        }
        // One element of every so many batches, each time in another place.
        if (++batches_ % (check_every / size) != 0) return;
        const int i = static_cast<int>(batches_ / (check_every / size) * 397 % size);
        if (clear_[i] != 0) check(x.a[i], i, results);
    }

private:
    using Doubles = double __attribute__((vector_size(32)));
    using Bits = std::int64_t __attribute__((vector_size(32)));
    using Floats = float __attribute__((vector_size(16)));

    // Errors of one kernel, those of doubtful elements excepted.
    struct Glance {
        double ulps[size], misrounded[size];  // 1 or 0
    };
    struct Verdict {
        bool misrounded;
        double ulps;
    };

    // How many elements have other bits in one of the results.
    using Results = std::array<std::vector<float>, 2>;
    static int differences(const Results& x, const Results& y) {
        const auto bits_differ = [](const float* p, const float* q) {
            return std::memcmp(p, q, sizeof *p) != 0;
        };
        int count = 0;
        if (std::memcmp(x[0].data(), y[0].data(), size * sizeof(float)) != 0 ||
            std::memcmp(x[1].data(), y[1].data(), size * sizeof(float)) != 0)
            for (int i = 0; i < size; ++i)
                count += bits_differ(&x[0][i], &y[0][i]) || bits_differ(&x[1][i], &y[1][i]);
        return count;
    }

    // The sum of f(0 .. size - 1), in eight chains.
    template <class F> static double sum(F f) {
        double chain[8] = {};
        for (int i = 0; i < size; i += 8)
            for (int c = 0; c < 8; ++c) chain[c] += f(i + c);
        double result = 0;
        for (const double part : chain) result += part;
        return result;
    }

    // The ordinary cases of `judge`, four at a time: finite numbers below the largest float, and
    // right NaN and infinities. The others become doubtful.
    [[gnu::target_clones("arch=x86-64-v4", "avx2", "default")]] void glance(
        const float* x, const double* screen, const float* got, const Tally<float>& tally,
        Glance& result) {
        const auto all = [](double value) { return Doubles{value, value, value, value}; };
        const auto widened = [](const float* p) {
            Floats four;
            std::memcpy(&four, p, sizeof four);
            return __builtin_convertvector(four, Doubles);
        };
        const auto as_float = [](Doubles y) {
            return __builtin_convertvector(__builtin_convertvector(y, Floats), Doubles);
        };
        constexpr double small = std::numeric_limits<float>::epsilon() / 8;
        const Doubles smallest = all(std::numeric_limits<float>::min());
        const Doubles least = all(std::max(smallest[0], reference_.least));
        const double most_ulps =
            rounding_only_ ? INFINITY : std::max(tally.ulps.error, 0.25) - margin_ * 0x1p24;
        const double most_relative =
            rounding_only_ ? INFINITY : std::max(tally.relative.error, small) - margin_;
        for (int i = 0; i < size; i += 4) {
            Doubles about;
            std::memcpy(&about, screen + i, sizeof about);
            const Doubles r = widened(got + i);
            const Bits sign = (Bits)about & INT64_MIN;
            const Doubles magnitude = (Doubles)((Bits)about ^ sign);
            const Doubles floor = widened(x + i) < 0.0 ? least : smallest;
            const Doubles extent = magnitude > floor ? magnitude : floor;
            const Doubles low = as_float(about - margin_ * extent);
            const Doubles high = as_float(about + margin_ * extent);
            const Doubles difference = (Doubles)((Bits)(r - about) & INT64_MAX);
            // 2^(23 - e), e the exponent of `extent`.
            const Doubles per_ulp =
                (Doubles)((INT64_C(2069) << 52) - ((Bits)extent & (INT64_C(0x7FF) << 52)));
            const Doubles ulps = difference * per_ulp;
            Bits clear = (low == high) & (ulps <= most_ulps) &
                         (difference <= most_relative * extent) &
                         (extent < double{std::numeric_limits<float>::max()});
            if (rounding_only_) clear &= r == low;
            // Exact for certain: NaN, and an infinity where the value is far beyond all floats.
            const Doubles infinity = (Doubles)((Bits)all(INFINITY) | sign);
            const Bits exact =
                ((about != about) & (r != r)) | ((magnitude >= 0x1.01p128) & (r == infinity));
            const auto put = [i](double* to, Bits mask, Doubles value) {
                value = (Doubles)((Bits)value & mask);
                std::memcpy(to + i, &value, sizeof value);
            };
            Doubles clear_before;
            std::memcpy(&clear_before, clear_ + i, sizeof clear_before);
            put(clear_, clear | exact, clear_before);
            put(result.ulps, clear, ulps);
            put(result.misrounded, ~exact & (r != low), all(1.0));
        }
    }

    void enter(const float* x, int clear, Tally<float>& tally, const Glance& glance) const {
        double misrounded = sum([&](int i) { return glance.misrounded[i] * clear_[i]; });
        tally.count += clear;
        if (!rounding_only_) {
            tally.mean_count += clear;
            tally.sum += sum([&](int i) { return glance.ulps[i] * clear_[i]; });
        }
        for (int i = 0; misrounded > 0 && i < size && tally.misrounded < tally.max_failing; ++i)
            if (clear_[i] * glance.misrounded[i] != 0) {
                tally.failing[tally.misrounded++] = {x[i]};
                --misrounded;
            }
        tally.misrounded += static_cast<std::uint64_t>(misrounded);
    }

    double margin_of(double value, float x) const {
        const double magnitude = std::max(std::fabs(value), x < 0 ? reference_.least : 0);
        return magnitude < INFINITY ? margin_ * magnitude : 0;
    }

    // False where the screen's error leaves a doubt.
    bool judge(int i, int j, float x, float got, const Tally<float>& tally,
               Verdict& verdict) const {
        const double about = wide_.result[j][i], margin = margin_of(about, x);
        const float low = static_cast<float>(about - margin);
        const bool nan = about != about;
        if (!nan && low != static_cast<float>(about + margin)) return false;
        verdict.misrounded = !(nan ? got != got : low == got);
        if (rounding_only_) return !verdict.misrounded;
        const double least = x < 0 ? reference_.least : 0;
        const reference::Error e = reference::error(got, about, least);
        verdict.ulps = e.ulps;
        constexpr double small = std::numeric_limits<float>::epsilon() / 8;
        return e.ulps + margin_ * 0x1p24 <= std::max(tally.ulps.error, 0.25) &&
               e.relative + margin_ <= std::max(tally.relative.error, small);
    }

    void enter(float x, Tally<float>& tally, const Verdict& verdict) const {
        ++tally.count;
        if (verdict.misrounded) {
            if (tally.misrounded < tally.max_failing) tally.failing[tally.misrounded] = {x};
            ++tally.misrounded;
        }
        if (rounding_only_) return;
        ++tally.mean_count;
        tally.sum += verdict.ulps;
    }

    void check(float x, int i, int results) {
        for (int j = 0; j < results; ++j) {
            const auto exact = (j ? reference_.exact2 : reference_.exact)(x, 0, {});
            const double about = wide_.result[j][i];
            if (exact != exact && about != about) continue;
            // Beyond the range of float nothing but the side matters.
            const auto single = static_cast<float>(static_cast<double>(exact));
            if (static_cast<float>(about) == single && (single == 0 || std::isinf(single)))
                continue;
            if (!(fabsq(exact - about) <= margin_of(about, x))) screen_holds_ = false;
        }
    }

    const reference::Reference& reference_;
    const Screen screen_;
    const bool rounding_only_;
    const double margin_;  // twice the stated error and one ulp more, relative
    Batch<double> wide_;
    std::vector<Results> got_;
    std::vector<std::array<Verdict, 2>> verdicts_;
    std::vector<std::array<Glance, 2>> glances_;
    double clear_[size] = {};  // 1, or 0 where some kernel's result is doubtful; in the end, open
    unsigned batches_ = 0;
    bool screen_holds_ = true;
};

struct Exhaustive {
    static constexpr std::uint32_t chunk_count = 4096, chunk_size = 1 << 20;
    // Chunks far apart come first: a large error seen early decides the long runs of floats that
    // share one result, and so nearly one error, without the exact value.
    static constexpr std::uint32_t stride = 2531;
    static constexpr std::size_t max_members = 4;
    std::uint64_t code = 0;
    std::bitset<chunk_count> done;
    double screen_error = 0;
    bool screen_holds = true;
    std::array<std::uint64_t, max_members> differing = {};  // by twin
    std::array<std::array<Tally<float>, max_measures>, 3 * max_members> tallies;
};

// With `rounding_only` the HA kernel alone, no more than whether its results are
// correctly rounded, and by another library's function where there is one.
inline std::unique_ptr<Exhaustive> every_float(const reference::Reference& reference,
                                               const kef_test::Row& row,
                                               const std::string& directory, bool rounding_only,
                                               const std::vector<OtherMember>& others = {}) {
    std::uint64_t plan = 3;
    for (const OtherMember& other : others) plan = hash_file(other.file(), plan);
    SavedState<Exhaustive> saved(
        directory + "/" + row.name() + (rounding_only ? ".rounding" : ".exhaustive"), row, plan);
    Exhaustive& total = *saved.state;
    const bool fresh = !total.done.all();

    Measured what = measured(row, others);
    const std::vector<Kernel<float>>& all = what.kernels;
    if (rounding_only) what.kernels.resize(1);
    std::mutex lock;
    std::uint32_t next = 0;
    const auto work = [&] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        constexpr std::uint32_t size = Sieve::size;
        Batch<float> batch(size);
        Sieve sieve(reference,
                    rounding_only ? screening_peer(reference) : own_screen(reference, others),
                    rounding_only);
        for (const OtherMember& other : others) other.ignore_errors();
        std::vector<float> open;
        for (;;) {
            std::uint32_t chunk;
            Meter<float>::Tallies tallies(all.size());
            std::array<std::uint64_t, Exhaustive::max_members> differing = {};
            {
                const std::lock_guard guard(lock);
                do {
                    if (next == Exhaustive::chunk_count) return;
                    chunk = next++ * Exhaustive::stride % Exhaustive::chunk_count;
                } while (total.done[chunk]);
                // Errors that were seen elsewhere are no new worst ones.
                for (std::size_t k = 0; k < all.size(); ++k)
                    for (int j = 0; j < 2; ++j) {
                        tallies[k][j].ulps = total.tallies[k][j].ulps;
                        tallies[k][j].relative = total.tallies[k][j].relative;
                    }
            }
            Meter<float> meter(reference, row, 1, rounding_only);
            for (std::uint32_t first = 0; first < Exhaustive::chunk_size; first += size) {
                for (std::uint32_t i = 0; i < size; ++i)
                    batch.a[i] = std::bit_cast<float>(chunk * Exhaustive::chunk_size + first + i);
                sieve.take(what, batch, tallies, differing.data(), open);
                if (open.empty()) continue;
                Batch<float> rest(open.size());
                rest.a = std::exchange(open, {});
                meter.take(all, rest, true, tallies);
            }
            const std::lock_guard guard(lock);
            for (std::size_t k = 0; k < all.size(); ++k)
                for (int j = 0; j < meter.measures(); ++j) total.tallies[k][j].merge(tallies[k][j]);
            for (std::size_t k = 0; k < differing.size(); ++k) total.differing[k] += differing[k];
            total.screen_error = std::max(total.screen_error, meter.screen_error());
            total.screen_holds &= sieve.screen_holds();
            total.done[chunk] = true;
            const std::size_t count = total.done.count();
            if (count % 32 == 0) saved.save();
            show_progress(format("\r%s: %5.1f %%, %llu misrounded ", row.name().c_str(),
                                 100.0 * count / Exhaustive::chunk_count,
                                 static_cast<unsigned long long>(total.tallies[0][0].misrounded)));
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads) thread.join();
    if (fresh) {
        saved.save();
        show_progress("\n");
    }
    // No result differed from its exact value: no error was ever entered as the worst.
    for (auto& kernel : total.tallies)
        for (Tally<float>& tally : kernel)
            if (tally.sum == 0 && tally.ulps.error < 0) tally.ulps = tally.relative = {0, {}};
    return std::move(saved.state);
}

}  // namespace kef
