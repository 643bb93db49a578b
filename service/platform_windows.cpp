// Windows: DllMain, thread-local storage and a heap of our own.
#include <initializer_list>

#include <windows.h>

#include "service/platform.h"

namespace kef::platform {

namespace {

constexpr SIZE_T heap_initial_size = 24;  // bytes

DWORD slot = TLS_OUT_OF_INDEXES;
PVOID heap = nullptr;

// Two threads that both create the heap keep one of the two.
HANDLE existing_heap() {
    if (PVOID known = __atomic_load_n(&heap, __ATOMIC_ACQUIRE)) return known;
    HANDLE fresh = HeapCreate(0, heap_initial_size, 0);
    if (fresh == nullptr) return nullptr;
    PVOID other = InterlockedCompareExchangePointer(&heap, fresh, nullptr);
    if (other == nullptr) return fresh;
    HeapDestroy(fresh);
    return other;
}

// The caller's last error, which a function of the library leaves as it was.
class LastErrorKept {
public:
    LastErrorKept() : value_(GetLastError()) {}
    ~LastErrorKept() { SetLastError(value_); }
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;

private:
    DWORD value_;
};

void* first_use() {
    HANDLE handle = existing_heap();
    if (handle == nullptr) return nullptr;
    void* block = HeapAlloc(handle, HEAP_ZERO_MEMORY, thread_block_size);
    if (block != nullptr && !TlsSetValue(slot, block)) {
        HeapFree(handle, 0, block);
        return nullptr;
    }
    return block;
}

bool process_attach() {
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES && thread_block() != nullptr;
}

void thread_detach() {
    void* block = TlsGetValue(slot);
    if (block == nullptr) return;
    TlsSetValue(slot, nullptr);
    HeapFree(heap, 0, block);
}

// Unloading; also where attaching failed half-way. The heap goes with the blocks of all threads.
void process_detach() {
    if (slot == TLS_OUT_OF_INDEXES) return;
    TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
    if (heap != nullptr) HeapDestroy(heap);
    heap = nullptr;
}

}  // namespace

void* thread_block() {
    const LastErrorKept kept;  // TlsGetValue clears it
    if (slot == TLS_OUT_OF_INDEXES) return nullptr;
    void* known = TlsGetValue(slot);
    return known != nullptr ? known : first_use();
}

bool environment_value(const char* name, char* buffer, std::size_t size) {
    const DWORD length = GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(size));
    return length > 0 && length < size;
}

void write_standard_error(const char* text, std::size_t length) {
    HANDLE handle = GetStdHandle(STD_ERROR_HANDLE);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    while (length > 0 && WriteFile(handle, text, static_cast<DWORD>(length), &written, nullptr) &&
           written > 0) {
        text += written;
        length -= written;
    }
}

void on_fork(void (*)(), void (*)()) {}

void exit_process(int code) { ExitProcess(static_cast<UINT>(code)); }

ErrnoAccessor find_errno_accessor() {
    for (const char* runtime : {"MSVCR100.DLL", "MSVCR90.DLL", "MSVCR80.DLL", "MSVCR71.DLL",
                                "MSVCR70.DLL", "MSVCRT.DLL", "MSVCR100D.DLL", "MSVCR90D.DLL",
                                "MSVCR80D.DLL", "MSVCR71D.DLL", "MSVCR70D.DLL", "MSVCRTD.DLL"})
        if (HMODULE module = GetModuleHandleA(runtime))
            return reinterpret_cast<ErrnoAccessor>(
                reinterpret_cast<void*>(GetProcAddress(module, "_errno")));
    return nullptr;
}

}  // namespace kef::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends) {
    using namespace kef::platform;
    switch (reason) {
        case DLL_PROCESS_ATTACH: return process_attach();
        case DLL_THREAD_DETACH: thread_detach(); break;
        case DLL_PROCESS_DETACH:
            // At the end of the process its memory goes with it, and a thread that was
            // stopped may have held the heap's lock.
            if (process_ends == nullptr) process_detach();
            break;
        default: break;  // a thread's block is made at its first use
    }
    return TRUE;
}
