// _vtsdSSRobustCovariance, _vtssSSRobustCovariance: S-estimate with the translated biweight (Rocke,
// Ann. Stat. 24:1327, 1996).
#include "stats/bacon.h"
#include "stats/biweight.h"
#include "stats/computation.h"
#include "stats/m_estimate.h"

namespace kef::stats {

namespace {

// Calls f(j, two numbers) for the pairs of n, 0 beside the last of an odd number.
template <class F> void for_each_two(const double* x, std::ptrdiff_t n, F f) {
    std::ptrdiff_t j = 0;
    for (; j + 2 <= n; j += 2) f(j, vm::load_as<d2>(x + j));
    if (j < n) f(j, d2{x[j], 0});
}

// The t that makes the mean of rho(sqrt(square/t)) the target: Newton's method for ln t, between
// the bounds found so far.
double scale_of(const Biweight& rho, const double* square, std::ptrdiff_t n, double t) {
    double low = 0, high = HUGE_VAL;
    for (int k = 0; k < 100; ++k) {
        d2 sum{}, slope{};  // rho(0) = 0
        for_each_two(square, n, [&](std::ptrdiff_t, d2 q) {
            const d2 u2 = q / t;
            const auto [value, weight] = rho.at(vm::square_root(u2));
            sum += value;
            slope += weight == 0.0 ? d2{} : weight * u2;
        });
        const double excess = sum[0] + sum[1] - static_cast<double>(n) * rho.target();
        const double step = 2 * excess / (slope[0] + slope[1]);
        (excess > 0 ? low : high) = t;
        double next = std::fabs(step) < 2 ? t * exponential(step) : 0;
        if (!(next > low && next < high))
            next = low == 0 ? high / 4 : high == HUGE_VAL ? low * 4 : (low + high) / 2;
        const bool done = std::fabs(next - t) <= t * 0x1p-48;
        t = next;
        if (done) break;
    }
    return t;
}

template <class T> bool start(Scatter<T>& s, const Moments& to, const Moments& work) {
    if (Bacon<T>::enough(s.n, s.p)) {
        Bacon<T> bacon(s, to);
        if (bacon(BaconStart::median, 0.05, 0) == VTS_SS_STATUS_OK && 2 * bacon.size() >= s.n)
            return true;
    }
    return m_estimate(s, to, work);
}

}  // namespace

template <class T> std::int32_t robust_covariance(Task& task) {
    const auto* parameters = static_cast<const T*>(task.robust_parameters);
    if (integer_at(task, task.robust_parameter_count) != 4) return VTS_SS_STATUS_BAD_PARAMETERS;
    const double breakdown = parameters[0], rejection = parameters[1], tolerance = parameters[2],
                 limit = parameters[3];
    if (!(breakdown >= 1e-9 && breakdown <= 0.5) || !(rejection >= 1e-30 && rejection < 1) ||
        !(tolerance >= 0 && tolerance < 1) || !(limit >= 1 && limit <= 0x1p31))
        return VTS_SS_STATUS_BAD_PARAMETERS;

    const ScatterPlaces places(task, 2);
    const std::ptrdiff_t n = places.n, p = places.p;
    if (p == 0) return VTS_SS_STATUS_OK;
    if (n <= p) return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;
    char* block = scratch(task, places.layout);
    if (block == nullptr) return VTS_SS_STATUS_NO_MEMORY;
    Scatter<T> s(task, places, block);

    const double most = static_cast<double>(n - p) / (2 * static_cast<double>(n));
    const Biweight rho(static_cast<double>(p), std::min(breakdown, most), rejection);
    Moments estimate = s.moments(0), last = s.moments(1);
    if (!start(s, estimate, last)) return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    std::int32_t status = VTS_SS_STATUS_ITERATION_LIMIT;
    double scale = 1;
    for (double k = 0;; ++k) {
        if (!s.measure(estimate)) return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
        scale = scale_of(rho, s.square, n, scale);
        for (std::ptrdiff_t a = 0; a < p * (p + 1) / 2; ++a) estimate.products[a] *= scale;
        if (k > 0 && settled(last, estimate, tolerance)) status = VTS_SS_STATUS_OK;
        if (status == VTS_SS_STATUS_OK || k >= limit) break;
        for_each_two(s.square, n, [&](std::ptrdiff_t j, d2 q) {
            const d2 weight = rho.at(vm::square_root(q / scale)).weight;
            s.weight[j] = weight[0];
            if (j + 1 < n) s.weight[j + 1] = weight[1];
        });
        std::swap(estimate, last);
        s.weigh(estimate, static_cast<double>(n));
    }

    for (std::ptrdiff_t a = 0; a < p; ++a)
        if (!(estimate.at(a, a) <= std::numeric_limits<T>::max()))
            return VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
    auto* mean = static_cast<T*>(task.robust_mean);
    const auto C = matrix_at<T>(task, positive_at(task, task.dimension), task.robust_covariance,
                                task.robust_covariance_storage);
    for (std::ptrdiff_t a = 0; a < p; ++a) {
        mean[s.variable[a]] = static_cast<T>(estimate.mean[a]);
        for (std::ptrdiff_t b = 0; b <= a; ++b)
            C.put(s.variable[a], s.variable[b], estimate.at(a, b));
    }
    return status;
}

KEF_BOTH_PRECISIONS(robust_covariance);

}  // namespace kef::stats
