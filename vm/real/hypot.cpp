// Hypot: r = sqrt(a^2 + b^2), by vm/core/hypot_core.h.
#include "vm/core/hypot_core.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Hypot : HypotFormula<T, Accuracy> {
    KEF_REPORT_NAME(Hypot);
};

KEF_MAP2(s, Hypot, LA)
KEF_MAP2(s, Hypot, HA)
KEF_MAP2(d, Hypot, LA)
KEF_MAP2(d, Hypot, HA)

}  // namespace kef::vm
