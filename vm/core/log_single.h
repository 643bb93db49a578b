// The logarithm of floats: in double with the table of log_core.h (HA), or in
// single precision without one: x = 2^k z, z in [0.705, 1.41), ln x = k ln2 + ln z.
// Polynomials: tools/log.sollya.
#pragma once

#include "vm/core/log_core.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

struct LogSingleReduced {
    ints exponent, interval;
    floats z;
};

// For positive normal numbers.
inline LogSingleReduced log_single_reduce(floats x,
                                          std::int32_t first = log_constants::offset_single) {
    const ints head = (ints)x - first;
    return {head >> 23, (head >> 16) & 127, (floats)((ints)x - (head & -0x800000))};
}

// The same for a table of doubles; and reduced floats in double.
inline LogSingleReduced log_single_reduce_for_double(floats x) {
    using namespace log_constants;
    return log_single_reduce(x, has_lookup ? offset16_single : offset_single);
}
using LogOfFloat = std::conditional_t<has_lookup, LogShort, LogReduced>;
struct LogInDouble {
    LogOfFloat low, high;
};
inline LogInDouble log_in_double(const LogSingleReduced& s) {
    const DoublesPair z = widen(s.z), k = widen(s.exponent);
    const auto in_double = [](auto z, auto k, const auto& row) -> LogOfFloat {
        if constexpr (has_lookup)
            return log_looked_up(z, k, (longs)z - (std::int64_t{log_constants::offset16} << 32));
        else return {z, k, {log128_table, row}};
    };
    const auto [low, high] = split(row_numbers(s.interval));
    return {in_double(z.low, k.low, low), in_double(z.high, k.high, high)};
}

// Relative error below 2^-52: z has 24 bits, so that z/c - 1 is exact, and the polynomial has
// 2^-55.4; looked up 2^-44.4.
inline DoublesPair log_in_double(floats x) {
    const auto log = [](const LogOfFloat& x) {
        return log_sum_of<ForFloats>(x, multiply_subtract(x.z, inverse_of(x), 1.0));
    };
    const LogInDouble both = log_in_double(log_single_reduce_for_double(x));
    return {log(both.low), log(both.high)};
}

// It rounded, where midpoints within its error are for the edge.
inline Marked rounded_log(DoublesPair x) {
    return {narrow(x), (floats)midpoints<rows_or_lookup(2, 10)>(x)};
}

// EP with three bits to spare, for a logarithm that is part of a sum.
struct EPTerm;

// k ln2 + ln(1 + r), |r| < 0.42. Relative error of the polynomials 2^-22.3 (LA), 2^-11.08
// (EP: rounding included below 2^-11) and 2^-14.0 (EPTerm).
template <class Accuracy> inline floats log_single(ints exponent, floats r) {
    const floats k = to_floats(exponent), r2 = r * r;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr auto c = coefficients(0xBF000034u, 0x3EAAACBBu, 0xBE7FB754u, 0x3E4BC381u,
                                        0xBE304E26u, 0x3E267078u, 0xBDD2A46Cu);
        floats q;
        if constexpr (is_fused) q = polynomial_by_pairs(r, r2, c);
        else q = polynomial_by_fours(r, c, r2, r2 * r2);
        const floats low = multiply_add(r2, q, k * ln2_parts_single[1]);
        return multiply_add(k, ln2_parts_single[0], r + low);
    } else if constexpr (std::is_same_v<Accuracy, EPTerm>) {
        constexpr auto c = coefficients(0xBEFFC0BBu, 0x3EABD09Eu, 0xBE8A6F19u, 0x3E38CF97u);
        return multiply_add(k, static_cast<float>(ln2),
                            multiply_add(r2, polynomial_by_pairs(r, r2, c), r));
    } else {
        constexpr auto c = coefficients(0xBF0071FEu, 0x3EB3BC00u, 0xBE689D41u);
        return multiply_add(k, static_cast<float>(ln2), multiply_add(r2, polynomial(r, c), r));
    }
}
template <class Accuracy> inline floats log_single(floats x) {
    const LogSingleReduced s = log_single_reduce(x);
    return log_single<Accuracy>(s.exponent, s.z - 1.0f);
}

}  // namespace KEF_VM
