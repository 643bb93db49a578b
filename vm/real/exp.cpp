// Exp: r = e^x.
//
//   x NaN                        NaN with all bits set
//   x = +infinity, -infinity     +infinity, +0
//   x <= zero_below              +0, underflow
//   x <= subnormal_below         the subnormal result, underflow (also where it
//                                rounds up to the smallest normal number)
//   x >= infinite_above          +infinity, overflow
//
// Single HA is the double formula of LA, rounded once, which is correct for every
// argument (docs/accuracy.md); LA and EP compute in single precision. Outside the
// gate every slot uses the more accurate double formula.
#include "vm/core/exp_core.h"
#include "vm/core/tiny.h"
#include "vm/simd/format.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

namespace {

template <class T> struct ExpBounds;
template <> struct ExpBounds<double> {
    static constexpr std::uint32_t gate = 0x4086232B;     // |x| < 708.39599609375
    static constexpr std::uint32_t gate_la = 0x40859000;  // 690: its terms are normal numbers
    static constexpr double zero_below = from_bits(UINT64_C(0xC0874910D52D3052));  // ln 2^-1075
    static constexpr double subnormal_below =
        from_bits(UINT64_C(0xC086232BDD7ABCD3));                                       // ln 2^-1022
    static constexpr double infinite_above = from_bits(UINT64_C(0x40862E42FEFA39F0));  // ln 2^1024
};
template <> struct ExpBounds<float> {
    static constexpr std::uint32_t gate = 0x42AEAC4F, gate_la = gate;  // |x| < 87.33654
    static constexpr float zero_below = from_bits(0xC2CFF1B5u);        // ln 2^-150
    static constexpr float subnormal_below = from_bits(0xC2AEAC50u);   // ln 2^-126
    static constexpr float infinite_above = from_bits(0x42B17218u);    // ln 2^128
};

}  // namespace

template <class T, class Accuracy>
struct Exp : TinyAside<Exp<T, Accuracy>, T, Accuracy, AtZero::one, Tiny::by_size,
                       std::is_same_v<Accuracy, LA> ? ExpBounds<T>::gate_la : ExpBounds<T>::gate> {
    using V = Vector<T>;
    using Bounds = ExpBounds<T>;
    KEF_REPORT_NAME(Exp);

    static ints beyond(ints h) requires(Exp::bound > 0) {
        return above(magnitude(h), static_cast<std::int32_t>(Bounds::gate - 1));
    }
    static V far(V x) requires(Exp::bound > 0) {
        return beside_tiny<AtZero::one>(x, Exp::bound, [](V y) {
            if constexpr (std::is_same_v<T, double>)
                return exp_of_normal<Accuracy>(exp_reduce<Accuracy>(y));
            else return fast(y);
        });
    }

    static V fast(V x) {
        if constexpr (std::is_same_v<T, double>) return exp_core<Accuracy>(x);
        else if constexpr (std::is_same_v<Accuracy, HA>) return in_double(x, exp_core<LA>);
        else return exp_single<Accuracy>(x);
    }

    static int edge(T x, T& r) {
        if (is_nan(x)) return r = Format<T>::ones, VTM_STATUS_OK;
        if (is_infinite(x)) return r = x > 0 ? x : 0, VTM_STATUS_OK;
        if (x <= Bounds::zero_below) return r = 0, VTM_STATUS_UNDERFLOW;
        if (x >= Bounds::infinite_above) return r = Format<T>::infinity, VTM_STATUS_OVERFLOW;
        if constexpr (std::is_same_v<T, float>)
            r = static_cast<float>(exp_core<LA>(all(double(x)))[0]);
        else if (x <= Bounds::subnormal_below) r = exp_subnormal(x);
        else if (x >= exp_end) r = exp_large(x);
        else r = exp_of_normal<Accuracy>(exp_reduce<Accuracy>(all(x)))[0];
        return x <= Bounds::subnormal_below ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
    }
};

KEF_MAP1(s, Exp, LA)
KEF_MAP1(s, Exp, HA)
KEF_MAP1(s, Exp, EP)
KEF_MAP1(d, Exp, LA)
KEF_MAP1(d, Exp, HA)
KEF_MAP1(d, Exp, EP)

}  // namespace kef::vm
