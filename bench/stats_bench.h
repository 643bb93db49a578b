// What the parts of the statistics bench share.
#pragma once

#include <algorithm>
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

// The least time of one call.
inline double best_time(const std::function<void()>& call) {
    double best = 1e30;
    const double end = now() + 2e8;
    int runs = 0;
    do {
        const double start = now();
        call();
        best = std::min(best, now() - start);
    } while (++runs < 5 || now() < end);
    return best;
}

void order_statistics();
void matrices();

}  // namespace kef::bench
