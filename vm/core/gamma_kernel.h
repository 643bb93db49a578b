// What the kernels of TGamma and LGamma share: the gate and the formula of each slot for
// 0 < x <= 20, and the way from double to single HA. Function<T, Accuracy> gives
// near<Accuracy>(x) in double and near_single(x).
#pragma once

#include "vm/core/gamma_core.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace kef::vm {

// The formulas take first <= |x|; those for small x up to 20, the last below `near`.
template <class T> struct GammaRange;
template <> struct GammaRange<double> {
    static constexpr std::uint32_t first = 0x03C00000;  // 2^-963
    static constexpr std::uint32_t near = 0x40340001;
};
template <> struct GammaRange<float> {
    static constexpr std::uint32_t first = 0x00800000;  // 2^-126
    static constexpr std::uint32_t near = 0x41A00001;
};

template <class Function, class T, class Accuracy> struct GammaKernel {
    using V = Vector<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_double = single && std::is_same_v<Accuracy, HA>;

    static i4 outside(i4 h) { return not_between(h, GammaRange<T>::first, GammaRange<T>::near); }

    // Single HA: the second vector marks the midpoints.
    static auto rounded(d2x2 wide) {
        if constexpr (in_double) return with_midpoints(wide);
        else return narrow(wide);
    }

    static auto fast(V x) {
        if constexpr (!single) {
            return Function::template near<Accuracy>(x);
        } else if constexpr (in_double) {
            const d2x2 wide = widen(x);
            return rounded(
                {Function::template near<LA>(wide.low), Function::template near<LA>(wide.high)});
        } else {
            return Function::near_single(x);
        }
    }

    static auto far(V x) {
        if constexpr (single) {
            const d2x2 wide = widen(x);
            return rounded({far_or_tiny(wide.low), far_or_tiny(wide.high)});
        } else {
            return far_or_tiny(x);
        }
    }

private:
    // |Gamma(x)| = Gamma(|x|) to 2^-60 where |x| < 2^-61; there products of sin(pi x) would be
    // subnormal.
    static d2 far_or_tiny(d2 x) {
        const d2 y = absolute(x);
        const l2 tiny = y < 0x1p-61;
        if (!any_lane((i4)tiny)) return Function::far_one(x);
        const d2 near = Function::template near<std::conditional_t<single, LA, Accuracy>>(y);
        return select(tiny, Function::reflected(near, x),
                      Function::far_one(select(tiny, all(30.0), x)));
    }
};

}  // namespace kef::vm
