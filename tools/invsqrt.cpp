// The constants of x^(-1/2) from the bit pattern (vm/core/inverse_root.h; LA: vm/real/invsqrt.cpp):
// for y = bits(magic - bits(x)/2) and v = y sqrt(x), which lies in a narrow interval whatever x,
// the polynomial
//
//   P(v) = c0 v + c1 v^3 + v^5 = scale (1 + error)
//
// with the least largest error, over all magic numbers with 12 zero bits.
//
//   g++ -O2 -std=c++20 tools/invsqrt.cpp -o build/invsqrt && build/invsqrt
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

namespace {

struct Interval {
    double low = 10, high = 0;
};
Interval values(std::uint32_t magic) {
    Interval v;
    for (int i = 0; i < 2048; ++i) {  // two octaves: all that the halved exponent tells apart
        const std::uint32_t bits = 0x3F800000 + i * 0x2000;
        const double y = std::bit_cast<float>(magic - (bits >> 1));
        const double value = y * std::sqrt(double(std::bit_cast<float>(bits)));
        v = {std::min(v.low, value), std::max(v.high, value)};
    }
    return v;
}

struct Fit {
    double c0, c1, error;
};

// c0, c1 and the error e that make P(v) = scale (1 +- e) at three points.
Fit through(const std::array<double, 3>& v, double scale) {
    // Differences of the three equations leave two for c0 and c1.
    const auto row = [&](int i, int j) {
        return std::array{v[i] + v[j], std::pow(v[i], 3) + std::pow(v[j], 3),
                          2 * scale - std::pow(v[i], 5) - std::pow(v[j], 5)};
    };
    const auto p = row(0, 1), q = row(1, 2);
    const double determinant = p[0] * q[1] - p[1] * q[0];
    return {(p[2] * q[1] - p[1] * q[2]) / determinant, (p[0] * q[2] - p[2] * q[0]) / determinant,
            0};
}

// Exchange of the points for the extrema of the error, from the ends and the middle.
Fit best_fit(Interval range, double scale) {
    constexpr int steps = 400;
    std::array<double, 3> points = {range.low, (range.low + range.high) / 2, range.high};
    Fit fit{};
    for (int round = 0; round < 10; ++round) {
        fit = through(points, scale);
        std::vector<std::pair<double, double>> extrema;  // one of each run of a sign: (error, v)
        for (int i = 0; i <= steps; ++i) {
            const double v = range.low + (range.high - range.low) * i / steps;
            const double e = (fit.c0 * v + fit.c1 * std::pow(v, 3) + std::pow(v, 5)) / scale - 1;
            fit.error = std::max(fit.error, std::fabs(e));
            if (extrema.empty() || (e > 0) != (extrema.back().first > 0)) extrema.push_back({e, v});
            else if (std::fabs(e) > std::fabs(extrema.back().first)) extrema.back() = {e, v};
        }
        if (extrema.size() < 3) break;
        double best = 0;
        for (std::size_t i = 0; i + 2 < extrema.size(); ++i) {
            const double least =
                std::min({std::fabs(extrema[i].first), std::fabs(extrema[i + 1].first),
                          std::fabs(extrema[i + 2].first)});
            if (least <= best) continue;
            best = least;
            points = {extrema[i].second, extrema[i + 1].second, extrema[i + 2].second};
        }
    }
    return fit;
}

}  // namespace

int main() {
    for (const auto& [slot, scale] : {std::pair{"EP", 1.0}, std::pair{"LA", std::cbrt(0.5)}}) {
        Fit best{0, 0, 1};
        std::uint32_t best_magic = 0;
        for (std::uint32_t magic = 0x5E000000; magic < 0x60800000; magic += 0x1000) {
            const Fit fit = best_fit(values(magic), scale);
            if (fit.error < best.error) best = fit, best_magic = magic;
        }
        std::printf("%s: magic 0x%08X, c0 %.9g, c1 %.9g, error 2^%.2f\n", slot, best_magic,
                    static_cast<double>(static_cast<float>(best.c0)),
                    static_cast<double>(static_cast<float>(best.c1)), std::log2(best.error));
    }
}
