// The sum W2 of squares of weights beyond the range of their squares, and what it tells.
#pragma once

#include <cmath>
#include <utility>

namespace kef::stats {

// sum (scale w)^2, where the scale is a power of two: 1 but for weights whose squares would
// overflow or be subnormal.
class SumOfSquares {
public:
    // A sum without a scale.
    SumOfSquares(double sum = 0) : value_(sum) {}
    // Of n weights, the sum of whose squares double precision gives as `sum`.
    SumOfSquares(const double* w, int n, double sum) : value_(sum) {
        if (sum >= 0x1p-900 && sum <= 0x1p1000) return;
        scale_ = sum < 1 ? small : large;
        value_ = 0;
        for (int j = 0; j < n; ++j) value_ += (w[j] * scale_) * (w[j] * scale_);
        if (value_ == 0) scale_ = 1;
    }

    SumOfSquares& operator+=(SumOfSquares other) {
        if (other.value_ == 0) return *this;
        if (value_ == 0) return *this = other;
        // The scale of the larger weights.
        if (other.scale_ < scale_) std::swap(*this, other);
        const double ratio = scale_ / other.scale_;
        value_ += other.value_ * ratio * ratio;
        return *this;
    }

    double plain() const { return value_ / scale_ / scale_; }
    // W2 / W.
    double over(double W) const { return value_ / (W * scale_) / scale_; }

    // W^2 = W2, as a number of type T.
    template <class T> bool is_square_of(double W) const {
        return static_cast<T>(W * scale_ * (W * scale_)) == static_cast<T>(value_);
    }
    // A number of type T has kept its digits.
    template <class T> bool is_normal() const { return std::isnormal(static_cast<T>(value_)); }

private:
    static constexpr double small = 0x1p600, large = 0x1p-600;
    double value_, scale_ = 1;
};

// Whether all that there are observations of is one, as far as W and W2 of type T tell; no weight
// is negative.
template <class T> bool is_one_observation(double W, const SumOfSquares& W2) {
    return W2.is_square_of<T>(W) && (W2.is_normal<T>() || W == 0);
}

// The normaliser of central moments and covariance: n - 1 without weights, the
// unbiased one for reliability weights; W where that would not be positive, and for one
// observation, where rounding alone could make it so.
inline double normaliser(double W, const SumOfSquares& W2) {
    const double B = W - W2.over(W);
    return B > 0 && !W2.is_square_of<double>(W) ? B : W;
}

}  // namespace kef::stats
