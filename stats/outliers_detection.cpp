// _vtsdSSOutliersDetection, _vtssSSOutliersDetection: BACON.
#include "stats/bacon.h"
#include "stats/computation.h"

namespace kef::stats {

template <class T> std::int32_t outliers_detection(Task& task) {
    const auto* parameters = static_cast<const T*>(task.outlier_parameters);
    if (integer_at(task, task.outlier_parameter_count) != 3) return VTS_SS_STATUS_BAD_PARAMETERS;
    const double start = parameters[0], alpha = parameters[1], tolerance = parameters[2];
    if ((start != 1 && start != 2) || !(alpha >= 1e-30 && alpha < 1) ||
        !(tolerance >= 0 && tolerance < 1))
        return VTS_SS_STATUS_BAD_PARAMETERS;

    const ScatterPlaces places(task, 1);
    if (places.p == 0) return VTS_SS_STATUS_OK;
    if (!Bacon<T>::enough(places.n, places.p)) return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;
    char* block = scratch(task, places.layout);
    if (block == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    Scatter<T> scatter(task, places, block);
    Bacon<T> bacon(scatter, scatter.moments(0));
    const std::int32_t status =
        bacon(start == 1 ? BaconStart::mahalanobis : BaconStart::median, alpha, tolerance);
    if (status == VTS_SS_STATUS_OK || status == VTS_SS_STATUS_ITERATION_LIMIT)
        for (std::ptrdiff_t j = 0; j < scatter.n; ++j)
            static_cast<T*>(task.outlier_weights)[j] = static_cast<T>(scatter.weight[j]);
    return status;
}

KEF_BOTH_PRECISIONS(outliers_detection);

}  // namespace kef::stats
