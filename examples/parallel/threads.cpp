// Work for threads:    parallel_threads THREADS [BLOCKS]
#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include "work.h"

namespace {

// Runs work(0), ..., work(count - 1), each on a thread of its own; the first problem is thrown
// here.
template <class Work> void on_threads(std::uint64_t count, Work work) {
    std::vector<std::exception_ptr> problems(count);
    {
        std::vector<std::jthread> threads;
        for (std::uint64_t i = 0; i < count; ++i)
            threads.emplace_back([&, i] {
                try {
                    work(i);
                } catch (...) { problems[i] = std::current_exception(); }
            });
    }  // all have ended
    for (const auto& problem : problems)
        if (problem) std::rethrow_exception(problem);
}

}  // namespace

int main(int count, char** words) {
    using namespace parallel;
    try {
        const std::uint64_t threads =
            count > 1 ? count_of(words[1]) : std::max(1u, std::thread::hardware_concurrency());
        const std::uint64_t blocks = count > 2 ? count_of(words[2]) : 100;
        constexpr std::uint32_t seed = 2024;

        // Who is free takes the next block: the sums do not tell who made them.
        std::vector<double> sums(blocks);
        std::atomic<std::uint64_t> next = 0;
        on_threads(threads, [&](std::uint64_t) {
            for (std::uint64_t b; (b = next++) < blocks;) sums[b] = Option().block(seed, b);
        });
        print_value(sums);

        std::vector<std::unique_ptr<Summary>> summaries;
        for (std::uint64_t i = 0; i < threads; ++i)
            summaries.push_back(std::make_unique<Summary>());
        on_threads(threads, [&](std::uint64_t i) {
            const Part part(blocks, i, threads);
            for (std::uint64_t b = part.first; b < part.last; ++b)
                summaries[i]->add(Data::observations, Data::block(seed, b).data());
        });
        Summary all;
        for (const auto& summary : summaries) all.merge(*summary);
        all.print();
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "parallel_threads: %s\n", problem.what());
        return 1;
    }
}
