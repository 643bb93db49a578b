// The logarithm of |z|^2 and the angle of z.
#pragma once

#include "vm/core/atan2_core.h"
#include "vm/core/log1p_core.h"
#include "vm/core/pow_core.h"
#include "vm/core/two_part.h"

namespace KEF_VM {

// x^2 + y^2 of the larger part x: high + low, normalised, and what is left.
struct NormParts {
    Parts sum;
    doubles least;
};
inline NormParts norm_parts(doubles x, doubles y) {
    const Parts x2 = two_square(x), y2 = two_square(y);
    const Parts sum = fast_two_sum(x2.high, y2.high), low = two_sum(x2.low, y2.low);
    const Parts rest = two_sum(sum.low, low.high);
    return {fast_two_sum(sum.high, rest.high), rest.low + low.low};
}

// Its logarithm: how an argument is reduced, and ln c + ln(1 + r) of that.
inline Parts log_of_norm(const NormParts& x, auto log) {
    const auto reduced = log.reduced(x.sum.high);
    const doubles factor = log_rest_factor(x.sum.high, reduced.z, inverse_of(reduced));
    const Parts v = log_argument(reduced);
    const Parts r = fast_two_sum(v.high, x.sum.low * factor);
    return normalised(log.sum(reduced, {r.high, (r.low + v.low) + x.least * factor}));
}

struct PlainLog {
    static auto reduced(doubles x) { return log_reduce_long(x); }
    static Parts sum(const auto& x, Parts r) { return log_sum(x, r); }
};
struct ExtendedLog {
    static auto reduced(doubles x) { return log_reduce(x); }
    static Parts sum(const LogReduced& x, Parts r) { return log_extended_sum(x, x.k, r); }
};

// ln(x^2 + y^2), x and y not negative. HA: the squares exactly, their sum in three parts: nothing
// is lost where it is next to 1, down to |z|^2 - 1 = 2^-106. Else next to 1 from
// (a - 1)(a + 1) + b^2 with the larger part a: relative to |ln z|.
template <class Accuracy> inline Number<Accuracy> log_of_norm(doubles x, doubles y) {
    const doubles a = maximum(x, y), b = minimum(x, y);
    if constexpr (std::is_same_v<Accuracy, HA>) {
        return log_of_norm(norm_parts(a, b), PlainLog());
    } else {
        const doubles s = a * a + b * b;
        const doubles w = (a - 1.0) * (a + 1.0) + b * b;
        const doubles rest = where(absolute(s - 1.0) < 0.5, w - (s - 1.0));
        return log_sum_with_rest<Accuracy>(s, rest);
    }
}

// x + e ln 2 in these lanes; e has up to 11 bits.
inline Parts plus_exponent(longs lanes, Parts x, doubles e) {
    return select(lanes, x + Parts{e * ln2_high, e * ln2_low}, x);
}
inline doubles plus_exponent(longs lanes, doubles x, doubles e) {
    return select(lanes, (x + e * ln2_low) + e * ln2_high, x);
}

// The angle of (x, y) in [0, pi], of x of either sign and y >= 0; where both are below 2^-500 that
// of (0, 0), 0 or pi.
inline Parts angle_of(Parts y, Parts x) {
    const longs left = sign_bit(x.high);
    const Parts width = not_zero(flipped(x, left));
    return normalised(turned(atan_quotient(y.high, width.high, y.low, width.low), left));
}
inline doubles angle_of(doubles y, doubles x) {
    return turned(atan_core<LA>(y / not_zero(absolute(x))), sign_bit(x));
}

}  // namespace KEF_VM
