// Complex numbers of floats in memory as doubles, a real and an imaginary vector, in blocks of 16
// bytes: what the conversions read and write needs fewer shuffles than pairs of floats taken apart.
#pragma once

#include "vm/simd/pairs.h"

namespace KEF_VM {

// The number at p. By the instruction itself: the compiler loads apart, which takes one more.
inline doubles load_widened_number(const float* p) {
    doubles x;
    asm("cvtps2pd %1, %0" : "=x"(x) : "m"(*reinterpret_cast<const __m64*>(p)));
    return x;
}

// Two numbers from p on, and rounded to floats again.
inline Two<doubles> load_widened_pair(const float* p) {
    return unzip(load_widened_number(p), load_widened_number(p + 2));
}
inline floats narrow_pair(Two<doubles> x) {
    return (floats)_mm_unpacklo_ps(_mm_cvtpd_ps((__m128d)x.first), _mm_cvtpd_ps((__m128d)x.second));
}

// The lanes where one of them is NaN.
inline ints one_is_nan(floats x, floats y) { return (ints)_mm_cmpunord_ps((__m128)x, (__m128)y); }

}  // namespace KEF_VM
