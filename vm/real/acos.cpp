// Acos: r = acos x.
//
//   x NaN                       NaN
//   x = 1, -1                   +0, pi
//   |x| > 1                     invalid NaN, domain error
//
// As Asin: acos x = pi/2 - asin x; 2 asin u for x > 1/2 and pi - 2 asin u for x < -1/2.
// Single HA is the double formula of LA, rounded once; next to a midpoint of floats, as
// for two of all arguments, the edge decides with both parts of HA.
#include "vm/core/asin_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

// Single precision: 1 too.
template <class T, class Accuracy>
struct Acos : TinyAside<Acos<T, Accuracy>, T, Accuracy, AtZero::constant, Tiny::by_size,
                        Format<T>::one_head + (sizeof(T) == 4)> {
    using V = Vector<T>;
    KEF_REPORT_NAME(Acos);
    static constexpr bool is_single_ha = std::is_same_v<T, float> && std::is_same_v<Accuracy, HA>;

    static auto parts(V x) {
        const AsinParts<V> part = asin_parts<Accuracy>(absolute(x));
        const auto sign = sign_bit(x);
        // x > 1/2: +2; x < -1/2: -2; else -1 with the sign of x.
        const V size = where(part.halved, all(T(3))) - all(T(1));
        const V factor = flipped(size, sign);
        // pi/2, or where halved pi/2 - pi/2 and pi/2 + pi/2: exact.
        const auto base = [&](double angle) {
            const V quarter_turn = all(T(angle / 2));
            return quarter_turn - where(part.halved, (V)((decltype(sign))quarter_turn | sign));
        };
        return added_angle<Accuracy>(base(pi), base(pi_low), factor, part);
    }

    static auto fast(V x) {
        if constexpr (is_single_ha) {
            return marked_in_double(x, Acos<double, LA>::fast);
        } else if constexpr (std::is_same_v<Accuracy, EP>) {
            return acos_short(x);
        } else {
            return rounded(parts(x));
        }
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = quiet(x), VTM_STATUS_OK;
        if constexpr (is_single_ha) {
            if (x < 1 && x > -1)
                return r = rounded_once(Acos<double, HA>::parts(all(double(x)))), VTM_STATUS_OK;
        }
        if (x == 1) return r = 0, VTM_STATUS_OK;
        if (x == -1) return r = T(pi), VTM_STATUS_OK;
        return r = Format<T>::invalid, VTM_STATUS_ERRDOM;
    }
};

KEF_MAP1(s, Acos, LA)
KEF_MAP1(s, Acos, HA)
KEF_MAP1(s, Acos, EP)
KEF_MAP1(d, Acos, LA)
KEF_MAP1(d, Acos, HA)

}  // namespace kef::vm
