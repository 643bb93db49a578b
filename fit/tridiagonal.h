// Tridiagonal systems by elimination without pivoting from both ends at once, each
// end in one lane of a vector (L. H. Thomas 1949; both ends: I. Babuska 1972, SIAM
// J. Numer. Anal. 9, p. 53). The chain of divisions is half as long as from one end.
//
// The unknowns are v_0 .. v_{n-1}, n >= 3. The rows 1 .. n-2 come from
//   rows.pair(i)   {outer, diagonal, inner} of row i in lane 0 and of row n-1-i in
//                  lane 1, where outer is the coefficient of the neighbour that is
//                  nearer to the end
//   rows.single(i) {lower, diagonal, upper} of row i
// The end rows are given as v_0 = z_0 - g_0 v_1 and likewise on the right.
#pragma once

#include <cstddef>

#include "fit/construct.h"

namespace kef::fit {

template <class V> struct Row { V outer, diagonal, inner; };

inline d2 both_ends(const double* p, std::size_t left, std::size_t right) {
    return d2{p[left], p[right]};
}

template <class Rows> class TwoEnded {
public:
    static constexpr ArrayCount arrays = {.transient = 2};

    // Factors the matrix; g0 holds the left and the right end coefficient. `constant`:
    // all rows are equal, so that the factors may be copied once they have settled.
    void factor(const Rows& rows, std::size_t n, d2 g0, bool constant, Scratch& scratch) {
        rows_ = rows;
        n_ = n;
        middle_ = n / 2;
        g_ = scratch.take_transient(), w_ = scratch.take_transient();
        d2 g = g0;
        vm::store(g_, g);
        std::size_t i = 1;
        for (bool settled = false; i < middle_ && !settled; ++i) {
            const Row<d2> row = rows.pair(i);
            const d2 w = 1.0 / (row.diagonal - row.outer * g), before = g;
            g = row.inner * w;
            vm::store(w_ + 2 * i, w);
            vm::store(g_ + 2 * i, g);
            settled = constant && g[0] == before[0] && g[1] == before[1];
        }
        for (; i < middle_; ++i) {
            vm::store(w_ + 2 * i, vm::load(w_ + 2 * i - 2));
            vm::store(g_ + 2 * i, g);
        }
        const Row<double> row = rows.single(middle_);
        // Beside it stand the last rows that were eliminated, of the right side the one
        // before for even n.
        const double left = g_[2 * middle_ - 2],
                     right = g_[2 * (n % 2 == 0 ? middle_ - 2 : middle_ - 1) + 1];
        middle_pivot_ = row.diagonal - row.outer * left - row.inner * right;
    }

    // Solves for the right-hand sides r[1 .. n-2] and the end constants z0; the
    // unknowns replace r[0 .. n-1].
    void solve(d2 z0, double* r) const {
        const auto put = [&](std::size_t i, d2 ends) { r[i] = ends[0], r[n_ - 1 - i] = ends[1]; };
        const double known = r[middle_];  // for even n the last pair ends there
        d2 z = z0;
        put(0, z);
        for (std::size_t i = 1; i < middle_; ++i) {
            z = (both_ends(r, i, n_ - 1 - i) - rows_.pair(i).outer * z) * vm::load(w_ + 2 * i);
            put(i, z);
        }
        const Row<double> row = rows_.single(middle_);
        const double v =
            (known - row.outer * r[middle_ - 1] - row.inner * r[middle_ + 1]) / middle_pivot_;
        d2 next = {v, v};
        r[middle_] = v;
        std::size_t i = middle_;
        if (n_ % 2 == 0) {  // the middle row is the last one of the right side
            --i;
            next[0] = r[i] -= g_[2 * i] * v;
        }
        while (i-- > 0) {
            next = both_ends(r, i, n_ - 1 - i) - vm::load(g_ + 2 * i) * next;
            put(i, next);
        }
    }

private:
    Rows rows_{};
    std::size_t n_ = 0, middle_ = 0;
    double *g_ = nullptr, *w_ = nullptr;  // lanes by turns
    double middle_pivot_ = 1;
};

// The row around the period of a periodic system, whose common end value v_0 = v_{n-1} is
// eliminated last: the unknowns are the solution with end values zero plus v_0 times u,
// the one with end values one and no data. The factored system has g_0 = 0.
class Period {
public:
    static constexpr ArrayCount arrays = {.transient = 1};

    // The row is lower v_{n-2} + diagonal v_0 + upper v_1.
    template <class Rows>
    void prepare(const TwoEnded<Rows>& system, const Row<double>& row, std::size_t n,
                 Scratch& scratch) {
        u_ = scratch.take_transient(), n_ = n, lower_ = row.outer, upper_ = row.inner;
        std::fill_n(u_, n, 0.0);
        system.solve(d2{1, 1}, u_);
        pivot_ = row.diagonal + lower_ * u_[n - 2] + upper_ * u_[1];
    }
    // Completes the solution v for end values zero; `known` is the row's right-hand side.
    void close(double known, double* v) const {
        const double end = (known - lower_ * v[n_ - 2] - upper_ * v[1]) / pivot_;
        each(n_, [&]<class V>(std::size_t i, V) {
            store_as(v + i, load_as<V>(v + i) + end * load_as<V>(u_ + i));
        });
    }

private:
    double* u_ = nullptr;
    std::size_t n_ = 0;
    double lower_ = 0, upper_ = 0, pivot_ = 1;
};

}  // namespace kef::fit
