// Element types and argument lists of the exported functions, named as in
// surface.def.
#pragma once

#include <cstdint>

#include "kef_vm.h"

namespace kef::vm {

// The type letters.
using element_s = float;
using element_d = double;
using element_c = kef_complex8;
using element_z = kef_complex16;

template <class T> struct RealOf { using type = T; };
template <> struct RealOf<kef_complex8> { using type = float; };
template <> struct RealOf<kef_complex16> { using type = double; };
template <class T> using Real = typename RealOf<T>::type;

// The trailing flag of the pack functions: narrow, counts and strides are 32-bit
// integers in the low words, index and mask vectors hold 32-bit integers; any
// other value, all of them are 64-bit integers.
constexpr std::int32_t narrow_interface = 1;

namespace shape {
template <class T> using map1 = void(std::int32_t n, const T* a, T* r);
template <class T> using map2 = void(std::int32_t n, const T* a, const T* b, T* r);
template <class T> using mapx = void(std::int32_t n, const T* a, T b, T* r);
template <class T> using map1x2 = void(std::int32_t n, const T* a, T* y, T* z);
template <class T> using modulus = void(std::int32_t n, const T* a, Real<T>* r);
template <class T> using from_real = void(std::int32_t n, const Real<T>* a, T* r);
template <class T>
using linear_frac = void(std::int32_t n, const T* a, const T* b, T scalea, T shifta, T scaleb,
                         T shiftb, T* r);
template <class T>
using pack_i = void(std::int64_t n, const T* a, std::int64_t inca, T* y, std::int32_t width);
template <class T>
using pack_v = void(std::int64_t n, const T* a, const void* indices, T* y, std::int32_t width);
template <class T>
using unpack_i = void(std::int64_t n, const T* a, T* y, std::int64_t incy, std::int32_t width);
template <class T>
using unpack_v = void(std::int64_t n, const T* a, T* y, const void* indices, std::int32_t width);
}  // namespace shape

}  // namespace kef::vm
