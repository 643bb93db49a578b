// ErfcInv: r = erfc^-1 x.
//
//   x NaN                       NaN
//   x = +-0                     +infinity, singularity
//   x = 2                       -infinity, singularity
//   x < 0, x > 2                invalid NaN, domain error
//
// Double HA and LA are one formula, 0.54 ulp. Single HA is the same, rounded once; the edge
// decides beside midpoints with the low part.
#include "vm/core/erf_inverse_core.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Heads of 2^-10, 2 - 2^-10.
template <class T> struct ErfcInvRange;
template <> struct ErfcInvRange<double> {
    static constexpr std::uint32_t first = 0x3F500000, last = 0x3FFFFC00;
};
template <> struct ErfcInvRange<float> {
    static constexpr std::uint32_t first = 0x3A800000, last = 0x3FFFE000;
};
constexpr std::uint32_t two = 0x40000000;  // head of 2

}  // namespace

template <class T, class Accuracy>
struct ErfcInv : ErfInverseKernel<ErfcInv<T, Accuracy>, T, Accuracy> {
    using Kernel = ErfInverseKernel<ErfcInv, T, Accuracy>;
    using Range = ErfcInvRange<T>;
    KEF_REPORT_NAME(ErfcInv);
    static constexpr auto given = ErfInverseGiven::q;
    static constexpr auto scale = ErfInverseScale::one;

    // The formula in single precision reaches to 0 and 2.
    static ints outside(ints h) {
        if constexpr (Kernel::in_floats) return not_between(h, Format<T>::normal_head, two);
        else return not_between(h, Range::first, Range::last);
    }
    static ints beyond(ints h) requires(!Kernel::in_floats) {
        return not_between(h, Format<T>::normal_head, two);
    }

    // q is the smaller of v and 2 - v, exactly.
    template <class V> static ErfInverseArgument<V> argument(V v) {
        using E = decltype(v[0] + 0);
        const V x = all(E(1)) - v;
        return {absolute(x), minimum(v, all(E(2)) - v), x};
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0) return r = Format<T>::infinity, VTM_STATUS_SING;
        if (x == 2) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < 0 || x > 2) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if constexpr (std::is_same_v<T, double>) {
            const Parts subnormal = erf_inverse_tail<HA, scale>(all(x * 0x1p54), -54);
            r = (subnormal.high + subnormal.low)[0];
        } else {
            Kernel::rounded(x, r);
        }
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, ErfcInv, LA)
KEF_MAP1(s, ErfcInv, HA)
KEF_MAP1(s, ErfcInv, EP)
KEF_MAP1(d, ErfcInv, HA)
KEF_MAP1(d, ErfcInv, EP)

}  // namespace kef::vm
