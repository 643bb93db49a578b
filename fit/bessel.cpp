// Bessel cubic (de Boor 1978, A Practical Guide to Splines, ch. IV): the slope at
// x_i is that of the parabola through three neighbours,
// s_i = (h_i d_{i-1} + h_{i-1} d_i)/(h_{i-1} + h_i); at the ends of the parabola
// through the first and the last three points.
#include "fit/local_ends.h"

namespace kef::fit {

namespace {

struct BesselSlopes {
    void operator()(const Mesh& mesh, double* d, double* s, bool periodic) const {
        const std::size_t n = mesh.n;
        const double* h = mesh.h;
        const auto slope = []<class V>(V h0, V h1, V d0, V d1) {
            return d0 + (d1 - d0) * h0 / (h0 + h1);
        };
        each(n - 2, [&]<class V>(std::size_t i, V) {
            store_as(s + i + 1, slope(load_as<V>(h + i), load_as<V>(h + i + 1), load_as<V>(d + i),
                                      load_as<V>(d + i + 1)));
        });
        if (periodic) {
            s[0] = s[n - 1] = slope(h[n - 2], h[0], d[n - 2], d[0]);
        } else {
            s[0] = 2 * d[0] - s[1];
            s[n - 1] = 2 * d[n - 2] - s[n - 2];
        }
    }
};

constexpr BoundarySet boundaries = two_sided | no_conditions;

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {2, DF_CUBIC, 1u << DF_TYPE_BESSEL, boundaries};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    const LocalSlopes<BesselSlopes> slopes = {{}, boundary_of<T>(*task, boundaries)};
    return construct<T>(*task, DF_CUBIC, HermiteMethod<LocalSlopes<BesselSlopes>>{slopes});
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFBesselCubicSpline1D)
