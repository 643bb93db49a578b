// The frame of a distribution generator: the vector-math bracket, the blocks, the uniform draws
// and the in-place call through a dispatch slot.
#pragma once

#include <algorithm>
#include <cstdint>

#include "kef_dist.h"
#include "kef_vm.h"
#include "rng/registry.h"
#include "vm/thread_state.h"

namespace kef::dist {

// Numbers of a block; scratch on the stack is counted in blocks.
inline constexpr std::int32_t block = 1024;

// Vector-math mode of the bracket, and of each kernel call inside it.
inline constexpr std::uint32_t bracket_mode = VTM_ERRMODE_CALLBACK, kernel_mode = VTM_FTZDAZ_OFF;

// Keeps the thread's mode word and puts it back bit for bit: SetMode could not restore a field that
// was zero.
class ModeScope {
public:
    explicit ModeScope(std::uint32_t mode) {
        vm::mode();  // a first use on the thread reads the environment
        const vm::ThreadState& state = vm::thread_state();
        mode_ = state.mode;
        zero_mode_ = state.zero_mode;
        kef_vtm_kernel_SetMode(mode);
    }
    ~ModeScope() {
        vm::ThreadState& state = vm::thread_state();
        state.mode = mode_;
        state.zero_mode = zero_mode_;
    }
    ModeScope(const ModeScope&) = delete;
    ModeScope& operator=(const ModeScope&) = delete;

private:
    std::uint32_t mode_;
    bool zero_mode_;
};

// The distribution's own error callback for the time of a call; callback and mode word are the
// caller's again on every way out.
class Bracket {
public:
    explicit Bracket(kef_vtm_error_callback callback)
        : mode_(bracket_mode), callback_(kef_vtm_kernel_SetErrorCallBack(callback)) {}
    ~Bracket() { kef_vtm_kernel_SetErrorCallBack(callback_); }
    Bracket(const Bracket&) = delete;
    Bracket& operator=(const Bracket&) = delete;

private:
    ModeScope mode_;  // first in, last out
    kef_vtm_error_callback callback_;
};

// A call of a dispatch slot under kernel_mode, for instance
//   evaluate(kef_vtm_kernel_dLn_ttab[2], n, r, r);
template <class Function, class... Arguments>
void evaluate(Function* slot, Arguments... arguments) {
    const ModeScope mode(kernel_mode);
    slot(arguments...);
}

// Uniform numbers on [a, b) by the generator's own mapping.
inline std::int32_t draw(kef_stream* stream, std::int32_t n, double* r, double a, double b) {
    return _vtsdRngUniform(VTS_METHOD_STANDARD, stream, n, r, a, b);
}
inline std::int32_t draw(kef_stream* stream, std::int32_t n, float* r, float a, float b) {
    return _vtssRngUniform(VTS_METHOD_STANDARD, stream, n, r, a, b);
}

// Calls make(r, m) for pieces of at most `block` numbers until n stand in r or a status is
// negative. The status of the last piece; VTS_STATUS_OK when n <= 0.
template <class T, class Make>
std::int32_t in_blocks(std::int32_t n, T* r, Make make) {
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
