/* The table of functions, expanded from functions.def. */
#ifndef FRONTEND_FUNCTIONS_H
#define FRONTEND_FUNCTIONS_H

#include <stddef.h>
#include <stdint.h>

enum { SLOTS = 3 }; /* LA, HA, EP */

/* The scalars of every call of a linear fraction: (2a + 1) / (b/4 + 3). */
#define SCALE_A 2
#define SHIFT_A 1
#define SCALE_B 0.25f
#define SHIFT_B 3

/* The exponent of every call with one vector and a scalar. */
#define POWER 2.5f

/* One function for one type. Vectors are of floats or doubles, by `size`; `b` is
 * read when there are two inputs, `z` written when there are two outputs. */
struct function {
    const char *name; /* with its type letter: "dExp" */
    size_t size;      /* of an element */
    int inputs, outputs;
    double low, high; /* interval of the arguments in the summary */
    double bound;     /* promised worst error of HA, in ulp */

    /* Calls the kernel of a slot through the dispatch table. */
    void (*call)(int slot, int32_t n, const void *a, const void *b, void *y, void *z);
    /* The kernel's address, to see which slots share one. */
    void (*(*kernel)(int slot))(void);
    float (*cost)(int slot); /* from the cost table */

    /* The same as a loop over the C library, and as a long double; NaN when the
     * C library has no such function. */
    void (*loop)(int32_t n, const void *a, const void *b, void *y, void *z);
    long double (*reference)(int output, long double a, long double b);
};

extern const struct function functions[];
extern const int function_count;

/* The function of that name, type letter included, or null. */
const struct function *find_function(const char *name);

#endif
