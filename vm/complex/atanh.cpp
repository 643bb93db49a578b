// Atanh: r = atanh a; atanh(x + iy) is atan(y + ix) with its parts exchanged.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAtanh : Exchanged<AtanOfParts<T, Accuracy>> {
    KEF_COMPLEX_NAME(Atanh);
};

KEF_COMPLEX1(c, Atanh, HA)
KEF_COMPLEX1(z, Atanh, LA)
KEF_COMPLEX1(z, Atanh, HA)

}  // namespace kef::vm
