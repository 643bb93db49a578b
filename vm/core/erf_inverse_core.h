// The inverse of erf, of erfc and of the normal distribution, by the probability
// q = erfc(r) <= 1 and its complement x = erf(r) = 1 - q, of which one is given and the
// other rounded:
//
//   q >= 2^-10   r = x F(q), F by intervals of q: 16 of an octave
//   q < 2^-10    r = G(-ln q), G by intervals of -ln q: 16 of an octave
//
// In the interval with centre c, F(c + y) = F(c) + y (c1 + c2 y + ... + c8 y^7), and G too;
// relative error 2^-58.4 (F), 2^-59.6 (G). F is smooth at x = 0, so that the result keeps its
// relative accuracy there. Tables: tools/erf_inverse_tables.py.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/log_single.h"
#include "vm/core/rounding.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct alignas(16) ErfInverseEntry {
    double base[2][2];  // F(c) and sqrt2 F(c): the leading 26 bits, the rest
    double c[8];        // c1, ..., c8
};
inline constexpr int erf_inverse_near_entries = 161, erf_inverse_tail_entries = 109,
                     erf_inverse_single_entries = 193;
extern const ErfInverseEntry erf_inverse_near_table[erf_inverse_near_entries];
extern const ErfInverseEntry erf_inverse_tail_table[erf_inverse_tail_entries];
extern const f4 erf_inverse_single_table[erf_inverse_single_entries];
// Start and slope of a line as the two halves of a double.
extern const double erf_inverse_line_table[erf_inverse_single_entries];

// What r is multiplied by: r solves erf(r) = x, sqrt2 r is the quantile of the normal
// distribution.
enum class ErfInverseScale { one, root2 };

// Which of x and q = 1 - x is exact.
enum class ErfInverseGiven { x, q };

// The argument of four floats or two doubles: x, q, and the result's sign.
template <class V> struct ErfInverseArgument { V x, q, sign; };

inline d2 low_lanes(d2 a, d2 b) { return __builtin_shufflevector(a, b, 0, 2); }
inline d2 high_lanes(d2 a, d2 b) { return __builtin_shufflevector(a, b, 1, 3); }

// The intervals of two lanes.
struct ErfInverseIntervals {
    const ErfInverseEntry *entry0, *entry1;
    d2 centre;

    // F(c) in two parts.
    DoubleDouble<d2> base(ErfInverseScale scale) const {
        const d2 base0 = load_pair(entry0->base[int(scale)]);
        const d2 base1 = load_pair(entry1->base[int(scale)]);
        return {low_lanes(base0, base1), high_lanes(base0, base1)};
    }

    // c1 + c2 y + ... + c8 y^7; EP: to c4. Each entry is evaluated by itself, the odd and the even
    // powers in the two lanes, so that the coefficients need not change places.
    template <class Accuracy> d2 slope(d2 y) const {
        const d2 y2 = y * y;
        const d2 sum0 = halves<Accuracy>(*entry0, low_lanes(y2, y2));
        const d2 sum1 = halves<Accuracy>(*entry1, high_lanes(y2, y2));
        return low_lanes(sum0, sum1) + y * high_lanes(sum0, sum1);
    }

private:
    static d2 load_pair(const double* p) { return (d2)_mm_load_pd(p); }
    template <class Accuracy> static d2 halves(const ErfInverseEntry& e, d2 y2) {
        if constexpr (std::is_same_v<Accuracy, EP>)
            return load_pair(&e.c[0]) + y2 * load_pair(&e.c[2]);
        else
            return load_pair(&e.c[0]) +
                   y2 * (load_pair(&e.c[2]) + y2 * (load_pair(&e.c[4]) + y2 * load_pair(&e.c[6])));
    }
};

// The intervals of z in a table that begins at `first`: sign, exponent and four bits of the
// significand, which are the leading 16 bits of z, number them.
inline ErfInverseIntervals erf_inverse_intervals(const ErfInverseEntry* table, double first, d2 z) {
    const int base = head(first) >> 16;
    const l2 leading = (l2)z & INT64_C(-0x1000000000000);
    return {&table[_mm_extract_epi16((__m128i)z, 3) - base],
            &table[_mm_extract_epi16((__m128i)z, 7) - base],
            (d2)(leading | INT64_C(0x800000000000))};
}

// For q >= 2^-10; finite for 0 < q < 2^-10. HA: r, scaled, as a sum of a main part and a small
// one; EP: r rounded, relative error below 2^-26.
template <class Accuracy, ErfInverseGiven given, ErfInverseScale scale>
inline auto erf_inverse_near(d2 x, d2 q) {
    constexpr bool is_rounded = std::is_same_v<Accuracy, EP>;
    constexpr bool from_x = given == ErfInverseGiven::x && !is_rounded;
    constexpr double first = 0x1p-10;
    const ErfInverseIntervals at =
        erf_inverse_intervals(erf_inverse_near_table, first, maximum(q, all(first)));
    const d2 y = from_x ? (1.0 - at.centre) - x : q - at.centre;
    const d2 change = (scale == ErfInverseScale::one ? y : y * root2) * at.slope<Accuracy>(y);
    const DoubleDouble<d2> base = at.base(scale);
    if constexpr (is_rounded) {
        return x * (base.high + change);
    } else {  // products of 26 bits are exact
        const d2 x_high = leading(x), x_low = from_x ? x - x_high : (1.0 - x_high) - q;
        return DoubleDouble<d2>{x_high * base.high, x_low * base.high + x * (base.low + change)};
    }
}

// The same for q 2^-shift below 2^-9.7; finite up to 1. EP: relative error below 2^-27.
template <class Accuracy, ErfInverseScale scale>
inline auto erf_inverse_tail(d2 q, double shift = 0) {
    constexpr bool is_rounded = std::is_same_v<Accuracy, EP>;
    constexpr double first = 6.75;
    const DoubleDouble<d2> ln = [&] {
        if constexpr (is_rounded) return DoubleDouble<d2>{log_core<EP>(q, shift), d2{}};
        else return log_parts(q, shift);
    }();
    const d2 s = maximum(-(ln.high + ln.low), all(first));
    const ErfInverseIntervals at = erf_inverse_intervals(erf_inverse_tail_table, first, s);
    const d2 y = (-ln.high - at.centre) - ln.low;
    const d2 change = (scale == ErfInverseScale::one ? y : y * root2) * at.slope<Accuracy>(y);
    const DoubleDouble<d2> base = at.base(scale);
    if constexpr (is_rounded) return base.high + (base.low + change);
    else return DoubleDouble<d2>{base.high, base.low + change};
}

// r in single precision, for q >= 2^-24; finite for 0 < q < 2^-24. F is of degree 3 (LA) or 1
// (EP) by 8 intervals of an octave; relative error 2^-23.1 (LA), 2^-11.9 (EP).
template <class Accuracy> inline f4 erf_inverse_single(f4 x, f4 q) {
    constexpr float first = 0x1p-24f;
    const f4 z = maximum(q, all(first));
    const auto index = (__m128i)((i4)z >> 20);
    const int base = head(first) >> 20;
    const int j0 = _mm_extract_epi16(index, 0) - base, j1 = _mm_extract_epi16(index, 2) - base;
    const int j2 = _mm_extract_epi16(index, 4) - base, j3 = _mm_extract_epi16(index, 6) - base;
    const f4 y = q - (f4)(((i4)z & -0x100000) | 0x80000);
    if constexpr (std::is_same_v<Accuracy, LA>) {
        const f4* const table = erf_inverse_single_table;
        auto c0 = (__m128)table[j0], c1 = (__m128)table[j1], c2 = (__m128)table[j2],
             c3 = (__m128)table[j3];
        _MM_TRANSPOSE4_PS(c0, c1, c2, c3);
        return x * ((f4)c0 + y * ((f4)c1 + y * ((f4)c2 + y * (f4)c3)));
    } else {
        const double* const table = erf_inverse_line_table;
        const auto pair = [&](int i, int j) {
            return (f4)_mm_loadh_pd(_mm_load_sd(&table[i]), &table[j]);
        };
        const f4 lower = pair(j0, j1), upper = pair(j2, j3);
        return x * (__builtin_shufflevector(lower, upper, 0, 2, 4, 6) +
                    y * __builtin_shufflevector(lower, upper, 1, 3, 5, 7));
    }
}

// The same for 2^-126 <= q < 2^-24: w = sqrt(-ln q) and a polynomial of it, relative error
// 2^-23.5 (LA), 2^-14.8 (EP); that of the logarithm is halved.
template <class Accuracy> inline f4 erf_inverse_single_tail(f4 q) {
    const f4 w = square_root(0.0f - log_single<Accuracy>(q));
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr float c0 = from_bits(0xBEFD1DA9u), c1 = from_bits(0x3DDDB7C0u),
                        c2 = from_bits(0xBC8F80FEu), c3 = from_bits(0x3AF89EA2u),
                        c4 = from_bits(0xB9086B22u), c5 = from_bits(0x36AB68DDu),
                        c6 = from_bits(0xB3BBD6ABu);
        return w + (c0 + w * (c1 + w * (c2 + w * (c3 + w * (c4 + w * (c5 + w * c6))))));
    } else {
        constexpr float c0 = from_bits(0xBEE00962u), c1 = from_bits(0x3D889D93u),
                        c2 = from_bits(0xBBB7A71Bu), c3 = from_bits(0x39446D42u);
        return w + (c0 + w * (c1 + w * (c2 + w * c3)));
    }
}

// The kernel of Function<T, Accuracy>, which has
//
//   given, scale            see above
//   argument(v)             ErfInverseArgument of the arguments v
//
// and its own gates and special cases. Single HA is the double formula, rounded once; a double
// beside a midpoint comes to the edge. Single LA and EP compute in single precision.
template <class Function, class T, class Accuracy> struct ErfInverseKernel {
    using V = Vector<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_floats = single && !std::is_same_v<Accuracy, HA>;

    static auto fast(V v) {
        if constexpr (in_floats)
            return in_single(v,
                             [](const auto& a) { return erf_inverse_single<Accuracy>(a.x, a.q); });
        else return in_doubles(v, near<Accuracy>);
    }
    static auto far(V v) {
        if constexpr (in_floats)
            return in_single(v,
                             [](const auto& a) { return erf_inverse_single_tail<Accuracy>(a.q); });
        else return in_doubles(v, tail<Accuracy>);
    }
    // Single HA: the second vector marks the midpoints.
    static i4 refuse(i4, i4 midpoint) requires(single && !in_floats) { return midpoint; }

    // One argument of single precision, rounded once.
    static void rounded(float v, float& r) {
        const ErfInverseArgument<d2> a = Function::argument(all(double(v)));
        const float size = rounded_once(a.q[0] < 0x1p-10 ? tail<HA>(a) : near<HA>(a));
        r = a.sign[0] < 0 ? -size : size;
    }

    template <class Formula> static auto near(const ErfInverseArgument<d2>& a) {
        return erf_inverse_near<Formula, Function::given, Function::scale>(a.x, a.q);
    }
    template <class Formula> static auto tail(const ErfInverseArgument<d2>& a) {
        return erf_inverse_tail<Formula, Function::scale>(a.q);
    }

private:
    static d2 sum(const ErfInverseArgument<d2>& a, auto parts) {
        const auto r = parts(a);
        if constexpr (std::is_same_v<decltype(r), const d2>) return with_sign(r, a.sign);
        else return with_sign(r.high + r.low, a.sign);
    }
    static f4 in_single(V v, auto formula) {
        const ErfInverseArgument<V> a = Function::argument(v);
        f4 r = formula(a);
        if (Function::scale == ErfInverseScale::root2) r *= static_cast<float>(root2);
        return with_sign(r, a.sign);
    }
    static auto in_doubles(V v, auto parts) {
        if constexpr (single) {
            const d2x2 wide = widen(v);
            return with_midpoints({sum(Function::argument(wide.low), parts),
                                   sum(Function::argument(wide.high), parts)});
        } else {
            return sum(Function::argument(v), parts);
        }
    }
};

}  // namespace kef::vm
