// What the kernels of Sin, Cos, SinCos and Tan share: gates, the formula of each slot,
// special results and the names in reports.
//
//   double HA   table and Cody-Waite with a low part (trig_core.h)
//   double LA   one polynomial in plain double arithmetic (trig_plain.h); EP: a shorter one
//   single HA   one polynomial in double, rounded once
//   single LA   one polynomial in single precision; EP: a shorter one; beyond their
//               reductions those of double, up to the largest number (trig_huge.h)
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

// Where the reductions end.
template <class T, class Accuracy> struct TrigLast;
template <> struct TrigLast<double, HA> { static constexpr double near = 3072, far = 0x1p20; };
template <> struct TrigLast<double, LA> { static constexpr double near = 0x1p17, far = near; };
template <> struct TrigLast<double, EP> { static constexpr double near = 0x1p12, far = 0x1p17; };
template <> struct TrigLast<float, HA> { static constexpr float near = 0x1p17, far = near; };
template <> struct TrigLast<float, LA> {
    static constexpr float near = 252, far = Format<float>::infinity;
};
template <> struct TrigLast<float, EP> {
    static constexpr float near = 124, far = Format<float>::infinity;
};

// The formulas of a kernel: near(x) and, where there is one, far(x).
template <class T, class Accuracy, TrigReach reach, Phase phase>
inline Vector<T> sine_fast(Vector<T> x) {
    constexpr bool is_far = reach == TrigReach::far;
    if constexpr (std::is_same_v<T, float> && (is_far || std::is_same_v<Accuracy, HA>)) {
        const floats s = in_double(x, [](doubles y) { return sine_plain<phase, SingleHA>(y); });
        return is_far ? with_huge(x, s, sine_of_turns<phase>) : s;
    } else if constexpr (std::is_same_v<Accuracy, HA>)
        return sine_core < phase == Phase::sine ? sine_bias : cosine_bias, reach > (x);
    else return sine_plain<phase, std::conditional_t<is_far, LA, Accuracy>>(x);
}

template <class T, class Accuracy, TrigReach reach> inline Vector<T> tangent_fast(Vector<T> x) {
    constexpr bool is_far = reach == TrigReach::far;
    if constexpr (std::is_same_v<T, float> && (is_far || std::is_same_v<Accuracy, HA>)) {
        const floats t = in_double(x, [](doubles y) { return tangent_plain<SingleHA>(y); });
        return is_far ? with_huge(x, t, tangent_of_turns) : t;
    } else if constexpr (std::is_same_v<Accuracy, HA>) return tangent_core<reach>(x);
    else return tangent_plain<LA>(x);
}

template <class V> inline Two<V> select(auto mask, Two<V> x, Two<V> y) {
    return {select(mask, x.first, y.first), select(mask, x.second, y.second)};
}

// Gates and formulas of Function<T, Accuracy>, which has compute<reach>(x).
template <class Function, class T, class Accuracy, AtZero at_zero> struct TrigKernel {
    using V = Vector<T>;
    using Last = TrigLast<T, Accuracy>;
    static constexpr T bound = std::is_same_v<T, double> ? T(0x1p-30) : T(0x1p-16);
    static constexpr bool far_everywhere = true;

    static ints outside(ints h) {
        return not_between(magnitude(h), head_of(bound), head_of(Last::near));
    }
    static ints beyond(ints h) {
        return greater(magnitude(h), all(static_cast<std::int32_t>(head_of(Last::far) - 1)));
    }
    static auto fast(V x) { return Function::template compute<TrigReach::near>(x); }
    static auto far(V x) {
        return beside_tiny<at_zero>(x, bound, [](V y) {
            if constexpr (Last::far > Last::near) {
                const auto is_far = absolute(y) >= all(Last::near);
                if (any_lane(is_far)) {
                    const auto r = Function::template compute<TrigReach::far>(y);
                    return all_lanes(is_far) ? r : select(is_far, r, fast(y));
                }
            }
            return fast(y);
        });
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
