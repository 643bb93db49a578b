// Atan: r = atan x.
//
//   x NaN                       NaN
//   x = +-0                     x
//   |x| subnormal               x, underflow
//   |x| < 2^-500                x
//   |x| >= 2^900, infinite      +-pi/2
//
// Single HA is the double formula of LA, rounded once; LA and EP compute in single
// precision.
#include "vm/core/atan_core.h"
#include "vm/core/atan_single.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

template <class T> struct AtanRange;
template <> struct AtanRange<double> {
    static constexpr std::int32_t tiny = 0x20B00000, huge = 0x78300000;  // 2^-500, 2^900
};
template <> struct AtanRange<float> {
    static constexpr std::int32_t tiny = 0x2B800000, huge = 0x7E800000;  // 2^-40, 2^126
};

}  // namespace

template <class T, class Accuracy>
struct Atan {
    using V = Vector<T>;
    using Range = AtanRange<T>;
    KEF_REPORT_NAME(Atan);

    // Between 0 (its head alone) and tiny, or beyond huge.
    static i4 outside(i4 h) {
        const i4 m = magnitude(h);
        return ((m - Range::tiny) & (0 - m)) | (Range::huge - 1 - m);
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
        const T y = x < 0 ? -x : x;
        if (y >= 1) return r = static_cast<T>(x < 0 ? -half_pi : half_pi), VTM_STATUS_OK;
        r = x;
        return y != 0 && y < Format<T>::smallest_normal ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Atan, LA)
KEF_MAP1(s, Atan, HA)
KEF_MAP1(s, Atan, EP)
KEF_MAP1(d, Atan, LA)
KEF_MAP1(d, Atan, HA)

}  // namespace kef::vm
