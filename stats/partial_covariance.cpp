// _vtsdSSPartialCovariance, _vtssSSPartialCovariance: P = C_YY - C_YZ C_ZZ^-1 C_ZY, the covariance
// of some variables Y where others Z are held fixed (Anderson, An Introduction to Multivariate
// Statistical Analysis, 3rd ed., 2.5): with C_ZZ = L L^T and U = L^-1 C_ZY, C_YY - U^T U.
#include "stats/cholesky.h"
#include "stats/computation.h"
#include "stats/derive.h"

namespace kef::stats {

namespace {

// The sign of variable i's mark; 0 for one that the indices leave out.
int mark_of(const Task& task, std::ptrdiff_t i) {
    const std::int64_t mark = integer_at(task, task.partial_indices, i);
    return is_selected(task, i) ? (mark > 0) - (mark < 0) : 0;
}

}  // namespace

template <class T> std::int32_t partial_covariance(Task& task) {
    const std::ptrdiff_t p = positive_at(task, task.dimension);
    std::ptrdiff_t free = 0, fixed = 0;
    for (std::ptrdiff_t i = 0; i < p; ++i) {
        const int mark = mark_of(task, i);
        free += mark > 0, fixed += mark < 0;
    }
    if (free == 0 || fixed == 0) return VTS_SS_STATUS_NOTHING_MARKED;

    KeptLayout layout;
    const auto listed = layout.reserve(free + fixed, sizeof(std::ptrdiff_t));
    const auto factor = Cholesky::reserve(layout, fixed);
    const auto solutions = layout.reserve(free, fixed, sizeof(double));
    const auto results = layout.reserve(free, free, sizeof(double));
    char* start = scratch(task, layout);
    if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    auto *y = reinterpret_cast<std::ptrdiff_t*>(start + listed), *z = y + free;
    for (std::ptrdiff_t i = 0, a = 0, b = 0; i < p; ++i) {
        const int mark = mark_of(task, i);
        if (mark > 0) y[a++] = i;
        if (mark < 0) z[b++] = i;
    }

    const auto C = task.covariance != nullptr
                       ? matrix_at<T>(task, p, task.covariance, task.covariance_storage)
                       : matrix_at<T>(task, p, task.correlation, task.correlation_storage);
    Cholesky L(start + factor, fixed);
    if (!L.factor(C, z)) return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    // The columns of U one after the other.
    auto* const u = reinterpret_cast<double*>(start + solutions);
    auto* const P = reinterpret_cast<double*>(start + results);
    const double least = static_cast<double>(fixed + 1) * std::numeric_limits<T>::epsilon();
    for (std::ptrdiff_t a = 0; a < free; ++a) {
        double* const column = u + a * fixed;
        for (std::ptrdiff_t k = 0; k < fixed; ++k) column[k] = C.at(y[a], z[k]);
        L.forward(column);
        for (std::ptrdiff_t b = 0; b <= a; ++b)
            P[a * free + b] = C.at(y[a], y[b]) - dot(column, u + b * fixed, fixed);
        // What Z determines to rounding varies no more.
        if (P[a * free + a] <= least * C.at(y[a], y[a])) P[a * free + a] = 0;
    }
    const auto variance = [&](std::ptrdiff_t a) { return P[a * free + a]; };
    const auto covariance = [&](std::ptrdiff_t a, std::ptrdiff_t b) {
        return variance(a) == 0 || variance(b) == 0 ? 0 : P[a * free + b];
    };
    if (task.partial_covariance != nullptr)
        matrix_at<T>(task, free, task.partial_covariance, task.partial_covariance_storage)
            .fill(covariance);
    if (task.partial_correlation != nullptr)
        matrix_at<T>(task, free, task.partial_correlation, task.partial_correlation_storage)
            .fill([&](std::ptrdiff_t a, std::ptrdiff_t b) {
                return a == b ? 1 : correlation_of(covariance(a, b), variance(a), variance(b));
            });
    return VTS_SS_STATUS_OK;
}

KEF_BOTH_PRECISIONS(partial_covariance);

}  // namespace kef::stats
