// Products with sums, and polynomials made of them. Where the processor multiplies and adds in one
// operation (`is_fused`) so do these, with one rounding; elsewhere they are two operations. A
// formula that relies on the rounding of a product writes it with operators, which never contract,
// or takes it from double_double.h.
#pragma once

#include <array>
#include <utility>

#include "vm/simd/simd.h"

namespace KEF_VM {

// a b + c, c - a b and a b - c, of vectors and scalars.
inline auto multiply_add(auto a, auto b, auto c) {
    using V = decltype(a * b + c);
    if constexpr (is_fused) return fused(filled<V>(a), filled<V>(b), filled<V>(c));
    else return a * b + c;
}
inline auto negative_multiply_add(auto a, auto b, auto c) {
    using V = decltype(c - a * b);
    if constexpr (is_fused) return fused_negative(filled<V>(a), filled<V>(b), filled<V>(c));
    else return c - a * b;
}
inline auto multiply_subtract(auto a, auto b, auto c) {
    using V = decltype(a * b - c);
    if constexpr (is_fused) return fused_minus(filled<V>(a), filled<V>(b), filled<V>(c));
    else return a * b - c;
}

// x - k p0 - k p1 - ..., from the left.
template <class V, class T, std::size_t n>
inline V minus_products(V x, V k, const std::array<T, n>& p) {
    [&]<std::size_t... i>(std::index_sequence<i...>) {
        ((x = negative_multiply_add(k, p[i], x)), ...);
    }
    (std::make_index_sequence<n>());
    return x;
}

// Coefficients c0, c1, ... by their bits, all of double or all of single precision.
template <class... Bits> consteval auto coefficients(Bits... bits) {
    if constexpr ((... && (sizeof(Bits) == 8)))
        return std::array{from_bits(static_cast<std::uint64_t>(bits))...};
    else return std::array{from_bits(static_cast<std::uint32_t>(bits))...};
}

// c0 + x (c1 + x (c2 + ...)).
template <std::size_t first = 0, class V, class T, std::size_t n>
inline V polynomial(V x, const std::array<T, n>& c) {
    if constexpr (n == 1) return filled<V>(c[0]);
    else if constexpr (first + 2 == n) return multiply_add(x, c[n - 1], filled<V>(c[n - 2]));
    else return multiply_add(x, polynomial<first + 1>(x, c), c[first]);
}

// The same in powers of x^2, which is shorter to wait for: (c0 + x c1) + x^2 ((c2 + x c3) + ...).
template <std::size_t first = 0, class V, class T, std::size_t n>
inline V polynomial_by_pairs(V x, V square, const std::array<T, n>& c) {
    if constexpr (first + 1 == n) return filled<V>(c[first]);
    else {
        const V pair = multiply_add(x, c[first + 1], filled<V>(c[first]));
        if constexpr (first + 2 == n) return pair;
        else if constexpr (first + 3 == n) return multiply_add(square, c[first + 2], pair);
        else return multiply_add(square, polynomial_by_pairs<first + 2>(x, square, c), pair);
    }
}

// And in powers of x^4.
template <std::size_t first = 0, class V, class T, std::size_t n>
inline V polynomial_by_fours(V x, const std::array<T, n>& c, V square, V fourth) {
    constexpr std::size_t count = n - first < 4 ? n - first : 4;
    std::array<T, count> some;
    for (std::size_t i = 0; i < count; ++i) some[i] = c[first + i];
    const V part = polynomial_by_pairs(x, square, some);
    if constexpr (first + 4 >= n) return part;
    else return multiply_add(fourth, polynomial_by_fours<first + 4>(x, c, square, fourth), part);
}

}  // namespace KEF_VM
