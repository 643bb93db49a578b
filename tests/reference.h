// References of the real vector functions, and how an error is counted against
// them. A reference is one expression, evaluated twice: in __float128 (113 bits),
// which decides, and in 80-bit extended precision, which is fast and tells where
// the first is not needed.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>
#include <vector>

#include <emmintrin.h>
#include <quadmath.h>

namespace kef::reference {

using quad = __float128;
using wide = long double;

// One name for the C library's function of either type. The names hide those of
// the global namespace, which a reference must never fall back to.
#define KEF_OF_ONE(name)                              \
    inline quad name(quad x) { return ::name##q(x); } \
    inline wide name(wide x) { return ::name##l(x); }
#define KEF_OF_TWO(name)                                         \
    inline quad name(quad x, quad y) { return ::name##q(x, y); } \
    inline wide name(wide x, wide y) { return ::name##l(x, y); }
// clang-format off
KEF_OF_ONE(acos) KEF_OF_ONE(acosh) KEF_OF_ONE(asin) KEF_OF_ONE(asinh) KEF_OF_ONE(atan)
KEF_OF_ONE(atanh) KEF_OF_ONE(cbrt) KEF_OF_ONE(ceil) KEF_OF_ONE(cos) KEF_OF_ONE(cosh)
KEF_OF_ONE(erf) KEF_OF_ONE(erfc) KEF_OF_ONE(exp) KEF_OF_ONE(expm1) KEF_OF_ONE(fabs)
KEF_OF_ONE(floor) KEF_OF_ONE(lgamma) KEF_OF_ONE(log) KEF_OF_ONE(log10) KEF_OF_ONE(log1p)
KEF_OF_ONE(nearbyint) KEF_OF_ONE(rint) KEF_OF_ONE(round) KEF_OF_ONE(sin) KEF_OF_ONE(sinh)
KEF_OF_ONE(sqrt) KEF_OF_ONE(tan) KEF_OF_ONE(tanh) KEF_OF_ONE(tgamma) KEF_OF_ONE(trunc)
KEF_OF_TWO(atan2) KEF_OF_TWO(hypot) KEF_OF_TWO(pow)
// clang-format on
#undef KEF_OF_ONE
#undef KEF_OF_TWO

    // a b + c for factors of 53 bits, with one rounding error whatever cancels.
    inline quad multiply_add(quad a, quad b, quad c) {
    return a * b + c;
}
inline wide multiply_add(wide a, wide b, wide c) {
    const auto upper_half = [](wide x) {  // Veltkamp's splitting
        const wide t = x * (0x1p32L + 1);
        return t - (t - x);
    };
    const wide a1 = upper_half(a), a2 = a - a1, b1 = upper_half(b), b2 = b - b1, p = a * b;
    const wide p_error = ((a1 * b1 - p) + a1 * b2 + a2 * b1) + a2 * b2;  // Dekker's product
    const wide s = p + c, part = s - p;
    if (!(fabs(s) < wide(INFINITY))) return s;
    return s + (((p - (s - part)) + (c - part)) + p_error);  // Knuth's sum
}

// (1/2) erfc(-x/sqrt2). The product t = -x/sqrt2 is taken with its rounding error
// d, and erfc(t + d) = erfc(t) - 2/sqrt(pi) exp(-t^2) d; without d the result
// loses 2 log2|x| + 1 bits in the tail. x has 53 bits at most.
template <class R> R cdf_norm(R x) {
    if (!(fabs(x) < R(1e4))) return x != x ? x : x > 0 ? R(1) : R(0);
    const R high = -x * R(0x5A8p-11), low = -x * R(M_SQRT1_2q - 0x5A8p-11Q);
    const R t = high + low, d = low - (t - high);
    return (erfc(t) - R(M_2_SQRTPIq) * exp(-t * t) * d) / 2;
}

// The root x of erf(x) = y for |y| <= 1/2, or of erfc(x) = q for 0 < q <= 1/2, by
// Halley's iteration: with u = residual / derivative, x -= u / (1 + x u). The
// error is cubed at every step.
inline wide erf_root(wide y) {
    const wide y2 = y * y;  // Taylor series: relative error 0.1 y^6
    wide x = y * (1 + y2 * (0.2617993878L + y2 * 0.1439317309L)) * 0.886226925452758L;
    for (int i = 0; i < 2; ++i) {
        const wide u = (erf(x) - y) / (wide(M_2_SQRTPIq) * exp(-x * x));
        x -= u / (1 + x * u);
    }
    return x;
}
inline wide erfc_root(wide q) {
    // Abramowitz and Stegun 26.2.23: error below 4.5e-4 for every q.
    const wide t = sqrt(-2 * log(q / 2));
    wide x = t - (2.515517L + t * (0.802853L + t * 0.010328L)) /
                     (1 + t * (1.432788L + t * (0.189269L + t * 0.001308L)));
    x *= wide(M_SQRT1_2q);
    for (int i = 0; i < 3; ++i) {
        const wide u = (q - erfc(x)) / (wide(M_2_SQRTPIq) * exp(-x * x));
        x -= u / (1 + x * u);
    }
    return x;
}
inline quad erf_root(quad y) {
    const quad x = erf_root(wide(y));
    const quad u = (erf(x) - y) / (M_2_SQRTPIq * exp(-x * x));
    return x - u / (1 + x * u);
}
inline quad erfc_root(quad q) {
    const quad x = erfc_root(wide(q));
    const quad u = (q - erfc(x)) / (M_2_SQRTPIq * exp(-x * x));
    return x - u / (1 + x * u);
}

// 1 - |y|, 2 - q and 1 - q below are exact for the arguments of both types.
template <class R> R erf_inv(R y) {
    const R size = fabs(y);
    if (!(size < 1)) return size == 1 ? y * R(INFINITY) : R(NAN);
    if (size <= R(0.5)) return y == 0 ? y : erf_root(y);
    const R x = erfc_root(1 - size);
    return y > 0 ? x : -x;
}
template <class R> R erfc_inv(R q) {
    if (!(q > 0 && q < 2)) return q == 0 ? R(INFINITY) : q == 2 ? -R(INFINITY) : R(NAN);
    if (q < R(0.5)) return erfc_root(q);
    if (q > R(1.5)) return -erfc_root(2 - q);
    return erf_inv(1 - q);
}
template <class R> R cdf_norm_inv(R p) { return -R(M_SQRT2q) * erfc_inv(2 * p); }

// A set of arguments: `low` to `high`, drawn uniformly by value and by bit
// pattern (only so where an end is infinite); with `near`, next to its multiples.
struct Range {
    double low, high;
    long double near = 0;
};
inline constexpr Range everything = {-INFINITY, INFINITY};

// The arguments of one measurement; b where there is a second one. Scalars: of
// the linear fraction.
struct Interval {
    Range a, b = {0, 0};
    std::array<double, 4> scalars = {1, 0, 1, 0};
};

using Scalars = std::array<double, 4>;
template <class R> using Expression = R (*)(R x, R y, const Scalars& c);

struct Reference {
    std::string_view name;
    // Where there are two results, the second has expressions too.
    Expression<quad> exact, exact2;
    Expression<wide> screen, screen2;
    // Largest error of the 80-bit expressions, in units of 2^-63 relative; INFINITY
    // where they are of no use.
    double screen_error;
    // Bound of the most accurate kernel in double precision, in ulp.
    double bound;
    // The ordinary arguments, for speed too.
    Interval main;
    // Further intervals of either type; the whole range needs no mention.
    std::vector<Interval> both = {}, d = {}, s = {};
    // Errors count in ulp of max(|result|, least) where x < 0.
    double least = 0;
};

inline const std::vector<Reference>& table() {
#define KEF_EXPRESSION(type, expression)                                             \
    [](type x, [[maybe_unused]] type y, [[maybe_unused]] const Scalars& c) -> type { \
        return expression;                                                           \
    }
#define KEF_REFERENCE(function, expression, ...)          \
    Reference{.name = #function,                          \
              .exact = KEF_EXPRESSION(quad, expression),  \
              .exact2 = nullptr,                          \
              .screen = KEF_EXPRESSION(wide, expression), \
              .screen2 = nullptr,                         \
              __VA_ARGS__},
#define KEF_REFERENCE2(function, first, second, ...)   \
    Reference{.name = #function,                       \
              .exact = KEF_EXPRESSION(quad, first),    \
              .exact2 = KEF_EXPRESSION(quad, second),  \
              .screen = KEF_EXPRESSION(wide, first),   \
              .screen2 = KEF_EXPRESSION(wide, second), \
              __VA_ARGS__},
    static const std::vector<Reference> rows = {
#include "tests/reference.def"
    };
#undef KEF_REFERENCE
#undef KEF_REFERENCE2
#undef KEF_EXPRESSION
    return rows;
}

// The row of a function, or null.
inline const Reference* find(std::string_view name) {
    for (const Reference& row : table())
        if (row.name == name) return &row;
    return nullptr;
}

// Exponent of a normal number, and 2^e.
template <class R> struct Binary;
template <> struct Binary<double> {
    static int exponent(double x) {
        return static_cast<int>(std::bit_cast<std::uint64_t>(x) >> 52 & 0x7FF) - 1023;
    }
    static double power_of_two(int e) {
        // In a vector register: through memory it would stall on i386.
        return _mm_cvtsd_f64(_mm_castsi128_pd(_mm_slli_epi64(_mm_cvtsi32_si128(e + 1023), 52)));
    }
};
template <> struct Binary<wide> {
    struct Parts {
        std::uint64_t significand;
        std::uint16_t head;
    };
    static int exponent(wide x) {
        Parts parts;
        __builtin_memcpy(&parts, &x, 10);
        return (parts.head & 0x7FFF) - 16383;
    }
    static wide power_of_two(int e) {
        const Parts parts = {UINT64_C(1) << 63, static_cast<std::uint16_t>(e + 16383)};
        wide x = 0;
        __builtin_memcpy(&x, &parts, 10);
        return x;
    }
};
template <> struct Binary<quad> {
    static int exponent(quad x) {
        std::uint64_t words[2];
        __builtin_memcpy(words, &x, 16);
        return static_cast<int>(words[1] >> 48 & 0x7FFF) - 16383;
    }
    static quad power_of_two(int e) {
        const std::uint64_t words[2] = {0, static_cast<std::uint64_t>(e + 16383) << 48};
        quad x;
        __builtin_memcpy(&x, words, 16);
        return x;
    }
};

// An error in ulp: |got - exact| over the spacing of T around `exact` (below the
// normal range, that of the subnormal numbers), and relative to the result (to
// the smallest normal number below that). An infinity that should be finite
// counts as the number next to the largest; NaN against a number is infinitely
// wrong. `least`: see Reference.
struct Error {
    double ulps, relative;
};
template <class T, class R> Error error(T got, R exact, double least = 0) {
    using Limits = std::numeric_limits<T>;
    constexpr Error wrong = {INFINITY, INFINITY}, none = {0, 0};
    if (exact != exact || got != got) return (exact != exact) == (got != got) ? none : wrong;
    R size = exact < 0 ? -exact : exact;
    R value = exact < 0 ? -R(got) : R(got);
    const R beyond = Binary<R>::power_of_two(Limits::max_exponent);
    if (value > beyond) {
        if (size >= R(Limits::max()) * (1 + R(Limits::epsilon()) / 4)) return none;
        value = beyond;
    } else if (size > 2 * beyond) {
        return wrong;
    }
    const R difference = value > size ? value - size : size - value;
    size = std::max({size, R(Limits::min()), R(least)});
    const int e = std::min(Binary<R>::exponent(size), Limits::max_exponent - 1);
    return {static_cast<double>(difference * Binary<R>::power_of_two(Limits::digits - 1 - e)),
            static_cast<double>(difference / size)};
}

// Numbers of T in order: consecutive integers are consecutive numbers.
template <class T>
using Ordinal = std::conditional_t<std::is_same_v<T, float>, std::int32_t, std::int64_t>;
template <class T> Ordinal<T> ordinal(T x) {
    const auto bits = std::bit_cast<Ordinal<T>>(x);
    return bits < 0 ? std::numeric_limits<Ordinal<T>>::min() - bits : bits;
}
template <class T> T from_ordinal(Ordinal<T> n) {
    return std::bit_cast<T>(n < 0 ? std::numeric_limits<Ordinal<T>>::min() - n : n);
}

// Random arguments of a range; the same ones in every run.
class Random {
public:
    explicit Random(std::string_view seed) {
        for (const char c : seed)
            state_ = (state_ ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    }
    std::uint64_t bits() {  // Steele, Lea, Flood: splitmix64
        std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        return z ^ z >> 31;
    }
    double unit() { return static_cast<double>(bits() >> 11) * 0x1p-53; }

    template <class T> T draw(const Range& range, bool by_value) {
        T x;
        const T low = static_cast<T>(range.low), high = static_cast<T>(range.high);
        if (by_value && std::isfinite(range.high - range.low)) {
            x = static_cast<T>(range.low + unit() * (range.high - range.low));
        } else {
            const auto first = ordinal(low), last = ordinal(high);
            const std::uint64_t span =
                static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
            // The high word of bits() times (span + 1).
            const std::uint64_t offset = static_cast<std::uint64_t>(
                static_cast<long double>(bits()) * 0x1p-64L * (static_cast<long double>(span) + 1));
            x = from_ordinal<T>(static_cast<Ordinal<T>>(static_cast<std::uint64_t>(first) +
                                                        std::min(offset, span)));
        }
        if (range.near != 0) {
            const T multiple = static_cast<T>(::roundl(x / range.near) * range.near);
            x = from_ordinal<T>(ordinal(multiple) + static_cast<int>(bits() % 17) - 8);
        }
        return std::clamp(x, low, high);
    }

private:
    std::uint64_t state_ = 0xCBF29CE484222325u;
};

// Arguments where functions tend to go wrong, as far as they lie in the range: its
// ends, zeros, subnormal numbers, small integers and halves, powers of ten,
// each with its neighbours; infinities and NaN in the whole range.
template <class T> std::vector<T> edges(const Range& range) {
    using Limits = std::numeric_limits<T>;
    std::vector<T> candidates = {T(range.low),  T(range.high), Limits::denorm_min(),
                                 Limits::min(), Limits::max(), Limits::epsilon(),
                                 T(M_PI_2),     T(M_PI_4),     T(M_LN2)};
    for (int i = 0; i <= 12; ++i) candidates.push_back(T(0.5) * i);
    for (T power = 10; power < T(1e25); power *= 10) {
        candidates.push_back(power);
        candidates.push_back(1 / power);
    }
    std::vector<T> result;
    for (const T candidate : candidates)
        for (const T x : {candidate, -candidate})
            for (const int step : {-1, 0, 1}) {
                if (!std::isfinite(x)) continue;
                const T neighbour = from_ordinal<T>(ordinal(x) + step);
                if (neighbour >= T(range.low) && neighbour <= T(range.high))
                    result.push_back(neighbour);
            }
    if (range.low <= 0 && range.high >= 0) result.push_back(T(-0.0));
    if (std::isinf(range.high))
        result.insert(result.end(), {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()});
    return result;
}

}  // namespace kef::reference
