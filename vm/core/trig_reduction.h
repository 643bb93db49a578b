// Reduction of arguments for the trigonometric functions, in three regimes:
//
//   near and far, vectors      x - k P by Cody and Waite: P in parts so short that k times
//                              all but the last is exact; a part more for the far
//   one element, any finite x  k and r = x - k pi/256 from the fraction of x/(2 pi) as a
//                              192-bit number: only the words of 1/(2 pi) that matter for
//                              x's exponent are multiplied
//
// W. J. Cody, W. Waite, Software Manual for the Elementary Functions (1980);
// M. H. Payne, R. N. Hanek, Radian reduction for trigonometric functions,
// SIGNUM Newsletter 18 (1983). Constants: tools/trig_tables.py.
#pragma once

#include "vm/core/constants.h"
#include "vm/simd/double_double.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// x = k pi/steps + r, r = high + low. Only the bits of each k that are steps of a turn count.
inline constexpr int row_steps = 256;
template <int steps = row_steps> struct TrigReduced {
    longs k;
    doubles high, low;
};

// Any finite x, the same in both lanes; relative error of r below 2^-64.
TrigReduced<> trig_reduce_one(double x);

// pi/steps in parts for the vector path, the last rounded, and |x| below which the
// products with the others are exact. k includes these quarter turns.
enum class TrigReach { near, far };  // |x| < 3072: k has 18 bits; |x| < 2^20: k has 27 bits

template <int quarters, TrigReach reach, int steps = row_steps>
inline TrigReduced<steps> trig_reduce(doubles x) {
    constexpr double inverse = steps * inverse_pi;
    constexpr double shifter = 0x1.8p52 + quarters * steps / 2;
    const doubles sum = multiply_add(x, inverse, shifter);
    const doubles k = sum - shifter;
    if constexpr (reach == TrigReach::near) {
        constexpr double P1 = pi_parts[0] / steps, P2 = pi_parts[1] / steps,
                         P3 = pi_parts[2] / steps;
        const doubles r1 = negative_multiply_add(k, P1, x), w = k * P2, r = r1 - w;
        return {(longs)sum, r, negative_multiply_add(k, P3, (r1 - r) - w)};
    } else {
        constexpr double P1 = from_bits(UINT64_C(0x400921FB50000000)) / steps;
        constexpr double P2 = from_bits(UINT64_C(0x3E6110B460000000)) / steps;
        constexpr double P3 = from_bits(UINT64_C(0x3CA1A62630000000)) / steps;
        constexpr double P4 = from_bits(UINT64_C(0x3AF8A2E03707344A)) / steps;
        const doubles r1 = x - k * P1, w2 = k * P2, r2 = r1 - w2;
        const doubles w3 = k * P3, r = r2 - w3;
        return {(longs)sum, r, ((r1 - r2) - w2) + (((r2 - r) - w3) - k * P4)};
    }
}

}  // namespace KEF_VM
