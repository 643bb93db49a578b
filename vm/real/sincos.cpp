// SinCos: y = sin x, z = cos x; for HA the bits of Sin and Cos.
//
//   x NaN                 NaN twice, the payload kept
//   x = +-infinity        invalid NaN twice, domain error
//   x = +-0, subnormal    x and 1
//
// Formulas and ranges of the slots: vm/core/trig_functions.h.
#include "vm/core/trig_functions.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct SinCos : TrigKernel<SinCos<T, Accuracy>, T, Accuracy, AtZero::argument> {
    using V = Vector<T>;
    KEF_TRIG_NAME(SinCos);

    template <TrigReach reach> static Two<V> compute(V x) {
        if constexpr (std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>) {
            const TrigReduced reduced = trig_reduce<sine_bias, reach>(x);
            const TrigPowers p = trig_powers(reduced);
            return {sine_of(reduced.k, p), sine_of(reduced.k + INT64_C(128), p)};
        } else if constexpr (std::is_same_v<T, float> &&
                             (std::is_same_v<Accuracy, HA> || reach == TrigReach::far)) {
            const DoublesPair wide = widen(x);
            const Two<doubles> low = sine_cosine_plain<SingleHA>(wide.low),
                               high = sine_cosine_plain<SingleHA>(wide.high);
            const Two<V> plain = {narrow(low.first, high.first), narrow(low.second, high.second)};
            if constexpr (reach == TrigReach::near) return plain;
            return {with_huge(x, plain.first, sine_of_turns<Phase::sine>),
                    with_huge(x, plain.second, sine_of_turns<Phase::cosine>)};
        } else if constexpr (std::is_same_v<T, float>) {
            return sine_cosine_plain(x);
        } else if constexpr (std::is_same_v<Accuracy, LA> || reach == TrigReach::far) {
            return sine_cosine_plain<LA>(x);
        } else {
            return {sine_fast<T, Accuracy, reach, Phase::sine>(x),
                    sine_fast<T, Accuracy, reach, Phase::cosine>(x)};
        }
    }

    static int edge(T x, T& y, T& z) {
        int status;
        if (trig_special(x, y, status)) return z = y, status;
        const TrigReduced reduced = trig_reduce_one(x);
        z = rounded_sum<T>(sine_one(reduced, cosine_bias));
        y = rounded_sum<T>(sine_one(reduced, sine_bias));
        return status;
    }
};

KEF_MAP1X2(s, SinCos, LA)
KEF_MAP1X2(s, SinCos, HA)
KEF_MAP1X2(d, SinCos, LA)
KEF_MAP1X2(d, SinCos, HA)
KEF_MAP1X2(d, SinCos, EP)

}  // namespace kef::vm
