// What the parts of the statistics bench share.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

#include "kef_stats.h"

namespace kef::bench {

inline double sink;  // results go here, so that no peer is optimised away

// Processor time of this process in nanoseconds: other work on the machine does not
// count.
inline double now() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1e9 + time.tv_nsec;
}

// The least times of one call of each, in turn: what slows the machine down for a while slows all.
template <std::size_t count>
std::array<double, count> best_times(const std::function<void()> (&calls)[count]) {
    std::array<double, count> best;
    best.fill(1e30);
    const double end = now() + count * 2e8;
    int runs = 0;
    do
        for (std::size_t k = 0; k < count; ++k) {
            const double start = now();
            calls[k]();
            best[k] = std::min(best[k], now() - start);
        }
    while (++runs < 5 || now() < end);
    return best;
}

// The least time of one call.
inline double best_time(const std::function<void()>& call) { return best_times({call})[0]; }

void order_statistics();
void matrices();

}  // namespace kef::bench
