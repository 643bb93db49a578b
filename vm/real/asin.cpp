// Asin: r = asin x.
//
//   x NaN                       NaN
//   x = +-1                     +-pi/2
//   |x| > 1                     invalid NaN, domain error
//
// Double HA: the arc sine in two parts, 0.545 ulp. Single HA is the double formula of
// LA, rounded once; LA and EP compute in single precision.
#include "vm/core/asin_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

// Single precision: 1 too, for EP by the second formula.
template <class T, class Accuracy>
struct Asin
    : TinyAside<Asin<T, Accuracy>, T, Accuracy, AtZero::argument, Tiny::by_square,
                Format<T>::one_head + (std::is_same_v<T, float> && !std::is_same_v<Accuracy, EP>)> {
    using V = Vector<T>;
    KEF_REPORT_NAME(Asin);

    static ints beyond(ints h) requires(Asin::bound > 0) {
        return above(magnitude(h), Format<T>::one_head - std::is_same_v<T, double>);
    }
    static V far(V x) requires(Asin::bound > 0) {
        const V r = beside_tiny<AtZero::argument>(x, Asin::bound, fast);
        return select(absolute(x) >= all(T(1)), with_sign(all(T(pi / 2)), x), r);
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, float> && std::is_same_v<Accuracy, HA>) {
            return in_double(x, Asin<double, LA>::fast);
        } else if constexpr (std::is_same_v<Accuracy, EP>) {
            return asin_short(x);
        } else {
            const AsinParts<V> part = asin_parts<Accuracy>(absolute(x));
            // pi/2 - 2 asin u, or asin u.
            const V factor = all(T(1)) - where(part.halved, all(T(3)));
            const auto half = [&](double angle) { return where(part.halved, all(T(angle / 2))); };
            return with_sign(rounded(added_angle<Accuracy>(half(pi), half(pi_low), factor, part)),
                             x);
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if (x == 1 || x == -1) return r = x * T(pi / 2), VTM_STATUS_OK;
        return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
    }
};

KEF_MAP1(s, Asin, LA)
KEF_MAP1(s, Asin, HA)
KEF_MAP1(s, Asin, EP)
KEF_MAP1(d, Asin, LA)
KEF_MAP1(d, Asin, HA)

}  // namespace kef::vm
