// Arg: r = the angle of a in [-pi, pi], the kernel of Atan2; here with zeros, subnormal numbers,
// infinities and NaN by vectors.
#include "vm/core/atan2_single.h"
#include "vm/core/complex_kernel.h"

namespace kef::vm {

template <class T, class Accuracy> struct AngleOfPoint : Atan2Formula<T, Accuracy> {
    using Base = Atan2Formula<T, Accuracy>;
    using V = Vector<T>;

    static ints beyond(ints, ints) { return ints{}; }
    // Of another point of the same direction; subnormal results are for the edge.
    static MarkedBy<V> far(V a, V b) {
        const V infinity = all(Format<T>::infinity), one = all(T(1)), h = absolute(a),
                w = absolute(b);
        const auto number = mask(h == h) & mask(w == w),
                   finite = mask(h < infinity) & mask(w < infinity);
        V y = a, x = b;
        if (!all_lanes(finite)) {
            const auto towards = [&](V size, V part) {
                return select(finite, part, with_sign(where(size == infinity, one), part));
            };
            y = where(number, towards(h, a)), x = select(number, towards(w, b), one);
        }
        V r = of_finite(y, x, finite);
        const auto small = mask(absolute(r) < Format<T>::smallest_normal) & mask(y != T(0));
        if (!all_lanes(finite)) r = select(number, r, sum_in_order(a, b));
        return {r, (V)small};
    }

private:
    // LA as Atan2, but of infinities and subnormal heights, which are for the edge there.
    static floats of_finite(floats y, floats x, ints same) {
        if constexpr (std::is_same_v<Accuracy, LA>) {
            const floats height = absolute(y);
            const ints plain =
                same & (mask(height >= Format<float>::smallest_normal) | mask(height == 0.0f));
            if (all_lanes(plain)) return angle_single(y, x);
            if (!any_lane(plain)) return Base::far(y, x);
            return select(plain, angle_single(y, x), Base::far(y, x));
        } else {
            return Base::far(y, x);
        }
    }
    // With zeros, subnormal numbers and infinities in every slot as accurate.
    static doubles of_finite(doubles y, doubles x, longs same) {
        const doubles size = maximum(absolute(y), absolute(x));
        x = select(size == 0.0, with_sign(all(1.0), x), x);
        const longs special =
            ~same | mask(minimum(absolute(y), absolute(x)) < Format<T>::smallest_normal);
        const longs small = special & mask(size < 0x1p-900);
        if (any_lane(small))
            y = select(small, times_2_1074(where(small, y)), y),
            x = select(small, times_2_1074(where(small, x)), x);
        if (all_lanes(special)) return Atan2Formula<T, HA>::far(y, x);
        const doubles r = Base::far(y, x);
        return any_lane(special) ? select(special, Atan2Formula<T, HA>::far(y, x), r) : r;
    }
};

template <class T, class Accuracy>
struct ComplexArg : ArgumentsExchanged<AngleOfPoint<T, Accuracy>> {
    KEF_COMPLEX_NAME(Arg);
};

KEF_COMPLEX_TO_REAL(c, Arg, LA)
KEF_COMPLEX_TO_REAL(c, Arg, HA)
KEF_COMPLEX_TO_REAL(z, Arg, LA)
KEF_COMPLEX_TO_REAL(z, Arg, HA)

}  // namespace kef::vm
