/* A program of another C library than the library's own: its errno is the one that is set.
 * errno_host MODULE; the library is loaded while it runs. */
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef int *(__cdecl *Accessor)(void);
typedef unsigned(__cdecl *SetMode)(unsigned);
typedef void(__cdecl *Inv)(int, const double *, double *);

#if defined(KEF_HOST_IMPORTS) /* of the C library that is linked first */
__declspec(dllimport) int *__cdecl _errno(void);
#define OWN _errno()
#else
#define OWN NULL
#endif

static void *function(HMODULE module, const char *name) {
    return (void *)GetProcAddress(module, name);
}

int main(int count, char **words) {
    const double zero = 0;
    double r;
    int *volatile own = OWN;
    HMODULE runtime, kef;
    Accessor accessor;
    SetMode set_mode;
    Inv inv;
    if (count < 3) return 2;
    runtime = LoadLibraryA(words[2]);
    if (runtime == NULL) return 77; /* not on this system */
    kef = LoadLibraryA(words[1]);
    accessor = (Accessor)function(runtime, "_errno");
    if (kef == NULL || accessor == NULL) return 3;
    set_mode = (SetMode)function(kef, "kef_vtm_kernel_SetMode");
    inv = (Inv)function(kef, "_vtmdInv");
    if (own != NULL && own != accessor()) return 4;
    set_mode(0x202); /* HA, errno */
    SetLastError(4711);
    *accessor() = 99;
    inv(1, &zero, &r);
    printf("errno %d, last error %lu\n", *accessor(), (unsigned long)GetLastError());
    /* The module stays, whatever the program does with its own hold on it. */
    FreeLibrary(runtime);
    inv(1, &zero, &r);
    return 0;
}
