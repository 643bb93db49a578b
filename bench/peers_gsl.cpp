// GSL: scalar special functions in double precision.
#include <gsl/gsl_cdf.h>

#include "bench/peers.h"

namespace kef {

namespace {

const AddPeers<double> d_rows = {
    {"CdfNorm", "GSL", 2.5, true, one<double, [](double x) { return gsl_cdf_ugaussian_P(x); }>},
    {"CdfNormInv", "GSL", 10, true,
     one<double, [](double x) { return gsl_cdf_ugaussian_Pinv(x); }>},
};

}  // namespace

}  // namespace kef
