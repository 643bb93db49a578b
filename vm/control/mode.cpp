// Mode word, error status and callback of the calling thread.
#include "service/platform.h"
#include "vm/control/thread_state.h"

namespace kef::vm {

bool flushing_was_asked = false;

void store_mode(ThreadState& state, std::uint32_t mode) {
    if ((mode & VTM_FTZDAZ_MASK) == VTM_FTZDAZ_ON)
        __atomic_store_n(&flushing_was_asked, true, __ATOMIC_RELAXED);
    state.mode = mode;
    state.zero_mode = mode == 0;
}

namespace {

constexpr char mode_variable[] = "KEF_VTM_MODE";
constexpr std::size_t mode_variable_size = 256;  // longest value, NUL included
constexpr std::uint32_t default_mode = VTM_HA | VTM_ERRMODE_DEFAULT;

template <class T> T exchange(T& place, T value) {
    const T previous = place;
    place = value;
    return previous;
}

// SetMode; the mode word before.
std::uint32_t merge_mode(ThreadState& state, std::uint32_t requested) {
    const std::uint32_t previous = state.mode, next = merged_mode(previous, requested);
    if (next != previous) store_mode(state, next);
    return previous;
}

}  // namespace

bool thread_flushes_subnormals() {
    return (state_with_mode().mode & VTM_FTZDAZ_MASK) == VTM_FTZDAZ_ON;
}

void read_start_up_mode(ThreadState& state) {
    if (state.zero_mode) return;
    char text[mode_variable_size];
    state.mode = default_mode;
    if (platform::environment_value(mode_variable, text, sizeof text)) parse_mode(text, state.mode);
}

}  // namespace kef::vm

using namespace kef::vm;

// Defines the long name and its short alias.
#define KEF_CONTROL(result, name, ...)                                              \
    result _vtm##name(__VA_ARGS__) __attribute__((alias("kef_vtm_kernel_" #name))); \
    result kef_vtm_kernel_##name(__VA_ARGS__)

extern "C" {

KEF_CONTROL(std::uint32_t, GetMode, void) { return state_with_mode().mode; }

KEF_CONTROL(std::uint32_t, SetMode, std::uint32_t requested) {
    return merge_mode(state_with_mode(), requested);
}

std::int32_t kef_vtm_kernel_GetTTableIndex(void) {
    return kef_vtm_kernel_GetTTableIndexM(0, state_with_mode().mode);
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
    ThreadState& state = state_with_mode();
    if (callback != nullptr)
        merge_mode(state, (state.mode & VTM_ERRMODE_MASK) | VTM_ERRMODE_CALLBACK);
    else if ((state.mode & VTM_ERRMODE_CALLBACK) != 0)
        store_mode(state, state.mode & ~VTM_ERRMODE_CALLBACK);  // SetMode would keep an empty field
    return exchange(state.callback, callback);
}

KEF_CONTROL(kef_vtm_error_callback, GetErrorCallBack, void) { return thread_state().callback; }

KEF_CONTROL(kef_vtm_error_callback, ClearErrorCallBack, void) {
    return kef_vtm_kernel_SetErrorCallBack(nullptr);
}

KEF_CONTROL(const void*, SetInterfInputVectorPointer, const void* start) {
    return thread_state().interface_input = start;
}

}  // extern "C"
