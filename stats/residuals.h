// Sums of products of deviations from the means of groups, of observations in any order, which
// stay where they are. Of each group a point r, the weight W and S = sum w (x - r), of all groups
// together Q = sum w (x - r)(x - r)^T:
//   mean = r + S/W,   the products = Q - sum over groups S S^T/W.
// The first observation of a group is its r. Before W has grown fourfold r moves to the mean, or to
// an observation that outweighs all before it: 1/4 at least of what a group adds to Q remains.
#pragma once

#include <limits>

#include "stats/accumulate.h"

namespace kef::stats {

// Whether the observations from j on are a whole tile of one group.
template <class F> bool is_run(F group, std::ptrdiff_t j, std::ptrdiff_t n) {
    const auto first = group(j);
    if (n - j < short_tile || group(j + short_tile - 1) != first) return false;
    for (const std::ptrdiff_t end = j + short_tile; j < end; ++j)
        if (group(j) != first) return false;
    return true;
}

// Weight is std::ptrdiff_t for data without weights, else double.
template <class T, class Weight> class Residuals {
    static constexpr bool weighted = std::is_same_v<Weight, double>;
    // Of a pair of variables.
    struct PointAndSums {
        d2 r, half[2];  // S of every other observation each: one need not wait for the other
        d2 S() const { return half[0] + half[1]; }
    };
    struct Group {
        Weight W;       // 0 without members
        Weight enough;  // where r is to move; at twice as much, before anything is added
        bool due;       // r moves when the tile is done
        SumOfSquares W2;
        PointAndSums* pairs;
    };
    struct Member {
        PointAndSums* pairs;
        int observation;  // of the tile
    };
    struct Tile {
        std::ptrdiff_t first, end;
        int count = 0;  // members
        bool one_group = false;
    };
    static Weight enough_after(Weight W) {
        constexpr Weight growth = 2, most = std::numeric_limits<Weight>::max();
        return W < most / (2 * growth) ? growth * W : most / 2;
    }

public:
    class Room {
    public:
        Room(KeptLayout& layout, std::uint64_t groups, std::uint64_t pairs)
            : groups_(layout.reserve(groups, sizeof(Group))),
              pairs_(layout.reserve(groups, sizeof(PointAndSums), pairs)),
              members_(layout.reserve(short_tile, sizeof(Member))),
              due_(layout.reserve(short_tile, sizeof(Group*))),
              weights_(layout.reserve(short_tile, sizeof(double))) {}

    private:
        friend Residuals;
        std::uint64_t groups_, pairs_, members_, due_, weights_;
    };

    // The products go to those of `sums`, whose pairs are variables of x.
    Residuals(const Observations<T>& x, const T* weights, std::ptrdiff_t n, Accumulators& sums,
              const Room& room, std::ptrdiff_t groups, char* block)
        : x_(x),
          weights_(weights),
          n_(n),
          sums_(sums),
          group_(reinterpret_cast<Group*>(block + room.groups_)),
          groups_(groups),
          member_(reinterpret_cast<Member*>(block + room.members_)),
          due_(reinterpret_cast<Group**>(block + room.due_)),
          w_(reinterpret_cast<double*>(block + room.weights_)) {
        auto* pairs = reinterpret_cast<PointAndSums*>(block + room.pairs_);
        std::memset(static_cast<void*>(pairs), 0, groups * sums.pairs * sizeof *pairs);
        for (std::ptrdiff_t g = 0; g < groups; ++g, pairs += sums.pairs)
            group_[g] = {0, 0, false, {}, pairs};
    }

    // Adds the observations j of group(j) >= 0.
    template <class F> void operator()(F group) {
        for (std::ptrdiff_t j = 0; j < n_;) {
            const Tile tile = next_tile(j, group);
            if (tile.count > 0) add(tile);
            move_due();
            j = tile.end;
        }
        // Q becomes the products.
        for (std::ptrdiff_t g = 0, k = 0; g < groups_; ++g) {
            if (group_[g].W > 0) put_sums(group_[g], static_cast<int>(k++), -1);
            if (k == short_tile || g + 1 == groups_) add_columns(static_cast<int>(k)), k = 0;
        }
    }

    // W, W2 and the means of group g.
    void finish(std::ptrdiff_t g, Accumulators& to) const {
        const Group& G = group_[g];
        to.W = static_cast<double>(G.W);
        to.W2 = weighted ? G.W2 : SumOfSquares(to.W);
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i)
            two_sum(G.pairs[i].r, G.pairs[i].S() / to.W, to.sums[i].mean_high, to.sums[i].mean_low);
    }

private:
    // Up to short_tile observations, or those before one that r of its group has to move for.
    template <class F> [[gnu::noinline]] Tile next_tile(std::ptrdiff_t first, F group) {
        Tile tile = {first, std::min(n_, first + short_tile)};
        if (!weighted && is_run(group, first, n_)) {
            const std::ptrdiff_t g = group(first);
            if (g < 0) return tile;
            if (Group& G = group_[g]; G.W + short_tile <= 2 * G.enough) {
                G.W += short_tile;
                if (G.W > G.enough) set_due(G);
                member_[0].pairs = G.pairs;
                tile.count = short_tile;
                tile.one_group = true;
                return tile;
            }
        }
        Group* const groups = group_;
        Member* member = member_;
        for (std::ptrdiff_t j = first; j < tile.end; ++j) {
            const std::ptrdiff_t g = group(j);
            if (g < 0) continue;
            Group& G = groups[g];
            const Weight w = weighted ? weights_[j] : 1, W = G.W + w;
            if (W > G.enough && !has_place(G, w, j, member == member_)) [[unlikely]] {
                tile.end = j;
                break;
            }
            G.W = W;
            if constexpr (weighted) {
                w_[member - member_] = w;
                G.W2 += SumOfSquares(&w, 1, w * w);
            }
            *member++ = {G.pairs, static_cast<int>(j - first)};
        }
        tile.count = static_cast<int>(member - member_);
        return tile;
    }
    // Whether observation j may be added: not where r has to move first and the tile has members,
    // which have not been summed up.
    [[gnu::noinline]] bool has_place(Group& G, Weight w, std::ptrdiff_t j, bool none) {
        if (G.W + w <= 2 * G.enough) {
            set_due(G);
        } else {
            if (G.W > 0 && !none) return false;
            move_for(G, w, j);
        }
        return true;
    }

    void add(const Tile& tile) {
        const bool all = tile.count == tile.end - tile.first;
        const int n = static_cast<int>(tile.end - tile.first);
        detail::for_each_pair(sums_, x_, tile.first, n, [&](std::ptrdiff_t i, Pair pair) {
            with_pair(x_, pair, tile.first, [&](const auto& source) {
                if (tile.one_group) add_run(i, source, n);
                else if (all) add_pair<true>(i, source, tile.count);
                else add_pair<false>(i, source, tile.count);
            });
        });
        if (sums_.plan.products)
            add_products(sums_.deviation, weighted ? sums_.scaled : sums_.deviation, tile.count);
    }

    // Pair i of the members of a tile, all observations of it or not.
    template <bool all, class Source>
    [[gnu::noinline]] void add_pair(std::ptrdiff_t i, const Source& source, int count) {
        const bool products = sums_.plan.products;
        d2 *const y = sums_.deviation + i * column, *const z = sums_.scaled + i * column;
        const auto one = [&](int k, int half) {
            PointAndSums& s = member_[k].pairs[i];
            const d2 d = source.one(all ? k : member_[k].observation) - s.r;
            const d2 wd = weighted ? d * duplicate(w_ + k) : d;
            if (products) {
                y[k] = d;
                if (weighted) z[k] = wd;
            }
            s.half[half] += wd;
        };
        int k = 0;
        for (; k + 2 <= count; k += 2) one(k, 0), one(k + 1, 1);
        if (k < count) one(k, 0);
    }
    template <class Source>
    [[gnu::noinline]] void add_run(std::ptrdiff_t i, const Source& source, int n) {
        PointAndSums& s = member_[0].pairs[i];
        d2* const y = sums_.deviation + i * column;
        d2 sum[4];
        power_sums(1, source, nullptr, n, s.r, sum);
        s.half[0] += sum[0];
        if (sums_.plan.products)
            for (int k = 0; k < n; ++k) y[k] = source.one(k) - s.r;
    }

    void add_products(const d2* y, const d2* z, int n) {
        cross_products(y, z, sums_.pairs, n,
                       [&](std::ptrdiff_t a, std::ptrdiff_t b, const ProductBlock& sum) {
                           ProductBlock& Q = sums_.products[block_index(a, b)];
                           Q.straight += sum.straight;
                           Q.crossed += sum.crossed;
                       });
    }

    void set_due(Group& G) {
        if (G.due) return;
        G.due = true;
        due_[dues_++] = &G;
    }
    void move_due() {
        int k = 0;
        for (; dues_ > 0; k += 2) {
            if (k + 2 > short_tile) add_columns(k), k = 0;
            Group& G = *due_[--dues_];
            G.due = false;
            G.enough = enough_after(G.W);
            move(G, k, [&](std::ptrdiff_t i) {
                return G.pairs[i].r + G.pairs[i].S() / static_cast<double>(G.W);
            });
        }
        add_columns(k);
    }
    // Before observation j of weight w is added.
    void move_for(Group& G, Weight w, std::ptrdiff_t j) {
        if (w <= G.W) {
            set_due(G);
            return move_due();
        }
        G.enough = enough_after(w);
        move(G, 0, [&](std::ptrdiff_t i) {
            d2 x;
            with_pair(x_, sums_.pair[i], j, [&](const auto& source) { x = source.one(0); });
            return x;
        });
        if (G.W > 0) add_columns(2);
    }

    // Moves r to the finite ones of to(i). Columns k and k + 1 are what Q loses and gets by that.
    template <class To> void move(Group& G, int k, To to) {
        if (G.W > 0) put_sums(G, k, -1);
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i) {
            PointAndSums& s = G.pairs[i];
            const d2 wanted = to(i), r = vm::select(finite(wanted), wanted, s.r);
            s = {r, {s.S() - static_cast<double>(G.W) * (r - s.r), d2{}}};
        }
        if (G.W > 0) put_sums(G, k + 1, 1);
    }
    // Column k: S with the factor sign/W.
    void put_sums(const Group& G, int k, double sign) {
        if (!sums_.plan.products) return;
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i) {
            const d2 S = G.pairs[i].S();
            sums_.deviation[i * column + k] = S;
            sums_.scaled[i * column + k] = S / static_cast<double>(G.W) * sign;
        }
    }
    void add_columns(int n) {
        if (n > 0 && sums_.plan.products) add_products(sums_.deviation, sums_.scaled, n);
    }

    Observations<T> x_;
    const T* weights_;  // null without them
    std::ptrdiff_t n_;
    Accumulators& sums_;
    Group* group_;
    std::ptrdiff_t groups_;
    Member* member_;
    Group** due_;
    double* w_;
    int dues_ = 0;
};

}  // namespace kef::stats
