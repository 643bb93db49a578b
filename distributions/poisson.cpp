// Poisson numbers of one mean.
#include "distributions/discrete.h"
#include "distributions/poisson_normal.h"

namespace kef::dist {

namespace {

struct PoissonLaw {
    static constexpr double low = 0, high = __builtin_huge_val();
    double mode, deviation, lambda;

    explicit PoissonLaw(double lambda)
        : mode(whole(lambda)), deviation(__builtin_sqrt(lambda)), lambda(lambda) {}
    Ratio ratio(double k) const { return {lambda, k + 1}; }
    double log_weight(double k) const { return log_poisson(both(k), both(lambda))[0]; }
};

// Uniforms alone: the table or the strips.
std::int32_t from_uniforms(kef_stream* stream, std::int32_t n, std::int32_t* r, double lambda) {
    Uniforms uniforms(stream);
    if (lambda > 0 && lambda < huge_mean) sample(uniforms, n, r, PoissonLaw(lambda));
    else std::fill(r, r + std::max(n, 0), lambda > 0 ? INT32_MAX : 0);
    return uniforms.status();
}

// Normal numbers for large means.
std::int32_t from_normals(kef_stream* stream, std::int32_t n, std::int32_t* r, double lambda) {
    if (!(lambda >= 100 && lambda < huge_mean)) return from_uniforms(stream, n, r, lambda);
    const PoissonFromNormal law(lambda);
    float normals[block] = {}, u[2 * block] = {};
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        Uniforms uniforms(
            stream, _vtssRngGaussian(VTS_METHOD_GAUSSIAN_BOX_MULLER, stream, m, normals, 0, 1));
        if (!uniforms.fill(m, u)) return uniforms.status();
        if (law.coarse() && !uniforms.fill(m, u + block)) return uniforms.status();
        law.fill(uniforms, m, out, normals, u, u + block);
        return uniforms.status();
    });
}

}  // namespace

}  // namespace kef::dist

std::int32_t _vtsiRngPoisson(std::int32_t method, kef_stream* stream, std::int32_t n,
                             std::int32_t* r, double lambda) {
    constexpr std::int32_t (*methods[])(kef_stream*, std::int32_t, std::int32_t*, double) = {
        kef::dist::from_uniforms, kef::dist::from_normals};
    return methods[method & ~VTS_METHOD_ACCURATE](stream, n, r, lambda);
}
