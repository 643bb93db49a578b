/* A program linked to the library, for what needs a process of its own: its
 * environment, its standard error, its signals and its end. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xmmintrin.h>

#include "kef_rng.h"
#include "kef_vm.h"

static int mode(void) {
    const uint32_t word = kef_vtm_kernel_GetMode();
    printf("%X %d\n", (unsigned)word, (int)kef_vtm_kernel_GetTTableIndex());
    return 0;
}

static int messages(void) {
    double a[8] = {1, -4, 1, 1, 1, 1, 1, 1}, b[8] = {1, 1, 1, 1, 1, 1, 1, 1}, r[8];
    const float zero = -0.0f;
    float s;
    _vtmdSqrt(8, a, r);
    _vtmsInv(1, &zero, &s);
    a[1] = 1, a[2] = 1234.567;
    _vtmdExp(8, a, r);
    a[2] = 1, a[3] = -710;
    _vtmdExp(8, a, r);
    a[3] = 1, a[5] = 1e300, b[5] = 1e-300;
    _vtmdDiv(8, a, b, r);
    a[0] = 3, b[0] = 0;
    _vtmdDiv(1, a, b, r);
    return 0;
}

static int refuse(kef_vtm_error_record *record) { return record != NULL; }
static int accept_new(kef_vtm_error_record *record) {
    record->result1 = record->result2 = 6.5;
    return 0;
}
static int with_callback(kef_vtm_error_callback callback) {
    const double zero = 0;
    double r;
    kef_vtm_kernel_SetErrorCallBack(callback);
    _vtmdInv(1, &zero, &r);
    return 0;
}

/* A call with one failing element under unmasked exceptions; what the caller sees of it,
 * in order: the report, with the errno before it, and the signal or the flags at the end. */
static int told(kef_vtm_error_record *record) {
    printf("%s %d errno %d\n", record->name, (int)record->code, errno);
    fflush(stdout);
    return 0;
}
static void trapped(int signal_number, siginfo_t *info, void *context) {
    const char *names[] = {"FLTDIV", "FLTOVF", "FLTUND"};
    const char *name = info->si_code == FPE_FLTINV ? "FLTINV"
                       : info->si_code >= FPE_FLTDIV && info->si_code <= FPE_FLTUND
                           ? names[info->si_code - FPE_FLTDIV]
                           : "other";
    char line[40];
    const int length = snprintf(line, sizeof line, "%s errno %d\n", name, errno);
    (void)signal_number, (void)context;
    _exit(write(STDOUT_FILENO, line, length) < 0);
}

static int trap(const char *function, double a, double b) {
    const float s = (float)a, t = (float)b;
    double r[3], x[3] = {1, a, 1}, y[3] = {1, b, 1};
    float q;
    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_sigaction = trapped;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGFPE, &action, NULL);
    if ((kef_vtm_kernel_GetMode() & VTM_ERRMODE_CALLBACK) != 0)
        kef_vtm_kernel_SetErrorCallBack(told);
    errno = 0;
    _mm_setcsr(0x1F80 & ~0x0E80); /* invalid, division by zero, overflow, underflow */
    if (strcmp(function, "dSqrt") == 0) _vtmdSqrt(3, x, r);
    else if (strcmp(function, "sSqrt") == 0) _vtmsSqrt(1, &s, &q);
    else if (strcmp(function, "dInv") == 0) _vtmdInv(3, x, r);
    else if (strcmp(function, "sInv") == 0) _vtmsInv(1, &s, &q);
    else if (strcmp(function, "dDiv") == 0) _vtmdDiv(3, x, y, r);
    else if (strcmp(function, "sDiv") == 0) _vtmsDiv(1, &s, &t, &q);
    else if (strcmp(function, "dMul") == 0) _vtmdMul(3, x, y, r);
    else if (strcmp(function, "dExp") == 0) _vtmdExp(3, x, r);
    else return 2;
    const unsigned flags = _mm_getcsr() & 0x1F;
    _mm_setcsr(0x1F80);
    printf("errno %d flags %X\n", errno, flags);
    return 0;
}

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
    if (strcmp(what, "mode") == 0) return mode();
    if (strcmp(what, "messages") == 0) return messages();
    if (strcmp(what, "refused") == 0) return with_callback(refuse);
    if (strcmp(what, "accepted") == 0) return with_callback(accept_new);
    if (strcmp(what, "trap") == 0 && count > 4)
        return trap(words[2], atof(words[3]), atof(words[4]));
    if (strcmp(what, "threads") == 0) return threads();
    if (strcmp(what, "busy") == 0) return busy();
    if (strcmp(what, "forks") == 0) return forks();
    if (strcmp(what, "latecomer") == 0) return latecomer();
    if (strcmp(what, "memory") == 0) return memory();
    return 2;
}
