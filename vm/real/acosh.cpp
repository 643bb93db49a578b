// Acosh: r = acosh x.
//
//   x NaN                       NaN
//   x < 1                       invalid NaN, domain error
//   x = +infinity               +infinity
//   x >= 2^500                  ln 2x; single precision from 2^60
//
// Double HA: the argument of the logarithm in two parts, 0.51 ulp. Single HA is the
// double formula of LA, rounded once; next to a midpoint of floats both parts of HA
// decide. LA and EP compute in single precision.
#include "vm/core/inverse_hyperbolic.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Acosh {
    using V = Vector<T>;
    KEF_REPORT_NAME(Acosh);

    static ints outside(ints h) {
        constexpr std::int32_t large = std::is_same_v<T, double> ? 0x5F300000 : 0x5D800000;
        return not_between(h, Format<T>::one_head, large);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>)
            return log1p_of(acosh_argument(x));
        else if constexpr (std::is_same_v<T, double>)
            return log1p_core<Accuracy>(acosh_argument_rounded(x));
        else if constexpr (std::is_same_v<Accuracy, HA>)
            return marked_in_double(x, Acosh<double, LA>::fast);
        else return log1p_single<Accuracy>(acosh_argument_rounded(x));
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x < 1) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (is_infinite(x)) return r = x, VTM_STATUS_OK;
        return r = log_or_log1p(x, acosh_argument), VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Acosh, LA)
KEF_MAP1(s, Acosh, HA)
KEF_MAP1(s, Acosh, EP)
KEF_MAP1(d, Acosh, LA)
KEF_MAP1(d, Acosh, HA)
KEF_MAP1(d, Acosh, EP)

}  // namespace kef::vm
