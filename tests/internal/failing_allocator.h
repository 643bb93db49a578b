// An allocator that fails on demand. The linker leads what the objects of this program ask of
// malloc, calloc, realloc and free through it (operator new is not among them), so the calls that
// it counts are those of the library.
#pragma once

#include <gtest/gtest.h>

namespace kef::test {

// Blocks that were handed out and not given back.
long live_blocks();

// Lets the n-th allocation from here on fail, n >= 1; the ones around it go well.
void fail_allocation(long n);

// Ends that; whether the n-th allocation was asked for.
bool allocation_failed();

// Runs `call` once for every allocation that it makes, with that one failing, each time on a state
// of its own, and once with none failing. `make()` gives the state, which frees what it holds when
// it is destroyed; `call(state)` gives a result; `check(state, result, failed)` compares, and may
// go on using the state. What is left over after a run is a leak. Returns the number of
// allocations.
template <class Make, class Call, class Check>
long for_each_failed_allocation(Make make, Call call, Check check) {
    constexpr long limit = 10000;
    for (long n = 1; n <= limit; ++n) {
        SCOPED_TRACE(testing::Message() << "allocation " << n);
        const long before = live_blocks();
        bool failed;
        {
            auto state = make();
            fail_allocation(n);
            const auto result = call(state);
            failed = allocation_failed();
            check(state, result, failed);
        }
        EXPECT_EQ(live_blocks(), before) << "blocks leaked";
        if (!failed) return n - 1;
    }
    ADD_FAILURE() << "the call makes more than " << limit << " allocations";
    return limit;
}

}  // namespace kef::test
