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

namespace kef::vm {

template <class T, class> struct ComplexMul {
    using V = Vector<T>;
    KEF_COMPLEX_NAME(Mul);
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
            return complex_product(a, b, c, d);
        } else {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            return {narrow(x.low * u.low - y.low * v.low, x.high * u.high - y.high * v.high),
                    narrow(x.low * v.low + y.low * u.low, x.high * v.high + y.high * u.high)};
        }
    }
    static MarkedBy<V, Two<V>> far(V a, V b, V c, V d) {
        if constexpr (is_double) {
            const ScaledPair x = scale_to_one(a, b), y = scale_to_one(c, d);
            const Two<V> r =
                times(product_parts(x.x, x.y, y.x, y.y), PowersBack(x.exponent, y.exponent));
            return {with_nan(r, a, b, c, d), V{}};
        } else {
            return {with_nan(fast(a, b, c, d), a, b, c, d), V{}};
        }
    }

    static int edge(T a, T b, T c, T d, T& re, T& im) {
        plain({a, b}, {c, d}, 1, re, im);
        if (is_nan(re) && is_nan(im) && (has_infinity(a, b) || has_infinity(c, d)))
            plain(has_infinity(a, b) ? direction(a, b) : without_nan(a, b),
                  has_infinity(c, d) ? direction(c, d) : without_nan(c, d),
                  Format<double>::infinity, re, im);
        return VTM_STATUS_OK;
    }

private:
    static void plain(Direction x, Direction y, double factor, T& re, T& im) {
        re = static_cast<T>(factor * (x.re * y.re - x.im * y.im));
        im = static_cast<T>(factor * (x.re * y.im + x.im * y.re));
    }
};

// The imaginary part of b with the other sign.
template <class T, class Accuracy> struct ComplexMulByConj : ComplexMul<T, Accuracy> {
    using Mul = ComplexMul<T, Accuracy>;
    using V = Vector<T>;
    KEF_COMPLEX_NAME(MulByConj);
    static Two<V> fast(V a, V b, V c, V d) { return Mul::fast(a, b, c, -d); }
    static auto far(V a, V b, V c, V d) { return Mul::far(a, b, c, -d); }
    static int edge(T a, T b, T c, T d, T& re, T& im) { return Mul::edge(a, b, c, -d, re, im); }
};

KEF_COMPLEX2(c, Mul, HA)
KEF_COMPLEX2(z, Mul, HA)
KEF_COMPLEX2(c, MulByConj, HA)
KEF_COMPLEX2(z, MulByConj, HA)

}  // namespace kef::vm
