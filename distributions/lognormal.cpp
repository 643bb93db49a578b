// Lognormal numbers: displacement + scale exp(normal number). The exponential runs under the
// caller's callback: it overflows where the number does.
#include "distributions/frame.h"

namespace kef::dist {

namespace {

KEF_IN_PLACE(exp, Exp)

template <class T>
std::int32_t lognormal(std::int32_t method, kef_stream* stream, std::int32_t n, T* r, T a, T sigma,
                       T b, T beta) {
    const std::int32_t normal_method =
        method == 0 ? VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS : VTS_METHOD_GAUSSIAN_INVERSION;
    const std::int32_t status = normal(normal_method, stream, n, r, a, sigma);
    if (status < 0) return status;
    exp(n, r);
    transform(
        n, r, [=](auto x) { return x * beta + b; }, r);
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
