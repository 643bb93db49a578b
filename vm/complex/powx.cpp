// Powx: r = a^b for one exponent b, by the formula of Pow: vm/core/complex_pow.h.
#include "vm/core/complex_pow.h"

namespace kef::vm {

template <class T, class Accuracy> class ComplexPowx : public ComplexPowFormula<T, Accuracy> {
public:
    using Pow = ComplexPowFormula<T, Accuracy>;
    using V = Vector<T>;
    using Number = std::conditional_t<Pow::is_single, kef_complex8, kef_complex16>;
    KEF_COMPLEX_NAME(Powx);

    explicit ComplexPowx(Number b) : b_(b) {}
    ints outside(ints x, ints y) const {
        return Pow::outside(x, y, all(head(b_.re)), all(head(b_.im)));
    }
    ints beyond(ints x, ints y) const requires(!Pow::is_single) {
        return Pow::beyond(x, y, all(head(b_.re)), all(head(b_.im)));
    }
    V undefined(V x, V y) const requires(!Pow::is_single) {
        return Pow::undefined(x, y, all(b_.re), all(b_.im));
    }
    auto fast(V x, V y) const { return Pow::fast(x, y, all(b_.re), all(b_.im)); }
    auto far(V x, V y) const requires(!Pow::is_single) {
        return Pow::far(x, y, all(b_.re), all(b_.im));
    }
    int edge(T x, T y, T& re, T& im) const { return Pow::edge(x, y, b_.re, b_.im, re, im); }
    Number scalar() const { return b_; }

private:
    Number b_;
};

#define KEF_COMPLEX_POWX(type, accuracy)                                                  \
    void type##Powx_##accuracy(std::int32_t n, const element_##type* a, element_##type b, \
                               element_##type* r) {                                       \
        map1<ComplexPowx<Real<element_##type>, accuracy>>(n, a, r, b);                    \
    }
KEF_COMPLEX_POWX(c, LA)
KEF_COMPLEX_POWX(c, HA)
KEF_COMPLEX_POWX(z, HA)
KEF_COMPLEX_POWX(z, EP)

}  // namespace kef::vm
