// The arc tangent in single precision, of a quotient of absolute values.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// t + g^3 p(g^2), or pi/2 minus that where `inverted`; g = t but where the sum is t. The polynomial
// is for [0, 1], with relative error 2^-23.1 (LA), 2^-11.9 (EP); tools/atan.sollya
template <class Accuracy> inline floats atan_single_sum(floats t, floats g, ints inverted) {
    const floats t2 = g * g;
    floats q;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        const floats t4 = t2 * t2;
        q = multiply_add(
            t2, polynomial(t4, coefficients(0x3E4C893Eu, 0x3DCC289Au, 0x3CCAA328u)),
            polynomial(t4, coefficients(0xBEAAA96Fu, 0xBE0FC8B5u, 0xBD769A89u, 0xBB9E0AC0u)));
    } else {
        q = polynomial(t2, coefficients(0xBEA7BE2Cu, 0x3E232345u, 0xBD3E7317u));
    }
    const floats base = where(inverted, all(static_cast<float>(pi / 2)));
    return base + flipped(multiply_add(g * t2, q, t), inverted & INT32_MIN);
}

// atan(y/x) for x, y >= 0, not both 0: by the smaller over the larger.
template <class Accuracy> inline floats atan_single(floats y, floats x) {
    const floats t = minimum(y, x) / maximum(y, x);
    return atan_single_sum<Accuracy>(t, t, y > x);
}

}  // namespace KEF_VM
