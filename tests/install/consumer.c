/* A program of somebody else's. */
#include <kef_vm.h>
#include <stdio.h>

int main(void) {
    const double a[3] = {0.0, 1.0, 2.0};
    double r[3];
    _vtmdExp(3, a, r);
    printf("%.15g %.15g %.15g\n", r[0], r[1], r[2]);
    return r[0] != 1.0 || kef_vtm_kernel_dExp_ttab[1] == 0;
}
