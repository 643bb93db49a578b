// The kernel of Atan2 and of the argument: r = the angle of the point (b, a), in [-pi, pi]; a is
// the ordinate y, b the abscissa x.
//
//   a or b NaN                  NaN
//   a = +-0, b > 0 or +0        +-0
//   a = +-0, b < 0 or -0        +-pi
//   b = +-0, a not 0            +-pi/2
//   infinite arguments          the limit: multiples of pi/4
//   |a/b| subnormal, b > 0      the quotient, underflow, also where it rounds to 0
//
// No other error conditions. Double HA: 0.53 ulp, with the quotient in two parts. Single
// HA in double, 0.5 ulp + 2^-28; LA, also EP, in single precision.
#pragma once

#include "vm/core/atan_core.h"
#include "vm/core/atan_single.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// From `first` to `last` powers of quotients are normal numbers.
template <class T> struct Atan2Range;
template <> struct Atan2Range<double> {
    static constexpr std::int32_t first = 0x38F00000, last = 0x46E00000;  // 2^-112, 2^111
};
template <> struct Atan2Range<float> {
    static constexpr std::int32_t first = 0x39000000, last = 0x46000000;  // 2^-13, 2^13
};

// atan(y/x) for x, y > 0, as an unevaluated sum: t = (y - c x) / (x + c y) with its
// remainder; y - c x to one rounding, since c has 7 bits. `low`: low parts of y and x, or nothing.
inline Parts atan_quotient(doubles y, doubles x, auto... low) {
    const auto row = atan_rows(y / x);
    const doubles c = row.field(&AtanEntry::centre);
    const doubles x_high = leading<32>(x);
    const doubles n = (y - c * x_high) - c * (x - x_high);
    const doubles d = x + c * y;
    const doubles inverse = 1.0 / d;
    const doubles t = n * inverse;
    const Parts back = two_product(t, d);
    doubles rest = (n - back.high) - back.low;
    if constexpr (sizeof...(low) == 2) {
        const auto [y_low, x_low] = Two<doubles>{low...};
        rest = rest + ((y_low - c * x_low) - t * (x_low + c * y_low));
    }
    rest = rest * inverse;
    const doubles high = row.field(&AtanEntry::high);
    const doubles sum = high + t;
    return {sum, ((high - sum) + t) + ((row.field(&AtanEntry::low) + rest) + atan_tail<HA>(t))};
}

// The same with an error of 2^-65, for powers: numerator and denominator of t in two parts.
inline Parts atan_quotient_extended(doubles y, doubles x) {
    const auto row = atan_rows(y / x);
    const doubles c = row.field(&AtanEntry::centre);
    const doubles x_high = leading<32>(x), y_high = leading<32>(y);
    const Parts n1 = two_sum(y, -(c * x_high)), n = two_sum(n1.high, -(c * (x - x_high)));
    const Parts d1 = two_sum(x, c * y_high), d = two_sum(d1.high, c * (y - y_high));
    const doubles inverse = 1.0 / d.high;
    const doubles t = n.high * inverse;
    const Parts back = two_product(t, d.high);
    const doubles rest =
        (((n.high - back.high) - back.low) + ((n.low + n1.low) - t * (d.low + d1.low))) * inverse;
    const Parts sum = fast_two_sum(row.field(&AtanEntry::high), t);
    return {sum.high, sum.low + ((row.field(&AtanEntry::low) + rest) + atan_tail<HA>(t))};
}

// The angle of (x, y) from the angle of (|x|, |y|): pi - angle where x < 0, which its sign bit
// tells; with the sign of y.
inline Parts turned(Parts angle, longs left) {
    const longs mask = sign_mask(left);
    const doubles base = where(mask, all(pi));
    const doubles high = flipped(angle.high, left), low = flipped(angle.low, left);
    const doubles sum = base + high;  // |base| >= |high| or base = 0
    return {sum, ((base - sum) + high) + (where(mask, all(pi_low)) + low)};
}
inline doubles turned(doubles angle, longs left) {
    return where(sign_mask(left), all(pi)) + flipped(angle, left);
}
inline doubles turned(Parts angle, doubles x, doubles y) {
    return with_sign(rounded(turned(angle, sign_bit(x))), y);
}
inline doubles turned(doubles angle, doubles x, doubles y) {
    return with_sign(turned(angle, sign_bit(x)), y);
}
inline floats turned(floats angle, floats x, floats y) {
    const ints left = sign_bit(x);
    return with_sign(
        where(sign_mask(left), all(static_cast<float>(pi))) + (floats)((ints)angle ^ left), y);
}

// The angle of (x, |y|), of any size but NaN: (high + low) 2^exponent; the exponent is not 0 where
// the angle is the quotient.
struct AngleOne {
    double high, low;
    int exponent;
};
inline AngleOne eighth_turns(int n) {
    const DoubleDouble<double> product = two_product(double(n), pi / 4);
    return {product.high, product.low + n * (pi_low / 4), 0};
}
inline AngleOne quarter_turns(int n) { return eighth_turns(2 * n); }
inline AngleOne angle_one(double y, double x, auto quotient) {
    const bool left = to_bits(x) >> 63 != 0;
    if (is_infinite(x) && is_infinite(y)) return eighth_turns(left ? 3 : 1);
    if (is_infinite(x) || y == 0) return quarter_turns(left ? 2 : 0);
    if (is_infinite(y) || x == 0) return quarter_turns(1);
    const int y_e = exponent_of(y), x_e = exponent_of(x), e = y_e - x_e;
    const double height = scaled(y < 0 ? -y : y, -y_e), width = scaled(left ? -x : x, -x_e);
    if (e > 62) return quarter_turns(1);
    if (e >= -62) {
        const Parts angle = turned(quotient(all(height), all(scaled(width, -e))),
                                   left ? sign_bit(all(-1.0)) : longs{});
        return {angle.high[0], angle.low[0], 0};
    }
    if (left) return quarter_turns(2);
    const double q = height / width;  // atan q = q
    const DoubleDouble<double> back = two_product(q, width);
    return {q, ((height - back.high) - back.low) / width, e};
}
inline AngleOne angle_one(double y, double x) {
    return angle_one(y, x, [](doubles h, doubles w) { return atan_quotient(h, w); });
}

template <class T, class Accuracy> struct Atan2Formula {
    using V = Vector<T>;

    static ints outside(ints a, ints b) {
        using Range = Atan2Range<T>;
        a = magnitude(a), b = magnitude(b);
        return (a - Range::first) | (b - Range::first) | (Range::last - a) | (Range::last - b);
    }

    // Any finite arguments whose quotient is a normal number, or any number where the angle is
    // nearly pi.
    static ints beyond(ints a, ints b) {
        constexpr auto last = static_cast<std::int32_t>(Format<T>::infinity_head - 1);
        constexpr auto normal = static_cast<std::int32_t>(Format<T>::normal_head);
        constexpr std::int32_t widest = std::is_same_v<T, double> ? 1022 << 20 : 126 << 23;
        const ints right = ~b;
        a = magnitude(a), b = magnitude(b);
        const ints narrow =
            (a >> 1) - (b >> 1) + (widest / 2 - 2);  // halves, which do not overflow
        const ints infinite = (last - a) | (last - b), small = (a - normal) | (narrow & right);
        if constexpr (std::is_same_v<T, float>) return infinite | (small & (a != 0));
        return infinite | small | (b - normal);
    }
    // Single precision: the double formula of LA; a = b = 0 too. Double: with the larger one
    // between 2 and 4; a quotient below 2^-60 is its arc tangent, and above 2^60 the angle is pi/2.
    static V far(V y, V x) {
        if constexpr (std::is_same_v<T, float>) {
            const DoublesPair h = widen(y), w = widen(x);
            const auto angle = [](doubles y, doubles x) {
                const doubles width = maximum(absolute(x), all(0x1p-200));
                return turned(atan_core<LA>(absolute(y) / width), x, y);
            };
            return narrow(angle(h.low, w.low), angle(h.high, w.high));
        } else {
            const doubles height = absolute(y), width = absolute(x),
                          larger = maximum(height, width);
            const doubles scale = (doubles)(INT64_C(0x7FF0000000000000) -
                                            ((longs)larger & INT64_C(0x7FF0000000000000)));
            const auto drowns = [&](doubles part) {
                return sign_mask((longs)part + (INT64_C(60) << 52) - (longs)larger);
            };
            const longs flat = drowns(height), steep = drowns(width);
            const doubles h = where(~flat, height) * scale;
            const doubles w = maximum(where(~steep, width) * scale, all(0x1p-58));
            // 0 where x < 0: it may be subnormal
            const doubles q =
                where(flat & ~sign_mask((longs)x), height) / select(flat, width, all(1.0));
            Parts angle = {doubles{}, doubles{}};
            if constexpr (std::is_same_v<Accuracy, HA>) angle = atan_quotient(h, w);
            else angle.high = atan_core<LA>(h / w);
            return turned({angle.high + q, angle.low}, x, y);  // one of the two is 0
        }
    }

    static V fast(V y, V x) {
        const V height = absolute(y), width = absolute(x);
        if constexpr (std::is_same_v<T, float>) {
            if constexpr (std::is_same_v<Accuracy, HA>) {
                const DoublesPair h = widen(y), w = widen(x);
                return narrow(Atan2Formula<double, LA>::fast(h.low, w.low),
                              Atan2Formula<double, LA>::fast(h.high, w.high));
            } else {
                return turned(atan_single<Accuracy>(height, width), x, y);
            }
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return turned(atan_quotient(height, width), x, y);
        } else {
            return turned(atan_core<LA>(height / width), x, y);
        }
    }

    static int edge(T a, T b, T& r) {
        if (is_nan(a) || is_nan(b)) return r = quiet(a, b), VTM_STATUS_OK;
        const AngleOne one = angle_one(a, b);
        const double angle =
            one.exponent ? round_scaled(one.high, one.low, one.exponent) : one.high + one.low;
        r = static_cast<T>(to_bits(double(a)) >> 63 != 0 ? -angle : angle);
        const bool small = static_cast<T>(angle) < Format<T>::smallest_normal;
        return one.exponent && small ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

}  // namespace KEF_VM
