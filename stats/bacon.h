// BACON: a subset without outliers, grown from a small one (Billor, Hadi & Velleman, CSDA 34:279,
// 2000).
#pragma once

#include "stats/chi_square.h"
#include "stats/scatter.h"

namespace kef::stats {

enum class BaconStart { mahalanobis = 1, median = 2 };

template <class T> class Bacon {
public:
    // n > 3p + 1. The moments become those of the subset.
    Bacon(Scatter<T>& scatter, const Moments& moments) : s_(scatter), moments_(moments) {}

    static bool enough(std::ptrdiff_t n, std::ptrdiff_t p) { return n > 3 * p + 1; }

    // Leaves the weights 1 in the subset, 0 for outliers, and the mean and covariance of the subset
    // in the moments. The subset is final when it repeats itself or when its size changes by
    // `tolerance` n at most. NOT_POSITIVE_DEFINITE, ITERATION_LIMIT.
    std::int32_t operator()(BaconStart start, double alpha, double tolerance) {
        constexpr std::int32_t no = VTS_SS_STATUS_NOT_POSITIVE_DEFINITE;
        if (!first_distances(start) || !first_subset()) return no;
        const auto n = static_cast<double>(s_.n), p = static_cast<double>(s_.p);
        const double quantile = upper_chi_square_quantile(p, alpha / n);
        const double h = std::floor((n + p + 1) / 2);
        const double bound = 1 + (p + 1) / (n - p) + 2 / (n - 1 - 3 * p);
        for (int round = 0; round < most_rounds; ++round) {
            if (!s_.measure(moments_)) return no;
            const auto r = static_cast<double>(size_);
            const double c = bound + (r < h ? (h - r) / (h + r) : 0);
            const bool same = take_below(c * c * quantile);
            const bool last = same || (tolerance > 0 &&
                                       std::fabs(static_cast<double>(size_) - r) <= tolerance * n);
            if (!same) weigh();
            if (last) return s_.factorise(moments_) ? VTS_SS_STATUS_OK : no;
        }
        return VTS_SS_STATUS_ITERATION_LIMIT;
    }

    std::ptrdiff_t size() const { return size_; }

private:
    static constexpr int most_rounds = 100;

    void weigh() { s_.weigh(moments_, static_cast<double>(size_ - 1)); }

    bool first_distances(BaconStart start) {
        if (!s_.medians(moments_)) return false;
        if (start == BaconStart::median) {
            s_.measure_plainly(moments_);
            return true;
        }
        std::fill_n(s_.weight, s_.n, 1);
        size_ = s_.n;
        weigh();
        return s_.measure(moments_);
    }

    // The nearest observations, 4p of them or half of all, or more until their covariance is
    // regular.
    bool first_subset() {
        const std::ptrdiff_t least =
            std::max(s_.p + 1, std::min<std::ptrdiff_t>(4 * s_.p, s_.n / 2));
        if (is_regular(least)) return true;
        std::ptrdiff_t singular = least, regular = s_.n;
        while (regular - singular > 1) {
            const std::ptrdiff_t middle = singular + (regular - singular) / 2;
            (is_regular(middle) ? regular : singular) = middle;
        }
        return is_regular(regular);
    }
    bool is_regular(std::ptrdiff_t r) {
        if (!s_.take_nearest(r)) return false;
        size_ = r;
        weigh();
        return s_.factorise(moments_);
    }

    // The subset of those below a squared distance. Whether it is the one that was.
    bool take_below(double limit) {
        bool same = true;
        size_ = 0;
        for (std::ptrdiff_t j = 0; j < s_.n; ++j) {
            const double weight = s_.square[j] < limit;
            same = same && weight == s_.weight[j];
            s_.weight[j] = weight;
            size_ += weight != 0;
        }
        return same;
    }

    Scatter<T>& s_;
    Moments moments_;
    std::ptrdiff_t size_ = 0;
};

}  // namespace kef::stats
