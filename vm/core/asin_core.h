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

namespace KEF_VM {

// asin u = high + low, LA high + high low, and the lanes where y > 1/2.
template <class V> struct AsinParts {
    V high, low;
    BitsOf<V> halved;
};

// P in single precision and in double precision; relative to asin u the errors are
//   double  HA 2^-62.7   LA 2^-54.0
//   single               LA 2^-25.8
inline floats asin_polynomial(floats z) {
    return polynomial(
        z, coefficients(0x3E2AAAAFu, 0x3D999344u, 0x3D385F95u, 0x3CD8F1D6u, 0x3D1C9369u));
}
inline doubles asin_polynomial(doubles z) {
    return polynomial_by_pairs(
        z, z * z,
        coefficients(0x3FC555555555554E, 0x3FB3333333337233, 0x3FA6DB6DB67F6D9F, 0x3F9F1C71FBD29FB9,
                     0x3F96E8B264D46847, 0x3F91C5997C35743C, 0x3F8C86A22CDA4433, 0x3F8856073C1AC801,
                     0x3F7FD1151B1A537B, 0x3F9087182F3F3191, 0xBF866027474FF315,
                     0x3F9CFA0DD1B3CDAE));
}
// HA: P(z) = c0 + z Q(z); this is Q.
inline doubles asin_polynomial_tail(doubles z) {
    return polynomial_by_pairs(
        z, z * z,
        coefficients(0x3FB33333333334B7, 0x3FA6DB6DB6D96755, 0x3F9F1C71C85D5E59, 0x3F96E8B9F6B519E4,
                     0x3F91C4F25E7D100C, 0x3F8C98BA0F745C4A, 0x3F87B38D75AEA071, 0x3F839B3AF816CE92,
                     0x3F8399C678D4E690, 0x3F61AF3BC8E5F7E0, 0x3F961A54294FE7B0, 0xBF967DE4244757A4,
                     0x3F9FFBE4A997A904));
}

// EP, |x| <= 1, without cases: asin x = x F(1 - s), s = sqrt(1 - x^2), relative error 2^-13.1;
// acos y = sqrt(1 - y) G(y) for y = |x|, relative error 2^-14.1. Both exact at 0.
inline floats asin_short(floats x) {
    const floats u = 1.0f - square_root(negative_multiply_add(x, x, 1.0f));
    return x * polynomial(u, coefficients(0x3F800000u, 0x3EA8D96Fu, 0x3E297202u, 0xBCE8AF3Cu,
                                          0x3DD47EF2u));
}
inline floats acos_short(floats x) {
    constexpr auto g = coefficients(0x3FC90FDBu, 0xBE59C6DDu, 0x3D9A63ACu, 0xBC9EB3A8u);
    const floats y = absolute(x);
    const floats a = square_root(1.0f - y) * polynomial(y, g);
    return where((ints)x >> 31, all(static_cast<float>(pi))) + flipped(a, sign_bit(x));
}

// 0 <= y <= 1; HA < 1.
template <class Accuracy, class V> inline AsinParts<V> asin_parts(V y) {
    using T = Element<V>;
    constexpr double c0 = from_bits(UINT64_C(0x3FC5555555555555));  // of HA
    const V half = all(T(0.5)) - y * T(0.5);
    const auto halved = y > T(0.5);
    const V z = minimum(half, y * y), u = minimum(square_root(half), y);  // half, root where halved
    if constexpr (!std::is_same_v<Accuracy, HA>) {
        return {u, z * asin_polynomial(z), halved};
    } else if constexpr (is_fused) {
        const V rest = negative_multiply_add(u, u, z);  // z - u^2
        // The root's error where there is a root, and the square's where not.
        const V root_error = where(halved, rest * (0.5 / u)), square_error = where(~halved, rest);
        const V cube = u * z, main = c0 * cube;
        const V cube_low = negative_multiply_add(u, square_error, multiply_subtract(u, z, cube));
        const V main_low = multiply_add(c0, cube_low, multiply_subtract(c0, cube, main));
        const V sum = u + main;
        return {sum,
                (((u - sum) + main) + root_error) +
                    multiply_add(cube * z, asin_polynomial_tail(z), main_low),
                halved};
    } else {
        // u z c0, up to 0.04 u, needs more than a double: the leading 17 bits of u and
        // z and 19 bits of c0 multiply exactly.
        constexpr double c0_high = from_bits(UINT64_C(0x3FC5555400000000)), c0_low = c0 - c0_high;
        const V u_high = leading<36>(u), u_low = u - u_high;
        const V rest = (z - u_high * u_high) - (u + u_high) * u_low;  // z - u^2
        // The root's error where there is a root, and the square's where not.
        const V root_error = where(halved, rest * (0.5 / u));
        const V z_high = leading<36>(z), z_low = (z - z_high) - where(~halved, rest);
        const V main_high = c0_high * (u_high * z_high);
        const V main_low = c0_high * (u_high * z_low + u_low * z) + c0_low * (u * z);
        const V sum = u + main_high;
        const V sum_error = (u - sum) + main_high;
        return {sum, (sum_error + root_error) + (main_low + u * (z * z) * asin_polynomial_tail(z)),
                halved};
    }
}

// base + factor asin u, |base| >= |factor asin u| or base = 0; HA in two parts.
template <class Accuracy, class V>
inline auto added_angle(V base, V base_low, V factor, const AsinParts<V>& part) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const V high = factor * part.high, sum = base + high;
        return DoubleDouble<V>{sum, ((base - sum) + high) + (base_low + factor * part.low)};
    } else {
        if constexpr (is_fused)
            return multiply_add(factor, multiply_add(part.high, part.low, part.high), base);
        return (base + factor * part.high) + factor * (part.high * part.low);
    }
}

}  // namespace KEF_VM
