// CIS: r = cos a + i sin a of a real a, the kernel of SinCos.
#include "vm/core/complex_kernel.h"
#include "vm/core/sincos_core.h"

namespace kef::vm {

template <class T, class Accuracy>
struct ComplexCIS : ResultChanged<SinCosFormula<T, Accuracy>, Exchange> {
    KEF_COMPLEX_TRIG_NAME(CIS);
};

KEF_REAL_TO_COMPLEX(c, CIS, LA)
KEF_REAL_TO_COMPLEX(c, CIS, HA)
KEF_REAL_TO_COMPLEX(z, CIS, LA)
KEF_REAL_TO_COMPLEX(z, CIS, HA)
KEF_REAL_TO_COMPLEX(z, CIS, EP)

}  // namespace kef::vm
