// Tanh: r = sinh x / cosh x.
//
//   x NaN           NaN
//   x = +-inf       +-1
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA computes in single precision, and EP is a
// rational function.
#include "vm/core/hyperbolic_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// x P(x^2) / Q(x^2) for |x| <= 4.6, cut to [-1, 1]: relative error 2^-11.8
// (tools/tanh_rational.py).
inline floats tanh_rational(floats x) {
    constexpr auto p = coefficients(0x3F8006F4u, 0x3DD446C8u, 0x3A3A0FFEu);
    constexpr auto q = coefficients(0x3F800000u, 0x3EDF9D6Eu, 0x3C583926u);
    x = within(x, 4.6f);
    const floats u = x * x;
    return within((x * polynomial(u, p)) / polynomial(u, q), 1.0f);
}

}  // namespace

template <class T, class Accuracy>
struct Tanh : TinyAside<Tanh<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                        Format<T>::infinity_head> {
    using V = Vector<T>;
    using Range = HyperbolicRange<T>;
    KEF_REPORT_NAME(Tanh);

    static V fast(V x) {
        if constexpr (std::is_same_v<T, float> && std::is_same_v<Accuracy, EP>)
            return tanh_rational(x);
        const V a = minimum(absolute(x), all(Range::one_from));
        V r;
        if constexpr (std::is_same_v<T, double>) r = half_tanh_core<Accuracy>(a + a);
        else if constexpr (std::is_same_v<Accuracy, HA>) r = in_double(a + a, half_tanh_core<LA>);
        else r = half_tanh_single<Accuracy>(a + a);
        return with_sign(r, x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        return r = x > 0 ? 1 : -1, VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Tanh, LA)
KEF_MAP1(s, Tanh, HA)
KEF_MAP1(s, Tanh, EP)
KEF_MAP1(d, Tanh, LA)
KEF_MAP1(d, Tanh, HA)
KEF_MAP1(d, Tanh, EP)

}  // namespace kef::vm
