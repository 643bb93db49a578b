// The arc tangent of two non-negative doubles at a time:
//
//   atan x = atan c + atan t,  t = (x - c) / (1 + c x)
//
// c is the centre of one of 32 intervals of an octave of [2^-6, 2^6), 0 below and 64
// above, so that |t| <= 2^-6 max(x, 1/64) and the error of the quotient does not
// count. LA, where one operation finds each lane its own of 16 numbers: one of 2 intervals of an
// octave of [2^-4, 2^3), |t| < 0.0995. Tables: tools/atan_tables.py; polynomials:
// tools/atan.sollya.
#pragma once

#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct AtanEntry {
    double centre, high, low;  // atan centre = high + low
};
inline constexpr int atan_entries = 386;
extern const AtanEntry atan_table[atan_entries];
struct alignas(64) Atan16 {
    double centre[16], high[16];  // atan centre = high to 2^-11 ulp
};
extern const Atan16 atan16_table;

}  // namespace kef::vm

namespace KEF_VM {

// The entries for |x|.
inline Rows<AtanEntry> atan_rows(doubles x) {
    constexpr int first = (0x3F900000 >> 15) - 1;  // head of 2^-6; entry 0 lies below
    const ints rough = ((ints)x >> 15) - first;
    // Saturated in 16 bits, which hold the heads of numbers below 2^1000.
    const longs number = (longs)within_16_bits(rough, 0, atan_entries - 1);
    return {atan_table, row_numbers(number, 0xFFFF, 2)};
}

// Those of LA, centre and high, where they are looked up.
struct AtanLookedUp {
    longs number;
    doubles field(double AtanEntry::*which) const {
        return looked_up(which == &AtanEntry::centre ? atan16_table.centre : atan16_table.high,
                         number);
    }
};
template <class Accuracy> inline auto atan_entries_of(doubles x) {
    if constexpr (has_lookup && std::is_same_v<Accuracy, LA>) {
        const longs number = ((longs)x >> 51) - ((std::int64_t{1023 - 4} << 1) - 1);
        return AtanLookedUp{number < 0 ? longs{} : number > 15 ? longs{} + 15 : number};
    } else {
        return atan_rows(x);
    }
}

// t^3 q(t^2) with atan t = t + t^3 q(t^2) for |t| <= 2^-6; relative to atan t the
// error is below 2^-72 (HA) and 2^-57.9 (LA; looked up, |t| < 0.0995: 2^-54.5).
template <class Accuracy> inline doubles atan_tail(doubles t) {
    const doubles t2 = t * t;
    if constexpr (std::is_same_v<Accuracy, HA>) {
        constexpr auto a = coefficients(0xBFD5555555555555, 0x3FC999999999274B, 0xBFC249247B9E50C7,
                                        0x3FBC6E4DAC1CCB1A);
        return t * t2 * polynomial(t2, a);
    } else if constexpr (has_lookup) {
        constexpr auto a = coefficients(0xBFD55555555548F8, 0x3FC99999990F2692, 0xBFC24923966EFCCF,
                                        0x3FBC7036CE6FFFCF, 0xBFB6B5055FC3529A);
        return t * t2 * polynomial_by_pairs(t2, t2 * t2, a);
    } else {
        constexpr auto a = coefficients(0xBFD5555555554077, 0x3FC9999989C4F972, 0xBFC2476F95951E4A);
        return t * t2 * polynomial(t2, a);
    }
}

// atan x for 0 <= x < 2^1000 in two parts; HA: the error of their exact sum is below 0.05
// ulp: t has 2^-58.4 of it from its quotient.
template <class Accuracy> inline Parts atan_parts(doubles x) {
    const auto row = atan_entries_of<Accuracy>(x);
    const doubles c = row.field(&AtanEntry::centre);
    const doubles t = (x - c) / multiply_add(c, x, 1.0);
    const doubles high = row.field(&AtanEntry::high);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const doubles sum = high + t;  // |high| >= |t| or high = 0
        return {sum, ((high - sum) + t) + (row.field(&AtanEntry::low) + atan_tail<HA>(t))};
    } else {
        return {high, t + atan_tail<LA>(t)};
    }
}

// The sum: HA 0.53 ulp, LA 1.3 ulp.
template <class Accuracy> inline doubles atan_core(doubles x) {
    return rounded(atan_parts<Accuracy>(x));
}

}  // namespace KEF_VM
