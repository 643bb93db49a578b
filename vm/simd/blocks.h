// Single blocks of a vector, for what comes in pairs of doubles or waits for the pair before it,
// and what makes one of the blocks of a vector.
#pragma once

#include <type_traits>

#include "vm/simd/products.h"

namespace KEF_VM {

inline constexpr int blocks = vector_bytes / 16;
template <class T> using Block = std::conditional_t<sizeof(T) == sizeof(double), d2, f4>;

// A vector of any size, unaligned.
template <class V> inline V load_as(const Element<V>* p) {
    using Anywhere [[gnu::aligned(alignof(Element<V>)), gnu::may_alias]] = V;
    return *reinterpret_cast<const Anywhere*>(p);
}

// The same number in both lanes.
inline d2 both(double x) { return filled<d2>(x); }

// x in every block, and block i of x.
inline doubles in_all_blocks(d2 x) {
    return of_blocks([&](int) { return (__m128d)x; });
}
template <int i> inline d2 block(doubles x) {
    return __builtin_shufflevector(x, x, 2 * i, 2 * i + 1);
}
// An operation, all over the blocks of x.
template <class Op> inline d2 over_blocks(doubles x, Op op) {
    if constexpr (blocks == 1) return (d2)x;
    else if constexpr (blocks == 2) return op(block<0>(x), block<1>(x));
    else return op(op(block<0>(x), block<1>(x)), op(block<2>(x), block<3>(x)));
}

#if KEF_VECTOR_BYTES > 16
// What stands in the file of the instruction set, of a block.
inline d2 multiply_add(d2 a, d2 b, d2 c) {
    return (d2)_mm_fmadd_pd((__m128d)a, (__m128d)b, (__m128d)c);
}

inline unsigned bits(i4 verdict) { return _mm_movemask_ps((__m128)verdict); }
inline unsigned bits(l2 verdict) { return _mm_movemask_pd((__m128d)verdict); }

inline d2 square_root(d2 x) { return (d2)_mm_sqrt_pd((__m128d)x); }

inline d2 minimum(d2 x, d2 y) { return (d2)_mm_min_pd((__m128d)x, (__m128d)y); }
inline f4 minimum(f4 x, f4 y) { return (f4)_mm_min_ps((__m128)x, (__m128)y); }
inline d2 maximum(d2 x, d2 y) { return (d2)_mm_max_pd((__m128d)x, (__m128d)y); }
inline f4 maximum(f4 x, f4 y) { return (f4)_mm_max_ps((__m128)x, (__m128)y); }

inline d2 absolute(d2 x) { return (d2)((l2)x & INT64_C(0x7FFFFFFFFFFFFFFF)); }
inline f4 absolute(f4 x) { return (f4)((i4)x & 0x7FFFFFFF); }
inline i4 sign_mask(i4 x) { return x >> 31; }
inline l2 sign_mask(l2 x) { return x >> 63; }

inline d2 select(l2 mask, d2 x, d2 y) {
    return (d2)_mm_blendv_pd((__m128d)y, (__m128d)x, (__m128d)mask);
}
inline f4 select(i4 mask, f4 x, f4 y) {
    return (f4)_mm_blendv_ps((__m128)y, (__m128)x, (__m128)mask);
}

inline void store(double* p, d2 x) { _mm_storeu_pd(p, (__m128d)x); }
inline void store(float* p, f4 x) { _mm_storeu_ps(p, (__m128)x); }
#endif

}  // namespace KEF_VM
