// InvSqrt: r = 1 / sqrt(x).
//
//   x NaN                   NaN
//   x = +-0                 +-infinity, singularity
//   x < 0, x = -infinity    invalid NaN, domain error
//   x = +infinity           +0
//
// Double HA corrects the quotient t cut to 22 bits, for which 1 - x t^2 is exact:
// 0.51 ulp. Double LA is the plain quotient, 1.4 ulp; also EP. Single HA is the quotient
// in double, rounded once. Single LA and EP start from the reciprocal instruction, whose last
// bits depend on the processor: 2^-22 and 2^-11.4.
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct InvSqrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(InvSqrt);

    // Double: above 2^-960, so that no part of x is subnormal.
    static i4 outside(i4 h) {
        constexpr std::uint32_t small =
            std::is_same_v<T, double> ? 0x03F00000 : Format<float>::normal_head;
        return not_between(h, small, Format<T>::infinity_head);
    }

    static d2 quotient(d2 x) { return 1.0 / square_root(x); }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            const d2 q = quotient(x);
            if constexpr (std::is_same_v<Accuracy, LA>) return q;
            // x^(-1/2) = t (1 - e)^(-1/2), 0 <= e < 2^-20; x t^2 has 9 + 44 bits.
            const d2 t = (d2)((l2)q & INT64_C(-0x80000000)), t2 = t * t;
            const d2 x_high = (d2)((l2)x & INT64_C(-0x100000000000));
            const d2 e = (1.0 - x_high * t2) - (x - x_high) * t2;
            return t + t * (e * (0.5 + e * 0.375));
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return in_double(x, quotient);
        } else {
            const f4 y = (f4)_mm_rsqrt_ps((__m128)x);
            if constexpr (std::is_same_v<Accuracy, EP>) return y;
            return y + y * (0.5f - (x * 0.5f) * (y * y));
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
};

KEF_MAP1(s, InvSqrt, LA)
KEF_MAP1(s, InvSqrt, HA)
KEF_MAP1(s, InvSqrt, EP)
KEF_MAP1(d, InvSqrt, LA)
KEF_MAP1(d, InvSqrt, HA)

}  // namespace kef::vm
