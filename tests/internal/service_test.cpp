// Allocator and processor identification.
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "service/alloc.h"
#include "service/cpu.h"

namespace kef {
namespace {

TEST(Service, BlocksAreAlignedAndWritable) {
    for (std::size_t size : {0u, 1u, 127u, 128u, 129u, 100000u}) {
        void* block = allocate_aligned(size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 128, 0u);
        std::memset(block, 0xA5, size);
        free_aligned(block);
    }
    free_aligned(nullptr);
}

TEST(Service, NoMemoryGivesNull) {
    for (std::size_t size : {SIZE_MAX, SIZE_MAX - 128, SIZE_MAX - 200, SIZE_MAX / 2 + 1})
        EXPECT_EQ(allocate_aligned(size), nullptr);
}

TEST(Service, ProcessorHasWhatTheLibraryIsBuiltFor) {
    EXPECT_TRUE(cpu_features().sse2);
    EXPECT_TRUE(cpu_features().sse3);
    EXPECT_EQ(cpu_features().rdrand, static_cast<bool>(__builtin_cpu_supports("rdrnd")));
}

}  // namespace
}  // namespace kef
