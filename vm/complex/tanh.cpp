// Tanh: r = tanh a; tanh(x + iy) is tan(y + ix) with its parts exchanged.
#include "vm/core/complex_tangent.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexTanh : Exchanged<TanOfParts<T, Accuracy>> {
    KEF_COMPLEX_NAME(Tanh);
};

KEF_COMPLEX1(c, Tanh, LA)
KEF_COMPLEX1(c, Tanh, HA)
KEF_COMPLEX1(z, Tanh, LA)
KEF_COMPLEX1(z, Tanh, HA)

}  // namespace kef::vm
