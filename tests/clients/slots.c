/* A program that names a table, and so may own a copy of it. Rewrites slots and
 * expects its entry points to follow; says whether the copy is its own. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "kef_vm.h"

static void negate(int32_t n, const double *a, double *r) {
    for (int32_t i = 0; i < n; ++i) r[i] = -a[i];
}

static int failures;
static void expect(int condition, const char *what) {
    if (condition) return;
    fprintf(stderr, "%s\n", what);
    ++failures;
}

int main(void) {
    kef_vtm_d_map1 *by_name = kef_vtm_kernel_dSqrt_ttab;
    const float *costs = (const float *)(by_name + 3);
#if defined(KEF_STATIC)
    kef_vtm_d_map1 *by_symbol = by_name;
#else
    kef_vtm_d_map1 *by_symbol = dlsym(RTLD_DEFAULT, "kef_vtm_kernel_dSqrt_ttab");
#endif
    const double a = 4.0;
    double r = 0.0;

    expect(by_symbol == by_name, "two tables");
    expect(memcmp(costs, kef_vtm_kernel_dSqrt_ctab, 3 * sizeof *costs) == 0,
           "no costs behind the slots");

    const kef_vtm_d_map1 old = by_name[1];
    _vtmdSqrt(1, &a, &r);
    expect(r == 2.0, "first call");
    by_name[1] = negate;
    _vtmdSqrt(1, &a, &r);
    expect(r == -4.0, "a slot rewritten by name");
    by_symbol[1] = old;
    _vtmdSqrt_HA(1, &a, &r);
    expect(r == 2.0, "a slot rewritten through dlsym");

    Dl_info owner, program;
    if (dladdr(by_name, &owner) && dladdr(&failures, &program) &&
        owner.dli_fbase == program.dli_fbase)
        puts("own copy");
    return failures != 0;
}
