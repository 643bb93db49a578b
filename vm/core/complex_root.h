// The square root of a complex number in the first quadrant, Kahan, Branch cuts for complex
// elementary functions (1987): of h = |z|
//
//   t = sqrt((h + x)/2),  s = y/(2 t):  sqrt(x + iy) = t + is,  sqrt(-x + iy) = s + it
#pragma once

#include "vm/core/two_part.h"

namespace KEF_VM {

template <class N> struct ComplexRoot { N larger, smaller; };

// For x, y >= 0, not both 0, whose squares are normal numbers, or that do not count beside the
// other one.
template <class N> inline ComplexRoot<N> complex_root(doubles x, doubles y) {
    if constexpr (std::is_same_v<N, Parts>) {
        const Parts h = root_of_squares(x, y), sum = fast_two_sum(h.high, x);  // h >= x
        const auto [t, inverse] =
            root_and_inverse(times_power(Parts{sum.high, sum.low + h.low}, 0.5));
        return {t, divide({y, doubles{}}, times_power(t, 2), inverse)};
    } else {
        const doubles t = square_root((square_root(x * x + y * y) + x) * 0.5);
        return {t, y * (0.5 / t)};
    }
}

}  // namespace KEF_VM
