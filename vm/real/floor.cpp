// Floor: the largest integer not above x. No error conditions, no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Floor {
    using V = Vector<T>;
    KEF_REPORT_NAME(Floor);
    static V fast(V x) { return floored<T>(x); }
};

KEF_MAP1(s, Floor, HA)
KEF_MAP1(d, Floor, HA)

}  // namespace kef::vm
