// Sinh: r = sinh a; sinh(x + iy) is sin(y + ix) with its parts exchanged.
#include "vm/core/complex_sines.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexSinh : Exchanged<SinOfParts<T, Accuracy>> {
    KEF_COMPLEX_NAME(Sinh);
};

KEF_COMPLEX1(c, Sinh, LA)
KEF_COMPLEX1(c, Sinh, HA)
KEF_COMPLEX1(z, Sinh, LA)
KEF_COMPLEX1(z, Sinh, HA)
KEF_COMPLEX1(z, Sinh, EP)

}  // namespace kef::vm
