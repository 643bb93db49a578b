// SinCos: y = sin x, z = cos x, the same bits as Sin and Cos.
#include "vm/core/trig_functions.h"
#include "vm/shapes.h"

namespace kef::vm {

template <class T, class Accuracy>
struct SinCos {
    using V = Vector<T>;
    KEF_TRIG_NAME(SinCos);

    static i4 outside(i4 h) { return trig_range<T, Accuracy>.outside(h); }
    static Two<V> fast(V x) {
        if constexpr (std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>) {
            const TrigReduced reduced = trig_reduce<sine_bias>(x);
            const TrigPowers p = trig_powers(reduced);
            return {sine_of(reduced.k, p), sine_of(reduced.k + INT64_C(128), p)};
        } else {
            return {sine_fast<T, Accuracy, Phase::sine>(x), sine_fast<T, Accuracy, Phase::cosine>(x)};
        }
    }

    static int edge(T x, T& y, T& z) {
        int status;
        if (trig_special(x, y, status)) return z = y, status;
        const TrigReduced reduced = trig_reduce_one(x);
        z = rounded_sum<T>(sine_one(reduced, cosine_bias));
        if (!trig_tiny(x, y, status)) y = rounded_sum<T>(sine_one(reduced, sine_bias));
        return status;
    }
};

KEF_MAP1X2(s, SinCos, LA)
KEF_MAP1X2(s, SinCos, HA)
KEF_MAP1X2(s, SinCos, EP)
KEF_MAP1X2(d, SinCos, LA)
KEF_MAP1X2(d, SinCos, HA)
KEF_MAP1X2(d, SinCos, EP)

}  // namespace kef::vm
