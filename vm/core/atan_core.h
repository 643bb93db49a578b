// The arc tangent of two non-negative doubles at a time:
//
//   atan x = atan c + atan t,  t = (x - c) / (1 + c x)
//
// c is the centre of one of 32 intervals of an octave of [2^-6, 2^6), 0 below and 64
// above, so that |t| <= 2^-6 max(x, 1/64) and the error of the quotient does not
// count. Table: tools/atan_tables.py; polynomials: tools/atan.sollya.
#pragma once

#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct AtanEntry {
    double centre, high, low;  // atan centre = high + low
};
inline constexpr int atan_entries = 386;
extern const AtanEntry atan_table[atan_entries];

// The two entries for |x|, from the heads in lanes 1 and 3.
struct AtanEntries {
    const AtanEntry *entry0, *entry1;
    d2 field(double AtanEntry::*member) const {
        return (d2)_mm_loadh_pd(_mm_load_sd(&(entry0->*member)), &(entry1->*member));
    }
};
inline AtanEntries atan_entries_of(d2 x) {
    constexpr int first = (0x3F900000 >> 15) - 1;  // head of 2^-6; entry 0 lies below
    const i4 rough = ((i4)x >> 15) - first;
    // Saturated in 16 bits, which hold the heads of numbers below 2^1000.
    const __m128i index = _mm_min_epi16(_mm_max_epi16((__m128i)rough, _mm_setzero_si128()),
                                        _mm_set1_epi16(atan_entries - 1));
    return {&atan_table[_mm_extract_epi16(index, 2)], &atan_table[_mm_extract_epi16(index, 6)]};
}

// t^3 q(t^2) with atan t = t + t^3 q(t^2) for |t| <= 2^-6; relative to atan t the
// error is below 2^-72 (HA) and 2^-57.9 (LA).
template <class Accuracy> inline d2 atan_tail(d2 t) {
    const d2 t2 = t * t;
    if constexpr (std::is_same_v<Accuracy, HA>) {
        constexpr double a3 = from_bits(UINT64_C(0xBFD5555555555555));
        constexpr double a5 = from_bits(UINT64_C(0x3FC999999999274B));
        constexpr double a7 = from_bits(UINT64_C(0xBFC249247B9E50C7));
        constexpr double a9 = from_bits(UINT64_C(0x3FBC6E4DAC1CCB1A));
        return t * t2 * (a3 + t2 * (a5 + t2 * (a7 + t2 * a9)));
    } else {
        constexpr double a3 = from_bits(UINT64_C(0xBFD5555555554077));
        constexpr double a5 = from_bits(UINT64_C(0x3FC9999989C4F972));
        constexpr double a7 = from_bits(UINT64_C(0xBFC2476F95951E4A));
        return t * t2 * (a3 + t2 * (a5 + t2 * a7));
    }
}

// atan x for 0 <= x < 2^1000 in two parts; HA: the error of their exact sum is below 0.05
// ulp: t has 2^-58.4 of it from its quotient.
template <class Accuracy> inline DoubleDouble<d2> atan_parts(d2 x) {
    const AtanEntries entries = atan_entries_of(x);
    const d2 c = entries.field(&AtanEntry::centre);
    const d2 t = (x - c) / (1.0 + c * x);
    const d2 high = entries.field(&AtanEntry::high);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const d2 sum = high + t;  // |high| >= |t| or high = 0
        return {sum, ((high - sum) + t) + (entries.field(&AtanEntry::low) + atan_tail<HA>(t))};
    } else {
        return {high, t + atan_tail<LA>(t)};
    }
}

// The sum: HA 0.53 ulp, LA 1.3 ulp.
template <class Accuracy> inline d2 atan_core(d2 x) {
    const DoubleDouble<d2> parts = atan_parts<Accuracy>(x);
    return parts.high + parts.low;
}

}  // namespace kef::vm
