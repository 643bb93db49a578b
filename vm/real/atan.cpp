// Atan: r = atan x.
//
//   x NaN                       NaN
//   x = +-0                     x
//   |x| >= 2^900, infinite      +-pi/2
//
// No error conditions.
//
// Single HA is the double formula of LA, rounded once; next to a midpoint of floats, as
// for two of all arguments, the edge decides with both parts of HA. LA and EP compute in
// single precision.
#include "vm/core/atan_core.h"
#include "vm/core/atan_single.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

// The first formula holds for |x| < last, and what is above `drowned` does not count beside pi/2.
template <class T, class Accuracy> struct AtanRange {
    static constexpr std::uint32_t last = 0x78300000;  // 2^900
    static constexpr T drowned = T(0x1p100);
};
template <class Accuracy> struct AtanRange<float, Accuracy> {
    static constexpr std::uint32_t last = 0x4C800000;  // 2^26
    static constexpr float drowned = 0x1p26f;
};
template <> struct AtanRange<float, HA> {
    static constexpr std::uint32_t last = 0x7E800000;  // 2^126
};

}  // namespace

template <class T, class Accuracy>
struct Atan : TinyAside<Atan<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                        AtanRange<T, Accuracy>::last> {
    using V = Vector<T>;
    using Range = AtanRange<T, Accuracy>;
    KEF_REPORT_NAME(Atan);

    static ints beyond(ints h) requires(Atan::bound > 0) { return not_finite<T>(h & INT32_MAX); }
    static V far(V x) requires(Atan::bound > 0) {
        return beside_tiny<AtZero::argument>(within(x, Range::drowned), Atan::bound, fast);
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return with_sign(atan_core<Accuracy>(absolute(x)), x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return with_sign(marked_in_double(absolute(x), atan_core<LA>), x);
        } else {
            return with_sign(atan_single<Accuracy>(absolute(x), all(1.0f)), x);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        const T a = x < 0 ? -x : x;
        if (std::is_same_v<T, float> && a < 0x1p64f)
            r = rounded_once(atan_parts<HA>(all(double(a))));
        else r = static_cast<T>(pi / 2);
        if (x < 0) r = -r;
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Atan, LA)
KEF_MAP1(s, Atan, HA)
KEF_MAP1(s, Atan, EP)
KEF_MAP1(d, Atan, LA)
KEF_MAP1(d, Atan, HA)

}  // namespace kef::vm
