// The kernel of Ln and Log10 of complex numbers: r = ln |a| + i angle a, times a factor.
//
//   a = 0               -inf + i angle of Atan2, singularity
//   an infinite part    +inf; the angle of Atan2, NaN where the other part is
//   other NaN           NaN
//
// Double HA: 0.51 ulp for each part, next to |a| = 1 too; Log10 0.53. LA, EP: next to |a| = 1
// relative to |r|. Single: in double.
#pragma once

#include "vm/core/complex_kernel.h"
#include "vm/core/complex_log.h"
#include "vm/core/complex_one.h"

namespace KEF_VM {

// From natural logarithms.
struct Natural {
    static auto from_natural(auto x) { return x; }
};
struct Decimal {
    static doubles from_natural(doubles x) { return x * log10_e; }
    static Parts from_natural(Parts x) { return normalised(log10_parts(x)); }
};

template <class Base> struct LnCore {
    static constexpr bool overflows = false, underflows = false;
    template <class Accuracy> static constexpr double last_x() { return 0x1p280; }
    template <class Accuracy> static constexpr double last_y() { return 0x1p280; }
    static ints special_single(ints x, ints y) { return both_zero(x, y); }
    // Or beside 1 a tiny part, whose square counts.
    static longs special_double(doubles x, doubles y) {
        const auto beside_one = [](doubles one, doubles z) {
            return (longs)(absolute(one) == 1.0) & is_tiny(z, 0x1p-280);
        };
        return both_zero(x, y) | beside_one(x, y) | beside_one(y, x);
    }
    template <class Accuracy> static Two<doubles> formula(doubles x, doubles y) {
        return result<Accuracy>(x, y, log_of_norm<Accuracy>(absolute(x), absolute(y)));
    }
    // Whose angle is linear in a tiny y beside x > 0.
    template <class Accuracy> static Two<doubles> any_size(doubles x, doubles y) {
        using N = Number<Accuracy>;
        const ScaledToAny z = of_any_size(x, y);
        N log = log_of_norm<Accuracy>(absolute(z.x.x), absolute(z.y.x));
        if (any_lane(z.scaled)) log = plus_exponent(z.scaled, log, 2.0 * z.exponent());
        const Two<doubles> r = result<Accuracy>(z.x.x, z.y.x, log);
        return {r.first, r.second * select(z.x.x > 0.0, z.y.factor, all(1.0))};
    }
    static int edge(double x, double y, double& re, double& im) {
        if (is_nan(x) || is_nan(y)) {
            re = im = quiet(x, y);
            if (is_infinite(x) || is_infinite(y)) re = Format<double>::infinity;
            return VTM_STATUS_OK;
        }
        const AngleOne angle = angle_one(y, x);
        im = scaled_by_base(OneNumber(angle)).with_sign_of(y);
        re = Format<double>::infinity;
        if (is_infinite(x) || is_infinite(y)) return VTM_STATUS_OK;
        if (x == 0 && y == 0) return re = -re, VTM_STATUS_SING;
        re = scaled_by_base(log_modulus_one(x, y, PlainLog())).rounded();
        return VTM_STATUS_OK;
    }

private:
    template <class Accuracy>
    static Two<doubles> result(doubles x, doubles y, const Number<Accuracy>& log) {
        using N = Number<Accuracy>;
        const N angle = angle_of(number<N>(absolute(y)), number<N>(x));
        return {rounded(Base::from_natural(times_power(log, 0.5))),
                flipped(rounded(Base::from_natural(angle)), sign_bit(y))};
    }
    static OneNumber scaled_by_base(const OneNumber& x) {
        return {Base::from_natural(x.parts()), x.exponent};
    }
};

}  // namespace KEF_VM
