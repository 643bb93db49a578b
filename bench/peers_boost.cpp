// Boost.Math: scalar special functions, computing doubles in long double (its
// default) or in double ("unpromoted").
#include <boost/math/distributions/normal.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "bench/peers.h"

namespace kef {

namespace {

namespace policies = boost::math::policies;
using Ignore = policies::policy<policies::overflow_error<policies::ignore_error>,
                                policies::domain_error<policies::ignore_error>,
                                policies::pole_error<policies::ignore_error>>;
using Unpromoted = policies::normalise<Ignore, policies::promote_double<false>,
                                       policies::promote_float<false>>::type;

#define ONE(function, policy, name, ulps, expression) \
    {#function, name, ulps, true, one<T, [](T x) { return static_cast<T>(expression); }>},
#define ROWS(policy, name, inverse_ulps, cdf_ulps, gamma_ulps)                   \
    ONE(Erfc, policy, name, 1, boost::math::erfc(x, policy()))                   \
    ONE(ErfInv, policy, name, inverse_ulps, boost::math::erf_inv(x, policy()))   \
    ONE(ErfcInv, policy, name, inverse_ulps, boost::math::erfc_inv(x, policy())) \
    ONE(CdfNorm, policy, name, cdf_ulps,                                         \
        boost::math::cdf(boost::math::normal_distribution<T, policy>(), x))      \
    ONE(CdfNormInv, policy, name, inverse_ulps + .5,                             \
        boost::math::quantile(boost::math::normal_distribution<T, policy>(), x)) \
    ONE(TGamma, policy, name, gamma_ulps, boost::math::tgamma(x, policy()))      \
    ONE(LGamma, policy, name, gamma_ulps, boost::math::lgamma(x, policy()))

template <class T> struct BoostMath {
    // clang-format off
    AddPeers<T> rows = {
        ROWS(Ignore, "Boost", .6, 30, 100)
        ROWS(Unpromoted, "Boost unpromoted", 3, 30, 100)
    };
    // clang-format on
};
const BoostMath<double> d_rows;
const BoostMath<float> s_rows;

}  // namespace

}  // namespace kef
