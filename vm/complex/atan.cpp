// Atan: r = atan a, the principal value. Formula, special cases and errors:
// vm/core/complex_inverse.h.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAtan : AtanOfParts<T, Accuracy> {
    KEF_COMPLEX_NAME(Atan);
};

KEF_COMPLEX1(c, Atan, HA)
KEF_COMPLEX1(z, Atan, LA)
KEF_COMPLEX1(z, Atan, HA)

}  // namespace kef::vm
