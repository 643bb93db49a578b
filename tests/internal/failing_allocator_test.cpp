// The failing allocator itself: what it fails, and that it sees a leak.
#include "failing_allocator.h"

#include <vector>

#include <gtest/gtest-spi.h>

#include "service/alloc.h"

namespace kef::test {
namespace {

struct Blocks {
    std::vector<void*> blocks;
    ~Blocks() {
        for (void* block : blocks) free_aligned(block);
    }
};

TEST(FailingAllocator, FailsEachAllocationOnce) {
    std::vector<int> pattern;  // one bit a block, set where it is missing
    const auto three = [](Blocks& state) {
        int missing = 0;
        for (int i = 0; i < 3; ++i) {
            state.blocks.push_back(allocate_aligned(1000));
            if (state.blocks.back() == nullptr) missing |= 1 << i;
        }
        return missing;
    };
    const long allocations = for_each_failed_allocation([] { return Blocks{}; }, three,
                                                        [&](Blocks&, int missing, bool failed) {
                                                            EXPECT_EQ(failed, missing != 0);
                                                            pattern.push_back(missing);
                                                        });
    EXPECT_EQ(allocations, 3);
    EXPECT_EQ(pattern, (std::vector<int>{1, 2, 4, 0}));
}

// A call that forgets its first block where it does not get the second.
TEST(FailingAllocator, SeesALeak) {
    void* forgotten = nullptr;
    const auto two = [&](int) {
        void* first = allocate_aligned(1000);
        void* second = allocate_aligned(1000);
        if (second == nullptr) return forgotten = first, false;
        free_aligned(first), free_aligned(second);
        return true;
    };
    testing::TestPartResultArray failures;
    {
        using Catcher = testing::ScopedFakeTestPartResultReporter;
        Catcher catcher(Catcher::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        for_each_failed_allocation([] { return 0; }, two, [](int, bool, bool) {});
    }
    free_aligned(forgotten);
    EXPECT_EQ(failures.size(), 1);
}

}  // namespace
}  // namespace kef::test
