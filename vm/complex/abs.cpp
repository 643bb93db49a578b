// Abs: r = |a|, the kernel of Hypot.
#include "vm/core/complex_kernel.h"
#include "vm/core/hypot_core.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAbs : HypotFormula<T, Accuracy> {
    KEF_COMPLEX_NAME(Abs);
};

KEF_COMPLEX_TO_REAL(c, Abs, LA)
KEF_COMPLEX_TO_REAL(c, Abs, HA)
KEF_COMPLEX_TO_REAL(z, Abs, LA)
KEF_COMPLEX_TO_REAL(z, Abs, HA)

}  // namespace kef::vm
