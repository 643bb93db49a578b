// AVX-512 (F, BW, DQ, VL): vectors of four blocks. Included by simd.h alone.
#pragma once

namespace KEF_VM {

inline constexpr bool is_fused = true;
KEF_FUSED_OPERATIONS(512)

// To an integral value in a direction of simd.h.
inline constexpr bool has_to_integral = true;
template <int mode> inline doubles to_integral(doubles x) {
    return (doubles)_mm512_roundscale_pd((__m512d)x, mode);
}
template <int mode> inline floats to_integral(floats x) {
    return (floats)_mm512_roundscale_ps((__m512)x, mode);
}

// The compiler does not know the operation's result of a constant, such as no lanes at all.
inline unsigned constant_bits(auto verdict) {
    unsigned result = 0;
#pragma GCC unroll 16
    for (unsigned i = 0; i < sizeof verdict / sizeof verdict[0]; ++i)
        result |= unsigned{verdict[i] < 0} << i;
    return result;
}
inline unsigned bits(ints verdict) {
    if (__builtin_constant_p((__m512i)verdict)) return constant_bits(verdict);
    return _mm512_movepi32_mask((__m512i)verdict);
}
inline unsigned bits(longs verdict) {
    if (__builtin_constant_p((__m512i)verdict)) return constant_bits(verdict);
    return _mm512_movepi64_mask((__m512i)verdict);
}

inline doubles square_root(doubles x) { return (doubles)_mm512_sqrt_pd((__m512d)x); }
inline floats square_root(floats x) { return (floats)_mm512_sqrt_ps((__m512)x); }

inline doubles minimum(doubles x, doubles y) {
    return (doubles)_mm512_min_pd((__m512d)x, (__m512d)y);
}
inline floats minimum(floats x, floats y) { return (floats)_mm512_min_ps((__m512)x, (__m512)y); }
inline doubles maximum(doubles x, doubles y) {
    return (doubles)_mm512_max_pd((__m512d)x, (__m512d)y);
}
inline floats maximum(floats x, floats y) { return (floats)_mm512_max_ps((__m512)x, (__m512)y); }
inline ints greater(ints x, ints y) { return x > y; }

inline ints sign_mask(ints x) { return x >> 31; }
inline longs sign_mask(longs x) { return x >> 63; }

// Not by the intrinsic: the compiler keeps what a comparison gives in a mask register for it, and
// sees through the sense of the comparison.
inline doubles select(longs mask, doubles x, doubles y) { return mask ? x : y; }
inline floats select(ints mask, floats x, floats y) { return mask ? x : y; }

// As many floats as fill a vector when they are doubles.
inline doubles load_widened(const float* p) { return (doubles)_mm512_cvtps_pd(_mm256_loadu_ps(p)); }
inline DoublesPair widen(floats x) {
    return {(doubles)_mm512_cvtps_pd(_mm512_castps512_ps256((__m512)x)),
            (doubles)_mm512_cvtps_pd(_mm512_extractf32x8_ps((__m512)x, 1))};
}
inline floats narrow(doubles low, doubles high) {
    return (floats)_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps((__m512d)low)),
                                      _mm512_cvtpd_ps((__m512d)high), 1);
}
inline DoublesPair widen(ints x) {
    return {(doubles)_mm512_cvtepi32_pd(_mm512_castsi512_si256((__m512i)x)),
            (doubles)_mm512_cvtepi32_pd(_mm512_extracti32x8_epi32((__m512i)x, 1))};
}
inline ints truncated_to_ints(floats x) { return (ints)_mm512_cvttps_epi32((__m512)x); }
inline floats to_floats(ints x) { return (floats)_mm512_cvtepi32_ps((__m512i)x); }
inline doubles odd_to_doubles(ints x) {
    return (doubles)_mm512_cvtepi32_pd(_mm512_cvtepi64_epi32(_mm512_srli_epi64((__m512i)x, 32)));
}

inline ulongs low_products(ulongs x, ulongs y) {
    return (ulongs)_mm512_mul_epu32((__m512i)x, (__m512i)y);
}

// Of 16 numbers that of each lane's last four bits.
inline constexpr bool has_lookup = true;
inline doubles looked_up(const double* table, longs lane) {
    return (doubles)_mm512_permutex2var_pd(_mm512_load_pd(table), (__m512i)lane,
                                           _mm512_load_pd(table + 8));
}

// A vector of blocks __m128d, which f(0) to f(3) give.
template <class F> inline doubles of_blocks(F f) {
    const __m256d low = _mm256_insertf128_pd(_mm256_castpd128_pd256(f(0)), f(1), 1);
    const __m256d high = _mm256_insertf128_pd(_mm256_castpd128_pd256(f(2)), f(3), 1);
    return (doubles)_mm512_insertf64x4(_mm512_castpd256_pd512(low), high, 1);
}

inline doubles load_some(const double* p, int count) {
    return (doubles)_mm512_mask_loadu_pd(_mm512_set1_pd(p[count - 1]), (1u << count) - 1, p);
}
inline floats load_some(const float* p, int count) {
    return (floats)_mm512_mask_loadu_ps(_mm512_set1_ps(p[count - 1]), (1u << count) - 1, p);
}
inline void store_some(double* p, int count, doubles x) {
    _mm512_mask_storeu_pd(p, (1u << count) - 1, (__m512d)x);
}
inline void store_some(float* p, int count, floats x) {
    _mm512_mask_storeu_ps(p, (1u << count) - 1, (__m512)x);
}

}  // namespace KEF_VM
