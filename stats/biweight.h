// The translated biweight (Rocke, Ann. Stat. 24:1327, 1996): rho(u) is the integral of u w(u),
//   w(u) = 1, u <= M;  (1 - t^2)^2, t = (u - M)/c, M < u < M + c;  0 beyond.
#pragma once

#include <algorithm>
#include <cmath>

#include "stats/chi_square.h"
#include "stats/observations.h"

namespace kef::stats {

class Biweight {
public:
    // M and c such that normal data of p variables have the mean rho breakdown * most() and, as far
    // as that allows, the probability `rejection` of a weight of 0: with little of it c = 0, with
    // much M = 0. 0 < breakdown <= 1/2.
    Biweight(double p, double breakdown, double rejection) : p_(p), breakdown_(breakdown) {
        const auto too_small = [&](double M, double c) {
            set(M, c);
            return expected() > breakdown * most();
        };
        const auto last = [](double low, double high, auto too_small) {
            while (high - low > high * 0x1p-52) {
                const double middle = low + (high - low) / 2;
                (too_small(middle) ? low : high) = middle;
            }
            return high;
        };
        // The mean rho of trimmed squares and of the biweight falls with their width.
        const auto root = [&](auto too_small) {
            double high = 1;
            while (too_small(high)) high *= 2;
            return last(high == 1 ? 0 : high / 2, high, too_small);
        };
        const double hard = root([&](double M) { return too_small(M, 0); });
        const double soft = root([&](double c) { return too_small(0, c); });
        if (rejection >= chi_square_tails(p, hard * hard).upper) {
            set(hard, 0);
        } else if (rejection <= chi_square_tails(p, soft * soft).upper) {
            set(0, soft);
        } else {
            const double end = std::sqrt(upper_chi_square_quantile(p, rejection));
            const double M = last(0, end, [&](double M) { return too_small(M, end - M); });
            set(M, end - M);
        }
    }

    double M() const { return M_; }
    double c() const { return c_; }
    double most() const { return M_ * M_ / 2 + c_ * (5 * c_ + 16 * M_) / 30; }
    // What the mean of rho is to be.
    double target() const { return breakdown_ * most(); }

    struct Values {
        d2 rho, weight;
    };
    // In t nothing cancels for small c, and c = 0 is no case of its own.
    Values at(d2 u) const {
        const d2 inner = vm::minimum(u, both(M_));
        const d2 t = vm::minimum(vm::maximum(u - M_, d2{}) * inverse_, both(1.0));
        const d2 s = t * t, w = 1.0 - s;
        const d2 straight = t * (1.0 - s * (2.0 / 3 - s * (1.0 / 5)));
        const d2 square = s * (0.5 - s * (0.5 - s * (1.0 / 6)));
        return {0.5 * inner * inner + c_ * (M_ * straight + c_ * square), w * w};
    }

private:
    void set(double M, double c) {
        M_ = M;
        c_ = c;
        inverse_ = c > 0 ? 1 / c : 0x1p1000;
    }

    // The mean of rho(d), d^2 chi-square with p degrees of freedom.
    double expected() const {
        const double end = M_ + c_, top = std::min(end, std::max(M_, std::sqrt(p_) + 10));
        const auto panels = static_cast<int>((top - M_) * 2) + 1;
        const double width = (top - M_) / panels;
        double sum = 0;  // beyond `top` there is nothing, to 1e-40
        for (int k = 0; k < panels; ++k) sum += over(M_ + k * width, M_ + (k + 1) * width);
        return p_ / 2 * chi_square_tails(p_ + 2, M_ * M_).lower + sum +
               most() * chi_square_tails(p_, end * end).upper;
    }
    // The integral of rho times the density of d, 8 points of Gauss: the density is that of a
    // normal number of deviation 0.7 about, and panels are no wider than 1/2.
    double over(double a, double b) const {
        constexpr double node[] = {0x1.77ac94f3c7345p-3, 0x1.0d129583284b4p-1, 0x1.97e4ab249f41ep-1,
                                   0x1.ebab1cb0acc67p-1};
        constexpr double weight[] = {0x1.736360b199343p-2, 0x1.413c50a255615p-2,
                                     0x1.c76fb531d2b96p-3, 0x1.9ea1d04ca0374p-4};
        const double middle = (a + b) / 2, half = (b - a) / 2;
        double sum = 0;
        for (int k = 0; k < 4; ++k) {
            const d2 u = middle + d2{-half, half} * node[k], rho = at(u).rho;
            for (int side = 0; side < 2; ++side)
                sum += weight[k] * rho[side] * p_ / u[side] *
                       gamma_weight(p_ / 2, u[side] * u[side] / 2);
        }
        return sum * half;
    }

    double p_, breakdown_, M_, c_, inverse_;
};

}  // namespace kef::stats
