// The kernel of Hypot and of the absolute value: r = sqrt(a^2 + b^2).
//
//   a or b infinite         +infinity, also where the other is NaN
//   a or b NaN              NaN
//   a = b = +-0             +0
//   root too large          +infinity, overflow
//   root subnormal          underflow, also where it is exact
//
// Double HA: both squares and the root with their errors, 0.501 ulp. Single HA: in
// double, where the squares are exact, 0.5 ulp + 2^-28. LA: plain arithmetic in the
// element's precision, 1.3 ulp; also EP.
#pragma once

#include <algorithm>

#include "vm/core/inverse_root.h"
#include "vm/core/rounding.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// From `least` to `end` squares, and in double their low parts and the root's, are normal numbers
// and their sum is finite; the square of a number below `least` does not count beside that of
// one above `counts`. In double the squares of all floats are ordinary: single HA, and LA beyond.
template <class T> struct HypotRange;
template <> struct HypotRange<double> {
    static constexpr double least = 0x1p-255, counts = 0x1p-200, end = 0x1p480;
};
template <> struct HypotRange<float> {
    static constexpr float least = 0x1p-62f, counts = 0x1p-40f, end = 0x1p60f;
};

KEF_INLINE Two<double> root_and_half_inverse(double x) {
    const double s = square_root(all(x))[0];
    return {s, 0.5 / s};
}

// The root and its error.
template <class V> inline DoubleDouble<V> root_of_squares(V a, V b) {
    const DoubleDouble<V> a2 = two_square(a), b2 = two_square(b);
    const DoubleDouble<V> sum = two_sum(a2.high, b2.high);
    const auto [s, half_inverse] = root_and_half_inverse(sum.high);
    const DoubleDouble<V> s2 = two_square(s);
    const V rest = ((sum.high - s2.high) - s2.low) + (sum.low + (a2.low + b2.low));
    return {s, rest * half_inverse};
}

template <class T, class Accuracy> struct HypotFormula {
    using V = Vector<T>;
    static constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    static constexpr bool is_single = std::is_same_v<T, float>;
    static constexpr bool in_double = is_single && accurate;
    static constexpr bool far_everywhere = !in_double;
    using Range = HypotRange<T>;

    static ints infinite_or_nan(ints a, ints b) {
        constexpr auto last = static_cast<std::int32_t>(Format<T>::infinity_head - 1);
        return (last - magnitude(a)) | (last - magnitude(b));
    }
    static ints outside(ints a, ints b) {
        if constexpr (in_double) return infinite_or_nan(a, b);
        const auto range = [](ints h) {
            return not_between(magnitude(h), head_of(Range::least), head_of(Range::end));
        };
        return range(a) | range(b);
    }

    static V fast(V a, V b) {
        if constexpr (in_double) return wide_hypot(a, b);
        else if constexpr (accurate) return rounded(root_of_squares(a, b));
        else return short_root(a * a + b * b);
    }
    static floats wide_hypot(floats a, floats b) {
        // Beside the widening the processor's root of 32 bytes is the sooner one.
        const auto root = [](doubles s) {
            return lanes<double> > 4 ? short_root(s) : square_root(s);
        };
        const DoublesPair x = widen(a), y = widen(b);
        return narrow(root(x.low * x.low + y.low * y.low), root(x.high * x.high + y.high * y.high));
    }

    // Finite arguments; in double up to 2^1023 and not both subnormal, so that the root is normal.
    static ints beyond(ints a, ints b) requires(!in_double) {
        if constexpr (is_single) return infinite_or_nan(a, b);
        a = magnitude(a), b = magnitude(b);
        constexpr auto normal = static_cast<std::int32_t>(Format<T>::normal_head),
                       end = static_cast<std::int32_t>(head_of(0x1p1023));
        return (end - 1 - a) | (end - 1 - b) | ((a - normal) & (b - normal));
    }
    // Double: times a power of two.
    static V far(V a, V b) requires(!in_double) {
        a = absolute(a), b = absolute(b);
        const V larger = maximum(a, b), smaller = minimum(a, b);
        if constexpr (is_single) {
            const ints wide =
                (larger >= Range::end) | ((larger < Range::counts) & (smaller < Range::least));
            if (all_lanes(wide)) return wide_hypot(a, b);
            const V r =
                fast(maximum(larger, all(Range::least)), maximum(smaller, all(Range::least)));
            return any_lane(wide) ? select(wide, wide_hypot(a, b), r) : r;
        } else {
            const longs large = larger >= Range::end;
            const V up = select(larger < 0x1p-600, all(0x1p822), all(0x1p400));
            const V scale =
                select(large, all(0x1p-600), select(larger < Range::counts, up, all(1.0)));
            const V part = maximum(smaller, where(large, all(1.0))) * scale;
            return fast(larger * scale, maximum(part, all(Range::least))) / scale;
        }
    }
    // Overflow and subnormal results are for the edge.
    static ints refuse(ints r) requires(is_single) {
        return not_between(r, Format<T>::normal_head, Format<T>::infinity_head);
    }

    static int edge(T a, T b, T& r) {
        if (is_infinite(a) || is_infinite(b)) return r = Format<T>::infinity, VTM_STATUS_OK;
        if (is_nan(a) || is_nan(b)) return r = quiet(a, b), VTM_STATUS_OK;
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

}  // namespace KEF_VM
