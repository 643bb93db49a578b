// The logarithm of doubles:
//
//   x = 2^k z, z in [0.705, 1.41) in one of 128 intervals with centre c,
//   ln x = k ln2 + ln c + ln(1 + r),  r = z/c - 1, |r| <= 2^-8
//
// The interval around 1 has c = 1 and ln c = 0, so that near x = 1 the result is
// ln(1 + r) with r exact: no cancellation and no path of its own.
//
// Where two vectors hold 16 numbers and one operation finds each lane its own, 16 intervals are
// taken, |r| <= 2^-5.07: a longer polynomial is less than the loads of rows.
// Tables: tools/log_tables.py; polynomials: tools/log.sollya.
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

// The same of 16 intervals, field by field.
struct alignas(64) Log16 {
    double inverse[16], rounded[16], high[16], low[16];
};
extern const Log16 log16_table;

}  // namespace kef::vm

namespace KEF_VM {

namespace log_constants {
inline constexpr std::int32_t offset = 0x3FE69000;         // head of the lower end of z
inline constexpr std::int32_t offset16 = 0x3FE65556;       // that of 16 intervals
inline constexpr std::int32_t offset_single = 0x3F348000;  // the same for single precision
inline constexpr std::int32_t offset16_single = 0x3F32AAB0;
}  // namespace log_constants

// x = 2^k z, z from the number with that head on; and the leading bits of x behind it.
struct LogSplit {
    doubles z, k;
    ints head;
};
inline LogSplit log_split(doubles x, std::int32_t first) {
    constexpr auto in_heads = [](std::int32_t bits) { return (ints)all(std::int64_t{bits} << 32); };
    const ints head = (ints)x - in_heads(first);
    const doubles z = (doubles)((ints)x - (head & in_heads(-0x100000)));
    return {z, odd_to_doubles(head >> 20), head};
}

// x reduced: k, z and the entries.
struct LogReduced {
    doubles z, k;
    Rows<LogEntry> row;
};

// For positive normal numbers.
inline LogReduced log_reduce(doubles x) {
    const LogSplit s = log_split(x, log_constants::offset);
    // The interval: 7 bits, 13 to 19, of the head.
    return {s.z, s.k, {log128_table, row_numbers((longs)(s.head >> 13), 127, 2)}};
}

// For results of one part: k, z, 1/c and ln c rounded.
struct LogShort {
    doubles z, k, inverse, c;
};
inline LogShort log_looked_up(doubles z, doubles k, longs head) {
    const longs interval = head >> 48;
    return {z, k, looked_up(log16_table.inverse, interval),
            looked_up(log16_table.rounded, interval)};
}
inline LogShort log_reduce_short(doubles x) {
    if constexpr (has_lookup) {
        const LogSplit s = log_split(x, log_constants::offset16);
        return log_looked_up(s.z, s.k, (longs)s.head);
    } else {
        const LogReduced s = log_reduce(x);
        const auto [inverse, c] = s.row.neighbours(&LogEntry::inverse, &LogEntry::rounded);
        return {s.z, s.k, inverse, c};
    }
}

// For results of two parts: k, z, 1/c and ln c.
struct LogLong {
    doubles z, k, inverse;
    Parts c;
};
inline auto log_reduce_long(doubles x) {
    if constexpr (has_lookup) {
        const LogSplit s = log_split(x, log_constants::offset16);
        const longs interval = (longs)s.head >> 48;
        const auto of = [&](const double(&field)[16]) { return looked_up(field, interval); };
        return LogLong{
            s.z, s.k, of(log16_table.inverse), {of(log16_table.high), of(log16_table.low)}};
    } else {
        return log_reduce(x);
    }
}

// r^2 (c[0] + c[1] r + ...).
inline doubles square_and_more(doubles r, const auto& c) {
    const doubles r2 = r * r;
    return r2 * polynomial_by_pairs(r, r2, c);
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
    return square_and_more(r, c);
}

// z/c - 1 = high + low exactly: the leading 29 bits of z and the rest times 24 bits; and rounded,
// for EP by one product.
inline Parts log_argument(doubles z, doubles inverse) {
    const doubles z_high = leading<24>(z);
    return {z_high * inverse - 1.0, (z - z_high) * inverse};
}
template <class Accuracy> inline doubles log_argument_rounded(const LogShort& x) {
    if constexpr (is_fused || std::is_same_v<Accuracy, EP>)
        return multiply_subtract(x.z, x.inverse, 1.0);
    else return rounded(log_argument(x.z, x.inverse));
}

// LA for floats; looked up with an error of 2^-44.5, which the marks of midpoints cover.
struct LookedUpForFloats;
using ForFloats = std::conditional_t<has_lookup, LookedUpForFloats, LA>;

// The same for |r| of log_reduce_short; of 16 intervals 2^-56.9 (LA), 2^-31.9 (EP).
template <class Accuracy> inline doubles log_tail_short(doubles r) {
    if constexpr (!has_lookup) return log_tail<Accuracy>(r);
    constexpr auto c = [] {
        if constexpr (std::is_same_v<Accuracy, LA>)
            return coefficients(0xBFDFFFFFFFFFFFDA, 0x3FD5555555555509, 0xBFD000000008D2DB,
                                0x3FC9999999B20600, 0xBFC555543B5A8619, 0x3FC249235390073E,
                                0xBFC0068213E22CBF, 0x3FBC7EB7279B7B4D);
        else if constexpr (std::is_same_v<Accuracy, ForFloats>)
            return coefficients(0xBFE00000000149AF, 0x3FD5555555598562, 0xBFCFFFFF491DF870,
                                0x3FC99998C2C5C0B2, 0xBFC55BA97936393D, 0x3FC24F674CC82D53);
        else
            return coefficients(0xBFDFFFFFD48ADE2A, 0x3FD555551F006EB3, 0xBFD0030306939756,
                                0x3FC99F763E906675);
    }();
    return square_and_more(r, c);
}

// 1/c.
inline doubles inverse_of(const LogReduced& x) { return x.row.field(&LogEntry::inverse); }
inline doubles inverse_of(const auto& x) { return x.inverse; }

// z/c - 1 for log_sum: normalised, or of numbers looked up, whose low part counts where ln c does.
inline Parts log_argument(const LogReduced& x) {
    const Parts u = log_argument(x.z, inverse_of(x));
    return fast_two_sum(u.high, u.low);
}
inline Parts log_argument(const LogLong& x) {
    const Parts product = two_product(x.z, x.inverse);
    return {product.high - 1.0, product.low};
}

// k ln2 + ln c + ln(1 + r), as an unevaluated sum, |low| < 2^-8 |high| or both 0.
inline Parts log_sum(const LogReduced& x, Parts r) {
    const auto [c_high, c_low] = x.row.neighbours(&LogEntry::high, &LogEntry::low);
    const doubles w = x.k * ln2_high + c_high;  // exact
    const doubles high = w + r.high;            // |w| >= |r| or w = 0
    const doubles rest = multiply_add(x.k, ln2_low, c_low);
    const doubles low = ((w - high) + r.high) + (r.low + rest);
    return {high, low + log_tail<HA>(r.high)};
}

// The same: r - r^2/2 in two parts, and r^3 (c[0] + ...), error relative to ln(1 + r) 2^-63. The
// low part of r counts 1/(1 + r) times, which is 1 - r + r^2/2 to 2^-11.
inline Parts log_sum(const LogLong& x, Parts r) {
    constexpr auto c = coefficients(0x3FD5555555555510, 0xBFCFFFFFFFFFFF1C, 0x3FC9999999B0EB02,
                                    0xBFC5555555736130, 0x3FC249235A8043F2, 0xBFBFFFFD4F933C51,
                                    0x3FBC7E9B83B50334, 0xBFB9A65332860340);
    const doubles half = r.high * -0.5, near = multiply_add(half, r.high, r.high),
                  near_low = multiply_add(half, r.high, r.high - near);
    const doubles w = multiply_add(x.k, ln2_high, x.c.high);  // exact
    const doubles high = w + near;                            // |w| >= |r| or w = 0
    const doubles rest = multiply_add(x.k, ln2_low, x.c.low),
                  r_low = negative_multiply_add(near, r.low, r.low);
    const doubles low = ((w - high) + near) + (near_low + (r_low + rest));
    return {high, multiply_add(r.high, square_and_more(r.high, c), low)};
}

// The same rounded, in fewer steps, from ln c and ln(1 + r).
inline doubles log_sum(doubles k, doubles c, doubles log1p) {
    return multiply_add(k, ln2, c) + log1p;
}
inline doubles log_sum(const LogReduced& x, doubles log1p) {
    return log_sum(x.k, x.row.field(&LogEntry::rounded), log1p);
}
template <class Accuracy> inline doubles log_sum_of(const LogReduced& x, doubles r) {
    return log_sum(x, r + log_tail<Accuracy>(r));
}
inline doubles log_sum(const LogShort& x, doubles log1p) { return log_sum(x.k, x.c, log1p); }
template <class Accuracy> inline doubles log_sum_of(const LogShort& x, doubles r) {
    return log_sum(x, r + log_tail_short<Accuracy>(r));
}

// ln x as an unevaluated sum; relative error below 0.005 ulp, looked up 0.01. `shift` is added to
// k: for arguments that were scaled by 2^-shift.
inline Parts log_parts(doubles x, double shift = 0) {
    auto reduced = log_reduce_long(x);
    reduced.k += shift;
    return log_sum(reduced, log_argument(reduced));
}

// ln x of positive normal numbers. HA: 0.505 ulp, looked up 0.51; LA: relative error below
// 2^-51.5; EP: below 2^-27.
template <class Accuracy> inline doubles log_core(doubles x, double shift = 0) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return rounded(log_parts(x, shift));
    } else {
        LogShort reduced = log_reduce_short(x);
        reduced.k += shift;
        return log_sum_of<Accuracy>(reduced, log_argument_rounded<Accuracy>(reduced));
    }
}

// log10(e), and what its rounding left; ln x of log_sum as log10 x, relative error below 2^-61.
inline constexpr double log10_e = from_bits(UINT64_C(0x3FDBCB7B1526E50E)),
                        log10_e_rest = from_bits(UINT64_C(0x3C695355BAAAFAD3));
inline Parts log10_parts(Parts log) { return product(log, {all(log10_e), all(log10_e_rest)}); }

}  // namespace KEF_VM
