// Statistics block by block on two threads, merged; quantiles of the stream; a robust estimate
// beside the ordinary one where one observation in twenty is wrong.
#include <cmath>
#include <cstdio>
#include <kef.hpp>
#include <thread>
#include <vector>

namespace {

constexpr kef::Estimate wanted = kef::Estimate::mean | kef::Estimate::covariance |
                                 kef::Estimate::skewness | kef::Estimate::maximum;

struct Part {
    kef::Statistics<> moments{2, wanted};
    kef::StreamQuantiles<> quantiles{2, 0.001};

    // Blocks of an exponential variable x, and 2 + x + a normal one.
    void see(std::uint32_t seed, int blocks) {
        kef::Stream stream(kef::member(kef::Generator::mt2203, std::int32_t(seed)), 1);
        std::vector<double> x(1000), noise(1000), block(2000);
        for (; blocks > 0; --blocks) {
            kef::Exponential(0.0, 1.0).fill(stream, x);
            kef::Normal(2.0, 1.0).fill(stream, noise);
            kef::add(x, noise, noise);
            kef::unpack_stride(x, block, 2);
            kef::unpack_stride(noise, std::span(block).subspan(1), 2);
            moments.add(kef::Sample(block, 2));
            quantiles.add(kef::Sample(block, 2));
        }
    }
};

}  // namespace

int main() {
    Part a, b;
    std::thread other([&] { b.see(2, 300); });
    a.see(1, 200);
    other.join();
    a.moments.merge(b.moments);
    a.quantiles.merge(b.quantiles);
    std::printf("%llu observations\n", static_cast<unsigned long long>(a.moments.count()));
    for (const auto& result : a.moments.results()) {
        std::printf("%-10.*s", int(result.name.size()), result.name.data());
        for (const double value : result.values) std::printf(" %8.4f", value);
        std::puts("");
    }
    const double median = a.quantiles.quantiles(std::vector{0.5})(0, 0);
    std::printf("median of x %.3f, of the law %.3f\n", median, std::log(2));

    kef::Stream stream;
    std::vector<double> x(2000);
    kef::Normal(5.0, 1.0).fill(stream, x);
    for (std::size_t i = 0; i < x.size(); i += 20) x[i] = 1000;
    kef::Statistics<> plain(1, kef::Estimate::mean);
    plain.add(kef::Sample(x, 1));
    const double robust = kef::robust_covariance(kef::Sample(x, 1)).mean[0];
    std::printf("of 5, with 5 %% of the data wrong: mean %.1f, robust mean %.2f\n",
                plain["mean"][0], robust);

    const auto covariance = a.moments["covariance"];
    return std::abs(covariance(0, 1) - 1) > 0.02 || std::abs(covariance(1, 1) - 2) > 0.03 ||
           std::abs(a.moments["skewness"][0] - 2) > 0.1 || std::abs(median - std::log(2)) > 0.01 ||
           std::abs(robust - 5) > 0.1;
}
