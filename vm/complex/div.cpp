// Div: r = a / b.
//
//   b = 0, a not 0 or NaN       infinite, singularity
//   0/0, infinite/infinite      NaN, domain error
//   infinite/finite             infinite
//   finite/infinite             zeros
//   NaN                         NaN
//   a part too large            infinite, overflow
//
// a number being infinite that has an infinite part. Double HA: a conj(b) and |b|^2 with their
// errors, 0.51 ulp for each part while it is above 2^-50 of the norm. Single HA: in double, 0.5 ulp
// + 2^-28. LA, also EP: plain arithmetic and one reciprocal, 5 units of the norm.
#include "vm/core/complex_kernel.h"
#include "vm/core/complex_product.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexDiv {
    using V = Vector<T>;
    KEF_COMPLEX_NAME(Div);
    static constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    static constexpr bool is_double = std::is_same_v<T, double>, in_double = !is_double && accurate;
    static constexpr int most = is_double ? 400 : 50;

    // What squares and products consist of is normal, their errors too; single HA: finite numbers,
    // b not 0.
    static ints outside(ints a, ints b, ints c, ints d) {
        if constexpr (in_double) {
            const auto finite = [](ints h) {
                return static_cast<std::int32_t>(Format<T>::infinity_head - 1) - magnitude(h);
            };
            return finite(a) | finite(b) | finite(c) | finite(d) |
                   ((magnitude(c) - 1) & (magnitude(d) - 1));
        }
        return larger_outside<T, -most, most>(a, b) | larger_outside<T, -most / 2, most / 2>(c, d);
    }
    static ints beyond(ints a, ints b, ints c, ints d) requires(!in_double) {
        if constexpr (is_double) {
            const ints exponent = larger_exponent(a, b) - larger_exponent(c, d);
            return larger_outside<T, -1022, 1023>(a, b) | larger_outside<T, -1022, 1023>(c, d) |
                   exponent_outside(exponent);
        } else {
            return ComplexDiv<T, HA>::outside(a, b, c, d);
        }
    }
    // Overflow.
    static ints refuse(ints re, ints im) requires(!is_double) {
        return not_finite<T>(re) | not_finite<T>(im);
    }

    static Two<V> fast(V a, V b, V c, V d) {
        if constexpr (in_double) {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            const auto low = complex_quotient_plain(x.low, y.low, u.low, v.low),
                       high = complex_quotient_plain(x.high, y.high, u.high, v.high);
            return {narrow(low.first, high.first), narrow(low.second, high.second)};
        } else if constexpr (accurate) {
            return complex_quotient(a, b, c, d);
        } else {
            return complex_quotient_plain(a, b, c, d);
        }
    }
    static Two<V> far(V a, V b, V c, V d) requires(!in_double) {
        if constexpr (is_double) {
            const ScaledPair x = scale_to_one(a, b), y = scale_to_one(c, d);
            const Two<V> r = fast(x.x, x.y, y.x, y.y);
            const V power = power_of_two(x.exponent - y.exponent);
            return {r.first * power, r.second * power};
        } else {
            return ComplexDiv<T, HA>::fast(a, b, c, d);
        }
    }

    static int edge(T a, T b, T c, T d, T& re, T& im) {
        const bool finite_a = is_finite(a) && is_finite(b), finite_b = is_finite(c) && is_finite(d);
        const bool nan_a = is_nan(a) || is_nan(b);
        if (c == 0 && d == 0) {
            const double infinite = signed_like(Format<double>::infinity, c);
            re = static_cast<T>(infinite * a), im = static_cast<T>(infinite * b);
            if (nan_a || !finite_a) return VTM_STATUS_OK;
            return a == 0 && b == 0 ? VTM_STATUS_ERRDOM : VTM_STATUS_SING;
        }
        if (finite_a && finite_b) return finite(a, b, c, d, re, im);
        if (has_infinity(a, b) && has_infinity(c, d))
            return re = im = Format<T>::invalid, VTM_STATUS_ERRDOM;
        Direction x = {a, b}, y = {c, d};
        double factor = 1;
        if (has_infinity(a, b) && finite_b) x = direction(a, b), factor = Format<double>::infinity;
        else if (finite_a && has_infinity(c, d)) y = direction(c, d), factor = 0;
        re = static_cast<T>(factor * (x.re * y.re + x.im * y.im));
        im = static_cast<T>(factor * (x.im * y.re - x.re * y.im));
        const bool from_nan = nan_a || is_nan(c) || is_nan(d);
        return is_nan(re) && is_nan(im) && !from_nan ? VTM_STATUS_ERRDOM : VTM_STATUS_OK;
    }

private:
    // b is not 0.
    static int finite(double a, double b, double c, double d, T& re, T& im) {
        const ScaledOne y = scale_to_one(c, d);
        if (a == 0 && b == 0) {
            re = static_cast<T>(a * y.x + b * y.y), im = static_cast<T>(b * y.x - a * y.y);
            return VTM_STATUS_OK;
        }
        const ScaledOne x = scale_to_one(a, b);
        const auto q = quotient_parts(all(x.x), all(x.y), all(y.x), all(y.y));
        const int e = x.exponent - y.exponent;
        re = static_cast<T>(scaled_once(q.re.high[0], q.re.low[0], e));
        im = static_cast<T>(scaled_once(q.im.high[0], q.im.low[0], e));
        return is_infinite(re) || is_infinite(im) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
    }
};

KEF_COMPLEX2(c, Div, LA)
KEF_COMPLEX2(c, Div, HA)
KEF_COMPLEX2(z, Div, LA)
KEF_COMPLEX2(z, Div, HA)

}  // namespace kef::vm
