// POSIX: pthread key, constructor and destructor of the shared object.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <pthread.h>
#include <unistd.h>

#include "service/platform.h"

namespace kef::platform {

namespace {

// The key lives from load to unload, or to the exit of the process. Its value is for the
// end of a thread; what a thread reads is slot_value.
enum class Key { none, live, gone };
pthread_key_t key;
Key key_state = Key::none;
Key state_of_key() { return __atomic_load_n(&key_state, __ATOMIC_ACQUIRE); }

// The heap is a ring of C library blocks, so that unloading can give back those
// of threads that live on.
struct Link {
    Link* next;
    Link* previous;
};
constexpr std::size_t link_size = (sizeof(Link) + 15) / 16 * 16;
pthread_mutex_t heap_mutex = PTHREAD_MUTEX_INITIALIZER;
Link heap = {&heap, &heap};

void lock_heap() { pthread_mutex_lock(&heap_mutex); }
void unlock_heap() { pthread_mutex_unlock(&heap_mutex); }

void* block_of(Link* link) { return reinterpret_cast<char*>(link) + link_size; }

void unlink_and_free(Link* link) {
    link->next->previous = link->previous;
    link->previous->next = link->next;
    std::free(link);
}

void heap_destroy() {
    lock_heap();
    while (heap.next != &heap) unlink_and_free(heap.next);
    unlock_heap();
}

// Without the key no thread runs code of ours at its end.
void delete_key() {
    __atomic_store_n(&key_state, Key::gone, __ATOMIC_RELEASE);
    pthread_key_delete(key);
}

// exit() runs atexit handlers before the destructors of shared objects, dlclose
// after them: this is how process_detach tells the two apart.
// A library that is linked to the program is constructed before the program's start
// registers those destructors, and its handler would come after them: so the handler
// is registered again for the first block of a further thread.
bool exiting = false;
void mark_exiting() { exiting = true; }
bool attached = false;
bool registered_late = false;
void watch_exit() {
    if (attached && !__atomic_exchange_n(&registered_late, true, __ATOMIC_RELAXED))
        std::atexit(mark_exiting);
}

[[gnu::constructor]] void process_attach() {
    if (pthread_key_create(&key, on_thread_detach) == 0) key_state = Key::live;
    // ELF has no way to refuse loading; the first use on a thread reports the
    // same failure as fatal.
    if (key_state == Key::live) on_process_attach();
    std::atexit(mark_exiting);
    pthread_atfork(lock_heap, unlock_heap, unlock_heap);
    attached = true;
}

[[gnu::destructor]] void process_detach() {
    if (key_state != Key::live) return;
    if (exiting) {
        // Other threads may still compute, and an exit handler may be unloading us.
        delete_key();
        return;
    }
    on_process_detach();
    delete_key();
    heap_destroy();
}

}  // namespace

[[gnu::tls_model("initial-exec")]] constinit thread_local void* slot_value = nullptr;

bool thread_slot_set(void* value) {
    const Key state = state_of_key();
    const bool stored =
        state == Key::gone || (state == Key::live && pthread_setspecific(key, value) == 0);
    if (stored) slot_value = value;
    return stored;
}

void* heap_allocate(std::size_t size) {
    watch_exit();
    auto* link = static_cast<Link*>(std::malloc(link_size + size));
    if (link == nullptr) return nullptr;
    lock_heap();
    link->next = heap.next;
    link->previous = &heap;
    heap.next->previous = link;
    heap.next = link;
    unlock_heap();
    return block_of(link);
}

void heap_free(void* block) {
    lock_heap();
    unlink_and_free(reinterpret_cast<Link*>(static_cast<char*>(block) - link_size));
    unlock_heap();
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
    const int saved_errno = errno;
    while (length > 0) {
        const ssize_t written = write(STDERR_FILENO, text, length);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        text += written;
        length -= static_cast<std::size_t>(written);
    }
    errno = saved_errno;
}

void exit_process(int code) { _exit(code); }

ErrnoAccessor find_errno_accessor() {
    return [] { return &errno; };
}

}  // namespace kef::platform
