# Data fitting beside GSL and Boost (libgsl-dev of the target's architecture and
# libboost-math-dev); not built where they are missing.
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_LIBRARIES gsl gslcblas m)
check_cxx_source_compiles("
  #include <boost/math/interpolators/makima.hpp>
  #include <gsl/gsl_spline.h>
  int main() { gsl_interp_accel_free(gsl_interp_accel_alloc()); }" KEF_HAS_FIT_PEERS)
unset(CMAKE_REQUIRED_LIBRARIES)
if(KEF_HAS_FIT_PEERS)
  add_executable(fit_bench fit_bench.cpp)
  target_link_libraries(fit_bench PRIVATE kef_measure gsl gslcblas m)
endif()
