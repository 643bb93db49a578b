// What the kernels of Erfc and CdfNorm share: with y = x and f = 1, or y = -x and f = 1/2,
// both are f erfc(y sqrt(f)). A `Scale` holds the difference.
//
//   double, and single HA in double   the table, and beyond its end the tail formula; EP: a
//                                     short one
//   single LA, EP                     exp(-u^2) times a rational function
//
// Where the result is subnormal every slot uses the tail formula in double.
#pragma once

#include "vm/core/constants.h"
#include "vm/core/erf_core.h"
#include "vm/core/erf_single.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"

namespace KEF_VM {

// Results are normal, with their low parts, for y < normal_end, and 0 from zero_from on.
struct ErfcLimits {
    double normal_end, zero_from;
};

struct ErfcScale {
    static constexpr bool reversed = false;
    static constexpr float factor = 1;
    // The table holds for y < table_end; for y < -last the result rounds to 2 f.
    static constexpr double table_end = 6, last = 6;
    static constexpr float last_single = 9.1875f;
    static constexpr ErfcLimits of_double = {26.375, 28}, of_single = {9.1875, 10.25};

    template <class T, class Accuracy> static auto near(longs sign, doubles y) {
        return erfc_core<Accuracy>(sign, y);
    }
    template <int shift> static Parts tail(doubles y) { return erfc_tail<shift>(y, all(0.0)); }
    static doubles tail_short(doubles y) { return erfc_tail_short(y); }
    static floats argument_single(floats y) { return y; }
};

struct CdfNormScale {
    static constexpr bool reversed = true;
    static constexpr float factor = 0.5f;
    static constexpr double table_end = 8.375, last = 8.46;
    static constexpr float last_single = 12.9375f;
    static constexpr ErfcLimits of_double = {37.25, 39.5}, of_single = {12.9375, 14.5};

    // 1/sqrt2, its leading 26 bits and the rest.
    static constexpr double R = from_bits(UINT64_C(0x3FE6A09E60000000));
    static constexpr double R_low = from_bits(UINT64_C(0x3E49FCEF32422CBF));

    // y/sqrt2, the high part exact.
    template <class T> static Parts argument(doubles y) {
        if constexpr (std::is_same_v<T, float>) return {y * R, y * R_low};
        const doubles y1 = leading(y), y2 = y - y1;
        return {y1 * R, y1 * R_low + y2 * root_half};
    }

    template <class T, class Accuracy> static auto near(longs sign, doubles y) {
        if constexpr (std::is_same_v<Accuracy, EP>) {
            return 0.5 * erfc_core<EP>(sign, y * root_half);
        } else {
            const Parts u = argument<T>(y);
            const auto r = erfc_core<Accuracy>(sign, u.high, u.low);
            if constexpr (std::is_same_v<Accuracy, LA>) return 0.5 * r;
            else return Parts{0.5 * r.high, 0.5 * r.low};
        }
    }
    template <int shift> static Parts tail(doubles y) {
        const Parts split = argument<double>(y), u = fast_two_sum(split.high, split.low);
        return erfc_tail<shift - 1>(u.high, u.low);
    }
    static doubles tail_short(doubles y) { return 0.5 * erfc_tail_short(y * root_half); }
    static floats argument_single(floats y) { return y * static_cast<float>(root_half); }
};

template <class T, class Accuracy, class Scale> struct ErfcKernel {
    using V = Vector<T>;
    static constexpr bool single = std::is_same_v<T, float>;
    static constexpr bool in_single = single && !std::is_same_v<Accuracy, HA>;
    static constexpr ErfcLimits limits = single ? Scale::of_single : Scale::of_double;

    // Lanes other than first <= |y|, -infinity < y < end.
    static ints held_back(ints h, T first, T end) {
        constexpr std::uint32_t negative = 0x80000000;
        if constexpr (Scale::reversed) h = h ^ INT32_MIN;
        return not_between(h, head_of(first), head_of(end)) &
               not_between(h, negative + head_of(first), negative + Format<T>::infinity_head);
    }
    static constexpr T bound = in_single ? tiny_bound<T, Accuracy, Tiny::by_size> : T(0);
    static constexpr bool far_everywhere = in_single;
    static ints outside(ints h) {
        return held_back(h, bound, T(in_single ? limits.normal_end : Scale::table_end));
    }
    static ints beyond(ints h) { return held_back(h, 0, T(limits.normal_end)); }

    static auto fast(V x) {
        if constexpr (in_single) return near_in_single(x);
        else return result(x, [](doubles y) { return rounded(near<Accuracy>(y)); });
    }
    static auto far(V x) {
        if constexpr (in_single) return beside_tiny<AtZero::constant>(x, bound, fast);
        else if constexpr (std::is_same_v<Accuracy, EP>) return Scale::tail_short(absolute(x));
        else
            return result(x,
                          [](doubles y) { return rounded(Scale::template tail<0>(absolute(y))); });
    }

    static int edge(T x, T& r) {
        const T y = Scale::reversed ? -x : x;
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = y > 0 ? T(0) : T(2 * Scale::factor), VTM_STATUS_OK;
        if (y >= T(limits.zero_from)) return r = 0, VTM_STATUS_UNDERFLOW;
        if constexpr (single) {
            const bool is_near = y < T(Scale::table_end);
            r = rounded_once(is_near ? near<HA>(all(double(x)))
                                     : Scale::template tail<0>(all(double(y))));
        } else {
            const Parts parts = Scale::template tail<1022>(all(y));
            const Parts sum = fast_two_sum(parts.high, parts.low);
            const double high = sum.high[0];
            r = high < 1 ? round_to_subnormal(high, sum.low[0]) : high * 0x1p-1022;
        }
        return r < Format<T>::smallest_normal ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }

private:
    // Single HA with the marks of midpoints.
    static auto result(V x, auto formula) {
        if constexpr (single) {
            return marked_in_double(x, formula);
        } else {
            return formula(x);
        }
    }

    template <class A> static auto near(doubles x) {
        const longs sign = sign_bit(x) ^ (Scale::reversed ? INT64_MIN : 0);  // of y
        // Subnormal intermediate results would take long.
        const doubles y = maximum(minimum(absolute(x), all(Scale::last)), all(0x1p-100));
        return Scale::template near<T, A>(sign, y);
    }

    static floats near_in_single(floats x) {
        const ints negative = Scale::reversed ? x > 0.0f : x < 0.0f;
        const floats y = minimum(absolute(x), all(Scale::last_single));
        const floats w = exp_of_square<Accuracy>(y, Scale::factor) *
                         erfcx_single<Accuracy>(Scale::argument_single(y));
        const floats base = (floats)(negative & (ints)all(2.0f));
        return Scale::factor * (base + flipped(w, negative & INT32_MIN));
    }
};

}  // namespace KEF_VM
