// Basic against two passes in 113-bit arithmetic, and the properties of its kernels.
#include <quadmath.h>

#include <cstring>

#include "tests/stats_support.h"

namespace stats_tests {
namespace {

// All results by definition. Matrices full.
template <class T>
struct Reference {
    using Q = __float128;
    int p, n;
    Q W = 0, W2 = 0, N;
    std::vector<Q> m, C;
    std::vector<Q> R[5], M[5];

    Reference(int p, int n, const std::vector<T>& x, const std::vector<T>& w)
        : p(p), n(n), m(p), C(p * p) {
        for (int k = 2; k <= 4; ++k) R[k].assign(p, 0), M[k].assign(p, 0);
        const auto weight = [&](int j) { return w.empty() ? Q(1) : Q(w[j]); };
        for (int j = 0; j < n; ++j) W += weight(j), W2 += weight(j) * weight(j);
        N = W - W2 / W > 0 ? W - W2 / W : W;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < p; ++i) {
                const Q v = x[j * p + i];
                m[i] += weight(j) * v / W;
                R[2][i] += weight(j) * v * v, R[3][i] += weight(j) * v * v * v;
                R[4][i] += weight(j) * v * v * v * v;
            }
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < p; ++i) {
                const Q d = Q(x[j * p + i]) - m[i];
                M[2][i] += weight(j) * d * d, M[3][i] += weight(j) * d * d * d;
                M[4][i] += weight(j) * d * d * d * d;
                for (int k = 0; k < p; ++k)
                    C[i * p + k] += weight(j) * d * (Q(x[j * p + k]) - m[k]);
            }
    }

    // Compares with a bound on the error in units of the result's natural scale: odd
    // moments are compared with the spread, not with themselves. Central values that
    // come from raw moments have lost what cancelled.
    void expect_near(const Problem<T>& r, double bound, bool from_raw) const {
        const auto near = [&](const char* name, int i, T value, Q expected, Q scale) {
            const double error = double(fabsq(Q(value) - expected) / scale);
            EXPECT_LE(error, bound)
                << name << " of variable " << i << ": " << value << " for " << double(expected);
        };
        for (int i = 0; i < p; ++i) {
            const Q s = sqrtq(M[2][i] / W), c2 = M[2][i] / N;
            const Q loss2 = from_raw ? R[2][i] / M[2][i] : 1,
                    loss4 = from_raw ? R[4][i] / M[4][i] : 1;
            near("mean", i, r.mean[i], m[i], fabsq(m[i]) + s);
            near("raw2", i, r.raw2[i], R[2][i] / W, R[2][i] / W);
            near("raw3", i, r.raw3[i], R[3][i] / W, powq(R[2][i] / W, 1.5));
            near("raw4", i, r.raw4[i], R[4][i] / W, R[4][i] / W);
            near("sum", i, r.sum[i], m[i] * W, (fabsq(m[i]) + s) * W);
            near("raw_sum2", i, r.raw_sum2[i], R[2][i], R[2][i]);
            near("raw_sum3", i, r.raw_sum3[i], R[3][i], powq(R[2][i] / W, 1.5) * W);
            near("raw_sum4", i, r.raw_sum4[i], R[4][i], R[4][i]);
            near("central2", i, r.central2[i], c2, c2 * loss2);
            near("central3", i, r.central3[i], M[3][i] / N, M[4][i] / N / s * loss4);
            near("central4", i, r.central4[i], M[4][i] / N, M[4][i] / N * loss4);
            near("central_sum2", i, r.central_sum2[i], M[2][i], M[2][i] * loss2);
            near("central_sum3", i, r.central_sum3[i], M[3][i], M[4][i] / s * loss4);
            near("central_sum4", i, r.central_sum4[i], M[4][i], M[4][i] * loss4);
            const Q g1 = M[3][i] / W / (s * s * s), k = M[4][i] / W / (s * s * s * s);
            near("skewness", i, r.skewness[i], g1, k * loss4);
            near("kurtosis", i, r.kurtosis[i], k - 3, 2 * k * loss4);
            near("variation", i, r.variation[i], sqrtq(c2) / m[i], fabsq(sqrtq(c2) / m[i]) * loss2);
            for (int j = 0; j < p; ++j) {
                const Q scale = sqrtq(C[i * p + i]) * sqrtq(C[j * p + j]);
                near("cross_product", i, r.cross_product[i * p + j], C[i * p + j], scale);
                near("covariance", i, r.covariance[i * p + j], C[i * p + j] / N, scale / N);
                near("correlation", i, r.correlation[i * p + j], C[i * p + j] / scale, 1);
            }
        }
    }
};

template <class T>
void check_against_reference(double bound) {
    for (int p : {1, 2, 3, 10})
        for (int n : {2, 3, 10, 255, 257, 1000})
            for (bool weighted : {false, true}) {
                const auto data = normal_data<T>(p, n, 1.5);
                const auto w = weighted ? weights_for<T>(n) : std::vector<T>();
                const Reference<T> reference(p, n, data, w);
                for (int storage : {VTS_SS_STORAGE_ROWS, VTS_SS_STORAGE_COLUMNS})
                    for (int method : data_methods) {
                        SCOPED_TRACE(testing::Message()
                                     << "p " << p << " n " << n << " weighted " << weighted
                                     << " storage " << storage << " method " << method);
                        Problem<T> problem(p, n, data, w, storage);
                        ASSERT_EQ(VTS_SS_STATUS_OK, problem.basic(everything, method));
                        reference.expect_near(problem, bound, method == VTS_SS_METHOD_RAW);
                    }
            }
}

TEST(StatsBasic, EqualsTheDefinitions) {
    check_against_reference<double>(3e-14);
    check_against_reference<float>(2e-7);
}

}  // namespace
}  // namespace stats_tests
