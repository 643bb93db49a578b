// Powers whose exponent is half of a small integer, by products, a root and a quotient:
//
//   x^(m/2) = p or 1/p,  p = x^n or x^n sqrt(x),  n = |m| / 2
//
//   Extended   double, in two parts with relative errors below 2^-70, rounded once: 0.5 ulp
//   Plain      in the element type: a rounding at each step, |m|/2 + 2 at most
//   InDouble   single precision by Plain in double, rounded once: 0.5 ulp + 2^-22
#pragma once

#include <bit>
#include <cstdint>

#include "vm/simd/double_double.h"
#include "vm/simd/format.h"

namespace KEF_VM {

// m of y = m / 2 for |m| < 256; otherwise `no_halves`. By bits, which raises no flags.
inline constexpr int no_halves = 1 << 30;
template <class T> inline int halves_of(T y) {
    constexpr bool single = std::is_same_v<T, float>;
    constexpr int digits = single ? 23 : 52, bias = single ? 127 : 1023;
    using Bits = typename Format<T>::Bits;
    const Bits bits = to_bits(y), magnitude = bits << 1 >> 1;
    if (magnitude == 0) return 0;
    const int e = static_cast<int>(magnitude >> digits) - bias;  // |y| is in [2^e, 2^(e+1))
    if (e < -1 || e > 6) return no_halves;
    const Bits significand = (magnitude & ((Bits(1) << digits) - 1)) | Bits(1) << digits;
    const int shift = digits - 1 - e;
    const int m = static_cast<int>(significand >> shift);
    if (Bits(m) << shift != significand) return no_halves;
    return bits != magnitude ? -m : m;
}

// sqrt x = high + low for normal x > 2^-900: a root of 26 bits, whose square is exact.
inline Parts root_parts(doubles x) {
    const doubles s = square_root(x), t = leading(s);
    return fast_two_sum(t, (x - t * t) / (s + t));
}

struct Extended;
struct Plain;
struct InDouble;

// An exponent in the parts that the formulas use, and the arguments for which they hold.
struct SmallExponent {
    explicit SmallExponent(int m)
        : whole(static_cast<unsigned>(m < 0 ? -m : m) / 2), root(m & 1), inverse(m < 0) {}
    unsigned whole;  // n
    bool root, inverse;

    // The cost of `extended` in products, and the errors of `plain` in roundings.
    int steps() const {
        const int products = whole == 0 ? 0 : std::bit_width(whole) + std::popcount(whole) - 2;
        return products + 3 * root + 2 * inverse;
    }
    int roundings() const {
        return static_cast<int>(whole == 0 ? 1 : whole - 1 + 2 * root) + inverse;
    }

    // x^n, n > 0: from the second bit of n on a square, and x where the bit is set.
    template <class N> N raised(N x, auto multiply) const {
        N p = x;
        for (unsigned bit = std::bit_floor(whole) >> 1; bit != 0; bit >>= 1) {
            p = multiply(p, p);
            if (whole & bit) p = multiply(p, x);
        }
        return p;
    }

    template <class V> V plain(V x) const {
        V p = root ? square_root(x) : x;
        if (whole > 0) {
            const V q = raised(x, [](V a, V b) { return a * b; });
            p = root ? p * q : q;
        }
        return inverse ? 1.0f / p : p;
    }

    doubles extended(doubles x) const {
        constexpr auto times = [](Parts a, Parts b) { return multiply(a, b); };
        Parts p = root ? root_parts(x) : Parts{x, doubles{}};
        if (whole > 0) {
            const Parts q = raised(Parts{x, doubles{}}, times);
            p = root ? times(p, q) : q;
        }
        if (inverse) p = divide(Parts{all(1.0), doubles{}}, p);
        return p.high + p.low;
    }
};

// The gate and the formula of a kernel: x from 2^-e to 2^e, so that no step over- or
// underflows; negative too where there is no root.
template <class T, class Method> class SmallPower {
public:
    using V = Vector<T>;
    explicit SmallPower(int m) : exponent_(m) {
        constexpr int largest = std::is_same_v<Method, Extended>   ? 960
                                : std::is_same_v<T, double>        ? 1020
                                : std::is_same_v<Method, InDouble> ? 126
                                                                   : 124;
        constexpr int shift = std::is_same_v<T, float> ? 23 : 20;
        const int size = m < 0 ? -m : m, e = size < 2 ? largest : 2 * largest / size;
        low_ = Format<T>::one_head - (e << shift);
        size_ = 2 * e << shift;
        heads_ = exponent_.root ? -1 : INT32_MAX;
    }

    ints outside(ints h) const { return not_between(h & heads_, low_, low_ + size_); }
    V fast(V x) const {
        if constexpr (std::is_same_v<Method, Extended>) return exponent_.extended(x);
        else if constexpr (std::is_same_v<Method, Plain>) return exponent_.plain(x);
        else return in_double(x, [this](doubles y) { return exponent_.plain(y); });
    }

private:
    SmallExponent exponent_;
    std::uint32_t low_, size_;
    std::int32_t heads_;
};

}  // namespace KEF_VM
