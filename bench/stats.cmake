# Summary statistics beside Boost.Accumulators, GSL and Eigen (Debian: libboost-dev,
# libgsl-dev of the preset's architecture, libeigen3-dev).
find_path(KEF_EIGEN_INCLUDE Eigen/Dense PATH_SUFFIXES eigen3)
find_path(KEF_BOOST_INCLUDE boost/accumulators/accumulators.hpp)
find_path(KEF_GSL_INCLUDE gsl/gsl_statistics_double.h)
find_library(KEF_GSL_LIBRARY gsl)
find_library(KEF_GSL_CBLAS_LIBRARY gslcblas)
if(KEF_EIGEN_INCLUDE AND KEF_BOOST_INCLUDE AND KEF_GSL_INCLUDE AND KEF_GSL_LIBRARY)
  add_executable(bench_stats stats_bench.cpp stats_order_bench.cpp stats_matrices_bench.cpp)
  target_include_directories(bench_stats PRIVATE ${KEF_EIGEN_INCLUDE} ${KEF_BOOST_INCLUDE} ${KEF_GSL_INCLUDE})
  target_compile_options(bench_stats PRIVATE -O3 -DNDEBUG)
  target_link_libraries(bench_stats PRIVATE kef::kef kef_flags ${KEF_GSL_LIBRARY} ${KEF_GSL_CBLAS_LIBRARY})
endif()
