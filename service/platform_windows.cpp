// Windows: DllMain, thread-local storage and a heap of our own.
#include <cstring>

#include <windows.h>

#include "service/platform.h"

namespace kef::platform {

namespace {

constexpr SIZE_T heap_initial_size = 24;  // bytes

DWORD slot = TLS_OUT_OF_INDEXES;
HANDLE mutex = nullptr;  // of the system: one whose holder was ended goes to the next
HANDLE heap = nullptr;   // under the mutex alone

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

struct Block {
    unsigned char bytes[thread_block_size];
    HANDLE heap;
};

// A heap that its lock's holder was ended in is not touched again, and another takes its place.
void take_lock() {
    if (WaitForSingleObject(mutex, INFINITE) == WAIT_ABANDONED) heap = nullptr;
}
void drop_lock() { ReleaseMutex(mutex); }

Block* allocate_block() {
    const Lock lock;
    if (heap == nullptr) heap = HeapCreate(HEAP_NO_SERIALIZE, heap_initial_size, 0);
    if (heap == nullptr) return nullptr;
    auto* block = static_cast<Block*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, sizeof(Block)));
    if (block != nullptr) block->heap = heap;
    return block;
}
void free_block(Block* block) {
    const Lock lock;
    if (block->heap == heap) HeapFree(heap, 0, block);
}

void* first_use() {
    Block* block = allocate_block();
    if (block != nullptr && !TlsSetValue(slot, block)) {
        free_block(block);
        return nullptr;
    }
    return block;
}

bool process_attach() {
    mutex = CreateMutexA(nullptr, FALSE, nullptr);
    slot = TlsAlloc();
    return mutex != nullptr && slot != TLS_OUT_OF_INDEXES && thread_block() != nullptr;
}

void thread_detach() {
    auto* block = static_cast<Block*>(TlsGetValue(slot));
    if (block == nullptr) return;
    TlsSetValue(slot, nullptr);
    free_block(block);
}

// C libraries of host programs, in the order of the search.
constexpr const char* runtimes[] = {"MSVCR100.DLL", "MSVCR90.DLL",  "MSVCR80.DLL",   "MSVCR71.DLL",
                                    "MSVCR70.DLL",  "MSVCRT.DLL",   "MSVCR100D.DLL", "MSVCR90D.DLL",
                                    "MSVCR80D.DLL", "MSVCR71D.DLL", "MSVCR70D.DLL",  "MSVCRTD.DLL"};

// Newer ones. One of the others is loaded in every process, this library's own at least; so these
// count where the program itself was linked with them.
struct Runtime {
    const char* imported_as;  // or a longer name that begins so
    const char* module;
};
constexpr Runtime newer_runtimes[] = {
    {"api-ms-win-crt-", "UCRTBASE.DLL"}, {"ucrtbase.dll", "UCRTBASE.DLL"},
    {"ucrtbased.dll", "UCRTBASED.DLL"},  {"msvcr120.dll", "MSVCR120.DLL"},
    {"msvcr110.dll", "MSVCR110.DLL"},    {"msvcr120d.dll", "MSVCR120D.DLL"},
    {"msvcr110d.dll", "MSVCR110D.DLL"},
};

bool program_imports(const char* name) {
    const char* const base = reinterpret_cast<const char*>(GetModuleHandleA(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) return false;
    const auto* module =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; module->Name != 0; ++module)
        if (_strnicmp(base + module->Name, name, std::strlen(name)) == 0) return true;
    return false;
}

// The accessor of a module that is loaded, and stays so from now on.
ErrnoAccessor errno_accessor_of(const char* name) {
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, name, &module)) return nullptr;
    return reinterpret_cast<ErrnoAccessor>(
        reinterpret_cast<void*>(GetProcAddress(module, "_errno")));
}

// Unloading; also where attaching failed half-way. The heap goes with the blocks of all threads.
void process_detach() {
    if (slot != TLS_OUT_OF_INDEXES) TlsFree(slot);
    slot = TLS_OUT_OF_INDEXES;
    if (heap != nullptr) HeapDestroy(heap);
    heap = nullptr;
    if (mutex != nullptr) CloseHandle(mutex);
    mutex = nullptr;
}

}  // namespace

void* thread_block() {
    const LastErrorKept kept;  // TlsGetValue clears it
    if (slot == TLS_OUT_OF_INDEXES) return nullptr;
    void* known = TlsGetValue(slot);
    return known != nullptr ? known : first_use();
}

bool environment_value(const char* name, char* buffer, std::size_t size) {
    const LastErrorKept kept;
    const DWORD length = GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(size));
    return length > 0 && length < size;
}

void write_standard_error(const char* text, std::size_t length) {
    const LastErrorKept kept;
    HANDLE handle = GetStdHandle(STD_ERROR_HANDLE);
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    while (length > 0 && WriteFile(handle, text, static_cast<DWORD>(length), &written, nullptr) &&
           written > 0) {
        text += written;
        length -= written;
    }
}

Lock::Lock() {
    const LastErrorKept kept;
    take_lock();
}
Lock::~Lock() {
    const LastErrorKept kept;
    drop_lock();
}

std::uint32_t last_error() { return GetLastError(); }
void set_last_error(std::uint32_t value) { SetLastError(value); }

void exit_process(int code) { ExitProcess(static_cast<UINT>(code)); }

ErrnoAccessor find_errno_accessor() {
    const LastErrorKept kept;
    for (const Runtime& runtime : newer_runtimes)
        if (program_imports(runtime.imported_as))
            if (ErrnoAccessor accessor = errno_accessor_of(runtime.module)) return accessor;
    for (const char* module : runtimes)
        if (ErrnoAccessor accessor = errno_accessor_of(module)) return accessor;
    return nullptr;
}

}  // namespace kef::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID process_ends) {
    using namespace kef::platform;
    switch (reason) {
        case DLL_PROCESS_ATTACH: return process_attach();
        case DLL_THREAD_DETACH: thread_detach(); break;
        case DLL_PROCESS_DETACH:
            // At the end of the process its memory goes with it.
            if (process_ends == nullptr) process_detach();
            break;
        default: break;  // a thread's block is made at its first use
    }
    return TRUE;
}

// A program that holds the library's objects itself has no DllMain; the loader calls this there
// too.
static void NTAPI in_program(PVOID module, DWORD reason, PVOID) {
    if (module != GetModuleHandleA(nullptr)) return;
    if (reason == DLL_PROCESS_ATTACH) kef::platform::process_attach();
    if (reason == DLL_THREAD_DETACH) kef::platform::thread_detach();
}
__attribute__((section(".CRT$XLC"), used)) static const PIMAGE_TLS_CALLBACK on_thread = in_program;
