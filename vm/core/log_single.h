// The logarithm of four floats: in double with the table of log_core.h (HA), or in
// single precision without one: x = 2^k z, z in [0.705, 1.41), ln x = k ln2 + ln z.
// Polynomials: tools/log.sollya.
#pragma once

#include "vm/core/log_core.h"
#include "vm/simd/frame.h"

namespace kef::vm {

struct LogSingleReduced {
    i4 exponent, interval;
    f4 z;
};

// For positive normal numbers.
inline LogSingleReduced log_single_reduce(f4 x) {
    const i4 head = (i4)x - log_constants::offset_single;
    return {head >> 23, (head >> 16) & 127, (f4)((i4)x - (head & -0x800000))};
}

// Four reduced floats in double.
struct LogInDouble {
    LogReduced low, high;
};
inline LogInDouble log_in_double(d2x2 z, i4 exponent, i4 interval) {
    const __m128i k = (__m128i)exponent, j = (__m128i)interval;
    const LogEntry* const table = log128_table;
    return {{z.low, (d2)_mm_cvtepi32_pd(k), &table[_mm_extract_epi16(j, 0)],
             &table[_mm_extract_epi16(j, 2)]},
            {z.high, (d2)_mm_cvtepi32_pd(_mm_unpackhi_epi64(k, k)), &table[_mm_extract_epi16(j, 4)],
             &table[_mm_extract_epi16(j, 6)]}};
}

// Relative error below 2^-52: z has 24 bits, so that z/c - 1 is exact, and the
// polynomial has 2^-55.4.
inline d2x2 log_in_double(f4 x) {
    const auto log = [](const LogReduced& x) {
        return log_sum<LA>(x, x.z * log_field(x, &LogEntry::inverse) - 1.0);
    };
    const LogSingleReduced s = log_single_reduce(x);
    const LogInDouble x4 = log_in_double(widen(s.z), s.exponent, s.interval);
    return {log(x4.low), log(x4.high)};
}

// EP with three bits to spare, for a logarithm that is part of a sum.
struct EPTerm;

// k ln2 + ln(1 + r), |r| < 0.42. Relative error of the polynomials 2^-22.3 (LA), 2^-11.08
// (EP: rounding included below 2^-11) and 2^-14.0 (EPTerm).
template <class Accuracy> inline f4 log_single(i4 exponent, f4 r) {
    const f4 k = (f4)_mm_cvtepi32_ps((__m128i)exponent), r2 = r * r;
    if constexpr (std::is_same_v<Accuracy, LA>) {
        constexpr float c2 = from_bits(0xBF000034u), c3 = from_bits(0x3EAAACBBu),
                        c4 = from_bits(0xBE7FB754u), c5 = from_bits(0x3E4BC381u),
                        c6 = from_bits(0xBE304E26u), c7 = from_bits(0x3E267078u),
                        c8 = from_bits(0xBDD2A46Cu);
        const f4 q = ((c2 + r * c3) + r2 * (c4 + r * c5)) + (r2 * r2) * ((c6 + r * c7) + r2 * c8);
        return k * ln2_parts_single[0] + (r + (r2 * q + k * ln2_parts_single[1]));
    } else if constexpr (std::is_same_v<Accuracy, EPTerm>) {
        constexpr float c2 = from_bits(0xBEFFC0BBu), c3 = from_bits(0x3EABD09Eu),
                        c4 = from_bits(0xBE8A6F19u), c5 = from_bits(0x3E38CF97u);
        return k * static_cast<float>(ln2) + (r + r2 * ((c2 + r * c3) + r2 * (c4 + r * c5)));
    } else {
        constexpr float c2 = from_bits(0xBF0071FEu), c3 = from_bits(0x3EB3BC00u),
                        c4 = from_bits(0xBE689D41u);
        return k * static_cast<float>(ln2) + (r + r2 * (c2 + r * (c3 + r * c4)));
    }
}
template <class Accuracy> inline f4 log_single(f4 x) {
    const LogSingleReduced s = log_single_reduce(x);
    return log_single<Accuracy>(s.exponent, s.z - 1.0f);
}

}  // namespace kef::vm
