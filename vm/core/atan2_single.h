// The angle of a point in single precision, LA: the formula of Atan2 and Arg beside the ordinary
// quotients, which it computes alike.
#pragma once

#include "vm/core/atan2_core.h"

namespace KEF_VM {

// A quotient below 2^-30 drowns beside pi and pi/2, and everywhere the cube of one below 2^-26.
// Not both of x and y subnormal.
inline floats angle_single(floats y, floats x) {
    const ints h = magnitude((ints)y), w = magnitude((ints)x), left = sign_mask((ints)x);
    constexpr std::int32_t drowned = -30 << 23;
    const floats height = where(~((h - w < drowned) & left), (floats)h);
    const floats width = where(~(w - h < drowned), (floats)w);
    const floats larger = maximum(maximum(height, width), all(0x1p-126f));
    const floats t = minimum(height, width) / larger;
    const floats angle = atan_single_sum<LA>(t, where(t >= 0x1p-26f, t), height > width);
    return turned(angle, x, y);
}

}  // namespace KEF_VM
