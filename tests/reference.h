// References of the vector functions, and how an error is counted against them. A reference is one
// expression, evaluated twice: in __float128 (113 bits), which decides, and in 80-bit extended
// precision, which is fast and tells where the first is not needed.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include <emmintrin.h>

#include "tests/complex_reference.h"

namespace kef::reference {

// A set of numbers: `low` to `high`, drawn uniformly by value and by bit pattern (only so where an
// end is infinite, or far from the other); with `near`, next to its multiples; with `by`, next to
// what that makes of the components drawn before; `sized`, powers of two whose products, quotients
// and sums with the number drawn before come to the borders of the range and of the precision.
struct Range {
    double low, high;
    long double near = 0;
    double (*by)(const double* drawn) = nullptr;
    bool sized = false;
};
inline constexpr Range everything = {-INFINITY, INFINITY};
inline constexpr Range any_size = {-INFINITY, INFINITY, 0, nullptr, true};

// The arguments of one measurement; b where there is a second one. Scalars: of the linear fraction.
// Imaginary parts: of complex arguments. The words take the place of ranges in reports.
struct Interval {
    Range a, b = {0, 0};
    std::array<double, 4> scalars = {1, 0, 1, 0};
    Range a_im = {0, 0}, b_im = {0, 0};
    std::string_view words = {};

    // In the order of the components of the arguments.
    std::vector<Range> ranges(bool complex) const {
        return complex ? std::vector<Range>{a, a_im, b, b_im} : std::vector<Range>{a, b};
    }
};

using Scalars = std::array<double, 4>;
template <class R> using Expression = R (*)(R x, R y, const Scalars& c);

template <class R> using ComplexExpression = Values<R> (*)(Complex<R> z, Complex<R> w);

// The components of an element's arguments: x and y, or the parts of z and of w.
template <class T> using Point = std::array<T, 4>;

struct Reference {
    std::string_view name;
    // Of real functions. Where there are two results, the second has expressions too.
    Expression<quad> exact = nullptr, exact2 = nullptr;
    Expression<wide> screen = nullptr, screen2 = nullptr;
    // Of complex functions: those with a complex argument or result.
    ComplexExpression<quad> exact_z = nullptr;
    ComplexExpression<wide> screen_z = nullptr;
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
    // Complex: errors of a component count in ulp of max(|component|, share |result|), of HA and
    // of the other slots.
    double (*share)(const double* x, bool accurate) = nullptr;
    // Complex: the error that a relative error of 1 in what the result is made of amounts to. That
    // of the 80-bit expressions is screen_error times this of the norm, and the bound counts in
    // units of the norm times condition / 2^10 where that is above 1.
    double (*condition)(const double* x) = nullptr;
    // Complex: the bound of the most accurate kernel holds against the norm alone.
    bool norm_wise = false;
    // In place of the whole range.
    Interval whole = {everything, everything, {1, 0, 1, 0}, everything, everything};

    bool complex() const { return exact_z != nullptr; }

    // The components of the results.
    template <class R, class T> Values<R> value(const Point<T>& x, const Scalars& c) const {
        const auto [first, second, complex] = [&] {
            if constexpr (std::is_same_v<R, quad>) return std::tuple(exact, exact2, exact_z);
            else return std::tuple(screen, screen2, screen_z);
        }();
        if (complex) return complex({R(x[0]), R(x[1])}, {R(x[2]), R(x[3])});
        return {first(x[0], x[1], c), second ? second(x[0], x[1], c) : R(0)};
    }
};

#include "tests/complex_intervals.h"

inline const std::vector<Reference>& table() {
#define KEF_EXPRESSION(type, expression)                                             \
    [](type x, [[maybe_unused]] type y, [[maybe_unused]] const Scalars& c) -> type { \
        return expression;                                                           \
    }
#define KEF_COMPLEX_EXPRESSION(type, expression)                             \
    []([[maybe_unused]] Complex<type> z, [[maybe_unused]] Complex<type> w) { \
        [[maybe_unused]] const type x = z.re;                                \
        return values(expression);                                           \
    }
#define KEF_REFERENCE(function, expression, ...)          \
    Reference{.name = #function,                          \
              .exact = KEF_EXPRESSION(quad, expression),  \
              .screen = KEF_EXPRESSION(wide, expression), \
              __VA_ARGS__},
#define KEF_REFERENCE2(function, first, second, ...)   \
    Reference{.name = #function,                       \
              .exact = KEF_EXPRESSION(quad, first),    \
              .exact2 = KEF_EXPRESSION(quad, second),  \
              .screen = KEF_EXPRESSION(wide, first),   \
              .screen2 = KEF_EXPRESSION(wide, second), \
              __VA_ARGS__},
#define KEF_COMPLEX(function, expression, ...)                      \
    Reference{.name = #function,                                    \
              .exact_z = KEF_COMPLEX_EXPRESSION(quad, expression),  \
              .screen_z = KEF_COMPLEX_EXPRESSION(wide, expression), \
              __VA_ARGS__},
    static const std::vector<Reference> rows = {
#include "tests/reference.def"
    };
#undef KEF_REFERENCE
#undef KEF_REFERENCE2
#undef KEF_COMPLEX
#undef KEF_EXPRESSION
#undef KEF_COMPLEX_EXPRESSION
    return rows;
}

// The row of a function, real or complex, or null.
inline const Reference* find(std::string_view name, bool complex = false) {
    for (const Reference& row : table())
        if (row.name == name && row.complex() == complex) return &row;
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
inline constexpr Error wrong = {INFINITY, INFINITY};
// |got - exact| and |exact|; no difference where both overflow or are NaN, `wrong` where one is
// NaN.
template <class R> struct Distance {
    R difference, size;
    bool wrong = false;
};
template <class T, class R> Distance<R> distance(T got, R exact) {
    using Limits = std::numeric_limits<T>;
    if (exact != exact || got != got) return {0, 0, (exact != exact) != (got != got)};
    const R size = exact < 0 ? -exact : exact;
    R value = exact < 0 ? -R(got) : R(got);
    const R beyond = Binary<R>::power_of_two(Limits::max_exponent);
    if (value > beyond) {
        if (size >= R(Limits::max()) * (1 + R(Limits::epsilon()) / 4)) return {0, size};
        value = beyond;
    }
    value = std::max(value, -beyond);
    return {value > size ? value - size : size - value, size};
}
template <class T, class R> Error error(T got, R exact, wide least = 0) {
    using Limits = std::numeric_limits<T>;
    const Distance<R> d = distance(got, exact);
    if (d.wrong) return wrong;
    if (d.difference == 0 || R(least) == R(INFINITY)) return {0, 0};
    const R own = std::min(d.size, R(Limits::max()));
    const R size = std::max({own, R(Limits::min()), R(least)});
    const int e = Binary<R>::exponent(size);
    return {static_cast<double>(d.difference * Binary<R>::power_of_two(Limits::digits - 1 - e)),
            static_cast<double>(d.difference / size)};
}

inline double square_root(double x) { return std::sqrt(x); }
inline wide square_root(wide x) { return sqrt(x); }
inline quad square_root(quad x) { return sqrt(x); }

// The error of a complex result against its norm; its "ulps" are units of 2^-53 of the norm
// (single: 2^-24), halves of which a last place is. The scale divides both. The norm counts as
// eight times the smallest normal number at least: below, a last place of a part is more than such
// a unit.
template <class T, class R> Error norm_error(T re, T im, const Values<R>& exact, double scale = 1) {
    using Limits = std::numeric_limits<T>;
    const Distance<R> x = distance(re, exact[0]), y = distance(im, exact[1]);
    if (x.wrong || y.wrong) return wrong;
    if (x.difference == 0 && y.difference == 0) return {0, 0};
    const R norm = square_root(x.size * x.size + y.size * y.size);
    const R size = std::max(norm, 8 * R(Limits::min()));
    const R off = square_root(x.difference * x.difference + y.difference * y.difference);
    const auto relative = static_cast<double>(off / size) / scale;
    return {std::ldexp(relative, Limits::digits), relative};
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

    // `drawn`: the components before, for a range with a rule.
    template <class T> T draw(const Range& range, bool by_value, const double* drawn = nullptr) {
        T x;
        const T low = static_cast<T>(range.low), high = static_cast<T>(range.high);
        if (range.by) {
            x = near<T>(static_cast<T>(range.by(drawn)));
        } else if (range.sized) {
            x = sized<T>();
        } else if (by_value && std::isfinite(range.high - range.low)) {
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
        if (range.near != 0) x = near<T>(static_cast<T>(::roundl(x / range.near) * range.near));
        return std::clamp(x, low, high);
    }

private:
    template <class T> T near(T x) {
        constexpr T largest = std::numeric_limits<T>::max();
        if (!std::isfinite(x)) return largest;
        const T neighbour = from_ordinal<T>(ordinal(x) + static_cast<int>(bits() % 17) - 8);
        return std::isfinite(neighbour) ? neighbour : x;
    }

    template <class T> T sized() {
        using Limits = std::numeric_limits<T>;
        constexpr int digits = Limits::digits, least = Limits::min_exponent - digits,
                      most = Limits::max_exponent - 1;
        constexpr int distances[] = {0, digits, 2 * digits, -least, least + digits, most, most / 2};
        const auto below = [this](int count) {
            return static_cast<int>(bits() % static_cast<unsigned>(count));
        };
        const auto either = [&](int n) { return below(2) ? n : -n; };
        int e = below(4) == 0 ? least + below(most - least + 1)
                              : either(exponent_) + either(distances[below(std::size(distances))]);
        exponent_ = e = std::clamp(e + below(9) - 4, least, most);
        const T significand = below(2) ? static_cast<T>(1 + unit()) : near<T>(1);
        return std::ldexp(below(2) ? significand : -significand, e);
    }

    std::uint64_t state_ = 0xCBF29CE484222325u;
    int exponent_ = 0;  // of the number of any size before
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
