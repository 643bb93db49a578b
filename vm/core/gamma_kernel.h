// What the kernels of TGamma and LGamma share: the gate and the formula of each slot for
// 0 < x <= 44, and, of double and of single HA, the choice of those beyond
// and the way from double to single. Function<T, Accuracy> gives
//
//   first                               head of the least |x|
//   near<Accuracy>(x), near_single(x)   for 0 < x <= 44 (single Gamma LA and EP: 20)
//   far(x)                              single LA and EP: for all the others, and these
//   reflected(r, x)                     the result of x < 0 from that of |x|, both tiny
//   mirrored(x)                         for -44 <= x < 0, in double; of Gamma, but for HA, of x > 0
//                                       beside
//   wide(x)                             for |x| > 44, in double, where there is a result
//   unsure(h)                           single HA: results of these whose accuracy does not do
#pragma once

#include "vm/core/gamma_core.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// The formula of the gate goes up to `last`.
template <class Function, class T> struct GammaBase {
    static ints outside(ints h) {
        return not_between(h, Function::first, head_of(T(Function::last)) + 1);
    }

protected:
    static auto chosen(auto mask, auto r, auto s) { return select(mask, r, s); }
    static Marked chosen(auto mask, Marked r, Marked s) {
        return {chosen(mask, r.result, s.result), chosen(mask, r.marks, s.marks)};
    }
    // f() in the lanes of the mask, g() in the others; neither where no lane is its own.
    static auto either(auto mask, auto f, auto g) {
        if (all_lanes(mask)) return f();
        if (!any_lane(mask)) return g();
        return chosen(mask, f(), g());
    }
};

// Single LA and EP.
template <class Function, class T, class Accuracy> struct GammaKernel : GammaBase<Function, T> {
    static constexpr float last = 20;
    static constexpr bool far_everywhere = true;
    static floats fast(floats x) { return Function::near_single(x); }
};

// Double, and single HA.
template <class Function, class T, class Accuracy>
requires(std::is_same_v<T, double> ||
         std::is_same_v<Accuracy, HA>) struct GammaKernel<Function, T, Accuracy>
    : GammaBase<Function, T> {
    using V = Vector<T>;
    static constexpr bool is_rounded = std::is_same_v<T, float>;
    static constexpr double last = gamma_last;

    static ints is_wide(ints h) {
        return static_cast<std::int32_t>(head_of(T(last))) - magnitude(h);
    }
    static std::array<ints, 3> kinds(ints h) {
        return {~GammaKernel::outside(h), is_wide(h) & h, h};
    }

    // Single HA: what may lie on either side of a midpoint, with a relative error of 2^-39, is for
    // the edge.
    static auto rounded(DoublesPair wide) {
        const floats r = narrow(wide);
        return Marked{r, (floats)(midpoints<15>(wide) | Function::unsure(heads(r)))};
    }

    static auto fast(V x) {
        if constexpr (!is_rounded) return Function::template near<Accuracy>(x);
        else return marked_in_double(x, [](doubles v) { return Function::template near<LA>(v); });
    }

    // Beside |x| < tiny, where |Gamma(x)| = Gamma(|x|) to the formula's accuracy: there products of
    // sin(pi x) would be subnormal.
    static auto far(V x) {
        const V y = absolute(x);
        // By the border of the gate: an element goes through one formula wherever it stands.
        constexpr T wide_from = number_with_head<T>(head_of(T(last)) + 1);
        const auto tiny = (y < T(0x1p-61)), wide = (y >= wide_from);
        const auto of_others = [&] {
            const V z = select(tiny | wide, all(T(-0.5)), x);
            if constexpr (!is_rounded) return Function::mirrored(z);
            else return rounded(on_both(widen(z), [](doubles v) { return Function::mirrored(v); }));
        };
        const auto of_large = [&] {
            if constexpr (requires { Function::wide(x); }) {
                const auto of_wide = [&] {
                    const V z = select(wide, x, all(T(64)));
                    if constexpr (!is_rounded) return Function::wide(z);
                    else return rounded(Function::wide(z));
                };
                return GammaKernel::either(wide, of_wide, of_others);
            } else {
                return of_others();
            }
        };
        return GammaKernel::either(
            tiny, [&] { return reflected(fast(y), x); }, of_large);
    }

private:
    static V reflected(V r, V x) { return Function::reflected(r, x); }
    static Marked reflected(Marked r, V x) { return {reflected(r.result, x), r.marks}; }
};

}  // namespace KEF_VM
