/* Elements that have no proper result: who hears of them, and what then stands in
 * the result vector. */
#include <errno.h>
#include <fenv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"

static int replace_result(kef_vtm_error_record *record) {
    record->result1 = -1000;
    return 0;
}

static int refuse(kef_vtm_error_record *record) {
    record->result1 = -1000;
    return 1;
}

/* The logarithms of the differences from the first measurement: real arguments of
 * every kind, among them zeros and negative numbers. */
static bool show_callback(const struct session *session) {
    const int32_t n = session->count, start = n / 2;
    double *d = allocate((size_t)n, sizeof *d), *r = allocate((size_t)n, sizeof *r);
    _vtmdLinearFrac(n, session->measurements, session->measurements, 1, -session->measurements[0],
                    0, 1, d);

    printf("   ln d, d = difference from the first measurement, with a callback:\n");
    watch_errors();
    _vtmdLn(n, d, r);
    const struct error_log *log = watched_errors();
    for (int i = 0; i < log->count && i < KEPT_ERRORS; ++i) {
        const kef_vtm_error_record *e = &log->kept[i];
        printf("      %s, element %d: %s; argument %.6g, result %g\n", e->name, (int)e->index,
               status_name(e->code), e->argument1, e->result1);
    }
    if (log->count > KEPT_ERRORS) printf("      ... and %d more\n", log->count - KEPT_ERRORS);

    /* The second half alone, its first element made ln 0. */
    d[start] = 0;
    watch_errors();
    _vtmdLn(n - start, d + start, r + start);
    log = watched_errors();
    const int alone = log->count > 0 ? log->kept[0].index : -1;
    watch_errors();
    kef_vtm_kernel_SetInterfInputVectorPointer(d);
    _vtmdLn(n - start, d + start, r + start);
    kef_vtm_kernel_SetInterfInputVectorPointer(NULL);
    log = watched_errors();
    const int in_whole = log->count > 0 ? log->kept[0].index : -1;
    printf(
        "   The second half alone: an error in its first element has index %d;\n"
        "   with the interface input vector set to the start of the whole, index %d.\n",
        alone, in_whole);
    free(d), free(r);
    return alone == 0 && in_whole == start;
}

static bool show_answers(void) {
    const uint32_t mode = kef_vtm_kernel_GetMode();
    const kef_vtm_error_callback before = kef_vtm_kernel_SetErrorCallBack(replace_result);
    kef_vtm_kernel_SetMode(VTM_ERRMODE_CALLBACK);
    const double zero = 0;
    double replaced, refused;
    _vtmdLn(1, &zero, &replaced);
    kef_vtm_kernel_SetErrorCallBack(refuse);
    _vtmdLn(1, &zero, &refused);
    kef_vtm_kernel_SetErrorCallBack(before);
    restore_mode(mode);
    printf(
        "   A callback that sets the result to -1000: ln 0 gives %g when it returns 0,\n"
        "   %g when it returns 1.\n",
        replaced, refused);
    return replaced == -1000 && refused < -1e300;
}

static void show_modes(void) {
    static const struct {
        const char *name;
        uint32_t mode;
    } modes[] = {
        {"VTM_ERRMODE_IGNORE", VTM_ERRMODE_IGNORE},
        {"VTM_ERRMODE_ERRNO", VTM_ERRMODE_ERRNO},
        {"VTM_ERRMODE_EXCEPT", VTM_ERRMODE_EXCEPT},
        {"VTM_ERRMODE_CALLBACK", VTM_ERRMODE_CALLBACK},
        {"VTM_ERRMODE_DEFAULT", VTM_ERRMODE_DEFAULT},
        {"VTM_ERRMODE_STDERR", VTM_ERRMODE_STDERR},
    };
    const double arguments[] = {1000, -1000};
    printf("\n   e^1000 and e^-1000     last error  errno   exception flags        callbacks\n");
    for (size_t i = 0; i < sizeof modes / sizeof modes[0]; ++i) {
        double r[2];
        watch_errors();
        kef_vtm_kernel_SetMode(modes[i].mode);
        kef_vtm_kernel_ClearErrStatus();
        errno = 0;
        feclearexcept(FE_ALL_EXCEPT);
        fflush(stdout); /* the messages of VTM_ERRMODE_STDERR come next */
        _vtmdExp(2, arguments, r);
        const int error_number = errno;
        const int flags = fetestexcept(FE_ALL_EXCEPT);
        const int32_t status = kef_vtm_kernel_ClearErrStatus();
        const struct error_log *log = watched_errors();
        printf("   %-22s %-11s %-7s %-22s %d\n", modes[i].name, status_name(status),
               error_number == ERANGE ? "ERANGE"
               : error_number == 0    ? "0"
                                      : "other",
               flags & FE_OVERFLOW ? (flags & FE_UNDERFLOW ? "overflow, underflow" : "overflow")
                                   : (flags & FE_UNDERFLOW ? "underflow" : "none"),
               log->count);
    }
    feclearexcept(FE_ALL_EXCEPT);
}

/* Subnormal numbers under both settings of the mode word. */
static void show_subnormals(void) {
    const uint32_t mode = kef_vtm_kernel_GetMode();
    const double argument = -720;
    double kept, flushed;
    kef_vtm_kernel_SetMode(VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);
    _vtmdExp(1, &argument, &kept);
    kef_vtm_kernel_SetMode(VTM_FTZDAZ_ON);
    _vtmdExp(1, &argument, &flushed);
    restore_mode(mode);
    printf("\n   e^-720 is %g; where subnormal numbers count as zero, %g.\n", kept, flushed);
}

bool errors_chapter(const struct session *session) {
    const bool indices = show_callback(session);
    const bool answers = show_answers();
    show_modes();
    show_subnormals();
    if (!indices || !answers) printf("   The errors were NOT reported as they should be.\n");
    return indices && answers;
}
