/* Coefficients of the single-precision sines (vm/core/trig_plain.h) as sums, neighbours of
 * those that tools/trig.sollya prints: the result for pi/2 is 1, and none next to it is above 1
 * after rounding. Prints those of the least error.
 *
 *   gcc -O2 -msse2 -mfpmath=sse -ffp-contract=off tools/sines_within_one.c -lm && ./a.out
 */
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

static float from_bits(uint32_t bits) {
    float x;
    memcpy(&x, &bits, sizeof x);
    return x;
}

static const uint32_t half_pi = 0x3FC90FDB;
static float c[4];

static float long_sum(float r) {
    const float y = r * r;
    return r + (r * y) * ((c[0] + y * c[1]) + (y * y) * (c[2] + y * c[3]));
}
static float short_sum(float r) {
    const float y = r * r;
    return r + (r * y) * (c[0] + y * c[1]);
}

/* Up to `above` units beyond pi/2, where the reduction may end, and `below` under it. */
static int stays_within_one(float (*sum)(float), int above, int below) {
    if (sum(from_bits(half_pi)) != 1) return 0;
    for (int k = -above; k <= below; ++k)
        if (sum(from_bits(half_pi - k)) > 1) return 0;
    return 1;
}

static double worst_error(void) {
    double worst = 0;
    for (int i = 1; i <= 1000; ++i) {
        const double r = M_PI / 2 * i / 1000, y = r * r;
        const double s = r + r * y * (c[0] + y * (c[1] + y * (c[2] + y * c[3])));
        worst = fmax(worst, fabs(s / sin(r) - 1));
    }
    return worst;
}

/* Takes the bits at hand if they are the best so far. */
static void consider(float (*sum)(float), int above, int below, double *best) {
    if (!stays_within_one(sum, above, below)) return;
    const double error = worst_error();
    if (error >= *best) return;
    *best = error;
    for (int i = 0; i < 4; ++i) {
        uint32_t bits;
        memcpy(&bits, &c[i], sizeof bits);
        printf("%08X ", (unsigned)bits);
    }
    printf("2^%.2f\n", log2(error));
}

int main(void) {
    double best = 1;
    puts("LA");
    for (int s9 = -4000; s9 <= 4000; s9 += 7)
        for (int s7 = -6; s7 <= 6; ++s7)
            for (int s5 = -3; s5 <= 3; ++s5)
                for (int s3 = -1; s3 <= 1; ++s3) {
                    c[0] = from_bits(0xBE2AAAA6 + s3), c[1] = from_bits(0x3C08876D + s5);
                    c[2] = from_bits(0xB94FB879 + s7), c[3] = from_bits(0x362EE4A0 + s9);
                    consider(long_sum, 200, 20000, &best);
                }
    puts("EP");
    best = 1, c[2] = c[3] = 0;
    const double r = from_bits(half_pi), y = r * r;
    for (int i = 0; i < 40000; ++i) {
        c[1] = (float)(0.0072 + 0.0008 * i / 40000);
        const float s3 = (float)((1 / r - 1) / y - y * c[1]); /* 1 at pi/2 */
        uint32_t bits;
        memcpy(&bits, &s3, sizeof bits);
        for (int d = -8; d <= 8; ++d) {
            c[0] = from_bits(bits + d);
            consider(short_sum, 100, 2000000, &best);
        }
    }
}
