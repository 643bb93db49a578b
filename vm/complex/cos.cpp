// Cos: r = cos a. Formula, special cases and errors: vm/core/complex_sines.h.
#include "vm/core/complex_sines.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexCos : CosOfParts<T, Accuracy> {
    KEF_COMPLEX_TRIG_NAME(Cos);
};

KEF_COMPLEX1(c, Cos, LA)
KEF_COMPLEX1(c, Cos, HA)
KEF_COMPLEX1(z, Cos, LA)
KEF_COMPLEX1(z, Cos, HA)
KEF_COMPLEX1(z, Cos, EP)

}  // namespace kef::vm
