// Expm1: r = e^x - 1.
//
//   x NaN                  NaN
//   x = +inf, -inf         +infinity, -1
//   x >= infinite_above    +infinity, overflow
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA and EP compute in single precision.
#include "vm/core/expm1_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The formula holds for |x| < large, and for x < end; below minus_one_from the result is
// -1.
template <class T> struct Expm1Range;
template <> struct Expm1Range<double> {
    static constexpr std::uint32_t large = 0x40862000, end = head_of(exp_end);  // 708
    static constexpr double minus_one_from = -40.0;
    static constexpr double infinite_above = from_bits(UINT64_C(0x40862E42FEFA39F0));  // ln 2^1024
};
template <> struct Expm1Range<float> {
    static constexpr std::uint32_t large = 0x42AE0000, end = 0x42B0C000;  // 87, 88.375
    static constexpr float minus_one_from = -20.0f;
    static constexpr float infinite_above = from_bits(0x42B17218u);  // ln 2^128
};

}  // namespace

template <class T, class Accuracy> struct Expm1 {
    using V = Vector<T>;
    using Range = Expm1Range<T>;
    KEF_REPORT_NAME(Expm1);

    static constexpr T bound = tiny_bound<T, Accuracy, Tiny::by_size>;
    static constexpr bool far_everywhere = true;

    static ints outside(ints h) { return not_between(magnitude(h), head_of(bound), Range::large); }
    static ints beyond(ints h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, 0, Range::end) &
               not_between(h, negative, negative + Format<T>::infinity_head);
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) return expm1_core<Accuracy>(x);
        else if constexpr (std::is_same_v<Accuracy, HA>)
            return with_sign(in_double(x, expm1_core<LA>), x);  // of -0
        else return expm1_single<Accuracy>(x);
    }
    static V far(V x) {
        const V y = maximum(all(Range::minus_one_from), x);
        if constexpr (bound > 0) return beside_tiny<AtZero::argument>(y, bound, fast);
        else return fast(y);
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
