// NearbyInt: to the nearest integer, halves to even. No error conditions, no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct NearbyInt {
    using V = Vector<T>;
    KEF_REPORT_NAME(NearbyInt);
    static V fast(V x) { return nearest<T>(x); }
};

KEF_MAP1(s, NearbyInt, HA)
KEF_MAP1(d, NearbyInt, HA)

}  // namespace kef::vm
