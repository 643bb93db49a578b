// LGamma: r = ln|Gamma(x)|.
//
//   x NaN                           NaN
//   x = +-inf                       +infinity
//   x = +-0, a negative integer     +infinity, singularity
//   x >= 2.5599833278516387e305     +infinity, overflow (4.085003425410169e36)
//
// Relative accuracy for x > 0; absolute accuracy next to the zeros at x < 0. Single HA
// is a formula in double, rounded once; LA and EP compute in single precision, LA but for the
// leading terms of x < 0.
#include "vm/core/gamma_kernel.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The formulas take first <= x < large and first <= -x < last, from where all numbers
// are integers.
template <class T> struct LGammaRange;
template <> struct LGammaRange<double> {
    static constexpr std::uint32_t large = 0x7F400000;  // 2^1013
    static constexpr std::uint32_t last = 0x43300000;   // 2^52
    static constexpr double infinite_above = from_bits(UINT64_C(0x7F5754D9278B51A8));
};
template <> struct LGammaRange<float> {
    static constexpr std::uint32_t large = 0x7C44AF8E;  // infinite_above
    static constexpr std::uint32_t last = 0x4B000000;   // 2^23
    static constexpr float infinite_above = from_bits(0x7C44AF8Eu);
};

// ln|Gamma(x)| of one element, finite and no pole, as high + low.
Parts lgamma_one(double x) {
    const double y = x < 0 ? -x : x;
    if (y < 0x1p-60) {
        const Parts log = log_parts(all(y * 0x1p54), -54);
        return {-log.high, -log.low};
    }
    if (x > 0x1p1010) {
        // x (ln x - 1), scaled, as x ln x may overflow earlier
        const doubles part = all(x * 0x1p-16);
        const Parts power = pow_exponent<LA>(all(x), part, exponent_halves(part));
        const Parts sum = fast_two_sum(power.high, -part);
        return {(sum.high + (sum.low + power.low)) * 0x1p16, all(0.0)};
    }
    if (y > gamma_last) return lgamma_stirling_parts(all(x));
    return x > 0 ? lgamma_near_parts(all(x)) : lgamma_mirrored_parts(all(x));
}

}  // namespace

template <class T, class Accuracy> struct LGamma : GammaKernel<LGamma<T, Accuracy>, T, Accuracy> {
    using Kernel = GammaKernel<LGamma, T, Accuracy>;
    using V = Vector<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_single = single && !std::is_same_v<Accuracy, HA>;
    using Range = LGammaRange<T>;
    static constexpr std::uint32_t first = Format<T>::normal_head;
    static constexpr double last =
        gamma_last;  // of single LA and EP too: their rows are not scaled
    KEF_REPORT_NAME(LGamma);

    static ints beyond(ints h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, first, Range::large) &
               not_between(h, negative + first, negative + Range::last);
    }

    template <class A> static doubles near(doubles x) { return lgamma_near<A>(x); }
    static floats near_single(floats x) { return lgamma_near_single<Accuracy>(x); }
    static auto far(V x) {
        if constexpr (in_single) return lgamma_of_both_signs<Accuracy>(x);
        else return Kernel::far(x);
    }
    static auto wide(V x) requires(!in_single) {
        if constexpr (!single) return lgamma_stirling<Accuracy>(x);
        else return on_both(widen(x), [](doubles v) { return lgamma_stirling_plain(v); });
    }
    static doubles mirrored(doubles x) {
        if constexpr (single) return lgamma_mirrored_plain<LA>(x);
        else return lgamma_mirrored<Accuracy>(x);
    }
    // Next to the zeros at x < 0.
    static ints unsure(ints r) { return magnitude(r) - head(0x1p-9f); }
    static V reflected(V r, V) { return r; }

    // Poles.
    static ints refuse(ints r) { return not_finite<T>(r); }
    static ints refuse(ints r, ints midpoint) { return refuse(r) | midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = Format<T>::infinity, VTM_STATUS_OK;
        if (x == 0 || (x < 0 && floored<T>(all(x))[0] == x))
            return r = Format<T>::infinity, VTM_STATUS_SING;
        if (x >= Range::infinite_above) return r = Format<T>::infinity, VTM_STATUS_OVERFLOW;
        const Parts parts = lgamma_one(x);
        if constexpr (single) r = rounded_once(parts);
        else r = rounded(parts)[0];
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, LGamma, LA)
KEF_MAP1(s, LGamma, HA)
KEF_MAP1(s, LGamma, EP)
KEF_MAP1(d, LGamma, LA)
KEF_MAP1(d, LGamma, HA)
KEF_MAP1(d, LGamma, EP)

}  // namespace kef::vm
