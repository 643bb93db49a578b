// SSE2: vectors of one block. Included by simd.h alone.
#pragma once

namespace KEF_VM {

inline constexpr bool is_fused = false;
// Nothing rounds to an integral value.
inline constexpr bool has_to_integral = false;
template <int mode> doubles to_integral(doubles x);
template <int mode> floats to_integral(floats x);

inline unsigned bits(ints verdict) { return _mm_movemask_ps((__m128)verdict); }
inline unsigned bits(longs verdict) { return _mm_movemask_pd((__m128d)verdict); }

inline doubles square_root(doubles x) { return (doubles)_mm_sqrt_pd((__m128d)x); }
inline floats square_root(floats x) { return (floats)_mm_sqrt_ps((__m128)x); }

inline doubles minimum(doubles x, doubles y) { return (doubles)_mm_min_pd((__m128d)x, (__m128d)y); }
inline floats minimum(floats x, floats y) { return (floats)_mm_min_ps((__m128)x, (__m128)y); }
inline doubles maximum(doubles x, doubles y) { return (doubles)_mm_max_pd((__m128d)x, (__m128d)y); }
inline floats maximum(floats x, floats y) { return (floats)_mm_max_ps((__m128)x, (__m128)y); }

// x > y by the instruction itself: the compiler turns x > constant around, which takes
// two more instructions.
inline ints greater(ints x, ints y) {
    asm("pcmpgtd %1, %0" : "+x"(x) : "xm"(y));
    return x;
}

// All bits of the lanes whose sign bit is set.
inline ints sign_mask(ints x) { return x >> 31; }
inline longs sign_mask(longs x) {
    const ints signs = (ints)x >> 31;
    return (longs)in_blocks<1, 1, 3, 3>(signs, signs);
}

// The lanes of `mask` from x, the others from y.
inline doubles select(longs mask, doubles x, doubles y) {
    return (doubles)(((longs)x & mask) | ((longs)y & ~mask));
}
inline floats select(ints mask, floats x, floats y) {
    return (floats)(((ints)x & mask) | ((ints)y & ~mask));
}

// Conversions: floats as two vectors of doubles and back (rounded to nearest); integers of 32 bits
// from floats by truncation, to floats, and to doubles from those in the odd places.
// As many floats as fill a vector when they are doubles.
inline doubles load_widened(const float* p) {
    const auto* two = reinterpret_cast<const __m128i*>(p);
    return (doubles)_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(two)));
}
inline DoublesPair widen(floats x) {
    return {(doubles)_mm_cvtps_pd((__m128)x),
            (doubles)_mm_cvtps_pd(_mm_movehl_ps((__m128)x, (__m128)x))};
}
inline floats narrow(doubles low, doubles high) {
    return (floats)_mm_movelh_ps(_mm_cvtpd_ps((__m128d)low), _mm_cvtpd_ps((__m128d)high));
}
inline DoublesPair widen(ints x) {
    return {(doubles)_mm_cvtepi32_pd((__m128i)x),
            (doubles)_mm_cvtepi32_pd(_mm_unpackhi_epi64((__m128i)x, (__m128i)x))};
}
inline ints truncated_to_ints(floats x) { return (ints)_mm_cvttps_epi32((__m128)x); }
inline floats to_floats(ints x) { return (floats)_mm_cvtepi32_ps((__m128i)x); }
inline doubles odd_to_doubles(ints x) {
    return (doubles)_mm_cvtepi32_pd((__m128i)__builtin_shufflevector(x, x, 1, 3, 1, 3));
}

// The products of the low halves of lanes.
inline ulongs low_products(ulongs x, ulongs y) {
    return (ulongs)_mm_mul_epu32((__m128i)x, (__m128i)y);
}

inline constexpr bool has_lookup = false;  // simd_avx512.h
doubles looked_up(const double*, longs);

// A vector of blocks __m128d, which f(0), f(1), ... give.
template <class F> inline doubles of_blocks(F f) { return (doubles)f(0); }

// 0 < count < lanes elements, padded with the last one, and the first `count` to memory. Never
// through memory: a load of what narrower stores have just written stalls.
inline doubles load_some(const double* p, int) { return all(*p); }
inline floats load_some(const float* p, int count) {
    const floats last = all(p[count - 1]);
    if (count == 1) return last;
    return (floats)_mm_loadl_pi((__m128)last, reinterpret_cast<const __m64*>(p));
}
inline void store_some(double* p, int, doubles x) { *p = x[0]; }
inline void store_some(float* p, int count, floats x) {
    if (count == 1) *p = x[0];
    else _mm_storel_pi(reinterpret_cast<__m64*>(p), (__m128)x);
    if (count == 3) p[2] = x[2];
}

}  // namespace KEF_VM
