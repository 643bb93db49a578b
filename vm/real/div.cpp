// Div: r = a / b, correctly rounded.
//
//   a or b NaN              NaN
//   0/0, inf/inf            invalid NaN, domain error
//   inf/b                   infinity
//   a/0                     infinity, singularity
//   quotient too large      infinity, overflow
//
// The flags are those of the division.
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class> struct Div {
    using V = Vector<T>;
    KEF_REPORT_NAME(Div);
    static constexpr bool arithmetic = true;
    static V fast(V a, V b) { return a / b; }
    // Single: the quotient is finite. In double precision that gate would make the divider
    // wait; the one on the arguments, |a| < 2^511 and 2^-511 <= |b| < 2^511, does not.
    static ints outside(ints a, ints b) requires std::is_same_v<T, double> {
        constexpr std::int32_t first = 0x20000000, last = 0x5FE00000;
        return above(magnitude(a), last - 1) | not_between(magnitude(b), first, last);
    }
    // Any normal b, and any a below 2^1024 |b|.
    static ints beyond(ints a, ints b) requires std::is_same_v<T, double> {
        constexpr auto normal = Format<T>::normal_head, infinity = Format<T>::infinity_head;
        return not_finite<T>(a) | not_between(magnitude(b), normal, infinity) |
               (magnitude(a) - magnitude(b) >= 1024 << 20);
    }
    static V far(V a, V b) requires std::is_same_v<T, double> { return fast(a, b); }
    static constexpr bool far_everywhere = std::is_same_v<T, double>;
    static ints refuse(ints quotient) requires std::is_same_v<T, float> {
        return not_finite<T>(quotient);
    }

    static int edge(T a, T b, T& r) {
        r = a / b;
        if (is_finite(r)) return VTM_STATUS_OK;
        // No comparison from here on meets a subnormal number but one that was divided by.
        if (!is_finite(a))
            return is_nan(r) && !is_nan(a) && is_infinite(b) ? VTM_STATUS_ERRDOM : VTM_STATUS_OK;
        if (is_nan(r)) return is_finite(b) ? VTM_STATUS_ERRDOM : VTM_STATUS_OK;
        return b == 0 ? VTM_STATUS_SING : VTM_STATUS_OVERFLOW;
    }
};

KEF_MAP2(s, Div, HA)
KEF_MAP2(d, Div, HA)

}  // namespace kef::vm
