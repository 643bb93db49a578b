// Reduction of arguments for the trigonometric functions, in three regimes:
//
//   vector, |x| below a gate   x - k P by Cody and Waite: P in parts so short that
//                              k times all but the last is exact
//   one element, any finite x  k and r = x - k pi/256 from the fraction of x/(2 pi) as a
//                              192-bit number: only the words of 1/(2 pi) that
//                              matter for x's exponent are multiplied
//
// W. J. Cody, W. Waite, Software Manual for the Elementary Functions (1980);
// M. H. Payne, R. N. Hanek, Radian reduction for trigonometric functions,
// SIGNUM Newsletter 18 (1983). Constants: tools/trig_tables.py.
#pragma once

#include "vm/double_double.h"
#include "vm/simd.h"

namespace kef::vm {

// x = k pi/256 + r, r = high + low. Only the last 9 bits of each k count.
struct TrigReduced {
    l2 k;
    d2 high, low;
};

// Any finite x, the same in both lanes; relative error of r below 2^-64.
TrigReduced trig_reduce_one(double x);

// A gate of the vector path: lanes outside first <= |x| < last, as leading bits. Below
// `first` a square or a cube would underflow.
struct TrigRange {
    std::uint32_t first, last;
    i4 outside(i4 h) const { return not_between(magnitude(h), first, last); }
};

// For |x| < 3072, where k has 18 bits: P1 and P2 have at most 35. k includes `bias`.
template <int bias>
inline TrigReduced trig_reduce(d2 x) {
    constexpr double inverse = from_bits(UINT64_C(0x40545F306DC9C883));  // 256/pi
    constexpr double P1 = from_bits(UINT64_C(0x3F8921FB54440000));
    constexpr double P2 = from_bits(UINT64_C(0x3D168C234C4C0000));
    constexpr double P3 = from_bits(UINT64_C(0x3AB98A2E03707345));
    constexpr double shifter = 0x1.8p52 + bias;
    const d2 sum = x * inverse + shifter;
    const d2 k = sum - shifter;
    const d2 r1 = x - k * P1;  // exact
    const d2 w = k * P2;       // exact
    const d2 r = r1 - w;
    return {(l2)sum, r, ((r1 - r) - w) - k * P3};
}

}  // namespace kef::vm
