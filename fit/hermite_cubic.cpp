// Hermite cubic: the caller gives the slopes at the inner breakpoints; the end
// slopes come from the boundary conditions.
#include "fit/given_derivatives.h"

namespace kef::fit {

namespace {

template <class T> std::int32_t construct_entry(const Task* task, std::int64_t method) {
    constexpr Requirements need = {2, DF_CUBIC, 1u << DF_TYPE_HERMITE, two_sided};
    if (const std::int32_t status = check_task<T>(task, method, need)) return status;
    if (const std::int32_t status = check_internal(*task, 1u << DF_INTERNAL_FIRST)) return status;
    return construct_hermite<T>(*task);
}

}  // namespace

}  // namespace kef::fit

KEF_DF_CONSTRUCTOR(DFHermiteCubicSpline1D)
