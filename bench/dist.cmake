# Distributions beside the C++ standard library, Boost and GSL (libboost-math-dev, which brings
# Boost.Random, and libgsl-dev of the target's architecture); not built where they are missing.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LIBRARIES gsl gslcblas m)
check_cxx_source_compiles("
  #include <boost/random.hpp>
  #include <gsl/gsl_rng.h>
  int main() { gsl_rng_free(gsl_rng_alloc(gsl_rng_mt19937)); }" KEF_HAS_DIST_PEERS)
unset(CMAKE_REQUIRED_LIBRARIES)
if(KEF_HAS_DIST_PEERS)
  add_executable(dist_bench EXCLUDE_FROM_ALL
    dist_bench.cpp dist_gaussian.cpp dist_laws.cpp dist_discrete.cpp)
  target_link_libraries(dist_bench PRIVATE kef_measure gsl gslcblas m)
endif()
