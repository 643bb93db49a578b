// Element types and argument lists of the exported functions, named as in
// surface.def.
#pragma once

#include <cstdint>

#include "kef_vm.h"
#include "vm/surface/shapes.def"

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

}  // namespace kef::vm

// Parameters of an entry and of a slot, and what an entry hands on.
#define KEF_ENTRY_PARAMETERS(shape, T) \
    KEF_FIRST_OF(KEF_SHAPE_##shape(T, Real<T>, std::int32_t, KEF_NOTHING))
#define KEF_SLOT_PARAMETERS(shape, T) KEF_FIRST_OF(KEF_SHAPE_##shape(T, Real<T>, void, KEF_AND))
#define KEF_ENTRY_ARGUMENTS(shape) KEF_SECOND_OF(KEF_SHAPE_##shape(, , , KEF_NOTHING))

#define KEF_FIRST_OF(...) KEF_FIRST_OF_(__VA_ARGS__)
#define KEF_FIRST_OF_(first, second) first
#define KEF_SECOND_OF(...) KEF_SECOND_OF_(__VA_ARGS__)
#define KEF_SECOND_OF_(first, second) second
#define KEF_NOTHING(...)
#define KEF_AND(...) , __VA_ARGS__
