// The kernels of Asin, Acos and Atan of complex numbers; those of Asinh, Acosh and Atanh are they
// with exchanged parts. On |x|, |y|, by sums of non-negative terms; W. Kahan, Branch cuts for
// complex elementary functions (1987); T. E. Hull, T. F. Fairgrieve, P. T. P. Tang, ACM TOMS 23
// (1997):
//
//   r = |1 - z|, s = |1 + z|, a = (r + s)/2, A = s + (1 + x), B = r + |1 - x|
//   x <= 1:  a - x = (y^2/A + B)/2,      a - 1 = (y^2/A + y^2/B)/2
//   x > 1:   a - x = (y^2/A + y^2/B)/2,  a - 1 = (y^2/A + B)/2
//   c = sqrt((a - x)(a + x)):  asin z = atan(x/c) + i h, acos z = atan2(c, x) - i h
//   h = acosh a = log1p((a - 1) + sqrt((a - 1)(a + 1)))
//
//   atan z = atan2(2 x, (1 - y)(1 + y) - x^2)/2 + i log1p(4 y / (x^2 + (1 - y)^2))/4
//
//   infinite parts          asin, acos: re the angle of the point, im = +-inf; atan: re = +-pi/2,
//                           im = +-0; a NaN beside an infinity leaves the part that it does not
//                           decide
//   other NaN               NaN; the part that a zero decides is it
//   atan +-i                +-0 + i +-inf, singularity
//
// Double HA: 0.51 ulp for each part; single HA: in double, 0.5 ulp + 2^-27. LA, also EP, some
// units.
#pragma once

#include "vm/core/complex_kernel.h"
#include "vm/core/complex_log.h"
#include "vm/core/complex_one.h"

namespace KEF_VM {

inline doubles root(doubles x) { return square_root(x); }
inline Parts log1p_of_number(Parts x) { return normalised(log1p_parts(x.high, x.low)); }
inline doubles log1p_of_number(doubles x) { return log1p_core<LA>(x); }

enum class InverseSine { asin, acos };

template <InverseSine which> struct InverseSineCore {
    static constexpr bool overflows = false, underflows = false;
    static constexpr bool sine = which == InverseSine::asin;
    template <class Accuracy> static constexpr double last_x() { return 0x1p280; }
    template <class Accuracy> static constexpr double last_y() { return 0x1p280; }

    // Next to 1 and -1 on a line beside the axis a result is the root of the distance.
    static longs special_double(doubles x, doubles y) {
        return (longs)(absolute(x) == 1.0) & is_tiny(y, 0x1p-280);
    }

    // The real and the imaginary part for |x| and |y|, re of acos for the sign of x.
    template <class N> static Two<N> parts(doubles x, doubles y, longs sign) {
        const N difference = sum_of<N>(all(1.0), -x), sum = sum_of<N>(all(1.0), x);
        const N square = square_of<N>(y), distance = absolute_part(difference);
        const N r = root(distance * distance + square), s = root(sum * sum + square);
        const N a = times_power(r + s, 0.5), B = r + distance;
        const N far = square / (s + sum), near = square / not_zero(B);
        const longs beyond = sign_mask(sign_bit(leading_part(difference)));
        const N a_less_x = times_power(far + select(beyond, near, B), 0.5),
                a_less_1 = times_power(far + select(beyond, B, near), 0.5);
        const N c = root(a_less_x * (a + number<N>(x)));
        const N im = log1p_of_number(a_less_1 + root(a_less_1 * (a + 1.0)));
        if constexpr (sine) return {angle_of(number<N>(x), c), im};
        else return {angle_of(c, number<N>(flipped(x, sign))), im};
    }

    template <class Accuracy> static Two<doubles> formula(doubles x, doubles y) {
        return with_signs(parts<Number<Accuracy>>(absolute(x), absolute(y), sign_bit(x)), x, y);
    }
    // ln 2|z| more of what was taken out, and the same angle.
    template <class Accuracy>
    static Two<doubles> of_reduced(doubles x, doubles y, const ReducedPair& z) {
        auto r = parts<Number<Accuracy>>(absolute(x), absolute(y), sign_bit(x));
        r.second = plus_exponent(z.large, r.second, exponent_of(z.field));
        return with_signs(r, x, y);
    }

    // Linear: asin in x, the imaginary part in y for |x| < 1, acos in y for x > 1.
    static Two<doubles> factors(EnlargedParts x, EnlargedParts y) {
        const doubles none = all(1.0);
        return {sine ? x.factor : select(x.x > 1.0, y.factor, none),
                select(absolute(x.x) < 1.0, y.factor, none)};
    }

    static int edge(double x, double y, double& re, double& im) {
        if (is_nan(x) || is_nan(y)) {
            re = im = quiet(x, y);
            if (is_infinite(x) || is_infinite(y)) {
                im = signed_like(Format<double>::infinity, y);
                if (!sine) im = -im;
            } else if (x == 0) {
                re = sine ? x : pi / 2;
            }
            return VTM_STATUS_OK;
        }
        const auto [angle, height] = is_finite(x) && is_finite(y) ? finite(x, y) : infinite(x, y);
        if constexpr (sine) re = angle.with_sign_of(x), im = height.with_sign_of(y);
        else re = angle.rounded(), im = -height.with_sign_of(y);
        return VTM_STATUS_OK;
    }

private:
    template <class N> static Two<doubles> with_signs(const Two<N>& r, doubles x, doubles y) {
        const doubles re = rounded(r.first), im = rounded(r.second);
        if constexpr (sine) return {flipped(re, sign_bit(x)), flipped(im, sign_bit(y))};
        else return {re, flipped(-im, sign_bit(y))};
    }
    struct Result {
        OneNumber angle, height;
    };
    // Where z is so large that sqrt(1 - z^2) is i z or -i z.
    static OneNumber large_angle(double x, double y) {
        return OneNumber(sine ? angle_one(magnitude_of(x), magnitude_of(y)) : angle_one(y, x));
    }
    static Result infinite(double x, double y) {
        return {large_angle(x, y), OneNumber(Format<double>::infinity)};
    }
    // +-1 + iy with a tiny y >= 0: the imaginary part, and acos at 1, are its root.
    static Result next_to_one(double x, double y) {
        const OneNumber number(y);
        const int odd = number.exponent & 1;
        const OneNumber root_y(root(times_power(number.parts(), 1 + odd)),
                               (number.exponent - odd) / 2);
        if (sine) return {OneNumber(quarter_turns(1)), root_y};
        return {x < 0 ? OneNumber(quarter_turns(2)) : root_y, root_y};
    }
    static Result finite(double x, double y) {
        const double a = magnitude_of(x), b = magnitude_of(y), larger = a > b ? a : b;
        if (larger >= 0x1p200) {  // ln 2|z|
            const int e = exponent_of(larger);
            const double shift = 2 * (e + 1);
            const Parts log =
                log_of_norm<HA>(all(if_it_counts(scaled(a, -e))), all(if_it_counts(scaled(b, -e))));
            return {large_angle(x, y),
                    halved(OneNumber(log + Parts{all(shift * ln2_high), all(shift * ln2_low)}))};
        }
        if (a == 1 && b < 0x1p-200) return next_to_one(x, b);
        // What is linear in a tiny part: asin in x, the imaginary part in y for |x| < 1, acos in y
        // for x > 1.
        const Enlarged tiny_x(a), tiny_y(b);
        const Two<Parts> r = parts<Parts>(all(tiny_x.x), all(tiny_y.x), sign_bit(all(x)));
        const bool inside = a < 1;
        Result result = {OneNumber(r.first), OneNumber(r.second)};
        if (sine) result.angle.exponent -= tiny_x.exponent;
        else if (!inside && x > 0) result.angle.exponent -= tiny_y.exponent;
        if (inside) result.height.exponent -= tiny_y.exponent;
        return result;
    }
};

struct InverseTangentCore {
    static constexpr bool overflows = false, underflows = false;
    template <class Accuracy> static constexpr double last_x() { return 0x1p280; }
    template <class Accuracy> static constexpr double last_y() { return 0x1p280; }
    // The poles.
    static ints special_single(ints x, ints y) {
        return is_zero(x) & ((magnitude(y) ^ Format<float>::one_head) - 1);
    }
    static longs special_double(doubles x, doubles y) {
        return (is_zero(x) | is_tiny(x, 0x1p-280)) & (longs)(absolute(y) == 1.0);
    }

    // For |x| and |y|.
    template <class N> static Two<N> parts(doubles x, doubles y) {
        const N difference = sum_of<N>(all(1.0), -y), sum = sum_of<N>(all(1.0), y);
        const N square = square_of<N>(x);
        const N angle = angle_of(number<N>(2.0 * x), difference * sum - square);
        const N ratio = number<N>(4.0 * y) / (square + difference * difference);
        return {times_power(angle, 0.5), times_power(log1p_of_number(ratio), 0.25)};
    }
    template <class Accuracy> static Two<doubles> formula(doubles x, doubles y) {
        const Two<Number<Accuracy>> r = parts<Number<Accuracy>>(absolute(x), absolute(y));
        return {flipped(rounded(r.first), sign_bit(x)), flipped(rounded(r.second), sign_bit(y))};
    }

    // pi/2, y/|z|^2.
    template <class Accuracy>
    static Two<doubles> of_reduced(doubles x, doubles y, const ReducedPair& z) {
        const Two<doubles> r = formula<Accuracy>(x, y);
        return {r.first, r.second * z.inverse_power()};
    }

    // Linear: re in x for |y| < 1, im in y.
    static Two<doubles> factors(EnlargedParts x, EnlargedParts y) {
        return {select(absolute(y.x) < 1.0, x.factor, all(1.0)), y.factor};
    }

    static int edge(double x, double y, double& re, double& im) {
        const double a = magnitude_of(x), b = magnitude_of(y);
        if (is_infinite(x) || is_infinite(y)) {
            re = is_nan(x) ? quiet(x) : signed_like(pi / 2, x), im = signed_like(0, y);
        } else if (is_nan(x) || is_nan(y)) {
            re = im = quiet(x, y);
            if (y == 0) im = y;
        } else if (a == 0 && b == 1) {
            re = x, im = signed_like(Format<double>::infinity, y);
            return VTM_STATUS_SING;
        } else {
            const auto [angle, height] = finite(a, b);
            re = angle.with_sign_of(x), im = height.with_sign_of(y);
        }
        return VTM_STATUS_OK;
    }

private:
    struct Result {
        OneNumber angle, height;
    };
    static Result finite(double x, double y) {
        const double larger = x > y ? x : y;
        if (larger >= 0x1p200) {  // pi/2, y/|z|^2
            const int e = exponent_of(larger);
            const Parts norm = square_of<Parts>(all(if_it_counts(scaled(x, -e)))) +
                               square_of<Parts>(all(if_it_counts(scaled(y, -e))));
            return {OneNumber(quarter_turns(1)), OneNumber(y) / OneNumber(norm, 2 * e)};
        }
        if (y == 1 && x < 0x1p-200) {  // pi/4, ln(2/x)/2
            const OneNumber number(x);
            const double shift = 1 - number.exponent;
            const Parts log = times_power(log_of_norm<HA>(all(number.high), doubles{}), 0.5);
            const Parts turns = {all(shift * ln2_high), all(shift * ln2_low)};
            return {halved(OneNumber(quarter_turns(1))), halved(OneNumber(turns - log))};
        }
        // What is linear in a tiny part: re in x for |y| < 1, im in y.
        const Enlarged tiny_x(x), tiny_y(y);
        const Two<Parts> r = parts<Parts>(all(tiny_x.x), all(tiny_y.x));
        Result result = {OneNumber(r.first), OneNumber(r.second)};
        if (y < 1) result.angle.exponent -= tiny_x.exponent;
        result.height.exponent -= tiny_y.exponent;
        return result;
    }
};

template <class T, class Accuracy>
using AsinOfParts = ComplexKernel<InverseSineCore<InverseSine::asin>, T, Accuracy>;
template <class T, class Accuracy>
using AcosOfParts = ComplexKernel<InverseSineCore<InverseSine::acos>, T, Accuracy>;
template <class T, class Accuracy>
using AtanOfParts = ComplexKernel<InverseTangentCore, T, Accuracy>;

}  // namespace KEF_VM
