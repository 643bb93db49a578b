// Trunc: the integer part, towards zero. No error conditions, no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Trunc {
    using V = Vector<T>;
    KEF_REPORT_NAME(Trunc);
    static V fast(V x) { return truncated(x); }
};

KEF_MAP1(s, Trunc, HA)
KEF_MAP1(d, Trunc, HA)

}  // namespace kef::vm
