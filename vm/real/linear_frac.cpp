// LinearFrac: r = (scalea a + shifta) / (scaleb b + shiftb).
//
//   a NaN among the arguments and scalars   NaN
//   0/0, inf/inf, or inf - inf or 0 inf     invalid NaN, domain error
//   denominator 0                           infinity, singularity
//   finite arguments, quotient too large    infinity, overflow
//
// Numerator and denominator may cancel; the bounds hold all the same:
//   double HA   both in double-double, one division, one rounding: 0.501 ulp
//   double LA   both sums rounded once, 2.2 ulp
//   single      in double: the products are exact, 0.5 ulp + 2^-28. No slower than
//               single arithmetic with its check, so it stands in every slot
#include <initializer_list>

#include "vm/core/scaling.h"
#include "vm/double_double.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

// Magnitudes below 2^490 (arguments and scalars) and above 2^-900 (sums, quotients)
// keep clear of overflow and underflow in the double formulas.
constexpr double large = 0x1p490;
constexpr std::int32_t large_head = 0x5E900000, small_head = 0x07B00000;

// (numerator / denominator) with one rounding, as high and low part.
template <class V>
inline DoubleDouble<V> quotient(DoubleDouble<V> numerator, DoubleDouble<V> denominator) {
    const V inverse = 1.0 / denominator.high;
    const V q = numerator.high * inverse;
    const DoubleDouble<V> back = two_product(q, denominator.high);
    const V rest = ((numerator.high - back.high) - back.low) + (numerator.low - q * denominator.low);
    return {q, rest * inverse};
}

// scale x + shift, exact products, relative error about 2^-100.
template <class V>
inline DoubleDouble<V> linear(V scale, DoubleDouble<V> scale_halves, V x, V shift) {
    const DoubleDouble<V> product = two_product(scale, scale_halves, x, split(x));
    const DoubleDouble<V> sum = two_sum(product.high, shift);
    return two_sum(sum.high, sum.low + product.low);
}

// The same rounded once.
template <class V>
inline V linear_rounded(V scale, DoubleDouble<V> scale_halves, V x, V shift) {
    const DoubleDouble<V> product = two_product(scale, scale_halves, x, split(x));
    const DoubleDouble<V> sum = two_sum(product.high, shift);
    return sum.high + (sum.low + product.low);
}

// The same for any numbers: the sum is `value` times 2^`exponent`, with |value| in
// [1, 2) or 0, infinite or NaN.
struct ScaledLinear {
    DoubleDouble<double> value;
    int exponent;
};
ScaledLinear linear_scaled(double scale, double x, double shift) {
    if (!is_finite(scale) || !is_finite(x) || !is_finite(shift)) return {{scale * x + shift, 0.0}, 0};
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
    DoubleDouble<double> sum = linear(s, split(s), scaled(scaled(x, -x_e), below), scaled(shift, -e));
    if (sum.high == 0) return {sum, 0};
    const int normal = exponent_of(sum.high);
    return {{scaled(sum.high, -normal), scaled(sum.low, -normal)}, e + normal};
}

}  // namespace

template <class T, class Accuracy>
class LinearFrac {
public:
    using V = Vector<T>;
    KEF_REPORT_NAME(LinearFrac);
    static constexpr bool is_single = std::is_same_v<T, float>;

    LinearFrac(T scalea, T shifta, T scaleb, T shiftb)
        : scalea_(scalea), shifta_(shifta), scaleb_(scaleb), shiftb_(shiftb) {
        const auto small = [](T x) { return -large < x && x < large; };
        const bool ordinary_scalars = small(scalea) && small(shifta) && small(scaleb) && small(shiftb);
        last_ = ordinary_scalars ? large_head - 1 : -1;
    }

    i4 outside(i4 a, i4 b) const {
        if constexpr (is_single) return a & 0;
        else return (last_ - magnitude(a)) | (last_ - magnitude(b));
    }

    // The second vector is for the gate: below `small` where the element must be
    // computed by the edge.
    Two<V> fast(V a, V b) const {
        if constexpr (std::is_same_v<Accuracy, LA>) {
            const V numerator = linear_rounded(all(scalea_), split(all(scalea_)), a, all(shifta_));
            const V denominator = linear_rounded(all(scaleb_), split(all(scaleb_)), b, all(shiftb_));
            return {numerator / denominator, minimum(absolute(numerator), absolute(denominator))};
        } else if constexpr (!is_single) {
            const DoubleDouble<V> numerator = linear(all(scalea_), split(all(scalea_)), a, all(shifta_));
            const DoubleDouble<V> denominator = linear(all(scaleb_), split(all(scaleb_)), b, all(shiftb_));
            const DoubleDouble<V> q = quotient(numerator, denominator);
            const V r = q.high + q.low;
            return {r, minimum(absolute(r), minimum(absolute(numerator.high), absolute(denominator.high)))};
        } else {
            const d2x2 x = widen(a), y = widen(b);
            const auto part = [this](d2 u, d2 v) {
                return (u * double(scalea_) + double(shifta_)) / (v * double(scaleb_) + double(shiftb_));
            };
            const V r = narrow(part(x.low, y.low), part(x.high, y.high));
            return {r, all(T(1))};
        }
    }

    i4 refuse(i4 r, i4 guard) const { return not_finite<T>(r) | (guard - small_head); }

    int edge(T a, T b, T& r) const {
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
    std::int32_t last_;  // largest head of ordinary arguments; -1: the scalars are not ordinary
};

#define KEF_LINEAR_FRAC(type, accuracy)                                                         \
    void type##LinearFrac_##accuracy(std::int32_t n, const element_##type* a,                   \
                                     const element_##type* b, element_##type scalea,            \
                                     element_##type shifta, element_##type scaleb,              \
                                     element_##type shiftb, element_##type* r) {                \
        map2<LinearFrac<element_##type, accuracy>>(n, a, b, r, {scalea, shifta, scaleb, shiftb}); \
    }
KEF_LINEAR_FRAC(s, HA)
KEF_LINEAR_FRAC(d, LA)
KEF_LINEAR_FRAC(d, HA)

}  // namespace kef::vm
