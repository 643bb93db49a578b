// Conj: r = the conjugate of a: the sign of each second part is changed, that of NaN too.
#include "vm/core/complex_kernel.h"

namespace kef::vm {

template <class T> struct ConjugateParts {
    using V = Vector<T>;
    static V fast(V x) {
        const V signs = zip(V{}, all(T(-0.0))).first;
        return flipped(x, (BitsOf<V>)signs);
    }
};

#define KEF_CONJ(type)                                                                 \
    void type##Conj_HA(std::int32_t n, const element_##type* a, element_##type* r) {   \
        over_parts(n, [&](std::int32_t count, std::ptrdiff_t i) {                      \
            map1<ConjugateParts<Real<element_##type>>>(count, &a->re + i, &r->re + i); \
        });                                                                            \
    }
KEF_CONJ(c)
KEF_CONJ(z)

}  // namespace kef::vm
