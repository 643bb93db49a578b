/* Statistics of the measurements, and of numbers while they are drawn: block by block and in one
 * block. Quantiles and a box plot; outliers that hide each other; a gap that is filled in. */
#include <float.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"
#include "kef_dist.h"
#include "kef_stats.h"
#include "picture.h"

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

/* ---- quantiles ------------------------------------------------------------ */

enum { PARTS = 5, LEAST_PART = 5, QUARTILES = 5 };

/* Least value, quartiles and greatest value of each of p variables of n values, one after the
 * other, and their median absolute deviations. */
struct spread {
    double quartile[PARTS][QUARTILES], deviation[PARTS];
};
static bool measure_spread(const double *x, int32_t p, int32_t n, struct spread *s) {
    static const double orders[QUARTILES] = {0, 0.25, 0.5, 0.75, 1};
    const int32_t storage = VTS_SS_STORAGE_ROWS, count = QUARTILES;
    kef_ss_task *task;
    if (__vtsdSSNewTask(&task, &p, &n, &storage, x, NULL, NULL, 0) != VTS_SS_STATUS_OK)
        return false;
    __vtsdSSEditQuantiles(task, &count, orders, s->quartile[0], NULL, NULL);
    __vtsdSSEditTask(task, VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION, s->deviation);
    const bool good = _vtsdSSQuantiles(task, 0, 0) == VTS_SS_STATUS_OK &&
                      _vtsdSSMAD(task, 0, 0) == VTS_SS_STATUS_OK;
    __vtsSSDeleteTask(&task);
    return good;
}

static void print_spread(const char *what, const double *quartile, double deviation) {
    printf("   %-8s", what);
    for (int k = 0; k < QUARTILES; ++k) printf(" %12.8g", quartile[k]);
    printf(" %12.6g\n", deviation);
}

/* A box from quartile to quartile, the median across it; lines to what is not farther than 1.5
 * times its height, dots beyond (Tukey, Exploratory Data Analysis, 1977). */
static void draw_spread(const struct panel *p, double at, const double *quartile, const double *x,
                        int32_t n) {
    const double reach = 1.5 * (quartile[3] - quartile[1]);
    double low = quartile[1], high = quartile[3];
    for (int32_t j = 0; j < n; ++j) {
        if (x[j] < quartile[1] - reach || x[j] > quartile[3] + reach)
            draw_dot(p, "#c03020", at, x[j]);
        else low = fmin(low, x[j]), high = fmax(high, x[j]);
    }
    draw_curve(p, "#204080", 2, (double[]){at, at}, (double[]){low, quartile[1]});
    draw_curve(p, "#204080", 2, (double[]){at, at}, (double[]){quartile[3], high});
    draw_box(p, at - 0.3, at + 0.3, quartile[1], quartile[3]);
    draw_curve(p, "#204080", 2, (double[]){at - 0.3, at + 0.3},
               (double[]){quartile[2], quartile[2]});
}

/* All measurements, and parts of them in their order. */
static bool quantiles(const struct session *session) {
    const double *x = session->measurements;
    const int32_t n = session->count, part = n / PARTS, parts = part >= LEAST_PART ? PARTS : 0;
    struct spread all, own;
    if (!measure_spread(x, 1, n, &all) || (parts > 0 && !measure_spread(x, parts, part, &own)))
        return false;
    printf("\n   Quartiles of the measurements");
    if (parts > 0) printf(", of all and of each %d in their order", (int)part);
    printf(
        "; the deviation is the\n"
        "   median one from the median, times 1.4826:\n\n"
        "            %12s %12s %12s %12s %12s %12s\n",
        "least", "25 %", "median", "75 %", "greatest", "deviation");
    print_spread("all", all.quartile[0], 1.4826 * all.deviation[0]);
    bool good = true;
    for (int i = 0; i < parts; ++i) {
        char number[20];
        snprintf(number, sizeof number, "block %d", i + 1);
        print_spread(number, own.quartile[i], 1.4826 * own.deviation[i]);
        good &=
            own.quartile[i][0] >= all.quartile[0][0] && own.quartile[i][4] <= all.quartile[0][4];
    }
    for (int k = 1; k < QUARTILES; ++k) good &= all.quartile[0][k - 1] <= all.quartile[0][k];

    const double margin = 0.05 * (all.quartile[0][4] - all.quartile[0][0]);
    if (session->picture != NULL && margin > 1e-290 && isfinite(20 * margin)) {
        struct panel p = left_panel(session->picture);
        p.low_x = -0.5, p.high_x = parts + 0.5;
        p.low_y = all.quartile[0][0] - margin, p.high_y = all.quartile[0][4] + 3 * margin;
        char quantity[100];
        copy_quantity(session, quantity, sizeof quantity);
        draw_axes(&p, "Measurements and their blocks", NULL, quantity);
        draw_key(&p, 0, "box: quartiles; lines: to 1.5 boxes; dots: beyond");
        draw_spread(&p, 0, all.quartile[0], x, n);
        draw_label(&p, 0, "all");
        for (int i = 0; i < parts; ++i) {
            char number[20];
            snprintf(number, sizeof number, "block %d", i + 1);
            draw_spread(&p, i + 1, own.quartile[i], x + (size_t)i * (size_t)part, part);
            draw_label(&p, i + 1, number);
        }
    }
    return good;
}

/* ---- outliers, and a gap -------------------------------------------------- */

/* Pairs of normal numbers of correlation 0.8, and a heap of others. */
enum { PAIRS = 60, PLANTED = 12, CIRCLE = 101, DRAWS = 200, LAW = 5 };

static bool draw_pairs(double pairs[PAIRS][2]) {
    const uint32_t seed = 1977;
    const double mean[] = {0, 0}, heap[] = {2.4, -2.4}, root[] = {1, 0.8, 0.6},
                 heap_root[] = {0.2, 0, 0.2};
    kef_stream *stream;
    if (__vtsNewStreamEx(&stream, VTS_BRNG_MT19937, 1, &seed) != VTS_STATUS_OK) return false;
    const bool good =
        _vtsdRngGaussianMV(VTS_METHOD_GAUSSIAN_INVERSION, stream, PAIRS - PLANTED, pairs[0], 2,
                           VTS_MATRIX_PACKED, mean, root) == VTS_STATUS_OK &&
        _vtsdRngGaussianMV(VTS_METHOD_GAUSSIAN_INVERSION, stream, PLANTED, pairs[PAIRS - PLANTED],
                           2, VTS_MATRIX_PACKED, heap, heap_root) == VTS_STATUS_OK;
    __vtsDeleteStream(&stream);
    return good;
}

/* The ellipse of the points at a Mahalanobis distance. */
static void draw_ellipse(const struct panel *p, const char *colour, const double mean[2],
                         const double covariance[4], double distance) {
    double x[CIRCLE], y[CIRCLE];
    const double a = sqrt(covariance[0]), b = covariance[1] / a, c = sqrt(covariance[3] - b * b);
    for (int k = 0; k < CIRCLE; ++k) {
        const double angle = 2 * acos(-1.0) * k / (CIRCLE - 1);
        x[k] = mean[0] + distance * a * cos(angle);
        y[k] = mean[1] + distance * (b * cos(angle) + c * sin(angle));
    }
    draw_curve(p, colour, CIRCLE, x, y);
}

static void count_outliers(const char *how, const double *kept) {
    int planted = 0, others = 0;
    for (int j = 0; j < PAIRS; ++j) *(j < PAIRS - PLANTED ? &others : &planted) += kept[j] == 0;
    printf("   %-44s %6d of %d %14d\n", how, planted, PLANTED, others);
}

/* The second number of pair 0 is taken out and filled in, by the pairs that are kept. */
static bool fill_gap(double pairs[PAIRS][2], const double *kept, double *expected,
                     double *deviation) {
    double complete[PAIRS][2], draws[DRAWS], laws[(1 + DRAWS) * LAW];
    const int32_t p = 2, storage = VTS_SS_STORAGE_COLUMNS, five = 5, none = 0, most = DRAWS,
                  law_count = (1 + DRAWS) * LAW;
    const double method[] = {200, 10, 1e-8, DRAWS, 1};
    int32_t n = 0;
    for (int j = 0; j < PAIRS; ++j)
        if (kept[j] != 0) {
            complete[n][0] = pairs[j][0];
            complete[n++][1] = pairs[j][1];
        }
    const double truth = complete[0][1];
    complete[0][1] = NAN;
    kef_ss_task *task;
    if (__vtsdSSNewTask(&task, &p, &n, &storage, complete[0], NULL, NULL, 0) != VTS_SS_STATUS_OK)
        return false;
    __vtsdSSEditMissingVals(task, &five, method, &none, NULL, &none, NULL, &most, draws, &law_count,
                            laws);
    const int32_t status = _vtsdSSMissingValues(task, 0, 0);
    __vtsSSDeleteTask(&task);
    if (status != VTS_SS_STATUS_OK) return false;
    /* laws: two means, then C00, C01, C11 */
    const double slope = laws[3] / laws[2];
    double mean = 0, square = 0;
    *expected = laws[1] + slope * (complete[0][0] - laws[0]);
    *deviation = sqrt(laws[4] - slope * laws[3]);
    for (int k = 0; k < DRAWS; ++k) mean += draws[k] / DRAWS;
    for (int k = 0; k < DRAWS; ++k) square += (draws[k] - mean) * (draws[k] - mean) / (DRAWS - 1);
    printf(
        "\n   A gap: the pair (%.3f, %.3f) without its second number. The law of the %d pairs "
        "that\n"
        "   were kept (EM) expects %.3f there, with a deviation of %.3f; %d values drawn by data\n"
        "   augmentation have the mean %.3f and the deviation %.3f.\n",
        complete[0][0], truth, (int)n, *expected, *deviation, DRAWS, mean, sqrt(square));
    return fabs(truth - *expected) <= 4 * *deviation && fabs(mean - *expected) <= *deviation &&
           fabs(sqrt(square) - *deviation) <= 0.5 * *deviation;
}

static bool outliers(const struct session *session) {
    double pairs[PAIRS][2], mean[2], covariance[4], distance[PAIRS], kept[PAIRS], plain[PAIRS],
        robust_mean[2], robust_covariance[4], expected, deviation;
    if (!draw_pairs(pairs)) return false;
    const int32_t p = 2, n = PAIRS, storage = VTS_SS_STORAGE_COLUMNS, three = 3, four = 4,
                  full = VTS_SS_LAYOUT_FULL;
    const double bacon[] = {2, 0.05, 0}, biweight[] = {0.5, 0.05, 1e-8, 200};
    /* Of normal pairs one of all is farther in 5 of 100 cases: exp(-distance^2/2) = 0.05/n. */
    const double limit = sqrt(-2 * log(0.05 / PAIRS));
    kef_ss_task *task;
    if (__vtsdSSNewTask(&task, &p, &n, &storage, pairs[0], NULL, NULL, 0) != VTS_SS_STATUS_OK)
        return false;
    __vtsdSSEditCovCor(task, mean, covariance, &full, NULL, NULL);
    __vtsdSSEditTask(task, VTS_SS_ID_MAHALANOBIS_DISTANCE, distance);
    __vtsdSSEditOutDetect(task, &three, bacon, kept);
    __vtsdSSEditRCov(task, &full, &four, biweight, robust_mean, robust_covariance);
    bool good = _vtsdSSBasic(task, VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_COVARIANCE,
                             VTS_SS_METHOD_TILED) == VTS_SS_STATUS_OK &&
                _vtsdSSMahDistance(task, 0, 0) == VTS_SS_STATUS_OK &&
                _vtsdSSOutliersDetection(task, 0, 0) == VTS_SS_STATUS_OK &&
                _vtsdSSRobustCovariance(task, 0, 0) == VTS_SS_STATUS_OK;
    __vtsSSDeleteTask(&task);
    if (!good) return false;

    for (int j = 0; j < PAIRS; ++j) plain[j] = distance[j] <= limit;
    printf(
        "\n   %d pairs of normal numbers of correlation 0.8, and a heap of %d others:\n\n"
        "   %-44s %12s %14s\n",
        PAIRS - PLANTED, PLANTED, "outliers found", "of the heap", "of the rest");
    count_outliers("by their distances from mean and covariance", plain);
    count_outliers("by OutliersDetection", kept);
    printf("   correlation: of all %.2f, by RobustCovariance %.2f\n",
           covariance[1] / sqrt(covariance[0] * covariance[3]),
           robust_covariance[1] / sqrt(robust_covariance[0] * robust_covariance[3]));
    for (int j = 0; j < PAIRS; ++j) good &= (kept[j] == 0) == (j >= PAIRS - PLANTED);
    if (!fill_gap(pairs, kept, &expected, &deviation)) return false;

    if (session->picture != NULL) {
        struct panel q = right_panel(session->picture);
        q.low_x = -5, q.high_x = 5, q.low_y = -5, q.high_y = 6;
        draw_axes(&q, "Outliers and a gap", "first number", "second number");
        for (int j = 0; j < PAIRS; ++j)
            draw_dot(&q, kept[j] != 0 ? "#204080" : "#c03020", pairs[j][0], pairs[j][1]);
        draw_ellipse(&q, "#a8c0e0", mean, covariance, 2.5);
        draw_ellipse(&q, "#204080", robust_mean, robust_covariance, 2.5);
        draw_curve(&q, "#e0a000", 2, (double[]){pairs[0][0], pairs[0][0]},
                   (double[]){expected - 2 * deviation, expected + 2 * deviation});
        draw_key(&q, 0, "dark ellipse: robust; light: mean and covariance");
        draw_key(&q, 1, "yellow: what fills the gap");
    }
    return good;
}

bool statistics_chapter(const struct session *session) {
    bool good = measured(session);
    good &= simulated(session);
    good &= quantiles(session);
    good &= outliers(session);
    if (session->picture != NULL) end_row(session->picture);
    return good;
}
