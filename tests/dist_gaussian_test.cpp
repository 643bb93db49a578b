// Normal, lognormal and multivariate normal numbers.
#include "tests/dist_support.h"

namespace {

using namespace dist_tests;

// The functions of one precision.
std::int32_t gaussian(int method, kef_stream* s, std::int32_t n, double* r, double a,
                      double sigma) {
    return _vtsdRngGaussian(method, s, n, r, a, sigma);
}
std::int32_t gaussian(int method, kef_stream* s, std::int32_t n, float* r, double a, double sigma) {
    return _vtssRngGaussian(method, s, n, r, float(a), float(sigma));
}
std::int32_t lognormal(int method, kef_stream* s, std::int32_t n, double* r, const double* p) {
    return _vtsdRngLognormal(method, s, n, r, p[0], p[1], p[2], p[3]);
}
std::int32_t lognormal(int method, kef_stream* s, std::int32_t n, float* r, const double* p) {
    return _vtssRngLognormal(method, s, n, r, float(p[0]), float(p[1]), float(p[2]), float(p[3]));
}
std::int32_t gaussian_mv(int method, kef_stream* s, std::int32_t n, double* r, int d, int storage,
                         const double* a, const double* t) {
    return _vtsdRngGaussianMV(method, s, n, r, d, storage, a, t);
}
std::int32_t gaussian_mv(int method, kef_stream* s, std::int32_t n, float* r, int d, int storage,
                         const float* a, const float* t) {
    return _vtssRngGaussianMV(method, s, n, r, d, storage, a, t);
}

template <class T> Draw<T> normal(int method, double a = 0, double sigma = 1) {
    return [=](kef_stream* s, std::int32_t n, T* r) { return gaussian(method, s, n, r, a, sigma); };
}

double below(double x) { return std::erfc(-x * M_SQRT1_2) / 2; }
const Law standard_normal = {below, [](double x) { return below(-x); }, 0, 1, 3};

constexpr int methods[] = {VTS_METHOD_GAUSSIAN_BOX_MULLER, VTS_METHOD_GAUSSIAN_BOX_MULLER_PAIRS,
                           VTS_METHOD_GAUSSIAN_INVERSION};

template <class T> class Normal : public testing::Test {};
using Types = testing::Types<double, float>;
TYPED_TEST_SUITE(Normal, Types);

TYPED_TEST(Normal, Law) {
    for (const int method : methods) {
        SCOPED_TRACE(method);
        for (const auto& [a, sigma] :
             {std::pair(0.0, 1.0), {-3.0, 0.25}, {1e3, 50.0}, {0.0, 1e-30}})
            expect_law(affine(standard_normal, a, sigma), normal<TypeParam>(method, a, sigma));
        expect_tails(standard_normal, normal<TypeParam>(method));
    }
}

TYPED_TEST(Normal, StreamAndState) {
    for (const int method : methods) {
        SCOPED_TRACE(method);
        const Draw<TypeParam> draw = normal<TypeParam>(method, 2, 3);
        expect_contract(draw, 2501);
        expect_split(draw, {3, 3});
        expect_split(draw, {1, 2, 1, 1024, 5, 1, 1, 3000, 1025, 7});
        EXPECT_EQ(from_listed(draw, 99, {}),
                  from_listed(normal<TypeParam>(method | VTS_METHOD_ACCURATE, 2, 3), 99, {}));
    }
    using T = TypeParam;
    for (const int n : {1, 2, 1023, 1024, 1025, 5000}) {
        EXPECT_EQ(consumption(normal<T>(0), n), 2 * n);
        EXPECT_EQ(consumption(normal<T>(1), n), n + n % 2);
        EXPECT_EQ(consumption(normal<T>(2), n), n);
    }
}

// The formulas, to the accuracy of the least kernels, on listed uniforms; those of exactly 0 among
// them.
TYPED_TEST(Normal, Formulas) {
    using T = TypeParam;
    const double error = std::is_same_v<T, double> ? 0x1p-24 : 0x1p-9;
    const double u[] = {0.5, 0.25, 0.0, 0.875, 0.125, 0.0, 0.9375, 0.625};
    const std::vector<double> listed(u, u + 8);
    const std::vector<T> single = from_listed(normal<T>(0, 5, 2), 4, listed);
    const std::vector<T> both = from_listed(normal<T>(1, 5, 2), 7, listed);
    for (int i = 0; i < 4; ++i) {
        const double ln = u[2 * i] == 0 ? -744.4400719213812 : std::log(u[2 * i]);
        const double radius = std::sqrt(-2 * ln), angle = 2 * M_PI * u[2 * i + 1];
        const double tolerance = error * (5 + 2 * radius);
        EXPECT_NEAR(single[i], 5 + 2 * radius * std::sin(angle), tolerance);
        EXPECT_NEAR(both[2 * i], 5 + 2 * radius * std::sin(angle), tolerance);
        if (i < 3) EXPECT_NEAR(both[2 * i + 1], 5 + 2 * radius * std::cos(angle), tolerance);
    }
    EXPECT_NEAR(both[3], 5 + 2 * 38.586 * std::cos(1.75 * M_PI), 80 * error + 1e-3);

    // Phi(1), Phi(-2), the middle and the two ends of [-1, 1]: rounding may give the upper one.
    const std::vector<T> inverted = from_listed(
        normal<T>(2, 5, 2), 5, {0.8413447460685429, 0.02275013194817921, 0.5, 0.0, 1.0});
    const double expected[] = {7, 1, 5, 5 - 2 * M_SQRT2 * 0.7670519064056041,
                               5 + 2 * M_SQRT2 * 5.8635847487551676};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(inverted[i], expected[i], 10 * error) << i;
    EXPECT_EQ(from_listed(normal<T>(0, 5, 2), 1, {1.0, 0.3})[0], T(5));
}

// The saved pair stands in a chunk of its own precision and goes where the stream goes.
TEST(NormalPairs, Chunk) {
    const Stream stream = make_stream(VTS_BRNG_MT19937);
    const auto pair = [](const Stream& s) {
        return static_cast<double*>(_vtsSearchChunk(s.get(), 2));
    };
    double r[4], s[3];
    float f[1];
    ASSERT_EQ(gaussian(1, stream.get(), 4, r, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(pair(stream)[0], -1.0);
    EXPECT_EQ(pair(stream)[1], -1.0);
    EXPECT_EQ(_vtsSearchChunk(stream.get(), 1), nullptr);
    const std::vector<double> next = draw_doubles(copy_of(stream), 2);
    ASSERT_EQ(gaussian(1, stream.get(), 1, r, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(pair(stream)[0], next[0]);
    EXPECT_EQ(pair(stream)[1], next[1]);
    ASSERT_EQ(gaussian(1, stream.get(), 0, r, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(pair(stream)[0], next[0]) << "an empty call keeps the pair";

    const Stream copy = copy_of(stream);
    ASSERT_EQ(gaussian(1, stream.get(), 3, r, 0, 1), VTS_STATUS_OK);
    ASSERT_EQ(gaussian(1, copy.get(), 3, s, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(std::memcmp(r, s, sizeof s), 0);
    ASSERT_EQ(gaussian(1, stream.get(), 1, f, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(_vtsGetNumChunks(stream.get()), 2);
    EXPECT_GE(static_cast<float*>(_vtsSearchChunk(stream.get(), 1))[0], 0);

    // A foreign chunk under the key is neither read nor written.
    const Stream foreign = make_stream(VTS_BRNG_MT19937);
    ASSERT_EQ(__vtsAddChunk(foreign.get(), 2, nullptr, nullptr, 4), VTS_STATUS_OK);
    ASSERT_EQ(gaussian(1, foreign.get(), 1, r, 0, 1), VTS_STATUS_OK);
    EXPECT_EQ(_vtsGetNumChunks(foreign.get()), 2);
    EXPECT_EQ(*static_cast<std::int32_t*>(_vtsSearchChunk(foreign.get(), 2)), 0);
    // Nor is one whose data others share.
    const std::uint32_t id[4] = {2, 2, 2, 2};
    const double numbers[] = {0.25, 0.5};
    void* const data = __vtsAllocate(sizeof numbers);
    std::memcpy(data, numbers, sizeof numbers);
    kef_shared_entry* entry = nullptr;
    ASSERT_EQ(__vtsCreateGlobRODataTableEntry(&entry, id, data), VTS_STATUS_OK);
    const Stream sharing = make_stream(VTS_BRNG_MT19937), plain = make_stream(VTS_BRNG_MT19937);
    ASSERT_EQ(__vtsAddChunk(sharing.get(), 2, id, nullptr, sizeof numbers), VTS_STATUS_OK);
    for (int k = 0; k < 2; ++k) {
        ASSERT_EQ(gaussian(1, sharing.get(), 3, r, 0, 1), VTS_STATUS_OK);
        ASSERT_EQ(gaussian(1, plain.get(), 3, s, 0, 1), VTS_STATUS_OK);
        EXPECT_EQ(std::memcmp(r, s, sizeof s), 0);
    }
    EXPECT_EQ(std::memcmp(data, numbers, sizeof numbers), 0);
    EXPECT_EQ(_vtsGetNumChunks(sharing.get()), 2);
    EXPECT_EQ(__vtsUnregisterGlobRODataReference(id), VTS_STATUS_OK);
}

template <class T> class Lognormal : public testing::Test {};
TYPED_TEST_SUITE(Lognormal, Types);

TYPED_TEST(Lognormal, LawAndState) {
    using T = TypeParam;
    for (const int method :
         {VTS_METHOD_LOGNORMAL_BOX_MULLER_PAIRS + 0, VTS_METHOD_LOGNORMAL_INVERSION + 0, 77}) {
        SCOPED_TRACE(method);
        for (const auto& p :
             {std::array{0.0, 1.0, 0.0, 1.0}, {1.0, 0.5, -3.0, 2.0}, {-2.0, 3.0, 1.0, 1.0}}) {
            const auto z = [p](double x) { return (std::log((x - p[2]) / p[3]) - p[0]) / p[1]; };
            const double w = std::exp(p[1] * p[1]);
            const Law law = {[=](double x) { return x > p[2] ? below(z(x)) : 0; },
                             [=](double x) { return x > p[2] ? below(-z(x)) : 1; },
                             p[2] + p[3] * std::exp(p[0] + p[1] * p[1] / 2),
                             // Of sigma = 3 even a million numbers have no normal mean.
                             p[1] < 2 ? p[3] * p[3] * std::exp(2 * p[0]) * w * (w - 1) : NAN};
            const Draw<T> draw = [=](kef_stream* s, std::int32_t n, T* r) {
                return lognormal(method, s, n, r, p.data());
            };
            expect_law(law, draw);
            expect_contract(draw, 1500);
            expect_split(draw, {3, 1, 2000});
            EXPECT_EQ(consumption(draw, 1001), method == 0 ? 1002 : 1001);
        }
    }
}

// Vectors against the factor applied to the normal numbers of the same stream, and the covariance
// through them.
template <class T> class MultivariateNormal : public testing::Test {};
TYPED_TEST_SUITE(MultivariateNormal, Types);

TYPED_TEST(MultivariateNormal, AgainstFactor) {
    using T = TypeParam;
    for (const int d : {1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 16, 31, 32, 33, 69, 130}) {
        const int n = 2 * 2048 / d + 135;  // more than a panel
        const auto factor = [d](int i, int j) {
            return T(((i * 7 + j * 3) % 11 - 4.5) / d + (i == j));
        };
        std::vector<T> a(d), full(d * d, T(NAN)), packed, diagonal(d), r(n * d + 1), z(n * d),
            part(n * d);
        for (int i = 0; i < d; ++i) a[i] = T(i % 5 - 2.25);
        for (int j = 0; j < d; ++j)
            for (int i = j; i < d; ++i) packed.push_back(full[i * d + j] = factor(i, j));
        for (int i = 0; i < d; ++i) diagonal[i] = full[i * d + i];
        const T* const stored[] = {full.data(), packed.data(), diagonal.data(), nullptr};
        for (const int method : methods)
            for (const int storage :
                 {VTS_MATRIX_FULL + 0, VTS_MATRIX_PACKED + 0, VTS_MATRIX_DIAGONAL + 0, 3}) {
                if (d == 1 && storage == 3) continue;
                SCOPED_TRACE(testing::Message() << d << ' ' << method << ' ' << storage);
                const Stream s = make_stream(VTS_BRNG_MT19937);
                const Stream same = copy_of(s), pieces = copy_of(s);
                r.back() = -77;
                ASSERT_EQ(gaussian_mv(method, s.get(), n, r.data(), d, storage, a.data(),
                                      stored[storage]),
                          0);
                ASSERT_EQ(gaussian(method, same.get(), n * d, z.data(), 0, 1), 0);
                EXPECT_EQ(r.back(), -77);
                EXPECT_EQ(draw_doubles(s, 2), draw_doubles(same, 2));
                for (int first = 0, m = 1; first < n; first += m, m = std::min(m + 3, n - first))
                    ASSERT_EQ(gaussian_mv(method, pieces.get(), m, &part[first * d], d, storage,
                                          a.data(), stored[storage]),
                              0);
                EXPECT_EQ(std::memcmp(part.data(), r.data(), part.size() * sizeof(T)), 0);
                for (int v = 0; v < n; ++v)
                    for (int i = 0; i < d; ++i) {
                        // The rounding errors of a sum of at most d + 1 terms, in any order.
                        long double expected = storage == 3 ? z[v * d + i] : a[i];
                        double size = std::fabs(double(a[i]));
                        for (int j = storage == 2 ? i : 0; j <= i && storage < 3; ++j) {
                            expected += static_cast<long double>(factor(i, j)) * z[v * d + j];
                            size += std::fabs(double(factor(i, j)) * z[v * d + j]);
                        }
                        ASSERT_LE(std::fabs(static_cast<double>(r[v * d + i] - expected)),
                                  size * (d + 2) * std::numeric_limits<T>::epsilon() / 2);
                    }
            }
    }
}

TYPED_TEST(MultivariateNormal, Status) {
    using T = TypeParam;
    const T a[3] = {1, 2, 3}, t[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    for (const int method : methods)
        for (const int storage : {0, 1, 2, 3})
            expect_contract(Draw<T>([&](kef_stream* s, std::int32_t n, T* r) {
                                return gaussian_mv(method, s, n / 3, r, 3, storage, a, t);
                            }),
                            3 * 1500);
}

}  // namespace
