// The SSE control register for the time of a kernel.
#pragma once

#include <cstdint>

#include <xmmintrin.h>

#include "vm/thread_state.h"

namespace kef::vm {

// Rounds to nearest, and flushes subnormals only where the mode word asks for it.
// Loads the register only if that is a change; puts the caller's control bits
// back at the end. Exception flags stay raised, as they do without a change.
class ControlGuard {
public:
    ControlGuard() : saved_(_mm_getcsr()) {
        constexpr std::uint32_t flush_to_zero = 0x8000, denormals_are_zero = 0x0040;
        const bool flush = (mode() & VTM_FTZDAZ_MASK) == VTM_FTZDAZ_ON;
        const std::uint32_t wanted = flush ? flush_to_zero | denormals_are_zero : 0;
        changed_ = (saved_ & controlled) != wanted;
        if (changed_) [[unlikely]] _mm_setcsr((saved_ & ~controlled) | wanted);
    }
    ~ControlGuard() {
        if (changed_) [[unlikely]] _mm_setcsr(saved_ | (_mm_getcsr() & exception_flags));
    }
    ControlGuard(const ControlGuard&) = delete;
    ControlGuard& operator=(const ControlGuard&) = delete;

private:
    static constexpr std::uint32_t exception_flags = 0x3F;
    static constexpr std::uint32_t controlled = 0xE040;  // FTZ, rounding, DAZ
    std::uint32_t saved_;
    bool changed_;
};

// For kernels that raise no flag at all: what their formulas raise on the way is
// masked and forgotten.
class ExactGuard {
public:
    ExactGuard() : saved_(_mm_getcsr()) {
        constexpr std::uint32_t mask_all = 0x1F80;
        _mm_setcsr(saved_ | mask_all);
    }
    ~ExactGuard() { _mm_setcsr(saved_); }
    ExactGuard(const ExactGuard&) = delete;
    ExactGuard& operator=(const ExactGuard&) = delete;

private:
    std::uint32_t saved_;
};

}  // namespace kef::vm
