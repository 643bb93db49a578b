// InvSqrt: r = 1 / sqrt(x).
//
//   x NaN                   NaN
//   x = +-0                 +-infinity, singularity
//   x < 0, x = -infinity    invalid NaN, domain error
//   x = +infinity           +0
//
// Double HA corrects the quotient t = 1/sqrt(x) cut to 22 bits, for which 1 - x t^2 is
// exact: 0.51 ulp. Double LA iterates from the bit pattern; also EP. Single EP corrects the bit
// pattern once, LA twice; HA corrects that in double and rounds once. The processor's own estimate
// would be shorter, but its bits differ among makers.
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> struct InvSqrt {
    using V = Vector<T>;
    KEF_REPORT_NAME(InvSqrt);

    // Double: from 2^-960 to 2^1020, so that no part of x and no square of the result is subnormal;
    // beyond, x times a power of four.
    static ints outside(ints h) {
        if constexpr (std::is_same_v<T, double>)
            return not_between(h, head_of(0x1p-960), head_of(0x1p1020));
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }
    static ints beyond(ints h) requires(std::is_same_v<T, double>) {
        return not_between(h, Format<T>::normal_head, Format<T>::infinity_head);
    }
    static V far(V x) requires(std::is_same_v<T, double>) {
        const longs small = x < 1.0;
        return fast(x * select(small, all(0x1p108), all(0x1p-108))) *
               select(small, all(0x1p54), all(0x1p-54));
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            if constexpr (std::is_same_v<Accuracy, LA>) return iterate(x);
            // x^(-1/2) = t (1 - e)^(-1/2), 0 <= e < 2^-20; x t^2 has 9 + 44 bits.
            const doubles t = leading<31>(quotient(x)), t2 = t * t;
            const doubles x_high = leading<44>(x);
            const doubles e = (1.0 - x_high * t2) - (x - x_high) * t2;
            return multiply_add(t, e * multiply_add(e, 0.375, 0.5), t);
        } else {
            if constexpr (std::is_same_v<Accuracy, EP>) return estimate(x, ep);
            const floats y = estimate(x, la), y2 = y * (1.88988157f - (x * y) * y);
            if constexpr (std::is_same_v<Accuracy, LA>) return y2;
            const DoublesPair wide = widen(x), t = widen(y2);
            return narrow(corrected(wide.low, t.low), corrected(wide.high, t.high));
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0) return r = T(1) / x, VTM_STATUS_SING;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x == Format<T>::infinity) return r = 0, VTM_STATUS_OK;
        if constexpr (std::is_same_v<T, double>) r = fast(all(x * 0x1p108))[0] * 0x1p54;
        else r = static_cast<float>(quotient(all(double(x)))[0]);
        return VTM_STATUS_OK;
    }

private:
    static doubles quotient(doubles x) { return 1.0 / square_root(x); }

    // y P(e), e = x y^2, with y by halving the bit pattern, within 3.3% of a multiple of x^(-1/2)
    // that makes the leading coefficient of P 1. EP: x^(-1/2), relative error 2^-15.6; LA:
    // 2^(-1/3) of it, 2^-15.1, for which Newton's step needs no factor. tools/invsqrt.cpp
    struct Start {
        std::int32_t magic;
        float c0, c1;
    };
    static constexpr Start ep = {0x5F111000, 2.28251982f, -2.25330663f};
    static constexpr Start la = {0x5F096000, 1.89753997f, -2.05475211f};
    static floats estimate(floats x, const Start& start) {
        const floats y = (floats)(start.magic - (ints)((uints)x >> 1));
        const floats e = (x * y) * y;
        return y * (start.c0 + e * (start.c1 + e));
    }

    // The relative error of t cubed, for t of 2^-21.
    static doubles corrected(doubles x, doubles t) {
        const doubles e = negative_multiply_add(x, t * t, 1.0);
        return multiply_add(t, e * multiply_add(e, 0.375, 0.5), t);
    }

    // From 3.5% by four steps of Newton.
    static doubles iterate(doubles x) {
        const doubles half = x * 0.5;
        doubles y = (doubles)(INT64_C(0x5FE6EB50C7B537A9) - (longs)((ulongs)x >> 1));
        y = y * negative_multiply_add(half * y, y, 1.5);
        y = y * negative_multiply_add(half * y, y, 1.5);
        y = y * negative_multiply_add(half * y, y, 1.5);
        return multiply_add(y, negative_multiply_add(half * y, y, 0.5), y);
    }
};

KEF_MAP1(s, InvSqrt, LA)
KEF_MAP1(s, InvSqrt, HA)
KEF_MAP1(s, InvSqrt, EP)
KEF_MAP1(d, InvSqrt, LA)
KEF_MAP1(d, InvSqrt, HA)

}  // namespace kef::vm
