// Vectors of KEF_VECTOR_BYTES as GCC vector types, so that formulas read as formulas: the
// arithmetic, bit and comparison operators are the compiler's, on each lane; comparisons give
// all-ones or zero lanes of the integer type. No formula names a width. What operators cannot say
// stands in one file an instruction set, under the same names.
//
// A vector is made of blocks of 16 bytes. Shuffles that stay inside the blocks cost one cheap
// operation at every width, and most of what is here is made of them.
#pragma once

#include <bit>
#include <cstdint>
#include <utility>

#include <immintrin.h>

#ifndef KEF_VECTOR_BYTES
#if __AVX512F__ && __AVX512DQ__ && __AVX512VL__
#define KEF_VECTOR_BYTES 64
#elif __AVX2__ && __FMA__
#define KEF_VECTOR_BYTES 32
#else
#define KEF_VECTOR_BYTES 16
#endif
#endif

// What depends on the width has names of its own for each: a library that holds two of them has two
// functions where both have one, and not the linker's choice. Tables stand in kef::vm.
#if KEF_VECTOR_BYTES == 64
#define KEF_VM kef::vm::inline bytes_64
#elif KEF_VECTOR_BYTES == 32
#define KEF_VM kef::vm::inline bytes_32
#else
#define KEF_VM kef::vm::inline bytes_16
#endif

// For helpers that give a double by value: on i386 one that is not inlined gives it in an x87
// register, where a subnormal number traps under the caller's masks.
#define KEF_INLINE [[gnu::always_inline]] inline

namespace KEF_VM {

inline constexpr int vector_bytes = KEF_VECTOR_BYTES;
using doubles = double __attribute__((vector_size(vector_bytes)));
using floats = float __attribute__((vector_size(vector_bytes)));
using ints = std::int32_t __attribute__((vector_size(vector_bytes)));
using uints = std::uint32_t __attribute__((vector_size(vector_bytes)));  // for sums that wrap
using longs = std::int64_t __attribute__((vector_size(vector_bytes)));
using ulongs = std::uint64_t __attribute__((vector_size(vector_bytes)));
using ushorts = std::uint16_t __attribute__((vector_size(vector_bytes)));

// The vector of an element type and its lane count; a vector's element type, and the integers of
// its lanes.
template <class T> struct VectorOf;
template <> struct VectorOf<double> { using type = doubles; };
template <> struct VectorOf<float> { using type = floats; };
template <class T> using Vector = typename VectorOf<T>::type;
template <class T> inline constexpr int lanes = vector_bytes / sizeof(T);
template <class V> using Element = std::remove_cvref_t<decltype(std::declval<V&>()[0])>;
template <class V> using BitsOf = decltype(V{} > V{});

inline constexpr double from_bits(std::uint64_t bits) { return std::bit_cast<double>(bits); }
inline constexpr float from_bits(std::uint32_t bits) { return std::bit_cast<float>(bits); }
inline std::uint64_t to_bits(double x) { return std::bit_cast<std::uint64_t>(x); }
inline std::uint32_t to_bits(float x) { return std::bit_cast<std::uint32_t>(x); }

// The same value in all lanes.
template <class V> inline constexpr V filled(V x) { return x; }
template <class V> inline constexpr V filled(Element<V> x) {
    return [x]<std::size_t... i>(std::index_sequence<i...>) {
        return V{(static_cast<void>(i), x)...};
    }
    (std::make_index_sequence<sizeof(V) / sizeof x>());
}
inline constexpr doubles all(double x) { return filled<doubles>(x); }
inline constexpr floats all(float x) { return filled<floats>(x); }
inline constexpr ints all(std::int32_t x) { return filled<ints>(x); }
inline constexpr longs all(std::int64_t x) { return filled<longs>(x); }

// Two vectors of one kind.
template <class V> struct Two { V first, second; };

// Unaligned.
using DoublesAnywhere = doubles __attribute__((aligned(8), may_alias));
using FloatsAnywhere = floats __attribute__((aligned(4), may_alias));
inline doubles load(const double* p) { return *reinterpret_cast<const DoublesAnywhere*>(p); }
inline floats load(const float* p) { return *reinterpret_cast<const FloatsAnywhere*>(p); }
inline void store(double* p, doubles x) { *reinterpret_cast<DoublesAnywhere*>(p) = x; }
inline void store(float* p, floats x) { *reinterpret_cast<FloatsAnywhere*>(p) = x; }

// Lane j of each block is lane pattern[j] of the two blocks of x and y, one behind the other.
template <int... pattern, class V> inline V in_blocks(V x, V y) {
    constexpr int p[] = {pattern...}, size = sizeof...(pattern), count = sizeof(V) / sizeof(x[0]);
    constexpr auto from = [](int i) {
        const int j = p[i % size], block = i - i % size;
        return j < size ? block + j : count + block + j - size;
    };
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return __builtin_shufflevector(x, y, from(i)...);
    }
    (std::make_integer_sequence<int, count>());
}

// The leading 32 bits (sign, exponent, top of the significand) and the last 32 bits of as many
// elements as floats fill a vector. Two vectors of doubles alternate by half-blocks; `in_order`
// gives the elements' order.
inline ints heads(doubles low, doubles high) {
    return in_blocks<1, 3, 5, 7>((ints)low, (ints)high);
}
inline ints heads(floats x) { return (ints)x; }
inline ints tails(doubles low, doubles high) {
    return in_blocks<0, 2, 4, 6>((ints)low, (ints)high);
}
inline ints in_order(ints heads_of_doubles) {
    constexpr int half = lanes<double> / 2;
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        const longs x = (longs)heads_of_doubles;
        return (ints)__builtin_shufflevector(x, x, (i < half ? 2 * i : 2 * (i - half) + 1)...);
    }
    (std::make_integer_sequence<int, lanes<double>>());
}
// Masks of heads as masks of the two vectors.
struct LongsPair {
    longs low, high;
};
inline LongsPair spread(ints mask) {
    return {(longs)in_blocks<0, 0, 1, 1>(mask, mask), (longs)in_blocks<2, 2, 3, 3>(mask, mask)};
}
// Each number twice, for the elements of the vectors that floats are widened to.
inline LongsPair doubled(ints x) {
    constexpr int half = lanes<float> / 2;
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return LongsPair{(longs)__builtin_shufflevector(x, x, (i / 2)...),
                         (longs)__builtin_shufflevector(x, x, (half + i / 2)...)};
    }
    (std::make_integer_sequence<int, lanes<float>>());
}
inline std::int32_t head(double x) { return static_cast<std::int32_t>(to_bits(x) >> 32); }
inline std::int32_t head(float x) { return static_cast<std::int32_t>(to_bits(x)); }

// |x| in the bit pattern's order.
inline ints magnitude(ints heads) { return heads & 0x7FFFFFFF; }

inline doubles absolute(doubles x) { return (doubles)((longs)x & INT64_C(0x7FFFFFFFFFFFFFFF)); }
inline floats absolute(floats x) { return (floats)((ints)x & 0x7FFFFFFF); }
inline longs sign_bit(doubles x) { return (longs)x & INT64_MIN; }
inline ints sign_bit(floats x) { return (ints)x & INT32_MIN; }
// x with the sign changed where a bit at its place is set.
template <class V> inline V flipped(V x, BitsOf<V> sign) { return (V)((BitsOf<V>)x ^ sign); }

// Floats as two vectors of doubles.
struct DoublesPair {
    doubles low, high;
};

// What `to_integral` rounds to, as the processor has it.
enum Rounding { to_nearest = 0, downwards = 1, upwards = 2, to_zero = 3, no_flags = 8 };

// Vectors of one block, for what has not been written for all widths yet.
using d2 = double __attribute__((vector_size(16)));
using f4 = float __attribute__((vector_size(16)));
using i4 = std::int32_t __attribute__((vector_size(16)));
using u4 = std::uint32_t __attribute__((vector_size(16)));
using l2 = std::int64_t __attribute__((vector_size(16)));
using u2 = std::uint64_t __attribute__((vector_size(16)));

}  // namespace KEF_VM

// In the file of an instruction set whose vectors have so many bits: a b + c, c - a b and a b - c.
#define KEF_FUSED(bits, name, operation, first, last)                                              \
    inline double name(double a, double b, double c) { return __builtin_fma(first a, b, last c); } \
    inline doubles name(doubles a, doubles b, doubles c) {                                         \
        return (doubles)_mm##bits##_##operation##_pd((__m##bits##d)a, (__m##bits##d)b,             \
                                                     (__m##bits##d)c);                             \
    }                                                                                              \
    inline floats name(floats a, floats b, floats c) {                                             \
        return (floats)_mm##bits##_##operation##_ps((__m##bits)a, (__m##bits)b, (__m##bits)c);     \
    }
#define KEF_FUSED_OPERATIONS(bits)               \
    KEF_FUSED(bits, fused, fmadd, , )            \
    KEF_FUSED(bits, fused_negative, fnmadd, -, ) \
    KEF_FUSED(bits, fused_minus, fmsub, , -)

#if KEF_VECTOR_BYTES == 64
#include "vm/simd/simd_avx512.h"
#elif KEF_VECTOR_BYTES == 32
#include "vm/simd/simd_avx2.h"
#else
#include "vm/simd/simd_sse2.h"
#endif
#undef KEF_FUSED_OPERATIONS
#undef KEF_FUSED

namespace KEF_VM {

// x + y and x * y of kernels without an edge. Of two NaNs the first operand is the result, and the
// compiler would turn operands round in one loop and not in another.
#if __AVX__
#define KEF_IN_ORDER(operation) "v" operation " %1, %0, %0"
#else
#define KEF_IN_ORDER(operation) operation " %1, %0"
#endif
inline floats sum_in_order(floats x, floats y) {
    asm(KEF_IN_ORDER("addps") : "+v"(x) : "v"(y));
    return x;
}
inline doubles sum_in_order(doubles x, doubles y) {
    asm(KEF_IN_ORDER("addpd") : "+v"(x) : "v"(y));
    return x;
}
inline floats product_in_order(floats x, floats y) {
    asm(KEF_IN_ORDER("mulps") : "+v"(x) : "v"(y));
    return x;
}
inline doubles product_in_order(doubles x, doubles y) {
    asm(KEF_IN_ORDER("mulpd") : "+v"(x) : "v"(y));
    return x;
}
#undef KEF_IN_ORDER

// A gate's verdict is the sign bit of each lane.
inline bool any_lane(ints verdict) { return bits(verdict) != 0; }
inline bool any_lane(longs verdict) { return bits(verdict) != 0; }
inline bool all_lanes(ints verdict) { return bits(verdict) == (1u << lanes<float>)-1; }
inline bool all_lanes(longs verdict) { return bits(verdict) == (1u << lanes<double>)-1; }

// Gates by differences instead of comparisons: what a comparison leaves in a mask register would
// have to come out of it and back for the verdict.
inline constexpr bool has_mask_registers = vector_bytes == 64;

// size > last, neither negative.
inline ints above(ints size, std::int32_t last) {
    if constexpr (has_mask_registers) return last - size;
    return greater(size, all(last));
}
// h < low or high <= h for bit patterns, as unsigned numbers, 0 < high - low <= 2^31.
inline ints not_between(ints h, std::uint32_t low, std::uint32_t high) {
    const std::uint32_t last = high - low - 1, bias = 0x80000000;
    if constexpr (has_mask_registers) {
        const uints from_low = (uints)h - low;
        return (ints)(from_low | (last - from_low));
    }
    return greater((ints)((uints)h + (bias - low)), all(static_cast<std::int32_t>(last + bias)));
}

// Each half of a lane as a number of 16 bits: what is nearest to it in [first, last].
inline ints within_16_bits(ints x, std::int16_t first, std::int16_t last) {
    using Shorts = std::int16_t __attribute__((vector_size(vector_bytes)));
    const Shorts low = Shorts{} + first, high = Shorts{} + last;
    Shorts y = (Shorts)x;
    y = y > low ? y : low;
    return (ints)(y < high ? y : high);
}

// x, or what is nearest to it in [-bound, bound].
template <class V, class T> inline V within(V x, T bound) {
    return minimum(maximum(x, all(-bound)), all(bound));
}

inline floats narrow(DoublesPair x) { return narrow(x.low, x.high); }
inline Two<floats> narrow(Two<doubles> low, Two<doubles> high) {
    return {narrow(low.first, high.first), narrow(low.second, high.second)};
}
template <class V> inline Two<V> select(auto mask, Two<V> x, Two<V> y) {
    return {select(mask, x.first, y.first), select(mask, x.second, y.second)};
}

// Lanes, in the order of the floats, where a double lies half-way between two floats of the normal
// range, or so near that its last bits decide: by default from two places below to one above.
template <int last = 2> inline ints midpoints(DoublesPair x) {
    constexpr std::uint32_t places = 1u << last;
    const uints rest = (uints)tails(x.low, x.high) + places / 2;
    return in_order((ints)(rest & (0x20000000u - places)) == 0x10000000);
}

// high + low rounded to single precision, where high is the sum rounded to double:
// at a midpoint `low` decides.
inline float narrow(double high, double low) {
    const bool midpoint = (to_bits(high) & 0x1FFFFFFF) == 0x10000000;
    if (midpoint && low != 0) high = from_bits(to_bits(high) + ((low > 0) == (high > 0) ? 1 : -1));
    return static_cast<float>(high);
}

// A double-precision formula on floats, and the same rounded.
template <class Formula> inline auto on_both(DoublesPair x, Formula formula) {
    return DoublesPair{formula(x.low), formula(x.high)};
}
template <class Formula> inline floats in_double(floats x, Formula formula) {
    return narrow(on_both(widen(x), formula));
}

}  // namespace KEF_VM
