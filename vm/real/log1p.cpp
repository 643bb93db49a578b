// Log1p: r = ln(1 + x).
//
//   x NaN            NaN
//   x = +-0          x
//   x = +infinity    +infinity
//   x = -1           -infinity, singularity
//   x < -1           invalid NaN, domain error
//   |x| < tiny       x; underflow where x is subnormal
//
// Single HA is a double formula, rounded once; LA and EP compute in single precision.
#include "vm/core/log1p_core.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

template <class T> struct Log1pRange;
template <> struct Log1pRange<double> {
    static constexpr double tiny_value = 0x1p-60;
    static constexpr std::uint32_t tiny = 0x3C300000;
    static constexpr std::uint32_t large = 0x7E700000;  // 2^1000
    static constexpr std::uint32_t one = 0x3FF00000;
};
template <> struct Log1pRange<float> {
    static constexpr float tiny_value = 0x1p-29f;
    static constexpr std::uint32_t tiny = 0x31000000;
    static constexpr std::uint32_t large = 0x7E800000;  // 2^126
    static constexpr std::uint32_t one = 0x3F800000;
};

}  // namespace

template <class T, class Accuracy>
struct Log1p {
    using V = Vector<T>;
    using Range = Log1pRange<T>;
    KEF_REPORT_NAME(Log1p);

    static i4 outside(i4 h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, Range::tiny, Range::large) &
               not_between(h, negative + Range::tiny, negative + Range::one);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return log1p_core<Accuracy>(x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return with_midpoints(log1p_in_double(x));
        } else {
            return log1p_single<Accuracy>(x);
        }
    }

    // Single HA: the second vector marks the midpoints.
    static i4 refuse(i4, i4 midpoint) { return midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0 || x == Format<T>::infinity) return r = x + x, VTM_STATUS_OK;
        if (x == -1) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < -1) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x < Range::tiny_value && -x < Range::tiny_value) return tiny_result(x, r);
        const DoubleDouble<d2> parts = log_parts(all(1.0 + double(x)));
        if constexpr (std::is_same_v<T, double>) r = parts.high[0] + parts.low[0];
        else r = rounded_once(parts);
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Log1p, LA)
KEF_MAP1(s, Log1p, HA)
KEF_MAP1(s, Log1p, EP)
KEF_MAP1(d, Log1p, LA)
KEF_MAP1(d, Log1p, HA)
KEF_MAP1(d, Log1p, EP)

}  // namespace kef::vm
