// AVX2 with fused multiply-add: vectors of two blocks. Included by simd.h alone.
#pragma once

namespace KEF_VM {

inline constexpr bool is_fused = true;
KEF_FUSED_OPERATIONS(256)

// To an integral value in a direction of simd.h.
inline constexpr bool has_to_integral = true;
template <int mode> inline doubles to_integral(doubles x) {
    return (doubles)_mm256_round_pd((__m256d)x, mode);
}
template <int mode> inline floats to_integral(floats x) {
    return (floats)_mm256_round_ps((__m256)x, mode);
}

inline unsigned bits(ints verdict) { return _mm256_movemask_ps((__m256)verdict); }
inline unsigned bits(longs verdict) { return _mm256_movemask_pd((__m256d)verdict); }

inline doubles square_root(doubles x) { return (doubles)_mm256_sqrt_pd((__m256d)x); }
inline floats square_root(floats x) { return (floats)_mm256_sqrt_ps((__m256)x); }

inline doubles minimum(doubles x, doubles y) {
    return (doubles)_mm256_min_pd((__m256d)x, (__m256d)y);
}
inline floats minimum(floats x, floats y) { return (floats)_mm256_min_ps((__m256)x, (__m256)y); }
inline doubles maximum(doubles x, doubles y) {
    return (doubles)_mm256_max_pd((__m256d)x, (__m256d)y);
}
inline floats maximum(floats x, floats y) { return (floats)_mm256_max_ps((__m256)x, (__m256)y); }
inline ints greater(ints x, ints y) { return x > y; }

inline ints sign_mask(ints x) { return x >> 31; }
inline longs sign_mask(longs x) { return INT64_C(0) > x; }

inline doubles select(longs mask, doubles x, doubles y) {
    return (doubles)_mm256_blendv_pd((__m256d)y, (__m256d)x, (__m256d)mask);
}
inline floats select(ints mask, floats x, floats y) {
    return (floats)_mm256_blendv_ps((__m256)y, (__m256)x, (__m256)mask);
}

// As many floats as fill a vector when they are doubles.
inline doubles load_widened(const float* p) { return (doubles)_mm256_cvtps_pd(_mm_loadu_ps(p)); }
inline DoublesPair widen(floats x) {
    return {(doubles)_mm256_cvtps_pd(_mm256_castps256_ps128((__m256)x)),
            (doubles)_mm256_cvtps_pd(_mm256_extractf128_ps((__m256)x, 1))};
}
inline floats narrow(doubles low, doubles high) {
    return (floats)_mm256_set_m128(_mm256_cvtpd_ps((__m256d)high), _mm256_cvtpd_ps((__m256d)low));
}
inline DoublesPair widen(ints x) {
    return {(doubles)_mm256_cvtepi32_pd(_mm256_castsi256_si128((__m256i)x)),
            (doubles)_mm256_cvtepi32_pd(_mm256_extracti128_si256((__m256i)x, 1))};
}
inline ints truncated_to_ints(floats x) { return (ints)_mm256_cvttps_epi32((__m256)x); }
inline floats to_floats(ints x) { return (floats)_mm256_cvtepi32_ps((__m256i)x); }
inline doubles odd_to_doubles(ints x) {
    const __m256i odd =
        _mm256_permutevar8x32_epi32((__m256i)x, _mm256_setr_epi32(1, 3, 5, 7, 1, 3, 5, 7));
    return (doubles)_mm256_cvtepi32_pd(_mm256_castsi256_si128(odd));
}

inline ulongs low_products(ulongs x, ulongs y) {
    return (ulongs)_mm256_mul_epu32((__m256i)x, (__m256i)y);
}

inline constexpr bool has_lookup = false;  // simd_avx512.h
doubles looked_up(const double*, longs);

// A vector of blocks __m128d, which f(0) and f(1) give.
template <class F> inline doubles of_blocks(F f) {
    return (doubles)_mm256_insertf128_pd(_mm256_castpd128_pd256(f(0)), f(1), 1);
}

// The lanes before `count`.
inline longs first_longs(int count) { return longs{0, 1, 2, 3} < std::int64_t{count}; }
inline ints first_ints(int count) { return ints{0, 1, 2, 3, 4, 5, 6, 7} < count; }

inline doubles load_some(const double* p, int count) {
    const __m256i mask = (__m256i)first_longs(count);
    return (doubles)_mm256_blendv_pd(_mm256_broadcast_sd(p + count - 1),
                                     _mm256_maskload_pd(p, mask), (__m256d)mask);
}
inline floats load_some(const float* p, int count) {
    const __m256i mask = (__m256i)first_ints(count);
    return (floats)_mm256_blendv_ps(_mm256_broadcast_ss(p + count - 1), _mm256_maskload_ps(p, mask),
                                    (__m256)mask);
}
inline void store_some(double* p, int count, doubles x) {
    _mm256_maskstore_pd(p, (__m256i)first_longs(count), (__m256d)x);
}
inline void store_some(float* p, int count, floats x) {
    _mm256_maskstore_ps(p, (__m256i)first_ints(count), (__m256)x);
}

}  // namespace KEF_VM
