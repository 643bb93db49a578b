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
    KEF_REPORT_NAME(Pow);
    static i4 outside(i4 a, i4 b) { return Pow::x_outside(a) | Pow::y_outside(b); }
    static int edge(T a, T b, T& r) { return pow_edge(a, b, r); }
};

KEF_MAP2(s, Pow, HA)
KEF_MAP2(s, Pow, EP)
KEF_MAP2(d, Pow, LA)
KEF_MAP2(d, Pow, HA)
KEF_MAP2(d, Pow, EP)

}  // namespace kef::vm
