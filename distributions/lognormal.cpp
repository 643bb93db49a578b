// Lognormal numbers: displacement + scale exp(normal number). The exponential runs under the
// caller's callback: it overflows where the number does.
#include "distributions/closed_form.h"

namespace kef::dist {

namespace {

template <class T>
std::int32_t lognormal(std::int32_t method, kef_stream* stream, std::int32_t n, T* r, T a, T sigma,
                       T b, T beta) {
    const std::int32_t normal_method =
        method == 0 ? VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS : VTS_METHOD_GAUSSIAN_INVERSION;
    const std::int32_t status = normal(normal_method, stream, n, r, a, sigma);
    if (status < 0) return status;
    exp(n, r);
    affine(n, r, b, beta);
    return status;
}

}  // namespace

}  // namespace kef::dist

std::int32_t _vtsdRngLognormal(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                               double a, double sigma, double b, double beta) {
    return kef::dist::lognormal(method, stream, n, r, a, sigma, b, beta);
}

std::int32_t _vtssRngLognormal(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                               float a, float sigma, float b, float beta) {
    return kef::dist::lognormal(method, stream, n, r, a, sigma, b, beta);
}
