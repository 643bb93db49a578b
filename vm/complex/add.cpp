// Add and Sub: r = a + b, a - b, part by part; the kernels of real numbers.
#include "vm/core/complex_kernel.h"

namespace kef::vm {

#define KEF_PART_BY_PART(type, function, real, T)                                              \
    void real##function##_HA(std::int32_t n, const T* a, const T* b, T* r);                    \
    void type##function##_HA(std::int32_t n, const element_##type* a, const element_##type* b, \
                             element_##type* r) {                                              \
        over_parts(n, [&](std::int32_t count, std::ptrdiff_t i) {                              \
            real##function##_HA(count, &a->re + i, &b->re + i, &r->re + i);                    \
        });                                                                                    \
    }
KEF_PART_BY_PART(c, Add, s, float)
KEF_PART_BY_PART(z, Add, d, double)
KEF_PART_BY_PART(c, Sub, s, float)
KEF_PART_BY_PART(z, Sub, d, double)

}  // namespace kef::vm
