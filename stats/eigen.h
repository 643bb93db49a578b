// Eigenvalues and eigenvectors of a symmetric matrix: Householder's tridiagonal form, then
// implicit QL steps with Wilkinson's shift (Golub & Van Loan, Matrix Computations, 4th ed., 8.3).
// Each eigenvalue is within some p 2^-53 |A| of the exact one, and the vectors are orthonormal as
// closely. Everything goes by rows: the matrix is kept whole, eigenvectors are rows.
#pragma once

#include <bit>
#include <cmath>

#include "stats/row.h"
#include "stats/task.h"

namespace kef::stats {

class SymmetricEigen {
public:
    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t p) {
        const std::uint64_t size = p;
        return layout.reserve(size, 2 * size + 3, sizeof(double));
    }
    SymmetricEigen(char* room, std::ptrdiff_t p)
        : p_(p),
          a_(reinterpret_cast<double*>(room)),
          vectors_(a_ + p * p),
          value_(vectors_ + p * p),
          beside_(value_ + p),
          work_(beside_ + p) {}

    // In no order. Eigenvector r has p elements.
    double value(std::ptrdiff_t r) const { return value_[r] * unit_; }
    // The same over a power of four near the largest element, so that none overflows.
    double scaled_value(std::ptrdiff_t r) const { return value_[r]; }
    const double* vector(std::ptrdiff_t r) const { return vectors_ + r * p_; }

    // Of the matrix whose element of i >= j is get(i, j). False when 30 p steps have not been
    // enough: where an element is not finite, and in no other case that is known.
    template <class Get> bool solve(Get get) {
        double most = 0;
        for (std::ptrdiff_t i = 0; i < p_; ++i)
            for (std::ptrdiff_t j = 0; j <= i; ++j) {
                const double element = get(i, j);
                row(i)[j] = row(j)[i] = element;
                most = std::fabs(element) > most ? std::fabs(element) : most;
            }
        // The largest element lies in [2, 8) during the work, so that nothing overflows and 2^-60
        // is little; where that takes more than 2^1022, it is as little as a result can tell.
        const std::uint64_t exponent = std::bit_cast<std::uint64_t>(most) >> 52 & -2;
        const bool tiny = exponent == 0;
        const double scale = tiny ? 0x1p1022 : std::bit_cast<double>((2047 - exponent) << 52);
        unit_ = tiny ? 0x1p-1022 : std::bit_cast<double>((exponent - 1) << 52);
        for (std::ptrdiff_t k = 0; k < p_ * p_; ++k) a_[k] *= scale;
        make_tridiagonal();
        collect_vectors();
        return make_diagonal();
    }

private:
    double* row(std::ptrdiff_t i) { return a_ + i * p_; }

    // Reflection k, I - v v' 2/(v'v), takes all but one element from what is beside the diagonal in
    // row k, where v replaces it: A - v w' - w v', w = u - v (v'u)/(v'v), u = A v 2/(v'v).
    void make_tridiagonal() {
        for (std::ptrdiff_t k = 0; k < p_; ++k) {
            value_[k] = row(k)[k];
            const std::ptrdiff_t first = k + 1, m = p_ - first;
            double* const v = row(k) + first;
            beside_[k] = m > 0 ? v[0] : 0;
            work_[k] = 0;  // 2/(v'v), 0 for no reflection
            if (m < 2) continue;
            const double below = dot(v + 1, v + 1, m - 1);
            if (below < 0x1p-200) continue;  // nothing, beside |A|
            const double norm = std::sqrt(v[0] * v[0] + below);
            beside_[k] = v[0] > 0 ? -norm : norm;
            v[0] -= beside_[k];
            const double factor = 2 / (v[0] * v[0] + below);
            work_[k] = factor;
            double* const w = vectors_;  // not in use yet
            for (std::ptrdiff_t i = 0; i < m; ++i)
                w[i] = dot(row(first + i) + first, v, m) * factor;
            add_scaled(w, -dot(w, v, m) * factor / 2, v, m);
            for (std::ptrdiff_t i = 0; i < m; ++i) {
                double* const a = row(first + i) + first;
                const double vi = v[i], wi = w[i];
                add_scaled(a, -vi, w, m);
                add_scaled(a, -wi, v, m);
            }
        }
    }

    // The product of the reflections, last to first.
    void collect_vectors() {
        for (std::ptrdiff_t k = 0; k < p_ * p_; ++k) vectors_[k] = 0;
        for (std::ptrdiff_t r = 0; r < p_; ++r) vectors_[r * p_ + r] = 1;
        for (std::ptrdiff_t k = p_ - 2; k-- > 0;) {
            if (work_[k] == 0) continue;
            const std::ptrdiff_t first = k + 1, m = p_ - first;
            const double* const v = row(k) + first;
            for (std::ptrdiff_t r = first; r < p_; ++r) {
                double* const x = vectors_ + r * p_ + first;
                add_scaled(x, -dot(x, v, m) * work_[k], v, m);
            }
        }
    }

    // Whether the element between r and r + 1 is 0, beside the diagonal or beside |A|.
    bool is_split(std::ptrdiff_t r) const {
        const double beside = std::fabs(beside_[r]);
        return beside <= 0x1p-60 ||
               beside <= 0x1p-53 * (std::fabs(value_[r]) + std::fabs(value_[r + 1]));
    }

    bool make_diagonal() {
        std::ptrdiff_t steps = 30 * p_;
        for (std::ptrdiff_t first = 0; first < p_; ++first)
            for (;;) {
                std::ptrdiff_t last = first;
                while (last + 1 < p_ && !is_split(last)) ++last;
                if (last == first) break;
                if (steps-- == 0) return false;
                step(first, last);
            }
        return true;
    }

    // One QL step over the rows first .. last, which do not split.
    void step(std::ptrdiff_t first, std::ptrdiff_t last) {
        const double half = (value_[first + 1] - value_[first]) / 2, e = beside_[first];
        const double root = std::sqrt(half * half + e * e);
        const double shift = value_[first] - e * (e / (half < 0 ? half - root : half + root));
        // The rotation of rows k and k + 1 moves the element that stands out of the three diagonals
        // up: x is what it is to leave alone, z the element.
        double x = value_[last] - shift, z = beside_[last - 1];
        for (std::ptrdiff_t k = last - 1; k >= first; --k) {
            const double r = std::sqrt(x * x + z * z);
            const double c = r != 0 ? x / r : 1, s = r != 0 ? z / r : 0;
            if (k + 1 < last) beside_[k + 1] = r;
            const double a = value_[k], b = value_[k + 1], between = beside_[k];
            const double d = (b - a) * s - 2 * c * between;
            value_[k] = a + s * d;
            value_[k + 1] = b - s * d;
            x = beside_[k] = -(c * d + between);
            if (k > first) {
                z = s * beside_[k - 1];
                beside_[k - 1] *= c;
            }
            rotate(k, c, s);
        }
    }

    // Rows k, k + 1 of the vectors become c, -s and s, c times them.
    void rotate(std::ptrdiff_t k, double c, double s) {
        double *x = vectors_ + k * p_, *y = x + p_;
        std::ptrdiff_t j = 0;
        for (; j + 2 <= p_; j += 2) {
            const d2 a = vm::load_as<d2>(x + j), b = vm::load_as<d2>(y + j);
            vm::store(x + j, c * a - s * b);
            vm::store(y + j, s * a + c * b);
        }
        if (j < p_) {
            const double a = x[j], b = y[j];
            x[j] = c * a - s * b;
            y[j] = s * a + c * b;
        }
    }

    std::ptrdiff_t p_;
    double unit_ = 1;
    double *a_, *vectors_, *value_, *beside_, *work_;
};

}  // namespace kef::stats
