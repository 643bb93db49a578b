/* Splines: a census table between its decades, and the density of the measurements; both
 * as a picture. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"
#include "kef_fit.h"
#include "picture.h"

/* Inhabitants of the United States in millions, by the census every ten years from
 * 1790: the table `uspop` of R's package datasets (McNeil 1977). */
static const double census[] = {3.93,   5.31,   7.24,   9.64,   12.90, 17.10, 23.20,
                                31.40,  39.80,  50.20,  62.90,  76.00, 92.00, 105.70,
                                122.80, 131.70, 151.30, 179.30, 203.20};
enum {
    DECADES = sizeof census / sizeof census[0],
    FIRST_YEAR = 1790,
    LAST_YEAR = FIRST_YEAR + 10 * (DECADES - 1),
    CURVE = 401, /* sites of a drawn curve */
    MOST_CLASSES = 24,
    MOST_LIMITS = MOST_CLASSES + 6
};

/* A cubic spline with one function. */
struct spline {
    kef_df_task *task;
    double *coefficients;
};

/* `slopes`: those inside, for a Hermite cubic, else null. */
static struct spline make_spline(int64_t n, const double *x, const double *y, int64_t type,
                                 int64_t boundary, const double *ends, const double *slopes,
                                 int32_t construct(const kef_df_task *, int64_t)) {
    struct spline s = {NULL, allocate((size_t)(4 * (n - 1)), sizeof(double))};
    int32_t status = kef_df_kernel_dNewTask1D(&s.task, n, x, DF_UNIFORM, 1, y, DF_BY_ROWS, 0);
    if (status == DF_STATUS_OK)
        status = kef_df_kernel_dEditPPSpline1D(s.task, DF_CUBIC, type, boundary, ends,
                                               slopes ? DF_INTERNAL_FIRST : DF_NO_CONDITIONS,
                                               slopes, s.coefficients, DF_BY_ROWS);
    if (status == DF_STATUS_OK) status = construct(s.task, 0);
    if (status != DF_STATUS_OK) {
        fprintf(stderr, "frontend: the spline was refused: %s\n", kef_df_status_text(status));
        exit(1);
    }
    return s;
}

static void free_spline(struct spline *s) {
    kef_df_kernel_DeleteTask(&s->task);
    free(s->coefficients);
}

/* The derivative of that order at n sites; a grid is given by its ends. */
static void evaluate(const struct spline *s, int order, int64_t n, const double *site,
                     int64_t site_hint, double *result) {
    const int32_t flags[] = {order == 0, order == 1};
    kef_df_kernel_dDFInterpolate1D(s->task, DF_SPLINE, n, site, site_hint, 2, flags, result,
                                   DF_BY_ROWS, NULL);
}

/* CURVE values on a uniform grid. */
static void draw_spline(const struct panel *p, const double ends[2], const double *y) {
    double x[CURVE];
    for (int i = 0; i < CURVE; ++i) x[i] = ends[0] + (ends[1] - ends[0]) * i / (CURVE - 1);
    draw_curve(p, "#c03020", CURVE, x, y);
}

/* ---- the census ----------------------------------------------------------- */

static bool print_census(const struct picture *picture) {
    double years[DECADES], back[DECADES];
    for (int i = 0; i < DECADES; ++i) years[i] = FIRST_YEAR + 10 * i;
    struct spline s = make_spline(DECADES, years, census, DF_TYPE_NATURAL, DF_NOT_A_KNOT, NULL,
                                  NULL, kef_df_kernel_dDFNaturalCubicSpline1D);

    static const double asked[] = {1795, 1815, 1845, 1863, 1905, 1935, 1955, 1967};
    enum { ASKED = sizeof asked / sizeof asked[0] };
    double value[ASKED], slope[ASKED];
    evaluate(&s, 0, ASKED, asked, DF_SORTED, value);
    evaluate(&s, 1, ASKED, asked, DF_SORTED, slope);
    printf(
        "   Inhabitants of the United States in millions, %d censuses from %d to %d, as a\n"
        "   twice differentiable cubic (not-a-knot):\n\n"
        "   year   inhabitants   growth a year\n",
        DECADES, FIRST_YEAR, LAST_YEAR);
    for (int i = 0; i < ASKED; ++i)
        printf("   %4.0f   %11.2f   %13.3f\n", asked[i], value[i], slope[i]);

    /* Years lived: in parts, and all at once. */
    static const double from[] = {1790, 1800, 1850, 1900, 1790},
                        to[] = {1800, 1850, 1900, 1970, 1970};
    double integral[5];
    kef_df_kernel_dDFIntegrate1D(s.task, 0, 5, from, DF_ANY_ORDER, to, DF_ANY_ORDER, integral,
                                 DF_BY_ROWS);
    printf("\n   years lived (integral of the spline):\n");
    for (int i = 0; i < 5; ++i)
        printf("   %4.0f to %4.0f   %6.3f thousand million\n", from[i], to[i], integral[i] * 1e-3);

    /* The table comes back, and the parts make the whole. */
    evaluate(&s, 0, DECADES, years, DF_SORTED, back);
    bool fine = true;
    for (int i = 0; i < DECADES; ++i) fine &= fabs(back[i] - census[i]) <= 1e-13 * census[i];
    const double parts = integral[0] + integral[1] + integral[2] + integral[3];
    fine &= fabs(parts - integral[4]) <= 1e-14 * parts;

    if (picture != NULL) {
        struct panel p = left_panel(picture);
        p.low_x = FIRST_YEAR - 10, p.high_x = LAST_YEAR + 10, p.high_y = 220;
        const double ends[] = {FIRST_YEAR, LAST_YEAR};
        double curve[CURVE];
        evaluate(&s, 0, CURVE, ends, DF_UNIFORM, curve);
        draw_axes(&p, "Inhabitants of the United States", "year", "inhabitants, millions");
        draw_spline(&p, ends, curve);
        draw_key(&p, 0, "dots: censuses; curve: cubic spline");
        for (int i = 0; i < DECADES; ++i) draw_dot(&p, "#204080", years[i], census[i]);
    }
    free_spline(&s);
    return fine;
}

/* ---- the measurements ----------------------------------------------------- */

/* Classes of a round width, with an empty one at each end. */
struct histogram {
    int limits; /* classes and one */
    double limit[MOST_LIMITS], below[MOST_LIMITS];
    int32_t found[MOST_LIMITS]; /* in the class that ends at this limit */
    struct scale width;
    double first; /* the number of limit 0 in multiples of the width */
};

/* Classes by cell search; false where the measurements have no spread. */
static bool count_classes(const struct session *session, struct histogram *h) {
    const double *x = session->measurements;
    const int32_t n = session->count;
    double low = x[0], high = x[0];
    for (int32_t i = 1; i < n; ++i) low = fmin(low, x[i]), high = fmax(high, x[i]);
    const double width = (high - low) / fmin(fmax(ceil(sqrt(n)), 4), MOST_CLASSES);
    if (!isfinite(width) || width < 1e-290 || low + width <= low || high + width <= high)
        return false;
    h->width = round_steps(width);
    h->first = multiple_below(h->width, low) - 1;
    h->limits = (int)(multiple_below(h->width, high) - h->first) + 3;
    if (h->limits > MOST_LIMITS) return false;
    for (int k = 0; k < h->limits; ++k) h->limit[k] = multiple(h->width, h->first + k);

    kef_df_task *search;
    int32_t *cell = allocate((size_t)n, sizeof *cell);
    int32_t status =
        kef_df_kernel_dNewTask1D(&search, h->limits, h->limit, DF_UNIFORM, 0, NULL, 0, 0);
    if (status == DF_STATUS_OK) {
        status = kef_df_kernel_dDFSearch1D32(search, n, x, DF_ANY_ORDER, cell);
        kef_df_kernel_DeleteTask(&search);
    }
    if (status != DF_STATUS_OK) {
        fprintf(stderr, "frontend: the search was refused: %s\n", kef_df_status_text(status));
        exit(1);
    }
    for (int32_t i = 0; i < n; ++i) ++h->found[cell[i]];
    for (int k = 1; k < h->limits; ++k) h->below[k] = h->below[k - 1] + h->found[k];
    free(cell);
    return true;
}

/* A spline through the counts of all that is below each limit: its slope is a density
 * with the right area over every class (Boneva, Kendall and Stefanov 1971). The slopes of
 * the twice differentiable spline would make it negative beside empty classes; held
 * between 0 and three times the differences on both sides they make a rising cubic
 * (Hyman 1983, SIAM J. Sci. Stat. Comput. 4, p. 645). */
static struct spline rising_spline(const struct histogram *h) {
    static const double flat[] = {0, 0};
    double slope[MOST_LIMITS];
    struct spline smooth =
        make_spline(h->limits, h->limit, h->below, DF_TYPE_NATURAL, DF_FIRST_FIRST, flat, NULL,
                    kef_df_kernel_dDFNaturalCubicSpline1D);
    evaluate(&smooth, 1, h->limits, h->limit, DF_SORTED, slope);
    free_spline(&smooth);
    const double width = multiple(h->width, 1);
    for (int k = 1; k + 1 < h->limits; ++k)
        slope[k] = fmin(fmax(slope[k], 0), 3 * fmin(h->found[k], h->found[k + 1]) / width);
    return make_spline(h->limits, h->limit, h->below, DF_TYPE_HERMITE, DF_FIRST_FIRST, flat,
                       slope + 1, kef_df_kernel_dDFHermiteCubicSpline1D);
}

static bool print_histogram(const struct session *session) {
    struct histogram h = {0};
    if (!count_classes(session, &h)) {
        printf("\n   The measurements have no spread that a histogram could show.\n");
        return true;
    }
    const double width = multiple(h.width, 1);
    char number[40];
    write_multiple(h.width, 1, number, sizeof number);
    struct spline s = rising_spline(&h);
    printf(
        "\n   The measurements in %d classes, and a density by the slope of a rising spline\n"
        "   through the counts below each limit: never below zero, with the same area over\n"
        "   each class.\n\n"
        "   from             found   density at the middle (measurements per %s)\n",
        h.limits - 3, number);
    double largest = 0, density[CURVE];
    for (int k = 2; k + 1 < h.limits; ++k) {
        const double middle = h.limit[k - 1] + width / 2;
        evaluate(&s, 1, 1, &middle, DF_ANY_ORDER, density);
        write_multiple(h.width, h.first + k - 1, number, sizeof number);
        printf("   %-14s %7d   %8.2f\n", number, (int)h.found[k], density[0] * width);
    }

    const double ends[] = {h.limit[0], h.limit[h.limits - 1]};
    evaluate(&s, 1, CURVE, ends, DF_UNIFORM, density);
    bool fine = h.below[h.limits - 1] == session->count;
    for (int i = 0; i < CURVE; ++i) {
        density[i] *= width;
        fine &= density[i] >= -1e-12 * session->count;
        largest = fmax(largest, density[i]);
    }
    if (session->picture != NULL) {
        for (int k = 0; k < h.limits; ++k) largest = fmax(largest, h.found[k]);
        char quantity[100], count[160];
        const char *unit = copy_quantity(session, quantity, sizeof quantity);
        write_multiple(h.width, 1, number, sizeof number);
        snprintf(count, sizeof count, "measurements per %s%.60s", number, unit);
        struct panel p = right_panel(session->picture);
        p.low_x = ends[0], p.high_x = ends[1], p.high_y = 1.1 * largest;
        for (int k = 2; k + 1 < h.limits; ++k)
            draw_box(&p, h.limit[k - 1], h.limit[k], 0, h.found[k]);
        draw_axes(&p, "Measurements in classes", quantity, count);
        draw_spline(&p, ends, density);
        draw_key(&p, 0, "bars: found; curve: density");
    }
    free_spline(&s);
    return fine;
}

bool fitting_chapter(const struct session *session) {
    bool fine = print_census(session->picture);
    fine &= print_histogram(session);
    if (session->picture != NULL) end_row(session->picture);
    else printf("\n   --picture FILE.svg draws this.\n");
    return fine;
}
