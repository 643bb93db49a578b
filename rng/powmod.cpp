#include "rng/powmod.h"

#include <algorithm>
#include <array>

#include "kef_rng.h"

using namespace kef::rng;

std::uint32_t __vtsiPowMod(std::uint32_t a, std::uint64_t k, std::uint32_t m) {
    const auto multiply = [m](std::uint32_t x, std::uint32_t y) {
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(x) * y % m);
    };
    return power(a % m, k, 1 % m, multiply);
}

std::uint32_t __vtsiPowMod2P31M1(std::uint32_t a, std::uint64_t k) {
    return power(a % m31, k, std::uint32_t{1}, multiply31);
}

std::uint64_t __vtsiPowMod2P59(std::uint64_t a, std::uint64_t k) {
    return power(a & mask59, k, std::uint64_t{1}, multiply59);
}

void __vtsiVect3PowMod(std::uint32_t* vector, const std::uint32_t* row, std::uint32_t m,
                       std::uint32_t k_low, std::uint32_t k_high) {
    using Matrix = std::array<std::array<std::uint32_t, 3>, 3>;
    const auto dot = [m](const std::array<std::uint32_t, 3>& x, std::uint32_t y0, std::uint32_t y1,
                         std::uint32_t y2) {
        const std::uint64_t sum = static_cast<std::uint64_t>(x[0]) * y0 % m +
                                  static_cast<std::uint64_t>(x[1]) * y1 % m +
                                  static_cast<std::uint64_t>(x[2]) * y2 % m;
        return static_cast<std::uint32_t>(sum % m);
    };
    const auto multiply = [dot](const Matrix& x, const Matrix& y) {
        Matrix product;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) product[i][j] = dot(x[i], y[0][j], y[1][j], y[2][j]);
        return product;
    };
    const Matrix one = {{{1 % m, 0, 0}, {0, 1 % m, 0}, {0, 0, 1 % m}}};
    const Matrix companion = {{{row[0], row[1], row[2]}, {1, 0, 0}, {0, 1, 0}}};
    const std::uint64_t k = k_low | static_cast<std::uint64_t>(k_high) << 32;
    const Matrix jump = power(companion, k, one, multiply);
    std::uint32_t result[3];
    for (int i = 0; i < 3; ++i) result[i] = dot(jump[i], vector[0], vector[1], vector[2]);
    std::copy_n(result, 3, vector);
}
