// Tan: r = tan x.
//
//   x NaN                 NaN, the payload kept
//   x = +-infinity        invalid NaN, domain error
//   x = +-0, subnormal    x
//
// No double or float is so near an odd multiple of pi/2 that the result overflows.
// A formula for EP alone would save less than a quarter of LA's. Formulas and ranges of the
// slots: vm/core/trig_functions.h.
#include "vm/core/trig_functions.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Tan : TrigKernel<Tan<T, Accuracy>, T, Accuracy, AtZero::argument> {
    using V = Vector<T>;
    KEF_TRIG_NAME(Tan);

    template <TrigReach reach> static V compute(V x) { return tangent_fast<T, Accuracy, reach>(x); }

    static auto huge(V x) { return tangent_huge<T, Accuracy>(x); }

    static int edge(T x, T& r) {
        int status;
        if (trig_special(x, r, status)) return status;
        r = rounded_sum<T>(tangent_one(trig_reduce_one(x)));
        return status;
    }
};

KEF_MAP1(s, Tan, LA)
KEF_MAP1(s, Tan, HA)
KEF_MAP1(d, Tan, LA)
KEF_MAP1(d, Tan, HA)

}  // namespace kef::vm
