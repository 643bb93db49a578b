// The logarithm of two doubles at a time:
//
//   x = 2^k z, z in [0.705, 1.41) in one of 128 intervals with centre c,
//   ln x = k ln2 + ln c + ln(1 + r),  r = z/c - 1, |r| <= 2^-8
//
// The interval around 1 has c = 1 and ln c = 0, so that near x = 1 the result is
// ln(1 + r) with r exact: no cancellation and no path of its own.
// Table: tools/log_tables.py; polynomials: tools/log.sollya.
#pragma once

#include "vm/core/constants.h"
#include "vm/simd/double_double.h"
#include "vm/simd/frame.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct LogEntry {
    double inverse;    // 1/c with 24 bits
    double high, low;  // -ln(inverse); high is a multiple of 2^-43
    double rounded;    // high + low
};
extern const LogEntry log128_table[128];

namespace log_constants {
inline constexpr std::int32_t offset = 0x3FE69000;         // head of the lower end of z
inline constexpr std::int32_t offset_single = 0x3F348000;  // the same for single precision
}  // namespace log_constants

// x reduced: k, z and the entries of the two lanes.
struct LogReduced {
    d2 z, k;
    const LogEntry *entry0, *entry1;
};

// Two fields of the entries as one vector.
inline d2 log_field(const LogReduced& x, double LogEntry::*field) {
    return (d2)_mm_loadh_pd(_mm_load_sd(&(x.entry0->*field)), &(x.entry1->*field));
}

// For positive normal numbers.
inline LogReduced log_reduce(d2 x) {
    using namespace log_constants;
    const i4 head = (i4)x - i4{0, offset, 0, offset};
    const i4 exponent = head >> 20;
    const d2 z = (d2)((i4)x - (head & i4{0, -0x100000, 0, -0x100000}));
    const i4 exponents = __builtin_shufflevector(exponent, exponent, 1, 3, 1, 3);
    // The interval: 7 bits, 13 to 19, of the head.
    const i4 index = head >> 13;
    const int j0 = _mm_extract_epi16((__m128i)index, 2) & 127;
    const int j1 = _mm_extract_epi16((__m128i)index, 6) & 127;
    return {z, (d2)_mm_cvtepi32_pd((__m128i)exponents), &log128_table[j0], &log128_table[j1]};
}

// ln(1 + r) - r for |r| <= 2^-8; error relative to ln(1 + r) 2^-64.1 (HA), 2^-55.4
// (LA), 2^-27.1 (EP).
template <class Accuracy> inline d2 log_tail(d2 r) {
    const d2 r2 = r * r;
    if constexpr (std::is_same_v<Accuracy, HA>) {
        constexpr double c2 = -0.5;
        constexpr double c3 = from_bits(UINT64_C(0x3FD5555555555556));
        constexpr double c4 = from_bits(UINT64_C(0xBFCFFFFFFFF78838));
        constexpr double c5 = from_bits(UINT64_C(0x3FC99999998E06EB));
        constexpr double c6 = from_bits(UINT64_C(0xBFC5556D6E1DCCA7));
        constexpr double c7 = from_bits(UINT64_C(0x3FC2493CCA3358E1));
        return r2 * ((c2 + r * c3) + r2 * ((c4 + r * c5) + r2 * (c6 + r * c7)));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr double c2 = -0.5;
        constexpr double c3 = from_bits(UINT64_C(0x3FD5555555515CF5));
        constexpr double c4 = from_bits(UINT64_C(0xBFCFFFFFFFF8611E));
        constexpr double c5 = from_bits(UINT64_C(0x3FC999B3295643EF));
        constexpr double c6 = from_bits(UINT64_C(0xBFC5556C57DD5021));
        return r2 * ((c2 + r * c3) + r2 * ((c4 + r * c5) + r2 * c6));
    } else {
        constexpr double c2 = from_bits(UINT64_C(0xBFE0000605DD64AD));
        constexpr double c3 = from_bits(UINT64_C(0x3FD555602CEE947C));
        return r2 * (c2 + r * c3);
    }
}

// z/c - 1 = high + low exactly: the leading 29 bits of z and the rest times 24 bits.
inline DoubleDouble<d2> log_argument(d2 z, d2 inverse) {
    const d2 z_high = (d2)((l2)z & INT64_C(-0x1000000));
    return {z_high * inverse - 1.0, (z - z_high) * inverse};
}

// k ln2 + ln c + ln(1 + r) for normalised r, as an unevaluated sum, |low| < 2^-8 |high|
// or both 0.
inline DoubleDouble<d2> log_sum(const LogReduced& x, DoubleDouble<d2> r) {
    using namespace log_constants;
    const d2 w = x.k * ln2_high + log_field(x, &LogEntry::high);  // exact
    const d2 high = w + r.high;                                   // |w| >= |r| or w = 0
    const d2 low = ((w - high) + r.high) + (r.low + (log_field(x, &LogEntry::low) + x.k * ln2_low));
    return {high, low + log_tail<HA>(r.high)};
}

// The same rounded, in fewer steps.
template <class Accuracy> inline d2 log_sum(const LogReduced& x, d2 r) {
    return (x.k * ln2 + log_field(x, &LogEntry::rounded)) + (r + log_tail<Accuracy>(r));
}

// ln x as an unevaluated sum; relative error below 0.005 ulp. `shift` is added to k:
// for arguments that were scaled by 2^-shift.
inline DoubleDouble<d2> log_parts(d2 x, double shift = 0) {
    LogReduced reduced = log_reduce(x);
    reduced.k += shift;
    const DoubleDouble<d2> u = log_argument(reduced.z, log_field(reduced, &LogEntry::inverse));
    return log_sum(reduced, fast_two_sum(u.high, u.low));
}

// ln x of positive normal numbers. HA: 0.505 ulp; LA: relative error below 2^-51.5;
// EP: below 2^-27.
template <class Accuracy> inline d2 log_core(d2 x, double shift = 0) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> parts = log_parts(x, shift);
        return parts.high + parts.low;
    } else {
        LogReduced reduced = log_reduce(x);
        reduced.k += shift;
        const d2 inverse = log_field(reduced, &LogEntry::inverse);
        if constexpr (std::is_same_v<Accuracy, LA>) {
            const DoubleDouble<d2> u = log_argument(reduced.z, inverse);
            return log_sum<LA>(reduced, u.high + u.low);
        } else {
            return log_sum<EP>(reduced, reduced.z * inverse - 1.0);
        }
    }
}

}  // namespace kef::vm
