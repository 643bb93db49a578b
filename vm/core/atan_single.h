// The arc tangent in single precision, of a quotient of absolute values.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

// atan(y/x) for x, y >= 0, not both 0: the smaller over the larger, a polynomial on
// [0, 1] with relative error 2^-23.1 (LA), 2^-11.9 (EP), and pi/2 minus that where
// y > x. tools/atan.sollya
template <class Accuracy> inline f4 atan_single(f4 y, f4 x) {
    const i4 inverted = y > x;
    const f4 t = minimum(y, x) / maximum(y, x);
    const f4 t2 = t * t;
    f4 q;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr float a3 = from_bits(0xBEAAA96Fu), a5 = from_bits(0x3E4C893Eu),
                        a7 = from_bits(0xBE0FC8B5u), a9 = from_bits(0x3DCC289Au),
                        a11 = from_bits(0xBD769A89u), a13 = from_bits(0x3CCAA328u),
                        a15 = from_bits(0xBB9E0AC0u);
        const f4 t4 = t2 * t2;
        q = (a3 + t4 * (a7 + t4 * (a11 + t4 * a15))) + t2 * (a5 + t4 * (a9 + t4 * a13));
    } else {
        constexpr float a3 = from_bits(0xBEA7BE2Cu), a5 = from_bits(0x3E232345u),
                        a7 = from_bits(0xBD3E7317u);
        q = a3 + t2 * (a5 + t2 * a7);
    }
    const f4 base = where(inverted, all(static_cast<float>(pi / 2)));
    return base + (f4)((i4)(t + t * t2 * q) ^ (inverted & INT32_MIN));
}

}  // namespace kef::vm
