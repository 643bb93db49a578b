// x^(-1/2) from the bit pattern: shorter than the processor's root and quotient, and the same bits
// on every processor, unlike its estimate. tools/invsqrt.cpp
#pragma once

#include "vm/simd/products.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// y P(e), e = x y^2, with y by halving the bit pattern, within 3.3% of a multiple of x^(-1/2)
// that makes the leading coefficient of P 1. The magic number is that of floats.
struct InverseRoot {
    std::int32_t magic;
    float c0, c1;

    template <class V> V estimate(V x) const {
        const V y = start(x), e = (x * y) * y;
        return y * multiply_add(e, c1 + e, filled<V>(c0));
    }

private:
    floats start(floats x) const { return (floats)(magic - (ints)((uints)x >> 1)); }
    // 29 bits more, and 3/2 of the difference of the biases, 127 and 1023.
    doubles start(doubles x) const {
        return (doubles)((std::int64_t{magic} << 29) + (INT64_C(1344) << 52) -
                         (longs)((ulongs)x >> 1));
    }
};
// Relative error 2^-15.6.
inline constexpr InverseRoot inverse_root = {0x5F111000, 2.28251982f, -2.25330663f};

// t = x^(-1/2) by that, normal x, xt about the root, and e = 1 - x t^2.
struct RootEstimate {
    doubles t, xt, e;
};
inline RootEstimate root_estimate(doubles x) {
    const doubles t = inverse_root.estimate(x), xt = x * t;
    return {t, xt, negative_multiply_add(xt, t, 1.0)};
}

// a (1 - e)^(-1/2), |e| < 2^-14.58, relative error of the polynomial 2^-62.7: of a = t the inverse
// root, of a = x t the root.
inline doubles times_inverse_root(doubles a, doubles e) {
    constexpr double c2 = 0.37500000038;  // the next term, 35/128 e^4, is within 0.17 of one in e^2
    return multiply_add(a, e * multiply_add(e, multiply_add(e, 0.3125, c2), 0.5), a);
}

// x^(1/2), and with fused operations within 0.505 ulp, x^(-1/2)/2 to 2^-30; normal x or 0. There
// the two are Goldschmidt's iteration and a last step of Newton's, sooner done than the processor's
// root and quotient where nothing else takes long: Markstein, Software Division and Square Root
// Using Goldschmidt's Algorithms (2004).
inline Two<doubles> root_and_half_inverse(doubles x) {
    if constexpr (is_fused) {
        const doubles t = inverse_root.estimate(x), xt = x * t, half = 0.5 * t;
        const doubles e = negative_multiply_add(xt, half, 0.5);
        const doubles s = multiply_add(xt, e, xt), half_inverse = multiply_add(half, e, half);
        return {multiply_add(negative_multiply_add(s, s, x), half_inverse, s), half_inverse};
    }
    const doubles s = square_root(x);
    return {s, 0.5 / s};
}
inline doubles short_root(doubles x) { return root_and_half_inverse(x).first; }
inline floats short_root(floats x) { return square_root(x); }

}  // namespace KEF_VM
