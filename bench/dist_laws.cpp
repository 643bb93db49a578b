// Rows of the other continuous laws.
#include "bench/dist_bench.h"

namespace kef::bench {

Section continuous_laws() { return {}; }

}  // namespace kef::bench
