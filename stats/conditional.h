// Some variables of a normal law, u, where the others, o, are known. From the inverse P of the
// covariance: normal with mean m_u - P_uu^-1 P_uo (x_o - m_o) and covariance P_uu^-1, so that
// little is to be done where little is missing.
#pragma once

#include "stats/cholesky.h"
#include "stats/moments.h"
#include "stats/scatter.h"

namespace kef::stats {

class Conditional {
public:
    class Room {
    public:
        Room(KeptLayout& layout, std::ptrdiff_t p)
            : all_(Cholesky::reserve(layout, p)),
              part_(Cholesky::reserve(layout, p)),
              matrices_(layout.reserve(p, even(p) * sizeof(double), 3)),
              means_(layout.reserve(p, sizeof(double), 2)) {}

    private:
        friend Conditional;
        std::uint64_t all_, part_, matrices_, means_;
    };
    Conditional(const Room& room, char* block, std::ptrdiff_t p)
        : p_(p),
          stride_(even(p)),
          all_(block + room.all_, p),
          part_room_(block + room.part_),
          part_(part_room_, p),
          inverse_(reinterpret_cast<double*>(block + room.matrices_)),
          slope_(inverse_ + p * stride_),
          rest_(slope_ + p * stride_),
          mean_(reinterpret_cast<double*>(block + room.means_)),
          shift_(mean_ + p) {}

    // The law; false where its covariance is singular.
    bool set(const Moments& law) {
        if (!all_.factor([&](std::ptrdiff_t i, std::ptrdiff_t j) { return law.at(i, j); },
                         singular))
            return false;
        std::copy_n(law.mean, p_, mean_);
        set_identity(inverse_, p_, stride_);
        solve(all_, inverse_, stride_, p_);
        return true;
    }

    // The m variables u; false where rounding leaves nothing of P_uu.
    bool know_all_but(const std::ptrdiff_t* u, std::ptrdiff_t m) {
        part_ = Cholesky(part_room_, m);
        const auto get = [&](std::ptrdiff_t i, std::ptrdiff_t j) {
            return inverse_[u[i] * stride_ + u[j]];
        };
        if (!part_.factor(get, 0)) return false;
        for (std::ptrdiff_t i = 0; i < m; ++i)
            std::copy_n(inverse_ + u[i] * stride_, stride_, slope_ + i * stride_);
        solve(part_, slope_, stride_, p_);
        for (std::ptrdiff_t i = 0; i < m; ++i) {
            double* const row = slope_ + i * stride_;
            for (std::ptrdiff_t k = 0; k < m; ++k) row[u[k]] = 0;
            shift_[i] = mean_[u[i]] + dot(row, mean_, p_);
        }
        return true;
    }
    // The mean of variable i of them, from all variables of x.
    double mean(std::ptrdiff_t i, const double* x) const {
        return shift_[i] - dot(slope_ + i * stride_, x, p_);
    }
    // Adds `count` times their covariance.
    void add_covariance(const Moments& to, const std::ptrdiff_t* u, double count) {
        const std::ptrdiff_t m = part_.size(), stride = even(m);
        set_identity(rest_, m, stride);
        solve(part_, rest_, stride, m);
        for (std::ptrdiff_t i = 0; i < m; ++i)
            for (std::ptrdiff_t j = 0; j <= i; ++j)
                to.at(u[i], u[j]) += count * rest_[i * stride + j];
    }
    // Standard normal numbers become numbers of that covariance.
    void colour(double* z) const { part_.backward(z); }

private:
    static std::ptrdiff_t even(std::ptrdiff_t p) { return p + (p & 1); }

    static void set_identity(double* to, std::ptrdiff_t p, std::ptrdiff_t stride) {
        std::fill_n(to, p * stride, 0);
        for (std::ptrdiff_t i = 0; i < p; ++i) to[i * stride + i] = 1;
    }
    static void solve(const Cholesky& L, double* b, std::ptrdiff_t stride, std::ptrdiff_t columns) {
        L.forward(b, stride, columns);
        L.backward(b, stride, columns);
    }

    std::ptrdiff_t p_, stride_;
    Cholesky all_;
    char* part_room_;
    Cholesky part_;
    double *inverse_, *slope_, *rest_;  // P, P_uu^-1 P_uo, P_uu^-1
    double *mean_, *shift_;
};

}  // namespace kef::stats
