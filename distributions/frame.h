// The frame of a distribution generator: the vector-math bracket, the blocks, the uniform draws
// and the in-place call through a dispatch slot.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kef_dist.h"
#include "kef_vm.h"
#include "rng/registry.h"
#include "vm/control/mode_scope.h"
#include "vm/simd/blocks.h"
#include "vm/simd/pairs.h"

namespace kef::dist {

// Numbers of a block; scratch on the stack is counted in blocks.
inline constexpr std::int32_t block = 1024;

// Vector-math mode of the bracket, and of each kernel call inside it.
inline constexpr std::uint32_t bracket_mode = VTM_ERRMODE_CALLBACK, kernel_mode = VTM_FTZDAZ_OFF;

// The distribution's own error callback for the time of a call; callback and mode word are the
// caller's again on every way out.
class Bracket : vm::ModeScope {
public:
    explicit Bracket(kef_vtm_error_callback callback)
        : ModeScope(bracket_mode), callback_(state_.callback) {
        state_.callback = callback;  // the mode is that of a set callback already
    }
    ~Bracket() { state_.callback = callback_; }

private:
    kef_vtm_error_callback callback_;
};

// The logarithm of the smallest subnormal double stands for that of zero: in callbacks that replace
// the result of every error, or of a singularity alone.
inline constexpr double log_of_zero = -744.4400719213812;

inline int replace_any(kef_vtm_error_record* record) {
    record->result1 = log_of_zero;
    return 0;
}
inline int replace_singular(kef_vtm_error_record* record) {
    if (record->code == VTM_STATUS_SING) record->result1 = log_of_zero;
    return 0;
}

// A call of a dispatch slot under kernel_mode.
template <class Function, class... Arguments>
void evaluate(Function* slot, Arguments... arguments) {
    const vm::ModeScope mode(kernel_mode);
    slot(arguments...);
}

// In a source file, KEF_IN_PLACE(ln, Ln) defines ln(n, r): r = Ln(r) through slot 2, of both types.
#define KEF_IN_PLACE(name, Function)                                        \
    [[maybe_unused]] inline void name(std::int32_t n, double* r) {          \
        kef::dist::evaluate(kef_vtm_kernel_d##Function##_ttab[2], n, r, r); \
    }                                                                       \
    [[maybe_unused]] inline void name(std::int32_t n, float* r) {           \
        kef::dist::evaluate(kef_vtm_kernel_s##Function##_ttab[2], n, r, r); \
    }

// Uniform numbers on [a, b) by the generator's own mapping.
inline std::int32_t draw(kef_stream* stream, std::int32_t n, double* r, double a, double b) {
    return _vtsdRngUniform(VTS_METHOD_STANDARD, stream, n, r, a, b);
}
inline std::int32_t draw(kef_stream* stream, std::int32_t n, float* r, float a, float b) {
    return _vtssRngUniform(VTS_METHOD_STANDARD, stream, n, r, a, b);
}

// Normal numbers.
inline std::int32_t normal(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                           double a, double sigma) {
    return _vtsdRngGaussian(method, stream, n, r, a, sigma);
}
inline std::int32_t normal(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                           float a, float sigma) {
    return _vtssRngGaussian(method, stream, n, r, a, sigma);
}

// r[i] = formula(x[i]...), r may be one of the x: whole vectors, then one by one; as part of a
// vector where that could be eight and more. The formula takes vectors as well as numbers and gives
// both the same bits.
template <class T, class Formula, class... X>
[[gnu::always_inline]] inline void transform(std::int32_t n, T* r, Formula formula, const X*... x) {
    constexpr std::int32_t lanes = vm::lanes<T>;
    std::int32_t i = 0;
#pragma GCC unroll 4
    for (; i < (n & -lanes); i += lanes) vm::store(r + i, formula(vm::load(x + i)...));
    if constexpr (lanes > 8) {
        if (i < n) vm::store_some(r + i, n - i, formula(vm::load_some(x + i, n - i)...));
    } else {
        for (; i < n; ++i) r[i] = formula(x[i]...);
    }
}

// The larger of a and x, in each lane; the smaller. a where x is NaN.
template <class T, class V> V at_least(T a, V x) {
    if constexpr (std::is_same_v<T, V>) return x > a ? x : a;
    else return vm::maximum(x, vm::filled<V>(a));
}
template <class T, class V> V at_most(T a, V x) {
    if constexpr (std::is_same_v<T, V>) return x < a ? x : a;
    else return vm::minimum(x, vm::filled<V>(a));
}

// Below e^-t, t >= 0, by less than t^4/24.
template <class V> V below_exp(V t) { return 1 - t * (1 - t * (0.5 - t * (1 / 6.0))); }

// Of n pairs the first members to `first`, which may be where the pairs stand, and formula(second
// member) to r.
template <class T, class Formula>
[[gnu::always_inline]] inline void split_pairs(std::int32_t n, const T* pairs, T* first, T* r,
                                               Formula formula) {
    constexpr std::int32_t lanes = vm::lanes<T>;
    std::int32_t i = 0;
    for (; i < (n & -lanes); i += lanes) {
        const auto [x, y] = vm::load_pairs<T>(pairs + 2 * i);
        vm::store(first + i, x);
        vm::store(r + i, formula(y));
    }
    for (; i < n; ++i) {
        const T second = pairs[2 * i + 1];
        first[i] = pairs[2 * i];
        r[i] = formula(second);
    }
}

// The way back: of n pairs the members formula(x[i], first[i]) and formula(x[i], second[i]).
template <class T, class Formula>
void join_pairs(std::int32_t n, T* pairs, const T* x, const T* first, const T* second,
                Formula formula) {
    constexpr std::int32_t lanes = vm::lanes<T>;
    std::int32_t i = 0;
    for (; i < (n & -lanes); i += lanes) {
        const auto v = vm::load(x + i);
        vm::store_pairs(pairs + 2 * i, formula(v, vm::load(first + i)),
                        formula(v, vm::load(second + i)));
    }
    for (; i < n; ++i) {
        pairs[2 * i] = formula(x[i], first[i]);
        pairs[2 * i + 1] = formula(x[i], second[i]);
    }
}

// Calls make(r, m) for pieces of at most `block` numbers until n stand in r or a status is
// negative. The status of the last piece; VTS_STATUS_OK when n <= 0.
template <class T, class Make> std::int32_t in_blocks(std::int32_t n, T* r, Make make) {
    std::int32_t status = VTS_STATUS_OK;
    while (n > 0 && status >= 0) {
        const std::int32_t m = std::min(n, block);
        status = make(r, m);
        r += m;
        n -= m;
    }
    return status;
}

}  // namespace kef::dist
