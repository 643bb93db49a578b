// Powx: r = a^b for one exponent b. Results, special cases and errors are those of Pow;
// an exponent outside its range sends every element to the edge.
#include "vm/core/pow_core.h"
#include "vm/simd/frame.h"
#include "vm/surface/shapes.h"

namespace kef::vm {

template <class T, class Accuracy> class Powx : public PowFormula<T, Accuracy> {
public:
    using V = Vector<T>;
    KEF_REPORT_NAME(Powx);

    explicit Powx(T b) : b_(b), b_outside_(Powx::y_outside(all(head(b)))) {}

    i4 outside(i4 a) const { return Powx::x_outside(a) | b_outside_; }
    auto fast(V a) const { return PowFormula<T, Accuracy>::fast(a, all(b_)); }
    int edge(T a, T& r) const { return pow_edge(a, b_, r); }
    T scalar() const { return b_; }

private:
    T b_;
    i4 b_outside_;
};

#define KEF_POWX(type, accuracy)                                                          \
    void type##Powx_##accuracy(std::int32_t n, const element_##type* a, element_##type b, \
                               element_##type* r) {                                       \
        map1<Powx<element_##type, accuracy>>(n, a, r, Powx<element_##type, accuracy>(b)); \
    }
KEF_POWX(s, HA)
KEF_POWX(s, EP)
KEF_POWX(d, LA)
KEF_POWX(d, HA)
KEF_POWX(d, EP)

}  // namespace kef::vm
