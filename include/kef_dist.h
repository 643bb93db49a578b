/* Distribution generators over a random stream.
 *
 * Every function fills r with n numbers and returns a status: the generator's (kef_rng.h), negative
 * when it failed; numbers made until then stay in r. Methods, counts, pointers and
 * parameters are the caller's to check. The thread's vector-math mode and error callback are
 * the same after a call as before it. Nothing is allocated, except where a function says so. */
#ifndef KEF_DIST_H
#define KEF_DIST_H

#include <stdint.h>

#include "kef_export.h"
#include "kef_rng.h"

KEF_BEGIN_DECLS

enum {
    VTS_METHOD_STANDARD = 0,
    VTS_METHOD_ACCURATE = 0x40000000 /* flag: results are clamped to [a, b] */
};

/* --- uniform numbers -------------------------------------------------------- */

/* Uniform on [a, b), a < b: the generator's own mapping. Rounding may give b (or, for some a,
 * values a little outside); VTS_METHOD_ACCURATE clamps to [a, b]. */
KEF_API int32_t _vtsdRngUniform(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                double b);
KEF_API int32_t _vtssRngUniform(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                float b);

/* Integers uniform on [a, b): the floor of one double-precision uniform each. */
KEF_API int32_t _vtsiRngUniform(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                int32_t a, int32_t b);

/* n raw words of the generator, of its word size (kef_brng.word_size). */
KEF_API int32_t _vtsiRngUniformBits(int32_t method, kef_stream *stream, int32_t n, void *r);

/* 32 or 64 random bits a number from MT19937, MT2203, SFMT19937, TRNG (one or two words each, the
 * low half first) and MCG59 (the top 32 of its 59 bits, twice for 64). VTS_STATUS_NO_BITS from any
 * other generator, which is not advanced. */
KEF_API int32_t _vtsiRngUniformBits32(int32_t method, kef_stream *stream, int32_t n, uint32_t *r);
KEF_API int32_t _vtsiRngUniformBits64(int32_t method, kef_stream *stream, int32_t n, uint64_t *r);

/* --- normal, lognormal, multivariate normal ----------------------------------- */

/* Methods of the normal generators; u, u1 and u2 are successive uniforms of the stream. */
enum {
    VTS_METHOD_GAUSSIAN_BOX_MULLER = 0,       /* sqrt(-2 ln u1) sin(2 pi u2): two uniforms each */
    VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS = 1, /* that, then sqrt(-2 ln u1) cos(2 pi u2) */
    VTS_METHOD_GAUSSIAN_INVERSION = 2         /* sqrt2 times the inverse error function of u on
                                                 [-1, 1): one uniform each */
};

/* Normal with mean a and standard deviation sigma. Any sequence of calls gives the numbers of one
 * call for the sum of their counts; for the pairs after an odd count the stream keeps the last pair in
 * a chunk (key 2; single precision: key 1), which is allocated at the first call
 * (VTS_STATUS_NO_MEMORY) and copied, saved and deleted with the stream. A uniform of exactly 0 gives
 * a radius of 38.59; in the inversion one of exactly -1 gives a - 0.767 sqrt2 sigma, and 1, which
 * some generators round to in single precision, a + 5.86 sqrt2 sigma.
 * Box and Muller, Ann. Math. Statist. 29 (1958) 610-611. */
KEF_API int32_t _vtsdRngGaussian(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                 double sigma);
KEF_API int32_t _vtssRngGaussian(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                 float sigma);

/* Methods of the lognormal generators: which normal numbers they take. */
enum {
    VTS_METHOD_LOGNORMAL_BOX_MULLER_PAIRS = 0,
    VTS_METHOD_LOGNORMAL_INVERSION = 1 /* and any other value */
};

/* Lognormal: b + beta exp(x), x normal with mean a and standard deviation sigma. An exponential that
 * overflows is an error of vector math, which the thread's own mode word and callback handle. */
KEF_API int32_t _vtsdRngLognormal(int32_t method, kef_stream *stream, int32_t n, double *r,
                                  double a, double sigma, double b, double beta);
KEF_API int32_t _vtssRngLognormal(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                  float sigma, float b, float beta);

/* Storage of the factor of a covariance matrix. */
enum {
    VTS_MATRIX_FULL = 0,    /* by rows, dimension x dimension; what stands above the diagonal is
                               not read */
    VTS_MATRIX_PACKED = 1,  /* the lower triangle by columns: T(0,0) T(1,0) ... T(1,1) T(2,1) ... */
    VTS_MATRIX_DIAGONAL = 2 /* the diagonal alone; what is not there is zero */
};

/* n vectors of `dimension` numbers, one after another: a + T z, z of independent standard normal
 * numbers (method of the normal generators), so the covariance is T T^t. a: the mean vector. t: the
 * lower triangular Cholesky factor T in the given storage; any other storage leaves z as it is. With
 * dimension 1 the numbers are those of the normal generator for a[0] and t[0]. */
KEF_API int32_t _vtsdRngGaussianMV(int32_t method, kef_stream *stream, int32_t n, double *r,
                                   int32_t dimension, int32_t storage, const double *a,
                                   const double *t);
KEF_API int32_t _vtssRngGaussianMV(int32_t method, kef_stream *stream, int32_t n, float *r,
                                   int32_t dimension, int32_t storage, const float *a,
                                   const float *t);

/* --- other continuous laws ------------------------------------------------------ */

/* --- discrete laws -------------------------------------------------------------- */

KEF_END_DECLS

#endif
