/* A small front end to the vector math: what a math library does that loads it.
 *
 *   frontend.c    the command line; options.def and chapters.def, its lists
 *   chapter_*.c   one chapter of the output each
 *   vector.c      the front end proper: checked calls at the accuracy of the
 *                 mode word, divided over threads by the cost tables
 *   watch.c       a log of element errors
 *   functions.*   the functions it knows, from one list
 *   data_file.c   the measurements
 *   picture.*     what the chapters draw
 *   support.c     memory, clock, progress line */
#ifndef FRONTEND_H
#define FRONTEND_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "functions.h"
#include "kef_version.h"
#include "kef_vm.h"

/* What every chapter may use. */
struct session {
    char title[100]; /* of the measurements; may be empty */
    double *measurements;
    int32_t count;           /* of measurements, at least 2 */
    int32_t elements;        /* of the long arrays */
    int threads;             /* at most so many for one call */
    struct picture *picture; /* or null; a chapter draws one row, and ends it */
    bool table;              /* every function in the summary */
    const char *portrait;    /* the function of a complex number to draw */
};

/* A chapter prints its part; false when a check in it failed. */
typedef bool chapter_function(const struct session *session);
#define CHAPTER(name, rows, title) chapter_function name##_chapter;
#include "chapters.def"
#undef CHAPTER

/* Whether there is such a function to draw. */
bool is_portrait(const char *name);

/* Reads one number a line into session->measurements, and the title from the
 * first comment. Empty lines and lines that begin with # are left out. On any
 * bad line or failure it reports to standard error, with line numbers, and
 * gives false. */
bool read_measurements(const char *path, struct session *session);
/* What the title begins with, "quantity, unit", or other words for it. Gives the unit. */
const char *copy_quantity(const struct session *session, char *to, size_t size);

/* y = f(a), y = f(a, b) or y, z = f(a) at the calling thread's accuracy, by up to
 * `threads` threads. Checks what the kernels do not: counts and pointers, with
 * the status as result. Element errors of all threads go to the calling thread's
 * callback (which must stand being called from several threads), status, errno
 * and exception flags, as if it had computed alone. */
int32_t vector_call(const struct function *function, int threads, int32_t n, const void *a,
                    const void *b, void *y, void *z);

/* How many threads vector_call would use at most, were there enough. */
int pieces_for(const struct function *function, int32_t n);

/* The slot of the calling thread's accuracy: HA where none is chosen, as for the
 * plain entry points. */
int current_slot(void);

/* Sets the mode word back. SetMode leaves a field as it is where its argument is
 * zero, so a field that was never chosen becomes what that means. */
void restore_mode(uint32_t mode);

/* Words for the status codes and for the mode word. */
const char *status_name(int32_t status);
const char *accuracy_name(int slot);
void print_mode(const char *before, uint32_t mode);

/* Watches the element errors of the calling thread, and of vector_call from it, by a
 * callback, until watched_errors; then callback and mode word are as before. */
enum { KEPT_ERRORS = 4 };
struct error_log {
    int count;                              /* of all errors */
    kef_vtm_error_record kept[KEPT_ERRORS]; /* the first ones */
};
void watch_errors(void);
const struct error_log *watched_errors(void);

/* Memory or end of the program with a message. */
void *allocate(size_t count, size_t size);

/* Time, and time of this thread on a processor where the system can tell. */
double seconds(void);
double processor_seconds(void);
int processors(void);

/* n numbers from low..high, the same ones every time for one `stream`; floats or
 * doubles by the size of an element. */
void fill(void *x, size_t size, int32_t n, double low, double high, uint64_t stream);

/* Progress of `total` steps on standard error: one line that is rewritten on a
 * terminal, else a plain line every tenth of the way. `what` is the step begun;
 * null ends the line. */
void progress(int step, int total, const char *what);

#endif
