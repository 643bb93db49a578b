// The check of the breakpoints that a task may ask for.
#pragma once

#include "fit/task.h"

namespace kef::fit {

// Finite and ascending; true where the task trusts its caller.
template <class T> inline bool partition_is_accepted(const Task& task) {
    if (task.check_flag == 0) return true;
    const T* x = static_cast<const T*>(task.x);
    const auto n = static_cast<std::size_t>(task.nx);
    // The ends are finite, and so is what stands in ascending order between them.
    if (x[0] - x[0] != 0 || x[n - 1] - x[n - 1] != 0) return false;
    for (std::size_t i = 1; i < n; ++i)
        if (!(x[i - 1] < x[i])) return false;
    return true;
}

}  // namespace kef::fit
