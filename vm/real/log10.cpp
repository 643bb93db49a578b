// Log10: r = log10 x.
//
//   x NaN                   NaN
//   x = +infinity           +infinity
//   x = +-0                 -infinity, singularity
//   x < 0, x = -infinity    invalid NaN, domain error
//
// ln x times log10(e): HA with both in two parts; LA and EP plainly. Single HA is a
// double formula, rounded once; LA and EP compute in single precision. At powers of
// ten the results are exact.
#include "vm/core/log_single.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

template <class Accuracy> inline doubles log10_core(doubles x, double shift = 0) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(log10_parts(log_parts(x, shift)));
    } else {
        return log_core<Accuracy>(x, shift) * log10_e;
    }
}

}  // namespace

template <class T, class Accuracy> struct Log10 {
    using V = Vector<T>;
    KEF_REPORT_NAME(Log10);

    static ints outside(ints h) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return log10_core<Accuracy>(x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return rounded_log(
                on_both(log_in_double(x), [](doubles log) { return log * log10_e; }));
        } else {
            return log_single<Accuracy>(x) * static_cast<float>(log10_e);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if (x == 0) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if constexpr (std::is_same_v<T, double>) r = log10_core<Accuracy>(all(x * 0x1p54), -54)[0];
        else r = rounded_once(log10_parts(log_parts(all(double(x)))));
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Log10, LA)
KEF_MAP1(s, Log10, HA)
KEF_MAP1(s, Log10, EP)
KEF_MAP1(d, Log10, LA)
KEF_MAP1(d, Log10, HA)
KEF_MAP1(d, Log10, EP)

}  // namespace kef::vm
