// CdfNorm: r = erfc(-x/sqrt2)/2, the normal distribution function.
//
//   x NaN                      NaN
//   x = +infinity, -infinity   1, +0
//   x <= -39.5                 +0, underflow
//   result subnormal or 0      rounded once, underflow
//
// Formulas of the slots: vm/core/erfc_kernel.h.
#include "vm/core/erfc_kernel.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct CdfNorm : ErfcKernel<T, Accuracy, CdfNormScale> {
    KEF_REPORT_NAME(CdfNorm);
};

KEF_MAP1(s, CdfNorm, LA)
KEF_MAP1(s, CdfNorm, HA)
KEF_MAP1(s, CdfNorm, EP)
KEF_MAP1(d, CdfNorm, LA)
KEF_MAP1(d, CdfNorm, HA)
KEF_MAP1(d, CdfNorm, EP)

}  // namespace kef::vm
