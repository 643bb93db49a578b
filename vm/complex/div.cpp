// Div: r = a / b.
//
//   b = 0, a not 0 or NaN       infinite, singularity
//   0/0, infinite/infinite      NaN, domain error
//   infinite/finite             infinite
//   finite/infinite             zeros
//   NaN                         NaN
//   a part too large            infinite, overflow
//
// a number being infinite that has an infinite part. Double HA: a conj(b) and |b|^2 with their
// errors, 0.51 ulp for each part while it is above 2^-50 of the norm. Single HA: in double, 0.5 ulp
// + 2^-28. LA, also EP: plain arithmetic and one reciprocal, 5 units of the norm.
#include "vm/core/complex_kernel.h"
#include "vm/core/complex_product.h"
#if KEF_VECTOR_BYTES == 16
#include "vm/simd/pairs_in_double.h"
#endif

namespace kef::vm {

template <class T, class Accuracy> struct ComplexDiv {
    using V = Vector<T>;
    KEF_COMPLEX_NAME(Div);
    static constexpr bool accurate = std::is_same_v<Accuracy, HA>;
    static constexpr bool is_double = std::is_same_v<T, double>, in_double = !is_double && accurate;
    static constexpr int most = is_double ? 400 : 50;

    // What squares and products consist of is normal, their errors too. Single HA has no gate but
    // the result: nothing finite and not 0 makes it infinite or NaN, and all else does. Single LA
    // has the norm for a gate, which takes fewer operations and lets nothing else pass.
    static ints not_ordinary(ints a, ints b, ints c, ints d) {
        return larger_outside<T, -most, most>(a, b) | larger_outside<T, -most / 2, most / 2>(c, d);
    }
    static ints outside(ints a, ints b, ints c, ints d) requires(is_double) {
        return not_ordinary(a, b, c, d);
    }
    static constexpr bool far_everywhere = in_double || !accurate;
    static ints beyond(ints, ints, ints, ints) { return ints{}; }
    static ints refuse(ints re, ints im) requires(in_double) {
        return not_finite<T>(re) | not_finite<T>(im);
    }
    // The bit behind the sign: infinite without an error.
    static ints reported(ints re, ints im, ints marks) {
        return (is_infinity<T>(re) | is_infinity<T>(im)) & ~(marks | marks << 1);
    }
    static int status(T, T) { return VTM_STATUS_OVERFLOW; }

    static auto fast(V a, V b, V c, V d) {
        if constexpr (is_double || accurate) {
            return ordinary_quotient(a, b, c, d);
        } else {
            const V norm = c * c + d * d;
            const ints larger = larger_head(magnitude((ints)a), magnitude((ints)b));
            return MarkedBy<V, Two<V>>{complex_quotient_plain(a, b, c, d),
                                       (V)one_outside<T, 2 - most, most>((ints)norm, larger)};
        }
    }
#if KEF_VECTOR_BYTES == 16
    static MarkedBy<V, Two<V>> in_memory(const float* a, const float* b) requires(in_double) {
        const auto r =
            on_pairs_in_double(a, b, [](auto... x) { return complex_quotient_plain(x...); });
        return {r, one_is_nan(r.first - r.first, r.second - r.second)};  // or infinite
    }
#endif
    static Two<V> ordinary_quotient(V a, V b, V c, V d) {
        if constexpr (in_double) {
            const DoublesPair x = widen(a), y = widen(b), u = widen(c), v = widen(d);
            const auto low = complex_quotient_plain(x.low, y.low, u.low, v.low),
                       high = complex_quotient_plain(x.high, y.high, u.high, v.high);
            return {narrow(low.first, high.first), narrow(low.second, high.second)};
        } else if constexpr (accurate) {
            return complex_quotient(a, b, c, d);
        } else {
            return complex_quotient_plain(a, b, c, d);
        }
    }
    static MarkedBy<V, Two<V>> far(V a, V b, V c, V d) {
        const auto finite_a = both_finite(a, b), finite_b = both_finite(c, d);
        BitsOf<V> edge;  // zeros; an infinite number beside one that is not finite
        if constexpr (is_double) edge = both_zero(a, b) | both_zero(c, d);
        else edge = both_zero((ints)c, (ints)d);
        if (all_lanes(finite_a & finite_b)) return {finite_quotient(a, b, c, d), (V)edge};
        const auto above = one_infinite(a, b), below = one_infinite(c, d), infinite = above | below,
                   finite = no_nan(a, b, c, d) & ~infinite;
        edge |= (above & ~finite_b) | (below & ~finite_a);
        Two<V> r{};
        if (any_lane(finite)) r = finite_quotient(a, b, c, d);
        if (!all_lanes(infinite)) r = with_nan(r, a, b, c, d);
        if (any_lane(infinite)) r = select(infinite, infinite_quotient(a, b, c, d, above), r);
        return {r, report_marks((V)edge, infinite)};
    }
    // LA: by the formula of ordinary numbers where that holds, as those are computed.
    static Two<V> finite_quotient(V a, V b, V c, V d) {
        if constexpr (accurate) {
            return wide_quotient(a, b, c, d);
        } else {
            const auto within =
                           ~sign_mask((BitsOf<V>)not_ordinary((ints)a, (ints)b, (ints)c, (ints)d)),
                       wide = both_finite(a, b) & both_finite(c, d) & ~within;
            if (all_lanes(wide)) return wide_quotient(a, b, c, d);
            Two<V> r{};
            if (any_lane(within)) r = ordinary_quotient(a, b, c, d);
            if (!any_lane(wide)) return r;
            const auto chosen = [&](V x) { return select(wide, x, all(T(1))); };
            return select(wide, wide_quotient(chosen(a), chosen(b), chosen(c), chosen(d)), r);
        }
    }
    static Two<V> wide_quotient(V a, V b, V c, V d) {
        if constexpr (!is_double) return ComplexDiv<T, HA>::ordinary_quotient(a, b, c, d);
        else if constexpr (accurate) return scaled_quotient(a, b, c, d);
        else {
            // Small numbers together, or by ordinary ones: as those, whose zeros keep the signs
            // that scaled parts may lose.
            const doubles size = maximum(absolute(a), absolute(b)),
                          other = maximum(absolute(c), absolute(d));
            const longs small = mask(size < 0x1p-900), both = small & mask(other < 0x1p-900),
                        first = small & mask(other >= 0x1p-200) & mask(other < 0x1p200),
                        enlarged = both | first;
            Two<V> r{};
            if (!all_lanes(enlarged)) r = scaled_quotient(a, b, c, d);
            if (!any_lane(enlarged)) return r;
            const auto by = [&](longs lanes, V x, V y) {
                return Two<V>{select(lanes, x, all(1.0)), select(lanes, y, all(1.0))};
            };
            const auto [x, y] = by(enlarged, times_2_1074(a), times_2_1074(b));
            if (any_lane(both)) {
                const auto [u, v] = by(both, times_2_1074(c), times_2_1074(d));
                r = select(both, ordinary_quotient(x, y, u, v), r);
            }
            if (any_lane(first)) {
                const auto [u, v] = by(first, c, d);
                const Two<V> q = ordinary_quotient(x, y, u, v);
                r = select(first,
                           Two<V>{times_2_minus_1074({q.first, doubles{}}),
                                  times_2_minus_1074({q.second, doubles{}})},
                           r);
            }
            return r;
        }
    }
    static Two<V> scaled_quotient(V a, V b, V c, V d) requires(is_double) {
        const ScaledPair x = scale_to_one(a, b), y = scale_to_one(c, d);
        const PowersBack back(x.exponent, -y.exponent);
        if constexpr (accurate) return times(quotient_parts(x.x, x.y, y.x, y.y), back);
        const Two<V> q = ordinary_quotient(x.x, x.y, y.x, y.y);
        return {back.times(q.first), back.times(q.second)};
    }

    // Of an infinite and a finite number, b not 0; `above`: where a is the infinite one. What the
    // sums of parts are in sign, where they are not 0, the results are, infinite or zeros.
    static Two<V> infinite_quotient(V a, V b, V c, V d, BitsOf<V> above) {
        const V infinity = all(Format<T>::infinity);
        const auto direction = [&](BitsOf<V> lanes, V x) {
            const V unit = where(mask(absolute(x) == infinity), all(T(1)));
            return select(lanes, with_sign(unit, x), x);
        };
        // Numbers whose differences might be subnormal become larger.
        const auto pair = [](V p, V q) {
            const auto tiny =
                mask(maximum(absolute(p), absolute(q)) < T(is_double ? 0x1p-900 : 0x1p-60));
            const V factor = select(tiny, all(T(0x1p60)), all(T(1)));
            return Two<V>{p * factor, q * factor};
        };
        const auto [x, y] = pair(direction(above, a), direction(above, b));
        const auto [u, v] = pair(direction(~above, c), direction(~above, d));
        const auto part = [&](V sum) {
            return (V)((above & (BitsOf<V>)(infinity * sum)) | sign_bit(sum));
        };
        return {part(x * u + y * v), part(y * u - x * v)};
    }

    static int edge(T a, T b, T c, T d, T& re, T& im) {
        const bool finite_a = is_finite(a) && is_finite(b), finite_b = is_finite(c) && is_finite(d);
        const bool nan_a = is_nan(a) || is_nan(b);
        if (c == 0 && d == 0) {
            const double infinite = signed_like(Format<double>::infinity, c);
            re = static_cast<T>(infinite * a), im = static_cast<T>(infinite * b);
            if (nan_a || !finite_a) return VTM_STATUS_OK;
            return a == 0 && b == 0 ? VTM_STATUS_ERRDOM : VTM_STATUS_SING;
        }
        if (a == 0 && b == 0 && finite_b)
            return re = a * c + b * d, im = b * c - a * d, VTM_STATUS_OK;
        if (has_infinity(a, b) && has_infinity(c, d))
            return re = im = Format<T>::invalid, VTM_STATUS_ERRDOM;
        Direction x = {a, b}, y = {c, d};
        double factor = 1;
        if (has_infinity(a, b) && finite_b) x = direction(a, b), factor = Format<double>::infinity;
        else if (finite_a && has_infinity(c, d)) y = direction(c, d), factor = 0;
        // A sum that overflows beside an infinite divisor is a zero too.
        const auto part = [&](double sum) {
            return static_cast<T>(factor == 0 ? signed_like(0.0, sum) : factor * sum);
        };
        re = part(x.re * y.re + x.im * y.im);
        im = part(x.im * y.re - x.re * y.im);
        const bool from_nan = nan_a || is_nan(c) || is_nan(d);
        return is_nan(re) && is_nan(im) && !from_nan ? VTM_STATUS_ERRDOM : VTM_STATUS_OK;
    }
};

KEF_COMPLEX2(c, Div, LA)
KEF_COMPLEX2(c, Div, HA)
KEF_COMPLEX2(z, Div, LA)
KEF_COMPLEX2(z, Div, HA)

}  // namespace kef::vm
