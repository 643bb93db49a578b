// Checked calls of the C++ interface beside the C functions, on 1000 elements: time-stamp ticks of
// a call, the least of many, the two by turns; and the same inside a scope of element errors.
#include <x86intrin.h>

#include <algorithm>
#include <cstdio>
#include <limits>

#include "kef.hpp"

namespace {

template <class Call> double ticks(Call&& call) {
    constexpr int calls = 8;  // a reading of the counter takes as long as 20 additions
    const auto start = __rdtsc();
    for (int i = 0; i < calls; ++i) call();
    return double(__rdtsc() - start) / calls;
}

double worst = 0;

template <class C, class Checked> void row(const char* name, C&& c, Checked&& checked) {
    double best[3] = {1e30, 1e30, 1e30};
    for (int round = 0; round < 4000; ++round) {
        best[0] = std::min(best[0], ticks(c));
        best[1] = std::min(best[1], ticks(checked));
        kef::Errors scope(kef::OnError::raise);
        best[2] = std::min(best[2], ticks(checked));
    }
    const double more[2] = {100 * (best[1] / best[0] - 1), 100 * (best[2] / best[0] - 1)};
    worst = std::max({worst, more[0], more[1]});
    std::printf("| %-28s | %8.0f | %8.0f | %+.1f %% | %+.1f %% |\n", name, best[0], best[1],
                more[0], more[1]);
}

}  // namespace

int main() {
    constexpr int n = 1000;
    kef::Stream stream, other = stream;
    std::vector<float> a(n), b(n), r(n);
    std::vector<double> x(n), y(n), z(n);
    std::vector<std::complex<double>> w(n), v(n);
    kef::Uniform(0.5f, 2.0f).fill(stream, a);
    kef::Uniform(0.5f, 2.0f).fill(stream, b);
    kef::Uniform(0.5, 2.0).fill(stream, x);
    kef::Uniform(0.5, 2.0).fill(stream, y);
    std::fill(w.begin(), w.end(), std::complex<double>(1, 2));

    std::puts(
        "| ticks a call, n = 1000 | C | C++ | more | more in a scope |\n|---|---|---|---|---|");
    row(
        "single Add", [&] { _vtmsAdd(n, a.data(), b.data(), r.data()); },
        [&] { kef::add(a, b, r); });
    row(
        "single Sqr", [&] { _vtmsSqr(n, a.data(), r.data()); }, [&] { kef::sqr(a, r); });
    row(
        "single Sqrt", [&] { _vtmsSqrt(n, a.data(), r.data()); }, [&] { kef::sqrt(a, r); });
    row(
        "single Exp, EP", [&] { _vtmsExp_11(n, a.data(), r.data()); },
        [&] { kef::exp(a, r, kef::enhanced); });
    row(
        "double Mul", [&] { _vtmdMul(n, x.data(), y.data(), z.data()); },
        [&] { kef::mul(x, y, z); });
    row(
        "double Exp", [&] { _vtmdExp(n, x.data(), z.data()); }, [&] { kef::exp(x, z); });
    row(
        "double SinCos", [&] { _vtmdSinCos(n, x.data(), y.data(), z.data()); },
        [&] { kef::sincos(x, y, z); });
    auto* const cw = reinterpret_cast<kef_complex16*>(w.data());
    auto* const cv = reinterpret_cast<kef_complex16*>(v.data());
    row(
        "complex double Mul", [&] { _vtmzMul(n, cw, cw, cv); }, [&] { kef::mul(w, w, v); });
    row(
        "double PackI", [&] { _vtmdPackI(n / 2, x.data(), 2, z.data()); },
        [&] { kef::pack_stride(x, 2, std::span(z).first(n / 2)); });

    std::vector<std::int32_t> index(n), mask(n);
    for (int i = 0; i < n; ++i) index[std::size_t(i)] = i * 7 % n, mask[std::size_t(i)] = i % 3;
    row(
        "double PackV, checks indices", [&] { _vtmdPackV(n, x.data(), index.data(), z.data()); },
        [&] { kef::pack_index(x, index, z); });
    row(
        "double PackM, counts marks", [&] { _vtmdPackM(n, x.data(), mask.data(), z.data()); },
        [&] { kef::pack_mask(x, mask, z); });

    row(
        "uniform, MT19937",
        [&] { _vtsdRngUniform(VTS_METHOD_ACCURATE, other.handle(), n, x.data(), 0, 1); },
        [&] { kef::Uniform(0.0, 1.0).fill(stream, x); });
    row(
        "normal, MT19937",
        [&] { _vtsdRngGaussian(VTS_METHOD_GAUSSIAN_INVERSION, other.handle(), n, x.data(), 0, 1); },
        [&] { kef::Normal(0.0, 1.0).fill(stream, x); });

    // Statistics and splines beside tasks that are ready.
    const std::int64_t p = 1, count = n, storage = VTS_SS_STORAGE_COLUMNS;
    double mean, weights[2] = {};
    kef_ss_task* task = nullptr;
    __vtsdSSNewTask(&task, &p, &count, &storage, x.data(), nullptr, nullptr, 1);
    __vtsdSSEditTask(task, VTS_SS_ID_MEAN, &mean);
    __vtsdSSEditTask(task, VTS_SS_ID_ACCUMULATED_WEIGHTS, weights);
    kef::Statistics<> s(1, kef::Estimate::mean);
    row(
        "mean", [&] { _vtsdSSBasic(task, VTS_SS_ESTIMATE_MEAN, VTS_SS_METHOD_TILED); },
        [&] { s.add(kef::Sample(x, 1)); });
    __vtsSSDeleteTask(&task);

    std::vector<double> at(100), values(100), coefficients(4 * 99);
    for (std::size_t i = 0; i < at.size(); ++i) at[i] = double(i), values[i] = double(i % 7);
    kef::Uniform(0.0, 99.0).fill(stream, x);
    const kef::Spline spline(kef::SplineKind::natural, at, values);
    kef_df_task* fit = nullptr;
    const std::int32_t value_alone = 1;
    kef_df_kernel_dNewTask1D(&fit, 100, at.data(), DF_NON_UNIFORM, 1, values.data(), DF_BY_ROWS, 0);
    kef_df_kernel_dEditPPSpline1D(fit, DF_CUBIC, DF_TYPE_NATURAL, DF_NOT_A_KNOT, nullptr, 0,
                                  nullptr, coefficients.data(), DF_BY_ROWS);
    kef_df_kernel_dDFNaturalCubicSpline1D(fit, 0);
    row(
        "values of a cubic spline",
        [&] {
            kef_df_kernel_dDFInterpolate1D(fit, DF_SPLINE, n, x.data(), DF_ANY_ORDER, 1,
                                           &value_alone, z.data(), DF_BY_ROWS, nullptr);
        },
        [&] { spline.evaluate(x, z); });
    kef_df_kernel_DeleteTask(&fit);
    std::printf("worst: %+.1f %%\n", worst);
}
