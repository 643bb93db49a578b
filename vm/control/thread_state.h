// The per-thread state block of vector math.
#pragma once

#include <cstdint>

#include "kef_vm.h"
#include "service/platform.h"

namespace kef::vm {

struct ThreadState {
    std::uint32_t mode;  // 0 means not yet set, unless zero_mode says otherwise
    std::int32_t status;
    kef_vtm_error_callback callback;
    const void* interface_input;  // start of the caller's whole input vector
    // The mode word was set, to zero: clearing the callback took its last bit.
    bool zero_mode;
};

// The calling thread's block, made at its first use. Never fails: where there is
// no memory the process ends with the fatal memory message.
ThreadState& thread_state();

// The same with the mode word read from the environment at first use.
ThreadState& state_with_mode();

// The thread's mode word, likewise. Every call of a kernel asks for it.
inline std::uint32_t mode() {
    const auto* state = static_cast<const ThreadState*>(platform::thread_slot_get());
    if (state != nullptr && state->mode != 0) [[likely]]
        return state->mode;
    return state_with_mode().mode;
}

// A mode word after SetMode: a field that is zero in `requested` stays; precision control always
// does.
inline std::uint32_t merged_mode(std::uint32_t previous, std::uint32_t requested) {
    constexpr std::uint32_t fields[] = {VTM_ACCURACY_MASK, VTM_ERRMODE_MASK, VTM_FTZDAZ_MASK};
    for (const std::uint32_t field : fields)
        if ((requested & field) != 0) previous = (previous & ~field) | (requested & field);
    return previous;
}

// Stores a mode word as it is, without the field rules of SetMode.
void store_mode(std::uint32_t mode);

// Parses the value of the start-up environment variable into `mode`; false, with
// `mode` untouched, where any token is wrong. `text` is NUL-terminated.
bool parse_mode(const char* text, std::uint32_t& mode);

}  // namespace kef::vm
