// LinearFrac: r = (scalea a + shifta) / (scaleb b + shiftb).
//
//   a NaN among the arguments and scalars   NaN
//   0/0, inf/inf, or inf - inf or 0 inf     invalid NaN, domain error
//   denominator 0                           infinity, singularity
//   finite arguments, quotient too large    infinity, overflow
//
// Numerator and denominator may cancel; the bounds hold all the same:
//   double HA   both in double-double, one division, one rounding: 0.501 ulp
//   double LA   products in two parts; where a sum is below 2^-23 of its shift, as HA:
//               relative error below 6.6 2^-53
//   double EP   plain arithmetic with the same check: below 2^-27
//   single      in double: the products are exact, 0.5 ulp + 2^-28. Little slower than
//               single arithmetic with such a check, so it stands in every slot
#include <initializer_list>

#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Magnitudes below `large` (arguments and scalars) and above `small` (sums, and HA's
// quotients) keep clear of overflow and underflow in the double formulas; `cancelled`:
// the part of the shift below which a sum is not trusted.
constexpr double large = 0x1p490, small = 0x1p-900, cancelled = 0x1p-23;
constexpr std::int32_t large_head = 0x5E900000, small_head = 0x07B00000;

// (numerator / denominator) with one rounding, as high and low part.
template <class V>
inline DoubleDouble<V> quotient(DoubleDouble<V> numerator, DoubleDouble<V> denominator) {
    const V inverse = 1.0 / denominator.high;
    const V q = numerator.high * inverse;
    const DoubleDouble<V> back = two_product(q, denominator.high);
    const V rest =
        ((numerator.high - back.high) - back.low) + (numerator.low - q * denominator.low);
    return {q, rest * inverse};
}

// scale x + shift, exact products, relative error about 2^-100.
template <class V>
inline DoubleDouble<V> linear(V scale, DoubleDouble<V> scale_halves, V x, V shift) {
    const DoubleDouble<V> product = two_product(scale, scale_halves, x, split(x));
    const DoubleDouble<V> sum = two_sum(product.high, shift);
    return two_sum(sum.high, sum.low + product.low);
}

// The same in one number. The leading product is exact, and so is its sum with the shift
// where these cancel; what the correction loses, 2^-76 of the product, is below 2^-53 of
// a sum that is above 2^-23 of the shift.
inline d2 linear_in_parts(d2 scale, d2 x, d2 shift) {
    const d2 s = leading(scale), u = leading(x);
    return (s * u + shift) + (s * (x - u) + (scale - s) * x);
}

// The same for any numbers: the sum is `value` times 2^`exponent`, with |value| in
// [1, 2) or 0, infinite or NaN.
struct ScaledLinear {
    DoubleDouble<double> value;
    int exponent;
};
ScaledLinear linear_scaled(double scale, double x, double shift) {
    if (!is_finite(scale) || !is_finite(x) || !is_finite(shift))
        return {{scale * x + shift, 0.0}, 0};
    if (scale == 0 || x == 0) {
        const double sum = scale * x + shift;
        const int e = sum == 0 ? 0 : exponent_of(sum);
        return {{scaled(sum, -e), 0.0}, e};
    }
    const int scale_e = exponent_of(scale), x_e = exponent_of(x), product_e = scale_e + x_e;
    int e = product_e;
    if (shift != 0 && exponent_of(shift) > e) e = exponent_of(shift);
    // Beyond 2^-400 of the shift the product only decides a tie.
    const int below = product_e - e < -400 ? -400 : product_e - e;
    const double s = scaled(scale, -scale_e);
    DoubleDouble<double> sum =
        linear(s, split(s), scaled(scaled(x, -x_e), below), scaled(shift, -e));
    if (sum.high == 0) return {sum, 0};
    const int normal = exponent_of(sum.high);
    return {{scaled(sum.high, -normal), scaled(sum.low, -normal)}, e + normal};
}

}  // namespace

template <class T, class Accuracy> class LinearFrac {
public:
    using V = Vector<T>;
    KEF_REPORT_NAME(LinearFrac);
    static constexpr bool is_single = std::is_same_v<T, float>;
    static constexpr bool is_exact = std::is_same_v<Accuracy, HA>;

    LinearFrac(T scalea, T shifta, T scaleb, T shiftb)
        : scalea_(scalea), shifta_(shifta), scaleb_(scaleb), shiftb_(shiftb) {
        const auto ordinary = [](double x) { return -large < x && x < large; };
        const auto least = [](double shift) {
            const double part = (shift < 0 ? -shift : shift) * cancelled;
            return std::bit_cast<std::int64_t>(part > small ? part : small);
        };
        last_ = -1;
        if (!(ordinary(scalea) && ordinary(shifta) && ordinary(scaleb) && ordinary(shiftb))) return;
        last_ = large_head - 1;
        least_numerator_ = least(shifta);
        least_denominator_ = least(shiftb);
    }

    i4 outside(i4 a, i4 b) const {
        if constexpr (is_single) return a & 0;
        else return (last_ - magnitude(a)) | (last_ - magnitude(b));
    }

    // The second vector is for the gate: HA's is below `small`, the others' is negative
    // where the element must be computed by the edge.
    Two<V> fast(V a, V b) const {
        if constexpr (!is_exact) {
            const auto linear = [](T scale, V x, T shift) {
                if constexpr (std::is_same_v<Accuracy, LA>)
                    return linear_in_parts(all(scale), x, all(shift));
                else return scale * x + shift;
            };
            const V numerator = linear(scalea_, a, shifta_),
                    denominator = linear(scaleb_, b, shiftb_);
            const auto room = [](V sum, std::int64_t least) { return (l2)absolute(sum) - least; };
            return {numerator / denominator,
                    (V)(room(numerator, least_numerator_) | room(denominator, least_denominator_))};
        } else if constexpr (!is_single) {
            const DoubleDouble<V> numerator =
                linear(all(scalea_), split(all(scalea_)), a, all(shifta_));
            const DoubleDouble<V> denominator =
                linear(all(scaleb_), split(all(scaleb_)), b, all(shiftb_));
            const DoubleDouble<V> q = quotient(numerator, denominator);
            const V r = q.high + q.low;
            return {r, minimum(absolute(r),
                               minimum(absolute(numerator.high), absolute(denominator.high)))};
        } else {
            const d2x2 x = widen(a), y = widen(b);
            const auto part = [this](d2 u, d2 v) {
                return (u * double(scalea_) + double(shifta_)) /
                       (v * double(scaleb_) + double(shiftb_));
            };
            const V r = narrow(part(x.low, y.low), part(x.high, y.high));
            return {r, all(T(1))};
        }
    }

    // Larger arguments: times 2^-300, the shifts and so the sums times 2^-600. What of a
    // shift underflows does not count beside a sum that the gate lets pass.
    i4 beyond(i4 a, i4 b) const requires(!is_exact) {
        const auto finite = static_cast<std::int32_t>(Format<T>::infinity_head - 1);
        const std::int32_t last = last_ < 0 ? -1 : finite;
        return (last - magnitude(a)) | (last - magnitude(b));
    }
    Two<V> far(V a, V b) const requires(!is_exact) {
        constexpr T s = T(0x1p-300);
        return LinearFrac(scalea_ * s, shifta_ * (s * s), scaleb_ * s, shiftb_ * (s * s))
            .fast(a * s, b * s);
    }

    i4 refuse(i4 r, i4 guard) const {
        return not_finite<T>(r) | (is_exact ? guard - small_head : guard);
    }

    int edge(T a, T b, T& r) const {
        if (is_nan(a) || is_nan(b))
            return r = (scalea_ * a + shifta_) / (scaleb_ * b + shiftb_), VTM_STATUS_OK;
        const ScaledLinear numerator = linear_scaled(scalea_, a, shifta_);
        const ScaledLinear denominator = linear_scaled(scaleb_, b, shiftb_);
        const auto special = [](double x) { return x == 0 || !is_finite(x); };
        if (special(numerator.value.high) || special(denominator.value.high)) {
            r = static_cast<T>(numerator.value.high / denominator.value.high);
            if (is_nan(r)) {
                for (const T given : {a, b, scalea_, shifta_, scaleb_, shiftb_})
                    if (is_nan(given)) return VTM_STATUS_OK;
                return VTM_STATUS_ERRDOM;
            }
            const bool pole = denominator.value.high == 0 && !is_infinite(numerator.value.high);
            return pole ? VTM_STATUS_SING : VTM_STATUS_OK;
        }
        const DoubleDouble<double> q = quotient(numerator.value, denominator.value);
        r = static_cast<T>(round_scaled(q.high, q.low, numerator.exponent - denominator.exponent));
        return is_infinite(r) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
    }

private:
    T scalea_, shifta_, scaleb_, shiftb_;
    std::int64_t least_numerator_ = 0, least_denominator_ = 0;
    std::int32_t last_;  // largest head of ordinary arguments; -1: the scalars are not ordinary
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
