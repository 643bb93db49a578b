#include "service/cpu.h"

#include <cpuid.h>

namespace kef {

CpuFeatures cpu_features() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return {};
    return {(edx & bit_SSE2) != 0, (ecx & bit_SSE3) != 0, (ecx & bit_RDRND) != 0};
}

}  // namespace kef
