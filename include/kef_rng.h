/* Random streams: the stream object, the generator registry, chunks, shared
 * read-only data, save and load, and the routines of the basic generators.
 *
 * A stream is used by one thread at a time; nothing here takes a lock except
 * the table of shared read-only data. Plain C; no function throws. */
#ifndef KEF_RNG_H
#define KEF_RNG_H

#include <stdint.h>

#include "kef_export.h"

KEF_BEGIN_DECLS

/* Status of every function here that says "status": VTS_STATUS_OK or one of the codes listed with
 * their meanings in kef_rng_status.def. */
enum {
#define KEF_STATUS_ROW(name, code, meaning) name = code,
#include "kef_rng_status.def"
#undef KEF_STATUS_ROW
};

/* The meaning of a status in a few English words, for messages; "unknown status" for a code
 * that is none. Never null; the text belongs to the library. */
KEF_API const char *kef_vts_status_text(int32_t status);

/* Generator ids: (row + 1) << 20, plus the number of a sub-generator. Below
 * 0x100000 stand the small ids 0 MCG31M1, 1 R250, 2 MRG32K3A, 3 MCG59, 4 to 276
 * the sub-generators of WH, 277 SOBOL, 278 NIEDERR. */
enum {
    VTS_BRNG_MCG31M1 = 0x100000,
    VTS_BRNG_R250 = 0x200000,
    VTS_BRNG_MRG32K3A = 0x300000,
    VTS_BRNG_MCG59 = 0x400000,
    VTS_BRNG_WH = 0x500000, /* + 0 to 272 */
    VTS_BRNG_SOBOL = 0x600000,
    VTS_BRNG_NIEDERR = 0x700000,
    VTS_BRNG_MT19937 = 0x800000,
    VTS_BRNG_MT2203 = 0x900000, /* + 0 to 6023 */
    VTS_BRNG_IABSTRACT = 0xA00000,
    VTS_BRNG_DABSTRACT = 0xB00000,
    VTS_BRNG_SABSTRACT = 0xC00000,
    VTS_BRNG_SFMT19937 = 0xD00000,
    VTS_BRNG_TRNG = 0xE00000
};

/* Method argument of an initialiser. */
enum { VTS_INIT_SEED = 0, VTS_INIT_LEAPFROG = 1, VTS_INIT_SKIPAHEAD = 2 };

/* A stream: opaque; callers hold its address. A block starts with the generator
 * id, so that a user's generator can keep its state behind a kef_stream_header. */
typedef struct kef_stream kef_stream;

/* A block of data attached to a stream under a key. */
typedef struct kef_chunk {
    int32_t key;
    int32_t size;           /* bytes of data */
    void *data;             /* owned by the chunk, or a shared entry's */
    struct kef_chunk *next; /* null in the last one */
    uint32_t shared_id[4];  /* all zero: the data is private */
} kef_chunk;

typedef struct kef_stream_header {
    int32_t brng;     /* generator id */
    uint32_t created; /* 1 */
    kef_chunk *first; /* head of the chunk list, or null */
    kef_chunk *last;  /* its last chunk, or null */
} kef_stream_header;

/* Initialiser of a generator. method VTS_INIT_SEED: n parameter words are the
 * seed; VTS_INIT_LEAPFROG: n streams, *parameters is the 32-bit k;
 * VTS_INIT_SKIPAHEAD: n = 2, parameters are the 64-bit count, low word first.
 * Anything else: VTS_STATUS_BAD_METHOD. */
typedef int32_t (*kef_brng_init)(int32_t method, kef_stream *stream, int32_t n,
                                 const uint32_t *parameters);
/* Output routines: n numbers on [a, b), or n raw words of the generator's word
 * size; n <= 0 does nothing. */
typedef int32_t (*kef_brng_float)(kef_stream *stream, int32_t n, float *r, float a, float b);
typedef int32_t (*kef_brng_double)(kef_stream *stream, int32_t n, double *r, double a, double b);
typedef int32_t (*kef_brng_bits)(kef_stream *stream, int32_t n, void *r);

/* A registry row. */
typedef struct kef_brng {
    int32_t stream_state_size; /* bytes of a stream block, header included */
    int32_t seed_count;        /* 32-bit words of the seed; 0 for the abstract generators */
    int32_t zero_flag;         /* 1 where a raw word can be zero */
    int32_t word_size;         /* bytes of a raw word: 4, 8 or 16 */
    int32_t bit_count;         /* random bits in a raw word */
    kef_brng_init init_stream;
    kef_brng_float generate_float;
    kef_brng_double generate_double;
    kef_brng_bits generate_bits;
} kef_brng;

enum { VTS_SMALL_ROWS = 279, VTS_MAX_ROWS = 512 };

/* The rows of the small ids and of the family ids. A user generator adds a row to
 * the second one. Not locked. */
extern KEF_API kef_brng __RegBrngs[VTS_SMALL_ROWS];
extern KEF_API kef_brng __RegBrngsNew[VTS_MAX_ROWS];

/* --- registry -------------------------------------------------------------- */

/* The table that an id indexes, with the row in it and the sub-generator; no
 * validation. */
KEF_API const kef_brng *__vtsGetBrngBaseOffset(int32_t brng, int32_t *row, int32_t *sub);

/* VTS_STATUS_OK when the row is in use and has the sub-generator, else
 * VTS_STATUS_BAD_BRNG. */
KEF_API int32_t __vtsIsBrngValid(const kef_brng *table, int32_t row, int32_t sub);

/* Copies the registry row of an id; VTS_STATUS_BAD_BRNG where there is none. */
KEF_API int32_t __vtsGetBrngProperties(int32_t brng, kef_brng *properties);

/* Rows in use in __RegBrngsNew: 14 and the user's. */
KEF_API int32_t __vtsGetNumRegBrngs(void);

/* Appends a user generator; it stays for the life of the process. Its stream_state_size
 * counts the header (kef_stream_header). Returns its id, or the status of the first of
 * the fields that is not acceptable, in the order state size, word size, seed count,
 * bit count, routines, room. */
KEF_API int32_t __vtsRegisterBrng(const kef_brng *properties);

/* --- life of a stream ------------------------------------------------------ */

/* Creates a stream and seeds it with n 32-bit words (n <= 0: the generator's
 * default). VTS_STATUS_BAD_BRNG leaves *stream as it was; VTS_STATUS_NO_MEMORY sets
 * it to null; a status of the generator leaves a stream to delete. Abstract
 * generators are refused here. */
KEF_API int32_t __vtsNewStreamEx(kef_stream **stream, int32_t brng, int32_t n,
                                 const uint32_t *parameters);

/* The same without seeding, for an id that is resolved already. */
KEF_API int32_t __vtsAllocateStream(kef_stream **stream, const kef_brng *table, int32_t brng,
                                    int32_t row, int32_t sub);

/* Refill callbacks of abstract streams. Called when all numbers in the buffer are
 * used and `wanted` (> 0) more are needed at least; writes numbers from buffer[0]
 * on and returns how many: 1 to length, which may be fewer than wanted (it is
 * called again) or more (the rest is kept for later). 0 ends the caller's request
 * with VTS_STATUS_NO_NUMBERS, a negative value ends it as its status, and a value
 * above length with VTS_STATUS_BAD_REFILL; the numbers made until then stand in the caller's
 * array, and the next request calls again. The callback must not draw from
 * the stream nor delete it. */
typedef int32_t (*kef_refill_bits)(kef_stream *stream, uint32_t *buffer, int32_t length,
                                   int32_t wanted);
typedef int32_t (*kef_refill_double)(kef_stream *stream, double *buffer, int32_t length,
                                     int32_t wanted);
typedef int32_t (*kef_refill_float)(kef_stream *stream, float *buffer, int32_t length,
                                    int32_t wanted);

/* Streams over the caller's numbers, which fill the buffer of n numbers at creation; the buffer
 * must live as long as the stream. The numbers of the double and single forms lie
 * on [a, b), a < b, finite; output on other bounds is their linear image. The bounds may be
 * any finite ones: no width overflows.
 * VTS_STATUS_BAD_ARGUMENT when n <= 0 or a pointer is null. */
KEF_API int32_t __vtsiNewAbstractStream(kef_stream **stream, int32_t n, uint32_t *buffer,
                                        kef_refill_bits refill);
KEF_API int32_t __vtsdNewAbstractStream(kef_stream **stream, int32_t n, double *buffer, double a,
                                        double b, kef_refill_double refill);
KEF_API int32_t __vtssNewAbstractStream(kef_stream **stream, int32_t n, float *buffer, float a,
                                        float b, kef_refill_float refill);

/* A new stream that continues like the source, with chunks of its own. On failure
 * *stream is null, except after VTS_STATUS_BAD_BRNG. The copy of an abstract stream shares buffer
 * and callback with its source: draw from one of them only, or the refill of one overwrites
 * numbers of the other. */
KEF_API int32_t __vtsCopyStream(kef_stream **stream, const kef_stream *source);

/* Copies the generator's state; both streams must be of the same generator, by its small id
 * or its family id (else VTS_STATUS_BAD_BRNG). Chunks stay as they are. */
KEF_API int32_t __vtsCopyStreamState(kef_stream *destination, const kef_stream *source);

/* Releases chunks and block, and sets *stream to null. Null is allowed. */
KEF_API int32_t __vtsDeleteStream(kef_stream **stream);

/* The stream goes on with numbers k, k + count, k + 2 count, ... of what it would
 * have returned. Refused by most generators; SOBOL and NIEDERR accept count equal
 * to the dimension: one coordinate remains. */
KEF_API int32_t __vtsLeapfrogStream(kef_stream *stream, int32_t k, int32_t count);

/* The stream drops the next `count` numbers. */
KEF_API int32_t __vtsSkipAheadStream(kef_stream *stream, uint64_t count);

/* The generator id. */
KEF_API int32_t __vtsGetStreamStateBrng(const kef_stream *stream);

/* --- chunks ---------------------------------------------------------------- */

/* A block of `size` bytes at an address that is a multiple of 128, not initialised, or null; such
 * blocks are what chunks and shared entries take over. __vtsFree gives back a block that
 * nothing took over, or null. */
KEF_API void *__vtsAllocate(uint64_t size);
KEF_API void __vtsFree(void *block);

/* Attaches `size` bytes of data at the end of the list. The stream takes the data over, a block of
 * __vtsAllocate; null data with a positive size, and without a shared id (null or zero), asks
 * for a new block of zeros. With the id of an entry in the shared table whose block holds
 * `size` bytes the chunk refers to the entry's data, and data given is freed; where the entry is
 * absent or smaller the chunk keeps the id and what was given, null data too.
 * VTS_STATUS_NO_MEMORY leaves stream and data as they were. */
KEF_API int32_t __vtsAddChunk(kef_stream *stream, int32_t key, const uint32_t *shared_id,
                              void *data, int32_t size);
/* Data of the first chunk with the key, or null. */
KEF_API void *__vtsSearchChunk(const kef_stream *stream, int32_t key);
KEF_API int32_t __vtsGetNumChunks(const kef_stream *stream);
KEF_API int32_t __vtsDeleteChunks(kef_stream *stream);
/* Appends copies of the source's chunks: data of its own is copied, shared data gets
 * one more reference. VTS_STATUS_NO_MEMORY leaves the destination as it was. */
KEF_API int32_t __vtsCopyChunks(kef_stream *destination, const kef_stream *source);

KEF_API int32_t _vtsAddChunk(kef_stream *stream, int32_t key, const uint32_t *shared_id, void *data,
                             int32_t size);
KEF_API void *_vtsSearchChunk(const kef_stream *stream, int32_t key);
KEF_API int32_t _vtsGetNumChunks(const kef_stream *stream);
KEF_API int32_t _vtsDeleteChunks(kef_stream *stream);
KEF_API int32_t _vtsCopyChunks(kef_stream *destination, const kef_stream *source);

/* --- shared read-only data -------------------------------------------------- */

/* Data that chunks of several streams use; at most 128 entries. An entry may move
 * when another one is removed. Guarded by one spin lock. Data that chunks of streams refer to
 * outlives its entry, should that be unregistered once too often. */
typedef struct kef_shared_entry {
    uint32_t id[4];
    uint32_t references;
    void *data; /* a block of __vtsAllocate, freed with the last reference; or null */
} kef_shared_entry;

enum { VTS_MAX_SHARED_ENTRIES = 128 };

KEF_API int32_t __vtsFindGlobRODataTableEntry(const uint32_t *id, kef_shared_entry **entry);
/* Appends an entry with one reference. */
KEF_API int32_t __vtsCreateGlobRODataTableEntry(kef_shared_entry **entry, const uint32_t *id,
                                                void *data);
/* One more reference; the chunk's data pointer becomes the entry's. VTS_STATUS_BAD_ARGUMENT when
 * the entry's block does not hold the chunk's size. */
KEF_API int32_t __vtsRegisterGlobRODataReference(const uint32_t *id, kef_chunk *chunk);
/* One reference less; the last one removes the entry. */
KEF_API int32_t __vtsUnregisterGlobRODataReference(const uint32_t *id);
/* An id that is not in the table: time-stamp counter and the tag. */
KEF_API int32_t __vtsGenerateNewGlobalRODataTableEntryId(uint32_t *id, int32_t tag);

/* --- save and load ----------------------------------------------------------- */

/* The image of a stream holds its state and chunks (docs/streams.md) and is the same in a file and
 * in memory. Loading makes a new stream; where it fails, *stream is null. Content that no
 * saved stream can have is refused with VTS_STATUS_BAD_FILE or VTS_STATUS_BAD_IMAGE.
 * An abstract stream loads only in the process that saved it, whose addresses it holds.
 * A name of negative length ends with a zero byte. */
KEF_API int32_t __vtsSaveStreamF(const kef_stream *stream, const char *name, int32_t length);
KEF_API int32_t __vtsLoadStreamF(kef_stream **stream, const char *name, int32_t length);
/* The buffer holds __vtsGetStreamSize bytes. __vtsLoadStreamM believes the counts and sizes in the
 * image; an image from outside is loaded with the number of bytes that are there, and one that
 * claims more is refused with VTS_STATUS_BAD_IMAGE. */
KEF_API int32_t __vtsSaveStreamM(const kef_stream *stream, void *image);
KEF_API int32_t __vtsLoadStreamM(kef_stream **stream, const void *image);
KEF_API int32_t __vtsLoadStreamMBounded(kef_stream **stream, const void *image, uint64_t size);
/* Bytes of the image, or the status by which saving refuses the stream: VTS_STATUS_BAD_BRNG,
 * VTS_STATUS_TOO_LARGE. */
KEF_API int32_t __vtsGetStreamSize(const kef_stream *stream);

/* --- basic generators -------------------------------------------------------- */

/* The four routines of each registry row; docs/generators.md tells algorithms, seeds,
 * mappings and jumps. */
KEF_API int32_t __vtsBRngMCG31M1InitStream(int32_t method, kef_stream *stream, int32_t n,
                                           const uint32_t *parameters);
KEF_API int32_t __vtssBRngMCG31M1(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngMCG31M1(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngMCG31M1(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngR250InitStream(int32_t method, kef_stream *stream, int32_t n,
                                        const uint32_t *parameters);
KEF_API int32_t __vtssBRngR250(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngR250(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngR250(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngMRG32K3AInitStream(int32_t method, kef_stream *stream, int32_t n,
                                            const uint32_t *parameters);
KEF_API int32_t __vtssBRngMRG32K3A(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngMRG32K3A(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngMRG32K3A(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngMCG59InitStream(int32_t method, kef_stream *stream, int32_t n,
                                         const uint32_t *parameters);
KEF_API int32_t __vtssBRngMCG59(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngMCG59(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngMCG59(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngWHInitStream(int32_t method, kef_stream *stream, int32_t n,
                                      const uint32_t *parameters);
KEF_API int32_t __vtssBRngWH(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngWH(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngWH(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngSobolInitStream(int32_t method, kef_stream *stream, int32_t n,
                                         const uint32_t *parameters);
KEF_API int32_t __vtssBRngSobol(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngSobol(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngSobol(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngNiederrInitStream(int32_t method, kef_stream *stream, int32_t n,
                                           const uint32_t *parameters);
KEF_API int32_t __vtssBRngNiederr(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngNiederr(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngNiederr(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngMT19937InitStream(int32_t method, kef_stream *stream, int32_t n,
                                           const uint32_t *parameters);
KEF_API int32_t __vtssBRngMT19937(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngMT19937(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngMT19937(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngMT2203InitStream(int32_t method, kef_stream *stream, int32_t n,
                                          const uint32_t *parameters);
KEF_API int32_t __vtssBRngMT2203(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngMT2203(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngMT2203(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngSFMT19937InitStream(int32_t method, kef_stream *stream, int32_t n,
                                             const uint32_t *parameters);
KEF_API int32_t __vtssBRngSFMT19937(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngSFMT19937(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngSFMT19937(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngTRNGInitStream(int32_t method, kef_stream *stream, int32_t n,
                                        const uint32_t *parameters);
KEF_API int32_t __vtssBRngTRNG(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngTRNG(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngTRNG(kef_stream *stream, int32_t n, void *r);

/* An abstract generator makes one type; the six routines of the other types are one
 * refusal (VTS_STATUS_WRONG_ABSTRACT_TYPE). Initialisers take what the constructors above hand
 * them: the address of the length, the buffer, the callback. */
KEF_API int32_t __vtsBRngiAbstractInitStream(int32_t method, kef_stream *stream, int32_t n,
                                             const uint32_t *parameters);
KEF_API int32_t __vtssBRngiAbstract(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngiAbstract(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngiAbstract(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngdAbstractInitStream(int32_t method, kef_stream *stream, int32_t n,
                                             const uint32_t *parameters);
KEF_API int32_t __vtssBRngdAbstract(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngdAbstract(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngdAbstract(kef_stream *stream, int32_t n, void *r);

KEF_API int32_t __vtsBRngsAbstractInitStream(int32_t method, kef_stream *stream, int32_t n,
                                             const uint32_t *parameters);
KEF_API int32_t __vtssBRngsAbstract(kef_stream *stream, int32_t n, float *r, float a, float b);
KEF_API int32_t __vtsdBRngsAbstract(kef_stream *stream, int32_t n, double *r, double a, double b);
KEF_API int32_t __vtsiBRngsAbstract(kef_stream *stream, int32_t n, void *r);

/* --- arithmetic of the jumps --------------------------------------------------- */

/* a^k mod m, mod 2^31 - 1, mod 2^59; results in [0, m). m > 0. */
KEF_API uint32_t __vtsiPowMod(uint32_t a, uint64_t k, uint32_t m);
KEF_API uint32_t __vtsiPowMod2P31M1(uint32_t a, uint64_t k);
KEF_API uint64_t __vtsiPowMod2P59(uint64_t a, uint64_t k);
/* vector <- A^k vector mod m; A has the given first row (entries below m) and shifts the
 * other two entries down; k = k_low + 2^32 k_high. */
KEF_API void __vtsiVect3PowMod(uint32_t *vector, const uint32_t *row, uint32_t m, uint32_t k_low,
                               uint32_t k_high);

/* --- jumps of the Mersenne twisters --------------------------------------------- */

/* A state of `words` 32-bit words is a window over a sequence that is linear over
 * GF(2); a step T moves it by `stride` words. The jump by k steps is p(T) for p = t^k modulo
 * the characteristic polynomial of T (Haramoto, Matsumoto, Nishimura, Panneton, L'Ecuyer, INFORMS
 * J. Comput. 20 (2008) 385-390). The routines are the generator's own:
 * load, store: from the stream's state, and into it;
 * clear, copy: a window of zeros, a copy of a window;
 * step: writes the count * stride words of the sequence that follow the window;
 * add: to ^= the windows that begin at from[places[0]], ..., from[places[count - 1]]. */
typedef void (*kef_jump_load)(const kef_stream *stream, uint32_t *window);
typedef void (*kef_jump_store)(kef_stream *stream, const uint32_t *window);
typedef void (*kef_jump_clear)(uint32_t *window);
typedef void (*kef_jump_copy)(uint32_t *to, const uint32_t *from);
typedef void (*kef_jump_step)(uint32_t *window, int32_t count);
typedef void (*kef_jump_add)(uint32_t *to, const uint32_t *from, const uint32_t *places,
                             int32_t count);

/* Advance a stream by k steps: by Horner's rule over single coefficients, or over groups of
 * them (sliding window), which is faster and takes more memory. Both serve any k. The
 * polynomial has the given degree and `count` exponents, falling, the first two at least 504
 * apart. VTS_STATUS_BAD_ARGUMENT when the stream's block (state_size bytes) does not hold a window;
 * VTS_STATUS_NO_MEMORY leaves the stream as it was. */
KEF_API int32_t __vts_SkipAheadHorner(kef_stream *stream, kef_jump_load load, kef_jump_store store,
                                      kef_jump_clear clear, kef_jump_copy copy, kef_jump_step step,
                                      kef_jump_add add, uint64_t k, int32_t words, int32_t stride,
                                      int32_t degree, int32_t state_size, int32_t count,
                                      const uint16_t *exponents);
KEF_API int32_t __vts_SkipAheadSWin(kef_stream *stream, kef_jump_load load, kef_jump_store store,
                                    kef_jump_clear clear, kef_jump_copy copy, kef_jump_step step,
                                    kef_jump_add add, uint64_t k, int32_t words, int32_t stride,
                                    int32_t degree, int32_t state_size, int32_t count,
                                    const uint16_t *exponents);

/* Reduces a polynomial over GF(2) of at most degree + 504 * blocks coefficients, bit i % 8 of byte
 * i / 8 being that of t^i, modulo the polynomial of the exponents (as above). 80 bytes more than
 * the coefficients fill must be writable. The remainder is left in the first `degree` bits, with
 * zeros above. */
KEF_API int32_t __vtsPolyRem(uint8_t *polynomial, int32_t blocks, int32_t degree, int32_t count,
                             const uint16_t *exponents);

KEF_END_DECLS

#endif
