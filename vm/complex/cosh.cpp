// Cosh: r = cosh a; cosh(x + iy) is the conjugate of cos(y + ix).
#include "vm/core/complex_sines.h"

namespace kef::vm {

template <class T, class Accuracy>
struct ComplexCosh : ArgumentsExchanged<ResultChanged<CosOfParts<T, Accuracy>, Conjugate>> {
    KEF_COMPLEX_NAME(Cosh);
};

KEF_COMPLEX1(c, Cosh, LA)
KEF_COMPLEX1(c, Cosh, HA)
KEF_COMPLEX1(z, Cosh, LA)
KEF_COMPLEX1(z, Cosh, HA)
KEF_COMPLEX1(z, Cosh, EP)

}  // namespace kef::vm
