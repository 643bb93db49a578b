// InvSqrt: r = 1 / sqrt(x).
//
//   x NaN                   NaN
//   x = +-0                 +-infinity, singularity
//   x < 0, x = -infinity    invalid NaN, domain error
//   x = +infinity           +0
//
// Double HA corrects the quotient t = 1/sqrt(x) cut to 22 bits, for which 1 - x t^2 is
// exact: 0.51 ulp. Double LA iterates from the bit pattern; also EP. The single kernels start from
// the reciprocal instruction, whose last bits depend on the processor: EP is 2^-11.4, LA 2^-22, HA
// corrects that in double and rounds once, so that its bits do not depend.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct InvSqrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(InvSqrt);

    // Double: above 2^-960, so that no part of x is subnormal.
    static i4 outside(i4 h) {
        constexpr std::uint32_t small =
            std::is_same_v<T, double> ? 0x03F00000 : Format<float>::normal_head;
        return not_between(h, small, Format<T>::infinity_head);
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            if constexpr (std::is_same_v<Accuracy, LA>) return iterate(x);
            // x^(-1/2) = t (1 - e)^(-1/2), 0 <= e < 2^-20; x t^2 has 9 + 44 bits.
            const d2 t = (d2)((l2)quotient(x) & INT64_C(-0x80000000)), t2 = t * t;
            const d2 x_high = (d2)((l2)x & INT64_C(-0x100000000000));
            const d2 e = (1.0 - x_high * t2) - (x - x_high) * t2;
            return t + t * (e * (0.5 + e * 0.375));
        } else {
            const f4 y = (f4)_mm_rsqrt_ps((__m128)x);
            if constexpr (std::is_same_v<Accuracy, EP>) return y;
            const f4 y2 = y + y * (0.5f - (x * y) * (y * 0.5f));
            if constexpr (std::is_same_v<Accuracy, LA>) return y2;
            const d2x2 wide = widen(x), t = widen(y2);
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
    static d2 quotient(d2 x) { return 1.0 / square_root(x); }

    // The relative error of t cubed, for t of 2^-21.
    static d2 corrected(d2 x, d2 t) {
        const d2 e = 1.0 - x * (t * t);
        return t + t * (e * (0.5 + e * 0.375));
    }

    // From 3.5% by four steps of Newton.
    static d2 iterate(d2 x) {
        const d2 half = x * 0.5;
        d2 y = (d2)(INT64_C(0x5FE6EB50C7B537A9) - ((l2)_mm_srli_epi64((__m128i)x, 1)));
        y = y * (1.5 - (half * y) * y);
        y = y * (1.5 - (half * y) * y);
        y = y * (1.5 - (half * y) * y);
        return y + y * (0.5 - (half * y) * y);
    }
};

KEF_MAP1(s, InvSqrt, LA)
KEF_MAP1(s, InvSqrt, HA)
KEF_MAP1(s, InvSqrt, EP)
KEF_MAP1(d, InvSqrt, LA)
KEF_MAP1(d, InvSqrt, HA)

}  // namespace kef::vm
