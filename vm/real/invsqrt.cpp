// InvSqrt: r = 1 / sqrt(x).
//
//   x NaN                   NaN
//   x = +-0                 +-infinity, singularity
//   x < 0, x = -infinity    invalid NaN, domain error
//   x = +infinity           +0
//
// From the bit pattern (vm/core/inverse_root.h), corrected once for single EP, three times for
// single HA, else twice. Double HA cuts it to 22 bits, for which 1 - x t^2 is exact: 0.51 ulp. LA,
// also EP, does not. Single HA corrects LA in double and rounds once.
#include "vm/core/inverse_root.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct InvSqrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(InvSqrt);

    // Double: from 2^-960 to 2^1020, so that no part of x and no square of the result is subnormal;
    // beyond, x times a power of four.
    static ints outside(ints h) {
        if constexpr (std::is_same_v<T, double>)
            return not_between(h, head_of(0x1p-960), head_of(0x1p1020));
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }
    static ints beyond(ints h) requires(std::is_same_v<T, double>) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }
    static V far(V x) requires(std::is_same_v<T, double>) {
        const longs small = x < 1.0;
        return fast(x * select(small, all(0x1p108), all(0x1p-108))) *
               select(small, all(0x1p54), all(0x1p-54));
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            if constexpr (std::is_same_v<Accuracy, LA>) {
                const RootEstimate r = root_estimate(x);
                return times_inverse_root(r.t, r.e);
            }
            const doubles t = leading<31>(inverse_root.estimate(x));
            return times_inverse_root(t, one_less(x, t * t));
        } else {
            if constexpr (std::is_same_v<Accuracy, EP>) return inverse_root.estimate(x);
            const floats y = la.estimate(x),
                         y2 = y * negative_multiply_add(x * y, y, all(1.88988157f));
            if constexpr (std::is_same_v<Accuracy, LA>) return y2;
            const DoublesPair wide = widen(x), t = widen(y2);
            return narrow(corrected(wide.low, t.low), corrected(wide.high, t.high));
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0) return r = T(1) / x, VTM_STATUS_SING;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x == Format<T>::infinity) return r = 0, VTM_STATUS_OK;
        if constexpr (std::is_same_v<T, double>) r = fast(all(x * 0x1p108))[0] * 0x1p54;
        else r = static_cast<float>(quotient(all(double(x)))[0]);
        return VTM_STATUS_OK;
    }

private:
    static doubles quotient(doubles x) { return 1.0 / square_root(x); }

    // 1 - x t2, t2 of 44 bits.
    static doubles one_less(doubles x, doubles t2) {
        if constexpr (is_fused) return negative_multiply_add(x, t2, 1.0);
        const doubles high = leading<44>(x);  // its product has 53 bits
        return (1.0 - high * t2) - (x - high) * t2;
    }

    // 2^(-1/3) of x^(-1/2), relative error 2^-15.1, for which Newton's step needs no factor.
    static constexpr InverseRoot la = {0x5F096000, 1.89753997f, -2.05475211f};

    // The relative error of t cubed, for t of 2^-21.
    static doubles corrected(doubles x, doubles t) {
        const doubles e = negative_multiply_add(x, t * t, 1.0);
        return multiply_add(t, e * multiply_add(e, 0.375, 0.5), t);
    }
};

KEF_MAP1(s, InvSqrt, LA)
KEF_MAP1(s, InvSqrt, HA)
KEF_MAP1(s, InvSqrt, EP)
KEF_MAP1(d, InvSqrt, LA)
KEF_MAP1(d, InvSqrt, HA)

}  // namespace kef::vm
