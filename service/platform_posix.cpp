// POSIX: pthread key, constructor and destructor of the shared object.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <pthread.h>
#include <unistd.h>

#include "service/platform.h"

namespace kef::platform {

namespace {

pthread_key_t key;
bool key_exists = false;

// The heap is a ring of C library blocks, so that unloading can give back those
// of threads that live on.
struct Link {
    Link* next;
    Link* previous;
};
constexpr std::size_t link_size = (sizeof(Link) + 15) / 16 * 16;
pthread_mutex_t heap_mutex = PTHREAD_MUTEX_INITIALIZER;
Link heap = {&heap, &heap};

void unlink_and_free(Link* link) {
    link->next->previous = link->previous;
    link->previous->next = link->next;
    std::free(link);
}

void heap_destroy() {
    pthread_mutex_lock(&heap_mutex);
    while (heap.next != &heap) unlink_and_free(heap.next);
    pthread_mutex_unlock(&heap_mutex);
}

// exit() runs atexit handlers before the destructors of shared objects, dlclose
// after them: this is how process_detach tells the two apart.
bool exiting = false;
void mark_exiting() { exiting = true; }

[[gnu::constructor]] void process_attach() {
    key_exists = pthread_key_create(&key, on_thread_detach) == 0;
    // ELF has no way to refuse loading; the first use on a thread reports the
    // same failure as fatal.
    if (key_exists) on_process_attach();
    std::atexit(mark_exiting);
}

[[gnu::destructor]] void process_detach() {
    if (exiting || !key_exists) return;  // at exit other threads may still compute
    on_process_detach();
    // Without the key no thread runs code of ours at its end.
    pthread_key_delete(key);
    key_exists = false;
    heap_destroy();
}

}  // namespace

void* thread_slot_get() { return key_exists ? pthread_getspecific(key) : nullptr; }

bool thread_slot_set(void* value) { return key_exists && pthread_setspecific(key, value) == 0; }

void* heap_allocate(std::size_t size) {
    auto* link = static_cast<Link*>(std::malloc(link_size + size));
    if (link == nullptr) return nullptr;
    pthread_mutex_lock(&heap_mutex);
    link->next = heap.next;
    link->previous = &heap;
    heap.next->previous = link;
    heap.next = link;
    pthread_mutex_unlock(&heap_mutex);
    return reinterpret_cast<char*>(link) + link_size;
}

void heap_free(void* block) {
    auto* link = reinterpret_cast<Link*>(static_cast<char*>(block) - link_size);
    pthread_mutex_lock(&heap_mutex);
    unlink_and_free(link);
    pthread_mutex_unlock(&heap_mutex);
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
