// Processor identification by CPUID.
#pragma once

namespace kef {

struct CpuFeatures {
    bool sse2;
    bool sse3;
    bool rdrand;
};

CpuFeatures cpu_features();

}  // namespace kef
