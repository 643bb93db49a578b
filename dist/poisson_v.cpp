// Poisson numbers, each of its own mean: normal numbers for means from 10, inversion below.
#include <array>

#include "dist/poisson_normal.h"

namespace kef::dist {

namespace {

bool is_large(double mean) { return mean >= PoissonFromNormal::least_mean; }

// 1/k
constexpr int most = 100;  // P(K > 100) < 2^-200 for means below 10
constexpr auto inverse = [] {
    std::array<double, most + 1> table{};
    for (int k = 1; k <= most; ++k) table[k] = 1.0 / k;
    return table;
}();

// Inversion from 0 upwards by one uniform, mean < 10. A step inside the uniform's cell of 2^-24
// is decided by a further one.
std::int32_t invert(Uniforms& uniforms, float u, double mean) {
    if (!(mean > 0)) return 0;
    double p = exp_of(-mean), sum = p;
    std::int32_t k = 0;
    const auto pass = [&](double limit) {
        while (sum <= limit && k < most) {
            p *= mean * inverse[++k];
            sum += p;
        }
    };
    const double cell = Uniforms::cell(u) * 0x1p-24;
    pass(cell);
    if (sum < cell + 0x1p-24) [[unlikely]]
        pass(cell + uniforms.fraction() * 0x1p-24);
    return k;
}

}  // namespace

}  // namespace kef::dist

using namespace kef::dist;

std::int32_t _vtsiRngPoissonV(std::int32_t, kef_stream* stream, std::int32_t n, std::int32_t* r,
                              const double* lambda) {
    float u[block], normals[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const double* const mean = lambda;
        lambda += m;
        Uniforms uniforms(stream);
        if (!uniforms.fill(m, u)) return uniforms.status();
        const auto large = static_cast<std::int32_t>(std::count_if(mean, mean + m, is_large));
        if (large > 0)
            uniforms.note(
                _vtssRngGaussian(VTS_METHOD_GAUSSIAN_BOX_MULLER, stream, large, normals, 0, 1));
        const float* normal = normals;
        for (std::int32_t i = 0; i < m && !uniforms.failed(); ++i)
            if (is_large(mean[i])) {
                const PoissonFromNormal law(mean[i]);
                const float finer = law.coarse() ? uniforms.next() : 0;
                out[i] =
                    mean[i] < huge_mean ? as_count(law(uniforms, *normal, u[i], finer)) : INT32_MAX;
                ++normal;
            } else {
                out[i] = invert(uniforms, u[i], mean[i]);
            }
        return uniforms.status();
    });
}
