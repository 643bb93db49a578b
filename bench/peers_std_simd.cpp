// The vectors of the C++ library's parallelism extensions.
#include <experimental/simd>

#include "bench/peers.h"

namespace kef {

namespace stdx = std::experimental;

template <class T> using P = stdx::native_simd<T>;

template <class T, class Abi> struct Lanes<stdx::simd<T, Abi>> {
    using Element = T;
    using Simd = stdx::simd<T, Abi>;
    static constexpr int count = Simd::size();
    static Simd load(const T* p) { return Simd(p, stdx::element_aligned); }
    static void store(T* p, const Simd& x) { x.copy_to(p, stdx::element_aligned); }
};

namespace {

#define ONE(function, ulps, expression) \
    {#function, "std::simd", ulps, true, one<P<T>, [](const P<T>& x) { return expression; }>},

template <class T> struct StdSimd {
    // clang-format off
    AddPeers<T> rows = {
        ONE(Sqrt, .5, stdx::sqrt(x))
        ONE(Ceil, 0, stdx::ceil(x))
        ONE(Floor, 0, stdx::floor(x))
        ONE(Trunc, 0, stdx::trunc(x))
        ONE(Round, 0, stdx::round(x))
        ONE(Rint, 0, stdx::rint(x))
        ONE(NearbyInt, 0, stdx::nearbyint(x))
    };
    // clang-format on
};
const StdSimd<double> d_rows;
const StdSimd<float> s_rows;

}  // namespace

}  // namespace kef
