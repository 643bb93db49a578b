// Log10: r = the logarithm of a to base 10. Special cases, ranges and
// errors: vm/core/ln_kernel.h.
#include "vm/core/ln_kernel.h"

namespace kef::vm {

template <class T, class Accuracy>
struct ComplexLog10 : ComplexKernel<LnCore<Decimal>, T, Accuracy> {
    KEF_COMPLEX_NAME(Log10);
};

KEF_COMPLEX1(c, Log10, HA)
KEF_COMPLEX1(z, Log10, LA)
KEF_COMPLEX1(z, Log10, HA)

}  // namespace kef::vm
