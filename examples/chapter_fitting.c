/* Splines: a census table between its decades, and a smooth curve over the histogram
 * of the measurements; both as a picture. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"
#include "kef_fit.h"

/* Inhabitants of the United States in millions, by the census every ten years from
 * 1790: the table `uspop` of R's package datasets (McNeil 1977). */
static const double census[] = {3.93,   5.31,   7.24,   9.64,   12.90, 17.10, 23.20,
                                31.40,  39.80,  50.20,  62.90,  76.00, 92.00, 105.70,
                                122.80, 131.70, 151.30, 179.30, 203.20};
enum {
    DECADES = sizeof census / sizeof census[0],
    FIRST_YEAR = 1790,
    LAST_YEAR = FIRST_YEAR + 10 * (DECADES - 1),
    CURVE = 301, /* sites of a drawn curve */
    MOST_CLASSES = 24
};

/* A cubic spline with one function. */
struct spline {
    kef_df_task *task;
    double *coefficients;
};

static struct spline make_spline(int64_t n, const double *x, const double *y, int64_t type,
                                 int64_t boundary, const double *ends,
                                 int32_t construct(const kef_df_task *, int64_t)) {
    struct spline s = {NULL, allocate((size_t)(4 * (n - 1)), sizeof(double))};
    int32_t status = kef_df_kernel_dNewTask1D(&s.task, n, x, DF_UNIFORM, 1, y, DF_BY_ROWS, 0);
    if (status == DF_STATUS_OK)
        status = kef_df_kernel_dEditPPSpline1D(s.task, DF_CUBIC, type, boundary, ends,
                                               DF_NO_CONDITIONS, NULL, s.coefficients, DF_BY_ROWS);
    if (status == DF_STATUS_OK) status = construct(s.task, 0);
    if (status != DF_STATUS_OK) {
        fprintf(stderr, "frontend: the spline was refused with status %d\n", (int)status);
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

/* ---- the picture ---------------------------------------------------------- */

/* A panel of the picture: its place, and the ranges of its axes. */
struct panel {
    FILE *to;
    double left, low_x, high_x, high_y;
};
enum { WIDTH = 960, HEIGHT = 420, PANEL_WIDTH = 400, PANEL_HEIGHT = 310, TOP = 50 };

static double place_x(const struct panel *p, double x) {
    return p->left + PANEL_WIDTH * (x - p->low_x) / (p->high_x - p->low_x);
}
static double place_y(const struct panel *p, double y) {
    return TOP + PANEL_HEIGHT * (1 - y / p->high_y);
}

/* Frame, title, and `marks` numbers at each axis in the given format and unit. */
static void draw_axes(const struct panel *p, const char *title, const char *format_x,
                      const char *format_y, double unit_y) {
    enum { MARKS = 4 };
    fprintf(p->to, "<rect x='%.1f' y='%d' width='%d' height='%d' fill='none' stroke='#888'/>\n",
            p->left, TOP, PANEL_WIDTH, PANEL_HEIGHT);
    fprintf(p->to, "<text x='%.1f' y='%d' font-size='15'>%s</text>\n", p->left, TOP - 14, title);
    for (int i = 0; i <= MARKS; ++i) {
        const double x = p->low_x + (p->high_x - p->low_x) * i / MARKS, y = p->high_y * i / MARKS;
        fprintf(p->to, "<text x='%.1f' y='%d' text-anchor='middle'>", place_x(p, x),
                TOP + PANEL_HEIGHT + 18);
        fprintf(p->to, format_x, x);
        fprintf(p->to, "</text>\n<text x='%.1f' y='%.1f' text-anchor='end'>", p->left - 6,
                place_y(p, y) + 4);
        fprintf(p->to, format_y, y / unit_y);
        fprintf(p->to, "</text>\n");
    }
}

/* CURVE values on a uniform grid. */
static void draw_curve(const struct panel *p, const double ends[2], const double *y) {
    fprintf(p->to, "<polyline fill='none' stroke='#c03020' stroke-width='2' points='");
    for (int i = 0; i < CURVE; ++i) {
        const double x = ends[0] + (ends[1] - ends[0]) * i / (CURVE - 1);
        fprintf(p->to, "%.1f,%.1f ", place_x(p, x), place_y(p, fmin(fmax(y[i], 0), p->high_y)));
    }
    fprintf(p->to, "'/>\n");
}

/* ---- the census ----------------------------------------------------------- */

static bool print_census(FILE *picture) {
    double years[DECADES], back[DECADES];
    for (int i = 0; i < DECADES; ++i) years[i] = FIRST_YEAR + 10 * i;
    struct spline s = make_spline(DECADES, years, census, DF_TYPE_NATURAL, DF_NOT_A_KNOT, NULL,
                                  kef_df_kernel_dDFNaturalCubicSpline1D);

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
        const struct panel p = {picture, 60, FIRST_YEAR - 10, LAST_YEAR, 240};
        const double ends[] = {FIRST_YEAR, LAST_YEAR};
        double curve[CURVE];
        evaluate(&s, 0, CURVE, ends, DF_UNIFORM, curve);
        draw_axes(&p, "Inhabitants of the United States (millions)", "%.0f", "%.0f", 1);
        draw_curve(&p, ends, curve);
        for (int i = 0; i < DECADES; ++i)
            fprintf(picture, "<circle cx='%.1f' cy='%.1f' r='3.5' fill='#204080'/>\n",
                    place_x(&p, years[i]), place_y(&p, census[i]));
    }
    free_spline(&s);
    return fine;
}

/* ---- the measurements ----------------------------------------------------- */

/* Classes by cell search. The slope of a spline through the counts of all that is
 * below each limit is a density with the same area over every class (Boneva, Kendall
 * and Stefanov 1971); beside empty classes it may dip below zero. */
static bool print_histogram(const struct session *session, FILE *picture) {
    const double *x = session->measurements;
    const int32_t n = session->count;
    double low = x[0], high = x[0];
    for (int32_t i = 1; i < n; ++i) low = fmin(low, x[i]), high = fmax(high, x[i]);
    const int classes = (int)fmin(fmax(ceil(sqrt(n)), 4), MOST_CLASSES);
    const double width = (high - low) / classes;
    if (!isfinite(width) || low + width <= low || high + width <= high) {
        printf("\n   The measurements have no spread that a histogram could show.\n");
        return true;
    }
    double limit[MOST_CLASSES + 3], below[MOST_CLASSES + 3] = {0};
    for (int k = 0; k < classes + 3; ++k) limit[k] = low + (k - 1) * width;
    limit[classes + 1] = fmax(limit[classes + 1], high);

    kef_df_task *search;
    int32_t *cell = allocate((size_t)n, sizeof *cell);
    int32_t status =
        kef_df_kernel_dNewTask1D(&search, classes + 3, limit, DF_UNIFORM, 0, NULL, 0, 0);
    if (status == DF_STATUS_OK)
        status = kef_df_kernel_dDFSearch1D32(search, n, x, DF_ANY_ORDER, cell);
    if (status != DF_STATUS_OK) {
        free(cell);
        return false;
    }
    kef_df_kernel_DeleteTask(&search);
    int32_t found[MOST_CLASSES + 3] = {0};
    for (int32_t i = 0; i < n; ++i) /* the largest belongs to the last class */
        ++found[cell[i] > classes + 1 ? classes + 1 : cell[i]];
    free(cell);
    for (int k = 1; k < classes + 3; ++k) below[k] = below[k - 1] + found[k];

    static const double flat[] = {0, 0};
    struct spline s = make_spline(classes + 3, limit, below, DF_TYPE_NATURAL, DF_FIRST_FIRST, flat,
                                  kef_df_kernel_dDFNaturalCubicSpline1D);
    printf(
        "\n   The measurements in %d classes, with the slope of a spline through the counts\n"
        "   below each limit: a smooth density with the same area over each class.\n\n"
        "   from             found   density (measurements a class) at the middle\n",
        classes);
    double largest = 1;
    for (int k = 2; k < classes + 2; ++k) {
        const double middle = limit[k - 1] + width / 2;
        double density;
        evaluate(&s, 1, 1, &middle, DF_ANY_ORDER, &density);
        printf("   %-14.8g %7d   %8.2f\n", limit[k - 1], (int)found[k], density * width);
        largest = fmax(largest, found[k]);
    }
    if (picture != NULL) {
        const struct panel p = {picture, 530, limit[0], limit[classes + 2],
                                ceil(largest / 4 * 1.2) * 4};
        const double ends[] = {limit[0], limit[classes + 2]};
        double curve[CURVE];
        evaluate(&s, 1, CURVE, ends, DF_UNIFORM, curve);
        for (int i = 0; i < CURVE; ++i) curve[i] *= width;
        for (int k = 2; k < classes + 2; ++k)
            fprintf(picture,
                    "<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' fill='#a8c0e0' "
                    "stroke='#204080'/>\n",
                    place_x(&p, limit[k - 1]), place_y(&p, found[k]),
                    place_x(&p, limit[k]) - place_x(&p, limit[k - 1]),
                    place_y(&p, 0) - place_y(&p, found[k]));
        draw_axes(&p, "Measurements a class, and density of the spline", "%.6g", "%.0f", 1);
        draw_curve(&p, ends, curve);
    }
    free_spline(&s);
    return below[classes + 2] == n;
}

bool fitting_chapter(const struct session *session) {
    FILE *picture = NULL;
    if (session->picture != NULL) {
        picture = fopen(session->picture, "w");
        if (picture == NULL) {
            perror(session->picture);
            return false;
        }
        fprintf(picture,
                "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' "
                "viewBox='0 0 %d %d' font-family='sans-serif' font-size='12'>\n"
                "<rect width='100%%' height='100%%' fill='white'/>\n",
                WIDTH, HEIGHT, WIDTH, HEIGHT);
    }
    bool fine = print_census(picture);
    fine &= print_histogram(session, picture);
    if (picture != NULL) {
        fprintf(picture, "</svg>\n");
        const bool written = !ferror(picture);
        if (fclose(picture) != 0 || !written) {
            fprintf(stderr, "frontend: %s could not be written\n", session->picture);
            return false;
        }
        printf("\n   The picture is in %s.\n", session->picture);
    } else {
        printf("\n   --picture FILE.svg draws this.\n");
    }
    return fine;
}
