// Powers modulo m.
#pragma once

#include <cstdint>

namespace kef::rng {

// x^k by squaring; `multiply` is an associative product, `one` its unit.
template <class T, class Multiply>
constexpr T power(T x, std::uint64_t k, T one, Multiply multiply) {
    T result = one;
    for (; k != 0; k >>= 1) {
        if ((k & 1) != 0) result = multiply(result, x);
        if (k > 1) x = multiply(x, x);
    }
    return result;
}

inline constexpr std::uint32_t m31 = 0x7FFFFFFF;  // 2^31 - 1
inline constexpr std::uint64_t mask59 = (std::uint64_t{1} << 59) - 1;

// x y mod 2^31 - 1 for x, y < 2^31: the product's digits to the base 2^31 are added.
constexpr std::uint32_t multiply31(std::uint32_t x, std::uint32_t y) {
    const std::uint64_t p = static_cast<std::uint64_t>(x) * y;
    const std::uint32_t t =
        (static_cast<std::uint32_t>(p) & m31) + static_cast<std::uint32_t>(p >> 31);
    return t >= m31 ? t - m31 : t;
}

constexpr std::uint64_t multiply59(std::uint64_t x, std::uint64_t y) { return x * y & mask59; }

}  // namespace kef::rng
