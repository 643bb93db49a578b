// Vc. Errors: measured for 1.4.
#include <Vc/Vc>

#include "bench/peers.h"

namespace kef {

template <class T, class Abi> struct Lanes<Vc::Vector<T, Abi>> {
    using Element = T;
    using Vector = Vc::Vector<T, Abi>;
    static constexpr int count = Vector::size();
    static Vector load(const T* p) { return Vector(p, Vc::Unaligned); }
    static void store(T* p, const Vector& x) { x.store(p, Vc::Unaligned); }
};

namespace {

template <class T> using C = Vc::Vector<T, Vc::VectorAbi::Sse>;

#define ONE(function, d, s, everywhere, expression) \
    {#function, "Vc", single ? s : d, everywhere,   \
     one<C<T>, [](const C<T>& x) { return expression; }>},

template <class T> struct VcVectors {
    static constexpr bool single = sizeof(T) == sizeof(float);
    // clang-format off
    AddPeers<T> rows = {
        ONE(Exp, 1.5, .93, false, Vc::exp(x))
        ONE(Ln, .86, .86, true, Vc::log(x))
        ONE(Log10, 1.9, 2, true, Vc::log10(x))
        ONE(Sqrt, .5, .5, true, Vc::sqrt(x))
        ONE(Sin, 1.3, 1.9, false, Vc::sin(x))
        ONE(Cos, 1.5, 1.9, false, Vc::cos(x))
        ONE(Asin, 1.2, 2.3, true, Vc::asin(x))
        ONE(Atan, .85, 2.8, true, Vc::atan(x))
        ONE(Trunc, 0, 0, single, Vc::trunc(x))
        ONE(Floor, 0, 0, single, Vc::floor(x))
        ONE(Ceil, 0, 0, single, Vc::ceil(x))
        ONE(Round, 0, 0, false, Vc::round(x))
    };
    // clang-format on
};
const VcVectors<double> d_rows;
const VcVectors<float> s_rows;

}  // namespace

}  // namespace kef
