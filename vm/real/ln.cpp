// Ln: r = ln x.
//
//   x NaN                   x
//   x = +infinity           +infinity
//   x = -infinity, x < 0    invalid NaN, domain error
//   x = +-0                 -infinity, singularity
//
// Single HA is a double formula, rounded once. Where the double falls exactly between
// two floats, as for four of all arguments, the edge decides with its low part. LA and
// EP compute in single precision: x = 2^k z, z in [0.705, 1.41), ln x = k ln2 + ln z.
#include "vm/core/log_single.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Ln {
    using V = Vector<T>;
    KEF_REPORT_NAME(Ln);

    static ints outside(ints h) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) return log_core<Accuracy>(x);
        else if constexpr (std::is_same_v<Accuracy, HA>) return rounded_log(log_in_double(x));
        else return log_single<Accuracy>(x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = x, VTM_STATUS_OK;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if (x == 0) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if constexpr (std::is_same_v<T, double>) {
            r = log_core<Accuracy>(all(x * 0x1p54), -54)[0];
        } else {
            r = rounded_once(log_parts(all(double(x))));
        }
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Ln, LA)
KEF_MAP1(s, Ln, HA)
KEF_MAP1(s, Ln, EP)
KEF_MAP1(d, Ln, HA)
KEF_MAP1(d, Ln, EP)

}  // namespace kef::vm
