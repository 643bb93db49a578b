// Rounding to integral values, for every number: by the processor's operation where it has one.
// Else by an addend, which is zero beyond the last fraction bit, and for infinities and NaN: the
// value stays as it is. The sign of a zero result is the argument's.
#pragma once

#include <limits>

#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

inline doubles with_sign(doubles magnitude, doubles x) {
    return (doubles)((longs)magnitude | sign_bit(x));
}
inline floats with_sign(floats magnitude, floats x) {
    return (floats)((ints)magnitude | sign_bit(x));
}

inline Marked with_sign(Marked x, floats sign) { return {with_sign(x.result, sign), x.marks}; }

// Where the mask of a comparison is set, `value`, else 0.
inline doubles where(longs mask, doubles value) { return (doubles)(mask & (longs)value); }
inline floats where(ints mask, floats value) { return (floats)(mask & (ints)value); }

// |x| to the nearest integer, ties to even; `fractions`: lanes |x| < integral_from.
template <class T> inline Vector<T> nearest_magnitude(Vector<T> x, auto fractions) {
    const Vector<T> shifter = where(fractions, all(Format<T>::integral_from));
    return (absolute(x) + shifter) - shifter;
}
template <class T> inline Vector<T> nearest_magnitude(Vector<T> x) {
    return nearest_magnitude<T>(x, absolute(x) < all(Format<T>::integral_from));
}

template <class T> inline Vector<T> nearest(Vector<T> x) {
    if constexpr (has_to_integral) return to_integral<to_nearest | no_flags>(x);
    return with_sign(nearest_magnitude<T>(x), x);
}

// The same without a comparison of floating-point numbers, which would raise invalid for a
// NaN: no flag but inexact, where the value changes.
inline doubles nearest_with_flags(doubles x) {
    if constexpr (has_to_integral) return to_integral<to_nearest>(x);
    const ints fractions = magnitude((ints)x) < 0x43300000;
    return with_sign(
        nearest_magnitude<double>(x, (longs)in_blocks<1, 1, 3, 3>(fractions, fractions)), x);
}
inline floats nearest_with_flags(floats x) {
    if constexpr (has_to_integral) return to_integral<to_nearest>(x);
    return with_sign(nearest_magnitude<float>(x, magnitude((ints)x) < 0x4B000000), x);
}

inline doubles truncated(doubles x) {
    if constexpr (has_to_integral) return to_integral<to_zero | no_flags>(x);
    const doubles t = nearest_magnitude<double>(x);
    return with_sign(t - where(t > absolute(x), all(1.0)), x);
}
// By conversion; the difference makes a NaN quiet.
inline floats truncated(floats x) {
    if constexpr (has_to_integral) return to_integral<to_zero | no_flags>(x);
    const floats t = to_floats(truncated_to_ints(x));
    const floats fraction = where(absolute(x) < all(Format<float>::integral_from), x - t);
    return with_sign(x - fraction, x);
}

template <class T> inline Vector<T> floored(Vector<T> x) {
    if constexpr (has_to_integral) return to_integral<downwards | no_flags>(x);
    const Vector<T> t = nearest<T>(x);
    return t - where(t > x, all(T(1)));  // a zero keeps its sign
}

template <class T> inline Vector<T> ceiled(Vector<T> x) {
    if constexpr (has_to_integral) return to_integral<upwards | no_flags>(x);
    const Vector<T> t = nearest<T>(x);
    return with_sign(t + where(t < x, all(T(1))), x);
}

// Halves away from zero. The largest number below 1/2 raises no other number to the next integer.
template <class T> inline Vector<T> rounded(Vector<T> x) {
    if constexpr (has_to_integral) {
        constexpr T below_half = T(0.5) - std::numeric_limits<T>::epsilon() / 4;
        return truncated(x + with_sign(all(below_half), x));
    }
    const Vector<T> t = nearest_magnitude<T>(x);
    return with_sign(t + where(absolute(x) - t == all(T(0.5)), all(T(1))), x);
}

}  // namespace KEF_VM
