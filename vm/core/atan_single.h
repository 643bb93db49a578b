// The arc tangent in single precision, of a quotient of absolute values.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// atan(y/x) for x, y >= 0, not both 0: the smaller over the larger, a polynomial on
// [0, 1] with relative error 2^-23.1 (LA), 2^-11.9 (EP), and pi/2 minus that where
// y > x. tools/atan.sollya
template <class Accuracy> inline floats atan_single(floats y, floats x) {
    const ints inverted = y > x;
    const floats t = minimum(y, x) / maximum(y, x);
    const floats t2 = t * t;
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
    return base + flipped(multiply_add(t * t2, q, t), inverted & INT32_MIN);
}

}  // namespace KEF_VM
