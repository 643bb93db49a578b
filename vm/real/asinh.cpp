// Asinh: r = asinh x.
//
//   x NaN                       NaN
//   x = +-infinity              x
//   |x| >= 2^500                +-ln 2|x|; single precision from 2^60
//
// No error conditions. Double HA: the argument of the logarithm in two parts, 0.51 ulp.
// Single HA is the double formula of LA, rounded once; next to a midpoint of floats both
// parts of HA decide. LA and EP compute in single precision.
#include "vm/core/inverse_hyperbolic.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Asinh : TinyAside<Asinh<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                         std::is_same_v<T, double> ? 0x5F300000 : 0x5D800000> {
    using V = Vector<T>;
    KEF_REPORT_NAME(Asinh);

    static auto fast(V x) {
        const V y = absolute(x);
        if constexpr (std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>) {
            return with_sign(log1p_of(asinh_argument(y)), x);
        } else if constexpr (std::is_same_v<T, double>) {
            return with_sign(log1p_core<Accuracy>(asinh_argument_rounded(y)), x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return marked_in_double(x, Asinh<double, LA>::fast);
        } else if constexpr (std::is_same_v<Accuracy, EP>) {
            return with_sign(log1p_single<EP>(asinh_argument_short(y)), x);
        } else {
            return with_sign(log1p_single<Accuracy>(asinh_argument_rounded(y)), x);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = x, VTM_STATUS_OK;
        r = log_or_log1p(x < 0 ? -x : x, asinh_argument);
        if (x < 0) r = -r;
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Asinh, LA)
KEF_MAP1(s, Asinh, HA)
KEF_MAP1(s, Asinh, EP)
KEF_MAP1(d, Asinh, LA)
KEF_MAP1(d, Asinh, HA)
KEF_MAP1(d, Asinh, EP)

}  // namespace kef::vm
