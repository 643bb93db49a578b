/* A program linked to the library: its threads, its forks and its end. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kef_rng.h"
#include "kef_vm.h"

/* Threads that use the library and end; the heap must not grow. */
static void *use(void *argument) {
    kef_vtm_kernel_SetErrStatus(kef_vtm_kernel_GetErrStatus() + 1);
    return argument;
}
static int threads(void) {
    size_t before = 0;
    for (int i = 0; i < 3000; ++i) {
        pthread_t thread;
        if (i == 1000) before = mallinfo2().uordblks;
        if (pthread_create(&thread, NULL, use, NULL) != 0) return 2;
        pthread_join(thread, NULL);
    }
    return mallinfo2().uordblks > before + 2000;
}

/* The process ends while other threads compute, and begin to. */
static void *compute(void *argument) {
    double a[100] = {0}, r[100];
    for (;;) {
        _vtmdInv(100, a, r);
        kef_vtm_kernel_SetMode(VTM_LA);
    }
    return argument;
}
static void *start_threads(void *argument) {
    for (int i = 0; i < 20; ++i) {
        pthread_t thread;
        pthread_create(&thread, NULL, i % 2 ? use : compute, NULL);
        usleep(500);
    }
    return argument;
}
static void linger(void) { usleep(5000); }
static int busy(void) {
    pthread_t thread;
    atexit(linger);
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE);
    if (pthread_create(&thread, NULL, start_threads, NULL) != 0) return 2;
    usleep(3000);
    return 0;
}

/* Another thread works on the shared table while the process forks: the child finds the table
 * free, as every parent does. */
static const uint32_t shared_id[4] = {1, 2, 3, 4};
static int find(void) {
    kef_shared_entry *entry;
    return __vtsFindGlobRODataTableEntry(shared_id, &entry);
}
static void *find_for_ever(void *argument) {
    for (;;) find();
    return argument;
}
static int forks(void) {
    pthread_t thread;
    kef_shared_entry *entry;
    if (__vtsCreateGlobRODataTableEntry(&entry, shared_id, NULL) != 0) return 2;
    if (pthread_create(&thread, NULL, find_for_ever, NULL) != 0) return 2;
    for (int i = 0; i < 300; ++i) {
        int status;
        const pid_t child = fork();
        if (child == 0) {
            alarm(5);
            _exit(find());
        }
        if (waitpid(child, &status, 0) != child || status != 0) return 1;
        if (find() != 0) return 1;
    }
    return 0;
}

#if !defined(__SANITIZE_ADDRESS__)
/* A thread that uses the library for the first time while the process exits: its step to keep
 * the block lasts until the library has seen the end, and the process is still there after it. */
static int slowly;
int pthread_setspecific(pthread_key_t key, const void *value) {
    int (*function)(pthread_key_t, const void *);
    *(void **)&function = dlsym(RTLD_NEXT, "pthread_setspecific");
    if (slowly) usleep(50000);
    return function(key, value);
}
static ssize_t write_late(void *cookie, const char *text, size_t size) {
    usleep(200000);
    return cookie == NULL && text != NULL ? (ssize_t)size : 0;
}
static int latecomer(void) {
    const cookie_io_functions_t functions = {NULL, write_late, NULL, NULL};
    pthread_t thread;
    FILE *file = fopencookie(NULL, "w", functions);
    slowly = 1;
    if (file == NULL || fputc('x', file) == EOF) return 2;
    if (pthread_create(&thread, NULL, use, NULL) != 0) return 2;
    usleep(10000);
    return 0; /* the C library writes the file after the library's end */
}

/* No memory for the block of a new thread. */
static volatile int no_memory;
extern void *__libc_malloc(size_t size);
void *malloc(size_t size) { return no_memory ? NULL : __libc_malloc(size); }
static void *starve(void *argument) {
    no_memory = 1;
    kef_vtm_kernel_GetErrStatus();
    return argument;
}
static int memory(void) {
    pthread_t thread;
    if (pthread_create(&thread, NULL, starve, NULL) != 0) return 2;
    pthread_join(thread, NULL);
    return 0;
}
#else
static int memory(void) { return 3; }
static int latecomer(void) { return 3; }
#endif

int main(int count, char **words) {
    const char *what = count > 1 ? words[1] : "";
    if (strcmp(what, "threads") == 0) return threads();
    if (strcmp(what, "busy") == 0) return busy();
    if (strcmp(what, "forks") == 0) return forks();
    if (strcmp(what, "latecomer") == 0) return latecomer();
    if (strcmp(what, "memory") == 0) return memory();
    return 2;
}
