// TGamma: r = Gamma(x).
//
//   x NaN                              NaN
//   x = +inf                           +infinity
//   x = -inf, a negative integer       invalid NaN, domain error
//   x = +-0                            +-infinity, singularity
//   |x| <= 2^-1024 (2^-128)            +-infinity, overflow
//   x >= 171.62437695630274 (35.0401)  +infinity, overflow
//   exact result below the smallest normal number: rounded, underflow; +-0, with the
//                                      result's sign, for x < -184 (-42)
//
// Single HA is a formula in double, rounded once; LA and EP compute in single precision.
#include "vm/core/gamma_kernel.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The formulas take first <= |x| < last; 1/x is Gamma(x) below first.
template <class T> struct TGammaRange;
template <> struct TGammaRange<double> {
    static constexpr std::uint32_t last = 0x40654000;  // 170
    static constexpr double first_value = 0x1p-963;
    static constexpr double infinite_above = from_bits(UINT64_C(0x406573FAE561F648));
    static constexpr double zero_below = -184;  // |Gamma(x)| < 2^-1080
};
template <> struct TGammaRange<float> {
    static constexpr std::uint32_t last = 0x42300000;  // 44
    static constexpr float first_value = 0x1p-126f;
    static constexpr float infinite_above = from_bits(0x420C2910u);
    static constexpr float zero_below = -42;  // |Gamma(x)| < 2^-151
};

// Gamma(x) of one element, |x| >= 2^-963 and no pole, as high + low; whether it lies
// below 2^-1022, where low = 0 and high is rounded once.
bool tgamma_one(double x, DoubleDouble<double>& r) {
    const auto take = [&](const Parts& value, doubles power) {
        const Parts sum = fast_two_sum(value.high, value.low);
        r = {(sum.high * power)[0], (sum.low * power)[0]};
        return false;
    };
    const auto far = [&](const GammaScaled& parts) { return take(parts.value, parts.power); };
    if (x > 0 && x <= gamma_last) return take(tgamma_near_parts(all(x)), all(1.0));
    if (x > 165)
        return far(tgamma_stirling_parts<-2>(all(x))), r = {r.high * 4.0, r.low * 4.0}, false;
    if (x < 0 && x >= -gamma_last) return take(tgamma_mirrored_parts(all(x)), all(1.0));
    if (x > -165) return far(tgamma_stirling_parts(all(x)));
    far(tgamma_stirling_parts<1022>(all(x)));
    const double sign = r.high < 0 ? -1.0 : 1.0;
    if (r.high * sign >= 1.0) return r = {r.high * 0x1p-1022, r.low * 0x1p-1022}, false;
    return r = {sign * round_to_subnormal(sign * r.high, sign * r.low), 0}, true;
}

}  // namespace

template <class T, class Accuracy> struct TGamma : GammaKernel<TGamma<T, Accuracy>, T, Accuracy> {
    using Kernel = GammaKernel<TGamma, T, Accuracy>;
    using V = Vector<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_single = single && !std::is_same_v<Accuracy, HA>;
    static constexpr bool far_everywhere = !std::is_same_v<Accuracy, HA>;
    using Range = TGammaRange<T>;
    // 2^-126, 2^-1022, and 2^-963, so that parts of double HA are normal numbers.
    static constexpr std::uint32_t first =
        single || far_everywhere ? Format<T>::normal_head : 0x03C00000;
    KEF_REPORT_NAME(TGamma);

    static ints beyond(ints h) { return not_between(magnitude(h), first, Range::last); }

    static auto kinds(ints h) requires(!in_single) {
        if constexpr (single) return std::array{~Kernel::outside(h)};
        else if constexpr (far_everywhere) return std::array{~Kernel::is_wide(h)};
        else return Kernel::kinds(h);
    }
    template <class A> static doubles near(doubles x) { return tgamma_near<A>(x); }
    static floats near_single(floats x) { return tgamma_near_single<Accuracy>(x); }
    static auto far(V x) {
        if constexpr (in_single) return tgamma_of_both_signs<Accuracy>(x);
        else return Kernel::far(x);
    }
    template <class V> static V reflected(V r, V x) { return with_sign(r, x); }
    static doubles wide(V x) requires(!single) {
        if constexpr (std::is_same_v<Accuracy, EP>) return tgamma_stirling_rounded(x);
        else if constexpr (std::is_same_v<Accuracy, LA>) return tgamma_stirling_short(x);
        else return tgamma_stirling(x);
    }
    static doubles mirrored(doubles x) {
        return tgamma_mirrored<std::conditional_t<single, LA, Accuracy>>(x);
    }
    static ints unsure(ints) { return ints{}; }

    // Poles, overflow and subnormal results; of single LA and EP those too that may be either.
    static ints refuse(ints r) {
        constexpr std::uint32_t margin = in_single ? 0x1000 : 0;
        return not_between(magnitude(r), Format<T>::normal_head + margin,
                           Format<T>::infinity_head - margin);
    }
    static ints refuse(ints r, ints midpoint) { return refuse(r) | midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if (x == 0) return r = 1 / x, VTM_STATUS_SING;
        const T floor = floored<T>(all(x))[0], half = floor * T(0.5);
        if (x < 0 && floor == x) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x >= Range::infinite_above) return r = Format<T>::infinity, VTM_STATUS_OVERFLOW;
        if (x < Range::zero_below)
            return r = floored<T>(all(half))[0] == half ? T(0) : -T(0), VTM_STATUS_UNDERFLOW;
        bool subnormal = false;
        if (x < Range::first_value && -x < Range::first_value) {
            r = static_cast<T>(1 / double(x));
        } else {
            DoubleDouble<double> sum;
            subnormal = tgamma_one(x, sum);
            constexpr T smallest = Format<T>::smallest_normal;
            if constexpr (single) {
                subnormal = sum.high < smallest && -sum.high < smallest;
                r = narrow(sum.high, sum.low);
            } else {
                r = sum.high;
            }
        }
        if (is_infinite(r)) return VTM_STATUS_OVERFLOW;
        return subnormal ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, TGamma, LA)
KEF_MAP1(s, TGamma, HA)
KEF_MAP1(s, TGamma, EP)
KEF_MAP1(d, TGamma, LA)
KEF_MAP1(d, TGamma, HA)
KEF_MAP1(d, TGamma, EP)

}  // namespace kef::vm
