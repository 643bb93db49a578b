// Arguments so small that f(x) rounds to x or to f(0). Products of them are subnormal numbers, for
// which many processors take a hundred cycles and more. A gate holds them back, and the second
// formula is the first one with 0 in their place.
//
// The gate is one comparison, so that it holds back zeros too; where many come in a row the second
// formula goes on (vm/simd/frame.h).
#pragma once

#include <type_traits>

#include "vm/core/rounding.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace KEF_VM {

// The least argument of the first formula where f(x) = x + O(x^3), and where f(x) = x + O(x^2),
// f(0) + O(x) or f(0) + O(x^2). 0, which means no gate: floats in double are never so small.
enum class Tiny { by_square, by_size };
template <class T, class Accuracy, Tiny tiny>
inline constexpr T tiny_bound = std::is_same_v<T, double>
                                    ? (tiny == Tiny::by_square ? T(0x1p-30) : T(0x1p-56))
                                : std::is_same_v<Accuracy, HA> ? T(0)
                                : tiny == Tiny::by_square      ? T(0x1p-16)
                                                               : T(0x1p-27);

// x, or 0 where |x| is below the bound.
template <class V, class T> inline V unless_tiny(V x, T bound) {
    return where(~(absolute(x) < all(bound)), x);
}

// formula(x), and where |x| is below the bound x, 1 or formula(0); of two results the second is 1.
enum class AtZero { argument, one, constant };
template <AtZero at_zero, class V, class T, class Formula>
inline auto beside_tiny(V x, T bound, Formula formula) {
    const auto is_tiny = absolute(x) < all(bound);
    const auto r = formula(where(~is_tiny, x));
    const auto or_argument = [&](V y) {
        const V tiny = where(is_tiny, x);
        return with_sign(y + tiny, tiny);
    };
    const auto or_one = [&](V y) { return select(is_tiny, all(T(1)), y); };
    if constexpr (!std::is_same_v<decltype(r), const V>)
        return Two<V>{or_argument(r.first), or_one(r.second)};
    else if constexpr (at_zero == AtZero::argument) return or_argument(r);
    else if constexpr (at_zero == AtZero::one) return or_one(r);
    else return r;
}

// Gates and second formula of Function<T, Accuracy>, whose first one holds for |x| below the number
// with the leading bits `last`.
template <class Function, class T, class Accuracy, AtZero at_zero, Tiny tiny, std::uint32_t last>
struct TinyAside {
    static constexpr T bound = tiny_bound<T, Accuracy, tiny>;
    static constexpr bool far_everywhere = bound > 0;

    static ints outside(ints h) {
        if constexpr (bound > 0) return not_between(magnitude(h), head_of(bound), last);
        else return at_or_above(h);
    }
    static ints beyond(ints h) requires(bound > 0) { return at_or_above(h); }
    static auto far(Vector<T> x) requires(bound > 0) {
        return beside_tiny<at_zero>(x, bound, Function::fast);
    }

private:
    static ints at_or_above(ints h) {
        return above(magnitude(h), static_cast<std::int32_t>(last - 1));
    }
};

}  // namespace KEF_VM
