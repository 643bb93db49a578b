// Asinh: r = asinh a; asinh(x + iy) is asin(y + ix) with its parts exchanged.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAsinh : Exchanged<AsinOfParts<T, Accuracy>> {
    KEF_COMPLEX_NAME(Asinh);
};

KEF_COMPLEX1(c, Asinh, HA)
KEF_COMPLEX1(z, Asinh, LA)
KEF_COMPLEX1(z, Asinh, HA)

}  // namespace kef::vm
