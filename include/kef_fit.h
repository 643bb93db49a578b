/* Data fitting: splines of one variable.
 *
 * A task describes nx breakpoints x_0 < ... < x_{nx-1} (the partition), ny functions
 * sampled on them, and a spline: its order, type and conditions, and where its
 * coefficients go. It refers to the caller's arrays by pointer and reads them at
 * each call; it never copies them. Constructors compute the coefficients; search,
 * interpolation and integration use them. docs/fitting.md tells the conventions
 * and formulas with their sources.
 *
 * Names: d for double arrays, s for float arrays; a task is of the precision that it was
 * created in, and calls of the other one are refused with DF_STATUS_PRECISION. A task
 * carries no lock: one thread at a time edits it; compute entries do not change it.
 * Every function returns DF_STATUS_OK or a negative status.
 *
 * Arrays that are read may overlap one another (functions may share a row of values).
 * An array that is written overlaps nothing, but for results that take the place of the
 * sites or limits themselves, where there is one result for each: one function, and one
 * value of it.
 *
 *     kef_df_task *task;
 *     kef_df_kernel_dNewTask1D(&task, nx, x, DF_NON_UNIFORM, 1, y, DF_BY_ROWS, 0);
 *     kef_df_kernel_dEditPPSpline1D(task, DF_CUBIC, DF_TYPE_NATURAL, DF_NOT_A_KNOT, 0,
 *                                   DF_NO_CONDITIONS, 0, coefficients, DF_BY_ROWS);
 *     kef_df_kernel_dDFNaturalCubicSpline1D(task, 0);
 *     kef_df_kernel_dDFInterpolate1D(task, DF_SPLINE, nsite, site, DF_ANY_ORDER, 1, &flag,
 *                                    result, DF_BY_ROWS, 0);
 *     kef_df_kernel_DeleteTask(&task);
 */
#ifndef KEF_FIT_H
#define KEF_FIT_H

#include <stdint.h>

#include "kef_export.h"

KEF_BEGIN_DECLS

typedef struct kef_df_task kef_df_task;

/* DF_STATUS_..., listed with their meanings in kef_fit_status.def. */
enum {
#define KEF_STATUS_ROW(name, code, meaning) name = code,
#include "kef_fit_status.def"
#undef KEF_STATUS_ROW
};

/* The meaning of a status in a few English words, for messages; "unknown status" for a code
 * that is none. Never null; the text belongs to the library. */
KEF_API const char *kef_df_status_text(int32_t status);

/* Parameter identifiers. */
enum {
    DF_X = 1,
    DF_Y = 2,
    DF_INTERNAL_CONDITIONS = 3,
    DF_BOUNDARY_CONDITIONS = 4,
    DF_COEFFICIENTS = 5,
    DF_NX = 14,
    DF_X_HINT = 15,
    DF_NY = 16,
    DF_Y_HINT = 17,
    DF_ORDER = 18,
    DF_TYPE = 19,
    DF_INTERNAL_TYPE = 20,
    DF_BOUNDARY_TYPE = 21,
    DF_COEFFICIENT_HINT = 22,
    DF_CHECK_FLAG = 23 /* 1: compute entries check that x is finite and ascending; 0: they trust */
};

/* Hints about breakpoints and sites. */
enum {
    DF_DEFAULT_HINT = 0, /* DF_NON_UNIFORM for x, DF_ANY_ORDER for sites, DF_BY_ROWS for storage */
    DF_NON_UNIFORM = 1,
    DF_QUASI_UNIFORM = 2, /* the spacing varies little */
    DF_UNIFORM = 4,       /* x: equal spacings; sites: two values, the ends of a grid */
    DF_ANY_ORDER = 1,     /* sites in any order */
    DF_SORTED = 64        /* sites ascend */
};

/* Storage hints: y, coefficients and results, m values a function and place. */
enum {
    DF_BY_ROWS = 16,       /* one function after another */
    DF_BY_COLUMNS = 32,    /* the values of all functions at a place together */
    DF_SEPARATE_ROWS = 128 /* a row a function, named by the indexed editors; not for results */
};

/* Orders (coefficients a cell) and spline types. */
enum {
    DF_STEP = 1,
    DF_LINEAR = 2,
    DF_QUADRATIC = 3,
    DF_CUBIC = 4,

    DF_TYPE_DEFAULT = 0,
    DF_TYPE_SUBBOTIN = 1, /* quadratic with knots between the breakpoints: nx cells */
    DF_TYPE_NATURAL = 2,
    DF_TYPE_HERMITE = 3,
    DF_TYPE_BESSEL = 4,
    DF_TYPE_AKIMA = 5
};

/* Boundary conditions on the spline s; the values, left end first, are shared by
 * all functions. Types that name one end are for the quadratic spline of type
 * DF_TYPE_DEFAULT, which has one free value. */
enum {
    DF_NO_CONDITIONS = 0, /* the method's own end rule */
    DF_NOT_A_KNOT = 1,
    DF_FREE_END = 2, /* s'' = 0 at both ends */
    DF_LEFT_FIRST = 4,
    DF_RIGHT_FIRST = 8,
    DF_FIRST_FIRST = 12, /* s' left, s' right */
    DF_LEFT_SECOND = 16,
    DF_SECOND_FIRST = 24, /* s'' left, s' right */
    DF_RIGHT_SECOND = 32,
    DF_FIRST_SECOND = 36,  /* s' left, s'' right */
    DF_SECOND_SECOND = 48, /* s'' left, s'' right */
    DF_PERIODIC = 64       /* s', s'' equal at both ends; DEFAULT and HERMITE: one value */
};

/* Internal conditions, the same for all functions. */
enum {
    DF_INTERNAL_FIRST = 1,  /* s' at x_1 .. x_{nx-2} */
    DF_INTERNAL_SECOND = 2, /* s'' at x_1 .. x_{nx-2} */
    DF_INTERNAL_KNOTS = 8   /* the nx-1 inner knots of DF_TYPE_SUBBOTIN, one a gap */
};

/* ---- the task ------------------------------------------------------------- */

/* Creates a task.
 *   nx, x, x_hint   at least 2 breakpoints, DF_DEFAULT_HINT .. DF_UNIFORM
 *   ny, y, y_hint   functions and their values (DF_BY_ROWS: y[i*nx + j], DF_BY_COLUMNS:
 *                   y[j*ny + i], DF_SEPARATE_ROWS: y is the row of function 0); 0 and
 *                   null for a task that serves search only
 *   int64_flag      nonzero: integers that compute entries and queries read or write
 *                   through pointers are int64_t, else int32_t
 * Statuses, in the order of the checks: DF_STATUS_NX, _X, _X_HINT, _Y (functions
 * without values), _NY (values without functions), _Y_HINT, _NO_MEMORY. *task is
 * written on success only. */
KEF_API int32_t kef_df_kernel_dNewTask1D(kef_df_task **task, int64_t nx, const double *x,
                                         int64_t x_hint, int64_t ny, const double *y,
                                         int64_t y_hint, int32_t int64_flag);
KEF_API int32_t kef_df_kernel_sNewTask1D(kef_df_task **task, int64_t nx, const float *x,
                                         int64_t x_hint, int64_t ny, const float *y, int64_t y_hint,
                                         int32_t int64_flag);

/* Releases what the task owns and stores null in *task; the caller's arrays stay.
 * DF_STATUS_NULL_TASK where *task is null; `task` itself is not. */
KEF_API int32_t kef_df_kernel_DeleteTask(kef_df_task **task);

/* Names the spline.
 *   order, type     DF_LINEAR .. , DF_TYPE_...
 *   bc_type, bc     boundary conditions and their values (null where there are none)
 *   ic_type, ic     internal conditions
 *   coefficients    where constructors write; null keeps what is set. Of every cell
 *                   `order` coefficients of ascending powers of the distance from the
 *                   cell's left end, cells = nx-1 (DF_TYPE_SUBBOTIN: nx):
 *                   DF_BY_ROWS c[(i*cells + cell)*order + k], DF_BY_COLUMNS
 *                   c[(cell*ny + i)*order + k], DF_SEPARATE_ROWS: the row of function 0
 * The arguments are checked and stored from left to right; what stands before a
 * wrong one has been stored, order and type together. */
KEF_API int32_t kef_df_kernel_dEditPPSpline1D(kef_df_task *task, int64_t order, int64_t type,
                                              int64_t bc_type, const double *bc, int64_t ic_type,
                                              const double *ic, double *coefficients,
                                              int64_t coefficient_hint);
KEF_API int32_t kef_df_kernel_sEditPPSpline1D(kef_df_task *task, int64_t order, int64_t type,
                                              int64_t bc_type, const float *bc, int64_t ic_type,
                                              const float *ic, float *coefficients,
                                              int64_t coefficient_hint);

/* Sets, reads one array (ids DF_X .. DF_COEFFICIENTS). Setting y or the
 * coefficients lays out the rows anew, by the numbers, order, type and hints that
 * the task has at that moment: set those first. Reading gives the first row. */
KEF_API int32_t kef_df_kernel_dEditPtr(kef_df_task *task, int64_t id, const double *array);
KEF_API int32_t kef_df_kernel_sEditPtr(kef_df_task *task, int64_t id, const float *array);
KEF_API int32_t kef_df_kernel_dQueryPtr(const kef_df_task *task, int64_t id, double **array);
KEF_API int32_t kef_df_kernel_sQueryPtr(const kef_df_task *task, int64_t id, float **array);

/* Sets, reads one row of y or of the coefficients: 0 <= index < ny, only 0 under
 * DF_BY_COLUMNS. */
KEF_API int32_t kef_df_kernel_dEditIdxPtr(kef_df_task *task, int64_t id, int64_t index,
                                          const double *array);
KEF_API int32_t kef_df_kernel_sEditIdxPtr(kef_df_task *task, int64_t id, int64_t index,
                                          const float *array);
KEF_API int32_t kef_df_kernel_dQueryIdxPtr(const kef_df_task *task, int64_t id, int64_t index,
                                           double **array);
KEF_API int32_t kef_df_kernel_sQueryIdxPtr(const kef_df_task *task, int64_t id, int64_t index,
                                           float **array);

/* Sets, reads one integer (ids DF_NX .. DF_CHECK_FLAG). Setting DF_X_HINT also
 * makes the search table anew: do that after other breakpoints or another nx, else
 * searches give the same answers more slowly. */
KEF_API int32_t kef_df_kernel_iEditVal(kef_df_task *task, int64_t id, int64_t value);
KEF_API int32_t kef_df_kernel_iQueryVal(const kef_df_task *task, int64_t id, void *value);

/* ---- construction --------------------------------------------------------- */

/* Computes the coefficients of all ny functions from x, y and the conditions; method
 * is 0. Data that are sampled from a spline of the kind give it back; docs/fitting.md
 * has the formulas.
 *
 *   constructor         type      order  nx    boundary types           internal types
 *   LinearSpline1D      DEFAULT   2      2 ..  0
 *   QuadraticSpline1D   DEFAULT   3      2 ..  0, 1, 4, 8, 16, 32
 *                       SUBBOTIN  3      3 ..  1, 2, 12, 24, 36, 48, 64  0, 8
 *   NaturalCubicSpline1D any      4, 0   3 ..  1, 2, 12, 24, 36, 48, 64
 *   HermiteCubicSpline1D HERMITE  4      2 ..  1, 2, 12, 24, 36, 48, 64  1
 *   BesselCubicSpline1D BESSEL    4      2 ..  0, 1, 2, 12, 24, 36, 48, 64
 *   AkimaCubicSpline1D  AKIMA     4      2 ..  0, 1, 2, 12, 24, 36, 48, 64
 *   DefaultCubicSpline1D DEFAULT  4      2 ..  1, 2, 12, 24, 36, 48, 64  1, 2
 *
 * NaturalCubicSpline1D (twice differentiable) does not look at the type; of the order it
 * asks no more than that the rows have room for its 4 coefficients a cell (0: never set).
 * DF_UNIFORM: the spacing is (x_{nx-1} - x_0)/(nx-1), and the breakpoints are read only for
 * that. DF_PERIODIC makes slopes and second derivatives equal and does not ask for
 * y_0 = y_{nx-1}. DefaultCubicSpline1D with DF_INTERNAL_SECOND is continuous; its slopes are
 * as continuous as data and second derivatives agree.
 *
 * Statuses, in the order of the checks: DF_STATUS_NULL_TASK, _PRECISION, _METHOD, _NX, _Y_HINT,
 * _ORDER, _TYPE, _BOUNDARY_TYPE, _BOUNDARY_CONDITIONS, _INTERNAL_TYPE,
 * _INTERNAL_CONDITIONS, _COEFFICIENT_HINT, _NY, _Y, _COEFFICIENTS, then DF_STATUS_ORDER
 * or _COEFFICIENTS where the rows of the coefficients have no room for the order that is
 * written (laid out for a smaller one, or reaching into one another), _X (with the check
 * flag), _NO_MEMORY. A call that is refused has written nothing.
 *
 * Values that are not finite, and without the check flag equal breakpoints, give infinite
 * or NaN coefficients: in quadratic splines and the natural family up to all of them, in
 * the others in the cells nearby (Akima: three to each side). Descending breakpoints give
 * coefficients without a meaning. */
KEF_API int32_t kef_df_kernel_dDFLinearSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFLinearSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFQuadraticSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFQuadraticSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFNaturalCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFNaturalCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFHermiteCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFHermiteCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFBesselCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFBesselCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFAkimaCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFAkimaCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_dDFDefaultCubicSpline1D(const kef_df_task *task, int64_t method);
KEF_API int32_t kef_df_kernel_sDFDefaultCubicSpline1D(const kef_df_task *task, int64_t method);

/* ---- values, derivatives, integrals --------------------------------------- */

/* Methods of interpolation. */
enum {
    DF_SPLINE = 0, /* the spline of the coefficients */
    DF_LOOKUP = 1  /* y where a site equals a breakpoint, NaN elsewhere */
};

/* Values and derivatives of all functions at nsite sites.
 *   site, site_hint      as in cell search
 *   norder, derivatives  norder integers (of the task's width); derivatives[r] != 0
 *                        asks for the derivative of order r, 0 is the value itself
 *   result, result_hint  the m values asked for stand together, in ascending order:
 *                        DF_BY_ROWS result[(i*nsite + j)*m + k], DF_BY_COLUMNS
 *                        result[(j*ny + i)*m + k], function i, site j
 *   cell                 null, or nsite integers of the task's width: the sites' cells
 *                        as cell search gives them
 * Outside the partition the polynomial of the first or the last cell goes on: a
 * boundary condition says nothing about it. A derivative of an order beyond the
 * spline's is 0. At a NaN site all is NaN; at an infinite one the result is infinite
 * or NaN. A spline of order DF_STEP is coefficient 0 of the site's cell; if its
 * coefficients are y itself (nx values), y_{nx-1} from the last breakpoint on.
 * Statuses, in the order of the checks: DF_STATUS_NULL_TASK, _PRECISION, _METHOD, _SITE_COUNT,
 * _SITE_HINT, _SITES, _DERIVATIVES, _RESULTS, _RESULT_HINT, then with DF_SPLINE _ORDER,
 * _TYPE, _INTERNAL_CONDITIONS, _COEFFICIENT_HINT, _NY, _COEFFICIENTS, with DF_LOOKUP
 * _Y_HINT, _NY, _Y, and _X. */
KEF_API int32_t kef_df_kernel_dDFInterpolate1D(const kef_df_task *task, int64_t method,
                                               int64_t nsite, const double *site, int64_t site_hint,
                                               int64_t norder, const void *derivatives,
                                               double *result, int64_t result_hint, void *cell);
KEF_API int32_t kef_df_kernel_sDFInterpolate1D(const kef_df_task *task, int64_t method,
                                               int64_t nsite, const float *site, int64_t site_hint,
                                               int64_t norder, const void *derivatives,
                                               float *result, int64_t result_hint, void *cell);

/* Integrals of all functions over nlimit intervals, left[j] to right[j].
 *   left, right          limits; their hints as those of sites
 *   result, result_hint  DF_BY_ROWS result[i*nlimit + j], DF_BY_COLUMNS result[j*ny + i]
 * Limits outside the partition: the polynomial of the end cell goes on. left > right
 * gives minus the integral from right to left, left = right exactly 0. An integral of a finite
 * spline is infinite or NaN only where it, or the part of it in a cell, overflows. Sums over
 * cells are carried with twice the working precision; where the intervals of a call
 * span more cells than there are, they are taken from running sums, made once.
 * method is 0. Statuses as for interpolation. */
KEF_API int32_t kef_df_kernel_dDFIntegrate1D(const kef_df_task *task, int64_t method,
                                             int64_t nlimit, const double *left, int64_t left_hint,
                                             const double *right, int64_t right_hint,
                                             double *result, int64_t result_hint);
KEF_API int32_t kef_df_kernel_sDFIntegrate1D(const kef_df_task *task, int64_t method,
                                             int64_t nlimit, const float *left, int64_t left_hint,
                                             const float *right, int64_t right_hint, float *result,
                                             int64_t result_hint);

/* ---- cell search ---------------------------------------------------------- */

/* Writes, for each of nsite sites, how many breakpoints do not exceed it, where a
 * site at the last breakpoint counts as inside: 0 left of the partition (and for
 * NaN), cell number + 1 = 1 .. nx-1 inside, nx right of it. Cell i is [x_i, x_{i+1}),
 * the last one closed.
 *   site, site_hint   DF_ANY_ORDER, DF_SORTED, DF_UNIFORM (site[0] and site[1] are the
 *                     ends of a grid of nsite sites); DF_QUASI_UNIFORM as DF_ANY_ORDER
 *   cell              nsite integers: int64_t; int32_t for names that end in 32
 * All functions give the same cells for ascending finite breakpoints; they differ
 * in what they are fast for. For breakpoints that do not ascend the cells are some
 * numbers in 0 .. nx.
 *   Search1D              chooses by the hints of x and of the sites
 *   SortedSearch1D        ascending sites: walks from cell to cell (Bentley & Yao 1976)
 *   UniformSearch1D       equally spaced breakpoints: arithmetic
 *   QuasiUniformSearch1D  nearly equally spaced ones: arithmetic, then a short walk
 *   HybridSearch1D        any breakpoints: the task's table of bins, then bisection
 *   PeakSearch1D          breakpoints crowded in few places: as Hybrid, with an
 *                         interpolation step in crowded bins
 * Statuses: DF_STATUS_NULL_TASK, _PRECISION, _SITE_COUNT, _SITE_HINT, _SITES, _RESULTS, _X. */
KEF_API int32_t kef_df_kernel_dDFSearch1D(const kef_df_task *task, int64_t nsite,
                                          const double *site, int64_t site_hint, int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFSearch1D32(const kef_df_task *task, int64_t nsite,
                                            const double *site, int64_t site_hint, int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFSearch1D(const kef_df_task *task, int64_t nsite, const float *site,
                                          int64_t site_hint, int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFSearch1D32(const kef_df_task *task, int64_t nsite,
                                            const float *site, int64_t site_hint, int32_t *cell);
KEF_API int32_t kef_df_kernel_dDFSortedSearch1D(const kef_df_task *task, int64_t nsite,
                                                const double *site, int64_t site_hint,
                                                int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFSortedSearch1D32(const kef_df_task *task, int64_t nsite,
                                                  const double *site, int64_t site_hint,
                                                  int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFSortedSearch1D(const kef_df_task *task, int64_t nsite,
                                                const float *site, int64_t site_hint,
                                                int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFSortedSearch1D32(const kef_df_task *task, int64_t nsite,
                                                  const float *site, int64_t site_hint,
                                                  int32_t *cell);
KEF_API int32_t kef_df_kernel_dDFUniformSearch1D(const kef_df_task *task, int64_t nsite,
                                                 const double *site, int64_t site_hint,
                                                 int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFUniformSearch1D32(const kef_df_task *task, int64_t nsite,
                                                   const double *site, int64_t site_hint,
                                                   int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFUniformSearch1D(const kef_df_task *task, int64_t nsite,
                                                 const float *site, int64_t site_hint,
                                                 int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFUniformSearch1D32(const kef_df_task *task, int64_t nsite,
                                                   const float *site, int64_t site_hint,
                                                   int32_t *cell);
KEF_API int32_t kef_df_kernel_dDFQuasiUniformSearch1D(const kef_df_task *task, int64_t nsite,
                                                      const double *site, int64_t site_hint,
                                                      int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFQuasiUniformSearch1D32(const kef_df_task *task, int64_t nsite,
                                                        const double *site, int64_t site_hint,
                                                        int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFQuasiUniformSearch1D(const kef_df_task *task, int64_t nsite,
                                                      const float *site, int64_t site_hint,
                                                      int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFQuasiUniformSearch1D32(const kef_df_task *task, int64_t nsite,
                                                        const float *site, int64_t site_hint,
                                                        int32_t *cell);
KEF_API int32_t kef_df_kernel_dDFHybridSearch1D(const kef_df_task *task, int64_t nsite,
                                                const double *site, int64_t site_hint,
                                                int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFHybridSearch1D32(const kef_df_task *task, int64_t nsite,
                                                  const double *site, int64_t site_hint,
                                                  int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFHybridSearch1D(const kef_df_task *task, int64_t nsite,
                                                const float *site, int64_t site_hint,
                                                int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFHybridSearch1D32(const kef_df_task *task, int64_t nsite,
                                                  const float *site, int64_t site_hint,
                                                  int32_t *cell);
KEF_API int32_t kef_df_kernel_dDFPeakSearch1D(const kef_df_task *task, int64_t nsite,
                                              const double *site, int64_t site_hint, int64_t *cell);
KEF_API int32_t kef_df_kernel_dDFPeakSearch1D32(const kef_df_task *task, int64_t nsite,
                                                const double *site, int64_t site_hint,
                                                int32_t *cell);
KEF_API int32_t kef_df_kernel_sDFPeakSearch1D(const kef_df_task *task, int64_t nsite,
                                              const float *site, int64_t site_hint, int64_t *cell);
KEF_API int32_t kef_df_kernel_sDFPeakSearch1D32(const kef_df_task *task, int64_t nsite,
                                                const float *site, int64_t site_hint,
                                                int32_t *cell);

/* A caller's search function proposes cells: for each of nsite sites the number that
 * the searches above give, in cell (zero where it writes nothing). A negative result
 * ends the search, which returns it. */
typedef int32_t (*kef_df_dsearch)(const kef_df_task *task, int64_t nsite, const double *site,
                                  int64_t *cell, void *user);
typedef int32_t (*kef_df_ssearch)(const kef_df_task *task, int64_t nsite, const float *site,
                                  int64_t *cell, void *user);

/* Search by the caller's function, called with at most 256 sites at a time. Each
 * proposal is checked against x; where it does not hold, bisection (UserDef) or the
 * arithmetic of UniformSearch1D (UniUserDef) finds the cell. Further status:
 * DF_STATUS_SEARCH_FUNCTION. */
KEF_API int32_t kef_df_kernel_dDFUserDefSearch1D(const kef_df_task *task, int64_t nsite,
                                                 const double *site, int64_t site_hint,
                                                 int64_t *cell, kef_df_dsearch function,
                                                 void *user);
KEF_API int32_t kef_df_kernel_dDFUserDefSearch1D32(const kef_df_task *task, int64_t nsite,
                                                   const double *site, int64_t site_hint,
                                                   int32_t *cell, kef_df_dsearch function,
                                                   void *user);
KEF_API int32_t kef_df_kernel_sDFUserDefSearch1D(const kef_df_task *task, int64_t nsite,
                                                 const float *site, int64_t site_hint,
                                                 int64_t *cell, kef_df_ssearch function,
                                                 void *user);
KEF_API int32_t kef_df_kernel_sDFUserDefSearch1D32(const kef_df_task *task, int64_t nsite,
                                                   const float *site, int64_t site_hint,
                                                   int32_t *cell, kef_df_ssearch function,
                                                   void *user);
KEF_API int32_t kef_df_kernel_dDFUniUserDefSearch1D(const kef_df_task *task, int64_t nsite,
                                                    const double *site, int64_t site_hint,
                                                    int64_t *cell, kef_df_dsearch function,
                                                    void *user);
KEF_API int32_t kef_df_kernel_dDFUniUserDefSearch1D32(const kef_df_task *task, int64_t nsite,
                                                      const double *site, int64_t site_hint,
                                                      int32_t *cell, kef_df_dsearch function,
                                                      void *user);
KEF_API int32_t kef_df_kernel_sDFUniUserDefSearch1D(const kef_df_task *task, int64_t nsite,
                                                    const float *site, int64_t site_hint,
                                                    int64_t *cell, kef_df_ssearch function,
                                                    void *user);
KEF_API int32_t kef_df_kernel_sDFUniUserDefSearch1D32(const kef_df_task *task, int64_t nsite,
                                                      const float *site, int64_t site_hint,
                                                      int32_t *cell, kef_df_ssearch function,
                                                      void *user);

KEF_END_DECLS

#endif
