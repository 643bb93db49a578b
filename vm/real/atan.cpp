// Atan: r = atan x.
//
//   x NaN                       NaN
//   x = +-0                     x
//   |x| >= 2^900, infinite      +-pi/2
//
// No error conditions.
//
// Single HA is the double formula of LA, rounded once; LA and EP compute in single
// precision.
#include "vm/core/atan_core.h"
#include "vm/core/atan_single.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Atan {
    using V = Vector<T>;
    KEF_REPORT_NAME(Atan);

    // |x| >= 2^900; in single precision 2^126.
    static i4 outside(i4 h) {
        constexpr std::int32_t huge = std::is_same_v<T, double> ? 0x78300000 : 0x7E800000;
        return huge - 1 - magnitude(h);
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>)
            return with_sign(atan_core<Accuracy>(absolute(x)), x);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            return with_sign(in_double(absolute(x), atan_core<LA>), x);
        else
            return with_sign(atan_single<Accuracy>(absolute(x), all(1.0f)), x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        return r = static_cast<T>(x < 0 ? -half_pi : half_pi), VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Atan, LA)
KEF_MAP1(s, Atan, HA)
KEF_MAP1(s, Atan, EP)
KEF_MAP1(d, Atan, LA)
KEF_MAP1(d, Atan, HA)

}  // namespace kef::vm
