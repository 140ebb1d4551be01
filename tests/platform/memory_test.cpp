#include "platform/memory.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace kelvo {
namespace {

TEST(Memory, BlockHasExactlyTheElementsAskedForAndIsZero)
{
    std::vector<std::int16_t> block(3, 7);
    ASSERT_TRUE(AllocateBlock(block, 5));
    EXPECT_EQ(block, std::vector<std::int16_t>(5, 0));
}

TEST(Memory, BlocksOfTwoGigabytesAreRefused)
{
    EXPECT_TRUE(MemoryAvailable((std::size_t{1} << 31) - 1));
    EXPECT_FALSE(MemoryAvailable(std::size_t{1} << 31));
    std::vector<float> block(3);
    EXPECT_FALSE(AllocateBlock(block, std::size_t{1} << 29));
    EXPECT_TRUE(block.empty());
}

TEST(Memory, SizesThatOverflowAreRefused)
{
    std::vector<std::uint32_t> block;
    EXPECT_FALSE(AllocateBlock(block, (std::size_t{1} << 62) + 1));  // 4 bytes each: wraps to 4
}

TEST(Memory, TheOrderedCallFailsOnce)
{
    FailAllocation(2);
    std::vector<int> block;
    EXPECT_TRUE(AllocateBlock(block, 10));
    EXPECT_FALSE(AllocateBlock(block, 10));
    EXPECT_TRUE(block.empty());
    EXPECT_TRUE(AllocateBlock(block, 10));
}

TEST(Memory, AnOrderedFailureCanBeTakenBack)
{
    FailAllocation(1);
    FailAllocation(0);
    EXPECT_TRUE(MemoryAvailable(1));
}

}  // namespace
}  // namespace kelvo
