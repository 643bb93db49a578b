// Pow2o3: r = x^(2/3), the square of the real cube root.
//
//   x NaN          NaN
//   x = +-0        +0
//   x = +-inf      +infinity
//
// Double HA 0.53 ulp. Single HA is a double formula, rounded once; LA and EP compute
// in single precision. Double EP is LA.
#include "vm/core/cbrt_core.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Pow2o3 {
    using V = Vector<T>;
    KEF_REPORT_NAME(Pow2o3);

    static ints outside(ints h) { return cbrt_outside<T>(h); }
    static ints beyond(ints h) requires(std::is_same_v<T, double>) { return cbrt_beyond(h); }
    static V far(V x) requires(std::is_same_v<T, double>) {
        return cbrt_rescaled(x, fast, 0x1p200, 0x1p-200);
    }

    static V fast(V x) {
        const V a = absolute(x);
        V r;
        if constexpr (std::is_same_v<T, double>) r = in_double(a);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            r = narrow(from_single_estimate(
                a, [](doubles x, doubles y) { return x * inverse_cbrt_from(x, y); }));
        else r = a * inverse_cbrt_single<Accuracy>(a);
        return r;
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0 || is_infinite(x)) return r = x * x, VTM_STATUS_OK;
        const double a = absolute(all(double(x)))[0];
        r = static_cast<T>(in_double(all(a * 0x1p54))[0] * 0x1p-36);
        return VTM_STATUS_OK;
    }

private:
    static doubles in_double(doubles x) {
        if constexpr (std::is_same_v<Accuracy, HA>) {
            // (t + c)^2 = t^2 + c (2t + c), t^2 exact.
            const auto [t, c] = cbrt_parts(x);
            return t * t + c * (t + t + c);
        } else {
            return x * inverse_cbrt_from(x, inverse_cbrt_estimate(x));
        }
    }
};

KEF_MAP1(s, Pow2o3, LA)
KEF_MAP1(s, Pow2o3, HA)
KEF_MAP1(s, Pow2o3, EP)
KEF_MAP1(d, Pow2o3, LA)
KEF_MAP1(d, Pow2o3, HA)

}  // namespace kef::vm
