/* The front end proper. The kernels trust their caller, work on the calling
 * thread only and take their accuracy from the slot that they stand in; here are
 * the checks, the division over threads and the choice of the slot. */
#include <errno.h>
#include <fenv.h>
#include <pthread.h>
#include <stdio.h>

#include "frontend.h"

enum {
    MOST_PIECES = 64,
    GRANULE = 64 /* bytes: pieces end where cache lines do, if the vector begins so */
};

/* A piece of a call is worth a thread from this much work on, in the units of the
 * cost tables: a tenth of a millisecond or so. */
static const double worth_a_thread = 1e6;

/* The cost tables mark pure data movement with this value; it is not a cost. */
static const float data_movement = 1111;

const char *status_name(int32_t status) {
    switch (status) {
        case VTM_STATUS_OK: return "no error";
        case VTM_STATUS_BADSIZE: return "bad array size";
        case VTM_STATUS_BADMEM: return "null pointer";
        case VTM_STATUS_ERRDOM: return "out of domain";
        case VTM_STATUS_SING: return "singularity";
        case VTM_STATUS_OVERFLOW: return "overflow";
        case VTM_STATUS_UNDERFLOW: return "underflow";
        default: return "unknown status";
    }
}

const char *accuracy_name(int slot) {
    static const char *const names[SLOTS] = {"LA", "HA", "EP"};
    return slot >= 0 && slot < SLOTS ? names[slot] : "none";
}

void print_mode(const char *before, uint32_t mode) {
    const int slot = kef_vtm_kernel_GetTTableIndexM(0, mode);
    printf("%s0x%X: accuracy %s; subnormal numbers %s;\n   errors", before, (unsigned)mode,
           accuracy_name(slot),
           (mode & VTM_FTZDAZ_MASK) == VTM_FTZDAZ_ON ? "count as zero" : "kept");
    if ((mode & VTM_ERRMODE_MASK) == VTM_ERRMODE_IGNORE) printf(" ignored");
    if ((mode & VTM_ERRMODE_MASK) == 0) printf(" recorded");
    if (mode & VTM_ERRMODE_ERRNO) printf(" +errno");
    if (mode & VTM_ERRMODE_STDERR) printf(" +message");
    if (mode & VTM_ERRMODE_EXCEPT) printf(" +exception");
    if (mode & VTM_ERRMODE_CALLBACK) printf(" +callback");
    printf("\n");
}

int current_slot(void) {
    const int slot = kef_vtm_kernel_GetTTableIndex();
    const int plain_name = kef_vtm_kernel_GetTTableIndexM(0, VTM_HA);
    return slot >= 0 && slot < SLOTS ? slot : plain_name;
}

void restore_mode(uint32_t mode) {
    if ((mode & VTM_ACCURACY_MASK) == 0) mode |= VTM_HA;
    if ((mode & VTM_ERRMODE_MASK) == 0) mode |= VTM_ERRMODE_IGNORE;
    if ((mode & VTM_FTZDAZ_MASK) == 0) mode |= VTM_FTZDAZ_OFF;
    kef_vtm_kernel_SetMode(mode);
}

int pieces_for(const struct function *function, int32_t n) {
    const float cost = function->cost(current_slot());
    if (cost == data_movement) return 1;
    const double worth = cost * (double)n / worth_a_thread;
    return worth < 1 ? 1 : worth < MOST_PIECES ? (int)worth : MOST_PIECES;
}

/* What the pieces of one call have in common, taken from the calling thread. */
struct call {
    const struct function *function;
    int slot;
    uint32_t mode;
    kef_vtm_error_callback callback;
    const void *whole_input;
};

struct piece {
    const struct call *call;
    int32_t n;
    const void *a, *b;
    void *y, *z;
    /* Results. */
    int32_t status;
    int error_number;
    int exceptions;
};

static void compute(struct piece *piece) {
    const struct call *call = piece->call;
    call->function->call(call->slot, piece->n, piece->a, piece->b, piece->y, piece->z);
}

/* On a thread of its own: control is per thread, so the calling thread's is taken
 * over before, and what the errors left behind is carried back after. */
static void *compute_on_thread(void *argument) {
    struct piece *piece = argument;
    kef_vtm_kernel_SetErrorCallBack(piece->call->callback);
    restore_mode(piece->call->mode);
    kef_vtm_kernel_SetInterfInputVectorPointer(piece->call->whole_input);
    errno = 0;
    compute(piece);
    piece->status = kef_vtm_kernel_GetErrStatus();
    piece->error_number = errno;
    piece->exceptions = fetestexcept(FE_ALL_EXCEPT);
    return NULL;
}

static void *at(const void *vector, size_t offset) {
    return vector == NULL ? NULL : (char *)vector + offset;
}

int32_t vector_call(const struct function *function, int threads, int32_t n, const void *a,
                    const void *b, void *y, void *z) {
    int32_t status = VTM_STATUS_OK;
    if (n < 0) status = VTM_STATUS_BADSIZE;
    else if (n > 0 && (a == NULL || y == NULL || (function->inputs == 2 && b == NULL) ||
                       (function->outputs == 2 && z == NULL)))
        status = VTM_STATUS_BADMEM;
    if (status != VTM_STATUS_OK) {
        kef_vtm_kernel_SetErrStatus(status);
        return status;
    }

    const int32_t before = kef_vtm_kernel_ClearErrStatus();
    const struct call call = {function, current_slot(), kef_vtm_kernel_GetMode(),
                              kef_vtm_kernel_GetErrorCallBack(), a};
    const int worth = pieces_for(function, n), count = worth < threads ? worth : threads;
    const int32_t granule = (int32_t)(GRANULE / function->size);
    struct piece pieces[MOST_PIECES];
    pthread_t workers[MOST_PIECES];
    bool started[MOST_PIECES];
    for (int k = count - 1; k >= 0; --k) {
        const int32_t begin = (int32_t)((int64_t)n * k / count / granule * granule);
        const int32_t end =
            k == count - 1 ? n : (int32_t)((int64_t)n * (k + 1) / count / granule * granule);
        const size_t offset = (size_t)begin * function->size;
        pieces[k] = (struct piece){.call = &call,
                                   .n = end - begin,
                                   .a = at(a, offset),
                                   .b = at(b, offset),
                                   .y = at(y, offset),
                                   .z = at(z, offset)};
        /* The first piece, and what gets no thread, is computed here. */
        started[k] = k > 0 && pthread_create(&workers[k], NULL, compute_on_thread, &pieces[k]) == 0;
        if (!started[k]) {
            kef_vtm_kernel_SetInterfInputVectorPointer(a);
            compute(&pieces[k]);
            kef_vtm_kernel_SetInterfInputVectorPointer(NULL);
            pieces[k].status = kef_vtm_kernel_ClearErrStatus();
        }
    }
    for (int k = 0; k < count; ++k) {
        if (started[k]) {
            pthread_join(workers[k], NULL);
            if (pieces[k].error_number != 0) errno = pieces[k].error_number;
            feraiseexcept(pieces[k].exceptions);
        }
        /* The last error wins, as within one call. */
        if (pieces[k].status != VTM_STATUS_OK) status = pieces[k].status;
    }
    kef_vtm_kernel_SetErrStatus(status != VTM_STATUS_OK ? status : before);
    return status;
}
