// Rows of the normal, lognormal and multivariate normal laws.
#include "bench/dist_bench.h"

namespace kef::bench {

Section gaussian_laws() { return {}; }

}  // namespace kef::bench
