/* The few things that depend on the system. */
#define _POSIX_C_SOURCE 200809L

#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include "frontend.h"

void *allocate(size_t count, size_t size) {
    void *block = calloc(count > 0 ? count : 1, size);
    if (block == NULL) {
        fprintf(stderr, "frontend: no memory for %zu elements\n", count);
        exit(1);
    }
    return block;
}

static double read_clock(clockid_t clock) {
    struct timespec t;
    clock_gettime(clock, &t);
    return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
}

double seconds(void) { return read_clock(CLOCK_MONOTONIC); }

double processor_seconds(void) {
#if defined(_WIN32) /* its clock of a thread is too coarse */
    return seconds();
#else
    return read_clock(CLOCK_THREAD_CPUTIME_ID);
#endif
}

int processors(void) {
#if defined(_SC_NPROCESSORS_ONLN)
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online < 1 ? 1 : online > 64 ? 64 : (int)online;
#else
    return 2;
#endif
}

/* Uniform numbers by SplitMix64: G. L. Steele, D. Lea, C. H. Flood, "Fast
 * splittable pseudorandom number generators", OOPSLA 2014. */
void fill(void *x, size_t size, int32_t n, double low, double high, uint64_t stream) {
    uint64_t state = stream * UINT64_C(0xD1342543DE82EF95);
    for (int32_t i = 0; i < n; ++i) {
        uint64_t z = state += UINT64_C(0x9E3779B97F4A7C15);
        z = (z ^ z >> 30) * UINT64_C(0xBF58476D1CE4E5B9);
        z = (z ^ z >> 27) * UINT64_C(0x94D049BB133111EB);
        z ^= z >> 31;
        const double value = low + (high - low) * ((double)(z >> 11) * 0x1p-53);
        if (size == sizeof(float)) ((float *)x)[i] = (float)value;
        else ((double *)x)[i] = value;
    }
}

void progress(int step, int total, const char *what) {
    static int tenth = 0;
    if (isatty(STDERR_FILENO)) {
        if (what != NULL) fprintf(stderr, "\r  %3d%%  %-24s", 100 * step / total, what);
        else fprintf(stderr, "\r%-32s\r", "");
        fflush(stderr);
    } else if (what == NULL) {
        tenth = 0;
    } else if (10 * step / total > tenth) {
        tenth = 10 * step / total;
        fprintf(stderr, "  %3d%%  %s\n", 10 * tenth, what);
    }
}
