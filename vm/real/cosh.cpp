// Cosh: r = (e^x + e^-x)/2.
//
//   x NaN                    NaN
//   x = +-inf                +infinity
//   |x| > 710.47 (89.41)     +infinity, overflow
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
struct Cosh : TinyAside<Cosh<T, Accuracy>, T, Accuracy, AtZero::one, Tiny::by_size,
                        HyperbolicRange<T>::large> {
    using V = Vector<T>;
    using Range = HyperbolicRange<T>;
    KEF_REPORT_NAME(Cosh);

    static V fast(V x) {
        const V a = absolute(x);
        if constexpr (std::is_same_v<T, double>) return cosh_core<Accuracy>(a);
        else if constexpr (std::is_same_v<Accuracy, HA>) return in_double(a, cosh_core<LA>);
        else return cosh_single<Accuracy>(a);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        const T a = x < 0 ? -x : x;
        if (is_infinite(x)) return r = a, VTM_STATUS_OK;
        return half_exp(a, r);
    }
};

KEF_MAP1(s, Cosh, LA)
KEF_MAP1(s, Cosh, HA)
KEF_MAP1(s, Cosh, EP)
KEF_MAP1(d, Cosh, LA)
KEF_MAP1(d, Cosh, HA)
KEF_MAP1(d, Cosh, EP)

}  // namespace kef::vm
