// libmvec of the GNU C library, its functions by their vector names. Its bound is 4 ulp.
#include "bench/native.h"

// clang-format off
#define FUNCTIONS                                                                         \
    ONE(Exp, exp) ONE(Expm1, expm1) ONE(Ln, log) ONE(Log10, log10) ONE(Log1p, log1p)      \
    TWO(Pow, pow) TWO(Powx, pow) ONE(Cbrt, cbrt) TWO(Hypot, hypot)                        \
    ONE(Sin, sin) ONE(Cos, cos) ONE(Tan, tan) ONE(Asin, asin) ONE(Acos, acos)             \
    ONE(Atan, atan) TWO(Atan2, atan2) ONE(Sinh, sinh) ONE(Cosh, cosh) ONE(Tanh, tanh)     \
    ONE(Asinh, asinh) ONE(Acosh, acosh) ONE(Atanh, atanh) ONE(Erf, erf) ONE(Erfc, erfc)
// clang-format on

// _ZGVdN4v_exp: the instruction set, the number of lanes, the arguments, the function.
#define DOUBLES(shape, name) \
    KEF_BY_WIDTH(_ZGVbN2##shape##name, _ZGVdN4##shape##name, _ZGVeN8##shape##name)
#define FLOATS(shape, name) \
    KEF_BY_WIDTH(_ZGVbN4##shape##name##f, _ZGVdN8##shape##name##f, _ZGVeN16##shape##name##f)

namespace kef {

extern "C" {
#define ONE(function, name)                           \
    NativeDoubles DOUBLES(v_, name)(NativeDoubles x); \
    NativeFloats FLOATS(v_, name)(NativeFloats x);
#define TWO(function, name)                                             \
    NativeDoubles DOUBLES(vv_, name)(NativeDoubles x, NativeDoubles y); \
    NativeFloats FLOATS(vv_, name)(NativeFloats x, NativeFloats y);
FUNCTIONS
#undef ONE
#undef TWO
}

namespace {

#define ONE(function, name) \
    {#function, "libmvec", 4, true, one<V, [](V x) { return CALL(v_, name)(x); }>},
#define TWO(function, name) \
    {#function, "libmvec", 4, true, two<V, [](V x, V y) { return CALL(vv_, name)(x, y); }>},

#define CALL DOUBLES
#define V NativeDoubles
const AddPeers<double> d_rows = {FUNCTIONS};
#undef CALL
#undef V

#define CALL FLOATS
#define V NativeFloats
const AddPeers<float> s_rows = {FUNCTIONS};

}  // namespace

}  // namespace kef
