// Standard gamma numbers.
#pragma once

#include "distributions/frame.h"

namespace kef::dist {

// n numbers of shape alpha > 0 and scale 1, inside a bracket.
template <class T> std::int32_t standard_gamma(kef_stream* stream, std::int32_t n, T* r, T alpha);

}  // namespace kef::dist
