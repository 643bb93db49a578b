// Squared Mahalanobis distances |L^-1 (x_j - m)|^2 of observations from a point m, S = L L^T.
#pragma once

#include <algorithm>

#include "stats/cholesky.h"

namespace kef::stats {

class Distances {
public:
    // Room for `count` variables, which are the given ones, as many as the factor has; m is in
    // their order.
    static std::uint64_t reserve(KeptLayout& layout, std::ptrdiff_t count) {
        return layout.reserve(count + 1, stride_of(count) * sizeof(double));
    }
    Distances(char* room, const Cholesky& L, const std::ptrdiff_t* variable, const double* m)
        : L_(L), variable_(variable), m_(m), tile_(reinterpret_cast<double*>(room)) {}

    // Calls f(first, n, squares) for one tile after the other of the observations [first, end).
    template <class T, class F>
    void operator()(const Observations<T>& x, std::ptrdiff_t first, std::ptrdiff_t end, F f) const {
        const std::ptrdiff_t p = L_.size(), stride = stride_of(p);
        double* const squares = tile_ + p * stride;
        for_each_tile(first, end, tile_size(p), [&](std::ptrdiff_t from, int n) {
            for (std::ptrdiff_t a = 0; a < p; a += 2) centre(x, a, from, n);
            L_.forward(tile_, stride, n);
            for (int j = 0; j < n; j += 2) {
                d2 sum{};
                for (std::ptrdiff_t a = 0; a < p; ++a) {
                    const d2 y = two<true>(tile_ + a * stride + j);
                    sum += y * y;
                }
                vm::store(squares + j, sum);
            }
            f(from, n, squares);
        });
    }

private:
    // A tile stays in the first-level cache beside a part of the factor.
    static constexpr int tile_size(std::ptrdiff_t p) {
        return static_cast<int>(std::clamp<std::ptrdiff_t>(1024 / p & -8, 8, 64));
    }
    // Rows are some cache lines apart, not a power of two of them.
    static constexpr std::ptrdiff_t stride_of(std::ptrdiff_t p) {
        return p > 0 ? tile_size(p) + 8 : 0;
    }

    // Rows a and a + 1 of the tile: those variables less m, of n observations and, where n is odd,
    // the last once more.
    template <class T>
    void centre(const Observations<T>& x, std::ptrdiff_t a, std::ptrdiff_t from, int n) const {
        const std::ptrdiff_t stride = stride_of(L_.size()), b = a + 1 < L_.size() ? a + 1 : a;
        double *const y = tile_ + a * stride, *const z = tile_ + b * stride;
        const auto put = [&](int j, d2 first, d2 second) {
            vm::store(z + j, second);
            vm::store(y + j, first);
        };
        const d2 m = {m_[a], m_[b]};
        if (x.stride == 1) {
            const T *u = x.at(variable_[a], from), *v = x.at(variable_[b], from);
            int j = 0;
            for (; j + 2 <= n; j += 2) put(j, two<false>(u + j) - m[0], two<false>(v + j) - m[1]);
            if (j < n) put(j, both(u[j] - m[0]), both(v[j] - m[1]));
            return;
        }
        with_pair(x, {variable_[a], variable_[b]}, from, [&](const auto& source) {
            for (int j = 0; j < n; j += 2) {
                const d2 c = source.one(j) - m, d = source.one(j + 1 < n ? j + 1 : j) - m;
                put(j, __builtin_shufflevector(c, d, 0, 2), __builtin_shufflevector(c, d, 1, 3));
            }
        });
    }

    const Cholesky& L_;
    const std::ptrdiff_t* variable_;
    const double* m_;
    double* tile_;
};

}  // namespace kef::stats
