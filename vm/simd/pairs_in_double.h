// Complex numbers of floats in memory as doubles, a real and an imaginary vector, in blocks of 16
// bytes: what the conversions read and write needs fewer shuffles than pairs of floats taken apart.
#pragma once

#include "vm/simd/frame.h"

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

// A formula of two complex numbers on a group of either, its results as they stand in memory.
inline Two<floats> on_pairs_in_double(const float* a, const float* b, auto formula) {
    const auto two = [&](int first) {
        const auto [x, y] = load_widened_pair(a + first);
        const auto [u, v] = load_widened_pair(b + first);
        return narrow_pair(formula(x, y, u, v));
    };
    return {two(0), two(4)};
}

// The lanes where one of them is NaN.
inline floats one_is_nan(floats x, floats y) {
    return (floats)_mm_cmpunord_ps((__m128)x, (__m128)y);
}

}  // namespace KEF_VM
