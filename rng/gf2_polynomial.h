// Powers of t modulo a polynomial over GF(2). Bit i % 8 of byte i / 8 is the coefficient of t^i.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kef::rng {

class Modulus {
public:
    // Coefficients that one step of a reduction removes: shifted by less than a byte they still
    // fit four vectors. The two largest exponents are at least as far apart.
    static constexpr std::int32_t block = 504;

    // The exponents fall; the first one is the degree.
    Modulus(std::int32_t degree, std::int32_t count, const std::uint16_t* exponents);
    ~Modulus();
    Modulus(const Modulus&) = delete;
    Modulus& operator=(const Modulus&) = delete;
    // Whether there was memory.
    explicit operator bool() const { return terms_ != nullptr; }

    // p of degree + 504 blocks coefficients, modulo the polynomial. 80 bytes behind them are
    // written with what they hold.
    void reduce(std::uint8_t* p, std::int32_t blocks) const;

    // t^k in a buffer of power_bytes(); it may come to stand in the scratch buffer, of as many
    // bytes: returns the one. Zeros stand above the degree.
    std::uint8_t* power_of_t(std::uint64_t k, std::uint8_t* p, std::uint8_t* scratch) const;
    std::size_t power_bytes() const;

private:
    struct Term {
        std::uint16_t byte, bit;
    };
    std::int32_t squared_blocks() const { return (degree_ + block - 1) / block; }
    void add_product(const std::uint8_t* quotient, std::uint8_t* p) const;
    void times_t(std::uint8_t* p) const;

    std::int32_t degree_, count_;
    const std::uint16_t* exponents_;
    Term* terms_;
};

}  // namespace kef::rng
