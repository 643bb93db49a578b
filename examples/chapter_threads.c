/* Long vectors, divided over threads. The cost tables tell how much work a call is:
 * a million square roots are worth fewer threads than a million exponentials. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"

/* Best time of a few calls, in seconds. */
static double best_time(const struct function *f, int threads, int32_t n, const void *a,
                        const void *b, void *y, void *z) {
    double best = 1e30;
    for (int i = 0; i < 5; ++i) {
        const double start = seconds();
        vector_call(f, threads, n, a, b, y, z);
        const double time = seconds() - start;
        if (time < best) best = time;
    }
    return best;
}

bool threads_chapter(const struct session *session) {
    static const char *const names[] = {"dExp", "dLn", "sExp", "dSqrt", "dAdd"};
    const int32_t n = session->elements;
    bool equal = true;
    printf(
        "   %d elements, at most %d thread%s. What an element costs, from the cost table of the\n"
        "   function, tells how many threads a call is worth.\n\n",
        (int)n, session->threads, session->threads == 1 ? "" : "s");
    printf("   function    cost   threads worth   one thread, ms   divided, ms   results\n");
    for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i) {
        const struct function *f = find_function(names[i]);
        void *a = allocate((size_t)n, f->size), *b = allocate((size_t)n, f->size);
        void *alone = allocate((size_t)n, f->size), *divided = allocate((size_t)n, f->size);
        fill(a, f->size, n, f->low, f->high, 1);
        fill(b, f->size, n, f->low, f->high, 2);
        const double time_alone = best_time(f, 1, n, a, b, alone, NULL);
        const double time_divided = best_time(f, session->threads, n, a, b, divided, NULL);
        const bool same = memcmp(alone, divided, (size_t)n * f->size) == 0;
        equal = equal && same;
        printf("   %-9s %6.2f   %13d   %14.2f   %11.2f   %s\n", f->name,
               (double)f->cost(current_slot()), pieces_for(f, n), 1e3 * time_alone,
               1e3 * time_divided, same ? "the same bits" : "DIFFERENT");
        free(a), free(b), free(alone), free(divided);
    }

    /* One overflow, three quarters into a vector that is computed in pieces. */
    const struct function *f = find_function("dExp");
    double *a = allocate((size_t)n, sizeof *a), *r = allocate((size_t)n, sizeof *r);
    const int32_t place = n - 1 - n / 4;
    fill(a, sizeof *a, n, -10, 10, 3);
    a[place] = 1000;
    watch_errors();
    const int32_t status = vector_call(f, session->threads, n, a, NULL, r, NULL);
    const struct error_log *log = watched_errors();
    const int32_t index = log->count == 1 ? log->kept[0].index : -1;
    printf("\n   e^1000 planted at element %d: the callback is told element %d, %s.\n", (int)place,
           (int)index, status_name(status));
    printf("   Refused before any kernel runs: n = -1 (%s), a null pointer (%s).\n",
           status_name(vector_call(f, 1, -1, a, NULL, r, NULL)),
           status_name(vector_call(f, 1, n, NULL, NULL, r, NULL)));
    kef_vtm_kernel_ClearErrStatus();
    free(a), free(r);
    return equal && index == place && status == VTM_STATUS_OVERFLOW;
}
