// The kernels of Pow and Powx of complex numbers: r = a^b = e^(b ln a), the principal value.
//
//   b = 0, or a = 1                  1
//   a = 0                            0 for Re b > 0; infinite, singularity for Re b < 0; NaN,
//   domain
//                                    error for Re b = 0
//   infinite parts                   what e^(b ln a) gives with the special cases of Ln and Exp,
//                                    zeros times infinity being 0; domain error where that is NaN
//   NaN                              NaN
//   a part too large                 infinite, overflow
//   both parts subnormal or 0        underflow
//
// HA: ln a to 2^-65, products and sums in two parts: 1.1 units of the norm while
// |Im(b ln a)| < 2^10, beyond 2^-65 of that more. EP, and single precision: in doubles; EP with
// short polynomials.
#pragma once

#include "vm/core/complex_kernel.h"
#include "vm/core/complex_one.h"

namespace KEF_VM {

template <class T, class Accuracy> struct ComplexPowFormula {
    using V = Vector<T>;
    static constexpr bool is_single = std::is_same_v<T, float>;
    using Formula = std::conditional_t<!is_single, Accuracy,
                                       std::conditional_t<std::is_same_v<Accuracy, HA>, LA, EP>>;
    static constexpr bool far_everywhere = true;
    static constexpr double least = 0x1p-280, last = 0x1p280;
    static constexpr double last_im = TrigLast<double, Formula>::near;
    static constexpr double last_re = is_single ? 600 : 690;

    static ints finite_only(ints a, ints b, ints c, ints d) {
        constexpr auto end = static_cast<std::int32_t>(Format<T>::infinity_head - 1);
        return (end - magnitude(a)) | (end - magnitude(b)) | (end - magnitude(c)) |
               (end - magnitude(d));
    }
    static ints outside(ints a, ints b, ints c, ints d) {
        if constexpr (is_single) {
            return finite_only(a, b, c, d) | both_zero(a, b);
        } else {
            const auto ordinary = [](ints h) {
                return not_between(magnitude(h), head_of(least), head_of(last));
            };
            return ordinary(a) | ordinary(b) | ordinary(c) | ordinary(d);
        }
    }
    static ints beyond(ints a, ints b, ints c, ints d) requires(!is_single) {
        const auto small = [](ints h) {
            return static_cast<std::int32_t>(head_of(last) - 1) - magnitude(h);
        };
        return small(a) | small(b) | small(c) | small(d);
    }
    static V undefined(V a, V b, V c, V d) requires(!is_single) {
        return (V)(is_tiny(a, least) | is_tiny(b, least) | is_tiny(c, least) | is_tiny(d, least) |
                   both_zero(a, b));
    }

    static MarkedBy<V, Two<V>> fast(V a, V b, V c, V d) {
        if constexpr (is_single) {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            const auto low = power(x.low, y.low, u.low, v.low),
                       high = power(x.high, y.high, u.high, v.high);
            return {narrow(low.result, high.result),
                    (floats)in_order(heads(low.marks, high.marks))};
        } else {
            return power(a, b, c, d);
        }
    }
    static MarkedBy<V, Two<V>> far(V a, V b, V c, V d) requires(!is_single) {
        return fast(a, b, c, d);
    }
    // Overflow and underflow of floats.
    static ints refuse(ints re, ints im, ints marks) {
        if constexpr (!is_single) return marks;
        constexpr auto normal = static_cast<std::int32_t>(Format<T>::normal_head);
        return marks | not_finite<T>(re) | not_finite<T>(im) |
               ((magnitude(re) - normal) & (magnitude(im) - normal));
    }

    static int edge(T a, T b, T c, T d, T& re, T& im) {
        double r, i;
        if constexpr (is_single)
            if (is_finite(a) && is_finite(b) && is_finite(c) && is_finite(d) &&
                (a != 0 || b != 0)) {
                const auto z =
                    power(all(double{a}), all(double{b}), all(double{c}), all(double{d}));
                if (!any_lane((longs)z.marks)) {
                    re = static_cast<T>(r = z.result.first[0]);
                    im = static_cast<T>(i = z.result.second[0]);
                    return status_of_parts<T, true, true>(VTM_STATUS_OK, true, r, i);
                }
            }
        const bool finite = is_finite(a) && is_finite(b) && is_finite(c) && is_finite(d);
        const int status =
            one(as_number(a), as_number(b), as_number(c), as_number(d), finite, r, i);
        re = static_cast<T>(r), im = static_cast<T>(i);
        return status_of_parts<T, true, true>(status, finite && (a != 0 || b != 0), r, i);
    }

private:
    // b ln a, with the sign of its imaginary part, and the verdict about its size.
    static MarkedBy<doubles, Two<doubles>> power(doubles x, doubles y, doubles u, doubles v) {
        using N = Number<Formula>;
        const auto [log, angle] = log_parts(x, y);
        const N p = number<N>(u), q = number<N>(v);
        N re = p * log - q * angle;
        const N im = p * angle + q * log;
        const longs sign = sign_bit(leading_part(im));
        const N turn = flipped(im, sign);
        const auto above = [](N w, double bound) {
            return std::bit_cast<std::int64_t>(bound) - (longs)absolute(leading_part(w));
        };
        // Floats are 0 or infinite where e^re ends its range.
        if constexpr (is_single) re = maximum(minimum(re, all(last_re)), all(-last_re));
        const doubles marks = (doubles)(above(re, last_re) | above(im, last_im));
        if constexpr (std::is_same_v<N, Parts>) {
            TrigReduced reduced = trig_reduce<sine_bias, TrigReach::near>(turn.high);
            const Parts r = two_sum(reduced.high, turn.low);
            reduced.high = r.high, reduced.low = reduced.low + r.low;
            const auto [sine, cosine] = sine_cosine(reduced);
            const ExpParts e = exp_parts(exp_reduce<HA>(re.high, re.low));
            const Parts size = normalised({e.high, e.low});
            return {
                {rounded(size * cosine) * e.power, flipped(rounded(size * sine) * e.power, sign)},
                marks};
        } else {
            const auto [sine, cosine] = sine_cosine<Formula>(turn);
            const doubles size = exp_core<Formula>(re);
            return {{size * cosine, flipped(size * sine, sign)}, marks};
        }
    }
    static auto log_parts(doubles x, doubles y) {
        using N = Number<Formula>;
        const doubles p = absolute(x), q = absolute(y);
        if constexpr (std::is_same_v<N, Parts>) {
            const Parts log = log_of_norm(norm_parts(maximum(p, q), minimum(p, q)), extended_log);
            const Parts angle = turned(atan_quotient_extended(q, not_zero(p)), sign_bit(x));
            return Two<Parts>{times_power(log, 0.5), flipped(normalised(angle), sign_bit(y))};
        } else {
            return Two<doubles>{log_of_norm<LA>(p, q) * 0.5, flipped(angle_of(q, x), sign_bit(y))};
        }
    }

    static int one(double a, double b, double c, double d, bool finite, double& re, double& im) {
        if ((c == 0 && d == 0) || (a == 1 && b == 0)) return re = 1, im = 0, VTM_STATUS_OK;
        if (is_nan(a) || is_nan(b) || is_nan(c) || is_nan(d))
            return re = im = quiet((a + b) + (c + d)), VTM_STATUS_OK;
        if (a == 0 && b == 0 && is_finite(c) && is_finite(d)) {
            if (c > 0) return re = im = 0, VTM_STATUS_OK;
            re = c < 0 ? Format<double>::infinity : Format<double>::invalid;
            im = c < 0 ? 0 : re;
            return c < 0 ? VTM_STATUS_SING : VTM_STATUS_ERRDOM;
        }
        OneNumber angle(angle_one(b, a, atan_quotient_extended));
        if (to_bits(b) >> 63) angle = -angle;
        if (!finite) return special(a, b, c, d, angle.rounded(), re, im);
        const OneNumber log = log_modulus_one(a, b, extended_log), u(c), v(d);
        const OneNumber x = u * log + -(v * angle), y = u * angle + v * log;
        const SinesOne whole = sines_one(magnitude_of(y.as_double())),
                       rest = sines_one(magnitude_of(y.low_as_double()));
        const OneNumber turn_low = (y.high < 0) == (y.low < 0) ? rest.sine : -rest.sine;  // of |y|
        const OneNumber sine = whole.sine * rest.cosine + whole.cosine * turn_low,
                        cosine = whole.cosine * rest.cosine + -(whole.sine * turn_low);
        const OneNumber size = x.exponent > 11 ? exp_one(x.high < 0 ? -1500 : 1500)
                                               : exp_one(x.as_double(), x.low_as_double());
        re = (size * cosine).rounded(), im = (size * sine).rounded();
        if (y.high < 0) im = -im;
        return VTM_STATUS_OK;
    }
    static int special(double a, double b, double c, double d, double angle, double& re,
                       double& im) {
        double log = Format<double>::infinity;
        if (is_finite(a) && is_finite(b))
            log = a == 0 && b == 0 ? -log : log_modulus_one(a, b, extended_log).rounded();
        const double x = special_sine_product(c, log) - special_sine_product(d, angle),
                     y = special_sine_product(c, angle) + special_sine_product(d, log);
        // A finite size stands beside a NaN.
        const double size = is_nan(x) ? Format<double>::invalid : is_finite(x) ? 1 : x > 0 ? x : 0;
        const SpecialPair s = special_sines(y);
        re = special_cosine_product(s.cosine, size), im = special_sine_product(s.sine, size);
        return domain_status(0, 0, re, im);
    }
};

}  // namespace KEF_VM
