// The kernels of Sin and Cos of complex numbers; those of Sinh and Cosh are they with exchanged
// parts.
//
//   sin(x + iy) = sin x cosh y + i cos x sinh y,  cos(x + iy) = cos x cosh y - i sin x sinh y
//
//   x infinite                  NaN, domain error; y = +-0: the part with sinh y is a zero,
//                               y infinite: the part with cos x is infinite
//   y infinite, x finite        infinities with the signs of the sines, a zero for x = +-0
//   a part too large            infinite, overflow
//
// Double HA: both factors in two parts, 0.53 ulp for each part. Single HA: in double, 0.5 ulp +
// 2^-27. LA some units.
#pragma once

#include "vm/core/complex_kernel.h"
#include "vm/core/complex_one.h"

namespace KEF_VM {

template <Phase phase> struct SineCore {
    static constexpr bool overflows = true, underflows = false;
    static constexpr bool sine = phase == Phase::sine;
    template <class Accuracy> static constexpr double last_x() {
        return TrigLast<double, Accuracy>::near;
    }
    template <class Accuracy> static constexpr double last_y() { return hyperbolic_last; }

    static constexpr bool angle_first = true;
    template <class Accuracy>
    static Two<doubles> with_sines(const Two<Number<Accuracy>>& sines, doubles x, doubles y) {
        const auto [s, c] = sines;
        const auto hyperbolic = twice_hyperbolic<Accuracy>(absolute(y));
        const auto ch = hyperbolic.second;
        // A product of parts may be +0 where z is negative.
        const auto times_sh = [&](const auto& z) {
            const doubles product = rounded(z * hyperbolic.first);
            if constexpr (!std::is_same_v<Accuracy, HA>) return product;
            else return (doubles)((longs)product | sign_bit(leading_part(z)));
        };
        if constexpr (sine)
            return {flipped(0.5 * rounded(s * ch), sign_bit(x)),
                    flipped(0.5 * times_sh(c), sign_bit(y))};
        else return {0.5 * rounded(c * ch), flipped(-0.5 * times_sh(s), sign_bit(x) ^ sign_bit(y))};
    }

    // Both hyperbolic ones are e^|y|/2; from |y| = 1500 on the parts are 0 or infinite.
    template <class Accuracy>
    static Two<doubles> outer(const Two<Number<Accuracy>>& sines, EnlargedParts x,
                              EnlargedParts y) {
        const doubles size = minimum(maximum(absolute(y.x), all(hyperbolic_last)), all(1500.0));
        const auto e = wide_exponential<Accuracy>(size);
        const doubles s = e.power.times(times_power(sines.first * e.number, 0.5), x.factor),
                      c = e.power.times(times_power(sines.second * e.number, 0.5), all(1.0));
        if constexpr (sine) return {flipped(s, sign_bit(x.x)), flipped(c, sign_bit(y.x))};
        else return {c, flipped(-s, sign_bit(x.x) ^ sign_bit(y.x))};
    }

    static Two<doubles> factors(EnlargedParts x, EnlargedParts y) {
        if constexpr (sine) return {x.factor, y.factor};
        else return {all(1.0), x.factor * y.factor};
    }

    static int edge(double x, double y, double& re, double& im) {
        if (is_finite(x) && is_finite(y)) {
            const SinesOne trig = sines_one(magnitude_of(x)),
                           hyper = hyperbolics_one(magnitude_of(y));
            if constexpr (sine) {
                re = (trig.sine * hyper.cosine).with_sign_of(x);
                im = (trig.cosine * hyper.sine).with_sign_of(y);
            } else {
                re = (trig.cosine * hyper.cosine).rounded();
                im = -(trig.sine * hyper.sine).with_sign_of(x);
                if (to_bits(y) >> 63) im = -im;
            }
            return VTM_STATUS_OK;
        }
        const SpecialPair trig = special_sines(x), hyper = special_hyperbolics(y);
        if constexpr (sine) {
            re = special_sine_product(trig.sine, hyper.cosine);
            im = special_cosine_product(trig.cosine, hyper.sine);
        } else {
            re = special_cosine_product(trig.cosine, hyper.cosine);
            im = -special_sine_product(trig.sine, hyper.sine);
        }
        return domain_status(x, y, re, im);
    }
};

template <class T, class Accuracy>
using SinOfParts = ComplexKernel<SineCore<Phase::sine>, T, Accuracy>;
template <class T, class Accuracy>
using CosOfParts = ComplexKernel<SineCore<Phase::cosine>, T, Accuracy>;

}  // namespace KEF_VM
