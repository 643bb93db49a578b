// Cbrt: r = x^(1/3), the real cube root.
//
//   x NaN                   NaN
//   x = +-0, x = +-inf      x
//
// Double HA 0.53 ulp. Single HA is a double formula, rounded once; LA and EP compute
// in single precision. Double EP is LA.
#include "vm/core/cbrt_core.h"
#include "vm/core/rounding.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Cbrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(Cbrt);

    static ints outside(ints h) { return cbrt_outside<T>(h); }
    static ints beyond(ints h) requires(std::is_same_v<T, double>) { return cbrt_beyond(h); }
    static V far(V x) requires(std::is_same_v<T, double>) {
        return cbrt_rescaled(x, fast, 0x1p100, 0x1p-100);
    }

    static V fast(V x) {
        const V a = absolute(x);
        V r;
        if constexpr (std::is_same_v<T, double>) r = in_double(a);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            r = narrow(from_single_estimate(a, cbrt_from));
        else r = cbrt_single<Accuracy>(a);
        return with_sign(r, x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0 || is_infinite(x)) return r = x + x, VTM_STATUS_OK;
        const double a = absolute(all(double(x)))[0];
        r = static_cast<T>(in_double(all(a * 0x1p54))[0] * 0x1p-18);
        if (x < 0) r = -r;
        return VTM_STATUS_OK;
    }

private:
    static doubles in_double(doubles x) {
        if constexpr (std::is_same_v<Accuracy, HA>) {
            return rounded(cbrt_parts(x));
        } else {
            return cbrt_from(x, inverse_cbrt_estimate(x));
        }
    }
};

KEF_MAP1(s, Cbrt, LA)
KEF_MAP1(s, Cbrt, HA)
KEF_MAP1(s, Cbrt, EP)
KEF_MAP1(d, Cbrt, LA)
KEF_MAP1(d, Cbrt, HA)

}  // namespace kef::vm
