// Hypot: r = sqrt(a^2 + b^2).
//
//   a or b infinite         +infinity, also where the other is NaN
//   a or b NaN              NaN
//   a = b = +-0             +0
//   root too large          +infinity, overflow
//   root subnormal          underflow, also where it is exact
//
// Double HA: both squares and the root with their errors, 0.501 ulp. Single HA: in
// double, where the squares are exact, 0.5 ulp + 2^-28. LA: plain arithmetic in the
// element's precision, 1.0 ulp; also EP.
#include <algorithm>

#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The larger argument below `last` and above `first`: no square overflows, and what
// underflows of the smaller one's does not count. In double the squares of all floats are
// ordinary: single HA, and what the others' gate holds back.
template <class T> struct HypotRange;
template <> struct HypotRange<double> {
    static constexpr std::int32_t last = 0x5F300000, first = 0x26F00000;  // 2^500, 2^-400
};
template <> struct HypotRange<float> {
    static constexpr std::int32_t last = 0x5D800000, first = 0x26800000;  // 2^60, 2^-50
};

inline d2 root(d2 x) { return square_root(x); }
inline double root(double x) { return square_root(all(x))[0]; }

// The root and its error.
template <class V> inline DoubleDouble<V> root_of_squares(V a, V b) {
    const DoubleDouble<V> a2 = two_square(a), b2 = two_square(b);
    const DoubleDouble<V> sum = two_sum(a2.high, b2.high);
    const V s = root(sum.high);
    const DoubleDouble<V> s2 = two_square(s);
    const V rest = ((sum.high - s2.high) - s2.low) + (sum.low + (a2.low + b2.low));
    return {s, rest * (0.5 / s)};
}

}  // namespace

template <class T, class Accuracy> struct Hypot {
    using V = Vector<T>;
    KEF_REPORT_NAME(Hypot);
    static constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    static constexpr bool is_single = std::is_same_v<T, float>;

    static i4 infinite_or_nan(i4 a, i4 b) {
        constexpr auto last = static_cast<std::int32_t>(Format<T>::infinity_head - 1);
        return (last - magnitude(a)) | (last - magnitude(b));
    }
    static i4 outside(i4 a, i4 b) {
        if constexpr (is_single && accurate) return infinite_or_nan(a, b);
        using Range = HypotRange<T>;
        a = magnitude(a), b = magnitude(b);
        return (Range::last - a) | (Range::last - b) | ((a - Range::first) & (b - Range::first));
    }

    static V fast(V a, V b) {
        if constexpr (!accurate) {
            return square_root(a * a + b * b);
        } else if constexpr (std::is_same_v<T, double>) {
            const DoubleDouble<V> r = root_of_squares(a, b);
            return r.high + r.low;
        } else {
            return in_double(a, b);
        }
    }
    static f4 in_double(f4 a, f4 b) {
        const d2x2 x = widen(a), y = widen(b);
        return narrow(square_root(x.low * x.low + y.low * y.low),
                      square_root(x.high * x.high + y.high * y.high));
    }

    static i4 beyond(i4 a, i4 b) requires(is_single && !accurate) { return infinite_or_nan(a, b); }
    static V far(V a, V b) requires(is_single && !accurate) { return in_double(a, b); }
    // Overflow and subnormal results are for the edge.
    static i4 refuse(i4 r) requires(is_single) {
        return not_between(r, Format<T>::normal_head, Format<T>::infinity_head);
    }

    static int edge(T a, T b, T& r) {
        if (is_infinite(a) || is_infinite(b)) return r = Format<T>::infinity, VTM_STATUS_OK;
        if (is_nan(a) || is_nan(b)) return r = a + b, VTM_STATUS_OK;
        const double x = a, y = b;
        const double larger = std::max(x < 0 ? -x : x, y < 0 ? -y : y);
        if (larger == 0) return r = 0, VTM_STATUS_OK;
        const int e = exponent_of(larger);
        const DoubleDouble<double> s = root_of_squares(scaled(x, -e), scaled(y, -e));
        r = static_cast<T>(round_scaled(s.high, s.low, e));
        if (is_infinite(r)) return VTM_STATUS_OVERFLOW;
        return r < Format<T>::smallest_normal ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP2(s, Hypot, LA)
KEF_MAP2(s, Hypot, HA)
KEF_MAP2(d, Hypot, LA)
KEF_MAP2(d, Hypot, HA)

}  // namespace kef::vm
