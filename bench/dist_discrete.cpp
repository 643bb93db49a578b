// Rows of the discrete laws.
#include "bench/dist_bench.h"

namespace kef::bench {

Section discrete_laws() { return {}; }

}  // namespace kef::bench
