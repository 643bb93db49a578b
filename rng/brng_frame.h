// What all basic generators share. A generator G states
//   struct State                               what follows the stream's header
//   using Word                                 its raw word
//   seed(State&, n, words, sub)                status; n > 0, one word 1 where the caller has none
//   words(State&, r, n, sub)                   status; n > 0 raw words, the state advances
//   template <class Real> class Map            Map(sub, a, b), then map(words, n, r), which
//                                              computes in Map::Arithmetic
// and, where the mathematics allows it,
//   leapfrog(stream, State&, k, count), skip(stream, State&, k)   status
//   few, step_over(State&, k [, sub])  up to `few` are passed by this, faster than drawn
// KEF_GENERATOR(Name, G) makes its four registry routines and checks the size of State.
#pragma once

#include <algorithm>
#include <cstdint>

#include "rng/registry.h"
#include "rng/scaled_range.h"
#include "vm/simd/words.h"

namespace kef::rng {

inline std::int32_t sub_generator(const kef_stream* stream) {
    return resolve(stream->header.brng).sub;
}

// The seed of a request without words.
inline constexpr std::uint32_t default_seed[1] = {1};

template <class G>
std::int32_t skip(kef_stream* stream, typename G::State& state, std::uint64_t k) {
    if constexpr (requires { G::few; })
        if (k <= G::few) {
            const auto count = static_cast<std::int32_t>(k);
            if constexpr (requires { G::step_over(state, count); }) G::step_over(state, count);
            else G::step_over(state, count, sub_generator(stream));
            return VTS_STATUS_OK;
        }
    return G::skip(stream, state, k);
}

template <class G>
std::int32_t initialise(std::int32_t method, kef_stream* stream, std::int32_t n,
                        const std::uint32_t* parameters) {
    auto& state = state_of<typename G::State>(stream);
    switch (method) {
        case VTS_INIT_SEED:
            return n > 0 ? G::seed(state, n, parameters, sub_generator(stream))
                         : G::seed(state, 1, default_seed, sub_generator(stream));
        case VTS_INIT_LEAPFROG:
            if constexpr (requires { G::leapfrog(stream, state, 0u, 0); })
                return G::leapfrog(stream, state, parameters[0], n);
            else return VTS_STATUS_NO_LEAPFROG;
        case VTS_INIT_SKIPAHEAD:
            if constexpr (requires { G::skip(stream, state, std::uint64_t{}); })
                return skip<G>(stream, state,
                               parameters[0] | static_cast<std::uint64_t>(parameters[1]) << 32);
            else return VTS_STATUS_NO_SKIPAHEAD;
        default: return VTS_STATUS_BAD_METHOD;
    }
}

template <class G> std::int32_t generate_bits(kef_stream* stream, std::int32_t n, void* r) {
    if (n <= 0) return VTS_STATUS_OK;
    return G::words(state_of<typename G::State>(stream), static_cast<typename G::Word*>(r), n,
                    sub_generator(stream));
}

// Blocks of raw words on the stack, mapped onto [a, b).
template <class G, class Real>
std::int32_t generate_uniform(kef_stream* stream, std::int32_t n, Real* r, Real a, Real b) {
    using Map = typename G::template Map<Real>;
    if constexpr (std::is_same_v<typename Map::Arithmetic, Real>)  // a wider one takes any range
        if (const Real factor = range_factor(a, b); factor != 1) [[unlikely]] {
            const auto status = generate_uniform<G>(stream, n, r, a * factor, b * factor);
            bring_back(n, r, factor, a, b);
            return status;
        }
    constexpr std::int32_t block = 4096 / sizeof(typename G::Word);
    alignas(16) typename G::Word words[block];
    auto& state = state_of<typename G::State>(stream);
    const std::int32_t sub = sub_generator(stream);
    const Map map(sub, a, b);
    while (n > 0) {
        const std::int32_t m = std::min(n, block);
        const std::int32_t status = G::words(state, words, m, sub);
        if (status < 0) return status;
        map(words, m, r);
        r += m;
        n -= m;
    }
    return VTS_STATUS_OK;
}

// Words out of a block of n: `refill` makes the next block in place when the position reaches its
// end, `emit(x, count, r)` gives them out.
template <std::int32_t n, class Refill, class Emit>
void draw_from_block(std::uint32_t (&x)[n], std::int32_t& position, std::uint32_t* r,
                     std::int32_t count, Refill refill, Emit emit) {
    while (count > 0) {
        if (position == n) {
            refill();
            position = 0;
        }
        const std::int32_t taken = std::min(count, n - position);
        emit(x + position, taken, r);
        position += taken;
        r += taken;
        count -= taken;
    }
}

// The same for k words that nobody wants.
template <std::int32_t n, class Refill>
void pass_in_blocks(std::int32_t& position, std::uint64_t k, Refill refill) {
    while (k > static_cast<std::uint64_t>(n - position)) {
        k -= static_cast<std::uint64_t>(n - position);
        refill();
        position = 0;
    }
    position += static_cast<std::int32_t>(k);
}

// Whether a position and a block of n words can be those of a stream: a linear recurrence never
// leads to zeros. `first_mask`: the bits of x[0] that take part in it when the whole block is used.
template <std::int32_t n>
bool valid_block(const std::uint32_t (&x)[n], std::int32_t position,
                 std::uint32_t first_mask = ~std::uint32_t{0}) {
    return position >= 0 && position <= n &&
           ((x[0] & first_mask) != 0 ||
            std::any_of(x + 1, x + n, [](std::uint32_t w) { return w != 0; }));
}

// --- maps of 32-bit words ------------------------------------------------------------------

// r = x s + a with s = (b - a) unit, in double; a float result is that rounded once.
class DoubleScale {
public:
    using Arithmetic = double;
    DoubleScale(double unit, double a, double b) : s_((b - a) * unit), a_(a) {}

    void operator()(const std::uint32_t* x, std::int32_t n, double* r) const {
        std::int32_t i = 0;
#pragma GCC unroll 4
        for (; i + width <= n; i += width) {
            const vm::DoublesPair w = vm::widen(vm::load(x + i));
            vm::store(r + i, scale(w.low));
            vm::store(r + i + width / 2, scale(w.high));
        }
        for (; i < n; ++i) r[i] = scale(static_cast<double>(x[i]));
    }
    void operator()(const std::uint32_t* x, std::int32_t n, float* r) const {
        std::int32_t i = 0;
        for (; i + width <= n; i += width) {
            const vm::DoublesPair w = vm::widen(vm::load(x + i));
            vm::store(r + i, vm::narrow(scale(w.low), scale(w.high)));
        }
        for (; i < n; ++i) r[i] = static_cast<float>(scale(static_cast<double>(x[i])));
    }

private:
    static constexpr std::int32_t width = vm::lanes<std::uint32_t>;
    template <class V> V scale(V x) const { return x * s_ + a_; }
    double s_, a_;
};

// r = x s + a with s = (b - a) 2^-24 in single precision, x the top 24 bits of a word: exact for
// [0, 1), and so never 1.
class TopBitsScale {
public:
    using Arithmetic = float;
    TopBitsScale(float a, float b) : s_((b - a) * 0x1p-24f), a_(a) {}
    void operator()(const std::uint32_t* x, std::int32_t n, float* r) const {
        constexpr std::int32_t width = vm::lanes<std::uint32_t>;
        std::int32_t i = 0;
#pragma GCC unroll 4
        for (; i + width <= n; i += width)
            vm::store(r + i, vm::to_floats((vm::ints)(vm::load(x + i) >> 8)) * s_ + a_);
        for (; i < n; ++i)
            r[i] = static_cast<float>(static_cast<std::int32_t>(x[i] >> 8)) * s_ + a_;
    }

private:
    float s_, a_;
};

// Generators whose raw word is uniform on all 32-bit integers: 32 random bits in a double, 24
// in a float, on [0, 1) never 1.
template <class Real> class FullWordMap;
template <> class FullWordMap<double> : public DoubleScale {
public:
    FullWordMap(std::int32_t, double a, double b) : DoubleScale(0x1p-32, a, b) {}
};
template <> class FullWordMap<float> : public TopBitsScale {
public:
    FullWordMap(std::int32_t, float a, float b) : TopBitsScale(a, b) {}
};

}  // namespace kef::rng

#define KEF_GENERATOR(name, G)                                                                  \
    static_assert(sizeof(G::State) == kef::rng::state_bytes_##name);                            \
    std::int32_t __vtsBRng##name##InitStream(std::int32_t method, kef_stream* stream,           \
                                             std::int32_t n, const std::uint32_t* parameters) { \
        return kef::rng::initialise<G>(method, stream, n, parameters);                          \
    }                                                                                           \
    std::int32_t __vtssBRng##name(kef_stream* stream, std::int32_t n, float* r, float a,        \
                                  float b) {                                                    \
        return kef::rng::generate_uniform<G>(stream, n, r, a, b);                               \
    }                                                                                           \
    std::int32_t __vtsdBRng##name(kef_stream* stream, std::int32_t n, double* r, double a,      \
                                  double b) {                                                   \
        return kef::rng::generate_uniform<G>(stream, n, r, a, b);                               \
    }                                                                                           \
    std::int32_t __vtsiBRng##name(kef_stream* stream, std::int32_t n, void* r) {                \
        return kef::rng::generate_bits<G>(stream, n, r);                                        \
    }                                                                                           \
    bool kef::rng::valid_state_##name(const kef_stream* stream) {                               \
        return G::valid(state_of<G::State>(stream), sub_generator(stream));                     \
    }
