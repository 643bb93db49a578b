// Sinh: r = (e^x - e^-x)/2.
//
//   x NaN                    NaN
//   x = +-0, x = +-inf       x
//   |x| < tiny               x; underflow where x is subnormal
//   |x| > 710.47 (89.41)     +-infinity, overflow
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA and EP compute in single precision.
#include "vm/core/hyperbolic_core.h"
#include "vm/core/rounding.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Sinh {
    using V = Vector<T>;
    using Range = HyperbolicRange<T>;
    KEF_REPORT_NAME(Sinh);

    static i4 outside(i4 h) { return not_between(magnitude(h), Range::tiny, Range::large); }

    static V fast(V x) {
        const V a = absolute(x);
        V r;
        if constexpr (std::is_same_v<T, double>) r = sinh_core<Accuracy>(a);
        else if constexpr (std::is_same_v<Accuracy, HA>) r = in_double(a, sinh_core<LA>);
        else r = sinh_single<Accuracy>(a);
        return with_sign(r, x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0 || is_infinite(x)) return r = x + x, VTM_STATUS_OK;
        const T a = x < 0 ? -x : x;
        if (a < 1) return tiny_result(x, r);
        const int status = half_exp(a, r);
        if (x < 0) r = -r;
        return status;
    }
};

KEF_MAP1(s, Sinh, LA)
KEF_MAP1(s, Sinh, HA)
KEF_MAP1(s, Sinh, EP)
KEF_MAP1(d, Sinh, LA)
KEF_MAP1(d, Sinh, HA)
KEF_MAP1(d, Sinh, EP)

}  // namespace kef::vm
