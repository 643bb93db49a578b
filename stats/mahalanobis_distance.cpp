// _vtsdSSMahDistance, _vtssSSMahDistance: sqrt((x_j - m)^T S^-1 (x_j - m)) (Mahalanobis, Proc. Nat.
// Inst. Sci. India 2:49, 1936).
#include "stats/computation.h"
#include "stats/distance.h"

namespace kef::stats {

template <class T> std::int32_t mahalanobis_distance(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t n = positive_at(task, task.count);
    const std::ptrdiff_t count = count_selected(task, p);
    if (count == 0) return VTS_SS_STATUS_OK;

    KeptLayout layout;
    const auto listed = layout.reserve(count, sizeof(std::ptrdiff_t));
    const auto means = layout.reserve(count, sizeof(double));
    const auto factor = Cholesky::reserve(layout, count);
    const auto tiles = Distances::reserve(layout, count);
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    auto* variable = reinterpret_cast<std::ptrdiff_t*>(start + listed);
    auto* mean = reinterpret_cast<double*>(start + means);
    list_selected(task, p, variable);
    for (std::ptrdiff_t a = 0; a < count; ++a)
        mean[a] = static_cast<const T*>(task.mean)[variable[a]];

    Cholesky L(start + factor, count);
    if (!L.factor(matrix_at<T>(task, p, task.covariance, task.covariance_storage), variable))
        return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    auto* results = static_cast<T*>(task.mahalanobis_distance);
    Distances(start + tiles, L, variable, mean)(
        observations_of<T>(task), 0, n, [&](std::ptrdiff_t first, int m, const double* squares) {
            for (int j = 0; j < m; ++j) results[first + j] = static_cast<T>(std::sqrt(squares[j]));
        });
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(mahalanobis_distance);

}  // namespace kef::stats
