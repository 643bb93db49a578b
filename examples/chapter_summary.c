/* What each accuracy costs and gives: functions of the list over a long vector, in short, and all
 * of them as a table. */
#include <float.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"

/* The columns: the slots, and a loop over the C library. */
enum { LA, HA, EP, CLIB = SLOTS, COLUMNS };

struct row {
    double nanoseconds[COLUMNS]; /* an element */
    double ulp[COLUMNS];         /* worst error; NaN where there is no reference */
    double bits[COLUMNS];        /* the same as correct bits */
    bool shared[COLUMNS];        /* the kernel is that of a column further left */
};

/* The columns from left to right. */
static const int order[COLUMNS] = {HA, LA, EP, CLIB};

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

/* LA and EP keep so many bits of a relative error. */
static double promised_bits(const struct function *f, int slot) {
    const bool single = f->size == sizeof(float);
    return slot == LA ? (single ? 21 : 50) : (single ? 11 : 26);
}

/* Whether the errors seen are within the promised ones; the reference itself is off by 1/64 ulp of
 * a double at most. */
static bool kept(const struct function *f, const struct row *row) {
    const double slack = f->size == sizeof(float) ? 0x1p-35 : 0x1p-6;
    bool good = isnan(row->ulp[HA]) || row->ulp[HA] <= f->bound + slack;
    for (int slot = 0; slot < SLOTS; ++slot)
        if (slot != HA && !row->shared[slot] && !isnan(row->bits[slot]))
            good = good && row->bits[slot] >= promised_bits(f, slot);
    return good;
}

static void print_cell(int width, int decimals, double value, bool shared) {
    if (shared) printf(" %*s", width, "=");
    else if (isnan(value)) printf(" %*s", width, "-");
    else if (isinf(value)) printf(" %*s", width, value > 0 && decimals == 1 ? "exact" : "wrong");
    else if (value == 0) printf(" %*s", width, "0");
    else printf(" %*.*f", width, fabs(value) < 100 ? decimals : decimals > 0, value);
}

static void print_table(const struct row *rows, int32_t n) {
    printf(
        "   Processor time in ns an element, the best of several runs, and the worst error in %d\n"
        "   random arguments, against the C library's long double. C lib: a loop over the C\n"
        "   library's function. = stands where two accuracies share a kernel.\n\n"
        "                     ns an element              error, ulp        correct bits\n"
        "                  HA    LA    EP  C lib     HA promised C lib      LA     EP\n",
        (int)n);
    for (int i = 0; i < function_count; ++i) {
        const struct row *row = &rows[i];
        printf("   %-12s", functions[i].name);
        for (int j = 0; j < COLUMNS; ++j)
            print_cell(j < SLOTS ? 5 : 6, 2, row->nanoseconds[order[j]], row->shared[order[j]]);
        print_cell(6, 3, row->ulp[HA], false);
        printf(" %8g", functions[i].bound);
        print_cell(5, 3, row->ulp[CLIB], false);
        printf("  ");
        for (int j = 1; j < SLOTS; ++j)
            print_cell(6, 1, row->bits[order[j]], row->shared[order[j]]);
        printf("%s\n", kept(&functions[i], row) ? "" : "  MISSED");
    }
    printf("\n");
}

/* The functions of the short form: it is to fit a screen. */
static const char *const chosen[] = {"dExp", "dLn",     "dPow", "dSin", "dAtan", "dTanh",
                                     "dErf", "dTGamma", "sExp", "sLn",  "sPow",  "sSin"};
enum { CHOSEN = sizeof chosen / sizeof chosen[0] };

static void print_summary(const struct row *rows, int32_t n, bool table) {
    printf(
        "   How many times faster than a loop over the C library's function, and the worst error "
        "in\n"
        "   %d random arguments beside the promised one%s.\n\n"
        "               HA: the highest accuracy       LA: 50 or 21 bits     EP: 26 or 11 bits\n"
        "               faster  error, ulp  at most    faster  bits of       faster  bits of\n",
        (int)n, table ? "" : "; --table shows all functions");
    for (int i = 0; i < CHOSEN; ++i) {
        const struct function *f = find_function(chosen[i]);
        const struct row *row = &rows[f - functions];
        printf("   %-9s %8.1f %11.3f %8g", f->name, row->nanoseconds[CLIB] / row->nanoseconds[HA],
               row->ulp[HA], f->bound);
        for (int j = 1; j < SLOTS; ++j) {
            int kernel = j; /* a shared one stands further left */
            while (row->shared[order[kernel]]) --kernel;
            printf(" %9.1f %5.1f %4g", row->nanoseconds[CLIB] / row->nanoseconds[order[kernel]],
                   row->bits[order[kernel]], promised_bits(f, order[j]));
        }
        printf("%s\n", kept(f, row) ? "" : "  MISSED");
    }
}

bool summary_chapter(const struct session *session) {
    struct row *rows = allocate((size_t)function_count, sizeof *rows);
    const int count = session->table ? function_count : CHOSEN;
    bool good = true;
    for (int i = 0; i < count; ++i) {
        const struct function *f = session->table ? &functions[i] : find_function(chosen[i]);
        struct row *row = &rows[f - functions];
        progress(i, count, f->name);
        *row = measure(f, session->elements);
        good = kept(f, row) && good;
    }
    progress(count, count, NULL);
    if (session->table) print_table(rows, session->elements);
    print_summary(rows, session->elements, session->table);
    free(rows);
    return good;
}
