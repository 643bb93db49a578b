// The processor that figures come from, by its own words.
#pragma once

#include <cpuid.h>

#include <cstring>
#include <string>

#include "bench/table.h"

namespace kef {

// "Brand (maker, family 25, model 1, stepping 1)"; what it does not tell is left out.
inline std::string processor() {
    unsigned leaf[12] = {}, eax = 0;
    char brand[sizeof leaf + 1] = {}, maker[13] = {};
    if (__get_cpuid(0x80000004, &leaf[8], &leaf[9], &leaf[10], &leaf[11]))
        for (unsigned i = 0; i < 3; ++i)
            __get_cpuid(0x80000002 + i, &leaf[4 * i], &leaf[4 * i + 1], &leaf[4 * i + 2],
                        &leaf[4 * i + 3]);
    std::memcpy(brand, leaf, sizeof leaf);
    __get_cpuid(0, &eax, &leaf[0], &leaf[2], &leaf[1]);
    std::memcpy(maker, leaf, 12);
    __get_cpuid(1, &eax, &leaf[0], &leaf[1], &leaf[2]);
    // The extended fields count where the short ones are full.
    const unsigned short_family = eax >> 8 & 15;
    const unsigned family = short_family + (short_family == 15 ? eax >> 20 & 255 : 0);
    const bool long_model = short_family == 6 || short_family == 15;
    const unsigned model = (eax >> 4 & 15) + (long_model ? (eax >> 16 & 15) << 4 : 0);
    std::string name = brand;
    name.erase(0, name.find_first_not_of(' '));
    name.erase(name.find_last_not_of(' ') + 1);
    return name + format(" (%s, family %u, model %u, stepping %u)", maker, family, model, eax & 15);
}

}  // namespace kef
