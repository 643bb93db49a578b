// One sequence of random numbers on several threads: each skips to its part, and the result does
// not depend on their number. Then a stream that is kept in a file and goes on.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <kef.hpp>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t pairs = 400000;

// Points of the unit square inside the quarter circle, counted by a number of threads.
std::uint64_t inside(unsigned threads) {
    std::vector<std::uint64_t> counts(threads);
    std::vector<std::thread> pool;
    for (unsigned t = 0; t < threads; ++t) {
        pool.emplace_back([&counts, t, threads] {
            const std::size_t from = pairs * t / threads, to = pairs * (t + 1) / threads;
            kef::Stream stream(kef::Generator::mrg32k3a, 2024);
            stream.skip(2 * from);
            std::vector<double> u(2 * (to - from));
            kef::Uniform(0.0, 1.0).fill(stream, u);
            kef::sqr(u);
            for (std::size_t i = 0; i < u.size(); i += 2) counts[t] += u[i] + u[i + 1] < 1;
        });
    }
    for (std::thread& thread : pool) thread.join();
    std::uint64_t sum = 0;
    for (const std::uint64_t count : counts) sum += count;
    return sum;
}

}  // namespace

int main() {
    const std::uint64_t one = inside(1), three = inside(3);
    const double pi = 4.0 * double(one) / double(pairs);
    std::printf("pi is about %.3f: %llu of %zu points, by three threads %llu\n", pi,
                static_cast<unsigned long long>(one), pairs,
                static_cast<unsigned long long>(three));

    const auto file = std::filesystem::temp_directory_path() /
                      ("kef_example_" + std::to_string(std::random_device()()));
    kef::Stream stream(kef::Generator::mt19937, 7);
    stream.save(file);
    std::uniform_int_distribution<int> dice(1, 6);  // any generator of the standard library's kind
    const int thrown = dice(stream);
    kef::Stream later = kef::Stream::load(file);
    std::filesystem::remove(file);
    const int again = dice(later);
    std::printf("a die shows %d, and from the saved stream %d\n", thrown, again);
    return one != three || std::abs(pi - 3.14159) > 0.02 || thrown != again;
}
