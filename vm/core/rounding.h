// Rounding to integral values, for every number: beyond the last fraction bit, and
// for infinities and NaN, the magic addend is zero and the value stays as it is.
// The sign of a zero result is the argument's.
#pragma once

#include "vm/format.h"
#include "vm/simd.h"

namespace kef::vm {

// Lanes where |x| < Format<T>::integral_from, by bits: no comparison of NaN.
inline l2 has_fraction(d2 x) {
    constexpr std::int32_t bound = 0x43300000;
    const i4 below = magnitude((i4)x) < bound;
    return (l2)__builtin_shufflevector(below, below, 1, 1, 3, 3);
}
inline i4 has_fraction(f4 x) { return magnitude((i4)x) < 0x4B000000; }

inline d2 with_sign(d2 magnitude, d2 x) { return (d2)((l2)magnitude | sign_bit(x)); }
inline f4 with_sign(f4 magnitude, f4 x) { return (f4)((i4)magnitude | sign_bit(x)); }

// Where the mask of a comparison is set, `value`, else 0.
inline d2 where(l2 mask, d2 value) { return (d2)(mask & (l2)value); }
inline f4 where(i4 mask, f4 value) { return (f4)(mask & (i4)value); }

// |x| to the nearest integer, ties to even.
template <class T>
inline Vector<T> nearest_magnitude(Vector<T> x) {
    const Vector<T> shifter = where(has_fraction(x), all(Format<T>::integral_from));
    return (absolute(x) + shifter) - shifter;
}

template <class T>
inline Vector<T> nearest(Vector<T> x) {
    return with_sign(nearest_magnitude<T>(x), x);
}

template <class T>
inline Vector<T> truncated(Vector<T> x) {
    const Vector<T> t = nearest_magnitude<T>(x);
    return with_sign(t - where(t > absolute(x), all(T(1))), x);
}

template <class T>
inline Vector<T> floored(Vector<T> x) {
    const Vector<T> t = nearest<T>(x);
    return with_sign(t - where(t > x, all(T(1))), x);
}

// Halves away from zero.
template <class T>
inline Vector<T> rounded(Vector<T> x) {
    const Vector<T> t = nearest_magnitude<T>(x);
    return with_sign(t + where(absolute(x) - t == all(T(0.5)), all(T(1))), x);
}

}  // namespace kef::vm
