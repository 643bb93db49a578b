/* A Monte Carlo valuation: the right to exchange one asset for another, from correlated normal
 * vectors and the exponential, against its closed form. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "frontend.h"
#include "kef_dist.h"
#include "kef_stats.h"

/* Two assets whose logarithms are correlated Brownian motions with drift. */
enum { ASSETS = 2, BLOCK = 1000, REPORTS = 4, ENOUGH = 10000 };
static const double spot[ASSETS] = {100, 95}, volatility[ASSETS] = {0.30, 0.20},
                    yield[ASSETS] = {0.02, 0.01};
static const double correlation = 0.5, years = 2, rate = 0.03;

static double normal_below(double x) { return erfc(-x / sqrt(2.0)) / 2; }

/* The law of ln(S1 / S2) after the term: it is normal. */
struct ratio {
    double mean, deviation;
};
static struct ratio ratio_law(void) {
    const double *v = volatility;
    return (struct ratio){
        log(spot[0] / spot[1]) + (yield[1] - yield[0] - (v[0] * v[0] - v[1] * v[1]) / 2) * years,
        sqrt((v[0] * v[0] + v[1] * v[1] - 2 * correlation * v[0] * v[1]) * years)};
}

/* Value of max(S1 - S2, 0) (W. Margrabe, The value of an option to exchange one asset for
 * another, J. Finance 33 (1978) 177-186). */
static double exact_value(void) {
    const double s = ratio_law().deviation;
    const double first = spot[0] * exp(-yield[0] * years),
                 second = spot[1] * exp(-yield[1] * years);
    const double d = log(first / second) / s + s / 2;
    return first * normal_below(d) - second * normal_below(d - s);
}

/* One simulation: a stream, and the statistics of all discounted payoffs so far. */
struct simulation {
    kef_stream *stream;
    kef_ss_task *task;
    int32_t p, n, storage;
    double weights[2], mean, raw[3], central[3];
    double payoff[BLOCK];
};

static bool begin(struct simulation *s, int32_t brng, uint32_t seed) {
    *s = (struct simulation){.p = 1, .n = BLOCK, .storage = VTS_SS_STORAGE_ROWS};
    return __vtsNewStreamEx(&s->stream, brng, 1, &seed) == VTS_STATUS_OK &&
           __vtsdSSNewTask(&s->task, &s->p, &s->n, &s->storage, s->payoff, NULL, NULL, 0) ==
               VTS_SS_STATUS_OK &&
           __vtsdSSEditMoments(s->task, &s->mean, &s->raw[0], &s->raw[1], &s->raw[2],
                               &s->central[0], &s->central[1],
                               &s->central[2]) == VTS_SS_STATUS_OK &&
           __vtsdSSEditTask(s->task, VTS_SS_ID_ACCUMULATED_WEIGHTS, s->weights) == VTS_SS_STATUS_OK;
}

static void end(struct simulation *s) {
    if (s->stream != NULL) __vtsDeleteStream(&s->stream);
    if (s->task != NULL) __vtsSSDeleteTask(&s->task);
}

/* n <= BLOCK more pairs of prices: normal vectors with the mean and covariance of their
 * logarithms, and Exp of the most accurate kernel over both at once. */
static bool add(struct simulation *s, int32_t n, double price[ASSETS * BLOCK]) {
    double mean[ASSETS];
    for (int i = 0; i < ASSETS; ++i)
        mean[i] = log(spot[i]) + (rate - yield[i] - volatility[i] * volatility[i] / 2) * years;
    const double root = sqrt(years), *v = volatility;
    const double factor[] = {v[0] * root, v[1] * correlation * root,
                             v[1] * sqrt(1 - correlation * correlation) * root};
    if (_vtsdRngGaussianMV(VTS_METHOD_GAUSSIAN_INVERSION, s->stream, n, price, ASSETS,
                           VTS_MATRIX_PACKED, mean, factor) < 0)
        return false;
    _vtmdExp_HA(ASSETS * n, price, price);
    const double discount = exp(-rate * years);
    for (int32_t i = 0; i < n; ++i)
        s->payoff[i] = discount * fmax(price[2 * i] - price[2 * i + 1], 0);
    s->n = n;
    return _vtsdSSBasic(s->task, VTS_SS_ESTIMATE_MEAN | VTS_SS_ESTIMATE_CENTRAL_MOMENT_2,
                        VTS_SS_METHOD_TILED) == VTS_SS_STATUS_OK;
}

static double standard_error(const struct simulation *s) {
    return sqrt(s->central[0] / s->weights[0]);
}

/* Classes of S1 / S2 at the end of the term; the outer ones are open. */
enum { CLASSES = 16, BAR = 40 };
static const double first_limit = 0.4, class_width = 0.1;

static int class_of(double ratio) {
    return (int)fmin(fmax(floor((ratio - first_limit) / class_width) + 1, 0), CLASSES - 1);
}

/* Counts beside the law; false where chi-square is beyond its quantile of 1 - 10^-6 for 15
 * degrees of freedom. */
static bool print_histogram(const int64_t *count, int64_t total) {
    const struct ratio law = ratio_law();
    double below = 0, chi_square = 0;
    int64_t largest = 1;
    for (int k = 0; k < CLASSES; ++k)
        if (count[k] > largest) largest = count[k];
    printf("\n   first / second      share   by its law\n");
    for (int k = 0; k < CLASSES; ++k) {
        const double limit = first_limit + k * class_width;
        const double up_to =
            k == CLASSES - 1 ? 1 : normal_below((log(limit) - law.mean) / law.deviation);
        const double share = (double)count[k] / (double)total, expected = up_to - below;
        below = up_to;
        chi_square += (share - expected) * (share - expected) / expected * (double)total;
        if (k == 0) printf("   below %.1f       ", limit);
        else if (k == CLASSES - 1) printf("   above %.1f       ", limit - class_width);
        else printf("   %.1f to %.1f      ", limit - class_width, limit);
        printf("%7.3f %%  %7.3f %%  ", 100 * share, 100 * expected);
        for (int64_t i = 0; i < BAR * count[k] / largest; ++i) putchar('#');
        putchar('\n');
    }
    printf("   chi-square %.1f with %d degrees of freedom\n", chi_square, CLASSES - 1);
    return chi_square < 56.5;
}

bool montecarlo_chapter(const struct session *session) {
    static double price[ASSETS * BLOCK];
    static struct simulation pseudo, quasi;
    struct report {
        int32_t paths;
        double pseudo, error, quasi;
    } report[REPORTS];
    int reports = 0;
    int64_t count[CLASSES] = {0};
    const double exact = exact_value();
    const int32_t n = session->elements;

    bool good = begin(&pseudo, VTS_BRNG_MT19937, 1978);
    good = begin(&quasi, VTS_BRNG_SOBOL, ASSETS) && good;
    for (int32_t done = 0; done < n && good;) {
        const int32_t m = n - done < BLOCK ? n - done : BLOCK;
        progress(done / BLOCK, n / BLOCK + 1, "paths of two assets");
        good = add(&quasi, m, price) && add(&pseudo, m, price);
        for (int32_t i = 0; i < m && good; ++i) ++count[class_of(price[2 * i] / price[2 * i + 1])];
        done += m;
        /* A quarter as many paths as at the next report. */
        if (done >= n >> 2 * (REPORTS - 1 - reports))
            report[reports++] =
                (struct report){done, pseudo.mean, standard_error(&pseudo), quasi.mean};
    }
    progress(1, 1, NULL);
    end(&pseudo);
    end(&quasi);
    if (!good) return false;

    printf(
        "   The right to give an asset of price %.0f for one of price %.0f in %.0f years;"
        " volatilities %.0f %%\n   and %.0f %%, correlation %.1f. Its value by the closed form:"
        " %.6f. By simulation:\n\n"
        "   %10s   %-10s %-15s %-17s %-10s %s\n",
        spot[1], spot[0], years, 100 * volatility[1], 100 * volatility[0], correlation, exact,
        "paths", "MT19937", "standard error", "off by so many", "SOBOL", "off by");
    for (int k = 0; k < reports; ++k) {
        const struct report *r = &report[k];
        printf("   %10d   %-10.6f %-15.6f %-+17.2f %-10.6f %.1e\n", (int)r->paths, r->pseudo,
               r->error, r->error > 0 ? (r->pseudo - exact) / r->error : 0, r->quasi,
               fabs(r->quasi - exact));
    }
    /* Few paths prove nothing. Pseudo-random: five standard errors; quasi-random: one. */
    const struct report last = report[reports - 1];
    const bool close =
        fabs(last.pseudo - exact) < 5 * last.error && fabs(last.quasi - exact) < last.error;
    const bool as_its_law = print_histogram(count, n);
    return n < ENOUGH || (close && as_its_law);
}
