// A one-argument single function over every float, on all processors, with a
// progress line and a state file from which a run that was stopped goes on.
#pragma once

#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include "bench/meter.h"
#include "bench/peers.h"
#include "include/kef_vm.h"

namespace kef {

// The function of another library that is to decide: of those within 4 ulp everywhere the
// least accurate, as the fastest. Null where there is none.
inline const Peer<double>* screening_peer(const reference::Reference& reference) {
    const Peer<double>* best = nullptr;
    for (const Peer<double>& peer : peers<double>())
        if (peer.function == reference.name && peer.everywhere && peer.ulps <= 4 &&
            (!best || peer.ulps > best->ulps))
            best = &peer;
    return best;
}

// Decides for most floats whether the HA kernel rounds correctly, by a double precision
// function of another library: where the interval of its value and its error rounds to one
// float, that must be the result. The others, and those that seem misrounded, are left
// open. The error is checked on every `check_every`-th element that it decides.
class Sieve {
public:
    explicit Sieve(const reference::Reference& reference)
        : reference_(reference), peer_(screening_peer(reference)), wide_(size) {}
    static constexpr int size = 1024;
    static constexpr unsigned check_every = 1 << 12;

    // Whether the peer kept within the error that its row states.
    bool peer_holds() const { return peer_holds_; }

    // Judges one batch of `size` elements; appends the open ones.
    void take(const Kernel<float>& kernel, Batch<float>& x, std::vector<float>& open) {
        if (!peer_) {
            open.insert(open.end(), x.a.begin(), x.a.end());
            return;
        }
        kernel.run(x);
        std::copy(x.a.begin(), x.a.end(), wide_.a.begin());
        peer_->run(wide_);
        for (int i = 0; i < size; ++i) {
            bool decided = true;
            for (int j = 0; j < (reference_.exact2 ? 2 : 1); ++j) {
                const double about = wide_.result[j][i], margin = margin_of(about, x.a[i]);
                const float low = static_cast<float>(about - margin), got = x.result[j][i];
                const bool same = low == got && static_cast<float>(about + margin) == got;
                decided &= same || (about != about && got != got);
            }
            if (!decided) open.push_back(x.a[i]);
            else if (elements_ % check_every == 0) check(x.a[i], i);
            ++elements_;
        }
    }

private:
    // Twice the stated error and one ulp more; nothing for infinities.
    double margin_of(double value, float x) const {
        const double magnitude = std::max(std::fabs(value), x < 0 ? reference_.least : 0);
        return magnitude < INFINITY ? (peer_->ulps + 0.5) * 0x1p-51 * magnitude : 0;
    }
    void check(float x, int i) {
        for (int j = 0; j < (reference_.exact2 ? 2 : 1); ++j) {
            const auto exact = (j ? reference_.exact2 : reference_.exact)(x, 0, {});
            const double about = wide_.result[j][i];
            if (exact != exact && about != about) continue;
            // Beyond the range of float nothing but the side matters.
            const auto single = static_cast<float>(static_cast<double>(exact));
            if (static_cast<float>(about) == single && (single == 0 || std::isinf(single)))
                continue;
            if (!(fabsq(exact - about) <= margin_of(about, x))) peer_holds_ = false;
        }
    }

    const reference::Reference& reference_;
    const Peer<double>* const peer_;
    Batch<double> wide_;
    unsigned elements_ = 0;
    bool peer_holds_ = true;
};

struct Exhaustive {
    static constexpr std::uint32_t chunk_count = 4096, chunk_size = 1 << 20;
    std::uint64_t build = 0;  // of the library: state of another build is not used
    std::bitset<chunk_count> done;
    double screen_error = 0;
    bool peer_holds = true;
    std::array<std::array<Tally<float>, 2>, 3> tallies;
};
static_assert(std::is_trivially_copyable_v<Exhaustive>, "it is saved as it stands");

// FNV-1a hash of the file that holds the code.
inline std::uint64_t file_hash(kef_test::Code code) {
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(code), &info) == 0) return 0;
    std::uint64_t hash = 0xCBF29CE484222325u;
    if (std::FILE* file = std::fopen(info.dli_fname, "rb")) {
        for (int c; (c = std::getc(file)) != EOF;)
            hash = (hash ^ static_cast<unsigned>(c)) * 0x100000001B3u;
        std::fclose(file);
    }
    return hash;
}

// With `rounding_only` the HA kernel alone, and no more than whether its results are
// correctly rounded: many times as fast.
inline std::unique_ptr<Exhaustive> every_float(const reference::Reference& reference,
                                               const kef_test::Row& row,
                                               const std::string& directory, bool rounding_only) {
    const std::string path =
        directory + "/" + row.name() + (rounding_only ? ".rounding" : ".exhaustive");
    const std::string draft = path + ".new";
    const std::uint64_t build = file_hash(row.slots[0]);
    auto total = std::make_unique<Exhaustive>();
    if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
        if (std::fread(total.get(), sizeof *total, 1, file) != 1 || total->build != build)
            *total = Exhaustive();
        std::fclose(file);
    }
    total->build = build;
    const auto save = [&] {
        std::FILE* file = std::fopen(draft.c_str(), "wb");
        const bool written = file && std::fwrite(total.get(), sizeof *total, 1, file) == 1;
        if (!file || std::fclose(file) != 0 || !written ||
            std::rename(draft.c_str(), path.c_str()) != 0) {
            std::fprintf(stderr, "\ncannot write %s\n", path.c_str());
            std::exit(1);
        }
    };

    std::vector<Kernel<float>> all = kernels<float>(row);
    if (rounding_only) all.resize(1);
    std::mutex lock;
    std::uint32_t next = 0;
    const auto work = [&] {
        kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
        constexpr std::uint32_t size = Sieve::size;
        Batch<float> batch(size);
        Sieve sieve(reference);
        std::vector<float> open;
        for (;;) {
            std::uint32_t chunk;
            {
                const std::lock_guard guard(lock);
                while (next < Exhaustive::chunk_count && total->done[next]) ++next;
                if (next == Exhaustive::chunk_count) return;
                chunk = next++;
            }
            Meter<float>::Tallies tallies(all.size());
            Meter<float> meter(reference, rounding_only && screening_peer(reference) ? 1 : 1 << 14,
                               rounding_only);
            for (std::uint32_t first = 0; first < Exhaustive::chunk_size; first += size) {
                for (std::uint32_t i = 0; i < size; ++i)
                    batch.a[i] = std::bit_cast<float>(chunk * Exhaustive::chunk_size + first + i);
                if (rounding_only) sieve.take(all[0], batch, open);
                else meter.take(all, batch, true, tallies);
            }
            if (rounding_only) {
                Batch<float> rest(open.size());
                rest.a = std::exchange(open, {});
                meter.take(all, rest, false, tallies);
                const std::uint64_t decided = Exhaustive::chunk_size - rest.a.size();
                for (auto& tally : tallies[0]) tally.count += decided;
            }
            const std::lock_guard guard(lock);
            for (std::size_t k = 0; k < all.size(); ++k)
                for (int j = 0; j < meter.results(); ++j) total->tallies[k][j].merge(tallies[k][j]);
            total->screen_error = std::max(total->screen_error, meter.screen_error());
            total->peer_holds &= sieve.peer_holds();
            total->done[chunk] = true;
            const std::size_t count = total->done.count();
            if (count % 32 == 0) save();
            std::fprintf(stderr, "\r%s: %5.1f %%, %llu misrounded ", row.name().c_str(),
                         100.0 * count / Exhaustive::chunk_count,
                         static_cast<unsigned long long>(total->tallies[0][0].misrounded));
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads) thread.join();
    save();
    std::fputc('\n', stderr);
    return total;
}

}  // namespace kef
