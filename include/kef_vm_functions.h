/* clang-format off */
/* Made from vm/surface/surface.def by tools/make_prototypes.py; do not edit.
 *
 * For each function F of type t: four entry points and two tables.
 *
 *   _vtmtF, _vtmtF_HA     the most accurate kernel (slot 1)
 *   _vtmtF_21, _vtmtF_50  21 bits in single, 50 in double precision (slot 0)
 *   _vtmtF_11, _vtmtF_26  11 bits in single, 26 in double precision (slot 2)
 *   kef_vtm_kernel_tF_ttab  the kernels by slot (VTM_SLOT_...); an entry point reads
 *                           its slot at every call
 *   kef_vtm_kernel_tF_ctab  the relative cost of an element in each slot;
 *                           VTM_COST_DATA_MOVEMENT for Pack and Unpack
 *
 * The costs of sExp, dExp, cExp, zExp, dLn, dPow and dAdd are anchors: settled values, which
 * measured speeds miss by factors up to 2. The others are measured cycles times the
 * factor that fits the anchors best (least squares of logarithms). Functions of one
 * loop and formula have one cost, an anchor's where one of them is an anchor.
 *
 * r[i] = F(a[i]), or F(a[i], b[i]), for 0 <= i < n; n <= 0 does nothing. A
 * result vector may be an argument vector itself, or must not overlap it.
 * Nothing need be aligned. Bounds, special results and error conditions of each
 * function: docs/accuracy.md and docs/errors.md.
 *
 * Pack gathers elements of a into the first places of y, Unpack scatters the first
 * elements of a over y; the vector that describes the places stands beside the one
 * that it describes:
 *
 *   PackI(n, a, inca, y)     y[i] = a[i*inca]       UnpackI(n, a, y, incy)   y[i*incy] = a[i]
 *   PackV(n, a, ia, y)       y[i] = a[ia[i]]        UnpackV(n, a, y, iy)     y[iy[i]] = a[i]
 *   PackM(n, a, mask, y)     y gets the a[i] whose mask[i] is not zero, in order
 *   UnpackM(n, a, y, mask)   the y[i] whose mask[i] is not zero get a's elements in order
 *
 * For instance _vtmdPackM_HA(4, {1, 2, 3, 4}, {0, 1, 0, 1}, y) gives y = {2, 4}. Their
 * entry points use the low 32 bits of counts and strides. A slot called directly takes
 * one more argument: 1 does the same; with any other value counts and strides are 64-bit
 * and index and mask vectors hold 64-bit integers. */
#ifndef KEF_VM_FUNCTIONS_H
#define KEF_VM_FUNCTIONS_H

#ifndef KEF_VM_H
#error "include kef_vm.h"
#endif

KEF_BEGIN_DECLS

typedef void (*kef_vtm_s_map1)(int32_t n, const float *a, float *r);
typedef void (*kef_vtm_d_map1)(int32_t n, const double *a, double *r);
typedef void (*kef_vtm_c_modulus)(int32_t n, const kef_complex8 *a, float *r);
typedef void (*kef_vtm_z_modulus)(int32_t n, const kef_complex16 *a, double *r);
typedef void (*kef_vtm_c_map1)(int32_t n, const kef_complex8 *a, kef_complex8 *r);
typedef void (*kef_vtm_z_map1)(int32_t n, const kef_complex16 *a, kef_complex16 *r);
typedef void (*kef_vtm_s_map2)(int32_t n, const float *a, const float *b, float *r);
typedef void (*kef_vtm_d_map2)(int32_t n, const double *a, const double *b, double *r);
typedef void (*kef_vtm_c_map2)(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
typedef void (*kef_vtm_z_map2)(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
typedef void (*kef_vtm_c_from_real)(int32_t n, const float *a, kef_complex8 *r);
typedef void (*kef_vtm_z_from_real)(int32_t n, const double *a, kef_complex16 *r);
typedef void (*kef_vtm_s_linear_frac)(int32_t n, const float *a, const float *b, float scalea, float shifta, float scaleb, float shiftb, float *r);
typedef void (*kef_vtm_d_linear_frac)(int32_t n, const double *a, const double *b, double scalea, double shifta, double scaleb, double shiftb, double *r);
typedef void (*kef_vtm_s_map1x2)(int32_t n, const float *a, float *y, float *z);
typedef void (*kef_vtm_d_map1x2)(int32_t n, const double *a, double *y, double *z);
typedef void (*kef_vtm_s_mapx)(int32_t n, const float *a, float b, float *r);
typedef void (*kef_vtm_d_mapx)(int32_t n, const double *a, double b, double *r);
typedef void (*kef_vtm_c_mapx)(int32_t n, const kef_complex8 *a, kef_complex8 b, kef_complex8 *r);
typedef void (*kef_vtm_z_mapx)(int32_t n, const kef_complex16 *a, kef_complex16 b, kef_complex16 *r);
typedef void (*kef_vtm_s_pack_i)(int64_t n, const float *a, int64_t inca, float *y, int32_t width);
typedef void (*kef_vtm_d_pack_i)(int64_t n, const double *a, int64_t inca, double *y, int32_t width);
typedef void (*kef_vtm_c_pack_i)(int64_t n, const kef_complex8 *a, int64_t inca, kef_complex8 *y, int32_t width);
typedef void (*kef_vtm_z_pack_i)(int64_t n, const kef_complex16 *a, int64_t inca, kef_complex16 *y, int32_t width);
typedef void (*kef_vtm_s_pack_v)(int64_t n, const float *a, const void *ia, float *y, int32_t width);
typedef void (*kef_vtm_d_pack_v)(int64_t n, const double *a, const void *ia, double *y, int32_t width);
typedef void (*kef_vtm_c_pack_v)(int64_t n, const kef_complex8 *a, const void *ia, kef_complex8 *y, int32_t width);
typedef void (*kef_vtm_z_pack_v)(int64_t n, const kef_complex16 *a, const void *ia, kef_complex16 *y, int32_t width);
typedef void (*kef_vtm_s_unpack_i)(int64_t n, const float *a, float *y, int64_t incy, int32_t width);
typedef void (*kef_vtm_d_unpack_i)(int64_t n, const double *a, double *y, int64_t incy, int32_t width);
typedef void (*kef_vtm_c_unpack_i)(int64_t n, const kef_complex8 *a, kef_complex8 *y, int64_t incy, int32_t width);
typedef void (*kef_vtm_z_unpack_i)(int64_t n, const kef_complex16 *a, kef_complex16 *y, int64_t incy, int32_t width);
typedef void (*kef_vtm_s_unpack_v)(int64_t n, const float *a, float *y, const void *iy, int32_t width);
typedef void (*kef_vtm_d_unpack_v)(int64_t n, const double *a, double *y, const void *iy, int32_t width);
typedef void (*kef_vtm_c_unpack_v)(int64_t n, const kef_complex8 *a, kef_complex8 *y, const void *iy, int32_t width);
typedef void (*kef_vtm_z_unpack_v)(int64_t n, const kef_complex16 *a, kef_complex16 *y, const void *iy, int32_t width);

KEF_API void _vtmsAbs(int32_t n, const float *a, float *r);
KEF_API void _vtmsAbs_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAbs_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAbs_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAbs_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAbs_ctab[3];

KEF_API void _vtmdAbs(int32_t n, const double *a, double *r);
KEF_API void _vtmdAbs_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAbs_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAbs_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAbs_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAbs_ctab[3];

KEF_API void _vtmcAbs(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcAbs_HA(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcAbs_21(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcAbs_11(int32_t n, const kef_complex8 *a, float *r);
extern KEF_API kef_vtm_c_modulus kef_vtm_kernel_cAbs_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAbs_ctab[3];

KEF_API void _vtmzAbs(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzAbs_HA(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzAbs_50(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzAbs_26(int32_t n, const kef_complex16 *a, double *r);
extern KEF_API kef_vtm_z_modulus kef_vtm_kernel_zAbs_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAbs_ctab[3];

KEF_API void _vtmsAcos(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcos_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcos_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcos_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAcos_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAcos_ctab[3];

KEF_API void _vtmdAcos(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcos_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcos_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcos_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAcos_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAcos_ctab[3];

KEF_API void _vtmcAcos(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcos_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcos_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcos_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAcos_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAcos_ctab[3];

KEF_API void _vtmzAcos(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcos_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcos_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcos_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAcos_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAcos_ctab[3];

KEF_API void _vtmsAsin(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsin_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsin_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsin_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAsin_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAsin_ctab[3];

KEF_API void _vtmdAsin(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsin_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsin_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsin_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAsin_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAsin_ctab[3];

KEF_API void _vtmcAsin(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsin_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsin_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsin_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAsin_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAsin_ctab[3];

KEF_API void _vtmzAsin(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsin_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsin_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsin_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAsin_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAsin_ctab[3];

KEF_API void _vtmsAtan(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtan_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtan_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtan_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAtan_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAtan_ctab[3];

KEF_API void _vtmdAtan(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtan_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtan_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtan_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAtan_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAtan_ctab[3];

KEF_API void _vtmcAtan(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtan_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtan_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtan_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAtan_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAtan_ctab[3];

KEF_API void _vtmzAtan(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtan_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtan_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtan_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAtan_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAtan_ctab[3];

KEF_API void _vtmsAcosh(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcosh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcosh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAcosh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAcosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAcosh_ctab[3];

KEF_API void _vtmdAcosh(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcosh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcosh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAcosh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAcosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAcosh_ctab[3];

KEF_API void _vtmcAcosh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcosh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcosh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAcosh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAcosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAcosh_ctab[3];

KEF_API void _vtmzAcosh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcosh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcosh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAcosh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAcosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAcosh_ctab[3];

KEF_API void _vtmsAsinh(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsinh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsinh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAsinh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAsinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAsinh_ctab[3];

KEF_API void _vtmdAsinh(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsinh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsinh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAsinh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAsinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAsinh_ctab[3];

KEF_API void _vtmcAsinh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsinh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsinh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAsinh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAsinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAsinh_ctab[3];

KEF_API void _vtmzAsinh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsinh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsinh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAsinh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAsinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAsinh_ctab[3];

KEF_API void _vtmsAtanh(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtanh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtanh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsAtanh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sAtanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAtanh_ctab[3];

KEF_API void _vtmdAtanh(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtanh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtanh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdAtanh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dAtanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAtanh_ctab[3];

KEF_API void _vtmcAtanh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtanh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtanh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcAtanh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cAtanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAtanh_ctab[3];

KEF_API void _vtmzAtanh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtanh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtanh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzAtanh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zAtanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAtanh_ctab[3];

KEF_API void _vtmsAdd(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAdd_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAdd_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAdd_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sAdd_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAdd_ctab[3];

KEF_API void _vtmdAdd(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAdd_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAdd_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAdd_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dAdd_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAdd_ctab[3];

KEF_API void _vtmcAdd(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcAdd_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcAdd_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcAdd_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cAdd_ttab[3];
extern KEF_API const float kef_vtm_kernel_cAdd_ctab[3];

KEF_API void _vtmzAdd(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzAdd_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzAdd_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzAdd_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zAdd_ttab[3];
extern KEF_API const float kef_vtm_kernel_zAdd_ctab[3];

KEF_API void _vtmsSub(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsSub_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsSub_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsSub_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sSub_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSub_ctab[3];

KEF_API void _vtmdSub(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdSub_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdSub_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdSub_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dSub_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSub_ctab[3];

KEF_API void _vtmcSub(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcSub_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcSub_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcSub_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cSub_ttab[3];
extern KEF_API const float kef_vtm_kernel_cSub_ctab[3];

KEF_API void _vtmzSub(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzSub_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzSub_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzSub_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zSub_ttab[3];
extern KEF_API const float kef_vtm_kernel_zSub_ctab[3];

KEF_API void _vtmsMul(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsMul_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsMul_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsMul_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sMul_ttab[3];
extern KEF_API const float kef_vtm_kernel_sMul_ctab[3];

KEF_API void _vtmdMul(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdMul_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdMul_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdMul_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dMul_ttab[3];
extern KEF_API const float kef_vtm_kernel_dMul_ctab[3];

KEF_API void _vtmcMul(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMul_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMul_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMul_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cMul_ttab[3];
extern KEF_API const float kef_vtm_kernel_cMul_ctab[3];

KEF_API void _vtmzMul(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMul_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMul_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMul_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zMul_ttab[3];
extern KEF_API const float kef_vtm_kernel_zMul_ctab[3];

KEF_API void _vtmsDiv(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsDiv_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsDiv_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsDiv_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sDiv_ttab[3];
extern KEF_API const float kef_vtm_kernel_sDiv_ctab[3];

KEF_API void _vtmdDiv(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdDiv_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdDiv_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdDiv_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dDiv_ttab[3];
extern KEF_API const float kef_vtm_kernel_dDiv_ctab[3];

KEF_API void _vtmcDiv(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcDiv_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcDiv_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcDiv_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cDiv_ttab[3];
extern KEF_API const float kef_vtm_kernel_cDiv_ctab[3];

KEF_API void _vtmzDiv(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzDiv_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzDiv_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzDiv_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zDiv_ttab[3];
extern KEF_API const float kef_vtm_kernel_zDiv_ctab[3];

KEF_API void _vtmcArg(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcArg_HA(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcArg_21(int32_t n, const kef_complex8 *a, float *r);
KEF_API void _vtmcArg_11(int32_t n, const kef_complex8 *a, float *r);
extern KEF_API kef_vtm_c_modulus kef_vtm_kernel_cArg_ttab[3];
extern KEF_API const float kef_vtm_kernel_cArg_ctab[3];

KEF_API void _vtmzArg(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzArg_HA(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzArg_50(int32_t n, const kef_complex16 *a, double *r);
KEF_API void _vtmzArg_26(int32_t n, const kef_complex16 *a, double *r);
extern KEF_API kef_vtm_z_modulus kef_vtm_kernel_zArg_ttab[3];
extern KEF_API const float kef_vtm_kernel_zArg_ctab[3];

KEF_API void _vtmsAtan2(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAtan2_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAtan2_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsAtan2_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sAtan2_ttab[3];
extern KEF_API const float kef_vtm_kernel_sAtan2_ctab[3];

KEF_API void _vtmdAtan2(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAtan2_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAtan2_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdAtan2_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dAtan2_ttab[3];
extern KEF_API const float kef_vtm_kernel_dAtan2_ctab[3];

KEF_API void _vtmcCIS(int32_t n, const float *a, kef_complex8 *r);
KEF_API void _vtmcCIS_HA(int32_t n, const float *a, kef_complex8 *r);
KEF_API void _vtmcCIS_21(int32_t n, const float *a, kef_complex8 *r);
KEF_API void _vtmcCIS_11(int32_t n, const float *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_from_real kef_vtm_kernel_cCIS_ttab[3];
extern KEF_API const float kef_vtm_kernel_cCIS_ctab[3];

KEF_API void _vtmzCIS(int32_t n, const double *a, kef_complex16 *r);
KEF_API void _vtmzCIS_HA(int32_t n, const double *a, kef_complex16 *r);
KEF_API void _vtmzCIS_50(int32_t n, const double *a, kef_complex16 *r);
KEF_API void _vtmzCIS_26(int32_t n, const double *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_from_real kef_vtm_kernel_zCIS_ttab[3];
extern KEF_API const float kef_vtm_kernel_zCIS_ctab[3];

KEF_API void _vtmsCbrt(int32_t n, const float *a, float *r);
KEF_API void _vtmsCbrt_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCbrt_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCbrt_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCbrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCbrt_ctab[3];

KEF_API void _vtmdCbrt(int32_t n, const double *a, double *r);
KEF_API void _vtmdCbrt_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCbrt_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCbrt_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCbrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCbrt_ctab[3];

KEF_API void _vtmsInvCbrt(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvCbrt_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvCbrt_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvCbrt_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sInvCbrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_sInvCbrt_ctab[3];

KEF_API void _vtmdInvCbrt(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvCbrt_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvCbrt_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvCbrt_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dInvCbrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_dInvCbrt_ctab[3];

KEF_API void _vtmsCdfNorm(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNorm_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNorm_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNorm_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCdfNorm_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCdfNorm_ctab[3];

KEF_API void _vtmdCdfNorm(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNorm_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNorm_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNorm_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCdfNorm_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCdfNorm_ctab[3];

KEF_API void _vtmsCdfNormInv(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNormInv_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNormInv_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCdfNormInv_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCdfNormInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCdfNormInv_ctab[3];

KEF_API void _vtmdCdfNormInv(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNormInv_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNormInv_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCdfNormInv_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCdfNormInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCdfNormInv_ctab[3];

KEF_API void _vtmsCeil(int32_t n, const float *a, float *r);
KEF_API void _vtmsCeil_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCeil_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCeil_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCeil_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCeil_ctab[3];

KEF_API void _vtmdCeil(int32_t n, const double *a, double *r);
KEF_API void _vtmdCeil_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCeil_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCeil_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCeil_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCeil_ctab[3];

KEF_API void _vtmsFloor(int32_t n, const float *a, float *r);
KEF_API void _vtmsFloor_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsFloor_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsFloor_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sFloor_ttab[3];
extern KEF_API const float kef_vtm_kernel_sFloor_ctab[3];

KEF_API void _vtmdFloor(int32_t n, const double *a, double *r);
KEF_API void _vtmdFloor_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdFloor_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdFloor_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dFloor_ttab[3];
extern KEF_API const float kef_vtm_kernel_dFloor_ctab[3];

KEF_API void _vtmsRound(int32_t n, const float *a, float *r);
KEF_API void _vtmsRound_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsRound_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsRound_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sRound_ttab[3];
extern KEF_API const float kef_vtm_kernel_sRound_ctab[3];

KEF_API void _vtmdRound(int32_t n, const double *a, double *r);
KEF_API void _vtmdRound_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdRound_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdRound_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dRound_ttab[3];
extern KEF_API const float kef_vtm_kernel_dRound_ctab[3];

KEF_API void _vtmsTrunc(int32_t n, const float *a, float *r);
KEF_API void _vtmsTrunc_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsTrunc_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsTrunc_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sTrunc_ttab[3];
extern KEF_API const float kef_vtm_kernel_sTrunc_ctab[3];

KEF_API void _vtmdTrunc(int32_t n, const double *a, double *r);
KEF_API void _vtmdTrunc_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdTrunc_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdTrunc_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dTrunc_ttab[3];
extern KEF_API const float kef_vtm_kernel_dTrunc_ctab[3];

KEF_API void _vtmsRint(int32_t n, const float *a, float *r);
KEF_API void _vtmsRint_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsRint_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsRint_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sRint_ttab[3];
extern KEF_API const float kef_vtm_kernel_sRint_ctab[3];

KEF_API void _vtmdRint(int32_t n, const double *a, double *r);
KEF_API void _vtmdRint_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdRint_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdRint_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dRint_ttab[3];
extern KEF_API const float kef_vtm_kernel_dRint_ctab[3];

KEF_API void _vtmsNearbyInt(int32_t n, const float *a, float *r);
KEF_API void _vtmsNearbyInt_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsNearbyInt_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsNearbyInt_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sNearbyInt_ttab[3];
extern KEF_API const float kef_vtm_kernel_sNearbyInt_ctab[3];

KEF_API void _vtmdNearbyInt(int32_t n, const double *a, double *r);
KEF_API void _vtmdNearbyInt_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdNearbyInt_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdNearbyInt_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dNearbyInt_ttab[3];
extern KEF_API const float kef_vtm_kernel_dNearbyInt_ctab[3];

KEF_API void _vtmcConj(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcConj_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcConj_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcConj_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cConj_ttab[3];
extern KEF_API const float kef_vtm_kernel_cConj_ctab[3];

KEF_API void _vtmzConj(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzConj_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzConj_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzConj_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zConj_ttab[3];
extern KEF_API const float kef_vtm_kernel_zConj_ctab[3];

KEF_API void _vtmsCos(int32_t n, const float *a, float *r);
KEF_API void _vtmsCos_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCos_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCos_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCos_ctab[3];

KEF_API void _vtmdCos(int32_t n, const double *a, double *r);
KEF_API void _vtmdCos_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCos_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCos_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCos_ctab[3];

KEF_API void _vtmcCos(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCos_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCos_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCos_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_cCos_ctab[3];

KEF_API void _vtmzCos(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCos_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCos_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCos_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_zCos_ctab[3];

KEF_API void _vtmsSin(int32_t n, const float *a, float *r);
KEF_API void _vtmsSin_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsSin_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsSin_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sSin_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSin_ctab[3];

KEF_API void _vtmdSin(int32_t n, const double *a, double *r);
KEF_API void _vtmdSin_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdSin_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdSin_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dSin_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSin_ctab[3];

KEF_API void _vtmcSin(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSin_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSin_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSin_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cSin_ttab[3];
extern KEF_API const float kef_vtm_kernel_cSin_ctab[3];

KEF_API void _vtmzSin(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSin_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSin_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSin_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zSin_ttab[3];
extern KEF_API const float kef_vtm_kernel_zSin_ctab[3];

KEF_API void _vtmsTan(int32_t n, const float *a, float *r);
KEF_API void _vtmsTan_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsTan_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsTan_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sTan_ttab[3];
extern KEF_API const float kef_vtm_kernel_sTan_ctab[3];

KEF_API void _vtmdTan(int32_t n, const double *a, double *r);
KEF_API void _vtmdTan_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdTan_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdTan_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dTan_ttab[3];
extern KEF_API const float kef_vtm_kernel_dTan_ctab[3];

KEF_API void _vtmcTan(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTan_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTan_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTan_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cTan_ttab[3];
extern KEF_API const float kef_vtm_kernel_cTan_ctab[3];

KEF_API void _vtmzTan(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTan_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTan_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTan_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zTan_ttab[3];
extern KEF_API const float kef_vtm_kernel_zTan_ctab[3];

KEF_API void _vtmsCosh(int32_t n, const float *a, float *r);
KEF_API void _vtmsCosh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsCosh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsCosh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sCosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sCosh_ctab[3];

KEF_API void _vtmdCosh(int32_t n, const double *a, double *r);
KEF_API void _vtmdCosh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdCosh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdCosh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dCosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dCosh_ctab[3];

KEF_API void _vtmcCosh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCosh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCosh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcCosh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cCosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cCosh_ctab[3];

KEF_API void _vtmzCosh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCosh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCosh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzCosh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zCosh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zCosh_ctab[3];

KEF_API void _vtmsSinh(int32_t n, const float *a, float *r);
KEF_API void _vtmsSinh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsSinh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsSinh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sSinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSinh_ctab[3];

KEF_API void _vtmdSinh(int32_t n, const double *a, double *r);
KEF_API void _vtmdSinh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdSinh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdSinh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dSinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSinh_ctab[3];

KEF_API void _vtmcSinh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSinh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSinh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSinh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cSinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cSinh_ctab[3];

KEF_API void _vtmzSinh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSinh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSinh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSinh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zSinh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zSinh_ctab[3];

KEF_API void _vtmsTanh(int32_t n, const float *a, float *r);
KEF_API void _vtmsTanh_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsTanh_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsTanh_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sTanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_sTanh_ctab[3];

KEF_API void _vtmdTanh(int32_t n, const double *a, double *r);
KEF_API void _vtmdTanh_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdTanh_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdTanh_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dTanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_dTanh_ctab[3];

KEF_API void _vtmcTanh(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTanh_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTanh_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcTanh_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cTanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_cTanh_ctab[3];

KEF_API void _vtmzTanh(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTanh_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTanh_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzTanh_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zTanh_ttab[3];
extern KEF_API const float kef_vtm_kernel_zTanh_ctab[3];

KEF_API void _vtmsErf(int32_t n, const float *a, float *r);
KEF_API void _vtmsErf_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsErf_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsErf_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sErf_ttab[3];
extern KEF_API const float kef_vtm_kernel_sErf_ctab[3];

KEF_API void _vtmdErf(int32_t n, const double *a, double *r);
KEF_API void _vtmdErf_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdErf_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdErf_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dErf_ttab[3];
extern KEF_API const float kef_vtm_kernel_dErf_ctab[3];

KEF_API void _vtmsErfc(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfc_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfc_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfc_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sErfc_ttab[3];
extern KEF_API const float kef_vtm_kernel_sErfc_ctab[3];

KEF_API void _vtmdErfc(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfc_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfc_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfc_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dErfc_ttab[3];
extern KEF_API const float kef_vtm_kernel_dErfc_ctab[3];

KEF_API void _vtmsErfInv(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfInv_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfInv_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfInv_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sErfInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_sErfInv_ctab[3];

KEF_API void _vtmdErfInv(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfInv_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfInv_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfInv_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dErfInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_dErfInv_ctab[3];

KEF_API void _vtmsErfcInv(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfcInv_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfcInv_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsErfcInv_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sErfcInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_sErfcInv_ctab[3];

KEF_API void _vtmdErfcInv(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfcInv_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfcInv_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdErfcInv_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dErfcInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_dErfcInv_ctab[3];

KEF_API void _vtmsExp(int32_t n, const float *a, float *r);
KEF_API void _vtmsExp_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsExp_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsExp_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sExp_ttab[3];
extern KEF_API const float kef_vtm_kernel_sExp_ctab[3];

KEF_API void _vtmdExp(int32_t n, const double *a, double *r);
KEF_API void _vtmdExp_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdExp_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdExp_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dExp_ttab[3];
extern KEF_API const float kef_vtm_kernel_dExp_ctab[3];

KEF_API void _vtmcExp(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcExp_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcExp_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcExp_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cExp_ttab[3];
extern KEF_API const float kef_vtm_kernel_cExp_ctab[3];

KEF_API void _vtmzExp(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzExp_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzExp_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzExp_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zExp_ttab[3];
extern KEF_API const float kef_vtm_kernel_zExp_ctab[3];

KEF_API void _vtmsLn(int32_t n, const float *a, float *r);
KEF_API void _vtmsLn_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsLn_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsLn_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sLn_ttab[3];
extern KEF_API const float kef_vtm_kernel_sLn_ctab[3];

KEF_API void _vtmdLn(int32_t n, const double *a, double *r);
KEF_API void _vtmdLn_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdLn_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdLn_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dLn_ttab[3];
extern KEF_API const float kef_vtm_kernel_dLn_ctab[3];

KEF_API void _vtmcLn(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLn_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLn_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLn_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cLn_ttab[3];
extern KEF_API const float kef_vtm_kernel_cLn_ctab[3];

KEF_API void _vtmzLn(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLn_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLn_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLn_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zLn_ttab[3];
extern KEF_API const float kef_vtm_kernel_zLn_ctab[3];

KEF_API void _vtmsLog10(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog10_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog10_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog10_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sLog10_ttab[3];
extern KEF_API const float kef_vtm_kernel_sLog10_ctab[3];

KEF_API void _vtmdLog10(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog10_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog10_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog10_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dLog10_ttab[3];
extern KEF_API const float kef_vtm_kernel_dLog10_ctab[3];

KEF_API void _vtmcLog10(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLog10_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLog10_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcLog10_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cLog10_ttab[3];
extern KEF_API const float kef_vtm_kernel_cLog10_ctab[3];

KEF_API void _vtmzLog10(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLog10_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLog10_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzLog10_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zLog10_ttab[3];
extern KEF_API const float kef_vtm_kernel_zLog10_ctab[3];

KEF_API void _vtmsExpm1(int32_t n, const float *a, float *r);
KEF_API void _vtmsExpm1_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsExpm1_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsExpm1_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sExpm1_ttab[3];
extern KEF_API const float kef_vtm_kernel_sExpm1_ctab[3];

KEF_API void _vtmdExpm1(int32_t n, const double *a, double *r);
KEF_API void _vtmdExpm1_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdExpm1_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdExpm1_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dExpm1_ttab[3];
extern KEF_API const float kef_vtm_kernel_dExpm1_ctab[3];

KEF_API void _vtmsLog1p(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog1p_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog1p_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsLog1p_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sLog1p_ttab[3];
extern KEF_API const float kef_vtm_kernel_sLog1p_ctab[3];

KEF_API void _vtmdLog1p(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog1p_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog1p_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdLog1p_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dLog1p_ttab[3];
extern KEF_API const float kef_vtm_kernel_dLog1p_ctab[3];

KEF_API void _vtmsHypot(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsHypot_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsHypot_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsHypot_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sHypot_ttab[3];
extern KEF_API const float kef_vtm_kernel_sHypot_ctab[3];

KEF_API void _vtmdHypot(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdHypot_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdHypot_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdHypot_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dHypot_ttab[3];
extern KEF_API const float kef_vtm_kernel_dHypot_ctab[3];

KEF_API void _vtmsInv(int32_t n, const float *a, float *r);
KEF_API void _vtmsInv_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsInv_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsInv_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_sInv_ctab[3];

KEF_API void _vtmdInv(int32_t n, const double *a, double *r);
KEF_API void _vtmdInv_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdInv_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdInv_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dInv_ttab[3];
extern KEF_API const float kef_vtm_kernel_dInv_ctab[3];

KEF_API void _vtmsInvSqrt(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvSqrt_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvSqrt_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsInvSqrt_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sInvSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_sInvSqrt_ctab[3];

KEF_API void _vtmdInvSqrt(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvSqrt_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvSqrt_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdInvSqrt_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dInvSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_dInvSqrt_ctab[3];

KEF_API void _vtmsSqr(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqr_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqr_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqr_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sSqr_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSqr_ctab[3];

KEF_API void _vtmdSqr(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqr_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqr_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqr_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dSqr_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSqr_ctab[3];

KEF_API void _vtmsLGamma(int32_t n, const float *a, float *r);
KEF_API void _vtmsLGamma_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsLGamma_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsLGamma_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sLGamma_ttab[3];
extern KEF_API const float kef_vtm_kernel_sLGamma_ctab[3];

KEF_API void _vtmdLGamma(int32_t n, const double *a, double *r);
KEF_API void _vtmdLGamma_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdLGamma_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdLGamma_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dLGamma_ttab[3];
extern KEF_API const float kef_vtm_kernel_dLGamma_ctab[3];

KEF_API void _vtmsTGamma(int32_t n, const float *a, float *r);
KEF_API void _vtmsTGamma_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsTGamma_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsTGamma_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sTGamma_ttab[3];
extern KEF_API const float kef_vtm_kernel_sTGamma_ctab[3];

KEF_API void _vtmdTGamma(int32_t n, const double *a, double *r);
KEF_API void _vtmdTGamma_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdTGamma_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdTGamma_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dTGamma_ttab[3];
extern KEF_API const float kef_vtm_kernel_dTGamma_ctab[3];

KEF_API void _vtmsLinearFrac(int32_t n, const float *a, const float *b, float scalea, float shifta, float scaleb, float shiftb, float *r);
KEF_API void _vtmsLinearFrac_HA(int32_t n, const float *a, const float *b, float scalea, float shifta, float scaleb, float shiftb, float *r);
KEF_API void _vtmsLinearFrac_21(int32_t n, const float *a, const float *b, float scalea, float shifta, float scaleb, float shiftb, float *r);
KEF_API void _vtmsLinearFrac_11(int32_t n, const float *a, const float *b, float scalea, float shifta, float scaleb, float shiftb, float *r);
extern KEF_API kef_vtm_s_linear_frac kef_vtm_kernel_sLinearFrac_ttab[3];
extern KEF_API const float kef_vtm_kernel_sLinearFrac_ctab[3];

KEF_API void _vtmdLinearFrac(int32_t n, const double *a, const double *b, double scalea, double shifta, double scaleb, double shiftb, double *r);
KEF_API void _vtmdLinearFrac_HA(int32_t n, const double *a, const double *b, double scalea, double shifta, double scaleb, double shiftb, double *r);
KEF_API void _vtmdLinearFrac_50(int32_t n, const double *a, const double *b, double scalea, double shifta, double scaleb, double shiftb, double *r);
KEF_API void _vtmdLinearFrac_26(int32_t n, const double *a, const double *b, double scalea, double shifta, double scaleb, double shiftb, double *r);
extern KEF_API kef_vtm_d_linear_frac kef_vtm_kernel_dLinearFrac_ttab[3];
extern KEF_API const float kef_vtm_kernel_dLinearFrac_ctab[3];

KEF_API void _vtmsModf(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsModf_HA(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsModf_21(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsModf_11(int32_t n, const float *a, float *y, float *z);
extern KEF_API kef_vtm_s_map1x2 kef_vtm_kernel_sModf_ttab[3];
extern KEF_API const float kef_vtm_kernel_sModf_ctab[3];

KEF_API void _vtmdModf(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdModf_HA(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdModf_50(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdModf_26(int32_t n, const double *a, double *y, double *z);
extern KEF_API kef_vtm_d_map1x2 kef_vtm_kernel_dModf_ttab[3];
extern KEF_API const float kef_vtm_kernel_dModf_ctab[3];

KEF_API void _vtmcMulByConj(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMulByConj_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMulByConj_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcMulByConj_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cMulByConj_ttab[3];
extern KEF_API const float kef_vtm_kernel_cMulByConj_ctab[3];

KEF_API void _vtmzMulByConj(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMulByConj_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMulByConj_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzMulByConj_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zMulByConj_ttab[3];
extern KEF_API const float kef_vtm_kernel_zMulByConj_ctab[3];

KEF_API void _vtmsPow(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsPow_HA(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsPow_21(int32_t n, const float *a, const float *b, float *r);
KEF_API void _vtmsPow_11(int32_t n, const float *a, const float *b, float *r);
extern KEF_API kef_vtm_s_map2 kef_vtm_kernel_sPow_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPow_ctab[3];

KEF_API void _vtmdPow(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdPow_HA(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdPow_50(int32_t n, const double *a, const double *b, double *r);
KEF_API void _vtmdPow_26(int32_t n, const double *a, const double *b, double *r);
extern KEF_API kef_vtm_d_map2 kef_vtm_kernel_dPow_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPow_ctab[3];

KEF_API void _vtmcPow(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcPow_HA(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcPow_21(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
KEF_API void _vtmcPow_11(int32_t n, const kef_complex8 *a, const kef_complex8 *b, kef_complex8 *r);
extern KEF_API kef_vtm_c_map2 kef_vtm_kernel_cPow_ttab[3];
extern KEF_API const float kef_vtm_kernel_cPow_ctab[3];

KEF_API void _vtmzPow(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzPow_HA(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzPow_50(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
KEF_API void _vtmzPow_26(int32_t n, const kef_complex16 *a, const kef_complex16 *b, kef_complex16 *r);
extern KEF_API kef_vtm_z_map2 kef_vtm_kernel_zPow_ttab[3];
extern KEF_API const float kef_vtm_kernel_zPow_ctab[3];

KEF_API void _vtmsPow2o3(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow2o3_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow2o3_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow2o3_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sPow2o3_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPow2o3_ctab[3];

KEF_API void _vtmdPow2o3(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow2o3_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow2o3_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow2o3_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dPow2o3_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPow2o3_ctab[3];

KEF_API void _vtmsPow3o2(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow3o2_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow3o2_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsPow3o2_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sPow3o2_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPow3o2_ctab[3];

KEF_API void _vtmdPow3o2(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow3o2_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow3o2_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdPow3o2_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dPow3o2_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPow3o2_ctab[3];

KEF_API void _vtmsPowx(int32_t n, const float *a, float b, float *r);
KEF_API void _vtmsPowx_HA(int32_t n, const float *a, float b, float *r);
KEF_API void _vtmsPowx_21(int32_t n, const float *a, float b, float *r);
KEF_API void _vtmsPowx_11(int32_t n, const float *a, float b, float *r);
extern KEF_API kef_vtm_s_mapx kef_vtm_kernel_sPowx_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPowx_ctab[3];

KEF_API void _vtmdPowx(int32_t n, const double *a, double b, double *r);
KEF_API void _vtmdPowx_HA(int32_t n, const double *a, double b, double *r);
KEF_API void _vtmdPowx_50(int32_t n, const double *a, double b, double *r);
KEF_API void _vtmdPowx_26(int32_t n, const double *a, double b, double *r);
extern KEF_API kef_vtm_d_mapx kef_vtm_kernel_dPowx_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPowx_ctab[3];

KEF_API void _vtmcPowx(int32_t n, const kef_complex8 *a, kef_complex8 b, kef_complex8 *r);
KEF_API void _vtmcPowx_HA(int32_t n, const kef_complex8 *a, kef_complex8 b, kef_complex8 *r);
KEF_API void _vtmcPowx_21(int32_t n, const kef_complex8 *a, kef_complex8 b, kef_complex8 *r);
KEF_API void _vtmcPowx_11(int32_t n, const kef_complex8 *a, kef_complex8 b, kef_complex8 *r);
extern KEF_API kef_vtm_c_mapx kef_vtm_kernel_cPowx_ttab[3];
extern KEF_API const float kef_vtm_kernel_cPowx_ctab[3];

KEF_API void _vtmzPowx(int32_t n, const kef_complex16 *a, kef_complex16 b, kef_complex16 *r);
KEF_API void _vtmzPowx_HA(int32_t n, const kef_complex16 *a, kef_complex16 b, kef_complex16 *r);
KEF_API void _vtmzPowx_50(int32_t n, const kef_complex16 *a, kef_complex16 b, kef_complex16 *r);
KEF_API void _vtmzPowx_26(int32_t n, const kef_complex16 *a, kef_complex16 b, kef_complex16 *r);
extern KEF_API kef_vtm_z_mapx kef_vtm_kernel_zPowx_ttab[3];
extern KEF_API const float kef_vtm_kernel_zPowx_ctab[3];

KEF_API void _vtmsSinCos(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsSinCos_HA(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsSinCos_21(int32_t n, const float *a, float *y, float *z);
KEF_API void _vtmsSinCos_11(int32_t n, const float *a, float *y, float *z);
extern KEF_API kef_vtm_s_map1x2 kef_vtm_kernel_sSinCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSinCos_ctab[3];

KEF_API void _vtmdSinCos(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdSinCos_HA(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdSinCos_50(int32_t n, const double *a, double *y, double *z);
KEF_API void _vtmdSinCos_26(int32_t n, const double *a, double *y, double *z);
extern KEF_API kef_vtm_d_map1x2 kef_vtm_kernel_dSinCos_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSinCos_ctab[3];

KEF_API void _vtmsSqrt(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqrt_HA(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqrt_21(int32_t n, const float *a, float *r);
KEF_API void _vtmsSqrt_11(int32_t n, const float *a, float *r);
extern KEF_API kef_vtm_s_map1 kef_vtm_kernel_sSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_sSqrt_ctab[3];

KEF_API void _vtmdSqrt(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqrt_HA(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqrt_50(int32_t n, const double *a, double *r);
KEF_API void _vtmdSqrt_26(int32_t n, const double *a, double *r);
extern KEF_API kef_vtm_d_map1 kef_vtm_kernel_dSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_dSqrt_ctab[3];

KEF_API void _vtmcSqrt(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSqrt_HA(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSqrt_21(int32_t n, const kef_complex8 *a, kef_complex8 *r);
KEF_API void _vtmcSqrt_11(int32_t n, const kef_complex8 *a, kef_complex8 *r);
extern KEF_API kef_vtm_c_map1 kef_vtm_kernel_cSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_cSqrt_ctab[3];

KEF_API void _vtmzSqrt(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSqrt_HA(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSqrt_50(int32_t n, const kef_complex16 *a, kef_complex16 *r);
KEF_API void _vtmzSqrt_26(int32_t n, const kef_complex16 *a, kef_complex16 *r);
extern KEF_API kef_vtm_z_map1 kef_vtm_kernel_zSqrt_ttab[3];
extern KEF_API const float kef_vtm_kernel_zSqrt_ctab[3];

KEF_API void _vtmsPackI(int64_t n, const float *a, int64_t inca, float *y);
KEF_API void _vtmsPackI_HA(int64_t n, const float *a, int64_t inca, float *y);
KEF_API void _vtmsPackI_21(int64_t n, const float *a, int64_t inca, float *y);
KEF_API void _vtmsPackI_11(int64_t n, const float *a, int64_t inca, float *y);
extern KEF_API kef_vtm_s_pack_i kef_vtm_kernel_sPackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPackI_ctab[3];

KEF_API void _vtmdPackI(int64_t n, const double *a, int64_t inca, double *y);
KEF_API void _vtmdPackI_HA(int64_t n, const double *a, int64_t inca, double *y);
KEF_API void _vtmdPackI_50(int64_t n, const double *a, int64_t inca, double *y);
KEF_API void _vtmdPackI_26(int64_t n, const double *a, int64_t inca, double *y);
extern KEF_API kef_vtm_d_pack_i kef_vtm_kernel_dPackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPackI_ctab[3];

KEF_API void _vtmcPackI(int64_t n, const kef_complex8 *a, int64_t inca, kef_complex8 *y);
KEF_API void _vtmcPackI_HA(int64_t n, const kef_complex8 *a, int64_t inca, kef_complex8 *y);
KEF_API void _vtmcPackI_21(int64_t n, const kef_complex8 *a, int64_t inca, kef_complex8 *y);
KEF_API void _vtmcPackI_11(int64_t n, const kef_complex8 *a, int64_t inca, kef_complex8 *y);
extern KEF_API kef_vtm_c_pack_i kef_vtm_kernel_cPackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_cPackI_ctab[3];

KEF_API void _vtmzPackI(int64_t n, const kef_complex16 *a, int64_t inca, kef_complex16 *y);
KEF_API void _vtmzPackI_HA(int64_t n, const kef_complex16 *a, int64_t inca, kef_complex16 *y);
KEF_API void _vtmzPackI_50(int64_t n, const kef_complex16 *a, int64_t inca, kef_complex16 *y);
KEF_API void _vtmzPackI_26(int64_t n, const kef_complex16 *a, int64_t inca, kef_complex16 *y);
extern KEF_API kef_vtm_z_pack_i kef_vtm_kernel_zPackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_zPackI_ctab[3];

KEF_API void _vtmsPackV(int64_t n, const float *a, const int32_t *ia, float *y);
KEF_API void _vtmsPackV_HA(int64_t n, const float *a, const int32_t *ia, float *y);
KEF_API void _vtmsPackV_21(int64_t n, const float *a, const int32_t *ia, float *y);
KEF_API void _vtmsPackV_11(int64_t n, const float *a, const int32_t *ia, float *y);
extern KEF_API kef_vtm_s_pack_v kef_vtm_kernel_sPackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPackV_ctab[3];

KEF_API void _vtmdPackV(int64_t n, const double *a, const int32_t *ia, double *y);
KEF_API void _vtmdPackV_HA(int64_t n, const double *a, const int32_t *ia, double *y);
KEF_API void _vtmdPackV_50(int64_t n, const double *a, const int32_t *ia, double *y);
KEF_API void _vtmdPackV_26(int64_t n, const double *a, const int32_t *ia, double *y);
extern KEF_API kef_vtm_d_pack_v kef_vtm_kernel_dPackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPackV_ctab[3];

KEF_API void _vtmcPackV(int64_t n, const kef_complex8 *a, const int32_t *ia, kef_complex8 *y);
KEF_API void _vtmcPackV_HA(int64_t n, const kef_complex8 *a, const int32_t *ia, kef_complex8 *y);
KEF_API void _vtmcPackV_21(int64_t n, const kef_complex8 *a, const int32_t *ia, kef_complex8 *y);
KEF_API void _vtmcPackV_11(int64_t n, const kef_complex8 *a, const int32_t *ia, kef_complex8 *y);
extern KEF_API kef_vtm_c_pack_v kef_vtm_kernel_cPackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_cPackV_ctab[3];

KEF_API void _vtmzPackV(int64_t n, const kef_complex16 *a, const int32_t *ia, kef_complex16 *y);
KEF_API void _vtmzPackV_HA(int64_t n, const kef_complex16 *a, const int32_t *ia, kef_complex16 *y);
KEF_API void _vtmzPackV_50(int64_t n, const kef_complex16 *a, const int32_t *ia, kef_complex16 *y);
KEF_API void _vtmzPackV_26(int64_t n, const kef_complex16 *a, const int32_t *ia, kef_complex16 *y);
extern KEF_API kef_vtm_z_pack_v kef_vtm_kernel_zPackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_zPackV_ctab[3];

KEF_API void _vtmsPackM(int64_t n, const float *a, const int32_t *mask, float *y);
KEF_API void _vtmsPackM_HA(int64_t n, const float *a, const int32_t *mask, float *y);
KEF_API void _vtmsPackM_21(int64_t n, const float *a, const int32_t *mask, float *y);
KEF_API void _vtmsPackM_11(int64_t n, const float *a, const int32_t *mask, float *y);
extern KEF_API kef_vtm_s_pack_v kef_vtm_kernel_sPackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_sPackM_ctab[3];

KEF_API void _vtmdPackM(int64_t n, const double *a, const int32_t *mask, double *y);
KEF_API void _vtmdPackM_HA(int64_t n, const double *a, const int32_t *mask, double *y);
KEF_API void _vtmdPackM_50(int64_t n, const double *a, const int32_t *mask, double *y);
KEF_API void _vtmdPackM_26(int64_t n, const double *a, const int32_t *mask, double *y);
extern KEF_API kef_vtm_d_pack_v kef_vtm_kernel_dPackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_dPackM_ctab[3];

KEF_API void _vtmcPackM(int64_t n, const kef_complex8 *a, const int32_t *mask, kef_complex8 *y);
KEF_API void _vtmcPackM_HA(int64_t n, const kef_complex8 *a, const int32_t *mask, kef_complex8 *y);
KEF_API void _vtmcPackM_21(int64_t n, const kef_complex8 *a, const int32_t *mask, kef_complex8 *y);
KEF_API void _vtmcPackM_11(int64_t n, const kef_complex8 *a, const int32_t *mask, kef_complex8 *y);
extern KEF_API kef_vtm_c_pack_v kef_vtm_kernel_cPackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_cPackM_ctab[3];

KEF_API void _vtmzPackM(int64_t n, const kef_complex16 *a, const int32_t *mask, kef_complex16 *y);
KEF_API void _vtmzPackM_HA(int64_t n, const kef_complex16 *a, const int32_t *mask, kef_complex16 *y);
KEF_API void _vtmzPackM_50(int64_t n, const kef_complex16 *a, const int32_t *mask, kef_complex16 *y);
KEF_API void _vtmzPackM_26(int64_t n, const kef_complex16 *a, const int32_t *mask, kef_complex16 *y);
extern KEF_API kef_vtm_z_pack_v kef_vtm_kernel_zPackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_zPackM_ctab[3];

KEF_API void _vtmsUnpackI(int64_t n, const float *a, float *y, int64_t incy);
KEF_API void _vtmsUnpackI_HA(int64_t n, const float *a, float *y, int64_t incy);
KEF_API void _vtmsUnpackI_21(int64_t n, const float *a, float *y, int64_t incy);
KEF_API void _vtmsUnpackI_11(int64_t n, const float *a, float *y, int64_t incy);
extern KEF_API kef_vtm_s_unpack_i kef_vtm_kernel_sUnpackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_sUnpackI_ctab[3];

KEF_API void _vtmdUnpackI(int64_t n, const double *a, double *y, int64_t incy);
KEF_API void _vtmdUnpackI_HA(int64_t n, const double *a, double *y, int64_t incy);
KEF_API void _vtmdUnpackI_50(int64_t n, const double *a, double *y, int64_t incy);
KEF_API void _vtmdUnpackI_26(int64_t n, const double *a, double *y, int64_t incy);
extern KEF_API kef_vtm_d_unpack_i kef_vtm_kernel_dUnpackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_dUnpackI_ctab[3];

KEF_API void _vtmcUnpackI(int64_t n, const kef_complex8 *a, kef_complex8 *y, int64_t incy);
KEF_API void _vtmcUnpackI_HA(int64_t n, const kef_complex8 *a, kef_complex8 *y, int64_t incy);
KEF_API void _vtmcUnpackI_21(int64_t n, const kef_complex8 *a, kef_complex8 *y, int64_t incy);
KEF_API void _vtmcUnpackI_11(int64_t n, const kef_complex8 *a, kef_complex8 *y, int64_t incy);
extern KEF_API kef_vtm_c_unpack_i kef_vtm_kernel_cUnpackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_cUnpackI_ctab[3];

KEF_API void _vtmzUnpackI(int64_t n, const kef_complex16 *a, kef_complex16 *y, int64_t incy);
KEF_API void _vtmzUnpackI_HA(int64_t n, const kef_complex16 *a, kef_complex16 *y, int64_t incy);
KEF_API void _vtmzUnpackI_50(int64_t n, const kef_complex16 *a, kef_complex16 *y, int64_t incy);
KEF_API void _vtmzUnpackI_26(int64_t n, const kef_complex16 *a, kef_complex16 *y, int64_t incy);
extern KEF_API kef_vtm_z_unpack_i kef_vtm_kernel_zUnpackI_ttab[3];
extern KEF_API const float kef_vtm_kernel_zUnpackI_ctab[3];

KEF_API void _vtmsUnpackV(int64_t n, const float *a, float *y, const int32_t *iy);
KEF_API void _vtmsUnpackV_HA(int64_t n, const float *a, float *y, const int32_t *iy);
KEF_API void _vtmsUnpackV_21(int64_t n, const float *a, float *y, const int32_t *iy);
KEF_API void _vtmsUnpackV_11(int64_t n, const float *a, float *y, const int32_t *iy);
extern KEF_API kef_vtm_s_unpack_v kef_vtm_kernel_sUnpackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_sUnpackV_ctab[3];

KEF_API void _vtmdUnpackV(int64_t n, const double *a, double *y, const int32_t *iy);
KEF_API void _vtmdUnpackV_HA(int64_t n, const double *a, double *y, const int32_t *iy);
KEF_API void _vtmdUnpackV_50(int64_t n, const double *a, double *y, const int32_t *iy);
KEF_API void _vtmdUnpackV_26(int64_t n, const double *a, double *y, const int32_t *iy);
extern KEF_API kef_vtm_d_unpack_v kef_vtm_kernel_dUnpackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_dUnpackV_ctab[3];

KEF_API void _vtmcUnpackV(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *iy);
KEF_API void _vtmcUnpackV_HA(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *iy);
KEF_API void _vtmcUnpackV_21(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *iy);
KEF_API void _vtmcUnpackV_11(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *iy);
extern KEF_API kef_vtm_c_unpack_v kef_vtm_kernel_cUnpackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_cUnpackV_ctab[3];

KEF_API void _vtmzUnpackV(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *iy);
KEF_API void _vtmzUnpackV_HA(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *iy);
KEF_API void _vtmzUnpackV_50(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *iy);
KEF_API void _vtmzUnpackV_26(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *iy);
extern KEF_API kef_vtm_z_unpack_v kef_vtm_kernel_zUnpackV_ttab[3];
extern KEF_API const float kef_vtm_kernel_zUnpackV_ctab[3];

KEF_API void _vtmsUnpackM(int64_t n, const float *a, float *y, const int32_t *mask);
KEF_API void _vtmsUnpackM_HA(int64_t n, const float *a, float *y, const int32_t *mask);
KEF_API void _vtmsUnpackM_21(int64_t n, const float *a, float *y, const int32_t *mask);
KEF_API void _vtmsUnpackM_11(int64_t n, const float *a, float *y, const int32_t *mask);
extern KEF_API kef_vtm_s_unpack_v kef_vtm_kernel_sUnpackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_sUnpackM_ctab[3];

KEF_API void _vtmdUnpackM(int64_t n, const double *a, double *y, const int32_t *mask);
KEF_API void _vtmdUnpackM_HA(int64_t n, const double *a, double *y, const int32_t *mask);
KEF_API void _vtmdUnpackM_50(int64_t n, const double *a, double *y, const int32_t *mask);
KEF_API void _vtmdUnpackM_26(int64_t n, const double *a, double *y, const int32_t *mask);
extern KEF_API kef_vtm_d_unpack_v kef_vtm_kernel_dUnpackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_dUnpackM_ctab[3];

KEF_API void _vtmcUnpackM(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *mask);
KEF_API void _vtmcUnpackM_HA(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *mask);
KEF_API void _vtmcUnpackM_21(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *mask);
KEF_API void _vtmcUnpackM_11(int64_t n, const kef_complex8 *a, kef_complex8 *y, const int32_t *mask);
extern KEF_API kef_vtm_c_unpack_v kef_vtm_kernel_cUnpackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_cUnpackM_ctab[3];

KEF_API void _vtmzUnpackM(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *mask);
KEF_API void _vtmzUnpackM_HA(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *mask);
KEF_API void _vtmzUnpackM_50(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *mask);
KEF_API void _vtmzUnpackM_26(int64_t n, const kef_complex16 *a, kef_complex16 *y, const int32_t *mask);
extern KEF_API kef_vtm_z_unpack_v kef_vtm_kernel_zUnpackM_ttab[3];
extern KEF_API const float kef_vtm_kernel_zUnpackM_ctab[3];

KEF_END_DECLS

#endif
