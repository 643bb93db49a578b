// The SSE control and status register for the time of a kernel.
#pragma once

#include <cstdint>

#include <xmmintrin.h>

#include "vm/control/error.h"
#include "vm/control/thread_state.h"

namespace kef::vm {

// Rounds to nearest, masks all exceptions, and flushes subnormals only where the mode
// word asks for it. Puts the caller's control bits back at the end, and loads the register
// only where that is a change. A trap comes from the error handler alone.
//
// Flags: an arithmetic kernel adds those of its one operation to the caller's. Any other
// forgets what its formulas raise on the way. Those of the error handler stay.
template <bool arithmetic> class ControlGuard {
public:
    ControlGuard() : callers_(_mm_getcsr()) {
        const bool flush = flushes_subnormals();
        own_ = (callers_ & ~controlled) | masks | (flush ? flush_to_zero | denormals_are_zero : 0);
        if (own_ != callers_) [[unlikely]]
            _mm_setcsr(own_);
    }
    ~ControlGuard() {
        if constexpr (arithmetic) {
            // A flag that is loaded together with its mask open does not trap.
            if (own_ != callers_) [[unlikely]]
                _mm_setcsr(callers_ | (_mm_getcsr() & flags));
        } else {
            if (_mm_getcsr() != callers_) _mm_setcsr(callers_);
        }
    }
    ControlGuard(const ControlGuard&) = delete;
    ControlGuard& operator=(const ControlGuard&) = delete;

    // Runs the error handler: with the caller's masks, so that an exception that he
    // unmasked is trapped, and with the flags that he had, so that a signal names the
    // exception of the report; what the handler raises stays.
    template <class Argument, class Result>
    [[gnu::noinline, gnu::cold]] void report(const ElementError<Argument, Result>& error) {
        if (store_status_alone(error.code)) return;
        const std::uint32_t computing = _mm_getcsr();
        _mm_setcsr((own_ & ~(masks | flags)) | (callers_ & (masks | flags)));
        handle_error(error);
        callers_ |= _mm_getcsr() & flags;
        _mm_setcsr(arithmetic ? computing : own_);
    }

private:
    static constexpr std::uint32_t flush_to_zero = 0x8000, denormals_are_zero = 0x0040;
    static constexpr std::uint32_t controlled = 0xE040;  // FTZ, rounding, DAZ
    static constexpr std::uint32_t masks = 0x1F80, flags = 0x003F;
    std::uint32_t callers_, own_;
};

}  // namespace kef::vm
