// Rint: to the nearest integer, halves to even; raises inexact where x changes.
// No error conditions.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Rint {
    using V = Vector<T>;
    KEF_REPORT_NAME(Rint);
    static constexpr bool arithmetic = true;
    static V fast(V x) { return nearest_with_flags(x); }
};

KEF_MAP1(s, Rint, HA)
KEF_MAP1(d, Rint, HA)

}  // namespace kef::vm
