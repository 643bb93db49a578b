// Arg: r = the angle of a in [-pi, pi], the kernel of Atan2.
#include "vm/core/atan2_core.h"
#include "vm/core/complex_kernel.h"

namespace kef::vm {

template <class T, class Accuracy>
struct ComplexArg : ArgumentsExchanged<Atan2Formula<T, Accuracy>> {
    KEF_COMPLEX_NAME(Arg);
};

KEF_COMPLEX_TO_REAL(c, Arg, LA)
KEF_COMPLEX_TO_REAL(c, Arg, HA)
KEF_COMPLEX_TO_REAL(z, Arg, LA)
KEF_COMPLEX_TO_REAL(z, Arg, HA)

}  // namespace kef::vm
