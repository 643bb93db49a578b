// What Asin and Acos share, in both precisions:
//
//   y <= 1/2   asin y of u = y itself
//   y > 1/2    asin y = pi/2 - 2 asin u,  u = sqrt((1 - y)/2) <= 1/2
//   asin u = u + u z P(z),  z = u^2 exactly: (1 - y)/2 is exact
//
// Polynomials: tools/asin.sollya.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/rounding.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

// asin u = high + low, and the lanes where y > 1/2.
template <class V> struct AsinParts {
    V high, low;
    decltype(V{} > V{}) halved;
};

// P in single precision and in double precision; relative to asin u the errors are
//   double  HA 2^-62.7   LA 2^-54.0
//   single               LA 2^-25.8
inline f4 asin_polynomial(f4 z) {
    constexpr float c0 = from_bits(0x3E2AAAAFu), c1 = from_bits(0x3D999344u),
                    c2 = from_bits(0x3D385F95u), c3 = from_bits(0x3CD8F1D6u),
                    c4 = from_bits(0x3D1C9369u);
    return c0 + z * (c1 + z * (c2 + z * (c3 + z * c4)));
}
inline d2 asin_polynomial(d2 z) {
    constexpr double c0 = from_bits(UINT64_C(0x3FC555555555554E));
    constexpr double c1 = from_bits(UINT64_C(0x3FB3333333337233));
    constexpr double c2 = from_bits(UINT64_C(0x3FA6DB6DB67F6D9F));
    constexpr double c3 = from_bits(UINT64_C(0x3F9F1C71FBD29FB9));
    constexpr double c4 = from_bits(UINT64_C(0x3F96E8B264D46847));
    constexpr double c5 = from_bits(UINT64_C(0x3F91C5997C35743C));
    constexpr double c6 = from_bits(UINT64_C(0x3F8C86A22CDA4433));
    constexpr double c7 = from_bits(UINT64_C(0x3F8856073C1AC801));
    constexpr double c8 = from_bits(UINT64_C(0x3F7FD1151B1A537B));
    constexpr double c9 = from_bits(UINT64_C(0x3F9087182F3F3191));
    constexpr double c10 = from_bits(UINT64_C(0xBF866027474FF315));
    constexpr double c11 = from_bits(UINT64_C(0x3F9CFA0DD1B3CDAE));
    const d2 z2 = z * z, z4 = z2 * z2;
    const d2 low = (c0 + z * c1) + z2 * (c2 + z * c3);
    const d2 middle = (c4 + z * c5) + z2 * (c6 + z * c7);
    const d2 high = (c8 + z * c9) + z2 * (c10 + z * c11);
    return low + z4 * (middle + z4 * high);
}
// HA: P(z) = c0 + z Q(z); this is Q.
inline d2 asin_polynomial_tail(d2 z) {
    constexpr double c1 = from_bits(UINT64_C(0x3FB33333333334B7));
    constexpr double c2 = from_bits(UINT64_C(0x3FA6DB6DB6D96755));
    constexpr double c3 = from_bits(UINT64_C(0x3F9F1C71C85D5E59));
    constexpr double c4 = from_bits(UINT64_C(0x3F96E8B9F6B519E4));
    constexpr double c5 = from_bits(UINT64_C(0x3F91C4F25E7D100C));
    constexpr double c6 = from_bits(UINT64_C(0x3F8C98BA0F745C4A));
    constexpr double c7 = from_bits(UINT64_C(0x3F87B38D75AEA071));
    constexpr double c8 = from_bits(UINT64_C(0x3F839B3AF816CE92));
    constexpr double c9 = from_bits(UINT64_C(0x3F8399C678D4E690));
    constexpr double c10 = from_bits(UINT64_C(0x3F61AF3BC8E5F7E0));
    constexpr double c11 = from_bits(UINT64_C(0x3F961A54294FE7B0));
    constexpr double c12 = from_bits(UINT64_C(0xBF967DE4244757A4));
    constexpr double c13 = from_bits(UINT64_C(0x3F9FFBE4A997A904));
    const d2 z2 = z * z, z4 = z2 * z2;
    const d2 low = (c1 + z * c2) + z2 * (c3 + z * c4);
    const d2 middle = (c5 + z * c6) + z2 * (c7 + z * c8);
    const d2 high = (c9 + z * c10) + z2 * (c11 + z * c12);
    return low + z4 * (middle + z4 * (high + z4 * c13));
}

// EP, |x| <= 1, without cases: asin x = x F(1 - s), s = sqrt(1 - x^2), relative error 2^-13.1;
// acos y = sqrt(1 - y) G(y) for y = |x|, relative error 2^-14.1. Both exact at 0.
inline f4 asin_short(f4 x) {
    constexpr float f1 = from_bits(0x3EA8D96Fu), f2 = from_bits(0x3E297202u),
                    f3 = from_bits(0xBCE8AF3Cu), f4th = from_bits(0x3DD47EF2u);
    const f4 u = 1.0f - square_root(1.0f - x * x);
    return x * (1.0f + u * (f1 + u * (f2 + u * (f3 + u * f4th))));
}
inline f4 acos_short(f4 x) {
    constexpr float g0 = static_cast<float>(pi / 2), g1 = from_bits(0xBE59C6DDu),
                    g2 = from_bits(0x3D9A63ACu), g3 = from_bits(0xBC9EB3A8u);
    const f4 y = absolute(x);
    const f4 a = square_root(1.0f - y) * (g0 + y * (g1 + y * (g2 + y * g3)));
    return where((i4)x >> 31, all(static_cast<float>(pi))) + (f4)((i4)a ^ sign_bit(x));
}

// 0 <= y <= 1; HA < 1.
template <class Accuracy, class V> inline AsinParts<V> asin_parts(V y) {
    using T = std::remove_reference_t<decltype(y[0])>;
    const V half = all(T(0.5)) - y * T(0.5);
    const auto halved = y > T(0.5);
    const V z = minimum(half, y * y), u = minimum(square_root(half), y);  // half, root where halved
    if constexpr (!std::is_same_v<Accuracy, HA>) {
        return {u, u * (z * asin_polynomial(z)), halved};
    } else {
        // u z c0, up to 0.04 u, needs more than a double: the leading 17 bits of u and
        // z and 19 bits of c0 multiply exactly.
        constexpr double c0 = from_bits(UINT64_C(0x3FC5555555555555));
        constexpr double c0_high = from_bits(UINT64_C(0x3FC5555400000000)), c0_low = c0 - c0_high;
        const auto leading = [](V x) { return (V)((l2)x & INT64_C(-0x1000000000)); };
        const V u_high = leading(u), u_low = u - u_high;
        const V rest = (z - u_high * u_high) - (u + u_high) * u_low;  // z - u^2
        // The root's error where there is a root, and the square's where not.
        const V root_error = where(halved, rest * (0.5 / u));
        const V z_high = leading(z), z_low = (z - z_high) - where(~halved, rest);
        const V main_high = c0_high * (u_high * z_high);
        const V main_low = c0_high * (u_high * z_low + u_low * z) + c0_low * (u * z);
        const V sum = u + main_high;
        const V sum_error = (u - sum) + main_high;
        return {sum, (sum_error + root_error) + (main_low + u * (z * z) * asin_polynomial_tail(z)),
                halved};
    }
}

// base + (high + low) in two parts; |base| >= |high| or base = 0.
template <class Accuracy, class V>
inline DoubleDouble<V> added_angle(V base, V base_low, V high, V low) {
    const V sum = base + high;
    if constexpr (std::is_same_v<Accuracy, HA>)
        return {sum, ((base - sum) + high) + (base_low + low)};
    else return {sum, low};
}

}  // namespace kef::vm
