/* Summary statistics: the task, its editors and its computations.
 *
 * A task holds addresses of the caller's arrays, one for each parameter below. It
 * copies no data: a computation reads the arrays as they stand when it is called
 * and writes its results through the registered addresses. Data can be fed block
 * by block: fill x anew (or register another one), call the computation again, and
 * the estimates are those of all data seen so far.
 *
 * Functions return VTS_SS_STATUS_OK or a negative status. A call that returns a
 * negative status has changed neither the task nor an array: after it a computation
 * goes on with the next block as if it had not been. A task is used by one thread at a
 * time.
 *
 * Integers are passed to the functions as 64-bit values. Integers behind pointers
 * (p, n, storage codes, counts, arrays of indices) are 64-bit when the last
 * argument of NewTask was not zero, else 32-bit. In the names below d stands for
 * double-precision data and s for single-precision data; a task belongs to the
 * precision it was created with, and a computation of the other one is refused
 * (BAD_PRECISION). Editors cannot tell: both store any address. */
#ifndef KEF_STATS_H
#define KEF_STATS_H

#include <stdint.h>

#include "kef_export.h"

KEF_BEGIN_DECLS

typedef struct kef_ss_task kef_ss_task;

/* VTS_SS_STATUS_..., listed with their meanings in kef_stats_status.def. */
enum {
#define KEF_STATUS_ROW(name, code, meaning) name = code,
#include "kef_stats_status.def"
#undef KEF_STATUS_ROW
};

/* The meaning of a status in a few English words, for messages; "unknown status" for a code
 * that is none. Never null; the text belongs to the library. */
KEF_API const char *kef_ss_status_text(int32_t status);

/* Storage of x, a matrix of p variables by n observations. */
enum {
    VTS_SS_STORAGE_ROWS = 0x10000,   /* x[i*n + j]: every variable contiguous */
    VTS_SS_STORAGE_COLUMNS = 0x20000 /* x[j*p + i]: every observation contiguous */
};

/* Layout of a symmetric p by p result. */
enum {
    VTS_SS_LAYOUT_FULL = 0,  /* all p*p elements; bitwise symmetric */
    VTS_SS_LAYOUT_LOWER = 1, /* C00, C10, C11, C20, ...: index i(i+1)/2 + j, j <= i */
    VTS_SS_LAYOUT_UPPER = 2  /* C00, C01, ..., C11, ...: index i*p - i(i-1)/2 + j - i, j >= i */
};

/* Parameter identifiers: I of __vtsiSSEditTask, D of __vtsdSSEditTask and
 * __vtssSSEditTask. Sizes in elements; "layout" is a VTS_SS_LAYOUT_ code. */
enum {
    VTS_SS_ID_DIMENSION = 1,                    /* I p */
    VTS_SS_ID_COUNT = 2,                        /* I n, observations of the current block */
    VTS_SS_ID_X = 3,                            /* D observations, p*n */
    VTS_SS_ID_X_STORAGE = 4,                    /* I VTS_SS_STORAGE_ code */
    VTS_SS_ID_INDICES = 5,                      /* I p flags: not zero = variable is processed */
    VTS_SS_ID_WEIGHTS = 6,                      /* D n */
    VTS_SS_ID_MEAN = 7,                         /* D p */
    VTS_SS_ID_RAW_MOMENT_2 = 8,                 /* D p */
    VTS_SS_ID_RAW_MOMENT_3 = 9,                 /* D p */
    VTS_SS_ID_RAW_MOMENT_4 = 10,                /* D p */
    VTS_SS_ID_CENTRAL_MOMENT_2 = 11,            /* D p */
    VTS_SS_ID_CENTRAL_MOMENT_3 = 12,            /* D p */
    VTS_SS_ID_CENTRAL_MOMENT_4 = 13,            /* D p */
    VTS_SS_ID_KURTOSIS = 14,                    /* D p */
    VTS_SS_ID_SKEWNESS = 15,                    /* D p */
    VTS_SS_ID_MINIMUM = 16,                     /* D p */
    VTS_SS_ID_MAXIMUM = 17,                     /* D p */
    VTS_SS_ID_VARIATION = 18,                   /* D p */
    VTS_SS_ID_COVARIANCE = 19,                  /* D matrix */
    VTS_SS_ID_COVARIANCE_STORAGE = 20,          /* I layout */
    VTS_SS_ID_CORRELATION = 21,                 /* D matrix */
    VTS_SS_ID_CORRELATION_STORAGE = 22,         /* I layout */
    VTS_SS_ID_ACCUMULATED_WEIGHTS = 23,         /* D 2: W and W2, kept between calls */
    VTS_SS_ID_QUANTILE_ORDER_COUNT = 24,        /* I m */
    VTS_SS_ID_QUANTILE_ORDERS = 25,             /* D m orders in [0,1] */
    VTS_SS_ID_QUANTILES = 26,                   /* D p*m, variable by variable; p by WMedian */
    VTS_SS_ID_ORDER_STATISTICS = 27,            /* D p*n, every variable ascending */
    VTS_SS_ID_GROUP_INDICES = 28,               /* I n: 0 .. G-1, negative: left out */
    VTS_SS_ID_POOLED_COVARIANCE_STORAGE = 29,   /* I layout */
    VTS_SS_ID_POOLED_MEAN = 30,                 /* D p */
    VTS_SS_ID_POOLED_COVARIANCE = 31,           /* D matrix */
    VTS_SS_ID_REQUESTED_GROUPS = 32,            /* I G flags: not zero = wanted */
    VTS_SS_ID_GROUP_MEANS = 33,                 /* D p for each wanted group */
    VTS_SS_ID_GROUP_COVARIANCE_STORAGE = 34,    /* I layout */
    VTS_SS_ID_GROUP_COVARIANCES = 35,           /* D matrix for each wanted group */
    VTS_SS_ID_ROBUST_COVARIANCE_STORAGE = 36,   /* I layout */
    VTS_SS_ID_ROBUST_PARAMETER_COUNT = 37,      /* I 4 */
    VTS_SS_ID_ROBUST_PARAMETERS = 38,           /* D 4: breakdown, rejection, tolerance, limit */
    VTS_SS_ID_ROBUST_MEAN = 39,                 /* D p */
    VTS_SS_ID_ROBUST_COVARIANCE = 40,           /* D matrix */
    VTS_SS_ID_OUTLIER_PARAMETER_COUNT = 41,     /* I 3 */
    VTS_SS_ID_OUTLIER_PARAMETERS = 42,          /* D 3: start, alpha, tolerance */
    VTS_SS_ID_OUTLIER_WEIGHTS = 43,             /* D n: 1 kept, 0 outlier */
    VTS_SS_ID_ORDER_STATISTICS_STORAGE = 44,    /* I VTS_SS_STORAGE_ code */
    VTS_SS_ID_PARTIAL_INDICES = 45,             /* I p marks: > 0 of interest, < 0 held fixed */
    VTS_SS_ID_PARTIAL_COVARIANCE = 46,          /* D matrix of the variables of interest */
    VTS_SS_ID_PARTIAL_COVARIANCE_STORAGE = 47,  /* I layout */
    VTS_SS_ID_PARTIAL_CORRELATION = 48,         /* D matrix of the variables of interest */
    VTS_SS_ID_PARTIAL_CORRELATION_STORAGE = 49, /* I layout */
    VTS_SS_ID_MISSING_A_COUNT = 50,             /* I 5 */
    VTS_SS_ID_MISSING_A = 51,                   /* D 5, see MissingValues */
    VTS_SS_ID_MISSING_B_COUNT = 52,             /* I L or 0 */
    VTS_SS_ID_MISSING_B = 53,                   /* D L: start */
    VTS_SS_ID_MISSING_D_COUNT = 54,             /* I elements of D */
    VTS_SS_ID_MISSING_D = 55,                   /* D imputed values */
    VTS_SS_ID_MISSING_E_COUNT = 56,             /* I (1 + M) L or 0 */
    VTS_SS_ID_MISSING_E = 57,                   /* D (1 + M) L: laws */
    VTS_SS_ID_MISSING_C_COUNT = 58,             /* I L + 2 or 0 */
    VTS_SS_ID_MISSING_C = 59,                   /* D L + 2: prior */
    VTS_SS_ID_PARAMETRIZED_MATRIX = 60,         /* D matrix */
    VTS_SS_ID_PARAMETRIZED_MATRIX_STORAGE = 61, /* I layout */
    VTS_SS_ID_STREAM_QUANTILE_PARAMETER_COUNT = 62, /* I 1 */
    VTS_SS_ID_STREAM_QUANTILE_PARAMETERS = 63,      /* D 1: epsilon */
    VTS_SS_ID_STREAM_QUANTILE_ORDER_COUNT = 64,     /* I m */
    VTS_SS_ID_STREAM_QUANTILE_ORDERS = 65,          /* D m orders in [0,1] */
    VTS_SS_ID_STREAM_QUANTILES = 66,                /* D p*m, variable by variable */
    VTS_SS_ID_SUM = 67,                             /* D p */
    VTS_SS_ID_RAW_SUM_2 = 68,                       /* D p */
    VTS_SS_ID_RAW_SUM_3 = 69,                       /* D p */
    VTS_SS_ID_RAW_SUM_4 = 70,                       /* D p */
    VTS_SS_ID_CENTRAL_SUM_2 = 71,                   /* D p */
    VTS_SS_ID_CENTRAL_SUM_3 = 72,                   /* D p */
    VTS_SS_ID_CENTRAL_SUM_4 = 73,                   /* D p */
    VTS_SS_ID_CROSS_PRODUCT = 74,                   /* D matrix */
    VTS_SS_ID_CROSS_PRODUCT_STORAGE = 75,           /* I layout */
    VTS_SS_ID_MEDIAN_ABSOLUTE_DEVIATION = 76,       /* D p */
    VTS_SS_ID_MAHALANOBIS_DISTANCE = 77             /* D n */
};

/* Estimates: the second argument of Basic and of Minmax is the OR of these. */
#define VTS_SS_ESTIMATE_MEAN UINT64_C(0x1)
#define VTS_SS_ESTIMATE_RAW_MOMENT_2 UINT64_C(0x2)
#define VTS_SS_ESTIMATE_RAW_MOMENT_3 UINT64_C(0x4)
#define VTS_SS_ESTIMATE_RAW_MOMENT_4 UINT64_C(0x8)
#define VTS_SS_ESTIMATE_CENTRAL_MOMENT_2 UINT64_C(0x10)
#define VTS_SS_ESTIMATE_CENTRAL_MOMENT_3 UINT64_C(0x20)
#define VTS_SS_ESTIMATE_CENTRAL_MOMENT_4 UINT64_C(0x40)
#define VTS_SS_ESTIMATE_KURTOSIS UINT64_C(0x80)
#define VTS_SS_ESTIMATE_SKEWNESS UINT64_C(0x100)
#define VTS_SS_ESTIMATE_VARIATION UINT64_C(0x200)
#define VTS_SS_ESTIMATE_MINIMUM UINT64_C(0x400) /* Minmax */
#define VTS_SS_ESTIMATE_MAXIMUM UINT64_C(0x800) /* Minmax */
#define VTS_SS_ESTIMATE_COVARIANCE UINT64_C(0x1000)
#define VTS_SS_ESTIMATE_CORRELATION UINT64_C(0x2000)
#define VTS_SS_ESTIMATE_SUM UINT64_C(0x2000000)
#define VTS_SS_ESTIMATE_RAW_SUM_2 UINT64_C(0x4000000)
#define VTS_SS_ESTIMATE_RAW_SUM_3 UINT64_C(0x8000000)
#define VTS_SS_ESTIMATE_RAW_SUM_4 UINT64_C(0x10000000)
#define VTS_SS_ESTIMATE_CENTRAL_SUM_2 UINT64_C(0x20000000)
#define VTS_SS_ESTIMATE_CENTRAL_SUM_3 UINT64_C(0x40000000)
#define VTS_SS_ESTIMATE_CENTRAL_SUM_4 UINT64_C(0x80000000)
#define VTS_SS_ESTIMATE_CROSS_PRODUCT UINT64_C(0x100000000)
#define VTS_SS_ESTIMATE_STREAM_QUANTILES UINT64_C(0x200000000) /* Merge */

/* Methods of Basic: exactly one of the first three, or one or both of the last. A
 * bit of the last two beside one of the first three has no effect. */
enum {
    VTS_SS_METHOD_RAW = 0x1,            /* plain sums of powers of x */
    VTS_SS_METHOD_RECURRENCE = 0x2,     /* one update per observation */
    VTS_SS_METHOD_TILED = 0x100,        /* sums over tiles, merged */
    VTS_SS_METHOD_SUMS = 0x200,         /* from the sums in the task, not from x */
    VTS_SS_METHOD_CROSS_PRODUCT = 0x400 /* the same; the two do not differ */
};

/* The only method of Minmax. */
enum { VTS_SS_METHOD_MINMAX = 0x1 };

/* Creates a task. p, n and x_storage point to integers, which must stay where they
 * are as long as the task uses them; x, weights and indices are arrays or null.
 * Checked: p (BAD_DIMENSION) and, only when x is not null, x_storage (NULL_STORAGE,
 * BAD_X_STORAGE) and n (BAD_COUNT). NULL_TASK when task_out is null. */
KEF_API int32_t __vtsdSSNewTask(kef_ss_task **task_out, const void *p, const void *n,
                                const void *x_storage, const double *x, const double *weights,
                                const void *indices, int32_t int64_flag);
KEF_API int32_t __vtssSSNewTask(kef_ss_task **task_out, const void *p, const void *n,
                                const void *x_storage, const float *x, const float *weights,
                                const void *indices, int32_t int64_flag);

/* Frees the task and what its computations keep, and stores null in *task. Neither
 * *task nor what it points to is checked; NULL_TASK when task itself is null. */
KEF_API int32_t __vtsSSDeleteTask(kef_ss_task **task);

/* Registers the address of one parameter. BAD_ID for an identifier that the editor
 * does not have; the parameter's own NULL_ status for a null address; in both cases
 * the task stays as it was. */
KEF_API int32_t __vtsiSSEditTask(kef_ss_task *task, int64_t id, const void *address);
KEF_API int32_t __vtsdSSEditTask(kef_ss_task *task, int64_t id, const double *address);
KEF_API int32_t __vtssSSEditTask(kef_ss_task *task, int64_t id, const float *address);

/* Grouped editors: register every address that is not null; a null one leaves its
 * parameter as it was. NULL_TASK or OK. */
KEF_API int32_t __vtsdSSEditMoments(kef_ss_task *task, double *mean, double *raw_moment_2,
                                    double *raw_moment_3, double *raw_moment_4,
                                    double *central_moment_2, double *central_moment_3,
                                    double *central_moment_4);
KEF_API int32_t __vtssSSEditMoments(kef_ss_task *task, float *mean, float *raw_moment_2,
                                    float *raw_moment_3, float *raw_moment_4,
                                    float *central_moment_2, float *central_moment_3,
                                    float *central_moment_4);
KEF_API int32_t __vtsdSSEditSums(kef_ss_task *task, double *sum, double *raw_sum_2,
                                 double *raw_sum_3, double *raw_sum_4, double *central_sum_2,
                                 double *central_sum_3, double *central_sum_4);
KEF_API int32_t __vtssSSEditSums(kef_ss_task *task, float *sum, float *raw_sum_2, float *raw_sum_3,
                                 float *raw_sum_4, float *central_sum_2, float *central_sum_3,
                                 float *central_sum_4);
KEF_API int32_t __vtsdSSEditCovCor(kef_ss_task *task, double *mean, double *covariance,
                                   const void *covariance_storage, double *correlation,
                                   const void *correlation_storage);
KEF_API int32_t __vtssSSEditCovCor(kef_ss_task *task, float *mean, float *covariance,
                                   const void *covariance_storage, float *correlation,
                                   const void *correlation_storage);
KEF_API int32_t __vtsdSSEditCP(kef_ss_task *task, double *mean, double *sum, double *cross_product,
                               const void *cross_product_storage);
KEF_API int32_t __vtssSSEditCP(kef_ss_task *task, float *mean, float *sum, float *cross_product,
                               const void *cross_product_storage);
KEF_API int32_t __vtsdSSEditPartialCovCor(kef_ss_task *task, const void *partial_indices,
                                          double *covariance, const void *covariance_storage,
                                          double *correlation, const void *correlation_storage,
                                          double *partial_covariance,
                                          const void *partial_covariance_storage,
                                          double *partial_correlation,
                                          const void *partial_correlation_storage);
KEF_API int32_t __vtssSSEditPartialCovCor(kef_ss_task *task, const void *partial_indices,
                                          float *covariance, const void *covariance_storage,
                                          float *correlation, const void *correlation_storage,
                                          float *partial_covariance,
                                          const void *partial_covariance_storage,
                                          float *partial_correlation,
                                          const void *partial_correlation_storage);
KEF_API int32_t __vtsdSSEditQuantiles(kef_ss_task *task, const void *quantile_order_count,
                                      const double *quantile_orders, double *quantiles,
                                      double *order_statistics,
                                      const void *order_statistics_storage);
KEF_API int32_t __vtssSSEditQuantiles(kef_ss_task *task, const void *quantile_order_count,
                                      const float *quantile_orders, float *quantiles,
                                      float *order_statistics,
                                      const void *order_statistics_storage);
KEF_API int32_t __vtsdSSEditStreamQuantiles(kef_ss_task *task,
                                            const void *stream_quantile_order_count,
                                            const double *stream_quantile_orders,
                                            double *stream_quantiles,
                                            const void *stream_quantile_parameter_count,
                                            const double *stream_quantile_parameters);
KEF_API int32_t __vtssSSEditStreamQuantiles(kef_ss_task *task,
                                            const void *stream_quantile_order_count,
                                            const float *stream_quantile_orders,
                                            float *stream_quantiles,
                                            const void *stream_quantile_parameter_count,
                                            const float *stream_quantile_parameters);
KEF_API int32_t __vtsdSSEditPooledCovariance(kef_ss_task *task, const void *group_indices,
                                             double *pooled_mean, double *pooled_covariance,
                                             const void *requested_groups, double *group_means,
                                             double *group_covariances);
KEF_API int32_t __vtssSSEditPooledCovariance(kef_ss_task *task, const void *group_indices,
                                             float *pooled_mean, float *pooled_covariance,
                                             const void *requested_groups, float *group_means,
                                             float *group_covariances);
KEF_API int32_t __vtsdSSEditRCov(kef_ss_task *task, const void *robust_covariance_storage,
                                 const void *robust_parameter_count,
                                 const double *robust_parameters, double *robust_mean,
                                 double *robust_covariance);
KEF_API int32_t __vtssSSEditRCov(kef_ss_task *task, const void *robust_covariance_storage,
                                 const void *robust_parameter_count, const float *robust_parameters,
                                 float *robust_mean, float *robust_covariance);
KEF_API int32_t __vtsdSSEditOutDetect(kef_ss_task *task, const void *outlier_parameter_count,
                                      const double *outlier_parameters, double *outlier_weights);
KEF_API int32_t __vtssSSEditOutDetect(kef_ss_task *task, const void *outlier_parameter_count,
                                      const float *outlier_parameters, float *outlier_weights);
KEF_API int32_t __vtsdSSEditMissingVals(kef_ss_task *task, const void *missing_a_count,
                                        const double *missing_a, const void *missing_b_count,
                                        const double *missing_b, const void *missing_c_count,
                                        const double *missing_c, const void *missing_d_count,
                                        double *missing_d, const void *missing_e_count,
                                        double *missing_e);
KEF_API int32_t __vtssSSEditMissingVals(kef_ss_task *task, const void *missing_a_count,
                                        const float *missing_a, const void *missing_b_count,
                                        const float *missing_b, const void *missing_c_count,
                                        const float *missing_c, const void *missing_d_count,
                                        float *missing_d, const void *missing_e_count,
                                        float *missing_e);
KEF_API int32_t __vtsdSSEditMtxParametrz(kef_ss_task *task, double *correlation,
                                         const void *correlation_storage,
                                         double *parametrized_matrix,
                                         const void *parametrized_matrix_storage);
KEF_API int32_t __vtssSSEditMtxParametrz(kef_ss_task *task, float *correlation,
                                         const void *correlation_storage,
                                         float *parametrized_matrix,
                                         const void *parametrized_matrix_storage);

/* Arrays that an estimate of Basic requires besides its own, by method. A call over x writes
 * all of them (RAW as plain sums; by RECURRENCE and TILED a raw moment that is not asked for
 * itself is worked out from the mean and the central moments), so that they carry the state to
 * the next block. Not null is not enough: they must have p elements. From sums (SUMS,
 * CROSS_PRODUCT) they are read, and the estimate's own array alone is written. */
/* Made from stats/estimate.def by tools/make_estimates.py: the table below.
 *   estimate         RAW                           RECURRENCE, TILED             from sums
 *   MEAN             -                             -                             sum
 *   RAW_MOMENT_2     -                             -                             raw sum 2
 *   RAW_MOMENT_3     -                             -                             raw sum 3
 *   RAW_MOMENT_4     -                             -                             raw sum 4
 *   CENTRAL_MOMENT_2 mean, raw 2                   mean, raw 2                   central sum 2
 *   CENTRAL_MOMENT_3 mean, raw 2 3                 mean, raw 2 3                 central sum 3
 *   CENTRAL_MOMENT_4 mean, raw 2 3 4               mean, raw 2 3 4               central sum 4
 *   COVARIANCE       mean                          mean                          cross-product
 *   CORRELATION      mean                          mean                          cross-product
 *   KURTOSIS         mean, raw 2 3 4, central 2 4  mean, raw 2 3 4, central 2 4  mean, central 2 4
 *   SKEWNESS         mean, raw 2 3, central 2 3    mean, raw 2 3, central 2 3    mean, central 2 3
 *   VARIATION        mean, raw 2, central 2        mean, raw 2, central 2        mean, central 2
 *   SUM              -                             -                             BAD_METHOD
 *   RAW_SUM_2        -                             -                             BAD_METHOD
 *   RAW_SUM_3        -                             -                             BAD_METHOD
 *   RAW_SUM_4        -                             -                             BAD_METHOD
 *   CENTRAL_SUM_2    mean, raw 2                   mean                          BAD_METHOD
 *   CENTRAL_SUM_3    mean, raw 2 3                 mean                          BAD_METHOD
 *   CENTRAL_SUM_4    mean, raw 2 3 4               mean                          BAD_METHOD
 *   CROSS_PRODUCT    mean                          mean                          BAD_METHOD
 * End of the table. */

/* Moments, sums, covariance and correlation of the observations in one pass.
 *
 * With weights w_j, W = sum w, W2 = sum w^2 (no weights: w = 1), m = sum w x / W,
 * R_k = sum w x^k / W, S_k = sum w x^k, M_k = sum w (x-m)^k,
 * C_ij = sum w (x_i-m_i)(x_j-m_j) and N = W - W2/W (N = W for one observation and where that
 * is not positive, so that one observation has variance 0 and not NaN); weights may be of any size,
 * also where W2 overflows or is subnormal:
 *
 *   mean m; raw moments R_2, R_3, R_4; sums S_1 .. S_4; central sums M_2, M_3, M_4
 *   central moments   M_k / N = F M_k / W with one factor F = W/N for all three;
 *                     the second is the unbiased variance (n-1 without weights)
 *   cross-product C   covariance C / N
 *   correlation       (C_ij / sqrt(C_ii)) / sqrt(C_jj), inside [-1,1], diagonal
 *                     exactly 1; NaN off the diagonal where a variance is zero
 *   skewness          (M_3/W) / (M_2/W)^1.5       (g1 of Joanes & Gill, The
 *   kurtosis          (M_4/W) / (M_2/W)^2 - 3      Statistician 47:183, 1998)
 *                     both NaN where M_2 is zero
 *   variation         sqrt(M_2/N) / m
 *
 * The bits MINIMUM and MAXIMUM, which are Minmax's, and bits without a name are ignored.
 *
 * Methods. RECURRENCE updates mean, central sums and cross-product with every
 * observation (Welford 1962, West 1979, Terriberry 2007). TILED forms sums over
 * tiles of observations around a value inside the data, and merges them (Chan,
 * Golub & LeVeque, Am. Stat. 37:242, 1983; Pebay, SAND2008-6212): the fastest and the
 * most accurate. Both work on x - r with r near the running mean, so that data far
 * from zero keep their digits, and constant data have variance 0 exactly. RAW takes the mean
 * and the central moments and sums from plain sums, c2 = (R2 - m^2) F,
 * c3 = (R3 - 3 m R2 + 2 m^3) F, c4 = (R4 - 4 m R3 + 6 m^2 R2 - 3 m^4) F, and loses
 * 2 log10(|m|/s) digits of the variance by nature. Where that makes c2 negative or 0, and for
 * one observation, all three are 0; constant data may as well have a variance of some 1e-14 m^2
 * and, made of such noise, any skewness and kurtosis. Its covariance is that of TILED.
 * Single-precision data are accumulated in double precision and rounded when a result is
 * written.
 *
 * SUMS and CROSS_PRODUCT need no x: m = S_1/W, R_k = S_k/W, central moments from the
 * central sums, covariance and correlation from the cross-product; skewness, kurtosis
 * and variation from the mean and the central moments as they stand after that. W and
 * W2 are read from the accumulated weights, without them W = W2 = n; W = 0 gives NaN.
 *
 * What is written: the arrays in the table of the estimates asked for, and the accumulated
 * weights. With no estimate or no variable selected nothing is read or written.
 *
 * Several blocks. With accumulated weights registered (two elements, 0 before the
 * first block) the result arrays carry the state from call to call. Where W is 0 on
 * entry, or without that array, the call starts anew and old contents of the arrays
 * do not matter. The task keeps the state in full precision and uses it as long as the
 * arrays that this call is about hold what it last wrote, bit for bit; else (arrays restored
 * by the caller, another task, other variables selected) it takes up the values in the arrays;
 * central moments and the covariance then need a W2 that is a normal number of the arrays' type.
 * A sum of higher order needs those below it, and a correlation its variances: each is looked
 * for in the estimates asked for, then in the arrays that these require, then in every other
 * array that is registered and which must then hold the state, too; a sum, a moment, or
 * what it can be worked out from (mean and raw moments, a covariance) will do. The required
 * arrays are enough for all estimates but CORRELATION and, by RECURRENCE and TILED,
 * CENTRAL_SUM_3 and CENTRAL_SUM_4; where nothing holds what is needed, the result is NaN, and
 * the status OK. n is read anew by every call.
 *
 * An estimate that is asked for later than with the first block goes on from what its array
 * holds: with 0 in it a sum covers the later blocks only. For estimates of all data, ask for them
 * from the first block on.
 *
 * Weights. Zero weights at the start of a block are skipped, a block of zero weights
 * changes nothing. Later zero weights are processed (0 * NaN is NaN). Negative weights
 * are taken as they are; results mean something while the running total stays
 * positive. RAW leaves mean and moments as they were while W <= 0.
 *
 * NaN in a variable makes its results NaN, and no other variable's. With an infinite
 * observation mean, sums and raw moments are that infinity (its powers; NaN where infinities of
 * both signs meet); the second central moment and sum and the variable's own covariance are NaN
 * by RAW and TILED, infinite or NaN by RECURRENCE; what is left is NaN. A variable that the
 * indices leave out keeps its results and its rows and columns.
 *
 * Overlays. A call over x has read all observations and weights before it writes a result: the
 * results of a single block may overlay both. No two result arrays overlap, nor do the
 * accumulated weights and the integers with any. From sums, a mean or moment may be written
 * over its own sum, and the covariance, in the same layout and without a correlation, over the
 * cross-product.
 *
 * Checked, in this order: task; method (BAD_METHOD); the fields that the estimates
 * require (the status of the first missing one in the order mean, raw moments,
 * central moments, covariance, correlation, kurtosis, skewness, variation, sums, raw
 * sums, central sums, cross-product; BAD_METHOD when one of the last group is asked
 * for without x); without x, NULL_ACCUMULATED_WEIGHTS when W is not known; else n
 * (BAD_COUNT), x (NULL_X), its storage (NULL_STORAGE, BAD_X_STORAGE); p; the layout of
 * each matrix (NULL_STORAGE); the precision (BAD_PRECISION). */
KEF_API int32_t _vtsdSSBasic(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSBasic(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Minimum and maximum of each variable (VTS_SS_ESTIMATE_MINIMUM, _MAXIMUM, or both; other bits
 * are ignored, and with neither a call that passes the checks does nothing).
 *
 * The arrays are read and merged with the block: fill them with NaN ("nothing seen
 * yet"), infinities or the first observation before the first block. NaN observations
 * are skipped; where there are only such, the array keeps what it held. -0 and +0 are
 * equal. Weights play no part. The arrays must not overlap x.
 * Checked, in this order: task, method (BAD_METHOD), NULL_MINIMUM, NULL_MAXIMUM, then n,
 * x, its storage, p and the precision as by Basic. */
KEF_API int32_t _vtsdSSMinmax(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSMinmax(kef_ss_task *task, uint64_t estimates, int32_t method);

/* The computations below take the same arguments and read neither estimates nor method: each
 * computes what has a result array. The parameters are checked first, in the order given, then the
 * precision (BAD_PRECISION); what is wrong with the values in the arrays shows after that. */

/* Quantiles of the observations of each variable, and the observations sorted.
 *
 * Reads x, m orders q in [0,1] and their number. Writes, where they are registered, the
 * QUANTILES, element i*m + k for variable i and order k, and the ORDER_STATISTICS, all n
 * observations of each variable in ascending order, in their own storage. Quantiles follow
 * definition 7 of Hyndman & Fan (Am. Stat. 50:361, 1996), as in R and NumPy: h = (n-1) q,
 * a and b the order statistics of rank floor h and floor h + 1 (the least has rank 0), g = h -
 * floor h; a where g = 0 or a = b, else a + (b-a) g for g < 1/2, (a+b)/2 for g = 1/2 and b - (b-a)
 * (1-g) beyond: monotone in q. Orders of single precision are used in double precision, and the
 * result is rounded once. -0 comes before +0. A NaN makes all results of its variable NaN. Weights
 * play no part, variables that the indices leave out keep their results. x is not changed, and no
 * result overlays it.
 *
 * Time O(n) for the quantiles, whatever the order of the observations is; memory 2n elements, which
 * the task keeps (without ORDER_STATISTICS, few of them are touched), and 2m integers.
 *
 * Checked: QUANTILES or ORDER_STATISTICS (NULL_QUANTILES), the number of orders
 * (NULL_QUANTILE_ORDER_COUNT) and the orders (NULL_QUANTILE_ORDERS) for the quantiles, n, x, its
 * storage, p as by Basic, the storage of the order statistics (NULL_STORAGE). BAD_PARAMETERS:
 * m < 1, or an order outside [0,1]. NO_MEMORY. */
KEF_API int32_t _vtsdSSQuantiles(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSQuantiles(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Median absolute deviation: the median of |x - m|, where m is the median of x (Hampel, JASA
 * 69:383, 1974), without the factor 1.4826 that makes it the standard deviation of normal data.
 * Both medians are those of Quantiles; (a+b)/2 of an even number is used in full length.
 *
 * Reads x; writes MEDIAN_ABSOLUTE_DEVIATION. Weights play no part. NaN where a variable holds NaN
 * or its median is not finite; other infinite observations are infinitely far away. Correctly
 * rounded for odd n, and for even n where the sum of the two deviations in the middle is; else
 * within 1.5 ulp. Memory 2n elements, which the task keeps.
 *
 * Checked: NULL_MEDIAN_ABSOLUTE_DEVIATION, then n, x, its storage, p as by Basic. NO_MEMORY. */
KEF_API int32_t _vtsdSSMAD(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSMAD(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Weighted median: the least x with at least half of the weight at or below it; where that is
 * exactly a half, the mean of it and the next larger x. Equal weights give the ordinary median.
 *
 * Reads x and the weights; writes element i of the QUANTILES, p of them. Exact: rounded sums
 * never decide, however many weights there are (in double precision, bits of weights below 2^-1010
 * are dropped beside one above 2^1020/n). Observations of weight 0 take no part, NaN among
 * them; any other NaN makes the result of its variable NaN. Memory 4 to 6n elements, which the task
 * keeps.
 *
 * Checked: NULL_QUANTILES, NULL_WEIGHTS, then n, x, its storage, p as by Basic. NULL_WEIGHTS, too,
 * where a weight is negative or not finite, or all are 0. NO_MEMORY. */
KEF_API int32_t _vtsdSSWMedian(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSWMedian(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Mahalanobis distance of each observation from a mean, sqrt((x_j - m)^T S^-1 (x_j - m)), not
 * squared (Proc. Nat. Inst. Sci. India 2:49, 1936).
 *
 * Reads x, the MEAN m and the COVARIANCE S as they stand, as Basic or the caller left them; writes
 * element j of the MAHALANOBIS_DISTANCE for observation j. S = L L^T by Cholesky, then |L^-1 (x_j -
 * m)|, in double precision throughout. Variables that the indices leave out take no part, with
 * their rows and columns of S; weights play no part. An observation with a NaN or an infinity in it
 * gives NaN or infinity, and no other one does. With no variable nothing is written. The results do
 * not overlay what is read. Memory p^2 + 20p + 1200 doubles and p integers at most, which the task
 * keeps.
 *
 * Checked: NULL_MAHALANOBIS_DISTANCE, NULL_MEAN, NULL_COVARIANCE, then n, x, its storage, p as by
 * Basic, the layout of the covariance (NULL_STORAGE). NO_MEMORY. NOT_POSITIVE_DEFINITE: for some
 * variable 1 - R^2, R its multiple correlation with those before it, is not above p
 * epsilon, 2.2e-16 p or 1.2e-7 p, so that the rounding of S may have made it of 0; or S holds NaN
 * or infinities where it is read. Nothing is written then. */
KEF_API int32_t _vtsdSSMahDistance(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSMahDistance(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Covariance and correlation of some variables, Y, where others, Z, are held fixed: P = C_YY - C_YZ
 * C_ZZ^-1 C_ZY (Anderson, An Introduction to Multivariate Statistical Analysis, 3rd ed., 2.5).
 *
 * Reads PARTIAL_INDICES, p marks: positive for a variable of Y, negative for one of Z, 0 for
 * neither, as is one that the indices leave out; and the COVARIANCE or, where that is not
 * registered, the CORRELATION. Writes what is registered of PARTIAL_COVARIANCE, P, and
 * PARTIAL_CORRELATION, as the correlation by Basic from P: matrices of as many rows as Y has
 * variables, in their order. C_ZZ = L L^T by Cholesky, P = C_YY - U^T U with U = L^-1 C_ZY, in
 * double precision; never an inverse. A variable that Z determines to rounding (P_ii not above
 * (z+1) epsilon C_ii, z variables in Z) has covariances 0, and NaN for its correlations with
 * others. The results may overlay the matrix that is read. Memory (y+z)^2 + 4(y+z) numbers at most,
 * which the task keeps.
 *
 * Checked: NULL_PARTIAL_INDICES, COVARIANCE or CORRELATION (NULL_COVARIANCE), one of the results
 * (NULL_PARTIAL_COVARIANCE), p, the layouts (NULL_STORAGE) of the matrix that is read and of those
 * that are written. NOTHING_MARKED: no variable in Y, or none in Z. NO_MEMORY.
 * NOT_POSITIVE_DEFINITE: C_ZZ, as by MahDistance. Nothing is written then. */
KEF_API int32_t _vtsdSSPartialCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSPartialCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Pooled covariance of groups of observations, and means and covariances of groups.
 *
 * Reads x, the weights and GROUP_INDICES, the group of each observation, 0 .. G-1, negative for one
 * that takes no part; nor does one of weight 0. Writes what is registered of
 *   POOLED_COVARIANCE   sum C_g / sum B_g over all groups g, where C_g is the cross-product of a
 *                       group around its own mean and B = W - W2/W, so that without weights the
 *                       divisor is n less the number of groups
 *   POOLED_MEAN         the mean of all observations that take part
 *   GROUP_MEANS, GROUP_COVARIANCES
 *                       of those groups whose flag in REQUESTED_GROUPS (G of them) is not zero, one
 *                       behind the other, packed matrices without gaps; as by Basic, and NaN for
 *                       a group without members. Such groups play no other part.
 * Every call is a computation of its own, in double precision. Groups whose covariances are wanted
 * are accumulated by the method TILED of Basic; the others share sums of products of deviations
 * from points near their means, which move while the groups grow. A NaN in a variable makes its
 * results NaN, the means of other groups and of other variables stay. Variables that the indices
 * leave out keep their results. No result overlays what is read. Memory, which the task keeps: G
 * integers of 32 bits; for each group (where G is above n/16, for those with members) 16p + 25
 * doubles, and 520 more while they are 32 at most; for each wanted covariance p^2 doubles and up to
 * 256 observations of its group, 0.5 MB for all of them or 32 for each; p^2 + 520p + 1600 doubles.
 *
 * Checked: NULL_GROUP_INDICES, one of the four results (NULL_POOLED_COVARIANCE), REQUESTED_GROUPS
 * for the groups' results (NULL_GROUP_INDICES), then n, x, its storage, p as by Basic, the layouts
 * (NULL_STORAGE). NULL_WEIGHTS: a weight is negative or not finite, or all are 0.
 * TOO_FEW_OBSERVATIONS: none takes part, or for POOLED_COVARIANCE no two in one group. NO_MEMORY,
 * also for a group index of 2^31 - 1 or more.
 */
KEF_API int32_t _vtsdSSPooledCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSPooledCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);

/* A correlation matrix near a symmetric matrix that is none, having negative eigenvalues: estimated
 * pair by pair, rounded, or changed by hand. By spectral decomposition (Rebonato & Jaeckel, J. Risk
 * 2(2), 1999): negative eigenvalues become 0, and the result is scaled to a diagonal of exactly 1.
 *
 * Reads the CORRELATION, writes the PARAMETRIZED_MATRIX: positive semidefinite to rounding,
 * elements inside [-1,1]. A matrix of diagonal 1 that has no negative eigenvalue comes back as it
 * was, to rounding. A variable of which nothing is left (its row belongs to eigenvalues that are
 * not positive) is correlated with no other. Variables that the indices leave out take no part and
 * keep their rows and columns. The eigenvalues come from the tridiagonal form by implicit QL steps,
 * in double precision. The result may overlay the matrix that is read.
 * Memory 3p^2 + 3p doubles and p integers, which the task keeps.
 *
 * Checked: NULL_PARAMETRIZED_MATRIX, NULL_CORRELATION, p, the layouts of both (NULL_STORAGE).
 * NO_MEMORY. NOT_POSITIVE_DEFINITE: an element is NaN or infinite. ITERATION_LIMIT: 30p steps did
 * not find the eigenvalues, which is not known to happen. Nothing is written then. */
KEF_API int32_t _vtsdSSCorParametrization(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSCorParametrization(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Outliers of multivariate data by BACON (Billor, Hadi & Velleman, CSDA 34:279, 2000): a small
 * subset without outliers grows by what is near its mean, measured by its covariance.
 *
 * Reads x and the OUTLIER_PARAMETERS, 3 of them: start, alpha, tolerance. Writes element j of the
 * OUTLIER_WEIGHTS, n of them: 1 where observation j is kept, 0 for an outlier.
 *   start      1: from the observations nearest to the mean in the distances of MahDistance; the
 *              result follows every affine change of the data, and stands some 20 % of outliers.
 *              2: from those nearest to the medians in Euclidean distance; stands some 40 %,
 *              but the units of the variables matter.
 *   alpha      in [1e-30, 1): the probability with which any observation of normal data without
 *              outliers is called one
 *   tolerance  in [0,1): stops when the subset repeats itself, or changes its size by tolerance n
 *              at most
 * The first subset are the nearest 4p observations, n/2 at most and p + 1 at least, of equally far
 * ones the first in x, or as many more as make the covariance regular. Then, in up to 100 rounds,
 * all closer than c sqrt(chi2), chi2 with probability alpha/n above it,
 * c = 1 + (p+1)/(n-p) + 2/(n-1-3p)
 * + max(0, (h-r)/(h+r)), h = floor((n+p+1)/2), r the size of the last subset.
 *
 * p counts the variables that the indices leave in; with none, nothing is written. Weights play no
 * part. The results do not overlay x. Memory 4n + 2p^2 + 800p + 3000 doubles at most, which the
 * task keeps.
 *
 * Checked: NULL_OUTLIER_PARAMETER_COUNT, NULL_OUTLIER_PARAMETERS, NULL_OUTLIER_WEIGHTS, then n, x,
 * its storage, p as by Basic. BAD_PARAMETERS. TOO_FEW_OBSERVATIONS: n <= 3p + 1. NO_MEMORY.
 * NOT_POSITIVE_DEFINITE: some variable is a combination of others (1 - R^2 below 3e-14 p) in all
 * observations or in a subset, or x holds NaN or what overflows. Nothing is written then.
 * ITERATION_LIMIT: the last subset is written. */
KEF_API int32_t _vtsdSSOutliersDetection(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSOutliersDetection(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Robust location and covariance: the S-estimate with the translated biweight (Rocke, Ann. Stat.
 * 24:1327, 1996). Of all ellipsoids that leave the mean of rho(d_j) at its value for normal data,
 * d_j the distances of MahDistance, the smallest that is found from a start without outliers.
 *
 * Reads x and the ROBUST_PARAMETERS, 4 of them; writes the ROBUST_MEAN, p values, and the
 * ROBUST_COVARIANCE, both consistent for normal data.
 *   breakdown  in [1e-9, 1/2]: the share of outliers that the estimate can bear; (n-p)/(2n) at
 *              most is used
 *   rejection  in [1e-30, 1): the probability with which an observation of normal data has weight
 *              0; as far as breakdown allows (little makes a biweight, much cuts off at once)
 *   tolerance  in [0,1), e.g. 1e-8: stops when |m_i - m'_i| <= tolerance s_i and |C_ij - C'_ij| <=
 *              tolerance s_i s_j, s_i^2 = C_ii, from one step to the next
 *   limit      at least 1: the most steps
 * rho is the integral of u w(u), w = 1 up to M, (1 - ((u-M)/c)^2)^2 up to M + c, then 0. A step:
 * the distances by the last estimate, their scale by the mean of rho, mean and covariance under
 * the weights w. The start is the subset of OutliersDetection (start 2, alpha 0.05); where
 * n <= 3p + 1, or where it fails or keeps fewer than n/2, Huber's M-estimate from medians and
 * median deviations (Maronna, Ann. Stat. 4:51, 1976), which bears some 1/(p+1) of outliers.
 *
 * Variables that the indices leave out take no part and keep their results. Weights play no part.
 * The results do not overlay x. Memory as by OutliersDetection and p^2 doubles more.
 *
 * Checked: NULL_ROBUST_PARAMETER_COUNT, NULL_ROBUST_PARAMETERS, NULL_ROBUST_MEAN,
 * NULL_ROBUST_COVARIANCE, then n, x, its storage, p as by Basic, the layout (NULL_STORAGE).
 * BAD_PARAMETERS. TOO_FEW_OBSERVATIONS: n <= p. NO_MEMORY. NOT_POSITIVE_DEFINITE as by
 * OutliersDetection, among them data of which half have one value. Nothing is written then.
 * ITERATION_LIMIT: the last estimate is written. */
KEF_API int32_t _vtsdSSRobustCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSRobustCovariance(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Normal data with missing values: maximum likelihood estimates by the EM algorithm (Dempster,
 * Laird & Rubin, JRSS B 39:1, 1977), and imputations by data augmentation (Tanner & Wong, JASA
 * 82:528, 1987; Schafer, Analysis of Incomplete Multivariate Data, 1997).
 *
 * Reads x, where NaN is a missing value, and the arrays A, B, C; writes D and E. A law is p means
 * and the covariance in the layout UPPER, L = p + p(p+1)/2 numbers.
 *   A  5: the most EM iterations; steps of the data augmentation from one imputation to the next;
 *      tolerance in [0,1), e.g. 1e-8; imputations M, 0 for EM alone; the number of missing values,
 *      another one than x has being BAD_PARAMETERS, or 0 for any
 *   B  L or 0: the law to start from; without it, means and variances of the values that there are
 *   C  L + 2 or 0: the prior of the data augmentation, tau, nu, mu0 (p) and a matrix V in the
 *      layout UPPER; without it tau = 0, nu = -1, V = 0
 *   D  at least M times the missing values: the imputations one after the other, in each the
 *      missing values of observation after observation, its variables ascending
 *   E  (1 + M) L or 0: the law by EM, then the one that each imputation was drawn from
 * An array with the count 0, or without a count, is not there.
 *
 * EM: the expectations of the moments under the last law, patterns of missing values one by one,
 * until |m_i - m'_i| <= tolerance s_i and |C_ij - C'_ij| <= tolerance s_i s_j, s_i^2 = C_ii. Where
 * much is missing the steps become smaller than the distance that is left: a tolerance of 1e-8 may
 * leave some 1e-7. Divisor n. Data augmentation: missing values by the law, then a law by the
 * completed data (means m, products S around them): covariance of an inverse Wishart law of nu + n
 * degrees of freedom and the matrix V + S + tau n/(tau+n) (m - mu0)(m - mu0)^T, mean normal around
 * (n m + tau mu0)/(tau+n) with that covariance over tau + n. Random numbers: MRG32K3A with seed 1,
 * so that results repeat; the thread's streams are not touched.
 *
 * Where nothing is missing EM gives mean and covariance (divisor n). Variables that the indices
 * leave out take no part: their missing values do not count, their places in the laws stay. Weights
 * play no part. The results do not overlay what is read. Memory p + 5 + p/64 numbers for each
 * observation with missing values and 12p^2 + 900p + 3000 doubles at most, which the task keeps,
 * and the stream.
 *
 * Checked: NULL_MISSING_A_COUNT, NULL_MISSING_A, D or E (NULL_MISSING_E), the counts of B, C, D, E
 * where the array is there (their NULL_ statuses), n, x, its storage, p as by Basic. Then
 * BAD_PARAMETERS: a count or number out of range, nu + n < p; the NULL_ status of an array whose
 * count is not 0, and of D for M > 0. TOO_FEW_OBSERVATIONS: n <= p, or a variable with fewer than
 * two values. NO_MEMORY. NOT_POSITIVE_DEFINITE: a law becomes singular (as by OutliersDetection),
 * x has infinities, or V is not positive semidefinite, or too large. Nothing is written then, but
 * what precedes a draw of the data augmentation whose completed data are singular, as few different
 * observations may be. ITERATION_LIMIT: EM has not settled; all is written. */
KEF_API int32_t _vtsdSSMissingValues(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSMissingValues(kef_ss_task *task, uint64_t estimates, int32_t method);

/* Quantiles of all observations of a stream, fed block by block, of a length that nobody knows.
 *
 * Reads x, m orders q in [0,1] and their number, and one parameter, epsilon in [2^-20, 1/2], with
 * its number 1. Writes the STREAM_QUANTILES, element i*m + a for variable i and order a: a value,
 * one of the observations, whose rank among all N so far differs from q N by epsilon N at most,
 * whatever their order; the least and the greatest observation for 0 and 1. Up to N = 128/epsilon
 * it is the observation of rank ceil(q N) (the least has rank 1). The bound holds up to N =
 * 4e9/epsilon and grows by epsilon/32 with each doubling beyond. With m = 0 nothing is written: a
 * call with m > 0 sorts the observations that have not been condensed yet, up to 128/epsilon, so
 * that small blocks are better added without asking.
 *
 * The task keeps a sketch of each variable: at most 128/epsilon + 16 L/epsilon numbers, L = log2(N
 * epsilon/128), beside room for work of 800/epsilon numbers at most (docs/statistics.md). Equal
 * weights; variables that the indices leave out are not fed. A NaN makes all later results of its
 * variable NaN. The sketch is deterministic: summaries of 16/epsilon numbers, of weights 8, 16, 32,
 * ... (Munro & Paterson, TCS 12:315, 1980; Manku, Rajagopalan & Lindsay, SIGMOD 1998).
 *
 * Checked: the number of orders, the orders, the results, the number of parameters, the parameters
 * (their NULL_ statuses), n, x, its storage, p as by Basic. BAD_PARAMETERS: m < 0, an order outside
 * [0,1], a number of parameters that is not 1, an epsilon out of range or other than at the first
 * call. BAD_DIMENSION: p is not that of the first call. NO_MEMORY. */
KEF_API int32_t _vtsdSSStreamQuantiles(kef_ss_task *task, uint64_t estimates, int32_t method);
KEF_API int32_t _vtssSSStreamQuantiles(kef_ss_task *task, uint64_t estimates, int32_t method);

/* The sketches of StreamQuantiles as bytes, to be kept in a file or sent: the same on every system.
 * The size, or a negative status: NULL_TASK, TOO_FEW_OBSERVATIONS when the task has none. Save
 * writes that many bytes (BAD_IMAGE for a null address). */
KEF_API int64_t __vtsSSGetStreamQuantilesSize(const kef_ss_task *task);
KEF_API int32_t __vtsSSSaveStreamQuantiles(const kef_ss_task *task, void *image);
/* Puts the sketches of an image into a task of the same precision and p, in place of its own; the
 * stream goes on from there. BAD_IMAGE when a byte is wrong or missing, BAD_PRECISION,
 * BAD_DIMENSION, NO_MEMORY: the task is as it was. */
KEF_API int32_t __vtsSSLoadStreamQuantiles(kef_ss_task *task, const void *image, uint64_t size);

/* Adds to a task what another one has seen: afterwards `task` holds what one task would that had
 * seen the observations of both, in either order and at any split, to rounding; `other` goes on as
 * if it had not been. The two may come from other threads (none uses them now), processes or
 * machines: results and accumulated weights are the state of Basic and Minmax, an image that of
 * StreamQuantiles.
 *
 * The estimates are those of Basic, by one of the methods over x that the tasks were computed by,
 * VTS_SS_ESTIMATE_MINIMUM and _MAXIMUM, and VTS_SS_ESTIMATE_STREAM_QUANTILES; other results of
 * `task` stay. Basic: both tasks have the accumulated weights and the arrays that the estimates
 * require, each in its own layouts, and `other` with W = 0 adds nothing; while arrays are as the
 * library wrote them, the states behind them are joined in full precision (Chan, Golub & LeVeque,
 * Am. Stat. 37:242, 1983; Pebay, SAND2008-6212). Extremes that are NaN have seen nothing. Streaming
 * quantiles: the bound of epsilon N holds for all observations of both, and where STREAM_QUANTILES
 * are registered they are written.
 *
 * Checked, in this order: tasks (NULL_TASK, BAD_PARAMETERS when they are one), method (BAD_METHOD;
 * where an estimate of Basic is asked for, else it plays no part);
 * of `task`, then of `other`, the required arrays (their statuses), NULL_ACCUMULATED_WEIGHTS,
 * NULL_MINIMUM, NULL_MAXIMUM, layouts (NULL_STORAGE), precision (BAD_PRECISION); BAD_DIMENSION when
 * p, the processed variables or the p of the sketches differ; BAD_PARAMETERS for orders outside
 * [0,1] or sketches of another epsilon than those of `task` or, while it has none, the parameter
 * that is registered in it; without either it takes that of `other`. NO_MEMORY. */
KEF_API int32_t _vtsdSSMerge(kef_ss_task *task, kef_ss_task *other, uint64_t estimates,
                             int32_t method);
KEF_API int32_t _vtssSSMerge(kef_ss_task *task, kef_ss_task *other, uint64_t estimates,
                             int32_t method);

KEF_END_DECLS

#endif
