// S = L L^T of a symmetric positive definite matrix, and systems solved by it (Golub & Van Loan,
// Matrix Computations, 4th ed., 3.1 and 4.2): all in double precision, in whatever precision S
// stands.
#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

#include "stats/matrix.h"
#include "stats/row.h"

namespace kef::stats {

// The rows of L follow each other, aligned and each as long as an even number of variables. An odd
// number is made even by a row of the identity, so that the factorisation goes by pairs alone.
class Cholesky {
public:
    // Room for p variables, and a factor in it.
    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t p) {
        const std::uint64_t even = even_of(p);
        return layout.reserve(even, even + 1, sizeof(double));
    }
    Cholesky(char* room, std::ptrdiff_t p)
        : p_(p),
          stride_(even_of(p)),
          rows_(reinterpret_cast<double*>(room)),
          inverse_(rows_ + stride_ * stride_) {}

    std::ptrdiff_t size() const { return p_; }
    // Row i of L, of i + 1 elements.
    const double* row(std::ptrdiff_t i) const { return rows_ + i * stride_; }
    double diagonal(std::ptrdiff_t i) const { return row(i)[i]; }

    // Factorises S, whose element of i >= j is get(i, j), known to a relative error of epsilon.
    // False when S is not positive definite: some pivot is not above p epsilon S_jj. The pivot is
    // S_jj (1 - R^2), R the multiple correlation of variable j with those before it, so no unit of
    // measurement plays a part. The rounding of its own sum makes an error up to j 2^-53 S_jj (the
    // terms are squares that add up to S_jj), that of S_jj one of epsilon S_jj: below that the
    // pivot may be 0 or negative in truth. A singular S can pass where a variable is a combination
    // of far larger ones. NaN and infinities are refused.
    template <class Get> bool factor(Get get, double epsilon) {
        for (std::ptrdiff_t i = 0; i < p_; ++i)
            for (std::ptrdiff_t j = 0; j <= i; ++j) at(i, j) = get(i, j);
        if (p_ < stride_) {
            for (std::ptrdiff_t j = 0; j < p_; ++j) at(p_, j) = 0;
            at(p_, p_) = 1;
        }
        for (std::ptrdiff_t i = 0; i < stride_; i += 2) at(i, i + 1) = 0;
        for (std::ptrdiff_t i = 0; i < stride_; ++i) inverse_[i] = at(i, i);
        return factor_rows(static_cast<double>(p_) * epsilon);
    }
    // The rows and columns variable[0] < variable[1] < ... of a matrix of the caller's.
    template <class T> bool factor(const SymmetricMatrix<T>& S, const std::ptrdiff_t* variable) {
        return factor([&](std::ptrdiff_t i,
                          std::ptrdiff_t j) { return double{S.get(variable[i], variable[j])}; },
                      std::numeric_limits<std::remove_const_t<T>>::epsilon());
    }

    // b becomes L^-1 b, and L^-T b.
    void forward(double* b) const {
        for (std::ptrdiff_t i = 0; i < p_; ++i) b[i] = (b[i] - dot(row(i), b, i)) * inverse_[i];
    }
    void backward(double* b) const {
        for (std::ptrdiff_t i = p_; i-- > 0;) {
            b[i] *= inverse_[i];
            add_scaled(b, -b[i], row(i), i);
        }
    }

    // The same for the columns of a matrix of p rows, b + i*stride: `count` of them and, where that
    // is odd, one more. b is aligned to 16 bytes and the stride even.
    void forward(double* b, std::ptrdiff_t stride, std::ptrdiff_t count) const {
        for_each_group(b, count, [&](double* columns, auto vectors) {
            for (std::ptrdiff_t i = 0; i < p_; ++i)
                eliminate<vectors>(columns, stride, i, 0, i, row(i), 1);
        });
    }
    void backward(double* b, std::ptrdiff_t stride, std::ptrdiff_t count) const {
        for_each_group(b, count, [&](double* columns, auto vectors) {
            for (std::ptrdiff_t i = p_; i-- > 0;)
                eliminate<vectors>(columns, stride, i, i + 1, p_, rows_ + i, stride_);
        });
    }

private:
    static constexpr std::ptrdiff_t panel = 32;  // rows that stay in the cache

    static constexpr std::ptrdiff_t even_of(std::ptrdiff_t p) { return p + (p & 1); }
    double& at(std::ptrdiff_t i, std::ptrdiff_t j) { return rows_[i * stride_ + j]; }

    // Row by row, the elements of a panel of rows column by column:
    // L_ij = (S_ij - sum L_ik L_jk) / L_jj, k < j.
    bool factor_rows(double tolerance) {
        for (std::ptrdiff_t first = 0; first < stride_; first += panel) {
            const std::ptrdiff_t end = first + panel < stride_ ? first + panel : stride_;
            for (std::ptrdiff_t j = 0; j < end; j += 2) {
                std::ptrdiff_t i = j;
                if (j >= first) {
                    reduce(i, j);
                    if (!pivot(j, tolerance)) return false;
                    at(j + 1, j) *= inverse_[j];
                    at(j + 1, j + 1) -= at(j + 1, j) * at(j + 1, j);
                    if (!pivot(j + 1, tolerance)) return false;
                    i += 2;
                } else {
                    i = first;
                }
                for (; i < end; i += 2) {
                    reduce(i, j);
                    for (const std::ptrdiff_t r : {i, i + 1}) {
                        at(r, j) *= inverse_[j];
                        at(r, j + 1) = (at(r, j + 1) - at(r, j) * at(j + 1, j)) * inverse_[j + 1];
                    }
                }
            }
        }
        return true;
    }

    // The block of rows i, i + 1 and columns j, j + 1 without its products of columns k < j.
    [[gnu::noinline]] void reduce(std::ptrdiff_t i, std::ptrdiff_t j) {
        const double *a = row(i), *c = row(i + 1), *b = row(j), *d = row(j + 1);
        d2 ab{}, ad{}, cb{}, cd{};
        for (std::ptrdiff_t k = 0; k < j; k += 2) {
            const d2 left = two<true>(a + k), below = two<true>(c + k);
            ab += left * two<true>(b + k);
            ad += left * two<true>(d + k);
            cb += below * two<true>(b + k);
            cd += below * two<true>(d + k);
        }
        at(i, j) -= ab[0] + ab[1];
        at(i, j + 1) -= ad[0] + ad[1];
        at(i + 1, j) -= cb[0] + cb[1];
        at(i + 1, j + 1) -= cd[0] + cd[1];
    }

    // The diagonal element and its inverse, in whose place S_jj stands.
    bool pivot(std::ptrdiff_t j, double tolerance) {
        double& element = at(j, j);
        if (!(element > tolerance * inverse_[j])) return false;  // NaN and infinities, too
        element = std::sqrt(element);
        inverse_[j] = 1 / element;
        return true;
    }

    // f(columns, vectors) for groups of 8 columns, four vectors, then for two at a time.
    template <class F> static void for_each_group(double* b, std::ptrdiff_t count, F f) {
        std::ptrdiff_t k = 0;
        for (; k + 8 <= count; k += 8) f(b + k, std::integral_constant<int, 4>());
        for (; k < count; k += 2) f(b + k, std::integral_constant<int, 1>());
    }

    // Row i of some columns: without l[k*step] times row k, first <= k < last; then divided by
    // L_ii.
    template <int vectors>
    void eliminate(double* b, std::ptrdiff_t stride, std::ptrdiff_t i, std::ptrdiff_t first,
                   std::ptrdiff_t last, const double* l, std::ptrdiff_t step) const {
        d2 sum[vectors];
        double* const own = b + i * stride;
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) sum[v] = two<true>(own + 2 * v);
        const double *x = b + first * stride, *const end = b + last * stride;
        for (l += first * step; x != end; x += stride, l += step) {
            const d2 factor = duplicate(l);
#pragma GCC unroll 4
            for (int v = 0; v < vectors; ++v) sum[v] -= factor * two<true>(x + 2 * v);
        }
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) vm::store(own + 2 * v, sum[v] * inverse_[i]);
    }

    std::ptrdiff_t p_, stride_;
    double *rows_, *inverse_;
};

}  // namespace kef::stats
