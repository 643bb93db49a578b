// ErfInv: r = erf^-1 x.
//
//   x NaN                       NaN
//   x = +-1                     +-infinity, singularity
//   |x| > 1                     invalid NaN, domain error
//   x = +-0                     x
//   |r| subnormal               r, underflow
//
// Double HA and LA are one formula, 0.54 ulp. Single HA is the same, rounded once; the edge
// decides beside midpoints with the low part.
#include "vm/core/erf_inverse_core.h"
#include "vm/core/scaling.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Below `normal` the result may be subnormal, below `small` exact products would be; head: from
// `near_end` on 1 - |x| < 2^-10.
template <class T> struct ErfInvRange;
template <> struct ErfInvRange<double> {
    static constexpr double normal = 0x1.3p-1022, small = 0x1p-959;
    static constexpr std::uint32_t near_end = 0x3FEFF800;
};
template <> struct ErfInvRange<float> {
    static constexpr float normal = 0x1p-125f, small = normal;
    static constexpr std::uint32_t near_end = 0x3F7FC000;
};

}  // namespace

template <class T, class Accuracy>
struct ErfInv : ErfInverseKernel<ErfInv<T, Accuracy>, T, Accuracy> {
    using Kernel = ErfInverseKernel<ErfInv, T, Accuracy>;
    using Range = ErfInvRange<T>;
    KEF_REPORT_NAME(ErfInv);
    static constexpr auto given = ErfInverseGiven::x;
    static constexpr auto scale = ErfInverseScale::one;

    // The formula in single precision reaches to 1.
    static ints outside(ints h) {
        return not_between(magnitude(h), head_of(Range::small),
                           Kernel::in_floats ? Format<T>::one_head : Range::near_end);
    }
    static ints beyond(ints h) requires(!Kernel::in_floats) {
        return not_between(magnitude(h), head_of(Range::normal), Format<T>::one_head);
    }
    // Double: small numbers too, times 2^100.
    static auto far(Vector<T> v) requires(!Kernel::in_floats) {
        if constexpr (Kernel::single) {
            return Kernel::far(v);
        } else {
            const longs small = absolute(v) < Range::small;
            if (!any_lane(small)) return Kernel::far(v);
            const doubles r = Kernel::fast(where(small, v) * 0x1p100) * 0x1p-100;
            if (all_lanes(small)) return r;
            return select(small, r, Kernel::far(select(small, all(1 - 0x1p-20), v)));
        }
    }

    template <class V> static ErfInverseArgument<V> argument(V v) {
        const V x = absolute(v);
        return {x, all(decltype(x[0] + 0)(1)) - x, v};
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 1 || x == -1) return r = x * Format<T>::infinity, VTM_STATUS_SING;
        if (!(x < 1 && x > -1)) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x == 0) return r = x + x, VTM_STATUS_OK;
        if constexpr (std::is_same_v<T, double>) {
            const int e = exponent_of(x);
            const Parts part = Kernel::template near<HA>(argument(all(scaled(x, -e) * 0x1p-100)));
            r = round_scaled(part.high[0] * 0x1p100, part.low[0] * 0x1p100, e);
            if (x < 0) r = -r;
        } else {
            Kernel::rounded(x, r);
        }
        const bool underflow = r < Format<T>::smallest_normal && -r < Format<T>::smallest_normal;
        return underflow ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, ErfInv, LA)
KEF_MAP1(s, ErfInv, HA)
KEF_MAP1(s, ErfInv, EP)
KEF_MAP1(d, ErfInv, HA)
KEF_MAP1(d, ErfInv, EP)

}  // namespace kef::vm
