// Tan: r = tan a. Formula, special cases and errors: vm/core/complex_tangent.h.
#include "vm/core/complex_tangent.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexTan : TanOfParts<T, Accuracy> {
    KEF_COMPLEX_TRIG_NAME(Tan);
};

KEF_COMPLEX1(c, Tan, LA)
KEF_COMPLEX1(c, Tan, HA)
KEF_COMPLEX1(z, Tan, LA)
KEF_COMPLEX1(z, Tan, HA)

}  // namespace kef::vm
