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

KEF_END_DECLS

#endif
