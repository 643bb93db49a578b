// Exp: r = e^x (cos y + i sin y) of a = x + iy.
//
//   y = +-0                     im = y
//   x = +inf, y finite, not 0   infinities with the signs of cos y and sin y
//   x = -inf                    zeros likewise
//   y infinite, x not -inf      NaN, domain error; x = +inf: im alone
//   a part too large            infinite, overflow
//   both parts subnormal or 0   underflow
//
// Double: e^x and the sines in two parts, 0.53 ulp for each part. Single HA: in double, 0.5 ulp +
// 2^-27; LA, also EP, with the short polynomials of double.
#include "vm/core/complex_kernel.h"
#include "vm/core/complex_one.h"

namespace kef::vm {

struct ExpCore {
    static constexpr bool overflows = true, underflows = true;
    // Down to -500 nothing becomes subnormal.
    template <class Accuracy> static constexpr double last_x() { return 500; }
    template <class Accuracy> static constexpr double last_y() {
        return TrigLast<double, Accuracy>::near;
    }
    static constexpr bool angle_first = false;
    template <class Accuracy>
    static Two<doubles> with_sines(const Two<Number<Accuracy>>& sines, doubles x, doubles y) {
        const auto [sine, cosine] = sines;
        if constexpr (std::is_same_v<Accuracy, HA>) {
            const ExpParts e = exp_parts(x);
            const Parts size = normalised({e.high, e.low});
            return {rounded(size * cosine) * e.power,
                    flipped(rounded(size * sine) * e.power, sign_bit(y))};
        } else {
            const doubles size = exp_core<Accuracy>(x);
            return {size * cosine, flipped(size * sine, sign_bit(y))};
        }
    }
    // In powers of two whose product may leave the range of one; from |x| = 1500 on the result is 0
    // or infinite, of the smallest sine too.
    template <class Accuracy>
    static Two<doubles> outer(const Two<Number<Accuracy>>& sines, EnlargedParts x,
                              EnlargedParts y) {
        const auto e = wide_exponential<Accuracy>(within(x.x, 1500.0));
        return {e.power.times(e.number * sines.second, all(1.0)),
                flipped(e.power.times(e.number * sines.first, y.factor), sign_bit(y.x))};
    }
    static Two<doubles> factors(EnlargedParts, EnlargedParts y) { return {all(1.0), y.factor}; }
    static int edge(double x, double y, double& re, double& im) {
        if (is_finite(x) && is_finite(y)) {
            const OneNumber size = exp_one(x);
            const SinesOne s = sines_one(magnitude_of(y));
            re = (size * s.cosine).rounded(), im = (size * s.sine).with_sign_of(y);
            return VTM_STATUS_OK;
        }
        // The common ones without sines.
        if (is_nan(x) && y != 0 && is_finite(y))
            return re = quiet(x), im = magnitude_of(re), VTM_STATUS_OK;
        if (is_finite(x) && is_infinite(y))
            return re = im = Format<double>::invalid, VTM_STATUS_ERRDOM;
        // A finite size stands beside a NaN.
        const double size = is_nan(x) ? quiet(x) : is_finite(x) ? 1 : x > 0 ? x : 0;
        const SpecialPair s = special_sines(y);
        re = special_cosine_product(s.cosine, size);
        im = special_sine_product(s.sine, magnitude_of(size));
        return domain_status(x, y, re, im);
    }
};

template <class T, class Accuracy> struct ComplexExp : ComplexKernel<ExpCore, T, Accuracy> {
    KEF_COMPLEX_NAME(Exp);
};

KEF_COMPLEX1(c, Exp, LA)
KEF_COMPLEX1(c, Exp, HA)
KEF_COMPLEX1(z, Exp, HA)

}  // namespace kef::vm
