// Multivariate normal numbers: a + T z with the Cholesky factor T of the covariance.
#include <climits>

#include "distributions/frame.h"
#include "distributions/triangular.h"

namespace kef::dist {

namespace {

// n standard normal vectors of dimension d in r become a + T z.
template <class T>
void transform_vectors(std::ptrdiff_t n, T* r, std::int32_t d, std::int32_t storage, const T* a,
                       const T* t) {
    const std::ptrdiff_t stride = d;
    switch (storage) {
        case VTS_MATRIX_FULL:
            triangular::multiply(
                d, n, r, [=](std::ptrdiff_t i, std::ptrdiff_t j) { return t[i * stride + j]; });
            break;
        case VTS_MATRIX_PACKED:
            triangular::multiply(d, n, r, [=](std::ptrdiff_t i, std::ptrdiff_t j) {
                return t[j * (2 * stride - 1 - j) / 2 + i];
            });
            break;
        case VTS_MATRIX_DIAGONAL:
            for (; n > 0; --n, r += d)
                transform(
                    d, r, [](auto z, auto s, auto m) { return z * s + m; }, r, t, a);
            return;
        default: return;
    }
    for (; n > 0; --n, r += d)
        transform(
            d, r, [](auto x, auto m) { return x + m; }, r, a);
}

// Vectors of a panel: enough to use each tile of T often, and few enough to stay in cache.
std::int32_t panel(std::int32_t d) {
    return std::max({2 * block / d, std::min(128, INT_MAX / d), 1});
}

template <class T>
std::int32_t gaussian_mv(std::int32_t method, kef_stream* stream, std::int32_t n, T* r,
                         std::int32_t d, std::int32_t storage, const T* a, const T* t) {
    if (d == 1) return normal(method, stream, n, r, a[0], t[0]);
    std::int32_t status = VTS_STATUS_OK;
    for (std::int32_t vectors; n > 0 && d > 0 && status >= 0; n -= vectors) {
        vectors = std::min(n, panel(d));
        status = normal(method, stream, vectors * d, r, T(0), T(1));
        if (status >= 0) transform_vectors(vectors, r, d, storage, a, t);
        r += static_cast<std::ptrdiff_t>(vectors) * d;
    }
    return status;
}

}  // namespace

}  // namespace kef::dist

std::int32_t _vtsdRngGaussianMV(std::int32_t method, kef_stream* stream, std::int32_t n, double* r,
                                std::int32_t dimension, std::int32_t storage, const double* a,
                                const double* t) {
    return kef::dist::gaussian_mv(method, stream, n, r, dimension, storage, a, t);
}

std::int32_t _vtssRngGaussianMV(std::int32_t method, kef_stream* stream, std::int32_t n, float* r,
                                std::int32_t dimension, std::int32_t storage, const float* a,
                                const float* t) {
    return kef::dist::gaussian_mv(method, stream, n, r, dimension, storage, a, t);
}
