// What a kernel needs to know of an element type's bit layout, and the values of
// special results.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kef_vm.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// The leading 32 bits of a constant.
inline constexpr std::uint32_t head_of(double x) {
    return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(x) >> 32);
}
inline constexpr std::uint32_t head_of(float x) { return std::bit_cast<std::uint32_t>(x); }

// The least number, in size, whose leading bits these are.
template <class T> constexpr T number_with_head(std::uint32_t head) {
    if constexpr (sizeof(T) == 4) return std::bit_cast<T>(head);
    else return std::bit_cast<T>(std::uint64_t{head} << 32);
}

template <class T> struct Format;
template <> struct Format<double> {
    using Bits = std::uint64_t;
    static constexpr std::uint32_t infinity_head = 0x7FF00000;  // also: smallest NaN
    static constexpr std::int32_t one_head = 0x3FF00000;
    static constexpr std::uint32_t normal_head = 0x00100000;  // smallest normal number
    static constexpr double infinity = from_bits(UINT64_C(0x7FF0000000000000));
    static constexpr double smallest_normal = from_bits(UINT64_C(0x0010000000000000));
    static constexpr double invalid = from_bits(UINT64_C(0xFFF8000000000000));  // domain error
    static constexpr double ones = from_bits(UINT64_C(0xFFFFFFFFFFFFFFFF));
    static constexpr double integral_from = 0x1p52;  // no fraction from here on
};
template <> struct Format<float> {
    using Bits = std::uint32_t;
    static constexpr std::uint32_t infinity_head = 0x7F800000;
    static constexpr std::int32_t one_head = 0x3F800000;
    static constexpr std::uint32_t normal_head = 0x00800000;
    static constexpr float infinity = from_bits(0x7F800000u);
    static constexpr float smallest_normal = from_bits(0x00800000u);
    static constexpr float invalid = from_bits(0xFFC00000u);
    static constexpr float ones = from_bits(0xFFFFFFFFu);
    static constexpr float integral_from = 0x1p23f;
};

// Comparisons, which raise flags for subnormal numbers and signalling NaN.
template <class T> inline bool is_nan(T x) { return x != x; }
template <class T> inline bool is_infinite(T x) {
    return x == Format<T>::infinity || x == -Format<T>::infinity;
}
// By bits: raises no flag.
template <class T> inline bool is_finite(T x) {
    return (static_cast<std::uint32_t>(head(x)) & 0x7FFFFFFF) < Format<T>::infinity_head;
}

// A NaN argument as result: the same payload, quiet.
template <class T> inline T quiet(T nan) { return nan + nan; }
// Likewise of two arguments the first NaN: which one a sum gives is the compiler's choice.
template <class T> inline T quiet(T x, T y) { return quiet(is_nan(x) ? x : y); }

// A gate for lanes that are infinite or NaN.
template <class T> inline ints not_finite(ints heads) {
    return above(magnitude(heads), static_cast<std::int32_t>(Format<T>::infinity_head - 1));
}

// The function's name in reports, by element type.
#define KEF_REPORT_NAME(function) \
    static constexpr const char* name = std::is_same_v<T, float> ? "vs" #function : "vd" #function

}  // namespace KEF_VM
