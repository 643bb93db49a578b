// Abs: r = |a|, the kernel of Hypot; here of arguments and results of any kind by vectors.
#include "vm/core/complex_kernel.h"
#include "vm/core/hypot_core.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAbs : HypotFormula<T, Accuracy> {
    using V = Vector<T>;
    using Base = HypotFormula<T, Accuracy>;
    using Base::refuse;
    KEF_COMPLEX_NAME(Abs);
    static constexpr bool is_double = std::is_same_v<T, double>, far_everywhere = true;

    static ints beyond(ints, ints) { return ints{}; }
    // With the lanes whose status is to be reported marked by the bit behind the sign.
    static MarkedBy<V> far(V a, V b) {
        using Bits = BitsOf<V>;
        const V x = absolute(a), y = absolute(b), infinity = all(Format<T>::infinity);
        const Bits infinite = (Bits)(x == infinity) | (Bits)(y == infinity),
                   number = (Bits)(x == x) & (Bits)(y == y), finite = number & ~infinite;
        V r = of_finite(where(finite, x), where(finite, y));
        const Bits reported =
            finite &
            ((Bits)(r == infinity) | ((Bits)(r < Format<T>::smallest_normal) & (Bits)(r > T(0))));
        if (!all_lanes(finite))
            r = select(infinite, infinity, select(number, r, sum_in_order(a, b)));
        return {r, (V)(reported & (Bits)all(T(2)))};
    }
    static ints refuse(ints, ints marks) { return marks << 1; }
    static ints reported(ints, ints marks) { return marks << 1; }
    static int status(T r) { return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_UNDERFLOW; }

private:
    static V of_finite(V x, V y) {
        if constexpr (!is_double) {
            if constexpr (Base::accurate) return Base::fast(x, y);
            else return Base::far(x, y);
        } else {
            const doubles larger = maximum(x, y);
            const longs small = (longs)(larger < 0x1p-1022), large = (longs)(larger >= 0x1p1023);
            if (!any_lane(small | large)) [[likely]]
                return Base::far(x, y);
            const longs other = small | large;
            const doubles r = Base::far(select(other, all(1.0), x), select(other, all(1.0), y));
            return select(other, of_other(x, y, small), r);
        }
    }
    // Of subnormal numbers and of those from 2^1023 on, as by the edge.
    static doubles of_other(doubles x, doubles y, longs small) {
        const doubles u = select(small, integer_of(x), x * 0x1p-600),
                      v = select(small, integer_of(y), y * 0x1p-600);
        const doubles least = all(0x1p-100);  // beside which nothing is left of 0
        const Parts r = root_of_squares(maximum(u, least), maximum(v, least));
        return select(small, subnormal_of(r.high, r.low), rounded(r) * 0x1p600);
    }
};

KEF_COMPLEX_TO_REAL(c, Abs, LA)
KEF_COMPLEX_TO_REAL(c, Abs, HA)
KEF_COMPLEX_TO_REAL(z, Abs, LA)
KEF_COMPLEX_TO_REAL(z, Abs, HA)

}  // namespace kef::vm
