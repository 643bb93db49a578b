// LinearFrac: r = (scalea a + shifta) / (scaleb b + shiftb).
//
//   a NaN among the arguments and scalars   NaN
//   0/0, inf/inf, or inf - inf or 0 inf     invalid NaN, domain error
//   denominator 0                           infinity, singularity
//   finite arguments, quotient too large    infinity, overflow
//
// Numerator and denominator may cancel; the bounds hold all the same:
//
//   double HA   both in double-double, one division, one rounding: 0.501 ulp
//   double LA   products in two parts; where a sum is below 2^-23 of its shift, as HA:
//               relative error below 6.6 2^-53
//   double EP   plain arithmetic with the same check: below 2^-27
//   single      in double: the products are exact, 0.5 ulp + 2^-28. Little slower than
//               single arithmetic with such a check, so it stands in every slot
//
// Three ways lead to a double result:
//
//   fast   products up to 2^400 and from 2^-400, or 2^-120 of the shift, on
//   far    LA, EP: smaller products beside a shift count as 0; any other finite numbers: the same
//          formulas on significands, with the exponents apart
//   edge   infinities and NaN, results that are no normal numbers, cancelled sums of LA and EP:
//          HA's formula on significands, one element at a time
#include <algorithm>
#include <initializer_list>

#include "vm/core/rounding.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Exponents. In the fast formula products and shifts lie below 2^widest, shifts above
// 2^least_shift and products above 2^drowned of them: no part is subnormal. A term that is by
// 2^-400 below the other one decides at most a tie.
constexpr int widest = 400, least_shift = -280, drowned = -120, least_factor = -400;
constexpr int least_term = -968;       // arguments and scales from there on have normal halves
constexpr double cancelled = 0x1p-23;  // the part of the shift below which a sum is not trusted
constexpr double vanished = 0x1p-900;  // no sum is so small but 0
constexpr int exponent_of_zero = -8000;

// x = significand 2^exponent, |significand| in [1, 2), or 0; of finite numbers. The exponent of
// each lane stands in its upper half.
struct Apart {
    doubles significand;
    ints exponent;
};
inline Apart apart(doubles x) {
    const ints field = (ints)x & 0x7FF00000;
    const longs small = (longs)in_blocks<1, 1, 3, 3>(field == 0, field == 0);
    const doubles y = select(small, x * 0x1p54, x);
    const doubles s =
        (doubles)(((longs)y & INT64_C(-0x7FF0000000000001)) | INT64_C(0x3FF0000000000000));
    const ints e = (((ints)y >> 20) & 0x7FF) - 1023 - ((ints)small & 54);
    const longs zero = y == 0.0;
    return {where(~zero, s), (e & ~(ints)zero) | ((ints)zero & exponent_of_zero)};
}

inline ints larger(ints x, ints y) { return x > y ? x : y; }
// 2^e, -1022 <= e <= 1023.
inline doubles power_of_two(ints e) {
    return (doubles)(((e + 1023) << 20) & (ints)all(INT64_C(-1) << 32));
}

// (numerator / denominator) with one rounding, as high and low part.
inline Parts quotient(Parts numerator, Parts denominator) {
    const doubles inverse = 1.0 / denominator.high;
    const doubles q = numerator.high * inverse;
    const Parts back = two_product(q, denominator.high);
    const doubles rest =
        ((numerator.high - back.high) - back.low) + (numerator.low - q * denominator.low);
    return {q, rest * inverse};
}

// scale x + shift. HA: exact products, relative error about 2^-100. LA: in one number; the leading
// product is exact, and so is its sum with the shift where these cancel; what the correction loses,
// 2^-76 of the product, is below 2^-53 of a sum that is above 2^-23 of the shift.
template <class Accuracy> inline auto linear(doubles scale, doubles x, doubles shift) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const Parts product = two_product(scale, x);
        const Parts sum = two_sum(product.high, shift);
        return two_sum(sum.high, sum.low + product.low);
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        const doubles s = leading(scale), u = leading(x);
        return (s * u + shift) + (s * (x - u) + (scale - s) * x);
    } else {
        return scale * x + shift;
    }
}

// The numerator or the denominator.
class Line {
public:
    Line(double scale, double shift)
        : scale_(scale), shift_(shift), finite_(is_finite(scale) && is_finite(shift)) {
        // By bits: a call of few elements is not to wait for its scalars. Tiny ones are for far.
        const auto magnitude_of = [](double x) { return head(x) & 0x7FFFFFFF; };
        const auto exponent = [&](double x) { return (magnitude_of(x) >> 20) - 1023; };
        const bool has_scale = magnitude_of(scale) != 0, has_shift = magnitude_of(shift) != 0;
        const int scale_e = exponent(scale), shift_e = exponent(shift);
        if (!finite_ || (has_scale && scale_e < least_term)) return;
        if (has_shift && (shift_e < least_shift || shift_e >= widest)) return;
        const int least = has_shift ? shift_e + drowned : -widest;
        const auto head_of_power = [](int e) {
            return static_cast<std::uint32_t>(std::clamp(e, least_term, 1024) + 1023) << 20;
        };
        const std::uint32_t low = has_scale ? head_of_power(least - scale_e) : 0;
        const std::uint32_t high =
            has_scale ? head_of_power(widest - 1 - scale_e) : Format<double>::infinity_head;
        if (low >= high) return;
        low_ = low, high_ = high;
        // Below 2^least_term, where `low` stands at least, not everything does.
        drowns_ = has_shift && (!has_scale || least - scale_e >= least_term);
        low_value_ = from_bits(std::uint64_t{low} << 32);
        high_value_ = from_bits(std::uint64_t{high} << 32);
        least_ = least_sum(all(shift))[0];
    }

    // The lanes of x that are not for the fast formula, and not for the far one.
    ints outside(ints x) const { return not_between(magnitude(x), low_, high_); }
    ints beyond(ints x) const { return finite_ ? not_finite<double>(x) : ~(x & 0); }

    // scale x + shift, and the least of its magnitudes that LA and EP trust.
    template <class V> struct Sum {
        V value;
        doubles least;
    };
    template <class Accuracy> auto fast(doubles x) const {
        const auto value = linear<Accuracy>(all(scale_), x, all(shift_));
        return Sum<std::remove_const_t<decltype(value)>>{value, all(least_)};
    }
    // Whether all of x are for the fast formula but those whose products drown; and x without
    // these.
    bool only_drowned(doubles x) const {
        return drowns_ && !any_lane(absolute(x) >= all(high_value_));
    }
    doubles without_drowned(doubles x) const { return where(absolute(x) >= all(low_value_), x); }
    // The same divided by 2^exponent.
    template <class Accuracy> auto far(doubles x, ints& exponent) const {
        const Apart scale = apart(all(scale_)), shift = apart(all(shift_)), part = apart(x);
        const ints product = part.exponent + scale.exponent;
        exponent = larger(product, shift.exponent);
        const auto factor = [&](ints e) {
            return power_of_two(larger(e - exponent, all(least_factor)));
        };
        const doubles scaled_shift = shift.significand * factor(shift.exponent);
        const auto value =
            linear<Accuracy>(scale.significand, part.significand * factor(product), scaled_shift);
        return Sum<std::remove_const_t<decltype(value)>>{value, least_sum(scaled_shift)};
    }

    static doubles least_sum(doubles shift) {
        return maximum(absolute(shift) * cancelled, all(vanished));
    }
    double plain(double x) const { return scale_ * x + shift_; }
    bool finite() const { return finite_; }
    bool has_nan() const { return is_nan(scale_) || is_nan(shift_); }

private:
    static constexpr std::uint32_t closed = 0x80000000;  // no magnitude is
    double scale_, shift_;
    std::uint32_t low_ = closed, high_ = closed + 1;
    double low_value_ = 0, high_value_ = 0, least_ = 0;  // the bounds as numbers
    bool drowns_ = false, finite_;
};

// The value of one element as the edge needs it: high + low times 2^exponent, |high| in [1, 2), or
// 0, infinite or NaN.
struct ScaledValue {
    double high, low;
    int exponent;
};
ScaledValue one_value(const Line& line, double x) {
    if (!line.finite() || !is_finite(x)) return {line.plain(x), 0, 0};
    ints exponent;
    const Parts sum = line.far<HA>(all(x), exponent).value;
    if (sum.high[0] == 0) return {line.plain(x), 0, 0};  // with the sign that it has
    const int normal = exponent_of(sum.high[0]);
    return {scaled(sum.high[0], -normal), scaled(sum.low[0], -normal), exponent[1] + normal};
}

template <class T> int linear_frac_edge(const Line& above, const Line& below, T a, T b, T& r) {
    if (is_nan(a) || is_nan(b))
        return r = static_cast<T>(above.plain(a) / below.plain(b)), VTM_STATUS_OK;
    const ScaledValue numerator = one_value(above, a), denominator = one_value(below, b);
    const auto special = [](double x) { return x == 0 || !is_finite(x); };
    if (special(numerator.high) || special(denominator.high)) {
        r = static_cast<T>(numerator.high / denominator.high);
        if (is_nan(r))
            return above.has_nan() || below.has_nan() ? VTM_STATUS_OK : VTM_STATUS_ERRDOM;
        const bool pole = denominator.high == 0 && !is_infinite(numerator.high);
        return pole ? VTM_STATUS_SING : VTM_STATUS_OK;
    }
    const Parts q = quotient({all(numerator.high), all(numerator.low)},
                             {all(denominator.high), all(denominator.low)});
    r = static_cast<T>(
        round_scaled(q.high[0], q.low[0], numerator.exponent - denominator.exponent));
    return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
}

}  // namespace

template <class T, class Accuracy> class LinearFrac {
public:
    KEF_REPORT_NAME(LinearFrac);
    LinearFrac(double scalea, double shifta, double scaleb, double shiftb)
        : above_(scalea, shifta), below_(scaleb, shiftb) {}

    static constexpr bool far_everywhere = !std::is_same_v<Accuracy, HA>;
    ints outside(ints a, ints b) const { return above_.outside(a) | below_.outside(b); }
    ints beyond(ints a, ints b) const { return above_.beyond(a) | below_.beyond(b); }

    Two<doubles> fast(doubles a, doubles b) const {
        return divided(above_.fast<Accuracy>(a), below_.fast<Accuracy>(b));
    }
    Two<doubles> far(doubles a, doubles b) const {
        if constexpr (far_everywhere)
            if (above_.only_drowned(a) && below_.only_drowned(b))
                return fast(above_.without_drowned(a), below_.without_drowned(b));
        ints above, below;
        const Two<doubles> q =
            divided(above_.far<Accuracy>(a, above), below_.far<Accuracy>(b, below));
        // In two steps, whose exponents a power of two can have.
        const ints e = above - below, bound = all(2000),
                   within = e > bound ? bound : larger(e, -bound);
        const ints half = within >> 1;
        return {q.first * power_of_two(half) * power_of_two(within - half), q.second};
    }
    // The second vector: negative where a sum has cancelled.
    ints refuse(ints r, ints room) const {
        return not_between(magnitude(r), Format<T>::normal_head, Format<T>::infinity_head) | room;
    }

    int edge(T a, T b, T& r) const { return linear_frac_edge(above_, below_, a, b, r); }

private:
    template <class Sum> static Two<doubles> divided(const Sum& above, const Sum& below) {
        if constexpr (std::is_same_v<Accuracy, HA>) {
            const Parts q = quotient(above.value, below.value);
            const auto room = [](const Sum& sum) {
                return (longs)absolute(sum.value.high) - std::bit_cast<std::int64_t>(vanished);
            };
            return {rounded(q), (doubles)(room(above) | room(below))};
        } else {
            const auto room = [](const Sum& sum) {
                return (longs)absolute(sum.value) - (longs)sum.least;
            };
            return {above.value / below.value, (doubles)(room(above) | room(below))};
        }
    }

    Line above_, below_;
};

template <> class LinearFrac<float, HA> {
public:
    using T = float;
    KEF_REPORT_NAME(LinearFrac);
    LinearFrac(float scalea, float shifta, float scaleb, float shiftb)
        : scalea_(scalea), shifta_(shifta), scaleb_(scaleb), shiftb_(shiftb) {}

    floats fast(floats a, floats b) const {
        const DoublesPair x = widen(a), y = widen(b);
        const auto part = [this](doubles u, doubles v) {
            return (u * scalea_ + shifta_) / (v * scaleb_ + shiftb_);
        };
        return narrow(part(x.low, y.low), part(x.high, y.high));
    }
    ints refuse(ints r) const { return not_finite<float>(r); }
    int edge(float a, float b, float& r) const {
        return linear_frac_edge(Line(scalea_, shifta_), Line(scaleb_, shiftb_), a, b, r);
    }

private:
    double scalea_, shifta_, scaleb_, shiftb_;
};

#define KEF_LINEAR_FRAC(type, accuracy)                                                           \
    void type##LinearFrac_##accuracy(                                                             \
        std::int32_t n, const element_##type* a, const element_##type* b, element_##type scalea,  \
        element_##type shifta, element_##type scaleb, element_##type shiftb, element_##type* r) { \
        map2<LinearFrac<element_##type, accuracy>>(n, a, b, r, scalea, shifta, scaleb, shiftb);   \
    }
KEF_LINEAR_FRAC(s, HA)
KEF_LINEAR_FRAC(d, LA)
KEF_LINEAR_FRAC(d, HA)
KEF_LINEAR_FRAC(d, EP)

}  // namespace kef::vm
