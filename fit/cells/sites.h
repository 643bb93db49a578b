// The sites of a call, and the loop that locates them block by block.
#pragma once

#include <cmath>
#include <initializer_list>

#include "fit/cells/locate.h"

namespace kef::fit {

inline bool is_site_hint(std::int64_t h) { return is_partition_hint(h) || h == DF_SORTED; }

// The checks of one or more arrays of n sites.
inline std::int32_t check_sites(std::int64_t n, std::initializer_list<std::int64_t> hints,
                                std::initializer_list<const void*> arrays) {
    if (n < 0) return DF_STATUS_SITE_COUNT;
    for (std::int64_t hint : hints)
        if (!is_site_hint(hint)) return DF_STATUS_SITE_HINT;
    for (const void* array : arrays)
        if (n > 0 && array == nullptr) return DF_STATUS_SITES;
    return DF_STATUS_OK;
}

// n points at equal distances by their ends, which may be further apart than the largest
// finite number: then half the places are computed.
class Grid {
public:
    Grid(double first, double last, std::int64_t n) {
        const bool wide = !std::isfinite(last - first);
        if (wide) first /= 2, last /= 2, scale_ = 2;
        first_ = first;
        if (n > 1) step_ = (last - first) / double(n - 1);
    }
    double operator[](std::int64_t i) const { return (first_ + double(i) * step_) * scale_; }

private:
    double first_, step_ = 0, scale_ = 1;
};

// An array of sites, or a uniform grid given by its ends.
template <class T> class Sites {
public:
    Sites(const T* site, std::int64_t n, std::int64_t hint)
        : site_(site),
          n_(n),
          is_grid_(hint == DF_UNIFORM),
          last_(site[is_grid_ && n > 1 ? 1 : 0]),
          ascending_(hint == DF_SORTED || (is_grid_ && last_ >= site[0])),
          grid_(site[0], last_, n) {}

    bool ascending() const { return ascending_; }
    std::int64_t size() const { return n_; }

    // `count` sites from number `from` on; a grid is laid out in `buffer`.
    const T* block(std::int64_t from, std::uint32_t count, T* buffer) const {
        if (!is_grid_) return site_ + from;
        for (std::uint32_t j = 0; j < count; ++j) buffer[j] = static_cast<T>(grid_[from + j]);
        if (n_ > 1 && from + count == n_) buffer[count - 1] = last_;
        return buffer;
    }

private:
    const T* site_;
    std::int64_t n_;
    bool is_grid_;
    T last_;
    bool ascending_;
    Grid grid_;
};

// Sites located by a search, a block at a time: while (located.next()) ...
template <class T, class Search> class Located {
public:
    const T* site = nullptr;  // n sites from number `from` on
    std::uint32_t cell[block_size];
    std::int64_t from = 0;
    std::uint32_t n = 0;
    bool all_inside = true;

    Located(const Partition<T>& partition, const Search& search, const Sites<T>& sites)
        : partition_(partition), search_(search), sites_(sites) {}

    // False behind the last block, and where the search's own beginning of a block gives
    // a status.
    bool next() {
        from += n;
        n = static_cast<std::uint32_t>(std::min<std::int64_t>(block_size, sites_.size() - from));
        if (n == 0) return false;
        site = sites_.block(from, n, grid_);
        if constexpr (requires { search_.begin(site, n); }) {
            status_ = search_.begin(site, n);
            if (status_ != DF_STATUS_OK) return false;
        }
        all_inside = locate(partition_, search_, site, n, cell);
        return true;
    }
    std::int32_t status() const { return status_; }

    // Stores the cells of the block in their places of the caller's array.
    template <class Int> void store(Int* count) const {
        store_counts(partition_, site, cell, n, all_inside, count + from);
    }

private:
    const Partition<T>& partition_;
    Search search_;
    const Sites<T>& sites_;
    std::int32_t status_ = DF_STATUS_OK;
    alignas(16) T grid_[block_size];
};

}  // namespace kef::fit
