// The cell-search entries.
#include "fit/arrays.h"
#include "fit/cells/choose.h"

namespace kef::fit {

namespace {

template <class T>
std::int32_t check(const Task* task, std::int64_t nsite, const T* site, std::int64_t site_hint,
                   const void* cell) {
    if (const std::int32_t status = check_precision<T>(task)) return status;
    if (const std::int32_t status = check_sites(nsite, {site_hint}, {site})) return status;
    if (nsite > 0 && cell == nullptr) return DF_STATUS_RESULTS;
    return partition_is_accepted<T>(*task) ? DF_STATUS_OK : DF_STATUS_X;
}

template <class T, class Int, class Search>
std::int32_t locate_all(const Partition<T>& partition, const Sites<T>& sites, const Search& search,
                        Int* cell) {
    Located<T, Search> located(partition, search, sites);
    while (located.next()) located.store(cell);
    return located.status();
}

template <class T, class Int>
std::int32_t search(SearchMethod method, const Task* task, std::int64_t nsite, const T* site,
                    std::int64_t site_hint, Int* cell) {
    if (const std::int32_t status = check(task, nsite, site, site_hint, cell)) return status;
    if (nsite == 0) return DF_STATUS_OK;
    const Partition<T> partition(*task);
    const Sites<T> sites(site, nsite, site_hint);
    with_search(*task, partition, method, sites.ascending(), nsite,
                [&](const auto& search) { locate_all(partition, sites, search, cell); });
    return DF_STATUS_OK;
}

template <class T> struct CallbackOf;
template <> struct CallbackOf<double> { using type = kef_df_dsearch; };
template <> struct CallbackOf<float> { using type = kef_df_ssearch; };
template <class T> using Callback = typename CallbackOf<T>::type;

// What the caller's function proposes, as far as it is a cell; 0 where it is not.
template <class T> struct Proposed {
    static constexpr bool proposes = true;
    const Task* task;
    Callback<T> function;
    void* user;
    std::int64_t proposal[block_size];  // of the block that begin() was told

    std::int32_t begin(const T* site, std::uint32_t n) {
        std::fill_n(proposal, block_size, 0);
        const std::int32_t status = function(task, n, site, proposal, user);
        return status < 0 ? status : 0;
    }
    void operator()(const T*, std::uint32_t n, std::uint32_t* at) const {
        for (std::uint32_t j = 0; j < n; ++j) {
            const bool is_cell = proposal[j] >= 1 && proposal[j] < task->nx;
            at[j] = is_cell ? static_cast<std::uint32_t>(proposal[j] - 1) : 0;
        }
    }
};

// The same for uniform breakpoints: where the proposal does not hold, arithmetic.
template <class T> struct ProposedOrUniform : Proposed<T> {
    UniformSearch<T> uniform;
    const Partition<T>* partition;

    void operator()(const T* q, std::uint32_t n, std::uint32_t* at) const {
        std::uint32_t guess[block_size];
        uniform(q, n, guess);
        Proposed<T>::operator()(q, n, at);
        for (std::uint32_t j = 0; j < n; ++j)
            if (!partition->holds(at[j], q[j])) at[j] = guess[j];
    }
};

template <class T, class Int>
std::int32_t search_with(bool uniform, const Task* task, std::int64_t nsite, const T* site,
                         std::int64_t site_hint, Int* cell, Callback<T> function, void* user) {
    if (const std::int32_t status = check(task, nsite, site, site_hint, cell)) return status;
    if (function == nullptr) return DF_STATUS_SEARCH_FUNCTION;
    if (nsite == 0) return DF_STATUS_OK;
    const Partition<T> partition(*task);
    const Sites<T> sites(site, nsite, site_hint);
    const Proposed<T> proposed{task, function, user, {}};
    if (!uniform) return locate_all(partition, sites, proposed, cell);
    const ProposedOrUniform<T> either{proposed, UniformSearch<T>(partition), &partition};
    return locate_all(partition, sites, either, cell);
}

}  // namespace

}  // namespace kef::fit

using namespace kef::fit;

#define KEF_DF_SEARCH_ENTRY(name, T, Int, method)                                       \
    int32_t kef_df_kernel_##name(const kef_df_task* task, int64_t nsite, const T* site, \
                                 int64_t site_hint, Int* cell) {                        \
        return search(SearchMethod::method, task, nsite, site, site_hint, cell);        \
    }
#define KEF_DF_USER_ENTRY(name, T, letter, Int, uniform)                                         \
    int32_t kef_df_kernel_##name(const kef_df_task* task, int64_t nsite, const T* site,          \
                                 int64_t site_hint, Int* cell, kef_df_##letter##search function, \
                                 void* user) {                                                   \
        return search_with(uniform, task, nsite, site, site_hint, cell, function, user);         \
    }
#define KEF_DF_SEARCH(name, method)                           \
    KEF_DF_SEARCH_ENTRY(d##name, double, int64_t, method)     \
    KEF_DF_SEARCH_ENTRY(d##name##32, double, int32_t, method) \
    KEF_DF_SEARCH_ENTRY(s##name, float, int64_t, method)      \
    KEF_DF_SEARCH_ENTRY(s##name##32, float, int32_t, method)
#define KEF_DF_USER_SEARCH(name, uniform)                       \
    KEF_DF_USER_ENTRY(d##name, double, d, int64_t, uniform)     \
    KEF_DF_USER_ENTRY(d##name##32, double, d, int32_t, uniform) \
    KEF_DF_USER_ENTRY(s##name, float, s, int64_t, uniform)      \
    KEF_DF_USER_ENTRY(s##name##32, float, s, int32_t, uniform)

KEF_DF_SEARCH(DFSearch1D, automatic)
KEF_DF_SEARCH(DFSortedSearch1D, sorted)
KEF_DF_SEARCH(DFUniformSearch1D, uniform)
KEF_DF_SEARCH(DFQuasiUniformSearch1D, quasi_uniform)
KEF_DF_SEARCH(DFHybridSearch1D, hybrid)
KEF_DF_SEARCH(DFPeakSearch1D, peak)
KEF_DF_USER_SEARCH(DFUserDefSearch1D, false)
KEF_DF_USER_SEARCH(DFUniUserDefSearch1D, true)
