// Expm1: r = e^x - 1.
//
//   x NaN                  NaN
//   x = +inf, -inf         +infinity, -1
//   x >= infinite_above    +infinity, overflow
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA and EP compute in single precision.
#include "vm/core/expm1_core.h"
#include "vm/core/rounding.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The formula holds for x < large; below minus_one_from the result is -1.
template <class T> struct Expm1Range;
template <> struct Expm1Range<double> {
    static constexpr std::uint32_t large = 0x40862E37;  // 709.776
    static constexpr double minus_one_from = -40.0;
    static constexpr double infinite_above = from_bits(UINT64_C(0x40862E42FEFA39F0));  // ln 2^1024
};
template <> struct Expm1Range<float> {
    static constexpr std::uint32_t large = 0x42B0C000;  // 88.375
    static constexpr float minus_one_from = -20.0f;
    static constexpr float infinite_above = from_bits(0x42B17218u);  // ln 2^128
};

}  // namespace

template <class T, class Accuracy> struct Expm1 {
    using V = Vector<T>;
    using Range = Expm1Range<T>;
    KEF_REPORT_NAME(Expm1);

    static i4 outside(i4 h) {
        constexpr std::uint32_t negative = 0x80000000;
        if constexpr (std::is_same_v<T, double>)
            return not_between(h, 0, Range::large) &
                   not_between(h, negative, negative + Format<T>::infinity_head);
        // A negative NaN comes out of the formula too: no factor of it is NaN besides.
        return greater(h, all(static_cast<std::int32_t>(Range::large - 1)));
    }

    static V fast(V x) {
        const V y = maximum(all(Range::minus_one_from), x);  // the second one where x is NaN
        // with_sign: of -0.
        if constexpr (std::is_same_v<T, double>) return with_sign(expm1_core<Accuracy>(y), x);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            return with_sign(in_double(y, expm1_core<LA>), x);
        else if constexpr (std::is_same_v<Accuracy, LA>) return with_sign(expm1_single<LA>(y), x);
        else return expm1_single<EP>(y);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (is_infinite(x)) return r = x > 0 ? x : -1, VTM_STATUS_OK;
        if (x >= Range::infinite_above) return r = Format<T>::infinity, VTM_STATUS_OVERFLOW;
        if constexpr (std::is_same_v<T, double>) r = exp_large(x);
        else r = static_cast<float>(expm1_core<LA>(all(double(x)))[0]);
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Expm1, LA)
KEF_MAP1(s, Expm1, HA)
KEF_MAP1(s, Expm1, EP)
KEF_MAP1(d, Expm1, LA)
KEF_MAP1(d, Expm1, HA)
KEF_MAP1(d, Expm1, EP)

}  // namespace kef::vm
