// Acosh: r = acosh a, the principal value: of acos a = u + iv, |v| + iu with the sign of y.
#include "vm/core/complex_inverse.h"

namespace kef::vm {

template <class T, class Accuracy> struct ComplexAcosh : AcosOfParts<T, Accuracy> {
    using Acos = AcosOfParts<T, Accuracy>;
    using V = Vector<T>;
    KEF_COMPLEX_NAME(Acosh);

    static Two<V> of_acos(Two<V> r, V y) {
        return {absolute(r.second), flipped(r.first, sign_bit(y))};
    }
    static Two<V> fast(V x, V y) { return of_acos(Acos::fast(x, y), y); }
    static MarkedBy<V, Two<V>> far(V x, V y) requires(!Acos::is_single) {
        const MarkedBy<V, Two<V>> r = Acos::far(x, y);
        return {of_acos(r.result, y), r.marks};
    }
    static int edge(T x, T y, T& re, T& im) {
        T angle, height;
        const int status = Acos::edge(x, y, angle, height);
        re = height < 0 ? -height : height, im = signed_like(angle, y);
        return status;
    }
};

KEF_COMPLEX1(c, Acosh, HA)
KEF_COMPLEX1(z, Acosh, LA)
KEF_COMPLEX1(z, Acosh, HA)

}  // namespace kef::vm
