// Sinh: r = (e^x - e^-x)/2.
//
//   x NaN                    NaN
//   x = +-inf                x
//   |x| > 710.47 (89.41)     +-infinity, overflow
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA and EP compute in single precision.
#include "vm/core/hyperbolic_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Sinh : TinyAside<Sinh<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                        HyperbolicRange<T>::large> {
    using V = Vector<T>;
    using Range = HyperbolicRange<T>;
    KEF_REPORT_NAME(Sinh);

    static auto fast(V x) {
        const V a = absolute(x);
        if constexpr (!std::is_same_v<Accuracy, HA>) return sinh_direct<Accuracy>(x);
        else if constexpr (std::is_same_v<T, double>) return with_sign(sinh_core(a), x);
        else return with_sign(marked_in_double(a, sinh_direct<LA, doubles>), x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = x, VTM_STATUS_OK;
        const T a = x < 0 ? -x : x;
        int status = VTM_STATUS_OK;
        if (a < Range::large_value)
            r = static_cast<T>(0.5f * rounded_once(twice_sinh_parts(all(double(a)))));
        else status = half_exp(a, r);
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
