// The error functions of four floats in single precision: rational functions, and the
// exponential. Coefficients: tools/erf_rational.py.
#pragma once

#include "vm/core/exp_core.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

// erf u for u >= 0: u P(u^2) / Q(u^2), cut to 1, which it reaches at the end of the interval
// [0, 3.92] (LA: relative error 2^-25.6, and 2^-24 added for the end), [0, 2.6] (EP: 2^-11.6).
template <class Accuracy> inline f4 erf_single(f4 u) {
    f4 p, q;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr float p0 = from_bits(0x3F906EBBu), p1 = from_bits(0x3E42F157u),
                        p2 = from_bits(0x3D580972u), p3 = from_bits(0x3B76AC38u),
                        p4 = from_bits(0x399550EAu), p5 = from_bits(0x36098E38u);
        constexpr float q1 = from_bits(0x3F008629u), q2 = from_bits(0x3DE9AA77u),
                        q3 = from_bits(0x3C753372u), q4 = from_bits(0x3A984F80u),
                        q5 = from_bits(0x381FBBF7u);
        u = minimum(u, all(3.92f));
        const f4 s = u * u, s2 = s * s;
        p = (p0 + s * p1) + s2 * ((p2 + s * p3) + s2 * (p4 + s * p5));
        q = (1.0f + s * q1) + s2 * ((q2 + s * q3) + s2 * (q4 + s * q5));
    } else {
        constexpr float p0 = from_bits(0x3F90630Cu), p1 = from_bits(0x3EFD6EFAu),
                        p2 = from_bits(0x3CE9A9D8u);
        constexpr float q1 = from_bits(0x3F4454E6u), q2 = from_bits(0x3E460054u);
        u = minimum(u, all(2.6f));
        const f4 s = u * u;
        p = p0 + s * (p1 + s * p2);
        q = 1.0f + s * (q1 + s * q2);
    }
    return minimum(u * p / q, all(1.0f));
}

// exp(u^2) erfc u for 0 <= u <= 9.3: relative error 2^-27.6 (LA), 2^-14.4 (EP);
// 1 for u = 0.
template <class Accuracy> inline f4 erfcx_single(f4 u) {
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr float p1 = from_bits(0x3F9DA065u), p2 = from_bits(0x3F396EC1u),
                        p3 = from_bits(0x3E672FC5u), p4 = from_bits(0x3D03615Eu);
        constexpr float q1 = from_bits(0x40170792u), q2 = from_bits(0x4018C6B8u),
                        q3 = from_bits(0x3FA7E9CFu), q4 = from_bits(0x3ECCE62Fu),
                        q5 = from_bits(0x3D68DCBAu);
        const f4 s = u * u;
        return ((1.0f + u * p1) + s * ((p2 + u * p3) + s * p4)) /
               ((1.0f + u * q1) + s * ((q2 + u * q3) + s * (q4 + u * q5)));
    } else {
        constexpr float p1 = from_bits(0x3F487729u), p2 = from_bits(0x3E7DA76Du);
        constexpr float q1 = from_bits(0x3FF4CB22u), q2 = from_bits(0x3FB304EBu),
                        q3 = from_bits(0x3EE084DFu);
        return (1.0f + u * (p1 + u * p2)) / (1.0f + u * (q1 + u * (q2 + u * q3)));
    }
}

// exp(-f y^2) for 0 <= y <= 13, f = 1 or 1/2: the leading 12 bits of y have an exact square.
template <class Accuracy> inline f4 exp_of_square(f4 y, float f) {
    if constexpr (std::is_same_v<Accuracy, EP>) return exp_single<EP>(y * y * -f);
    const f4 y1 = (f4)((i4)y & -0x1000), y2 = y - y1;
    return exp_single<HA>(y1 * y1 * -f, y2 * (y + y1) * -f);
}

}  // namespace kef::vm
