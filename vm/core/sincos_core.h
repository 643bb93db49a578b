// The kernel of SinCos and CIS: y = sin x, z = cos x; for HA the bits of Sin and Cos.
//
//   x NaN                 NaN twice, the payload kept
//   x = +-infinity        invalid NaN twice, domain error
//   x = +-0, subnormal    x and 1
//
// Formulas and ranges of the slots: vm/core/trig_functions.h.
#pragma once

#include "vm/core/trig_functions.h"

namespace KEF_VM {

template <class T, class Accuracy>
struct SinCosFormula : TrigKernel<SinCosFormula<T, Accuracy>, T, Accuracy, AtZero::argument> {
    using V = Vector<T>;

    template <TrigReach reach> static Two<V> compute(V x) {
        constexpr bool is_far = reach == TrigReach::far;
        if constexpr (std::is_same_v<T, double> &&
                      (std::is_same_v<Accuracy, HA> || (is_far && std::is_same_v<Accuracy, LA>))) {
            return of_reduced(trig_reduce<0, reach, steps_of_vectors>(x));
        } else if constexpr (std::is_same_v<T, float> && (std::is_same_v<Accuracy, HA> || is_far)) {
            const DoublesPair wide = widen(x);
            const Two<doubles> low = sine_cosine_plain<SingleHA>(wide.low),
                               high = sine_cosine_plain<SingleHA>(wide.high);
            return narrow(low, high);
        } else if constexpr (std::is_same_v<T, float>) {
            return sine_cosine_plain(x);
        } else if constexpr (std::is_same_v<Accuracy, LA> || is_far) {
            return sine_cosine_plain<LA>(x);
        } else {
            return {sine_fast<T, Accuracy, reach, Phase::sine>(x),
                    sine_fast<T, Accuracy, reach, Phase::cosine>(x)};
        }
    }

    static MarkedBy<V, Two<V>> huge(V x) {
        if constexpr (std::is_same_v<T, double>) {
            const auto [reduced, marks] = trig_reduce_huge<steps_of_vectors>(x);
            return {of_reduced(reduced), marks};
        } else {
            return of_turns<Accuracy>(x, [](ulongs turns) {
                using Formula = SingleFormula<Accuracy>;
                return Two<doubles>{sine_of_turns<Phase::sine, Formula>(turns),
                                    sine_of_turns<Phase::cosine, Formula>(turns)};
            });
        }
    }

    template <int steps>
    static Two<V> of_reduced(const TrigReduced<steps>& x) requires std::is_same_v<T, double> {
        const SineCosine both = sine_cosine_parts(ahead(x, sine_quarters).k, trig_powers(x));
        return {flipped(rounded(both.sine), both.sine_sign),
                flipped(rounded(both.cosine), both.cosine_sign)};
    }

    static int edge(T x, T& y, T& z) {
        int status;
        if (trig_special(x, y, status)) return z = y, status;
        const TrigReduced<> reduced = trig_reduce_one(x);
        z = rounded_sum<T>(sine_one(reduced, cosine_quarters));
        y = rounded_sum<T>(sine_one(reduced, sine_quarters));
        return status;
    }
};

}  // namespace KEF_VM
