// The formulas between the quantities of a variable: W, W2, the sums S_k = sum w x^k, the
// mean, the central sums M_k = sum w (x-m)^k and what is reported of them;
// include/kef_stats.h has the formulas and their sources.
#pragma once

#include <cmath>

#include "stats/fields.h"
#include "stats/weights.h"

namespace kef::stats {

// By Scale, what a field's quantity is divided by.
struct Scales {
    double value[3];
    Scales(double W, const SumOfSquares& W2) : value{1, W, normaliser(W, W2)} {}
    double operator[](Scale scale) const { return value[static_cast<int>(scale)]; }
    template <Scale scale> double divide(double quantity) const {
        return scale == Scale::one ? quantity : quantity / (*this)[scale];
    }
};

// The quantities of one variable.
struct Quantities {
    double value[quantity::count]{};
    double& operator[](Quantity q) { return value[q]; }
    double operator[](Quantity q) const { return value[q]; }
};

// Mean and central sums from the raw sums. A variance that rounding made negative is 0, and
// with it all central sums, as they are where there is one observation; NaN where the mean is not
// finite.
inline void central_from_raw(double W, bool one_observation, Quantities& q) {
    using namespace quantity;
    const double m = q[raw_1] / W, R2 = q[raw_2] / W, R3 = q[raw_3] / W, R4 = q[raw_4] / W;
    const double square = m * m, variance = R2 - square;
    const bool none = one_observation || variance <= 0;
    const double nothing = m - m;
    q[mean] = m;
    q[central_2] = none ? nothing : W * variance;
    q[central_3] = none ? nothing : W * (R3 - 3 * m * R2 + 2 * m * square);
    q[central_4] = none ? nothing : W * (R4 - 4 * m * R3 + 6 * square * R2 - 3 * square * square);
}

// The raw sums from mean and central sums; the first is not among them.
inline void raw_from_central(double W, Quantities& q) {
    using namespace quantity;
    const double m = q[mean], square = m * m;
    q[raw_2] = W * square + q[central_2];
    q[raw_3] = m * (W * square + 3 * q[central_2]) + q[central_3];
    q[raw_4] = square * (W * square + 6 * q[central_2]) + 4 * m * q[central_3] + q[central_4];
}

inline void shapes_from_central(double W, const Scales& scales, Quantities& q) {
    using namespace quantity;
    const double v = q[central_2] / W;
    q[kurtosis] = q[central_4] / W / (v * v) - 3;
    q[skewness] = q[central_3] / W / (v * std::sqrt(v));
    q[variation] = std::sqrt(q[central_2] / scales[Scale::N]) / q[mean];
}

// What rounding has moved beyond 1 is 1.
inline double within_unit(double r) { return r > 1 ? 1 : r < -1 ? -1 : r; }

// Divided twice: the product of the two variances could overflow.
inline double correlation_of(double c_ij, double c_ii, double c_jj) {
    return within_unit(c_ij / std::sqrt(c_ii) / std::sqrt(c_jj));
}

}  // namespace kef::stats
