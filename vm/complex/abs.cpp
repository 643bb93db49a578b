// Abs: r = |a|, the kernel of Hypot; of floats here with arguments and results of any kind by
// vectors.
#include "vm/core/complex_kernel.h"
#include "vm/core/hypot_core.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAbs : HypotFormula<T, Accuracy> {
    KEF_COMPLEX_NAME(Abs);
};

template <class Accuracy> struct ComplexAbs<float, Accuracy> : HypotFormula<float, Accuracy> {
    using T = float;
    using Base = HypotFormula<T, Accuracy>;
    using Base::refuse;
    KEF_COMPLEX_NAME(Abs);
    static constexpr bool far_everywhere = true;

    static ints beyond(ints, ints) { return ints{}; }
    // With the lanes whose status is to be reported marked by the bit behind the sign.
    static Marked far(floats a, floats b) {
        const floats x = absolute(a), y = absolute(b), infinity = all(Format<T>::infinity);
        const ints infinite = (x == infinity) | (y == infinity), number = (x == x) & (y == y),
                   finite = number & ~infinite;
        floats r = of_finite(where(finite, x), where(finite, y));
        const ints reported =
            finite & ((r == infinity) | ((r < Format<T>::smallest_normal) & (r > 0.0f)));
        if (!all_lanes(finite))
            r = select(infinite, infinity, select(number, r, sum_in_order(a, b)));
        return {r, (floats)(reported & 0x40000000)};
    }
    static ints refuse(ints, ints marks) { return marks << 1; }
    static ints reported(ints, ints marks) { return marks << 1; }
    static int status(T r) { return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_UNDERFLOW; }

private:
    static floats of_finite(floats x, floats y) {
        if constexpr (Base::accurate) return Base::fast(x, y);
        else return Base::far(x, y);
    }
};

KEF_COMPLEX_TO_REAL(c, Abs, LA)
KEF_COMPLEX_TO_REAL(c, Abs, HA)
KEF_COMPLEX_TO_REAL(z, Abs, LA)
KEF_COMPLEX_TO_REAL(z, Abs, HA)

}  // namespace kef::vm
