/* One function at three accuracies, picked by the suffix of the name and by the
 * mode word through the dispatch table: the same kernels. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "frontend.h"

bool accuracy_chapter(const struct session *session) {
    static const struct {
        uint32_t mode;
        const char *name;
        void (*entry)(int32_t n, const double *a, double *r);
    } accuracies[] = {
        {VTM_HA, "_vtmdExp_HA", _vtmdExp_HA},
        {VTM_LA, "_vtmdExp_50", _vtmdExp_50},
        {VTM_EP, "_vtmdExp_26", _vtmdExp_26},
    };
    const int32_t n = session->count;
    const size_t bytes = (size_t)n * sizeof(double);
    const uint32_t mode = kef_vtm_kernel_GetMode();
    double *a = allocate((size_t)n, sizeof *a);
    double *plain = allocate((size_t)n, sizeof *plain), *named = allocate((size_t)n, sizeof *named);
    double *tabled = allocate((size_t)n, sizeof *tabled);
    bool equal = true;

    print_mode("   Mode word at start ", mode);
    printf(
        "\n   e^d, d = difference from the first measurement\n"
        "   entry point   through the table       cost   result for the last      "
        "worst difference\n");
    _vtmdLinearFrac(n, session->measurements, session->measurements, 1, -session->measurements[0],
                    0, 1, a);
    _vtmdExp(n, a, plain);
    for (size_t i = 0; i < sizeof accuracies / sizeof accuracies[0]; ++i) {
        /* By name: the accuracy of the suffix, whatever the mode word says. */
        accuracies[i].entry(n, a, named);
        /* By the mode word: the slot of the table. The entry points never look at it. */
        kef_vtm_kernel_SetMode(accuracies[i].mode);
        const int slot = current_slot();
        kef_vtm_kernel_dExp_ttab[slot](n, a, tabled);

        double worst = 0;
        for (int32_t j = 0; j < n; ++j)
            if (isfinite(plain[j]) && plain[j] > 0)
                worst = fmax(worst, fabs(named[j] / plain[j] - 1));
        printf("   %-12s  VTM_%s, dExp_ttab[%d]   %6.2f   %-22.17g   %.1e\n", accuracies[i].name,
               accuracy_name(slot), slot, (double)kef_vtm_kernel_dExp_ctab[slot], named[n - 1],
               worst);
        equal = equal && memcmp(named, tabled, bytes) == 0;
    }
    restore_mode(mode);
    printf("   Entry points and table slots gave %s bits.\n", equal ? "the same" : "DIFFERENT");
    free(a), free(plain), free(named), free(tabled);
    return equal;
}
