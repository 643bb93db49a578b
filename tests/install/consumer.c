/* A program of somebody else's. */
#include <kef_dist.h>
#include <kef_fit.h>
#include <kef_rng.h>
#include <kef_stats.h>
#include <kef_vm.h>
#include <stdio.h>

int main(void) {
    const double a[3] = {0.0, 1.0, 2.0};
    double r[3];
    _vtmdExp(3, a, r);
    printf("%.15g %.15g %.15g\n", r[0], r[1], r[2]);
    printf("%s, %s, %s, %s\n", kef_vtm_status_text(VTM_STATUS_OVERFLOW),
           kef_vts_status_text(VTS_STATUS_BAD_BRNG), kef_ss_status_text(VTS_SS_STATUS_NULL_X),
           kef_df_status_text(DF_STATUS_NX));
    return r[0] != 1.0 || kef_vtm_kernel_dExp_ttab[1] == 0;
}
