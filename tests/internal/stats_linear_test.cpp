// The Cholesky factor and the eigenvalues behind the statistics, by their defining equations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "stats/cholesky.h"
#include "stats/eigen.h"

namespace kef::stats {
namespace {

constexpr std::ptrdiff_t sizes[] = {1, 2, 3, 4, 5, 8, 9, 31, 32, 33, 34, 67, 130};

struct Room {
    std::vector<char> bytes;
    explicit Room(const KeptLayout& layout) : bytes(layout.size() + 16, char(0xFF)) {}
    char* start() {
        return bytes.data() + (16 - reinterpret_cast<std::uintptr_t>(bytes.data()) % 16);
    }
};
template <class Solver> Room room_for(std::ptrdiff_t p) {
    KeptLayout layout;
    Solver::reserve(layout, p);
    return Room(layout);
}

using Matrix = std::vector<long double>;  // p by p, by rows

Matrix product(const Matrix& a, const Matrix& b, std::ptrdiff_t p) {
    Matrix c(p * p);
    for (std::ptrdiff_t i = 0; i < p; ++i)
        for (std::ptrdiff_t k = 0; k < p; ++k)
            for (std::ptrdiff_t j = 0; j < p; ++j) c[i * p + j] += a[i * p + k] * b[k * p + j];
    return c;
}
Matrix transposed(const Matrix& a, std::ptrdiff_t p) {
    Matrix t(p * p);
    for (std::ptrdiff_t i = 0; i < p; ++i)
        for (std::ptrdiff_t j = 0; j < p; ++j) t[j * p + i] = a[i * p + j];
    return t;
}

Matrix random_matrix(std::ptrdiff_t p, unsigned seed) {
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    Matrix a(p * p);
    for (auto& element : a) element = normal(generator);
    return a;
}
// B B' + I, in double precision.
Matrix positive_definite(std::ptrdiff_t p) {
    const Matrix b = random_matrix(p, 1);
    Matrix s = product(b, transposed(b, p), p);
    for (std::ptrdiff_t i = 0; i < p; ++i) s[i * p + i] += 1;
    for (auto& element : s) element = double(element);
    return s;
}

auto elements_of(const Matrix& s, std::ptrdiff_t p) {
    return [&s, p](std::ptrdiff_t i, std::ptrdiff_t j) { return double(s[i * p + j]); };
}

constexpr double epsilon = std::numeric_limits<double>::epsilon();

TEST(StatsCholesky, FactorsAndSolves) {
    for (const std::ptrdiff_t p : sizes) {
        SCOPED_TRACE(p);
        const Matrix s = positive_definite(p);
        Room room = room_for<Cholesky>(p);
        Cholesky cholesky(room.start(), p);
        ASSERT_TRUE(cholesky.factor(elements_of(s, p), epsilon));
        Matrix l(p * p);
        for (std::ptrdiff_t i = 0; i < p; ++i)
            for (std::ptrdiff_t j = 0; j <= i; ++j) l[i * p + j] = cholesky.row(i)[j];
        const Matrix back = product(l, transposed(l, p), p);
        const auto bound = [&](std::ptrdiff_t i, std::ptrdiff_t j) {
            return (p + 4) * epsilon * std::sqrt(double(s[i * p + i] * s[j * p + j]));
        };
        for (std::ptrdiff_t i = 0; i < p; ++i)
            for (std::ptrdiff_t j = 0; j < p; ++j)
                EXPECT_LE(std::fabs(double(back[i * p + j] - s[i * p + j])), bound(i, j));

        // Columns of every count up to more than a group, one of them alone, too.
        for (const std::ptrdiff_t count : {1, 2, 7, 8, 11, 18}) {
            const std::ptrdiff_t stride = count + (count & 1) + 2;
            KeptLayout layout;
            layout.reserve(p * stride, sizeof(double));
            Room columns(layout);
            auto* b = reinterpret_cast<double*>(columns.start());
            std::mt19937 generator(count);
            for (std::ptrdiff_t k = 0; k < p * stride; ++k) b[k] = generator() % 100;
            const std::vector<double> right(b, b + p * stride);
            cholesky.forward(b, stride, count);
            const std::vector<double> half(b, b + p * stride);
            cholesky.backward(b, stride, count);
            for (std::ptrdiff_t k = 0; k < count; ++k) {
                std::vector<double> single(p);
                for (std::ptrdiff_t i = 0; i < p; ++i) single[i] = right[i * stride + k];
                cholesky.forward(single.data());
                for (std::ptrdiff_t i = 0; i < p; ++i) {
                    long double sum = 0, size = 0;
                    for (std::ptrdiff_t j = 0; j <= i; ++j) {
                        sum += l[i * p + j] * half[j * stride + k];
                        size += std::fabs(l[i * p + j] * half[j * stride + k]);
                    }
                    EXPECT_LE(std::fabs(sum - right[i * stride + k]), (p + 4) * epsilon * size);
                    EXPECT_NEAR(half[i * stride + k], single[i], 1e-10);
                }
                cholesky.backward(single.data());
                for (std::ptrdiff_t i = 0; i < p; ++i) {
                    long double sum = 0, size = 0;
                    for (std::ptrdiff_t j = i; j < p; ++j) {
                        sum += l[j * p + i] * b[j * stride + k];
                        size += std::fabs(l[j * p + i] * b[j * stride + k]);
                    }
                    EXPECT_LE(std::fabs(sum - half[i * stride + k]), (p + 4) * epsilon * size);
                    EXPECT_NEAR(b[i * stride + k], single[i], 1e-10);
                }
            }
            for (std::ptrdiff_t i = 0; i < p; ++i)  // what lies between the rows stays
                EXPECT_EQ(right[i * stride + stride - 1], b[i * stride + stride - 1]);
        }
    }
}

// A variable that is a mean of two others, a negative eigenvalue, no number: at every place, and
// whatever the units are.
TEST(StatsCholesky, RefusesWhatIsNotPositiveDefinite) {
    for (const std::ptrdiff_t p : {1, 2, 3, 6, 7, 18})
        for (std::ptrdiff_t bad = 0; bad < p; ++bad) {
            SCOPED_TRACE(testing::Message() << p << ", " << bad);
            const std::ptrdiff_t n = p + 20;
            // With the data of a variable changed, and then its row of S.
            const auto accepted = [&](auto spoil_data, auto spoil) {
                Matrix x = random_matrix(n, 3);
                spoil_data(x.data(), x.data() + bad * n);
                Matrix s = product(x, transposed(x, n), n);
                spoil(&s[bad * n]);
                Room room = room_for<Cholesky>(p);
                return Cholesky(room.start(), p).factor(elements_of(s, n), epsilon);
            };
            const auto nothing = [](auto...) {};
            EXPECT_TRUE(accepted(nothing, nothing));
            for (const double unit : {1.0, 1e-140, 1e140}) {
                const auto dependent = [&](auto* x, auto* own) {
                    const auto *a = x + (bad + 1) % p * n, *b = x + (bad + 2) % p * n;
                    for (std::ptrdiff_t k = 0; k < n; ++k)
                        own[k] = p == 1 ? 0 : p == 2 ? a[k] * unit : (a[k] + b[k]) / 2 * unit;
                };
                const auto scaled = [&](auto*, auto* own) {
                    for (std::ptrdiff_t k = 0; k < n; ++k) own[k] *= unit;
                };
                EXPECT_FALSE(accepted(dependent, nothing));
                EXPECT_TRUE(accepted(scaled, nothing));
            }
            for (const double value : {-1.0, double(NAN), double(INFINITY)})
                EXPECT_FALSE(accepted(nothing, [&](auto* row) { row[bad] = value; }));
            if (bad > 0) EXPECT_FALSE(accepted(nothing, [&](auto* row) { row[0] = NAN; }));
        }
}

void check_eigen(const Matrix& a, std::ptrdiff_t p, double size,
                 std::vector<double> expected = {}) {
    Room room = room_for<SymmetricEigen>(p);
    SymmetricEigen eigen(room.start(), p);
    ASSERT_TRUE(eigen.solve(elements_of(a, p)));
    Matrix v(p * p);
    for (std::ptrdiff_t r = 0; r < p; ++r) std::copy_n(eigen.vector(r), p, &v[r * p]);
    const Matrix unit = product(v, transposed(v, p), p);
    Matrix scaled = v;
    std::vector<double> values(p);
    for (std::ptrdiff_t r = 0; r < p; ++r) {
        values[r] = eigen.value(r);
        for (std::ptrdiff_t j = 0; j < p; ++j) scaled[r * p + j] *= eigen.value(r);
    }
    const Matrix back = product(transposed(v, p), scaled, p);
    const double bound = 4 * (p + 2) * epsilon;
    for (std::ptrdiff_t i = 0; i < p; ++i)
        for (std::ptrdiff_t j = 0; j < p; ++j) {
            EXPECT_LE(std::fabs(double(unit[i * p + j]) - (i == j)), bound);
            EXPECT_LE(std::fabs(double(back[i * p + j] - a[i * p + j])), bound * size);
        }
    if (expected.empty()) return;
    std::sort(values.begin(), values.end());
    std::sort(expected.begin(), expected.end());
    for (std::ptrdiff_t r = 0; r < p; ++r)
        EXPECT_LE(std::fabs(values[r] - expected[r]), bound * size) << r;
}

TEST(StatsEigen, Decomposes) {
    for (const std::ptrdiff_t p : sizes) {
        SCOPED_TRACE(p);
        Matrix a = random_matrix(p, 5);
        for (std::ptrdiff_t i = 0; i < p; ++i)
            for (std::ptrdiff_t j = 0; j < i; ++j) a[j * p + i] = a[i * p + j];
        check_eigen(a, p, 2 * std::sqrt(double(p)));
        for (const double unit : {0x1p-1000, 0x1p1000}) {
            Matrix b = a;
            for (auto& element : b) element *= unit;
            check_eigen(b, p, 2 * unit * std::sqrt(double(p)));
        }
        // -1, 2, -1: 2 - 2 cos(k pi / (p + 1)).
        Matrix t(p * p);
        std::vector<double> values(p);
        for (std::ptrdiff_t i = 0; i < p; ++i) {
            t[i * p + i] = 2;
            if (i > 0) t[i * p + i - 1] = t[(i - 1) * p + i] = -1;
            values[i] = 2 - 2 * std::cos((i + 1) * M_PI / (p + 1));
        }
        check_eigen(t, p, 4, values);
    }
}

// Many equal eigenvalues, blocks that do not touch, elements of very different sizes.
TEST(StatsEigen, Degenerate) {
    for (const std::ptrdiff_t p : sizes) {
        SCOPED_TRACE(p);
        std::vector<double> values(p);
        check_eigen(Matrix(p * p, 0), p, 1e-300, values);
        values[0] = p;
        check_eigen(Matrix(p * p, 1), p, p, values);
        Matrix diagonal(p * p), blocks(p * p), graded(p * p), nearly(p * p);
        for (std::ptrdiff_t i = 0; i < p; ++i) {
            diagonal[i * p + i] = values[i] = i % 3;
            for (std::ptrdiff_t j = 0; j < p; ++j) {
                if (i / 4 == j / 4) blocks[i * p + j] = i == j ? 1 : 0.5;
                nearly[i * p + j] = std::abs(i - j) == 1 ? 1 : 1e-9;  // tridiagonal
                graded[i * p + j] = std::ldexp(1.0, -10 * static_cast<int>(std::max(i, j)));
            }
        }
        check_eigen(diagonal, p, 2, values);
        check_eigen(blocks, p, 3);
        check_eigen(graded, p, 1);
        check_eigen(nearly, p, 2);
    }
    for (const double bad : {double(NAN), double(INFINITY)}) {
        Matrix a(9, 1);
        a[6] = bad;
        Room room = room_for<SymmetricEigen>(3);
        EXPECT_FALSE(SymmetricEigen(room.start(), 3).solve(elements_of(a, 3)));
    }
}

}  // namespace
}  // namespace kef::stats
