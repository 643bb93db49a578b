// Acos: r = acos a, the principal value. Formula, special cases and errors:
// vm/core/complex_inverse.h.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAcos : AcosOfParts<T, Accuracy> {
    KEF_COMPLEX_NAME(Acos);
};

KEF_COMPLEX1(c, Acos, HA)
KEF_COMPLEX1(z, Acos, LA)
KEF_COMPLEX1(z, Acos, HA)

}  // namespace kef::vm
