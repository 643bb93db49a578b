// Modf: y = the integer part of x, towards zero; z = x - y, with the sign of x.
// Exact. Infinity gives infinity and 0, NaN gives NaN twice. No error conditions,
// no flags.
#include "vm/core/rounding.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Modf {
    using V = Vector<T>;
    KEF_REPORT_NAME(Modf);
    static ints outside(ints h) { return not_finite<T>(h); }
    static Two<V> fast(V x) {
        const V integer = truncated(x);
        return {integer, with_sign(x - integer, x)};
    }

    static int edge(T x, T& y, T& z) {
        const Two<V> parts = fast(all(x));
        y = parts.first[0];
        z = is_infinite(x) ? (x > 0 ? T(0) : -T(0)) : parts.second[0];
        return VTM_STATUS_OK;
    }
};

KEF_MAP1X2(s, Modf, HA)
KEF_MAP1X2(d, Modf, HA)

}  // namespace kef::vm
