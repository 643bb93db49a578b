// Everything that the library asks of the operating system. One implementation per system.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>

#if defined(__ELF__)
#include <pthread.h>
#endif

namespace kef::platform {

// The calling thread's block: zeros at the thread's first use; it goes with the thread, or with
// the library. Null when there is no memory. Leaves errno and the system's last error alone.
inline constexpr std::size_t thread_block_size = 8 * sizeof(void*);
#if defined(__ELF__)
extern pthread_key_t block_key;  // its value is the block, while the key lives
extern bool key_is_live;
void* find_thread_block();
inline void* thread_block() {
    if (__atomic_load_n(&key_is_live, __ATOMIC_ACQUIRE)) [[likely]]
        if (void* known = pthread_getspecific(block_key)) [[likely]]
            return known;
    return find_thread_block();
}
#else
void* thread_block();
#endif

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

// The lock of what all threads share. Held for a few instructions, and across a fork(): the child
// has the forking thread alone. On Windows, where a thread may be ended while it holds the lock,
// the next one gets it.
class Lock {
public:
    Lock();
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

// The last error of the calling thread, where the system has one beside errno.
std::uint32_t last_error();
void set_last_error(std::uint32_t value);

// Leaves the caller's errno and last error as they were, whatever the system says in between.
class ErrorsKept {
public:
    ErrorsKept() : last_error_(last_error()), errno_(errno) {}
    ~ErrorsKept() {
        errno = errno_;
        set_last_error(last_error_);
    }
    ErrorsKept(const ErrorsKept&) = delete;
    ErrorsKept& operator=(const ErrorsKept&) = delete;

private:
    std::uint32_t last_error_;
    int errno_;
};

}  // namespace kef::platform
