// Mode word, error status and callback of the calling thread.
#include "vm/control/thread_state.h"

namespace kef::vm {

namespace {

constexpr char mode_variable[] = "KEF_VTM_MODE";
constexpr std::size_t mode_variable_size = 256;  // longest value, NUL included
constexpr std::uint32_t default_mode = VTM_HA | VTM_ERRMODE_DEFAULT;

template <class T> T exchange(T& place, T value) {
    const T previous = place;
    place = value;
    return previous;
}

}  // namespace

ThreadState& state_with_mode() {
    ThreadState& state = thread_state();
    if (state.mode == 0 && !state.zero_mode) {
        char text[mode_variable_size];
        std::uint32_t value = default_mode;
        if (platform::environment_value(mode_variable, text, sizeof text)) parse_mode(text, value);
        state.mode = value;
    }
    return state;
}

void store_mode(std::uint32_t mode) {
    ThreadState& state = thread_state();
    state.mode = mode;
    state.zero_mode = mode == 0;
}

}  // namespace kef::vm

using namespace kef::vm;

// Defines the long name and its short alias.
#define KEF_CONTROL(result, name, ...)                                              \
    result _vtm##name(__VA_ARGS__) __attribute__((alias("kef_vtm_kernel_" #name))); \
    result kef_vtm_kernel_##name(__VA_ARGS__)

extern "C" {

KEF_CONTROL(std::uint32_t, GetMode, void) { return mode(); }

KEF_CONTROL(std::uint32_t, SetMode, std::uint32_t requested) {
    const std::uint32_t previous = mode();
    const std::uint32_t next = merged_mode(previous, requested);
    if (next != previous) store_mode(next);
    return previous;
}

std::int32_t kef_vtm_kernel_GetTTableIndex(void) {
    return kef_vtm_kernel_GetTTableIndexM(0, mode());
}

std::int32_t kef_vtm_kernel_GetTTableIndexM(std::int32_t, std::uint32_t mode_word) {
    return static_cast<std::int32_t>(mode_word & VTM_ACCURACY_MASK) - 1;
}

KEF_CONTROL(std::int32_t, GetErrStatus, void) { return thread_state().status; }

KEF_CONTROL(std::int32_t, SetErrStatus, std::int32_t status) {
    return exchange(thread_state().status, status);
}

KEF_CONTROL(std::int32_t, ClearErrStatus, void) { return exchange(thread_state().status, 0); }

KEF_CONTROL(kef_vtm_error_callback, SetErrorCallBack, kef_vtm_error_callback callback) {
    if (callback != nullptr)
        kef_vtm_kernel_SetMode((mode() & VTM_ERRMODE_MASK) | VTM_ERRMODE_CALLBACK);
    else if ((mode() & VTM_ERRMODE_CALLBACK) != 0)
        store_mode(mode() & ~VTM_ERRMODE_CALLBACK);  // SetMode would keep an empty field
    return exchange(thread_state().callback, callback);
}

KEF_CONTROL(kef_vtm_error_callback, GetErrorCallBack, void) { return thread_state().callback; }

KEF_CONTROL(kef_vtm_error_callback, ClearErrorCallBack, void) {
    return kef_vtm_kernel_SetErrorCallBack(nullptr);
}

KEF_CONTROL(const void*, SetInterfInputVectorPointer, const void* start) {
    return thread_state().interface_input = start;
}

}  // extern "C"
