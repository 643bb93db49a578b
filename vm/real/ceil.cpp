// Ceil: the smallest integer not below x. No error conditions, no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Ceil {
    using V = Vector<T>;
    KEF_REPORT_NAME(Ceil);
    static V fast(V x) { return ceiled<T>(x); }
};

KEF_MAP1(s, Ceil, HA)
KEF_MAP1(d, Ceil, HA)

}  // namespace kef::vm
