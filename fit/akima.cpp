// Akima cubic (Akima 1970, JACM 17, p. 589). The slope at x_i is a mean of the
// divided differences beside it; each weighs by how little the data bend behind the
// other: s_i = (w1 d_{i-1} + w2 d_i)/(w1 + w2), w1 = |d_{i+1} - d_i|,
// w2 = |d_{i-1} - d_{i-2}|, and the middle where both vanish. Beyond the ends the
// differences go on linearly, in a periodic spline around.
#include <cmath>

#include "fit/local_ends.h"

namespace kef::fit {

namespace {

inline double magnitude(double v) { return std::fabs(v); }
inline d2 magnitude(d2 v) { return vm::absolute(v); }

// w2/(w1 + w2); 1/2 where the sum is exactly zero.
inline double share(double w1, double w2) {
    const double sum = w1 + w2;
    return sum == 0 ? 0.5 : w2 / sum;
}
inline d2 share(d2 w1, d2 w2) {
    const d2 sum = w1 + w2;
    const auto none = (vm::l2)(sum == vm::all(0.0));
    return vm::select(none, vm::all(0.5), w2) / vm::select(none, vm::all(1.0), sum);
}

struct AkimaSlopes {
    void operator()(const Mesh& mesh, double* d, double* s, bool periodic) const {
        const std::size_t n = mesh.n;
        if (periodic) {
            d[-1] = d[n - 2], d[-2] = d[n - 3];
            d[n - 1] = d[0], d[n] = d[1];
        } else {
            d[-1] = 2 * d[0] - d[1], d[-2] = 2 * d[-1] - d[0];
            d[n - 1] = 2 * d[n - 2] - d[n - 3], d[n] = 2 * d[n - 1] - d[n - 2];
        }
        each(n, [&]<class V>(std::size_t i, V) {
            const double* e = d + i;
            const V before = load_as<V>(e - 1), after = load_as<V>(e);
            const V w1 = magnitude(load_as<V>(e + 1) - after);
            const V w2 = magnitude(before - load_as<V>(e - 2));
            store_as(s + i, before + (after - before) * share(w1, w2));
        });
    }
};

constexpr BoundarySet boundaries = two_sided | no_conditions;

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {2, DF_CUBIC, 1u << DF_TYPE_AKIMA, boundaries};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    const LocalSlopes<AkimaSlopes> slopes = {{}, boundary_of<T>(*task, boundaries)};
    return construct<T>(*task, DF_CUBIC, HermiteMethod<LocalSlopes<AkimaSlopes>>{slopes});
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFAkimaCubicSpline1D)
