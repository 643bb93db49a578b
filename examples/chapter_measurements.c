/* The functions at work on real numbers: means, a histogram beside the normal
 * distribution, outliers. Entry points are picked by name here. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"

enum { CLASSES = 16, BAR = 40 };
static const double class_width = 0.5; /* standard deviations */

static double mean(const double *x, int32_t n) {
    long double sum = 0;
    for (int32_t i = 0; i < n; ++i) sum += x[i];
    return (double)(sum / n);
}

/* One line; `status` tells whether the vectors behind the value had errors. */
static void print_value(const char *what, double value, int32_t status, const char *how) {
    if (status != VTM_STATUS_OK)
        printf("   %-20s %-14s %s: %s\n", what, "not defined", how, status_name(status));
    else if (how[0] != '\0') printf("   %-20s %-14.9g %s\n", what, value, how);
    else printf("   %-20s %.9g\n", what, value);
}

static void print_histogram(const double *z, double *work, int32_t n, double centre, double width) {
    /* Class of z: floor(z / class_width), the first one being -CLASSES/2. */
    int32_t observed[CLASSES] = {0}, largest = 1;
    _vtmdLinearFrac(n, z, z, 1, 0, 0, class_width, work);
    _vtmdFloor(n, work, work);
    for (int32_t i = 0; i < n; ++i) {
        const double k = fmin(fmax(work[i] + CLASSES / 2, 0), CLASSES - 1);
        if (++observed[(int)k] > largest) largest = observed[(int)k];
    }
    /* Normal density at the middle of each class. */
    double expected[CLASSES];
    for (int k = 0; k < CLASSES; ++k) expected[k] = (k + 0.5 - CLASSES / 2) * class_width;
    _vtmdSqr(CLASSES, expected, expected);
    _vtmdLinearFrac(CLASSES, expected, expected, -1, 0, 0, 2, expected);
    _vtmdExp(CLASSES, expected, expected);

    printf("\n   from           found   (o: normal distribution)\n");
    const double height = n * class_width / sqrt(2 * acos(-1.0));
    for (int k = 0; k < CLASSES; ++k) {
        char bar[BAR + 1];
        const int length = (int)((double)observed[k] * BAR / largest + 0.5);
        const double point = expected[k] * height * BAR / largest;
        for (int i = 0; i < BAR; ++i) bar[i] = i < length ? '#' : ' ';
        if (point >= 0.5 && point < BAR) bar[(int)point] = 'o';
        bar[BAR] = '\0';
        for (int i = BAR; i > 0 && bar[i - 1] == ' ';) bar[--i] = '\0';
        if (observed[k] > 0 || bar[0] != '\0')
            printf("   %-14.6g %5d   %s\n", centre + (k - CLASSES / 2) * class_width * width,
                   (int)observed[k], bar);
    }
}

/* Gathers the elements of x with |z| > 2 by a mask. */
static void print_outliers(const double *x, const double *z, double *work, int32_t n) {
    int32_t *mask = allocate((size_t)n, sizeof *mask);
    int32_t count = 0;
    _vtmdAbs(n, z, work);
    for (int32_t i = 0; i < n; ++i) count += mask[i] = work[i] > 2;
    _vtmdPackM(n, x, mask, work);
    printf("\n   Farther than two standard deviations from the mean (_vtmdPackM): %d\n  ",
           (int)count);
    for (int32_t i = 0; i < count && i < 8; ++i) printf(" %.8g", work[i]);
    printf("%s\n", count > 8 ? " ..." : "");
    free(mask);
}

bool measurements_chapter(const struct session *session) {
    const double *x = session->measurements;
    const int32_t n = session->count;
    double *z = allocate((size_t)n, sizeof *z), *work = allocate((size_t)n, sizeof *work);

    double low = x[0], high = x[0];
    for (int32_t i = 1; i < n; ++i) low = fmin(low, x[i]), high = fmax(high, x[i]);
    if (session->title[0] != '\0') printf("   %s\n", session->title);
    printf("   %d values from %.9g to %.9g\n\n", (int)n, low, high);

    const double centre = mean(x, n);
    print_value("mean", centre, VTM_STATUS_OK, "");

    /* Geometric and harmonic mean; where they are not defined, an element error says so. */
    kef_vtm_kernel_ClearErrStatus();
    _vtmdLn(n, x, work);
    double value = mean(work, n);
    _vtmdExp(1, &value, &value);
    print_value("geometric mean", value, kef_vtm_kernel_ClearErrStatus(), "_vtmdLn, _vtmdExp");
    _vtmdInv(n, x, work);
    value = mean(work, n);
    _vtmdInv(1, &value, &value);
    print_value("harmonic mean", value, kef_vtm_kernel_ClearErrStatus(), "_vtmdInv");

    /* Deviations from the mean, as (1 x - mean) / (0 x + 1). */
    _vtmdLinearFrac(n, x, x, 1, -centre, 0, 1, z);
    _vtmdSqr(n, z, work);
    double deviation = mean(work, n) * n / (n - 1);
    _vtmdSqrt(1, &deviation, &deviation);
    print_value("standard deviation", deviation, VTM_STATUS_OK,
                "_vtmdLinearFrac, _vtmdSqr, _vtmdSqrt");

    if (isfinite(deviation) && deviation > 0) {
        _vtmdLinearFrac(n, x, x, 1, -centre, 0, deviation, z);
        print_histogram(z, work, n, centre, deviation);
        print_outliers(x, z, work, n);
    } else {
        printf("\n   No histogram: the spread is %s.\n", deviation == 0 ? "zero" : "too large");
    }
    free(z);
    free(work);
    return true;
}
