// The recurrence of the Mersenne twister of word length 32:
//   x[k+n] = x[k+m] ^ ((upper bits of x[k], lower bits of x[k+1]) A)
// with y A = y >> 1, ^ a where y is odd. A vector of words a step.
#pragma once

#include <cstdint>

#include "vm/simd/words.h"

namespace kef::rng {

// All bits of odd words.
inline std::uint32_t odd(std::uint32_t x) { return -(x & 1); }
inline vm::uints odd(vm::uints x) { return (vm::uints)((vm::ints)(x << 31) >> 31); }

template <std::int32_t n, std::int32_t m, std::uint32_t lower_mask> struct Twister {
    static constexpr std::int32_t width = vm::lanes<std::uint32_t>;
    static_assert(m >= width && n - m >= width);
    static constexpr std::uint32_t upper_mask = ~lower_mask;
    template <class W> static W step(W x0, W x1, W xm, std::uint32_t a) {
        const W y = (x0 & upper_mask) | (x1 & lower_mask);
        return xm ^ y >> 1 ^ (odd(x1) & a);
    }

    // The next n words in place.
    static void regenerate(std::uint32_t* x, std::uint32_t a) {
        run(x, x, 0, n - m, m, a);
        run(x, x, n - m, n - 1, m - n, a);
        x[n - 1] = step(x[n - 1], x[0], x[m - 1], a);
    }
    // The next `count` words behind the n.
    static void extend(std::uint32_t* x, std::int32_t count, std::uint32_t a) {
        run(x + n, x, 0, count, m, a);
    }

private:
    // r[k] for first <= k < last from x[k], x[k+1] and x[k+distance].
    static void run(std::uint32_t* r, const std::uint32_t* x, std::int32_t first, std::int32_t last,
                    std::int32_t distance, std::uint32_t a) {
        std::int32_t k = first;
#pragma GCC unroll 2
        for (; k + width <= last; k += width)
            vm::store(r + k,
                      step(vm::load(x + k), vm::load(x + k + 1), vm::load(x + k + distance), a));
        for (; k < last; ++k) r[k] = step(x[k], x[k + 1], x[k + distance], a);
    }
};

// y ^= y >> u; y ^= y << 7 & b; y ^= y << 15 & c; y ^= y >> 18.
template <int u> struct Tempering {
    std::uint32_t b, c;

    template <class W> W operator()(W y) const {
        y ^= y >> u;
        y ^= y << 7 & b;
        y ^= y << 15 & c;
        return y ^ y >> 18;
    }
    void operator()(const std::uint32_t* x, std::int32_t n, std::uint32_t* r) const {
        constexpr std::int32_t width = vm::lanes<std::uint32_t>;
        std::int32_t i = 0;
#pragma GCC unroll 2
        for (; i + width <= n; i += width) vm::store(r + i, (*this)(vm::load(x + i)));
        for (; i < n; ++i) r[i] = (*this)(x[i]);
    }
};

}  // namespace kef::rng
