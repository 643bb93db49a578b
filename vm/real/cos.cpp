// Cos: r = cos x.
//
//   x NaN                 NaN, the payload kept
//   x = +-infinity        invalid NaN, domain error
//
// Formulas and ranges of the slots: vm/core/trig_functions.h.
#include "vm/core/trig_functions.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct Cos : TrigKernel<Cos<T, Accuracy>, T, Accuracy, AtZero::one> {
    using V = Vector<T>;
    KEF_TRIG_NAME(Cos);

    template <TrigReach reach> static V compute(V x) {
        return sine_fast<T, Accuracy, reach, Phase::cosine>(x);
    }

    static auto huge(V x) { return sine_huge<T, Accuracy, Phase::cosine>(x); }

    static int edge(T x, T& r) {
        int status;
        if (trig_special(x, r, status)) return status;
        r = rounded_sum<T>(sine_one(trig_reduce_one(x), cosine_quarters));
        return status;
    }
};

KEF_MAP1(s, Cos, LA)
KEF_MAP1(s, Cos, HA)
KEF_MAP1(s, Cos, EP)
KEF_MAP1(d, Cos, LA)
KEF_MAP1(d, Cos, HA)
KEF_MAP1(d, Cos, EP)

}  // namespace kef::vm
