// _vtsdSSPooledCovariance, _vtssSSPooledCovariance: sum C_g / sum B_g over groups of observations,
// and means and covariances of groups. Groups whose own covariance is wanted have their
// observations put together, which go through the accumulators of Basic a tile at a time; the
// others share the sums of products (residuals.h). All are added up in the end.
#include <cstring>

#include "stats/accumulate.h"
#include "stats/computation.h"
#include "stats/derive.h"
#include "stats/residuals.h"
#include "stats/select.h"

namespace kef::stats {

namespace {

// Observations on their way: from their places in x to those in the tiles of their groups.
constexpr int on_the_way = 64;

// The members of a group that wait for a tile to be full, each an observation of `stride` elements.
template <class T> struct Waiting {
    T *x, *next, *w;  // w is null for data without weights
    int count;
};

// The variables of the list, of the observations from[k] in x to the places to[k].
template <class T>
void copy(const Observations<T>& x, const std::ptrdiff_t* variable, std::ptrdiff_t variables,
          const std::ptrdiff_t* from, T* const* to, int n) {
    if (x.stride == 1) {
        // What fills a cache line is written together.
        constexpr std::ptrdiff_t line = 64 / sizeof(T);
        for (std::ptrdiff_t first = 0; first < variables; first += line) {
            const T* own[line];
            const std::ptrdiff_t count = std::min(line, variables - first);
            for (std::ptrdiff_t a = 0; a < count; ++a) own[a] = x.at(variable[first + a], 0);
            for (int k = 0; k < n; ++k)
                for (std::ptrdiff_t a = 0; a < count; ++a) to[k][first + a] = own[a][from[k]];
        }
    } else if (variable[variables - 1] - variable[0] == variables - 1) {
        constexpr int block = 16 / sizeof(T);
        for (int k = 0; k < n; ++k) {
            const T* const own = x.at(variable[0], from[k]);
            std::ptrdiff_t a = 0;
            for (; a + block <= variables; a += block) std::memcpy(to[k] + a, own + a, 16);
            for (; a < variables; ++a) to[k][a] = own[a];
        }
    } else {
        for (int k = 0; k < n; ++k)
            for (std::ptrdiff_t a = 0; a < variables; ++a) to[k][a] = *x.at(variable[a], from[k]);
    }
}

template <class T> class Pooling {
public:
    explicit Pooling(Task& task)
        : task_(task),
          p_(positive_at(task, task.dimension)),
          n_(positive_at(task, task.count)),
          variables_(count_selected(task, p_)),
          weights_(static_cast<const T*>(task.weights)),
          products_(task.pooled_covariance != nullptr || task.group_covariances != nullptr) {}

    std::int32_t run() {
        if (variables_ == 0) return VTS_SS_STATUS_OK;
        if (weights_ != nullptr) {
            const Range<T> range = range_of(weights_, n_);
            if (!are_weights(range)) return VTS_SS_STATUS_NULL_WEIGHTS;
            everyone_ = range.least > 0;
        }
        const std::int32_t status =
            task_.wide_integers ? add_all(static_cast<const std::int64_t*>(task_.group_indices))
                                : add_all(static_cast<const std::int32_t*>(task_.group_indices));
        if (status != VTS_SS_STATUS_OK) return status;
        bool some = false;
        for (std::ptrdiff_t g = 0; g < groups_; ++g) {
            const Accumulators& A = sums_[g];
            some = some || A.W > 0;
            if (!A.one_observation()) normaliser_ += std::max(0.0, A.W - A.W2.over(A.W));
        }
        if (!some || (task_.pooled_covariance != nullptr && !(normaliser_ > 0)))
            return VTS_SS_STATUS_TOO_FEW_OBSERVATIONS;
        write_groups();
        write_pooled();
        return VTS_SS_STATUS_OK;
    }

private:
    bool is_wanted(std::int64_t group) const {
        return task_.requested_groups != nullptr &&
               integer_at(task_, task_.requested_groups, static_cast<std::ptrdiff_t>(group)) != 0;
    }
    bool has_own_products(std::int64_t group) const {
        return task_.group_covariances != nullptr && is_wanted(group);
    }

    // The greatest, and a number that is negative where one of them is.
    template <class Index>
    static std::pair<Index, Index> greatest_and_sign(const Index* index, std::ptrdiff_t n) {
        Index greatest = index[0], sign = 0;
        std::ptrdiff_t j = 0;
        if constexpr (sizeof(Index) == sizeof(std::int32_t)) {
            i4 most[2] = {vm::filled<i4>(greatest), vm::filled<i4>(greatest)}, signs{};
            for (; j + 8 <= n; j += 8)
                for (int k = 0; k < 2; ++k) {
                    const auto* four = reinterpret_cast<const __m128i*>(index + j + 4 * k);
                    const i4 x = (i4)_mm_loadu_si128(four), above = x > most[k];
                    most[k] = (x & above) | (most[k] & ~above);
                    signs |= x;
                }
            for (int lane = 0; lane < 4; ++lane) {
                greatest = std::max({greatest, most[0][lane], most[1][lane]});
                sign |= signs[lane];
            }
        }
        for (; j < n; ++j) {
            greatest = std::max(greatest, index[j]);
            sign |= index[j];
        }
        return {greatest, sign};
    }

    // last_ is the largest index. number_[group] counts the groups that may have members, those
    // below 0 that have products of their own; `none` for those without.
    template <class Index> bool number_groups(const Index* index) {
        const auto [greatest, sign] = greatest_and_sign(index, n_);
        last_ = std::max<std::int64_t>(greatest, -1);
        if (last_ >= INT32_MAX) return false;
        KeptLayout room;
        room.reserve(last_ + 2, sizeof(std::int32_t));  // never nothing
        number_ = reinterpret_cast<std::int32_t*>(keep(task_, Kept::groups, room));
        if (number_ == nullptr) return false;
        // Where there could be many without members, they are looked for.
        constexpr std::int32_t none = SomeMembers<Index, T>::none, some = none + 1;
        const bool many = last_ >= n_ / 16;
        std::fill_n(number_, last_ + 1, many ? none : some);
        for (std::ptrdiff_t j = 0; many && j < n_; ++j)
            if (index[j] >= 0 && (weights_ == nullptr || weights_[j] != 0))
                number_[index[j]] = some;
        std::int32_t others = 0, own = 0;
        for (std::int64_t group = 0; group <= last_; ++group)
            if (std::int32_t& number = number_[group]; number == some)
                number = has_own_products(group) ? --own : others++;
        own_ = -own;
        groups_ = own_ + others;
        everyone_ = everyone_ && sign >= 0 && others == last_ + 1;
        return true;
    }

    template <class Index> std::int32_t add_all(const Index* index) {
        if (!number_groups(index)) return VTS_SS_STATUS_NO_MEMORY;
        const SomeMembers<Index, T> some = {index, number_, weights_};
        return everyone_ ? add_groups(AllMembers<Index>{index}) : add_groups(some);
    }

    template <class Group> std::int32_t add_groups(Group group) {
        return weights_ != nullptr ? add_groups<double>(group) : add_groups<std::ptrdiff_t>(group);
    }
    template <class Weight, class Group> std::int32_t add_groups(Group group) {
        pairs_ = (variables_ + 1) / 2;
        using Others = Residuals<T, Weight>;
        KeptLayout room;
        const typename Others::Room others_room(room, groups_ - own_, pairs_);
        char* start = make_room(room);
        if (start == nullptr) return VTS_SS_STATUS_NO_MEMORY;
        const auto x = observations_of<T>(task_);
        if (own_ > 0) add_own(x, group);
        if (own_ == groups_) return VTS_SS_STATUS_OK;
        Others others(x, weights_, n_, total_, others_room, groups_ - own_, start);
        others(group);
        for (std::ptrdiff_t g = own_; g < groups_; ++g) others.finish(g - own_, sums_[g]);
        return VTS_SS_STATUS_OK;
    }

    // The scratch block with a layout, and behind it what all groups need and those of their own.
    char* make_room(KeptLayout room) {
        stride_ = 2 * pairs_;
        // Tiles that stay in the second-level cache, as long as they are not too short for it.
        constexpr std::ptrdiff_t cache = 1 << 19, shortest = 32;
        const std::ptrdiff_t own = std::max<std::ptrdiff_t>(own_, 1);
        const std::ptrdiff_t fitting = cache / sizeof(T) / stride_ / own;
        const std::ptrdiff_t members = (n_ / own + 4) & -4;
        tile_ = static_cast<int>(
            std::min({std::max(fitting & -4, shortest), members, std::ptrdiff_t{short_tile}}));

        const std::uint64_t groups = groups_;
        const auto variable = room.reserve(variables_, sizeof(std::ptrdiff_t));
        const auto waiting = room.reserve(own_, sizeof(Waiting<T>));
        const auto data = room.reserve(own_, stride_ * sizeof(T), tile_);
        const auto weights = room.reserve(weights_ != nullptr ? own_ : 0, sizeof(T), tile_);
        const SumsRoom total(room, variables_);
        const ProductsRoom total_products(room, products_ ? variables_ : 0);
        const auto packed = room.reserve(pairs_, sizeof(Pair));
        const auto accumulators = room.reserve(groups, sizeof(Accumulators));
        const auto sums = room.reserve(groups, sizeof(PairSums), pairs_);
        const std::uint64_t blocks = block_index(pairs_, 0);
        const auto products = room.reserve(own_, sizeof(ProductBlock), blocks);
        char* start = scratch(task_, room);
        if (start == nullptr) return nullptr;

        variable_ = reinterpret_cast<std::ptrdiff_t*>(start + variable);
        list_selected(task_, p_, variable_);
        sums_ = reinterpret_cast<Accumulators*>(start + accumulators);
        waiting_ = reinterpret_cast<Waiting<T>*>(start + waiting);
        total_.plan =
            Plan(set_of(quantity::mean) | (products_ ? set_of(quantity::product) : 0), false);
        total.give(total_, start);
        total_products.give(total_, start);
        set_pairs(total_, variable_, variables_);
        total_.clear();
        packed_ = reinterpret_cast<Pair*>(start + packed);
        for (std::ptrdiff_t k = 0; k < pairs_; ++k)
            packed_[k] = {2 * k, 2 * k + (2 * k + 1 < variables_)};
        auto* const group_sums = reinterpret_cast<PairSums*>(start + sums);
        auto* const group_products = reinterpret_cast<ProductBlock*>(start + products);
        std::memset(static_cast<void*>(group_sums), 0, groups_ * pairs_ * sizeof(PairSums));
        std::memset(static_cast<void*>(group_products), 0, own_ * blocks * sizeof(ProductBlock));
        for (std::ptrdiff_t g = 0; g < groups_; ++g) {
            sums_[g] = total_;
            sums_[g].sums = group_sums + g * pairs_;
            if (g >= own_) continue;
            sums_[g].products = group_products + g * blocks;
            T* const x = reinterpret_cast<T*>(start + data) + g * tile_ * stride_;
            T* const w = reinterpret_cast<T*>(start + weights) + g * tile_;
            waiting_[g] = {x, x, weights_ != nullptr ? w : nullptr, 0};
        }
        return start;
    }

    // The groups that have products of their own.
    template <class Group> void add_own(const Observations<T>& x, Group group) {
        const std::ptrdiff_t n = n_, stride = stride_, own = own_;
        std::ptrdiff_t from[on_the_way];
        T* to[on_the_way];
        for (std::ptrdiff_t j = 0; j < n;) {
            // A whole tile of one group need not be put together.
            if (group.is_run(j, n)) {
                if (const std::ptrdiff_t g = group(j) + own; g >= 0 && g < own)
                    add(g, x, j, short_tile, weights_ != nullptr ? weights_ + j : nullptr,
                        total_.pair);
                j += short_tile;
                continue;
            }
            int count = 0;
            std::ptrdiff_t full = -1;
            for (; j < n && count < on_the_way && full < 0; ++j) {
                const std::ptrdiff_t g = group(j) + own;
                if (g < 0 || g >= own) continue;
                Waiting<T>& members = waiting_[g];
                from[count] = j;
                to[count++] = members.next;
                members.next += stride;
                if (members.w != nullptr) members.w[members.count] = weights_[j];
                if (++members.count == tile_) full = g;
            }
            copy(x, variable_, variables_, from, to, count);
            if (full >= 0) add_waiting(full);
        }
        for (std::ptrdiff_t g = 0; g < own_; ++g)
            if (waiting_[g].count > 0) add_waiting(g);
    }

    void add_waiting(std::ptrdiff_t g) {
        Waiting<T>& members = waiting_[g];
        add(g, {members.x, 1, stride_}, 0, members.count, members.w, packed_);
        members.next = members.x;
        members.count = 0;
    }

    // n observations of a group; the pairs are those of their variables.
    void add(std::ptrdiff_t g, const Observations<T>& x, std::ptrdiff_t first, int n,
             const T* weights, Pair* pair) {
        alignas(16) double w[short_tile + 4];
        sums_[g].pair = pair;
        add_observations(sums_[g], x, first, n,
                         weights != nullptr ? read_weights(weights, n, w) : TileWeights::ones(n));
    }

    // mean(a) and product(a, b) of list members to arrays of the caller's.
    template <class Mean> void write_mean(T* mean, Mean of) const {
        for (std::ptrdiff_t a = 0; a < variables_; ++a) mean[variable_[a]] = static_cast<T>(of(a));
    }
    template <class Product>
    void write_covariance(T* data, const void* layout, double divisor, Product product) const {
        const auto matrix = matrix_at<T>(task_, p_, data, layout);
        for (std::ptrdiff_t a = 0; a < variables_; ++a)
            for (std::ptrdiff_t b = 0; b <= a; ++b)
                matrix.put(variable_[a], variable_[b], product(a, b) / divisor);
    }

    // Of the wanted groups, one behind the other; NaN for one without members.
    void write_groups() const {
        if (task_.group_means == nullptr && task_.group_covariances == nullptr) return;
        const std::ptrdiff_t size =
            task_.group_covariances == nullptr ? 0
            : integer_at(task_, task_.group_covariances_storage) == VTS_SS_LAYOUT_FULL
                ? p_ * p_
                : p_ * (p_ + 1) / 2;
        auto *means = static_cast<T*>(task_.group_means),
             *covariances = static_cast<T*>(task_.group_covariances);
        for (std::int64_t group = 0; group <= last_; ++group) {
            if (!is_wanted(group)) continue;
            const std::ptrdiff_t g = number_[group] + own_;
            const Accumulators* const A = g >= 0 && sums_[g].W > 0 ? &sums_[g] : nullptr;
            if (means != nullptr) {
                write_mean(means, [&](std::ptrdiff_t a) {
                    return A != nullptr ? A->get(quantity::mean, a) : NAN;
                });
                means += p_;
            }
            if (covariances != nullptr) {
                write_covariance(covariances, task_.group_covariances_storage,
                                 A != nullptr ? normaliser(A->W, A->W2) : 1,
                                 [&](std::ptrdiff_t a, std::ptrdiff_t b) {
                                     return A != nullptr ? A->get_product(a, b) : NAN;
                                 });
                covariances += size;
            }
        }
    }

    // All groups together: the means of the others are joined to that of the heaviest group, so
    // that a small one far away does not round it; the sums of products are added.
    void write_pooled() {
        std::ptrdiff_t heaviest = 0;
        for (std::ptrdiff_t g = 1; g < groups_; ++g)
            if (sums_[g].W > sums_[heaviest].W) heaviest = g;
        std::copy_n(sums_[heaviest].sums, pairs_, total_.sums);
        total_.W = sums_[heaviest].W;
        for (std::ptrdiff_t g = 0; g < groups_; ++g) {
            const Accumulators& A = sums_[g];
            if (g != heaviest && A.W > 0) {
                const MergeFactors factors(total_.W, A.W);
                for (std::ptrdiff_t i = 0; i < pairs_; ++i)
                    merge(total_.sums[i], 1, A.sums[i].mean_high, A.sums[i].mean_low, {}, factors);
                total_.W += A.W;
            }
            if (A.products == total_.products) continue;
            for (std::ptrdiff_t k = 0; k < block_index(pairs_, 0); ++k) {
                total_.products[k].straight += A.products[k].straight;
                total_.products[k].crossed += A.products[k].crossed;
            }
        }
        if (task_.pooled_mean != nullptr)
            write_mean(static_cast<T*>(task_.pooled_mean),
                       [&](std::ptrdiff_t a) { return total_.get(quantity::mean, a); });
        if (task_.pooled_covariance != nullptr)
            write_covariance(
                static_cast<T*>(task_.pooled_covariance), task_.pooled_covariance_storage,
                normaliser_,
                [&](std::ptrdiff_t a, std::ptrdiff_t b) { return total_.get_product(a, b); });
    }

    Task& task_;
    const std::ptrdiff_t p_, n_, variables_;
    const T* const weights_;
    const bool products_;
    std::int64_t last_ = -1;               // the largest group index
    std::ptrdiff_t groups_ = 0, own_ = 0;  // groups with members, those with products of their own
    std::ptrdiff_t pairs_ = 0, stride_ = 0;
    bool everyone_ = true;  // takes part, in a group with its index as its number
    int tile_ = 0;
    std::int32_t* number_ = nullptr;
    std::ptrdiff_t* variable_ = nullptr;
    Waiting<T>* waiting_ = nullptr;
    Accumulators* sums_ = nullptr;
    Accumulators total_{};    // with the pairs of x
    Pair* packed_ = nullptr;  // those of waiting members
    double normaliser_ = 0;
};

}  // namespace

template <class T> std::int32_t pooled_covariance(Task& task) { return Pooling<T>(task).run(); }

KEF_BOTH_PRECISIONS(pooled_covariance);

}  // namespace kef::stats
