/* Random streams: one parent split into pieces, pi from pseudo-random and
 * quasi-random points, and a stream that is saved half way. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "frontend.h"
#include "kef_dist.h"
#include "kef_rng.h"

enum { PIECES = 3, EACH = 2000, SHOWN = 4 };

/* A stream with a seed of one word, or null after a message. */
static kef_stream *new_stream(int32_t brng, uint32_t seed) {
    kef_stream *stream = NULL;
    const int32_t status = __vtsNewStreamEx(&stream, brng, 1, &seed);
    if (status == VTS_STATUS_OK) return stream;
    fprintf(stderr, "   a stream of generator 0x%X: status %d\n", (unsigned)brng, (int)status);
    __vtsDeleteStream(&stream);
    return NULL;
}

static bool draw(kef_stream *stream, int32_t n, double *r) {
    return _vtsdRngUniform(VTS_METHOD_STANDARD, stream, n, r, 0, 1) >= 0;
}

/* Splits a stream into PIECES by leapfrog or by skipping, and lays the numbers of the
 * pieces together again: they must be the parent's. */
static bool tile(const char *name, int32_t brng, uint32_t seed, bool leapfrog) {
    static double parent[PIECES * EACH], pieces[PIECES * EACH], piece[EACH];
    kef_stream *whole = new_stream(brng, seed);
    if (whole == NULL) return false;
    bool good = true;
    for (int32_t k = 0; k < PIECES && good; ++k) {
        kef_stream *part = NULL;
        good = __vtsCopyStream(&part, whole) == VTS_STATUS_OK &&
               (leapfrog ? __vtsLeapfrogStream(part, k, PIECES)
                         : __vtsSkipAheadStream(part, (uint64_t)k * EACH)) == VTS_STATUS_OK &&
               draw(part, EACH, piece);
        for (int32_t i = 0; i < EACH; ++i)
            pieces[leapfrog ? k + i * PIECES : k * EACH + i] = piece[i];
        if (part != NULL) __vtsDeleteStream(&part);
    }
    good = good && draw(whole, PIECES * EACH, parent) && memcmp(parent, pieces, sizeof parent) == 0;
    __vtsDeleteStream(&whole);
    printf("   %-10s %-10s", name, leapfrog ? "leapfrog" : "skip-ahead");
    for (int i = 0; i < SHOWN; ++i) printf(" %.6f", parent[i]);
    printf("  %s\n", good ? "the pieces are the parent" : "THE PIECES DIFFER");
    return good;
}

/* Doubles the points from 1000 on; the share of points in the quarter circle, times
 * 4, is pi. False when the last estimate is further off than chance would have it. */
enum { FIRST_POINTS = 1000, DOUBLINGS = 11, BLOCK_POINTS = 500 };
static bool estimate_pi(void) {
    static double points[2 * BLOCK_POINTS];
    const double pi = acos(-1.0);
    kef_stream *streams[2] = {new_stream(VTS_BRNG_MT19937, 7), new_stream(VTS_BRNG_SOBOL, 2)};
    bool good = streams[0] != NULL && streams[1] != NULL;
    int64_t drawn = 0, inside[2] = {0, 0};
    double error[2] = {1, 1};
    printf("\n   pi from the share of random points in a quarter of the unit circle:\n");
    printf("   %10s   %-22s %s\n", "points", "MT19937 (error)", "SOBOL (error)");
    for (int doubling = 0; doubling <= DOUBLINGS && good; ++doubling) {
        const int64_t wanted = (int64_t)FIRST_POINTS << doubling;
        for (; drawn < wanted && good; drawn += BLOCK_POINTS)
            for (int s = 0; s < 2; ++s) {
                good = good && draw(streams[s], 2 * BLOCK_POINTS, points);
                for (int32_t i = 0; i < BLOCK_POINTS; ++i) {
                    const double x = points[2 * i], y = points[2 * i + 1];
                    inside[s] += x * x + y * y < 1;
                }
            }
        if (doubling % 2 == 0 && doubling != DOUBLINGS) continue;
        printf("   %10lld  ", (long long)drawn);
        for (int s = 0; s < 2; ++s) {
            const double estimate = 4.0 * (double)inside[s] / (double)drawn;
            error[s] = fabs(estimate - pi);
            printf("%s %.7f (%.1e)", s > 0 ? "   " : "", estimate, error[s]);
        }
        printf("\n");
    }
    for (int s = 0; s < 2; ++s)
        if (streams[s] != NULL) __vtsDeleteStream(&streams[s]);
    /* Pseudo-random: standard deviation 1.64 / sqrt(points); quasi-random: far less. */
    const double deviation = 1.64 / sqrt((double)drawn);
    return good && error[0] < 5 * deviation && error[1] < deviation;
}

/* Half of the numbers, a file, the other half from the file: the same as in one go. */
static bool save_and_continue(void) {
    static double whole[2 * EACH], halves[2 * EACH];
    static const char name[] = "kef_stream.tmp";
    kef_stream *stream = new_stream(VTS_BRNG_SFMT19937, 11), *copy = NULL, *loaded = NULL;
    if (stream == NULL) return false;
    const bool saved = __vtsCopyStream(&copy, stream) == VTS_STATUS_OK &&
                       draw(copy, 2 * EACH, whole) && draw(stream, EACH, halves) &&
                       __vtsSaveStreamF(stream, name, -1) == VTS_STATUS_OK;
    const int32_t bytes = __vtsGetStreamSize(stream);
    const bool good = saved && __vtsLoadStreamF(&loaded, name, -1) == VTS_STATUS_OK &&
                      draw(loaded, EACH, halves + EACH) && memcmp(whole, halves, sizeof whole) == 0;
    remove(name);
    if (copy != NULL) __vtsDeleteStream(&copy);
    if (loaded != NULL) __vtsDeleteStream(&loaded);
    __vtsDeleteStream(&stream);
    printf("\n   SFMT19937 saved after %d numbers (%d bytes) and loaded again:\n   %s\n", EACH,
           (int)bytes,
           good ? "the next ones are those of the unbroken stream" : "IT DOES NOT CONTINUE");
    return good;
}

bool streams_chapter(const struct session *session) {
    (void)session;
    printf("   One stream in %d pieces, first numbers of the parent:\n\n", PIECES);
    bool good = true;
    good &= tile("MCG31M1", VTS_BRNG_MCG31M1, 1234567, true);
    good &= tile("MCG59", VTS_BRNG_MCG59, 3456789, true);
    good &= tile("WH", VTS_BRNG_WH, 5678901, true);
    good &= tile("MRG32K3A", VTS_BRNG_MRG32K3A, 7890123, false);
    good &= tile("MT19937", VTS_BRNG_MT19937, 5, false);
    good &= tile("SFMT19937", VTS_BRNG_SFMT19937, 6, false);
    good &= tile("SOBOL", VTS_BRNG_SOBOL, PIECES, true);
    good &= tile("NIEDERR", VTS_BRNG_NIEDERR, PIECES, false);
    good &= estimate_pi();
    good &= save_and_continue();
    return good;
}
