// What the kernels of Sin, Cos, SinCos and Tan share: gates, the formula of each slot,
// special results and the names in reports.
//
//   double HA   table and Cody-Waite with a low part (trig_core.h)
//   double LA   one polynomial in plain double arithmetic (trig_plain.h); EP: a shorter one
//   single HA   one polynomial in double, rounded once
//   single LA   one polynomial in single precision; EP: a shorter one; beyond their
//               reductions polynomials in double
//
// Beyond all of these the argument as a fraction of a turn, up to the largest number
// (trig_huge.h); in double with the table, for every slot.
//
// SinCos LA takes both polynomials of one reduction. Where EP would save little it is LA: Tan,
// single SinCos.
//
// What the gates hold back comes to the formula of double HA with the reduction for
// arguments of any size.
#pragma once

#include "vm/core/tiny.h"
#include "vm/core/trig_core.h"
#include "vm/core/trig_huge.h"
#include "vm/core/trig_plain.h"

namespace KEF_VM {

// Where the reductions of the first and of the second formula end.
template <class T, class Accuracy> struct TrigLast;
template <> struct TrigLast<double, HA> { static constexpr double near = 3072, far = 0x1p20; };
template <> struct TrigLast<double, LA> { static constexpr double near = 0x1p17, far = 0x1p20; };
template <> struct TrigLast<double, EP> { static constexpr double near = 0x1p12, far = 0x1p17; };
template <> struct TrigLast<float, HA> { static constexpr float near = 0x1p17f, far = near; };
template <> struct TrigLast<float, LA> { static constexpr float near = 252, far = 0x1p17f; };
template <> struct TrigLast<float, EP> { static constexpr float near = 124, far = 0x1p17f; };

// Single precision by a formula in double.
template <class Accuracy>
using SingleFormula = std::conditional_t<std::is_same_v<Accuracy, HA>, SingleHA, SingleFar>;

// The formulas of a kernel: near(x), far(x) and huge(x).
template <class T, class Accuracy, TrigReach reach, Phase phase>
inline Vector<T> sine_fast(Vector<T> x) {
    constexpr bool is_far = reach == TrigReach::far, is_high = std::is_same_v<Accuracy, HA>;
    constexpr int quarters = phase == Phase::sine ? sine_quarters : cosine_quarters;
    if constexpr (std::is_same_v<T, float> && (is_far || is_high))
        return in_double(x,
                         [](doubles y) { return sine_plain<phase, SingleFormula<Accuracy>>(y); });
    else if constexpr (is_high || (is_far && std::is_same_v<Accuracy, LA>))
        return sine_core<quarters, reach>(x);
    else return sine_plain<phase, std::conditional_t<is_far, LA, Accuracy>>(x);
}
template <class T, class Accuracy, Phase phase> inline auto sine_huge(Vector<T> x) {
    if constexpr (std::is_same_v<T, float>)
        return of_turns<Accuracy>(x, sine_of_turns<phase, SingleFormula<Accuracy>>);
    else {
        const auto [reduced, marks] = trig_reduce_huge<steps_of_vectors>(x);
        constexpr int quarters = phase == Phase::sine ? sine_quarters : cosine_quarters;
        return MarkedBy<doubles>{sine_of(ahead(reduced, quarters).k, trig_powers(reduced)), marks};
    }
}

template <class T, class Accuracy, TrigReach reach> inline Vector<T> tangent_fast(Vector<T> x) {
    constexpr bool is_far = reach == TrigReach::far, is_high = std::is_same_v<Accuracy, HA>;
    if constexpr (std::is_same_v<T, float> && (is_far || is_high))
        return in_double(x, [](doubles y) { return tangent_plain<SingleHA>(y); });
    else if constexpr (is_high || is_far) return tangent_core<reach>(x);
    else return tangent_plain<LA>(x);
}
template <class T, class Accuracy> inline auto tangent_huge(Vector<T> x) {
    if constexpr (std::is_same_v<T, float>)
        return of_turns<Accuracy>(x, tangent_of_turns<SingleFormula<Accuracy>>);
    else {
        const auto [reduced, marks] = trig_reduce_huge<steps_of_vectors>(x);
        return MarkedBy<doubles>{rounded(tangent_parts(ahead(reduced, sine_quarters))), marks};
    }
}

// Gates and formulas of Function<T, Accuracy>, which has compute<reach>(x) and huge(x).
template <class Function, class T, class Accuracy, AtZero at_zero> struct TrigKernel {
    using V = Vector<T>;
    using Last = TrigLast<T, Accuracy>;
    static constexpr T bound = std::is_same_v<T, double> ? T(0x1p-30) : T(0x1p-16);
    static constexpr bool far_everywhere = true;

    static ints outside(ints h) {
        return not_between(magnitude(h), head_of(bound), head_of(Last::near));
    }
    static ints beyond(ints h) { return not_finite<T>(h); }
    static auto fast(V x) { return Function::template compute<TrigReach::near>(x); }
    // Each formula where a lane is its own; huge lanes are far as well.
    static auto far(V x) {
        const auto is_far = absolute(x) >= all(Last::near), is_huge = absolute(x) >= all(Last::far);
        MarkedBy<V, decltype(fast(x))> r{};
        if (!all_lanes(is_far)) r.result = beside_tiny<at_zero>(x, bound, fast);
        if constexpr (Last::far > Last::near)
            if (any_lane(is_far) && !all_lanes(is_huge))
                r.result = select(is_far, Function::template compute<TrigReach::far>(x), r.result);
        if (any_lane(is_huge)) {
            const auto huge = Function::huge(x);
            r = {select(is_huge, huge.result, r.result), where(is_huge, huge.marks)};
        }
        return r;
    }
};

// NaN and infinity; true where the results are settled.
template <class T> inline bool trig_special(T x, T& r, int& status) {
    status = VTM_STATUS_OK;
    if (is_nan(x)) return r = quiet(x), true;
    if (is_infinite(x)) return r = Format<T>::invalid, status = VTM_STATUS_ERRDOM, true;
    return false;
}

// The sum, rounded once to T.
template <class T> inline T rounded_sum(const DoubleDouble<double>& x) {
    if constexpr (std::is_same_v<T, double>) return x.high;
    else return narrow(x.high, x.low);
}

// Reports name the type, the function and the accuracy: "sCos_HA".
template <class Accuracy, class T> constexpr const char* trig_name(const char* const (&names)[6]) {
    constexpr int accuracy = std::is_same_v<Accuracy, LA>   ? 0
                             : std::is_same_v<Accuracy, HA> ? 1
                                                            : 2;
    return names[(std::is_same_v<T, float> ? 0 : 3) + accuracy];
}
#define KEF_TRIG_NAME(function)                                                                \
    static constexpr const char* name =                                                        \
        trig_name<Accuracy, T>({"s" #function "_LA", "s" #function "_HA", "s" #function "_EP", \
                                "d" #function "_LA", "d" #function "_HA", "d" #function "_EP"})

}  // namespace KEF_VM
