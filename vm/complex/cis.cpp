// CIS: r = cos a + i sin a of a real a, the kernel of SinCos; here with infinities and NaN by
// vectors.
#include "vm/core/complex_kernel.h"
#include "vm/core/sincos_core.h"

namespace kef::vm {

template <class T, class Accuracy>
struct ComplexCIS : ResultChanged<SinCosFormula<T, Accuracy>, Exchange> {
    using Base = ResultChanged<SinCosFormula<T, Accuracy>, Exchange>;
    using V = Vector<T>;
    KEF_COMPLEX_TRIG_NAME(CIS);

    static ints beyond(ints) { return ints{}; }
    static MarkedBy<V, Two<V>> far(V x) {
        const V size = absolute(x), infinity = all(Format<T>::infinity);
        const auto finite = mask(size < infinity), infinite = mask(size == infinity);
        auto r = Base::far(where(finite, x));
        if (!all_lanes(finite)) {
            const V other = select(infinite, all(Format<T>::invalid), x + x);
            r.result = select(finite, r.result, Two<V>{other, other});
        }
        return {r.result, report_marks(r.marks, infinite)};
    }
    static ints reported(ints, ints, ints marks) { return marked_report(marks); }
    static int status(T, T) { return VTM_STATUS_ERRDOM; }
};

KEF_REAL_TO_COMPLEX(c, CIS, LA)
KEF_REAL_TO_COMPLEX(c, CIS, HA)
KEF_REAL_TO_COMPLEX(z, CIS, LA)
KEF_REAL_TO_COMPLEX(z, CIS, HA)
KEF_REAL_TO_COMPLEX(z, CIS, EP)

}  // namespace kef::vm
