// Add: r = a + b, correctly rounded. No error conditions: an overflow, an
// underflow or an invalid operation shows in the result and in the flags.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Add {
    using V = Vector<T>;
    KEF_REPORT_NAME(Add);
    static constexpr bool arithmetic = true;
    static V fast(V a, V b) { return sum_in_order(a, b); }
};

KEF_MAP2(s, Add, HA)
KEF_MAP2(d, Add, HA)

}  // namespace kef::vm
