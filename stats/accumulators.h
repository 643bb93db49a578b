// What Basic accumulates, and where each number stands.
//
// The list of processed variables goes in pairs. Member a of the list has lane a % 2 of every
// vector of pair a / 2. The last of an odd number is alone: both lanes of its vectors hold its
// number, and kernels over contiguous data read both (LoneRow in observations.h). So a number
// is set through Accumulators::set, and sums over lanes go through Source::fold.
#pragma once

#include <cstring>

#include "stats/cross_product.h"
#include "stats/fields.h"
#include "stats/observations.h"
#include "stats/recurrence.h"
#include "stats/task.h"
#include "stats/weights.h"

namespace kef::stats {

// The accumulators of one pair of variables. High and low together have about twice the
// precision of a double.
struct PairSums {
    d2 mean_high, mean_low;
    CentralSums central;         // sums of w (x - mean)^k, k = 2 .. 4
    d2 raw_high[4], raw_low[4];  // sums of w x^k, k = 1 .. 4

    // The vector, or the high one, of a quantity of one variable; the low one or null.
    d2& high(Quantity q) {
        switch (q) {
            case quantity::mean: return mean_high;
            case quantity::central_2: return central.m2;
            case quantity::central_3: return central.m3;
            case quantity::central_4: return central.m4;
            default: return raw_high[q - quantity::raw_1];
        }
    }
    d2* low(Quantity q) {
        if (q == quantity::mean) return &mean_low;
        return q <= quantity::raw_4 ? &raw_low[q - quantity::raw_1] : nullptr;
    }
};

// What a call accumulates, as what its kernels distinguish.
struct Plan {
    int raw = 0;            // highest power of the raw sums
    int central = 0;        // highest power of the central sums; 1: the mean alone
    bool products = false;  // sums of products of deviations
    bool recurrence = false;

    Plan() = default;
    Plan(QuantitySet needed, bool recurrence) : recurrence(recurrence) {
        const auto has = [&](int q) { return (needed >> q & 1) != 0; };
        for (int k = 1; k <= 4; ++k)
            if (has(quantity::raw_1 + k - 1)) raw = k;
        if (has(quantity::mean)) central = 1;
        for (int k = 2; k <= 4; ++k)
            if (has(quantity::central_2 + k - 2)) central = k;
        products = has(quantity::product);
    }

    // The quantities that are up to date afterwards if they were before.
    QuantitySet updated() const {
        using namespace quantity;
        QuantitySet set = 0;
        if (raw >= 1) set |= set_of(raw_1, Quantity(raw_1 + raw - 1));
        if (central >= 1) set |= set_of(mean);
        if (central == 2) set |= set_of(central_2);
        if (central >= 3) set |= set_of(central_2, central_4);
        if (products) set |= set_of(product);
        return set;
    }

    // The most observations of one pass over variables of this stride.
    int tile_size(std::ptrdiff_t stride) const {
        return recurrence || products ? short_tile : sums_tile(stride);
    }
};

// Accumulators of a whole computation. The arrays belong to whoever owns this.
struct Accumulators {
    Plan plan;
    bool started;           // holds observations
    bool positive_weights;  // no weight is known to be, or may have been, negative
    double W;
    SumOfSquares W2;
    std::ptrdiff_t pairs;
    Pair* pair;
    PairSums* sums;
    // The packed lower triangle of pairs by pairs blocks, see block_index; allocated when a
    // plan first has products.
    ProductBlock* products;

    // Scratch for products. Of each pair `column` vectors, one an observation of a tile:
    // deviations, weighted deviations.
    d2 *deviation, *scaled;
    // Of each pair one vector: sum of the tile's deviations, distance of the means.
    d2 *tile_sum, *tile_distance;
    Coefficients* coefficients;

    // All that there are observations of is one.
    bool one_observation() const { return positive_weights && is_one_observation<double>(W, W2); }

    double get(Quantity q, std::ptrdiff_t a) const {
        PairSums& s = sums[a / 2];
        const d2* low = s.low(q);
        return s.high(q)[a & 1] + (low != nullptr ? (*low)[a & 1] : 0);
    }
    void set(Quantity q, std::ptrdiff_t a, double value) {
        const int first = a & 1, last = pair[a / 2].alone() ? 1 : first;
        for (int lane = first; lane <= last; ++lane) {
            sums[a / 2].high(q)[lane] = value;
            if (d2* low = sums[a / 2].low(q)) (*low)[lane] = 0;
        }
    }

    // The product of members a >= b. The second lanes of a lone variable are not used here.
    double get_product(std::ptrdiff_t a, std::ptrdiff_t b) const {
        return products[block_index(a / 2, b / 2)].get(a, b);
    }
    void set_product(std::ptrdiff_t a, std::ptrdiff_t b, double value) {
        products[block_index(a / 2, b / 2)].set(a, b, value);
    }

    void clear() {
        std::memset(static_cast<void*>(sums), 0, pairs * sizeof *sums);
        if (plan.products)
            std::memset(static_cast<void*>(products), 0, block_index(pairs, 0) * sizeof *products);
        W = 0;
        W2 = {};
        started = false;
        positive_weights = true;
    }
};

// Where the arrays of accumulators for p variables stand in a block: those of every plan, and those
// of plans with products.
class SumsRoom {
public:
    SumsRoom(KeptLayout& layout, std::ptrdiff_t p)
        : coefficients_(layout.reserve(1, sizeof(Coefficients))),
          pair_(layout.reserve(pairs_of(p), sizeof(Pair))),
          sums_(layout.reserve(pairs_of(p), sizeof(PairSums))) {}
    void give(Accumulators& A, char* block) const {
        A.coefficients = reinterpret_cast<Coefficients*>(block + coefficients_);
        A.pair = reinterpret_cast<Pair*>(block + pair_);
        A.sums = reinterpret_cast<PairSums*>(block + sums_);
    }
    static std::uint64_t pairs_of(std::ptrdiff_t p) {
        return (static_cast<std::uint64_t>(p) + 1) / 2;
    }

private:
    std::uint64_t coefficients_, pair_, sums_;
};

class ProductsRoom {
public:
    ProductsRoom(KeptLayout& layout, std::ptrdiff_t p) {
        const std::uint64_t pairs = SumsRoom::pairs_of(p);
        tile_sum_ = layout.reserve(pairs, sizeof(d2));
        tile_distance_ = layout.reserve(pairs, sizeof(d2));
        deviation_ = layout.reserve(pairs, column * sizeof(d2));
        scaled_ = layout.reserve(pairs, column * sizeof(d2));
        blocks_ = layout.reserve(pairs, pairs + 1, sizeof(ProductBlock) / 2);
    }
    void give(Accumulators& A, char* block) const {
        A.tile_sum = reinterpret_cast<d2*>(block + tile_sum_);
        A.tile_distance = reinterpret_cast<d2*>(block + tile_distance_);
        A.deviation = reinterpret_cast<d2*>(block + deviation_);
        A.scaled = reinterpret_cast<d2*>(block + scaled_);
        A.products = reinterpret_cast<ProductBlock*>(block + blocks_);
    }

private:
    std::uint64_t tile_sum_, tile_distance_, deviation_, scaled_, blocks_;
};

// The pairs of a list of variables.
inline void set_pairs(Accumulators& A, const std::ptrdiff_t* variable, std::ptrdiff_t count) {
    A.pairs = (count + 1) / 2;
    for (std::ptrdiff_t k = 0; k < A.pairs; ++k)
        A.pair[k] = {variable[2 * k], variable[2 * k + (2 * k + 1 < count)]};
}

}  // namespace kef::stats
