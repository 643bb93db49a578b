/* Statistics of the measurements, and of numbers while they are drawn: block by block
 * and in one block. */
#include <float.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"
#include "kef_dist.h"
#include "kef_stats.h"

/* One variable: its task, and the arrays of length 1 that the task writes to. */
struct statistics {
    kef_ss_task *task;
    int32_t p, n, storage;
    double weights[2]; /* what carries the state from block to block */
    double mean, raw[3], central[3], kurtosis, skewness, variation, lowest, highest;
};

static bool begin(struct statistics *s) {
    *s = (struct statistics){.p = 1, .storage = VTS_SS_STORAGE_ROWS, .lowest = NAN, .highest = NAN};
    if (__vtsdSSNewTask(&s->task, &s->p, NULL, NULL, NULL, NULL, NULL, 0) != VTS_SS_STATUS_OK)
        return false;
    __vtsdSSEditMoments(s->task, &s->mean, &s->raw[0], &s->raw[1], &s->raw[2], &s->central[0],
                        &s->central[1], &s->central[2]);
    __vtsiSSEditTask(s->task, VTS_SS_ID_COUNT, &s->n);
    __vtsiSSEditTask(s->task, VTS_SS_ID_X_STORAGE, &s->storage);
    __vtsdSSEditTask(s->task, VTS_SS_ID_ACCUMULATED_WEIGHTS, s->weights);
    __vtsdSSEditTask(s->task, VTS_SS_ID_KURTOSIS, &s->kurtosis);
    __vtsdSSEditTask(s->task, VTS_SS_ID_SKEWNESS, &s->skewness);
    __vtsdSSEditTask(s->task, VTS_SS_ID_VARIATION, &s->variation);
    __vtsdSSEditTask(s->task, VTS_SS_ID_MINIMUM, &s->lowest);
    __vtsdSSEditTask(s->task, VTS_SS_ID_MAXIMUM, &s->highest);
    return true;
}

static void end(struct statistics *s) {
    if (s->task != NULL) __vtsSSDeleteTask(&s->task);
}

/* One more block. */
static bool add(struct statistics *s, const double *x, int32_t n) {
    s->n = n;
    return __vtsdSSEditTask(s->task, VTS_SS_ID_X, x) == VTS_SS_STATUS_OK &&
           _vtsdSSBasic(s->task,
                        VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2 |
                            VTS_SS_ESTIMATE_SKEWNESS | VTS_SS_ESTIMATE_KURTOSIS |
                            VTS_SS_ESTIMATE_VARIATION,
                        VTS_SS_METHOD_TILED) == VTS_SS_STATUS_OK &&
           _vtsdSSMinmax(s->task, VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM,
                         VTS_SS_METHOD_MINMAX) == VTS_SS_STATUS_OK;
}

/* A line of the table; raises *worst to the difference on the given scale. Results that
 * are not finite (no spread, squares too large) have no difference. */
static void compare(const char *what, double blocks, double one, double scale, double *worst) {
    printf("   %-20s %-22.15g %.15g\n", what, blocks, one);
    const double difference = fabs(blocks - one) / scale;
    if (difference > *worst) *worst = difference;
}

/* Both in a table; false when they differ by more than rounding. */
static bool print_both(const struct statistics *blocks, const struct statistics *one) {
    double worst = 0;
    const double b = sqrt(blocks->central[0]), o = sqrt(one->central[0]);
    printf("   %-20s %-22s %s\n", "", "block by block", "in one block");
    compare("mean", blocks->mean, one->mean, fabs(one->mean) + o, &worst);
    compare("standard deviation", b, o, o, &worst);
    compare("variation", blocks->variation, one->variation, fabs(one->variation), &worst);
    compare("skewness", blocks->skewness, one->skewness, one->kurtosis + 3, &worst);
    compare("excess kurtosis", blocks->kurtosis, one->kurtosis, one->kurtosis + 3, &worst);
    compare("minimum", blocks->lowest, one->lowest, fabs(one->lowest), &worst);
    compare("maximum", blocks->highest, one->highest, fabs(one->highest), &worst);
    const bool good = worst <= 1e-13 && blocks->weights[0] == one->weights[0];
    if (worst == 0) printf("   They agree to the last bit.\n");
    else
        printf("   They %s: largest difference %.1g, in units of the last place %.2g.\n",
               good ? "agree" : "DIFFER", worst, worst / DBL_EPSILON);
    return good;
}

/* The measurements in blocks of 7 and in one. */
static bool measured(const struct session *session) {
    enum { BLOCK = 7 };
    struct statistics blocks, one;
    bool good = begin(&blocks);
    good = begin(&one) && good && add(&one, session->measurements, session->count);
    for (int32_t i = 0; i < session->count && good; i += BLOCK)
        good = add(&blocks, session->measurements + i,
                   session->count - i < BLOCK ? session->count - i : BLOCK);
    printf("   The %d measurements, in blocks of %d:\n", (int)session->count, BLOCK);
    good = good && print_both(&blocks, &one);
    end(&blocks);
    end(&one);
    return good;
}

/* As many numbers as the long arrays have, drawn from the measurements with repetition
 * (a bootstrap sample): the statistics are those of all numbers so far at any time, and
 * no number need be kept. They are here, to compare. */
static bool simulated(const struct session *session) {
    enum { BLOCK = 1000 };
    static int32_t place[BLOCK];
    const uint32_t seed = 1879;
    const int32_t n = session->elements;
    double *x = allocate((size_t)n, sizeof *x);
    struct statistics blocks, one;
    kef_stream *stream = NULL;
    bool good = begin(&blocks);
    good = begin(&one) && good;
    good = __vtsNewStreamEx(&stream, VTS_BRNG_MT19937, 1, &seed) == VTS_STATUS_OK && good;
    printf("\n   %d numbers drawn from them, statistics after every %d:\n", (int)n, BLOCK);
    for (int32_t i = 0; i < n && good; i += BLOCK) {
        const int32_t m = n - i < BLOCK ? n - i : BLOCK;
        good = _vtsiRngUniform(VTS_METHOD_STANDARD, stream, m, place, 0, session->count) >= 0;
        for (int32_t k = 0; k < m; ++k) x[i + k] = session->measurements[place[k]];
        good = good && add(&blocks, x + i, m);
    }
    good = good && add(&one, x, n) && print_both(&blocks, &one);
    __vtsDeleteStream(&stream);
    end(&blocks);
    end(&one);
    free(x);
    return good;
}

bool statistics_chapter(const struct session *session) {
    const bool first = measured(session);
    return simulated(session) && first;
}
