// Inv: r = 1 / x, correctly rounded.
//
//   x NaN                   NaN
//   x = +-0                 +-infinity, singularity
//   |x| <= 2^-1024          +-infinity, overflow (single: 2^-128)
//
// The flags are those of the division.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Inv {
    using V = Vector<T>;
    KEF_REPORT_NAME(Inv);
    static constexpr bool arithmetic = true;
    static V fast(V x) { return all(T(1)) / x; }
    // Normal numbers: a gate on the quotients would make the divider wait.
    static ints outside(ints h) {
        return not_between(magnitude(h), Format<T>::normal_head, Format<T>::infinity_head);
    }

    static int edge(T x, T& r) {
        r = T(1) / x;
        if (!is_infinite(r)) return VTM_STATUS_OK;
        return x == 0 ? VTM_STATUS_SING : VTM_STATUS_OVERFLOW;
    }
};

KEF_MAP1(s, Inv, HA)
KEF_MAP1(d, Inv, HA)

}  // namespace kef::vm
