// Atanh: r = atanh x.
//
//   x NaN                       NaN
//   x = +-1                     +-infinity, singularity
//   |x| > 1                     invalid NaN, domain error
//
// Double HA: the argument of the logarithm in two parts, 0.51 ulp. Single HA is the
// double formula of LA, rounded once; LA and EP compute in single precision.
#include "vm/core/inverse_hyperbolic.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Atanh : TinyAside<Atanh<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                         Format<T>::one_head> {
    using V = Vector<T>;
    KEF_REPORT_NAME(Atanh);

    static V fast(V x) {
        const V y = absolute(x);
        if constexpr (std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>)
            return with_sign(0.5 * log1p_of(atanh_argument(y)), x);
        else if constexpr (std::is_same_v<T, double>)
            return with_sign(0.5 * log1p_core<Accuracy>(atanh_argument_rounded(y)), x);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            return in_double(x, Atanh<double, LA>::fast);
        else return with_sign(0.5f * log1p_single<Accuracy>(atanh_argument_rounded(y)), x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 1 || x == -1) return r = x * Format<T>::infinity, VTM_STATUS_SING;
        return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
    }
};

KEF_MAP1(s, Atanh, LA)
KEF_MAP1(s, Atanh, HA)
KEF_MAP1(s, Atanh, EP)
KEF_MAP1(d, Atanh, LA)
KEF_MAP1(d, Atanh, HA)
KEF_MAP1(d, Atanh, EP)

}  // namespace kef::vm
