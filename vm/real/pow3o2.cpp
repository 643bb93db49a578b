// Pow3o2: r = x^(3/2).
//
//   x NaN                   NaN
//   x = +-0                 +0
//   x < 0, x = -infinity    invalid NaN, domain error
//   x = +infinity           +infinity
//   power too large         +infinity, overflow
//   exact power below the smallest normal number: rounded, underflow
//
// Double HA: (t + d)^3 with t the root cut to 17 bits, so that t^3 is exact: 0.51 ulp; with fused
// operations x times the root in two parts. LA is x sqrt(x), 1.4 ulp; in double with fused
// operations x^2 x^(-1/2), 2.0 ulp, which is not always exact where x is a square; also EP. Single
// HA is that in double, rounded once.
#include "vm/core/inverse_root.h"
#include "vm/core/scaling.h"
#include "vm/simd/double_double.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// Where the power is a normal number; and the parts of double HA too.
template <class T> struct Pow3o2Range;
template <> struct Pow3o2Range<double> {
    static constexpr double small = 0x1p-681, large = 0x1p682, parts_from = 0x1p-607;
};
template <> struct Pow3o2Range<float> { static constexpr float small = 0x1p-84f, large = 0x1p85f; };

inline auto times_root(auto x) { return x * short_root(x); }
// x^2 x^(-1/2) where that takes fewer cycles than the root.
inline doubles short_power(doubles x) {
    if constexpr (!is_fused) return times_root(x);
    const auto [t, xt, e] = root_estimate(x);
    return times_inverse_root(x * xt, e);
}

// x^(3/2) = high + low; high with 51 bits, or a product and its error.
inline Parts pow3o2_parts(doubles x) {
    if constexpr (is_fused) {
        const auto [t, xt, e] = root_estimate(x);
        const doubles s = times_inverse_root(xt, e), high = x * s;
        const doubles rest = negative_multiply_add(s, s, x) * (0.5 * t);  // sqrt(x) - s
        return {high, multiply_add(x, rest, multiply_subtract(x, s, high))};
    }
    const doubles s = square_root(x);
    const doubles t = leading<36>(s), t2 = t * t;
    const doubles d = (x - t2) / (s + t);  // sqrt(x) - t
    return {t2 * t, d * (3.0 * t2 + d * (3.0 * t + d))};
}

}  // namespace

template <class T, class Accuracy> struct Pow3o2 {
    using V = Vector<T>;
    KEF_REPORT_NAME(Pow3o2);

    using Range = Pow3o2Range<T>;
    static constexpr bool in_parts = std::is_same_v<T, double> && std::is_same_v<Accuracy, HA>;

    static ints beyond(ints h) requires(in_parts) {
        return not_between(h, head_of(Range::small), head_of(Range::large));
    }
    static V far(V x) requires(in_parts) { return fast(x * 0x1p200) * 0x1p-300; }
    static ints outside(ints h) {
        if constexpr (in_parts)
            return not_between(h, head_of(Range::parts_from), head_of(Range::large));
        return not_between(h, head_of(Range::small), head_of(Range::large));
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<Accuracy, LA>) {
            if constexpr (std::is_same_v<T, double>) return short_power(x);
            else return times_root(x);
        } else if constexpr (std::is_same_v<T, double>) {
            return rounded(pow3o2_parts(x));
        } else {
            return in_double(x, times_root<doubles>);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 0) return r = 0, VTM_STATUS_OK;
        if (x < 0) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if constexpr (std::is_same_v<T, double>) {
            const int e = exponent_of(x) & -2;
            const Parts power = pow3o2_parts(all(scaled(x, -e)));
            r = round_scaled(power.high[0], power.low[0], e / 2 * 3);
        } else {
            r = static_cast<float>(times_root(all(double(x)))[0]);
        }
        if (is_infinite(r)) return VTM_STATUS_OVERFLOW;
        return r < Format<T>::smallest_normal ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Pow3o2, LA)
KEF_MAP1(s, Pow3o2, HA)
KEF_MAP1(d, Pow3o2, LA)
KEF_MAP1(d, Pow3o2, HA)

}  // namespace kef::vm
