/* For interpreters, bindings and other hosts that call through pointers to functions of fixed
 * shapes: vector math over strided elements, and random numbers one at a time. The Python package
 * stands on these two. Plain C; no function throws. */
#ifndef KEF_BIND_H
#define KEF_BIND_H

#include <stdint.h>

#include "kef_export.h"
#include "kef_rng.h"

KEF_BEGIN_DECLS

/* What kef_vtm_loop runs: an entry point or a slot of kef_vm_functions.h with one or two argument
 * vectors and one or two result vectors and nothing else, and the bytes of their elements, 4, 8
 * or 16, arguments first. Two arguments have one result. */
typedef struct kef_loop {
    void (*kernel)(void);
    int32_t arguments;
    int32_t results;
    int32_t sizes[3];
} kef_loop;

/* Applies a kernel to counts[0] elements; operand i, arguments first, has its first element at
 * operands[i] and the next ones steps[i] bytes apart (any number, 0 too; nothing need be aligned).
 * data points to a kef_loop. Contiguous operands are handed on as they are, others go through
 * buffers on the stack (24 KB). A result may take the place of an argument; where results and
 * arguments overlap otherwise, elements are computed one after the other, each argument being read
 * when its turn comes, as a loop in C would. The results have the bits of one call for all.
 *
 * An element error raises its floating-point exception flag and sets the thread's status; the rest
 * of the thread's error mode, and its callback, play no part. The signature is that of the inner
 * loops of array libraries that hand over strided data so. */
KEF_API void kef_vtm_loop(char **operands, const intptr_t *counts, const intptr_t *steps,
                          void *data);

enum { KEF_BIT_SOURCE_WORDS = 256 };

/* Random bits of a stream, read ahead. Start with the stream and zeros. Any generator will do,
 * but the abstract integer one: _vtsiRngUniformBits32 where the generator has such words, else the
 * floor of its doubles on [0, 2^32), from generators of fewer than 32 bits the top halves of
 * two. */
typedef struct kef_bit_source {
    kef_stream *stream;
    int32_t status; /* of the last refill; where it is negative all bits are 0 */
    int32_t left;   /* words that have not been given: the last ones */
    uint32_t words[KEF_BIT_SOURCE_WORDS];
} kef_bit_source;

/* The next number: a word; two, the first one the high half; a double on [0, 1) of 53 bits, the
 * top 27 of one word and the top 26 of the next. source points to a kef_bit_source, which one
 * thread uses at a time. */
KEF_API uint32_t kef_vts_next_uint32(void *source);
KEF_API uint64_t kef_vts_next_uint64(void *source);
KEF_API double kef_vts_next_double(void *source);

KEF_END_DECLS

#endif
