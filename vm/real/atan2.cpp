// Atan2: r = the angle of the point (b, a), by vm/core/atan2_core.h.
#include "vm/core/atan2_core.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Atan2 : Atan2Formula<T, Accuracy> {
    KEF_REPORT_NAME(Atan2);
    static std::array<ints, 1> kinds(ints a, ints b) { return {Atan2::outside(a, b)}; }
};

KEF_MAP2(s, Atan2, LA)
KEF_MAP2(s, Atan2, HA)
KEF_MAP2(d, Atan2, LA)
KEF_MAP2(d, Atan2, HA)

}  // namespace kef::vm
