// What the kernels of complex functions share: the names in reports, and functions that are others
// with the parts of an argument or of the result exchanged, which is exact and costs nothing.
#pragma once

#include <type_traits>

#include "vm/core/complex_scaling.h"
#include "vm/core/complex_trig.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// The status of an element: that of the edge, or what its parts, as doubles, become in type T.
template <class T, bool overflows, bool underflows>
inline int status_of_parts(int status, bool finite, double re, double im) {
    if (status != VTM_STATUS_OK || !finite) return status;
    if (overflows && (is_infinite(static_cast<T>(re)) || is_infinite(static_cast<T>(im))))
        return VTM_STATUS_OVERFLOW;
    const auto small = [](double z) {
        return z < Format<T>::smallest_normal && z > -Format<T>::smallest_normal;
    };
    return underflows && small(re) && small(im) ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
}

// Likewise of vectors, from finite arguments: sign bits where there is a status, and which.
template <class T, bool underflows> inline ints outside_range(ints re, ints im) {
    const ints infinite = not_finite<T>(re) | not_finite<T>(im);
    if constexpr (!underflows) return infinite;
    constexpr auto normal = static_cast<std::int32_t>(Format<T>::normal_head);
    return infinite | ((magnitude(re) - normal) & (magnitude(im) - normal));
}
template <class T> inline int status_outside_range(T re, T im) {
    return is_infinite(re) || is_infinite(im) ? VTM_STATUS_OVERFLOW : VTM_STATUS_UNDERFLOW;
}

// Marks that tell of statuses too: the sign is for the edge; the bit behind it for results that
// stand and are reported.
template <class V> inline V report_marks(V marks, BitsOf<V> reported) {
    return (V)(sign_bit(marks) | (reported & (BitsOf<V>)all(Element<V>(2))));
}
inline ints marked_report(ints marks) { return marks << 1 & ~marks; }

// The kernel of a function that is one formula in doubles for parts of every ordinary size:
//
//   Core::formula<Accuracy>(x, y)   on vectors: for 0 or 2^-280 <= |x| < last_x<Accuracy>(), y
//                                   likewise; or
//   Core::with_sines<Accuracy>(sines, x, y)
//                                   the same from sine and cosine of one part, which has any size:
//                                   of x where Core::angle_first, else of y
//   Core::outer<Accuracy>(sines, x, y)
//                                   optional, in double: the formula for the other part from its
//                                   last on, of enlarged parts
//   Core::special_single(x, y), special_double(x, y)
//                                   optional, by the bits of floats and by doubles: sign bits where
//                                   the formula does not hold in that range
//   Core::factors(x, y)             optional: the powers of two that take back from both results
//                                   what is linear in enlarged parts; or
//   Core::of_reduced<Accuracy>(x, y, pair)
//                                   optional beside it: the formula for what `reduced` left of
//                                   large parts
//   Core::any_size<Accuracy>(x, y)  the formula for tiny and for large parts too
//   Core::edge(x, y, re, im)        one element of any size, within the bounds of HA; its status
//   Core::overflows, underflows     whether finite arguments can have an infinite part, and
//                                   whether two parts below the normal numbers are reported
//
// Double: LA, HA and EP of the formula. Single: HA the formula of LA, rounded once, and LA, also
// EP, that of EP.
template <class Core, class T, class Accuracy> struct ComplexKernel {
    using V = Vector<T>;
    static constexpr bool is_single = std::is_same_v<T, float>;
    using Formula = std::conditional_t<!is_single, Accuracy,
                                       std::conditional_t<std::is_same_v<Accuracy, HA>, LA, EP>>;
    static constexpr bool far_everywhere = true;
    static constexpr double least = 0x1p-280;
    static constexpr bool has_angle = requires { Core::angle_first; };
    static constexpr bool has_outer = requires(Two<Number<Formula>> sines, EnlargedParts x) {
        Core::template outer<Formula>(sines, x, x);
    };
    static constexpr bool has_factors = requires(EnlargedParts x) { Core::factors(x, x); };
    static constexpr bool has_reduced = requires(doubles x, ReducedPair z) {
        Core::template of_reduced<HA>(x, x, z);
    };
    static constexpr bool has_any_size = requires(doubles x) { Core::template any_size<HA>(x, x); };

    // Where the formula ends for the part that is no angle.
    static constexpr double end = [] {
        if constexpr (!has_angle) return 0.0;
        else if constexpr (Core::angle_first) return Core::template last_y<Formula>();
        else return Core::template last_x<Formula>();
    }();
    // Heads from here on are of larger numbers.
    static constexpr std::int32_t head_from(double last) {
        if constexpr (is_single)
            return static_cast<std::int32_t>(
                last > double(0x1.fffffep127f) ? Format<T>::infinity_head : head_of(float(last)));
        else return static_cast<std::int32_t>(head_of(last));
    }
    static constexpr std::int32_t end_x = head_from(Core::template last_x<Formula>()),
                                  end_y = head_from(Core::template last_y<Formula>());
    static ints special(ints x, ints y) {
        if constexpr (requires { Core::special_single(x, y); }) return Core::special_single(x, y);
        else return ints{};
    }

    static ints larger(ints x, ints y, std::int32_t end_of_x = end_x,
                       std::int32_t end_of_y = end_y) {
        return (end_of_x - 1 - magnitude(x)) | (end_of_y - 1 - magnitude(y));
    }
    static ints outside(ints x, ints y) {
        if constexpr (is_single) return larger(x, y) | special(x, y);
        else
            return not_between(magnitude(x), head_of(least), end_x) |
                   not_between(magnitude(y), head_of(least), end_y);
    }
    static ints beyond(ints x, ints y) requires(!is_single || has_angle) {
        constexpr auto infinity = static_cast<std::int32_t>(Format<T>::infinity_head);
        if constexpr (is_single || has_outer || has_reduced || has_any_size)
            return larger(x, y, infinity, infinity);
        else if constexpr (!has_angle) return larger(x, y);
        else if constexpr (Core::angle_first) return larger(x, y, infinity, end_y);
        else return larger(x, y, end_x, infinity);
    }
    static V undefined(V x, V y) requires(!is_single) {
        longs verdict{};
        if constexpr (!has_factors && !has_any_size)
            verdict = is_tiny(x, least) | is_tiny(y, least);
        if constexpr (requires { Core::special_double(x, y); })
            verdict |= Core::special_double(x, y);
        return (V)verdict;
    }
    static doubles angle(doubles x, doubles y) { return absolute(Core::angle_first ? x : y); }
    static Two<doubles> computed(doubles x, doubles y) {
        if constexpr (has_angle)
            return Core::template with_sines<Formula>(sine_cosine<Formula>(angle(x, y)), x, y);
        else return Core::template formula<Formula>(x, y);
    }
    static Two<V> fast(V x, V y) {
        if constexpr (is_single) {
            const DoublesPair a = widen(x), b = widen(y);
            const auto low = computed(a.low, b.low), high = computed(a.high, b.high);
            return {narrow(low.first, high.first), narrow(low.second, high.second)};
        } else {
            return computed(x, y);
        }
    }
    // Of floats, any finite ones: where a part ends the range of the formula they are 0 or
    // infinite.
    static MarkedBy<doubles, Two<doubles>> far_of_floats(doubles x, doubles y) {
        const auto within = [](doubles z) {
            return maximum(minimum(z, all(end - 1)), all(1 - end));
        };
        if constexpr (Core::angle_first) y = within(y);
        else x = within(x);
        const auto sines = sine_cosine_far<Formula>(angle(x, y));
        return {Core::template with_sines<Formula>(sines.result, x, y), sines.marks};
    }
    static MarkedBy<V, Two<V>> far(V x, V y) requires(is_single&& has_angle) {
        const DoublesPair a = widen(x), b = widen(y);
        const auto low = far_of_floats(a.low, b.low), high = far_of_floats(a.high, b.high);
        return {{narrow(low.result.first, high.result.first),
                 narrow(low.result.second, high.result.second)},
                (V)in_order(heads(low.marks, high.marks))};
    }
    // HA: one rounding.
    static V twice(const MarkedBy<V, Two<V>>& r) requires(!is_single) {
        return (V)((longs)r.marks | rounded_twice(r.result.first) | rounded_twice(r.result.second));
    }
    static MarkedBy<V, Two<V>> far(V x, V y) requires(!is_single) {
        MarkedBy<V, Two<V>> r{};
        if constexpr (has_any_size) {
            r.result = Core::template any_size<Formula>(x, y);
            if constexpr (std::is_same_v<Formula, HA>) r.marks = twice(r);
            return r;
        }
        ReducedPair pair;
        if constexpr (has_reduced) pair = reduced<200>(x, y), x = pair.x, y = pair.y;
        EnlargedParts a = {x, {}}, b = {y, {}};
        if constexpr (has_factors) a = enlarged(x), b = enlarged(y);
        longs outer{};
        if constexpr (has_outer) outer = (longs)(absolute(Core::angle_first ? b.x : a.x) >= end);
        MarkedBy<doubles, Two<Number<Formula>>> sines{};
        if constexpr (has_angle) {
            sines = sine_cosine_far<Formula>(angle(a.x, b.x));
            r.marks = sines.marks;
            if (!all_lanes(outer)) r.result = inner(sines.result, a.x, b.x, outer);
        } else if constexpr (has_reduced) {
            if (any_lane(pair.large)) r.result = Core::template of_reduced<Formula>(a.x, b.x, pair);
            else r.result = Core::template formula<Formula>(a.x, b.x);
        } else {
            r.result = Core::template formula<Formula>(a.x, b.x);
        }
        if constexpr (has_factors) {
            const Two<doubles> whole = r.result, f = Core::factors(a, b);
            r.result = {whole.first * f.first, whole.second * f.second};
            if constexpr (std::is_same_v<Formula, HA>)
                r.marks = (V)((longs)r.marks | rounded_twice(r.result.first, whole.first, f.first) |
                              rounded_twice(r.result.second, whole.second, f.second));
        }
        if constexpr (has_outer)
            if (any_lane(outer)) {
                const Two<V> z = Core::template outer<Formula>(sines.result, a, b);
                r = {select(outer, z, r.result), select(outer, sines.marks, r.marks)};
            }
        return r;
    }
    // With what is outer out of the way.
    static Two<V> inner(const auto& sines, V x, V y, longs outer) requires(!is_single) {
        if constexpr (!has_outer) return Core::template with_sines<Formula>(sines, x, y);
        else if constexpr (Core::angle_first)
            return Core::template with_sines<Formula>(sines, x, where(~outer, y));
        else return Core::template with_sines<Formula>(sines, where(~outer, x), y);
    }
    static ints refuse(ints re, ints im) requires(is_single&& Core::overflows) {
        return outside_range<T, Core::underflows>(re, im);
    }
    static ints refuse(ints re, ints im, ints marks) requires(Core::overflows) {
        return marks | outside_range<T, Core::underflows>(re, im);
    }
    static ints reported(ints re, ints im, ints marks) requires(Core::overflows) {
        return outside_range<T, Core::underflows>(re, im) & ~marks;
    }
    static int status(T re, T im) requires(Core::overflows) { return status_outside_range(re, im); }

    static int edge(T x, T y, T& re, T& im) {
        double r, i;
        if constexpr (is_single && has_angle)
            if (is_finite(x) && is_finite(y)) {
                const auto z = far_of_floats(all(double{x}), all(double{y}));
                if (!any_lane((longs)z.marks)) {
                    re = static_cast<T>(r = z.result.first[0]);
                    im = static_cast<T>(i = z.result.second[0]);
                    return status_of_parts<T, Core::overflows, Core::underflows>(VTM_STATUS_OK,
                                                                                 true, r, i);
                }
            }
        const int status = Core::edge(as_number(x), as_number(y), r, i);
        re = static_cast<T>(r), im = static_cast<T>(i);
        return status_of_parts<T, Core::overflows, Core::underflows>(
            status, is_finite(x) && is_finite(y), r, i);
    }
};

// "vzExp"; and "zSin_HA", for those whose real ones are named so.
#define KEF_COMPLEX_NAME(function) \
    static constexpr const char* name = std::is_same_v<T, float> ? "vc" #function : "vz" #function
#define KEF_COMPLEX_TRIG_NAME(function)                                                        \
    static constexpr const char* name =                                                        \
        trig_name<Accuracy, T>({"c" #function "_LA", "c" #function "_HA", "c" #function "_EP", \
                                "z" #function "_LA", "z" #function "_HA", "z" #function "_EP"})

// Define the kernel of a slot from the functor template ComplexFunction<T, accuracy>, T being the
// type of the parts: of one argument, real or complex, and of two.
#define KEF_COMPLEX_OF(type, function, accuracy, E, R)                    \
    void type##function##_##accuracy(std::int32_t n, const E* a, R* r) {  \
        map1<Complex##function<Real<element_##type>, accuracy>>(n, a, r); \
    }
#define KEF_COMPLEX1(type, function, accuracy) \
    KEF_COMPLEX_OF(type, function, accuracy, element_##type, element_##type)
#define KEF_COMPLEX_TO_REAL(type, function, accuracy) \
    KEF_COMPLEX_OF(type, function, accuracy, element_##type, Real<element_##type>)
#define KEF_REAL_TO_COMPLEX(type, function, accuracy) \
    KEF_COMPLEX_OF(type, function, accuracy, Real<element_##type>, element_##type)
#define KEF_COMPLEX2(type, function, accuracy)                                     \
    void type##function##_##accuracy(std::int32_t n, const element_##type* a,      \
                                     const element_##type* b, element_##type* r) { \
        map2<Complex##function<Real<element_##type>, accuracy>>(n, a, b, r);       \
    }

// Function f of two real arguments, or of a complex one, with these exchanged.
template <class F> struct ArgumentsExchanged : F {
    using V = typename F::V;
    using T = Element<V>;
    static ints outside(ints x, ints y) { return F::outside(y, x); }
    static ints beyond(ints x, ints y) requires requires(ints h) { F::beyond(h, h); }
    { return F::beyond(y, x); }
    static V undefined(V x, V y) requires requires(V v) { F::undefined(v, v); }
    { return F::undefined(y, x); }
    static auto fast(V x, V y) { return F::fast(y, x); }
    static auto far(V x, V y) requires requires(V v) { F::far(v, v); }
    { return F::far(y, x); }
    static int edge(T x, T y, T& r) requires requires(T v) { F::edge(v, v, v); }
    { return F::edge(y, x, r); }
    static int edge(T x, T y, T& re, T& im) requires requires(T v) { F::edge(v, v, v, v); }
    { return F::edge(y, x, re, im); }
};

// Function f with its complex result changed.
template <class F, class Change> struct ResultChanged : F {
    using T = Element<typename F::V>;
    static auto fast(auto... x) { return Change::of(F::fast(x...)); }
    static auto far(auto... x) requires requires { F::far(x...); }
    { return Change::of(F::far(x...)); }
    static int edge(T x, T& re, T& im) requires requires(T v) { F::edge(v, v, v); }
    { return changed(F::edge(x, re, im), re, im); }
    static int edge(T x, T y, T& re, T& im) requires requires(T v) { F::edge(v, v, v, v); }
    { return changed(F::edge(x, y, re, im), re, im); }

private:
    static int changed(int status, T& re, T& im) {
        const Two<T> r = Change::of(Two<T>{re, im});
        re = r.first, im = r.second;
        return status;
    }
};
struct Exchange {
    template <class V> static Two<V> of(Two<V> x) { return {x.second, x.first}; }
    template <class V> static MarkedBy<V, Two<V>> of(MarkedBy<V, Two<V>> x) {
        return {of(x.result), x.marks};
    }
};
struct Conjugate {
    template <class V> static Two<V> of(Two<V> x) { return {x.first, -x.second}; }
    template <class V> static MarkedBy<V, Two<V>> of(MarkedBy<V, Two<V>> x) {
        return {of(x.result), x.marks};
    }
};
template <class F> using Exchanged = ArgumentsExchanged<ResultChanged<F, Exchange>>;

// Sums, differences and the like part by part: f(count, first) over all 2n parts, in pieces whose
// counts have 31 bits.
inline void over_parts(std::int32_t n, auto f) {
    constexpr std::int32_t most = 1 << 29;
    for (std::int32_t i = 0; i < n;) {
        const std::int32_t count = n - i < most ? n - i : most;
        f(2 * count, 2 * std::ptrdiff_t{i});
        i += count;
    }
}

}  // namespace KEF_VM
