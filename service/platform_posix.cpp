// POSIX: thread-local storage, pthread key, constructor and destructor of the shared object.
#include <cstdlib>
#include <cstring>

#include <pthread.h>
#include <unistd.h>

#include "service/platform.h"

namespace kef::platform {

// A thread's first access to its block makes the loader allocate, and where there is no memory the
// loader ends the process in a way of its own. Hence the key, whose value says that the block is
// there. It has no destructor, and it goes at unloading and at the exit of the process; other
// threads may still compute then, and need it no more.
pthread_key_t block_key;
bool key_is_live = false;

namespace {

// The block is thread-local storage, which the loader makes, clears and frees again, at the end of
// a thread and after unloading. So no code of ours runs when a thread ends, and none can be
// missing then. Not of the initial-exec model: each load of a library takes its share of a small
// area of the process for that, and dlclose cannot always give it back.
struct alignas(16) Block {
    unsigned char bytes[thread_block_size];
};
[[gnu::tls_model("global-dynamic")]] constinit thread_local Block block = {};

bool memory_for_block() {
    constexpr std::size_t enough = 4096;  // for the loader's list of a thread's blocks, too
    void* probe = std::malloc(enough);
    asm("" : "+r"(probe));  // no compiler leaves the allocation out
    std::free(probe);
    return probe != nullptr;
}

[[gnu::constructor]] void process_attach() {
    key_is_live = pthread_key_create(&block_key, nullptr) == 0;
    thread_block();  // without memory for it, the first use says so
}

[[gnu::destructor]] void process_detach() {
    if (!key_is_live) return;
    __atomic_store_n(&key_is_live, false, __ATOMIC_RELEASE);
    pthread_key_delete(block_key);
}

}  // namespace

// Not to be part of a caller: where the loader allocates, some C libraries lose the vector
// registers that a descriptor's function is to keep.
[[gnu::noipa, gnu::cold]] void* find_thread_block() {
    if (!__atomic_load_n(&key_is_live, __ATOMIC_ACQUIRE)) return &block;
    const ErrorsKept kept;
    if (!memory_for_block()) return nullptr;
    pthread_setspecific(block_key, &block);  // a value that is not kept is asked for again
    return &block;
}

bool environment_value(const char* name, char* buffer, std::size_t size) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') return false;
    const std::size_t length = std::strlen(value);
    if (length >= size) return false;
    std::memcpy(buffer, value, length + 1);
    return true;
}

void write_standard_error(const char* text, std::size_t length) {
    const ErrorsKept kept;
    while (length > 0) {
        const ssize_t written = write(STDERR_FILENO, text, length);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        text += written;
        length -= static_cast<std::size_t>(written);
    }
}

namespace {

std::uint32_t lock_word = 0;

void take_lock() {
    std::uint32_t free = 0;
    while (!__atomic_compare_exchange_n(&lock_word, &free, 1, false, __ATOMIC_ACQUIRE,
                                        __ATOMIC_RELAXED))
        free = 0;
}
void drop_lock() { __atomic_store_n(&lock_word, 0, __ATOMIC_RELEASE); }

[[gnu::constructor]] void hold_during_fork() { pthread_atfork(take_lock, drop_lock, drop_lock); }

}  // namespace

Lock::Lock() { take_lock(); }
Lock::~Lock() { drop_lock(); }

std::uint32_t last_error() { return 0; }
void set_last_error(std::uint32_t) {}

void exit_process(int code) { _exit(code); }

ErrnoAccessor find_errno_accessor() {
    return [] { return &errno; };
}

}  // namespace kef::platform
