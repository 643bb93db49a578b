// Calling the slots of any real function in one way, whatever its shape.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "vm/shapes.h"

namespace kef {

// Arguments and results of one call.
template <class T>
struct Batch {
    explicit Batch(std::size_t n) : a(n), b(n), result{std::vector<T>(n), std::vector<T>(n)} {}
    std::int32_t size() const { return static_cast<std::int32_t>(a.size()); }

    std::vector<T> a, b;
    T scalar = 0;                      // Powx: the exponent
    std::array<T, 4> scalars = {};     // LinearFrac: scalea, shifta, scaleb, shiftb
    std::array<std::vector<T>, 2> result;
};

template <class T> void call(vm::shape::map1<T>* f, Batch<T>& x) {
    f(x.size(), x.a.data(), x.result[0].data());
}
template <class T> void call(vm::shape::map2<T>* f, Batch<T>& x) {
    f(x.size(), x.a.data(), x.b.data(), x.result[0].data());
}
template <class T> void call(vm::shape::mapx<T>* f, Batch<T>& x) {
    f(x.size(), x.a.data(), x.scalar, x.result[0].data());
}
template <class T> void call(vm::shape::map1x2<T>* f, Batch<T>& x) {
    f(x.size(), x.a.data(), x.result[0].data(), x.result[1].data());
}
template <class T> void call(vm::shape::linear_frac<T>* f, Batch<T>& x) {
    f(x.size(), x.a.data(), x.b.data(), x.scalars[0], x.scalars[1], x.scalars[2], x.scalars[3],
      x.result[0].data());
}

template <class Function> inline constexpr bool has_second_argument = false;
template <class T> inline constexpr bool has_second_argument<void(std::int32_t, const T*, const T*, T*)> = true;
template <class T>
inline constexpr bool has_second_argument<void(std::int32_t, const T*, const T*, T, T, T, T, T*)> = true;
template <class Function> inline constexpr bool has_scalar_argument = false;
template <class T> inline constexpr bool has_scalar_argument<void(std::int32_t, const T*, T, T*)> = true;

// The pack functions move data: nothing to measure in accuracy or cycles of a formula.
constexpr bool moves_data(const char* shape) {
    return shape[0] == 'p' || shape[0] == 'u';
}

}  // namespace kef
