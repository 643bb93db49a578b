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
        return finite_only(a, b, c, d);
    }
    // Zero; beside 1 a tiny part, whose square counts.
    static V undefined(V a, V b, V, V) requires(!is_single) {
        const auto beside_one = [](doubles one, doubles z) {
            return (longs)(absolute(one) == 1.0) & is_tiny(z, least);
        };
        return (V)(both_zero(a, b) | beside_one(a, b) | beside_one(b, a));
    }

    static MarkedBy<V, Two<V>> fast(V a, V b, V c, V d) {
        if constexpr (is_single) {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            const auto low = power(x.low, y.low, u.low, v.low),
                       high = power(x.high, y.high, u.high, v.high);
            return {narrow(low.result, high.result),
                    (floats)in_order(heads(low.marks, high.marks))};
        } else {
            // What is rounded into the subnormal numbers is for far; zeros are not.
            MarkedBy<V, Two<V>> r = power(a, b, c, d);
            const doubles least = minimum(absolute(r.result.first), absolute(r.result.second));
            if (!all_lanes((longs)(least > Format<T>::smallest_normal))) [[unlikely]] {
                const auto small = [](doubles x) { return is_tiny(x, 0x1.0000000000001p-1022); };
                r.marks = (V)((longs)r.marks | small(r.result.first) | small(r.result.second));
            }
            return r;
        }
    }
    static MarkedBy<V, Two<V>> far(V a, V b, V c, V d) requires(!is_single) {
        return wide_power(a, b, c, d);
    }
    static ints refuse(ints re, ints im, ints marks) {
        return marks | outside_range<T, true>(re, im);
    }
    static ints reported(ints re, ints im, ints marks) {
        return outside_range<T, true>(re, im) & ~marks;
    }
    static int status(T re, T im) { return status_outside_range(re, im); }

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
    using N = Number<Formula>;
    // ln a.
    struct Logarithm {
        N log, angle;
    };
    // b ln a; the angle without its sign.
    struct Exponent {
        N re, turn;
        longs sign;
        Exponent(const Logarithm& a, doubles u, doubles v) {
            const N p = number<N>(u), q = number<N>(v);
            re = p * a.log - q * a.angle;
            const N im = p * a.angle + q * a.log;
            sign = sign_bit(leading_part(im));
            turn = flipped(im, sign);
        }
    };
    static longs above(N w, double bound) {
        return std::bit_cast<std::int64_t>(bound) - (longs)absolute(leading_part(w));
    }

    // Within the verdict about the size of b ln a.
    static MarkedBy<doubles, Two<doubles>> power(doubles x, doubles y, doubles u, doubles v) {
        auto [re, turn, sign] = Exponent(logarithm(x, y), u, v);
        // Floats are 0 or infinite where e^re ends its range.
        if constexpr (is_single) re = maximum(minimum(re, all(last_re)), all(-last_re));
        const doubles marks = (doubles)(above(re, last_re) | above(turn, last_im));
        const auto [sine, cosine] = sines_near(turn);
        if constexpr (std::is_same_v<N, Parts>) {
            const ExpParts e = exp_parts(exp_reduce<HA>(re.high, re.low));
            const Parts size = normalised({e.high, e.low});
            return {
                {rounded(size * cosine) * e.power, flipped(rounded(size * sine) * e.power, sign)},
                marks};
        } else {
            const doubles size = exp_core<Formula>(re);
            return {{size * cosine, flipped(size * sine, sign)}, marks};
        }
    }
    static Two<N> sines_near(N turn) {
        if constexpr (std::is_same_v<N, Parts>) {
            TrigReduced<> reduced = trig_reduce<sine_quarters, TrigReach::near>(turn.high);
            const Parts r = two_sum(reduced.high, turn.low);
            reduced.high = r.high, reduced.low = reduced.low + r.low;
            return sine_cosine(reduced);
        } else {
            return sine_cosine<Formula>(turn);
        }
    }

    // Of any a but 0 and any b; where b is so large that its scale counts, which it does not where
    // the result is 0 or infinite, marked.
    static MarkedBy<doubles, Two<doubles>> wide_power(doubles x, doubles y, doubles u, doubles v) {
        const ReducedPair b = reduced<200>(u, v);
        auto [re, turn, sign] = Exponent(wide_logarithm(x, y), b.x, b.y);
        longs marks = b.large & ~above(re, 0x1p50);
        const longs end = sign_mask(above(re, 1500));
        re = select(end, number<N>(with_sign(all(1500.0), leading_part(re))), re);

        const longs far = sign_mask(above(turn, last_im));
        Two<N> sines = sines_near(select(far, number<N>(doubles{}), turn));
        if (any_lane(far)) {
            const auto z = sines_far(turn);
            sines = select(far, z.result, sines);
            marks |= far & (longs)z.marks;
        }
        if constexpr (std::is_same_v<N, Parts>) {
            const auto e = wide_exponential<HA>(re.high, re.low);
            return {{e.power.times(e.number * sines.second, all(1.0)),
                     flipped(e.power.times(e.number * sines.first, all(1.0)), sign)},
                    (doubles)marks};
        } else {
            const auto e = wide_exponential<Formula>(re);
            return {{e.power.times(sines.second, all(1.0)),
                     flipped(e.power.times(sines.first, all(1.0)), sign)},
                    (doubles)marks};
        }
    }
    static MarkedBy<doubles, Two<N>> sines_far(N turn) {
        auto z = sine_cosine_far<Formula>(leading_part(turn));
        if constexpr (std::is_same_v<N, Parts>) {
            const longs sign = sign_bit(turn.low);
            const auto low = sine_cosine_far<HA>(absolute(turn.low));
            const auto [s, c] = z.result;
            const Parts t = flipped(low.result.first, sign), one = low.result.second;
            z.result = {s * one + c * t, c * one - s * t};
            z.marks = (doubles)((longs)z.marks | (longs)low.marks);
        }
        return z;
    }
    static Logarithm wide_logarithm(doubles x, doubles y) {
        const ScaledToAny z = of_any_size(x, y);
        Logarithm r = logarithm(z.x.x, z.y.x);
        if (any_lane(z.scaled)) r.log = plus_exponent(z.scaled, r.log, z.exponent());
        r.angle = times_power(r.angle, select(z.x.x > 0.0, z.y.factor, all(1.0)));
        return r;
    }
    static Logarithm logarithm(doubles x, doubles y) {
        const doubles p = absolute(x), q = absolute(y);
        if constexpr (std::is_same_v<N, Parts>) {
            const Parts log = log_of_norm(norm_parts(maximum(p, q), minimum(p, q)), ExtendedLog());
            const Parts angle = turned(atan_quotient_extended(q, not_zero(p)), sign_bit(x));
            return {times_power(log, 0.5), flipped(normalised(angle), sign_bit(y))};
        } else {
            return {log_of_norm<LA>(p, q) * 0.5, flipped(angle_of(q, x), sign_bit(y))};
        }
    }

    static int one(double a, double b, double c, double d, bool finite, double& re, double& im) {
        if ((c == 0 && d == 0) || (a == 1 && b == 0)) return re = 1, im = 0, VTM_STATUS_OK;
        if (is_nan(a) || is_nan(b) || is_nan(c) || is_nan(d))
            return re = im = quiet(quiet(a, b), quiet(c, d)), VTM_STATUS_OK;
        if (a == 0 && b == 0 && is_finite(c) && is_finite(d)) {
            if (c > 0) return re = im = 0, VTM_STATUS_OK;
            re = c < 0 ? Format<double>::infinity : Format<double>::invalid;
            im = c < 0 ? 0 : re;
            return c < 0 ? VTM_STATUS_SING : VTM_STATUS_ERRDOM;
        }
        OneNumber angle(angle_one(b, a, atan_quotient_extended));
        if (to_bits(b) >> 63) angle = -angle;
        if (!finite) return special(a, b, c, d, angle.rounded(), re, im);
        const OneNumber log = log_modulus_one(a, b, ExtendedLog()), u(c), v(d);
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
            log = a == 0 && b == 0 ? -log : log_modulus_one(a, b, ExtendedLog()).rounded();
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
