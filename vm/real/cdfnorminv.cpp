// CdfNormInv: r = -sqrt2 erfc^-1(2 p), the quantile of the normal distribution.
//
//   p NaN                       NaN
//   p = +-0                     -infinity, singularity
//   p = 1                       +infinity, singularity
//   p < 0, p > 1                invalid NaN, domain error
//
// Double HA and LA are one formula, 0.57 ulp. Single HA is the same, rounded once; the edge
// decides beside midpoints with the low part.
#include "vm/core/erf_inverse_core.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Heads of 2^-11, 1 - 2^-11.
template <class T> struct CdfNormInvRange;
template <> struct CdfNormInvRange<double> {
    static constexpr std::uint32_t first = 0x3F400000, last = 0x3FEFFC00;
};
template <> struct CdfNormInvRange<float> {
    static constexpr std::uint32_t first = 0x3A000000, last = 0x3F7FE000;
};

}  // namespace

template <class T, class Accuracy>
struct CdfNormInv : ErfInverseKernel<CdfNormInv<T, Accuracy>, T, Accuracy> {
    using Kernel = ErfInverseKernel<CdfNormInv, T, Accuracy>;
    using Range = CdfNormInvRange<T>;
    KEF_REPORT_NAME(CdfNormInv);
    static constexpr auto given = ErfInverseGiven::q;
    static constexpr auto scale = ErfInverseScale::root2;

    // The formula in single precision reaches to 0 and 1.
    static ints outside(ints h) {
        if constexpr (Kernel::in_floats)
            return not_between(h, Format<T>::normal_head, Format<T>::one_head);
        else return not_between(h, Range::first, Range::last);
    }
    static ints beyond(ints h) requires(!Kernel::in_floats) {
        return not_between(h, Format<T>::normal_head, Format<T>::one_head);
    }

    // q is the smaller of 2 p and 2 - 2 p, exactly.
    template <class V> static ErfInverseArgument<V> argument(V p) {
        using E = decltype(p[0] + 0);
        const V twice = p + p, x = twice - all(E(1));
        return {absolute(x), minimum(twice, all(E(2)) - twice), x};
    }

    static int edge(T p, T& r) {
        if (is_nan(p)) return r = quiet(p), VTM_STATUS_OK;
        if (p == 0) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (p == 1) return r = Format<T>::infinity, VTM_STATUS_SING;
        if (p < 0 || p > 1) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if constexpr (std::is_same_v<T, double>) {
            const Parts subnormal = erf_inverse_tail<HA, scale>(all(p * 0x1p54), -53);
            r = -(subnormal.high + subnormal.low)[0];
        } else {
            Kernel::rounded(p, r);
        }
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, CdfNormInv, LA)
KEF_MAP1(s, CdfNormInv, HA)
KEF_MAP1(s, CdfNormInv, EP)
KEF_MAP1(d, CdfNormInv, HA)
KEF_MAP1(d, CdfNormInv, EP)

}  // namespace kef::vm
