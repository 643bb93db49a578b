/* What each accuracy costs and gives: every function of the list over a long vector. */
#include <float.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"

enum { CLIB = SLOTS, COLUMNS }; /* the slots, and a loop over the C library */

struct row {
    double nanoseconds[COLUMNS]; /* an element */
    double ulp[COLUMNS];         /* worst error; NaN where there is no reference */
    double bits[COLUMNS];        /* the same as correct bits */
    bool shared[COLUMNS];        /* the kernel is that of a column further left */
};

/* The columns from left to right. */
static const int order[COLUMNS] = {1, 0, 2, CLIB};

static double element(const struct function *f, const void *x, int32_t i) {
    return f->size == sizeof(float) ? (double)((const float *)x)[i] : ((const double *)x)[i];
}

/* The error of `got` in units of the last place of the exact result. */
static double ulp_error(const struct function *f, double got, long double exact) {
    if (isnan(exact)) return isnan(got) ? 0 : INFINITY;
    if (got == exact) return 0;
    if (isinf(exact) || !isfinite(got)) return INFINITY;
    const int digits = f->size == sizeof(float) ? FLT_MANT_DIG : DBL_MANT_DIG;
    const int lowest = f->size == sizeof(float) ? FLT_MIN_EXP : DBL_MIN_EXP;
    int exponent;
    frexpl(exact, &exponent);
    if (exponent < lowest) exponent = lowest;
    return (double)ldexpl(fabsl(got - exact), digits - exponent);
}

struct worst {
    double ulp, relative;
};

static void compare(const struct function *f, const void *y, const long double *exact, int32_t n,
                    struct worst *worst) {
    for (int32_t i = 0; i < n; ++i) {
        const double got = element(f, y, i);
        worst->ulp = fmax(worst->ulp, ulp_error(f, got, exact[i]));
        if (got != exact[i] && exact[i] != 0)
            worst->relative = fmax(worst->relative, (double)fabsl((got - exact[i]) / exact[i]));
    }
}

static void run_column(const struct function *f, int column, int32_t n, const void *a,
                       const void *b, void *y, void *z) {
    if (column == CLIB) f->loop(n, a, b, y, z);
    else f->call(column, n, a, b, y, z);
}

/* Shortens *best to the time of an element where some runs of the column are faster. */
static void time_column(const struct function *f, int column, int32_t n, const void *a,
                        const void *b, void *y, void *z, double *best) {
    double total = 0;
    for (int run = 0; run < 10 && total < 0.01; ++run) {
        const double start = processor_seconds();
        run_column(f, column, n, a, b, y, z);
        const double time = processor_seconds() - start;
        total += time;
        *best = fmin(*best, time * 1e9 / n);
    }
}

/* Whether the slot's kernel stands in an earlier slot of `order` as well. */
static bool is_shared(const struct function *f, int place) {
    for (int j = 0; j < place; ++j)
        if (f->kernel(order[j]) == f->kernel(order[place])) return true;
    return false;
}

static struct row measure(const struct function *f, int32_t n) {
    struct row row;
    void *a = allocate((size_t)n, f->size), *b = allocate((size_t)n, f->size);
    void *result[2] = {allocate((size_t)n, f->size), allocate((size_t)n, f->size)};
    long double *exact = allocate((size_t)n, sizeof *exact);
    fill(a, f->size, n, f->low, f->high, 1);
    fill(b, f->size, n, f->low, f->high, 2);
    /* A place where every function is defined tells whether there is a reference. */
    const long double width = (long double)f->high - f->low;
    const bool known = LDBL_MANT_DIG > DBL_MANT_DIG &&
                       !isnan(f->reference(0, f->low + 0.7L * width, f->low + 0.6L * width));

    for (int place = 0; place < COLUMNS; ++place) {
        const int column = order[place];
        row.shared[column] = column != CLIB && is_shared(f, place);
        row.nanoseconds[column] = row.ulp[column] = row.bits[column] = NAN;
    }
    /* In rounds, so that a busy moment of the machine does not hit one column alone. */
    for (int round = 0; round < 3; ++round)
        for (int column = 0; column < COLUMNS; ++column) {
            if (row.shared[column] || (column == CLIB && (!known || round > 0))) continue;
            time_column(f, column, n, a, b, result[0], result[1], &row.nanoseconds[column]);
        }
    struct worst worst[COLUMNS] = {{0, 0}};
    for (int output = 0; output < f->outputs && known; ++output) {
        for (int32_t i = 0; i < n; ++i)
            exact[i] = f->reference(output, element(f, a, i), element(f, b, i));
        for (int column = 0; column < COLUMNS; ++column) {
            if (row.shared[column]) continue;
            run_column(f, column, n, a, b, result[0], result[1]);
            compare(f, result[output], exact, n, &worst[column]);
            row.ulp[column] = worst[column].ulp;
            row.bits[column] = -log2(worst[column].relative);
        }
    }
    free(a), free(b), free(result[0]), free(result[1]), free(exact);
    return row;
}

static void print_cell(int width, int decimals, double value, bool shared) {
    if (shared) printf(" %*s", width, "=");
    else if (isnan(value)) printf(" %*s", width, "-");
    else if (isinf(value)) printf(" %*s", width, value > 0 && decimals == 1 ? "exact" : "wrong");
    else if (value == 0) printf(" %*s", width, "0");
    else if (fabs(value) < 1000) printf(" %*.*f", width, fabs(value) < 100 ? decimals : 1, value);
    else printf(" %*.0e", width, value);
}

bool summary_chapter(const struct session *session) {
    struct row *rows = allocate((size_t)function_count, sizeof *rows);
    for (int i = 0; i < function_count; ++i) {
        progress(i, function_count, functions[i].name);
        rows[i] = measure(&functions[i], session->elements);
    }
    progress(function_count, function_count, NULL);

    printf(
        "   %d elements each, processor time, the best of several runs. Worst error seen, against\n"
        "   the C library's long double. = stands where two accuracies share a kernel.\n\n",
        (int)session->elements);
    printf(
        "                  ns per element                  worst error, ulp        correct bits\n"
        "                  HA    LA    EP C lib      HA      LA      EP   C lib    HA    LA    "
        "EP\n");
    for (int i = 0; i < function_count; ++i) {
        const struct row *row = &rows[i];
        printf("   %-12s", functions[i].name);
        for (int j = 0; j < COLUMNS; ++j)
            print_cell(5, 2, row->nanoseconds[order[j]], row->shared[order[j]]);
        for (int j = 0; j < COLUMNS; ++j)
            print_cell(7, 3, row->ulp[order[j]], row->shared[order[j]]);
        for (int j = 0; j < SLOTS; ++j)
            print_cell(5, 1, row->bits[order[j]], row->shared[order[j]]);
        printf("\n");
    }
    free(rows);
    return true;
}
