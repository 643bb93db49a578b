// Atan2: r = the angle of the point (b, a), by vm/core/atan2_core.h.
#include "vm/core/atan2_core.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct Atan2 : Atan2Formula<T, Accuracy> {
    KEF_REPORT_NAME(Atan2);
    using V = Vector<T>;
    static constexpr bool far_everywhere = std::is_same_v<T, float> && std::is_same_v<Accuracy, LA>;

    static std::array<ints, 1> kinds(ints a, ints b) requires(!far_everywhere) {
        return {Atan2::outside(a, b)};
    }
    // Single LA: a quotient below 2^-30 drowns beside pi and pi/2, and everywhere the cube of one
    // below 2^-26.
    static V far(V y, V x) {
        if constexpr (!far_everywhere) {
            return Atan2Formula<T, Accuracy>::far(y, x);
        } else {
            const ints h = magnitude((ints)y), w = magnitude((ints)x), left = sign_mask((ints)x);
            constexpr std::int32_t drowned = -30 << 23;
            const floats height = where(~((h - w < drowned) & left), (floats)h);
            const floats width = where(~(w - h < drowned), (floats)w);
            const floats larger = maximum(maximum(height, width), all(0x1p-126f));
            const floats t = minimum(height, width) / larger;
            const floats angle = atan_single_sum<LA>(t, where(t >= 0x1p-26f, t), height > width);
            return turned(angle, x, y);
        }
    }
};

KEF_MAP2(s, Atan2, LA)
KEF_MAP2(s, Atan2, HA)
KEF_MAP2(d, Atan2, LA)
KEF_MAP2(d, Atan2, HA)

}  // namespace kef::vm
