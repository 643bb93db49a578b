// Log1p: r = ln(1 + x).
//
//   x NaN            NaN
//   x = +-0          x
//   x = +infinity    +infinity
//   x = -1           -infinity, singularity
//   x < -1           invalid NaN, domain error
//   |x| < tiny       x; underflow where x is subnormal
//
// Double: ln of the rounded sum s = 1 + x, with its error carried into z/c - 1. Near
// x = 0 that is ln(1 + r) with r = x exactly. Single HA is a double formula, rounded
// once; LA and EP compute in single precision and take r = x
// wherever s is in [0.705, 1.41).
#include "vm/core/log_single.h"
#include "vm/format.h"
#include "vm/frame.h"
#include "vm/shapes.h"

namespace kef::vm {

namespace {

template <class T> struct Log1pRange;
template <> struct Log1pRange<double> {
    static constexpr double tiny_value = 0x1p-60;
    static constexpr std::uint32_t tiny = 0x3C300000;
    static constexpr std::uint32_t large = 0x7E700000;  // 2^1000
    static constexpr std::uint32_t one = 0x3FF00000;
};
template <> struct Log1pRange<float> {
    static constexpr float tiny_value = 0x1p-29f;
    static constexpr std::uint32_t tiny = 0x31000000;
    static constexpr std::uint32_t large = 0x7E800000;  // 2^126
    static constexpr std::uint32_t one = 0x3F800000;
};

template <class Accuracy>
inline d2 log1p_core(d2 x) {
    if constexpr (std::is_same_v<Accuracy, EP>) {
        // The error counts near 0 alone, and is harmless elsewhere.
        const LogReduced reduced = log_reduce(x + 1.0);
        const d2 small = minimum(x, all(1.0)), rest = small - ((small + 1.0) - 1.0);
        return log_sum<EP>(reduced,
                           (reduced.z * log_field(reduced, &LogEntry::inverse) - 1.0) + rest);
    }
    // s + rest = 1 + x exactly, scaled to z + rest.
    const d2 larger = maximum(x, all(1.0)), smaller = minimum(x, all(1.0));
    const d2 s = larger + smaller;
    const LogReduced reduced = log_reduce(s);
    const d2 scale = (d2)((l2)all(1.0) - ((l2)s - (l2)reduced.z));
    const d2 rest = (smaller - (s - larger)) * scale;
    const d2 inverse = log_field(reduced, &LogEntry::inverse);
    const DoubleDouble<d2> u = log_argument(reduced.z, inverse);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const DoubleDouble<d2> v = fast_two_sum(u.high, u.low);
        const DoubleDouble<d2> r = fast_two_sum(v.high, rest * inverse);
        const DoubleDouble<d2> sum = log_sum(reduced, {r.high, r.low + v.low});
        return sum.high + sum.low;
    } else {
        return log_sum<LA>(reduced, (u.high + u.low) + rest * inverse);
    }
}

// z/c - 1 = (m - 1) + m x with m = 2^-k/c of 24 bits: both terms are exact.
inline d2x2 log1p_in_double(f4 x) {
    const LogSingleReduced s = log_single_reduce(x + 1.0f);
    const d2x2 wide = widen(x), power = widen((f4)(0x3F800000 - (s.exponent << 23)));
    const LogInDouble x4 = log_in_double(wide, s.exponent, s.interval);
    const auto log = [](const LogReduced& x, d2 power) {
        const d2 m = log_field(x, &LogEntry::inverse) * power;
        return log_sum<LA>(x, (m - 1.0) + x.z * m);
    };
    return {log(x4.low, power.low), log(x4.high, power.high)};
}

template <class Accuracy>
inline f4 log1p_single(f4 x) {
    const LogSingleReduced s = log_single_reduce(x + 1.0f);
    return log_single<Accuracy>(s.exponent, select(s.exponent == 0, x, s.z - 1.0f));
}

}  // namespace

template <class T, class Accuracy>
struct Log1p {
    using V = Vector<T>;
    using Range = Log1pRange<T>;
    KEF_REPORT_NAME(Log1p);

    static i4 outside(i4 h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, Range::tiny, Range::large) &
               not_between(h, negative + Range::tiny, negative + Range::one);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return log1p_core<Accuracy>(x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return with_midpoints(log1p_in_double(x));
        } else {
            return log1p_single<Accuracy>(x);
        }
    }

    // Single HA: the second vector marks the midpoints.
    static i4 refuse(i4, i4 midpoint) { return midpoint; }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0 || x == Format<T>::infinity) return r = x + x, VTM_STATUS_OK;
        if (x == -1) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < -1) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x < Range::tiny_value && -x < Range::tiny_value) return tiny_result(x, r);
        const DoubleDouble<d2> parts = log_parts(all(1.0 + double(x)));
        if constexpr (std::is_same_v<T, double>) r = parts.high[0] + parts.low[0];
        else r = rounded_once(parts);
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Log1p, LA)
KEF_MAP1(s, Log1p, HA)
KEF_MAP1(s, Log1p, EP)
KEF_MAP1(d, Log1p, LA)
KEF_MAP1(d, Log1p, HA)
KEF_MAP1(d, Log1p, EP)

}  // namespace kef::vm
