// Abs: r = |a|, the kernel of Hypot; here with arguments and results of any kind by vectors.
#include "vm/core/complex_kernel.h"
#include "vm/core/hypot_core.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAbs : HypotFormula<T, Accuracy> {
    using Base = HypotFormula<T, Accuracy>;
    using V = Vector<T>;
    KEF_COMPLEX_NAME(Abs);
    static constexpr bool far_everywhere = true;

    static ints beyond(ints, ints) { return ints{}; }
    static MarkedBy<V> far(V a, V b) {
        const V infinity = all(Format<T>::infinity);
        V x = absolute(a), y = absolute(b);
        const auto finite = mask(x < infinity) & mask(y < infinity);
        const bool all_finite = all_lanes(finite);
        const auto infinite = mask(x == infinity) | mask(y == infinity);
        if (!all_finite) x = select(finite, x, all(T(1))), y = where(finite, y);
        V r = of_finite(x, y);
        const auto reported = finite & (mask(r == infinity) |
                                        (mask(r < Format<T>::smallest_normal) & mask(r > T(0))));
        if (!all_finite) r = select(infinite, infinity, select(finite, r, sum_in_order(a, b)));
        return {r, report_marks(V{}, reported)};
    }
    static ints reported(ints, ints marks) { return marked_report(marks); }
    static int status(T r) { return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_UNDERFLOW; }

private:
    static V of_finite(V x, V y) {
        if constexpr (std::is_same_v<T, double>) {
            const longs subnormal = (longs)(maximum(x, y) < Format<T>::smallest_normal);
            if (!any_lane(subnormal)) [[likely]]
                return Base::far(x, y);
            const V r = of_subnormal(x, y);
            if (all_lanes(subnormal)) return r;
            return select(subnormal, r, Base::far(where(~subnormal, x), where(~subnormal, y)));
        } else if constexpr (Base::accurate) {
            return Base::fast(x, y);
        } else {
            return Base::far(x, y);
        }
    }
    // As integers; where the mode word says that such numbers are zeros they are.
    static doubles of_subnormal(doubles x, doubles y) {
        if constexpr (Base::accurate) {
            const doubles a = integer_of(x), b = integer_of(y);
            return times_2_minus_1074(root_of_squares(maximum(a, all(0x1p-100)), b));
        } else {
            const auto integer = [](doubles z) {
                return where(~is_zero(z), (doubles)((longs)z | exponent_field(52)) - 0x1p52);
            };
            const doubles a = integer(x), b = integer(y), root = square_root(a * a + b * b);
            // Up to 2^53 these are the bits.
            const longs below = mask(root < 0x1p52);
            const longs bits = (longs)(root + where(below, all(0x1p52))) - exponent_field(52);
            const doubles r = (doubles)(bits + (~below & exponent_field(-1022)));
            return where(~is_zero(r), r);
        }
    }
};

KEF_COMPLEX_TO_REAL(c, Abs, LA)
KEF_COMPLEX_TO_REAL(c, Abs, HA)
KEF_COMPLEX_TO_REAL(z, Abs, LA)
KEF_COMPLEX_TO_REAL(z, Abs, HA)

}  // namespace kef::vm
