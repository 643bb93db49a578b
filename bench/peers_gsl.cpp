// GSL: scalar special functions in double precision, and complex functions.
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_complex_math.h>

#include "bench/peers.h"

namespace kef {

namespace {

const AddPeers<double> d_rows = {
    {"CdfNorm", "GSL", 2.5, true, one<double, [](double x) { return gsl_cdf_ugaussian_P(x); }>},
    {"CdfNormInv", "GSL", 10, true,
     one<double, [](double x) { return gsl_cdf_ugaussian_Pinv(x); }>},
};

// Complex functions. Errors: measured on ordinary arguments with the 32-bit library, whose products
// are those of the x87.
using Z = std::complex<double>;
gsl_complex in(const Z& z) { return gsl_complex_rect(z.real(), z.imag()); }
Z out(gsl_complex z) { return {GSL_REAL(z), GSL_IMAG(z)}; }

#define Z_ONE(function, ulps, everywhere, name)                         \
    {#function,                                                         \
     "GSL",                                                             \
     ulps,                                                              \
     everywhere,                                                        \
     one<Z, [](const Z& z) { return out(gsl_complex_##name(in(z))); }>, \
     true},
#define Z_TWO(function, ulps, everywhere, name)                                            \
    {#function,                                                                            \
     "GSL",                                                                                \
     ulps,                                                                                 \
     everywhere,                                                                           \
     two<Z, [](const Z& z, const Z& w) { return out(gsl_complex_##name(in(z), in(w))); }>, \
     true},
// clang-format off
const AddPeers<double> z_rows = {
    {"Abs", "GSL", .51, true, one<Z, [](const Z& z) { return gsl_complex_abs(in(z)); }, double>, true},
    {"Arg", "GSL", .6, false, one<Z, [](const Z& z) { return gsl_complex_arg(in(z)); }, double>, true},
    Z_TWO(Add, .5, true, add)
    Z_TWO(Sub, .5, true, sub)
    Z_TWO(Mul, 1, true, mul)
    Z_TWO(Div, 2.8, false, div)
    Z_ONE(Conj, 0, true, conjugate)
    Z_ONE(Exp, 1.9, false, exp)
    Z_ONE(Ln, 131, false, log)
    Z_ONE(Log10, 114, false, log10)
    Z_ONE(Sqrt, .5, false, sqrt)
    Z_ONE(Sin, 1.9, false, sin)
    Z_ONE(Cos, 1.8, false, cos)
    Z_ONE(Tan, 3.5, false, tan)
    Z_ONE(Sinh, 1.9, false, sinh)
    Z_ONE(Cosh, 2.3, false, cosh)
    Z_ONE(Tanh, 3.4, false, tanh)
    Z_ONE(Asin, 1.9, false, arcsin)
    Z_ONE(Acos, 1.9, false, arccos)
    Z_ONE(Atan, 19, false, arctan)
    Z_ONE(Asinh, 2, false, arcsinh)
    Z_ONE(Acosh, 2.3, false, arccosh)
    Z_ONE(Atanh, 19, false, arctanh)
    Z_TWO(Pow, 76, false, pow)
    Z_TWO(Powx, 76, false, pow)
};
// clang-format on

}  // namespace

}  // namespace kef
