// The logarithm of doubles:
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
#include "vm/simd/rows.h"
#include "vm/simd/simd.h"

namespace kef::vm {

struct alignas(16) LogEntry {
    double inverse;    // 1/c with 24 bits
    double rounded;    // high + low
    double high, low;  // -ln(inverse); high is a multiple of 2^-43
};
extern const LogEntry log128_table[128];

}  // namespace kef::vm

namespace KEF_VM {

namespace log_constants {
inline constexpr std::int32_t offset = 0x3FE69000;         // head of the lower end of z
inline constexpr std::int32_t offset_single = 0x3F348000;  // the same for single precision
}  // namespace log_constants

// x reduced: k, z and the entries.
struct LogReduced {
    doubles z, k;
    Rows<LogEntry> row;
};

// For positive normal numbers.
inline LogReduced log_reduce(doubles x) {
    constexpr auto in_heads = [](std::int32_t bits) { return (ints)all(std::int64_t{bits} << 32); };
    const ints head = (ints)x - in_heads(log_constants::offset);
    const doubles z = (doubles)((ints)x - (head & in_heads(-0x100000)));
    // The interval: 7 bits, 13 to 19, of the head.
    return {
        z, odd_to_doubles(head >> 20), {log128_table, row_numbers((longs)(head >> 13), 127, 2)}};
}

// ln(1 + r) - r for |r| <= 2^-8; error relative to ln(1 + r) 2^-64.1 (HA), 2^-55.4
// (LA), 2^-27.1 (EP).
template <class Accuracy> inline doubles log_tail(doubles r) {
    constexpr auto c = [] {
        if constexpr (std::is_same_v<Accuracy, HA>)
            return coefficients(0xBFE0000000000000, 0x3FD5555555555556, 0xBFCFFFFFFFF78838,
                                0x3FC99999998E06EB, 0xBFC5556D6E1DCCA7, 0x3FC2493CCA3358E1);
        else if constexpr (std::is_same_v<Accuracy, LA>)
            return coefficients(0xBFE0000000000000, 0x3FD5555555515CF5, 0xBFCFFFFFFFF8611E,
                                0x3FC999B3295643EF, 0xBFC5556C57DD5021);
        else return coefficients(0xBFE0000605DD64AD, 0x3FD555602CEE947C);
    }();
    const doubles r2 = r * r;
    return r2 * polynomial_by_pairs(r, r2, c);
}

// z/c - 1 = high + low exactly: the leading 29 bits of z and the rest times 24 bits; and rounded.
inline Parts log_argument(const LogReduced& x, doubles inverse) {
    const doubles z_high = leading<24>(x.z);
    return {z_high * inverse - 1.0, (x.z - z_high) * inverse};
}
inline doubles log_argument_rounded(const LogReduced& x, doubles inverse) {
    if constexpr (is_fused) return multiply_subtract(x.z, inverse, 1.0);
    else return rounded(log_argument(x, inverse));
}

// k ln2 + ln c + ln(1 + r) for normalised r, as an unevaluated sum, |low| < 2^-8 |high|
// or both 0.
inline Parts log_sum(const LogReduced& x, Parts r) {
    const auto [c_high, c_low] = x.row.neighbours(&LogEntry::high, &LogEntry::low);
    const doubles w = x.k * ln2_high + c_high;  // exact
    const doubles high = w + r.high;            // |w| >= |r| or w = 0
    const doubles rest = multiply_add(x.k, ln2_low, c_low);
    const doubles low = ((w - high) + r.high) + (r.low + rest);
    return {high, low + log_tail<HA>(r.high)};
}

// The same rounded, in fewer steps, from ln c and ln(1 + r).
inline doubles log_sum(const LogReduced& x, doubles c, doubles log1p) {
    return multiply_add(x.k, ln2, c) + log1p;
}
inline doubles log_sum(const LogReduced& x, doubles log1p) {
    return log_sum(x, x.row.field(&LogEntry::rounded), log1p);
}
template <class Accuracy> inline doubles log_sum_of(const LogReduced& x, doubles r) {
    return log_sum(x, r + log_tail<Accuracy>(r));
}

// ln x from z/c - 1, which of_inverse(1/c) gives.
template <class Accuracy> inline doubles log_rounded(const LogReduced& x, auto of_inverse) {
    const auto [inverse, c] = x.row.neighbours(&LogEntry::inverse, &LogEntry::rounded);
    const doubles r = of_inverse(inverse);
    return log_sum(x, c, r + log_tail<Accuracy>(r));
}

// ln x as an unevaluated sum; relative error below 0.005 ulp. `shift` is added to k:
// for arguments that were scaled by 2^-shift.
inline Parts log_parts(doubles x, double shift = 0) {
    LogReduced reduced = log_reduce(x);
    reduced.k += shift;
    const Parts u = log_argument(reduced, reduced.row.field(&LogEntry::inverse));
    return log_sum(reduced, fast_two_sum(u.high, u.low));
}

// ln x of positive normal numbers. HA: 0.505 ulp; LA: relative error below 2^-51.5;
// EP: below 2^-27.
template <class Accuracy> inline doubles log_core(doubles x, double shift = 0) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(log_parts(x, shift));
    } else {
        LogReduced reduced = log_reduce(x);
        reduced.k += shift;
        return log_rounded<Accuracy>(reduced, [&](doubles inverse) {
            if constexpr (std::is_same_v<Accuracy, LA>)
                return log_argument_rounded(reduced, inverse);
            else return multiply_subtract(reduced.z, inverse, 1.0);
        });
    }
}

// log10(e), and as a sum whose first term has 26 bits; ln x as log10 x.
inline constexpr double log10_e = from_bits(UINT64_C(0x3FDBCB7B1526E50E)),
                        log10_e_high = from_bits(UINT64_C(0x3FDBCB7B10000000)),
                        log10_e_low = from_bits(UINT64_C(0x3E349B9438CA9AAE));
inline Parts log10_parts(Parts log) {
    const doubles high = leading(log.high), rest = (log.high - high) + log.low;
    return {high * log10_e_high, high * log10_e_low + rest * log10_e};
}

}  // namespace KEF_VM
