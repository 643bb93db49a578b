// Div: r = a / b, correctly rounded.
//
//   a or b NaN              NaN
//   0/0, inf/inf            invalid NaN, domain error
//   inf/b                   infinity
//   a/0                     infinity, singularity
//   quotient too large      infinity, overflow
//
// The division itself raises the flags; every case shows as an infinite or NaN
// quotient, which is the gate.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Div {
    using V = Vector<T>;
    KEF_REPORT_NAME(Div);
    static constexpr bool arithmetic = true;
    static V fast(V a, V b) { return a / b; }
    // A gate on quotients makes the divider wait. In double precision there is one on the
    // arguments instead: |a| < 2^511 and 2^-511 <= |b| < 2^511.
    static i4 outside(i4 a, i4 b) requires std::is_same_v<T, double> {
        constexpr std::int32_t first = 0x20000000, last = 0x5FE00000;
        return (magnitude(a) >= last) | not_between(magnitude(b), first, last);
    }
    static i4 refuse(i4 quotient) requires std::is_same_v<T, float> {
        return not_finite<T>(quotient);
    }

    static int edge(T a, T b, T& r) {
        r = a / b;
        if (is_nan(a) || is_nan(b)) return VTM_STATUS_OK;
        if (is_nan(r)) return VTM_STATUS_ERRDOM;
        if (is_infinite(a) || !is_infinite(r)) return VTM_STATUS_OK;
        return b == 0 ? VTM_STATUS_SING : VTM_STATUS_OVERFLOW;
    }
};

KEF_MAP2(s, Div, HA)
KEF_MAP2(d, Div, HA)

}  // namespace kef::vm
