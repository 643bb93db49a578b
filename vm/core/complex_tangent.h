// The kernel of Tan of complex numbers; that of Tanh is it with exchanged parts.
//
//   tan(x + iy) = (sin x cos x + i sinh y cosh y) / (cos^2 x + sinh^2 y)
//
// of non-negative terms alone.
//
//   y infinite                  +-0 + i +-1, of any x; the zero has the sign of sin 2x
//   x infinite, y finite        NaN, domain error; im = y where that is +-0
//   NaN                         NaN; im = y where that is +-0, re = x likewise
//
// Double HA: 0.54 ulp for each part; single HA: in double, 0.5 ulp + 2^-27. LA, also EP, some
// units.
#pragma once

#include "vm/core/complex_kernel.h"
#include "vm/core/complex_one.h"

namespace KEF_VM {

struct TangentCore {
    static constexpr bool overflows = false, underflows = false;
    template <class Accuracy> static constexpr double last_x() {
        return TrigLast<double, Accuracy>::near;
    }
    // e^-2y and its products with tiny parts are normal numbers.
    static constexpr double last = 140;
    template <class Accuracy> static constexpr double last_y() { return last; }

    static constexpr bool angle_first = true;
    template <class Accuracy>
    static Two<doubles> with_sines(const Two<Number<Accuracy>>& sines, doubles x, doubles y) {
        const auto [s, c] = sines;
        const auto product = times_power(s * c, 4), square = times_power(c * c, 4);
        Two<doubles> r;
        if constexpr (std::is_same_v<Accuracy, HA>) {
            const auto [sh, ch] = twice_hyperbolic<HA>(absolute(y));
            const Parts denominator = square + sh * sh;
            r = {rounded(product / denominator), rounded(sh * ch / denominator)};
        } else {
            r = quotients<Accuracy>(product, square, absolute(y));
        }
        return {flipped(r.first, sign_bit(x)), flipped(r.second, sign_bit(y))};
    }

    // With few roundings: 4 sinh y cosh y and 4 sinh^2 y are E (E + 2) and E^2 over E + 1,
    // E = e^2y - 1 = high + low.
    template <class Accuracy>
    static Two<doubles> quotients(doubles product, doubles square, doubles y) {
        doubles high, low{};
        if constexpr (std::is_same_v<Accuracy, LA>) {
            const Parts e = expm1_sum<true>(2.0 * y), sum = fast_two_sum(e.high, e.low);
            high = sum.high, low = sum.low;
        } else {
            high = expm1_core<Accuracy>(2.0 * y);
        }
        // The larger term of the denominator comes last.
        const doubles twice = high + high, other = high * high;
        const doubles rest = multiply_add(square, high, minimum(square, other) + twice * low);
        const doubles denominator = maximum(square, other) + rest;
        return {multiply_add(product, high, multiply_add(product, low, product)) / denominator,
                (twice + (other + (low + low))) / denominator};
    }

    // 4 sin x cos x e^(-2 y) and 1; from y = 384 on the power does not matter. The exponential of
    // HA for LA too, whose own loses units in wide arguments.
    template <class Accuracy>
    static Two<doubles> outer(const Two<Number<Accuracy>>& sines, EnlargedParts x,
                              EnlargedParts y) {
        const auto product = times_power(sines.first * sines.second, 4);
        const auto e = wide_exponential<HA>(-2.0 * minimum(absolute(y.x), all(384.0)));
        const auto rest = number<Number<Accuracy>>(e.number);
        return {flipped(e.power.times(product * rest, x.factor), sign_bit(x.x)),
                flipped(all(1.0), sign_bit(y.x))};
    }

    static Two<doubles> factors(EnlargedParts x, EnlargedParts y) { return {x.factor, y.factor}; }

    static int edge(double x, double y, double& re, double& im) {
        if (is_infinite(y)) {
            im = signed_like(1, y), re = signed_like(0, x);
            if (is_finite(x)) {
                const SpecialPair s = special_sines(x);
                re = special_sine_product(s.sine * s.cosine, 0);
            }
        } else if (is_finite(x) && is_finite(y)) {
            finite(x, y, re, im);
        } else {
            const double nan = is_nan(x) || is_nan(y) ? quiet(x, y) : Format<double>::invalid;
            re = x == 0 ? x : nan, im = y == 0 ? y : nan;
            return domain_status(x, y, re, im);
        }
        return VTM_STATUS_OK;
    }

private:
    static void finite(double x, double y, double& re, double& im) {
        const SinesOne trig = sines_one(magnitude_of(x));
        const OneNumber product = trig.sine * trig.cosine;
        const double height = magnitude_of(y);
        if (height >= 22) {  // 4 sin x cos x e^(-2 y), 1
            OneNumber rest = product * exp_one(-2 * (height < 800 ? height : 800));
            rest.exponent += 2;
            re = rest.with_sign_of(x), im = signed_like(1, y);
            return;
        }
        const SinesOne hyper = hyperbolics_one(height);
        const Parts c = trig.cosine.unscaled(), sh = hyper.sine.unscaled();
        const OneNumber denominator(c * c + sh * sh);
        re = (product / denominator).with_sign_of(x);
        im = (hyper.sine * hyper.cosine / denominator).with_sign_of(y);
    }
};

template <class T, class Accuracy> using TanOfParts = ComplexKernel<TangentCore, T, Accuracy>;

}  // namespace KEF_VM
