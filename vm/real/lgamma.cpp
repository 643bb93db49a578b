// LGamma: r = ln|Gamma(x)|.
//
//   x NaN                           NaN
//   x = +-inf                       +infinity
//   x = +-0, a negative integer     +infinity, singularity
//   x >= 2.5599833278516387e305     +infinity, overflow (4.085003425410169e36)
//
// Relative accuracy for x > 0; absolute accuracy next to the zeros at x < 0. Single HA
// is the double formula of LA, for x < 0 of HA, rounded once; LA and EP compute in
// single precision for 0 < x <= 20.
#include "vm/core/gamma_core.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

// The formulas take first <= x < large and first <= -x < last, from where all numbers
// are integers.
template <class T>
struct LGammaRange;
template <>
struct LGammaRange<double> {
    static constexpr std::uint32_t first = 0x03C00000;  // 2^-963
    static constexpr std::uint32_t near = 0x40340001;   // 20 is the last
    static constexpr std::uint32_t large = 0x7F400000;  // 2^1013
    static constexpr std::uint32_t last = 0x43300000;   // 2^52
    static constexpr double infinite_above = from_bits(UINT64_C(0x7F5754D9278B51A8));
};
template <>
struct LGammaRange<float> {
    static constexpr std::uint32_t first = 0x00800000;  // 2^-126
    static constexpr std::uint32_t near = 0x41A00001;   // 20 is the last
    static constexpr std::uint32_t large = 0x7C44AF8E;  // infinite_above
    static constexpr std::uint32_t last = 0x4B000000;   // 2^23
    static constexpr float infinite_above = from_bits(0x7C44AF8Eu);
};

// ln|Gamma(x)| of one element, finite and no pole, as high + low.
DoubleDouble<d2> lgamma_one(double x) {
    const double y = x < 0 ? -x : x;
    if (y < 0x1p-60) {
        const DoubleDouble<d2> log = log_parts(all(y * 0x1p54), -54);
        return {-log.high, -log.low};
    }
    if (x > 0x1p1010) {
        // x (ln x - 1), scaled, as x ln x may overflow earlier
        const d2 part = all(x * 0x1p-16);
        const DoubleDouble<d2> power = pow_exponent<LA>(all(x), part, exponent_halves<HA>(part));
        const DoubleDouble<d2> sum = fast_two_sum(power.high, -part);
        return {(sum.high + (sum.low + power.low)) * 0x1p16, all(0.0)};
    }
    return x > 0 && x <= gamma_last ? lgamma_near_parts(all(x)) : lgamma_far_parts(all(x));
}

}  // namespace

template <class T, class Accuracy>
struct LGamma {
    using V = Vector<T>;
    using Range = LGammaRange<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_double = single && std::is_same_v<Accuracy, HA>;
    KEF_REPORT_NAME(LGamma);

    static i4 outside(i4 h) { return not_between(h, Range::first, Range::near); }
    static i4 beyond(i4 h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, Range::first, Range::large) &
               not_between(h, negative + Range::first, negative + Range::last);
    }

    // Single HA: the second vector marks the midpoints.
    static auto rounded(d2x2 wide) {
        if constexpr (in_double)
            return with_midpoints(wide);
        else
            return narrow(wide);
    }

    static auto fast(V x) {
        if constexpr (!single) {
            return lgamma_near<Accuracy>(x);
        } else if constexpr (in_double) {
            const d2x2 wide = widen(x);
            return rounded({lgamma_near<LA>(wide.low), lgamma_near<LA>(wide.high)});
        } else {
            return lgamma_single<Accuracy>(x);
        }
    }

    static auto far(V x) {
        if constexpr (single) {
            using Inner = std::conditional_t<in_double, LA, EP>;
            const d2x2 wide = widen(x);
            return rounded({lgamma_far<Inner>(wide.low), lgamma_far<Inner>(wide.high)});
        } else {
            return lgamma_far<Accuracy>(x);
        }
    }

    // Poles.
    static i4 refuse(i4 r) { return not_finite<T>(r); }
    static i4 refuse(i4 r, i4 midpoint) { return refuse(r) | midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = Format<T>::infinity, VTM_STATUS_OK;
        if (x == 0 || (x < 0 && floored<T>(all(x))[0] == x))
            return r = Format<T>::infinity, VTM_STATUS_SING;
        if (x >= Range::infinite_above) return r = Format<T>::infinity, VTM_STATUS_OVERFLOW;
        const DoubleDouble<d2> parts = lgamma_one(x);
        if constexpr (single)
            r = rounded_once(parts);
        else
            r = parts.high[0] + parts.low[0];
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
