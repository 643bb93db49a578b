// Asin: r = asin a, the principal value. Formula, special cases and errors:
// vm/core/complex_inverse.h.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAsin : AsinOfParts<T, Accuracy> {
    KEF_COMPLEX_NAME(Asin);
};

KEF_COMPLEX1(c, Asin, HA)
KEF_COMPLEX1(z, Asin, LA)
KEF_COMPLEX1(z, Asin, HA)

}  // namespace kef::vm
