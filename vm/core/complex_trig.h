// Sine and cosine, twice the hyperbolic sine and cosine, as numbers of either kind.
#pragma once

#include "vm/core/complex_scaling.h"
#include "vm/core/hyperbolic_core.h"
#include "vm/core/trig_functions.h"
#include "vm/core/two_part.h"

namespace KEF_VM {

// Of a reduced argument.
inline Two<Parts> sine_cosine(const TrigReduced<>& x) {
    const SineCosine both = sine_cosine_parts(x.k, trig_powers<LongCosine>(x));
    return {flipped(normalised(both.sine), both.sine_sign),
            flipped(normalised(both.cosine), both.cosine_sign)};
}

// sin x and cos x, 0 <= x < TrigLast<double, Accuracy>::near.
template <class Accuracy> inline Two<Number<Accuracy>> sine_cosine(doubles x) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return sine_cosine(trig_reduce<sine_quarters, TrigReach::near>(x));
    } else if constexpr (std::is_same_v<Accuracy, LA>) {
        return sine_cosine_plain<LA, true>(x);
    } else {
        return {sine_plain<Phase::sine, EP>(x), sine_plain<Phase::cosine, EP>(x)};
    }
}

// The same of any finite x >= 0, each reduction where a lane is its own: the near one, that up to
// 2^20, and fractions of a turn. The lanes where none of them is good enough are marked.
template <class Accuracy>
inline MarkedBy<doubles, Two<Number<Accuracy>>> sine_cosine_far(doubles x) {
    MarkedBy<doubles, Two<Number<Accuracy>>> r{};
    const longs is_far = (longs)(x >= TrigLast<double, Accuracy>::near);
    if (!all_lanes(is_far)) r.result = sine_cosine<Accuracy>(x);
    if (!any_lane(is_far)) return r;
    TrigReduced<> reduced = trig_reduce<sine_quarters, TrigReach::far>(x);
    const longs is_huge = (longs)(x >= 0x1p20);
    if (any_lane(is_huge)) {
        const auto [huge, marks] = trig_reduce_huge(x);
        reduced = {(is_huge & ahead(huge, sine_quarters).k) | (~is_huge & reduced.k),
                   select(is_huge, huge.high, reduced.high),
                   select(is_huge, huge.low, reduced.low)};
        r.marks = where(is_huge, marks);
    }
    const Two<Parts> far = sine_cosine(reduced);
    const auto chosen = [&](Parts far, auto near) {
        if constexpr (std::is_same_v<Accuracy, HA>) return select(is_far, far, near);
        else return select(is_far, rounded(far), near);
    };
    r.result = {chosen(far.first, r.result.first), chosen(far.second, r.result.second)};
    return r;
}

// 2 sinh y = E + q of E = e^y - 1, q = E/(E + 1); where E is small with one rounding that counts.
inline doubles twice_sinh(doubles e, doubles q) { return select(e < 0.5, (e + e) - e * q, e + q); }

// Of y >= 0: 2 sinh y and 2 cosh y = E + (2 - q).
template <class Accuracy> inline Two<Number<Accuracy>> twice_hyperbolic(doubles y) {
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const Parts e = normalised(expm1_parts(y)), q = e / (e + 1.0);
        return {e + q, e + (-q + 2.0)};
    } else {
        const doubles e = expm1_core<Accuracy>(y), q = e / (e + 1.0);
        return {twice_sinh(e, q), e + (2.0 - q)};
    }
}
inline constexpr double hyperbolic_last = 700;

// e^x, |x| <= 1500: a number of two parts next to 1 and a power of two, which beyond +-500 is in
// three; or 1 and all of it. `low` is a small correction of x, or nothing.
template <class Accuracy> struct WideExponential {
    Number<Accuracy> number;
    OuterPower power;
};
template <class Accuracy> inline auto wide_exponential(doubles x, auto... low) {
    constexpr std::int64_t shift = INT64_C(1200) << 52;
    ExpReduced reduced = exp_reduce<Accuracy>(x, low...);  // whose power has lost its top
    const longs up = (longs)(x > 500.0), down = (longs)(x < -500.0);
    reduced.power = (longs)((ulongs)reduced.power + (ulongs)((down & shift) - (up & shift))) &
                    INT64_C(0x7FF0000000000000);
    const doubles half = select(up, all(0x1p600), select(down, all(0x1p-600), all(1.0)));
    if constexpr (std::is_same_v<Accuracy, HA>) {
        const ExpParts e = exp_parts(reduced);
        return WideExponential<HA>{normalised({e.high, e.low}), {half, e.power}};
    } else {
        return WideExponential<Accuracy>{all(1.0), {half, exp_of<Accuracy>(reduced)}};
    }
}

}  // namespace KEF_VM
