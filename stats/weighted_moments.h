// Mean and covariance of some variables under weights of the library's own, 0 among them, by the
// accumulators of Basic's tiled method.
#pragma once

#include "stats/accumulate.h"

namespace kef::stats {

class WeightedMoments {
public:
    class Room {
    public:
        Room(KeptLayout& layout, std::ptrdiff_t count)
            : sums_(layout, count), products_(layout, count) {}

    private:
        friend WeightedMoments;
        SumsRoom sums_;
        ProductsRoom products_;
    };
    // Of the given variables.
    WeightedMoments(const Room& room, char* start, const std::ptrdiff_t* variable,
                    std::ptrdiff_t count)
        : count_(count) {
        A_.plan.central = 1;
        A_.plan.products = true;
        room.sums_.give(A_, start);
        room.products_.give(A_, start);
        set_pairs(A_, variable, count);
    }

    // Of n observations. No weight is negative, and deviations are first taken from `centre`, in
    // the middle of those of positive weight: what has weight 0 may be anywhere.
    template <class T>
    void operator()(const Observations<T>& x, std::ptrdiff_t n, const double* weights,
                    const double* centre) {
        start(centre);
        alignas(vm::vector_bytes) double w[weight_room(short_tile)];
        for_each_tile(0, n, short_tile, [&](std::ptrdiff_t first, int m) {
            const TileWeights t = read_weights(weights + first, m, w);
            if (t.sum != 0) add_observations(A_, x, first, m, t);
        });
    }
    // The same in parts, each of weight 1.
    void start(const double* centre) {
        A_.clear();
        for (std::ptrdiff_t a = 0; a < count_; ++a) A_.set(quantity::mean, a, centre[a]);
        A_.started = true;
    }
    template <class T> void add(const Observations<T>& x, std::ptrdiff_t n) {
        for_each_tile(0, n, short_tile, [&](std::ptrdiff_t first, int m) {
            add_observations(A_, x, first, m, TileWeights::ones(m));
        });
    }

    double weight() const { return A_.W; }
    double mean(std::ptrdiff_t a) const { return A_.get(quantity::mean, a); }
    // The weighted sum of products of deviations from the means, a >= b.
    double product(std::ptrdiff_t a, std::ptrdiff_t b) const { return A_.get_product(a, b); }

private:
    Accumulators A_{};
    std::ptrdiff_t count_;
};

}  // namespace kef::stats
