// Which search serves a call. All give the same cells; they differ in what they are
// fast for:
//
//   bisection.h         any breakpoints, and the judge of what others propose
//   bin_search.h        the task's table of bins, then bisection in one bin
//   equal_distances.h   arithmetic, for breakpoints at (nearly) equal distances
//   walk.h              ascending sites, from cell to cell
#pragma once

#include "fit/cells/bin_search.h"
#include "fit/cells/equal_distances.h"
#include "fit/cells/sites.h"
#include "fit/cells/walk.h"

namespace kef::fit {

enum class SearchMethod { automatic, sorted, uniform, quasi_uniform, hybrid, peak };

// Calls use(search) with the search of a method, for `sites` sites in a call.
template <class T, class Use>
inline void with_search(const Task& task, const Partition<T>& p, SearchMethod method,
                        bool ascending, std::int64_t sites, Use use) {
    constexpr int crowd = 4;  // so many sites to a cell are found by walking
    if (method == SearchMethod::sorted) ascending = true;
    if (method == SearchMethod::automatic || method == SearchMethod::sorted) {
        if (ascending && sites / crowd >= p.n) return use(Walk<T>(p));
        if (task.x_hint == DF_UNIFORM) method = SearchMethod::uniform;
        else if (task.x_hint == DF_QUASI_UNIFORM) method = SearchMethod::quasi_uniform;
        else if (BinSearch<T>::applies(task, p)) return use(BinSearch<T>(task, p));
        else if (ascending) return use(Walk<T>(p));
    }
    if (method == SearchMethod::uniform) return use(UniformSearch<T>(p));
    if (method == SearchMethod::quasi_uniform) return use(QuasiUniformSearch<T>(p));
    if (method == SearchMethod::peak && PeakSearch<T>::applies(task, p))
        return use(PeakSearch<T>(task, p));
    if (method == SearchMethod::hybrid && BinSearch<T>::applies(task, p))
        return use(BinSearch<T>(task, p));
    use(Bisection<T>(p));
}

}  // namespace kef::fit
