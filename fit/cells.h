// Cell search: which breakpoints a site stands between.
//
// All methods give the number of breakpoints that do not exceed the site, except
// that a site at the last breakpoint counts as inside: 0 left of the partition and
// for NaN, cell number + 1 inside, nx right of it.
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "fit/task.h"

namespace kef::fit {

// The bin of a point, truncated; INT32_MIN where that has no 32-bit value.
inline std::int32_t bin_of(double point, double first, double inverse_width) {
    return _mm_cvttsd_si32(_mm_set_sd((point - first) * inverse_width));
}

template <class T>
inline double inverse_bin_width(const T* x, std::uint32_t n, std::uint32_t bins) {
    return 1 / ((double(x[n - 1]) - double(x[0])) / bins);
}

}  // namespace kef::fit
