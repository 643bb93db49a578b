// SinCos: y = sin x, z = cos x, by vm/core/sincos_core.h.
#include "vm/core/sincos_core.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct SinCos : SinCosFormula<T, Accuracy> {
    KEF_TRIG_NAME(SinCos);
};

KEF_MAP1X2(s, SinCos, LA)
KEF_MAP1X2(s, SinCos, HA)
KEF_MAP1X2(d, SinCos, LA)
KEF_MAP1X2(d, SinCos, HA)
KEF_MAP1X2(d, SinCos, EP)

}  // namespace kef::vm
