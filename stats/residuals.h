// Sums of products of deviations from the means of groups, of observations in any order, which
// stay where they are. Of each group a point r, the weight W and S = sum w (x - r), of all groups
// together Q = sum w (x - r)(x - r)^T:
//   mean = r + S/W,   the products = Q - sum over groups S S^T/W.
// The first observation of a group is its r. Before W has grown fourfold r moves to the mean, or to
// an observation that outweighs all before it: 1/4 at least of what a group adds to Q remains.
//
// A tile of observations goes through in one of three ways: all of one group, in their order;
// sorted into segments, one a group, while the groups are few and have many members; one by one.
#pragma once

#include <limits>
#include <utility>

#include "stats/accumulate.h"

namespace kef::stats {

// Whether the first n indices are equal.
template <class Index> bool are_equal(const Index* index, std::ptrdiff_t n) {
    return index[0] == index[n - 1] && std::memcmp(index, index + 1, (n - 1) * sizeof *index) == 0;
}

// Of observations: the number of the group of each, negative where it takes no part, and whether
// those from j on are a tile of one group.
template <class Index, class T> struct SomeMembers {
    static constexpr bool all = false;
    static constexpr std::int32_t none = INT32_MIN;
    const Index* index;
    const std::int32_t* number;  // of the group of each index
    const T* weights;            // null without them

    std::int32_t operator()(std::ptrdiff_t j) const {
        return index[j] >= 0 && (weights == nullptr || weights[j] != 0) ? number[index[j]] : none;
    }
    bool is_run(std::ptrdiff_t j, std::ptrdiff_t n) const {
        return n - j >= short_tile && are_equal(index + j, short_tile) &&
               (weights == nullptr ||
                std::find(weights + j, weights + j + short_tile, T(0)) == weights + j + short_tile);
    }
};
// The same of observations that all take part, in groups with their indices as numbers.
template <class Index> struct AllMembers {
    static constexpr bool all = true;
    const Index* index;

    std::ptrdiff_t operator()(std::ptrdiff_t j) const {
        return static_cast<std::ptrdiff_t>(index[j]);
    }
    bool is_run(std::ptrdiff_t j, std::ptrdiff_t n) const {
        return n - j >= short_tile && are_equal(index + j, short_tile);
    }
};

// Weight is std::ptrdiff_t for data without weights, else double.
template <class T, class Weight> class Residuals {
    static constexpr bool weighted = std::is_same_v<Weight, double>;
    // Of a pair of variables.
    struct PointAndSums {
        d2 r, half[2];  // S of every other observation each: one need not wait for the other
        d2 S() const { return half[0] + half[1]; }
    };
    struct Group {
        Weight enough;  // where r is to move; at twice as much, before anything is added
        Weight above;   // W, but for data without weights W - enough: one number to count and test
        bool due;       // r moves when the tile is done
        SumOfSquares W2;
        PointAndSums* pairs;

        Weight W() const { return weighted ? above : above + enough; }  // 0 without members
        bool is_enough(Weight w) const { return above + w > (weighted ? enough : 0); }
        void set_W(Weight value) { above = weighted ? value : value - enough; }
        void set_enough(Weight value) {
            if (!weighted) above += enough - value;
            enough = value;
        }
    };
    struct Member {
        PointAndSums* pairs;
        int observation;  // of the tile
    };
    // The members of a tile that belong to one group.
    struct Segment {
        Group* group;
        std::ptrdiff_t *begin, *end;  // where each stands, counted from the first one of the tile
        Weight W;                     // of the group with them
    };
    // In these arrays each group has room for a tile, and for what sums of weights read beyond it.
    static constexpr std::ptrdiff_t segment_room = weighted ? weight_room(short_tile) : short_tile;
    struct Tile {
        std::ptrdiff_t first, end;
        int count = 0;     // members
        int segments = 0;  // 0: they stand in the order of the observations
        bool one_group = false;
    };
    // Segments of a tile are worth while for so many groups.
    static constexpr std::ptrdiff_t most_segments = 32;
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
              segments_(layout.reserve(most_segments, sizeof(Segment))),
              squares_(layout.reserve(weighted ? most_segments : 0, sizeof(SumOfSquares))),
              next_(layout.reserve(most_segments, sizeof(std::ptrdiff_t*))),
              offsets_(layout.reserve(sorted(groups), sizeof(std::ptrdiff_t), segment_room)),
              segment_weights_(
                  layout.reserve(weighted ? sorted(groups) : 0, sizeof(double), segment_room)),
              due_(layout.reserve(short_tile, sizeof(Group*))),
              weights_(layout.reserve(short_tile, sizeof(double))) {}

    private:
        friend Residuals;
        static std::uint64_t sorted(std::uint64_t groups) {
            return groups <= most_segments ? groups : 0;
        }
        std::uint64_t groups_, pairs_, members_, segments_, squares_, next_, offsets_,
            segment_weights_, due_, weights_;
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
          segment_(reinterpret_cast<Segment*>(block + room.segments_)),
          next_(reinterpret_cast<std::ptrdiff_t**>(block + room.next_)),
          offset_(reinterpret_cast<std::ptrdiff_t*>(block + room.offsets_)),
          weight_(reinterpret_cast<double*>(block + room.segment_weights_)),
          squares_(reinterpret_cast<SumOfSquares*>(block + room.squares_)),
          due_(reinterpret_cast<Group**>(block + room.due_)),
          w_(reinterpret_cast<double*>(block + room.weights_)) {
        auto* pairs = reinterpret_cast<PointAndSums*>(block + room.pairs_);
        std::memset(static_cast<void*>(pairs), 0, groups * sums.pairs * sizeof *pairs);
        for (std::ptrdiff_t g = 0; g < most_segments; ++g) next_[g] = offset_ + g * segment_room;
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
            if (group_[g].W() > 0) put_sums(group_[g], static_cast<int>(k++), -1);
            if (k == short_tile || g + 1 == groups_) add_columns(static_cast<int>(k)), k = 0;
        }
    }

    // W, W2 and the means of group g.
    void finish(std::ptrdiff_t g, Accumulators& to) const {
        const Group& G = group_[g];
        to.W = static_cast<double>(G.W());
        to.W2 = weighted ? G.W2 : SumOfSquares(to.W);
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i)
            two_sum(G.pairs[i].r, G.pairs[i].S() / to.W, to.sums[i].mean_high, to.sums[i].mean_low);
    }

private:
    // Up to short_tile observations, or those before one that r of its group has to move for.
    template <class F> [[gnu::noinline]] Tile next_tile(std::ptrdiff_t first, F group) {
        Tile tile = {first, std::min(n_, first + short_tile)};
        if (!weighted && group.is_run(first, n_)) {
            const std::ptrdiff_t g = group(first);
            if (g < 0) return tile;
            if (Group& G = group_[g]; G.W() + short_tile <= 2 * G.enough) {
                G.above += short_tile;
                if (G.is_enough(0)) set_due(G);
                member_[0].pairs = G.pairs;
                tile.count = short_tile;
                tile.one_group = true;
                return tile;
            }
        }
        if (groups_ <= most_segments && sort(tile, group)) return tile;
        Group* const groups = group_;
        Member* member = member_;
        for (std::ptrdiff_t j = first; j < tile.end; ++j) {
            const std::ptrdiff_t g = group(j);
            if (!F::all && g < 0) continue;
            Group& G = groups[g];
            const Weight w = weighted ? weights_[j] : 1;
            if (G.is_enough(w) && !has_place(G, w, j, member == member_)) [[unlikely]] {
                tile.end = j;
                break;
            }
            G.above += w;
            if constexpr (weighted) {
                w_[member - member_] = w;
                G.W2 += SumOfSquares(&w, 1, w * w);
            }
            *member++ = {G.pairs, static_cast<int>(j - first)};
        }
        tile.count = static_cast<int>(member - member_);
        return tile;
    }
    // Makes segments of a tile. False, and nothing is changed, where r of a group has to move
    // first.
    template <class F> [[gnu::always_inline]] bool sort(Tile& tile, F group) {
        std::ptrdiff_t** const next = next_;
        const std::ptrdiff_t end_of_tile = tile.end, stride = x_.stride;
        for (std::ptrdiff_t j = tile.first, offset = 0; j < end_of_tile; ++j, offset += stride) {
            const std::ptrdiff_t g = group(j);
            if (!F::all && g < 0) continue;
            std::ptrdiff_t* const place = next[g]++;
            *place = offset;
            if constexpr (weighted) *weight_of(place) = weights_[j];
        }
        Segment* end = segment_;
        bool have_place = true;
        for (std::ptrdiff_t g = 0; g < groups_; ++g) {
            std::ptrdiff_t* const begin = offset_ + g * segment_room;
            const std::ptrdiff_t n = next[g] - begin;
            if (n == 0) continue;
            Group& G = group_[g];
            *end = {&G, begin, std::exchange(next[g], begin), G.W()};
            if constexpr (weighted) {
                double* const w = weight_of(begin);
                const TileWeights weights = read_weights(w, static_cast<int>(n), w);
                end->W += weights.sum;
                squares_[end - segment_] = weights.sum_of_squares;
            } else {
                end->W += n;
            }
            have_place &= end++->W <= 2 * G.enough;
        }
        if (!have_place) return false;
        tile.segments = static_cast<int>(end - segment_);
        for (const Segment* s = segment_; s != end; ++s) {
            Group& G = *s->group;
            if constexpr (weighted) G.W2 += squares_[s - segment_];
            G.set_W(s->W);
            if (G.is_enough(0)) set_due(G);
            tile.count += static_cast<int>(s->end - s->begin);
        }
        return true;
    }

    double* weight_of(std::ptrdiff_t* place) const { return weight_ + (place - offset_); }

    // Whether observation j may be added: not where r has to move first and the tile has members,
    // which have not been summed up.
    [[gnu::noinline]] bool has_place(Group& G, Weight w, std::ptrdiff_t j, bool none) {
        if (G.W() + w <= 2 * G.enough) {
            set_due(G);
        } else {
            if (G.W() > 0 && !none) return false;
            move_for(G, w, j);
        }
        return true;
    }

    void add(const Tile& tile) {
        const int n = static_cast<int>(tile.end - tile.first);
        const auto add_some = [&](std::ptrdiff_t i, const auto&... sources) {
            if (tile.one_group) (add_run(i++, sources, n), ...);
            else if (tile.segments > 0)
                sums_.plan.products ? add_segments<true>(i, tile, sources...)
                                    : add_segments<false>(i, tile, sources...);
            else add_members(i, tile.count, sources...);
        };
        // Two pairs at a time, where they are read the same way.
        detail::for_each_pair(sums_, x_, tile.first, n, [&](std::ptrdiff_t i, Pair pair) {
            const bool single = i % 2 == 0;
            if (single && i + 1 < sums_.pairs) return;
            with_pair(x_, pair, tile.first, [&](const auto& source) {
                if (single) return add_some(i, source);
                with_pair(x_, sums_.pair[i - 1], tile.first, [&](const auto& before) {
                    if constexpr (std::is_same_v<decltype(before), decltype(source)>)
                        return add_some(i - 1, before, source);
                    add_some(i - 1, before);
                    add_some(i, source);
                });
            });
        });
        if (sums_.plan.products)
            add_products(sums_.deviation, weighted ? sums_.scaled : sums_.deviation, tile.count);
    }

    // The pairs from i on of the members of a tile.
    template <class... Sources>
    [[gnu::noinline]] void add_members(std::ptrdiff_t i, int count, const Sources&... sources) {
        const bool products = sums_.plan.products;
        d2 *const y = sums_.deviation + i * column, *const z = sums_.scaled + i * column;
        const auto one = [&](int k, int half) __attribute__((always_inline)) {
            PointAndSums* s = member_[k].pairs + i;
            std::ptrdiff_t place = k;
            const auto add = [&](const auto& source) {
                const d2 d = source.one(member_[k].observation) - s->r;
                const d2 wd = weighted ? d * duplicate(w_ + k) : d;
                if (products) {
                    y[place] = d;
                    if (weighted) z[place] = wd;
                }
                s++->half[half] += wd;
                place += column;
            };
            (add(sources), ...);
        };
        int k = 0;
        for (; k + 2 <= count; k += 2) one(k, 0), one(k + 1, 1);
        if (k < count) one(k, 0);
    }
    // The same of a tile in segments.
    template <bool products, class... Sources>
    [[gnu::noinline]] void add_segments(std::ptrdiff_t i, const Tile& tile,
                                        const Sources&... sources) {
        constexpr int pairs = sizeof...(Sources);
        d2 *y = sums_.deviation + i * column, *z = sums_.scaled + i * column;
        for (const Segment* s = segment_; s != segment_ + tile.segments; ++s) {
            PointAndSums* const p = s->group->pairs + i;
            d2 r[pairs], S[pairs];
            for (int a = 0; a < pairs; ++a) r[a] = p[a].r, S[a] = p[a].half[0];
            const double* w = weight_of(s->begin);
            for (const std::ptrdiff_t* k = s->begin; k != s->end; ++k, ++y) {
                int a = 0;
                const auto add = [&](const auto& source) __attribute__((always_inline)) {
                    const d2 d = source.at(*k) - r[a];
                    d2 wd = d;
                    if constexpr (weighted) wd *= duplicate(w);
                    if (products) {
                        y[a * column] = d;
                        if (weighted) z[a * column] = wd;
                    }
                    S[a++] += wd;
                };
                (add(sources), ...);
                if constexpr (weighted) ++w, ++z;
            }
            for (int a = 0; a < pairs; ++a) p[a].half[0] = S[a];
        }
    }
    // Pair i of a tile of one group.
    template <class Source>
    [[gnu::noinline]] void add_run(std::ptrdiff_t i, const Source& source, int n) {
        static_assert(short_tile % 2 == 0);
        PointAndSums& s = member_[0].pairs[i];
        d2* const y = sums_.deviation + i * column;
        const d2 r = s.r;
        d2 even{}, odd{};
        if (sums_.plan.products)
            for (int k = 0; k < n; k += 2) {
                even += y[k] = source.one(k) - r;
                odd += y[k + 1] = source.one(k + 1) - r;
            }
        else
            for (int k = 0; k < n; k += 2) {
                even += source.one(k) - r;
                odd += source.one(k + 1) - r;
            }
        s.half[0] += even + odd;
    }

    void add_products(d2* y, d2* z, int n) {
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
            G.set_enough(enough_after(G.W()));
            move(G, k, [&](std::ptrdiff_t i) {
                return G.pairs[i].r + G.pairs[i].S() / static_cast<double>(G.W());
            });
        }
        add_columns(k);
    }
    // Before observation j of weight w is added.
    void move_for(Group& G, Weight w, std::ptrdiff_t j) {
        if (w <= G.W()) {
            set_due(G);
            return move_due();
        }
        G.set_enough(enough_after(w));
        move(G, 0, [&](std::ptrdiff_t i) {
            d2 x;
            with_pair(x_, sums_.pair[i], j, [&](const auto& source) { x = source.one(0); });
            return x;
        });
        if (G.W() > 0) add_columns(2);
    }

    // Moves r to the finite ones of to(i). Columns k and k + 1 are what Q loses and gets by that.
    template <class To> void move(Group& G, int k, To to) {
        if (G.W() > 0) put_sums(G, k, -1);
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i) {
            PointAndSums& s = G.pairs[i];
            const d2 wanted = to(i), r = vm::select(finite(wanted), wanted, s.r);
            s = {r, {s.S() - static_cast<double>(G.W()) * (r - s.r), d2{}}};
        }
        if (G.W() > 0) put_sums(G, k + 1, 1);
    }
    // Column k: S with the factor sign/W.
    void put_sums(const Group& G, int k, double sign) {
        if (!sums_.plan.products) return;
        for (std::ptrdiff_t i = 0; i < sums_.pairs; ++i) {
            const d2 S = G.pairs[i].S();
            sums_.deviation[i * column + k] = S;
            sums_.scaled[i * column + k] = S / static_cast<double>(G.W()) * sign;
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
    Segment* segment_;
    std::ptrdiff_t** next_;  // end of the segment of each group; between tiles they are empty
    std::ptrdiff_t* offset_;
    double* weight_;
    SumOfSquares* squares_;  // of the weights of each segment
    Group** due_;
    double* w_;
    int dues_ = 0;
};

}  // namespace kef::stats
