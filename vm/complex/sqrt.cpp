// Sqrt: r = the root of a = x + iy with re >= 0; im has the sign of y.
//
//   y infinite              inf + iy, of any x
//   x = -inf, y finite      0 + i inf with the sign of y; y NaN: NaN + i inf
//   x = +inf, y finite      inf + 0; y NaN: inf + i NaN
//   other NaN               NaN
//
// No error conditions. Double HA: 0.50 ulp for each part; single HA: in double, 0.5 ulp + 2^-27.
// LA: some units; EP is LA.
#include "vm/core/complex_kernel.h"
#include "vm/core/complex_one.h"
#include "vm/core/complex_root.h"

namespace kef::vm {

struct SqrtCore {
    static constexpr bool overflows = false, underflows = false;
    template <class Accuracy> static constexpr double last_x() { return 0x1p280; }
    template <class Accuracy> static constexpr double last_y() { return 0x1p280; }
    static ints special_single(ints x, ints y) { return both_zero(x, y); }
    static longs special_double(doubles x, doubles y) { return both_zero(x, y); }
    template <class Accuracy> static Two<doubles> formula(doubles x, doubles y) {
        return scaled_formula<Accuracy>(x, y, all(1.0), all(1.0));
    }
    // Whose smaller result is linear in a tiny y beside x; beside a large one it is y/2t, since of
    // what was scaled nothing may be left.
    template <class Accuracy> static Two<doubles> any_size(doubles x, doubles y) {
        const ScaledToAny z = of_any_size(x, y);
        const Two<doubles> r = scaled_formula<Accuracy>(z.x.x, z.y.x, z.root(), z.y.factor);
        const longs large = (longs)(maximum(absolute(x), absolute(y)) >= 0x1p280);
        return any_lane(large) ? select(large, of_large<Accuracy>(x, y, z), r) : r;
    }
    static int edge(double x, double y, double& re, double& im) {
        if (is_infinite(y)) {
            re = Format<double>::infinity, im = y;
        } else if (is_infinite(x)) {
            const double other = is_nan(y) ? quiet(y) : 0;
            re = x < 0 ? other : x, im = x < 0 ? -x : other;
            if (!is_nan(im)) im = signed_like(im, y);
        } else if (is_nan(x) || is_nan(y)) {
            re = im = quiet(x, y);
        } else if (x == 0 && y == 0) {
            re = 0, im = y;
        } else {
            finite(x, y, re, im);
        }
        return VTM_STATUS_OK;
    }

private:
    template <class Accuracy>
    static Two<doubles> scaled_formula(doubles x, doubles y, doubles scale, doubles y_scale) {
        using N = Number<Accuracy>;
        const auto root = complex_root<N>(absolute(x), absolute(y));
        return placed(rounded(root.larger) * scale, rounded(root.smaller) * y_scale * scale, x, y);
    }
    template <class Accuracy>
    static Two<doubles> of_large(doubles x, doubles y, const ScaledToAny& z) {
        using N = Number<Accuracy>;
        const N t = times_power(complex_root<N>(absolute(z.x.x), absolute(z.y.x)).larger, z.root());
        // By more than 2^200 above the smallest normal number the quotient's low part is one too.
        const doubles up = select(absolute(y) < 0x1p-280, all(0x1p200), all(1.0)),
                      down = select(absolute(y) < 0x1p-280, all(0x1p-200), all(1.0));
        const doubles s = rounded(number<N>(absolute(y) * up) / times_power(t, 2)) * down;
        return placed(rounded(t), s, x, y);
    }
    static Two<doubles> placed(doubles t, doubles s, doubles x, doubles y) {
        const longs left = sign_mask(sign_bit(x));
        return {select(left, s, t), flipped(select(left, t, s), sign_bit(y))};
    }
    // t of the number times an even power of two, s from y itself, which may be far smaller.
    static void finite(double x, double y, double& re, double& im) {
        const double a = magnitude_of(x), b = magnitude_of(y);
        const int e = exponent_of(a > b ? a : b) & ~1;
        const doubles p = all(if_it_counts(scaled(a, -e))), q = all(if_it_counts(scaled(b, -e)));
        const OneNumber t(complex_root<Parts>(p, q).larger, e / 2);
        const OneNumber s = halved(OneNumber(b) / t);
        const bool left = x < 0;
        re = (left ? s : t).rounded(), im = (left ? t : s).with_sign_of(y);
    }
};

template <class T, class Accuracy> struct ComplexSqrt : ComplexKernel<SqrtCore, T, Accuracy> {
    KEF_COMPLEX_NAME(Sqrt);
};

KEF_COMPLEX1(c, Sqrt, HA)
KEF_COMPLEX1(z, Sqrt, LA)
KEF_COMPLEX1(z, Sqrt, HA)

}  // namespace kef::vm
