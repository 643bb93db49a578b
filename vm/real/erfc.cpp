// Erfc: r = 1 - erf x.
//
//   x NaN                      NaN
//   x = +infinity, -infinity   +0, 2
//   x >= 28                    +0, underflow
//   result subnormal or 0      rounded once, underflow
//
// Formulas of the slots: vm/core/erfc_kernel.h.
#include "vm/core/erfc_kernel.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Erfc : ErfcKernel<T, Accuracy, ErfcScale> {
    KEF_REPORT_NAME(Erfc);
};

KEF_MAP1(s, Erfc, LA)
KEF_MAP1(s, Erfc, HA)
KEF_MAP1(s, Erfc, EP)
KEF_MAP1(d, Erfc, LA)
KEF_MAP1(d, Erfc, HA)
KEF_MAP1(d, Erfc, EP)

}  // namespace kef::vm
