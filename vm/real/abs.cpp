// Abs: clears the sign bit, of a NaN too. Exact; no error conditions, no flags.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Abs {
    using V = Vector<T>;
    KEF_REPORT_NAME(Abs);
    static V fast(V x) { return absolute(x); }
};

KEF_MAP1(s, Abs, HA)
KEF_MAP1(d, Abs, HA)

}  // namespace kef::vm
