// Atan2: r = the angle of the point (b, a), by vm/core/atan2_core.h.
#include "vm/core/atan2_single.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Atan2 : Atan2Formula<T, Accuracy> {
    KEF_REPORT_NAME(Atan2);
    using V = Vector<T>;
    static constexpr bool far_everywhere = std::is_same_v<T, float> && std::is_same_v<Accuracy, LA>;

    static std::array<ints, 1> kinds(ints a, ints b) requires(!far_everywhere) {
        return {Atan2::outside(a, b)};
    }
    static V far(V y, V x) {
        if constexpr (far_everywhere) return angle_single(y, x);
        else return Atan2Formula<T, Accuracy>::far(y, x);
    }
};

KEF_MAP2(s, Atan2, LA)
KEF_MAP2(s, Atan2, HA)
KEF_MAP2(d, Atan2, LA)
KEF_MAP2(d, Atan2, HA)

}  // namespace kef::vm
