// The SSE control and status register for the time of a kernel.
#pragma once

#include <cstdint>

#include <xmmintrin.h>

#include "vm/control/thread_state.h"

namespace kef::vm {

// Rounds to nearest, and flushes subnormals only where the mode word asks for it.
// Puts the caller's control bits back at the end, and loads the register only
// where that is a change.
//
// Flags: an arithmetic kernel raises those of its one operation, as the instruction
// does. Any other masks all exceptions and forgets what its formulas raise on the
// way; flags come from the error handler alone, in exception mode.
template <bool arithmetic> class ControlGuard {
public:
    ControlGuard() : callers_(_mm_getcsr()) {
        const bool flush = (mode() & VTM_FTZDAZ_MASK) == VTM_FTZDAZ_ON;
        own_ = (callers_ & ~controlled) | (flush ? flush_to_zero | denormals_are_zero : 0);
        if constexpr (!arithmetic) own_ |= masks;
        if (own_ != callers_) [[unlikely]]
            _mm_setcsr(own_);
    }
    ~ControlGuard() {
        if constexpr (arithmetic) {
            if (own_ != callers_) [[unlikely]]
                _mm_setcsr(callers_ | (_mm_getcsr() & flags));
        } else {
            if (_mm_getcsr() != callers_) _mm_setcsr(callers_);
        }
    }
    ControlGuard(const ControlGuard&) = delete;
    ControlGuard& operator=(const ControlGuard&) = delete;

    // Runs the error handler: with the caller's masks, so that an exception that he
    // unmasked is trapped, and its flags stay.
    template <class Report> void report(Report handle) {
        if constexpr (!arithmetic) _mm_setcsr((own_ & ~masks) | (callers_ & masks));
        handle();
        if constexpr (!arithmetic) {
            callers_ |= _mm_getcsr() & flags;
            _mm_setcsr(own_);
        }
    }

private:
    static constexpr std::uint32_t flush_to_zero = 0x8000, denormals_are_zero = 0x0040;
    static constexpr std::uint32_t controlled = 0xE040;  // FTZ, rounding, DAZ
    static constexpr std::uint32_t masks = 0x1F80, flags = 0x003F;
    std::uint32_t callers_, own_;
};

}  // namespace kef::vm
