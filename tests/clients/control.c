/* A program linked to the library, for what needs a process of its own: its
 * environment, its standard error and its traps. */
#define _GNU_SOURCE
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <xmmintrin.h>
#if defined(_WIN32)
#include <windows.h>
#endif

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
static void trapped(const char *name) {
    printf("%s errno %d\n", name, errno);
    fflush(stdout);
    _Exit(0);
}

#if defined(_WIN32)
static LONG WINAPI on_exception(EXCEPTION_POINTERS *what) {
    /* Which exceptions are set and unmasked: the code need not tell, in a 32-bit program. */
#if defined(_WIN64)
    const unsigned csr = what->ContextRecord->MxCsr;
#else
    unsigned csr;
    memcpy(&csr, what->ContextRecord->ExtendedRegisters + 24, sizeof csr);
#endif
    const unsigned raised = csr & ~(csr >> 7) & 0x3F;
    trapped(raised & 1    ? "FLTINV"
            : raised & 4  ? "FLTDIV"
            : raised & 8  ? "FLTOVF"
            : raised & 16 ? "FLTUND"
                          : "other");
    return EXCEPTION_EXECUTE_HANDLER;
}
static void catch_traps(void) { SetUnhandledExceptionFilter(on_exception); }
#else
static void on_signal(int signal_number, siginfo_t *info, void *context) {
    const char *names[] = {"FLTDIV", "FLTOVF", "FLTUND"};
    (void)signal_number, (void)context;
    trapped(info->si_code == FPE_FLTINV ? "FLTINV"
            : info->si_code >= FPE_FLTDIV && info->si_code <= FPE_FLTUND
                ? names[info->si_code - FPE_FLTDIV]
                : "other");
}
static void catch_traps(void) {
    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_sigaction = on_signal;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGFPE, &action, NULL);
}
#endif

static int trap(const char *function, double a, double b) {
    const float s = (float)a, t = (float)b;
    double r[3], x[3] = {1, a, 1}, y[3] = {1, b, 1};
    float q;
    catch_traps();
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

int main(int count, char **words) {
    const char *what = count > 1 ? words[1] : "";
    if (strcmp(what, "mode") == 0) return mode();
    if (strcmp(what, "messages") == 0) return messages();
    if (strcmp(what, "refused") == 0) return with_callback(refuse);
    if (strcmp(what, "accepted") == 0) return with_callback(accept_new);
    if (strcmp(what, "trap") == 0 && count > 4)
        return trap(words[2], atof(words[3]), atof(words[4]));
    return 2;
}
