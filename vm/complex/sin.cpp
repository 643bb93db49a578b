// Sin: r = sin a. Formula, special cases and errors: vm/core/complex_sines.h.
#include "vm/core/complex_sines.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexSin : SinOfParts<T, Accuracy> {
    KEF_COMPLEX_TRIG_NAME(Sin);
};

KEF_COMPLEX1(c, Sin, LA)
KEF_COMPLEX1(c, Sin, HA)
KEF_COMPLEX1(z, Sin, LA)
KEF_COMPLEX1(z, Sin, HA)
KEF_COMPLEX1(z, Sin, EP)

}  // namespace kef::vm
