#include "vm/core/trig_reduction.h"

#include <cstdint>

namespace KEF_VM {

namespace {

// 1/(2 pi) behind two words of zeros, for exponents below 0.
constexpr int leading_zeros = 2;
constexpr std::uint32_t inverse_2pi[] = {
    0,
    0,
#include "vm/tables/inverse_2pi.inc"
};
static_assert(sizeof inverse_2pi == 42 * sizeof(std::uint32_t));

constexpr int words = 6;

}  // namespace

TrigReduced<> trig_reduce_one(double x) {
    if (x > -0x1p-8 && x < 0x1p-8) return {all(INT64_C(0)), all(x), all(0.0)};
    // |x| = m 2^e with an integer m; the bits of 1/(2 pi) above 2^-e give whole turns.
    const std::uint64_t bits = to_bits(x);
    const int field = static_cast<int>(bits >> 52 & 0x7FF);
    const std::uint64_t fraction = bits & ((UINT64_C(1) << 52) - 1);
    const std::uint64_t m = fraction | UINT64_C(1) << 52;
    const std::uint32_t m_low = static_cast<std::uint32_t>(m),
                        m_high = static_cast<std::uint32_t>(m >> 32);
    const int first_bit = field - 1075 + 32 * leading_zeros;
    const std::uint32_t* window = inverse_2pi + (first_bit >> 5);
    const int shift = first_bit & 31;

    // turns = m w mod 1, most significant word first: schoolbook from the lowest word.
    std::uint32_t turns[words];
    std::uint64_t carry = 0, high_product = 0;
    for (int i = words - 1; i >= 0; --i) {
        const std::uint64_t pair = static_cast<std::uint64_t>(window[i]) << 32 | window[i + 1];
        const std::uint32_t w = static_cast<std::uint32_t>(pair << shift >> 32);
        const std::uint64_t low_product = static_cast<std::uint64_t>(w) * m_low;
        carry += static_cast<std::uint32_t>(low_product);
        carry += static_cast<std::uint32_t>(high_product);
        turns[i] = static_cast<std::uint32_t>(carry);
        carry = (carry >> 32) + (low_product >> 32) + (high_product >> 32);
        high_product = static_cast<std::uint64_t>(w) * m_high;
    }

    // k = turns in 512ths to nearest; the rest as a sum of doubles, exact until it
    // fills one.
    const std::uint32_t top = turns[0] + (1u << 22);
    const int k = static_cast<int>(top >> 23);
    double unit = 0x1p-32;
    double high = (static_cast<std::int32_t>(top & 0x7FFFFF) - (1 << 22)) * unit, low = 0;
    for (int i = 1; i < words; ++i) {
        unit *= 0x1p-32;
        const DoubleDouble<double> sum = fast_two_sum(high, turns[i] * unit);
        high = sum.high;
        low += sum.low;
    }

    // Turns to radians.
    constexpr double two_pi = 2 * pi, two_pi_low = 2 * pi_low;
    const DoubleDouble<double> product = two_product(high, two_pi);
    const DoubleDouble<double> r =
        fast_two_sum(product.high, product.low + (high * two_pi_low + low * two_pi));
    const bool negative = (bits >> 63) != 0;
    return {all(static_cast<std::int64_t>(negative ? -k : k)), all(negative ? -r.high : r.high),
            all(negative ? -r.low : r.low)};
}

}  // namespace KEF_VM
