// Ln: r = ln a, the principal value. Special cases, ranges and
// errors: vm/core/ln_kernel.h.
#include "vm/core/ln_kernel.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexLn : ComplexKernel<LnCore<Natural>, T, Accuracy> {
    KEF_COMPLEX_NAME(Ln);
};

KEF_COMPLEX1(c, Ln, HA)
KEF_COMPLEX1(z, Ln, LA)
KEF_COMPLEX1(z, Ln, HA)

}  // namespace kef::vm
