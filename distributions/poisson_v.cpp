// Poisson numbers, each of its own mean: normal numbers for means from 10, inversion below.
#include <array>

#include "distributions/poisson_normal.h"

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

// e^-mean of the means below 10, and a number for the others.
void probabilities_of_0(std::int32_t m, const double* mean, double* r) {
    const auto of = [](vm::doubles x) {
        return vm::exp_core<vm::LA>(-vm::minimum(vm::maximum(x, vm::doubles{}), all(10.0)));
    };
    std::int32_t i = 0;
    for (; i + vm::lanes<double> <= m; i += vm::lanes<double>)
        vm::store(r + i, of(vm::load(mean + i)));
    for (; i < m; ++i) r[i] = of(all(mean[i]))[0];
}

// Inversion from 0 upwards by one uniform, mean < 10, p = e^-mean. A step inside the uniform's cell
// of 2^-24 is decided by a further one.
std::int32_t invert(Uniforms& uniforms, float u, double mean, double p) {
    if (!(mean > 0)) return 0;
    double sum = p;
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
    double zeros[block];
    return in_blocks(n, r, [&](std::int32_t* out, std::int32_t m) {
        const double* const mean = lambda;
        lambda += m;
        Uniforms uniforms(stream);
        if (!uniforms.fill(m, u)) return uniforms.status();
        const auto large = static_cast<std::int32_t>(std::count_if(mean, mean + m, is_large));
        if (large > 0)
            uniforms.note(
                _vtssRngGaussian(VTS_METHOD_GAUSSIAN_BOX_MULLER, stream, large, normals, 0, 1));
        if (large < m) probabilities_of_0(m, mean, zeros);
        const float* normal = normals;
        for (std::int32_t i = 0; i < m && !uniforms.failed(); ++i)
            if (mean[i] >= huge_mean) {
                out[i] = INT32_MAX;
                ++normal;
            } else if (is_large(mean[i])) {
                const PoissonFromNormal law(mean[i]);
                const float finer = law.coarse() ? static_cast<float>(uniforms.fraction()) : 0;
                out[i] = as_count(law(uniforms, *normal++, u[i], finer));
            } else {
                out[i] = invert(uniforms, u[i], mean[i], zeros[i]);
            }
        return uniforms.status();
    });
}
