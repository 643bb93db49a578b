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
#include "vm/core/log_core.h"
#include "vm/core/rounding.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct alignas(16) ErfInverseEntry {
    double base[2][2];  // F(c) and sqrt2 F(c): the leading 26 bits, the rest
    double c[8];        // c1, ..., c8
};
inline constexpr int erf_inverse_near_entries = 161, erf_inverse_tail_entries = 109,
                     erf_inverse_single_entries = 1009;
extern const ErfInverseEntry erf_inverse_near_table[erf_inverse_near_entries];
extern const ErfInverseEntry erf_inverse_tail_table[erf_inverse_tail_entries];
struct alignas(16) ErfInverseCubic {
    float c[4];
};
struct ErfInverseLine {
    double both;  // start and slope as its two halves
};
extern const ErfInverseCubic erf_inverse_single_table[erf_inverse_single_entries];
extern const ErfInverseLine erf_inverse_line_table[erf_inverse_single_entries];

}  // namespace kef::vm

namespace KEF_VM {

// What r is multiplied by: r solves erf(r) = x, sqrt2 r is the quantile of the normal
// distribution.
enum class ErfInverseScale { one, root2 };

// Which of x and q = 1 - x is exact.
enum class ErfInverseGiven { x, q };

// The argument: x, q, and the result's sign.
template <class V> struct ErfInverseArgument { V x, q, sign; };

struct ErfInverseIntervals {
    Rows<ErfInverseEntry> row;
    doubles centre;

    // F(c) in two parts.
    Parts base(ErfInverseScale scale) const {
        const auto [high, low] = row.pair(&ErfInverseEntry::base, int(scale));
        return {high, low};
    }

    // c1 + c2 y + ... + c8 y^7; EP: to c4. Each entry is evaluated by itself, the odd and the even
    // powers in the two lanes of a block, so that the coefficients need not change places.
    template <class Accuracy> doubles slope(doubles y) const {
        const doubles y2 = y * y;
        const auto halves = [&](int first, doubles u) {
            const auto c = [&](int i) { return row.pairs_of(first, &ErfInverseEntry::c, i); };
            if constexpr (std::is_same_v<Accuracy, EP>) return multiply_add(u, c(2), c(0));
            else return multiply_add(u, multiply_add(u, multiply_add(u, c(6), c(4)), c(2)), c(0));
        };
        const doubles even = halves(0, in_blocks<0, 0>(y2, y2));
        const doubles odd = halves(1, in_blocks<1, 1>(y2, y2));
        return multiply_add(y, in_blocks<1, 3>(even, odd), in_blocks<0, 2>(even, odd));
    }
};

// The intervals of z in a table that begins at `first`: sign, exponent and four bits of the
// significand, which are the leading 16 bits of z, number them.
inline ErfInverseIntervals erf_inverse_intervals(const ErfInverseEntry* table, double first,
                                                 doubles z) {
    return {{table, row_numbers((longs)z, 0xFFFF, 3, head(first) >> 16)},
            (doubles)((longs)leading<48>(z) | INT64_C(0x800000000000))};
}

// For q >= 2^-10; finite for 0 < q < 2^-10. HA: r, scaled, as a sum of a main part and a small
// one; EP: r rounded, relative error below 2^-26.
template <class Accuracy, ErfInverseGiven given, ErfInverseScale scale>
inline auto erf_inverse_near(doubles x, doubles q) {
    constexpr bool is_rounded = std::is_same_v<Accuracy, EP>;
    constexpr bool from_x = given == ErfInverseGiven::x && !is_rounded;
    constexpr double first = 0x1p-10;
    const ErfInverseIntervals at =
        erf_inverse_intervals(erf_inverse_near_table, first, maximum(q, all(first)));
    const doubles y = from_x ? (1.0 - at.centre) - x : q - at.centre;
    const doubles change = (scale == ErfInverseScale::one ? y : y * root2) * at.slope<Accuracy>(y);
    const Parts base = at.base(scale);
    if constexpr (is_rounded) {
        return x * (base.high + change);
    } else {  // products of 26 bits are exact
        const doubles x_high = leading(x), x_low = from_x ? x - x_high : (1.0 - x_high) - q;
        return Parts{x_high * base.high, x_low * base.high + x * (base.low + change)};
    }
}

// The same for q 2^-shift below 2^-9.7; finite up to 1. EP: relative error below 2^-27.
template <class Accuracy, ErfInverseScale scale>
inline auto erf_inverse_tail(doubles q, double shift = 0) {
    constexpr bool is_rounded = std::is_same_v<Accuracy, EP>;
    constexpr double first = 6.75;
    const Parts ln = [&] {
        if constexpr (is_rounded) return Parts{log_core<EP>(q, shift), doubles{}};
        else return log_parts(q, shift);
    }();
    const doubles s = maximum(-(ln.high + ln.low), all(first));
    const ErfInverseIntervals at = erf_inverse_intervals(erf_inverse_tail_table, first, s);
    const doubles y = (-ln.high - at.centre) - ln.low;
    const doubles change = (scale == ErfInverseScale::one ? y : y * root2) * at.slope<Accuracy>(y);
    const Parts base = at.base(scale);
    if constexpr (is_rounded) return base.high + (base.low + change);
    else return Parts{base.high, base.low + change};
}

// r in single precision, q >= 2^-126. F is of degree 3 (LA) or 1 (EP) by 8 intervals of an octave;
// relative error 2^-23.1 (LA), 2^-11.9 (EP). y is in units of the octave: in those of q the
// coefficients of small q would overflow.
template <class Accuracy> inline floats erf_inverse_single(floats x, floats q) {
    constexpr float first = 0x1p-126f;
    const ints z = (ints)maximum(q, all(first));
    const auto rows = row_numbers(z >> 20, 0xFFFF, head(first) >> 20);
    const floats y = (floats)((z & 0xFFFFF) | Format<float>::one_head) - 1.0625f;
    if constexpr (std::is_same_v<Accuracy, LA>)
        return x * polynomial(y, Rows<ErfInverseCubic, float>(erf_inverse_single_table, rows)
                                     .quad(&ErfInverseCubic::c, 0));
    else {
        const auto [start, slope] = Rows<ErfInverseLine, float>(erf_inverse_line_table, rows)
                                        .float_pair(&ErfInverseLine::both);
        return x * multiply_add(y, slope, start);
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
        else return in_doubles(v, [](const auto& a) { return near<Accuracy>(a); });
    }
    static std::array<ints, 1> kinds(ints h) requires(!in_floats) { return {Function::outside(h)}; }
    static auto far(V v) requires(!in_floats) {
        return in_doubles(v, [](const auto& a) { return tail<Accuracy>(a); });
    }

    // One argument of single precision, rounded once.
    static void rounded(float v, float& r) {
        const ErfInverseArgument<doubles> a = Function::argument(all(double(v)));
        const float size = rounded_once(a.q[0] < 0x1p-10 ? tail<HA>(a) : near<HA>(a));
        r = a.sign[0] < 0 ? -size : size;
    }

    template <class Formula> static auto near(const ErfInverseArgument<doubles>& a) {
        return erf_inverse_near<Formula, Function::given, Function::scale>(a.x, a.q);
    }
    template <class Formula> static auto tail(const ErfInverseArgument<doubles>& a) {
        return erf_inverse_tail<Formula, Function::scale>(a.q);
    }

private:
    static doubles sum(const ErfInverseArgument<doubles>& a, auto parts) {
        return with_sign(kef::vm::rounded(parts(a)), a.sign);
    }
    static floats in_single(V v, auto formula) {
        const ErfInverseArgument<V> a = Function::argument(v);
        floats r = formula(a);
        if (Function::scale == ErfInverseScale::root2) r *= static_cast<float>(root2);
        return with_sign(r, a.sign);
    }
    static auto in_doubles(V v, auto parts) {
        const auto formula = [parts](doubles x) { return sum(Function::argument(x), parts); };
        if constexpr (single) return marked_in_double(v, formula);
        else return formula(v);
    }
};

}  // namespace KEF_VM
