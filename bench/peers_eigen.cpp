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

// Square roots of floats, and with AVX-512 of doubles too, come from the processor's estimate by
// Newton's steps: they turn infinity to NaN and subnormal numbers to 0.
#ifdef __AVX512F__
constexpr bool estimated_doubles = true;
#else
constexpr bool estimated_doubles = false;
#endif

template <class T> struct EigenArrays {
    static constexpr bool single = sizeof(T) == sizeof(float),
                          exact_root = !single && !estimated_doubles;
    static constexpr double root = exact_root ? .5 : 3.7, inverse = exact_root ? 1.5 : 3.3,
                            cubed = exact_root ? 1.3 : 4.1;
    // clang-format off
    AddPeers<T> rows = {
        ARRAY(Exp, 1.5, 1.5, false, x.exp())
        ARRAY(Ln, 1.5, 1.5, false, x.log())
        ARRAY(Sqrt, root, root, exact_root, x.sqrt())
        ARRAY(InvSqrt, inverse, inverse, exact_root, x.sqrt().inverse())
        ARRAY(InvSqrt, 3.5, 3.5, false, x.rsqrt())
        ARRAY(Pow3o2, cubed, cubed, exact_root, x * x.sqrt())
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

// Arrays of complex numbers; sums, products and roots in vectors, the rest is the C library's.
#define Z_ARRAY(function, z_ulps, c_ulps, everywhere, R, expression)                            \
    {#function,                                                                                 \
     "Eigen",                                                                                   \
     single_type ? c_ulps : z_ulps,                                                             \
     everywhere,                                                                                \
     [](Batch<T>& batch) {                                                                      \
         using Array = Eigen::Array<std::complex<T>, Eigen::Dynamic, 1>;                        \
         const auto map = [&](const std::vector<T>& v) {                                        \
             return Eigen::Map<const Array>(reinterpret_cast<const std::complex<T>*>(v.data()), \
                                            batch.size());                                      \
         };                                                                                     \
         const auto z = map(batch.a), w = map(batch.b);                                         \
         Eigen::Map<Eigen::Array<R, Eigen::Dynamic, 1>>(                                        \
             reinterpret_cast<R*>(batch.result[0].data()), batch.size()) = expression;          \
     },                                                                                         \
     true},

template <class T> struct ComplexEigenArrays {
    static constexpr bool single_type = sizeof(T) == sizeof(float);
    using Z = std::complex<T>;
    // clang-format off
    AddPeers<T> rows = {
        Z_ARRAY(Abs, .51, .51, true, T, z.abs())
        Z_ARRAY(Arg, .6, .6, true, T, z.arg())
        Z_ARRAY(Add, .5, .5, true, Z, z + w)
        Z_ARRAY(Sub, .5, .5, true, Z, z - w)
        Z_ARRAY(Conj, 0, 0, true, Z, z.conjugate())
        Z_ARRAY(Mul, 1.7, 1.7, false, Z, z * w)
        Z_ARRAY(MulByConj, 1.7, 1.7, false, Z, z * w.conjugate())
        Z_ARRAY(Div, 3.5, 3.3, false, Z, z / w)
        Z_ARRAY(Exp, 2.6, 2.5, true, Z, z.exp())
        Z_ARRAY(Ln, 1.7, 1.2, false, Z, z.log())
        Z_ARRAY(Log10, 3.1, 2.5, true, Z, z.log10())
        Z_ARRAY(Sqrt, 1.8, 3.9, false, Z, z.sqrt())
        Z_ARRAY(Sin, 2.7, 2.6, true, Z, z.sin())
        Z_ARRAY(Cos, 2.6, 2.6, true, Z, z.cos())
        Z_ARRAY(Tan, 3.6, 3.6, true, Z, z.tan())
        Z_ARRAY(Sinh, 2.6, 2.5, true, Z, z.sinh())
        Z_ARRAY(Cosh, 2.7, 2.7, true, Z, z.cosh())
        Z_ARRAY(Tanh, 3.5, 3.5, true, Z, z.tanh())
        Z_ARRAY(Pow, 17, 15, false, Z, z.pow(w))
    };
    // clang-format on
};
const ComplexEigenArrays<double> z_rows;
const ComplexEigenArrays<float> c_rows;

}  // namespace

}  // namespace kef
