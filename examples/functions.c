#include "functions.h"

#include <math.h>
#include <string.h>
#include <tgmath.h>

#include "kef_vm.h"

#define NO_REFERENCE NAN

/* What f in a line of the list may name, as values of one type. */
#define TAKE_x(T, first, second)                                             \
    const T x = first, root2 = (T)1.41421356237309504880168872420969807857L; \
    (void)x, (void)root2
#define TAKE_ab(T, first, second) const T a = first, b = second

/* What a line becomes for one type: five small functions, then a row. The tables
 * are read in functions, as the address of imported data is no constant everywhere. */
#define DEFINE(t, T, name, arguments, take, outputs, f, g)                                  \
    static void call_##t##name(int slot, int32_t n, const void *u, const void *v, void *y,  \
                               void *z) {                                                   \
        (void)v, (void)z;                                                                   \
        kef_vtm_kernel_##t##name##_ttab[slot] arguments;                                    \
    }                                                                                       \
    static void (*kernel_##t##name(int slot))(void) {                                       \
        return (void (*)(void))kef_vtm_kernel_##t##name##_ttab[slot];                       \
    }                                                                                       \
    static float cost_##t##name(int slot) { return kef_vtm_kernel_##t##name##_ctab[slot]; } \
    static void loop_##t##name(int32_t n, const void *u, const void *v, void *y, void *z) { \
        const T *first = u, *second = v;                                                    \
        T *result = y, *result2 = z;                                                        \
        (void)second, (void)result2;                                                        \
        for (int32_t i = 0; i < n; ++i) {                                                   \
            TAKE_##take(T, first[i], second[i]);                                            \
            result[i] = (T)(f);                                                             \
            if (outputs == 2) result2[i] = (T)(g);                                          \
        }                                                                                   \
    }                                                                                       \
    static long double reference_##t##name(int output, long double u, long double v) {      \
        (void)v;                                                                            \
        TAKE_##take(long double, u, v);                                                     \
        return output == 0 ? f : g;                                                         \
    }
#define BOTH(...) DEFINE(s, float, __VA_ARGS__) DEFINE(d, double, __VA_ARGS__)
#define MAP1(name, low, high, bound, f) BOTH(name, (n, u, y), x, 1, f, 0)
#define MAP2(name, low, high, bound, f) BOTH(name, (n, u, v, y), ab, 1, f, 0)
#define MAPX(name, low, high, bound, f) BOTH(name, (n, u, POWER, y), x, 1, f, 0)
#define MAP1X2(name, low, high, bound, f, g) BOTH(name, (n, u, y, z), x, 2, f, g)
#define FRACTION(name, low, high, bound, f) \
    BOTH(name, (n, u, v, SCALE_A, SHIFT_A, SCALE_B, SHIFT_B, y), ab, 1, f, 0)
#include "functions.def"
#undef MAP1
#undef MAP2
#undef MAPX
#undef MAP1X2
#undef FRACTION

#define ROW(t, T, name, inputs, outputs, low, high, bound) \
    {#t #name,                                             \
     sizeof(T),                                            \
     inputs,                                               \
     outputs,                                              \
     low,                                                  \
     high,                                                 \
     bound,                                                \
     call_##t##name,                                       \
     kernel_##t##name,                                     \
     cost_##t##name,                                       \
     loop_##t##name,                                       \
     reference_##t##name},
/* In single precision what depends on one number is correctly rounded, anything else almost. */
#define ROWS(name, inputs, outputs, low, high, bound, single)                                \
    ROW(s, float, name, inputs, outputs, low, high, (bound) < (single) ? (bound) : (single)) \
    ROW(d, double, name, inputs, outputs, low, high, bound)
#define MAP1(name, low, high, bound, f) ROWS(name, 1, 1, low, high, bound, 0.5)
#define MAP2(name, low, high, bound, f) ROWS(name, 2, 1, low, high, bound, 0.501)
#define MAPX(name, low, high, bound, f) ROWS(name, 1, 1, low, high, bound, 0.501)
#define MAP1X2(name, low, high, bound, f, g) ROWS(name, 1, 2, low, high, bound, 0.5)
#define FRACTION(name, low, high, bound, f) ROWS(name, 2, 1, low, high, bound, 0.501)
const struct function functions[] = {
#include "functions.def"
};
const int function_count = sizeof functions / sizeof functions[0];

const struct function *find_function(const char *name) {
    for (int i = 0; i < function_count; ++i)
        if (strcmp(functions[i].name, name) == 0) return &functions[i];
    return NULL;
}
