// The error functions of floats in single precision: rational functions, and the
// exponential. Coefficients: tools/erf_rational.py.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// erf u for u >= 0: u P(u^2) / Q(u^2), cut to 1, which it reaches at the end of the interval
// [0, 3.92] (LA: relative error 2^-25.6, and 2^-24 added for the end), [0, 2.6] (EP: 2^-11.6).
template <class Accuracy> inline floats erf_single(floats u) {
    floats p, q;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        u = minimum(u, all(3.92f));
        const floats s = u * u, s2 = s * s;
        p = polynomial_by_pairs(s, s2,
                                coefficients(0x3F906EBBu, 0x3E42F157u, 0x3D580972u, 0x3B76AC38u,
                                             0x399550EAu, 0x36098E38u));
        q = polynomial_by_pairs(s, s2,
                                coefficients(0x3F800000u, 0x3F008629u, 0x3DE9AA77u, 0x3C753372u,
                                             0x3A984F80u, 0x381FBBF7u));
    } else {
        u = minimum(u, all(2.6f));
        const floats s = u * u;
        p = polynomial(s, coefficients(0x3F90630Cu, 0x3EFD6EFAu, 0x3CE9A9D8u));
        q = polynomial(s, coefficients(0x3F800000u, 0x3F4454E6u, 0x3E460054u));
    }
    return minimum(u * p / q, all(1.0f));
}

// exp(u^2) erfc u for 0 <= u <= 9.3: relative error 2^-27.6 (LA), 2^-14.4 (EP);
// 1 for u = 0.
template <class Accuracy> inline floats erfcx_single(floats u) {
    if constexpr (std::is_same_v<Accuracy, LA>) {
        const floats s = u * u;
        return polynomial_by_pairs(
                   u, s,
                   coefficients(0x3F800000u, 0x3F9DA065u, 0x3F396EC1u, 0x3E672FC5u, 0x3D03615Eu)) /
               polynomial_by_pairs(u, s,
                                   coefficients(0x3F800000u, 0x40170792u, 0x4018C6B8u, 0x3FA7E9CFu,
                                                0x3ECCE62Fu, 0x3D68DCBAu));
    } else {
        return polynomial(u, coefficients(0x3F800000u, 0x3F487729u, 0x3E7DA76Du)) /
               polynomial(u, coefficients(0x3F800000u, 0x3FF4CB22u, 0x3FB304EBu, 0x3EE084DFu));
    }
}

// exp(-f y^2) for 0 <= y <= 13, f = 1 or 1/2: the square in two parts, by a fused operation or
// since the leading 12 bits of y have an exact one.
template <class Accuracy> inline floats exp_of_square(floats y, float f) {
    if constexpr (std::is_same_v<Accuracy, EP>) return exp_single<EP>(y * y * -f);
    if constexpr (is_fused) {
        const floats square = y * y;
        return exp_single<HA>(square * -f, multiply_subtract(y, y, square) * -f);
    }
    const floats y1 = (floats)((ints)y & -0x1000), y2 = y - y1;
    return exp_single<HA>(y1 * y1 * -f, y2 * (y + y1) * -f);
}

}  // namespace KEF_VM
