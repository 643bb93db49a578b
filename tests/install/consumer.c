/* A program of somebody else's: consumer VERSION. */
#include <kef_version.h>
#include <kef_vm.h>
#include <stdio.h>
#include <string.h>

int main(int count, char **words) {
    const double a[3] = {0.0, 1.0, 2.0};
    double r[3];
    char version[32];
    _vtmdExp(3, a, r);
    printf("%.15g %.15g %.15g\n", r[0], r[1], r[2]);
    if (r[0] != 1.0 || kef_vtm_kernel_dExp_ttab[1] == 0) return 1;
    snprintf(version, sizeof version, "%d.%d.%d", KEF_VERSION_MAJOR, KEF_VERSION_MINOR,
             KEF_VERSION_PATCH);
    return kef_version() != KEF_VERSION || count != 2 || strcmp(version, words[1]) != 0;
}
