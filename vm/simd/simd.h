// Four-lane and two-lane vectors as GCC vector types, so that formulas read as
// formulas: the arithmetic, bit and comparison operators are the compiler's, on
// each lane; comparisons give all-ones or zero lanes of the integer type.
#pragma once

#include <bit>
#include <cstdint>

#include <pmmintrin.h>

namespace kef::vm {

using d2 = double __attribute__((vector_size(16)));
using f4 = float __attribute__((vector_size(16)));
using i4 = std::int32_t __attribute__((vector_size(16)));
using u4 = std::uint32_t __attribute__((vector_size(16)));  // for sums that wrap
using l2 = std::int64_t __attribute__((vector_size(16)));
using u2 = std::uint64_t __attribute__((vector_size(16)));

// The vector of an element type, and its lane count.
template <class T> struct VectorOf;
template <> struct VectorOf<double> { using type = d2; };
template <> struct VectorOf<float> { using type = f4; };
template <class T> using Vector = typename VectorOf<T>::type;

inline constexpr double from_bits(std::uint64_t bits) { return std::bit_cast<double>(bits); }
inline constexpr float from_bits(std::uint32_t bits) { return std::bit_cast<float>(bits); }
inline std::uint64_t to_bits(double x) { return std::bit_cast<std::uint64_t>(x); }
inline std::uint32_t to_bits(float x) { return std::bit_cast<std::uint32_t>(x); }

// The same value in all lanes.
inline constexpr d2 all(double x) { return d2{x, x}; }
inline constexpr f4 all(float x) { return f4{x, x, x, x}; }
inline constexpr i4 all(std::int32_t x) { return i4{x, x, x, x}; }
inline constexpr l2 all(std::int64_t x) { return l2{x, x}; }

inline d2 load(const double* p) { return (d2)_mm_loadu_pd(p); }
inline f4 load(const float* p) { return (f4)_mm_loadu_ps(p); }
inline void store(double* p, d2 x) { _mm_storeu_pd(p, (__m128d)x); }
inline void store(float* p, f4 x) { _mm_storeu_ps(p, (__m128)x); }
// The low half of a vector at p, the upper one from x; and the low half to p.
inline f4 with_low_half_at(const float* p, f4 x) {
    return (f4)_mm_loadl_pi((__m128)x, reinterpret_cast<const __m64*>(p));
}
inline void store_low_half(float* p, f4 x) {
    _mm_storel_pi(reinterpret_cast<__m64*>(p), (__m128)x);
}

// The leading 32 bits (sign, exponent, top of the significand) of four elements.
inline i4 heads(d2 low, d2 high) { return __builtin_shufflevector((i4)low, (i4)high, 1, 3, 5, 7); }
inline i4 heads(f4 x) { return (i4)x; }
inline std::int32_t head(double x) { return static_cast<std::int32_t>(to_bits(x) >> 32); }
inline std::int32_t head(float x) { return static_cast<std::int32_t>(to_bits(x)); }

// A gate's verdict is the sign bit of each lane.
inline bool any_lane(i4 mask) { return _mm_movemask_ps((__m128)mask) != 0; }
inline bool all_lanes(i4 mask) { return _mm_movemask_ps((__m128)mask) == 15; }

// |x| in the bit pattern's order.
inline i4 magnitude(i4 heads) { return heads & 0x7FFFFFFF; }

// x > y by the instruction itself: the compiler turns x > constant around, which takes
// two more instructions.
inline i4 greater(i4 x, i4 y) {
    asm("pcmpgtd %1, %0" : "+x"(x) : "xm"(y));
    return x;
}

// h < low or high <= h for bit patterns, as unsigned numbers; one comparison.
inline i4 not_between(i4 h, std::uint32_t low, std::uint32_t high) {
    constexpr std::uint32_t bias = 0x80000000u;
    return greater((i4)((u4)h + (bias - low)),
                   all(static_cast<std::int32_t>(high - low - 1 + bias)));
}

inline d2 absolute(d2 x) { return (d2)((l2)x & INT64_C(0x7FFFFFFFFFFFFFFF)); }
inline f4 absolute(f4 x) { return (f4)((i4)x & 0x7FFFFFFF); }
inline l2 sign_bit(d2 x) { return (l2)x & INT64_MIN; }
inline i4 sign_bit(f4 x) { return (i4)x & INT32_MIN; }

inline d2 square_root(d2 x) { return (d2)_mm_sqrt_pd((__m128d)x); }
inline f4 square_root(f4 x) { return (f4)_mm_sqrt_ps((__m128)x); }

inline d2 minimum(d2 x, d2 y) { return (d2)_mm_min_pd((__m128d)x, (__m128d)y); }
inline f4 minimum(f4 x, f4 y) { return (f4)_mm_min_ps((__m128)x, (__m128)y); }
inline d2 maximum(d2 x, d2 y) { return (d2)_mm_max_pd((__m128d)x, (__m128d)y); }
inline f4 maximum(f4 x, f4 y) { return (f4)_mm_max_ps((__m128)x, (__m128)y); }

// All bits of the lanes whose sign bit is set.
inline l2 sign_mask(l2 x) {
    const i4 signs = (i4)x >> 31;
    return (l2)__builtin_shufflevector(signs, signs, 1, 1, 3, 3);
}
inline i4 sign_mask(i4 x) { return x >> 31; }

// x, or what is nearest to it in [-bound, bound].
template <class V, class T> inline V within(V x, T bound) {
    return minimum(maximum(x, all(-bound)), all(bound));
}

// The lanes of `mask` from x, the others from y.
inline d2 select(l2 mask, d2 x, d2 y) { return (d2)(((l2)x & mask) | ((l2)y & ~mask)); }
inline f4 select(i4 mask, f4 x, f4 y) { return (f4)(((i4)x & mask) | ((i4)y & ~mask)); }

// Four floats as two vectors of doubles and back (rounded to nearest).
struct d2x2 {
    d2 low, high;
};
inline d2x2 widen(f4 x) {
    return {(d2)_mm_cvtps_pd((__m128)x), (d2)_mm_cvtps_pd(_mm_movehl_ps((__m128)x, (__m128)x))};
}
inline f4 narrow(d2 low, d2 high) {
    return (f4)_mm_movelh_ps(_mm_cvtpd_ps((__m128d)low), _mm_cvtpd_ps((__m128d)high));
}

inline f4 narrow(d2x2 x) { return narrow(x.low, x.high); }

// Lanes where a double lies half-way between two floats of the normal range, or so near
// that its last two bits decide: from two places below to one above.
inline i4 midpoints(d2 low, d2 high) {
    const u4 tails = (u4)__builtin_shufflevector((i4)low, (i4)high, 0, 2, 4, 6) + 2u;
    return (i4)(tails & 0x1FFFFFFCu) == 0x10000000;
}

// high + low rounded to single precision, where high is the sum rounded to double:
// at a midpoint `low` decides.
inline float narrow(double high, double low) {
    const bool midpoint = (to_bits(high) & 0x1FFFFFFF) == 0x10000000;
    if (midpoint && low != 0) high = from_bits(to_bits(high) + ((low > 0) == (high > 0) ? 1 : -1));
    return static_cast<float>(high);
}

// A single-precision formula computed in double precision.
template <class Formula> inline f4 in_double(f4 x, Formula formula) {
    const d2x2 wide = widen(x);
    return narrow(formula(wide.low), formula(wide.high));
}

}  // namespace kef::vm
