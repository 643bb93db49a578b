// Mul: r = a b; MulByConj: r = a conj(b).
//
//   an infinite part, in a or b     infinite, where the other number is neither 0 nor NaN (a number
//                                   with an infinite part is infinite, whatever the other part)
//   NaN                             NaN
//
// No error conditions: an overflow shows in the result. Double: 0.5 ulp for each part while it is
// above 2^-53 of the norm. Single: in double, where the products are exact, 0.5 ulp + 2^-29. All
// slots have it.
#include "vm/core/complex_kernel.h"
#include "vm/core/complex_product.h"
#if KEF_VECTOR_BYTES == 16
#include "vm/simd/pairs_in_double.h"
#endif

namespace kef::vm {

template <class T, bool conjugate> struct ComplexProduct {
    using V = Vector<T>;
    static constexpr bool is_double = std::is_same_v<T, double>;

    // Double: the errors of the products are normal numbers beside the norm.
    static ints outside(ints a, ints b, ints c, ints d) requires(is_double) {
        return larger_outside<T, -450, 500>(a, b) | larger_outside<T, -450, 500>(c, d);
    }
    // Infinities; of doubles zeros too.
    static ints beyond(ints a, ints b, ints c, ints d) {
        return is_infinity<T>(a) | is_infinity<T>(b) | is_infinity<T>(c) | is_infinity<T>(d);
    }
    static V undefined(V a, V b, V c, V d) requires(is_double) {
        return (V)(both_zero(a, b) | both_zero(c, d));
    }
    // Single: no NaN but from one or an infinity.
    static constexpr bool far_everywhere = !is_double;
    static ints refuse(ints re, ints im) requires(!is_double) {
        constexpr auto infinity = static_cast<std::int32_t>(Format<T>::infinity_head);
        return (infinity - magnitude(re)) & (infinity - magnitude(im));
    }
    static ints refuse(ints, ints, ints marks) { return marks; }

    static Two<V> fast(V a, V b, V c, V d) {
        if constexpr (is_double) {
            return complex_product<conjugate>(a, b, c, d);
        } else {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            return narrow(in_double(x.low, y.low, u.low, v.low),
                          in_double(x.high, y.high, u.high, v.high));
        }
    }
#if KEF_VECTOR_BYTES == 16
    static MarkedBy<V, Two<V>> in_memory(const float* a, const float* b) requires(!is_double) {
        const auto r = on_pairs_in_double(a, b, [](auto... x) { return in_double(x...); });
        return {r, one_is_nan(r.first, r.second)};
    }
#endif
    static MarkedBy<V, Two<V>> far(V a, V b, V c, V d) {
        if constexpr (is_double) {
            const ScaledPair x = scale_to_one(a, b), y = scale_to_one(c, d);
            const V v = of_second(y.y);
            const Two<V> r =
                times(product_parts(x.x, x.y, y.x, v), PowersBack(x.exponent, y.exponent));
            const Two<V> whole =
                unless_lost(r, x.x * y.x, x.y * v, x.x * v, x.y * y.x, in_double(a, b, c, d));
            return {with_nan(whole, a, b, c, of_second(d)), V{}};
        } else {
            return {with_nan(fast(a, b, c, d), a, b, c, of_second(d)), V{}};
        }
    }

    // Where the products of a part, scaled, have lost bits or all, by plain arithmetic, unless that
    // overflows: far below the norm, so that nothing large cancels.
    static Two<doubles> unless_lost(const Two<doubles>& r, doubles p, doubles q, doubles s,
                                    doubles t, const Two<doubles>& plain) {
        const auto chosen = [](doubles x, doubles y, doubles other, doubles part) {
            const longs lost = mask(maximum(absolute(x), absolute(y)) < 0x1p-1020),
                        finite = mask(absolute(other) < Format<double>::infinity);
            return select(lost & finite, other, part);
        };
        return {chosen(p, q, plain.first, r.first), chosen(s, t, plain.second, r.second)};
    }

    static Two<doubles> in_double(doubles a, doubles b, doubles c, doubles d) {
        const doubles e = of_second(d);
        return {a * c - b * e, a * e + b * c};
    }

    static int edge(T a, T b, T c, T d, T& re, T& im) {
        d = of_second(d);
        plain({a, b}, {c, d}, 1, re, im);
        if (is_nan(re) && is_nan(im) && (has_infinity(a, b) || has_infinity(c, d)))
            plain(has_infinity(a, b) ? direction(a, b) : without_nan(a, b),
                  has_infinity(c, d) ? direction(c, d) : without_nan(c, d),
                  Format<double>::infinity, re, im);
        return VTM_STATUS_OK;
    }

private:
    // The imaginary part of b, or that with the other sign.
    static auto of_second(auto d) { return conjugate ? -d : d; }
    static void plain(Direction x, Direction y, double factor, T& re, T& im) {
        re = static_cast<T>(factor * (x.re * y.re - x.im * y.im));
        im = static_cast<T>(factor * (x.re * y.im + x.im * y.re));
    }
};

template <class T, class> struct ComplexMul : ComplexProduct<T, false> { KEF_COMPLEX_NAME(Mul); };
template <class T, class> struct ComplexMulByConj : ComplexProduct<T, true> {
    KEF_COMPLEX_NAME(MulByConj);
};

KEF_COMPLEX2(c, Mul, HA)
KEF_COMPLEX2(c, MulByConj, HA)
KEF_COMPLEX2(z, Mul, HA)
KEF_COMPLEX2(z, MulByConj, HA)

}  // namespace kef::vm
