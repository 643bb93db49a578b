// Rejection by blocks: candidates of a law are made and judged many at a time, the accepted ones
// kept in their order. Candidates are doubles for both element types; the element type is that of
// the draws and of the results.
#pragma once

#include "distributions/closed_form.h"
#include "distributions/uniforms.h"

namespace kef::dist {

// The truth in each of two lanes. (Comparisons and logic of GCC's vectors of 64-bit integers come
// out lane by lane for SSE2.)
struct Lanes {
    __m128d bits;

    friend Lanes operator&(Lanes x, Lanes y) { return {_mm_and_pd(x.bits, y.bits)}; }
    friend Lanes operator|(Lanes x, Lanes y) { return {_mm_or_pd(x.bits, y.bits)}; }
    friend Lanes but_not(Lanes x, Lanes y) { return {_mm_andnot_pd(y.bits, x.bits)}; }
    friend Lanes neither(Lanes x, Lanes y) {
        return {_mm_andnot_pd((x | y).bits, (__m128d)vm::filled<vm::l2>(-1))};
    }
    vm::d2 choose(vm::d2 x, vm::d2 y) const { return vm::select((vm::l2)bits, x, y); }
    int mask() const { return _mm_movemask_pd(bits); }
};
inline Lanes less(vm::d2 x, vm::d2 y) { return {_mm_cmplt_pd((__m128d)x, (__m128d)y)}; }
inline Lanes less_equal(vm::d2 x, vm::d2 y) { return {_mm_cmple_pd((__m128d)x, (__m128d)y)}; }

using vm::both;
// Two neighbours in memory.
inline vm::d2 two(const double* x) { return vm::load_as<vm::d2>(x); }

inline constexpr std::int32_t most_candidates = 512;  // of one round; rounds are even
using Candidates [[gnu::aligned(16)]] = double[most_candidates];

// x of one element type to the other. From single precision: whether `odd` holds for the bits of
// any.
template <class Odd> bool convert(std::int32_t n, const float* x, double* r, Odd odd) {
    constexpr std::int32_t lanes = vm::lanes<float>;
    vm::ints any = {};
    std::int32_t i = 0;
    for (; i < (n & -lanes); i += lanes) {
        const vm::floats some = vm::load(x + i);
        const vm::DoublesPair wide = vm::widen(some);
        any |= odd(vm::heads(some));
        vm::store(r + i, wide.low);
        vm::store(r + i + lanes / 2, wide.high);
    }
    for (; i < n; ++i) {
        any |= odd(vm::heads(vm::all(x[i])));
        r[i] = x[i];
    }
    return vm::any_lane(any);
}
inline void convert(std::int32_t n, const double* x, float* r) {
    constexpr std::int32_t lanes = vm::lanes<float>;
    std::int32_t i = 0;
    for (; i < (n & -lanes); i += lanes)
        vm::store(r + i, vm::narrow(vm::load(x + i), vm::load(x + i + lanes / 2)));
    for (; i < n; ++i) r[i] = static_cast<float>(x[i]);
}
inline void convert(std::int32_t n, const double* x, double* r) { std::copy_n(x, n, r); }

// Each 0 becomes a number within the cell [0, 2^-24) that it stands for, each 1 the middle of the
// last one.
[[gnu::noinline, gnu::cold]] inline std::int32_t inside(kef_stream* stream, std::int32_t n,
                                                        double* u) {
    Uniforms further(stream);
    for (std::int32_t i = 0; i < n; ++i)
        if (!(u[i] > 0)) u[i] = (further.next_cell() + 0.5) * 0x1p-48;
        else u[i] = at_most(1 - 0x1p-25, u[i]);
    return further.status();
}

// n <= 2 * most_candidates uniforms by the mapping to T, as doubles. In single precision all lie
// inside (0, 1): a 0, once in 2^24 numbers, would weigh more than its cell in what is made of its
// logarithm, and some generators round up to 1. In double precision 0 is left to `log_least`.
inline std::int32_t uniforms(kef_stream* stream, std::int32_t n, double* u, double) {
    return draw(stream, n, u, 0.0, 1.0);
}
inline std::int32_t uniforms(kef_stream* stream, std::int32_t n, double* u, float) {
    alignas(16) float r[2 * most_candidates];
    const std::int32_t status = draw(stream, n, r, 0.0f, 1.0f);
    if (status < 0) return status;
    constexpr auto one = std::bit_cast<std::uint32_t>(1.0f);
    const bool any = convert(n, r, u, [](vm::ints x) { return vm::not_between(x, 1, one); });
    return any ? inside(stream, n, u) : status;
}
template <class T> std::int32_t uniforms(kef_stream* stream, std::int32_t n, double* u) {
    return uniforms(stream, n, u, T());
}

// ln 2^-64: generators make no uniform below this but 0, whose logarithm would be -744.
inline constexpr double log_least = -44.3614195558365;

// u: first[i], second[i] for the candidates i < n.
struct Pairs {
    alignas(16) double first[2 * most_candidates];
    double* second;

    template <class T> std::int32_t draw(kef_stream* stream, std::int32_t n) {
        second = first + n;
        return uniforms<T>(stream, 2 * n, first);
    }
};

// 1 / shape where it is finite: no 0 * infinity out of a tiny shape.
inline double finite_inverse(double shape) { return std::min(1 / shape, 1e300); }

// r = e^(factor x) for results of at most 1, subnormal ones included, at one speed: by the square
// of the root, whose logarithm never leaves the normal range. x below `least` counts as that.
inline void exp_of_negative(std::int32_t n, const double* x, double* r, double factor,
                            double least = -__builtin_inf()) {
    const double half = 0.5 * factor, bound = std::max(-700.0, half * least);
    transform(
        n, r, [=](auto v) { return at_least(bound, half * v); }, x);
    exp(n, r);
    transform(
        n, r, [](auto v) { return v * v; }, r);
}

// The candidates whose quick tests did not decide. A candidate whose sign bit is set is rejected.
class Undecided {
public:
    // Candidates i and i + 1, where the lane is set.
    void add(std::int32_t i, Lanes lanes) {
        const int bits = lanes.mask();
        index_[count_] = static_cast<std::int16_t>(i);
        count_ += bits & 1;
        index_[count_] = static_cast<std::int16_t>(i + 1);
        count_ += bits >> 1;
    }
    std::int32_t count() const { return count_; }

    // to[j] = x of the j-th; `to` may be x.
    void gather(const double* x, double* to) const {
        for (std::int32_t j = 0; j < count_; ++j) to[j] = x[index_[j]];
    }
    // Rejects the j-th candidate of x where margin(j) is negative.
    template <class Margin> void settle(double* x, Margin margin) const {
        for (std::int32_t j = 0; j < count_; ++j)
            x[index_[j]] = __builtin_copysign(x[index_[j]], margin(j));
    }

    static constexpr double rejected = -1;

private:
    std::int16_t index_[most_candidates];
    std::int32_t count_ = 0;
};

// Moves the candidates that are not rejected to the front.
inline std::int32_t keep_accepted(std::int32_t n, double* x) {
    std::int32_t kept = 0;
    for (std::int32_t i = 0; i < n; i += 2) {
        const vm::d2 v = two(x + i);
        const int negative = _mm_movemask_pd((__m128d)v);
        x[kept] = v[0];
        kept += ~negative & 1;
        x[kept] = v[1];
        kept += 1 - (negative >> 1);
    }
    return kept;
}

// n numbers of a law on [0, inf). law.propose(k, x), k even, puts k candidates into x, the rejected
// ones with their sign bit set, and returns a status. What a round accepts beyond n is dropped.
//
// A law accepts a candidate with probability 1/4 at least. Where a hundred rounds in a row
// (of four candidates or more: a chance of 10^-49) bring nothing, the stream does not make
// random numbers, and the rest of the numbers is law.center().
template <class T, class Law> std::int32_t by_rejection(std::int32_t n, T* r, const Law& law) {
    constexpr int most_barren = 100;
    Candidates x;
    std::int32_t status = VTS_STATUS_OK;
    for (int barren = 0; n > 0;) {
        const std::int32_t k =
            n < most_candidates ? std::min((n + n / 4 + 3) & ~1, most_candidates) : most_candidates;
        status = law.propose(k, x);
        if (status < 0) return status;
        const std::int32_t kept = std::min(keep_accepted(k, x), n);
        convert(kept, x, r);
        r += kept;
        n -= kept;
        barren = kept > 0 ? 0 : barren + 1;
        if (barren == most_barren) {
            std::fill_n(r, n, static_cast<T>(law.center()));
            break;
        }
    }
    return status;
}

}  // namespace kef::dist
