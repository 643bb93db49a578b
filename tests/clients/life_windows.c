/* A program that loads the DLL while it runs: life CASE LIBRARY. Heaps are counted: the DLL has one
 * of its own, where the blocks of all threads stand. */
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef int(__cdecl *SetStatus)(int);
typedef int(__cdecl *FindEntry)(const unsigned *id, void **entry);

static const char *library;
static HMODULE kef;
static SetStatus set_status;
static FindEntry find_entry;

static int load(void) {
    kef = LoadLibraryA(library);
    if (kef == NULL) return 0;
    set_status = (SetStatus)(void *)GetProcAddress(kef, "kef_vtm_kernel_SetErrStatus");
    find_entry = (FindEntry)(void *)GetProcAddress(kef, "__vtsFindGlobRODataTableEntry");
    return set_status != NULL && find_entry != NULL;
}
static int unload(void) { return FreeLibrary(kef) && GetModuleHandleA("kef.dll") == NULL; }

static HANDLE start(LPTHREAD_START_ROUTINE body, void *argument) {
    return CreateThread(NULL, 0, body, argument, 0, NULL);
}
static DWORD finish(HANDLE thread) {
    DWORD code = 99;
    WaitForSingleObject(thread, INFINITE);
    GetExitCodeThread(thread, &code);
    CloseHandle(thread);
    return code;
}

/* Blocks in use in all heaps of the process. */
static size_t blocks(void) {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    size_t used = 0;
    DWORD i;
    for (i = 0; i < count && i < 64; ++i) {
        PROCESS_HEAP_ENTRY entry;
        memset(&entry, 0, sizeof entry);
        while (HeapWalk(heaps[i], &entry)) used += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    return used;
}

static DWORD WINAPI use(void *argument) {
    (void)argument;
    SetLastError(4711);
    if (set_status(5) != 0) return 10; /* a thread begins with an empty block */
    if (set_status(6) != 5) return 11;
    return GetLastError() == 4711 ? 0 : 12;
}

/* Threads that use the library and end: their blocks are given back. */
static int threads(void) {
    size_t before = 0;
    int i;
    if (!load()) return 20;
    for (i = 0; i < 5000; ++i) {
        DWORD code;
        if (i == 1000) before = blocks();
        code = finish(start(use, NULL));
        if (code != 0) return (int)code;
    }
    if (blocks() > before + 20) return 21;
    return unload() ? 0 : 22;
}

/* Threads that live through many loads and use the library once in each. */
enum { workers = 3, rounds = 1000 };
static HANDLE begin[workers], done[workers];
static volatile LONG ending, failed;
static DWORD WINAPI work(void *argument) {
    const size_t i = (size_t)argument;
    for (;;) {
        WaitForSingleObject(begin[i], INFINITE);
        if (ending) return 0;
        if (use(NULL) != 0) failed = 1;
        SetEvent(done[i]);
    }
}
static int loop(void) {
    HANDLE thread[workers], heaps[64];
    size_t before = 0;
    DWORD heaps_before = 0;
    int i;
    size_t k;
    for (k = 0; k < workers; ++k) {
        begin[k] = CreateEventA(NULL, FALSE, FALSE, NULL);
        done[k] = CreateEventA(NULL, FALSE, FALSE, NULL);
        thread[k] = start(work, (void *)k);
    }
    for (i = 0; i < rounds; ++i) {
        if (i == rounds / 2) before = blocks(), heaps_before = GetProcessHeaps(64, heaps);
        if (!load()) return 20;
        for (k = 0; k < workers; ++k) SetEvent(begin[k]);
        for (k = 0; k < workers; ++k) WaitForSingleObject(done[k], INFINITE);
        if (failed) return 23;
        if (!unload()) return 22;
    }
    if (GetProcessHeaps(64, heaps) != heaps_before || blocks() > before + 20) return 21;
    ending = 1;
    for (k = 0; k < workers; ++k) SetEvent(begin[k]), finish(thread[k]);
    return 0;
}

static DWORD WINAPI look_up(void *argument) {
    const unsigned id[4] = {1, 2, 3, 4};
    void *entry;
    if (argument != NULL) SetEvent(*(HANDLE *)argument);
    while (find_entry(id, &entry) != 0 && argument != NULL) continue;
    return 0;
}

/* A thread is ended by force after its use of the library, or inside of it; the others go on, and
 * the library goes.
 */
static DWORD WINAPI wait_for_ever(void *argument) {
    set_status(5);
    SetEvent((HANDLE)argument);
    Sleep(INFINITE);
    return 0;
}
static int terminated(void) {
    HANDLE ready = CreateEventA(NULL, FALSE, FALSE, NULL), thread;
    int i;
    if (!load()) return 20;
    thread = start(wait_for_ever, ready);
    WaitForSingleObject(ready, INFINITE);
    TerminateThread(thread, 1);
    finish(thread);
    if (finish(start(use, NULL)) != 0) return 23;
    for (i = 0; i < 300; ++i) {
        thread = start(look_up, &ready);
        WaitForSingleObject(ready, INFINITE);
        Sleep((DWORD)i % 3);
        TerminateThread(thread, 1);
        finish(thread);
        thread = start(i % 2 ? use : look_up, NULL);
        if (WaitForSingleObject(thread, 10000) != WAIT_OBJECT_0) return 25;
        if (finish(thread) != 0) return 26;
    }
    return unload() ? 0 : 22;
}

/* The process ends by another thread while threads compute. */
static DWORD WINAPI compute(void *argument) {
    if (argument != NULL) return look_up(argument);
    for (;;) set_status(set_status(5));
}
static DWORD WINAPI end_process(void *argument) {
    (void)argument;
    Sleep(5);
    ExitProcess(0);
}
static int exits(void) {
    HANDLE started = CreateEventA(NULL, FALSE, FALSE, NULL);
    int i;
    if (!load()) return 20;
    for (i = 0; i < 4; ++i) start(compute, i % 2 ? &started : NULL);
    start(end_process, NULL);
    Sleep(INFINITE);
    return 24;
}

int main(int count, char **words) {
    if (count < 3) return 2;
    library = words[2];
    if (strcmp(words[1], "threads") == 0) return threads();
    if (strcmp(words[1], "loop") == 0) return loop();
    if (strcmp(words[1], "terminated") == 0) return terminated();
    if (strcmp(words[1], "exits") == 0) return exits();
    return 2;
}
