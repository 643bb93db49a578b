// Ln: r = ln x.
//
//   x NaN                   x
//   x = +infinity           +infinity
//   x = -infinity, x < 0    invalid NaN, domain error
//   x = +-0                 -infinity, singularity
//
// Single HA is a double formula, rounded once. Where the double falls exactly between
// two floats, as for four of all arguments, the edge decides with its low part. LA and
// EP compute in single precision: x = 2^k z, z in [0.705, 1.41), ln x = k ln2 + ln z.
#include "vm/core/log_core.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

using namespace log_constants;

struct SingleReduced {
    i4 exponent, interval;
    f4 z;
};

inline SingleReduced reduce(f4 x) {
    const i4 head = (i4)x - offset_single;
    return {head >> 23, (head >> 16) & 127, (f4)((i4)x - (head & -0x800000))};
}

// Relative error below 2^-52 before the last rounding: z has 24 bits, so that
// z/c - 1 is exact, and the polynomial has 2^-55.4.
inline d2 single_in_double(d2 z, d2 k, const LogEntry* entry0, const LogEntry* entry1) {
    const LogReduced x = {z, k, entry0, entry1};
    constexpr double c2 = -0.5;
    constexpr double c3 = from_bits(UINT64_C(0x3FD5555555515CF5));
    constexpr double c4 = from_bits(UINT64_C(0xBFCFFFFFFFF8611E));
    constexpr double c5 = from_bits(UINT64_C(0x3FC999B3295643EF));
    constexpr double c6 = from_bits(UINT64_C(0xBFC5556C57DD5021));
    const d2 r = z * log_field(x, &LogEntry::inverse) - 1.0;
    const d2 r2 = r * r;
    const d2 q = (c2 + r * c3) + r2 * ((c4 + r * c5) + r2 * c6);
    return (k * ln2 + log_field(x, &LogEntry::rounded)) + (r + r2 * q);
}

inline Two<f4> ln_single(f4 x, HA*) {
    const SingleReduced s = reduce(x);
    const i4 j = s.interval;
    const auto entry = [](int index) { return &log128_table[index]; };
    const d2x2 z = widen(s.z);
    const __m128i k = (__m128i)s.exponent;
    const d2 k_low = (d2)_mm_cvtepi32_pd(k), k_high = (d2)_mm_cvtepi32_pd(_mm_unpackhi_epi64(k, k));
    const __m128i words = (__m128i)j;
    const d2 low = single_in_double(z.low, k_low, entry(_mm_extract_epi16(words, 0)),
                                    entry(_mm_extract_epi16(words, 2)));
    const d2 high = single_in_double(z.high, k_high, entry(_mm_extract_epi16(words, 4)),
                                     entry(_mm_extract_epi16(words, 6)));
    return {narrow(low, high), (f4)midpoints(low, high)};
}

// Relative error of the polynomial 2^-22.3.
inline f4 ln_single(f4 x, LA*) {
    constexpr float ln2_high = 0x1.62e4p-1f, ln2_low = 0x1.7f7d1cp-20f;
    constexpr float c2 = from_bits(0xBF000034u), c3 = from_bits(0x3EAAACBBu),
                    c4 = from_bits(0xBE7FB754u), c5 = from_bits(0x3E4BC381u),
                    c6 = from_bits(0xBE304E26u), c7 = from_bits(0x3E267078u),
                    c8 = from_bits(0xBDD2A46Cu);
    const SingleReduced s = reduce(x);
    const f4 k = (f4)_mm_cvtepi32_ps((__m128i)s.exponent), r = s.z - 1.0f, r2 = r * r;
    const f4 q = ((c2 + r * c3) + r2 * (c4 + r * c5)) + (r2 * r2) * ((c6 + r * c7) + r2 * c8);
    return k * ln2_high + (r + (r2 * q + k * ln2_low));
}

// Relative error of the polynomial 2^-11.08, rounding included below 2^-11.
inline f4 ln_single(f4 x, EP*) {
    constexpr float c2 = from_bits(0xBF0071FEu), c3 = from_bits(0x3EB3BC00u),
                    c4 = from_bits(0xBE689D41u);
    const SingleReduced s = reduce(x);
    const f4 k = (f4)_mm_cvtepi32_ps((__m128i)s.exponent), r = s.z - 1.0f;
    return k * static_cast<float>(ln2) + (r + r * r * (c2 + r * (c3 + r * c4)));
}

}  // namespace

template <class T, class Accuracy>
struct Ln {
    using V = Vector<T>;
    KEF_REPORT_NAME(Ln);

    static i4 outside(i4 h) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) return log_core<Accuracy>(x);
        else return ln_single(x, static_cast<Accuracy*>(nullptr));
    }

    // Single HA: the second vector marks the midpoints.
    static i4 refuse(i4, i4 midpoint) { return midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = x, VTM_STATUS_OK;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if (x == 0) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if constexpr (std::is_same_v<T, double>) {
            r = log_core<Accuracy>(all(x * 0x1p54), -54)[0];
        } else {
            const DoubleDouble<d2> parts = log_parts(all(double(x)));
            const DoubleDouble<d2> sum = fast_two_sum(parts.high, parts.low);
            r = narrow(sum.high[0], sum.low[0]);
        }
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Ln, LA)
KEF_MAP1(s, Ln, HA)
KEF_MAP1(s, Ln, EP)
KEF_MAP1(d, Ln, HA)
KEF_MAP1(d, Ln, EP)

}  // namespace kef::vm
