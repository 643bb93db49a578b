// Everything that the library asks of the operating system, and the three
// events that the system tells the library. One implementation per system.
#pragma once

#include <cstddef>

namespace kef::platform {

// The one thread-local slot. Get gives null where nothing was set, or where the
// slot could not be had at attach; set is false when the system refuses.
#if defined(__ELF__)
// Initial-exec: one instruction at every call of a kernel, and a word of the static TLS block.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local void* slot_value;
inline void* thread_slot_get() { return slot_value; }
#else
void* thread_slot_get();
#endif
bool thread_slot_set(void* value);

// The private heap of the thread blocks: created at the first allocation, given
// back as a whole at process detach. A block belongs to the thread that allocated
// it. Null when there is no memory.
void* heap_allocate(std::size_t size);
void heap_free(void* block);

// Copies the environment value and its NUL into `buffer`. False when it is
// absent, empty or does not fit.
bool environment_value(const char* name, char* buffer, std::size_t size);

void write_standard_error(const char* text, std::size_t length);

// Ends the process without running its exit handlers.
[[noreturn]] void exit_process(int code);

// The accessor of the calling thread's errno in the C library that the host
// program uses; null when none is found.
using ErrnoAccessor = int* (*)();
ErrnoAccessor find_errno_accessor();

// Events; implemented by the vector-math control (vm/control/thread_state.cpp). The
// slot exists before the attach event and until after the detach event.
bool on_process_attach();                 // false: loading should fail
void on_thread_detach(void* slot_value);  // the ending thread's slot, never null
void on_process_detach();                 // unloading, not process termination

}  // namespace kef::platform
