/* Vector math: control of the calling thread, element errors, and the
 * element-wise functions (kef_vm_functions.h).
 *
 * Every function works on the calling thread alone; nothing here takes a lock.
 * All functions are plain C, never throw and never keep a pointer to caller
 * data, except the two that say so.
 *
 * Every function gives the same bits on every x86 processor that runs the same build of
 * the library, at every length, position and alignment of the vectors; builds for wider
 * vectors differ in last bits, but where a result is exact or correctly rounded. */
#ifndef KEF_VM_H
#define KEF_VM_H

#include <stdint.h>

#include "kef_export.h"

KEF_BEGIN_DECLS

/* Complex elements. */
typedef struct kef_complex8 {
    float re, im;
} kef_complex8;
typedef struct kef_complex16 {
    double re, im;
} kef_complex16;

/* Status of a vector-math call, the last element error of the thread: VTM_STATUS_OK or one of the
 * codes listed with their meanings in kef_vm_status.def. */
enum {
#define KEF_STATUS_ROW(name, code, meaning) name = code,
#include "kef_vm_status.def"
#undef KEF_STATUS_ROW
};

/* The meaning of a status in a few English words, for messages; "unknown status" for a code
 * that is none. Never null; the text belongs to the library. */
KEF_API const char *kef_vtm_status_text(int32_t status);

/* Mode word: the OR of at most one value of each field. */
enum {
    /* accuracy: which slot of a dispatch table fits, plus one */
    VTM_LA = 0x1,
    VTM_HA = 0x2,
    VTM_EP = 0x3,
    VTM_ACCURACY_MASK = 0xF,

    /* precision control; set through the environment only */
    VTM_FLOAT_CONSISTENT = 0x10,
    VTM_DOUBLE_CONSISTENT = 0x20,
    VTM_RESTORE = 0x30,
    VTM_PRECISION_MASK = 0xF0,

    /* what an element error does besides setting the status */
    VTM_ERRMODE_IGNORE = 0x100,    /* nothing */
    VTM_ERRMODE_ERRNO = 0x200,     /* sets the C library's errno */
    VTM_ERRMODE_STDERR = 0x400,    /* prints a message to standard error */
    VTM_ERRMODE_EXCEPT = 0x800,    /* raises the floating-point exception */
    VTM_ERRMODE_CALLBACK = 0x1000, /* calls the error callback */
    VTM_ERRMODE_DEFAULT = 0x1A00,  /* errno, exception and callback */
    VTM_ERRMODE_MASK = 0xFF00,

    /* subnormal numbers in arguments and results of the kernels */
    VTM_FTZDAZ_OFF = 0x140000, /* are kept (also when the field is zero) */
    VTM_FTZDAZ_ON = 0x280000,  /* count as zero */
    VTM_FTZDAZ_MASK = 0x3C0000
};

/* Slots of a dispatch table, and what a cost table holds for functions that only move
 * data. */
enum { VTM_SLOT_LA = 0, VTM_SLOT_HA = 1, VTM_SLOT_EP = 2, VTM_COST_DATA_MOVEMENT = 1111 };

/* One element error, as handed to an error callback; 144 bytes.
 * Single-precision values are widened. The imaginary parts have a meaning for
 * complex functions only. For VTM_STATUS_BADSIZE and VTM_STATUS_BADMEM only
 * code, index and name are filled in. */
typedef struct kef_vtm_error_record {
    int32_t code;  /* VTM_STATUS_... */
    int32_t index; /* position in the caller's vector; the offending
                      count for VTM_STATUS_BADSIZE */
    double argument1;
    double argument2; /* the scalar for Powx; equals argument1 for
                         one-argument functions */
    double result1;   /* may be replaced by the callback */
    double result2;   /* likewise; equals result1 where there is one */
    char name[64];    /* the reporting function; see below */
    int32_t name_length;
    int32_t reserved;
    double argument1_imag;
    double argument2_imag;
    double result1_imag;
    double result2_imag;
} kef_vtm_error_record;

/* Names in records have two forms. Sin, Cos, Tan and SinCos: type letter, function and
 * accuracy of the kernel ("sCos_HA", "dTan_LA"), where slots share a kernel the accuracy that
 * it has. All others: "v", type letter and function ("vdLn"), whatever the accuracy. */

/* Error callback. Returning 0 asks for the rest of the error mode (errno,
 * message, exception) and stores the record's results, changed or not, into the
 * result vectors. Any other value ends the handling: the kernel's own results
 * stay. The record is valid during the call only. A callback may use the
 * control functions below and vector math itself. It has to return: an exception or a jump
 * (longjmp) that leaves it is forbidden, the thread would keep the kernel's floating-point
 * control, and the rest of the vector its old contents. */
typedef int (*kef_vtm_error_callback)(kef_vtm_error_record *record);

/* The thread's mode word. At first use on a thread it is taken from the
 * environment variable KEF_VTM_MODE (keywords separated by commas, for instance
 * "VTM_EP,VTM_ERRMODE_STDERR"), or else is VTM_HA | VTM_ERRMODE_DEFAULT. */
KEF_API uint32_t kef_vtm_kernel_GetMode(void);

/* Replaces the accuracy, error-mode and FTZ/DAZ fields by those of `mode` that
 * are not zero; the others stay. Returns the mode word before the call. */
KEF_API uint32_t kef_vtm_kernel_SetMode(uint32_t mode);

/* The dispatch-table slot of the thread's accuracy: 0 LA, 1 HA, 2 EP; -1 when
 * the mode word holds no accuracy. */
KEF_API int32_t kef_vtm_kernel_GetTTableIndex(void);

/* The same for the given mode word; the first argument is ignored. */
KEF_API int32_t kef_vtm_kernel_GetTTableIndexM(int32_t ignored, uint32_t mode);

/* The status of the last element error on this thread; it stays until it is
 * set or cleared. Set and Clear return the status before the call. */
KEF_API int32_t kef_vtm_kernel_GetErrStatus(void);
KEF_API int32_t kef_vtm_kernel_SetErrStatus(int32_t status);
KEF_API int32_t kef_vtm_kernel_ClearErrStatus(void);

/* Installs an error callback and switches VTM_ERRMODE_CALLBACK on; null removes
 * the callback and switches it off. The pointer is kept until it is replaced or
 * the thread ends. Set and Clear return the callback before the call. */
KEF_API kef_vtm_error_callback kef_vtm_kernel_SetErrorCallBack(kef_vtm_error_callback callback);
KEF_API kef_vtm_error_callback kef_vtm_kernel_GetErrorCallBack(void);
KEF_API kef_vtm_error_callback kef_vtm_kernel_ClearErrorCallBack(void);

/* Tells where the caller's whole first input vector starts, so that a call on a
 * piece of it reports indices in the whole; null ends that. The pointer is kept
 * and never read through. Returns its argument. */
KEF_API const void *kef_vtm_kernel_SetInterfInputVectorPointer(const void *start);

/* Short names of the same functions. */
KEF_API uint32_t _vtmGetMode(void);
KEF_API uint32_t _vtmSetMode(uint32_t mode);
KEF_API int32_t _vtmGetErrStatus(void);
KEF_API int32_t _vtmSetErrStatus(int32_t status);
KEF_API int32_t _vtmClearErrStatus(void);
KEF_API kef_vtm_error_callback _vtmSetErrorCallBack(kef_vtm_error_callback callback);
KEF_API kef_vtm_error_callback _vtmGetErrorCallBack(void);
KEF_API kef_vtm_error_callback _vtmClearErrorCallBack(void);
KEF_API const void *_vtmSetInterfInputVectorPointer(const void *start);

/* The number of the member that runs, as kef_member (kef_version.h) gives its name: 0 the generic
 * one, 1 x86-64-v3, 2 x86-64-v4. Constant in each; the processor is not asked. */
KEF_API int32_t dll_cpu_version(void);

KEF_END_DECLS

#include "kef_vm_functions.h"

#endif
