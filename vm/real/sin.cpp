// Sin: r = sin x.
//
//   x NaN                 NaN, the payload kept
//   x = +-infinity        invalid NaN, domain error
//   x = +-0, subnormal    x
//
// Formulas and ranges of the slots: vm/core/trig_functions.h.
#include "vm/core/trig_functions.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Sin : TrigKernel<Sin<T, Accuracy>, T, Accuracy, AtZero::argument> {
    using V = Vector<T>;
    KEF_TRIG_NAME(Sin);

    template <TrigReach reach> static V compute(V x) {
        return sine_fast<T, Accuracy, reach, Phase::sine>(x);
    }

    static auto huge(V x) { return sine_huge<T, Accuracy, Phase::sine>(x); }

    static int edge(T x, T& r) {
        int status;
        if (trig_special(x, r, status)) return status;
        r = rounded_sum<T>(sine_one(trig_reduce_one(x), sine_quarters));
        return status;
    }
};

KEF_MAP1(s, Sin, LA)
KEF_MAP1(s, Sin, HA)
KEF_MAP1(s, Sin, EP)
KEF_MAP1(d, Sin, LA)
KEF_MAP1(d, Sin, HA)
KEF_MAP1(d, Sin, EP)

}  // namespace kef::vm
