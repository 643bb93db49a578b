// Linear spline: c0 = y_i, c1 = d_i.
#include "fit/construct.h"

namespace kef::fit {

namespace {

struct Linear {
    ArrayCount arrays() const { return {}; }
    void prepare(const Mesh&, Scratch&) {}
    template <class T>
    void fit(const Mesh& mesh, const double* y, const double* d, const Coefficients<T>& c) {
        T* cell = c.first;
        for (std::size_t i = 0; i + 1 < mesh.n; ++i, cell += c.stride) {
            cell[0] = static_cast<T>(y[i]);
            cell[1] = static_cast<T>(d[i]);
        }
    }
};

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {2, DF_LINEAR, 1u << DF_TYPE_DEFAULT, no_conditions};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    return construct<T>(*task, DF_LINEAR, Linear{});
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFLinearSpline1D)
