// Pow: r = a^b.
//
//   b = +-0, a = 1                   1, also where the other is NaN
//   a or b NaN                       NaN
//   a = -1, b = +-inf                1
//   b = +-inf                        +infinity or +0 as |a|^b tends to
//   a = +-0, b < 0                   infinity, with a's sign where b is odd; singularity
//   a = +-0, b > 0                   +0, with a's sign where b is odd
//   a = +-inf                        infinity (b > 0) or 0 (b < 0), signs as for 0
//   a < 0, b not an integer          invalid NaN, domain error
//   power too large                  +-infinity, overflow
//   exact power below the smallest normal number: rounded, underflow
//
// Double HA 0.52 ulp; single HA is a double formula, 0.5 ulp + 2^-10; also LA.
#include "vm/core/pow_core.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Pow : PowFormula<T, Accuracy> {
    using V = Vector<T>;
    KEF_REPORT_NAME(Pow);
    static ints outside(ints a, ints b) { return Pow::x_outside(a) | Pow::y_outside(b); }
    static ints beyond(ints a, ints b) { return Pow::x_beyond(a) | Pow::y_beyond(b); }
    static V undefined(V a, V b) {
        using Bits = decltype(sign_bit(a));
        return (V)((Bits)a & (Bits)parity(b).fraction);
    }
    static auto far(V a, V b) { return PowFormula<T, Accuracy>::far(a, b, parity(b).odd); }
    // Beside a short formula a call would count.
    [[gnu::flatten]] static auto far(V a, V b) requires std::is_same_v<Accuracy, EP> {
        return PowFormula<T, EP>::far(a, b, parity(b).odd);
    }
    static int edge(T a, T b, T& r) { return pow_edge(a, b, r); }
};

KEF_MAP2(s, Pow, HA)
KEF_MAP2(s, Pow, EP)
KEF_MAP2(d, Pow, LA)
KEF_MAP2(d, Pow, HA)
KEF_MAP2(d, Pow, EP)

}  // namespace kef::vm
