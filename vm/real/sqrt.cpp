// Sqrt: correctly rounded square root.
//
//   x NaN, x = +infinity    x
//   x = +-0                 x
//   x < 0                   invalid NaN, domain error
//
// The flags are those of the instruction; the gate is a finite root.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Sqrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(Sqrt);
    static constexpr bool arithmetic = true;
    static V fast(V x) { return square_root(x); }
    static ints refuse(ints root) { return not_finite<T>(root); }

    static int edge(T x, T& r) {
        r = square_root(all(x))[0];
        // By bits first: a comparison raises a flag for a subnormal number.
        return is_nan(r) && (is_finite(x) || !is_nan(x)) ? VTM_STATUS_ERRDOM : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Sqrt, HA)
KEF_MAP1(d, Sqrt, HA)

}  // namespace kef::vm
