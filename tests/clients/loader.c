/* A program that loads the library while it runs: loader CASE LIBRARY [ROUNDS [NEIGHBOUR]]. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <limits.h>
#include <malloc.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char *library;
static void *handle;
static int32_t (*set_status)(int32_t);

static int load(void) {
    handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL) fprintf(stderr, "%s\n", dlerror());
    else *(void **)&set_status = dlsym(handle, "kef_vtm_kernel_SetErrStatus");
    return handle != NULL && set_status != NULL;
}

/* True where the library is no longer in memory. */
static int unload(void) {
    void *again;
    dlclose(handle);
    again = dlopen(library, RTLD_NOW | RTLD_NOLOAD);
    if (again != NULL) dlclose(again);
    return again == NULL;
}

/* Workers that live through many loads: each uses the library once in each round. */
enum { workers = 4, rounds = 300 };
static pthread_barrier_t barrier;
static volatile int ending;
static void *work(void *argument) {
    for (;;) {
        pthread_barrier_wait(&barrier);
        if (ending) return argument;
        if (set_status(5) != 0) exit(10); /* a block of an earlier load */
        if (set_status(6) != 5) exit(11);
        pthread_barrier_wait(&barrier);
    }
}
static int loop(void) {
    pthread_t thread[workers];
    size_t before = 0;
    int i;
    mallopt(M_ARENA_MAX, 1);
    pthread_barrier_init(&barrier, NULL, workers + 1);
    for (i = 0; i < workers; ++i) pthread_create(&thread[i], NULL, work, NULL);
    for (i = 0; i < rounds; ++i) {
        if (i == rounds / 2) before = mallinfo2().uordblks;
        if (!load()) return 12;
        pthread_barrier_wait(&barrier);
        pthread_barrier_wait(&barrier);
        if (!unload()) return 13;
    }
    if (mallinfo2().uordblks > before + 200) return 14;
    ending = 1;
    pthread_barrier_wait(&barrier);
    for (i = 0; i < workers; ++i) pthread_join(thread[i], NULL);
    return 0;
}

/* Threads that use the library and end while it is unloaded, at every moment of both. */
enum { racers = 2 };
static pthread_barrier_t used;
static void *race(void *argument) {
    volatile unsigned delay = (unsigned)(size_t)argument;
    if (set_status(5) != 0) exit(10);
    pthread_barrier_wait(&used);
    while (delay > 0) --delay;
    return NULL;
}
static int unload_while_threads_end(int races) {
    size_t before = 0;
    int i, k;
    mallopt(M_ARENA_MAX, 1);
    pthread_barrier_init(&used, NULL, racers + 1);
    for (i = 0; i < races; ++i) {
        pthread_t thread[racers];
        if (i == races / 2) before = mallinfo2().uordblks;
        if (!load()) return 12;
        for (k = 0; k < racers; ++k)
            pthread_create(&thread[k], NULL, race, (void *)(size_t)(i * (k + 1) % 5000));
        pthread_barrier_wait(&used);
        if (!unload()) return 13;
        for (k = 0; k < racers; ++k) pthread_join(thread[k], NULL);
    }
    return mallinfo2().uordblks > before + 200 ? 14 : 0;
}

/* A neighbour with thread-local storage of its own is loaded and unloaded in turns. */
static int alternate(int turns, const char *neighbour) {
    int i;
    for (i = 0; i < turns; ++i) {
        void *other;
        if (!load()) return 12;
        if (set_status(5) != 0) return 10;
        other = dlopen(neighbour, RTLD_NOW);
        if (other == NULL) {
            fprintf(stderr, "round %d: %s\n", i, dlerror());
            return 15;
        }
        if (!unload()) return 13;
        dlclose(other);
    }
    return 0;
}

/* No key for thread-specific data is left at load. */
static void *fresh(void *argument) {
    return set_status(7) == 0 && set_status(8) == 7 ? argument : NULL;
}
static int keys(void) {
    pthread_key_t key;
    pthread_t thread;
    void *result = NULL;
    while (pthread_key_create(&key, NULL) == 0) {}
    if (!load() || set_status(5) != 0 || set_status(6) != 5) return 12;
    pthread_create(&thread, NULL, fresh, &key);
    pthread_join(thread, &result);
    return result == NULL || set_status(0) != 6;
}

/* An exit handler unloads the library; a thread that used it ends afterwards. */
static pthread_t survivor;
static void *survive(void *argument) {
    set_status(5);
    pthread_barrier_wait(&barrier);
    pthread_barrier_wait(&barrier);
    return argument;
}
static void unload_at_exit(void) {
    if (!unload()) _Exit(13);
    pthread_barrier_wait(&barrier);
    pthread_join(survivor, NULL);
}
static int exit_handler(void) {
    atexit(unload_at_exit);
    if (!load()) return 12;
    pthread_barrier_init(&barrier, NULL, 2);
    pthread_create(&survivor, NULL, survive, NULL);
    pthread_barrier_wait(&barrier);
    return 0;
}

int main(int count, char **words) {
    if (count < 3) return 2;
    library = words[2];
    if (strcmp(words[1], "loop") == 0) return loop();
    if (strcmp(words[1], "race") == 0 && count > 3) return unload_while_threads_end(atoi(words[3]));
    if (strcmp(words[1], "alternate") == 0 && count > 4) return alternate(atoi(words[3]), words[4]);
    if (strcmp(words[1], "keys") == 0) return keys();
    if (strcmp(words[1], "exit") == 0) return exit_handler();
    return 2;
}
