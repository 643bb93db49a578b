// The per-thread state block of vector math.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kef_vm.h"
#include "service/message.h"
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
static_assert(sizeof(ThreadState) <= platform::thread_block_size);
static_assert(std::is_trivial_v<ThreadState>);  // a block of zeros is its initial value

// The calling thread's block, made at its first use. Never fails: where there is
// no memory the process ends with the fatal memory message.
inline ThreadState& thread_state() {
    void* const block = platform::thread_block();
    if (block == nullptr) [[unlikely]]
        fatal_memory_error();
    return *static_cast<ThreadState*>(block);
}

// The same with the mode word read from the environment at first use.
void read_start_up_mode(ThreadState& state);
inline ThreadState& state_with_mode() {
    ThreadState& state = thread_state();
    if (state.mode == 0) [[unlikely]]
        read_start_up_mode(state);
    return state;
}

// Whether any thread has ever asked for flushing of subnormal numbers; the environment cannot.
extern bool flushing_was_asked;

// Whether the calling thread asks for it. Every call of a kernel wants to know, and
// looks into the thread's block only where the answer may be yes.
bool thread_flushes_subnormals();
inline bool flushes_subnormals() {
    return __atomic_load_n(&flushing_was_asked, __ATOMIC_RELAXED) && thread_flushes_subnormals();
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
void store_mode(ThreadState& state, std::uint32_t mode);

// Parses the value of the start-up environment variable into `mode`; false, with
// `mode` untouched, where any token is wrong. `text` is NUL-terminated.
bool parse_mode(const char* text, std::uint32_t& mode);

}  // namespace kef::vm
