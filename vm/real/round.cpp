// Round: to the nearest integer, halves away from zero. No error conditions, no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Round {
    using V = Vector<T>;
    KEF_REPORT_NAME(Round);
    static V fast(V x) { return rounded<T>(x); }
};

KEF_MAP1(s, Round, HA)
KEF_MAP1(d, Round, HA)

}  // namespace kef::vm
