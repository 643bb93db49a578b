// Atan: r = atan x.
//
//   x NaN                       NaN
//   x = +-0                     x
//   |x| >= 2^900, infinite      +-pi/2
//
// No error conditions.
//
// Single HA is the double formula of LA, rounded once; next to a midpoint of floats, as
// for two of all arguments, the edge decides with both parts of HA. LA and EP compute in
// single precision.
#include "vm/core/atan_core.h"
#include "vm/core/atan_single.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Atan {
    using V = Vector<T>;
    KEF_REPORT_NAME(Atan);

    // |x| >= 2^900; in single precision 2^126.
    static i4 outside(i4 h) {
        constexpr std::int32_t huge = std::is_same_v<T, double> ? 0x78300000 : 0x7E800000;
        return huge - 1 - magnitude(h);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return with_sign(atan_core<Accuracy>(absolute(x)), x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            const d2x2 wide = widen(absolute(x));
            const Two<f4> r = with_midpoints({atan_core<LA>(wide.low), atan_core<LA>(wide.high)});
            return Two<f4>{with_sign(r.first, x), r.second};
        } else {
            return with_sign(atan_single<Accuracy>(absolute(x), all(1.0f)), x);
        }
    }

    // Single HA: the second vector marks the midpoints.
    static i4 refuse(i4, i4 midpoint) { return midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        const T a = x < 0 ? -x : x;
        if (std::is_same_v<T, float> && a < 0x1p64f)
            r = rounded_once(atan_parts<HA>(all(double(a))));
        else r = static_cast<T>(half_pi);
        if (x < 0) r = -r;
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Atan, LA)
KEF_MAP1(s, Atan, HA)
KEF_MAP1(s, Atan, EP)
KEF_MAP1(d, Atan, LA)
KEF_MAP1(d, Atan, HA)

}  // namespace kef::vm
