// _vtsdSSCorParametrization, _vtssSSCorParametrization: the spectral decomposition of Rebonato &
// Jaeckel (J. Risk 2(2), 1999). With R = S diag(l) S^T and l' = max(l, 0), the rows of S
// diag(sqrt l') scaled to length 1 are B, and B B^T is the result.
#include "stats/computation.h"
#include "stats/derive.h"
#include "stats/eigen.h"

namespace kef::stats {

template <class T> std::int32_t correlation_parametrization(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    const std::ptrdiff_t count = count_selected(task, p);
    if (count == 0) return VTS_SS_STATUS_OK;
    KeptLayout layout;
    const auto listed = layout.reserve(count, sizeof(std::ptrdiff_t));
    const auto solver = SymmetricEigen::reserve(layout, count);
    const auto rows = layout.reserve(count, count, sizeof(double));
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    auto* const variable = reinterpret_cast<std::ptrdiff_t*>(start + listed);
    list_selected(task, p, variable);

    const auto R = matrix_at<T>(task, p, task.correlation, task.correlation_storage);
    SymmetricEigen eigen(start + solver, count);
    const auto get = [&](std::ptrdiff_t i, std::ptrdiff_t j) {
        return double{R.at(variable[i], variable[j])};
    };
    for (std::ptrdiff_t i = 0; i < count; ++i)
        for (std::ptrdiff_t j = 0; j <= i; ++j)
            if (get(i, j) - get(i, j) != 0) return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    if (!eigen.solve(get)) return VTS_SS_STATUS_ITERATION_LIMIT;

    auto* const B = reinterpret_cast<double*>(start + rows);
    double most = 0;
    for (std::ptrdiff_t r = 0; r < count; ++r) {
        const double value = eigen.scaled_value(r), root = value > 0 ? std::sqrt(value) : 0;
        most = value > most ? value : most;
        for (std::ptrdiff_t i = 0; i < count; ++i) B[i * count + r] = eigen.vector(r)[i] * root;
    }
    // A row of nothing but rounding has no direction: a unit vector that no other row shares.
    const double least = static_cast<double>(count) * 0x1p-52 * most;
    const auto matrix =
        matrix_at<T>(task, p, task.parametrized_matrix, task.parametrized_matrix_storage);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        double* const row = B + i * count;
        const double square = dot(row, row, count);
        const double scale = square > least ? 1 / std::sqrt(square) : 0;
        for (std::ptrdiff_t k = 0; k < count; ++k) row[k] *= scale;
        for (std::ptrdiff_t j = 0; j <= i; ++j)
            matrix.put(variable[i], variable[j],
                       i == j ? 1 : within_unit(dot(row, B + j * count, count)));
    }
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(correlation_parametrization);

}  // namespace kef::stats
