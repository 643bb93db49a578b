// Sqr: r = x x, correctly rounded. No error conditions, as for Mul.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Sqr {
    using V = Vector<T>;
    KEF_REPORT_NAME(Sqr);
    static constexpr bool arithmetic = true;
    static V fast(V x) { return x * x; }
};

KEF_MAP1(s, Sqr, HA)
KEF_MAP1(d, Sqr, HA)

}  // namespace kef::vm
