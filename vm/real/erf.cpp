// Erf: r = 2/sqrt(pi) times the integral of exp(-t^2) from 0 to x.
//
//   x NaN              NaN
//   x = +-0            x
//   x = +-infinity     +-1
//   |x| < first        2/sqrt(pi) x, rounded once; underflow where that is subnormal and
//                      not x
//
// Single HA is the double formula of LA, rounded once. Where the double falls exactly between
// two floats the edge decides with the low part of HA. LA and EP compute in single precision.
#include "vm/core/erf_core.h"
#include "vm/core/erf_single.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// 2/sqrt(pi) = high + low; and the leading 26 bits and the rest.
constexpr double slope_high = from_bits(UINT64_C(0x3FF20DD750429B6D));
constexpr double slope_low = from_bits(UINT64_C(0x3C71AE3A914FED80));
constexpr double slope_leading = from_bits(UINT64_C(0x3FF20DD750000000));
constexpr double slope_rest = (slope_high - slope_leading) + slope_low;

// 2/sqrt(pi) x; scaled, so that the parts of small ones are normal numbers.
inline doubles erf_slope(doubles x) {
    const doubles u = x * 0x1p200, high = leading(u);
    return (high * slope_leading + (u * slope_rest + (u - high) * slope_leading)) * 0x1p-200;
}
inline floats erf_slope(floats x) { return x * static_cast<float>(slope_high); }

}  // namespace

template <class T, class Accuracy> struct Erf {
    using V = Vector<T>;
    KEF_REPORT_NAME(Erf);
    static constexpr bool in_double = std::is_same_v<T, float> && std::is_same_v<Accuracy, HA>;

    // erf x = 2/sqrt(pi) x below it. Subnormal numbers come to the edge, which finds whether the
    // result is one; zeros too where the leading bits do not tell them apart.
    static constexpr T bound = tiny_bound<T, LA, Tiny::by_square>;
    static constexpr bool far_everywhere = true;
    static ints outside(ints h) {
        return not_between(magnitude(h), head_of(bound), Format<T>::infinity_head);
    }
    static ints beyond(ints h) {
        const ints size = magnitude(h);
        const ints gate = not_between(size, Format<T>::normal_head, Format<T>::infinity_head);
        return std::is_same_v<T, float> ? gate & (size != 0) : gate;
    }
    static auto far(V x) {
        if constexpr (in_double) {
            return fast(x);
        } else {
            const auto tiny = absolute(x) < all(bound);
            return with_sign(select(tiny, erf_slope(x), fast(where(~tiny, x))), x);
        }
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return with_sign(erf_core<Accuracy>(minimum(absolute(x), all(6.0))), x);
        } else if constexpr (in_double) {
            const floats u = minimum(absolute(x), all(6.0f));
            return with_sign(marked_in_double(u, erf_table_sum<LA>), x);
        } else {
            return with_sign(erf_single<Accuracy>(absolute(x)), x);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0) return r = x + x, VTM_STATUS_OK;
        if (is_infinite(x)) return r = x > 0 ? 1 : -1, VTM_STATUS_OK;
        const T size = x < 0 ? -x : x;
        if constexpr (std::is_same_v<T, float>) {
            const bool normal = size >= Format<T>::smallest_normal;
            r = normal ? rounded_once(erf_table_sum<HA>(all(double(size))))
                       : static_cast<float>(size * slope_high);
        } else {
            const int e = exponent_of(size);
            const double m = scaled(size, -e);
            const DoubleDouble<double> product = two_product(m, slope_high);
            r = round_scaled(product.high, product.low + m * slope_low, e);
        }
        const bool underflow = r < Format<T>::smallest_normal && r != size;
        if (x < 0) r = -r;
        return underflow ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Erf, LA)
KEF_MAP1(s, Erf, HA)
KEF_MAP1(s, Erf, EP)
KEF_MAP1(d, Erf, LA)
KEF_MAP1(d, Erf, HA)
KEF_MAP1(d, Erf, EP)

}  // namespace kef::vm
