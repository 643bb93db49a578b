// Eigen, its array expressions. Errors: measured for 3.4.
#include <eigen3/Eigen/Core>
#include <eigen3/unsupported/Eigen/SpecialFunctions>

#include "bench/peers.h"

namespace kef {

namespace {

#define ARRAY(function, d, s, everywhere, expression)                          \
    {#function, "Eigen", single ? s : d, everywhere, [](Batch<T>& batch) {     \
         using Array = Eigen::Array<T, Eigen::Dynamic, 1>;                     \
         const Eigen::Map<const Array> x(batch.a.data(), batch.size()),        \
             y(batch.b.data(), batch.size());                                  \
         Eigen::Map<Array>(batch.result[0].data(), batch.size()) = expression; \
     }},

template <class T> struct EigenArrays {
    static constexpr bool single = sizeof(T) == sizeof(float);
    // clang-format off
    AddPeers<T> rows = {
        ARRAY(Exp, 1.5, 1.5, false, x.exp())
        ARRAY(Ln, 1.5, 1.5, false, x.log())
        ARRAY(Sqrt, .5, .5, !single, x.sqrt())
        ARRAY(InvSqrt, 1.5, 1.5, true, x.sqrt().inverse())
        ARRAY(InvSqrt, 3.5, 3.5, false, x.rsqrt())
        ARRAY(Pow3o2, 1.3, 1.3, true, x * x.sqrt())
        ARRAY(Div, .5, .5, true, x / y)
        ARRAY(Inv, .5, .5, true, x.inverse())
        ARRAY(Add, .5, .5, true, x + y)
        ARRAY(Sub, .5, .5, true, x - y)
        ARRAY(Mul, .5, .5, true, x * y)
        ARRAY(Sqr, .5, .5, true, x.square())
        ARRAY(Abs, 0, 0, true, x.abs())
        ARRAY(Floor, 0, 0, true, x.floor())
        ARRAY(Ceil, 0, 0, true, x.ceil())
    };
    // clang-format on
};
const EigenArrays<double> d_rows;
const EigenArrays<float> s_rows;

// Vectorized in single precision only.
constexpr bool single = true;
using T = float;
// clang-format off
const AddPeers<float> more_s_rows = {
    ARRAY(Sin, 2, 2, true, x.sin())
    ARRAY(Cos, 2.1, 2.1, true, x.cos())
    ARRAY(Tanh, 5.2, 5.2, true, x.tanh())
    ARRAY(Erf, 6.3, 6.3, true, x.erf())
};
// clang-format on

}  // namespace

}  // namespace kef
