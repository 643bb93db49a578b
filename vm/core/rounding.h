// Rounding to integral values, for every number: beyond the last fraction bit, and
// for infinities and NaN, the magic addend is zero and the value stays as it is.
// The sign of a zero result is the argument's.
#pragma once

#include "vm/simd/format.h"
#include "vm/simd/simd.h"

namespace kef::vm {

inline d2 with_sign(d2 magnitude, d2 x) { return (d2)((l2)magnitude | sign_bit(x)); }
inline f4 with_sign(f4 magnitude, f4 x) { return (f4)((i4)magnitude | sign_bit(x)); }

// Where the mask of a comparison is set, `value`, else 0.
inline d2 where(l2 mask, d2 value) { return (d2)(mask & (l2)value); }
inline f4 where(i4 mask, f4 value) { return (f4)(mask & (i4)value); }

// |x| to the nearest integer, ties to even; `fractions`: lanes |x| < integral_from.
template <class T> inline Vector<T> nearest_magnitude(Vector<T> x, auto fractions) {
    const Vector<T> shifter = where(fractions, all(Format<T>::integral_from));
    return (absolute(x) + shifter) - shifter;
}
template <class T> inline Vector<T> nearest_magnitude(Vector<T> x) {
    return nearest_magnitude<T>(x, absolute(x) < all(Format<T>::integral_from));
}

template <class T> inline Vector<T> nearest(Vector<T> x) {
    return with_sign(nearest_magnitude<T>(x), x);
}

// The same without a comparison of floating-point numbers, which would raise invalid for a
// NaN: no flag but inexact, where the value changes.
inline d2 nearest_with_flags(d2 x) {
    const i4 fractions = magnitude((i4)x) < 0x43300000;
    return with_sign(
        nearest_magnitude<double>(x, (l2)__builtin_shufflevector(fractions, fractions, 1, 1, 3, 3)),
        x);
}
inline f4 nearest_with_flags(f4 x) {
    return with_sign(nearest_magnitude<float>(x, magnitude((i4)x) < 0x4B000000), x);
}

inline d2 truncated(d2 x) {
    const d2 t = nearest_magnitude<double>(x);
    return with_sign(t - where(t > absolute(x), all(1.0)), x);
}
// By conversion; the difference makes a NaN quiet.
inline f4 truncated(f4 x) {
    const f4 t = (f4)_mm_cvtepi32_ps(_mm_cvttps_epi32((__m128)x));
    const f4 fraction = where(absolute(x) < all(Format<float>::integral_from), x - t);
    return with_sign(x - fraction, x);
}

template <class T> inline Vector<T> floored(Vector<T> x) {
    const Vector<T> t = nearest<T>(x);
    return t - where(t > x, all(T(1)));  // a zero keeps its sign
}

template <class T> inline Vector<T> ceiled(Vector<T> x) {
    const Vector<T> t = nearest<T>(x);
    return with_sign(t + where(t < x, all(T(1))), x);
}

// Halves away from zero.
template <class T> inline Vector<T> rounded(Vector<T> x) {
    const Vector<T> t = nearest_magnitude<T>(x);
    return with_sign(t + where(absolute(x) - t == all(T(0.5)), all(T(1))), x);
}

}  // namespace kef::vm
