#include "vm/control/thread_state.h"

#include "service/message.h"

namespace kef::vm {

namespace {

// Null when there is no memory or no slot.
ThreadState* create_state() {
    auto* state = static_cast<ThreadState*>(platform::heap_allocate(sizeof(ThreadState)));
    if (state == nullptr) return nullptr;
    *state = {};
    if (!platform::thread_slot_set(state)) {
        platform::heap_free(state);
        return nullptr;
    }
    return state;
}

[[gnu::noinline, gnu::cold]] ThreadState& first_use() {
    ThreadState* state = create_state();
    if (state == nullptr) fatal_memory_error();
    return *state;
}

}  // namespace

ThreadState& thread_state() {
    auto* state = static_cast<ThreadState*>(platform::thread_slot_get());
    return state != nullptr ? *state : first_use();
}

}  // namespace kef::vm

namespace kef::platform {

bool on_process_attach() { return vm::create_state() != nullptr; }

void on_thread_detach(void* slot_value) {
    thread_slot_set(nullptr);
    heap_free(slot_value);
}

// The platform gives back the heap, and with it the blocks of other threads.
void on_process_detach() {
    if (void* state = thread_slot_get()) on_thread_detach(state);
}

}  // namespace kef::platform
