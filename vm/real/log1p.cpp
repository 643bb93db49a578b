// Log1p: r = ln(1 + x).
//
//   x NaN            NaN
//   x = +infinity    +infinity
//   x = -1           -infinity, singularity
//   x < -1           invalid NaN, domain error
//
// Single HA is a double formula, rounded once; LA and EP compute in single precision.
#include "vm/core/log1p_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

template <class T> struct Log1pRange;
template <> struct Log1pRange<double> {
    static constexpr std::uint32_t large = 0x58F00000;  // 2^400: ln(1 + x) = ln x
    static constexpr std::uint32_t one = 0x3FF00000;
};
template <> struct Log1pRange<float> {
    static constexpr std::uint32_t large = 0x7E800000;  // 2^126, for HA
    static constexpr std::uint32_t one = 0x3F800000;
};

}  // namespace

template <class T, class Accuracy> struct Log1p {
    using V = Vector<T>;
    using Range = Log1pRange<T>;
    KEF_REPORT_NAME(Log1p);
    static constexpr T bound = tiny_bound<T, Accuracy, Tiny::by_size>;
    static constexpr bool far_everywhere = bound > 0;

    static ints outside(ints h) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, head_of(bound), Range::large) &
               not_between(h, negative + head_of(bound), negative + Range::one);
    }
    static ints beyond(ints h) requires(bound > 0) {
        constexpr std::uint32_t negative = 0x80000000;
        return not_between(h, 0, Format<T>::infinity_head) &
               not_between(h, negative, negative + Range::one);
    }
    static V far(V x) requires(bound > 0) {
        return beside_tiny<AtZero::argument>(x, bound, [](V y) {
            if constexpr (std::is_same_v<T, double>) {
                const longs large = y >= 0x1p400;
                if (any_lane(large))
                    return select(large, log_core<Accuracy>(maximum(y, all(1.0))),
                                  fast(where(~large, y)));
            }
            return fast(y);
        });
    }

    static auto fast(V x) {
        if constexpr (std::is_same_v<T, double>) {
            return log1p_core<Accuracy>(x);
        } else if constexpr (std::is_same_v<Accuracy, HA>) {
            return with_sign(rounded_log(log1p_in_double(x)), x);  // of -0
        } else {
            return log1p_single<Accuracy>(x);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == Format<T>::infinity) return r = x, VTM_STATUS_OK;
        if (x == -1) return r = -Format<T>::infinity, VTM_STATUS_SING;
        if (x < -1) return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
        const Parts parts = log_parts(all(1.0 + double(x)));
        if constexpr (std::is_same_v<T, double>) r = rounded(parts)[0];
        else r = rounded_once(parts);
        return VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Log1p, LA)
KEF_MAP1(s, Log1p, HA)
KEF_MAP1(s, Log1p, EP)
KEF_MAP1(d, Log1p, LA)
KEF_MAP1(d, Log1p, HA)
KEF_MAP1(d, Log1p, EP)

}  // namespace kef::vm
