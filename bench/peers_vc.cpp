// Vc. Errors: measured for 1.4.
#include <Vc/Vc>

#include "bench/peers.h"

namespace kef {

template <class T, class Abi>
struct Lanes<Vc::Vector<T, Abi>> {
    using Element = T;
    using Vector = Vc::Vector<T, Abi>;
    static constexpr int count = Vector::size();
    static Vector load(const T* p) { return Vector(p, Vc::Unaligned); }
    static void store(T* p, const Vector& x) { x.store(p, Vc::Unaligned); }
};

namespace {

template <class T>
using C = Vc::Vector<T, Vc::VectorAbi::Sse>;

#define ONE(function, d, s, everywhere, expression) \
    {#function, "Vc", sizeof(T) == sizeof(float) ? s : d, everywhere, \
     one<C<T>, [](const C<T>& x) { return expression; }>},

template <class T>
struct VcVectors {
    AddPeers<T> rows = {
        ONE(Exp, 1.5, 1.5, false, Vc::exp(x))
        ONE(Ln, .86, .86, true, Vc::log(x))
        ONE(Log10, 1.8, 1.8, true, Vc::log10(x))
        ONE(Sqrt, .5, .5, true, Vc::sqrt(x))
        ONE(Sin, 4, 4, false, Vc::sin(x))
        ONE(Cos, 4, 4, false, Vc::cos(x))
        ONE(Asin, 4, 4, true, Vc::asin(x))
        ONE(Atan, .85, 4, true, Vc::atan(x))
        ONE(Trunc, 0, 0, true, Vc::trunc(x))
        ONE(Floor, 0, 0, true, Vc::floor(x))
        ONE(Ceil, 0, 0, true, Vc::ceil(x))
        ONE(Round, 0, 0, false, Vc::round(x))
    };
};
const VcVectors<double> d_rows;
const VcVectors<float> s_rows;

}  // namespace

}  // namespace kef
