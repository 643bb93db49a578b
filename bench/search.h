// A directed search for the worst errors of the kernels of one function. First wide:
// edges and random arguments of every interval, hard arguments of the exact function, and
// every sixteenth of a binade. Then narrow: around the worst finds of each kernel, by ulp
// and relative, in boxes from a sixteenth of a binade down to the neighbouring
// numbers, each box around what the one before found.
#pragma once

#include <bitset>
#include <mutex>
#include <thread>

#include "bench/sampling.h"
#include "bench/saved_state.h"
#include "bench/table.h"
#include "include/kef_vm.h"
#include "tests/worst_arguments.h"

namespace kef {

template <class T> struct Find {
    double error = -1;
    reference::Point<T> at = {};
    std::array<T, 4> scalars = {};
};

// The worst finds, each from another cell: 2^cell_bits numbers of either argument, a sixteenth of a
// binade at first.
template <class T> struct Finds {
    static constexpr int sixteenth = std::numeric_limits<T>::digits - 5;
    int cell_bits = sixteenth;
    std::array<Find<T>, 64> best;

    void add(const Find<T>& find) {
        if (!(find.error > best.back().error)) return;
        auto place = std::find_if(best.begin(), best.end(),
                                  [&](const Find<T>& f) { return same_cell(f, find); });
        if (place == best.end()) place = best.end() - 1;
        if (find.error <= place->error) return;
        *place = find;
        for (; place != best.begin() && place[-1].error < place->error; --place)
            std::swap(place[-1], place[0]);
    }

private:
    bool same_cell(const Find<T>& f, const Find<T>& g) const {
        const auto same = [&](T x, T y) {
            return reference::ordinal(x) >> cell_bits == reference::ordinal(y) >> cell_bits;
        };
        return f.error >= 0 && std::equal(f.at.begin(), f.at.end(), g.at.begin(), same) &&
               f.scalars == g.scalars;
    }
};

template <class T> struct SearchState {
    std::uint64_t code = 0;
    std::bitset<1024> done;  // jobs
    std::uint64_t jobs = 0;  // 0: not known yet
    double screen_error = 0;
    std::array<std::array<Tally<T>, max_measures>, 3> tallies;
    // Kernel, result or component or norm, by ulp and relative.
    std::array<std::array<std::array<Finds<T>, 2>, max_measures>, 3> finds;
};

template <class T> class Search {
public:
    Search(const reference::Reference& reference, const kef_test::Row& row,
           const std::string& directory)
        : reference_(reference),
          row_(row),
          saved_(directory + "/" + row.name() + ".search", row, 5),
          state_(*saved_.state),
          kernels_(kernels<T>(row)),
          intervals_(intervals_of<T>(reference)) {
        for (std::size_t i = 0; i < intervals_.size(); ++i)
            for (int part = 0; part < interval_parts(); ++part)
                wide_.push_back({Job::interval, static_cast<int>(i), part});
        wide_.push_back({Job::hard, 0, 0});
        if (argument_components(row) == 1)
            for (int part = 0; part < cell_parts; ++part) wide_.push_back({Job::cells, part, 0});
        for (int k = 0; k < static_cast<int>(kernels_.size()); ++k)
            for (int j = 0; j < measures(); ++j)
                for (int measure = 0; measure < 2; ++measure)
                    if (measure == 0 || kernels_[k].slot != 1) lists_.push_back({k, j, measure});
    }

    // Goes on with what the state file holds until nothing is left to do.
    const SearchState<T>& run() {
        const std::size_t jobs = wide_.size() + rounds.size() * lists_.size();
        if (jobs > state_.done.size()) std::abort();
        if (state_.jobs != jobs) {  // none yet, or those of another plan
            const std::uint64_t code = state_.code;
            state_ = {};
            state_.code = code;
            state_.jobs = jobs;
        }
        const bool fresh = state_.done.count() < jobs;
        perform(0, wide_.size(), [&](Worker& worker, std::size_t i) { worker.wide(wide_[i]); });
        for (std::size_t r = 0; r < rounds.size(); ++r) {
            for (const List& list : lists_)
                state_.finds[list.kernel][list.result][list.measure].cell_bits =
                    scaled(rounds[r].cell_bits);
            perform(wide_.size() + r * lists_.size(), lists_.size(),
                    [&](Worker& worker, std::size_t i) { worker.narrow(lists_[i], rounds[r]); });
        }
        if (fresh) show_progress("\n");
        return state_;
    }

private:
    static constexpr std::uint64_t size = Sampling<T>::size;
    static constexpr int cell_parts = 64;
    static constexpr int digits = std::numeric_limits<T>::digits;
    // A round of boxes: half a box is 2^log_width numbers (those of `float` are scaled), so many
    // of the worst finds are centres, so many batches lie in each box, and what is found is kept
    // by cells of so many bits. The worst cells get more arguments than ten million random ones of
    // a whole interval leave there.
    struct Round {
        int log_width, finds, batches, cell_bits;
    };
    static constexpr std::array<Round, 10> rounds = {{{48, 64, 16, 40},
                                                      {47, 16, 256, 40},
                                                      {47, 4, 1024, 40},
                                                      {40, 64, 128, 36},
                                                      {40, 16, 512, 36},
                                                      {38, 16, 128, 34},
                                                      {34, 16, 64, 28},
                                                      {28, 16, 32, 20},
                                                      {16, 16, 16, 8},
                                                      {9, 16, 4, 0}}};
    static constexpr int scaled(int of_double) {
        return digits == 53 ? of_double : of_double * 19 / 48;
    }

    struct Job {
        enum Kind { interval, hard, cells } kind;
        int number, part;
    };
    struct List {
        int kernel, result, measure;
    };

    // Several draws of an interval: more where there are two arguments, and no cells; not of
    // complex functions, which have more intervals. With few intervals, or without finds to look
    // around, as many as make 10^8 arguments in all.
    int interval_parts() const {
        if (reference_.complex()) return 4;
        const int usual = argument_components(row_) == 1 ? 4 : 12;
        const int least = reference_.bound <= 0.5 ? 72 : 20;
        const auto count = static_cast<int>(intervals_.size());
        return std::max(usual, (least + count - 1) / count);
    }
    int measures() const { return result_components(row_) + (row_.result_parts == 2); }

    // The work of one thread: its own meter, tallies and finds of one job.
    class Worker {
    public:
        explicit Worker(Search& search)
            : search_(search),
              meter_(search.reference_, search.row_),
              finds_(search.state_.finds),
              tallies_(search.kernels_.size()) {}

        void start(const std::string& seed) {
            random_ = reference::Random(seed);
            seed_ = seed;
            finds_ = search_.state_.finds;
            tallies_.assign(search_.kernels_.size(), {});
            for (std::size_t k = 0; k < tallies_.size(); ++k)
                for (int j = 0; j < search_.measures(); ++j) {
                    tallies_[k][j].ulps = search_.state_.tallies[k][j].ulps;
                    tallies_[k][j].relative = search_.state_.tallies[k][j].relative;
                }
        }

        void wide(const Job& job) {
            with_mean_ = job.kind == Job::interval && job.number == 0;
            if (job.kind == Job::interval) {
                Sampling<T> sampling(search_.row_, search_.intervals_[job.number], seed_);
                const std::uint64_t count = sampling.rounded_count(1 << 20);
                for (std::uint64_t first = 0; first < count; first += size) {
                    sampling.draw(first);
                    take(sampling.batch, sampling.for_mean);
                }
            } else if (job.kind == Job::hard) {
                hard();
            } else {
                cells(job.number);
            }
        }

        // Boxes around the finds of a list; few of the relative errors, which follow those by ulp.
        void narrow(const List& list, const Round& round) {
            with_mean_ = false;
            const kef_test::Row& row = search_.row_;
            const std::size_t components = argument_components(row),
                              varying = row.argument_parts * row.arguments;
            const std::array<Find<T>, 64> centres =
                search_.state_.finds[list.kernel][list.result][list.measure].best;
            Batch<T> batch(size, row);
            const int width = scaled(round.log_width);
            const int batches = list.measure == 0 ? round.batches : std::min(round.batches, 16);
            for (int f = 0; f < round.finds && centres[f].error >= 0; ++f) {
                const Find<T>& centre = centres[f];
                batch.scalars = centre.scalars;
                for (int n = 0; n < batches; ++n) {
                    // All components in one batch, then all but one; of three or more, one alone
                    // too.
                    const auto kinds = static_cast<int>(components > 2   ? 2 * components + 1
                                                        : components > 1 ? 3
                                                                         : 1);
                    const auto moved = [&](std::size_t c) {
                        const auto kind = static_cast<std::size_t>(n % kinds);
                        return kind == 0 ||
                               (kind <= components ? kind != c + 1 : kind - components == c + 1);
                    };
                    const auto of = [&](std::size_t c) {
                        return moved(c) ? near(centre.at[c], width) : centre.at[c];
                    };
                    for (std::size_t c = varying; c < components; ++c)
                        batch.scalars[c - varying] = of(c);
                    for (std::uint64_t i = 0; i < size; ++i)
                        for (std::size_t c = 0; c < components; ++c)
                            batch.at(i, c) = c < varying ? of(c) : batch.scalars[c - varying];
                    take(batch, false);
                }
            }
        }

        // Adds what the job has found.
        void finish() {
            SearchState<T>& state = search_.state_;
            for (std::size_t k = 0; k < tallies_.size(); ++k)
                for (int j = 0; j < search_.measures(); ++j) {
                    state.tallies[k][j].merge(tallies_[k][j], with_mean_);
                    for (int measure = 0; measure < 2; ++measure)
                        for (const Find<T>& find : finds_[k][j][measure].best)
                            state.finds[k][j][measure].add(find);
                }
            state.screen_error = std::max(state.screen_error, meter_.screen_error());
        }

    private:
        using Ordinal = reference::Ordinal<T>;

        void take(Batch<T>& batch, bool for_mean) {
            meter_.take(search_.kernels_, batch, for_mean, tallies_);
            for (std::size_t k = 0; k < tallies_.size(); ++k)
                for (int j = 0; j < search_.measures(); ++j) {
                    const auto& worst = meter_.worst(k)[j];
                    const auto find = [&](const auto& at) {
                        return Find<T>{at.error, at.at, batch.scalars};
                    };
                    finds_[k][j][0].add(find(worst.ulps));
                    finds_[k][j][1].add(find(worst.relative));
                }
        }

        T near(T x, int log_width) {
            const Ordinal last = reference::ordinal(std::numeric_limits<T>::max());
            const Ordinal offset = static_cast<Ordinal>(random_.bits() >> (63 - log_width)) -
                                   (Ordinal(1) << log_width);
            const Ordinal n = reference::ordinal(x);
            if (offset > 0 && n > last - offset) return reference::from_ordinal<T>(last);
            if (offset < 0 && n < -last - offset) return reference::from_ordinal<T>(-last);
            return reference::from_ordinal<T>(n + offset);
        }

        // 256 numbers in every cell of a part of the finite numbers.
        void cells(int part) {
            constexpr int bits = Finds<T>::sixteenth;
            const Ordinal last = reference::ordinal(std::numeric_limits<T>::max()) >> bits;
            const Ordinal count = 2 * (last + 1);
            Batch<T> batch(256, search_.row_);
            for (Ordinal cell = count * part / cell_parts; cell < count * (part + 1) / cell_parts;
                 ++cell) {
                for (T& x : batch.a)
                    x = reference::from_ordinal<T>(
                        (cell - last - 1) * (Ordinal(1) << bits) +
                        static_cast<Ordinal>(random_.bits() >> (64 - bits)));
                take(batch, false);
            }
        }

        // What earlier searches have found. Numbers next to multiples of pi/2, for every real
        // function of one argument; tuples of these and of others for complex functions.
        void hard() {
            const kef_test::Row& row = search_.row_;
            const std::size_t varying = row.argument_parts * row.arguments;
            const auto [known, end] = kef_test::worst_arguments().equal_range(row.name());
            for (auto find = known; find != end && row.scalars < 2; ++find) {
                Batch<T> batch(1, row);
                for (std::size_t c = 0; c < argument_components(row); ++c) {
                    T& x = batch.at(0, c) = kef_test::from_argument_bits<T>(find->second[c]);
                    if (c >= varying) batch.scalars[c - varying] = x;
                }
                take(batch, false);
            }
            if (row.argument_parts == 2) {
                Grid<T> grid(row, 1 << 22);
                for (std::uint64_t first = 0; first < grid.count(); first += size) {
                    grid.draw(first);
                    take(grid.batch, false);
                }
                return;
            }
            const std::vector<T> numbers = near_multiples<T>();
            if (numbers.empty() || row.arguments + row.scalars > 1) return;
            Batch<T> batch(size, row);
            for (std::size_t first = 0; first < numbers.size(); first += size) {
                for (std::uint64_t i = 0; i < size; ++i)
                    batch.a[i] = numbers[std::min<std::size_t>(first + i, numbers.size() - 1)];
                take(batch, false);
            }
        }

        Search& search_;
        Meter<T> meter_;
        decltype(SearchState<T>::finds) finds_;
        typename Meter<T>::Tallies tallies_;
        reference::Random random_{""};
        std::string seed_;
        bool with_mean_ = false;
    };

    // The jobs first, first + 1, ... that are not done yet, on all processors.
    template <class Work> void perform(std::size_t first, std::size_t count, Work work) {
        std::mutex lock;
        std::size_t next = 0;
        const auto thread = [&] {
            kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
            const auto worker = std::make_unique<Worker>(*this);
            for (;;) {
                std::size_t i;
                {
                    const std::lock_guard guard(lock);
                    while (next < count && state_.done[first + next]) ++next;
                    if (next == count) return;
                    i = next++;
                    worker->start(row_.name() + std::to_string(first + i));
                }
                work(*worker, i);
                const std::lock_guard guard(lock);
                worker->finish();
                state_.done[first + i] = true;
                saved_.save();
                show_progress(format("\r%s: %5.1f %% ", row_.name().c_str(),
                                     100.0 * state_.done.count() / state_.jobs));
            }
        };
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i)
            threads.emplace_back(thread);
        for (std::thread& t : threads) t.join();
    }

    const reference::Reference& reference_;
    const kef_test::Row& row_;
    SavedState<SearchState<T>> saved_;
    SearchState<T>& state_;
    const std::vector<Kernel<T>> kernels_;
    const std::vector<reference::Interval> intervals_;
    std::vector<Job> wide_;
    std::vector<List> lists_;
};

}  // namespace kef
