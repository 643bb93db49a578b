/* Distribution generators over a random stream.
 *
 * Every function fills r with n numbers and returns a status: the generator's (kef_rng.h), negative
 * when it failed; numbers made until then stay in r. n <= 0 makes none. Methods, counts, pointers
 * and parameters are the caller's to check; the uniform generators alone look at
 * VTS_METHOD_ACCURATE, and the others take their method without it, Lognormal apart. Nothing is
 * allocated, except where a function says so. Stack: at most 48 KB (docs/distributions.md).
 *
 * The thread's vector-math mode and error callback are the same after a call as before it. Its
 * status is not: a logarithm of a uniform of exactly 0 leaves VTM_STATUS_SING.
 *
 * What is called back during a call (routines of a generator of the caller's, refills of an
 * abstract stream, rewritten dispatch slots, the error callback in Lognormal) may find the law's
 * own mode, VTM_ERRMODE_CALLBACK, and the law's own error callback set; which laws set them,
 * docs/distributions.md tells. It has to return. An exception that leaves it ends the process, with
 * the message of the C++ runtime; a jump out of it (longjmp) is forbidden: the thread would keep
 * that mode and callback. On Windows an exception is forbidden likewise, and not held up; nor is it
 * by _vtsiRngUniformBits, which sets nothing: there it reaches the caller, and the generator's
 * state is what the routine that threw left. */
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

/* Uniform on [a, b), a < b, both finite: the generator's own mapping. Rounding may give b (or, for
 * some a, values a little outside); VTS_METHOD_ACCURATE clamps to [a, b]. Where b - a overflows, or
 * is so small that the mapping's factor would be subnormal, results lie in [a, b] in any case. */
KEF_API int32_t _vtsdRngUniform(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                double b);
KEF_API int32_t _vtssRngUniform(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                float b);

/* Integers uniform on [a, b): the floor of one double-precision uniform each, which
 * rounds to b now and then: once in 2^23 (b - a) numbers at most. */
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
 * call for the sum of their counts; for the pairs after an odd count the stream keeps the last pair
 * in a chunk (key 2; single precision: key 1), which is allocated at the first call
 * (VTS_STATUS_NO_MEMORY) and copied, saved and deleted with the stream. A uniform of exactly 0
 * gives a radius of 38.59; in the inversion one of exactly -1 gives a - 0.767 sqrt2 sigma, and 1,
 * which some generators round to in single precision, a + 5.86 sqrt2 sigma. Box and Muller, Ann.
 * Math. Statist. 29 (1958) 610-611. */
KEF_API int32_t _vtsdRngGaussian(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                 double sigma);
KEF_API int32_t _vtssRngGaussian(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                 float sigma);

/* Methods of the lognormal generators: which normal numbers they take. */
enum {
    VTS_METHOD_LOGNORMAL_BOX_MULLER_PAIRS = 0,
    VTS_METHOD_LOGNORMAL_INVERSION = 1 /* and any other value */
};

/* Lognormal: b + beta exp(x), x normal with mean a and standard deviation sigma. An exponential
 * that overflows is an error of vector math, which the thread's own mode word and callback handle.
 * Method 0 keeps its pairs in the stream and allocates as the normal generator does; by a uniform
 * of 0 its numbers reach exp(a + 38.59 sigma), which in single precision outweighs all others in
 * the mean from sigma = 0.5 (docs/distributions.md). */
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
 * lower triangular Cholesky factor T in the given storage; any other storage leaves z as it is.
 * With dimension 1 the numbers are those of the normal generator for a[0] and t[0]. */
KEF_API int32_t _vtsdRngGaussianMV(int32_t method, kef_stream *stream, int32_t n, double *r,
                                   int32_t dimension, int32_t storage, const double *a,
                                   const double *t);
KEF_API int32_t _vtssRngGaussianMV(int32_t method, kef_stream *stream, int32_t n, float *r,
                                   int32_t dimension, int32_t storage, const float *a,
                                   const float *t);

/* --- other continuous laws ------------------------------------------------------ */

/* Every law here takes a displacement a and a scale beta > 0, and a standard number X of the law:
 * the result is a + beta X. The method is not looked at. u is a uniform on [0, 1); a logarithm of u
 * = 0 is -744.4400719213812 (that of the smallest subnormal double), so every number is finite but
 * for overflow. What that value does to mean and variance, docs/distributions.md tells.
 * Elementary functions have 26 good bits in double and 11 in single precision. The laws up to
 * Gumbel use one uniform a number (Laplace two) in the order of the numbers: calls that sum to n
 * give the numbers of one call for n. */

/* Exponential: X = -ln u, density e^-x on x >= 0. Results are not below a. */
KEF_API int32_t _vtsdRngExponential(int32_t method, kef_stream *stream, int32_t n, double *r,
                                    double a, double beta);
KEF_API int32_t _vtssRngExponential(int32_t method, kef_stream *stream, int32_t n, float *r,
                                    float a, float beta);

/* Laplace: X = -ln u or ln u with equal chances, density e^-|x| / 2. Variance 2 beta^2. */
KEF_API int32_t _vtsdRngLaplace(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                double beta);
KEF_API int32_t _vtssRngLaplace(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                float beta);

/* Weibull of shape alpha > 0: X = (-ln u)^(1 / alpha), P(X > x) = e^-(x^alpha). Results are not
 * below a; alpha = 1 gives the exponential numbers. A number is infinite where the power overflows:
 * -ln u > 2^(1024 alpha) in double, 2^(128 alpha) in single precision; a shape above 0.0094
 * (single: 0.075) never does. */
KEF_API int32_t _vtsdRngWeibull(int32_t method, kef_stream *stream, int32_t n, double *r,
                                double alpha, double a, double beta);
KEF_API int32_t _vtssRngWeibull(int32_t method, kef_stream *stream, int32_t n, float *r,
                                float alpha, float a, float beta);

/* Cauchy: X = tan v, v uniform on [-pi/2, pi/2), density 1 / (pi (1 + x^2)). */
KEF_API int32_t _vtsdRngCauchy(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                               double beta);
KEF_API int32_t _vtssRngCauchy(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                               float beta);

/* Rayleigh: X = sqrt(-ln u), P(X > x) = e^-(x^2): the length of a plane normal vector of standard
 * deviation sigma has beta = sqrt(2) sigma. Results are not below a. */
KEF_API int32_t _vtsdRngRayleigh(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                                 double beta);
KEF_API int32_t _vtssRngRayleigh(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                                 float beta);

/* Gumbel, of minima: X = ln(-ln u), P(X > x) = e^-(e^x). -X is the law of maxima. */
KEF_API int32_t _vtsdRngGumbel(int32_t method, kef_stream *stream, int32_t n, double *r, double a,
                               double beta);
KEF_API int32_t _vtssRngGumbel(int32_t method, kef_stream *stream, int32_t n, float *r, float a,
                               float beta);

/* Gamma of shape alpha > 0: density x^(alpha - 1) e^-x / Gamma(alpha) on x >= 0; mean and variance
 * alpha. Results are not below a. By rejection: how many uniforms a call uses varies, and calls
 * that sum to n do not give the numbers of one call. Exponential numbers where alpha = 1; elsewhere
 * a uniform of 0 counts as a number of its cell, and no logarithm of 0 arises. Marsaglia
 * and Tsang (2000) above, Vaduva (1977) down to 0.6, Ahrens and Dieter (1974) below. A stream that
 * repeats one number may never pass a rejection test: where a hundred rounds bring nothing, the
 * rest of the numbers is one value near the mean. */
KEF_API int32_t _vtsdRngGamma(int32_t method, kef_stream *stream, int32_t n, double *r,
                              double alpha, double a, double beta);
KEF_API int32_t _vtssRngGamma(int32_t method, kef_stream *stream, int32_t n, float *r, float alpha,
                              float a, float beta);

/* Beta of shapes p, q > 0: density x^(p - 1) (1 - x)^(q - 1) / B(p, q) on 0 <= x <= 1; mean
 * p / (p + q). Results lie between a and a + beta. By rejection, like gamma: Cheng (1978) BB where
 * both shapes are above 1, BC where one is, Johnk (1964) where none is; the ratio of gamma numbers
 * where both are above 16384. Inversion, one uniform a number, where a shape is 1. */
KEF_API int32_t _vtsdRngBeta(int32_t method, kef_stream *stream, int32_t n, double *r, double p,
                             double q, double a, double beta);
KEF_API int32_t _vtssRngBeta(int32_t method, kef_stream *stream, int32_t n, float *r, float p,
                             float q, float a, float beta);

/* --- discrete laws -------------------------------------------------------------- */

/* Integers into r. Single-precision uniforms and, where it says so, normal numbers are the source;
 * tails are resolved to a probability of 2^-48. Results above INT32_MAX become INT32_MAX. With
 * constant parameters the time a number falls with n: tables are made anew in every call.
 * docs/distributions.md tells methods and speed. */

/* 1 with probability p, which is rounded to single precision, or 0: 1 always where that is 1. One
 * uniform each, made in r itself. */
KEF_API int32_t _vtsiRngBernoulli(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                  double p);

/* Failures before the first success of probability p, 0 < p <= 1:
 * floor(ln u / ln(1 - p)) in single precision, one uniform each. */
KEF_API int32_t _vtsiRngGeometric(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                  double p);

/* Successes in `trials` >= 0 independent trials of probability p, 0 <= p <= 1. */
KEF_API int32_t _vtsiRngBinomial(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                 int32_t trials, double p);

/* Marked elements in a sample drawn without replacement from a population of which `marked` are
 * marked; 0 <= sample, marked <= population. */
KEF_API int32_t _vtsiRngHypergeometric(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                       int32_t population, int32_t sample, int32_t marked);

enum {
    VTS_METHOD_POISSON_UNIFORM = 0, /* from uniforms alone */
    VTS_METHOD_POISSON_NORMAL = 1   /* from normal numbers where the mean is 100 or more */
};

/* Poisson numbers of mean lambda >= 0. */
KEF_API int32_t _vtsiRngPoisson(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                double lambda);

/* The same, r[i] of mean lambda[i], from a normal number where that is 10 or more and from a
 * uniform below. */
KEF_API int32_t _vtsiRngPoissonV(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                 const double *lambda);

/* Failures before the a-th success of probability p, 0 < p <= 1; a > 0 need not be whole: a Poisson
 * law whose mean is gamma of shape a and scale (1 - p)/p. */
KEF_API int32_t _vtsiRngNegbinomial(int32_t method, kef_stream *stream, int32_t n, int32_t *r,
                                    double a, double p);

KEF_END_DECLS

#endif
