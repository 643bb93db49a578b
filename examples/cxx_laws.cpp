// Laws as objects: waiting in a queue with random arrivals and services of constant length, beside
// the formula of Pollaczek and Khinchine. Single numbers come out of blocks.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <kef.hpp>

int main() {
    const double load = 0.7;
    kef::Stream stream(kef::Generator::sfmt19937, 1);
    kef::Draws arrival(stream, kef::Exponential(0.0, 1 / load));
    double waiting = 0, sum = 0;
    const int customers = 2000000;
    for (int i = 0; i < customers; ++i) {
        sum += waiting;
        waiting = std::max(0.0, waiting + 1 - arrival());  // Lindley's recursion
    }
    const double mean = sum / customers, expected = load / (2 * (1 - load));
    std::printf("mean waiting time %.3f, by the formula %.3f\n", mean, expected);

    // A whole range, of correlated numbers.
    const double centre[] = {1, -1}, factor[] = {2, 1, 0.5};
    std::vector<double> x(2 * 100000);
    kef::NormalVectors<double>(centre, factor, kef::Factor::packed).fill(stream, x);
    kef::Statistics<> s(2, kef::Estimate::covariance);
    s.add(kef::Sample(x, 2));
    std::printf("covariance %.2f, of the law 2\n", s["covariance"](0, 1));
    return std::abs(mean - expected) > 0.03 || std::abs(s["covariance"](0, 1) - 2) > 0.06;
}
