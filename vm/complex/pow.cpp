// Pow: r = a^b, the principal value. Formula, special cases and errors: vm/core/complex_pow.h.
#include "vm/core/complex_pow.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexPow : ComplexPowFormula<T, Accuracy> {
    KEF_COMPLEX_NAME(Pow);
};

KEF_COMPLEX2(c, Pow, LA)
KEF_COMPLEX2(c, Pow, HA)
KEF_COMPLEX2(z, Pow, HA)
KEF_COMPLEX2(z, Pow, EP)

}  // namespace kef::vm
